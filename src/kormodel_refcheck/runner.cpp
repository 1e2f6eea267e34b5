#include "kormodel_refcheck.h"

#include "kor/smoke_check_mode.h"
#include "kor/snapshot.h"

#include <cstdio>

namespace kor {

int KORModel_RunReferenceChecks() {
    static KORLegacySnapshot snapshot;
    CaptureLegacySnapshot(&snapshot);

    bool ok = check_spin_operator_case();
    ok &= check_hamiltonian_case();
    ok &= check_weak_spectrum_case();
    ok &= check_spatial_gradient_case();
    ok &= check_split_composition_case();
    ok &= check_malformed_model_cases();

    // Restoring rebuilds the operators; its listing is no part of the report.
    KOR_SetSmokeCheckMode(1);
    RestoreLegacySnapshot(&snapshot);
    KOR_SetSmokeCheckMode(0);
    std::puts(ok ? "All kormodel smoke/reference checks passed."
                 : "One or more kormodel smoke/reference checks failed.");
    return ok ? 1 : 0;
}

} // namespace kor
