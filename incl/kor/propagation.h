// Floor 3.8 - simulator: one sector applied to every density matrix of "dm.bin"
//
// A sector is a train of `ap` samples of equal length dt. During sample j
//   H_j = Izee + Icoup + w_j Izgrad + xb[j] Ixtot + yb[j] Iytot      rad/s
// and the sector's propagator is r = U_0 U_1 ... U_(ap-1), U_j = exp(-i H_j dt). Every density matrix
// becomes adjoint(r) rho r, the first sample acting first: each sample maps rho to
// exp(+i H_j dt) rho exp(-i H_j dt). All inputs come from the runtime state.
//
// A sector that succeeds counts `calc` up by one; one that fails prints its message, leaves "dm.bin" and
// `calc` as they were, and that is how a caller sees it. calc = 0 means the run has no "dm.bin" yet: it
// is made from copies of `densmat`, and `densmat` is then a work matrix.
#pragma once

namespace kor {

/// All voxels of the grid through the current sector of a spatially resolved sequence: dt = `h` (s),
/// w_j = gx[j] x + gy[j] y + gz[j] z + statoff_s (rad/s) at the voxel's position x0_s + (ix - 1) dx_s and so
/// on (cm), voxels z fastest. Prints progress lines unless the quiet mode is on; waits for Enter behind
/// most errors.
void Rotate3D();
/// All `ndw` evolution rows through a sector of a 1D/2D sequence, w_j = statoff_local (rad/s).
/// sectortype 2 is an evolution sector: row k = 1..ndw runs the same samples with dt = (k - 1) h_local
/// (s), so row 1 stays as it is. Any other type is a normal sector: dt = h_local for every row. A
/// "dm.bin" with another number of rows first becomes `ndw` copies of its first row. Prints a "*" per row
/// unless the quiet mode is on; never waits.
void Rotate2D_internal(int sectortype, double h_local, double statoff_local);

} // namespace kor
