// Floor 2.24 - materials: choosing a gradient waveform and its parameters at the console
//
// count points to the number of samples, step to the time between them (s), out to at least *count doubles
// (0-based; rad/s per cm afterwards). The result is left in fieldgrad_last_status: FIELDGRAD_ERR_NULLPTR for
// a missing pointer, FIELDGRAD_ERR_IO for an answer that cannot be read (it is dropped with its line), else
// that of the computation in fieldgradientlib.h. Errors are not printed: the caller decides.
#pragma once

namespace kor {

/// Menu of the three waveforms; another number is FIELDGRAD_ERR_BADARG.
void CalcGrad(const int* count, const double* step, double* out);
/// Constant gradient: asks for its strength, Hz/cm.
void gradproc1(const int* count, const double* step, double* out);
/// Cosine and sine spiral: ask for the amplitude A and the number of turns n.
void gradproc2(const int* count, const double* step, double* out);
void gradproc3(const int* count, const double* step, double* out);

} // namespace kor
