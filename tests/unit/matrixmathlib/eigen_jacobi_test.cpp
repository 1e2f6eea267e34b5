#include "matrixmathlib.h"
#include "support/random_systems.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor;
using namespace kor_test;

namespace {

constexpr int kStride = 128; // row length of the real work matrices
using Real = Eigen::MatrixXd;

struct RealMatrix {
    std::vector<double> cells = std::vector<double>(kStride * kStride, 0.0);
    double* data() { return cells.data(); }
    double& operator()(int r, int c) { return cells[static_cast<std::size_t>(r * kStride + c)]; }
};

Real to_real(int N, RealMatrix& m) {
    Real out(N, N);
    for (int r = 0; r < N; ++r) {
        for (int c = 0; c < N; ++c) {
            out(r, c) = m(r, c);
        }
    }
    return out;
}

/// `blocks` real 2 x 2 blocks [[e, c], [c, e]] on the diagonal: each needs one rotation.
Real coupled_real_pairs(int blocks, const std::vector<double>& couplings) {
    Real a = Real::Zero(2 * blocks, 2 * blocks);
    for (int b = 0; b < blocks; ++b) {
        a(2 * b, 2 * b) = a(2 * b + 1, 2 * b + 1) = 10.0 * b;
        a(2 * b, 2 * b + 1) = a(2 * b + 1, 2 * b) = couplings[static_cast<std::size_t>(b)];
    }
    return a;
}

RealMatrix work_matrix(const Real& a) {
    RealMatrix m;
    for (int r = 0; r < a.rows(); ++r) {
        for (int c = 0; c < a.cols(); ++c) {
            m(r, c) = a(r, c);
        }
    }
    return m;
}

/// Blocks of coupled_real_pairs that still have their coupling after the rotations.
std::vector<int> blocks_left(int blocks, const std::vector<double>& couplings) {
    RealMatrix a = work_matrix(coupled_real_pairs(blocks, couplings));
    RealMatrix v;
    std::vector<double> d(kStride);
    jacobi_real_symmetric(2 * blocks, a.data(), d.data(), v.data());
    std::vector<int> left;
    for (int b = 0; b < blocks; ++b) {
        const double coupling = a(2 * b, 2 * b + 1);
        if (coupling != 0.0) {
            EXPECT_EQ(coupling, couplings[static_cast<std::size_t>(b)]);
            left.push_back(b);
        }
    }
    return left;
}

double gap(const Real& a, const Real& b) {
    return distance(a.cast<Complex>(), b.cast<Complex>());
}

} // namespace

TEST(JacobiRealSymmetric, DiagonalisesRandomMatrices) {
    Random random(51);
    for (int N = 1; N <= 5; ++N) {
        const Dense complex_a = random.hermitian(N);
        const Real a = complex_a.real();
        RealMatrix work = work_matrix(a);
        RealMatrix v;
        std::vector<double> d(kStride);
        jacobi_real_symmetric(N, work.data(), d.data(), v.data());
        const Real V = to_real(N, v);
        const Eigen::Map<Eigen::VectorXd> D(d.data(), N);
        EXPECT_LE(gap(V.transpose() * V, Real::Identity(N, N)), 1e-13) << N;
        EXPECT_LE(gap(V * D.asDiagonal() * V.transpose(), a), 2e-12) << N;
    }
}

TEST(JacobiRealSymmetric, TurnsEqualDiagonalElementsByAnEighthOfACircle) {
    Real a(2, 2);
    a << 1.0, 0.5, 0.5, 1.0;
    RealMatrix work = work_matrix(a);
    RealMatrix v;
    double d[2];
    jacobi_real_symmetric(2, work.data(), d, v.data());
    EXPECT_EQ(d[0], 0.5);
    EXPECT_EQ(d[1], 1.5);
    const double c = 1.0 / std::sqrt(2.0);
    EXPECT_EQ(v(0, 0), c);
    EXPECT_EQ(v(1, 0), -c);
    EXPECT_EQ(v(0, 1), c);
    EXPECT_EQ(v(1, 1), c);
}

TEST(JacobiRealSymmetric, LeavesElementsBelowTheThresholdAlone) {
    Real a(2, 2);
    a << 3.0, 0.9e-12, 0.9e-12, 1.0;
    RealMatrix work = work_matrix(a);
    RealMatrix v;
    double d[2];
    jacobi_real_symmetric(2, work.data(), d, v.data());
    EXPECT_EQ(d[0], 3.0);
    EXPECT_EQ(d[1], 1.0);
    EXPECT_EQ(to_real(2, v), Real::Identity(2, 2));
}

TEST(JacobiRealSymmetric, MakesSixtyRotationsAndNoMore) {
    const std::vector<double> couplings(64, 1.0);
    EXPECT_EQ(blocks_left(60, couplings), std::vector<int>());
    EXPECT_EQ(blocks_left(61, couplings), std::vector<int>({60}));
    EXPECT_EQ(blocks_left(64, couplings), std::vector<int>({60, 61, 62, 63}));
}

TEST(JacobiRealSymmetric, TakesTheLargestElementFirst) {
    std::vector<double> couplings;
    for (int b = 0; b < 64; ++b) {
        couplings.push_back(b % 2 ? -1.0 - b : 1.0 + b);
    }
    EXPECT_EQ(blocks_left(64, couplings), std::vector<int>({0, 1, 2, 3}));
}

TEST(JacobiRealSymmetric, LeavesAnUnfinishedMatrixAsItStands) {
    Random random(52);
    const int N = 24;
    const Dense complex_a = random.hermitian(N);
    const Real a = complex_a.real();
    RealMatrix work = work_matrix(a);
    RealMatrix v;
    std::vector<double> d(kStride);
    jacobi_real_symmetric(N, work.data(), d.data(), v.data());
    const Real V = to_real(N, v);
    Real rotated = V.transpose() * a * V;
    EXPECT_LE(gap(V.transpose() * V, Real::Identity(N, N)), 1e-13);
    for (int k = 0; k < N; ++k) {
        EXPECT_NEAR(rotated(k, k), d[static_cast<std::size_t>(k)], 1e-13);
        rotated(k, k) = 0.0;
    }
    EXPECT_GT(rotated.cwiseAbs().maxCoeff(), 1e-3);
}

TEST(SortEigs, SortsAscendingAndMovesTheColumns) {
    double d[4] = {3.0, 1.0, 2.0, -1.0};
    RealMatrix v;
    for (int c = 0; c < 4; ++c) {
        v(0, c) = c;
        v(3, c) = 10.0 + c;
    }
    sort_eigs(4, d, v.data());
    const double expected[4] = {3, 1, 2, 0};
    for (int c = 0; c < 4; ++c) {
        EXPECT_EQ(d[c], c == 0 ? -1.0 : c);
        EXPECT_EQ(v(0, c), expected[c]);
        EXPECT_EQ(v(3, c), 10.0 + expected[c]);
    }
}

TEST(SortEigs, TakesTheFirstOfEqualValues) {
    double d[4] = {3.0, 1.0, 2.0, 1.0};
    RealMatrix v;
    for (int c = 0; c < 4; ++c) {
        v(0, c) = c;
    }
    sort_eigs(4, d, v.data());
    EXPECT_EQ(v(0, 0), 1.0); // the first of the two ones
    EXPECT_EQ(v(0, 1), 3.0);
    EXPECT_EQ(v(0, 2), 2.0);
    EXPECT_EQ(v(0, 3), 0.0);
}
