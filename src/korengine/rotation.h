// Rotation of states in the order of the files by a propagator in planes.
#pragma once

namespace kor {

/// `count` states, each becoming adjoint(r) state r; r is n x n planes without padding.
void rotate_by_planes(int n, const double* re, const double* im, int count, double* states);

} // namespace kor
