// Folding the sectors around the chosen one, and making the chosen one the current pulse.
#include "koroptseq.h"

#include "kor/runtime_state.h"
#include "kor/spin_system.h"
#include "korengine.h"
#include "rfwaveformfile.h"
#include "sequencetypes.h"

#include <algorithm>
#include <cstdio>

namespace kor {

namespace {

/// The checks of one sector whose propagator is wanted; 1, or 0 with a message.
int sector_has_one_propagator(int sector_index) {
    const int type = g_runtime.sectype[sector_index];
    if (type != 1 && type != 2) {
        std::printf("Sequence optimization: unsupported sector type %d in sector %d\n", type, sector_index);
        return 0;
    }
    if (g_runtime.noti[sector_index] <= 0) {
        std::printf("Sequence optimization: invalid ap in sector %d\n", sector_index);
        return 0;
    }
    if (g_runtime.nevo[sector_index] != 1) {
        std::printf("Sequence optimization: sector %d has nevo=%d.\n", sector_index,
                    g_runtime.nevo[sector_index]);
        std::printf("Stage 2 only supports sectors with nevo == 1.\n");
        return 0;
    }
    return 1;
}

/// The checks of the whole preparation; 1, or 0 with a message.
int sequence_can_be_prepared(int sector) {
    if (!g_runtime.systemset || g_runtime.Nspins <= 0) {
        std::printf("Sequence optimization: no current prepared spin system.\n");
        return 0;
    }
    if (!g_runtime.sectorset || g_runtime.nos <= 0) {
        std::printf("Sequence optimization: no current prepared pulse sequence.\n");
        return 0;
    }
    if (g_runtime.sequencetype != FAMILY_NMR) {
        std::printf("Sequence optimization: stage 2 currently supports only the\n");
        std::printf("prepared 1D/2D sequence family (sequencetype == 2).\n");
        return 0;
    }
    if (sector < 1 || sector > g_runtime.nos) {
        std::printf("Sequence optimization: invalid sector index %d (nos=%d)\n", sector, g_runtime.nos);
        return 0;
    }
    if (g_runtime.noti[sector] <= 0) {
        std::printf("Sequence optimization: invalid ap in selected sector %d\n", sector);
        return 0;
    }
    if (g_runtime.nevo[sector] != 1) {
        std::printf("Sequence optimization: selected sector %d has nevo=%d.\n", sector,
                    g_runtime.nevo[sector]);
        std::printf("Stage 2 only supports optimizable sectors with nevo == 1.\n");
        return 0;
    }
    return 1;
}

int fold_prefix(int sector, CMatrix& prefix) {
    for (int k = 1; k < sector; ++k) {
        if (!koropt_apply_sector_forward_2d(k, prefix)) {
            std::printf("Sequence optimization: failed while building prefix at sector %d\n", k);
            return 0;
        }
    }
    return 1;
}

int fold_suffix(int sector, CMatrix& suffix) {
    for (int k = g_runtime.nos; k > sector; --k) {
        if (!koropt_apply_sector_backward_to_observable_2d(k, suffix)) {
            std::printf("Sequence optimization: failed while building suffix at sector %d\n", k);
            return 0;
        }
    }
    return 1;
}

void print_preparation(int sector, int mode) {
    std::printf("\nPrepared current 1D/2D sequence for sector optimization:\n");
    std::printf("  chosen sector          : %d / %d\n", sector, g_runtime.nos);
    std::printf("  sector waveform file   : %s\n", g_runtime.fnames[sector]);
    std::printf("  sector type            : %d\n", g_runtime.sectype[sector]);
    std::printf("  ap                     : %d\n", g_runtime.ap);
    std::printf("  h                      : %.12g s\n", g_runtime.h);
    std::printf("  duration               : %.12g s\n", g_runtime.ti);
    std::printf("  static sector offset   : %.12g rad/s\n", g_runtime.statoff_s);
    std::printf("  objective mode         : %s\n", mode == KOR_OPT_OBJECTIVE_ABS_EXPECT ? "|<O>|" : "Re <O>");
    std::printf("  prefix sectors cached  : %d\n", sector - 1);
    std::printf("  suffix sectors cached  : %d\n\n", g_runtime.nos - sector);
}

} // namespace

int koropt_build_sector_propagator_2d(int sector_index, CMatrix& U) {
    static double bx[KOR_MAX_RF_POINTS];
    static double by[KOR_MAX_RF_POINTS];
    if (!sector_has_one_propagator(sector_index))
        return 0;
    const int points = g_runtime.noti[sector_index];
    const double dt = g_runtime.sectdur[sector_index] / points;
    const double offset = 2.0 * KOR_PI * g_runtime.statoff[sector_index];
    if (!koropt_load_waveform_xy(g_runtime.fnames[sector_index], points, bx, by)) {
        std::printf("Sequence optimization: could not read waveform file for sector %d:\n", sector_index);
        std::printf("  %s\n", g_runtime.fnames[sector_index]);
        return 0;
    }
    koropt_waveform_propagator(points, dt, bx, by, offset, U);
    return 1;
}

int koropt_apply_sector_forward_2d(int sector_index, CMatrix& rho) {
    static CMatrix U;
    if (!koropt_build_sector_propagator_2d(sector_index, U))
        return 0;
    EngineRotate(g_runtime.n, U, rho);
    return 1;
}

int koropt_apply_sector_backward_to_observable_2d(int sector_index, CMatrix& obs) {
    static CMatrix U;
    static CMatrix adjoint;
    static CMatrix carried;
    if (!koropt_build_sector_propagator_2d(sector_index, U))
        return 0;
    Adjungate(g_runtime.n, U, adjoint);
    Transform(g_runtime.n, U, obs, adjoint, carried);
    CopyCMatrix(g_runtime.n, carried, obs);
    return 1;
}

int koropt_load_selected_sector_into_runtime(int sector_index) {
    const int points = g_runtime.noti[sector_index];
    if (points < 1 || points > KOR_MAX_RF_POINTS)
        return 0;
    if (!koropt_load_waveform_xy(g_runtime.fnames[sector_index], points, g_runtime.xb, g_runtime.yb))
        return 0;
    for (double* gradient : {g_runtime.gx, g_runtime.gy, g_runtime.gz})
        std::fill_n(gradient, points, 0.0);
    g_runtime.ap = points;
    g_runtime.ti = g_runtime.sectdur[sector_index];
    g_runtime.h = g_runtime.ti / points;
    g_runtime.ndw = 1;
    g_runtime.x0_s = g_runtime.y0_s = g_runtime.z0_s = 0.0;
    g_runtime.dx_s = g_runtime.dy_s = g_runtime.dz_s = 0.0;
    g_runtime.gs = 0.0;
    g_runtime.statoff_s = 2.0 * KOR_PI * g_runtime.statoff[sector_index];
    g_runtime.pulseflag = 1;
    g_runtime.rfpulsedefined = 1;
    g_runtime.calc = 0;
    return 1;
}

int KOROptimizationPrepareCurrent2DSequenceSector(int sector, int mode) {
    static CMatrix prefix;
    static CMatrix suffix;
    if (!sequence_can_be_prepared(sector))
        return 0;
    BuildSpinSystemFromPulseSequenceGlobals();
    if (!g_runtime.spinsystemdefined)
        return 0;
    CopyCMatrix(g_runtime.n, g_runtime.densmat, prefix);
    CopyCMatrix(g_runtime.n, g_runtime.Istat, suffix);
    if (!fold_prefix(sector, prefix) || !fold_suffix(sector, suffix))
        return 0;
    if (!koropt_load_selected_sector_into_runtime(sector)) {
        std::printf("Sequence optimization: failed to load selected sector %d into runtime.\n", sector);
        return 0;
    }
    KOROptimizationResetContext();
    KOROptimizationSetPrefixState(&prefix);
    KOROptimizationSetSuffixObservable(&suffix);
    KOROptimizationSetStaticSectorOffsetRad(g_runtime.statoff_s);
    KOROptimizationSetObjectiveMode(mode == KOR_OPT_OBJECTIVE_ABS_EXPECT ? KOR_OPT_OBJECTIVE_ABS_EXPECT
                                                                         : KOR_OPT_OBJECTIVE_RE_EXPECT);
    print_preparation(sector, mode);
    return 1;
}

} // namespace kor
