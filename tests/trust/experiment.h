// Whole experiments as records, and their run by the program: definition, operators, waveform files, every
// sector of every voxel, result file.
#pragma once

#include "korengine.h"
#include "support/dense_reference.h"
#include "support/temp_tree.h"

#include <string>
#include <vector>

namespace kor_test {

struct Spins {
    std::vector<int> twice_spins;
    std::vector<double> intensity, shift_hz;
    std::vector<std::vector<double>> coupling_hz; // [i][j], from 0, symmetric
    bool weak = true;

    std::size_t count() const { return twice_spins.size(); }
    int states() const;
};

/// One sector; all five arrays have the same length.
struct Train {
    double dt = 0.0, offset_hz = 0.0;
    std::vector<double> xb, yb, gx, gy, gz;

    std::size_t samples() const { return xb.size(); }
    void add_sample(double bx, double by, double gradient_x, double gradient_y, double gradient_z);
};

struct Experiment {
    Spins spins;
    kor::EngineGrid grid = {1, 1, 1, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    std::vector<Train> trains;

    int voxels() const { return grid.ndx * grid.ndy * grid.ndz; }
};

/// The place of a voxel, numbered from 0 with z fastest, in cm.
struct Place {
    double x, y, z;
};
Place place_of(const kor::EngineGrid& grid, int voxel);

/// Samples, and the angles (rad) of their steps, summed: a step's angle is its length times the largest
/// energy that its Hamiltonian can have, the spins' fields and couplings added up (rad/s).
struct Length {
    double samples = 0.0, angle = 0.0;
};
Length length_of(const Spins& spins, const std::vector<Train>& trains, const Place& place);

/// What rounding may leave: 1e-12 + 1e-15 (samples + sum of step angles).
double rounding_budget(const Length& length);

/// Runs experiments in a temporary folder of its own.
class Bench {
public:
    Bench();
    ~Bench();

    /// The states of all voxels in the order of their numbers, from equilibrium.
    std::vector<Dense> run(const Experiment& experiment) const;
    /// Makes the program's operators of these spins, in its runtime state.
    void build(const Spins& spins) const;
    /// The operators of the spins last run, and the propagator of one train under them at a place. `sign` -1
    /// negates the Hamiltonian of shifts and couplings.
    Dense propagator(const Train& train, const Place& place, double sign = 1.0) const;

private:
    TempTree folder_;
};

/// Spins of nothing but the given ones, 0-based, in the given order.
Spins selected(const Spins& spins, const std::vector<std::size_t>& order);

std::string description(const Experiment& experiment);

} // namespace kor_test
