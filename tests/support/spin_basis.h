// Product bases of given spins, for the tests of the spin operators.
#pragma once

#include "spinoperatorlib.h"

#include <string>
#include <vector>

namespace kor_test {

/// Doubled spin quantum numbers, spin 1 first.
using Spins = std::vector<int>;

struct SpinBasis {
    kor::SpinIList Ilist = {};
    kor::SpinKet ket = {};
    int nspins = 0;
    int n = 0;
};

SpinBasis make_basis(const Spins& spins);

/// Lists with every kind of spin: halves and integers, mixed, and spins without states among them.
const std::vector<Spins>& spin_lists();

/// For messages: "{1, 2} spin 2".
std::string spin_name(const Spins& spins, int spin);

/// The eight m of a row of a ket table, doubled.
std::vector<int> ket_row(const kor::SpinKet& ket, int state);

} // namespace kor_test
