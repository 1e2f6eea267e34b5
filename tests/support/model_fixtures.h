// Spin systems in the runtime state and data files made by hand, for tests.
#pragma once

#include <complex>
#include <string>
#include <vector>

namespace kor_test {

/// n x n elements, row by row.
using DenseMatrix = std::vector<std::complex<double>>;

/// Spins 1/2 of intensity 1 with these offsets in Hz, uncoupled or with the coupling j_hz between spins 1 and
/// 2, weak coupling, as the current spin system; operators built without listings. No sequence, one voxel.
void define_spins(const std::vector<double>& offsets_hz, double j_hz = 0.0);
/// a Ix + b Iy + c Iz of one spin 1/2, written out.
DenseMatrix bloch_matrix(double a, double b, double c);

/// A density-matrix file: header (type, n, points) and the matrices.
std::string density_file(int type, int n, int points, const std::vector<DenseMatrix>& matrices);
/// The reals behind the 12-byte header of a binary data file.
std::vector<double> reals_behind_header(const std::string& bytes);

} // namespace kor_test
