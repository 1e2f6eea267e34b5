// Two coupled spins in closed form (product operators). Sorensen, Eich, Levitt, Bodenhausen & Ernst, Prog.
// NMR Spectrosc. 16 (1983) 163, with the simulator's opposite sense of rotation.
#include "support/constants.h"
#include "support/laboratory.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor_test;

namespace {

/// Shifts and coupling in Hz.
Dense pair_hamiltonian(Laboratory& lab, double shift1, double shift2, double J, bool exact) {
    Dense H = shift1 * lab.op(1, Axis::z) + shift2 * lab.op(2, Axis::z) +
              J * lab.op(1, Axis::z) * lab.op(2, Axis::z);
    if (exact) {
        H += J * (lab.op(1, Axis::x) * lab.op(2, Axis::x) + lab.op(1, Axis::y) * lab.op(2, Axis::y));
    }
    return TWO_PI * H;
}

} // namespace

TEST(WeakCoupling, MakesAntiphaseAfterHalfThePeriod) {
    // I1x -> I1x cos(pi J t) - 2 I1y I2z sin(pi J t): pure antiphase at t = 1 / 2J.
    Laboratory lab({1, 1});
    const double J = 140.0;
    lab.set_hamiltonian(pair_hamiltonian(lab, 0.0, 0.0, J, false));
    const Dense rho = lab.after_delay(1.0 / (2.0 * J), lab.op(1, Axis::x));
    EXPECT_LE(distance(rho, -2.0 * lab.op(1, Axis::y) * lab.op(2, Axis::z)), 1e-13);
    const Dense inverted = lab.after_delay(1.0 / J, lab.op(1, Axis::x));
    EXPECT_LE(distance(inverted, -lab.op(1, Axis::x)), 1e-13);
}

TEST(WeakCoupling, ModulatesInPhaseAndAntiphaseInTime) {
    Laboratory lab({1, 1});
    const double J = 9.0;
    lab.set_hamiltonian(pair_hamiltonian(lab, 0.0, 500.0, J, false));
    for (const double t : {0.004, 0.03, 0.1}) {
        const Dense expected = std::cos(PI * J * t) * lab.op(1, Axis::x) -
                               2.0 * std::sin(PI * J * t) * lab.op(1, Axis::y) * lab.op(2, Axis::z);
        EXPECT_LE(distance(lab.after_delay(t, lab.op(1, Axis::x)), expected), 1e-12) << t;
    }
}

TEST(WeakCoupling, ToASpinOneSplitsIntoATriplet) {
    // m = 1, 0, -1 of the partner shift the spin 1/2 by J, 0, -J: <I1x> = (1 + 2 cos 2 pi J t) / 3.
    Laboratory lab({1, 2});
    const double J = 20.0;
    lab.set_hamiltonian(pair_hamiltonian(lab, 0.0, 0.0, J, false));
    for (const double t : {0.0, 0.01, 0.025, 0.04}) {
        const Dense rho = lab.after_delay(t, lab.op(1, Axis::x));
        EXPECT_NEAR(coefficient(lab.op(1, Axis::x), rho), (1.0 + 2.0 * std::cos(TWO_PI * J * t)) / 3.0,
                    1e-13);
    }
}

TEST(SpinEcho, RefocusesShiftsAndKeepsTheCoupling) {
    // tau - 180x - tau on both spins: I1y evolves under J alone for 2 tau, and the pulse inverts it.
    Laboratory lab({1, 1});
    const double J = 12.0;
    lab.set_hamiltonian(pair_hamiltonian(lab, 310.0, -220.0, J, false));
    for (const double tau : {0.005, 0.02, 1.0 / (4.0 * J)}) {
        Dense rho = lab.after_delay(tau, lab.op(1, Axis::x));
        rho = lab.after_ideal_pulse(Axis::x, PI, rho);
        rho = lab.after_delay(tau, rho);
        const double angle = 2.0 * PI * J * tau;
        const Dense expected = std::cos(angle) * lab.op(1, Axis::x) -
                               2.0 * std::sin(angle) * lab.op(1, Axis::y) * lab.op(2, Axis::z);
        EXPECT_LE(distance(rho, expected), 1e-12) << tau;
    }
}

TEST(SpinEcho, OfUncoupledSpinsReturnsTheStartState) {
    Laboratory lab({1, 2});
    lab.set_hamiltonian(pair_hamiltonian(lab, 77.0, -410.0, 0.0, false));
    Dense rho = lab.after_delay(0.013, lab.total(Axis::y));
    rho = lab.after_ideal_pulse(Axis::y, PI, rho);
    rho = lab.after_delay(0.013, rho);
    EXPECT_LE(distance(rho, lab.total(Axis::y)), 1e-13);
}

TEST(CoherenceTransfer, MovesAntiphaseToThePartner) {
    // 90 about x: -2 I1y I2z -> -2 (-I1z)(I2y) under Iz -> Iy, Iy -> -Iz.
    Laboratory lab({1, 1});
    const Dense antiphase = -2.0 * lab.op(1, Axis::y) * lab.op(2, Axis::z);
    const Dense rho = lab.after_ideal_pulse(Axis::x, PI / 2.0, antiphase);
    EXPECT_LE(distance(rho, 2.0 * lab.op(1, Axis::z) * lab.op(2, Axis::y)), 1e-14);
}

TEST(StrongCoupling, ExchangesTheStatesOfEquivalentSpins) {
    // H = J I1.I2 turns Iz of spin 1 into that of spin 2 and back: (1 + cos 2 pi J t)/2 stays.
    Laboratory lab({1, 1});
    const double J = 15.0;
    lab.set_hamiltonian(pair_hamiltonian(lab, 0.0, 0.0, J, true));
    for (const double t : {0.0, 0.01, 1.0 / (2.0 * J), 0.05}) {
        const Dense rho = lab.after_delay(t, lab.op(1, Axis::z));
        EXPECT_NEAR(coefficient(lab.op(1, Axis::z), rho), (1.0 + std::cos(TWO_PI * J * t)) / 2.0, 1e-13);
        EXPECT_NEAR(coefficient(lab.op(2, Axis::z), rho), (1.0 - std::cos(TWO_PI * J * t)) / 2.0, 1e-13);
    }
}

TEST(StrongCoupling, DoesNotShowBetweenEquivalentSpins) {
    Laboratory lab({1, 1});
    const double w = TWO_PI * 30.0;
    lab.set_hamiltonian(pair_hamiltonian(lab, 30.0, 30.0, 15.0, true));
    const Dense rho = lab.after_delay(0.007, lab.total(Axis::x));
    const Dense expected =
        std::cos(w * 0.007) * lab.total(Axis::x) - std::sin(w * 0.007) * lab.total(Axis::y);
    EXPECT_LE(distance(rho, expected), 1e-13);
}

TEST(StrongCoupling, TransfersMagnetisationInALockedField) {
    // A field that leaves no shift difference (both spins on resonance): I1x and I2x exchange as above.
    Laboratory lab({1, 1});
    const double J = 10.0;
    lab.set_hamiltonian(pair_hamiltonian(lab, 0.0, 0.0, J, true));
    const double mixing = 1.0 / (2.0 * J);
    const Stretch lock = {10, mixing / 10, TWO_PI * 2000.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    const Dense rho = lab.after(lock, lab.op(1, Axis::x));
    EXPECT_NEAR(coefficient(lab.op(2, Axis::x), rho), 1.0, 1e-12);
    EXPECT_NEAR(coefficient(lab.op(1, Axis::x), rho), 0.0, 1e-12);
}

TEST(FreeEvolutionSignal, OfAWeaklyCoupledPairIsTwoDoublets) {
    // The receiver's sense is the opposite one: rho -> exp(-iHt) rho exp(+iHt), so a positive shift is a
    // positive frequency of <Ix> + i<Iy>.
    Laboratory lab({1, 1});
    const double shifts[2] = {40.0, -110.0};
    const double J = 7.0;
    const MarkedMatrix H(pair_hamiltonian(lab, shifts[0], shifts[1], J, false));
    const MarkedMatrix Fx(lab.total(Axis::x));
    const MarkedMatrix Fy(lab.total(Axis::y));
    const int points = 200;
    const double dt = 1.3e-3;
    std::vector<double> re(points);
    std::vector<double> im(points);
    kor::EngineSampleFreeEvolution(4, H, dt, points, Fx, Fx, Fy, re.data(), im.data());
    for (int k = 0; k < points; ++k) {
        const double t = k * dt;
        Complex expected = 0.0;
        for (const double shift : shifts) {
            expected += std::cos(PI * J * t) * std::polar(1.0, TWO_PI * shift * t);
        }
        EXPECT_NEAR(re[static_cast<std::size_t>(k)], expected.real(), 1e-11) << k;
        EXPECT_NEAR(im[static_cast<std::size_t>(k)], expected.imag(), 1e-11) << k;
    }
}
