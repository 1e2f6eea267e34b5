// The objective of a pulse inside its sequence, and the propagator of the current waveform.
#include "koroptseq.h"

#include "kor/runtime_state.h"
#include "kor/spin_system.h"
#include "korengine.h"
#include "rfpulseparam.h"

namespace kor {

void koropt_waveform_propagator(int points, double dt, const double* xb, const double* yb, double offset,
                                CMatrix& U) {
    static CMatrix static_hamiltonian; // Izee + Icoup, rad/s
    CMatAdd(g_runtime.n, g_runtime.Izee, g_runtime.Icoup, static_hamiltonian);
    static int spin_group[KOR_MAX_SPINS];
    EngineSector sector{};
    sector.system = {g_runtime.n,      &static_hamiltonian,          &g_runtime.Izgrad, &g_runtime.Ixtot,
                     &g_runtime.Iytot, find_alike_spins(spin_group), spin_group};
    sector.samples = {points, dt, xb, yb, nullptr, nullptr, nullptr, offset};
    sector.grid = {1, 1, 1, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    EngineOpenSector(sector);
    EngineSectorPropagator(1, 1, 1, U);
}

double KOROptEvaluatePulseObjective(const KOROptContext* ctx, int n_local, int ap_local, int npar_local,
                                    double h_local, double x0_s_local, double gs_local, const double* parvec,
                                    double* re_out, double* im_out) {
    static CMatrix U;
    static CMatrix state;
    if (re_out)
        *re_out = 0.0;
    if (im_out)
        *im_out = 0.0;
    if (!parvec || n_local <= 0 || ap_local < 1 || npar_local <= 0)
        return 0.0;

    const bool in_context = ctx && ctx->initialized;
    const int mode = in_context ? ctx->objective_mode : KOR_OPT_OBJECTIVE_RE_EXPECT;
    const double offset = in_context ? ctx->sector_offset_rad : 0.0;
    const CMatrix& start = in_context && ctx->has_prefix_state ? ctx->rho_in : g_runtime.densmat;
    const CMatrix& observable = in_context && ctx->has_suffix_observable ? ctx->obs_out : g_runtime.Istat;

    ParArrayToRFPulse(npar_local, ap_local, parvec, g_runtime.xb, g_runtime.yb);
    koropt_waveform_propagator(ap_local, h_local, g_runtime.xb, g_runtime.yb, x0_s_local * gs_local + offset,
                               U);
    CopyCMatrix(n_local, start, state);
    EngineRotate(n_local, U, state);
    Complex2 value;
    ExpectationValue(n_local, observable, state, value);
    if (re_out)
        *re_out = value[1];
    if (im_out)
        *im_out = value[2];
    return kor_objective_from_eval(mode, value[1], value[2]);
}

} // namespace kor
