#include "kormodel_refcheck.h"

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

    RestoreLegacySnapshot(&snapshot);
    std::puts(ok ? "All kormodel smoke/reference checks passed."
                 : "One or more kormodel smoke/reference checks failed.");
    return ok ? 1 : 0;
}

} // namespace kor
