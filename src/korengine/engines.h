// The engines behind the seam: each offers the operations of korengine.h as one record.
#pragma once

#include "korengine.h"

namespace kor {

struct EngineOperations {
    void (*open_sector)(const EngineSector& sector);
    void (*sector_propagator)(int ix, int iy, int iz, CMatrix& r);
    void (*rotate)(int n, const CMatrix& r, CMatrix& rho);
    void (*sample_free_evolution)(int n, const CMatrix& H, double dt, int points, const CMatrix& rho,
                                  const CMatrix& Ix, const CMatrix& Iy, double* out_re, double* out_im);
};

extern const EngineOperations kReferenceEngine;
extern const EngineOperations kFastEngine;

// Operations of the fast engine with rooms of their own.
void fast_rotate(int n, const CMatrix& r, CMatrix& rho);
void fast_sample_free_evolution(int n, const CMatrix& H, double dt, int points, const CMatrix& rho,
                                const CMatrix& Ix, const CMatrix& Iy, double* out_re, double* out_im);
/// Name of the way that the fast engine takes for the sector that it opened last.
const char* fast_plan();

} // namespace kor
