// Floor 3.14 - simulator: expectation profiles and single-voxel signals
//
// Both read a density-matrix file of the current model: header (0, n, points), then the matrices in voxel
// order, z fastest. Failures print one message on standard error; success prints a "Wrote ..." line on
// standard output. Paths are opened as given, relative ones from the working directory.
#pragma once

#include "matrixmathlib.h"

#include <cstdio>

namespace kor {

/// Expectation value of a product-operator expression in every voxel, as a text file: the line
/// "# index,x_cm,y_cm,z_cm,expectation_re,expectation_im" and one line per voxel, numbers with 17 digits.
/// The number of voxels is the file's; coordinates (cm) come from the model's grid.
/// Returns 1, or 0 without a spin system, for an expression that does not parse, for a density file that
/// does not fit the model or is cut short (what was written stays), or when the output cannot be written.
int KORWriteExpectationProfile(const char* density_path, const char* operator_expression,
                               const char* output_path);
/// Receiver signal that the model's first acquisition sector records from voxel point_index (from 1), as a
/// signal file. Needs a power of two of at least 2 samples and a duration above 0 there.
/// Writes the one matrix to "dm.bin" of the working directory and deletes it, whatever that file held before;
/// only where it is density_path itself, it stays. Istat becomes Izee + Icoup. Returns 1, or 0 with a
/// message.
int KORWriteVoxelSignal(const char* density_path, int point_index, const char* output_path);

/// text: the line "# index    expectation_re    expectation_im" and a line per matrix with its number (from
/// 1), real and imaginary part; real_parts: one 64-bit double per matrix.
enum class ExpectationSeriesFormat { text, real_parts };
/// Expectation values of op (n x n) in the next `count` matrices of `density`, 1 <= n <= 256, to `out`. The
/// caller closes both files. Returns 1, or 0 with a message for a short read or a failed write.
int write_expectation_series(std::FILE* density, int n, int count, const CMatrix& op, std::FILE* out,
                             ExpectationSeriesFormat format);

} // namespace kor
