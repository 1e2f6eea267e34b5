// Slow independent algebra: dense matrices by Eigen, spin operators by Kronecker products of closed-form
// one-spin matrices, exponentials by eigen-decomposition. Shares no code with the simulator.
#pragma once

#include "matrixmathlib.h"

#include <Eigen/Dense>

#include <complex>
#include <vector>

namespace kor_test {

using Complex = std::complex<double>;
using Dense = Eigen::MatrixXcd;

enum class Axis { x, y, z };

/// The leading n x n block of m, 0-based.
Dense to_dense(int n, const kor::CMatrix& m);
/// Writes d into the leading block of m and nothing else.
void from_dense(const Dense& d, kor::CMatrix& m);

/// Largest modulus of an element of a - b; infinity when anything in it is not a number.
double distance(const Dense& a, const Dense& b);
double distance(const kor::CMatrix& a, const Dense& b);
/// Largest modulus of an element.
double largest(const Dense& a);

/// exp(i t H) of a Hermitian H.
Dense exp_i(const Dense& H, double t);

/// Operator of one spin alone, states in the order m = I, I-1, ..., -I.
Dense one_spin_operator(int twice_spin, Axis axis);
/// Operator of spin `spin` (from 1) of a system; spin 1 is the left factor, so it varies slowest.
Dense spin_operator(const std::vector<int>& twice_spins, int spin, Axis axis);
/// Sum over all spins.
Dense total_operator(const std::vector<int>& twice_spins, Axis axis);

/// One waveform sample at one place: field along x and y and offset, rad/s.
struct DenseSample {
    double bx, by, offset;
};

/// Ordered product over the samples of exp(-i (H0 + offset Fz + bx Fx + by Fy) dt).
Dense dense_propagator(const Dense& H0, const Dense& Fx, const Dense& Fy, const Dense& Fz,
                       const std::vector<DenseSample>& samples, double dt);

} // namespace kor_test
