// The analytic pulse shapes, each sample straight from its formula. xb + i yb in rad/s.
#pragma once

#include "support/constants.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

namespace kor_test {

using Field = std::complex<double>;
using Pulse = std::vector<Field>;

inline Field direction(double phase_deg) {
    return std::polar(1.0, phase_deg * TWO_PI / 360);
}

inline Pulse rectangular(int ap, double phase_deg, double hz) {
    return Pulse(ap, TWO_PI * hz * direction(phase_deg));
}

inline Pulse sinc_gauss(int ap, double T, double phase_deg, double q, double f, double b) {
    Pulse pulse;
    for (int j = 0; j < ap; ++j) {
        double t = T * (double(j) / ap - 0.5);
        if (2 * j == ap)
            t = 1e-9;
        const double sinc = std::sin(TWO_PI * f * t) / (TWO_PI * f * t);
        pulse.push_back(2 * q * f * sinc * std::exp(-std::pow(b * t, 2)) * direction(phase_deg));
    }
    return pulse;
}

inline Pulse gauss_2d(int ap, double T, double a, double A, double B, double n) {
    Pulse pulse;
    for (int j = 0; j < ap; ++j) {
        const double g = 1 - double(j) / ap;
        pulse.push_back(a * A / T * std::exp(-std::pow(B * g, 2)) * std::hypot(TWO_PI * n * g, 1.0));
    }
    return pulse;
}

inline Pulse sinc_2d(int ap, double T, double a, double A, double B, double n, double dx, double dy,
                     double x0 = 0, double y0 = 0) {
    const auto sinc = [](double v) { return std::sin(v) / v; };
    Pulse pulse;
    for (int j = 0; j < ap; ++j) {
        const double g = 1 - double(j) / ap;
        const Field k = std::polar(B * g, TWO_PI * n * j / ap);
        const double kx = k.real() == 0 ? 1e-5 : k.real();
        const double ky = k.imag() == 0 ? 1e-5 : k.imag();
        const double amplitude =
            a * A / T * sinc(kx * dx / 2) * sinc(ky * dy / 2) * std::hypot(TWO_PI * n * g, 1.0);
        pulse.push_back(amplitude * std::polar(1.0, kx * x0 + ky * y0));
    }
    return pulse;
}

inline Field sech_tanh(double t, double phase_deg, double w, double b, double u) {
    const double sech = 1 / std::cosh(b * t);
    return TWO_PI * w * sech * std::polar(1.0, TWO_PI * u * std::log(sech)) * direction(phase_deg);
}

/// Sample times t = ti (j - centre), divided by `speed`.
inline Pulse sech_tanh_sweep(int samples, double ti, double centre, double speed, double phase_deg, double w,
                             double b, double u) {
    Pulse pulse;
    for (int j = 0; j < samples; ++j)
        pulse.push_back(sech_tanh(ti * (j - centre) / speed, phase_deg, w, b, u));
    return pulse;
}

/// Two sweeps of floor(ap/2) samples; nothing for a last odd sample.
inline Pulse sech_tanh_twice(int ap, double ti, double phase_deg, double w, double b, double u) {
    const int half = ap / 2;
    Pulse pulse = sech_tanh_sweep(half, ti, half / 2.0, 2, phase_deg, w, b, u);
    pulse.reserve(2 * static_cast<std::size_t>(half));
    std::copy_n(pulse.begin(), half, std::back_inserter(pulse));
    return pulse;
}

inline double largest(const Pulse& pulse) {
    double size = 0;
    for (Field sample : pulse)
        size = std::max(size, std::abs(sample));
    return size;
}

} // namespace kor_test
