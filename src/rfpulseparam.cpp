#include "rfpulseparam.h"

#include "four3.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

namespace kor {

namespace {

/// Real and imaginary part of a spectrum or waveform of `points` samples; null when memory runs out.
struct SplitArray {
    std::unique_ptr<double[]> real;
    std::unique_ptr<double[]> imag;
    explicit SplitArray(int points)
        : real(new (std::nothrow) double[static_cast<std::size_t>(points)]()),
          imag(new (std::nothrow) double[static_cast<std::size_t>(points)]()) {}
    bool allocated() const { return real && imag; }
};

void transform(int points, SplitArray& array, int inverse) {
    fft(static_cast<std::size_t>(points), array.real.get(), array.imag.get(), inverse);
}

/// Writes the parameters into both halves of the spectrum, so that it stays that of a real waveform.
void set_modes(int nmodes, int zero, const double* par, SplitArray& spectrum) {
    for (int m = 0; m < nmodes; ++m) {
        spectrum.real[static_cast<std::size_t>(zero + m)] = par[2 * m];
        spectrum.real[static_cast<std::size_t>(zero - m)] = par[2 * m];
        spectrum.imag[static_cast<std::size_t>(zero + m + 1)] = par[2 * m + 1];
        spectrum.imag[static_cast<std::size_t>(zero - m - 1)] = -par[2 * m + 1];
    }
}

void modes_to_signal(int npar_local, int ap_local, const double* par, SplitArray& spectrum, double* signal) {
    set_modes(rfpulseparam_max_modes(npar_local, ap_local), ap_local / 2, par, spectrum);
    transform(ap_local, spectrum, 1);
    std::copy_n(spectrum.real.get(), ap_local, signal);
}

bool valid_sizes(int npar_local, int ap_local) {
    return npar_local >= 1 && ap_local >= 2;
}

} // namespace

int rfpulseparam_max_modes(int npar_local, int ap_local) {
    return std::min(std::max(ap_local / 2, 1) - 1, npar_local / 4);
}

void signal_to_par_centered(int npar_local, int ap_local, const double* sig_in, double* par_out,
                            int par_base) {
    SplitArray spectrum(ap_local);
    if (!spectrum.allocated())
        return;
    std::copy_n(sig_in, ap_local, spectrum.real.get());
    transform(ap_local, spectrum, 0);
    const int zero = ap_local / 2;
    const int nmodes = rfpulseparam_max_modes(npar_local, ap_local);
    for (int m = 0; m < nmodes; ++m) {
        par_out[par_base + 2 * m] = spectrum.real[static_cast<std::size_t>(zero + m)];
        par_out[par_base + 2 * m + 1] = spectrum.imag[static_cast<std::size_t>(zero + m + 1)];
    }
}

void par_to_signal_centered_preserve(int npar_local, int ap_local, const double* par_in, int par_base,
                                     double* sig_io) {
    SplitArray spectrum(ap_local);
    if (!spectrum.allocated())
        return;
    std::copy_n(sig_io, ap_local, spectrum.real.get());
    transform(ap_local, spectrum, 0);
    modes_to_signal(npar_local, ap_local, par_in + par_base, spectrum, sig_io);
}

void par_to_signal_centered_zero(int npar_local, int ap_local, const double* par_in, int par_base,
                                 double* sig_out) {
    SplitArray spectrum(ap_local);
    if (!spectrum.allocated())
        return;
    modes_to_signal(npar_local, ap_local, par_in + par_base, spectrum, sig_out);
}

void RFPulseToParArray(int npar_local, int ap_local, const double* xb_in, const double* yb_in,
                       double* par_out) {
    if (!valid_sizes(npar_local, ap_local))
        return;
    std::fill_n(par_out, npar_local, 0.0);
    signal_to_par_centered(npar_local, ap_local, xb_in, par_out, 0);
    signal_to_par_centered(npar_local, ap_local, yb_in, par_out, npar_local / 2);
}

void ParArrayToRFPulse(int npar_local, int ap_local, const double* par_in, double* xb_io, double* yb_io) {
    if (!valid_sizes(npar_local, ap_local))
        return;
    par_to_signal_centered_preserve(npar_local, ap_local, par_in, 0, xb_io);
    par_to_signal_centered_preserve(npar_local, ap_local, par_in, npar_local / 2, yb_io);
}

void ParArrayToRFPulseLowMode(int npar_local, int ap_local, const double* par_in, double* xb_out,
                              double* yb_out) {
    if (!valid_sizes(npar_local, ap_local))
        return;
    par_to_signal_centered_zero(npar_local, ap_local, par_in, 0, xb_out);
    par_to_signal_centered_zero(npar_local, ap_local, par_in, npar_local / 2, yb_out);
}

} // namespace kor
