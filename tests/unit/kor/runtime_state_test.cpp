#include "kor/runtime_state.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace kor;

namespace {

/// The state with every byte set, but for the dimension and the matrices, which take n and `value`.
void spoil(int n) {
    std::memset(static_cast<void*>(&g_runtime), 0x55, sizeof g_runtime);
    g_runtime.n = n;
}

CMatrix* const operators[] = {&g_runtime.densmat, &g_runtime.Izee,  &g_runtime.Icoup, &g_runtime.Istat,
                              &g_runtime.Izgrad,  &g_runtime.Ixtot, &g_runtime.Iytot, &g_runtime.Iztot};

void expect_complex(const Complex2& number, double re, double im) {
    EXPECT_EQ(number[1], re);
    EXPECT_EQ(number[2], im);
}

} // namespace

TEST(RuntimeInit, SetsTheStartUpDefaults) {
    spoil(0);
    init();
    for (int flag : {g_runtime.spinsystemdefined, g_runtime.rfpulsedefined, g_runtime.offsetsdefined,
                     g_runtime.rotframe, g_runtime.batch, g_runtime.meanchoice, g_runtime.calc})
        EXPECT_EQ(flag, 0);
    for (double value : {g_runtime.x0_s, g_runtime.y0_s, g_runtime.z0_s, g_runtime.dx_s, g_runtime.dy_s,
                         g_runtime.dz_s, g_runtime.gs})
        EXPECT_EQ(value, 0.0);
    for (int count : {g_runtime.ndx, g_runtime.ndy, g_runtime.ndz, g_runtime.ndw})
        EXPECT_EQ(count, 1);
    EXPECT_EQ(g_runtime.pulseflag, 2);
}

TEST(RuntimeInit, SetsTheComplexConstants) {
    spoil(0);
    init();
    expect_complex(g_runtime.cn, 0.0, 1.0);
    expect_complex(g_runtime.cn1, 1.0, 0.0);
    expect_complex(g_runtime.cn2, 0.5, 0.0);
    expect_complex(g_runtime.cn3, 2.0, 0.0);
    expect_complex(g_runtime.cn4, 0.16666666666666666, 0.0);
    expect_complex(g_runtime.cn5, -1.0, 0.0);
    expect_complex(g_runtime.Eval, 0.0, 0.0);
    expect_complex(g_runtime.x, 0.0, 0.0);
}

TEST(RuntimeInit, LeavesTheDefinitionAlone) {
    spoil(0);
    init();
    for (int value : {g_runtime.Nspins, g_runtime.quantnum[1], g_runtime.nos, g_runtime.sequencetype,
                      g_runtime.systemset, g_runtime.sectorset, g_runtime.offsetset, g_runtime.ap})
        EXPECT_EQ(value, 0x55555555);
    EXPECT_EQ(g_runtime.n, 0);
}

TEST(RuntimeInit, ZeroesNoMatrixWithoutADimension) {
    spoil(0);
    const double before = g_runtime.densmat[1][1][1];
    ASSERT_NE(before, 0.0);
    init();
    for (const CMatrix* matrix : operators)
        EXPECT_EQ((*matrix)[1][1][1], before);
}

TEST(RuntimeInit, ZeroesTheEightOperatorsOverTheDimension) {
    spoil(4);
    const double before = g_runtime.densmat[1][1][1];
    init();
    for (const CMatrix* matrix : operators) {
        for (int r = 1; r <= 4; ++r)
            for (int c = 1; c <= 4; ++c)
                expect_complex((*matrix)[r][c], 0.0, 0.0);
        EXPECT_EQ((*matrix)[5][5][1], before);
        EXPECT_EQ((*matrix)[1][5][2], before);
    }
}
