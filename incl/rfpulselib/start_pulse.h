// Floor 2.30 - materials: start pulse of the optimiser
//
// A smooth, band-limited pulse made in the Fourier domain of rfpulseparam, so that the optimiser's parameters
// represent it exactly. Waveforms are 0-based, rad/s. Every failure prints its message on the error stream
// and returns 0; the arrays may have changed by then. Point counts must be powers of two, at most
// KOR_MAX_RF_POINTS.
#pragma once

namespace kor {

/// Asks for points, amplitude limit (Hz), flip angle and phase (degrees) and time step (ms), then runs the
/// core. Fills *ap (samples), *h (s), xb and yb; npar is the length of the parameter vector. 1, or 0. A
/// number of points that is no power of two is refused; the two below leave that check to their callers.
int GenerateOptimizationStartPulse(int* ap, double* h, double* xb, double* yb, int npar);
/// The same for a fixed grid *ap, *h: asks only amplitude limit, flip angle and phase.
int GenerateOptimizationStartPulseFixedGridInteractive(int* ap, double* h, double* xb, double* yb, int npar);
/// ap samples of h seconds of a pulse with `phase_deg` whose flip angle along that phase is `flip_deg`,
/// scaled down where its peak would exceed rf_ampl_hz (the limit wins). Prints a summary. 1, or 0.
int generate_optimization_start_pulse_core(int ap, double h, double* xb, double* yb, int npar,
                                           double rf_ampl_hz, double flip_deg, double phase_deg);

} // namespace kor
