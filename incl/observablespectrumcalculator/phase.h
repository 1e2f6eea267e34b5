// Floor 1.9 - mathematics: phases of a spectrum
#pragma once

namespace kor {

/// Adds or subtracts whole turns to theta[i], i = 1..n-1 (0-based, radians), until it lies within a full
/// turn of the already corrected theta[i - 1]. The threshold is a full turn, so phases from atan2, which
/// are never further apart, stay as they are. Non-finite phases are passed over.
void unwrap_phase(double* theta, int n);
/// Straight line phi0 + phi1 x (radians, radians per Hz) through the unwrapped phases of a spectrum of pp
/// interleaved points (real, imaginary, 0-based): x_k = (k - pp / 2) df1_hz - fref_hz, least squares with
/// the magnitudes as weights, points below 1e-9 left out. Both results are 0 when no line is determined
/// or memory runs out.
void fit_phase0_phase1(const double* spec, int pp, double df1_hz, double fref_hz, double* phi0, double* phi1);

} // namespace kor
