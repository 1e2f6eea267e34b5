// Floor 2.12 - materials: reading a .korseq file
#pragma once

#include "kormodel/records.h"

namespace kor {

/// Resets *def and reads the file into it; ends with KORPulseSequenceDef_Validate. Sector files are looked
/// for as kor_resolve_sector_pulse_path says, must open for reading, and are stored as found (cut to 255
/// characters). Errors as in kor_load_spin_system_text; a sector file that is not found is _PARSE.
KORModelStatus kor_load_pulse_sequence_text(const char* filename, KORPulseSequenceDef* def, char* errbuf,
                                            std::size_t errbufsz);

} // namespace kor
