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

ColumnPlan g;

/// A step that turns too far becomes several shorter ones.
void split_long_steps(const std::vector<Step>& steps) {
    g.steps.clear();
    for (Step step : steps) {
        const int parts = std::max(1, static_cast<int>(std::ceil(step.angle / kMaxChebyshevRadius)));
        step.h /= parts;
        step.angle /= parts;
        g.steps.insert(g.steps.end(), static_cast<std::size_t>(parts), step);
    }
}

int prepare(const FastSector& fast) {
    const SystemStructure& s = fast.structure;
    split_long_steps(fast.list.steps);
    g.mirror = find_palindrome(g.steps, fast.list.fixed_direction);
    g.series.clear();
    for (std::vector<double>* array : {&g.h, &g.hw, &g.hb, &g.zc, &g.zs}) {
        array->assign(g.steps.size(), 0.0);
    }
    for (std::size_t j = 0; j < g.steps.size(); ++j) {
        const Step& step = g.steps[j];
        const Step& before = g.steps[j > 0 ? j - 1 : 0];
        g.series.push_back(chebyshev_series(step.angle));
        g.h[j] = step.h;
        g.hb[j] = step.h * step.b;
        g.zc[j] = before.ux * step.ux + before.uy * step.uy;
        g.zs[j] = before.ux * step.uy - before.uy * step.ux;
    }
    g.diagonal.clear();
    for (int i = 0; i < s.n; ++i) {
        g.diagonal.push_back(s.h0_at(i, i));
    }
    g.work.resize(static_cast<std::size_t>(column_work(s.n)));
    return 1;
}

/// product = the steps first..end - 1, in the frames of the first and last step's direction.
void run_range(const FastSector& fast, int first, int end, Planes& product) {
    const SystemStructure& s = fast.structure;
    const bool turns = !fast.list.fixed_direction;
    product.shape(s.n);
    fast_kernels().column_product(
        {s.n, s.h0_off_diagonal.rows(), s.fx_entries.rows(), g.diagonal.data(), s.m.data(), s.ladder.data(),
         s.ladder_top, end - first, g.h.data() + first, g.hw.data() + first, g.hb.data() + first,
         turns ? g.zc.data() + first : nullptr, turns ? g.zs.data() + first : nullptr,
         g.series.data() + first, g.work.data(), product.re.data(), product.im.data(), product.stride});
}

void compute(const FastSector& fast, ClassBlock& block) {
    static Planes product, lead, middle;
    const int n = fast.structure.n;
    const VoxelPlace place = fast.classes.place(block.first);
    for (std::size_t j = 0; j < g.steps.size(); ++j) {
        const Step& step = g.steps[j];
        g.hw[j] =
            step.h * (step.gx * place.x + step.gy * place.y + step.gz * place.z + fast.sector.samples.offset);
    }
    if (g.mirror.length == 0) {
        run_range(fast, 0, static_cast<int>(g.steps.size()), product);
    } else {
        const int half = g.mirror.first + g.mirror.length / 2;
        const bool odd = g.mirror.length % 2 == 1;
        run_range(fast, g.mirror.first, half, product);
        if (g.mirror.first > 0) {
            run_range(fast, 0, g.mirror.first, lead);
        }
        if (odd) {
            run_range(fast, half, half + 1, middle);
        }
        join_palindrome(n, g.mirror.first > 0 ? &lead : nullptr, odd ? &middle : nullptr, product);
    }
    turn_ends(fast.structure, g.steps.front(), g.steps.back(), product);
    store_class(n, product, 0, block);
}

} // namespace

const Way kColumnWay{"columns", prepare, compute};

} // namespace kor
