#include "koroptseq.h"

#include "kor/runtime_state.h"

#include <cmath>

namespace kor {

KOROptContext g_kor_opt_ctx;

namespace {

void initialise_if_needed(KOROptContext* ctx) {
    if (!ctx->initialized)
        KOROptContext_Init(ctx);
}

} // namespace

void KOROptContext_Init(KOROptContext* ctx) {
    if (!ctx)
        return;
    ctx->has_prefix_state = 0;
    ctx->has_suffix_observable = 0;
    CMatZero(KOR_MAX_STATES, ctx->rho_in);
    CMatZero(KOR_MAX_STATES, ctx->obs_out);
    ctx->initialized = 1;
    ctx->objective_mode = KOR_OPT_OBJECTIVE_RE_EXPECT;
    ctx->sector_offset_rad = 0.0;
}

void KOROptContext_SetDefaultsFromCurrentRuntime(KOROptContext* ctx) {
    KOROptContext_SetPrefixState(ctx, &g_runtime.densmat);
    KOROptContext_SetSuffixObservable(ctx, &g_runtime.Istat);
    KOROptContext_SetStaticSectorOffsetRad(ctx, g_runtime.statoff_s);
}

void KOROptContext_SetObjectiveMode(KOROptContext* ctx, KOROptObjectiveMode mode) {
    if (!ctx)
        return;
    initialise_if_needed(ctx);
    ctx->objective_mode = mode;
}

void KOROptContext_SetPrefixState(KOROptContext* ctx, const CMatrix* rho) {
    if (!ctx || !rho)
        return;
    initialise_if_needed(ctx);
    CopyCMatrix(g_runtime.n, *rho, ctx->rho_in);
    ctx->has_prefix_state = 1;
}

void KOROptContext_SetSuffixObservable(KOROptContext* ctx, const CMatrix* obs) {
    if (!ctx || !obs)
        return;
    initialise_if_needed(ctx);
    CopyCMatrix(g_runtime.n, *obs, ctx->obs_out);
    ctx->has_suffix_observable = 1;
}

void KOROptContext_SetStaticSectorOffsetRad(KOROptContext* ctx, double rad) {
    if (!ctx)
        return;
    initialise_if_needed(ctx);
    ctx->sector_offset_rad = rad;
}

void KOROptimizationResetContext() {
    KOROptContext_Init(&g_kor_opt_ctx);
}

void KOROptimizationUseCurrentRuntimeDefaults() {
    KOROptContext_SetDefaultsFromCurrentRuntime(&g_kor_opt_ctx);
}

void KOROptimizationSetObjectiveMode(KOROptObjectiveMode mode) {
    KOROptContext_SetObjectiveMode(&g_kor_opt_ctx, mode);
}

void KOROptimizationSetPrefixState(const CMatrix* rho) {
    KOROptContext_SetPrefixState(&g_kor_opt_ctx, rho);
}

void KOROptimizationSetSuffixObservable(const CMatrix* obs) {
    KOROptContext_SetSuffixObservable(&g_kor_opt_ctx, obs);
}

void KOROptimizationSetStaticSectorOffsetRad(double rad) {
    KOROptContext_SetStaticSectorOffsetRad(&g_kor_opt_ctx, rad);
}

double kor_objective_from_eval(int mode, double re, double im) {
    return mode == KOR_OPT_OBJECTIVE_ABS_EXPECT ? -std::hypot(re, im) : -re;
}

} // namespace kor
