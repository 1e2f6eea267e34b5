#include "spinoperatorlib.h"
#include "support/marked_matrix.h"
#include "support/spin_basis.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor;
using namespace kor_test;

namespace {

using Builder = void (*)(const SpinIList&, const SpinKet&, int, int, CMatrix&);
using TotalBuilder = void (*)(int, int, const SpinKet&, const SpinIList&, int, CMatrix&);

void expect_single_spin_operator(Builder build, Axis axis) {
    for (const Spins& spins : spin_lists()) {
        const SpinBasis basis = make_basis(spins);
        for (int s = 1; s <= basis.nspins; ++s) {
            MarkedMatrix out;
            build(basis.Ilist, basis.ket, basis.n, s, out);
            const Dense expected = spin_operator(spins, s, axis);
            EXPECT_LE(distance(out, expected), 1e-14) << spin_name(spins, s);
            EXPECT_TRUE(out.border_untouched(basis.n));
        }
    }
}

void expect_total_operator(TotalBuilder build, Axis axis) {
    for (const Spins& spins : spin_lists()) {
        const SpinBasis basis = make_basis(spins);
        MarkedMatrix out;
        build(basis.n, basis.nspins, basis.ket, basis.Ilist, 0, out);
        EXPECT_LE(distance(out, total_operator(spins, axis)), 1e-13) << testing::PrintToString(spins);
        EXPECT_TRUE(out.border_untouched(basis.n));
        Dense normalised = Dense::Zero(basis.n, basis.n);
        for (int s = 1; s <= basis.nspins; ++s) {
            const Dense single = spin_operator(spins, s, axis);
            normalised += single / (single.norm() > 0.0 ? single.norm() : 1.0);
        }
        build(basis.n, basis.nspins, basis.ket, basis.Ilist, 1, out);
        EXPECT_LE(distance(out, normalised), 1e-14) << testing::PrintToString(spins);
    }
}

} // namespace

TEST(MakeMatrixIx, IsTheOperatorInTheProductBasis) {
    expect_single_spin_operator(MakeMatrixIx, Axis::x);
}

TEST(MakeMatrixIy, IsTheOperatorInTheProductBasis) {
    expect_single_spin_operator(MakeMatrixIy, Axis::y);
}

TEST(MakeMatrixIz, IsTheOperatorInTheProductBasis) {
    expect_single_spin_operator(MakeMatrixIz, Axis::z);
}

TEST(MakeMatrixIz, HasTheBitsOfTheCommutatorOfTheLadderOperators) {
    for (const Spins& spins : spin_lists()) {
        const SpinBasis basis = make_basis(spins);
        for (int s = 1; s <= basis.nspins; ++s) {
            MarkedMatrix plus;
            MarkedMatrix minu;
            MarkedMatrix expected;
            MarkedMatrix out;
            MakeMatrixIplus(basis.Ilist, basis.ket, basis.n, s, plus);
            MakeMatrixImin(basis.Ilist, basis.ket, basis.n, s, minu);
            CMatCommutator(basis.n, plus, minu, expected);
            RMultCMat(basis.n, 0.5, expected, expected);
            MakeMatrixIz(basis.Ilist, basis.ket, basis.n, s, out);
            EXPECT_TRUE(same_bits(basis.n, out, expected)) << spin_name(spins, s);
        }
    }
}

TEST(CartesianOperators, OfASpinHalfAreHalfThePauliMatrices) {
    const SpinBasis basis = make_basis({1});
    MarkedMatrix out;
    Dense expected(2, 2);
    MakeMatrixIx(basis.Ilist, basis.ket, 2, 1, out);
    expected << 0.0, 0.5, 0.5, 0.0;
    EXPECT_EQ(distance(out, expected), 0.0);
    MakeMatrixIy(basis.Ilist, basis.ket, 2, 1, out);
    expected << 0.0, Complex(0.0, -0.5), Complex(0.0, 0.5), 0.0;
    EXPECT_EQ(distance(out, expected), 0.0);
    MakeMatrixIz(basis.Ilist, basis.ket, 2, 1, out);
    expected << 0.5, 0.0, 0.0, -0.5;
    EXPECT_EQ(distance(out, expected), 0.0);
}

TEST(CartesianOperators, ServeTheFullCapacity) {
    const Spins halves(8, 1);
    const SpinBasis basis = make_basis(halves);
    for (const int s : {1, 5, 8}) {
        MarkedMatrix out;
        MakeMatrixIy(basis.Ilist, basis.ket, 256, s, out);
        EXPECT_EQ(distance(out, spin_operator(halves, s, Axis::y)), 0.0) << s;
        EXPECT_TRUE(out.border_untouched(256));
        MakeMatrixIz(basis.Ilist, basis.ket, 256, s, out);
        EXPECT_EQ(distance(out, spin_operator(halves, s, Axis::z)), 0.0) << s;
    }
}

TEST(MakeTotalIx, SumsTheSpins) {
    expect_total_operator(MakeTotalIx, Axis::x);
}

TEST(MakeTotalIy, SumsTheSpins) {
    expect_total_operator(MakeTotalIy, Axis::y);
}

TEST(MakeTotalIz, SumsTheSpins) {
    expect_total_operator(MakeTotalIz, Axis::z);
}

TEST(MakeTotalIz, NormalisesEachSpinOnRequest) {
    const SpinBasis one = make_basis({1});
    MarkedMatrix out;
    MakeTotalIz(2, 1, one.ket, one.Ilist, 1, out);
    EXPECT_NEAR(out.get()[1][1][1], std::sqrt(0.5), 1e-15);
    EXPECT_NEAR(out.get()[2][2][1], -std::sqrt(0.5), 1e-15);
    const SpinBasis two = make_basis({1, 1}); // each Iz has unit norm already
    MarkedMatrix plain;
    MakeTotalIz(4, 2, two.ket, two.Ilist, 0, plain);
    MakeTotalIz(4, 2, two.ket, two.Ilist, 1, out);
    EXPECT_EQ(distance(out, plain.dense(4)), 0.0);
    MakeTotalIz(2, 1, one.ket, one.Ilist, 2, out); // only 1 asks for it
    EXPECT_EQ(out.get()[1][1][1], 0.5);
}

TEST(MakeTotalIx, OfNoSpinsIsZero) {
    const SpinBasis basis = make_basis({1});
    MarkedMatrix out;
    MakeTotalIx(2, 0, basis.ket, basis.Ilist, 0, out);
    EXPECT_EQ(largest(out.dense(2)), 0.0);
}
