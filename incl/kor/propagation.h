// Floor 3.8 - simulator: one sector applied to every density matrix of "dm.bin"
#pragma once

namespace kor {

/// All voxels through the current sector of a spatially resolved sequence.
void Rotate3D();
/// All evolution rows through a sector of a 1D/2D sequence: sectortype 1 normal, 2 evolution; h_local
/// in s, statoff_local in rad/s.
void Rotate2D_internal(int sectortype, double h_local, double statoff_local);

} // namespace kor
