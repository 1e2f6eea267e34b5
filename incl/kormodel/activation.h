// Floor 3.17 - simulator: model records into the state and back
//
// Errors as everywhere on a model (kormodel/records.h). Nothing here may run during a simulation.
#pragma once

#include "kormodel/records.h"

namespace kor {

/// Checks the model (KORModel_ValidateAll) and makes it the current one: KORModel_ApplyToLegacyGlobals.
KORModelStatus KORModel_ActivateInLegacyRuntime(const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                                                const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);
/// Checks the model and writes it into g_runtime: the definition of spins, couplings (table and pair list,
/// zero couplings included), sectors and grid replaces the old one; systemset, offsetset and sectorset
/// become 1 and the operators are rebuilt. A model that fails the check leaves g_runtime untouched.
KORModelStatus KORModel_ApplyToLegacyGlobals(const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                                             const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);
/// Resets the records and fills them from g_runtime, then checks them (they stay filled either way).
/// Couplings come from the pair list up to Jcount, then from the table. In a spatial sequence an unset
/// sector type or evolution count becomes 1; without a result file "unnamed_result.bin" is taken;
/// model_name stays empty. KOR_MODEL_ERR_INCOMPATIBLE when Nspins leaves 1..8 or nos 0..20.
KORModelStatus KORModel_CaptureFromLegacyGlobals(KORSpinSystemDef* spin, KORPulseSequenceDef* seq,
                                                 KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);
/// KORModel_LoadText and KORModel_ActivateInLegacyRuntime; the model is then the loaded one, whose files no
/// output may replace (modelfiles.h). A null or empty path is _NULLPTR.
KORModelStatus KORModel_LoadCurrentLegacyStateFromText(const char* path, char* errbuf, std::size_t errbufsz);
/// KORModel_CaptureFromLegacyGlobals and KORModel_SaveText; the saved files are then those of the loaded
/// model. A null or empty path is _NULLPTR.
KORModelStatus KORModel_SaveCurrentLegacyStateToText(const char* path, char* errbuf, std::size_t errbufsz);

} // namespace kor
