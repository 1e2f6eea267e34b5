// The engines behind the seam: each offers the operations of korengine.h as one record.
#pragma once

#include "korengine.h"

#include <cstddef>

namespace kor {

struct EngineOperations {
    void (*open_sector)(const EngineSector& sector);
    void (*sector_propagator)(int ix, int iy, int iz, CMatrix& r);
    void (*rotate)(int n, const CMatrix& r, CMatrix& rho);
    void (*rotate_states)(int n, const CMatrix& r, int count, double* states);
    void (*rotate_voxels)(long long first, int count, double* states);
    void (*rotate_rows)(const EngineSector& sector, int first, int count, double* states);
    void (*sample_free_evolution)(int n, const CMatrix& H, double dt, int points, const CMatrix& rho,
                                  const CMatrix& Ix, const CMatrix& Iy, double* out_re, double* out_im);
    void (*sample_states)(int n, const CMatrix& H, double dt, int points, int count, const double* states,
                          const CMatrix& Ix, const CMatrix& Iy, double* pairs);
};

extern const EngineOperations kReferenceEngine;
extern const EngineOperations kFastEngine;

// Operations of the fast engine with rooms of their own.
void fast_rotate(int n, const CMatrix& r, CMatrix& rho);
void fast_rotate_states(int n, const CMatrix& r, int count, double* states);
void fast_sample_free_evolution(int n, const CMatrix& H, double dt, int points, const CMatrix& rho,
                                const CMatrix& Ix, const CMatrix& Iy, double* out_re, double* out_im);
void fast_sample_states(int n, const CMatrix& H, double dt, int points, int count, const double* states,
                        const CMatrix& Ix, const CMatrix& Iy, double* pairs);
/// Doubles of one n x n state in the order of the files.
constexpr std::size_t state_doubles(int n) {
    return 2 * static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
}
/// Name of the way that the fast engine takes for the sector that it opened last.
const char* fast_plan();

} // namespace kor
