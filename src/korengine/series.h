// Series: exp(-iA) of a step, by a bound of |A|, and Chebyshev interpolation.
#pragma once

#include "fast_jobs.h"

#include <vector>

namespace kor {

/// The cheapest polynomials for cos A and sin A, |A| <= bound, and the halvings of A that they need. The
/// error is below 1e-16 before the halvings are undone.
StepPlan plan_step(double bound);

/// Terms after which the Chebyshev coefficients stay below 1e-17 for a function on -1..1 that is entire,
/// bounded by 1 on the real axis, and of frequencies up to `reach` in size: coefficient k is at most
/// 2 (z exp(r) / (1 + r))^k with z = reach / k, r = sqrt(1 - z^2). Out of reach (2^24) beyond 1e6.
/// Trefethen, Approximation Theory and Approximation Practice, theorem 8.1 with the best ellipse.
int chebyshev_terms(double reach);

/// Angle of node k of `count` Chebyshev points of the first kind, k from 0; the node is its cosine.
double chebyshev_angle(int k, int count);

/// The count x count rows that turn the values at these nodes into the coefficients:
/// coefficient k = (2 - [k = 0]) / count times the sum over the nodes of value cos(k angle of the node).
std::vector<double> chebyshev_transform(int count);

/// Largest bound that chebyshev_series serves.
constexpr double kMaxChebyshevRadius = 64.0;

/// A Chebyshev series with radius >= bound, at most a fifth larger, error below 1e-16. The record lives on.
/// Abramowitz & Stegun, 9.1.44-45: exp(-i r x) = J_0(r) + 2 sum of (-i)^k J_k(r) T_k(x).
/// Up to a radius of 1 the record also holds the same polynomial as a sum of powers a_k (-iA)^k, a_0 = 1
/// within rounding, by the ratios a_(k+1) / a_k, k = 0..degree - 1.
const ChebyshevSeries* chebyshev_series(double bound);

} // namespace kor
