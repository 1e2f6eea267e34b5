// Floor 2.5 - materials: sampled waveforms of the analytic RF pulse shapes
//
// Pure formulas: nothing is asked here and, but for the warning of clamp_ap, nothing is printed. Every shape
// fills samples 0..ap-1 of xb and yb (arrays of at least ap doubles that do not overlap; 0-based) with the RF
// field along x and y in rad/s: a field of r Hz is stored as 2 pi r. ap = 0 writes nothing. ti is the time
// between samples in seconds, T = ap ti the pulse length. Phases are typed in degrees and turn the field from
// +x towards +y. A shape checks nothing but null arrays, which it leaves alone; ap must lie in
// 0..KOR_MAX_RF_POINTS.
#pragma once

namespace kor {

/// Brings a sample count into range: above KOR_MAX_RF_POINTS it becomes KOR_MAX_RF_POINTS after a warning on
/// standard error, below 0 it becomes 0; 0 stays. A null pointer is ignored.
void clamp_ap(int* ap);

/// One sample of 25 kHz times *amp at the phase *fi (radians, unlike the other shapes): 90 degrees for *amp =
/// 1 when the sample lasts 10 microseconds. Sets *ap = 1 when ap is given. Any other null pointer: nothing is
/// changed.
void hardpulseproc(int* ap, const double* fi, const double* amp, double* xb, double* yb);

/// Constant field of amplitude_hz (Hz) at phase_deg.
void rectangular_waveform(int ap, double phase_deg, double amplitude_hz, double* xb, double* yb);

/// s(t) = q sin(2 pi f t) exp(-b^2 t^2) / (pi t), t = ti (j - ap/2), along phase_deg.
/// q  flip angle on resonance (rad) for a pulse long against 1/f and 1/b     f  half the bandwidth (Hz)
/// b  width of the Gaussian (1/s)     The sample at t = 0 is taken at 1e-9 s: its value is 2 q f.
void sinc_gauss_waveform(int ap, double ti, double phase_deg, double q, double f, double b, double* xb,
                         double* yb);

/// Gaussian for a spiral k-space path of n turns, along x: with u = (1 - t/T)^2, t = ti j,
/// xb = a A exp(-B^2 u) sqrt(4 pi^2 n^2 u + 1) / T.
/// a  flip angle (rad)     A, B, n  plain numbers
void gauss_2d_waveform(int ap, double ti, double a, double A, double B, double n, double* xb, double* yb);

/// compute_2d_sinc_offcentre for a rectangle around (0, 0): real, so yb = 0.
void sinc_2d_waveform(int ap, double ti, double a, double A, double B, double n, double dx, double dy,
                      double* xb, double* yb);

/// Excites a rectangle of dx by dy (cm) centred at (x0, y0) (cm) under a spiral gradient of n turns:
/// with g = 1 - t/T, t = h i:  kx = beta g cos(2 pi n t/T),  ky = beta g sin(2 pi n t/T)   (rad/cm)
/// amplitude = alfa A sinc(kx dx/2) sinc(ky dy/2) sqrt(4 pi^2 n^2 g^2 + 1) / T,  sinc(v) = sin(v)/v
/// xb + i yb = amplitude exp(i (kx x0 + ky y0)).  A kx or ky of exactly 0 is replaced by 1e-5.
/// alfa  flip angle (rad)     A, n  plain numbers     beta  edge of k-space (rad/cm)     h  seconds
/// Pauly, Nishimura & Macovski, J. Magn. Reson. 81 (1989) 43 (k-space view of small-angle excitation).
void compute_2d_sinc_offcentre(int ap, double h, double alfa, double A, double beta, double n, double dx,
                               double dy, double x0, double y0, double* xb, double* yb);

/// Adiabatic inversion: with S = 2 / (exp(b t) + exp(-b t)), t = ti (j - ap/2),
/// xb + i yb = 2 pi w S exp(i (2 pi u ln S + phase)).
/// w  peak field (Hz)     b  truncation (1/s)     u  selectivity: the sweep covers +- u b in Hz
/// Silver, Joseph & Hoult, J. Magn. Reson. 59 (1984) 347.
void sech_tanh_180_waveform(int ap, double ti, double phase_deg, double w, double b, double u, double* xb,
                            double* yb);

/// The first half of the sweep: as above with t = ti (j - ap); the last sample lies at -ti, one step before
/// the centre.
void sech_tanh_90_waveform(int ap, double ti, double phase_deg, double w, double b, double u, double* xb,
                           double* yb);

/// Two full sweeps of m = floor(ap/2) samples, each run at half the time step: t = ti (j - m/2) / 2 for j <
/// m, and samples m..2m-1 repeat 0..m-1. With odd ap the last sample is left as it was.
void sech_tanh_360_waveform(int ap, double ti, double phase_deg, double w, double b, double u, double* xb,
                            double* yb);

} // namespace kor
