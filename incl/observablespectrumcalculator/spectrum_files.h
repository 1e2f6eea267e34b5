// Floor 2.21 - materials: spectrum files for viewing: CSV tables, PV-WAVE/IDL data, plot script
//
// All read the receiver signal file "korsign.bin" of the working directory: header (type, num1 = N points
// of a signal, num2 = number of signals), then pairs of doubles (real, imaginary). Times in seconds,
// frequencies in Hz; signals, points and bins are counted from 0.
#pragma once

namespace kor {

/// Time-domain and frequency-domain tables of every signal:
/// - td_name, columns t_s,f2_index,re,im,mag: t = k dt, dt = acq_time / (N - 1), 0 for one point;
/// - fd_name, columns f1_hz,f2_hz,re,im,re_ph,im_ph,re_ph1,im_ph1,mag: f1 = (j - N / 2) / (N dt), the bin
///   (j + N / 2) mod N of the direct transform (integer halves: zero frequency meets f1 = 0 for even N;
///   for odd N the bins stand one row behind the axis); no phase correction is applied, so the three pairs
///   are the same (columns reserved for phased versions); f2 = the signal's number when there are two or
///   more.
/// Returns 1; 0 with a message when a file cannot be opened or written, memory runs out or the signal
/// file is short, and without one when it holds no points or no signals.
int write_spectrum_csv_files(const char* td_name, const char* fd_name, double acq_time);

/// X[m] = sum over k of x[k] exp(-2 pi i m k / N), m = 0..N-1: no scaling, no weighting. Any N >= 1, cost
/// N squared; the factors come from one table of N, exact in the eighths of a turn. re and im hold x,
/// out_re and out_im receive X; none may be another. Returns 1, or 0 when memory runs out.
int direct_transform(int N, const double* re, const double* im, double* out_re, double* out_im);

/// The raw signals for PV-WAVE/IDL: a header of 1024 bytes (256 little-endian 32-bit integers, N the
/// fifth, the number of signals the sixth), then the doubles of the signal file, to its end when it is
/// short. Returns 1, or 0 with a message when a file cannot be opened or written.
int write_pv_wave_file(const char* name);

/// Script that plots real part and magnitude of a frequency-domain table against frequency, right to
/// left; plot_title may be null ("KOR Spectrum"). Returns 1, or 0 with the system's error text.
int WriteGnuplotSpectrumScript(const char* gp_name, const char* csv_name, const char* plot_title);

} // namespace kor
