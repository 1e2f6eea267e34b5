#include "spinoperatorlib.h"
#include "support/console_script.h"
#include "support/spin_basis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

using namespace kor;
using namespace kor_test;

namespace {

bool all_zero(const SpinKet& ket) {
    return std::all_of(&ket[0][0], &ket[0][0] + sizeof ket / sizeof(int), [](int m) { return m == 0; });
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
    const SpinBasis pair = make_basis({1, 1});
    EXPECT_EQ(ket_row(pair.ket, 1), Spins({1, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ket_row(pair.ket, 2), Spins({1, -1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ket_row(pair.ket, 3), Spins({-1, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ket_row(pair.ket, 4), Spins({-1, -1, 0, 0, 0, 0, 0, 0}));
    const SpinBasis mixed = make_basis({1, 2});
    EXPECT_EQ(ket_row(mixed.ket, 2), Spins({1, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ket_row(mixed.ket, 3), Spins({1, -2, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ket_row(mixed.ket, 4), Spins({-1, 2, 0, 0, 0, 0, 0, 0}));
}

TEST(MakeKets, KeepsASpinWithoutStatesAtZero) {
    const SpinBasis basis = make_basis({1, 0, 1});
    EXPECT_EQ(basis.n, 4);
    EXPECT_EQ(ket_row(basis.ket, 2), Spins({1, 0, -1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ket_row(basis.ket, 3), Spins({-1, 0, 1, 0, 0, 0, 0, 0}));
}

TEST(MakeKets, ClearsTheRestOfTheTable) {
    static SpinBasis basis = make_basis({1, 1, 1});
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
    static SpinBasis basis;
    basis.ket[1][1] = 9;
    const ConsoleOutput console = play_console("", [] { MakeKets(basis.ket, basis.Ilist); });
    EXPECT_TRUE(all_zero(basis.ket));
    EXPECT_EQ(console.out + console.err, "");
}

TEST(MakeKets, RefusesTooManyStatesAndNegativeEntries) {
    static SpinBasis basis;
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
    EXPECT_EQ(ket_row(ket, 4), Spins({-1, 2, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ket_row(ket, 6), Spins({-1, -2, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ket_row(ket, 3), Spins(8, 0));
}

TEST(Ketproc, CopiesTheSpinsThatCount) {
    static SpinKet ket;
    const int m[KOR_MAX_SPINS + 1] = {9, 1, -2, 3, 4};
    ketproc(ket, 5, m, 3);
    EXPECT_EQ(ket_row(ket, 5), Spins({1, -2, 3, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ket[5][0], 0);
}

TEST(KetEqual, ComparesTheSpinsThatCount) {
    const int a[KOR_MAX_SPINS + 1] = {0, 1, 2, 3};
    const int b[KOR_MAX_SPINS + 1] = {7, 1, 2, 4};
    EXPECT_EQ(ket_equal(a, b, 0), 1);
    EXPECT_EQ(ket_equal(a, b, 2), 1);
    EXPECT_EQ(ket_equal(a, b, 3), 0);
}
