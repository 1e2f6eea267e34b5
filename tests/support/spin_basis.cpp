#include "support/spin_basis.h"

#include <gtest/gtest.h>

namespace kor_test {

SpinBasis make_basis(const Spins& spins) {
    SpinBasis basis;
    for (std::size_t s = 0; s < spins.size(); ++s) {
        basis.Ilist[s + 1] = spins[s];
    }
    basis.nspins = kor::infer_nspins(basis.Ilist);
    basis.n = kor::infer_nstates(basis.Ilist, basis.nspins);
    kor::MakeKets(basis.ket, basis.Ilist);
    return basis;
}

const std::vector<Spins>& spin_lists() {
    static const std::vector<Spins> lists = {{1},          {2},       {3},       {7},          {1, 1},
                                             {1, 2},       {3, 1},    {1, 0, 1}, {2, 0, 0, 3}, {0, 1, 2},
                                             {1, 1, 1, 1}, {2, 2, 2}, {1, 2, 3}, {3, 0, 1},    {5, 4},
                                             {1, 3, 1, 0}, {15}};
    return lists;
}

std::string spin_name(const Spins& spins, int spin) {
    return testing::PrintToString(spins) + " spin " + std::to_string(spin);
}

std::vector<int> ket_row(const kor::SpinKet& ket, int state) {
    return {ket[state] + 1, ket[state] + kor::KOR_MAX_SPINS + 1};
}

} // namespace kor_test
