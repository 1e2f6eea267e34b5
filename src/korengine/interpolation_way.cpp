// One gradient direction: along it, the offset of step j is c_j s with one coordinate s per voxel. As a
// function of s a propagator is entire, bounded by 1 on the real axis, and its frequencies stay below
//   reach = |Fz| * sum of |c_j h_j| * (half the range of s).
// Its Chebyshev coefficients fall faster than exponentially beyond that many terms, so that a little more
// nodes give every voxel to rounding. Where voxels are many, the range is cut into panels: the nodes give
// the values at the nodes of each panel (barycentric formula), these the panel's own series, and a voxel is
// a sum of the few terms of its panel. Two voxels are also computed directly, and must agree.
// Trefethen, Approximation Theory and Approximation Practice, chapters 3 to 5 and 8.
#include "sector_plan.h"
#include "series.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace kor {

namespace {

constexpr int kFewestClasses = 3; // per node
constexpr int kTogether = 16;     // classes computed by one call
constexpr double kAgreement = 5e-14;
/// Beyond this reach the rounding of a coordinate alone turns a propagator by more than a check allows.
constexpr double kMaxReach = 4.0 * kAgreement / DBL_EPSILON;
/// Below it a gradient turns nothing, and its square has lost its digits.
constexpr double kSmallestSquare = 1e-280;
constexpr std::size_t kMostBytes = std::size_t{128} << 20;

struct Interpolation {
    VoxelPlace direction{};       // the strongest gradient, rad/s per cm
    double low = 0.0, high = 0.0; // of s
    int nodes = 0;                // on the whole range
    int panels = 1;
    int terms = 0;               // of a panel
    int width = 0;               // doubles per term: real parts, imaginary parts, padding
    AlignedDoubles coefficients; // panels x terms x width
    AlignedDoubles values;       // kTogether x width
};

Interpolation g;

double coordinate(const VoxelPlace& place) {
    return g.direction.x * place.x + g.direction.y * place.y + g.direction.z * place.z;
}

/// Sets the direction; false when the gradients have more than one, or none.
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
    return strongest > kSmallestSquare && std::all_of(steps.begin(), steps.end(), [&](const Step& step) {
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

double reach_of(const FastSector& fast) {
    const VoxelPlace& d = g.direction;
    const double square = d.x * d.x + d.y * d.y + d.z * d.z;
    double turns = 0.0; // sum of |c_j h_j|
    for (const Step& step : fast.list.steps) {
        turns += std::fabs((step.gx * d.x + step.gy * d.y + step.gz * d.z) / square * step.h);
    }
    return fast.structure.field_bound * turns * 0.5 * (g.high - g.low);
}

/// Multiply-adds per element of a propagator: the values of the panels, their series and the voxels' sums.
double work(const Interpolation& made, double classes) {
    const double rows = static_cast<double>(made.panels) * made.terms;
    return rows * (made.panels > 1 ? made.nodes + made.terms : made.terms) + classes * made.terms;
}

/// The number of panels that makes the least work.
void plan_panels(double reach, double classes) {
    g.panels = 1;
    g.terms = g.nodes;
    Interpolation finer;
    finer.nodes = g.nodes;
    for (finer.panels = 2; finer.panels <= g.nodes; finer.panels *= 2) {
        finer.terms = chebyshev_terms(reach / finer.panels);
        if (work(finer, classes) < work(g, classes)) {
            g.panels = finer.panels;
            g.terms = finer.terms;
        }
    }
}

/// The nodes, and behind them two places of the grid.
std::vector<VoxelPlace> places(const FastSector& fast) {
    const VoxelPlace& d = g.direction;
    const double square = d.x * d.x + d.y * d.y + d.z * d.z;
    std::vector<VoxelPlace> all;
    for (int k = 0; k < g.nodes; ++k) {
        const double s =
            0.5 * (g.low + g.high) + 0.5 * (g.high - g.low) * std::cos(chebyshev_angle(k, g.nodes));
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

/// The rows that give the values at the panels' nodes from those at the nodes of the whole range.
/// Trefethen, theorem 5.2: weights (-1)^j sin(angle of node j).
AlignedDoubles barycentric_rows() {
    const auto nodes = static_cast<std::size_t>(g.nodes);
    std::vector<double> node(nodes), weight(nodes);
    for (std::size_t j = 0; j < nodes; ++j) {
        const double angle = chebyshev_angle(static_cast<int>(j), g.nodes);
        node[j] = std::cos(angle);
        weight[j] = (j % 2 == 0 ? 1.0 : -1.0) * std::sin(angle);
    }
    AlignedDoubles rows(static_cast<std::size_t>(g.panels) * static_cast<std::size_t>(g.terms) * nodes);
    double* row = rows.data();
    for (int p = 0; p < g.panels; ++p) {
        for (int k = 0; k < g.terms; ++k, row += nodes) {
            const double t = (2 * p + 1 + std::cos(chebyshev_angle(k, g.terms))) / g.panels - 1.0;
            double sum = 0.0;
            for (std::size_t j = 0; j < nodes && t != node[j]; ++j) {
                row[j] = weight[j] / (t - node[j]);
                sum += row[j];
            }
            const auto hit = std::find(node.begin(), node.end(), t);
            for (std::size_t j = 0; j < nodes; ++j) {
                row[j] = hit == node.end() ? row[j] / sum : (node[j] == t ? 1.0 : 0.0);
            }
        }
    }
    return rows;
}

void make_coefficients(const AlignedDoubles& rows) {
    const auto panel = static_cast<std::size_t>(g.terms) * static_cast<std::size_t>(g.width);
    const auto panels = static_cast<std::size_t>(g.panels);
    AlignedDoubles at_panels;
    const double* values = rows.data();
    if (g.panels > 1) {
        at_panels.resize(panels * panel);
        const AlignedDoubles factor = barycentric_rows();
        fast_kernels().mix_rows(
            {g.panels * g.terms, g.nodes, g.width, factor.data(), rows.data(), at_panels.data()});
        values = at_panels.data();
    }
    g.coefficients.resize(panels * panel);
    const std::vector<double> factor = chebyshev_transform(g.terms);
    for (std::size_t p = 0; p < panels; ++p) {
        fast_kernels().mix_rows(
            {g.terms, g.terms, g.width, factor.data(), values + p * panel, &g.coefficients[p * panel]});
    }
}

/// Rows of g.values = the propagators at `count` coordinates s. The difference from the panel's middle is
/// taken first: it is exact, so that no rounding of the whole range enters.
void evaluate(const double* s, int count) {
    int panel[kTogether];
    double t[kTogether];
    const double middle = 0.5 * (g.low + g.high);
    const double half = 0.5 * (g.high - g.low);
    for (int k = 0; k < count; ++k) {
        const double across = (s[k] - g.low) / half * (0.5 * g.panels); // 0..panels
        panel[k] = std::clamp(static_cast<int>(across), 0, g.panels - 1);
        const double own_middle = middle + half * ((2 * panel[k] + 1 - g.panels) / double(g.panels));
        t[k] = std::clamp((s[k] - own_middle) / half * g.panels, -1.0, 1.0);
    }
    fast_kernels().chebyshev_sums(
        {count, g.terms, g.width, g.coefficients.data(), panel, t, g.values.data()});
}

bool agrees(const VoxelPlace& place, const double* row) {
    const double s = coordinate(place);
    evaluate(&s, 1);
    for (int e = 0; e < g.width; ++e) {
        if (!(std::fabs(g.values[static_cast<std::size_t>(e)] - row[e]) <= kAgreement)) {
            return false;
        }
    }
    return true;
}

int prepare(const FastSector&) {
    return kTogether; // prepare_interpolation has done the work
}

void compute(const FastSector& fast, ClassBlock& block) {
    const std::size_t size =
        static_cast<std::size_t>(fast.structure.n) * static_cast<std::size_t>(fast.structure.n);
    double s[kTogether];
    for (int k = 0; k < block.count; ++k) {
        s[k] = coordinate(fast.classes.place(block.first + k));
    }
    evaluate(s, block.count);
    for (std::size_t k = 0; k < static_cast<std::size_t>(block.count); ++k) {
        const double* row = &g.values[k * static_cast<std::size_t>(g.width)];
        std::copy_n(row, size, &block.re[k * size]);
        std::copy_n(row + size, size, &block.im[k * size]);
    }
}

/// Multiply-adds, roughly, of one propagator computed directly.
double direct_work(const FastSector& fast) {
    const double n = fast.structure.n;
    const double step = n == 2.0 ? 8.0 : n <= kMaxLaneStates ? 2.5 * n * n * n : 200.0 * n * n;
    return step * static_cast<double>(fast.list.steps.size());
}

/// Whether the nodes, their series and the sums cost less than half of the direct way.
bool is_worthwhile(const FastSector& fast) {
    const auto classes = static_cast<double>(fast.classes.count());
    return g.nodes * direct_work(fast) + work(g, classes) * g.width < 0.5 * classes * direct_work(fast);
}

} // namespace

bool prepare_interpolation(const Way& inner, const FastSector& fast) {
    if (fast.classes.count() < 64 || !one_direction(fast.list.steps)) {
        return false;
    }
    find_range(fast.sector.grid);
    const double reach = reach_of(fast);
    if (!(reach <= kMaxReach) || !(g.high - g.low > DBL_MIN)) {
        return false;
    }
    g.nodes = chebyshev_terms(reach);
    if (fast.classes.count() < static_cast<long long>(kFewestClasses) * g.nodes) {
        return false;
    }
    plan_panels(reach, static_cast<double>(fast.classes.count()));
    g.width = (2 * fast.structure.n * fast.structure.n + 15) / 16 * 16;
    const std::size_t bytes = 8 * static_cast<std::size_t>(g.panels) * static_cast<std::size_t>(g.terms) *
                              static_cast<std::size_t>(g.width);
    if (bytes > kMostBytes || !is_worthwhile(fast)) {
        return false;
    }
    FastSector nodes = fast;
    const std::vector<VoxelPlace> all = places(fast);
    nodes.classes.plan_places(all);
    const AlignedDoubles rows = compute_places(inner, nodes);
    make_coefficients(rows);
    g.values.resize(static_cast<std::size_t>(kTogether) * static_cast<std::size_t>(g.width));
    for (std::size_t k = static_cast<std::size_t>(g.nodes); k < all.size(); ++k) {
        if (!agrees(all[k], &rows[k * static_cast<std::size_t>(g.width)])) {
            return false;
        }
    }
    return true;
}

const Way kInterpolationWay{"interpolation", prepare, compute};

} // namespace kor
