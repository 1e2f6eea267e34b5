// Floor 3.99 - simulator: umbrella of the rooms that work on the state
#pragma once

#include "kor/density_file.h"
#include "kor/expectation_values.h"
#include "kor/product_operator_dialogues.h"
#include "kor/product_operators.h"
#include "kor/propagation.h"
#include "kor/runtime_state.h"
#include "kor/sequence_driver.h"
#include "kor/sequence_status.h"
#include "kor/smoke_check_mode.h"
#include "kor/snapshot.h"
#include "kor/spatial_grid.h"
#include "kor/spatial_grid_dialogue.h"
#include "kor/spin_system.h"
#include "kor/spin_system_dialogues.h"
