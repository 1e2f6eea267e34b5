// Hamiltonians of shifts and couplings for closed forms.
#pragma once

#include "support/laboratory.h"

#include <vector>

namespace kor_test {

struct Pair {
    int i, j; // spins from 1
    double hz;
};

/// Hamiltonian (rad/s) of shifts (Hz, one per spin) and couplings, weak or exact.
Dense hamiltonian(Laboratory& lab, const std::vector<double>& shifts, const std::vector<Pair>& couplings,
                  bool exact);

/// One spin (the first) coupled equally to `others`, which are not coupled among themselves.
std::vector<Pair> star(int others, double hz);

} // namespace kor_test
