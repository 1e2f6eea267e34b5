// Floor 4.4 - workshop: summaries of the loaded records and of the current model
//
// All print on standard output and change nothing. Frequencies are shown in Hz, times in s, lengths in cm.
#pragma once

#include "kormodel/records.h"

namespace kor {

/// Says on standard error where the result of a loaded model will be when the folder of results cannot be
/// had: loading has then left the path relative.
void warn_of_relative_result(const KORRunConfig& cfg);
/// The three records as they were read from the model file `path`.
void print_model_summary(const char* path, const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                         const KORRunConfig* cfg);
/// The status block of the preparation menu.
void PrintPrepareStatus();
/// Everything that defines the current model, from the runtime state.
void PrintCurrentModelSummary();

} // namespace kor
