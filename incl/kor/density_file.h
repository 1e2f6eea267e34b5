// Floor 3.7 - simulator: the density-matrix files "dm.bin" and "store"
//
// The states of a run live on disk, one matrix per voxel (z fastest) or evolution row: "dm.bin" holds
// them after the last completed sector, "store" receives them during a sector. Both are binary data
// files in the working directory: header (0, n, number of matrices), then the matrices, 16 n^2 bytes
// each. A sector reads "dm.bin" and writes "store" matrix by matrix, so memory does not grow with the
// grid, and a sector that fails leaves "dm.bin" as it was.
//
// Failures print their message here: "Rotate3D: ..." or "Rotate2D: ..." on standard output, and the
// system's text, where it has one, behind the file's name on standard error.
#pragma once

#include "matrixmathlib.h"

#include <cstdio>

namespace kor {

/// How a family of sequences words its failures.
struct DensityReport {
    const char* prefix; // begins every message: "Rotate3D", "Rotate2D"
    bool waits;         // waits for Enter behind those messages that a person must see
};

/// The two files of a sector in progress: "dm.bin" behind its header, "store" behind its own.
struct DensityStream {
    std::FILE* in;
    std::FILE* out;
    double* states = nullptr; // the matrices in work
};

/// Reads up to `most` whole n x n matrices as they stand in the file, 2 n^2 doubles each; returns their
/// number.
int read_density_states(std::FILE* in, int n, int most, double* states);

/// Makes "dm.bin" with `count` copies of the n x n matrix.
bool create_density_file(const DensityReport& report, int n, long long count, const CMatrix& matrix);
/// Lets a "dm.bin" of n x n matrices that holds another number of them hold `count` copies of its first
/// one. Nothing is done, and nothing is wrong, when there is no such file: open_density_stream says what
/// is the matter with any other. `matrix` is the work matrix and receives the first one. False when the
/// resizing failed.
bool resize_density_file(const DensityReport& report, int n, int count, CMatrix& matrix);
/// Opens "dm.bin", whose header must be (0, n, count), and makes "store" with the same header. On
/// failure both are closed.
bool open_density_stream(const DensityReport& report, int n, int count, DensityStream& stream);
/// Reads the next matrices of "dm.bin" as they stand there, `most` of them or as many as room is for (at
/// least one). Returns their number: fewer than asked for at the end of a damaged file, with a message when
/// there is none at all. They stand in stream.states, row by row, real and imaginary parts in turn, until the
/// next call.
int read_next_densities(const DensityReport& report, DensityStream& stream, int n, long long most);
/// Writes the first `count` matrices of stream.states to "store".
bool write_next_densities(const DensityReport& report, const DensityStream& stream, int n, int count);
/// Closes both files. False when "store" did not reach the disk whole.
bool close_density_stream(const DensityReport& report, const DensityStream& stream);
/// Closes both files of a sector that failed.
void abandon_density_stream(const DensityStream& stream);
/// "store" becomes "dm.bin": by renaming it, or by copying its bytes and deleting it.
bool rename_store();
bool copy_store(const DensityReport& report);

/// Rows 1..fn of n elements; 1, or 0 for a missing file, n or fn outside 1..257, or a short read.
int read_density_matrix(std::FILE* in, int n, int fn, CMatrix& mat);
/// Copies a file in 8192-byte chunks; the target is replaced when the copy is whole. A file copied onto
/// itself, by whatever name, stays as it is. 1 on success, else 0. Prints nothing; `culprit` (may be null)
/// receives the path at which it failed, errno the reason or 0 when the source is shorter than it was at
/// first.
int copy_density_file(const char* src, const char* dst, const char** culprit = nullptr);
/// What was the matter with a copy that failed at `culprit`, from errno, on standard error.
void explain_failed_copy(const char* culprit);

} // namespace kor
