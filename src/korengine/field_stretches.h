// Stretches of steps whose exponentials depend on the field's strength alone.
#pragma once

#include "fast_jobs.h"
#include "steps.h"

#include <vector>

namespace kor {

/// Steps first..end - 1 of a list, cut into `segments` of `steps` each (the last one may be shorter), and how
/// many nodes of a series are computed at once.
struct StepRange {
    int first, end, segments, steps;
    int nodes_at_once;
};

/// The stretches of equal duration and gradient for which a series in the field is cheaper than the steps
/// one by one, in lanes of n states; field_bound is |Fx|, plan that of each row of steps. With several
/// segments a stretch has to hold for all of them. Positions count from the range's first step.
std::vector<FieldStretch> field_stretches(const std::vector<Step>& steps, const StepRange& range, int n,
                                          double field_bound, const std::vector<StepPlan>& plan);

} // namespace kor
