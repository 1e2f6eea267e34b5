#include "spinoperatorlib.h"
#include "support/marked_matrix.h"
#include "support/spin_basis.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor;
using namespace kor_test;

TEST(OperateIplus, RaisesOneSpinWithTheLadderCoefficient) {
    const SpinBasis basis = make_basis({2, 3});
    static SpinKet out;
    double coefficient = -1.0;
    operateIplus(basis.Ilist, 8, 2, basis.ket, out, &coefficient); // m1 = 0, m2 = -3/2
    EXPECT_EQ(ket_row(basis.ket, 8), Spins({0, -3, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ket_row(out, 8), Spins({0, -1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(coefficient, std::sqrt(3.0));
    operateIplus(basis.Ilist, 7, 2, basis.ket, out, &coefficient); // m2 = -1/2
    EXPECT_EQ(coefficient, 2.0);
}

TEST(OperateImin, LowersOneSpinWithTheLadderCoefficient) {
    const SpinBasis basis = make_basis({2, 3});
    static SpinKet out;
    double coefficient = -1.0;
    operateImin(basis.Ilist, 5, 1, basis.ket, out, &coefficient); // m1 = 0
    EXPECT_EQ(ket_row(out, 5), Spins({-2, 3, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(coefficient, std::sqrt(2.0));
    operateImin(basis.Ilist, 6, 2, basis.ket, out, &coefficient); // m2 = 1/2
    EXPECT_EQ(coefficient, 2.0);
}

TEST(OperateLadder, StopsAtTheEndsAndCopiesTheState) {
    const SpinBasis basis = make_basis({2, 3});
    static SpinKet out;
    double coefficient = -1.0;
    operateIplus(basis.Ilist, 1, 1, basis.ket, out, &coefficient);
    EXPECT_EQ(coefficient, 0.0);
    EXPECT_EQ(ket_row(out, 1), ket_row(basis.ket, 1));
    coefficient = -1.0;
    operateImin(basis.Ilist, 12, 2, basis.ket, out, &coefficient);
    EXPECT_EQ(coefficient, 0.0);
    EXPECT_EQ(ket_row(out, 12), ket_row(basis.ket, 12));
}

TEST(OperateLadder, WorksWithoutACoefficient) {
    const SpinBasis basis = make_basis({1});
    static SpinKet out;
    operateIplus(basis.Ilist, 2, 1, basis.ket, out, nullptr);
    EXPECT_EQ(out[2][1], 1);
    operateImin(basis.Ilist, 1, 1, basis.ket, out, nullptr);
    EXPECT_EQ(out[1][1], -1);
    operateIplus(basis.Ilist, 1, 1, basis.ket, out, nullptr);
    EXPECT_EQ(out[1][1], 1);
}

TEST(Inproduct, GivesRealElementsAndTakesAbsentOutputs) {
    const SpinBasis basis = make_basis({2});
    double re = -1.0;
    double im = -1.0;
    InproductIplus(basis.Ilist, basis.ket, 1, 2, 1, &re, &im);
    EXPECT_EQ(re, std::sqrt(2.0));
    EXPECT_EQ(im, 0.0);
    re = im = -1.0;
    InproductIplus(basis.Ilist, basis.ket, 2, 1, 1, &re, &im);
    EXPECT_EQ(re, 0.0);
    EXPECT_EQ(im, 0.0);
    inproductImin(basis.Ilist, basis.ket, 3, 2, 1, &re, nullptr);
    EXPECT_EQ(re, std::sqrt(2.0));
    im = -1.0;
    inproductImin(basis.Ilist, basis.ket, 3, 2, 1, nullptr, &im);
    EXPECT_EQ(im, 0.0);
    InproductIplus(basis.Ilist, basis.ket, 1, 2, 1, nullptr, nullptr);
}

TEST(MakeMatrixIplus, HasTheBitsOfItsElementByElementDefinition) {
    for (const Spins& spins : spin_lists()) {
        const SpinBasis basis = make_basis(spins);
        for (int s = 1; s <= basis.nspins; ++s) {
            MarkedMatrix built;
            MarkedMatrix defined;
            MakeMatrixIplus(basis.Ilist, basis.ket, basis.n, s, built);
            for (int k = 1; k <= basis.n; ++k) {
                for (int l = 1; l <= basis.n; ++l) {
                    Complex2& element = defined.get()[k][l];
                    InproductIplus(basis.Ilist, basis.ket, k, l, s, &element[1], &element[2]);
                }
            }
            EXPECT_TRUE(same_bits(basis.n, built, defined)) << spin_name(spins, s);
            EXPECT_TRUE(built.border_untouched(basis.n));
        }
    }
}

TEST(MakeMatrixImin, HasTheBitsOfItsElementByElementDefinition) {
    for (const Spins& spins : spin_lists()) {
        const SpinBasis basis = make_basis(spins);
        for (int s = 1; s <= basis.nspins; ++s) {
            MarkedMatrix built;
            MarkedMatrix defined;
            MakeMatrixImin(basis.Ilist, basis.ket, basis.n, s, built);
            for (int k = 1; k <= basis.n; ++k) {
                for (int l = 1; l <= basis.n; ++l) {
                    Complex2& element = defined.get()[k][l];
                    inproductImin(basis.Ilist, basis.ket, k, l, s, &element[1], &element[2]);
                }
            }
            EXPECT_TRUE(same_bits(basis.n, built, defined)) << spin_name(spins, s);
            EXPECT_TRUE(built.border_untouched(basis.n));
        }
    }
}

TEST(MakeMatrixIplus, OfASpinOneHasTwoElementsOfRootTwo) {
    const SpinBasis basis = make_basis({2});
    MarkedMatrix out;
    MakeMatrixIplus(basis.Ilist, basis.ket, 3, 1, out);
    Dense expected = Dense::Zero(3, 3);
    expected(0, 1) = expected(1, 2) = std::sqrt(2.0);
    EXPECT_EQ(distance(out, expected), 0.0);
}

TEST(MakeMatrixIplus, OfASpinWithoutStatesIsZero) {
    const SpinBasis basis = make_basis({1, 0, 1});
    MarkedMatrix out;
    MakeMatrixIplus(basis.Ilist, basis.ket, 4, 2, out);
    EXPECT_EQ(largest(out.dense(4)), 0.0);
}
