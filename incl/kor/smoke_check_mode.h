// Floor 3.2 - simulator: the quiet flag of the reference checks
//
// The reference checks run whole simulations by the dozen. While the flag is set, the signal generator
// asks nothing (it takes fixed parameters) and progress lines, listings and the report of a rebuilt spin
// system are left out; results are the same.
#pragma once

namespace kor {

/// Stores 1 for any nonzero argument, else 0. The flag stays until the next call; 0 at process start.
void KOR_SetSmokeCheckMode(int on);
/// 1 while the quiet mode is on, else 0.
int KOR_GetSmokeCheckMode();

} // namespace kor
