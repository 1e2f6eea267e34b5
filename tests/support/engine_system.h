// A random spin system and waveform in the form that the engine takes, with the matrices that they point to.
#pragma once

#include "korengine.h"
#include "support/marked_matrix.h"
#include "support/random_systems.h"

#include <string>

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

/// The way that the engine in use takes through a sector (EngineSectorPlan), which is left open.
std::string plan_of(const kor::EngineSector& sector);
/// The propagator at a voxel (from 1) of a sector, which is left open.
Dense sector_propagator(const kor::EngineSector& sector, int ix, int iy, int iz);

/// A grid of 3 x 2 x 4 voxels off the origin.
kor::EngineGrid small_grid();

} // namespace kor_test
