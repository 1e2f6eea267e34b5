// The reference engine: every operation with the plain matrix operations, one voxel and one sample after
// the other. It is the judge of the others; the order of its arithmetic is fixed.
#include "engines.h"

#include <cmath>
#include <vector>

namespace kor {

namespace {

EngineSector g_sector;

/// Offset of sample j at voxel (ix, iy, iz), rad/s.
double sample_offset(const EngineSamples& samples, const EngineGrid& grid, int ix, int iy, int iz, int j) {
    if (!samples.gx) {
        return samples.offset;
    }
    return samples.gx[j] * ((ix - 1) * grid.dx + grid.x0) + samples.gy[j] * ((iy - 1) * grid.dy + grid.y0) +
           samples.gz[j] * ((iz - 1) * grid.dz + grid.z0) + samples.offset;
}

/// U = exp(-i H_j dt), H_j = (w Fz + H0) + xb[j] Fx + yb[j] Fy added in this order.
void sample_propagator(const EngineSystem& system, const EngineSamples& samples, double w, int j,
                       CMatrix& U) {
    static CMatrix hs;
    static CMatrix ht;
    static CMatrix hb;
    const int n = system.n;
    CMatRMultAdd(n, *system.Fz, w, *system.H0, 1.0, hs);
    RMultCMat(n, samples.xb[j], *system.Fx, ht);
    CMatAdd(n, hs, ht, hb);
    RMultCMat(n, samples.yb[j], *system.Fy, ht);
    CMatAdd(n, hb, ht, hb);
    RMultCMat(n, -1.0, hb, hb);
    ExpMatrix(n, hb, samples.dt, U);
}

void open_sector(const EngineSector& sector) {
    g_sector = sector;
}

void sector_propagator(int ix, int iy, int iz, CMatrix& r) {
    static CMatrix Ustep;
    const EngineSamples& samples = g_sector.samples;
    const int n = g_sector.system.n;
    CMatIdentity(n, r);
    for (int j = 0; j < samples.count; ++j) {
        const double w = sample_offset(samples, g_sector.grid, ix, iy, iz, j);
        sample_propagator(g_sector.system, samples, w, j, Ustep);
        CMatMult(n, r, Ustep, r);
    }
}

/// state = adjoint(r) state r, in the order of the files.
void rotate_state(int n, const CMatrix& r, double* state) {
    static CMatrix rho;
    CMatFromPairs(n, state, rho);
    DoRotation(n, r, rho);
    CMatToPairs(n, rho, state);
}

void rotate_states(int n, const CMatrix& r, int count, double* states) {
    for (int k = 0; k < count; ++k) {
        rotate_state(n, r, states + static_cast<std::size_t>(k) * state_doubles(n));
    }
}

void rotate_voxels(long long first, int count, double* states) {
    static CMatrix r;
    const EngineGrid& grid = g_sector.grid;
    const int n = g_sector.system.n;
    for (int k = 0; k < count; ++k) {
        const long long voxel = first - 1 + k;
        const auto iz = static_cast<int>(voxel % grid.ndz) + 1;
        const auto iy = static_cast<int>(voxel / grid.ndz % grid.ndy) + 1;
        const auto ix = static_cast<int>(voxel / grid.ndz / grid.ndy) + 1;
        sector_propagator(ix, iy, iz, r);
        rotate_state(n, r, states + static_cast<std::size_t>(k) * state_doubles(n));
    }
}

void rotate_rows(const EngineSector& sector, int first, int count, double* states) {
    open_sector(sector);
    for (int k = 0; k < count; ++k) {
        g_sector.samples.dt = (first + k - 1) * sector.samples.dt;
        rotate_voxels(1, 1, states + static_cast<std::size_t>(k) * state_doubles(sector.system.n));
    }
}

void sample_free_evolution(int n, const CMatrix& H, double dt, int points, const CMatrix& rho,
                           const CMatrix& Ix, const CMatrix& Iy, double* out_re, double* out_im) {
    static CMatrix state;
    static CMatrix ustep;
    CopyCMatrix(n, rho, state);
    ExpMatrix(n, H, dt, ustep);
    for (int k = 0; k < points; ++k) {
        Complex2 value;
        ExpectationValue(n, Ix, state, value);
        out_re[k] = value[1];
        ExpectationValue(n, Iy, state, value);
        out_im[k] = value[1];
        if (k + 1 < points) {
            DoRotation(n, ustep, state);
        }
    }
}

void sample_states(int n, const CMatrix& H, double dt, int points, int count, const double* states,
                   const CMatrix& Ix, const CMatrix& Iy, double* pairs) {
    static CMatrix rho;
    static std::vector<double> re, im;
    re.resize(static_cast<std::size_t>(points));
    im.resize(re.size());
    for (int m = 0; m < count; ++m) {
        CMatFromPairs(n, states + static_cast<std::size_t>(m) * state_doubles(n), rho);
        sample_free_evolution(n, H, dt, points, rho, Ix, Iy, re.data(), im.data());
        for (std::size_t k = 0; k < re.size(); ++k) {
            *pairs++ = std::isfinite(re[k]) ? re[k] : 0.0;
            *pairs++ = std::isfinite(im[k]) ? im[k] : 0.0;
        }
    }
}

} // namespace

const EngineOperations kReferenceEngine{open_sector,           sector_propagator, DoRotation,
                                        rotate_states,         rotate_voxels,     rotate_rows,
                                        sample_free_evolution, sample_states};

} // namespace kor
