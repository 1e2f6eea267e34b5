#include "spinoperatorlib.h"
#include "support/console_script.h"
#include "support/marked_matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace kor;
using namespace kor_test;

namespace {

using Spins = std::vector<int>;
using Builder = void (*)(const SpinIList&, const SpinKet&, int, int, CMatrix&);
using TotalBuilder = void (*)(int, int, const SpinKet&, const SpinIList&, int, CMatrix&);

/// Lists with every spin quantum number, mixed ones, and spins without states in the middle.
const std::vector<Spins> kLists = {{1},       {2},       {3},          {7},          {1, 1},       {1, 2},
                                   {3, 1},    {1, 0, 1}, {2, 0, 0, 3}, {0, 1, 2},    {1, 1, 1, 1}, {2, 2, 2},
                                   {1, 2, 3}, {3, 0, 1}, {5, 4},       {1, 3, 1, 0}, {15}};

struct Basis {
    SpinIList Ilist = {};
    SpinKet ket = {};
    int nspins = 0;
    int n = 0;
};

Basis make_basis(const Spins& spins) {
    Basis basis;
    for (std::size_t s = 0; s < spins.size(); ++s) {
        basis.Ilist[s + 1] = spins[s];
    }
    basis.nspins = infer_nspins(basis.Ilist);
    basis.n = infer_nstates(basis.Ilist, basis.nspins);
    MakeKets(basis.ket, basis.Ilist);
    return basis;
}

bool same_bits(int n, const CMatrix& a, const CMatrix& b) {
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            if (std::memcmp(&a[i][j].part[1], &b[i][j].part[1], 2 * sizeof(double)) != 0) {
                return false;
            }
        }
    }
    return true;
}

std::vector<int> row(const SpinKet& ket, int state) {
    return {ket[state] + 1, ket[state] + KOR_MAX_SPINS + 1};
}

bool all_zero(const SpinKet& ket) {
    return std::all_of(&ket[0][0], &ket[0][0] + sizeof ket / sizeof(int), [](int m) { return m == 0; });
}

void expect_single_spin_operator(Builder build, Axis axis) {
    for (const Spins& spins : kLists) {
        const Basis basis = make_basis(spins);
        for (int s = 1; s <= basis.nspins; ++s) {
            MarkedMatrix out;
            build(basis.Ilist, basis.ket, basis.n, s, out);
            const Dense expected = spin_operator(spins, s, axis);
            EXPECT_LE(distance(out, expected), 1e-14) << testing::PrintToString(spins) << " spin " << s;
            EXPECT_TRUE(out.border_untouched(basis.n));
        }
    }
}

void expect_total_operator(TotalBuilder build, Axis axis) {
    for (const Spins& spins : kLists) {
        const Basis basis = make_basis(spins);
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

TEST(InferNspins, IsTheHighestSpinWithStates) {
    EXPECT_EQ(make_basis({}).nspins, 0);
    EXPECT_EQ(make_basis({1}).nspins, 1);
    EXPECT_EQ(make_basis({1, 0, 1}).nspins, 3);
    EXPECT_EQ(make_basis({1, 2, 0, 0}).nspins, 2);
    EXPECT_EQ(make_basis({0, 0, 0, 0, 0, 0, 0, 1}).nspins, 8);
}

TEST(InferNspins, DoesNotCountNegativeEntries) {
    const SpinIList Ilist = {0, 1, -1};
    EXPECT_EQ(infer_nspins(Ilist), 1);
}

TEST(InferNstates, MultipliesTheMultiplicities) {
    const SpinIList Ilist = {0, 1, 2, 3, 0, 4};
    EXPECT_EQ(infer_nstates(Ilist, 0), 1);
    EXPECT_EQ(infer_nstates(Ilist, 1), 2);
    EXPECT_EQ(infer_nstates(Ilist, 3), 24);
    EXPECT_EQ(infer_nstates(Ilist, 5), 120);
}

TEST(InferNstates, AcceptsUpTo256StatesAndNoMore) {
    EXPECT_EQ(make_basis({1, 1, 1, 1, 1, 1, 1, 1}).n, 256);
    const SpinIList exact = {0, 255};
    EXPECT_EQ(infer_nstates(exact, 1), 256);
    const SpinIList above = {0, 256};
    EXPECT_EQ(infer_nstates(above, 1), 0);
    const SpinIList one_more = {0, 1, 1, 1, 1, 1, 1, 1, 2};
    EXPECT_EQ(infer_nstates(one_more, 8), 0);
    const SpinIList just_above = {0, 15, 16};
    EXPECT_EQ(infer_nstates(just_above, 2), 0);
    const SpinIList huge = {0, 2147483647, 2147483647};
    EXPECT_EQ(infer_nstates(huge, 2), 0);
}

TEST(InferNstates, RejectsNegativeEntries) {
    const SpinIList Ilist = {0, 1, -1, 1};
    EXPECT_EQ(infer_nstates(Ilist, 3), 0);
    EXPECT_EQ(infer_nstates(Ilist, 1), 2);
}

TEST(MakeKets, LetsTheLastSpinVaryFastestAndMDescend) {
    const Basis pair = make_basis({1, 1});
    EXPECT_EQ(row(pair.ket, 1), Spins({1, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(row(pair.ket, 2), Spins({1, -1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(row(pair.ket, 3), Spins({-1, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(row(pair.ket, 4), Spins({-1, -1, 0, 0, 0, 0, 0, 0}));
    const Basis mixed = make_basis({1, 2});
    EXPECT_EQ(row(mixed.ket, 2), Spins({1, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(row(mixed.ket, 3), Spins({1, -2, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(row(mixed.ket, 4), Spins({-1, 2, 0, 0, 0, 0, 0, 0}));
}

TEST(MakeKets, KeepsASpinWithoutStatesAtZero) {
    const Basis basis = make_basis({1, 0, 1});
    EXPECT_EQ(basis.n, 4);
    EXPECT_EQ(row(basis.ket, 2), Spins({1, 0, -1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(row(basis.ket, 3), Spins({-1, 0, 1, 0, 0, 0, 0, 0}));
}

TEST(MakeKets, ClearsTheRestOfTheTable) {
    static Basis basis = make_basis({1, 1, 1});
    std::fill(&basis.ket[0][0], &basis.ket[0][0] + sizeof basis.ket / sizeof(int), 99);
    MakeKets(basis.ket, basis.Ilist);
    for (int state = 0; state <= KOR_MAX_STATES; ++state) {
        for (int s = 0; s <= KOR_MAX_SPINS; ++s) {
            const bool used = state >= 1 && state <= 8 && s >= 1 && s <= 3;
            EXPECT_EQ(std::abs(basis.ket[state][s]), used ? 1 : 0);
        }
    }
}

TEST(MakeKets, OfNoSpinsIsAllZeroAndSilent) {
    static Basis basis;
    basis.ket[1][1] = 9;
    const ConsoleOutput console = play_console("", [] { MakeKets(basis.ket, basis.Ilist); });
    EXPECT_TRUE(all_zero(basis.ket));
    EXPECT_EQ(console.out + console.err, "");
}

TEST(MakeKets, RefusesTooManyStatesAndNegativeEntries) {
    static Basis basis;
    const auto refused = [](std::initializer_list<int> spins) {
        std::copy(spins.begin(), spins.end(), basis.Ilist + 1);
        basis.ket[1][1] = 9;
        const ConsoleOutput console = play_console("", [] { MakeKets(basis.ket, basis.Ilist); });
        EXPECT_TRUE(all_zero(basis.ket));
        EXPECT_EQ(console.out, "");
        return console.err;
    };
    EXPECT_EQ(refused({1, 1, 1, 1, 1, 1, 1, 2}), "MakeKets: too many states for Nspins=8 (max 256)\n");
    EXPECT_EQ(refused({1, -1, 1, 0, 0, 0, 0, 0}), "MakeKets: too many states for Nspins=3 (max 256)\n");
}

TEST(EnumKetsRec, ContinuesBehindTheStatesThatStandAlready) {
    static SpinKet ket;
    const SpinIList Ilist = {0, 1, 2};
    int m[KOR_MAX_SPINS + 1] = {0, -1};
    int state = 3;
    enum_kets_rec(ket, Ilist, 2, 2, m, &state);
    EXPECT_EQ(state, 6);
    EXPECT_EQ(row(ket, 4), Spins({-1, 2, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(row(ket, 6), Spins({-1, -2, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(row(ket, 3), Spins(8, 0));
}

TEST(Ketproc, CopiesTheSpinsThatCount) {
    static SpinKet ket;
    const int m[KOR_MAX_SPINS + 1] = {9, 1, -2, 3, 4};
    ketproc(ket, 5, m, 3);
    EXPECT_EQ(row(ket, 5), Spins({1, -2, 3, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ket[5][0], 0);
}

TEST(KetEqual, ComparesTheSpinsThatCount) {
    const int a[KOR_MAX_SPINS + 1] = {0, 1, 2, 3};
    const int b[KOR_MAX_SPINS + 1] = {7, 1, 2, 4};
    EXPECT_EQ(ket_equal(a, b, 0), 1);
    EXPECT_EQ(ket_equal(a, b, 2), 1);
    EXPECT_EQ(ket_equal(a, b, 3), 0);
}

TEST(OperateIplus, RaisesOneSpinWithTheLadderCoefficient) {
    const Basis basis = make_basis({2, 3});
    static SpinKet out;
    double coefficient = -1.0;
    operateIplus(basis.Ilist, 8, 2, basis.ket, out, &coefficient); // m1 = 0, m2 = -3/2
    EXPECT_EQ(row(basis.ket, 8), Spins({0, -3, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(row(out, 8), Spins({0, -1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(coefficient, std::sqrt(3.0));
    operateIplus(basis.Ilist, 7, 2, basis.ket, out, &coefficient); // m2 = -1/2
    EXPECT_EQ(coefficient, 2.0);
}

TEST(OperateImin, LowersOneSpinWithTheLadderCoefficient) {
    const Basis basis = make_basis({2, 3});
    static SpinKet out;
    double coefficient = -1.0;
    operateImin(basis.Ilist, 5, 1, basis.ket, out, &coefficient); // m1 = 0
    EXPECT_EQ(row(out, 5), Spins({-2, 3, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(coefficient, std::sqrt(2.0));
    operateImin(basis.Ilist, 6, 2, basis.ket, out, &coefficient); // m2 = 1/2
    EXPECT_EQ(coefficient, 2.0);
}

TEST(OperateLadder, StopsAtTheEndsAndCopiesTheState) {
    const Basis basis = make_basis({2, 3});
    static SpinKet out;
    double coefficient = -1.0;
    operateIplus(basis.Ilist, 1, 1, basis.ket, out, &coefficient);
    EXPECT_EQ(coefficient, 0.0);
    EXPECT_EQ(row(out, 1), row(basis.ket, 1));
    coefficient = -1.0;
    operateImin(basis.Ilist, 12, 2, basis.ket, out, &coefficient);
    EXPECT_EQ(coefficient, 0.0);
    EXPECT_EQ(row(out, 12), row(basis.ket, 12));
}

TEST(OperateLadder, WorksWithoutACoefficient) {
    const Basis basis = make_basis({1});
    static SpinKet out;
    operateIplus(basis.Ilist, 2, 1, basis.ket, out, nullptr);
    EXPECT_EQ(out[2][1], 1);
    operateImin(basis.Ilist, 1, 1, basis.ket, out, nullptr);
    EXPECT_EQ(out[1][1], -1);
    operateIplus(basis.Ilist, 1, 1, basis.ket, out, nullptr);
    EXPECT_EQ(out[1][1], 1);
}

TEST(Inproduct, GivesRealElementsAndTakesAbsentOutputs) {
    const Basis basis = make_basis({2});
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
    for (const Spins& spins : kLists) {
        const Basis basis = make_basis(spins);
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
            EXPECT_TRUE(same_bits(basis.n, built, defined)) << testing::PrintToString(spins) << s;
            EXPECT_TRUE(built.border_untouched(basis.n));
        }
    }
}

TEST(MakeMatrixImin, HasTheBitsOfItsElementByElementDefinition) {
    for (const Spins& spins : kLists) {
        const Basis basis = make_basis(spins);
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
            EXPECT_TRUE(same_bits(basis.n, built, defined)) << testing::PrintToString(spins) << s;
            EXPECT_TRUE(built.border_untouched(basis.n));
        }
    }
}

TEST(MakeMatrixIplus, OfASpinOneHasTwoElementsOfRootTwo) {
    const Basis basis = make_basis({2});
    MarkedMatrix out;
    MakeMatrixIplus(basis.Ilist, basis.ket, 3, 1, out);
    Dense expected = Dense::Zero(3, 3);
    expected(0, 1) = expected(1, 2) = std::sqrt(2.0);
    EXPECT_EQ(distance(out, expected), 0.0);
}

TEST(MakeMatrixIplus, OfASpinWithoutStatesIsZero) {
    const Basis basis = make_basis({1, 0, 1});
    MarkedMatrix out;
    MakeMatrixIplus(basis.Ilist, basis.ket, 4, 2, out);
    EXPECT_EQ(largest(out.dense(4)), 0.0);
}

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
    for (const Spins& spins : kLists) {
        const Basis basis = make_basis(spins);
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
            EXPECT_TRUE(same_bits(basis.n, out, expected)) << testing::PrintToString(spins) << s;
        }
    }
}

TEST(CartesianOperators, OfASpinHalfAreHalfThePauliMatrices) {
    const Basis basis = make_basis({1});
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
    const Basis basis = make_basis(halves);
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
    const Basis one = make_basis({1});
    MarkedMatrix out;
    MakeTotalIz(2, 1, one.ket, one.Ilist, 1, out);
    EXPECT_NEAR(out.get()[1][1][1], std::sqrt(0.5), 1e-15);
    EXPECT_NEAR(out.get()[2][2][1], -std::sqrt(0.5), 1e-15);
    const Basis two = make_basis({1, 1}); // each Iz has unit norm already
    MarkedMatrix plain;
    MakeTotalIz(4, 2, two.ket, two.Ilist, 0, plain);
    MakeTotalIz(4, 2, two.ket, two.Ilist, 1, out);
    EXPECT_EQ(distance(out, plain.dense(4)), 0.0);
    MakeTotalIz(2, 1, one.ket, one.Ilist, 2, out); // only 1 asks for it
    EXPECT_EQ(out.get()[1][1][1], 0.5);
}

TEST(MakeTotalIx, OfNoSpinsIsZero) {
    const Basis basis = make_basis({1});
    MarkedMatrix out;
    MakeTotalIx(2, 0, basis.ket, basis.Ilist, 0, out);
    EXPECT_EQ(largest(out.dense(2)), 0.0);
}
