// Floor 3.6 - simulator: product operators written as text
#pragma once

#include "spinoperatorlib.h"

#include <cstddef>

namespace kor {

const char* spin_labels_for(int idx1based);
int parse_product_operator_string(const char* text, int Nspins, char* symbolic);
void decimal_to_base4_symbols(int opno, int Nspins, char* symbolic);
void format_operator_label(const char* symbolic, int Nspins, char* out, std::size_t cap);
void create_norm_operator_spinhalf(int n, int Nspins, const SpinIList& Ilist, const SpinKet& ket,
                                   const char* symbolic, CMatrix& out);
int create_operator_expression_spinhalf(int n_local, int Nspins_local, const SpinIList& Ilist_local,
                                        const SpinKet& ket_local, const char* expression, CMatrix& out);
bool is_undefined_operator_expression(const char* expression);
void trim_operator_token(char* text);
void make_identity_operator(int n, CMatrix& out);
/// Istat = the operator of the expression; 1, or 0 (message when no spin system is prepared).
int KORDefineCurrentExpectationOperatorExpression(const char* expression);

} // namespace kor
