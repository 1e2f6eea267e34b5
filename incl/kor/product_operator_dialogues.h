// Floor 3.15 - simulator: choosing the operator whose expectation value is followed
//
// All work on n x n matrices in the basis (ket, Ilist) and leave the chosen operator in `out`.
#pragma once

#include "spinoperatorlib.h"

namespace kor {

/// One product operator by name or by number from the list of 4^Nspins (spins 1/2 only), scaled to unit
/// Frobenius norm. The identity, not scaled, when a spin is no spin 1/2, at end of input, and for a text
/// that does not parse.
void create_operator_from_list(int n, int Nspins, const SpinIList& Ilist, const SpinKet& ket, CMatrix& out);
/// Builds an operator by hand from single-spin operators of any quantum numbers: two working operators,
/// zero at the start, to define, add and multiply. The result is OP1 scaled to unit Frobenius norm, also
/// when the input ends.
void manual_expectation_operator(int n, int Nspins, const SpinIList& Ilist, const SpinKet& ket, CMatrix& out);
/// Menu that leads to one of the two: 1 the list, anything else by hand.
void ExpectationOperator(int n, int Nspins, const SpinIList& Ilist, const SpinKet& ket, CMatrix& out);
/// g_runtime.Istat = the operator chosen for the current spin system; a message when there is none.
void KORDefineCurrentExpectationOperatorInteractive();

} // namespace kor
