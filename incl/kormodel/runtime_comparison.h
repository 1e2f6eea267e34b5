// Floor 3.18 - simulator: whether the state holds exactly a given model
#pragma once

#include "kormodel/records.h"

namespace kor {

/// 1 when capturing g_runtime gives exactly this model (numbers equal, so that a NaN never matches; texts
/// byte for byte; model_name does not count), else 0 with the capture's message or with "legacy-runtime
/// verification failed: " and the first difference. The records must not be null.
int kor_runtime_matches_model_def(const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                                  const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);

} // namespace kor
