// More than 16 states: one voxel at a time, its steps acting on blocks of columns of the identity.
#include "join.h"
#include "sector_plan.h"
#include "series.h"

#include <algorithm>
#include <cmath>

namespace kor {

namespace {

struct ColumnPlan {
    std::vector<Step> steps; // none beyond the radius that the series serve
    bool mirrored = false;
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
    const StepList& list = fast.list;
    const SystemStructure& s = fast.structure;
    split_long_steps(list.steps);
    g.mirrored =
        list.fixed_direction && g.steps.size() >= 4 && g.steps.size() % 2 == 0 && is_palindrome(list);
    const std::size_t used = g.mirrored ? g.steps.size() / 2 : g.steps.size();
    g.series.clear();
    for (std::vector<double>* array : {&g.h, &g.hw, &g.hb, &g.zc, &g.zs}) {
        array->assign(used, 0.0);
    }
    for (std::size_t j = 0; j < used; ++j) {
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

void compute(const FastSector& fast, ClassBlock& block) {
    static Planes product, work, spare;
    const SystemStructure& s = fast.structure;
    const VoxelPlace place = fast.classes.place(block.first);
    for (std::size_t j = 0; j < g.h.size(); ++j) {
        const Step& step = g.steps[j];
        g.hw[j] =
            step.h * (step.gx * place.x + step.gy * place.y + step.gz * place.z + fast.sector.samples.offset);
    }
    product.shape(s.n);
    const bool turns = !fast.list.fixed_direction;
    fast_kernels().column_product({s.n, s.h0_off_diagonal.rows(), s.fx_entries.rows(), g.diagonal.data(),
                                   s.m.data(), s.ladder.data(), s.ladder_top, static_cast<int>(g.h.size()),
                                   g.h.data(), g.hw.data(), g.hb.data(), turns ? g.zc.data() : nullptr,
                                   turns ? g.zs.data() : nullptr, g.series.data(), g.work.data(),
                                   product.re.data(), product.im.data(), product.stride});
    if (g.mirrored) {
        transpose(s.n, product, spare);
        multiply(s.n, product, spare, work);
    }
    turn_ends(s, g.steps.front(), g.steps.back(), product);
    for (int i = 0; i < s.n; ++i) {
        const std::size_t to = static_cast<std::size_t>(i) * static_cast<std::size_t>(s.n);
        std::copy_n(&product.re[product.at(i, 0)], s.n, &block.re[to]);
        std::copy_n(&product.im[product.at(i, 0)], s.n, &block.im[to]);
    }
}

} // namespace

const Way kColumnWay{"columns", prepare, compute};

} // namespace kor
