// The receiver signal as a sum over transitions of the eigenbasis, with the list of its transitions.
#include "observablespectrumcalculator/signals.h"

#include "kor/smoke_check_mode.h"

#include <cmath>
#include <complex>
#include <cstdio>
#include <vector>

namespace kor {

namespace {

using Amplitude = std::complex<double>;

constexpr double degrees_per_radian = 180.0 / KOR_PI;

/// One element of the receiver against one coherence: amplitude * exp(i omega t).
struct Transition {
    int r, c;
    double omega; // rad/s
    Amplitude amplitude;
};

double frequency_hz(const Transition& transition) {
    return transition.omega / (2.0 * KOR_PI);
}

double phase_deg(const Amplitude& a) {
    return std::atan2(a.imag(), a.real()) * degrees_per_radian;
}

/// Every pair (r, c), row by row: amplitude R(r,c) rho(c,r), angular frequency E_c - E_r.
std::vector<Transition> find_transitions(int n, const CMatrix& densmat, const CMatrix& Hmat,
                                         const CMatrix& Ixtot, const CMatrix& Iytot) {
    static CMatrix receiver, iy_complex, Rot, RotA, rho_eig, rec_eig;
    static double eigenvalues[KOR_MAX_STATES + 1];
    CMultCMat(n, Complex2{{0.0, 0.0, 1.0}}, Iytot, iy_complex);
    CMatAdd(n, Ixtot, iy_complex, receiver);
    hermit(n, Hmat, Rot, eigenvalues);
    Adjungate(n, Rot, RotA);
    Transform(n, RotA, densmat, Rot, rho_eig);
    Transform(n, RotA, receiver, Rot, rec_eig);
    std::vector<Transition> transitions;
    for (int r = 1; r <= n; ++r)
        for (int c = 1; c <= n; ++c) {
            const Amplitude element(rec_eig[r][c][1], rec_eig[r][c][2]);
            const Amplitude coherence(rho_eig[c][r][1], rho_eig[c][r][2]);
            transitions.push_back({r, c, eigenvalues[c] - eigenvalues[r], element * coherence});
        }
    return transitions;
}

void list_by_frequency(const std::vector<Transition>& listed) {
    constexpr double tolerance_hz = 0.05;
    std::printf("KOR receiver transition aggregate by frequency (tol %.3g Hz)\n", tolerance_hz);
    std::printf("  columns: frequency_hz  amplitude_re  amplitude_im  magnitude  phase_deg\n");
    std::vector<bool> absorbed(listed.size(), false);
    for (std::size_t first = 0; first < listed.size(); ++first) {
        if (absorbed[first])
            continue;
        const double f_first = frequency_hz(listed[first]);
        Amplitude sum = 0.0;
        double weight = 0.0;
        double weighted_f = 0.0;
        for (std::size_t k = first; k < listed.size(); ++k) {
            const double f = frequency_hz(listed[k]);
            if (absorbed[k] || std::fabs(f - f_first) > tolerance_hz)
                continue;
            absorbed[k] = true;
            sum += listed[k].amplitude;
            weight += std::abs(listed[k].amplitude);
            weighted_f += std::abs(listed[k].amplitude) * f;
        }
        std::printf("  % .12g  % .12e  % .12e  %.12e  %.6f\n", weight > 0.0 ? weighted_f / weight : f_first,
                    sum.real(), sum.imag(), std::abs(sum), phase_deg(sum));
    }
}

void list_transitions(const std::vector<Transition>& transitions) {
    constexpr double smallest_listed = 1e-10;
    std::printf("\nKOR receiver transition list (complex FID synthesis)\n");
    std::printf("  columns: r c  frequency_hz  amplitude_re  amplitude_im  magnitude  phase_deg\n");
    std::vector<Transition> listed;
    for (const Transition& t : transitions) {
        if (!(std::abs(t.amplitude) > smallest_listed))
            continue;
        listed.push_back(t);
        std::printf("  %2d %2d  % .12g  % .12e  % .12e  %.12e  %.6f\n", t.r, t.c, frequency_hz(t),
                    t.amplitude.real(), t.amplitude.imag(), std::abs(t.amplitude), phase_deg(t.amplitude));
    }
    list_by_frequency(listed);
}

} // namespace

void build_complex_receiver_signal(int n, int ap, double acq_time_s, const CMatrix& densmat,
                                   const CMatrix& Hmat, const CMatrix& Ixtot, const CMatrix& Iytot,
                                   double* out_re, double* out_im) {
    const std::vector<Transition> transitions = find_transitions(n, densmat, Hmat, Ixtot, Iytot);
    if (!KOR_GetSmokeCheckMode())
        list_transitions(transitions);
    const double dwell = ap >= 2 ? acq_time_s / (ap - 1) : 0.0;
    for (int k = 0; k < ap; ++k) {
        const double t = k * dwell;
        Amplitude sum = 0.0;
        for (const Transition& transition : transitions)
            if (transition.amplitude != 0.0)
                sum += transition.amplitude * std::polar(1.0, transition.omega * t);
        out_re[k] = finite_or_zero(sum.real());
        out_im[k] = finite_or_zero(sum.imag());
    }
}

} // namespace kor
