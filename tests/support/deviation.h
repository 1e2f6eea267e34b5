// Largest deviations. std::max passes over what is not a number; these do not.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

namespace kor_test {

/// The larger of two deviations; infinity from the first one on that is not a number.
inline double larger_deviation(double worst, double deviation) {
    return std::isnan(deviation) ? HUGE_VAL : std::max(worst, deviation);
}

/// Largest modulus of a difference; infinity for series of different lengths.
inline double largest_gap(const std::vector<std::complex<double>>& a,
                          const std::vector<std::complex<double>>& b) {
    double worst = a.size() == b.size() ? 0.0 : HUGE_VAL;
    for (std::size_t k = 0; k < std::min(a.size(), b.size()); ++k) {
        worst = larger_deviation(worst, std::abs(a[k] - b[k]));
    }
    return worst;
}

} // namespace kor_test
