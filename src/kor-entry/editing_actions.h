// The menu items that edit the current model, beyond those that are one dialogue each.
#pragma once

namespace kor {

/// Asks for the spins, then, when they were defined, for intensities, offsets and couplings.
void RedefineSpinSystem();

} // namespace kor
