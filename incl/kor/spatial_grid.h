// Floor 3.5 - simulator: grid rules, voxel numbers and coordinates
//
// A regular Cartesian grid of voxels in the runtime state: ndx, ndy, ndz points (1..256, 1 on an axis
// that is not used), first point x0, y0, z0 and step dx, dy, dz in cm. Voxels are numbered z fastest,
// then y, then x.
#pragma once

namespace kor {

/// Field of view (points - 1) step in the unit of `step`; 0 for fewer than 2 points.
double grid_fov_from_step(int points, double step);
/// First point and step of an axis in any unit.
struct GridAxis {
    double first, step;
};
/// `points` spread evenly over `width` around `center`: first = center - width / 2, step = width /
/// (points - 1). An axis with fewer than 2 points: first = center, step = 0.
GridAxis symmetric_grid_axis(int points, double center, double width);
/// The step of an axis as typed, or 0 when it has fewer than 2 points.
double grid_axis_step(int points, double step);
/// Clamps the point counts, then stores first point and step of each axis, cm.
void apply_global_spatial_grid(double x0, double dx, double y0, double dy, double z0, double dz);
/// Moves ndx, ndy, ndz into 1..256. Aborts with a message on standard error when their product then
/// lies outside 1..16777216.
void clamp_spatial_grid();
/// The number of voxels, ndx ndy ndz (each at least 0), in *voxels. False, with a message on standard error,
/// when there are more than an int counts: grids typed at the console have no other limit.
bool count_voxels(int* voxels);
/// iz + ndz ((iy - 1) + ndy (ix - 1)), all from 1.
long long voxel_number(int ix, int iy, int iz, int ndy, int ndz);
/// Grid coordinates in cm of the 0-based point q, z fastest; ndx is not consulted, a divisor that is
/// not positive gives index 0.
void voxel_coordinates(int q, double* x_cm, double* y_cm, double* z_cm);

} // namespace kor
