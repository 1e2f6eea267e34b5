// Spin operators as dense Kronecker products, written apart from the library: the oracle of operator tests.
#pragma once

#include "support/dense_reference.h"

#include <cmath>
#include <string>
#include <vector>

namespace kor_test {

/// I+ of one spin of quantum number two_i / 2, states with m descending.
inline Dense spin_plus(int two_i) {
    const int d = two_i + 1;
    Dense plus = Dense::Zero(d, d);
    for (int k = 1; k < d; ++k) {
        const double i = two_i / 2.0;
        const double m = i - k; // of the state that is raised
        plus(k - 1, k) = std::sqrt(i * (i + 1.0) - m * (m + 1.0));
    }
    return plus;
}

/// I+, I-, Ix, Iy or Iz ('+', '-', 'x', 'y', 'z') or the identity ('e') of one spin.
inline Dense single_spin(int two_i, char component) {
    const Dense plus = spin_plus(two_i);
    const Dense minus = plus.adjoint();
    switch (component) {
    case '+':
        return plus;
    case '-':
        return minus;
    case 'x':
        return 0.5 * (plus + minus);
    case 'y':
        return std::complex<double>(0.0, -0.5) * (plus - minus);
    case 'z':
        return 0.5 * (plus * minus - minus * plus);
    default:
        return Dense::Identity(two_i + 1, two_i + 1);
    }
}

inline Dense kronecker(const Dense& a, const Dense& b) {
    Dense product(a.rows() * b.rows(), a.cols() * b.cols());
    for (Eigen::Index r = 0; r < a.rows(); ++r)
        for (Eigen::Index c = 0; c < a.cols(); ++c)
            product.block(r * b.rows(), c * b.cols(), b.rows(), b.cols()) = a(r, c) * b;
    return product;
}

/// Product over all spins: component s of `components` on spin s + 1. two_i holds spins 1, 2, ... from 0.
inline Dense product_of(const std::vector<int>& two_i, const std::string& components) {
    Dense product = Dense::Identity(1, 1);
    for (std::size_t s = 0; s < two_i.size(); ++s)
        product = kronecker(product, single_spin(two_i[s], components[s]));
    return product;
}

/// The operator of one spin (from 1) in the whole space.
inline Dense on_spin(const std::vector<int>& two_i, int spin, char component) {
    std::string components(two_i.size(), 'e');
    components[static_cast<std::size_t>(spin - 1)] = component;
    return product_of(two_i, components);
}

/// Sum of the operator over all spins; `unit` scales each to unit Frobenius norm.
inline Dense total(const std::vector<int>& two_i, char component, bool unit = false) {
    Dense sum = Dense::Zero(product_of(two_i, std::string(two_i.size(), 'e')).rows(),
                            product_of(two_i, std::string(two_i.size(), 'e')).rows());
    for (int s = 1; s <= static_cast<int>(two_i.size()); ++s) {
        const Dense one = on_spin(two_i, s, component);
        sum += unit && one.norm() > 0.0 ? Dense(one / one.norm()) : one;
    }
    return sum;
}

} // namespace kor_test
