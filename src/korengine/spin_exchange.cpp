#include "spin_exchange.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <map>
#include <utility>

namespace kor {

namespace {

/// 2j + 1 vectors over the states of some spins, m descending.
struct Multiplet {
    int twice_j;
    std::vector<std::vector<double>> vectors;
};

/// j and a further spin 1/2 couple to j + 1/2 (up) or j - 1/2; the further spin is the fastest one.
Multiplet couple_half(const Multiplet& from, bool up) {
    const int twice_j = from.twice_j + (up ? 1 : -1);
    const std::size_t states = from.vectors.front().size();
    Multiplet out{twice_j, {}};
    for (int twice_m = twice_j; twice_m >= -twice_j; twice_m -= 2) {
        const double whole = from.twice_j + 1;
        const double more = std::sqrt((0.5 * (from.twice_j + twice_m + 1)) / whole);
        const double less = std::sqrt((0.5 * (from.twice_j - twice_m + 1)) / whole);
        std::vector<double> v(2 * states, 0.0);
        const auto add = [&](int twice_from_m, double factor, std::size_t spin_state) {
            const int row = (from.twice_j - twice_from_m) / 2;
            if (row < 0 || row > from.twice_j) {
                return;
            }
            for (std::size_t i = 0; i < states; ++i) {
                v[2 * i + spin_state] += factor * from.vectors[static_cast<std::size_t>(row)][i];
            }
        };
        add(twice_m - 1, up ? more : -less, 0);
        add(twice_m + 1, up ? less : more, 1);
        out.vectors.push_back(std::move(v));
    }
    return out;
}

std::vector<Multiplet> multiplets(int spins) {
    std::vector<Multiplet> all{{0, {{1.0}}}};
    for (int k = 0; k < spins; ++k) {
        std::vector<Multiplet> next;
        for (const Multiplet& m : all) {
            next.push_back(couple_half(m, true));
            if (m.twice_j > 0) {
                next.push_back(couple_half(m, false));
            }
        }
        all = std::move(next);
    }
    return all;
}

/// Bits, from the fastest spin's, of the spins of one group, slowest spin first.
using Group = std::vector<int>;

std::vector<Group> groups_of(int spins, const int* group) {
    std::map<int, Group> found;
    for (int s = 0; s < spins; ++s) {
        found[group[s]].push_back(spins - 1 - s);
    }
    std::vector<Group> groups;
    for (const auto& [number, members] : found) {
        groups.push_back(members);
    }
    return groups;
}

int exchanged(int state, int bit_a, int bit_b) {
    const int differ = ((state >> bit_a) ^ (state >> bit_b)) & 1;
    return state ^ (differ << bit_a) ^ (differ << bit_b);
}

/// Whether exchanging the two spins leaves the operators as they are, but for the order of their sums.
bool may_exchange(const SystemStructure& s, int bit_a, int bit_b) {
    const double rounding = 4.0 * DBL_EPSILON * s.h0_bound;
    for (int i = 0; i < s.n; ++i) {
        const int pi = exchanged(i, bit_a, bit_b);
        for (int j = 0; j < s.n; ++j) {
            const int pj = exchanged(j, bit_a, bit_b);
            if (std::fabs(s.h0_at(i, j) - s.h0_at(pi, pj)) > rounding || s.fx_at(i, j) != s.fx_at(pi, pj)) {
                return false;
            }
        }
        if (std::fabs(s.m[static_cast<std::size_t>(i)] - s.m[static_cast<std::size_t>(pi)]) > 1e-14) {
            return false;
        }
    }
    return true;
}

/// Product of one multiplet per group, spread over the states of the whole system.
BlockBasis product_basis(const std::vector<Group>& groups, const std::vector<const Multiplet*>& chosen) {
    BlockBasis basis{{{0, 1.0}}};
    for (std::size_t g = 0; g < groups.size(); ++g) {
        const auto members = static_cast<int>(groups[g].size());
        BlockBasis next;
        for (const std::vector<BasisElement>& slow : basis) {
            for (const std::vector<double>& fast : chosen[g]->vectors) {
                std::vector<BasisElement> v;
                for (const BasisElement& e : slow) {
                    for (int local = 0; local < 1 << members; ++local) {
                        if (fast[static_cast<std::size_t>(local)] == 0.0) {
                            continue;
                        }
                        int state = e.state;
                        for (int k = 0; k < members; ++k) {
                            state |= (local >> (members - 1 - k) & 1)
                                     << groups[g][static_cast<std::size_t>(k)];
                        }
                        v.push_back({state, e.value * fast[static_cast<std::size_t>(local)]});
                    }
                }
                next.push_back(std::move(v));
            }
        }
        basis = std::move(next);
    }
    return basis;
}

/// transpose(basis) . dense . basis, rounding noise cleared.
std::vector<double> project(const SystemStructure& s, const std::vector<double>& dense, double bound,
                            const BlockBasis& basis) {
    const std::size_t size = basis.size();
    std::vector<double> out(size * size);
    for (std::size_t a = 0; a < size; ++a) {
        for (std::size_t b = a; b < size; ++b) {
            double sum = 0.0;
            for (const BasisElement& left : basis[a]) {
                for (const BasisElement& right : basis[b]) {
                    sum += left.value * right.value * dense[s.index(left.state, right.state)];
                }
            }
            sum = std::fabs(sum) <= 4.0 * DBL_EPSILON * bound ? 0.0 : sum;
            out[a * size + b] = out[b * size + a] = sum;
        }
    }
    return out;
}

SystemStructure block_structure(const SystemStructure& s, const BlockBasis& basis) {
    SystemStructure block;
    block.n = static_cast<int>(basis.size());
    block.h0 = project(s, s.h0, s.h0_bound, basis);
    block.fx = project(s, s.fx, s.fx_row_sum, basis);
    for (const std::vector<BasisElement>& v : basis) {
        block.m.push_back(s.m[static_cast<std::size_t>(v.front().state)]); // all its states share it
    }
    complete_structure(block);
    return block;
}

/// Calls use(chosen) for every choice of one multiplet per group.
template <typename Use>
void for_each_choice(const std::vector<std::vector<Multiplet>>& options,
                     std::vector<const Multiplet*>& chosen, Use use) {
    if (chosen.size() == options.size()) {
        use(chosen);
        return;
    }
    for (const Multiplet& m : options[chosen.size()]) {
        chosen.push_back(&m);
        for_each_choice(options, chosen, use);
        chosen.pop_back();
    }
}

} // namespace

std::vector<ExchangeBlock> exchange_blocks(const SystemStructure& s, int spins, const int* group) {
    if (!group || spins < 2 || spins > KOR_MAX_SPINS || s.n != 1 << spins) {
        return {};
    }
    const std::vector<Group> groups = groups_of(spins, group);
    if (groups.size() == static_cast<std::size_t>(spins)) {
        return {};
    }
    std::vector<std::vector<Multiplet>> options;
    for (const Group& members : groups) {
        for (std::size_t k = 1; k < members.size(); ++k) {
            if (!may_exchange(s, members[k - 1], members[k])) {
                return {};
            }
        }
        options.push_back(multiplets(static_cast<int>(members.size())));
    }
    std::map<std::vector<int>, ExchangeBlock> blocks;
    std::vector<const Multiplet*> chosen;
    for_each_choice(options, chosen, [&](const std::vector<const Multiplet*>& choice) {
        std::vector<int> momenta;
        for (const Multiplet* m : choice) {
            momenta.push_back(m->twice_j);
        }
        ExchangeBlock& block = blocks[momenta];
        block.copies.push_back(product_basis(groups, choice));
        if (block.copies.size() == 1) {
            block.structure = block_structure(s, block.copies.front());
        }
    });
    std::vector<ExchangeBlock> out;
    for (auto& [momenta, block] : blocks) {
        out.push_back(std::move(block));
    }
    return out;
}

} // namespace kor
