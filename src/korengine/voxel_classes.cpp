#include "voxel_classes.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace kor {

void VoxelClasses::plan(const EngineGrid& grid, const StepList& list) {
    const auto places = [&](int count, double step_length, double Step::*gradient) {
        const auto matters = [=](const Step& step) { return step.*gradient != 0.0; };
        return count > 1 && step_length != 0.0 && std::any_of(list.steps.begin(), list.steps.end(), matters)
                   ? count
                   : 1;
    };
    grid_ = grid;
    places_.clear();
    nx_ = places(grid.ndx, grid.dx, &Step::gx);
    ny_ = places(grid.ndy, grid.dy, &Step::gy);
    nz_ = places(grid.ndz, grid.dz, &Step::gz);
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
