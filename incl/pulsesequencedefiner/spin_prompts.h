// Floor 4.22 - workshop: the composer's questions about the spin system
//
// They collect the definition in g_runtime only; the matrices are built from it when the model is run. The
// limits (6 spins, dimension 64) are those of the spectra's eigensolver, tighter than the model files'. Each
// returns 1, or 0 when the input has ended for good.
#pragma once

namespace kor {

/// The most spins and the largest dimension that the composer accepts.
inline constexpr int PS_MAX_SPINS = 6;
inline constexpr int PS_MAX_STATES = 64;

/// Number of spins and twice the quantum number of each: Nspins, quantnum. A number below 1 is taken, too,
/// and means that there are none (Nspins 0). Starts again when the dimension, in which a negative quantum
/// number counts as 0, exceeds PS_MAX_STATES.
int PS_IspinsParams();
/// relspinamp of every spin.
int PS_MakeBoltzmannParams();
/// resofreqs of every spin, Hz.
int PS_MakeZeemanParams();
/// Coupling mode and one J in Hz per pair i < j: Jexact, Jcount, couplings. jc is left alone: while it holds
/// a coupling, the next build uses it and not couplings. Nothing is asked for fewer than two spins.
int PS_SpinSpinCouplingParams();
/// All four, in this order; systemset is 1 afterwards.
int define_spin_system_params();

} // namespace kor
