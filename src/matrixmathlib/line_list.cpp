#include "matrixmathlib.h"

#include <cmath>
#include <utility>

namespace kor {

namespace {

constexpr double kSmallAmplitude = 1e-12;
constexpr double kMergeTolerance = 0.05; // Hz

void append_line(LineList& list, int& count, double amplitude, double frequency) {
    if (std::fabs(amplitude) > kSmallAmplitude && count < KOR_MAX_LINES) {
        ++count;
        list[1][count] = amplitude;
        list[2][count] = frequency;
    }
}

/// Adds line i of spc to the first of merged lines 1..count within the tolerance, or appends it.
void absorb_or_append(const LineList& spc, int i, LineList& merged, int& count) {
    const double frequency = spc[2][i];
    for (int j = 1; j <= count; ++j) {
        if (merged[2][j] - kMergeTolerance <= frequency && frequency <= merged[2][j] + kMergeTolerance) {
            merged[1][j] += spc[1][i];
            return;
        }
    }
    if (count < KOR_MAX_LINES) {
        ++count;
        merged[1][count] = spc[1][i];
        merged[2][count] = frequency;
    }
}

/// Bubble sort by frequency; lines of equal frequency change places too, on every pass that meets them.
void sort_by_frequency(LineList& spc, int count) {
    for (int i = 1; i <= count; ++i) {
        for (int j = 2; j <= count - i + 1; ++j) {
            if (spc[2][j - 1] >= spc[2][j]) {
                std::swap(spc[1][j - 1], spc[1][j]);
                std::swap(spc[2][j - 1], spc[2][j]);
            }
        }
    }
}

/// The lines of every ordered pair of levels, sto and sig being the observable and the state in the
/// eigenbasis.
void collect_lines(int n, const double* Eigval, const CMatrix& sto, const CMatrix& sig, LineList& csp,
                   LineList& ssp, int& cosines, int& sines) {
    for (int r = 1; r <= n; ++r) {
        for (int c = 1; c <= n; ++c) {
            if (r == c) {
                continue;
            }
            const double delta = Eigval[c] - Eigval[r];
            const double frequency = std::fabs(delta) / (2.0 * KOR_PI);
            const Complex2& a = sto[r][c];
            const Complex2& b = sig[c][r];
            const double im = a[2] * b[1] + a[1] * b[2];
            append_line(csp, cosines, a[1] * b[1] - a[2] * b[2], frequency);
            append_line(ssp, sines, delta < 0.0 ? -im : im, frequency);
        }
    }
}

} // namespace

void zero_spectrum(LineList& spc) {
    for (int k = 1; k <= KOR_MAX_LINES; ++k) {
        spc[1][k] = 0.0;
        spc[2][k] = 0.0;
    }
}

void DoSpectrum(int n, const CMatrix& densmat, const CMatrix& Hmat, const CMatrix& cohmat, LineList& csp,
                LineList& ssp, int* Nc, int* Ns) {
    static CMatrix Rot;  // eigenvectors
    static CMatrix RotA; // their adjoint
    static CMatrix sig;  // density matrix in the eigenbasis
    static CMatrix sto;  // observable in the eigenbasis
    static double Eigval[KOR_MAX_STATES + 1];
    zero_spectrum(csp);
    zero_spectrum(ssp);
    hermit(n, Hmat, Rot, Eigval);
    Adjungate(n, Rot, RotA);
    Transform(n, RotA, densmat, Rot, sig);
    Transform(n, RotA, cohmat, Rot, sto);
    int cosines = 0;
    int sines = 0;
    collect_lines(n, Eigval, sto, sig, csp, ssp, cosines, sines);
    if (Nc) {
        *Nc = cosines;
    }
    if (Ns) {
        *Ns = sines;
    }
    SortSpectrum(Nc, csp);
    SortSpectrum(Ns, ssp);
}

void SortSpectrum(int* Npeaks, LineList& spc) {
    static LineList merged;
    if (!Npeaks || *Npeaks < 2) {
        return;
    }
    int count = 1;
    merged[1][1] = spc[1][1];
    merged[2][1] = spc[2][1];
    for (int i = 2; i <= *Npeaks; ++i) {
        absorb_or_append(spc, i, merged, count);
    }
    for (int k = 1; k <= *Npeaks; ++k) {
        spc[1][k] = k <= count ? merged[1][k] : 0.0;
        spc[2][k] = k <= count ? merged[2][k] : 0.0;
    }
    sort_by_frequency(spc, count);
    *Npeaks = count;
}

void build_scalar_signal_from_spectrum(int ap, double acq_time_s, const LineList& csp, int Nc,
                                       const LineList& ssp, int Ns, double* out) {
    const double h = ap >= 2 ? acq_time_s / (ap - 1) : 0.0;
    for (int k = 0; k < ap; ++k) {
        const double t = k * h;
        double sum = 0.0;
        for (int line = 1; line <= Nc; ++line) {
            sum += csp[1][line] * std::cos(2.0 * KOR_PI * csp[2][line] * t);
        }
        for (int line = 1; line <= Ns; ++line) {
            sum += ssp[1][line] * std::sin(2.0 * KOR_PI * ssp[2][line] * t);
        }
        out[k] = sum;
    }
}

} // namespace kor
