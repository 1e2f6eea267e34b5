#include "kor/spin_system.h"

#include "kor/smoke_check_mode.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace kor {

namespace {

using PairTable = double[KOR_MAX_SPINS + 1][KOR_MAX_SPINS + 1];
using SparseBuilder = void (*)(const SpinIList&, const SpinKet&, int, int, SparseOperator&);

constexpr double two_pi = 2.0 * KOR_PI;

SparseOperator spin_operator; // operator of the one spin being added
SparseOperator pair_operator; // operator of the second spin of a pair
SparseOperator pair_product;  // product of the two
CMatrix whole_operator;       // with the zeros that an endless factor turns into something else

/// mat += factor * op
void add_scaled(const SparseOperator& op, double factor, CMatrix& mat) {
    if (std::isfinite(factor)) {
        AddSparse(op, factor, mat);
    } else {
        SparseToMatrix(op, whole_operator);
        CMatRMultAdd(op.n, whole_operator, factor, mat, 1.0, mat);
    }
}

/// Icoup += omega * (operator of spin i) . (operator of spin j)
void add_pair_product(SparseBuilder build, int i, int j, double omega) {
    RuntimeState& rt = g_runtime;
    build(rt.Ilist, rt.ket, rt.n, i, spin_operator);
    build(rt.Ilist, rt.ket, rt.n, j, pair_operator);
    SparseProduct(spin_operator, pair_operator, pair_product);
    add_scaled(pair_product, omega, rt.Icoup);
}

bool any_coupling(const PairTable& table) {
    for (int i = 1; i <= KOR_MAX_SPINS; ++i)
        for (int j = 1; j <= KOR_MAX_SPINS; ++j)
            if (table[i][j] != 0.0)
                return true;
    return false;
}

/// False, with no spin system left, when the matrices cannot hold its states: spins typed at a prompt may be
/// too many where a negative quantum number hid it.
bool define_basis_size() {
    RuntimeState& rt = g_runtime;
    rt.Nspins = std::clamp(rt.Nspins, 1, KOR_MAX_SPINS);
    std::fill(rt.Ilist + 1, rt.Ilist + KOR_MAX_SPINS + 1, 0);
    for (int s = 1; s <= rt.Nspins; ++s)
        rt.Ilist[s] = std::max(rt.quantnum[s], 0);
    rt.n = infer_nstates(rt.Ilist, rt.Nspins);
    if (rt.n == 0) {
        std::fprintf(stderr,
                     "The spin system has more states than the %d that can be simulated: define it again.\n",
                     KOR_MAX_STATES);
        forget_spins();
    }
    rt.spinsystemdefined = rt.n > 0;
    return rt.spinsystemdefined;
}

void print_definition() {
    const RuntimeState& rt = g_runtime;
    std::printf("\nBuildSpinSystemFromPulseSequenceGlobals()\n");
    std::printf("  Nspins = %d\n", rt.Nspins);
    std::printf("  n      = %d\n", rt.n);
    for (int s = 1; s <= rt.Nspins; ++s)
        std::printf("  spin %d: quantnum=%d  Ilist=%d  relspinamp=%g  resofreq=%g Hz\n", s, rt.quantnum[s],
                    rt.Ilist[s], rt.relspinamp[s], rt.resofreqs[s]);
    std::printf("\n");
}

void build_equilibrium_and_zeeman() {
    RuntimeState& rt = g_runtime;
    CMatZero(rt.n, rt.densmat);
    CMatZero(rt.n, rt.Izee);
    for (int s = 1; s <= rt.Nspins; ++s)
        add_equilibrium_term(s, rt.relspinamp[s]);
    for (int s = 1; s <= rt.Nspins; ++s)
        add_zeeman_term(s, rt.resofreqs[s]);
}

void build_couplings(const PairTable& saved_jc, bool use_saved) {
    RuntimeState& rt = g_runtime;
    std::memset(rt.jc, 0, sizeof rt.jc);
    CMatZero(rt.n, rt.Icoup);
    const bool exact = rt.Nspins > 1 && rt.Jexact != 1;
    int pair = 1;
    for (int i = 1; i < rt.Nspins; ++i)
        for (int j = i + 1; j <= rt.Nspins; ++j, ++pair) {
            const double listed = pair <= rt.Jcount ? rt.couplings[pair] : 0.0;
            add_coupling_term(i, j, use_saved ? saved_jc[i][j] : listed, exact);
        }
}

} // namespace

void add_equilibrium_term(int spin, double intensity) {
    RuntimeState& rt = g_runtime;
    SparseIz(rt.Ilist, rt.ket, rt.n, spin, spin_operator);
    SparseNorm(spin_operator);
    add_scaled(spin_operator, intensity, rt.densmat);
}

void add_zeeman_term(int spin, double offset_hz) {
    RuntimeState& rt = g_runtime;
    SparseIz(rt.Ilist, rt.ket, rt.n, spin, spin_operator);
    add_scaled(spin_operator, two_pi * offset_hz, rt.Izee);
}

void add_coupling_term(int i, int j, double j_hz, bool exact) {
    g_runtime.jc[i][j] = j_hz;
    g_runtime.jc[j][i] = j_hz;
    const double omega = two_pi * j_hz;
    if (omega == 0.0)
        return;
    if (exact) {
        add_pair_product(SparseIx, i, j, omega);
        add_pair_product(SparseIy, i, j, omega);
    }
    add_pair_product(SparseIz, i, j, omega);
}

void MakeGradientOperator() {
    RuntimeState& rt = g_runtime;
    if (rt.n <= 0 || rt.Nspins <= 0) {
        std::fprintf(stderr, "MakeGradientOperator: spin system not set up (n=%d, Nspins=%d)\n", rt.n,
                     rt.Nspins);
        return;
    }
    MakeTotalIz(rt.n, rt.Nspins, rt.ket, rt.Ilist, 0, rt.Izgrad);
}

void make_transverse_totals(int norm) {
    RuntimeState& rt = g_runtime;
    const int spins = spins_of_basis();
    MakeTotalIx(rt.n, spins, rt.ket, rt.Ilist, norm, rt.Ixtot);
    MakeTotalIy(rt.n, spins, rt.ket, rt.Ilist, norm, rt.Iytot);
}

void make_all_totals(int norm) {
    RuntimeState& rt = g_runtime;
    make_transverse_totals(norm);
    MakeTotalIz(rt.n, spins_of_basis(), rt.ket, rt.Ilist, norm, rt.Iztot);
}

void forget_spins() {
    RuntimeState& rt = g_runtime;
    rt.Nspins = 0;
    rt.n = 0;
    rt.spinsystemdefined = 0;
    std::fill(rt.Ilist + 1, rt.Ilist + KOR_MAX_SPINS + 1, 0);
}

bool basis_is_current() {
    const RuntimeState& rt = g_runtime;
    bool same = rt.spinsystemdefined && rt.n == infer_nstates(rt.Ilist, rt.Nspins);
    for (int s = 1; s <= rt.Nspins; ++s)
        same = same && rt.Ilist[s] == std::max(rt.quantnum[s], 0);
    return same;
}

int spins_of_basis() {
    return basis_is_current() ? g_runtime.Nspins : infer_nspins(g_runtime.Ilist);
}

void BuildSpinSystemFromPulseSequenceGlobals() {
    RuntimeState& rt = g_runtime;
    PairTable saved_jc;
    std::memcpy(saved_jc, rt.jc, sizeof saved_jc);
    if (!define_basis_size())
        return;
    if (!KOR_GetSmokeCheckMode())
        print_definition();
    MakeKets(rt.ket, rt.Ilist);
    build_equilibrium_and_zeeman();
    build_couplings(saved_jc, any_coupling(saved_jc));
    make_all_totals(0);
    MakeGradientOperator();
    rt.rfpulsedefined = 1;
    rt.offsetsdefined = 1;
}

void KOR_RebuildSpinSystemFromPulseSequenceGlobals() {
    BuildSpinSystemFromPulseSequenceGlobals();
}

int find_alike_spins(int* group) {
    const RuntimeState& rt = g_runtime;
    const auto alike = [](int i, int j) {
        bool same = rt.resofreqs[i] == rt.resofreqs[j];
        for (int k = 1; k <= rt.Nspins; ++k) {
            same = same && (k == i || k == j || rt.jc[i][k] == rt.jc[j][k]);
        }
        return same;
    };
    for (int i = 1; i <= rt.Nspins; ++i) {
        if (rt.Ilist[i] != 1) {
            return 0;
        }
        int first = 1;
        while (first < i && !alike(first, i)) {
            ++first;
        }
        group[i - 1] = first;
    }
    return rt.Nspins;
}

} // namespace kor
