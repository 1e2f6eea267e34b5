// Voxels with the same offset history need one propagator: an axis without gradients, or with a single
// place, does not tell voxels apart.
#pragma once

#include "steps.h"

#include <vector>

namespace kor {

struct VoxelPlace {
    double x, y, z; // cm
};

class VoxelClasses {
public:
    void plan(const EngineGrid& grid, const StepList& list);
    /// One class per given place instead; of() is then of no use.
    void plan_places(std::vector<VoxelPlace> places);
    long long count() const {
        return places_.empty() ? static_cast<long long>(nx_) * ny_ * nz_
                               : static_cast<long long>(places_.size());
    }
    /// Class of voxel (ix, iy, iz), indices from 1; from 0 to count - 1, in the order of the voxels.
    long long of(int ix, int iy, int iz) const;
    /// The same for a voxel by its number from 0, z fastest.
    long long of_number(long long voxel) const;
    /// How many voxels from number `voxel` on, itself included, are of its class.
    long long alike_from(long long voxel) const;
    /// A place of the class.
    VoxelPlace place(long long voxel_class) const;

private:
    EngineGrid grid_{};
    int nx_ = 1, ny_ = 1, nz_ = 1; // places told apart on each axis
    std::vector<VoxelPlace> places_;
};

} // namespace kor
