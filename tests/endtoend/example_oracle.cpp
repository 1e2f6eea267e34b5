#include "endtoend/example_oracle.h"
#include "support/constants.h"

#include <cmath>

namespace example_oracle {

namespace {

using kor_test::PI;

constexpr Complex I_UNIT(0, 1);

Complex weak_factor(const Molecule& molecule, int spin, int partner, double t) {
    const double j_hz = molecule.j_hz(spin, partner);
    if (molecule.two_i[partner] == 1)
        return std::cos(PI * j_hz * t);
    return (1 + 2 * std::cos(2 * PI * j_hz * t)) / 3;
}

/// The factor of the whole set of partners, leaving out `spared`.
Complex weak_factors(const Molecule& molecule, int spin, int spared, double t) {
    Complex product = 1;
    for (int j = 0; j < static_cast<int>(molecule.two_i.size()); ++j)
        if (j != spin && j != spared)
            product *= weak_factor(molecule, spin, j, t);
    return product;
}

} // namespace

Molecule molecule(const std::vector<double>& shifts_ppm, double carrier_ppm, double field_mhz, bool weak) {
    Molecule m;
    m.weak = weak;
    for (double shift : shifts_ppm)
        m.offset_hz.push_back((shift - carrier_ppm) * field_mhz);
    m.two_i.assign(shifts_ppm.size(), 1);
    m.intensity.assign(shifts_ppm.size(), 1.0);
    const auto n = static_cast<Eigen::Index>(shifts_ppm.size());
    m.j_hz = Eigen::MatrixXd::Zero(n, n);
    return m;
}

void couple(Molecule& molecule, int spin, int other, double j_hz) {
    molecule.j_hz(spin, other) = molecule.j_hz(other, spin) = j_hz;
}

DenseSpins::DenseSpins(const Molecule& molecule) : molecule_(molecule) {
    const int spins = static_cast<int>(molecule.two_i.size());
    fx_ = kor_test::total_operator(molecule.two_i, Axis::x);
    fy_ = kor_test::total_operator(molecule.two_i, Axis::y);
    fz_ = kor_test::total_operator(molecule.two_i, Axis::z);
    free_ = Dense::Zero(fz_.rows(), fz_.cols());
    for (int s = 0; s < spins; ++s) {
        free_ += 2 * PI * molecule.offset_hz[s] * single(s, Axis::z);
        for (int j = s + 1; j < spins; ++j) {
            if (molecule.j_hz(s, j) == 0)
                continue;
            free_ += 2 * PI * molecule.j_hz(s, j) * single(s, Axis::z) * single(j, Axis::z);
            if (!molecule.weak)
                free_ += 2 * PI * molecule.j_hz(s, j) *
                         (single(s, Axis::x) * single(j, Axis::x) + single(s, Axis::y) * single(j, Axis::y));
        }
    }
}

Dense DenseSpins::single(int spin, Axis axis) const {
    return kor_test::spin_operator(molecule_.two_i, spin + 1, axis);
}

Dense DenseSpins::unit_sum(Axis axis, const std::vector<double>& weights) const {
    Dense out = Dense::Zero(free_.rows(), free_.rows());
    for (int s = 0; s < static_cast<int>(weights.size()); ++s) {
        const Dense one = single(s, axis);
        out += weights[s] / one.norm() * one;
    }
    return out;
}

Dense DenseSpins::equilibrium() const {
    return unit_sum(Axis::z, molecule_.intensity);
}

Dense DenseSpins::observable(Axis axis, const std::vector<int>& spins) const {
    Dense out = Dense::Zero(free_.rows(), free_.rows());
    for (int s : spins)
        out += single(s, axis);
    return out / out.norm();
}

Dense DenseSpins::step(const Dense& rho, double seconds, double x, double y, double offset_hz) const {
    const Dense u = kor_test::exp_i(free_ + 2 * PI * offset_hz * fz_ + x * fx_ + y * fy_, seconds);
    return u * rho * u.adjoint();
}

std::vector<Complex> DenseSpins::signal(const Dense& rho, int points, double dwell) const {
    const std::vector<double> ones(molecule_.two_i.size(), 1.0);
    const Eigen::SelfAdjointEigenSolver<Dense> eigen(free_);
    const Dense& v = eigen.eigenvectors();
    const Dense receiver = v.adjoint() * (unit_sum(Axis::x, ones) + I_UNIT * unit_sum(Axis::y, ones)) * v;
    const Dense state = v.adjoint() * rho * v;
    std::vector<Complex> out(points);
    for (Eigen::Index r = 0; r < state.rows(); ++r)
        for (Eigen::Index c = 0; c < state.cols(); ++c) {
            // state(r, c) turns as exp(i (E_r - E_c) t).
            const Complex amplitude = receiver(c, r) * state(r, c);
            const double rate = eigen.eigenvalues()(r) - eigen.eigenvalues()(c);
            if (std::abs(amplitude) > 1e-15)
                for (int k = 0; k < points; ++k)
                    out[k] += amplitude * std::polar(1.0, rate * k * dwell);
        }
    return out;
}

Complex weak_precession(const Molecule& molecule, int spin, double t) {
    return std::polar(1.0, -2 * PI * molecule.offset_hz[spin] * t) * weak_factors(molecule, spin, spin, t);
}

Complex weak_cosy(const Molecule& molecule, double t1, double extra_angle, double t2) {
    const int spins = static_cast<int>(molecule.two_i.size());
    Complex out = 0;
    for (int a = 0; a < spins; ++a) {
        // Of Iy only sin(angle) (Ix cos - 2 Iy Sz sin) leaves something observable behind the mixing pulse:
        // Ix stays, 2 Iy Sz becomes -2 Iz Sy, which the coupling turns into Sx during t2.
        const double amplitude =
            molecule.intensity[a] * std::sin(2 * PI * molecule.offset_hz[a] * t1 + extra_angle);
        out += amplitude * weak_factors(molecule, a, a, t1) * weak_precession(molecule, a, t2);
        for (int s = 0; s < spins; ++s) {
            const double j_hz = molecule.j_hz(a, s);
            out += amplitude * std::sin(PI * j_hz * t1) * weak_factors(molecule, a, s, t1) *
                   std::sin(PI * j_hz * t2) * weak_factors(molecule, s, a, t2) *
                   std::polar(1.0, -2 * PI * molecule.offset_hz[s] * t2);
        }
    }
    return out;
}

} // namespace example_oracle
