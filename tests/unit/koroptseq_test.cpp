#include "koroptseq.h"

#include "kor/propagation.h"
#include "kor/runtime_state.h"
#include "kor/sequence_driver.h"
#include "kor/smoke_check_mode.h"
#include "kor/spin_system.h"
#include "rfpulseparam.h"
#include "rfwaveformfile.h"
#include "support/console_script.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using kor::CMatrix;
using kor::g_runtime;
using kor_test::play_console;

void set_text(char* out, std::size_t size, const std::string& text) {
    std::snprintf(out, size, "%s", text.c_str());
}

/// Two or three coupled spins and a sequence of `sectors` random sectors, whose waveforms lie in the working
/// folder.
void prepare_random_sequence(int spins, int sectors, int points, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    kor::KOR_SetSmokeCheckMode(1);
    g_runtime.Nspins = spins;
    g_runtime.Jexact = 2;
    g_runtime.Jcount = 0;
    for (auto& row : g_runtime.jc)
        std::fill(std::begin(row), std::end(row), 0.0);
    for (int s = 1; s <= spins; ++s) {
        g_runtime.quantnum[s] = 1;
        g_runtime.relspinamp[s] = 1.0 + 0.1 * s;
        g_runtime.resofreqs[s] = 80.0 * normal(random);
        for (int t = s + 1; t <= spins; ++t)
            g_runtime.couplings[++g_runtime.Jcount] = 9.0 * normal(random);
    }
    g_runtime.sequencetype = 2;
    g_runtime.nos = sectors;
    g_runtime.systemset = g_runtime.sectorset = 1;
    for (int k = 1; k <= sectors; ++k) {
        g_runtime.sectype[k] = 1;
        g_runtime.noti[k] = points;
        g_runtime.nevo[k] = 1;
        g_runtime.sectdur[k] = 2e-3;
        g_runtime.statoff[k] = 30.0 * normal(random);
        set_text(g_runtime.remarks[k], sizeof g_runtime.remarks[k], "pulse");
        const std::string name = "sector" + std::to_string(k);
        set_text(g_runtime.fnames[k], sizeof g_runtime.fnames[k], name);
        std::vector<double> xb(static_cast<std::size_t>(points)), yb(xb.size());
        for (std::size_t j = 0; j < xb.size(); ++j) {
            xb[j] = 600.0 * normal(random);
            yb[j] = 600.0 * normal(random);
        }
        kor::BinArrayOut2D(points, xb.data(), yb.data(), name.c_str());
    }
    g_runtime.resultflnm[0] = '\0';
    kor::BuildSpinSystemFromPulseSequenceGlobals();
    kor::KOR_SetSmokeCheckMode(0);
}

/// Observable = a random matrix that is not Hermitian, so that <O> is complex.
void set_random_observable(unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    for (int r = 1; r <= g_runtime.n; ++r) {
        for (int c = 1; c <= g_runtime.n; ++c) {
            g_runtime.Istat[r][c][1] = normal(random);
            g_runtime.Istat[r][c][2] = normal(random);
        }
    }
}

int prepare(int sector, int mode, kor_test::ConsoleOutput* console = nullptr) {
    int result = -1;
    kor::KOR_SetSmokeCheckMode(1);
    const auto output =
        play_console("", [&] { result = kor::KOROptimizationPrepareCurrent2DSequenceSector(sector, mode); });
    kor::KOR_SetSmokeCheckMode(0);
    if (console)
        *console = output;
    return result;
}

TEST(KorObjectiveFromEval, IsMinusTheRealPartOrMinusTheMagnitude) {
    EXPECT_EQ(kor::kor_objective_from_eval(kor::KOR_OPT_OBJECTIVE_ABS_EXPECT, 3.0, 4.0), -5.0);
    EXPECT_EQ(kor::kor_objective_from_eval(kor::KOR_OPT_OBJECTIVE_RE_EXPECT, 3.0, 4.0), -3.0);
    EXPECT_EQ(kor::kor_objective_from_eval(7, 3.0, 4.0), -3.0);
}

// The sector's objective inside its sequence is the expectation value behind all sectors.
TEST(KOROptEvaluatePulseObjective, EqualsTheExpectationValueBehindTheWholeSequence) {
    for (const unsigned seed : {1u, 2u, 3u}) {
        for (int sector = 1; sector <= 4; ++sector) {
            const kor_test::TempTree tree;
            prepare_random_sequence(seed == 3 ? 3 : 2, 4, 8, seed);
            set_random_observable(seed + 100);
            static CMatrix observable;
            kor::CopyCMatrix(g_runtime.n, g_runtime.Istat, observable);

            kor::KOR_SetSmokeCheckMode(1);
            kor::RunCurrentPreparedModel();
            kor::KOR_SetSmokeCheckMode(0);
            kor::Complex2 expected;
            kor::ExpectationValue(g_runtime.n, observable, g_runtime.densmat, expected);

            kor::CopyCMatrix(g_runtime.n, observable, g_runtime.Istat);
            ASSERT_EQ(prepare(sector, kor::KOR_OPT_OBJECTIVE_ABS_EXPECT), 1);
            std::vector<double> par(12);
            kor::RFPulseToParArray(12, g_runtime.ap, g_runtime.xb, g_runtime.yb, par.data());
            double re = 0.0, im = 0.0;
            const double objective =
                kor::KOROptEvaluatePulseObjective(&kor::g_kor_opt_ctx, g_runtime.n, g_runtime.ap, 12,
                                                  g_runtime.h, 0.0, 0.0, par.data(), &re, &im);
            EXPECT_NEAR(re, expected[1], 1e-12) << "seed " << seed << " sector " << sector;
            EXPECT_NEAR(im, expected[2], 1e-12) << "seed " << seed << " sector " << sector;
            EXPECT_DOUBLE_EQ(objective, -std::hypot(re, im));
        }
    }
}

TEST(KOROptEvaluatePulseObjective, WithoutAContextUsesTheCurrentStateAndOperatorOnResonance) {
    const kor_test::TempTree tree;
    prepare_random_sequence(1, 1, 8, 5);
    set_random_observable(6);
    std::vector<double> par(4, 0.0);
    std::fill_n(g_runtime.xb, 8, 0.0);
    std::fill_n(g_runtime.yb, 8, 0.0);
    auto ctx = std::make_unique<kor::KOROptContext>();
    ctx->sector_offset_rad = 1e4;
    double re = 0.0;
    const double objective = kor::KOROptEvaluatePulseObjective(ctx.get(), g_runtime.n, 8, 4, 0.0, 0.0, 0.0,
                                                               par.data(), &re, nullptr);
    kor::Complex2 expected;
    kor::ExpectationValue(g_runtime.n, g_runtime.Istat, g_runtime.densmat, expected);
    EXPECT_NEAR(re, expected[1], 1e-15);
    EXPECT_EQ(objective, -re);
}

TEST(KOROptEvaluatePulseObjective, AddsTheGradientAtThePosition) {
    const kor_test::TempTree tree;
    prepare_random_sequence(1, 1, 8, 7);
    g_runtime.resofreqs[1] = 0.0;
    kor::KOR_SetSmokeCheckMode(1);
    kor::BuildSpinSystemFromPulseSequenceGlobals();
    kor::KOR_SetSmokeCheckMode(0);
    kor::CopyCMatrix(2, g_runtime.Ixtot, g_runtime.densmat);
    kor::CopyCMatrix(2, g_runtime.Iytot, g_runtime.Istat);
    std::vector<double> par(4, 0.0);
    std::fill_n(g_runtime.xb, 8, 0.0);
    std::fill_n(g_runtime.yb, 8, 0.0);
    double re = 0.0;
    const double h = 1e-4, position = 0.5, gradient = 300.0;
    kor::KOROptEvaluatePulseObjective(nullptr, 2, 8, 4, h, position, gradient, par.data(), &re, nullptr);
    // Ix -> Ix cos - Iy sin; trace(Iy Iy) = 1/2
    EXPECT_NEAR(re, -0.5 * std::sin(8 * h * position * gradient), 1e-14);
}

TEST(KOROptEvaluatePulseObjective, RefusesMissingParametersAndEmptySizes) {
    double par = 1.0, re = 9.0, im = 9.0;
    EXPECT_EQ(kor::KOROptEvaluatePulseObjective(nullptr, 2, 8, 4, 1.0, 0.0, 0.0, nullptr, &re, &im), 0.0);
    EXPECT_EQ(re, 0.0);
    EXPECT_EQ(im, 0.0);
    EXPECT_EQ(kor::KOROptEvaluatePulseObjective(nullptr, 0, 8, 4, 1.0, 0.0, 0.0, &par, nullptr, nullptr),
              0.0);
    EXPECT_EQ(kor::KOROptEvaluatePulseObjective(nullptr, 2, 0, 4, 1.0, 0.0, 0.0, &par, nullptr, nullptr),
              0.0);
    EXPECT_EQ(kor::KOROptEvaluatePulseObjective(nullptr, 2, 8, 0, 1.0, 0.0, 0.0, &par, nullptr, nullptr),
              0.0);
}

TEST(KOROptContextInit, ClearsTheRecordAndIgnoresNull) {
    auto ctx = std::make_unique<kor::KOROptContext>();
    ctx->has_prefix_state = ctx->has_suffix_observable = 1;
    ctx->objective_mode = kor::KOR_OPT_OBJECTIVE_ABS_EXPECT;
    ctx->sector_offset_rad = 5.0;
    ctx->rho_in[1][1][1] = 3.0;
    kor::KOROptContext_Init(ctx.get());
    EXPECT_EQ(ctx->initialized, 1);
    EXPECT_EQ(ctx->has_prefix_state, 0);
    EXPECT_EQ(ctx->has_suffix_observable, 0);
    EXPECT_EQ(ctx->objective_mode, kor::KOR_OPT_OBJECTIVE_RE_EXPECT);
    EXPECT_EQ(ctx->sector_offset_rad, 0.0);
    EXPECT_EQ(ctx->rho_in[1][1][1], 0.0);
    kor::KOROptContext_Init(nullptr);
    kor::KOROptContext_SetObjectiveMode(nullptr, kor::KOR_OPT_OBJECTIVE_RE_EXPECT);
    kor::KOROptContext_SetPrefixState(nullptr, nullptr);
    kor::KOROptContext_SetPrefixState(ctx.get(), nullptr);
    EXPECT_EQ(ctx->has_prefix_state, 0);
}

TEST(KOROptContextSetDefaults, TakesStateOperatorAndOffsetOfTheRuntime) {
    const kor_test::TempTree tree;
    prepare_random_sequence(2, 1, 2, 9);
    set_random_observable(10);
    g_runtime.statoff_s = 77.0;
    kor::g_kor_opt_ctx.initialized = 0;
    kor::KOROptimizationUseCurrentRuntimeDefaults();
    EXPECT_EQ(kor::g_kor_opt_ctx.initialized, 1);
    EXPECT_EQ(kor::g_kor_opt_ctx.has_prefix_state, 1);
    EXPECT_EQ(kor::g_kor_opt_ctx.has_suffix_observable, 1);
    EXPECT_EQ(kor::g_kor_opt_ctx.sector_offset_rad, 77.0);
    EXPECT_EQ(kor::g_kor_opt_ctx.rho_in[1][1][1], g_runtime.densmat[1][1][1]);
    EXPECT_EQ(kor::g_kor_opt_ctx.obs_out[4][3][2], g_runtime.Istat[4][3][2]);
}

TEST(PrepareSequenceSector, ReportsWhatItPrepared) {
    const kor_test::TempTree tree;
    prepare_random_sequence(2, 3, 8, 11);
    g_runtime.statoff[2] = 10.0;
    set_random_observable(12);
    g_runtime.gx[3] = g_runtime.gs = g_runtime.dx_s = 5.0;
    g_runtime.calc = 4;
    kor_test::ConsoleOutput console;
    ASSERT_EQ(prepare(2, kor::KOR_OPT_OBJECTIVE_ABS_EXPECT, &console), 1);
    EXPECT_EQ(console.out, "\nPrepared current 1D/2D sequence for sector optimization:\n"
                           "  chosen sector          : 2 / 3\n"
                           "  sector waveform file   : sector2\n"
                           "  sector type            : 1\n"
                           "  ap                     : 8\n"
                           "  h                      : 0.00025 s\n"
                           "  duration               : 0.002 s\n"
                           "  static sector offset   : 62.8318530718 rad/s\n"
                           "  objective mode         : |<O>|\n"
                           "  prefix sectors cached  : 1\n"
                           "  suffix sectors cached  : 1\n\n");
    EXPECT_EQ(console.err, "");
    EXPECT_EQ(g_runtime.gx[3], 0.0);
    EXPECT_EQ(g_runtime.gs, 0.0);
    EXPECT_EQ(g_runtime.dx_s, 0.0);
    EXPECT_EQ(g_runtime.calc, 0);
    EXPECT_EQ(g_runtime.ndw, 1);
    EXPECT_EQ(g_runtime.pulseflag, 1);
}

TEST(PrepareSequenceSector, TheFirstSectorHasNoPrefixAndTheLastNoSuffix) {
    const kor_test::TempTree tree;
    prepare_random_sequence(2, 3, 8, 15);
    set_random_observable(16);
    static CMatrix observable;
    kor::CopyCMatrix(4, g_runtime.Istat, observable);
    kor_test::ConsoleOutput console;
    ASSERT_EQ(prepare(1, kor::KOR_OPT_OBJECTIVE_RE_EXPECT, &console), 1);
    EXPECT_NE(console.out.find("  objective mode         : Re <O>\n"
                               "  prefix sectors cached  : 0\n  suffix sectors cached  : 2\n\n"),
              std::string::npos);
    for (int r = 1; r <= 4; ++r)
        EXPECT_EQ(kor::g_kor_opt_ctx.rho_in[r][r][1], g_runtime.densmat[r][r][1]) << r;
    ASSERT_EQ(prepare(3, kor::KOR_OPT_OBJECTIVE_RE_EXPECT, &console), 1);
    EXPECT_NE(console.out.find("  prefix sectors cached  : 2\n  suffix sectors cached  : 0\n\n"),
              std::string::npos);
    for (int r = 1; r <= 4; ++r)
        EXPECT_EQ(kor::g_kor_opt_ctx.obs_out[r][1][2], observable[r][1][2]) << r;
}

TEST(PrepareSequenceSector, LoadsAtMost8192Points) {
    const kor_test::TempTree tree;
    prepare_random_sequence(1, 1, kor::KOR_MAX_RF_POINTS, 17);
    EXPECT_EQ(prepare(1, 0), 1);
    EXPECT_EQ(g_runtime.ap, 8192);
    EXPECT_EQ(g_runtime.h, 2e-3 / 8192);
    g_runtime.noti[1] = 8193;
    kor_test::ConsoleOutput console;
    EXPECT_EQ(prepare(1, 0, &console), 0);
    EXPECT_EQ(console.out, "Sequence optimization: failed to load selected sector 1 into runtime.\n");
    EXPECT_EQ(g_runtime.ap, 8192);
}

TEST(PrepareSequenceSector, NamesEveryReasonToRefuse) {
    const kor_test::TempTree tree;
    const auto refusal = [&](int sector, const std::function<void()>& spoil) {
        prepare_random_sequence(2, 3, 4, 13);
        spoil();
        kor_test::ConsoleOutput console;
        EXPECT_EQ(prepare(sector, 0, &console), 0);
        return console.out;
    };
    EXPECT_EQ(refusal(1, [] { g_runtime.systemset = 0; }),
              "Sequence optimization: no current prepared spin system.\n");
    EXPECT_EQ(refusal(1, [] { g_runtime.sectorset = 0; }),
              "Sequence optimization: no current prepared pulse sequence.\n");
    EXPECT_EQ(refusal(1, [] { g_runtime.sequencetype = 1; }),
              "Sequence optimization: stage 2 currently supports only the\n"
              "prepared 1D/2D sequence family (sequencetype == 2).\n");
    EXPECT_EQ(refusal(0, [] {}), "Sequence optimization: invalid sector index 0 (nos=3)\n");
    EXPECT_EQ(refusal(4, [] {}), "Sequence optimization: invalid sector index 4 (nos=3)\n");
    EXPECT_EQ(refusal(2, [] { g_runtime.noti[2] = 0; }),
              "Sequence optimization: invalid ap in selected sector 2\n");
    EXPECT_EQ(refusal(2, [] { g_runtime.nevo[2] = 2; }),
              "Sequence optimization: selected sector 2 has nevo=2.\n"
              "Stage 2 only supports optimizable sectors with nevo == 1.\n");
    EXPECT_EQ(refusal(2, [] { g_runtime.quantnum[1] = 256; }), ""); // on standard error
    EXPECT_EQ(refusal(2, [] { g_runtime.sectype[1] = 3; }),
              "Sequence optimization: unsupported sector type 3 in sector 1\n"
              "Sequence optimization: failed while building prefix at sector 1\n");
    EXPECT_EQ(refusal(2, [] { g_runtime.noti[3] = 0; }),
              "Sequence optimization: invalid ap in sector 3\n"
              "Sequence optimization: failed while building suffix at sector 3\n");
    EXPECT_EQ(refusal(2, [] { g_runtime.nevo[3] = 5; }),
              "Sequence optimization: sector 3 has nevo=5.\nStage 2 only supports sectors with nevo == 1.\n"
              "Sequence optimization: failed while building suffix at sector 3\n");
    EXPECT_EQ(refusal(2, [] { set_text(g_runtime.fnames[1], 256, "nowhere"); }),
              "Sequence optimization: could not read waveform file for sector 1:\n  nowhere\n"
              "Sequence optimization: failed while building prefix at sector 1\n");
    EXPECT_EQ(refusal(2, [] { set_text(g_runtime.fnames[2], 256, "nowhere"); }),
              "Sequence optimization: failed to load selected sector 2 into runtime.\n");
}

TEST(PrepareSequenceSector, ARefusedSectorLeavesTheContextUnchanged) {
    const kor_test::TempTree tree;
    prepare_random_sequence(2, 2, 4, 14);
    ASSERT_EQ(prepare(1, kor::KOR_OPT_OBJECTIVE_ABS_EXPECT), 1);
    kor::g_kor_opt_ctx.sector_offset_rad = 123.0;
    g_runtime.nevo[2] = 2;
    EXPECT_EQ(prepare(2, kor::KOR_OPT_OBJECTIVE_RE_EXPECT), 0);
    EXPECT_EQ(kor::g_kor_opt_ctx.sector_offset_rad, 123.0);
    EXPECT_EQ(kor::g_kor_opt_ctx.objective_mode, kor::KOR_OPT_OBJECTIVE_ABS_EXPECT);
}

} // namespace
