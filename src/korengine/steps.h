// The samples of a sector as steps of the fast engine: runs of equal samples and stretches without RF are
// one step each.
#pragma once

#include "fast_jobs.h"
#include "korengine.h"
#include "structure.h"

#include <vector>

namespace kor {

struct Step {
    double h;          // s
    double bx, by;     // RF, rad/s
    double gx, gy, gz; // rad/s per cm
    double b;          // field along (ux, uy), rad/s
    double ux, uy;     // unit vector of the field's direction
    double angle;      // bound of |exponent| over the grid
};

struct StepList {
    std::vector<Step> steps;
    bool fixed_direction = true; // (ux, uy) is the same in all steps, b signed
    bool any_field = false;
    double ux = 1.0, uy = 0.0; // the fixed direction
    /// The largest |H dt| in the reference's norm, over samples and grid; not finite when a sample is not.
    double reference_norm = 0.0;
};

/// max_angle limits the angle of a step that joins samples (one sample may exceed it).
void make_steps(const EngineSector& sector, const SystemStructure& structure, double max_angle,
                StepList& out);

/// Steps first..first + length - 1 read the same backwards; a shaped pulse often has one step before them.
struct Palindrome {
    int first = 0;
    int length = 0; // 0: none worth the trouble
};

/// With a fixed direction of the field each step is symmetric in its frame, so that the second half of a
/// palindrome is the transpose of the first. Bit by bit; every step from the first on takes part.
Palindrome find_palindrome(const std::vector<Step>& steps, bool fixed_direction);

} // namespace kor
