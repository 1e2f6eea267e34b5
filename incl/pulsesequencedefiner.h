// Floor 4.31 - workshop: umbrella of the sequence composer
#pragma once

#include "pulsesequencedefiner/editor_actions.h"
#include "pulsesequencedefiner/family_menu.h"
#include "pulsesequencedefiner/model_report.h"
#include "pulsesequencedefiner/nmr_editor.h"
#include "pulsesequencedefiner/prompts.h"
#include "pulsesequencedefiner/pulse_menu.h"
#include "pulsesequencedefiner/sector_content.h"
#include "pulsesequencedefiner/sector_waveforms.h"
#include "pulsesequencedefiner/spatial_editor.h"
#include "pulsesequencedefiner/spin_prompts.h"
