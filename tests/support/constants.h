// Numbers that the tests' formulas need, apart from the program's own.
#pragma once

#include <limits>

namespace kor_test {

inline constexpr double PI = 3.141592653589793;
inline constexpr double TWO_PI = 2.0 * PI;

inline constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
inline constexpr double POSITIVE_INFINITY = std::numeric_limits<double>::infinity();

/// Fills an output array beforehand, to see which elements were written.
inline constexpr double UNTOUCHED = -77.5;

} // namespace kor_test
