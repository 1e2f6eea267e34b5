// Floor 4.4 - workshop: summaries of the loaded records and of the current model
#pragma once

#include "kormodel/records.h"

namespace kor {

void print_model_summary(const char* path, const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                         const KORRunConfig* cfg);
void PrintPrepareStatus();
void PrintCurrentModelSummary();

} // namespace kor
