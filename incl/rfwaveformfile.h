// Floor 2.3 - materials: pulse waveform files (headerless planar blocks of doubles)
#pragma once

namespace kor {

/// Spatial layout: blocks xb, yb, gx, gy, gz of *ap doubles each.
void BinArrayOut(const int* ap, const double* xb, const double* yb, const double* gx, const double* gy,
                 const double* gz, const char* name);
/// 2D layout: blocks xb, yb of ap doubles each.
void BinArrayOut2D(int ap, const double* xb, const double* yb, const char* name);
/// Reads the 2D layout; 1, or 0 (ap_local outside 1..8192, short read, open failure with perror).
int koropt_load_waveform_xy(const char* path, int ap_local, double* bx, double* by);
/// Reads `blocks` blocks of N doubles one after another into arrays[0..blocks-1].
/// 1, or 0 for a missing or empty name, a short read or an open failure (perror(name)).
int read_waveform_blocks(const char* name, int N, int blocks, double* const* arrays);

} // namespace kor
