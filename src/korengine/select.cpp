#include "engines.h"

#include <cstdlib>

namespace kor {

namespace {

Engine g_selected = Engine::fast;
const EngineOperations* g_operations = &kFastEngine;

const EngineOperations* operations_of(Engine engine) {
    switch (engine) {
    case Engine::reference:
        return &kReferenceEngine;
    case Engine::fast:
        return &kFastEngine;
    }
    std::abort(); // not one of the enumerators
}

} // namespace

void EngineSelect(Engine engine) {
    g_operations = operations_of(engine);
    g_selected = engine;
}

Engine EngineSelected() {
    return g_selected;
}

const char* EngineSectorPlan() {
    return g_selected == Engine::fast ? fast_plan() : "reference";
}

void EngineOpenSector(const EngineSector& sector) {
    g_operations->open_sector(sector);
}

void EngineSectorPropagator(int ix, int iy, int iz, CMatrix& r) {
    g_operations->sector_propagator(ix, iy, iz, r);
}

void EngineRotate(int n, const CMatrix& r, CMatrix& rho) {
    g_operations->rotate(n, r, rho);
}

void EngineRotateStates(int n, const CMatrix& r, int count, double* states) {
    g_operations->rotate_states(n, r, count, states);
}

void EngineRotateVoxels(long long first, int count, double* states) {
    g_operations->rotate_voxels(first, count, states);
}

void EngineRotateRows(const EngineSector& sector, int first, int count, double* states) {
    g_operations->rotate_rows(sector, first, count, states);
}

void EngineSampleStates(int n, const CMatrix& H, double dt, int points, int count, const double* states,
                        const CMatrix& Ix, const CMatrix& Iy, double* pairs) {
    g_operations->sample_states(n, H, dt, points, count, states, Ix, Iy, pairs);
}

void EngineSampleFreeEvolution(int n, const CMatrix& H, double dt, int points, const CMatrix& rho,
                               const CMatrix& Ix, const CMatrix& Iy, double* out_re, double* out_im) {
    g_operations->sample_free_evolution(n, H, dt, points, rho, Ix, Iy, out_re, out_im);
}

} // namespace kor
