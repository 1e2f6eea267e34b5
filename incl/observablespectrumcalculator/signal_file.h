// Floor 3.10 - simulator: the receiver signal file
//
// A binary data file of type 1: num1 = points of a signal, num2 = number of signals, then per signal, per
// point, a pair of doubles (real, imaginary). The signals come from "dm.bin", one per density matrix, or
// from their sum. Points are counted from 0, times in seconds, offsets in Hz.
#pragma once

#include "spinoperatorlib.h"

#include <cstdio>

namespace kor {

/// The signal file of the interactive routes, in the working directory.
inline constexpr char KOR_SIGNAL_FILE[] = "korsign.bin";

/// Signals of every matrix of "dm.bin" into output_filename ("korsign.bin" when null or empty): free
/// evolution under Istat + 2 pi receiver_offset_hz Iztot (rad/s), <Ixtot> and <Iytot> sampled at
/// k acquisition_time_s / signal_points, non-finite samples written as 0.0. densmat receives each matrix
/// in turn; it must be none of the other matrices. A single matrix is listed unless the quiet mode is on
/// (per-spin expectations by ket and Ilist, line lists).
/// Returns the acquisition time on success, and also when "dm.bin" ends early (a message, and a short
/// file); 0.0 when a parameter is out of range, "dm.bin" is missing or does not hold n x n matrices,
/// memory runs out, or the output cannot be written (each with its message, parameters without).
double SeparateSpectra_GenerateSignalWithParams(const int* n, int signal_points, double acquisition_time_s,
                                                double receiver_offset_hz, const char* output_filename,
                                                CMatrix& densmat, const CMatrix& Istat, const CMatrix& Ixtot,
                                                const CMatrix& Iytot, const CMatrix& Iztot,
                                                const SpinKet& ket, const SpinIList& Ilist);

/// The sum of the `count` matrices that follow in `in`, not divided by their number. 1, or 0 with a
/// message when the file ends early.
int sum_density_matrices(std::FILE* in, int n, int count, CMatrix& sum);
/// One signal of the density matrix by its line lists under `hamiltonian` (the sign of
/// make_receiver_hamiltonian) into "korsign.bin": samples at k acquisition_time_s / (points - 1), real part
/// from Ixtot, imaginary part from Iytot. n at most KOR_MAX_EIGEN_STATES, points at least 1. 1, or 0 with a
/// message when memory runs out or the file cannot be written.
int write_line_list_signal_file(int n, int points, double acquisition_time_s, const CMatrix& densmat,
                                const CMatrix& hamiltonian, const CMatrix& Ixtot, const CMatrix& Iytot);

/// hamiltonian = -(Istat + 2 pi receiver_offset_hz Iztot), rad/s: the sign that sampling with
/// build_direct_observable_signal and line lists with DoSpectrum expect.
void make_receiver_hamiltonian(int n, const CMatrix& Istat, double receiver_offset_hz, const CMatrix& Iztot,
                               CMatrix& hamiltonian);
/// Opens "dm.bin" behind its header; *count receives the number of matrices. Null, with a message, when
/// it is missing or does not hold n x n matrices.
std::FILE* open_density_matrices(int n, int* count);
/// Writes `points` pairs (re[k], im[k]), non-finite values as 0.0. 1, or 0 when a write fails.
int write_signal_samples(std::FILE* out, int points, const double* re, const double* im);

} // namespace kor
