// Floor 1.5 - mathematics: the engine seam
//
// The three operations in which a simulation spends its time, for one matrix and for many in the order of
// the files: `states` are n x n matrices one after another, row by row, each element its real part, then its
// imaginary part (2 n^2 doubles a state, 0-based).
// Callers say what they need as a whole (these samples, this grid) and leave the plan to the engine. The
// reference engine (src/korengine/reference.cpp) writes each with the plain matrix operations and is the
// judge; the fast engine (src/korengine/planner.cpp) gives the same numbers to 1e-12 of the largest element
// and hands what it does not cover to the reference; select.cpp forwards to the engine in use. One sector is
// open at a time; nothing here is reentrant.
#pragma once

#include "matrixmathlib.h"

namespace kor {

enum class Engine { reference, fast };

/// The engine that later calls use; the fast one at process start. A sector stays with the engine that
/// opened it: open it again after a change.
void EngineSelect(Engine engine);
Engine EngineSelected();

/// Instruction sets that the fast engine is compiled for: 2, 4 and 8 doubles at a time. The baseline is
/// every machine's.
enum class InstructionSet { baseline, avx2, avx512 };

/// Whether this processor (by its feature bits) and this build offer `set`.
bool EngineHasInstructionSet(InstructionSet set);
/// The set that the fast engine uses from here on; the widest that the machine has at process start. A
/// set that the machine lacks is refused: false, nothing changes. Open the sector again afterwards.
bool EngineUseInstructionSet(InstructionSet set);
InstructionSet EngineInstructionSet();

/// Operators of the spin system, each n x n, rad/s for H0 and dimensionless for the rest.
struct EngineSystem {
    int n;             // Hilbert dimension, 1..256
    const CMatrix* H0; // Zeeman + coupling Hamiltonian, rad/s
    const CMatrix* Fz; // operator of the offset (gradient and carrier)
    const CMatrix* Fx; // operator of the RF field along x
    const CMatrix* Fy; // operator of the RF field along y
    /// Spins 1/2 that are known to be alike, for the fast engine: spin_group[0..spins-1], spin 1 first, with
    /// equal numbers for spins of bit-equal shift and couplings. Null: nothing is known.
    int spins = 0;
    const int* spin_group = nullptr;
};

/// Waveform of one sector: `count` samples of `dt` seconds, arrays 0-based.
struct EngineSamples {
    int count;
    double dt;
    const double* xb; // RF along x, rad/s
    const double* yb; // RF along y, rad/s
    const double* gx; // gradients, rad/s per cm; all three null where there is no gradient
    const double* gy;
    const double* gz;
    double offset; // added to every sample's offset, rad/s
};

/// Voxel positions in cm: x = x0 + (ix - 1) dx and so on, indices from 1; a single voxel at the origin
/// is {1, 1, 1, 0, 0, 0, 0, 0, 0}.
struct EngineGrid {
    int ndx, ndy, ndz;
    double x0, y0, z0;
    double dx, dy, dz;
};

/// One sector to propagate through. The record itself is copied by EngineOpenSector; the matrices and
/// arrays behind its pointers must stay unchanged until the next EngineOpenSector.
struct EngineSector {
    EngineSystem system;
    EngineSamples samples;
    EngineGrid grid;
};

/// Makes `sector` the open one and plans its work. The same samples with another dt (an evolution row) are
/// another sector: open it again.
void EngineOpenSector(const EngineSector& sector);

/// How the open sector's propagators are made, for tests and timings: "reference", "identity", "free
/// precession", "equivalent spins", "lanes", "columns", "binary columns" or "interpolation".
const char* EngineSectorPlan();

/// r = U_0 U_1 ... U_(count-1) of the open sector at voxel (ix, iy, iz), indices from 1, with
/// U_j = exp(-i H_j dt), H_j = H0 + w_j Fz + xb[j] Fx + yb[j] Fy and
/// w_j = gx[j] x + gy[j] y + gz[j] z + offset. count = 0 gives the identity. r must be none of the
/// sector's operators. With EngineRotate each sample turns rho into exp(+i H_j dt) rho exp(-i H_j dt),
/// the first sample first: a field along +x turns Iz to +Iy, a positive offset turns Ix to -Iy.
void EngineSectorPropagator(int ix, int iy, int iz, CMatrix& r);

/// rho = adjoint(r) . rho . r, n x n.
void EngineRotate(int n, const CMatrix& r, CMatrix& rho);

/// The same for `count` states with one r.
void EngineRotateStates(int n, const CMatrix& r, int count, double* states);

/// The states of `count` consecutive voxels, from number `first` on (from 1, z fastest), each rotated by the
/// open sector's propagator at its voxel.
void EngineRotateVoxels(long long first, int count, double* states);

/// `count` evolution rows from number `first` on (from 1): row k is rotated by the propagator of `sector`, at
/// voxel (1, 1, 1), with samples of (k - 1) dt, so that row 1 stays as it is. No sector is open afterwards.
void EngineRotateRows(const EngineSector& sector, int first, int count, double* states);

/// Samples free evolution: for k = 0..points-1, out_re[k] = Re trace(Ix rho_k), out_im[k] =
/// Re trace(Iy rho_k), with rho_0 = rho and rho_(k+1) = adjoint(U) rho_k U, U = exp(+i H dt).
/// H in rad/s, dt in seconds; out_re, out_im 0-based. rho is not changed. The sense is that of
/// exp(-i H t) rho exp(+i H t): a caller that continues a sector passes -H.
void EngineSampleFreeEvolution(int n, const CMatrix& H, double dt, int points, const CMatrix& rho,
                               const CMatrix& Ix, const CMatrix& Iy, double* out_re, double* out_im);

/// The signals of `count` states, each as EngineSampleFreeEvolution gives it, with 0.0 for what is not
/// finite: pairs[2 (m points + k)] is sample k in x of state m, from 0, and the double behind it the one in
/// y.
void EngineSampleStates(int n, const CMatrix& H, double dt, int points, int count, const double* states,
                        const CMatrix& Ix, const CMatrix& Iy, double* pairs);

} // namespace kor
