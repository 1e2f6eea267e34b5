// The set-up of a spin system against whole matrix products: the same bits.
#include "kor/smoke_check_mode.h"
#include "kor/spin_system.h"
#include "support/plain_spin_system.h"
#include "support/random_systems.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

using namespace kor;
using namespace kor_test;

namespace {

constexpr int kAllPairs = 28;

void build_random_system(Random& random, const std::vector<int>& twice_spins, int Jexact) {
    RuntimeState& rt = g_runtime;
    KOR_SetSmokeCheckMode(1);
    rt.Nspins = static_cast<int>(twice_spins.size());
    rt.Jexact = Jexact;
    rt.Jcount = kAllPairs;
    std::memset(rt.jc, 0, sizeof rt.jc);
    for (std::size_t s = 0; s < twice_spins.size(); ++s) {
        rt.quantnum[s + 1] = twice_spins[s];
        rt.relspinamp[s + 1] = random.uniform(-2.0, 2.0);
        rt.resofreqs[s + 1] = random.uniform(-500.0, 500.0);
    }
    for (int pair = 1; pair <= kAllPairs; ++pair) {
        rt.couplings[pair] = random.integer(0, 4) ? random.uniform(-20.0, 20.0) : 0.0;
    }
    BuildSpinSystemFromPulseSequenceGlobals();
}

/// Both parts of every element; any two numbers that are not numbers count as equal.
int different_elements(const CMatrix& a, const CMatrix& b) {
    int different = 0;
    for (int r = 1; r <= g_runtime.n; ++r) {
        for (int c = 1; c <= g_runtime.n; ++c) {
            for (int part = 1; part <= 2; ++part) {
                const double x = a[r][c][part];
                const double y = b[r][c][part];
                different += std::memcmp(&x, &y, sizeof x) != 0 && !(std::isnan(x) && std::isnan(y));
            }
        }
    }
    return different;
}

void expect_the_bits_of(const PlainMeans& means) {
    static PlainSpinSystem plain;
    const RuntimeState& rt = g_runtime;
    build_plain(means, rt.Nspins, kAllPairs, plain);
    EXPECT_EQ(different_elements(rt.densmat, plain.densmat), 0);
    EXPECT_EQ(different_elements(rt.Izee, plain.Izee), 0);
    EXPECT_EQ(different_elements(rt.Icoup, plain.Icoup), 0);
    EXPECT_EQ(different_elements(rt.Ixtot, plain.Ixtot), 0);
    EXPECT_EQ(different_elements(rt.Iytot, plain.Iytot), 0);
    EXPECT_EQ(different_elements(rt.Iztot, plain.Iztot), 0);
    EXPECT_EQ(different_elements(rt.Izgrad, plain.Izgrad), 0);
}

} // namespace

TEST(SpinSystemBits, AreThoseOfTheFormulasForRandomMixedSystems) {
    Random random(211);
    for (int trial = 0; trial < 150; ++trial) {
        std::vector<int> twice_spins;
        int states = 1;
        for (int s = random.integer(1, KOR_MAX_SPINS); s > 0; --s) {
            const int twice_spin = random.integer(0, 5);
            if (states * (twice_spin + 1) <= 40) {
                states *= twice_spin + 1;
                twice_spins.push_back(twice_spin);
            }
        }
        build_random_system(random, twice_spins, random.integer(1, 2));
        SCOPED_TRACE(testing::PrintToString(twice_spins));
        expect_the_bits_of(kPlainByDefinition);
    }
}

TEST(SpinSystemBits, AreThoseOfWholeProductsUpToTheFullCapacity) {
    Random random(212);
    for (const std::vector<int>& twice_spins : std::vector<std::vector<int>>{{1, 1, 1, 1, 1, 1, 1, 1},
                                                                             {255},
                                                                             {15, 15},
                                                                             {4, 4, 7},
                                                                             {2, 0, 2, 2, 2},
                                                                             {1, 1, 1, 3, 3},
                                                                             {1, 2, 3, 4, 1}}) {
        for (const int Jexact : {1, 2}) {
            build_random_system(random, twice_spins, Jexact);
            SCOPED_TRACE(testing::PrintToString(twice_spins));
            expect_the_bits_of(kPlainWithoutZeros);
        }
    }
}

TEST(SpinSystemBits, AreThoseOfTheFormulasForValuesThatAreNotFinite) {
    Random random(213);
    build_random_system(random, {1, 2}, 2);
    g_runtime.relspinamp[1] = std::numeric_limits<double>::quiet_NaN();
    g_runtime.resofreqs[2] = std::numeric_limits<double>::infinity();
    g_runtime.jc[1][2] = -std::numeric_limits<double>::infinity();
    BuildSpinSystemFromPulseSequenceGlobals();
    expect_the_bits_of(kPlainByDefinition);
}

TEST(SpinSystemBits, OfNormalisedTotalsAreThoseOfNormalisedMatrices) {
    static CMatrix one, total;
    using Single = void (*)(const SpinIList&, const SpinKet&, int, int, CMatrix&);
    using Total = void (*)(int, int, const SpinKet&, const SpinIList&, int, CMatrix&);
    const std::pair<Single, Total> kinds[] = {
        {MakeMatrixIx, MakeTotalIx}, {MakeMatrixIy, MakeTotalIy}, {MakeMatrixIz, MakeTotalIz}};
    Random random(214);
    const RuntimeState& rt = g_runtime;
    for (const std::vector<int>& twice_spins : std::vector<std::vector<int>>{{1}, {1, 0, 3}, {2, 5, 1}}) {
        build_random_system(random, twice_spins, 1);
        for (const auto& [make_single, make_total] : kinds) {
            static CMatrix expected;
            CMatZero(rt.n, expected);
            for (int s = 1; s <= rt.Nspins; ++s) {
                make_single(rt.Ilist, rt.ket, rt.n, s, one);
                NormCMatrix(rt.n, one);
                CMatAdd(rt.n, expected, one, expected);
            }
            make_total(rt.n, rt.Nspins, rt.ket, rt.Ilist, 1, total);
            EXPECT_EQ(different_elements(total, expected), 0) << testing::PrintToString(twice_spins);
        }
    }
}
