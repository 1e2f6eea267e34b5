// Rotations of any spin: Wigner's functions, Legendre polynomials of the tensor ranks, sums over m.
// Varshalovich, Moskalev & Khersonskii, Quantum Theory of Angular Momentum, chapters 2 and 4.
#include "support/constants.h"
#include "support/laboratory.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor_test;

namespace {

double factorial(int k) {
    return k < 2 ? 1.0 : k * factorial(k - 1);
}

/// d^j_{m' m}(beta) by Wigner's sum; doubled quantum numbers.
double wigner_d(int twice_j, int twice_m1, int twice_m2, double beta) {
    const int a = (twice_j + twice_m1) / 2;
    const int b = (twice_j - twice_m1) / 2;
    const int c = (twice_j + twice_m2) / 2;
    const int d = (twice_j - twice_m2) / 2;
    double sum = 0.0;
    for (int s = 0; s <= c; ++s) {
        if (s > b || a - c + s < 0) {
            continue;
        }
        // powers: cos^(2j + m2 - m1 - 2s), sin^(m1 - m2 + 2s)
        const int sines = a - c + 2 * s;
        const double sign = (a - c + s) % 2 ? -1.0 : 1.0;
        sum += sign * std::pow(std::cos(0.5 * beta), twice_j - sines) *
               std::pow(std::sin(0.5 * beta), sines) /
               (factorial(c - s) * factorial(s) * factorial(a - c + s) * factorial(b - s));
    }
    return std::sqrt(factorial(a) * factorial(b) * factorial(c) * factorial(d)) * sum;
}

/// Zero-order irreducible tensors of one spin, up to their norms.
Dense rank_two(Laboratory& lab, int twice_spin) {
    const double I = 0.5 * twice_spin;
    const Dense Iz = lab.total(Axis::z);
    return 3.0 * Iz * Iz - I * (I + 1.0) * Dense::Identity(lab.n(), lab.n());
}

Dense rank_three(Laboratory& lab, int twice_spin) {
    const double I = 0.5 * twice_spin;
    const Dense Iz = lab.total(Axis::z);
    return 5.0 * Iz * Iz * Iz - (3.0 * I * (I + 1.0) - 1.0) * Iz;
}

} // namespace

TEST(Rotation, OfEverySpinHasTheElementsOfWignersSum) {
    for (int twice_spin = 1; twice_spin <= 9; ++twice_spin) {
        Laboratory lab({twice_spin});
        for (const double beta : {0.4, 1.3, 2.8, -1.0}) {
            const Dense r = lab.propagator({1, 1.0, 0.0, beta, 0.0, 0.0, 0.0, 0.0});
            for (int i = 0; i <= twice_spin; ++i) {
                for (int j = 0; j <= twice_spin; ++j) {
                    const double expected =
                        wigner_d(twice_spin, twice_spin - 2 * i, twice_spin - 2 * j, beta);
                    EXPECT_LE(std::abs(r(i, j) - expected), 2e-14) << twice_spin << ' ' << i << ' ' << j;
                }
            }
        }
    }
}

TEST(Rotation, OfVectorsTensorsOfRankTwoAndThreeFollowsLegendre) {
    // The part of a rank-k tensor that stays along z after a turn by b is P_k(cos b).
    for (const int twice_spin : {2, 3, 4, 7}) {
        Laboratory lab({twice_spin});
        for (const double b : {0.2, 0.9, 1.6, 3.0}) {
            const double c = std::cos(b);
            const Dense q = rank_two(lab, twice_spin);
            EXPECT_NEAR(coefficient(q, lab.after_ideal_pulse(Axis::x, b, q)), 0.5 * (3.0 * c * c - 1.0),
                        1e-13);
            if (twice_spin > 2) {
                const Dense o = rank_three(lab, twice_spin);
                EXPECT_NEAR(coefficient(o, lab.after_ideal_pulse(Axis::y, b, o)),
                            0.5 * (5.0 * c * c * c - 3.0 * c), 1e-13);
            }
        }
    }
}

TEST(Rotation, KeepsTheRankOfATensor) {
    // Nothing of a rank-2 tensor turns into a vector.
    Laboratory lab({3});
    const Dense rho = lab.after_ideal_pulse(Axis::x, 0.7, rank_two(lab, 3));
    for (const Axis axis : {Axis::x, Axis::y, Axis::z}) {
        EXPECT_NEAR(coefficient(lab.total(axis), rho), 0.0, 1e-14);
    }
}

TEST(Rotation, AboutTheMagicAngleCyclesTheAxes) {
    // A third of a turn about (1, 1, 1): z -> x -> y or the other way round, here by the left-handed sense.
    Laboratory lab({2});
    const double angle = TWO_PI / 3.0 / std::sqrt(3.0);
    const Stretch turn = {1, 1.0, angle, angle, angle, 0.0, 0.0, 0.0};
    EXPECT_LE(distance(lab.after(turn, lab.total(Axis::z)), lab.total(Axis::y)), 1e-13);
    EXPECT_LE(distance(lab.after(turn, lab.total(Axis::y)), lab.total(Axis::x)), 1e-13);
    EXPECT_LE(distance(lab.after(turn, lab.total(Axis::x)), lab.total(Axis::z)), 1e-13);
}

TEST(SpinOperators, HaveTheTracesOfTheirSums) {
    // Trace of Iz^2 = n I (I + 1) / 3, of Iz^4 = n I (I + 1)(3 I^2 + 3 I - 1) / 15.
    for (int twice_spin = 1; twice_spin <= 15; ++twice_spin) {
        Laboratory lab({twice_spin});
        const double I = 0.5 * twice_spin;
        const double n = twice_spin + 1.0;
        for (const Axis axis : {Axis::x, Axis::y, Axis::z}) {
            const Dense square = lab.total(axis) * lab.total(axis);
            EXPECT_NEAR(square.trace().real() / (n * I * (I + 1.0) / 3.0), 1.0, 1e-13);
            EXPECT_NEAR((square * square).trace().real() /
                            (n * I * (I + 1.0) * (3.0 * I * I + 3.0 * I - 1.0) / 15.0),
                        1.0, 1e-13);
        }
    }
}

TEST(SpinOperators, AddToTheirCasimir) {
    for (int twice_spin = 1; twice_spin <= 15; ++twice_spin) {
        Laboratory lab({twice_spin});
        Dense sum = Dense::Zero(lab.n(), lab.n());
        for (const Axis axis : {Axis::x, Axis::y, Axis::z}) {
            sum += lab.total(axis) * lab.total(axis);
        }
        const double expected = 0.25 * twice_spin * (twice_spin + 2.0);
        EXPECT_LE(distance(sum, expected * Dense::Identity(lab.n(), lab.n())), 1e-13 * expected);
    }
}
