#include "arithmetic.h"

#include "kor/runtime_state.h"
#include "sector_plan.h"
#include "series.h"

#include <cmath>

namespace kor_benchmark {

namespace {

using namespace kor;

/// The current sector as the planner sees it.
void plan(const Way& way, FastSector& fast) {
    RuntimeState& s = g_runtime;
    static CMatrix H0;
    CMatAdd(s.n, s.Izee, s.Icoup, H0);
    fast.sector = {{s.n, &H0, &s.Izgrad, &s.Ixtot, &s.Iytot},
                   {s.ap, s.h, s.xb, s.yb, s.gx, s.gy, s.gz, s.statoff_s},
                   {s.ndx, s.ndy, s.ndz, s.x0_s, s.y0_s, s.z0_s, s.dx_s, s.dy_s, s.dz_s}};
    analyse_system(fast.sector.system, fast.structure);
    plan_sector(way, fast);
}

/// Steps whose propagators are computed, and the products of matrices that join them.
struct Mirrored {
    std::vector<Step> steps;
    int joins;
};

Mirrored without_mirror_image(const StepList& list) {
    const Palindrome mirror = find_palindrome(list.steps, list.fixed_direction);
    if (mirror.length == 0) {
        return {list.steps, 0};
    }
    const auto used = static_cast<std::ptrdiff_t>(mirror.first + (mirror.length + 1) / 2);
    return {{list.steps.begin(), list.steps.begin() + used},
            1 + mirror.length % 2 + (mirror.first > 0 ? 1 : 0)};
}

} // namespace

double column_multiply_adds() {
    static FastSector fast;
    plan(kColumnWay, fast);
    const SystemStructure& s = fast.structure;
    const Mirrored mirrored = without_mirror_image(fast.list);
    const double elements = s.sparse.size();
    double sum = 0.0;
    for (long long c = 0; c < fast.classes.count(); ++c) {
        const VoxelPlace place = fast.classes.place(c);
        for (const Step& step : mirrored.steps) {
            const double w =
                step.gx * place.x + step.gy * place.y + step.gz * place.z + fast.sector.samples.offset;
            const double bound = exponent_bound(s, step.h, step.h * w, step.h * step.b);
            sum += 2.0 * s.n * elements * chebyshev_series(bound)->degree;
        }
        sum += mirrored.joins * 4.0 * std::pow(s.n, 3);
    }
    return sum;
}

double lane_multiply_adds(const std::vector<int>& sizes) {
    static FastSector fast;
    plan(kLaneWay, fast);
    const Mirrored mirrored = without_mirror_image(fast.list);
    double cubes = 0.0;
    for (const int n : sizes) {
        cubes += std::pow(n, 3);
    }
    return 4.0 * cubes * static_cast<double>(fast.classes.count()) *
           (static_cast<double>(mirrored.steps.size()) + mirrored.joins);
}

double signal_multiply_adds(int spins, int points) {
    double lines = 0.0;
    double levels = 1.0; // of the block with k spins down
    for (int k = 0; k < spins; ++k) {
        const double next = levels * (spins - k) / (k + 1);
        lines += levels * next;
        levels = next;
    }
    return 4.0 * lines * points;
}

} // namespace kor_benchmark
