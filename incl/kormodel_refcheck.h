// Floor 4.9 - workshop: the built-in reference checks
#pragma once

namespace kor {

/// Runs every case, prints PASS and FAIL lines and the verdict; 1 when all passed, else 0.
int KORModel_RunReferenceChecks();

} // namespace kor
