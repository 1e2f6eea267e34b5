// Floor 2.11 - materials: reading a .korseq file
#pragma once

#include "kormodel/records.h"

namespace kor {

KORModelStatus kor_load_pulse_sequence_text(const char* filename, KORPulseSequenceDef* def, char* errbuf,
                                            std::size_t errbufsz);

} // namespace kor
