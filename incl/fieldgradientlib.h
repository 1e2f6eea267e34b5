// Floor 2.6 - materials: gradient waveforms
//
// A gradient waveform is one double per time sample, indexed from 0, in rad/s per cm. With N samples of
// step h: T = N h, t_k = k h, w = 2 pi n, phase_k = w t_k / T. The two spirals are the gradient pair of
// a two-dimensional excitation: their k-space path is a spiral of n turns that runs inwards.
#pragma once

#include <cstdint>

namespace kor {

enum fieldgrad_status {
    FIELDGRAD_OK = 0,          // waveform written
    FIELDGRAD_ERR_NULLPTR = 1, // a required pointer is missing
    FIELDGRAD_ERR_BADLEN = 2,  // sample count 0
    FIELDGRAD_ERR_BADARG = 3,  // unknown waveform type, or a time step or duration that is not positive
    FIELDGRAD_ERR_IO = 4       // the user's input could not be read
};
/// Status of the last waveform operation.
extern fieldgrad_status fieldgrad_last_status;

/// Whether N is nonzero, h above 0 and out present. Changes no status.
bool fieldgrad_valid_inputs(std::uint64_t N, double h, const double* out);

/// Writes out[0..N-1]: type 1 constant (G, Hz/cm), 2 cosine spiral, 3 sine spiral (amplitude A, turns n);
/// h in s. Any other type is FIELDGRAD_ERR_BADARG; a missing out and N = 0 are told before the type.
fieldgrad_status CalcGrad_compute(std::uint64_t N, double h, double* out, int type, double A, double n,
                                  double G);
/// out[k] = 2 pi G. G in Hz/cm; h is not used. FIELDGRAD_ERR_NULLPTR, FIELDGRAD_ERR_BADLEN.
fieldgrad_status gradproc1_compute(std::uint64_t N, double h, double* out, double G);
/// out[k] = -A (cos(phase_k) + w (1 - t_k / T) sin(phase_k)) / T. FIELDGRAD_ERR_NULLPTR for a missing out;
/// FIELDGRAD_ERR_BADARG for N = 0, or h or T not above 0.
fieldgrad_status gradproc2_compute(std::uint64_t N, double h, double* out, double A, double n);
/// out[k] = A (w (1 - t_k / T) cos(phase_k) - sin(phase_k)) / T. Errors as gradproc2_compute.
fieldgrad_status gradproc3_compute(std::uint64_t N, double h, double* out, double A, double n);

} // namespace kor
