// Independent answers for the example models: dense matrices, every step by diagonalising its Hamiltonian,
// and closed forms of weak coupling. Uses nothing of the program under test.
#pragma once

#include "support/dense_reference.h"

#include <vector>

namespace example_oracle {

using kor_test::Axis;
using kor_test::Complex;
using kor_test::Dense;

/// A molecule: spin s (from 0) with twice its quantum number, offset in Hz and weight of its equilibrium
/// state.
struct Molecule {
    std::vector<int> two_i;
    std::vector<double> offset_hz;
    std::vector<double> intensity;
    Eigen::MatrixXd j_hz; // symmetric, zero diagonal
    bool weak = true;     // couplings by Iz Iz alone
};

/// Spins 1/2 of weight 1 whose shifts (ppm) stand against a carrier (ppm) in a field of field_mhz.
Molecule molecule(const std::vector<double>& shifts_ppm, double carrier_ppm, double field_mhz, bool weak);
void couple(Molecule& molecule, int spin, int other, double j_hz);

/// The operators of one molecule in the product basis: spin 0 slowest, m descending.
class DenseSpins {
public:
    explicit DenseSpins(const Molecule& molecule);

    /// Sum over spins of intensity times Iz at unit Frobenius norm.
    Dense equilibrium() const;
    /// rho -> exp(+i H t) rho exp(-i H t), H = offsets and couplings + 2 pi offset_hz Fz + x Fx + y Fy (x, y
    /// in rad/s).
    Dense step(const Dense& rho, double seconds, double x, double y, double offset_hz) const;
    /// trace((X + i Y) rho(t)) at t = k dwell, k = 0..points-1: X, Y sums of Ix, Iy at unit Frobenius norm.
    std::vector<Complex> signal(const Dense& rho, int points, double dwell) const;
    /// Sum over `spins` (from 0) of their operators, scaled to unit Frobenius norm.
    Dense observable(Axis axis, const std::vector<int>& spins) const;

private:
    Dense single(int spin, Axis axis) const;
    Dense unit_sum(Axis axis, const std::vector<double>& weights) const;

    Molecule molecule_;
    Dense free_, fx_, fy_, fz_;
};

/// exp(-2 pi i offset t) times the coupling factors of every partner of `spin`: the signal at time t of a
/// spin that points along +x at time 0, under weak coupling. A partner of spin 1/2 gives cos(pi J t), one of
/// spin 1 gives (1 + 2 cos(2 pi J t)) / 3.
Complex weak_precession(const Molecule& molecule, int spin, double t);

/// Signal of the sequence 90x - t1 - 90x - t2 on weakly coupled spins 1/2 in equilibrium, ideal pulses. Every
/// spin turns by extra_angle (rad) more during t1.
Complex weak_cosy(const Molecule& molecule, double t1, double extra_angle, double t2);

} // namespace example_oracle
