// Up to 16 states: one voxel per lane; a sector with fewer classes than lanes is cut into time segments,
// so that the lanes hold (class, segment) pairs. Of a palindrome only the first half is computed.
#include "join.h"
#include "sector_plan.h"
#include "series.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kor {

namespace {

/// Steps first..end - 1 laid out for the kernels.
struct LaneRange {
    int first = 0, end = 0;
    int segments = 1; // per class
    int steps = 0;    // of a segment
    std::vector<StepPlan> plan;
    AlignedDoubles h, hw, hb, hy, zc, zs, re, im;
    std::vector<double> gx, gy, gz;

    bool empty() const { return first == end; }
};

struct LanePlan {
    int lanes = 1;
    int padded = 4; // rows of the kernel's matrices
    bool spin_half = false;
    bool turns = false; // the field's direction changes
    bool mirrored = false;
    LaneRange lead, main, middle; // main is everything, or the first half of the palindrome
    AlignedDoubles h0, fx, m, work, x, y, z;
    std::vector<int> ladder;
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

/// Fills the lanes that hold segment `segment` of whichever class; steps behind the end last no time.
void fill_segment(const StepList& list, int segment, LaneRange& range) {
    for (int j = 0; j < range.steps && range.first + segment * range.steps + j < range.end; ++j) {
        const int at = range.first + segment * range.steps + j;
        const Step& step = list.steps[static_cast<std::size_t>(at)];
        const Step& before = list.steps[static_cast<std::size_t>(std::max(at - 1, 0))];
        const bool own_axes = g.spin_half && g.turns; // the closed form needs no common direction
        for (int lane = segment; lane < g.lanes; lane += range.segments) {
            const std::size_t e = size_of(j, g.lanes) + static_cast<std::size_t>(lane);
            range.h[e] = step.h;
            range.hb[e] = step.h * (own_axes ? step.bx : step.b);
            range.hy[e] = own_axes ? step.h * step.by : 0.0;
            range.zc[e] = before.ux * step.ux + before.uy * step.uy;
            range.zs[e] = before.ux * step.uy - before.uy * step.ux;
        }
    }
}

/// One polynomial per row of steps, from the bounds over the whole grid.
void plan_steps(const StepList& list, LaneRange& range) {
    range.plan.resize(static_cast<std::size_t>(range.steps));
    for (int j = 0; j < range.steps; ++j) {
        double angle = 0.0;
        for (int at = range.first + j; at < range.end; at += range.steps) {
            angle = std::max(angle, list.steps[static_cast<std::size_t>(at)].angle);
        }
        range.plan[static_cast<std::size_t>(j)] = plan_step(angle);
    }
}

void prepare_range(const StepList& list, int first, int end, int segments, LaneRange& range) {
    range.first = first;
    range.end = end;
    range.segments = segments;
    range.steps = (end - first + segments - 1) / segments;
    const std::size_t entries = size_of(range.steps, g.lanes);
    for (AlignedDoubles* array : {&range.h, &range.hw, &range.hb, &range.hy, &range.zs}) {
        array->assign(entries, 0.0);
    }
    range.zc.assign(entries, 1.0);
    for (int segment = 0; segment < segments; ++segment) {
        fill_segment(list, segment, range);
    }
    plan_steps(list, range);
    for (std::vector<double>* array : {&range.gx, &range.gy, &range.gz}) {
        array->clear();
    }
    for (int j = first; j < end; ++j) {
        range.gx.push_back(list.steps[static_cast<std::size_t>(j)].gx);
        range.gy.push_back(list.steps[static_cast<std::size_t>(j)].gy);
        range.gz.push_back(list.steps[static_cast<std::size_t>(j)].gz);
    }
    range.re.resize(size_of(g.padded, g.padded) * static_cast<std::size_t>(g.lanes));
    range.im.resize(range.re.size());
}

/// As many segments, a power of two, as fill the lanes of a sector with few classes.
int segments_for(long long classes, int steps) {
    int segments = 1;
    while (2 * segments * classes <= g.lanes && 2 * segments <= steps) {
        segments *= 2;
    }
    return segments;
}

int prepare(const FastSector& fast) {
    const StepList& list = fast.list;
    g.lanes = fast_kernels().lanes;
    g.spin_half = is_spin_half(fast.structure);
    g.padded = g.spin_half ? 2 : (fast.structure.n + 3) / 4 * 4;
    g.turns = !list.fixed_direction;
    pack_system(fast.structure);
    g.work.resize((size_of(g.padded, g.padded) * kLaneWorkMatrices +
                   2 * static_cast<std::size_t>(fast.structure.ladder_top + 1)) *
                  static_cast<std::size_t>(g.lanes));
    for (AlignedDoubles* array : {&g.x, &g.y, &g.z}) {
        array->resize(static_cast<std::size_t>(g.lanes));
    }
    const auto count = static_cast<int>(list.steps.size());
    const Palindrome mirror = find_palindrome(list.steps, list.fixed_direction);
    g.mirrored = mirror.length > 0;
    const int half = mirror.first + mirror.length / 2;
    const int used = g.mirrored ? mirror.length / 2 : count;
    const int segments = segments_for(fast.classes.count(), used);
    prepare_range(list, mirror.first, mirror.first + used, segments, g.main);
    prepare_range(list, 0, g.mirrored ? mirror.first : 0, 1, g.lead);
    prepare_range(list, half, g.mirrored ? half + mirror.length % 2 : half, 1, g.middle);
    return g.lanes / segments;
}

/// The place of each lane's class. A range without segments uses the first lane of each class.
void place_lanes(const FastSector& fast, const ClassBlock& block, int segments) {
    for (int lane = 0; lane < g.lanes; ++lane) {
        const auto l = static_cast<std::size_t>(lane);
        const VoxelPlace place = fast.classes.place(block.first + std::min(lane / segments, block.count - 1));
        g.x[l] = place.x;
        g.y[l] = place.y;
        g.z[l] = place.z;
    }
}

void fill_range_offsets(double offset, LaneRange& range) {
    if (range.segments == 1) {
        fast_kernels().fill_offsets({range.steps, range.h.data(), range.gx.data(), range.gy.data(),
                                     range.gz.data(), offset, g.x.data(), g.y.data(), g.z.data(),
                                     range.hw.data()});
        return;
    }
    for (int lane = 0; lane < g.lanes; ++lane) {
        const auto l = static_cast<std::size_t>(lane);
        for (int j = 0; j < range.steps; ++j) {
            const std::size_t at =
                std::min(size_of(lane % range.segments, range.steps) + static_cast<std::size_t>(j),
                         range.gx.size() - 1);
            const std::size_t e = size_of(j, g.lanes) + l;
            range.hw[e] =
                range.h[e] * (range.gx[at] * g.x[l] + range.gy[at] * g.y[l] + range.gz[at] * g.z[l] + offset);
        }
    }
}

void run_range(const FastSector& fast, const ClassBlock& block, LaneRange& range) {
    if (range.empty()) {
        return;
    }
    place_lanes(fast, block, range.segments);
    fill_range_offsets(fast.sector.samples.offset, range);
    const bool turning = g.turns && !g.spin_half;
    const LaneJob job{g.padded,
                      g.h0.data(),
                      g.fx.data(),
                      g.m.data(),
                      g.ladder.data(),
                      fast.structure.ladder_top,
                      range.steps,
                      range.h.data(),
                      range.hw.data(),
                      range.hb.data(),
                      range.hy.data(),
                      turning ? range.zc.data() : nullptr,
                      turning ? range.zs.data() : nullptr,
                      range.plan.data(),
                      g.work.data(),
                      range.re.data(),
                      range.im.data()};
    if (g.spin_half) {
        fast_kernels().spin_half(job);
    } else {
        fast_kernels().lane_product(job);
    }
}

void copy_lane(int n, int lane, const LaneRange& range, Planes& out) {
    out.shape(n);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const std::size_t e =
                (size_of(i, g.padded) + static_cast<std::size_t>(j)) * static_cast<std::size_t>(g.lanes) +
                static_cast<std::size_t>(lane);
            out.re[out.at(i, j)] = range.re[e];
            out.im[out.at(i, j)] = range.im[e];
        }
    }
}

/// The product of a member of the block over the range, in the common frame when the field turns.
void join_segments(const FastSector& fast, int member, const LaneRange& range, Planes& product) {
    static Planes segment, work;
    const SystemStructure& s = fast.structure;
    const std::vector<Step>& steps = fast.list.steps;
    for (int k = 0; k < range.segments && range.first + k * range.steps < range.end; ++k) {
        Planes& part = k == 0 ? product : segment;
        copy_lane(s.n, member * range.segments + k, range, part);
        if (g.turns && !g.spin_half) {
            const int from = range.first + k * range.steps;
            const int last = std::min(from + range.steps, range.end) - 1;
            turn_ends(s, steps[static_cast<std::size_t>(from)], steps[static_cast<std::size_t>(last)], part);
        }
        if (k > 0) {
            multiply(s.n, product, segment, work);
        }
    }
}

void compute(const FastSector& fast, ClassBlock& block) {
    static Planes product, lead, middle;
    const int n = fast.structure.n;
    for (LaneRange* range : {&g.lead, &g.main, &g.middle}) {
        run_range(fast, block, *range);
    }
    for (int member = 0; member < block.count; ++member) {
        join_segments(fast, member, g.main, product);
        if (g.mirrored) {
            join_segments(fast, member, g.lead, lead);
            join_segments(fast, member, g.middle, middle);
            join_palindrome(n, g.lead.empty() ? nullptr : &lead, g.middle.empty() ? nullptr : &middle,
                            product);
        }
        if (!g.turns) {
            turn_ends(fast.structure, fast.list.steps.front(), fast.list.steps.back(), product);
        }
        store_class(n, product, member, block);
    }
}

} // namespace

const Way kLaneWay{"lanes", prepare, compute};

} // namespace kor
