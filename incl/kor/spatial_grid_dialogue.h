// Floor 3.25 - simulator: defining the spatial grid at the console
#pragma once

namespace kor {

/// Asks for the grid of g_runtime, either around a center (points, center and full width per axis) or point
/// by point (points, first coordinate and step per axis), lengths in cm, and sets offsetsdefined and
/// offsetset. Needs a spin system. The first unreadable answer ends it: the point counts (and, in the manual
/// form, the coordinates and steps) read so far stay, the flags are unchanged. Counts below 1 become 1; there
/// is no upper bound here, the composer clamps to 256.
void DefineSpatialSimulationDomain();

} // namespace kor
