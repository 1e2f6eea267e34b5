#pragma once

#include "kor/density_file.h"

namespace kor {

// How the two families speak of a density file that fails: the spatial one waits for Enter.
constexpr DensityReport waiting{"Rotate3D", true};
constexpr DensityReport silent{"Rotate2D", false};

} // namespace kor
