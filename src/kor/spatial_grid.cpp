#include "kor/spatial_grid.h"

#include "kor/runtime_state.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>

namespace kor {

namespace {

constexpr long long kMostVoxels = 16777216; // 256 points on each of three axes

} // namespace

double grid_fov_from_step(int points, double step) {
    return points < 2 ? 0.0 : (points - 1) * step;
}

GridAxis symmetric_grid_axis(int points, double center, double width) {
    if (points < 2)
        return {center, 0.0};
    return {center - width / 2, width / (points - 1)};
}

double grid_axis_step(int points, double step) {
    return points < 2 ? 0.0 : step;
}

void clamp_spatial_grid() {
    RuntimeState& s = g_runtime;
    for (int* points : {&s.ndx, &s.ndy, &s.ndz}) {
        *points = std::clamp(*points, 1, KOR_MAX_GRID_POINTS);
    }
    const long long voxels = static_cast<long long>(s.ndx) * s.ndy * s.ndz;
    if (voxels < 1 || voxels > kMostVoxels) {
        std::fprintf(stderr, "Invalid spatial grid after clamp: ndx=%d ndy=%d ndz=%d (nos=%d)\n", s.ndx,
                     s.ndy, s.ndz, static_cast<int>(voxels));
        std::abort();
    }
}

void apply_global_spatial_grid(double x0, double dx, double y0, double dy, double z0, double dz) {
    clamp_spatial_grid();
    g_runtime.x0 = x0;
    g_runtime.dx = dx;
    g_runtime.y0 = y0;
    g_runtime.dy = dy;
    g_runtime.z0 = z0;
    g_runtime.dz = dz;
}

bool count_voxels(int* voxels) {
    const RuntimeState& s = g_runtime;
    const long long plane = static_cast<long long>(s.ndy) * s.ndz;
    // A plane that an int counts, times an int, is no overflow.
    const bool countable = plane <= INT_MAX && plane * s.ndx <= INT_MAX;
    if (countable)
        *voxels = static_cast<int>(plane * s.ndx);
    else
        std::fprintf(stderr,
                     "The spatial grid of %d x %d x %d points has more voxels than the %d that can be "
                     "simulated: define it again.\n",
                     s.ndx, s.ndy, s.ndz, INT_MAX);
    return countable;
}

long long voxel_number(int ix, int iy, int iz, int ndy, int ndz) {
    const long long column = (iy - 1) + static_cast<long long>(ndy) * (ix - 1);
    return iz + ndz * column;
}

void voxel_coordinates(int q, double* x_cm, double* y_cm, double* z_cm) {
    const RuntimeState& s = g_runtime;
    const long long plane = static_cast<long long>(s.ndy) * s.ndz;
    const long long ix = plane > 0 ? q / plane : 0;
    const long long rest = plane > 0 ? q % plane : 0;
    const long long iy = s.ndz > 0 ? rest / s.ndz : 0;
    const long long iz = s.ndz > 0 ? rest % s.ndz : 0;
    *x_cm = s.x0 + static_cast<double>(ix) * s.dx;
    *y_cm = s.y0 + static_cast<double>(iy) * s.dy;
    *z_cm = s.z0 + static_cast<double>(iz) * s.dz;
}

} // namespace kor
