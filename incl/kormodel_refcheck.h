// Floor 4.9 - workshop: the built-in reference checks
//
// Rooms in src/kormodel_refcheck/: runner, comparisons, spin_cases, spatial_case, model_file_cases.
// Every check prints its deviation on standard output and goes on, so that one run lists them all; a case
// that cannot set up its files fails at once. Files are written in "kor-refcheck-work" below the working
// directory; they stay there and are written again by the next run.
#pragma once

#include "kormodel/records.h"
#include "matrixmathlib.h"

#include <cstddef>

namespace kor {

/// Runs every case, prints PASS and FAIL lines and the verdict. The definition part of the runtime state is
/// captured before the first case and restored after the last, with all of its spins and couplings; the
/// scratch files of the last run in the working directory stay as they are.
/// Returns 1 when every case passed, else 0.
int KORModel_RunReferenceChecks();

// ---- the cases, in the order of a run: true when passed, having printed the PASS line

/// One and two spins 1/2: order of the kets, spin operators and a commutator.
bool check_spin_operator_case();
/// Offsets 100 and -40 Hz, J = 12 Hz: Hamiltonians in weak and in exact coupling.
bool check_hamiltonian_case();
/// The same pair weakly coupled: lines at 34, 46, 94 and 106 Hz and nowhere else.
bool check_weak_spectrum_case();
/// A 90 degree pulse along x during a gradient, on five voxels, from model file to result file.
bool check_spatial_gradient_case();
/// A model in three files: the loader finds every part. Needs the executable in a folder named "build".
bool check_split_composition_case();
/// A repeated key and an invalid sequence type are refused for the right reason.
bool check_malformed_model_cases();

// ---- comparisons: true when the value agrees, else false and a FAIL line on standard output

/// A cell of a matrix, row and column from 1.
struct MatrixCell {
    int row;
    int column;
};

/// |a - b| <= tol; false when either is NaN.
bool approx_equal(double a, double b, double tol);
/// Prints "FAIL %-9s %s : got %.17g expected %.17g\n" (tag, label, got, expected) on failure.
bool check_scalar(const char* tag, const char* label, double got, double expected, double tol);
/// Real and imaginary part of matrix[i][j], i and j from 1, under the labels "name[i,j].re" and
/// "name[i,j].im".
bool check_cmat_entry(const char* tag, const char* name, const CMatrix& matrix, int i, int j, double re,
                      double im, double tol);
/// Every element of the dim x dim block that is not among the `count` cells of `list` is 0.
bool check_cmat_zero_except(const char* tag, const char* name, const CMatrix& matrix, int dim,
                            const MatrixCell* list, int count, double tol);

// ---- shared by the cases

/// Two spins 1/2 of intensity 1 into the runtime state, operators rebuilt without listings.
/// Offsets and J in Hz; coupling_mode 1 weak, 2 exact.
void configure_two_spin_half_system(double offset1_hz, double offset2_hz, double j_hz, int coupling_mode);
/// The records of the spatial case. pulse_path: as a sequence file of the saved set names it;
/// result_path: full path of the result file. Both are cut to 255 characters.
void BuildSpatialGradientReferenceCase(const char* pulse_path, const char* result_path,
                                       KORSpinSystemDef* spin, KORPulseSequenceDef* seq, KORRunConfig* cfg);
/// Compares the density-matrix file of the spatial case (5 voxels, 4 x 4) with the reference values.
/// center receives voxel 3 (4 x 4) and *has_center becomes true once that voxel was read.
bool CheckSpatialGradientResultFile(const char* path, CMatrix* center, bool* has_center);
/// The four lines of the centre voxel's density matrix (4 x 4) under the runtime's Istat and Ixtot have the
/// same amplitude, which is not 0.
bool CheckCenterStateSpectrumEqualAmplitudes(const CMatrix& center);
/// Writes a file in one piece; true when it was written and closed. `bytes` bytes from `data`.
bool write_refcheck_fixture(const char* path, const void* data, std::size_t bytes);
/// Writes the waveform of the spatial and the split case: one sample of 10 us, a 90 degree pulse about x
/// during a gradient of 2000 Hz/cm along x. Without it the FAIL line "could not write pulse fixture".
bool write_refcheck_pulse(const char* tag, const char* path);

} // namespace kor
