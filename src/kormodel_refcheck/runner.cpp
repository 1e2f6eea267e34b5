#include "kormodel_refcheck.h"

#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "kor/snapshot.h"

#include <cstdio>
#include <cstring>

namespace kor {

namespace {

// The spin definition whole: the snapshot ends at spin 6 and coupling 20, a model file may have 8 spins.
struct SpinDefinition {
    int quantnum[KOR_MAX_SPINS + 1];
    double relspinamp[KOR_MAX_SPINS + 1], resofreqs[KOR_MAX_SPINS + 1];
    double jc[KOR_MAX_SPINS + 1][KOR_MAX_SPINS + 1];
    double couplings[KOR_MAX_PAIRS + 1];
    SpinIList Ilist;
};

template <class From, class To> void copy_spin_definition(const From& from, To& to) {
    std::memcpy(to.quantnum, from.quantnum, sizeof to.quantnum);
    std::memcpy(to.relspinamp, from.relspinamp, sizeof to.relspinamp);
    std::memcpy(to.resofreqs, from.resofreqs, sizeof to.resofreqs);
    std::memcpy(to.jc, from.jc, sizeof to.jc);
    std::memcpy(to.couplings, from.couplings, sizeof to.couplings);
    std::memcpy(to.Ilist, from.Ilist, sizeof to.Ilist);
}

} // namespace

int KORModel_RunReferenceChecks() {
    static KORLegacySnapshot snapshot;
    static SpinDefinition spins;
    CaptureLegacySnapshot(&snapshot);
    copy_spin_definition(g_runtime, spins);

    bool ok = check_spin_operator_case();
    ok &= check_hamiltonian_case();
    ok &= check_weak_spectrum_case();
    ok &= check_spatial_gradient_case();
    ok &= check_split_composition_case();
    ok &= check_malformed_model_cases();

    // Restoring rebuilds the operators from the spins that stand in the state by then; its listing is no part
    // of the report.
    copy_spin_definition(spins, g_runtime);
    KOR_SetSmokeCheckMode(1);
    RestoreLegacySnapshot(&snapshot);
    KOR_SetSmokeCheckMode(0);
    std::puts(ok ? "All kormodel smoke/reference checks passed."
                 : "One or more kormodel smoke/reference checks failed.");
    return ok ? 1 : 0;
}

} // namespace kor
