// Random experiments: mixed spins, weak and exact coupling, pulses, gradients and delays, small grids.
#pragma once

#include "support/random_systems.h"
#include "trust/experiment.h"

namespace kor_test {

/// One to four spins, most of 2I = 1..3 and some up to 7, of at most max_states states, some of them alike;
/// five spins 1/2 from max_states = 32 on. Intensities of both signs whose squares sum to 1, so that the
/// equilibrium state has unit norm.
Spins random_spins(Random& random, int max_states);

/// A shaped or hard pulse, with or without gradient, a gradient pulse, or a delay of up to 50 ms or of none.
Train random_train(Random& random);

/// One voxel, a line of up to 12 or a block of up to 12 voxels, off the origin; now and then a line of 160.
kor::EngineGrid random_grid(Random& random);

/// One to five trains, and behind them a slice-selective pulse on a long line of voxels, or now and then a
/// pulse of thousands of samples where it meets one voxel of few states.
Experiment random_experiment(Random& random, int max_states);

} // namespace kor_test
