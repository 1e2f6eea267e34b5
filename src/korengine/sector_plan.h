// One sector as the fast engine sees it, and the ways to its propagators.
#pragma once

#include "pack.h"
#include "steps.h"
#include "structure.h"
#include "voxel_classes.h"

namespace kor {

struct FastSector {
    SystemStructure structure;
    EngineSector sector{};
    StepList list;
    VoxelClasses classes;
    std::size_t slot = 0; // sectors in work at the same time have different ones
};

/// The propagators of a few consecutive classes: n x n planes without padding, class after class.
struct ClassBlock {
    long long first = -1; // class
    int count = 0;
    AlignedDoubles re, im; // count x n x n

    void shape(int n, int classes) {
        const std::size_t size =
            static_cast<std::size_t>(n) * static_cast<std::size_t>(n) * static_cast<std::size_t>(classes);
        re.resize(size);
        im.resize(size);
    }
};

/// Copies the propagator of member number `member` into the block.
void store_class(int n, const Planes& product, int member, ClassBlock& block);

/// A way computes blocks of `block_classes` consecutive classes (fewer at the end) of the sector it was
/// last prepared for.
struct Way {
    const char* name;
    int (*prepare)(const FastSector& sector); // returns block_classes
    void (*compute)(const FastSector& sector, ClassBlock& block);
};

extern const Way kFreePrecessionWay; // no RF: exact phases and blocks of equal m
extern const Way kLaneWay;           // up to 16 states: one voxel or time segment per lane
extern const Way kColumnWay;         // more states: Chebyshev series on columns
extern const Way kInterpolationWay;  // one gradient direction: few propagators give all others
extern const Way kEquivalentWay;     // interchangeable spins: smaller systems, each by lanes or columns

/// Whether the sector's propagators depend on one coordinate only, smoothly enough that far fewer of them,
/// computed by `inner`, give the others by interpolation. Prepares kInterpolationWay if so.
bool prepare_interpolation(const Way& inner, const FastSector& fast);

/// Whether kEquivalentWay serves the sector, the last one asked about.
bool has_equivalent_spins(const FastSector& fast);

/// Fills the steps and classes for `way` from structure and sector.
void plan_sector(const Way& way, FastSector& fast);

} // namespace kor
