// A small model of two coupled spins that runs in no time, with everything the program prints about it.
#pragma once

#include "support/program_tree.h"

namespace kor_test {

/// 1D family: a 90 degree pulse and four samples of acquisition. Offsets 100 and -40.5 Hz, J = 12 Hz.
ModelText two_spin_model(const std::string& name);

/// What building the operators of this model prints.
inline const std::string TWO_SPIN_BUILD_REPORT =
    "\n"
    "BuildSpinSystemFromPulseSequenceGlobals()\n"
    "  Nspins = 2\n"
    "  n      = 4\n"
    "  spin 1: quantnum=1  Ilist=1  relspinamp=1  resofreq=100 Hz\n"
    "  spin 2: quantnum=1  Ilist=1  relspinamp=0.75  resofreq=-40.5 Hz\n"
    "\n";
/// The summary of the model after loading it from models/<name>.kormodel of the tree.
std::string two_spin_summary(const ProgramTree& tree, const std::string& name);
/// What a run of it prints, up to the receiver's listings.
std::string two_spin_run_begin(const ProgramTree& tree, const std::string& name);
/// The last line of a run.
std::string two_spin_run_end(const ProgramTree& tree, const std::string& name);
/// The status blocks of the preparation menu and of the run menu.
std::string two_spin_status(const ProgramTree& tree, const std::string& name);
std::string two_spin_run_status(const ProgramTree& tree, const std::string& name);

} // namespace kor_test
