#include "matrixmathlib.h"
#include "support/console_script.h"
#include "support/marked_matrix.h"
#include "support/random_systems.h"
#include "unit/matrixmathlib/matrix_sizes.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor;
using namespace kor_test;

namespace {} // namespace

TEST(PiVal, IsTheDoubleNearestToPi) {
    EXPECT_EQ(pi_val(), 3.141592653589793);
    EXPECT_EQ(pi_val(), std::acos(-1.0));
}

TEST(Sign, TakesTheSignOfTheSecondArgument) {
    EXPECT_EQ(sign(-2.0, 1.0), 2.0);
    EXPECT_EQ(sign(2.0, -1.0), -2.0);
    EXPECT_EQ(sign(-2.0, -1.0), -2.0);
}

TEST(Sign, CountsBothZerosAsPositive) {
    EXPECT_EQ(sign(2.0, 0.0), 2.0);
    EXPECT_EQ(sign(2.0, -0.0), 2.0);
    EXPECT_EQ(sign(-2.0, -0.0), 2.0);
}

TEST(CMatZero, ClearsTheBlockAndNothingElse) {
    for (const int n : MATRIX_SIZES) {
        MarkedMatrix out;
        CMatZero(n, out);
        EXPECT_EQ(largest(out.dense(n)), 0.0) << n;
        EXPECT_TRUE(out.border_untouched(n)) << n;
    }
}

TEST(CMatIdentity, HasOnesOnTheDiagonalOfTheBlockOnly) {
    for (const int n : MATRIX_SIZES) {
        MarkedMatrix out;
        CMatIdentity(n, out);
        EXPECT_EQ(distance(out, Dense::Identity(n, n)), 0.0) << n;
        EXPECT_TRUE(out.border_untouched(n)) << n;
    }
}

TEST(CMatIdentity, ServesTheFullCapacity) {
    MarkedMatrix out;
    CMatIdentity(256, out);
    EXPECT_EQ(distance(out, Dense::Identity(256, 256)), 0.0);
    EXPECT_TRUE(out.border_untouched(256));
}

TEST(CopyCMatrix, CopiesTheBlockAndNothingElse) {
    Random random(1);
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        MarkedMatrix A(a);
        MarkedMatrix out;
        CopyCMatrix(n, A, out);
        EXPECT_EQ(distance(out, a), 0.0) << n;
        EXPECT_TRUE(out.border_untouched(n)) << n;
        CopyCMatrix(n, A, A);
        EXPECT_EQ(distance(A, a), 0.0) << n;
    }
}

TEST(CMatAdd, AddsElementByElement) {
    Random random(2);
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        const Dense b = random.matrix(n);
        MarkedMatrix A(a);
        MarkedMatrix B(b);
        MarkedMatrix out;
        CMatAdd(n, A, B, out);
        EXPECT_EQ(distance(out, a + b), 0.0) << n;
        EXPECT_TRUE(out.border_untouched(n)) << n;
        CMatAdd(n, A, B, B);
        EXPECT_EQ(distance(B, a + b), 0.0) << n;
        CMatAdd(n, A, A, A);
        EXPECT_EQ(distance(A, a + a), 0.0) << n;
        EXPECT_TRUE(A.border_untouched(n)) << n;
    }
}

TEST(CMatRMultAdd, CombinesTwoMatricesWithRealFactors) {
    Random random(3);
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        const Dense b = random.matrix(n);
        const Dense expected = 2.5 * a - 0.75 * b;
        MarkedMatrix A(a);
        MarkedMatrix B(b);
        MarkedMatrix out;
        CMatRMultAdd(n, A, 2.5, B, -0.75, out);
        EXPECT_LE(distance(out, expected), 1e-15) << n;
        EXPECT_TRUE(out.border_untouched(n)) << n;
        CMatRMultAdd(n, A, 2.5, B, -0.75, B);
        EXPECT_EQ(distance(B, out.dense(n)), 0.0) << n;
    }
}

TEST(RMultCMat, ScalesByARealFactor) {
    Random random(4);
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        MarkedMatrix A(a);
        MarkedMatrix out;
        RMultCMat(n, -3.5, A, out);
        EXPECT_EQ(distance(out, -3.5 * a), 0.0) << n;
        EXPECT_TRUE(out.border_untouched(n)) << n;
        RMultCMat(n, -3.5, A, A);
        EXPECT_EQ(distance(A, -3.5 * a), 0.0) << n;
    }
}

TEST(CMultCMat, ScalesByAComplexFactor) {
    Random random(5);
    const Complex2 factor{{0.0, 0.5, -2.0}};
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        MarkedMatrix A(a);
        MarkedMatrix out;
        CMultCMat(n, factor, A, out);
        EXPECT_LE(distance(out, Complex(0.5, -2.0) * a), 1e-15) << n;
        EXPECT_TRUE(out.border_untouched(n)) << n;
        CMultCMat(n, factor, A, A);
        EXPECT_EQ(distance(A, out.dense(n)), 0.0) << n;
    }
}

TEST(CMultCMat, ReadsAFactorInsideTheOutputOnce) {
    Random random(6);
    const Dense a = random.matrix(3);
    MarkedMatrix A(a);
    CMultCMat(3, A.get()[1][1], A, A);
    EXPECT_LE(distance(A, a(0, 0) * a), 1e-15);
}

TEST(Adjungate, IsTheConjugateTranspose) {
    Random random(7);
    for (const int n : MATRIX_SIZES) {
        const Dense p = random.matrix(n);
        MarkedMatrix P(p);
        MarkedMatrix Q;
        Adjungate(n, P, Q);
        EXPECT_EQ(distance(Q, p.adjoint()), 0.0) << n;
        EXPECT_TRUE(Q.border_untouched(n)) << n;
        Adjungate(n, P, P);
        EXPECT_EQ(distance(P, p.adjoint()), 0.0) << n;
        EXPECT_TRUE(P.border_untouched(n)) << n;
    }
}

TEST(Transpose, DoesNotConjugate) {
    Random random(8);
    for (const int n : MATRIX_SIZES) {
        const Dense p = random.matrix(n);
        MarkedMatrix P(p);
        MarkedMatrix Q;
        Transpose(n, P, Q);
        EXPECT_EQ(distance(Q, p.transpose()), 0.0) << n;
        EXPECT_TRUE(Q.border_untouched(n)) << n;
        Transpose(n, P, P);
        EXPECT_EQ(distance(P, p.transpose()), 0.0) << n;
        EXPECT_TRUE(P.border_untouched(n)) << n;
    }
}

TEST(CalcTrace, SumsTheDiagonal) {
    Random random(9);
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        MarkedMatrix A(a);
        Complex2 trace{{7.0, 7.0, 7.0}};
        CalcTrace(n, A, trace);
        EXPECT_LE(std::abs(Complex(trace[1], trace[2]) - a.trace()), 1e-14) << n;
        EXPECT_EQ(trace[0], 7.0);
    }
}

TEST(CalcTrace, OfAnEmptyBlockIsZero) {
    MarkedMatrix A;
    Complex2 trace{{7.0, 7.0, 7.0}};
    CalcTrace(0, A, trace);
    EXPECT_EQ(trace[1], 0.0);
    EXPECT_EQ(trace[2], 0.0);
}

TEST(NormCMatrix, GivesUnitFrobeniusNorm) {
    Random random(10);
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        MarkedMatrix A(a);
        NormCMatrix(n, A);
        EXPECT_LE(distance(A, a / (n ? a.norm() : 1.0)), 1e-15) << n;
        EXPECT_TRUE(A.border_untouched(n)) << n;
    }
}

TEST(NormCMatrix, LeavesAZeroMatrixZero) {
    MarkedMatrix A(Dense::Zero(3, 3));
    NormCMatrix(3, A);
    EXPECT_EQ(largest(A.dense(3)), 0.0);
}

TEST(MaxabsCmat, AddsTheSizesOfBothParts) {
    Dense a = Dense::Zero(3, 3);
    a(2, 0) = Complex(3.0, -4.0);
    MarkedMatrix A(a);
    EXPECT_EQ(maxabs_cmat(3, A), 7.0);
}

TEST(MaxabsCmat, LooksAtTheBlockOnly) {
    Random random(11);
    for (const int n : MATRIX_SIZES) {
        const Dense a = random.matrix(n);
        MarkedMatrix A(a);
        double expected = 0.0;
        for (int k = 0; k < n * n; ++k) {
            const Complex z = a(k / n, k % n);
            expected = std::fmax(expected, std::fabs(z.real()) + std::fabs(z.imag()));
        }
        EXPECT_EQ(maxabs_cmat(n, A), expected) << n;
    }
}

TEST(ShowCMatElements, PrintsTheRealAndTheImaginaryTable) {
    Dense a(2, 2);
    a << Complex(1.0, 0.0), Complex(-0.5, 2.5e-3), Complex(0.0, -1e100), Complex(123.4, -0.25);
    MarkedMatrix A(a);
    const ConsoleOutput console = play_console("", [&] { ShowCMatElements(2, A); });
    EXPECT_EQ(console.out, "\n"
                           "====================================================\n"
                           "REAL PART (n = 2)\n"
                           "====================================================\n"
                           "\n"
                           "             1             2        \n"
                           "   1    1.0E+00  -5.0E-01 \n"
                           "   2    0.0E+00   1.2E+02 \n"
                           "\n"
                           "====================================================\n"
                           "IMAGINARY PART (n = 2)\n"
                           "====================================================\n"
                           "\n"
                           "             1             2        \n"
                           "   1    0.0E+00   2.5E-03 \n"
                           "   2   -1.0E+100  -2.5E-01 \n"
                           "\n");
    EXPECT_EQ(console.err, "");
}

TEST(ShowCMatElements, OfAnEmptyBlockPrintsTheTitlesAlone) {
    MarkedMatrix A;
    const ConsoleOutput console = play_console("", [&] { ShowCMatElements(0, A); });
    EXPECT_EQ(console.out, "\n"
                           "====================================================\n"
                           "REAL PART (n = 0)\n"
                           "====================================================\n"
                           "\n"
                           "        \n"
                           "\n"
                           "====================================================\n"
                           "IMAGINARY PART (n = 0)\n"
                           "====================================================\n"
                           "\n"
                           "        \n"
                           "\n");
}
