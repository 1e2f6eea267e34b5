// Floor 3.20 - simulator: one sector of a sequence as the optimiser sees it
//
// The sectors before the chosen one are folded into a prefix state (the density matrix on entry to it), the
// sectors after it into a suffix observable (the target operator carried back to its end). Sectors are
// numbered from 1; matrices are n x n of the current spin system.
#pragma once

#include "matrixmathlib.h"

namespace kor {

/// How the expectation value <O> becomes the objective that is minimised.
enum KOROptObjectiveMode {
    KOR_OPT_OBJECTIVE_RE_EXPECT = 0, // -Re <O>, phase-sensitive
    KOR_OPT_OBJECTIVE_ABS_EXPECT = 1 // -|<O>|
};

struct KOROptContext {
    int initialized;
    int has_prefix_state;
    int has_suffix_observable;
    KOROptObjectiveMode objective_mode;
    double sector_offset_rad; // rad/s
    CMatrix rho_in;           // prefix state
    CMatrix obs_out;          // suffix observable
};

extern KOROptContext g_kor_opt_ctx;

/// Clears the record; mode Re <O>, offset 0. A null context is ignored here and below.
void KOROptContext_Init(KOROptContext* ctx);
/// Prefix state = densmat, suffix observable = Istat, offset = statoff_s.
void KOROptContext_SetDefaultsFromCurrentRuntime(KOROptContext* ctx);
void KOROptContext_SetObjectiveMode(KOROptContext* ctx, KOROptObjectiveMode mode);
void KOROptContext_SetPrefixState(KOROptContext* ctx, const CMatrix* rho);
void KOROptContext_SetSuffixObservable(KOROptContext* ctx, const CMatrix* obs);
void KOROptContext_SetStaticSectorOffsetRad(KOROptContext* ctx, double rad);

/// The same operations on g_kor_opt_ctx.
void KOROptimizationResetContext();
void KOROptimizationUseCurrentRuntimeDefaults();
void KOROptimizationSetObjectiveMode(KOROptObjectiveMode mode);
void KOROptimizationSetPrefixState(const CMatrix* rho);
void KOROptimizationSetSuffixObservable(const CMatrix* obs);
void KOROptimizationSetStaticSectorOffsetRad(double rad);

/// -hypot(re, im) in mode KOR_OPT_OBJECTIVE_ABS_EXPECT, -re in any other.
double kor_objective_from_eval(int mode, double re, double im);

/// Objective of a pulse in the context: the start state (prefix state, else densmat) is propagated through
/// the waveform of `parvec` and observed (suffix observable, else Istat).
///   n_local         dimension n of the state       ap_local   waveform points, 0-based arrays
///   npar_local      length of parvec               h_local    time step, s
///   x0_s_local      position, cm                   gs_local   gradient, rad/s per cm
///   re_out, im_out  <O>; may be null
/// Writes the waveform into xb, yb of the state. 0.0 for a null vector or a size below 1.
double KOROptEvaluatePulseObjective(const KOROptContext* ctx, int n_local, int ap_local, int npar_local,
                                    double h_local, double x0_s_local, double gs_local, const double* parvec,
                                    double* re_out, double* im_out);

/// U = propagator of a sector's stored waveform at its static offset. 1, or 0 with a message on standard
/// output.
int koropt_build_sector_propagator_2d(int sector_index, CMatrix& U);
/// rho = adjoint(U) . rho . U; 0 when the propagator fails.
int koropt_apply_sector_forward_2d(int sector_index, CMatrix& rho);
/// obs = U . obs . adjoint(U); 0 when the propagator fails.
int koropt_apply_sector_backward_to_observable_2d(int sector_index, CMatrix& obs);
/// Makes the sector's waveform, grid of time and offset the current pulse. 1, or 0 when it cannot be read.
int koropt_load_selected_sector_into_runtime(int sector_index);
/// Checks, rebuilds the spin system, folds the other sectors, loads the sector and fills g_kor_opt_ctx.
/// 1, or 0 with a message on standard output.
int KOROptimizationPrepareCurrent2DSequenceSector(int sector, int mode);

/// U = propagator of the current spin system under `points` samples xb, yb (rad/s, 0-based) of dt seconds
/// each at a fixed offset (rad/s).
void koropt_waveform_propagator(int points, double dt, const double* xb, const double* yb, double offset,
                                CMatrix& U);

} // namespace kor
