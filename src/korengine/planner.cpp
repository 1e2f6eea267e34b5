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

FastSector g_fast;
const Way* g_way = nullptr; // null: the reference
bool g_identity = false;
int g_block_classes = 1;
std::vector<ClassBlock> g_kept; // slot = number of the block modulo the slots

const Way* choose_way() {
    const EngineSector& sector = g_fast.sector;
    if (!analyse_system(sector.system, g_fast.structure)) {
        return nullptr;
    }
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
    const std::size_t block_bytes = 16 * n * n * static_cast<std::size_t>(g_block_classes);
    const long long blocks = (g_fast.classes.count() + g_block_classes - 1) / g_block_classes;
    const std::size_t slots =
        std::clamp<std::size_t>(kKeptBytes / block_bytes, 1, static_cast<std::size_t>(blocks));
    g_kept.resize(slots);
    for (ClassBlock& block : g_kept) {
        block.first = -1;
    }
}

void fast_open_sector(const EngineSector& sector) {
    g_fast.sector = sector;
    g_identity = sector.samples.count < 1;
    if (g_identity) {
        return;
    }
    g_way = choose_way();
    if (!g_way) {
        kReferenceEngine.open_sector(sector);
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
    const long long voxel_class = g_fast.classes.of(ix, iy, iz);
    const ClassBlock& block = block_of(voxel_class);
    const auto size = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
    const double* re = &block.re[static_cast<std::size_t>(voxel_class - block.first) * size];
    const double* im = &block.im[static_cast<std::size_t>(voxel_class - block.first) * size];
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            r[i][j][1] = *re++;
            r[i][j][2] = *im++;
        }
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

const EngineOperations kFastEngine{fast_open_sector, fast_sector_propagator, fast_rotate,
                                   fast_sample_free_evolution};

} // namespace kor
