// Floor 3.97 - simulator: the signal and spectrum module as a whole
#pragma once

#include "observablespectrumcalculator/phase.h"
#include "observablespectrumcalculator/signal_file.h"
#include "observablespectrumcalculator/signals.h"
#include "observablespectrumcalculator/spectrum_2d.h"
#include "observablespectrumcalculator/spectrum_dialogues.h"
#include "observablespectrumcalculator/spectrum_files.h"
#include "observablespectrumcalculator/spectrum_routes.h"
