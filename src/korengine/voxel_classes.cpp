#include "voxel_classes.h"

#include <cstddef>
#include <utility>

namespace kor {

void VoxelClasses::plan(const EngineGrid& grid, const StepList& list) {
    bool x = false, y = false, z = false;
    for (const Step& step : list.steps) {
        x = x || step.gx != 0.0;
        y = y || step.gy != 0.0;
        z = z || step.gz != 0.0;
    }
    grid_ = grid;
    places_.clear();
    nx_ = x && grid.dx != 0.0 ? grid.ndx : 1;
    ny_ = y && grid.dy != 0.0 ? grid.ndy : 1;
    nz_ = z && grid.dz != 0.0 ? grid.ndz : 1;
}

long long VoxelClasses::of(int ix, int iy, int iz) const {
    const long long x = nx_ > 1 ? ix - 1 : 0;
    const long long y = ny_ > 1 ? iy - 1 : 0;
    const long long z = nz_ > 1 ? iz - 1 : 0;
    return (x * ny_ + y) * nz_ + z;
}

long long VoxelClasses::of_number(long long voxel) const {
    const auto z = static_cast<int>(voxel % grid_.ndz);
    const auto y = static_cast<int>(voxel / grid_.ndz % grid_.ndy);
    const auto x = static_cast<int>(voxel / grid_.ndz / grid_.ndy);
    return of(x + 1, y + 1, z + 1);
}

long long VoxelClasses::alike_from(long long voxel) const {
    long long period = 1; // voxels of one class stand together in so many
    if (nz_ == 1) {
        period = static_cast<long long>(grid_.ndz) * (ny_ == 1 ? grid_.ndy : 1);
        period *= ny_ == 1 && nx_ == 1 ? grid_.ndx : 1;
    }
    return period - voxel % period;
}

void VoxelClasses::plan_places(std::vector<VoxelPlace> places) {
    places_ = std::move(places);
}

VoxelPlace VoxelClasses::place(long long voxel_class) const {
    if (!places_.empty()) {
        return places_[static_cast<std::size_t>(voxel_class)];
    }
    const auto z = static_cast<int>(voxel_class % nz_);
    const auto y = static_cast<int>(voxel_class / nz_ % ny_);
    const auto x = static_cast<int>(voxel_class / nz_ / ny_);
    return {x * grid_.dx + grid_.x0, y * grid_.dy + grid_.y0, z * grid_.dz + grid_.z0};
}

} // namespace kor
