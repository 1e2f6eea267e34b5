#include "support/dense_reference.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kor_test {

Dense to_dense(int n, const kor::CMatrix& m) {
    Dense d(n, n);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            d(i, j) = Complex(m[i + 1][j + 1][1], m[i + 1][j + 1][2]);
        }
    }
    return d;
}

void from_dense(const Dense& d, kor::CMatrix& m) {
    for (int i = 0; i < d.rows(); ++i) {
        for (int j = 0; j < d.cols(); ++j) {
            m[i + 1][j + 1][1] = d(i, j).real();
            m[i + 1][j + 1][2] = d(i, j).imag();
        }
    }
}

double distance(const Dense& a, const Dense& b) {
    if (a.rows() != b.rows() || a.cols() != b.cols()) {
        return std::numeric_limits<double>::infinity();
    }
    double result = 0.0;
    for (int i = 0; i < a.rows(); ++i) {
        for (int j = 0; j < a.cols(); ++j) {
            const double size = std::abs(a(i, j) - b(i, j));
            if (std::isnan(size)) {
                return std::numeric_limits<double>::infinity();
            }
            result = std::max(result, size);
        }
    }
    return result;
}

double distance(const kor::CMatrix& a, const Dense& b) {
    return distance(to_dense(static_cast<int>(b.rows()), a), b);
}

double largest(const Dense& a) {
    return distance(a, Dense::Zero(a.rows(), a.cols()));
}

Dense exp_i(const Dense& H, double t) {
    const Eigen::SelfAdjointEigenSolver<Dense> solver(H);
    Eigen::VectorXcd phases(H.rows());
    for (int k = 0; k < H.rows(); ++k) {
        phases(k) = std::polar(1.0, solver.eigenvalues()(k) * t);
    }
    return solver.eigenvectors() * phases.asDiagonal() * solver.eigenvectors().adjoint();
}

Dense one_spin_operator(int twice_spin, Axis axis) {
    const int n = twice_spin + 1;
    const double I = twice_spin / 2.0;
    Dense op = Dense::Zero(n, n);
    for (int k = 0; k < n; ++k) {
        const double m = I - k;
        if (axis == Axis::z) {
            op(k, k) = m;
        } else if (k + 1 < n) {
            // <m| Ix |m-1> = sqrt(I(I+1) - m(m-1)) / 2, <m| Iy |m-1> = -i times that
            const double element = 0.5 * std::sqrt(I * (I + 1.0) - m * (m - 1.0));
            op(k, k + 1) = axis == Axis::x ? Complex(element, 0.0) : Complex(0.0, -element);
            op(k + 1, k) = std::conj(op(k, k + 1));
        }
    }
    return op;
}

namespace {

Dense kronecker(const Dense& a, const Dense& b) {
    Dense product(a.rows() * b.rows(), a.cols() * b.cols());
    for (int i = 0; i < a.rows(); ++i) {
        for (int j = 0; j < a.cols(); ++j) {
            product.block(i * b.rows(), j * b.cols(), b.rows(), b.cols()) = a(i, j) * b;
        }
    }
    return product;
}

} // namespace

Dense spin_operator(const std::vector<int>& twice_spins, int spin, Axis axis) {
    Dense op = Dense::Identity(1, 1);
    for (int s = 1; s <= static_cast<int>(twice_spins.size()); ++s) {
        const int twice_spin = twice_spins[static_cast<std::size_t>(s - 1)];
        const Dense unit = Dense::Identity(twice_spin + 1, twice_spin + 1);
        op = kronecker(op, s == spin ? one_spin_operator(twice_spin, axis) : unit);
    }
    return op;
}

Dense total_operator(const std::vector<int>& twice_spins, Axis axis) {
    Dense sum = spin_operator(twice_spins, 1, axis);
    for (int s = 2; s <= static_cast<int>(twice_spins.size()); ++s) {
        sum += spin_operator(twice_spins, s, axis);
    }
    return sum;
}

Dense dense_propagator(const Dense& H0, const Dense& Fx, const Dense& Fy, const Dense& Fz,
                       const std::vector<DenseSample>& samples, double dt) {
    Dense r = Dense::Identity(H0.rows(), H0.cols());
    for (const DenseSample& sample : samples) {
        r = r * exp_i(H0 + sample.offset * Fz + sample.bx * Fx + sample.by * Fy, -dt);
    }
    return r;
}

} // namespace kor_test
