// Floor 3.7 - simulator: the density-matrix files "dm.bin" and "store"
#pragma once

#include "matrixmathlib.h"

#include <cstdio>

namespace kor {

/// Rows 1..fn of n elements; 1, or 0 for a missing file, n or fn outside 1..257, or a short read.
int read_density_matrix(std::FILE* in, int n, int fn, CMatrix& mat);
/// Copies a file in 8192-byte chunks; 1 on success, else 0. Prints nothing.
int copy_density_file(const char* src, const char* dst);

} // namespace kor
