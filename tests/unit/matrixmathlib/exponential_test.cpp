#include "matrixmathlib.h"
#include "support/marked_matrix.h"
#include "support/random_systems.h"

#include <gtest/gtest.h>
#include <unsupported/Eigen/MatrixFunctions>

#include <cmath>
#include <utility>

using namespace kor;
using namespace kor_test;

namespace {

const Complex kI(0.0, 1.0);

/// diag(exp(i phase), exp(-i phase)): a spin 1/2 after the angle 2 phase about z.
Dense z_turn(double phase) {
    Dense u = Dense::Zero(2, 2);
    u(0, 0) = std::polar(1.0, phase);
    u(1, 1) = std::polar(1.0, -phase);
    return u;
}

/// exp(i tau) by the series of exp(i tau / 2^s), up to its first term below 1e-14, squared s times.
Complex scaled_series(double tau, int s) {
    const Complex exponent(0.0, std::ldexp(tau, -s));
    Complex term = 1.0;
    Complex sum = 1.0;
    for (int k = 1; std::fabs(term.real()) + std::fabs(term.imag()) >= 1e-14; ++k) {
        term = term * exponent / static_cast<double>(k);
        sum += term;
    }
    for (int i = 0; i < s; ++i) {
        sum = sum * sum;
    }
    return sum;
}

} // namespace

TEST(ExpMatrix, HalvesUntilItsNormIsAtMostOneHalf) {
    MarkedMatrix one(Dense::Identity(1, 1));
    MarkedMatrix out;
    const std::pair<double, int> halvings[] = {{0.5, 0},  {std::nextafter(0.5, 1.0), 1},
                                               {0.75, 1}, {std::nextafter(1.0, 2.0), 2},
                                               {1.5, 2},  {-40.0, 7}};
    for (const auto& [tau, s] : halvings) {
        ExpMatrix(1, one, tau, out);
        EXPECT_EQ(out.dense(1)(0, 0), scaled_series(tau, s)) << tau;
    }
}

TEST(ExpMatrix, AgreesWithEigenOnRandomMatrices) {
    Random random(41);
    for (const int n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 64}) {
        const Dense h = random.matrix(n);
        const double tau = random.uniform(-2.0, 2.0);
        const Dense expected = Dense(kI * tau * h).exp();
        MarkedMatrix H(h);
        MarkedMatrix out;
        ExpMatrix(n, H, tau, out);
        EXPECT_LT(distance(out, expected), 1e-12 * std::fmax(1.0, largest(expected))) << n;
        EXPECT_TRUE(out.border_untouched(n)) << n;
        EXPECT_EQ(distance(H, h), 0.0) << n;
    }
}

TEST(ExpMatrix, OfAHermitianMatrixAgreesWithItsEigenDecomposition) {
    Random random(42);
    for (const int n : {2, 3, 5, 8, 16, 64}) {
        const Dense h = 100.0 * random.hermitian(n);
        MarkedMatrix H(h);
        MarkedMatrix out;
        ExpMatrix(n, H, 0.25, out);
        EXPECT_LE(distance(out, exp_i(h, 0.25)), 3e-12) << n;
        EXPECT_LE(distance(out.dense(n).adjoint() * out.dense(n), Dense::Identity(n, n)), 3e-12) << n;
    }
}

TEST(ExpMatrix, OfTheZeroMatrixIsExactlyTheIdentity) {
    MarkedMatrix H(Dense::Zero(5, 5));
    MarkedMatrix out;
    ExpMatrix(5, H, 3.0, out);
    EXPECT_EQ(distance(out, Dense::Identity(5, 5)), 0.0);
}

TEST(ExpMatrix, OverNoTimeIsExactlyTheIdentity) {
    Random random(43);
    MarkedMatrix H(random.matrix(5));
    MarkedMatrix out;
    ExpMatrix(5, H, 0.0, out);
    EXPECT_EQ(distance(out, Dense::Identity(5, 5)), 0.0);
}

TEST(ExpMatrix, OfIzTurnsTheTwoStatesInOppositeSenses) {
    MarkedMatrix Iz(one_spin_operator(1, Axis::z));
    MarkedMatrix out;
    for (const double tau : {0.1, 1.0, -2.5, 50.0}) {
        ExpMatrix(2, Iz, tau, out);
        EXPECT_LE(distance(out, z_turn(tau / 2.0)), 1e-14 * (1.0 + std::fabs(tau))) << tau;
    }
}

TEST(ExpMatrix, OfIxMixesTheTwoStates) {
    MarkedMatrix Ix(one_spin_operator(1, Axis::x));
    MarkedMatrix out;
    ExpMatrix(2, Ix, 1.2, out);
    Dense expected(2, 2);
    expected << std::cos(0.6), kI * std::sin(0.6), kI * std::sin(0.6), std::cos(0.6);
    EXPECT_LE(distance(out, expected), 1e-15);
}

TEST(ExpMatrix, OfANilpotentMatrixIsItsFiniteSeries) {
    Dense h = Dense::Zero(3, 3);
    h(0, 1) = 2.0;
    h(1, 2) = 3.0;
    MarkedMatrix H(h);
    MarkedMatrix out;
    ExpMatrix(3, H, 0.5, out);
    EXPECT_LE(distance(out, Dense::Identity(3, 3) + kI * 0.5 * h - 0.125 * h * h), 1e-15);
}

TEST(ExpMatrix, GivesTheSameResultInPlace) {
    Random random(44);
    for (const int n : {1, 4, 16}) {
        MarkedMatrix H(random.hermitian(n));
        MarkedMatrix out;
        ExpMatrix(n, H, 7.0, out);
        ExpMatrix(n, H, 7.0, H);
        EXPECT_EQ(distance(H, out.dense(n)), 0.0) << n;
        EXPECT_TRUE(H.border_untouched(n)) << n;
    }
}

TEST(ExpMatrix, OfAnEmptyBlockTouchesNothing) {
    MarkedMatrix H;
    MarkedMatrix out;
    ExpMatrix(0, H, 1.0, out);
    EXPECT_TRUE(out.border_untouched(0));
}

TEST(ExpMatrix, Squares24TimesAtTheEdgeOfItsReach) {
    // A norm of 0.49 * 2^24 is halved 24 times. Each squaring doubles the rounding of the phase, so 2^24
    // roundings of 1e-16 are what may be left.
    const double norm = std::ldexp(0.49, 24);
    MarkedMatrix Iz(one_spin_operator(1, Axis::z));
    MarkedMatrix out;
    ExpMatrix(2, Iz, 2.0 * norm, out);
    EXPECT_LE(distance(out, z_turn(norm)), 2e-8);
}

TEST(ExpMatrix, UsesANormBeyond24HalvingsAsItIs) {
    // Three times the reach: the series starts from a norm of 1.5 and still converges.
    const double norm = std::ldexp(1.5, 24);
    MarkedMatrix Iz(one_spin_operator(1, Axis::z));
    MarkedMatrix out;
    ExpMatrix(2, Iz, 2.0 * norm, out);
    EXPECT_LE(distance(out, z_turn(norm)), 2e-8);
}

TEST(ExpMatrix, SumsEightyTermsWhereItMust) {
    // From a norm of 20 the series needs 79 terms. What the cancellation of its large terms leaves, 1e-8,
    // grows with the squarings to some tenths; 60 terms would miss 1e-4 and end in nothing or in infinity.
    MarkedMatrix Iz(one_spin_operator(1, Axis::z));
    MarkedMatrix out;
    ExpMatrix(2, Iz, 2.0 * std::ldexp(20.0, 24), out);
    EXPECT_NEAR(std::abs(out.dense(2)(0, 0)), 1.0, 0.5);
}

TEST(ExpMatrix, HalvesNoMoreThan24Times) {
    // From a norm of 60 the 80 terms of the series do not converge; a 25th halving and more would have.
    MarkedMatrix Iz(one_spin_operator(1, Axis::z));
    MarkedMatrix out;
    ExpMatrix(2, Iz, 2.0 * std::ldexp(60.0, 24), out);
    EXPECT_FALSE(std::abs(std::abs(out.dense(2)(0, 0)) - 1.0) < 0.5);
}

TEST(Epower, IsThePhaseOfEachEigenvalue) {
    const double EV[4] = {99.0, 0.0, 1.5, -20.0};
    Complex2 lamb[5];
    for (Complex2& element : lamb) {
        element = {{7.0, 7.0, 7.0}};
    }
    Epower(3, EV, lamb, 0.3);
    for (int i = 1; i <= 3; ++i) {
        EXPECT_EQ(lamb[i][1], std::cos(EV[i] * 0.3)) << i;
        EXPECT_EQ(lamb[i][2], std::sin(EV[i] * 0.3)) << i;
        EXPECT_EQ(lamb[i][0], 7.0) << i;
    }
    EXPECT_EQ(lamb[0][1], 7.0);
    EXPECT_EQ(lamb[4][1], 7.0);
}
