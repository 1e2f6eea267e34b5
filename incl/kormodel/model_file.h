// Floor 2.12 - materials: reading a .kormodel file with the two files that it names
#pragma once

#include "kormodel/records.h"

namespace kor {

/// Resets the three records and reads the model file and, at the lines that name them, its spin-system and
/// sequence files; ends with KORModel_ValidateAll. Without a model_name the file's leaf name without
/// extension is taken. Errors as in kor_load_spin_system_text; those of the two named files pass through
/// with their own line numbers, a path that cannot be resolved is _IO.
KORModelStatus KORModel_LoadText(const char* filename, KORSpinSystemDef* spin, KORPulseSequenceDef* seq,
                                 KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);

} // namespace kor
