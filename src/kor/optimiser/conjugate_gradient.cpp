#include "kor/optimiser.h"

#include <cmath>
#include <cstddef>
#include <memory>
#include <new>

namespace kor {

namespace {

constexpr int itmax = 100;
constexpr double eps = 1e-10; // guard of the convergence scale

std::unique_ptr<double[]> vector_of(int nn) {
    return std::unique_ptr<double[]>(new (std::nothrow) double[static_cast<std::size_t>(nn)]());
}

bool converged(double fret, double fp, double ftol) {
    return 2.0 * std::fabs(fret - fp) <= ftol * (std::fabs(fret) + std::fabs(fp) + eps);
}

} // namespace

void frprmn(double* parvec, int nn, double ftol, int* iter, double* fret) {
    const auto g = vector_of(nn);  // steepest descent of the last point
    const auto h = vector_of(nn);  // conjugate direction
    const auto xi = vector_of(nn); // gradient, then the direction handed to linmin
    if (!g || !h || !xi)
        return;
    double fp = fnc(parvec);
    dfnc(fp, parvec, nn, xi.get());
    for (int j = 0; j < nn; ++j)
        xi[j] = h[j] = g[j] = -xi[j];
    for (int its = 1; its <= itmax; ++its) {
        *iter = its;
        linmin(parvec, xi.get(), nn, fret);
        if (converged(*fret, fp, ftol))
            return;
        fp = fnc(parvec);
        dfnc(fp, parvec, nn, xi.get());
        double gg = 0.0;
        double dgg = 0.0;
        for (int j = 0; j < nn; ++j) {
            gg += g[j] * g[j];
            dgg += (xi[j] + g[j]) * xi[j];
        }
        if (gg == 0.0)
            return;
        const double gamma = dgg / gg;
        for (int j = 0; j < nn; ++j) {
            g[j] = -xi[j];
            xi[j] = h[j] = g[j] + gamma * h[j];
        }
    }
}

} // namespace kor
