// Up to 16 states: one voxel per lane; a sector with fewer classes than lanes is cut into time segments,
// so that the lanes hold (class, segment) pairs.
#include "join.h"
#include "sector_plan.h"
#include "series.h"

#include <algorithm>
#include <cmath>

namespace kor {

namespace {

struct LanePlan {
    int lanes = 1;
    int segments = 1; // per class
    int steps = 0;    // of a segment
    int padded = 4;   // rows of the kernel's matrices
    bool spin_half = false;
    bool turns = false;
    bool mirrored = false; // only the first half of a palindrome is computed
    std::vector<StepPlan> plan;
    AlignedDoubles h0, fx, m;
    std::vector<int> ladder;
    AlignedDoubles h, hw, hb, hy, zc, zs, work, re, im;
    std::vector<double> gx, gy, gz;
};

LanePlan g;

std::size_t size_of(int a, int b) {
    return static_cast<std::size_t>(a) * static_cast<std::size_t>(b);
}

/// A spin 1/2 alone without a constant energy: the closed form.
bool is_spin_half(const SystemStructure& s) {
    return s.n == 2 && s.fx_at(0, 1) == 0.5 && s.h0_at(0, 1) == 0.0 && s.h0_at(0, 0) == -s.h0_at(1, 1) &&
           s.m[0] == 0.5 && s.m[1] == -0.5;
}

void pack_system(const SystemStructure& s) {
    const int n = g.padded;
    g.h0.assign(size_of(n, n), 0.0);
    g.fx.assign(size_of(n, n), 0.0);
    g.m.assign(static_cast<std::size_t>(n), 0.0);
    g.ladder.assign(static_cast<std::size_t>(n), 0);
    for (int i = 0; i < s.n; ++i) {
        const auto row = static_cast<std::size_t>(i);
        for (int j = 0; j < s.n; ++j) {
            g.h0[size_of(i, n) + static_cast<std::size_t>(j)] = s.h0_at(i, j);
            g.fx[size_of(i, n) + static_cast<std::size_t>(j)] = s.fx_at(i, j);
        }
        g.m[row] = s.m[row];
        g.ladder[row] = s.ladder[row];
    }
}

/// Fills the lanes that hold segment `segment` of whichever class.
void fill_segment(const StepList& list, int used, int segment) {
    for (int j = 0; j < g.steps; ++j) {
        const int at = segment * g.steps + j;
        if (at >= used) {
            continue; // h = 0: the identity
        }
        const Step& step = list.steps[static_cast<std::size_t>(at)];
        const Step& before = list.steps[static_cast<std::size_t>(std::max(at - 1, 0))];
        for (int lane = segment; lane < g.lanes; lane += g.segments) {
            const std::size_t e = size_of(j, g.lanes) + static_cast<std::size_t>(lane);
            g.h[e] = step.h;
            g.hb[e] = step.h * (g.spin_half ? step.bx : step.b);
            g.hy[e] = step.h * step.by;
            g.zc[e] = before.ux * step.ux + before.uy * step.uy;
            g.zs[e] = before.ux * step.uy - before.uy * step.ux;
        }
    }
}

/// One polynomial per row of steps, from the bounds over the whole grid.
void plan_steps(const StepList& list, int used) {
    g.plan.resize(static_cast<std::size_t>(g.steps));
    for (int j = 0; j < g.steps; ++j) {
        double angle = 0.0;
        for (int at = j; at < used; at += g.steps) {
            angle = std::max(angle, list.steps[static_cast<std::size_t>(at)].angle);
        }
        g.plan[static_cast<std::size_t>(j)] = plan_step(angle);
    }
}

int prepare(const FastSector& fast) {
    const StepList& list = fast.list;
    g.lanes = fast_kernels().lanes;
    g.spin_half = is_spin_half(fast.structure);
    g.padded = g.spin_half ? 2 : (fast.structure.n + 3) / 4 * 4;
    g.turns = !list.fixed_direction;
    const auto count = static_cast<int>(list.steps.size());
    g.mirrored = !g.spin_half && list.fixed_direction && count >= 4 && count % 2 == 0 && is_palindrome(list);
    const int used = g.mirrored ? count / 2 : count;
    g.segments = 1;
    while (2 * g.segments * fast.classes.count() <= g.lanes && 2 * g.segments <= used) {
        g.segments *= 2;
    }
    g.steps = (used + g.segments - 1) / g.segments;
    pack_system(fast.structure);
    const std::size_t entries = size_of(g.steps, g.lanes);
    for (AlignedDoubles* array : {&g.h, &g.hw, &g.hb, &g.hy, &g.zs}) {
        array->assign(entries, 0.0);
    }
    g.zc.assign(entries, 1.0);
    for (int segment = 0; segment < g.segments; ++segment) {
        fill_segment(list, used, segment);
    }
    plan_steps(list, used);
    g.work.resize((size_of(g.padded, g.padded) * kLaneWorkMatrices +
                   2 * static_cast<std::size_t>(fast.structure.ladder_top + 1)) *
                  static_cast<std::size_t>(g.lanes));
    g.re.resize(size_of(g.padded, g.padded) * static_cast<std::size_t>(g.lanes));
    g.im.resize(g.re.size());
    return g.lanes / g.segments;
}

/// hw of the block's classes. Time segments differ from lane to lane, so they are filled here.
void fill_block_offsets(const FastSector& fast, const ClassBlock& block) {
    const StepList& list = fast.list;
    const double offset = fast.sector.samples.offset;
    AlignedDoubles x(static_cast<std::size_t>(g.lanes)), y(x), z(x);
    for (int lane = 0; lane < g.lanes; ++lane) {
        const int member = std::min(lane / g.segments, block.count - 1);
        const VoxelPlace place = fast.classes.place(block.first + member);
        x[static_cast<std::size_t>(lane)] = place.x;
        y[static_cast<std::size_t>(lane)] = place.y;
        z[static_cast<std::size_t>(lane)] = place.z;
    }
    g.gx.assign(static_cast<std::size_t>(g.steps), 0.0);
    g.gy = g.gz = g.gx;
    if (g.segments == 1) {
        for (std::size_t j = 0; j < g.gx.size(); ++j) {
            g.gx[j] = list.steps[j].gx;
            g.gy[j] = list.steps[j].gy;
            g.gz[j] = list.steps[j].gz;
        }
        fast_kernels().fill_offsets({g.steps, g.h.data(), g.gx.data(), g.gy.data(), g.gz.data(), offset,
                                     x.data(), y.data(), z.data(), g.hw.data()});
        return;
    }
    for (int lane = 0; lane < g.lanes; ++lane) {
        const auto l = static_cast<std::size_t>(lane);
        for (int j = 0; j < g.steps; ++j) {
            const std::size_t at = std::min(size_of(lane % g.segments, g.steps) + static_cast<std::size_t>(j),
                                            list.steps.size() - 1);
            const Step& step = list.steps[at];
            const std::size_t e = size_of(j, g.lanes) + l;
            g.hw[e] = g.h[e] * (step.gx * x[l] + step.gy * y[l] + step.gz * z[l] + offset);
        }
    }
}

void copy_lane(int n, int lane, Planes& out) {
    out.shape(n);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const std::size_t e =
                (size_of(i, g.padded) + static_cast<std::size_t>(j)) * static_cast<std::size_t>(g.lanes) +
                static_cast<std::size_t>(lane);
            out.re[out.at(i, j)] = g.re[e];
            out.im[out.at(i, j)] = g.im[e];
        }
    }
}

/// The whole product of the class in lanes first_lane.. from its segments.
void join_segments(const FastSector& fast, int first_lane, Planes& product) {
    static Planes segment, work;
    const SystemStructure& s = fast.structure;
    const StepList& list = fast.list;
    const int used = static_cast<int>(g.mirrored ? list.steps.size() / 2 : list.steps.size());
    for (int k = 0; k < g.segments && k * g.steps < used; ++k) {
        Planes& part = k == 0 ? product : segment;
        copy_lane(s.n, first_lane + k, part);
        const int end = std::min((k + 1) * g.steps, used);
        if (!g.spin_half && g.turns) {
            turn_ends(s, list.steps[size_of(k, g.steps)], list.steps[static_cast<std::size_t>(end - 1)],
                      part);
        }
        if (k > 0) {
            multiply(s.n, product, segment, work);
        }
    }
    if (g.mirrored) {
        transpose(s.n, product, segment);
        multiply(s.n, product, segment, work);
    }
    if (!g.spin_half && !g.turns) {
        turn_ends(s, list.steps.front(), list.steps.back(), product);
    }
}

void compute(const FastSector& fast, ClassBlock& block) {
    fill_block_offsets(fast, block);
    const bool zero_turns = g.spin_half || !g.turns;
    const LaneJob job{g.padded,
                      g.h0.data(),
                      g.fx.data(),
                      g.m.data(),
                      g.ladder.data(),
                      fast.structure.ladder_top,
                      g.steps,
                      g.h.data(),
                      g.hw.data(),
                      g.hb.data(),
                      g.hy.data(),
                      zero_turns ? nullptr : g.zc.data(),
                      zero_turns ? nullptr : g.zs.data(),
                      g.plan.data(),
                      g.work.data(),
                      g.re.data(),
                      g.im.data()};
    if (g.spin_half) {
        fast_kernels().spin_half(job);
    } else {
        fast_kernels().lane_product(job);
    }
    static Planes product;
    const int n = fast.structure.n;
    for (int member = 0; member < block.count; ++member) {
        join_segments(fast, member * g.segments, product);
        for (int i = 0; i < n; ++i) {
            const std::size_t to = size_of(member * n + i, n);
            std::copy_n(&product.re[product.at(i, 0)], n, &block.re[to]);
            std::copy_n(&product.im[product.at(i, 0)], n, &block.im[to]);
        }
    }
}

} // namespace

const Way kLaneWay{"lanes", prepare, compute};

} // namespace kor
