// How many multiply-adds of real numbers a workload takes, by formulas that name what is counted. A product
// or a sum alone is not counted, nor is whatever prepares or joins the parts.
#pragma once

#include <vector>

namespace kor_benchmark {

/// The sector that g_runtime holds, on columns. A term of a step's series is a product of the real exponent
/// by the real and imaginary parts of n columns: 2 n multiply-adds per nonzero element of the exponent. A
/// mirrored pulse counts with its first half and 4 n^3 for each product of matrices that makes the whole of
/// it.
double column_multiply_adds();

/// The sector that g_runtime holds, on lanes, by blocks of `sizes` states: 4 n^3 per step for the product of
/// the steps before by the step's exponential. The exponentials, which several ways form, are not counted.
double lane_multiply_adds(const std::vector<int>& sizes);

/// A receiver signal of spins 1/2: 4 per point and line, the lines being the pairs of levels of neighbouring
/// total m. The levels and amplitudes are not counted.
double signal_multiply_adds(int spins, int points);

} // namespace kor_benchmark
