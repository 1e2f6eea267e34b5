#include "kor/spin_system.h"

#include "kor/smoke_check_mode.h"
#include "support/constants.h"
#include "support/marked_matrix.h"
#include "support/spin_oracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

namespace kor {
namespace {

using kor_test::Dense;
using kor_test::distance;
using kor_test::on_spin;
using kor_test::same_bits;
using kor_test::TWO_PI;

struct Definition {
    std::vector<int> two_i;
    std::vector<double> intensities;
    std::vector<double> offsets_hz;
    std::vector<double> couplings_hz; // pairs (1,2), (1,3), ...
    int Jexact = 2;
};

/// Fills the definition of the state, from nothing: no couplings left over in jc.
void define(const Definition& d) {
    RuntimeState& rt = g_runtime;
    KOR_SetSmokeCheckMode(1);
    rt.Nspins = static_cast<int>(d.two_i.size());
    std::memset(rt.quantnum, 0, sizeof rt.quantnum);
    std::memset(rt.jc, 0, sizeof rt.jc);
    for (std::size_t s = 0; s < d.two_i.size(); ++s) {
        rt.quantnum[s + 1] = d.two_i[s];
        rt.relspinamp[s + 1] = d.intensities.empty() ? 1.0 : d.intensities[s];
        rt.resofreqs[s + 1] = d.offsets_hz.empty() ? 0.0 : d.offsets_hz[s];
    }
    rt.Jexact = d.Jexact;
    rt.Jcount = static_cast<int>(d.couplings_hz.size());
    std::copy(d.couplings_hz.begin(), d.couplings_hz.end(), rt.couplings + 1);
}

void build_definition(const Definition& d) {
    define(d);
    BuildSpinSystemFromPulseSequenceGlobals();
}

Dense zero(int n) {
    return Dense::Zero(n, n);
}

Dense coupling_oracle(const Definition& d) {
    const int spins = static_cast<int>(d.two_i.size());
    Dense sum = zero(static_cast<int>(kor_test::total(d.two_i, 'z').rows()));
    std::size_t pair = 0;
    for (int i = 1; i < spins; ++i)
        for (int j = i + 1; j <= spins; ++j, ++pair) {
            const double omega = pair < d.couplings_hz.size() ? TWO_PI * d.couplings_hz[pair] : 0.0;
            for (const char component : d.Jexact == 1 ? std::string("z") : std::string("xyz")) {
                std::string components(d.two_i.size(), 'e');
                components[static_cast<std::size_t>(i - 1)] = component;
                components[static_cast<std::size_t>(j - 1)] = component;
                sum += omega * kor_test::product_of(d.two_i, components);
            }
        }
    return sum;
}

TEST(BuildSpinSystem, WeakCouplingOfTwoSpinsIsDiagonal) {
    build_definition({{1, 1}, {}, {}, {10.0}, 1});
    Dense expected = zero(4);
    expected.diagonal() << 1.0, -1.0, -1.0, 1.0;
    expected *= 15.707963267948966; // 2 pi 10 / 4
    EXPECT_LT(distance(g_runtime.Icoup, expected), 1e-14);
}

TEST(BuildSpinSystem, ExactCouplingAddsTheFlipFlopElements) {
    build_definition({{1, 1}, {}, {}, {10.0}, 2});
    Dense expected = zero(4);
    expected.diagonal() << 1.0, -1.0, -1.0, 1.0;
    expected *= 15.707963267948966;
    expected(1, 2) = expected(2, 1) = 31.415926535897931; // 2 pi 10 / 2
    EXPECT_LT(distance(g_runtime.Icoup, expected), 1e-13);
}

TEST(BuildSpinSystem, AnyModeButOneIsTheExactCoupling) {
    for (const int mode : {0, 2, 3, -1}) {
        build_definition({{1, 1}, {}, {}, {10.0}, mode});
        EXPECT_NEAR(g_runtime.Icoup[2][3][1], 31.415926535897931, 1e-13) << "mode " << mode;
    }
}

TEST(BuildSpinSystem, ZeroCouplingAddsNothingButTheNextPairTakesTheNextEntry) {
    build_definition({{1, 1, 1}, {}, {}, {0.0, 7.0, 3.0}, 1});
    EXPECT_EQ(g_runtime.jc[1][2], 0.0);
    EXPECT_EQ(g_runtime.jc[1][3], 7.0);
    EXPECT_EQ(g_runtime.jc[3][1], 7.0);
    EXPECT_EQ(g_runtime.jc[2][3], 3.0);
    EXPECT_EQ(g_runtime.jc[3][2], 3.0);
    EXPECT_LT(distance(g_runtime.Icoup, coupling_oracle({{1, 1, 1}, {}, {}, {0.0, 7.0, 3.0}, 1})), 1e-13);
}

TEST(BuildSpinSystem, PairsBeyondTheGivenCountHaveNoCoupling) {
    define({{1, 1, 1}, {}, {}, {5.0, 7.0, 3.0}, 1});
    g_runtime.Jcount = 1;
    BuildSpinSystemFromPulseSequenceGlobals();
    EXPECT_EQ(g_runtime.jc[1][2], 5.0);
    EXPECT_EQ(g_runtime.jc[1][3], 0.0);
    EXPECT_EQ(g_runtime.jc[2][3], 0.0);
}

TEST(BuildSpinSystem, EarlierCouplingsInTheTableWinOverTheList) {
    build_definition({{1, 1}, {}, {}, {10.0}, 1});
    g_runtime.couplings[1] = 99.0;
    BuildSpinSystemFromPulseSequenceGlobals();
    EXPECT_EQ(g_runtime.jc[1][2], 10.0);
    EXPECT_NEAR(g_runtime.Icoup[1][1][1], 15.707963267948966, 1e-13);

    std::memset(g_runtime.jc, 0, sizeof g_runtime.jc);
    BuildSpinSystemFromPulseSequenceGlobals();
    EXPECT_EQ(g_runtime.jc[1][2], 99.0);
    EXPECT_NEAR(g_runtime.Icoup[1][1][1], 9.9 * 15.707963267948966, 1e-12);
}

TEST(BuildSpinSystem, AnyEntryOfTheTableSilencesTheWholeList) {
    define({{1, 1, 1}, {}, {}, {10.0, 20.0, 30.0}, 1});
    g_runtime.jc[8][7] = 1.0; // of spins that this system does not have
    BuildSpinSystemFromPulseSequenceGlobals();
    EXPECT_EQ(g_runtime.jc[1][2], 0.0);
    EXPECT_EQ(g_runtime.jc[8][7], 0.0) << "the table is cleared before it is filled";
    EXPECT_LT(distance(g_runtime.Icoup, zero(8)), 1e-300);
}

TEST(BuildSpinSystem, EquilibriumOfOneSpinHalfHasUnitNormTimesIntensity) {
    build_definition({{1}, {1.0}, {}, {}, 1});
    EXPECT_NEAR(g_runtime.densmat[1][1][1], 0.70710678118654752, 1e-15);
    EXPECT_NEAR(g_runtime.densmat[2][2][1], -0.70710678118654752, 1e-15);
    build_definition({{1}, {-2.5}, {}, {}, 1});
    EXPECT_NEAR(g_runtime.densmat[1][1][1], -2.5 * 0.70710678118654752, 1e-14);
}

TEST(BuildSpinSystem, OneSpinHasNoCouplingsWhateverTheModeThatStaysAsLoaded) {
    build_definition({{1}, {}, {}, {12.0}, 2});
    EXPECT_EQ(g_runtime.Jexact, 2);
    EXPECT_LT(distance(g_runtime.Icoup, zero(2)), 1e-300);
}

TEST(BuildSpinSystem, NegativeQuantumNumberIsASpinWithOneState) {
    build_definition({{1, -3, 1}, {1.0, 1.0, 1.0}, {10.0, 20.0, 30.0}, {1.0, 2.0, 3.0}, 2});
    EXPECT_EQ(g_runtime.n, 4);
    EXPECT_EQ(g_runtime.Ilist[2], 0);
    EXPECT_EQ(g_runtime.quantnum[2], -3);
    for (int state = 1; state <= 4; ++state)
        EXPECT_EQ(g_runtime.ket[state][2], 0);
    EXPECT_LT(distance(g_runtime.Icoup, coupling_oracle({{1, 0, 1}, {}, {}, {1.0, 2.0, 3.0}, 2})), 1e-13);
}

TEST(BuildSpinSystem, MoreStatesThanTheMatricesHoldLeaveNoSpinSystem) {
    // The product of 2I + 1 is 257, 2^33 or, with the negative one that hides the size from it, -9963.
    for (const std::vector<int>& two_i :
         {std::vector<int>{256}, std::vector<int>{65535, 65535, 1}, std::vector<int>{2, 2, 8, 40, -4}}) {
        build_definition({{1}, {}, {}, {}, 1});
        ASSERT_EQ(g_runtime.spinsystemdefined, 1);
        testing::internal::CaptureStderr();
        build_definition({two_i, {}, {}, {}, 1});
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "The spin system has more states than the 256 that can be simulated: define it again.\n");
        EXPECT_EQ(g_runtime.n, 0);
        EXPECT_EQ(g_runtime.spinsystemdefined, 0);
        EXPECT_EQ(g_runtime.Nspins, 0);
        EXPECT_EQ(infer_nspins(g_runtime.Ilist), 0);
    }
}

TEST(BuildSpinSystem, NumberOfSpinsIsClamped) {
    define({{1}, {}, {}, {}, 1});
    g_runtime.Nspins = -4;
    BuildSpinSystemFromPulseSequenceGlobals();
    EXPECT_EQ(g_runtime.Nspins, 1);
    EXPECT_EQ(g_runtime.n, 2);
    define({{1, 0, 0, 0, 0, 0, 0, 0}, {}, {}, {}, 1});
    g_runtime.Nspins = 11;
    BuildSpinSystemFromPulseSequenceGlobals();
    EXPECT_EQ(g_runtime.Nspins, 8);
    EXPECT_EQ(g_runtime.n, 2);
}

TEST(BuildSpinSystem, SpinsWithoutStatesMakeOneStateAndZeroOperators) {
    build_definition({{0, 0}, {1.0, 1.0}, {5.0, 6.0}, {7.0}, 2});
    EXPECT_EQ(g_runtime.n, 1);
    for (const CMatrix* op : {&g_runtime.densmat, &g_runtime.Izee, &g_runtime.Icoup, &g_runtime.Izgrad,
                              &g_runtime.Ixtot, &g_runtime.Iytot, &g_runtime.Iztot})
        EXPECT_LT(distance(*op, zero(1)), 1e-300);
}

TEST(BuildSpinSystem, SpinsAboveTheLastAreCleared) {
    define({{1, 1}, {}, {}, {}, 1});
    std::fill(g_runtime.Ilist + 1, g_runtime.Ilist + KOR_MAX_SPINS + 1, 1);
    BuildSpinSystemFromPulseSequenceGlobals();
    for (int s = 3; s <= KOR_MAX_SPINS; ++s)
        EXPECT_EQ(g_runtime.Ilist[s], 0);
    EXPECT_EQ(g_runtime.n, 4);
}

TEST(BuildSpinSystem, MarksSystemPulseAndOffsetsAsDefined) {
    define({{1}, {}, {}, {}, 1});
    g_runtime.spinsystemdefined = g_runtime.rfpulsedefined = g_runtime.offsetsdefined = 0;
    KOR_RebuildSpinSystemFromPulseSequenceGlobals();
    EXPECT_EQ(g_runtime.spinsystemdefined, 1);
    EXPECT_EQ(g_runtime.rfpulsedefined, 1);
    EXPECT_EQ(g_runtime.offsetsdefined, 1);
}

Definition random_definition(std::mt19937& random) {
    Definition d;
    std::uniform_int_distribution<int> two_i(0, 3);
    std::uniform_real_distribution<double> hz(-500.0, 500.0);
    std::uniform_int_distribution<int> spins(1, 5);
    const int count = spins(random);
    int n = 1;
    for (int s = 0; s < count; ++s) {
        const int q = two_i(random);
        if (n * (q + 1) > 48)
            break;
        n *= q + 1;
        d.two_i.push_back(q);
        d.intensities.push_back(hz(random) / 100.0);
        d.offsets_hz.push_back(hz(random));
    }
    for (std::size_t pair = 0; pair < d.two_i.size() * (d.two_i.size() - 1) / 2; ++pair)
        d.couplings_hz.push_back(pair % 4 == 3 ? 0.0 : hz(random) / 10.0);
    d.Jexact = two_i(random) == 0 ? 1 : 2;
    return d;
}

TEST(BuildSpinSystem, RandomSystemsAgreeWithKroneckerProducts) {
    const unsigned seed = 20260301;
    std::mt19937 random(seed);
    for (int round = 0; round < 40; ++round) {
        const Definition d = random_definition(random);
        std::string spins;
        for (const int q : d.two_i)
            spins += std::to_string(q) + " ";
        SCOPED_TRACE("seed " + std::to_string(seed) + " round " + std::to_string(round) + " 2I " + spins);
        build_definition(d);
        const int n = g_runtime.n;
        Dense equilibrium = zero(n);
        Dense zeeman = zero(n);
        for (int s = 1; s <= static_cast<int>(d.two_i.size()); ++s) {
            const Dense iz = on_spin(d.two_i, s, 'z');
            const auto at = static_cast<std::size_t>(s - 1);
            if (iz.norm() > 0.0)
                equilibrium += d.intensities[at] * iz / iz.norm();
            zeeman += TWO_PI * d.offsets_hz[at] * iz;
        }
        EXPECT_LT(distance(g_runtime.densmat, equilibrium), 1e-13);
        EXPECT_LT(distance(g_runtime.Izee, zeeman), 1e-10);
        EXPECT_LT(distance(g_runtime.Icoup, coupling_oracle(d)), 1e-10);
        EXPECT_LT(distance(g_runtime.Izgrad, kor_test::total(d.two_i, 'z')), 1e-13);
        EXPECT_LT(distance(g_runtime.Ixtot, kor_test::total(d.two_i, 'x')), 1e-13);
        EXPECT_LT(distance(g_runtime.Iytot, kor_test::total(d.two_i, 'y')), 1e-13);
        EXPECT_LT(distance(g_runtime.Iztot, kor_test::total(d.two_i, 'z')), 1e-13);
    }
}

TEST(BuildSpinSystem, EightCoupledSpinsAgreeWithKroneckerProducts) {
    Definition d;
    d.two_i.assign(8, 1);
    d.intensities.assign(8, 1.0);
    for (int s = 0; s < 8; ++s)
        d.offsets_hz.push_back(100.0 * s - 350.0);
    for (int pair = 0; pair < 28; ++pair)
        d.couplings_hz.push_back(0.5 * pair - 6.75);
    build_definition(d);
    ASSERT_EQ(g_runtime.n, 256);
    EXPECT_LT(distance(g_runtime.Icoup, coupling_oracle(d)), 1e-10);
    EXPECT_EQ(g_runtime.jc[7][8], 0.5 * 27 - 6.75);
    EXPECT_LT(distance(g_runtime.Ixtot, kor_test::total(d.two_i, 'x')), 1e-13);
}

TEST(AddCouplingTerm, HasTheBitsOfThePlainMatrixProducts) {
    static CMatrix one, other, product, sum;
    build_definition({{1, 2, 3}, {}, {}, {3.7, -11.3, 0.9}, 2});
    RuntimeState& rt = g_runtime;
    CMatZero(rt.n, sum);
    using Builder = void (*)(const SpinIList&, const SpinKet&, int, int, CMatrix&);
    for (int i = 1; i < 3; ++i)
        for (int j = i + 1; j <= 3; ++j)
            for (const Builder make : {MakeMatrixIx, MakeMatrixIy, MakeMatrixIz}) {
                make(rt.Ilist, rt.ket, rt.n, i, one);
                make(rt.Ilist, rt.ket, rt.n, j, other);
                CMatMult(rt.n, one, other, product);
                CMatRMultAdd(rt.n, product, 2.0 * KOR_PI * rt.jc[i][j], sum, 1.0, sum);
            }
    EXPECT_TRUE(same_bits(rt.n, sum, rt.Icoup));
}

TEST(MakeTotals, ModeOneScalesEachSpinToUnitNorm) {
    build_definition({{1, 2}, {}, {}, {}, 1});
    make_all_totals(1);
    EXPECT_LT(distance(g_runtime.Ixtot, kor_test::total({1, 2}, 'x', true)), 1e-14);
    EXPECT_LT(distance(g_runtime.Iytot, kor_test::total({1, 2}, 'y', true)), 1e-14);
    EXPECT_LT(distance(g_runtime.Iztot, kor_test::total({1, 2}, 'z', true)), 1e-14);
    make_transverse_totals(0);
    EXPECT_LT(distance(g_runtime.Ixtot, kor_test::total({1, 2}, 'x')), 1e-14);
    EXPECT_LT(distance(g_runtime.Iztot, kor_test::total({1, 2}, 'z', true)), 1e-14) << "Iz is left alone";
}

// Spins typed since, of another number or kind, have no basis yet.
TEST(MakeTotals, AreThoseOfTheBasisThatWasBuilt) {
    const std::vector<std::vector<int>> redefined = {{}, {1}, {2, 2}, {1, 1, 1, 1}};
    for (const std::vector<int>& two_i : redefined) {
        build_definition({{1, 2, 1}, {}, {}, {}, 1});
        EXPECT_TRUE(basis_is_current());
        g_runtime.Nspins = static_cast<int>(two_i.size());
        std::copy(two_i.begin(), two_i.end(), g_runtime.quantnum + 1);
        EXPECT_FALSE(basis_is_current());
        EXPECT_EQ(spins_of_basis(), 3);
        make_all_totals(1);
        EXPECT_LT(distance(g_runtime.Ixtot, kor_test::total({1, 2, 1}, 'x', true)), 1e-14);
        EXPECT_LT(distance(g_runtime.Iytot, kor_test::total({1, 2, 1}, 'y', true)), 1e-14);
        EXPECT_LT(distance(g_runtime.Iztot, kor_test::total({1, 2, 1}, 'z', true)), 1e-14);
    }
}

TEST(SpinsOfBasis, CountASpinOfOneStateAndNoneAfterARefusal) {
    build_definition({{1, 0}, {}, {}, {}, 1});
    EXPECT_EQ(spins_of_basis(), 2);
    forget_spins();
    EXPECT_FALSE(basis_is_current());
    EXPECT_EQ(spins_of_basis(), 0);
}

TEST(MakeGradientOperator, WithoutASpinSystemWritesAMessageAndChangesNothing) {
    g_runtime.Izgrad[1][1][1] = 42.0;
    g_runtime.n = 0;
    g_runtime.Nspins = 3;
    testing::internal::CaptureStderr();
    MakeGradientOperator();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "MakeGradientOperator: spin system not set up (n=0, Nspins=3)\n");
    g_runtime.n = 2;
    g_runtime.Nspins = 0;
    testing::internal::CaptureStderr();
    MakeGradientOperator();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "MakeGradientOperator: spin system not set up (n=2, Nspins=0)\n");
    EXPECT_EQ(g_runtime.Izgrad[1][1][1], 42.0);
}

TEST(BuildSpinSystem, PrintsTheDefinition) {
    define({{1, -2}, {1.0, 0.5}, {-125.25, 1e6}, {}, 1});
    KOR_SetSmokeCheckMode(0);
    testing::internal::CaptureStdout();
    BuildSpinSystemFromPulseSequenceGlobals();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\nBuildSpinSystemFromPulseSequenceGlobals()\n"
              "  Nspins = 2\n"
              "  n      = 2\n"
              "  spin 1: quantnum=1  Ilist=1  relspinamp=1  resofreq=-125.25 Hz\n"
              "  spin 2: quantnum=-2  Ilist=0  relspinamp=0.5  resofreq=1e+06 Hz\n"
              "\n");
}

TEST(BuildSpinSystem, PrintsNothingInTheQuietMode) {
    define({{1}, {}, {}, {}, 1});
    KOR_SetSmokeCheckMode(7);
    testing::internal::CaptureStdout();
    BuildSpinSystemFromPulseSequenceGlobals();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

} // namespace
} // namespace kor
