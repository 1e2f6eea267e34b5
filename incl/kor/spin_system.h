// Floor 3.3 - simulator: Hamiltonians, gradient operator and equilibrium state of the current spin system
//
// Turns the spin-system definition of g_runtime (quantum numbers, intensities, offsets and couplings in
// Hz) into its operators: densmat, Izee, Icoup, Izgrad, Ixtot, Iytot, Iztot, all n x n and 1-based.
// Hamiltonians are in rad/s, in the rotating frame: no shift tensor and no gyromagnetic ratio, so all
// spins answer a gradient alike. Spins are numbered from 1. Nothing here is reentrant.
#pragma once

#include "kor/runtime_state.h"

namespace kor {

/// densmat += intensity * Iz of `spin`, that Iz scaled to unit Frobenius norm: one term of the
/// high-temperature equilibrium state, traceless, without the identity. A spin with one state (Iz = 0)
/// adds nothing. The basis (ket, Ilist, n) must be made.
void add_equilibrium_term(int spin, double intensity);
/// Izee += 2 pi offset_hz * Iz of `spin` (not scaled).
void add_zeeman_term(int spin, double offset_hz);
/// Scalar coupling of spins i and j: records jc[i][j] = jc[j][i] = j_hz, then, unless 2 pi J is exactly 0,
/// Icoup += 2 pi J Ix_i Ix_j, then 2 pi J Iy_i Iy_j (both when `exact` only), then 2 pi J Iz_i Iz_j.
void add_coupling_term(int i, int j, double j_hz, bool exact);
/// Izgrad = sum of Iz of every spin, the operator that the local gradient offset multiplies. Without a
/// spin system (n or Nspins below 1) a message on standard error, and Izgrad stays as it is.
void MakeGradientOperator();
/// Ixtot and Iytot (make_all_totals: and Iztot) built again with the given normalisation: 0 plain sums of
/// the spins' operators, 1 each spin's operator scaled to unit Frobenius norm first.
void make_transverse_totals(int norm);
void make_all_totals(int norm);
/// No spins: Nspins, n and spinsystemdefined 0, Ilist empty. What a refused definition left behind would be
/// simulated as if it had been accepted.
void forget_spins();
/// Whether the basis and operators are those of the current definition. The composer's prompts redefine the
/// spins without building them.
bool basis_is_current();
/// Number of spins of the basis last built, 0 when there is none: Nspins, unless the spins were redefined
/// since.
int spins_of_basis();
/// The whole spin system from the definition: Nspins clamped to 1..8, Ilist from quantnum (a negative
/// value counts as 0), n, ket, all operators, and the flags spinsystemdefined, rfpulsedefined and
/// offsetsdefined set. Couplings come from jc when any entry of it is nonzero, else from
/// couplings[1..Jcount]; jc holds the couplings used afterwards. Jexact 1 keeps the Iz Iz terms only; one
/// spin has no couplings. Prints the definition unless the quiet mode is on. A definition of more than
/// KOR_MAX_STATES states is refused on standard error and forgotten (forget_spins).
void BuildSpinSystemFromPulseSequenceGlobals();
/// The same, by the name that other modules call.
void KOR_RebuildSpinSystemFromPulseSequenceGlobals();

/// group[0..Nspins-1], spin 1 first: spins 1/2 with the same offset and the same coupling to every other
/// spin, bit by bit (resofreqs, jc), get the same number, every other spin its own. Returns Nspins, or 0 when
/// some spin is not a spin 1/2. group holds KOR_MAX_SPINS entries.
int find_alike_spins(int* group);

} // namespace kor
