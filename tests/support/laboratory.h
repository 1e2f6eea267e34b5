// A spin system of the simulator's own operators, on which experiments run through the engine seam.
#pragma once

#include "korengine.h"
#include "spinoperatorlib.h"
#include "support/dense_reference.h"
#include "support/marked_matrix.h"

#include <vector>

namespace kor_test {

/// One stretch of a waveform: constant field and gradient over `count` samples of `dt` seconds.
struct Stretch {
    int count;
    double dt;
    double bx, by;     // rad/s
    double offset;     // rad/s
    double gx, gy, gz; // rad/s per cm
};

class Laboratory {
public:
    /// Spins as doubled quantum numbers; H0 starts as zero.
    explicit Laboratory(const std::vector<int>& twice_spins);

    int n() const { return n_; }
    /// Operators from the simulator's builders; spins from 1.
    Dense op(int spin, Axis axis);
    Dense total(Axis axis);
    void set_hamiltonian(const Dense& H0);

    /// Propagator of the stretch at a place (cm).
    Dense propagator(const Stretch& stretch, double x = 0.0, double y = 0.0, double z = 0.0);
    /// State after the stretch at a place (cm).
    Dense after(const Stretch& stretch, const Dense& rho, double x = 0.0, double y = 0.0, double z = 0.0);
    /// State after a pulse of `angle` radians that is so short that nothing else happens meanwhile.
    Dense after_ideal_pulse(Axis axis, double angle, const Dense& rho);
    /// State after free evolution under H0 for `time` seconds.
    Dense after_delay(double time, const Dense& rho);

private:
    kor::SpinIList Ilist_ = {};
    kor::SpinKet ket_ = {};
    int nspins_, n_;
    MarkedMatrix H0_, Fx_, Fy_, Fz_;
};

/// Tr(op . rho) / Tr(op . op): the coefficient of op in rho.
double coefficient(const Dense& op, const Dense& rho);

} // namespace kor_test
