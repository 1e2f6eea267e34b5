// Coherence transfer between weakly and isotropically coupled spins 1/2 in closed form. Product operators:
// Sorensen, Eich, Levitt, Bodenhausen & Ernst, Prog. NMR Spectrosc. 16 (1983) 163, in the simulator's sense.
#include "support/constants.h"
#include "support/coupled_hamiltonian.h"
#include "support/laboratory.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor_test;

namespace {

constexpr double kQuarter = 0.5 * PI;

/// tau - 180 x on all spins - tau.
Dense after_echo(Laboratory& lab, double tau, const Dense& rho) {
    return lab.after_delay(tau, lab.after_ideal_pulse(Axis::x, PI, lab.after_delay(tau, rho)));
}

/// A pulse on spin 1 alone: two halves around half a turn of all others about z, taken back at the end.
Dense after_pulse_on_first(Laboratory& lab, Axis axis, double angle, Dense rho) {
    const Dense others = lab.total(Axis::z) - lab.op(1, Axis::z);
    const Dense flip = exp_i(others, -PI);
    rho = lab.after_ideal_pulse(axis, 0.5 * angle, rho);
    rho = flip.adjoint() * rho * flip;
    rho = lab.after_ideal_pulse(axis, 0.5 * angle, rho);
    return flip * rho * flip.adjoint();
}

Dense after_pulse_on_others(Laboratory& lab, Axis axis, double angle, const Dense& rho) {
    return after_pulse_on_first(lab, axis, -angle, lab.after_ideal_pulse(axis, angle, rho));
}

double amplitude(Laboratory& lab, int spin, const Dense& rho) {
    return std::hypot(coefficient(lab.op(spin, Axis::x), rho), coefficient(lab.op(spin, Axis::y), rho));
}

Dense others_z(Laboratory& lab) {
    return lab.total(Axis::z) - lab.op(1, Axis::z);
}

} // namespace

TEST(SelectivePulsePair, TurnsItsSpinAlone) {
    Laboratory lab({1, 1, 1});
    const Dense rho = after_pulse_on_first(lab, Axis::x, 0.8, lab.total(Axis::z));
    EXPECT_LE(distance(rho, std::cos(0.8) * lab.op(1, Axis::z) + std::sin(0.8) * lab.op(1, Axis::y) +
                                others_z(lab)),
              1e-14);
}

TEST(Cosy, HasTheFourTermsOfTwoSpins) {
    // 90x - t1 - 90x from I1z: longitudinal, double and zero quantum order of cos wt, diagonal and cross
    // magnetisation of sin wt, each with its cos pJt or sin pJt.
    Laboratory lab({1, 1});
    const double shift = 37.0;
    const double J = 11.0;
    lab.set_hamiltonian(hamiltonian(lab, {shift, -60.0}, {{1, 2, J}}, false));
    for (const double t1 : {0.004, 0.017, 0.06}) {
        Dense rho = lab.after_ideal_pulse(Axis::x, kQuarter, lab.op(1, Axis::z));
        rho = lab.after_ideal_pulse(Axis::x, kQuarter, lab.after_delay(t1, rho));
        const double cw = std::cos(TWO_PI * shift * t1), sw = std::sin(TWO_PI * shift * t1);
        const double cj = std::cos(PI * J * t1), sj = std::sin(PI * J * t1);
        const Dense I1x = lab.op(1, Axis::x), I1y = lab.op(1, Axis::y), I1z = lab.op(1, Axis::z);
        const Dense I2y = lab.op(2, Axis::y), I2z = lab.op(2, Axis::z);
        // I1y -> cos wt (cos pJt I1y + sin pJt 2 I1x I2z) + sin wt (cos pJt I1x - sin pJt 2 I1y I2z); then
        // 90x
        const Dense expected =
            cw * (-cj * I1z + sj * 2.0 * I1x * I2y) + sw * (cj * I1x + sj * 2.0 * I1z * I2y);
        EXPECT_LE(distance(rho, expected), 1e-13) << t1;
    }
}

TEST(Cosy, CrossPeaksOfAMixingPulseBetaGoAsItsSquaredSine) {
    // Diagonal in-phase and cross antiphase magnetisation after mixing by b: the transfer 2 I1x I2z -> 2 I1z
    // I2x about y is -sin^2 b (Iz -> -Ix, Ix -> Iz), 2 I1x I2z itself keeps cos^2 b. Ernst, Bodenhausen &
    // Wokaun, section 8.2.
    Laboratory lab({1, 1});
    const Dense antiphase = 2.0 * lab.op(1, Axis::x) * lab.op(2, Axis::z);
    const Dense crossed = 2.0 * lab.op(1, Axis::z) * lab.op(2, Axis::x);
    for (const double b : {0.2, PI / 4.0, PI / 3.0, kQuarter}) {
        const Dense rho = lab.after_ideal_pulse(Axis::y, b, antiphase);
        EXPECT_NEAR(coefficient(crossed, rho), -std::sin(b) * std::sin(b), 1e-14) << b;
        EXPECT_NEAR(coefficient(antiphase, rho), std::cos(b) * std::cos(b), 1e-14) << b;
    }
}

TEST(Inept, TransfersTheSineOfTwiceTheDelay) {
    // 90x - tau - 180x - tau - 90y from I1z: antiphase 2 I1z I2x of sin(2 pi J tau). Morris & Freeman, J. Am.
    // Chem. Soc. 101 (1979) 760.
    Laboratory lab({1, 1});
    const double J = 140.0;
    lab.set_hamiltonian(hamiltonian(lab, {300.0, -500.0}, {{1, 2, J}}, false));
    for (const double tau : {0.0005, 1.0 / (4.0 * J), 0.0031}) {
        Dense rho = lab.after_ideal_pulse(Axis::x, kQuarter, lab.op(1, Axis::z));
        rho = lab.after_ideal_pulse(Axis::y, kQuarter, after_echo(lab, tau, rho));
        const Dense crossed = 2.0 * lab.op(1, Axis::z) * lab.op(2, Axis::x);
        EXPECT_NEAR(coefficient(crossed, rho), std::sin(TWO_PI * J * tau), 1e-13) << tau;
    }
}

TEST(Inept, RefocusedFromNSpinsGoesAsSineTimesCosines) {
    // n sin(2 pi J t1) sin(2 pi J t2) cos^(n-1)(2 pi J t2) for a spin with n partners. Burum & Ernst, J.
    // Magn. Reson. 39 (1980) 163.
    const double J = 125.0;
    const double t1 = 1.0 / (4.0 * J);
    for (int n = 1; n <= 3; ++n) {
        Laboratory lab(std::vector<int>(static_cast<std::size_t>(n) + 1, 1));
        lab.set_hamiltonian(hamiltonian(lab, {}, star(n, J), false));
        Dense prepared = after_pulse_on_others(lab, Axis::x, kQuarter, others_z(lab));
        prepared = after_echo(lab, t1, prepared);
        prepared = after_pulse_on_others(lab, Axis::y, kQuarter, prepared);
        prepared = after_pulse_on_first(lab, Axis::x, kQuarter, prepared);
        for (const double t2 : {0.0004, 0.0011, 1.0 / (6.0 * J)}) {
            const double s = std::sin(TWO_PI * J * t2);
            const double c = std::cos(TWO_PI * J * t2);
            EXPECT_NEAR(amplitude(lab, 1, after_echo(lab, t2, prepared)),
                        std::fabs(n * s * std::pow(c, n - 1)), 1e-12)
                << n << ' ' << t2;
        }
    }
}

TEST(Dept, EditsBySineTimesCosinesOfItsLastPulse) {
    // 90x(I) - t - 90x(S) 180x(I) - t - theta y(I) 180(S) - t with t = 1 / 2J: n sin(theta) cos^(n-1)(theta)
    // of the partners' magnetisation. Doddrell, Pegg & Bendall, J. Magn. Reson. 48 (1982) 323.
    const double J = 130.0;
    const double t = 1.0 / (2.0 * J);
    for (int n = 1; n <= 3; ++n) {
        Laboratory lab(std::vector<int>(static_cast<std::size_t>(n) + 1, 1));
        lab.set_hamiltonian(hamiltonian(lab, {}, star(n, J), false));
        for (const double theta : {PI / 4.0, kQuarter, 3.0 * PI / 4.0, 1.1}) {
            Dense rho = after_pulse_on_others(lab, Axis::x, kQuarter, others_z(lab));
            rho = lab.after_delay(t, rho);
            rho = after_pulse_on_first(lab, Axis::x, kQuarter, rho);
            rho = lab.after_delay(t, after_pulse_on_others(lab, Axis::x, PI, rho));
            rho = after_pulse_on_first(lab, Axis::x, PI, rho);
            rho = lab.after_delay(t, after_pulse_on_others(lab, Axis::y, theta, rho));
            EXPECT_NEAR(amplitude(lab, 1, rho),
                        std::fabs(n * std::sin(theta) * std::pow(std::cos(theta), n - 1)), 1e-12)
                << n << ' ' << theta;
        }
    }
}

TEST(Inadequate, ExcitesDoubleQuantumAsTheSineOfTwiceTheDelay) {
    // 90x - tau - 180x - tau - 90x from Iz of both: Bax, Freeman & Kempsell, J. Am. Chem. Soc. 102 (1980)
    // 4849.
    Laboratory lab({1, 1});
    const double J = 55.0;
    lab.set_hamiltonian(hamiltonian(lab, {120.0, -90.0}, {{1, 2, J}}, false));
    const Dense double_quantum =
        lab.op(1, Axis::x) * lab.op(2, Axis::y) + lab.op(1, Axis::y) * lab.op(2, Axis::x);
    for (const double tau : {0.001, 1.0 / (4.0 * J), 0.008}) {
        Dense rho = lab.after_ideal_pulse(Axis::x, kQuarter, lab.total(Axis::z));
        rho = lab.after_ideal_pulse(Axis::x, kQuarter, after_echo(lab, tau, rho));
        EXPECT_NEAR(coefficient(double_quantum, rho), -2.0 * std::sin(TWO_PI * J * tau), 1e-12) << tau;
    }
}

TEST(MultipleQuantum, TurnsAtSumAndDifferenceAndDoesNotSeeTheMutualCoupling) {
    Laboratory lab({1, 1});
    const double a = 80.0;
    const double b = -33.0;
    lab.set_hamiltonian(hamiltonian(lab, {a, b}, {{1, 2, 17.0}}, false));
    const Dense xx = lab.op(1, Axis::x) * lab.op(2, Axis::x);
    const Dense yy = lab.op(1, Axis::y) * lab.op(2, Axis::y);
    const Dense xy = lab.op(1, Axis::x) * lab.op(2, Axis::y);
    const Dense yx = lab.op(1, Axis::y) * lab.op(2, Axis::x);
    for (const double t : {0.002, 0.011, 0.04}) {
        const double sum = TWO_PI * (a + b) * t;
        const double difference = TWO_PI * (a - b) * t;
        EXPECT_LE(
            distance(lab.after_delay(t, xx - yy), std::cos(sum) * (xx - yy) - std::sin(sum) * (xy + yx)),
            1e-13);
        EXPECT_LE(distance(lab.after_delay(t, xx + yy),
                           std::cos(difference) * (xx + yy) + std::sin(difference) * (xy - yx)),
                  1e-13);
    }
}

TEST(MultipleQuantum, OfTwoSpinsSeesAThirdThroughTheSumOfItsCouplings) {
    // Double quantum of spins 1 and 2 is a doublet of J13 + J23, zero quantum of J13 - J23.
    Laboratory lab({1, 1, 1});
    const double J13 = 9.0;
    const double J23 = -4.0;
    lab.set_hamiltonian(hamiltonian(lab, {}, {{1, 2, 30.0}, {1, 3, J13}, {2, 3, J23}}, false));
    const Dense xx = lab.op(1, Axis::x) * lab.op(2, Axis::x);
    const Dense yy = lab.op(1, Axis::y) * lab.op(2, Axis::y);
    for (const double t : {0.01, 0.05, 0.13}) {
        EXPECT_NEAR(coefficient(xx - yy, lab.after_delay(t, xx - yy)), std::cos(PI * (J13 + J23) * t), 1e-13);
        EXPECT_NEAR(coefficient(xx + yy, lab.after_delay(t, xx + yy)), std::cos(PI * (J13 - J23) * t), 1e-13);
    }
}

TEST(Bird, InvertsCoupledSpinsAndSparesTheOthers) {
    // 90x - 1/2J - 180x(both) - 1/2J - 90x on the partners: those without coupling make a whole turn of 360,
    // coupled ones 180 less. Garbow, Weitekamp & Pines, Chem. Phys. Lett. 93 (1982) 504.
    Laboratory lab({1, 1, 1});
    const double J = 140.0;
    lab.set_hamiltonian(hamiltonian(lab, {0.0, 30.0, -70.0}, {{1, 2, J}}, false)); // spin 3 has none
    Dense rho = after_pulse_on_others(lab, Axis::x, kQuarter, lab.op(2, Axis::z) + lab.op(3, Axis::z));
    rho = after_echo(lab, 1.0 / (2.0 * J), rho);
    rho = after_pulse_on_others(lab, Axis::x, kQuarter, rho);
    EXPECT_LE(distance(rho, lab.op(3, Axis::z) - lab.op(2, Axis::z)), 1e-12);
}

TEST(RelayedTransfer, ThroughAMiddleSpinIsAProductOfSines) {
    // An echo takes 2 I1z I2x to 2 I2x I3z as sin(2 pi J12 t) sin(2 pi J23 t). Eich, Bodenhausen & Ernst, J.
    // Am. Chem. Soc. 104 (1982) 3731.
    Laboratory lab({1, 1, 1});
    const double J12 = 7.0;
    const double J23 = 5.0;
    lab.set_hamiltonian(hamiltonian(lab, {210.0, -40.0, 90.0}, {{1, 2, J12}, {2, 3, J23}}, false));
    const Dense start = 2.0 * lab.op(1, Axis::z) * lab.op(2, Axis::x);
    const Dense relayed = 2.0 * lab.op(2, Axis::x) * lab.op(3, Axis::z);
    for (const double t : {0.01, 0.025, 0.06}) {
        EXPECT_NEAR(coefficient(relayed, after_echo(lab, t, start)),
                    std::sin(TWO_PI * J12 * t) * std::sin(TWO_PI * J23 * t), 1e-13)
            << t;
    }
}

TEST(IsotropicMixing, OfTwoSpinsWithAShiftDifferenceIsAZeroQuantumNutation) {
    // I1z -> I2z: J^2 / (J^2 + D^2) sin^2(pi sqrt(J^2 + D^2) t). Braunschweiler & Ernst, J. Magn. Reson. 53
    // (1983) 521.
    Laboratory lab({1, 1});
    const double J = 12.0;
    for (const double D : {0.0, 5.0, 12.0, 60.0}) {
        lab.set_hamiltonian(hamiltonian(lab, {0.5 * D, -0.5 * D}, {{1, 2, J}}, true));
        const double whole = std::hypot(J, D);
        for (const double t : {0.01, 0.03, 1.0 / (2.0 * J)}) {
            const double expected = std::pow(J / whole * std::sin(PI * whole * t), 2);
            EXPECT_NEAR(coefficient(lab.op(2, Axis::z), lab.after_delay(t, lab.op(1, Axis::z))), expected,
                        1e-13);
        }
    }
}

TEST(IsotropicMixing, AlongAChainOfThreeIsASumOfThreeCosines) {
    // J12 = J23 = J, J13 = 0. With S13 = I1 + I3 the levels are J/2, -J, 0; projections on them give the
    // weights: 1 -> 3: 7/18 + cos(3 pi J t) / 9 - cos(pi J t) / 3 - cos(2 pi J t) / 6, 1 -> 1 with the last
    // signs positive.
    Laboratory lab({1, 1, 1});
    const double J = 8.0;
    lab.set_hamiltonian(hamiltonian(lab, {}, {{1, 2, J}, {2, 3, J}}, true));
    for (const double t : {0.0, 0.013, 0.05, 0.09}) {
        const double even = 7.0 / 18.0 + std::cos(3.0 * PI * J * t) / 9.0;
        const double odd = std::cos(PI * J * t) / 3.0 + std::cos(2.0 * PI * J * t) / 6.0;
        for (const Axis axis : {Axis::x, Axis::y, Axis::z}) {
            const Dense rho = lab.after_delay(t, lab.op(1, axis));
            EXPECT_NEAR(coefficient(lab.op(3, axis), rho), even - odd, 1e-13) << t;
            EXPECT_NEAR(coefficient(lab.op(1, axis), rho), even + odd, 1e-13) << t;
            EXPECT_NEAR(coefficient(lab.op(2, axis), rho), 1.0 - 2.0 * even, 1e-13) << t;
        }
    }
}

TEST(IsotropicMixing, AmongThreeEqualCouplingsStaysAtFiveNinthsAtLeast) {
    // Levels of S = 3/2 and 1/2 alone: 1 -> 1: 5/9 + 4/9 cos(3 pi J t), 1 -> 2 and 1 -> 3: 2/9 (1 - cos(3 pi
    // J t)).
    Laboratory lab({1, 1, 1});
    const double J = 6.0;
    lab.set_hamiltonian(hamiltonian(lab, {}, {{1, 2, J}, {1, 3, J}, {2, 3, J}}, true));
    for (const double t : {0.02, 0.1, 0.3}) {
        const Dense rho = lab.after_delay(t, lab.op(1, Axis::z));
        const double c = std::cos(3.0 * PI * J * t);
        EXPECT_NEAR(coefficient(lab.op(1, Axis::z), rho), (5.0 + 4.0 * c) / 9.0, 1e-13);
        EXPECT_NEAR(coefficient(lab.op(3, Axis::z), rho), 2.0 * (1.0 - c) / 9.0, 1e-13);
    }
}

TEST(IsotropicMixing, UnderAStrongSpinLockNeedsNoEqualShifts) {
    // A lock much stronger than the shifts leaves the coupling alone, up to the square of shift over field.
    Laboratory lab({1, 1});
    const double J = 10.0;
    const double shift = 50.0;
    const double field = 20000.0;
    lab.set_hamiltonian(hamiltonian(lab, {shift, -shift}, {{1, 2, J}}, true));
    const double t = 1.0 / (2.0 * J);
    const Stretch lock = {20, t / 20, TWO_PI * field, 0.0, 0.0, 0.0, 0.0, 0.0};
    const Dense rho = lab.after(lock, lab.op(1, Axis::x));
    EXPECT_NEAR(coefficient(lab.op(2, Axis::x), rho), 1.0, 10.0 * std::pow(shift / field, 2));
}
