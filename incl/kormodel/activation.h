// Floor 3.17 - simulator: model records into the state and back
#pragma once

#include "kormodel/records.h"

namespace kor {

KORModelStatus KORModel_ActivateInLegacyRuntime(const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                                                const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);
KORModelStatus KORModel_ApplyToLegacyGlobals(const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                                             const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);
KORModelStatus KORModel_CaptureFromLegacyGlobals(KORSpinSystemDef* spin, KORPulseSequenceDef* seq,
                                                 KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);
KORModelStatus KORModel_LoadCurrentLegacyStateFromText(const char* path, char* errbuf, std::size_t errbufsz);
KORModelStatus KORModel_SaveCurrentLegacyStateToText(const char* path, char* errbuf, std::size_t errbufsz);
/// 1 when the state holds exactly this model, else 0 with a message.
int kor_runtime_matches_model_def(const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                                  const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);

} // namespace kor
