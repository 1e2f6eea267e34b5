// One gradient direction: along it, the offset of step j is c_j s with one coordinate s per voxel, and a
// propagator is an entire function of s whose frequencies stay below
//   reach = |Fz| * sum of |c_j h_j| * (half the range of s).
// Its Chebyshev coefficients fall faster than exponentially beyond that many terms, so that a little more
// nodes give every voxel to rounding. Two voxels are also computed directly, and must agree.
// Trefethen, Approximation Theory and Approximation Practice, chapters 3, 4 and 8.
#include "sector_plan.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace kor {

namespace {

constexpr int kFewestClasses = 3; // per node
constexpr double kAgreement = 5e-14;
constexpr std::size_t kMostBytes = std::size_t{128} << 20;

struct Interpolation {
    VoxelPlace direction{};       // the strongest gradient, rad/s per cm
    double low = 0.0, high = 0.0; // of s
    int terms = 0;
    int width = 0; // doubles per term: real parts, imaginary parts, padding
    AlignedDoubles coefficients;
    AlignedDoubles values; // of one place
};

Interpolation g;

double coordinate(const VoxelPlace& place) {
    return g.direction.x * place.x + g.direction.y * place.y + g.direction.z * place.z;
}

/// Sets the direction; false when the gradients have more than one.
bool one_direction(const std::vector<Step>& steps) {
    double strongest = 0.0;
    for (const Step& step : steps) {
        const double size = step.gx * step.gx + step.gy * step.gy + step.gz * step.gz;
        if (size > strongest) {
            strongest = size;
            g.direction = {step.gx, step.gy, step.gz};
        }
    }
    const VoxelPlace& d = g.direction;
    return strongest > 0.0 && std::all_of(steps.begin(), steps.end(), [&](const Step& step) {
               const double across = std::fabs(step.gx * d.y - step.gy * d.x) +
                                     std::fabs(step.gy * d.z - step.gz * d.y) +
                                     std::fabs(step.gz * d.x - step.gx * d.z);
               return across <= 8.0 * DBL_EPSILON * strongest;
           });
}

/// The range of s over the grid, from its corners.
void find_range(const EngineGrid& grid) {
    g.low = DBL_MAX;
    g.high = -DBL_MAX;
    for (const int ix : {0, grid.ndx - 1}) {
        for (const int iy : {0, grid.ndy - 1}) {
            for (const int iz : {0, grid.ndz - 1}) {
                const double s =
                    coordinate({ix * grid.dx + grid.x0, iy * grid.dy + grid.y0, iz * grid.dz + grid.z0});
                g.low = std::min(g.low, s);
                g.high = std::max(g.high, s);
            }
        }
    }
}

int terms_for(const FastSector& fast) {
    const VoxelPlace& d = g.direction;
    const double square = d.x * d.x + d.y * d.y + d.z * d.z;
    double turns = 0.0; // sum of |c_j h_j|
    for (const Step& step : fast.list.steps) {
        turns += std::fabs((step.gx * d.x + step.gy * d.y + step.gz * d.z) / square * step.h);
    }
    const double reach = fast.structure.field_bound * turns * 0.5 * (g.high - g.low);
    return reach < 1e6 ? static_cast<int>(reach + 12.0 * std::cbrt(reach)) + 12 : 1 << 24;
}

/// Node k of the Chebyshev points of the first kind, -1..1.
double node(int k) {
    return std::cos(KOR_PI * (k + 0.5) / g.terms);
}

/// The nodes, and behind them two places of the grid.
std::vector<VoxelPlace> places(const FastSector& fast) {
    const VoxelPlace& d = g.direction;
    const double square = d.x * d.x + d.y * d.y + d.z * d.z;
    std::vector<VoxelPlace> all;
    for (int k = 0; k < g.terms; ++k) {
        const double s = 0.5 * (g.low + g.high) + 0.5 * (g.high - g.low) * node(k);
        all.push_back({d.x * (s / square), d.y * (s / square), d.z * (s / square)});
    }
    const long long count = fast.classes.count();
    all.push_back(fast.classes.place(count / 3));
    all.push_back(fast.classes.place(count - 1 - count / 7));
    return all;
}

/// Propagators at every place, one row of g.width doubles each.
AlignedDoubles compute_places(const Way& inner, FastSector& fast) {
    const std::size_t size =
        static_cast<std::size_t>(fast.structure.n) * static_cast<std::size_t>(fast.structure.n);
    const auto width = static_cast<std::size_t>(g.width);
    const long long count = fast.classes.count();
    AlignedDoubles rows(static_cast<std::size_t>(count) * width, 0.0);
    const int together = inner.prepare(fast);
    ClassBlock block;
    block.shape(fast.structure.n, together);
    for (long long first = 0; first < count; first += together) {
        block.first = first;
        block.count = static_cast<int>(std::min<long long>(together, count - first));
        inner.compute(fast, block);
        for (std::size_t k = 0; k < static_cast<std::size_t>(block.count); ++k) {
            double* row = &rows[(static_cast<std::size_t>(first) + k) * width];
            std::copy_n(&block.re[k * size], size, row);
            std::copy_n(&block.im[k * size], size, row + size);
        }
    }
    return rows;
}

/// Coefficient k = (2 - [k = 0]) / terms times the sum over the nodes of value cos(k angle of the node).
void make_coefficients(const AlignedDoubles& rows) {
    const auto width = static_cast<std::size_t>(g.width);
    const auto terms = static_cast<std::size_t>(g.terms);
    std::vector<double> cosines(4 * terms); // of i pi / (2 terms)
    for (std::size_t i = 0; i < cosines.size(); ++i) {
        cosines[i] = std::cos(KOR_PI * static_cast<double>(i) / (2.0 * g.terms));
    }
    g.coefficients.assign(terms * width, 0.0);
    for (std::size_t k = 0; k < terms; ++k) {
        double* out = &g.coefficients[k * width];
        for (std::size_t j = 0; j < terms; ++j) {
            const double factor = (k == 0 ? 1.0 : 2.0) / g.terms * cosines[k * (2 * j + 1) % cosines.size()];
            const double* row = &rows[j * width];
            for (std::size_t e = 0; e < width; ++e) {
                out[e] += factor * row[e];
            }
        }
    }
}

/// g.values = the propagator at s.
void evaluate(double s) {
    const double t = std::clamp((2.0 * s - g.low - g.high) / (g.high - g.low), -1.0, 1.0);
    fast_kernels().chebyshev_sum({g.terms, g.width, g.coefficients.data(), t, g.values.data()});
}

bool agrees(const VoxelPlace& place, const double* row) {
    evaluate(coordinate(place));
    double worst = 0.0;
    for (int e = 0; e < g.width; ++e) {
        worst = std::max(worst, std::fabs(g.values[static_cast<std::size_t>(e)] - row[e]));
    }
    return worst <= kAgreement;
}

int prepare(const FastSector&) {
    return 1; // prepare_interpolation has done it
}

void compute(const FastSector& fast, ClassBlock& block) {
    const std::size_t size =
        static_cast<std::size_t>(fast.structure.n) * static_cast<std::size_t>(fast.structure.n);
    evaluate(coordinate(fast.classes.place(block.first)));
    std::copy_n(g.values.data(), size, block.re.data());
    std::copy_n(g.values.data() + size, size, block.im.data());
}

/// Multiply-adds, roughly, of one propagator computed directly.
double direct_work(const FastSector& fast) {
    const double n = fast.structure.n;
    const double step = n == 2.0 ? 8.0 : n <= kMaxLaneStates ? 2.5 * n * n * n : 200.0 * n * n;
    return step * static_cast<double>(fast.list.steps.size());
}

/// Whether the nodes, their coefficients and the sums cost less than half of the direct way.
bool is_worthwhile(const FastSector& fast) {
    const auto classes = static_cast<double>(fast.classes.count());
    const double sum = static_cast<double>(g.terms) * g.width;
    return g.terms * direct_work(fast) + (4.0 * g.terms + classes) * sum < 0.5 * classes * direct_work(fast);
}

} // namespace

bool prepare_interpolation(const Way& inner, const FastSector& fast) {
    if (fast.classes.count() < 64 || !one_direction(fast.list.steps)) {
        return false;
    }
    find_range(fast.sector.grid);
    g.terms = terms_for(fast);
    g.width = (2 * fast.structure.n * fast.structure.n + 15) / 16 * 16;
    const std::size_t bytes = 8 * static_cast<std::size_t>(g.terms) * static_cast<std::size_t>(g.width);
    if (fast.classes.count() < static_cast<long long>(kFewestClasses) * g.terms || bytes > kMostBytes ||
        !(g.high > g.low) || !is_worthwhile(fast)) {
        return false;
    }
    FastSector nodes = fast;
    const std::vector<VoxelPlace> all = places(fast);
    nodes.classes.plan_places(all);
    const AlignedDoubles rows = compute_places(inner, nodes);
    make_coefficients(rows);
    g.values.assign(static_cast<std::size_t>(g.width), 0.0);
    for (std::size_t k = static_cast<std::size_t>(g.terms); k < all.size(); ++k) {
        if (!agrees(all[k], &rows[k * static_cast<std::size_t>(g.width)])) {
            return false;
        }
    }
    return true;
}

const Way kInterpolationWay{"interpolation", prepare, compute};

} // namespace kor
