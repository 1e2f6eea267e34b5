#include "observablespectrumcalculator/phase.h"

#include "double_buffer.h"
#include "korlimits.h"

#include <cmath>
#include <cstddef>

namespace kor {

namespace {

constexpr double full_turn = 2.0 * KOR_PI;

/// Sums of the weighted straight-line fit y = a + b x.
struct LineFit {
    double S = 0.0, Sx = 0.0, Sy = 0.0, Sxx = 0.0, Sxy = 0.0;
    void add(double x, double y, double weight) {
        S += weight;
        Sx += weight * x;
        Sy += weight * y;
        Sxx += weight * x * x;
        Sxy += weight * x * y;
    }
};

} // namespace

void unwrap_phase(double* theta, int n) {
    for (int i = 1; i < n; ++i) {
        const double step = theta[i] - theta[i - 1];
        if (!std::isfinite(step) || std::fabs(step) <= full_turn)
            continue;
        const double turns = std::ceil(std::fabs(step) / full_turn - 1.0);
        theta[i] -= std::copysign(turns * full_turn, step);
    }
}

void fit_phase0_phase1(const double* spec, int pp, double df1_hz, double fref_hz, double* phi0,
                       double* phi1) {
    constexpr double smallest_magnitude = 1e-9;
    constexpr double smallest_determinant = 1e-30;
    *phi0 = 0.0;
    *phi1 = 0.0;
    if (pp < 1)
        return;
    const DoubleBuffer theta = allocate_doubles(static_cast<std::size_t>(pp));
    if (!theta)
        return;
    for (int k = 0; k < pp; ++k)
        theta[k] = std::atan2(spec[2 * k + 1], spec[2 * k]);
    unwrap_phase(theta.get(), pp);
    LineFit fit;
    for (int k = 0; k < pp; ++k) {
        const double magnitude = std::hypot(spec[2 * k], spec[2 * k + 1]);
        if (magnitude >= smallest_magnitude)
            fit.add((k - pp / 2) * df1_hz - fref_hz, theta[k], magnitude);
    }
    const double D = fit.S * fit.Sxx - fit.Sx * fit.Sx;
    if (std::fabs(D) < smallest_determinant)
        return;
    *phi1 = (fit.S * fit.Sxy - fit.Sx * fit.Sy) / D;
    *phi0 = (fit.Sy - *phi1 * fit.Sx) / fit.S;
}

} // namespace kor
