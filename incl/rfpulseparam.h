// Floor 1.4 - mathematics: pulse waveforms as Fourier modes
//
// The optimiser's parameters are the lowest modes of the centred spectrum of xb and of yb. One component
// of the vector, starting at par_base, with m = 0 .. nmodes - 1 and mode 0 at zero frequency:
//   par[par_base + 2m]     = real part of mode m
//   par[par_base + 2m + 1] = imaginary part of mode m + 1
// (the imaginary part of mode 0 of a real waveform is zero and is not stored). xb begins at 0, yb at
// npar_local / 2. All arrays are 0-based. Spectra are the unscaled forward transform of four3's fft, so the
// parameters have the waveform's unit, rad/s. Point counts must be powers of two: for others the transform
// leaves its arrays as they are, and parameters and samples are copied into each other.
#pragma once

namespace kor {

/// Modes per component: the smaller of max(ap_local / 2, 1) - 1 and npar_local / 4 (integer divisions).
int rfpulseparam_max_modes(int npar_local, int ap_local);

/// Waveforms xb_in, yb_in (ap_local samples) to par_out (npar_local values, unused ones 0).
/// Does nothing unless npar_local >= 1 and ap_local >= 2.
void RFPulseToParArray(int npar_local, int ap_local, const double* xb_in, const double* yb_in,
                       double* par_out);
/// Replaces the parameterised modes of xb_io, yb_io and keeps their higher modes.
/// Does nothing unless npar_local >= 1 and ap_local >= 2.
void ParArrayToRFPulse(int npar_local, int ap_local, const double* par_in, double* xb_io, double* yb_io);
/// The waveform that consists of the parameterised modes alone.
/// Does nothing unless npar_local >= 1 and ap_local >= 2.
void ParArrayToRFPulseLowMode(int npar_local, int ap_local, const double* par_in, double* xb_out,
                              double* yb_out);

/// The three conversions for one component. Nothing is written when work memory runs out.
void signal_to_par_centered(int npar_local, int ap_local, const double* sig_in, double* par_out,
                            int par_base);
void par_to_signal_centered_preserve(int npar_local, int ap_local, const double* par_in, int par_base,
                                     double* sig_io);
void par_to_signal_centered_zero(int npar_local, int ap_local, const double* par_in, int par_base,
                                 double* sig_out);

} // namespace kor
