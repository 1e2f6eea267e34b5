#include "kor/spin_system_dialogues.h"

#include "consoleutil.h"
#include "kor/runtime_state.h"
#include "kor/spin_system.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

namespace kor {

namespace {

enum class Reading { complete, start_again, input_ended };

struct SpinDefinition {
    int Nspins;
    SpinIList doubled; // twice the quantum number of each spin
    int n;
};

/// What follows an answer that could not be read.
Reading after_unreadable_answer() {
    if (console_at_end())
        return console_resume_after_end() ? Reading::start_again : Reading::input_ended;
    console_discard_line();
    return Reading::start_again;
}

Reading read_number_of_spins(int* Nspins) {
    for (;;) {
        std::printf("\nNumber of Spins (1..%d) = ", KOR_MAX_SPINS);
        if (!console_read_int(Nspins)) {
            if (after_unreadable_answer() == Reading::input_ended)
                return Reading::input_ended;
        } else if (*Nspins >= 1 && *Nspins <= KOR_MAX_SPINS) {
            return Reading::complete;
        }
    }
}

/// Product of the doubled quantum numbers + 1, kept within int: beyond 256 only its sign matters.
int dimension_of(int Nspins, const SpinIList& doubled) {
    long long n = 1;
    for (int s = 1; s <= Nspins; ++s)
        n = std::clamp<long long>(n * (doubled[s] + 1LL), INT_MIN, INT_MAX);
    return static_cast<int>(n);
}

Reading read_spin_definition(SpinDefinition* spins) {
    std::fill(spins->doubled, spins->doubled + KOR_MAX_SPINS + 1, 0);
    if (read_number_of_spins(&spins->Nspins) == Reading::input_ended)
        return Reading::input_ended;
    for (int s = 1; s <= spins->Nspins; ++s) {
        std::printf("I quantum number of spin(%d) = x/2  with x = ", s);
        if (!console_read_int(&spins->doubled[s]))
            return after_unreadable_answer();
    }
    spins->n = dimension_of(spins->Nspins, spins->doubled);
    if (spins->n <= KOR_MAX_STATES)
        return Reading::complete;
    std::printf("\nToo many states (n=%d > %d). Redefine spins.\n", spins->n, KOR_MAX_STATES);
    return Reading::start_again;
}

void store_definition(const SpinDefinition& spins) {
    RuntimeState& rt = g_runtime;
    rt.Nspins = spins.Nspins;
    rt.n = spins.n;
    std::copy(spins.doubled + 1, spins.doubled + KOR_MAX_SPINS + 1, rt.Ilist + 1);
    std::copy(spins.doubled + 1, spins.doubled + spins.Nspins + 1, rt.quantnum + 1);
}

/// The first spin whose quantum number gives no states, or 0.
int first_impossible_spin() {
    const RuntimeState& rt = g_runtime;
    for (int s = 1; s <= rt.Nspins; ++s)
        if (rt.Ilist[s] < 0)
            return s;
    return 0;
}

double read_double_or_zero() {
    double value = 0.0;
    return console_read_double(&value) ? value : 0.0;
}

int ask_coupling_mode() {
    std::printf("*************************************\n"
                "***  Define J coupling constants  ***\n"
                "*************************************\n\n"
                "1. Weak-Coupling approximation\n"
                "2. Exact calculation\n"
                "Your choice [1,2] : ");
    int mode = 1;
    return console_read_int(&mode) ? mode : 1;
}

void ask_coupling(int i, int j) {
    RuntimeState& rt = g_runtime;
    std::printf("J(%d,%d) = ", i, j);
    const double j_hz = read_double_or_zero();
    rt.couplings[++rt.Jcount] = j_hz;
    if (j_hz != 0.0)
        std::printf("Calculating coupling term for (%d,%d)\n", i, j);
    add_coupling_term(i, j, j_hz, rt.Jexact != 1);
}

} // namespace

int Ispins() {
    SpinDefinition spins;
    Reading reading = Reading::start_again;
    while (reading == Reading::start_again)
        reading = read_spin_definition(&spins);
    if (reading == Reading::input_ended)
        return 0;
    store_definition(spins);
    MakeKets(g_runtime.ket, g_runtime.Ilist);
    std::printf("\nNumber of states n = %d\n", g_runtime.n);
    return 1;
}

void SetupSpins() {
    RuntimeState& rt = g_runtime;
    rt.spinsystemdefined = 0;
    if (!Ispins())
        return;
    rt.n = dimension_of(rt.Nspins, rt.Ilist);
    if (const int spin = first_impossible_spin()) {
        std::fprintf(stderr, "SetupSpins: invalid spin quantum number for spin %d\n", spin);
        rt.n = 0;
    }
    if (rt.n < 1 || rt.n > KOR_MAX_STATES) {
        std::fprintf(stderr,
                     "SetupSpins: resulting dimension n=%d out of supported range (1..MATRIXMATH_DIM)\n",
                     rt.n);
        forget_spins();
        return;
    }
    MakeKets(rt.ket, rt.Ilist);
    make_all_totals(0);
    rt.spinsystemdefined = 1;
}

void MakeBoltzmann() {
    RuntimeState& rt = g_runtime;
    CMatZero(rt.n, rt.densmat);
    for (int s = 1; s <= rt.Nspins; ++s) {
        std::printf("\nRelative Intensity of Spin (%d) : ", s);
        rt.relspinamp[s] = read_double_or_zero();
        add_equilibrium_term(s, rt.relspinamp[s]);
    }
}

void MakeZeeman() {
    RuntimeState& rt = g_runtime;
    CMatZero(rt.n, rt.Izee);
    for (int s = 1; s <= rt.Nspins; ++s) {
        std::printf("\nOffset-frequency [Hz] of Spin(%d) : ", s);
        rt.resofreqs[s] = read_double_or_zero();
        add_zeeman_term(s, rt.resofreqs[s]);
    }
}

void SpinSpinCoupling() {
    RuntimeState& rt = g_runtime;
    std::memset(rt.jc, 0, sizeof rt.jc);
    std::memset(rt.couplings, 0, sizeof rt.couplings);
    rt.Jcount = 0;
    CMatZero(rt.n, rt.Icoup);
    if (rt.Nspins <= 1) {
        rt.Jexact = 1;
        return;
    }
    rt.Jexact = ask_coupling_mode();
    std::printf("Give all scalar coupling constants J(i,j) [Hz]\n"
                "Hamiltonian term: 2π J(i,j) (Ix_i Ix_j + Iy_i Iy_j + Iz_i Iz_j)\n"
                "(weak coupling drops transverse terms)\n\n");
    for (int i = 1; i < rt.Nspins; ++i)
        for (int j = i + 1; j <= rt.Nspins; ++j)
            ask_coupling(i, j);
}

} // namespace kor
