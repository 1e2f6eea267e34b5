// Floor 2.13 - materials: writing a model set
#pragma once

#include "kormodel/records.h"

namespace kor {

KORModelStatus KORModel_SaveText(const char* filename, const KORSpinSystemDef* spin,
                                 const KORPulseSequenceDef* seq, const KORRunConfig* cfg, char* errbuf,
                                 std::size_t errbufsz);

} // namespace kor
