#include "steps.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <utility>

namespace kor {

namespace {

/// Largest distance from 0 on each axis of the grid, cm.
struct Reach {
    double x, y, z;
};

/// Not a number when the last place is not one.
double axis_reach(int count, double first, double step) {
    return std::max(std::fabs((count - 1) * step + first), std::fabs(first));
}

Step sample_as_step(const EngineSamples& samples, int j) {
    Step step{};
    step.h = samples.dt;
    step.bx = samples.xb[j];
    step.by = samples.yb[j];
    if (samples.gx) {
        step.gx = samples.gx[j];
        step.gy = samples.gy[j];
        step.gz = samples.gz[j];
    }
    return step;
}

double largest_offset(const Step& step, const Reach& reach, double offset) {
    return std::fabs(step.gx) * reach.x + std::fabs(step.gy) * reach.y + std::fabs(step.gz) * reach.z +
           std::fabs(offset);
}

bool without_field(const Step& step) {
    return step.bx == 0.0 && step.by == 0.0;
}

bool equal_samples(const Step& a, const Step& b) {
    return a.bx == b.bx && a.by == b.by && a.gx == b.gx && a.gy == b.gy && a.gz == b.gz;
}

/// The samples of the last step, all of one length. The sums of several carry more digits than the step: a
/// duration summed in the step's own would drift with every sample, by as much as 1e-13 of itself.
struct JoinedSamples {
    int count = 0;
    long double gx = 0.0L, gy = 0.0L, gz = 0.0L; // from the second sample on
};

/// Joins `next` to `step`: equal samples last longer, and without RF all commutes, so that the mean gradient
/// serves. `samples` are those of the step, before and after.
void join(Step& step, const Step& next, JoinedSamples& samples) {
    if (samples.count == 1) {
        samples.gx = step.gx;
        samples.gy = step.gy;
        samples.gz = step.gz;
    }
    ++samples.count;
    samples.gx += next.gx;
    samples.gy += next.gy;
    samples.gz += next.gz;
    if (!equal_samples(step, next)) {
        step.gx = static_cast<double>(samples.gx / samples.count);
        step.gy = static_cast<double>(samples.gy / samples.count);
        step.gz = static_cast<double>(samples.gz / samples.count);
    }
    step.h = samples.count * next.h;
    step.angle += next.angle;
}

/// `samples` are those of the last step, before and after.
void append(const Step& step, double max_angle, std::vector<Step>& steps, JoinedSamples& samples) {
    Step* last = steps.empty() ? nullptr : &steps.back();
    const bool joins = last && (equal_samples(*last, step) || (without_field(*last) && without_field(step)));
    if (joins && last->angle + step.angle <= max_angle) {
        join(*last, step, samples);
    } else {
        steps.push_back(step);
        samples.count = 1;
    }
}

/// A field that turns nothing keeps a fixed direction: that of noise would be noise.
void set_own_direction(Step& step) {
    step.b = plane_length(step.bx, step.by);
    const bool directed = step.b > DBL_MIN;
    step.ux = directed ? step.bx / step.b : 1.0;
    step.uy = directed ? step.by / step.b : 0.0;
}

void set_directions(StepList& list) {
    const auto strongest = std::max_element(list.steps.begin(), list.steps.end(),
                                            [](const Step& a, const Step& b) { return a.b < b.b; });
    list.any_field = strongest != list.steps.end() && strongest->b > 0.0;
    if (!list.any_field) {
        return;
    }
    list.ux = strongest->ux;
    list.uy = strongest->uy;
    for (const Step& step : list.steps) {
        const double across = std::fabs(step.bx * list.uy - step.by * list.ux);
        list.fixed_direction = list.fixed_direction && across <= 2.0 * DBL_EPSILON * step.b;
    }
    if (list.fixed_direction) {
        for (Step& step : list.steps) {
            step.b = step.bx * list.ux + step.by * list.uy;
            step.ux = list.ux;
            step.uy = list.uy;
        }
    }
}

} // namespace

void make_steps(const EngineSector& sector, const SystemStructure& structure, double max_angle,
                StepList& out) {
    const EngineSamples& samples = sector.samples;
    const EngineGrid& grid = sector.grid;
    const Reach reach{axis_reach(grid.ndx, grid.x0, grid.dx), axis_reach(grid.ndy, grid.y0, grid.dy),
                      axis_reach(grid.ndz, grid.z0, grid.dz)};
    std::vector<Step> steps = std::move(out.steps); // for its memory
    steps.clear();
    out = StepList{};
    out.steps = std::move(steps);
    double unsound = 0.0; // x - x is 0 for a finite x and not a number for any other
    JoinedSamples joined;
    for (int j = 0; j < samples.count; ++j) {
        Step step = sample_as_step(samples, j);
        const double offset = largest_offset(step, reach, samples.offset);
        set_own_direction(step);
        const double norm = structure.h0_bound + structure.field_bound * offset +
                            structure.fx_row_sum * (std::fabs(step.bx) + std::fabs(step.by));
        const double reference_norm = std::fabs(step.h) * norm;
        unsound += reference_norm - reference_norm;
        out.reference_norm = std::max(out.reference_norm, reference_norm);
        step.angle =
            exponent_bound(structure, std::fabs(step.h), std::fabs(step.h) * offset, step.h * step.b);
        if (samples.dt != 0.0) { // else exactly the identity
            append(step, max_angle, out.steps, joined);
        }
    }
    out.reference_norm += unsound;
    set_directions(out);
}

Palindrome find_palindrome(const std::vector<Step>& steps, bool fixed_direction) {
    constexpr int kShortest = 8;
    constexpr int kLongestLead = 2;
    const auto count = static_cast<int>(steps.size());
    for (int first = 0; fixed_direction && first <= kLongestLead && count - first >= kShortest; ++first) {
        const auto mirrored = [&](int j) {
            const Step& a = steps[static_cast<std::size_t>(first + j)];
            const Step& b = steps[static_cast<std::size_t>(count - 1 - j)];
            return equal_samples(a, b) && a.h == b.h;
        };
        int j = 0;
        while (j < (count - first) / 2 && mirrored(j)) {
            ++j;
        }
        if (j == (count - first) / 2) {
            return {first, count - first};
        }
    }
    return {};
}

} // namespace kor
