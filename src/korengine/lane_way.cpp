// Up to 16 states: one voxel per lane; a sector with fewer classes than lanes is cut into time segments,
// so that the lanes hold (class, segment) pairs. Of a palindrome only the first half is computed. Where the
// gradient stands still, exponentials are summed as series in the field's strength (field_stretches).
#include "field_stretches.h"
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
    std::vector<FieldStretch> stretches;
    AlignedDoubles h, hw, hb, hy, zc, zs, last_c, last_s, re, im;
    std::vector<double> gx, gy, gz;

    bool empty() const { return first == end; }
};

struct LanePlan {
    int lanes = 1;
    int padded = 4; // rows of the kernel's matrices
    bool spin_half = false;
    bool turns = false; // the field's direction changes
    bool mirrored = false;
    bool one_place = false;       // the sector has a single class
    LaneRange lead, main, middle; // main is everything, or the first half of the palindrome
    AlignedDoubles h0, fx, m, work, series, x, y, z;
    std::vector<int> ladder;
};

std::vector<LanePlan> g_plans; // one per slot

std::size_t size_of(int a, int b) {
    return static_cast<std::size_t>(a) * static_cast<std::size_t>(b);
}

/// A spin 1/2 alone without a constant energy: the closed form.
bool is_spin_half(const SystemStructure& s) {
    return s.n == 2 && s.fx_at(0, 1) == 0.5 && s.h0_at(0, 1) == 0.0 && s.h0_at(0, 0) == -s.h0_at(1, 1) &&
           s.m[0] == 0.5 && s.m[1] == -0.5;
}

void pack_system(const SystemStructure& s, LanePlan& plan) {
    const int n = plan.padded;
    plan.h0.assign(size_of(n, n), 0.0);
    plan.fx.assign(size_of(n, n), 0.0);
    plan.m.assign(static_cast<std::size_t>(n), 0.0);
    plan.ladder.assign(static_cast<std::size_t>(n), 0);
    for (int i = 0; i < s.n; ++i) {
        const auto row = static_cast<std::size_t>(i);
        for (int j = 0; j < s.n; ++j) {
            plan.h0[size_of(i, n) + static_cast<std::size_t>(j)] = s.h0_at(i, j);
            plan.fx[size_of(i, n) + static_cast<std::size_t>(j)] = s.fx_at(i, j);
        }
        plan.m[row] = s.m[row];
        plan.ladder[row] = s.ladder[row];
    }
}

/// Fills the lanes that hold segment `segment` of whichever class; steps behind the end last no time.
void fill_segment(const LanePlan& plan, const StepList& list, int segment, LaneRange& range) {
    const bool own_axes = plan.spin_half && plan.turns; // the closed form needs no common direction
    const int from = range.first + segment * range.steps;
    const int count = std::clamp(range.end - from, 0, range.steps);
    double ux = 1.0, uy = 0.0; // of the step before
    for (int j = 0; j < count; ++j) {
        const Step& step = list.steps[static_cast<std::size_t>(from + j)];
        for (int lane = segment; lane < plan.lanes; lane += range.segments) {
            const std::size_t e = size_of(j, plan.lanes) + static_cast<std::size_t>(lane);
            range.h[e] = step.h;
            range.hb[e] = step.h * (own_axes ? step.bx : step.b);
            range.hy[e] = own_axes ? step.h * step.by : 0.0;
            range.zc[e] = ux * step.ux + uy * step.uy;
            range.zs[e] = ux * step.uy - uy * step.ux;
        }
        ux = step.ux;
        uy = step.uy;
    }
    for (int lane = segment; lane < plan.lanes; lane += range.segments) {
        range.last_c[static_cast<std::size_t>(lane)] = ux;
        range.last_s[static_cast<std::size_t>(lane)] = uy;
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

void prepare_range(LanePlan& plan, const StepList& list, double field_bound, int first, int end, int segments,
                   LaneRange& range) {
    range.first = first;
    range.end = end;
    range.segments = segments;
    range.steps = (end - first + segments - 1) / segments;
    const std::size_t entries = size_of(range.steps, plan.lanes);
    for (AlignedDoubles* array : {&range.h, &range.hw, &range.hb, &range.hy, &range.zs}) {
        array->assign(entries, 0.0);
    }
    range.zc.assign(entries, 1.0);
    range.last_c.resize(static_cast<std::size_t>(plan.lanes));
    range.last_s.resize(range.last_c.size());
    for (int segment = 0; segment < segments; ++segment) {
        fill_segment(plan, list, segment, range);
    }
    plan_steps(list, range);
    if (!plan.spin_half) {
        range.stretches =
            field_stretches(list.steps, {first, end, segments, range.steps, plan.one_place ? plan.lanes : 1},
                            plan.padded, field_bound, range.plan);
    }
    for (std::vector<double>* array : {&range.gx, &range.gy, &range.gz}) {
        array->resize(static_cast<std::size_t>(end - first));
    }
    for (int j = first; j < end; ++j) {
        const auto at = static_cast<std::size_t>(j - first);
        range.gx[at] = list.steps[static_cast<std::size_t>(j)].gx;
        range.gy[at] = list.steps[static_cast<std::size_t>(j)].gy;
        range.gz[at] = list.steps[static_cast<std::size_t>(j)].gz;
    }
    range.re.resize(size_of(plan.padded, plan.padded) * static_cast<std::size_t>(plan.lanes));
    range.im.resize(range.re.size());
    for (const FieldStretch& stretch : range.stretches) {
        const std::size_t size = size_of(plan.padded, plan.padded + 1) * size_of(stretch.terms, plan.lanes);
        plan.series.resize(std::max(plan.series.size(), size));
    }
}

/// As many segments, a power of two, as fill the lanes of a sector with few classes.
int segments_for(int lanes, long long classes, int steps) {
    int segments = 1;
    while (2 * segments * classes <= lanes && 2 * segments <= steps) {
        segments *= 2;
    }
    return segments;
}

int prepare(const FastSector& fast) {
    if (g_plans.size() <= fast.slot) {
        g_plans.resize(fast.slot + 1);
    }
    LanePlan& plan = g_plans[fast.slot];
    const StepList& list = fast.list;
    plan.lanes = fast_kernels().lanes;
    plan.spin_half = is_spin_half(fast.structure);
    plan.padded = plan.spin_half ? 2 : (fast.structure.n + 3) / 4 * 4;
    plan.turns = !list.fixed_direction;
    plan.one_place = fast.classes.count() == 1;
    pack_system(fast.structure, plan);
    plan.work.resize((size_of(plan.padded, plan.padded) * kLaneWorkMatrices +
                      2 * static_cast<std::size_t>(fast.structure.ladder_top + 1)) *
                     static_cast<std::size_t>(plan.lanes));
    for (AlignedDoubles* array : {&plan.x, &plan.y, &plan.z}) {
        array->resize(static_cast<std::size_t>(plan.lanes));
    }
    const auto count = static_cast<int>(list.steps.size());
    const Palindrome mirror = find_palindrome(list.steps, list.fixed_direction);
    plan.mirrored = mirror.length > 0;
    const int half = mirror.first + mirror.length / 2;
    const int used = plan.mirrored ? mirror.length / 2 : count;
    const int segments = segments_for(plan.lanes, fast.classes.count(), used);
    prepare_range(plan, list, fast.structure.field_bound, mirror.first, mirror.first + used, segments,
                  plan.main);
    prepare_range(plan, list, fast.structure.field_bound, 0, plan.mirrored ? mirror.first : 0, 1, plan.lead);
    prepare_range(plan, list, fast.structure.field_bound, half,
                  plan.mirrored ? half + mirror.length % 2 : half, 1, plan.middle);
    return plan.lanes / segments;
}

/// The place of each lane's class. A range without segments uses the first lane of each class.
void place_lanes(const FastSector& fast, const ClassBlock& block, int segments, LanePlan& plan) {
    for (int lane = 0; lane < plan.lanes; ++lane) {
        const auto l = static_cast<std::size_t>(lane);
        const VoxelPlace place = fast.classes.place(block.first + std::min(lane / segments, block.count - 1));
        plan.x[l] = place.x;
        plan.y[l] = place.y;
        plan.z[l] = place.z;
    }
}

void fill_range_offsets(const LanePlan& plan, double offset, LaneRange& range) {
    if (range.segments == 1) {
        fast_kernels().fill_offsets({range.steps, range.h.data(), range.gx.data(), range.gy.data(),
                                     range.gz.data(), offset, plan.x.data(), plan.y.data(), plan.z.data(),
                                     range.hw.data()});
        return;
    }
    for (int lane = 0; lane < plan.lanes; ++lane) {
        const auto l = static_cast<std::size_t>(lane);
        for (int j = 0; j < range.steps; ++j) {
            const std::size_t at =
                std::min(size_of(lane % range.segments, range.steps) + static_cast<std::size_t>(j),
                         range.gx.size() - 1);
            const std::size_t e = size_of(j, plan.lanes) + l;
            range.hw[e] = range.h[e] * (range.gx[at] * plan.x[l] + range.gy[at] * plan.y[l] +
                                        range.gz[at] * plan.z[l] + offset);
        }
    }
}

void run_range(const FastSector& fast, LanePlan& plan, LaneRange& range) {
    const SystemStructure& structure = fast.structure;
    const double splitting = plan.spin_half ? structure.h0_at(0, 0) - structure.h0_at(1, 1) : 0.0;
    fill_range_offsets(plan, fast.sector.samples.offset + splitting, range);
    const bool turning = plan.turns && !plan.spin_half;
    const LaneJob job{plan.padded,
                      plan.h0.data(),
                      plan.fx.data(),
                      plan.m.data(),
                      plan.ladder.data(),
                      fast.structure.ladder_top,
                      range.steps,
                      range.h.data(),
                      range.hw.data(),
                      range.hb.data(),
                      plan.spin_half && plan.turns ? range.hy.data() : nullptr,
                      turning ? range.zc.data() : nullptr,
                      turning ? range.zs.data() : nullptr,
                      range.last_c.data(),
                      range.last_s.data(),
                      range.plan.data(),
                      static_cast<int>(range.stretches.size()),
                      range.stretches.data(),
                      plan.one_place,
                      plan.series.data(),
                      plan.work.data(),
                      range.re.data(),
                      range.im.data()};
    if (plan.spin_half) {
        fast_kernels().spin_half(job);
    } else {
        fast_kernels().lane_product(job);
    }
}

void copy_lane(const LanePlan& plan, int n, int lane, const LaneRange& range, Planes& out) {
    out.shape(n);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const std::size_t e = (size_of(i, plan.padded) + static_cast<std::size_t>(j)) *
                                      static_cast<std::size_t>(plan.lanes) +
                                  static_cast<std::size_t>(lane);
            out.re[out.at(i, j)] = range.re[e];
            out.im[out.at(i, j)] = range.im[e];
        }
    }
}

/// The product of a member of the block over the range, in the common frame when the field turns.
void join_segments(const FastSector& fast, const LanePlan& plan, int member, const LaneRange& range,
                   Planes& product) {
    static Planes segment, work;
    const int n = fast.structure.n;
    for (int k = 0; k < range.segments && range.first + k * range.steps < range.end; ++k) {
        copy_lane(plan, n, member * range.segments + k, range, k == 0 ? product : segment);
        if (k > 0) {
            multiply(n, product, segment, work);
        }
    }
}

void run_ranges(const FastSector& fast, const ClassBlock& block, LanePlan& plan) {
    int placed = 0; // segments of the range that the lanes' places were last made for
    for (LaneRange* range : {&plan.lead, &plan.main, &plan.middle}) {
        if (range->empty()) {
            continue;
        }
        if (range->segments != placed) {
            place_lanes(fast, block, range->segments, plan);
            placed = range->segments;
        }
        run_range(fast, plan, *range);
    }
}

/// The turns of a single spin 1/2, one voxel per lane: joined in the lanes.
void join_lanes(const FastSector& fast, LanePlan& plan, ClassBlock& block) {
    const Step& step = fast.list.steps.front();
    LaneRange& half = plan.main;
    const auto re_of = [](const LaneRange& range) { return range.empty() ? nullptr : range.re.data(); };
    const auto im_of = [](const LaneRange& range) { return range.empty() ? nullptr : range.im.data(); };
    fast_kernels().join_turns({plan.mirrored, re_of(plan.lead), im_of(plan.lead), re_of(plan.middle),
                               im_of(plan.middle), plan.turns ? 1.0 : step.ux, plan.turns ? 0.0 : step.uy,
                               half.re.data(), half.im.data()});
    const auto lanes = static_cast<std::size_t>(plan.lanes);
    for (std::size_t lane = 0; lane < static_cast<std::size_t>(block.count); ++lane) {
        for (std::size_t e = 0; e < 4; ++e) {
            block.re[4 * lane + e] = half.re[e * lanes + lane];
            block.im[4 * lane + e] = half.im[e * lanes + lane];
        }
    }
}

void join_member(const FastSector& fast, const LanePlan& plan, int member, ClassBlock& block) {
    static Planes product, lead, middle;
    join_segments(fast, plan, member, plan.main, product);
    if (plan.mirrored) {
        join_segments(fast, plan, member, plan.lead, lead);
        join_segments(fast, plan, member, plan.middle, middle);
        join_palindrome(fast.structure.n, plan.lead.empty() ? nullptr : &lead,
                        plan.middle.empty() ? nullptr : &middle, product);
    }
    if (!plan.turns) {
        turn_ends(fast.structure, fast.list.steps.front(), fast.list.steps.back(), product);
    }
    store_class(fast.structure.n, product, member, block);
}

void compute(const FastSector& fast, ClassBlock& block) {
    LanePlan& plan = g_plans[fast.slot];
    run_ranges(fast, block, plan);
    if (plan.spin_half && plan.main.segments == 1) {
        join_lanes(fast, plan, block);
        return;
    }
    for (int member = 0; member < block.count; ++member) {
        join_member(fast, plan, member, block);
    }
}

} // namespace

const Way kLaneWay{"lanes", prepare, compute};

} // namespace kor
