// Floor 3.98 - simulator: umbrella of the model files, their records and their way into the state
//
// The dialogue that optimises a sector of the current model stands higher: kormodel/sector_optimisation.h.
#pragma once

#include "kormodel/activation.h"
#include "kormodel/model_file.h"
#include "kormodel/model_rules.h"
#include "kormodel/paths.h"
#include "kormodel/records.h"
#include "kormodel/runtime_comparison.h"
#include "kormodel/save.h"
#include "kormodel/sequence_file.h"
#include "kormodel/spin_system_file.h"
#include "kormodel/text_lines.h"
