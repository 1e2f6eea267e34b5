// Floor 2.14 - materials: writing a model set
#pragma once

#include "kormodel/model_file.h"
#include "kormodel/records.h"

namespace kor {

/// Writes the set whose model file is `filename`. With NAME the model_name, else the file's leaf name
/// without extension, else "model", and ROOT the folder above the model file's folder:
///     ROOT/spin-systems/NAME.korspin
///     ROOT/sequences/NAME/NAME.korseq
///     filename
/// in this order; the folders below ROOT are made when missing. The model file names its parts as
/// ../spin-systems/NAME.korspin and ../sequences/NAME/NAME.korseq. Reals have 15 significant digits; sector
/// and result paths are made portable (kormodel/paths.h).
/// KOR_MODEL_ERR_NULLPTR for a null argument and the status of KORModel_ValidateAll before anything is
/// written. _RANGE, with no file written and no new folder left, for a text that would not be read back as it
/// is: a name, remark or path with '#' or a line end in it, a portable sector path with white space, a result
/// path that begins or ends with it. _IO when a path, a folder or a file fails, with the files before it left
/// in place. A NAME with a folder ".." is refused so: a model's name must not say where its set is written.
/// So is a NAME that cannot be a file name on this system (platform_takes_name).
KORModelStatus KORModel_SaveText(const char* filename, const KORSpinSystemDef* spin,
                                 const KORPulseSequenceDef* seq, const KORRunConfig* cfg, char* errbuf,
                                 std::size_t errbufsz);
/// The paths to which KORModel_SaveText writes the two other files of that set: 1, or 0 when it refuses.
int saved_model_parts(const char* filename, const KORRunConfig* cfg, KORModelParts* parts);

} // namespace kor
