// Interchangeable spins 1/2: the basis of their coupled angular momenta, in which the operators fall into
// small blocks. Three spins alike, for example, are one of 3/2 and twice one of 1/2, so that AX3 takes
// 8 + 4 states instead of 16.
// Edmonds, Angular Momentum in Quantum Mechanics, table 5.2 (coupling a spin 1/2).
#pragma once

#include "structure.h"

#include <vector>

namespace kor {

struct BasisElement {
    int state; // 0-based, of the product basis
    double value;
};

/// One vector per state of a block.
using BlockBasis = std::vector<std::vector<BasisElement>>;

struct ExchangeBlock {
    SystemStructure structure;
    std::vector<BlockBasis> copies; // all with this structure
};

/// The blocks of a system of `spins` spins 1/2 in which spins with equal `group` are alike. Empty when
/// no two are, or when exchanging them changes the operators by more than rounding.
std::vector<ExchangeBlock> exchange_blocks(const SystemStructure& s, int spins, const int* group);

} // namespace kor
