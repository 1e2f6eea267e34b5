// Floor 2.11 - materials: reading a .korspin file
#pragma once

#include "kormodel/records.h"

namespace kor {

/// Resets *def and reads the file into it; ends with KORSpinSystemDef_Validate. Stops at the first error
/// with the file closed and *def holding what was read so far: KOR_MODEL_ERR_NULLPTR for a null argument,
/// _IO when the file does not open or read, _PARSE for lines and keys ("line %d: ...", lines from 1), or
/// the validation's status. The keys are described in docs/file-formats.md.
KORModelStatus kor_load_spin_system_text(const char* filename, KORSpinSystemDef* def, char* errbuf,
                                         std::size_t errbufsz);

} // namespace kor
