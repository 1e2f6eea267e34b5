// A random spin system and waveform in the form that the engine takes, with the matrices that they point to.
#pragma once

#include "korengine.h"
#include "support/marked_matrix.h"
#include "support/random_systems.h"

namespace kor_test {

class EngineCase {
public:
    EngineCase(RandomSystem random_system, RandomWaveform waveform);

    /// With gradients at a voxel of `grid`, or, without a grid, at the origin with null gradients.
    kor::EngineSector sector(const kor::EngineGrid& grid) const;
    kor::EngineSector sector() const;

    /// The propagator at a position in cm, by dense algebra.
    Dense expected(double x, double y, double z) const;
    /// What rounding may leave in a propagator: the number of samples and the angle that they turn through.
    double tolerance() const;

    RandomSystem system;
    RandomWaveform wave;

private:
    MarkedMatrix H0_, Fx_, Fy_, Fz_;
};

/// A grid of 3 x 2 x 4 voxels off the origin.
kor::EngineGrid small_grid();

} // namespace kor_test
