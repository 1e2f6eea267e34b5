// Floor 4.4 - workshop: summaries of the loaded records and of the current model
//
// All print on standard output and change nothing. Frequencies are shown in Hz, times in s, lengths in cm.
#pragma once

#include "kormodel/records.h"

namespace kor {

/// The three records as they were read from the model file `path`.
void print_model_summary(const char* path, const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                         const KORRunConfig* cfg);
/// The status block of the preparation menu.
void PrintPrepareStatus();
/// Everything that defines the current model, from the runtime state.
void PrintCurrentModelSummary();

} // namespace kor
