// Floor 3.6 - simulator: product operators written as text
//
// Spins are named by one letter each: spins 1..8 are I, S, T, U, V, W, A, B. A symbolic product operator
// is a text of Nspins characters and a terminator, character s - 1 saying what stands for spin s: 'e' (the
// identity), 'x', 'y' or 'z'. The text routes serve spins 1/2 only. Matrices are n x n and 1-based.
#pragma once

#include "spinoperatorlib.h"

#include <cstddef>

namespace kor {

/// The letter of spin idx1based (clamped to 1..32) as a text in a static buffer that the next call reuses.
const char* spin_labels_for(int idx1based);
/// Reads a product such as "IxSz", "I1x I2z" or "ix,sz;tz" (case does not matter; blanks, commas,
/// underscores and semicolons separate; I with digits counts spins from 1; a spin named twice keeps the
/// later component); "E" alone is the identity. symbolic receives Nspins characters and a terminator.
/// Returns 1; 0 for an empty text, an unknown spin, or a component other than x, y, z.
int parse_product_operator_string(const char* text, int Nspins, char* symbolic);
/// The base-4 digits of opno, least significant first, name the components e, x, y, z of spins 1, 2, ...
void decimal_to_base4_symbols(int opno, int Nspins, char* symbolic);
/// Label text in capitals: IXSZ, or E for the identity. At most cap - 1 characters; it stops before a pair
/// that does not fit.
void format_operator_label(const char* symbolic, int Nspins, char* out, std::size_t cap);
/// out = product over the spins, in order, of their Ix, Iy or Iz, scaled to unit Frobenius norm; the
/// identity gives 1 / sqrt(n) on the diagonal.
void create_norm_operator_spinhalf(int n, int Nspins, const SpinIList& Ilist, const SpinKet& ket,
                                   const char* symbolic, CMatrix& out);
/// out = sum of the products between plus signs ("Ix + Sx"), each of unit norm, the sum scaled to unit
/// norm again; there is no minus sign and no factor, and an empty term is skipped. At most 511 characters
/// count. Returns 1; 0 when the expression is undefined, a spin is no spin 1/2 (out untouched), nothing
/// stands between the plus signs, or a term does not parse (out then holds the terms before it).
int create_operator_expression_spinhalf(int n_local, int Nspins_local, const SpinIList& Ilist_local,
                                        const SpinKet& ket_local, const char* expression, CMatrix& out);
/// Whether the expression is missing, blank, or "not defined" in any case with blanks around it.
bool is_undefined_operator_expression(const char* expression);
/// Removes white space from both ends, in place.
void trim_operator_token(char* text);
/// Whether every spin 1..Nspins is a spin 1/2.
bool all_spins_are_half(int Nspins, const SpinIList& Ilist);
/// out = 1 on the diagonal, not scaled.
void make_identity_operator(int n, CMatrix& out);
/// out = factor * (I+, I-, Ix, Iy or Iz of `spin`, for type 1, 2, 3, 4 or any other), any spin quantum
/// numbers, not scaled to unit norm.
void create_single_spin_operator(int n, const SpinIList& Ilist, const SpinKet& ket, int spin, int type,
                                 double factor, CMatrix& out);
/// op1 = op1 . op2, scaled to unit Frobenius norm.
void multiply_and_normalise(int n, CMatrix& op1, const CMatrix& op2);
/// g_runtime.Istat = the operator of the expression. Returns 1 and names the expression; 0 when it fails
/// as above, or with a message when no spin system is prepared.
int KORDefineCurrentExpectationOperatorExpression(const char* expression);

} // namespace kor
