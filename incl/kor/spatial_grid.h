// Floor 3.5 - simulator: grid rules, voxel numbers and coordinates
#pragma once

namespace kor {

double grid_fov_from_step(int points, double step);
void apply_global_spatial_grid(double x0, double dx, double y0, double dy, double z0, double dz);
void clamp_spatial_grid();
/// iz + ndz ((iy - 1) + ndy (ix - 1)), all from 1.
long long voxel_number(int ix, int iy, int iz, int ndy, int ndz);
/// Grid coordinates in cm of the 0-based point q, z fastest; ndx is not consulted, a divisor that is
/// not positive gives index 0.
void voxel_coordinates(int q, double* x_cm, double* y_cm, double* z_cm);

} // namespace kor
