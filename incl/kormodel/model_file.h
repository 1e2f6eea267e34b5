// Floor 2.13 - materials: reading a .kormodel file with the two files that it names
#pragma once

#include "kormodel/records.h"

namespace kor {

/// The two files that a model file names, as paths.
struct KORModelParts {
    char spin_system[KOR_PATH_SIZE];
    char sequence[KOR_PATH_SIZE];
};

/// Resets the three records and reads the model file and, at the lines that name them, its spin-system and
/// sequence files; ends with KORModel_ValidateAll. Without a model_name the file's leaf name without
/// extension is taken. Errors as in kor_load_spin_system_text; those of the two named files pass through
/// with their own line numbers, a path that cannot be resolved is _IO.
KORModelStatus KORModel_LoadText(const char* filename, KORSpinSystemDef* spin, KORPulseSequenceDef* seq,
                                 KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);
/// The same; *parts receives the paths under which the two files were read, empty where none was.
KORModelStatus load_model_and_parts(const char* filename, KORSpinSystemDef* spin, KORPulseSequenceDef* seq,
                                    KORRunConfig* cfg, KORModelParts* parts, char* errbuf,
                                    std::size_t errbufsz);

} // namespace kor
