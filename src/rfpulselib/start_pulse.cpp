#include "rfpulselib/start_pulse.h"

#include "consoleutil.h"
#include "four3.h"
#include "korlimits.h"
#include "rfpulseparam.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <new>

namespace kor {

namespace {

/// Amplitude limit (Hz), flip angle and phase (degrees) as the user gave them.
struct StartPulseWishes {
    double rf_ampl_hz;
    double flip_deg;
    double phase_deg;
};

int fail(const char* message) {
    std::fprintf(stderr, "%s\n", message);
    return 0;
}

bool ask_double(const char* prompt, double* out) {
    std::printf("%s", prompt);
    std::fflush(stdout);
    return console_read_double(out) != 0;
}

bool ask_positive(const char* prompt, double* out) {
    return ask_double(prompt, out) && *out > 0.0;
}

int ask_wishes(StartPulseWishes* wishes) {
    if (!ask_positive("RF-amplitude A [Hz]                    : ", &wishes->rf_ampl_hz))
        return fail("Invalid RF amplitude");
    if (!ask_positive("Target flip angle [deg]                : ", &wishes->flip_deg))
        return fail("Invalid target flip angle");
    if (!ask_double("Initial RF phase [deg]                 : ", &wishes->phase_deg))
        return fail("Invalid initial RF phase");
    return 1;
}

/// Sum of the field's component along the phase direction (c, s), times the time step: the flip angle in rad.
double projected_flip(int ap, double h, const double* xb, const double* yb, double c, double s) {
    double sum = 0.0;
    for (int k = 0; k < ap; ++k)
        sum += (xb[k] * c + yb[k] * s) * h;
    return sum;
}

double peak_field(int ap, const double* xb, const double* yb) {
    double peak = 0.0;
    for (int k = 0; k < ap; ++k)
        peak = std::max(peak, std::sqrt(xb[k] * xb[k] + yb[k] * yb[k]));
    return peak;
}

void scale(int ap, double factor, double* xb, double* yb) {
    for (int k = 0; k < ap; ++k) {
        xb[k] *= factor;
        yb[k] *= factor;
    }
}

/// Real mode m of both components under a raised cosine that falls from 1 at zero frequency to 0 at the last
/// mode.
void set_tapered_modes(int modes, int npar, double c, double s, double* par) {
    double* par_y = par + 2 * (npar / 4);
    for (int m = 0; m < modes; ++m) {
        const double w = modes == 1 ? 1.0 : 0.5 * (1.0 + std::cos(KOR_PI * m / (modes - 1)));
        par[2 * m] = w * c;
        par_y[2 * m] = w * s;
    }
}

const char* invalid_core_argument(int ap, double h, const double* xb, const double* yb, int npar,
                                  const StartPulseWishes& wishes) {
    if (!xb || !yb)
        return "GenerateOptimizationStartPulse: null pulse arrays";
    if (!(ap > 1 && h > 0.0 && npar > 0))
        return "GenerateOptimizationStartPulse: invalid ap/h/npar";
    if (!(wishes.rf_ampl_hz > 0.0 && wishes.flip_deg > 0.0))
        return "GenerateOptimizationStartPulse: invalid RF amplitude or flip angle";
    if (rfpulseparam_max_modes(npar, ap) < 1)
        return "GenerateOptimizationStartPulse: no usable Fourier modes";
    return nullptr;
}

void print_summary(int ap, double h, int modes, const StartPulseWishes& wishes, double flip_rad, double peak,
                   bool rescaled) {
    std::printf("\nOptimization start pulse generated (direct Fourier-domain):\n");
    std::printf("  ap                   = %d\n", ap);
    std::printf("  h                    = %.6g s\n", h);
    std::printf("  retained modes/ch    = %d\n", modes);
    std::printf("  initial phase        = %.6g deg\n", wishes.phase_deg);
    std::printf("  target flip angle    = %.6g deg\n", wishes.flip_deg);
    std::printf("  actual flip angle    = %.6g deg\n", flip_rad * 180.0 / KOR_PI);
    std::printf("  max amplitude limit  = %.6g Hz\n", wishes.rf_ampl_hz);
    std::printf("  peak |B1| (internal) = %.6g rad/s\n", peak);
    std::printf("  peak |B1|            = %.6g Hz\n", peak / (2.0 * KOR_PI));
    if (rescaled)
        std::printf("  NOTE: start pulse was rescaled to satisfy the RF amplitude limit.\n");
}

} // namespace

int generate_optimization_start_pulse_core(int ap, double h, double* xb, double* yb, int npar,
                                           double rf_ampl_hz, double flip_deg, double phase_deg) {
    const StartPulseWishes wishes{rf_ampl_hz, flip_deg, phase_deg};
    if (const char* message = invalid_core_argument(ap, h, xb, yb, npar, wishes))
        return fail(message);
    const std::unique_ptr<double[]> par(new (std::nothrow) double[static_cast<std::size_t>(npar)]());
    if (!par)
        return fail("Memory allocation failed (par)");

    const int modes = rfpulseparam_max_modes(npar, ap);
    const double c = std::cos(phase_deg * KOR_PI / 180.0);
    const double s = std::sin(phase_deg * KOR_PI / 180.0);
    set_tapered_modes(modes, npar, c, s, par.get());
    ParArrayToRFPulseLowMode(npar, ap, par.get(), xb, yb);

    const double flip = projected_flip(ap, h, xb, yb, c, s);
    if (std::fabs(flip) < 1e-15)
        return fail("GenerateOptimizationStartPulse: initial flip angle is zero");
    scale(ap, flip_deg * KOR_PI / 180.0 / flip, xb, yb);
    const double limit = 2.0 * KOR_PI * rf_ampl_hz;
    const double peak = peak_field(ap, xb, yb);
    const bool rescaled = peak > limit;
    if (rescaled)
        scale(ap, limit / peak, xb, yb);
    print_summary(ap, h, modes, wishes, projected_flip(ap, h, xb, yb, c, s), peak_field(ap, xb, yb),
                  rescaled);
    return 1;
}

int GenerateOptimizationStartPulse(int* ap, double* h, double* xb, double* yb, int npar) {
    if (!ap || !h || !xb || !yb)
        return fail("GenerateOptimizationStartPulse: null pointer argument");
    if (npar < 1)
        return fail("GenerateOptimizationStartPulse: npar not initialized");
    std::printf("Total number of RF pulse sample points : ");
    std::fflush(stdout);
    int points = 0;
    if (!console_read_int(&points) || points <= 1 || points > KOR_MAX_RF_POINTS)
        return fail("Invalid number of points");
    if (!is_power_of_two(static_cast<std::size_t>(points)))
        return fail("Invalid number of points: only a power of two can be optimized");
    StartPulseWishes wishes{};
    if (!ask_wishes(&wishes))
        return 0;
    double step_ms = 0.0;
    if (!ask_positive("Pulse time step h [ms]                 : ", &step_ms))
        return fail("Invalid time step");
    *ap = points;
    *h = 0.001 * step_ms;
    return generate_optimization_start_pulse_core(*ap, *h, xb, yb, npar, wishes.rf_ampl_hz, wishes.flip_deg,
                                                  wishes.phase_deg);
}

int GenerateOptimizationStartPulseFixedGridInteractive(int* ap, double* h, double* xb, double* yb, int npar) {
    if (!ap || !h || !xb || !yb)
        return fail("GenerateOptimizationStartPulseFixedGridInteractive: null pointer argument");
    if (npar < 1)
        return fail("GenerateOptimizationStartPulseFixedGridInteractive: npar not initialized");
    if (!(*ap > 1 && *h > 0.0))
        return fail("GenerateOptimizationStartPulseFixedGridInteractive: invalid ap/h");
    std::printf("Selected sector grid is fixed:\n");
    std::printf("  ap = %d\n", *ap);
    std::printf("  h  = %.12g s  (%.6g ms)\n", *h, 1000.0 * *h);
    StartPulseWishes wishes{};
    if (!ask_wishes(&wishes))
        return 0;
    return generate_optimization_start_pulse_core(*ap, *h, xb, yb, npar, wishes.rf_ampl_hz, wishes.flip_deg,
                                                  wishes.phase_deg);
}

} // namespace kor
