#include "kormodel_refcheck.h"

#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "kor/spin_system.h"
#include "spinoperatorlib.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>

namespace kor {

void configure_two_spin_half_system(double offset1_hz, double offset2_hz, double j_hz, int coupling_mode) {
    RuntimeState& state = g_runtime;
    state.Nspins = 2;
    state.n = 0;
    state.Jexact = coupling_mode;
    state.Jcount = 1;
    std::fill(std::begin(state.quantnum), std::end(state.quantnum), 0);
    std::fill(std::begin(state.relspinamp), std::end(state.relspinamp), 0.0);
    std::fill(std::begin(state.resofreqs), std::end(state.resofreqs), 0.0);
    std::fill(std::begin(state.couplings), std::end(state.couplings), 0.0);
    for (auto& row : state.jc)
        std::fill(std::begin(row), std::end(row), 0.0);

    state.quantnum[1] = state.quantnum[2] = 1;
    state.relspinamp[1] = state.relspinamp[2] = 1.0;
    state.resofreqs[1] = offset1_hz;
    state.resofreqs[2] = offset2_hz;
    state.couplings[1] = j_hz;

    KOR_SetSmokeCheckMode(1);
    KOR_RebuildSpinSystemFromPulseSequenceGlobals();
    KOR_SetSmokeCheckMode(0);
}

namespace {

// One expected element of a matrix.
struct Entry {
    int row, column;
    double re, im;
};

template <int Count>
bool check_entries(const char* tag, const char* name, const CMatrix& matrix, const Entry (&entries)[Count],
                   double tol) {
    bool ok = true;
    for (const Entry& e : entries)
        ok &= check_cmat_entry(tag, name, matrix, e.row, e.column, e.re, e.im, tol);
    return ok;
}

// The listed elements and zeros everywhere else in the dim x dim block.
template <int Count>
bool check_whole_matrix(const char* tag, const char* name, const CMatrix& matrix, int dim,
                        const Entry (&entries)[Count], double tol) {
    MatrixCell cells[Count];
    for (int k = 0; k < Count; ++k)
        cells[k] = {entries[k].row, entries[k].column};
    const bool listed = check_entries(tag, name, matrix, entries, tol);
    const bool zeros = check_cmat_zero_except(tag, name, matrix, dim, cells, Count, tol);
    return listed && zeros;
}

constexpr char spinop_tag[] = "spinop";
constexpr double spinop_tol = 1e-12;

bool check_one_spin_operators() {
    static SpinKet ket;
    static CMatrix ix, iy, iz, commutator;
    const SpinIList spins = {0, 1};
    bool ok = true;

    MakeKets(ket, spins);
    if (ket[1][1] != 1 || ket[2][1] != -1) {
        std::printf("FAIL %-9s one-spin ket enumeration differs from the reference order\n", spinop_tag);
        ok = false;
    }
    MakeMatrixIx(spins, ket, 2, 1, ix);
    MakeMatrixIy(spins, ket, 2, 1, iy);
    MakeMatrixIz(spins, ket, 2, 1, iz);
    ok &= check_whole_matrix(spinop_tag, "Ix", ix, 2, {{1, 2, 0.5, 0}, {2, 1, 0.5, 0}}, spinop_tol);
    ok &= check_whole_matrix(spinop_tag, "Iy", iy, 2, {{1, 2, 0, -0.5}, {2, 1, 0, 0.5}}, spinop_tol);
    ok &= check_whole_matrix(spinop_tag, "Iz", iz, 2, {{1, 1, 0.5, 0}, {2, 2, -0.5, 0}}, spinop_tol);

    CMatCommutator(2, ix, iy, commutator);
    ok &= check_entries(spinop_tag, "[Ix,Iy]", commutator, {{1, 1, 0, 0.5}, {2, 2, 0, -0.5}}, spinop_tol);
    return ok;
}

bool two_spin_kets_in_order(const SpinKet& ket) {
    constexpr int expected[5][3] = {{}, {0, 1, 1}, {0, 1, -1}, {0, -1, 1}, {0, -1, -1}};
    for (int state = 1; state <= 4; ++state)
        if (ket[state][1] != expected[state][1] || ket[state][2] != expected[state][2])
            return false;
    return true;
}

bool check_two_spin_operators() {
    static SpinKet ket;
    static CMatrix total;
    const SpinIList spins = {0, 1, 1};
    bool ok = true;

    MakeKets(ket, spins);
    if (!two_spin_kets_in_order(ket)) {
        std::printf("FAIL %-9s two-spin ket enumeration differs from the reference order\n", spinop_tag);
        ok = false;
    }
    constexpr Entry ixtot[] = {{1, 2, 0.5, 0}, {1, 3, 0.5, 0}, {2, 1, 0.5, 0}, {2, 4, 0.5, 0},
                               {3, 1, 0.5, 0}, {3, 4, 0.5, 0}, {4, 2, 0.5, 0}, {4, 3, 0.5, 0}};
    constexpr Entry iytot[] = {{1, 2, 0, -0.5}, {1, 3, 0, -0.5}, {2, 4, 0, -0.5}, {3, 4, 0, -0.5},
                               {2, 1, 0, 0.5},  {3, 1, 0, 0.5},  {4, 2, 0, 0.5},  {4, 3, 0, 0.5}};
    MakeTotalIx(4, 2, ket, spins, 0, total);
    ok &= check_whole_matrix(spinop_tag, "Ixtot", total, 4, ixtot, spinop_tol);
    MakeTotalIy(4, 2, ket, spins, 0, total);
    ok &= check_whole_matrix(spinop_tag, "Iytot", total, 4, iytot, spinop_tol);
    MakeTotalIz(4, 2, ket, spins, 0, total);
    ok &= check_whole_matrix(spinop_tag, "Iztot", total, 4, {{1, 1, 1, 0}, {4, 4, -1, 0}}, spinop_tol);
    return ok;
}

// The pair of spins that the Hamiltonian and spectrum cases share.
constexpr double offset1_hz = 100.0;
constexpr double offset2_hz = -40.0;
constexpr double coupling_hz = 12.0;

constexpr char hamilton_tag[] = "hamilton";
constexpr double hamilton_tol = 1e-10;

bool check_weak_hamiltonian() {
    configure_two_spin_half_system(offset1_hz, offset2_hz, coupling_hz, 1);
    bool ok = true;
    if (g_runtime.n != 4) {
        std::printf("FAIL %-9s two-spin Hilbert dimension : got %d expected 4\n", hamilton_tag, g_runtime.n);
        ok = false;
    }
    const double sum = (offset1_hz + offset2_hz) * KOR_PI;
    const double difference = (offset1_hz - offset2_hz) * KOR_PI;
    const double half_j = 0.5 * KOR_PI * coupling_hz;
    ok &= check_entries(hamilton_tag, "Izee", g_runtime.Izee,
                        {{1, 1, sum, 0}, {2, 2, difference, 0}, {3, 3, -difference, 0}, {4, 4, -sum, 0}},
                        hamilton_tol);
    ok &= check_whole_matrix(hamilton_tag, "Icoup weak", g_runtime.Icoup, 4,
                             {{1, 1, half_j, 0}, {2, 2, -half_j, 0}, {3, 3, -half_j, 0}, {4, 4, half_j, 0}},
                             hamilton_tol);
    return ok;
}

bool check_exact_hamiltonian() {
    configure_two_spin_half_system(offset1_hz, offset2_hz, coupling_hz, 2);
    const double sum = (offset1_hz + offset2_hz) * KOR_PI;
    const double flip_flop = KOR_PI * coupling_hz;
    const double half_j = 0.5 * flip_flop;
    bool ok = check_whole_matrix(hamilton_tag, "Icoup exact", g_runtime.Icoup, 4,
                                 {{1, 1, half_j, 0},
                                  {2, 2, -half_j, 0},
                                  {3, 3, -half_j, 0},
                                  {4, 4, half_j, 0},
                                  {2, 3, flip_flop, 0},
                                  {3, 2, flip_flop, 0}},
                                 hamilton_tol);
    CMatAdd(4, g_runtime.Izee, g_runtime.Icoup, g_runtime.Istat);
    ok &= check_entries(hamilton_tag, "Istat exact", g_runtime.Istat,
                        {{2, 3, flip_flop, 0}, {3, 2, flip_flop, 0}, {1, 1, half_j + sum, 0}}, hamilton_tol);
    return ok;
}

constexpr char spectrum_tag[] = "spectrum";
constexpr double line_tolerance_hz = 0.05;

// Frequencies found so far, each once.
struct FrequencySet {
    double hz[KOR_MAX_LINES + 1];
    int count;
};

bool contains_frequency(const FrequencySet& set, double hz) {
    for (int k = 0; k < set.count; ++k)
        if (approx_equal(set.hz[k], hz, line_tolerance_hz))
            return true;
    return false;
}

void collect_frequencies(const LineList& lines, int count, FrequencySet* set) {
    constexpr double amplitude_threshold = 1e-12;
    for (int k = 1; k <= count; ++k) {
        const double hz = std::fabs(lines[2][k]);
        const bool counts = std::fabs(lines[1][k]) > amplitude_threshold;
        if (counts && !contains_frequency(*set, hz) && set->count < KOR_MAX_LINES + 1)
            set->hz[set->count++] = hz;
    }
}

// Adds the lines of `observable` for a density matrix of total y magnetisation under Istat.
void collect_spectrum(const CMatrix& density, const CMatrix& observable, FrequencySet* set) {
    static LineList cosine, sine;
    int cosine_count = 0, sine_count = 0;
    DoSpectrum(g_runtime.n, density, g_runtime.Istat, observable, cosine, sine, &cosine_count, &sine_count);
    collect_frequencies(cosine, cosine_count, set);
    collect_frequencies(sine, sine_count, set);
}

bool check_resonances(const FrequencySet& set) {
    constexpr double expected_hz[] = {34.0, 46.0, 94.0, 106.0};
    constexpr int expected_count = 4;
    bool ok = true;
    if (set.count != expected_count) {
        std::printf("FAIL %-9s unique absolute resonance count: got %d expected %d\n", spectrum_tag,
                    set.count, expected_count);
        ok = false;
    }
    for (double hz : expected_hz) {
        if (contains_frequency(set, hz))
            continue;
        std::printf("FAIL %-9s missing resonance at %.6g Hz\n", spectrum_tag, hz);
        ok = false;
    }
    if (!ok) {
        std::printf("      observed absolute frequencies:");
        for (int k = 0; k < set.count; ++k)
            std::printf(" %.12g", set.hz[k]);
        std::printf("\n");
    }
    return ok;
}

} // namespace

bool check_spin_operator_case() {
    bool ok = check_one_spin_operators();
    ok &= check_two_spin_operators();
    if (ok)
        std::puts("PASS          spin-operator-reference");
    return ok;
}

bool check_hamiltonian_case() {
    bool ok = check_weak_hamiltonian();
    ok &= check_exact_hamiltonian();
    if (ok)
        std::puts("PASS          hamiltonian-reference");
    return ok;
}

bool check_weak_spectrum_case() {
    static CMatrix density;
    configure_two_spin_half_system(offset1_hz, offset2_hz, coupling_hz, 1);
    CMatAdd(g_runtime.n, g_runtime.Izee, g_runtime.Icoup, g_runtime.Istat);
    CopyCMatrix(g_runtime.n, g_runtime.Iytot, density);

    FrequencySet set{};
    collect_spectrum(density, g_runtime.Ixtot, &set);
    collect_spectrum(density, g_runtime.Iytot, &set);
    const bool ok = check_resonances(set);
    if (ok)
        std::puts("PASS          weak-two-spin-spectrum-reference");
    return ok;
}

} // namespace kor
