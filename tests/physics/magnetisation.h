// The magnetisation of a laboratory's spins as a vector.
#pragma once

#include "support/laboratory.h"

#include <gtest/gtest.h>

namespace kor_test {

using Vector = Eigen::Vector3d;

/// The coefficients of the total Ix, Iy and Iz in a state.
inline Vector magnetisation(Laboratory& lab, const Dense& rho) {
    return {coefficient(lab.total(Axis::x), rho), coefficient(lab.total(Axis::y), rho),
            coefficient(lab.total(Axis::z), rho)};
}

/// Fails the test when the difference is longer than `tolerance`.
inline void expect_vector(const Vector& actual, const Vector& expected, double tolerance) {
    EXPECT_LE((actual - expected).norm(), tolerance) << actual.transpose() << " for " << expected.transpose();
}

} // namespace kor_test
