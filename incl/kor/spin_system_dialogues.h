// Floor 3.24 - simulator: defining the spin system at the console, and the same from a stream of numbers
//
// The dialogues fill the spin-system definition of g_runtime (quantum numbers, intensities, offsets and
// couplings in Hz; spins from 1) and have kor/spin_system.h build densmat, Izee and Icoup from it at once.
#pragma once

#include <cstdio>

namespace kor {

/// Number of spins (1..8) and twice the quantum number of each; asks again until the answers can be read and
/// the dimension is at most KOR_MAX_STATES. Writes Nspins, quantnum, Ilist and n, and makes the kets (none,
/// with the message of MakeKets, when the quantum number of a spin below the last is negative; SetupSpins
/// refuses any). 1; 0 with nothing written when the input has ended for good.
int Ispins();
/// Ispins, then n, the kets and the plain total operators; spinsystemdefined becomes 1, or 0 with a message
/// on standard error when a quantum number is negative (n is then 0) or the input ended.
void SetupSpins();
/// Relative intensity of every spin, and densmat. An answer that cannot be read counts as 0 and is not
/// dropped: what the next two ask then counts as unreadable too, up to the menu that called.
void MakeBoltzmann();
/// Offset of every spin in Hz, and Izee.
void MakeZeeman();
/// Coupling mode (1 weak; also for an unreadable answer) and J of every pair i < j in Hz: Jexact, Jcount,
/// couplings, jc and Icoup. One spin: mode 1 and Icoup = 0.
void SpinSpinCoupling();

/// The same values in the same order from an open stream, without prompts. They fill Nspins, Ilist, n, the
/// kets, the operators and jc, not quantnum, relspinamp, resofreqs, Jexact, Jcount or couplings.
/// An unreadable number counts as 0, an unreadable quantum number as 1. Nspins is clamped to 1..8; a negative
/// quantum number counts as 0; a dimension above KOR_MAX_STATES leaves n = 0 and, with the message of
/// MakeKets, no kets.
void NonIntIspins(std::FILE* stream);
void NonIntMakeBoltzmann(std::FILE* stream);
void NonIntMakeZeeman(std::FILE* stream);
/// With more than one spin: coupling mode, an integer that is ignored, one J in Hz per pair i < j.
void NonIntSpinSpinCoupling(std::FILE* stream);

} // namespace kor
