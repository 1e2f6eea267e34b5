// Floor 3.9 - simulator: receiver signals and their listings
#pragma once

#include "spinoperatorlib.h"

namespace kor {

double finite_or_zero(double x);
void build_direct_observable_signal(int n, int ap, double acq_time_s, const CMatrix& densmat,
                                    const CMatrix& Hmat, const CMatrix& Ixtot, const CMatrix& Iytot,
                                    double* out_re, double* out_im);
void build_legacy_separate_spectra_signal(int n, int ap, double acq_time_s, const CMatrix& densmat,
                                          const CMatrix& Hmat, const CMatrix& Ixtot, const CMatrix& Iytot,
                                          double* out_re, double* out_im, int print_diagnostics);

} // namespace kor
