// Trains of pulses on one spin 1/2 in closed form: nutation, composite and binomial pulses, DANTE, spin
// locks. The sense is the simulator's: Iz -> +Iy about x, Iz -> -Ix about y, Ix -> -Iy for a positive offset.
#include "physics/magnetisation.h"
#include "support/constants.h"
#include "support/laboratory.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor_test;

namespace {

/// Flip angle and phase of one ideal pulse, rad.
struct Flip {
    double angle, phase;
};

Dense after_flips(Laboratory& lab, const std::vector<Flip>& flips, Dense rho) {
    for (const Flip& flip : flips) {
        rho = lab.after({1, 1.0, flip.angle * std::cos(flip.phase), flip.angle * std::sin(flip.phase), 0.0,
                         0.0, 0.0, 0.0},
                        rho);
    }
    return rho;
}

Dense flips_propagator(Laboratory& lab, const std::vector<Flip>& flips) {
    Dense r = Dense::Identity(lab.n(), lab.n());
    for (const Flip& flip : flips) {
        r = r * lab.propagator({1, 1.0, flip.angle * std::cos(flip.phase), flip.angle * std::sin(flip.phase),
                                0.0, 0.0, 0.0, 0.0});
    }
    return r;
}

/// Pulses of `angle` about x, each followed by a turn by `turn` about z.
Dense after_dante(Laboratory& lab, int pulses, double angle, double turn, Dense rho) {
    for (int k = 0; k < pulses; ++k) {
        rho = lab.after_ideal_pulse(Axis::x, angle, rho);
        rho = lab.after({1, 1.0, 0.0, 0.0, turn, 0.0, 0.0, 0.0}, rho);
    }
    return rho;
}

} // namespace

TEST(Nutation, IsASineAndACosineOfTheFieldsAngle) {
    // Levitt, Spin Dynamics, 2nd ed., section 10.8. There is no counter-rotating field, so that the frequency
    // is that of the field alone however strong it is (no Bloch-Siegert shift).
    Laboratory lab({1});
    for (const double field : {2.0 * PI * 100.0, 2.0 * PI * 25e3, 2.0 * PI * 1e6}) {
        for (const double turns : {0.1, 0.25, 0.7, 3.3}) {
            const double time = 2.0 * PI * turns / field;
            const Dense rho = lab.after({11, time / 11, field, 0.0, 0.0, 0.0, 0.0, 0.0}, lab.total(Axis::z));
            const double angle = 2.0 * PI * turns;
            expect_vector(magnetisation(lab, rho), {0.0, std::sin(angle), std::cos(angle)}, 1e-13);
        }
    }
}

TEST(Nutation, OffResonanceFollowsRabi) {
    // Rabi, Phys. Rev. 51 (1937) 652: 1 - Mz = 2 (w1 / W)^2 sin^2(W t / 2), W^2 = w1^2 + offset^2.
    Laboratory lab({1});
    const double field = 3000.0;
    for (const double offset : {0.0, 1500.0, -4000.0, 20000.0}) {
        for (const double time : {1e-4, 5e-4, 2e-3}) {
            const double whole = std::hypot(field, offset);
            const Dense rho =
                lab.after({10, time / 10, field, 0.0, offset, 0.0, 0.0, 0.0}, lab.total(Axis::z));
            const double lost = 2.0 * std::pow(field / whole * std::sin(0.5 * whole * time), 2);
            EXPECT_NEAR(magnetisation(lab, rho).z(), 1.0 - lost, 1e-13) << offset << ' ' << time;
        }
    }
}

TEST(Nutation, OfAQuarterTurnVanishesAtTheRootOf15TimesTheField) {
    // There the effective field makes whole turns: W t = sqrt(1 + 15) pi / 2 = 2 pi; the next null at
    // sqrt(63).
    Laboratory lab({1});
    const double field = 2.0 * PI * 1000.0;
    const double time = 0.5 * PI / field;
    for (const double root : {std::sqrt(15.0), -std::sqrt(15.0), std::sqrt(63.0)}) {
        const Dense rho =
            lab.after({7, time / 7, field, 0.0, root * field, 0.0, 0.0, 0.0}, lab.total(Axis::z));
        expect_vector(magnetisation(lab, rho), Vector::UnitZ(), 1e-13);
    }
}

TEST(RotaryEcho, ReturnsUnderAnInhomogeneousField) {
    // Solomon, Phys. Rev. Lett. 2 (1959) 301: +x for a time, then -x, whatever the field.
    Laboratory lab({1});
    for (const double field : {100.0, 1234.5, 9e4}) {
        Dense rho = lab.after({5, 1e-3, field, 0.0, 0.0, 0.0, 0.0, 0.0}, lab.total(Axis::z));
        rho = lab.after({5, 1e-3, -field, 0.0, 0.0, 0.0, 0.0, 0.0}, rho);
        EXPECT_LE(distance(rho, lab.total(Axis::z)), 1e-13);
    }
}

TEST(CompositePulse, NinetyOneEightyNinetyInvertsWithASecondOrderError) {
    // 90x 180y 90x with all angles scaled: Mz = cos^2 b cos 2b - sin^2 b, b the scaled 90. Levitt & Freeman,
    // J. Magn. Reson. 33 (1979) 473.
    Laboratory lab({1});
    for (const double scale : {0.7, 0.9, 1.0, 1.05, 1.3}) {
        const double b = 0.5 * PI * scale;
        const Dense rho = after_flips(lab, {{b, 0.0}, {2.0 * b, 0.5 * PI}, {b, 0.0}}, lab.total(Axis::z));
        const double expected = std::cos(b) * std::cos(b) * std::cos(2.0 * b) - std::sin(b) * std::sin(b);
        EXPECT_NEAR(magnetisation(lab, rho).z(), expected, 1e-14) << scale;
    }
}

TEST(CompositePulse, Waltz16ElementIsAHalfTurn) {
    // 90x 180(-x) 270x = 180x on resonance. Shaka, Keeler & Freeman, J. Magn. Reson. 53 (1983) 313.
    Laboratory lab({1});
    const double q = 0.5 * PI;
    const Dense r = flips_propagator(lab, {{q, 0.0}, {2.0 * q, PI}, {3.0 * q, 0.0}});
    EXPECT_LE(distance(r, flips_propagator(lab, {{PI, 0.0}})), 1e-14);
}

TEST(CompositePulse, MlevCycleIsTheIdentityOnResonance) {
    // R R R' R' with R = 90x 180y 90x, R' of opposite phases. Levitt & Freeman, J. Magn. Reson. 43 (1981)
    // 502.
    Laboratory lab({1});
    const double q = 0.5 * PI;
    const std::vector<Flip> R = {{q, 0.0}, {PI, q}, {q, 0.0}};
    const std::vector<Flip> inverse = {{q, PI}, {PI, -q}, {q, PI}};
    std::vector<Flip> cycle;
    for (const std::vector<Flip>* part : {&R, &R, &inverse, &inverse}) {
        cycle.insert(cycle.end(), part->begin(), part->end());
    }
    const Dense r = flips_propagator(lab, cycle);
    EXPECT_LE(distance(r * r(0, 0) / std::norm(r(0, 0)), Dense::Identity(2, 2)), 1e-13); // up to its sign
}

TEST(CompositePulse, Bb1CancelsFieldErrorsUpToTheSixthOrderOfItsInfidelity) {
    // 180(p1) 360(3 p1) 180(p1) 180(0), cos p1 = -1/4. Wimperis, J. Magn. Reson. A 109 (1994) 221. The error
    // of the propagator is of third order in the field's, its infidelity of sixth.
    Laboratory lab({1});
    const double p = std::acos(-0.25);
    const Dense ideal = flips_propagator(lab, {{PI, 0.0}});
    const auto infidelity = [&](double error) {
        const double s = 1.0 + error;
        const Dense r =
            flips_propagator(lab, {{PI * s, p}, {2.0 * PI * s, 3.0 * p}, {PI * s, p}, {PI * s, 0.0}});
        return 1.0 - std::abs((ideal.adjoint() * r).trace()) / 2.0;
    };
    EXPECT_NEAR(infidelity(0.0), 0.0, 1e-14);
    EXPECT_NEAR(infidelity(0.1) / infidelity(0.05), 64.0, 3.0);
}

TEST(BinomialPulse, OneMinusOneExcitesAsASine) {
    // 90x - t - 90(-x): Iz -> Iz cos wt + Ix sin wt. Plateau & Gueron, J. Am. Chem. Soc. 104 (1982) 7310.
    Laboratory lab({1});
    for (const double wt : {0.0, 0.4, 0.5 * PI, 2.5, PI}) {
        Dense rho = lab.after_ideal_pulse(Axis::x, 0.5 * PI, lab.total(Axis::z));
        rho = lab.after({1, 1.0, 0.0, 0.0, wt, 0.0, 0.0, 0.0}, rho);
        rho = lab.after_ideal_pulse(Axis::x, -0.5 * PI, rho);
        expect_vector(magnetisation(lab, rho), {std::sin(wt), 0.0, std::cos(wt)}, 1e-14);
    }
}

TEST(BinomialPulse, OneThreeThreeOneExcitesOnResonanceOnly) {
    // Hore, J. Magn. Reson. 55 (1983) 283: parts of 1:3:3:1 add to 90 degrees on resonance and cancel where
    // each gap makes half a turn.
    Laboratory lab({1});
    const auto after = [&](double wt) {
        Dense rho = lab.total(Axis::z);
        for (const int part : {1, 3, 3, 1}) {
            rho = lab.after_ideal_pulse(Axis::x, part * PI / 16.0, rho);
            rho = lab.after({1, 1.0, 0.0, 0.0, wt, 0.0, 0.0, 0.0}, rho);
        }
        return magnetisation(lab, rho);
    };
    expect_vector(after(0.0), Vector::UnitY(), 1e-14);
    expect_vector(after(PI), Vector::UnitZ(), 1e-14);
}

TEST(Dante, TurnsByTheAngleOfItsCompositeRotation) {
    // (R_x(a) R_z(b))^N is a turn by N T, cos(T/2) = cos(a/2) cos(b/2), with the z part of its axis
    // cos(a/2) sin(b/2) / sin(T/2): Mz = nz^2 + (1 - nz^2) cos N T. Morris & Freeman, J. Magn. Reson. 29
    // (1978) 433.
    Laboratory lab({1});
    const double a = 0.5 * PI / 10;
    for (const double b : {0.0, 0.05, 0.3, 1.7, 3.0, 5.9}) {
        const double half = std::acos(std::cos(0.5 * a) * std::cos(0.5 * b));
        const double nz = std::cos(0.5 * a) * std::sin(0.5 * b) / std::sin(half);
        const Dense rho = after_dante(lab, 10, a, b, lab.total(Axis::z));
        EXPECT_NEAR(magnetisation(lab, rho).z(), nz * nz + (1.0 - nz * nz) * std::cos(20.0 * half), 1e-13)
            << b;
    }
}

TEST(Dante, ExcitesSidebandsAsItsCentre) {
    Laboratory lab({1});
    for (const int sideband : {-2, 1, 3}) {
        const Dense rho = after_dante(lab, 9, 0.5 * PI / 9, 2.0 * PI * sideband, lab.total(Axis::z));
        expect_vector(magnetisation(lab, rho), Vector::UnitY(), 1e-13);
    }
}

TEST(SpinLock, HoldsMagnetisationAlongItsField) {
    Laboratory lab({1});
    const Dense rho = lab.after({40, 1e-3, 0.0, 5000.0, 0.0, 0.0, 0.0, 0.0}, lab.total(Axis::y));
    EXPECT_LE(distance(rho, lab.total(Axis::y)), 1e-13);
}

TEST(SpinLock, KeepsTheProjectionOnTheTiltedField) {
    // Off resonance the part along the effective field stays: sin^2 of its tilt along y after any whole
    // number of turns and as the mean over a turn.
    Laboratory lab({1});
    const double field = 5000.0;
    const double offset = 3000.0;
    const double sine = field / std::hypot(field, offset);
    const double turn = 2.0 * PI / std::hypot(field, offset);
    double mean = 0.0;
    for (int k = 0; k < 12; ++k) {
        const Dense rho =
            lab.after({1, turn * (k + 12.0) / 12.0, 0.0, field, offset, 0.0, 0.0, 0.0}, lab.total(Axis::y));
        mean += magnetisation(lab, rho).y() / 12.0;
    }
    EXPECT_NEAR(mean, sine * sine, 1e-13);
}

TEST(SpinLock, DephasesWhatIsAcrossItsField) {
    // A field that differs from voxel to voxel by whole turns in all leaves the locked part alone: here the
    // 16 fields k w, whose turns of Iz about y cancel.
    Laboratory lab({1});
    Dense mean = Dense::Zero(2, 2);
    for (int k = 0; k < 16; ++k) {
        const Dense rho = lab.after({1, 1.0, 0.0, 2.0 * PI * k / 16.0, 0.0, 0.0, 0.0, 0.0},
                                    lab.total(Axis::z) + lab.total(Axis::y));
        mean += rho / 16.0;
    }
    EXPECT_LE(distance(mean, lab.total(Axis::y)), 1e-13);
}
