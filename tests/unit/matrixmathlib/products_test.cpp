#include "matrixmathlib.h"
#include "support/marked_matrix.h"
#include "support/random_systems.h"
#include "unit/matrixmathlib/matrix_sizes.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

/// Rounding of one sum of n products of numbers of modulus up to sqrt(2).
double rounding(int n) {
    return 1e-15 * (n + 1);
}

/// A random matrix whose elements are exact zeros (of either sign) but for one in `one_in`.
Dense sparse_matrix(Random& random, int n, int one_in) {
    Dense m = random.matrix(n);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            if (random.integer(1, one_in) != 1) {
                m(i, j) = random.integer(0, 1) ? Complex(0.0, -0.0) : Complex(-0.0, 0.0);
            }
        }
    }
    return m;
}

} // namespace

TEST(CMatMult, AgreesWithEigenAtEverySize) {
    Random random(21);
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        const Dense b = random.matrix(n);
        MarkedMatrix A(a);
        MarkedMatrix B(b);
        MarkedMatrix out;
        CMatMult(n, A, B, out);
        EXPECT_LE(distance(out, a * b), rounding(n)) << n;
        EXPECT_TRUE(out.border_untouched(n)) << n;
        EXPECT_EQ(distance(A, a), 0.0);
        EXPECT_EQ(distance(B, b), 0.0);
    }
}

TEST(CMatMult, GivesTheSameBitsInPlace) {
    Random random(22);
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        const Dense b = random.matrix(n);
        MarkedMatrix A(a);
        MarkedMatrix B(b);
        MarkedMatrix expected;
        CMatMult(n, A, B, expected);
        MarkedMatrix left(a);
        CMatMult(n, left, B, left);
        EXPECT_TRUE(same_bits(n, left, expected)) << n;
        EXPECT_TRUE(left.border_untouched(n)) << n;
        MarkedMatrix right(b);
        CMatMult(n, A, right, right);
        EXPECT_TRUE(same_bits(n, right, expected)) << n;
        MarkedMatrix square;
        CMatMult(n, A, A, square);
        CMatMult(n, A, A, A);
        EXPECT_TRUE(same_bits(n, A, square)) << n;
    }
}

TEST(CMatMult, AddsItsTermsInTheOrderOfTheInnerIndex) {
    // 1 + 1e17 - 1e17 - 1 depends on the order: from the left, the first 1 is lost.
    Dense a = Dense::Zero(4, 4);
    a.row(0) << 1.0, 1e17, -1e17, -1.0;
    Dense b = Dense::Zero(4, 4);
    b.col(0).setOnes();
    MarkedMatrix A(a);
    MarkedMatrix B(b);
    MarkedMatrix out;
    CMatMult(4, A, B, out);
    EXPECT_EQ(out.get()[1][1][1], -1.0);
}

TEST(CMatMultSparse, GivesTheSameBitsAsThePlainProduct) {
    Random random(23);
    for (const int n : MATRIX_SIZES) {
        for (const int one_in : {1, 2, 8, 1000}) {
            MarkedMatrix A(sparse_matrix(random, n, one_in));
            MarkedMatrix B(sparse_matrix(random, n, 2));
            MarkedMatrix plain;
            MarkedMatrix sparse;
            CMatMult(n, A, B, plain);
            CMatMultSparse(n, A, B, sparse);
            EXPECT_TRUE(same_bits(n, sparse, plain)) << n << " one in " << one_in;
            EXPECT_TRUE(sparse.border_untouched(n)) << n;
        }
    }
}

TEST(CMatMultAdd, AddsAScaledProduct) {
    Random random(24);
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        const Dense b = random.matrix(n);
        const Dense c = random.matrix(n);
        MarkedMatrix A(a);
        MarkedMatrix B(b);
        MarkedMatrix out(c);
        CMatMultAdd(n, A, B, -1.5, out);
        EXPECT_LE(distance(out, c - 1.5 * a * b), 2.0 * rounding(n)) << n;
        EXPECT_TRUE(out.border_untouched(n)) << n;
        CMatMultAdd(n, A, B, 0.5, A);
        EXPECT_LE(distance(A, a + 0.5 * a * b), rounding(n)) << n;
        MarkedMatrix A2(a);
        CMatMultAdd(n, A2, B, 0.5, B);
        EXPECT_LE(distance(B, b + 0.5 * a * b), rounding(n)) << n;
    }
}

TEST(CMatCommutator, IsTheDifferenceOfBothProducts) {
    Random random(25);
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        const Dense b = random.matrix(n);
        MarkedMatrix A(a);
        MarkedMatrix B(b);
        MarkedMatrix out;
        CMatCommutator(n, A, B, out);
        EXPECT_LE(distance(out, a * b - b * a), 2.0 * rounding(n)) << n;
        EXPECT_TRUE(out.border_untouched(n)) << n;
        MarkedMatrix first(a);
        CMatCommutator(n, first, B, first);
        EXPECT_TRUE(same_bits(n, first, out)) << n;
        CMatCommutator(n, A, B, B);
        EXPECT_TRUE(same_bits(n, B, out)) << n;
    }
}

TEST(CMatCommutator, OfAMatrixWithItselfIsZero) {
    Random random(26);
    MarkedMatrix A(random.matrix(7));
    MarkedMatrix out;
    CMatCommutator(7, A, A, out);
    EXPECT_EQ(largest(out.dense(7)), 0.0);
}

TEST(Transform, MultipliesThreeMatricesAndConjugatesNone) {
    Random random(27);
    for (const int n : MATRIX_SIZES) {
        const Dense ut = random.matrix(n);
        const Dense h = random.matrix(n);
        const Dense u = random.matrix(n);
        MarkedMatrix Ut(ut);
        MarkedMatrix H(h);
        MarkedMatrix U(u);
        MarkedMatrix out;
        Transform(n, Ut, H, U, out);
        EXPECT_LE(distance(out, ut * h * u), (n + 1) * rounding(n)) << n;
        EXPECT_TRUE(out.border_untouched(n)) << n;
        Transform(n, Ut, H, U, U);
        EXPECT_TRUE(same_bits(n, U, out)) << n;
        MarkedMatrix U2(u);
        Transform(n, Ut, H, U2, H);
        EXPECT_TRUE(same_bits(n, H, out)) << n;
        MarkedMatrix H2(h);
        Transform(n, Ut, H2, U2, Ut);
        EXPECT_TRUE(same_bits(n, Ut, out)) << n;
    }
}

TEST(DoRotation, PutsTheAdjointOnTheLeft) {
    Random random(28);
    for (const int n : MATRIX_SIZES) {
        const Dense r = random.matrix(n);
        const Dense rho = random.matrix(n);
        MarkedMatrix R(r);
        MarkedMatrix Rho(rho);
        DoRotation(n, R, Rho);
        EXPECT_LE(distance(Rho, r.adjoint() * rho * r), (n + 1) * rounding(n)) << n;
        EXPECT_TRUE(Rho.border_untouched(n)) << n;
        EXPECT_EQ(distance(R, r), 0.0) << n;
    }
}

TEST(ExpectationValue, IsTheTraceOfTheProduct) {
    Random random(29);
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        const Dense rho = random.matrix(n);
        MarkedMatrix A(a);
        MarkedMatrix Rho(rho);
        Complex2 value{{7.0, 7.0, 7.0}};
        ExpectationValue(n, A, Rho, value);
        const Complex expected = n ? (a * rho).trace() : Complex(0.0, 0.0);
        EXPECT_LE(std::abs(Complex(value[1], value[2]) - expected), (n + 1) * rounding(n)) << n;
        EXPECT_EQ(value[0], 7.0);
    }
}
