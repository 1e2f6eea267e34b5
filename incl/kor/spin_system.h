// Floor 3.3 - simulator: Hamiltonians, gradient operator and equilibrium state of the current spin system
#pragma once

#include "kor/runtime_state.h"

namespace kor {

/// densmat += intensity * Iz of `spin`, scaled to unit Frobenius norm.
void add_equilibrium_term(int spin, double intensity);
/// Izee += 2 pi offset_hz * Iz of `spin`.
void add_zeeman_term(int spin, double offset_hz);
/// jc[i][j] = jc[j][i] = j_hz; Icoup += 2 pi J (Ix Ix + Iy Iy when exact) + 2 pi J Iz Iz, nothing when 2 pi J
/// is 0.
void add_coupling_term(int i, int j, double j_hz, bool exact);
/// Izgrad = sum of Iz of every spin.
void MakeGradientOperator();
/// Ixtot and Iytot (and Iztot) rebuilt with the given normalisation mode: 0 plain, 1 unit-norm spins.
void make_transverse_totals(int norm);
void make_all_totals(int norm);
void BuildSpinSystemFromPulseSequenceGlobals();
void KOR_RebuildSpinSystemFromPulseSequenceGlobals();

} // namespace kor
