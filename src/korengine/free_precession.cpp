// A sector without RF: all its steps commute, so that its propagator is
// exp(-i H0 T) exp(-i phase Fz), T the whole time and phase the integral of the offset.
#include "block_eigen.h"
#include "sector_plan.h"

#include <cmath>

namespace kor {

namespace {

std::vector<EigenBlock> g_blocks; // of the H0 below, kept for sectors of the same system
std::vector<double> g_diagonalised;

struct Whole {
    double time, x, y, z; // s; the integrals of the gradients, rad per cm
};
Whole g_whole;
ClassBlock g_static; // exp(-i H0 T)

void make_static_part(const SystemStructure& s, double time) {
    const auto n = static_cast<std::size_t>(s.n);
    g_static.re.assign(n * n, 0.0);
    g_static.im.assign(n * n, 0.0);
    for (const EigenBlock& block : g_blocks) {
        for (int a = 0; a < block.size(); ++a) {
            const double angle = block.values[static_cast<std::size_t>(a)] * time;
            const double c = std::cos(angle);
            const double minus_s = -std::sin(angle);
            const double* v = block.vector(a);
            for (std::size_t i = 0; i < block.states.size(); ++i) {
                double* re = &g_static.re[static_cast<std::size_t>(block.states[i]) * n];
                double* im = &g_static.im[static_cast<std::size_t>(block.states[i]) * n];
                for (std::size_t j = 0; j < block.states.size(); ++j) {
                    re[block.states[j]] += v[i] * v[j] * c;
                    im[block.states[j]] += v[i] * v[j] * minus_s;
                }
            }
        }
    }
}

int prepare(const FastSector& fast) {
    const SystemStructure& s = fast.structure;
    if (g_diagonalised != s.h0) {
        g_blocks = diagonalise_blocks(s.n, s.h0);
        g_diagonalised = s.h0;
    }
    long double x = 0.0L, y = 0.0L, z = 0.0L; // gradients may cancel
    for (const Step& step : fast.list.steps) {
        const long double h = step.h;
        x += h * step.gx;
        y += h * step.gy;
        z += h * step.gz;
    }
    g_whole = {fast.sector.samples.count * fast.sector.samples.dt, static_cast<double>(x),
               static_cast<double>(y), static_cast<double>(z)};
    make_static_part(s, g_whole.time);
    return 1;
}

void compute(const FastSector& fast, ClassBlock& block) {
    const SystemStructure& s = fast.structure;
    const auto n = static_cast<std::size_t>(s.n);
    const VoxelPlace place = fast.classes.place(block.first);
    const double phase = g_whole.x * place.x + g_whole.y * place.y + g_whole.z * place.z +
                         g_whole.time * fast.sector.samples.offset;
    if (phase == 0.0) { // nothing turns
        block.re = g_static.re;
        block.im = g_static.im;
        return;
    }
    for (std::size_t i = 0; i < n; ++i) {
        const double c = std::cos(phase * s.m[i]);
        const double minus_s = -std::sin(phase * s.m[i]);
        for (std::size_t j = 0; j < n; ++j) {
            const double re = g_static.re[i * n + j];
            const double im = g_static.im[i * n + j];
            block.re[i * n + j] = c * re - minus_s * im;
            block.im[i * n + j] = c * im + minus_s * re;
        }
    }
}

} // namespace

const Way kFreePrecessionWay{"free precession", prepare, compute};

} // namespace kor
