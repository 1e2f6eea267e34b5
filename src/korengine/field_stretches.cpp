#include "field_stretches.h"

#include "series.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kor {

namespace {

/// Nodes and transform of as many terms, made once.
struct Nodes {
    std::vector<double> node;
    std::vector<double> to_series;
};

const Nodes& nodes_of(int terms) {
    static std::array<Nodes, kMaxFieldTerms + 1> kept;
    Nodes& nodes = kept[static_cast<std::size_t>(terms)];
    if (nodes.node.empty()) {
        for (int k = 0; k < terms; ++k) {
            nodes.node.push_back(std::cos(chebyshev_angle(k, terms)));
        }
        nodes.to_series = chebyshev_transform(terms);
    }
    return nodes;
}

bool equal_surroundings(const Step& a, const Step& b) {
    return a.h == b.h && a.gx == b.gx && a.gy == b.gy && a.gz == b.gz;
}

/// Steps begin.. of the list that have the surroundings of the first of them, at most up to `end`.
int end_of_stretch(const std::vector<Step>& steps, int begin, int end) {
    int at = begin + 1;
    while (at < end &&
           equal_surroundings(steps[static_cast<std::size_t>(begin)], steps[static_cast<std::size_t>(at)])) {
        ++at;
    }
    return at;
}

/// Multiply-adds of an exponential by polynomials: products of which a triangle is computed, and sums.
double work_of(const StepPlan& plan, int n) {
    const TrigPolynomial& p = *plan.polynomial;
    const int products = p.powers + (p.high ? 3 : 1) + 3 * plan.squarings;
    const int degree = p.high ? 2 * p.powers : p.powers;
    return 0.5 * n * (n + 1) * (static_cast<double>(n) * products + 2.0 * degree + 2.0);
}

/// The next number of terms for which the kernels have a loop of its own; beyond ten any will do.
int convenient(int terms) {
    for (const int made : {4, 5, 6, 8, 10}) {
        if (terms <= made) {
            return made;
        }
    }
    return terms;
}

/// A narrower range of the field, as part of its size, would lose its nodes and its ends to rounding.
constexpr double kNarrowest = 1e-6;
/// Half a range, in rad, that changes nothing and of which the reciprocal may overflow.
constexpr double kNegligible = 1e-200;

/// Fills everything but the positions from steps begin..end - 1.
FieldStretch series_for(const std::vector<Step>& steps, int begin, int end, double field_bound) {
    double low = steps[static_cast<std::size_t>(begin)].b;
    double high = low;
    double angle = 0.0;
    for (int at = begin; at < end; ++at) {
        const Step& step = steps[static_cast<std::size_t>(at)];
        low = std::min(low, step.b);
        high = std::max(high, step.b);
        angle = std::max(angle, step.angle);
    }
    const double h = steps[static_cast<std::size_t>(begin)].h;
    FieldStretch stretch{};
    stretch.middle = h * (0.5 * (low + high));
    const double width = high > low ? std::max(high - low, kNarrowest * std::max(high, -low)) : 0.0;
    stretch.half = std::fabs(h) * (0.5 * width);
    stretch.half = stretch.half > kNegligible ? stretch.half : 0.0;
    stretch.terms = convenient(chebyshev_terms(field_bound * stretch.half));
    stretch.plan = plan_step(angle);
    return stretch;
}

/// Whether the nodes and sums cost less than half of the exponentials of `rows` rows of steps.
bool is_worthwhile(const FieldStretch& stretch, int nodes_at_once, int rows, int n, const StepPlan& step) {
    const int exponentials = (stretch.terms + nodes_at_once - 1) / nodes_at_once;
    const double sum = static_cast<double>(stretch.terms) * n * (n + 1);
    return stretch.terms <= kMaxFieldTerms &&
           exponentials * work_of(stretch.plan, n) + (stretch.terms + rows) * sum <
               0.5 * rows * work_of(step, n);
}

} // namespace

std::vector<FieldStretch> field_stretches(const std::vector<Step>& steps, const StepRange& range, int n,
                                          double field_bound, const std::vector<StepPlan>& plan) {
    std::vector<FieldStretch> stretches;
    const auto add = [&](int begin, int end, int rows) {
        FieldStretch stretch = series_for(steps, begin, end, field_bound);
        stretch.first = begin - range.first;
        stretch.end = stretch.first + rows;
        if (is_worthwhile(stretch, range.nodes_at_once, rows, n,
                          plan[static_cast<std::size_t>(stretch.first)])) {
            const Nodes& nodes = nodes_of(stretch.terms);
            stretch.node = nodes.node.data();
            stretch.to_series = nodes.to_series.data();
            stretches.push_back(stretch);
        }
    };
    if (range.segments > 1) {
        const int shortest = range.end - range.first - (range.segments - 1) * range.steps;
        if (shortest > 0 && end_of_stretch(steps, range.first, range.end) == range.end) {
            add(range.first, range.end, shortest);
        }
        return stretches;
    }
    for (int begin = range.first; begin < range.end;) {
        const int end = end_of_stretch(steps, begin, range.end);
        add(begin, end, end - begin);
        begin = end;
    }
    return stretches;
}

} // namespace kor
