// Floor 3.2 - simulator: the quiet flag of the reference checks
#pragma once

namespace kor {

/// 1 for any nonzero argument: no prompts in the signal generator, no progress, no listings.
void KOR_SetSmokeCheckMode(int on);
int KOR_GetSmokeCheckMode();

} // namespace kor
