// Floor 2.31 - materials: umbrella of the RF pulse shapes, their dialogues and the optimiser's start pulse
#pragma once

#include "rfpulselib/dialogues.h"
#include "rfpulselib/shapes.h"
#include "rfpulselib/start_pulse.h"
