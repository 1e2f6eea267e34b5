// Floor 2.12 - materials: reading a .kormodel file with the two files that it names
#pragma once

#include "kormodel/records.h"

namespace kor {

KORModelStatus KORModel_LoadText(const char* filename, KORSpinSystemDef* spin, KORPulseSequenceDef* seq,
                                 KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);

} // namespace kor
