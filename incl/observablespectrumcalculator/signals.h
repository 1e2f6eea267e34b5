// Floor 3.9 - simulator: receiver signals and their listings
//
// What a quadrature receiver records while a density matrix evolves freely: samples of <Ix> and <Iy>.
// Matrices are n x n and 1-based, Hamiltonians in rad/s, times in seconds; signal arrays are 0-based.
// Rooms in src/observablespectrumcalculator/signals/: listings, complex_receiver. Nothing here is reentrant.
#pragma once

#include "spinoperatorlib.h"

namespace kor {

/// x, or 0.0 when x is NaN or infinite: what signal files hold.
double finite_or_zero(double x);
/// Samples k = 0..ap-1 at t = k acq_time_s / ap (the last one dwell before the acquisition time):
/// out_re[k] = Re trace(Ixtot rho(t)), out_im[k] = Re trace(Iytot rho(t)), where rho(0) = densmat and one
/// step is rho -> adjoint(U) rho U, U = exp(+i Hmat dt): for evolution under H pass Hmat = -H.
/// densmat is not changed; ap below 1 writes nothing.
void build_direct_observable_signal(int n, int ap, double acq_time_s, const CMatrix& densmat,
                                    const CMatrix& Hmat, const CMatrix& Ixtot, const CMatrix& Iytot,
                                    double* out_re, double* out_im);
/// The same signal; with print_diagnostics, outside the quiet mode, the line lists of both channels are
/// printed before it (above dimension 64, which the eigensolver does not serve, a note instead).
void build_legacy_separate_spectra_signal(int n, int ap, double acq_time_s, const CMatrix& densmat,
                                          const CMatrix& Hmat, const CMatrix& Ixtot, const CMatrix& Iytot,
                                          double* out_re, double* out_im, int print_diagnostics);

/// The complex receiver signal in closed form, t_k = k acq_time_s / (ap - 1), 0 for one point:
///   s(t) = sum over m, l of R(m,l) rho(l,m) exp(i (E_l - E_m) t),
/// R = Ixtot + i Iytot and rho = densmat in the eigenbasis of Hmat, E its eigenvalues; non-finite parts
/// become 0. Outside the quiet mode the transitions are listed first, one by one and summed by frequency.
/// n at most KOR_MAX_EIGEN_STATES.
void build_complex_receiver_signal(int n, int ap, double acq_time_s, const CMatrix& densmat,
                                   const CMatrix& Hmat, const CMatrix& Ixtot, const CMatrix& Iytot,
                                   double* out_re, double* out_im);

/// Prints a pair of line lists (amplitude, frequency in Hz) under `title`.
void print_line_lists(const char* title, const LineList& csp, int Nc, const LineList& ssp, int Ns);
/// Prints, per spin, the real parts of the expectation values of its unit-norm Ix and Iy at the start of
/// the acquisition. The basis (ket, Ilist) must be that of densmat.
void print_adc_start_expectations(int n, const CMatrix& densmat, const SpinKet& ket, const SpinIList& Ilist);

} // namespace kor
