#include "observablespectrumcalculator/signals.h"

#include "kor/smoke_check_mode.h"
#include "korengine.h"

#include <cmath>
#include <cstdio>

namespace kor {

namespace {

void print_channel(const char* title, int n, const CMatrix& densmat, const CMatrix& Hmat,
                   const CMatrix& observable) {
    static LineList csp, ssp;
    int Nc = 0;
    int Ns = 0;
    DoSpectrum(n, densmat, Hmat, observable, csp, ssp, &Nc, &Ns);
    print_line_lists(title, csp, Nc, ssp, Ns);
}

} // namespace

double finite_or_zero(double x) {
    return std::isfinite(x) ? x : 0.0;
}

void build_direct_observable_signal(int n, int ap, double acq_time_s, const CMatrix& densmat,
                                    const CMatrix& Hmat, const CMatrix& Ixtot, const CMatrix& Iytot,
                                    double* out_re, double* out_im) {
    const double dt = ap >= 1 ? acq_time_s / ap : 0.0;
    EngineSampleFreeEvolution(n, Hmat, dt, ap, densmat, Ixtot, Iytot, out_re, out_im);
}

void build_legacy_separate_spectra_signal(int n, int ap, double acq_time_s, const CMatrix& densmat,
                                          const CMatrix& Hmat, const CMatrix& Ixtot, const CMatrix& Iytot,
                                          double* out_re, double* out_im, int print_diagnostics) {
    if (print_diagnostics && !KOR_GetSmokeCheckMode()) {
        if (n > KOR_MAX_EIGEN_STATES) {
            std::printf("\nKOR legacy DoSpectrum diagnostics skipped for n=%d (>64).\n", n);
            std::printf("Direct density-matrix FID propagation is still used for receiver export.\n");
        } else {
            print_channel("Ix absorption channel", n, densmat, Hmat, Ixtot);
            print_channel("Iy dispersion channel", n, densmat, Hmat, Iytot);
        }
    }
    build_direct_observable_signal(n, ap, acq_time_s, densmat, Hmat, Ixtot, Iytot, out_re, out_im);
}

} // namespace kor
