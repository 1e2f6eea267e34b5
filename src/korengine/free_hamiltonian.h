// What sampling a free evolution begins with, for one state and for many.
#pragma once

#include "matrixmathlib.h"

#include <vector>

namespace kor {

/// h = the real symmetric H, n x n. False when H is of another kind or not finite, or |H dt| is beyond what
/// the reference's exponential halves.
bool read_free_hamiltonian(int n, const CMatrix& H, double dt, std::vector<double>& h);

bool all_finite(int n, const CMatrix& m);

/// Turns by `first` times angle[l], one angle more each: row l of (cosine, sine), lines x count. The first
/// turn and powers of two come from the angle itself, the rest from one product of two earlier turns each
/// doubling.
void fill_turns(const double* angle, double first, int lines, int count, double* cosine, double* sine);

} // namespace kor
