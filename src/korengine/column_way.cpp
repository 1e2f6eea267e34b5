// More than 16 states: one voxel at a time, its steps acting on blocks of columns of the identity. Of a
// palindrome only the first half is computed.
#include "join.h"
#include "sector_plan.h"
#include "series.h"

#include <algorithm>
#include <cmath>

namespace kor {

namespace {

struct ColumnPlan {
    std::vector<Step> steps; // none beyond the radius that the series serve
    Palindrome mirror;
    std::vector<const ChebyshevSeries*> series;
    std::vector<double> h, hw, hb, zc, zs, diagonal;
    AlignedDoubles work;
};

std::vector<ColumnPlan> g_plans; // one per slot

/// A step that turns too far becomes several shorter ones.
void split_long_steps(const std::vector<Step>& steps, ColumnPlan& plan) {
    plan.steps.clear();
    for (Step step : steps) {
        const int parts = std::max(1, static_cast<int>(std::ceil(step.angle / kMaxChebyshevRadius)));
        step.h /= parts;
        step.angle /= parts;
        plan.steps.insert(plan.steps.end(), static_cast<std::size_t>(parts), step);
    }
}

int exponent_size(const SystemStructure& s) {
    return s.binary_spins > 0 ? s.n + 72 : static_cast<int>(s.sparse.h0.size());
}

int prepare(const FastSector& fast) {
    if (g_plans.size() <= fast.slot) {
        g_plans.resize(fast.slot + 1);
    }
    ColumnPlan& plan = g_plans[fast.slot];
    const SystemStructure& s = fast.structure;
    split_long_steps(fast.list.steps, plan);
    plan.mirror = find_palindrome(plan.steps, fast.list.fixed_direction);
    plan.series.assign(plan.steps.size(), nullptr);
    for (std::vector<double>* array : {&plan.h, &plan.hw, &plan.hb, &plan.zc, &plan.zs}) {
        array->assign(plan.steps.size(), 0.0);
    }
    for (std::size_t j = 0; j < plan.steps.size(); ++j) {
        const Step& step = plan.steps[j];
        const Step& before = plan.steps[j > 0 ? j - 1 : 0];
        plan.h[j] = step.h;
        plan.hb[j] = step.h * step.b;
        plan.zc[j] = before.ux * step.ux + before.uy * step.uy;
        plan.zs[j] = before.ux * step.uy - before.uy * step.ux;
    }
    plan.diagonal.clear();
    for (int i = 0; i < s.n; ++i) {
        plan.diagonal.push_back(s.h0_at(i, i));
    }
    plan.work.resize(static_cast<std::size_t>(column_work(s.n, exponent_size(s))));
    return 1;
}

/// The steps at one voxel. Their series follow from a bound at this voxel, whatever the others are.
void place_steps(const FastSector& fast, const VoxelPlace& place, ColumnPlan& plan) {
    for (std::size_t j = 0; j < plan.steps.size(); ++j) {
        const Step& step = plan.steps[j];
        plan.hw[j] =
            step.h * (step.gx * place.x + step.gy * place.y + step.gz * place.z + fast.sector.samples.offset);
        plan.series[j] =
            chebyshev_series(exponent_bound(fast.structure, std::fabs(step.h), plan.hw[j], plan.hb[j]));
    }
}

/// product = the steps first..end - 1, in the frames of the first and last step's direction.
void run_range(const FastSector& fast, ColumnPlan& plan, int first, int end, Planes& product) {
    const SystemStructure& s = fast.structure;
    const bool turns = !fast.list.fixed_direction;
    product.shape(s.n);
    const ColumnJob job = {s.n,
                           s.sparse.rows(),
                           s.binary_spins,
                           plan.diagonal.data(),
                           s.m.data(),
                           s.exchange.empty() ? nullptr : s.exchange.data(),
                           exponent_size(s),
                           s.ladder.data(),
                           s.ladder_top,
                           end - first,
                           plan.h.data() + first,
                           plan.hw.data() + first,
                           plan.hb.data() + first,
                           turns ? plan.zc.data() + first : nullptr,
                           turns ? plan.zs.data() + first : nullptr,
                           plan.series.data() + first,
                           plan.work.data(),
                           product.re.data(),
                           product.im.data(),
                           product.stride};
    const FastKernels& kernels = fast_kernels();
    (s.binary_spins > 0 ? kernels.binary_columns : kernels.sparse_columns)(job);
}

void compute(const FastSector& fast, ClassBlock& block) {
    ColumnPlan& plan = g_plans[fast.slot];
    static Planes product, lead, middle;
    const int n = fast.structure.n;
    place_steps(fast, fast.classes.place(block.first), plan);
    if (plan.mirror.length == 0) {
        run_range(fast, plan, 0, static_cast<int>(plan.steps.size()), product);
    } else {
        const int half = plan.mirror.first + plan.mirror.length / 2;
        const bool odd = plan.mirror.length % 2 == 1;
        run_range(fast, plan, plan.mirror.first, half, product);
        if (plan.mirror.first > 0) {
            run_range(fast, plan, 0, plan.mirror.first, lead);
        }
        if (odd) {
            run_range(fast, plan, half, half + 1, middle);
        }
        join_palindrome(n, plan.mirror.first > 0 ? &lead : nullptr, odd ? &middle : nullptr, product);
    }
    turn_ends(fast.structure, plan.steps.front(), plan.steps.back(), product);
    store_class(n, product, 0, block);
}

} // namespace

const Way kColumnWay{"columns", prepare, compute};

} // namespace kor
