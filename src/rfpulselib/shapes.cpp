#include "rfpulselib/shapes.h"

#include "korlimits.h"

#include <cmath>
#include <cstdio>

namespace kor {

namespace {

/// Stands for t = 0 and k = 0, so that no sinc is 0/0.
constexpr double SINC_GAUSS_TIME_ZERO = 1e-9;       // s
constexpr double SINC_2D_K_ZERO = 1e-5;             // rad/cm
constexpr double HARD_PULSE_FIELD = 50000 * KOR_PI; // rad/s: 90 degrees in 10 microseconds

double radians(double degrees) {
    return degrees * KOR_PI / 180;
}

/// Sample at time t of the frequency sweep that the three sech-tanh pulses share; phase in rad.
void sech_tanh_sample(double t, double phase, double w, double b, double u, double* x, double* y) {
    const double sech = 2 / (std::exp(b * t) + std::exp(-b * t));
    const double angle = 2 * KOR_PI * u * std::log(sech) + phase;
    *x = 2 * KOR_PI * w * sech * std::cos(angle);
    *y = 2 * KOR_PI * w * sech * std::sin(angle);
}

/// sin(x) / x, and 1 at x = 0: an area without width along an axis is excited evenly along it.
double sinc(double x) {
    return x == 0 ? 1 : std::sin(x) / x;
}

struct Sinc2dSample {
    double kx, ky;    // rad/cm
    double amplitude; // rad/s
};

/// Spiral position and field strength at time t of the pulse length T.
Sinc2dSample sinc_2d_sample(double t, double T, double alfa, double A, double beta, double n, double dx,
                            double dy) {
    const double g = 1 - t / T;
    Sinc2dSample s;
    s.kx = beta * g * std::cos(2 * KOR_PI * n * t / T);
    s.ky = beta * g * std::sin(2 * KOR_PI * n * t / T);
    if (s.kx == 0)
        s.kx = SINC_2D_K_ZERO;
    if (s.ky == 0)
        s.ky = SINC_2D_K_ZERO;
    const double f = std::sqrt(4 * KOR_PI * KOR_PI * n * n * g * g + 1);
    s.amplitude = alfa * A * sinc(s.kx * dx / 2) * sinc(s.ky * dy / 2) * f / T;
    return s;
}

} // namespace

void clamp_ap(int* ap) {
    if (!ap)
        return;
    if (*ap < 0)
        *ap = 0;
    if (*ap > KOR_MAX_RF_POINTS) {
        std::fprintf(stderr, "WARNING: ap=%d exceeds KOR_MAX_RF_POINTS=%d; clamping.\n", *ap,
                     KOR_MAX_RF_POINTS);
        *ap = KOR_MAX_RF_POINTS;
    }
}

void hardpulseproc(int* ap, const double* fi, const double* amp, double* xb, double* yb) {
    if (!fi || !amp || !xb || !yb)
        return;
    if (ap)
        *ap = 1;
    xb[0] = *amp * std::cos(*fi) * HARD_PULSE_FIELD;
    yb[0] = *amp * std::sin(*fi) * HARD_PULSE_FIELD;
}

void rectangular_waveform(int ap, double phase_deg, double amplitude_hz, double* xb, double* yb) {
    if (!xb || !yb)
        return;
    const double x = 2 * KOR_PI * amplitude_hz * std::cos(radians(phase_deg));
    const double y = 2 * KOR_PI * amplitude_hz * std::sin(radians(phase_deg));
    for (int j = 0; j < ap; ++j) {
        xb[j] = x;
        yb[j] = y;
    }
}

void sinc_gauss_waveform(int ap, double ti, double phase_deg, double q, double f, double b, double* xb,
                         double* yb) {
    if (!xb || !yb)
        return;
    const double phase = radians(phase_deg);
    for (int j = 0; j < ap; ++j) {
        double t = ti * (j - ap / 2.0);
        if (t == 0)
            t = SINC_GAUSS_TIME_ZERO;
        const double s = q * std::sin(2 * KOR_PI * f * t) * std::exp(-(b * b * t * t)) / (KOR_PI * t);
        xb[j] = s * std::cos(phase);
        yb[j] = s * std::sin(phase);
    }
}

void gauss_2d_waveform(int ap, double ti, double a, double A, double B, double n, double* xb, double* yb) {
    if (!xb || !yb)
        return;
    const double T = ap * ti;
    for (int j = 0; j < ap; ++j) {
        const double g = 1 - ti * j / T;
        const double u = g * g;
        xb[j] = a * A * std::exp(-(B * B * u)) * std::sqrt(4 * KOR_PI * KOR_PI * n * n * u + 1) / T;
        yb[j] = 0;
    }
}

void sinc_2d_waveform(int ap, double ti, double a, double A, double B, double n, double dx, double dy,
                      double* xb, double* yb) {
    if (!xb || !yb)
        return;
    const double T = ap * ti;
    for (int j = 0; j < ap; ++j) {
        xb[j] = sinc_2d_sample(ti * j, T, a, A, B, n, dx, dy).amplitude;
        yb[j] = 0;
    }
}

void compute_2d_sinc_offcentre(int ap, double h, double alfa, double A, double beta, double n, double dx,
                               double dy, double x0, double y0, double* xb, double* yb) {
    if (!xb || !yb)
        return;
    const double T = ap * h;
    for (int i = 0; i < ap; ++i) {
        const Sinc2dSample s = sinc_2d_sample(i * h, T, alfa, A, beta, n, dx, dy);
        const double cx = std::cos(s.kx * x0), sx = std::sin(s.kx * x0);
        const double cy = std::cos(s.ky * y0), sy = std::sin(s.ky * y0);
        xb[i] = s.amplitude * (cx * cy - sx * sy);
        yb[i] = s.amplitude * (sx * cy + cx * sy);
    }
}

void sech_tanh_180_waveform(int ap, double ti, double phase_deg, double w, double b, double u, double* xb,
                            double* yb) {
    if (!xb || !yb)
        return;
    for (int j = 0; j < ap; ++j)
        sech_tanh_sample(ti * (j - ap / 2.0), radians(phase_deg), w, b, u, &xb[j], &yb[j]);
}

void sech_tanh_90_waveform(int ap, double ti, double phase_deg, double w, double b, double u, double* xb,
                           double* yb) {
    if (!xb || !yb)
        return;
    for (int j = 0; j < ap; ++j)
        sech_tanh_sample(ti * (j - ap), radians(phase_deg), w, b, u, &xb[j], &yb[j]);
}

void sech_tanh_360_waveform(int ap, double ti, double phase_deg, double w, double b, double u, double* xb,
                            double* yb) {
    if (!xb || !yb)
        return;
    const int m = ap / 2;
    for (int j = 0; j < m; ++j) {
        sech_tanh_sample(ti * (j - m / 2.0) / 2, radians(phase_deg), w, b, u, &xb[j], &yb[j]);
        xb[m + j] = xb[j];
        yb[m + j] = yb[j];
    }
}

} // namespace kor
