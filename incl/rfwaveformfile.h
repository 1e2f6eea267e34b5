// Floor 2.3 - materials: pulse waveform files (headerless planar blocks of doubles)
//
// Little-endian doubles, one array behind the other, N values each: xb, yb (2D layout, 16 N bytes) or
// xb, yb, gx, gy, gz (spatial layout, 40 N bytes). xb and yb in rad/s, gradients in rad/s per cm, all
// indexed from 0. The file does not record N; what follows the blocks is not looked at.
#pragma once

namespace kor {

/// Writes the spatial layout, *ap values per block (none when *ap is below 1), and replaces the file when all
/// of it is written; a failure leaves the older file. An open failure prints perror(name); a short write
/// prints " >>> WRITE TO BINARY FILE ERROR (xb) <<< " (or yb, gx, gy, gz) and writing goes on. Returns 1 when
/// every block was written and the file closed, else 0.
int BinArrayOut(const int* ap, const double* xb, const double* yb, const double* gx, const double* gy,
                const double* gz, const char* name);
/// The same for the 2D layout, ap values per block.
int BinArrayOut2D(int ap, const double* xb, const double* yb, const char* name);

/// The first sample 0..N-1 at which one of the `blocks` arrays (each of at least N) is not finite, or -1.
int first_bad_sample(const double* const* arrays, int blocks, int N);

/// Reads the 2D layout. 1; 0 for a missing pointer, an empty name, ap_local outside 1..8192, a file that is
/// too short or holds a sample that is not finite (with a message), or a file that cannot be opened or read
/// (with perror(path)).
int koropt_load_waveform_xy(const char* path, int ap_local, double* bx, double* by);

/// Reads `blocks` blocks of N doubles, one after another, into arrays[0..blocks-1] (each of at least N).
/// 1; 0 for a missing or empty name, N outside 0..8192, a short file (with a message on standard error), or
/// one that cannot be opened or read (with perror(name)). After a 0 the arrays may hold part of the file.
int read_waveform_blocks(const char* name, int N, int blocks, double* const* arrays);

} // namespace kor
