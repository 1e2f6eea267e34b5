// One spin in closed form. The simulator's sense: rho(t) = exp(+iHt) rho exp(-iHt), so the magnetisation
// turns about a field by minus the angle that it would turn by under exp(-iHt) rho exp(+iHt):
// Iz -> +Iy about x, Iz -> -Ix about y, Ix -> -Iy about z.
#include "physics/magnetisation.h"
#include "support/constants.h"
#include "support/laboratory.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor_test;

namespace {

Dense state_of(Laboratory& lab, const Vector& m) {
    return m.x() * lab.total(Axis::x) + m.y() * lab.total(Axis::y) + m.z() * lab.total(Axis::z);
}

/// Rodrigues' formula for the turn by -angle about the unit vector u.
Vector turned(const Vector& u, double angle, const Vector& m) {
    return u * u.dot(m) + (m - u * u.dot(m)) * std::cos(angle) - u.cross(m) * std::sin(angle);
}

const std::vector<std::vector<int>> kSpins = {{1}, {2}, {3}, {1, 2}};

} // namespace

TEST(Pulse, QuarterTurnAboutXTakesIzToPlusIy) {
    Laboratory lab({1});
    const int samples = 25;
    const double h = 4e-6;
    const double field = PI / (2.0 * samples * h);
    const Dense rho = lab.after({samples, h, field, 0.0, 0.0, 0.0, 0.0, 0.0}, lab.total(Axis::z));
    Dense expected(2, 2);
    expected << 0.0, Complex(0.0, -0.5), Complex(0.0, 0.5), 0.0;
    EXPECT_LE(distance(rho, expected), 1e-13);
}

TEST(Pulse, QuarterTurnAboutYTakesIzToMinusIx) {
    Laboratory lab({1});
    const Dense rho = lab.after_ideal_pulse(Axis::y, PI / 2.0, lab.total(Axis::z));
    EXPECT_LE(distance(rho, -lab.total(Axis::x)), 1e-14);
}

TEST(Pulse, HalfTurnInvertsIz) {
    for (const std::vector<int>& spins : kSpins) {
        Laboratory lab(spins);
        for (const Axis axis : {Axis::x, Axis::y}) {
            const Dense rho = lab.after_ideal_pulse(axis, PI, lab.total(Axis::z));
            EXPECT_LE(distance(rho, -lab.total(Axis::z)), 1e-13);
        }
    }
}

TEST(Pulse, OfAnyAngleTurnsEveryAxisAboutEveryAxis) {
    const Vector axes[3] = {Vector::UnitX(), Vector::UnitY(), Vector::UnitZ()};
    for (const std::vector<int>& spins : kSpins) {
        Laboratory lab(spins);
        for (int about = 0; about < 3; ++about) {
            for (const Vector& m : axes) {
                for (const double angle : {0.3, 1.0, PI / 2.0, 2.5, -0.7, 7.0}) {
                    const Axis axis = about == 0 ? Axis::x : about == 1 ? Axis::y : Axis::z;
                    const Dense rho = lab.after_ideal_pulse(axis, angle, state_of(lab, m));
                    EXPECT_LE(distance(rho, state_of(lab, turned(axes[about], angle, m))), 1e-13);
                }
            }
        }
    }
}

TEST(Pulse, OfAnyPhaseTurnsAboutThatDirection) {
    Laboratory lab({1});
    for (const double phase : {0.4, 2.0, -1.1}) {
        const double field = 1200.0;
        const double time = 1e-3;
        const Dense rho =
            lab.after({10, time / 10, field * std::cos(phase), field * std::sin(phase), 0.0, 0.0, 0.0, 0.0},
                      lab.total(Axis::z));
        const Vector direction(std::cos(phase), std::sin(phase), 0.0);
        expect_vector(magnetisation(lab, rho), turned(direction, field * time, Vector::UnitZ()), 1e-13);
    }
}

TEST(Pulse, InTwoHalvesIsTheWholeOne) {
    for (const std::vector<int>& spins : kSpins) {
        Laboratory lab(spins);
        lab.set_hamiltonian(150.0 * lab.total(Axis::z));
        const Stretch whole = {20, 1e-5, 3000.0, -2000.0, 400.0, 0.0, 0.0, 0.0};
        Stretch half = whole;
        half.count = 10;
        const Dense rho = state_of(lab, {0.2, 0.3, 0.9});
        EXPECT_LE(distance(lab.after(half, lab.after(half, rho)), lab.after(whole, rho)), 1e-13);
    }
}

TEST(Pulse, OfTwoQuartersInQuadratureActsInTheOrderOfTime) {
    // 90 degrees about x, then 90 about y: Iz -> +Iy, which the second leaves alone. The other order:
    // Iz -> -Ix, which the pulse about x leaves alone.
    Laboratory lab({1});
    const Dense Iz = lab.total(Axis::z);
    const Dense xy = lab.after_ideal_pulse(Axis::y, PI / 2, lab.after_ideal_pulse(Axis::x, PI / 2, Iz));
    const Dense yx = lab.after_ideal_pulse(Axis::x, PI / 2, lab.after_ideal_pulse(Axis::y, PI / 2, Iz));
    EXPECT_LE(distance(xy, lab.total(Axis::y)), 1e-14);
    EXPECT_LE(distance(yx, -lab.total(Axis::x)), 1e-14);
}

TEST(Pulse, SamplesOfOneSectorActInTheOrderOfTime) {
    // The same two pulses as the two samples of one waveform.
    Laboratory lab({1});
    const MarkedMatrix H0(Dense::Zero(2, 2));
    const MarkedMatrix Fx(lab.total(Axis::x));
    const MarkedMatrix Fy(lab.total(Axis::y));
    const MarkedMatrix Fz(lab.total(Axis::z));
    const kor::CMatrix& h0 = H0;
    const kor::CMatrix& fx = Fx;
    const kor::CMatrix& fy = Fy;
    const kor::CMatrix& fz = Fz;
    const double xb[2] = {PI / 2, 0.0};
    const double yb[2] = {0.0, PI / 2};
    kor::EngineOpenSector({{2, &h0, &fz, &fx, &fy},
                           {2, 1.0, xb, yb, nullptr, nullptr, nullptr, 0.0},
                           {1, 1, 1, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0}});
    MarkedMatrix r;
    MarkedMatrix rho(lab.total(Axis::z));
    kor::EngineSectorPropagator(1, 1, 1, r);
    kor::EngineRotate(2, r, rho);
    EXPECT_LE(distance(rho, lab.total(Axis::y)), 1e-14);
}

TEST(Precession, TakesIxTowardsMinusIyForAPositiveOffset) {
    for (const std::vector<int>& spins : kSpins) {
        Laboratory lab(spins);
        const double w = 2.0 * PI * 80.0;
        lab.set_hamiltonian(w * lab.total(Axis::z));
        for (const double t : {0.0, 1e-3, 5e-3, 0.2}) {
            const Vector m = magnetisation(lab, lab.after_delay(t, lab.total(Axis::x)));
            expect_vector(m, {std::cos(w * t), -std::sin(w * t), 0.0}, 1e-12);
        }
    }
}

TEST(Precession, IsTheSameFromTheShiftTheCarrierAndAGradient) {
    Laboratory lab({1, 2});
    const double w = 900.0;
    const Dense rho = state_of(lab, {0.6, -0.2, 0.4});
    const Dense by_carrier = lab.after({4, 1e-3, 0.0, 0.0, w, 0.0, 0.0, 0.0}, rho);
    const Dense by_gradient = lab.after({4, 1e-3, 0.0, 0.0, 0.0, 0.0, w / 0.5, 0.0}, rho, 9.0, 0.5, 9.0);
    lab.set_hamiltonian(w * lab.total(Axis::z));
    const Dense by_shift = lab.after_delay(4e-3, rho);
    EXPECT_LE(distance(by_carrier, by_shift), 1e-13);
    EXPECT_LE(distance(by_gradient, by_shift), 1e-13);
}

TEST(Precession, LeavesIzAlone) {
    Laboratory lab({3});
    lab.set_hamiltonian(500.0 * lab.total(Axis::z));
    EXPECT_LE(distance(lab.after_delay(0.1, lab.total(Axis::z)), lab.total(Axis::z)), 1e-13);
}

TEST(OffResonancePulse, TurnsAboutTheTiltedEffectiveField) {
    for (const std::vector<int>& spins : kSpins) {
        Laboratory lab(spins);
        for (const double offset : {-4000.0, -500.0, 0.0, 1000.0, 8000.0}) {
            const double field = 2500.0;
            const double time = 7e-4;
            const Dense rho =
                lab.after({14, time / 14, field, 0.0, offset, 0.0, 0.0, 0.0}, lab.total(Axis::z));
            const Vector effective(field, 0.0, offset);
            const double size = effective.norm();
            expect_vector(magnetisation(lab, rho), turned(effective / size, size * time, Vector::UnitZ()),
                          1e-12);
        }
    }
}

TEST(OffResonancePulse, InvertsLeastWhereTheFieldIsTilted) {
    // The largest angle from z that a turn about a field tilted by theta reaches is 2 theta.
    Laboratory lab({1});
    const double field = 1000.0;
    const double offset = 1000.0; // theta = 45 degrees
    const double half_turn = PI / std::hypot(field, offset);
    const Dense rho = lab.after({1, half_turn, field, 0.0, offset, 0.0, 0.0, 0.0}, lab.total(Axis::z));
    expect_vector(magnetisation(lab, rho), Vector::UnitX(), 1e-13);
}

TEST(Rotation, OfASpinOneHasTheReducedWignerElements) {
    // d(beta) = exp(-i beta Iy); Varshalovich, Moskalev & Khersonskii, Quantum Theory of Angular Momentum,
    // table 4.4.
    Laboratory lab({2});
    for (const double beta : {0.3, 1.1, PI / 2, 2.9, -0.8}) {
        const double c = std::cos(beta);
        const double s = std::sin(beta) / std::sqrt(2.0);
        Dense d(3, 3);
        d << (1 + c) / 2, -s, (1 - c) / 2, s, c, -s, (1 - c) / 2, s, (1 + c) / 2;
        EXPECT_LE(distance(lab.propagator({1, 1.0, 0.0, beta, 0.0, 0.0, 0.0, 0.0}), d), 1e-14) << beta;
    }
}

TEST(Rotation, OfASpinThreeHalvesHasTheReducedWignerElements) {
    // The same book, table 4.5.
    Laboratory lab({3});
    for (const double beta : {0.3, 1.1, PI / 2, 2.9, -0.8}) {
        const double c = std::cos(beta / 2);
        const double s = std::sin(beta / 2);
        const double root3 = std::sqrt(3.0);
        const double d11 = c * (3 * c * c - 2);
        const double d12 = s * (3 * s * s - 2);
        Dense d(4, 4);
        d << c * c * c, -root3 * s * c * c, root3 * s * s * c, -s * s * s, //
            root3 * s * c * c, d11, d12, root3 * s * s * c,                //
            root3 * s * s * c, -d12, d11, -root3 * s * c * c,              //
            s * s * s, root3 * s * s * c, root3 * s * c * c, c * c * c;
        EXPECT_LE(distance(lab.propagator({1, 1.0, 0.0, beta, 0.0, 0.0, 0.0, 0.0}), d), 1e-14) << beta;
    }
}

TEST(Rotation, ByAFullTurnChangesTheSignOfHalfIntegerSpinsOnly) {
    for (const int twice_spin : {1, 2, 3, 4}) {
        Laboratory lab({twice_spin});
        const Dense r = lab.propagator({8, 0.125, 2.0 * PI, 0.0, 0.0, 0.0, 0.0, 0.0});
        const double sign = twice_spin % 2 ? -1.0 : 1.0;
        EXPECT_LE(distance(r, sign * Dense::Identity(r.rows(), r.cols())), 1e-13) << twice_spin;
    }
}
