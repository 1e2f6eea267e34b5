#include "matrixmathlib.h"
#include "support/marked_matrix.h"
#include "support/random_systems.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace kor;
using namespace kor_test;

namespace {

struct Decomposition {
    Dense Z;
    std::vector<double> D; // from 0
};

Decomposition decompose(const Dense& a) {
    const int n = static_cast<int>(a.rows());
    MarkedMatrix A(a);
    MarkedMatrix Z;
    double D[KOR_MAX_STATES + 2];
    std::fill(std::begin(D), std::end(D), -9.5);
    hermit(n, A, Z, D);
    EXPECT_TRUE(Z.border_untouched(n));
    EXPECT_EQ(distance(A, a), 0.0);
    EXPECT_EQ(D[0], -9.5);
    EXPECT_EQ(D[n + 1], -9.5);
    return {Z.dense(n), std::vector<double>(D + 1, D + n + 1)};
}

/// Z diag(D) adjoint(Z)
Dense rebuilt(const Decomposition& result) {
    const Eigen::Map<const Eigen::VectorXd> values(result.D.data(), static_cast<int>(result.D.size()));
    return result.Z * values.cast<Complex>().asDiagonal() * result.Z.adjoint();
}

double orthonormality_error(const Dense& Z) {
    return distance(Z.adjoint() * Z, Dense::Identity(Z.rows(), Z.cols()));
}

void expect_decomposes(const Dense& a, double tolerance) {
    const Decomposition result = decompose(a);
    EXPECT_TRUE(std::is_sorted(result.D.begin(), result.D.end()));
    EXPECT_LE(orthonormality_error(result.Z), tolerance);
    EXPECT_LT(distance(rebuilt(result), a), tolerance * std::fmax(1.0, largest(a)));
    const Eigen::SelfAdjointEigenSolver<Dense> oracle(a);
    for (int k = 0; k < a.rows(); ++k) {
        EXPECT_NEAR(result.D[static_cast<std::size_t>(k)], oracle.eigenvalues()(k),
                    tolerance * std::fmax(1.0, largest(a)));
    }
}

/// `blocks` real 2 x 2 blocks [[10 b, 1], [1, 10 b]] on the diagonal: levels 10 b - 1 and 10 b + 1.
Dense coupled_pairs(int blocks) {
    Dense a = Dense::Zero(2 * blocks, 2 * blocks);
    for (int b = 0; b < blocks; ++b) {
        a(2 * b, 2 * b) = a(2 * b + 1, 2 * b + 1) = 10.0 * b;
        a(2 * b, 2 * b + 1) = a(2 * b + 1, 2 * b) = 1.0;
    }
    return a;
}

} // namespace

TEST(ComplexGs, MakesIndependentColumnsOrthonormal) {
    static EigenvectorTable re;
    static EigenvectorTable im;
    Random random(53);
    const Dense a = random.matrix(9);
    for (int r = 0; r < 9; ++r) {
        for (int c = 0; c < 9; ++c) {
            re[r + 1][c + 1] = a(r, c).real();
            im[r + 1][c + 1] = a(r, c).imag();
        }
    }
    complex_gs(9, re, im);
    Dense q(9, 9);
    for (int r = 0; r < 9; ++r) {
        for (int c = 0; c < 9; ++c) {
            q(r, c) = Complex(re[r + 1][c + 1], im[r + 1][c + 1]);
        }
    }
    EXPECT_LE(orthonormality_error(q), 1e-13);
    const Dense triangle = q.adjoint() * a; // column c depends on the columns up to c alone
    for (int r = 0; r < 9; ++r) {
        for (int c = 0; c < r; ++c) {
            EXPECT_LE(std::abs(triangle(r, c)), 1e-13);
        }
    }
}

TEST(ComplexGsRange, TouchesItsColumnsOnlyAndLeavesAZeroColumnZero) {
    static EigenvectorTable re;
    static EigenvectorTable im;
    re[1][1] = 3.0; // outside the range, and not orthogonal to column 2
    re[1][2] = 2.0;
    im[1][4] = 5.0;
    re[2][4] = 5.0;
    complex_gs_range(2, 2, 4, re, im);
    EXPECT_EQ(re[1][1], 3.0);
    EXPECT_EQ(re[1][2], 1.0);
    EXPECT_EQ(re[1][3], 0.0);
    EXPECT_EQ(re[2][3], 0.0);
    EXPECT_EQ(im[1][4], 0.0);
    EXPECT_EQ(re[2][4], 1.0);
}

TEST(Hermit, AgreesWithEigenOnSmallRandomMatrices) {
    Random random(54);
    for (int trial = 0; trial < 50; ++trial) {
        for (const int n : {1, 2, 3}) {
            expect_decomposes(random.hermitian(n), 1e-11);
        }
    }
}

TEST(Hermit, SortsADiagonalMatrixAndGivesUnitVectors) {
    Dense a = Dense::Zero(4, 4);
    a.diagonal() << 3.0, -1.0, 2.0, 0.5;
    const Decomposition result = decompose(a);
    EXPECT_EQ(result.D, std::vector<double>({-1.0, 0.5, 2.0, 3.0}));
    const int place[4] = {1, 3, 2, 0};
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(std::abs(result.Z(place[k], k)), 1.0) << k;
    }
    EXPECT_EQ(orthonormality_error(result.Z), 0.0);
}

TEST(Hermit, GivesAnOrthonormalBasisForTheIdentityOfEverySize) {
    for (int n = 1; n <= KOR_MAX_EIGEN_STATES; ++n) {
        const Decomposition result = decompose(Dense::Identity(n, n));
        EXPECT_EQ(result.D, std::vector<double>(static_cast<std::size_t>(n), 1.0));
        EXPECT_EQ(orthonormality_error(result.Z), 0.0) << n;
    }
}

TEST(Hermit, ResolvesTheDegenerateLevelsOfEquivalentSpins) {
    for (int spins = 1; spins <= 6; ++spins) {
        const std::vector<int> halves(static_cast<std::size_t>(spins), 1);
        expect_decomposes(100.0 * total_operator(halves, Axis::z), 1e-14);
    }
}

TEST(Hermit, ResolvesADoublyDegenerateEigenvalueInAnyBasis) {
    Random random(55);
    for (int trial = 0; trial < 50; ++trial) {
        const Dense u = random.unitary(3);
        Dense levels = Dense::Zero(3, 3);
        levels.diagonal() << 1.0, 1.0, -2.0;
        const Dense a = u * levels * u.adjoint();
        const Decomposition result = decompose(0.5 * (a + a.adjoint()));
        EXPECT_EQ(result.D[1], result.D[2]); // exactly: both are the first value of their group
        EXPECT_NEAR(result.D[1], 1.0, 1e-12);
        EXPECT_LE(orthonormality_error(result.Z), 1e-10);
        EXPECT_LE(distance(rebuilt(result), a), 1e-10);
    }
}

TEST(Hermit, ResolvesCoupledBlocks) {
    Random random(56);
    Dense a = Dense::Zero(6, 6);
    a.block(0, 0, 2, 2) = random.hermitian(2);
    a.block(2, 2, 3, 3) = random.hermitian(3);
    a(5, 5) = a(0, 0);
    expect_decomposes(a, 1e-11);
    Dense twice = Dense::Zero(4, 4); // every level of the block occurs twice
    twice.block(0, 0, 2, 2) = random.hermitian(2);
    twice.block(2, 2, 2, 2) = twice.block(0, 0, 2, 2);
    expect_decomposes(twice, 1e-11);
}

TEST(Hermit, IsExactForTwoStronglyCoupledSpins) {
    Random random(57);
    for (int trial = 0; trial < 20; ++trial) {
        expect_decomposes(random_system(random, {1, 1}, Coupling::exact).H0, 1e-12);
    }
}

TEST(Hermit, SpendsTwoRotationsOnEachRealPair) {
    // The embedding holds every 2 x 2 block twice, so 30 blocks take the 60 rotations.
    expect_decomposes(coupled_pairs(30), 1e-13);
    // Of 31 blocks the second copies of the last two stay undone, each at its doubly counted middle value:
    // 289, 290, 290, 291, 299, 300, 300, 301, of which the first four levels are taken.
    const Decomposition result = decompose(coupled_pairs(31));
    EXPECT_EQ(std::vector<double>(result.D.begin() + 57, result.D.end()),
              std::vector<double>({281.0, 289.0, 290.0, 291.0, 299.0}));
}

TEST(Hermit, UsesAMatrixThatNeedsMoreRotationsAsItStands) {
    Random random(58);
    const Dense a = random.hermitian(16);
    const Decomposition result = decompose(a);
    EXPECT_TRUE(std::is_sorted(result.D.begin(), result.D.end()));
    EXPECT_GT(distance(rebuilt(result), a), 1e-3);
    for (int k = 0; k < 16; ++k) {
        EXPECT_NEAR(result.Z.col(k).norm(), 1.0, 1e-13) << k;
    }
}

TEST(Hermit, TakesValuesWithinItsToleranceAsOneLevel) {
    Dense a = Dense::Zero(3, 3);
    a.diagonal() << 5.0, 5.0 + 1e-9, 5.0 + 1e-6;
    const Decomposition result = decompose(a);
    EXPECT_EQ(result.D, std::vector<double>({5.0, 5.0, 5.0 + 1e-6}));
    EXPECT_EQ(orthonormality_error(result.Z), 0.0);
}

TEST(Hermit, ComparesWithTheFirstValueOfTheLevel) {
    // The tolerance at 5 is (5 + 5 + 1) 1e-9 + 1e-12.
    Dense a = Dense::Zero(3, 3);
    a.diagonal() << 5.0, 5.0 + 1.05e-8, 5.0 + 1.15e-8;
    EXPECT_EQ(decompose(a).D, std::vector<double>({5.0, 5.0, 5.0 + 1.15e-8}));
}

TEST(Hermit, MayWriteItsVectorsOverItsMatrix) {
    Random random(59);
    const Dense a = random.hermitian(3);
    const Decomposition expected = decompose(a);
    MarkedMatrix A(a);
    double D[4];
    hermit(3, A, A, D);
    EXPECT_EQ(distance(A, expected.Z), 0.0);
}

TEST(Hermit, OfAnEmptyBlockTouchesNothing) {
    MarkedMatrix A;
    MarkedMatrix Z;
    double D[1] = {4.0};
    hermit(0, A, Z, D);
    EXPECT_TRUE(Z.border_untouched(0));
    EXPECT_EQ(D[0], 4.0);
}

TEST(Hermit, GivesZerosBeyondItsCapacity) {
    for (const int n : {65, 256}) {
        const Decomposition result = decompose(Dense::Identity(n, n));
        EXPECT_EQ(result.D, std::vector<double>(static_cast<std::size_t>(n), 0.0));
        EXPECT_EQ(largest(result.Z), 0.0);
    }
}

TEST(Htridi, KeepsTheDecompositionForTql2) {
    Random random(60);
    const Dense a = random.hermitian(3);
    const Decomposition expected = decompose(a);
    MarkedMatrix A(a);
    MarkedMatrix Z;
    double D[5] = {-9.5, -9.5, -9.5, -9.5, -9.5};
    double E[5] = {-9.5, -9.5, -9.5, -9.5, -9.5};
    static TwoDiagonal tau;
    tau[1][4] = tau[2][4] = -9.5;
    HTRIDI(3, A, D, E, &tau);
    for (int i = 1; i <= 3; ++i) {
        EXPECT_EQ(D[i], expected.D[static_cast<std::size_t>(i - 1)]);
        EXPECT_EQ(E[i], 0.0);
        EXPECT_EQ(tau[1][i], 1.0);
        EXPECT_EQ(tau[2][i], 0.0);
        D[i] = 0.0;
    }
    EXPECT_EQ(E[0], -9.5);
    EXPECT_EQ(E[4], -9.5);
    EXPECT_EQ(tau[1][4], -9.5);
    int ierr = 5;
    TQL2(3, D, E, Z, &ierr);
    HTRIBK(3, A, Z, &tau);
    EXPECT_EQ(ierr, 0);
    EXPECT_EQ(distance(Z, expected.Z), 0.0);
    EXPECT_TRUE(Z.border_untouched(3));
    EXPECT_EQ(std::vector<double>(D + 1, D + 4), expected.D);
    EXPECT_EQ(D[0], -9.5);
    EXPECT_EQ(D[4], -9.5);
}

TEST(Htridi, WorksWithoutItsOptionalBlocks) {
    Dense a = Dense::Zero(2, 2);
    a.diagonal() << 2.0, 1.0;
    MarkedMatrix A(a);
    double D[3];
    HTRIDI(2, A, D, nullptr, nullptr);
    EXPECT_EQ(D[1], 1.0);
    EXPECT_EQ(D[2], 2.0);
}

TEST(Tql2, GivesTheIdentityForAnotherDimension) {
    MarkedMatrix A(Dense::Identity(2, 2));
    MarkedMatrix Z;
    double D[4] = {-9.5, -9.5, -9.5, -9.5};
    HTRIDI(2, A, D, nullptr, nullptr);
    int ierr = 5;
    TQL2(3, D, nullptr, Z, &ierr);
    EXPECT_EQ(ierr, 0);
    EXPECT_EQ(distance(Z, Dense::Identity(3, 3)), 0.0);
    EXPECT_EQ(std::vector<double>(D + 1, D + 4), std::vector<double>(3, 0.0));
    TQL2(3, D, nullptr, Z, nullptr);
}

TEST(DiagnosticPrinters, PrintNothing) {
    testing::internal::CaptureStdout();
    pr1();
    pr2();
    pr1x();
    pr3x();
    pr4x();
    pr5x();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}
