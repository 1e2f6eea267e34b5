// Interchangeable spins: each block of coupled angular momenta is a smaller system of its own, computed
// once however many copies it has.
#include "sector_plan.h"
#include "spin_exchange.h"

#include <algorithm>

namespace kor {

namespace {

struct Part {
    FastSector fast;
    const Way* way;
    int block_classes;
};

std::vector<ExchangeBlock> g_blocks; // of the system below, kept for its next sector
std::vector<double> g_h0, g_fx, g_m;
std::vector<int> g_group;
std::vector<Part> g_parts;

int prepare(const FastSector& fast) {
    g_parts.resize(g_blocks.size());
    int together = 1;
    for (std::size_t b = 0; b < g_blocks.size(); ++b) {
        Part& part = g_parts[b];
        part.fast.structure = g_blocks[b].structure;
        part.fast.sector = fast.sector;
        part.fast.slot = b;
        part.way = part.fast.structure.n <= kMaxLaneStates ? &kLaneWay : &kColumnWay;
        plan_sector(*part.way, part.fast);
        part.fast.classes = fast.classes;
        part.block_classes = part.way->prepare(part.fast);
        together = std::max(together, part.block_classes);
    }
    return together;
}

/// Adds basis . P . transpose(basis) of one class to (re, im).
void add_copy(int n, const BlockBasis& basis, const double* p_re, const double* p_im, double* re,
              double* im) {
    for (std::size_t a = 0; a < basis.size(); ++a) {
        for (std::size_t b = 0; b < basis.size(); ++b) {
            const double value_re = *p_re++;
            const double value_im = *p_im++;
            for (const BasisElement& left : basis[a]) {
                for (const BasisElement& right : basis[b]) {
                    const double weight = left.value * right.value;
                    re[left.state * n + right.state] += weight * value_re;
                    im[left.state * n + right.state] += weight * value_im;
                }
            }
        }
    }
}

void add_part(int n, const ExchangeBlock& exchange, const Part& part, ClassBlock& block) {
    static ClassBlock inner;
    const int size = part.fast.structure.n;
    inner.shape(size, part.block_classes);
    for (int done = 0; done < block.count; done += part.block_classes) {
        inner.first = block.first + done;
        inner.count = std::min(part.block_classes, block.count - done);
        part.way->compute(part.fast, inner);
        for (int k = 0; k < inner.count; ++k) {
            for (const BlockBasis& basis : exchange.copies) {
                add_copy(n, basis, &inner.re[static_cast<std::size_t>(k * size * size)],
                         &inner.im[static_cast<std::size_t>(k * size * size)],
                         &block.re[static_cast<std::size_t>((done + k) * n * n)],
                         &block.im[static_cast<std::size_t>((done + k) * n * n)]);
            }
        }
    }
}

void compute(const FastSector& fast, ClassBlock& block) {
    std::fill(block.re.begin(), block.re.end(), 0.0);
    std::fill(block.im.begin(), block.im.end(), 0.0);
    for (std::size_t b = 0; b < g_parts.size(); ++b) {
        add_part(fast.structure.n, g_blocks[b], g_parts[b], block);
    }
}

} // namespace

bool has_equivalent_spins(const FastSector& fast) {
    const EngineSystem& system = fast.sector.system;
    const std::vector<int> group(system.spin_group,
                                 system.spin_group + (system.spin_group ? system.spins : 0));
    if (group != g_group || fast.structure.h0 != g_h0 || fast.structure.fx != g_fx ||
        fast.structure.m != g_m) {
        g_blocks = exchange_blocks(fast.structure, system.spins, system.spin_group);
        g_group = group;
        g_h0 = fast.structure.h0;
        g_fx = fast.structure.fx;
        g_m = fast.structure.m;
    }
    return !g_blocks.empty();
}

const Way kEquivalentWay{"equivalent spins", prepare, compute};

} // namespace kor
