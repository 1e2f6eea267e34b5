// Series for exp(-iA) of a step, by a bound of |A|.
#pragma once

#include "fast_jobs.h"

namespace kor {

/// The cheapest polynomials for cos A and sin A, |A| <= bound, and the halvings of A that they need. The
/// error is below 1e-16 before the halvings are undone.
StepPlan plan_step(double bound);

/// Largest bound that chebyshev_series serves.
constexpr double kMaxChebyshevRadius = 64.0;

/// A Chebyshev series with radius >= bound, at most a fifth larger, error below 1e-16. The record lives on.
/// Abramowitz & Stegun, 9.1.44-45: exp(-i r x) = J_0(r) + 2 sum of (-i)^k J_k(r) T_k(x).
/// Up to a radius of 1 the record also holds the same polynomial as a sum of powers a_k (-iA)^k, a_0 = 1
/// within rounding, by the ratios a_(k+1) / a_k, k = 0..degree - 1.
const ChebyshevSeries* chebyshev_series(double bound);

} // namespace kor
