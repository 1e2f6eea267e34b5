// Floor 4.24 - workshop: the waveform file of the sector being composed
//
// The waveform is g_runtime.xb, yb (and gx, gy, gz), samples 0..ap-1.
#pragma once

#include <cstddef>

namespace kor {

/// Zeroes the five waveform arrays: what a pulse or gradient dialogue leaves undefined is no field, not the
/// sector composed before.
void clear_sector_waveform();
/// What came of reading a pulse from disk.
enum class PulseFromDisk {
    defined,     // by one file at least
    none,        // neither file gave a sample
    input_ended, // for good
};
/// Reads the *ap samples of xb and yb (rad/s, 0-based) from two text files chosen at the console and
/// multiplies both by a factor that is asked for. Both are cleared first; what a short file held is used.
PulseFromDisk ReadBxByPulse(const int* ap, double* xb, double* yb);

/// A name with a separator as it is, a bare name in the default RF output folder. 1, or 0 when the folder is
/// unknown or the path does not fit.
int ps_resolve_default_output_path(char* out, std::size_t cap, const char* name);
/// Asks where sector k's waveform goes, writes it in the layout of its family and keeps the path in fnames[k]
/// (empty after a failure, which is told; the loaded model file is never replaced). Other sectors that read
/// the file just written are told. An end of input that came before its questions is forgotten. 1, also when
/// the input ended at a terminal, where a person goes on: that is a failure like any other. 0 when it has
/// ended for good: nothing is written then, and fnames[k] stays.
int ps_write_spatial_sector_waveform_file(int k);
int ps_write_2d_sector_waveform_file(int k);

} // namespace kor
