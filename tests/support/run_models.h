// What the tests of files and runs share: density-matrix files read byte by byte, independent operators by
// Kronecker products, and models written straight into the runtime state.
#pragma once

#include "matrixmathlib.h"

#include <Eigen/Dense>
#include <cstddef>
#include <string>
#include <vector>

namespace kor_test {

/// What perror(tag) prints for an errno value.
std::string system_line(const std::string& tag, int error);

using Matrix = Eigen::MatrixXcd;

/// A density-matrix file, read without any of the code under test.
struct DensityFile {
    int type = -1, n = -1, count = -1;
    std::vector<Matrix> matrices;
    std::size_t trailing_bytes = 0;
};
DensityFile read_density_file(const std::string& name);
void write_density_file(const std::string& name, int n, const std::vector<Matrix>& matrices);

/// Independent operators by Kronecker products, spin 1 slowest; twice the quantum number per spin.
struct DenseSystem {
    int n = 0;
    std::vector<Matrix> ix, iy, iz; // per spin, from 0
    Matrix fx, fy, fz;              // plain sums
    Matrix h0;                      // offsets and couplings, rad/s
    Matrix equilibrium;
};
/// coupling_hz[pair] in the order (1,2), (1,3), ..., (2,3), ...; weak keeps Iz Iz only.
DenseSystem dense_system(const std::vector<int>& twice_spin, const std::vector<double>& intensity,
                         const std::vector<double>& offset_hz, const std::vector<double>& coupling_hz,
                         bool weak);
/// exp(-i H dt) of a Hermitian H, through its eigenvectors.
Matrix step_propagator(const Matrix& H, double dt);
/// Infinity when anything in it is not a number, or for matrices of different sizes.
double largest_difference(const Matrix& a, const Matrix& b);

/// The leading n x n block of a CMatrix, and a CMatrix from a dense matrix.
Matrix dense(int n, const kor::CMatrix& matrix);
void set_matrix(const Matrix& from, kor::CMatrix& to);
/// Writes operators and equilibrium of a system straight into the runtime state.
void load_operators(const DenseSystem& system);

/// Forgets every model: the runtime state as at process start, quiet mode off.
void forget_model();
/// Writes the definition of a spin system into the runtime state (systemset = 1); no operators yet.
void define_spins(const std::vector<int>& twice_spin, const std::vector<double>& intensity,
                  const std::vector<double>& offset_hz, const std::vector<double>& coupling_hz, bool weak);

/// Makes one spin 1/2 in the state Iz the current model, with `samples` empty samples of h seconds on one
/// voxel at the origin, ready for propagation.
DenseSystem prepare_one_spin(int samples, double h);

struct Sector {
    int type = 1;
    int samples = 1;
    int rows = 1;
    double duration_s = 1e-3;
    double offset_hz = 0.0;
    std::string file;
    std::string remark;
};
/// Writes a sequence of the family into the runtime state (sectorset = 1).
void define_sequence(int family, const std::vector<Sector>& sectors, const std::string& result_file);
/// Writes the grid into the runtime state (offsetset = 1).
void define_grid(int ndx, int ndy, int ndz, double x0, double dx, double y0, double dy, double z0, double dz);

} // namespace kor_test
