// The fast engine. A sector is looked at once, when it is opened, and takes the first way that fits:
//   1. operators or samples that the fast ways do not cover    the reference engine
//   2. no samples, or samples of no length                     the identity
//   3. no RF at all                                            exact phases (free_precession)
//   4. interchangeable spins 1/2                               smaller systems (equivalent_way), each by
//   5. up to 16 states                                         one voxel or time segment per lane (lane_way)
//   6. more states                                             Chebyshev series on columns (column_way)
// Runs of equal samples are one step (steps); voxels with equal offsets share one propagator
// (voxel_classes), and where one gradient direction makes far more classes than the propagators have
// features along it, 4 to 6 compute nodes of an interpolation (interpolation_way). These are common to all
// ways. Propagators are computed when they are first asked for and kept as long as memory allows.
#include "engines.h"
#include "rotation.h"
#include "sector_plan.h"
#include "series.h"

#include <algorithm>
#include <cfloat>
#include <cstddef>

namespace kor {

namespace {

/// Beyond this |H dt| the reference's exponential stops halving, and what it gives is its own.
constexpr double kMaxReferenceNorm = 0.5 * (1 << 24);
/// Beyond this |H dt| the squarings of the reference are cheaper than the columns' long series.
constexpr double kMaxColumnNorm = 1024.0;
constexpr std::size_t kKeptBytes = std::size_t{128} << 20;
/// What a block's record and its two allocations take beside the propagators.
constexpr std::size_t kBlockOverhead = 384;

FastSector g_fast;
const Way* g_way = nullptr; // null: the reference
bool g_identity = false;
int g_block_classes = 1;
std::vector<ClassBlock> g_kept; // slot = number of the block modulo the slots

/// For the sector in g_fast, its operators being analysed.
const Way* choose_way() {
    const EngineSector& sector = g_fast.sector;
    const bool small = sector.system.n <= kMaxLaneStates;
    plan_sector(small ? kLaneWay : kColumnWay, g_fast);
    if (!(g_fast.list.reference_norm <= kMaxReferenceNorm)) {
        return nullptr;
    }
    if (!g_fast.list.any_field) {
        return &kFreePrecessionWay;
    }
    if (!small && g_fast.list.reference_norm > kMaxColumnNorm) {
        return nullptr;
    }
    if (has_equivalent_spins(g_fast)) {
        return &kEquivalentWay;
    }
    return small ? &kLaneWay : &kColumnWay;
}

void make_room_for_blocks() {
    const auto n = static_cast<std::size_t>(g_fast.structure.n);
    const std::size_t block_bytes = 16 * n * n * static_cast<std::size_t>(g_block_classes) + kBlockOverhead;
    const long long blocks = (g_fast.classes.count() + g_block_classes - 1) / g_block_classes;
    const std::size_t slots =
        std::clamp<std::size_t>(kKeptBytes / block_bytes, 1, static_cast<std::size_t>(blocks));
    g_kept.resize(slots);
    for (ClassBlock& block : g_kept) {
        block.first = -1;
    }
}

/// Plans the sector in g_fast; `covered` when its operators could be analysed.
void plan_open_sector(bool covered) {
    g_identity = false;
    g_way = covered ? choose_way() : nullptr;
    if (!g_way) {
        kReferenceEngine.open_sector(g_fast.sector);
        return;
    }
    g_identity = g_fast.list.steps.empty();
    if (g_identity) {
        return;
    }
    if (g_way != &kFreePrecessionWay && prepare_interpolation(*g_way, g_fast)) {
        g_way = &kInterpolationWay;
    }
    g_block_classes = g_way->prepare(g_fast);
    make_room_for_blocks();
}

void fast_open_sector(const EngineSector& sector) {
    g_fast.sector = sector;
    g_identity = sector.samples.count < 1;
    if (!g_identity) {
        plan_open_sector(analyse_system(sector.system, g_fast.structure));
    }
}

const ClassBlock& block_of(long long voxel_class) {
    const long long number = voxel_class / g_block_classes;
    ClassBlock& block = g_kept[static_cast<std::size_t>(number) % g_kept.size()];
    const long long first = number * g_block_classes;
    if (block.first != first) {
        block.first = first;
        block.count = static_cast<int>(std::min<long long>(g_block_classes, g_fast.classes.count() - first));
        block.shape(g_fast.structure.n, g_block_classes);
        g_way->compute(g_fast, block);
    }
    return block;
}

/// Of a class of the open sector: n x n without padding.
struct PropagatorPlanes {
    const double* re;
    const double* im;
};

PropagatorPlanes propagator_of(long long voxel_class) {
    const auto n = static_cast<std::size_t>(g_fast.sector.system.n);
    const ClassBlock& block = block_of(voxel_class);
    const std::size_t from = static_cast<std::size_t>(voxel_class - block.first) * n * n;
    return {&block.re[from], &block.im[from]};
}

PropagatorPlanes identity_planes() {
    static std::vector<double> one, zero;
    const auto n = static_cast<std::size_t>(g_fast.sector.system.n);
    one.assign(n * n, 0.0);
    zero.assign(n * n, 0.0);
    for (std::size_t i = 0; i < n; ++i) {
        one[i * n + i] = 1.0;
    }
    return {one.data(), zero.data()};
}

void fast_sector_propagator(int ix, int iy, int iz, CMatrix& r) {
    const int n = g_fast.sector.system.n;
    if (g_identity) {
        CMatIdentity(n, r);
        return;
    }
    if (!g_way) {
        kReferenceEngine.sector_propagator(ix, iy, iz, r);
        return;
    }
    const PropagatorPlanes planes = propagator_of(g_fast.classes.of(ix, iy, iz));
    from_dense_planes(n, planes.re, planes.im, r);
}

void fast_rotate_voxels(long long first, int count, double* states) {
    if (!g_identity && !g_way) {
        kReferenceEngine.rotate_voxels(first, count, states);
        return;
    }
    const int n = g_fast.sector.system.n;
    for (int done = 0; done < count;) {
        const long long voxel = first - 1 + done;
        const long long alike = g_identity ? count : g_fast.classes.alike_from(voxel);
        const int run = static_cast<int>(std::min<long long>(alike, count - done));
        const PropagatorPlanes planes =
            g_identity ? identity_planes() : propagator_of(g_fast.classes.of_number(voxel));
        rotate_by_planes(n, planes.re, planes.im, run,
                         states + static_cast<std::size_t>(done) * state_doubles(n));
        done += run;
    }
}

/// Rows of a sector without RF differ in their time only: `steps` are those of one sector time.
void stretch_free_steps(const std::vector<Step>& steps, int times) {
    for (std::size_t k = 0; k < steps.size(); ++k) {
        g_fast.list.steps[k].h = times * steps[k].h;
    }
    g_way->prepare(g_fast);
    g_kept.front().first = -1;
}

void fast_rotate_rows(const EngineSector& sector, int first, int count, double* states) {
    static std::vector<Step> once;
    const std::size_t state = state_doubles(sector.system.n);
    g_fast.sector = sector;
    const bool covered = analyse_system(sector.system, g_fast.structure);
    plan_open_sector(covered);
    const double longest = g_fast.list.reference_norm * (first + count);
    const bool free = !g_identity && g_way == &kFreePrecessionWay && longest <= kMaxReferenceNorm;
    once = g_fast.list.steps;
    for (int k = 0; k < count; ++k) {
        const int times = first + k - 1;
        g_fast.sector.samples.dt = times * sector.samples.dt;
        if (free) {
            g_identity = times == 0;
            stretch_free_steps(once, times);
        } else {
            plan_open_sector(covered);
        }
        fast_rotate_voxels(1, 1, states + static_cast<std::size_t>(k) * state);
    }
}

} // namespace

void store_class(int n, const Planes& product, int member, ClassBlock& block) {
    const auto width = static_cast<std::size_t>(n);
    for (int i = 0; i < n; ++i) {
        const std::size_t to =
            (static_cast<std::size_t>(member) * width + static_cast<std::size_t>(i)) * width;
        std::copy_n(&product.re[product.at(i, 0)], n, &block.re[to]);
        std::copy_n(&product.im[product.at(i, 0)], n, &block.im[to]);
    }
}

void plan_sector(const Way& way, FastSector& fast) {
    make_steps(fast.sector, fast.structure, &way == &kColumnWay ? kMaxChebyshevRadius : DBL_MAX, fast.list);
    fast.classes.plan(fast.sector.grid, fast.list);
}

const char* fast_plan() {
    if (g_identity) {
        return "identity";
    }
    if (g_way == &kColumnWay && g_fast.structure.binary_spins > 0) {
        return "binary columns";
    }
    return g_way ? g_way->name : "reference";
}

const EngineOperations kFastEngine{fast_open_sector,           fast_sector_propagator, fast_rotate,
                                   fast_rotate_states,         fast_rotate_voxels,     fast_rotate_rows,
                                   fast_sample_free_evolution, fast_sample_states};

} // namespace kor
