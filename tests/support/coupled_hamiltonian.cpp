#include "support/coupled_hamiltonian.h"
#include "support/constants.h"

namespace kor_test {

Dense hamiltonian(Laboratory& lab, const std::vector<double>& shifts, const std::vector<Pair>& couplings,
                  bool exact) {
    Dense H = Dense::Zero(lab.n(), lab.n());
    for (std::size_t s = 0; s < shifts.size(); ++s) {
        H += shifts[s] * lab.op(static_cast<int>(s) + 1, Axis::z);
    }
    for (const Pair& c : couplings) {
        H += c.hz * lab.op(c.i, Axis::z) * lab.op(c.j, Axis::z);
        if (exact) {
            H += c.hz *
                 (lab.op(c.i, Axis::x) * lab.op(c.j, Axis::x) + lab.op(c.i, Axis::y) * lab.op(c.j, Axis::y));
        }
    }
    return TWO_PI * H;
}

std::vector<Pair> star(int others, double hz) {
    std::vector<Pair> couplings;
    for (int k = 2; k <= others + 1; ++k) {
        couplings.push_back({1, k, hz});
    }
    return couplings;
}

} // namespace kor_test
