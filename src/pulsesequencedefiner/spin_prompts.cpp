#include "pulsesequencedefiner/spin_prompts.h"

#include "kor/runtime_state.h"
#include "pulsesequencedefiner/prompts.h"

#include <algorithm>
#include <cstdio>

namespace kor {

namespace {

constexpr std::size_t prompt_size = 80;

int ask_number_of_spins() {
    int spins = 0;
    do {
        if (!read_int_prompt("Number of Spins = ", &spins))
            return 0;
    } while (spins > PS_MAX_SPINS);
    g_runtime.Nspins = std::max(spins, 0);
    return 1;
}

int ask_quantum_numbers() {
    char prompt[prompt_size];
    for (int k = 1; k <= g_runtime.Nspins; ++k) {
        std::snprintf(prompt, sizeof prompt, "I quantum number of spin(%d) = x/2  with   x = ", k);
        if (!read_int_prompt(prompt, &g_runtime.quantnum[k]))
            return 0;
    }
    return 1;
}

/// The dimension as the build counts it, or PS_MAX_STATES + 1 for anything larger.
int dimension_of_quantum_numbers() {
    long long n = 1;
    for (int k = 1; k <= g_runtime.Nspins; ++k)
        n = std::min<long long>(n * (std::max(g_runtime.quantnum[k], 0) + 1LL), PS_MAX_STATES + 1);
    return static_cast<int>(n);
}

/// One number per spin; the prompt is title, spin number, closing.
int ask_per_spin(const char* title, const char* closing, double* values) {
    char prompt[prompt_size];
    for (int k = 1; k <= g_runtime.Nspins; ++k) {
        std::snprintf(prompt, sizeof prompt, "%s%d%s", title, k, closing);
        if (!read_double_prompt(prompt, &values[k]))
            return 0;
    }
    return 1;
}

int ask_couplings() {
    RuntimeState& rt = g_runtime;
    char prompt[prompt_size];
    for (int i = 1; i < rt.Nspins; ++i)
        for (int j = i + 1; j <= rt.Nspins; ++j) {
            std::snprintf(prompt, sizeof prompt, "Scalar Coupling Constant J(%d,%d)  = ", i, j);
            if (!read_double_prompt(prompt, &rt.couplings[rt.Jcount + 1]))
                return 0;
            ++rt.Jcount;
        }
    return 1;
}

} // namespace

int PS_IspinsParams() {
    std::puts("Definition of the spinsystem: ");
    int n = 0;
    do {
        std::fill(g_runtime.quantnum + 1, g_runtime.quantnum + PS_MAX_SPINS + 1, 0);
        if (!ask_number_of_spins() || !ask_quantum_numbers())
            return 0;
        n = dimension_of_quantum_numbers();
    } while (n > PS_MAX_STATES);
    std::printf("n = %d\n", n);
    return 1;
}

int PS_MakeBoltzmannParams() {
    return ask_per_spin("Relative Intensity of Spin (", ") = ", g_runtime.relspinamp);
}

int PS_MakeZeemanParams() {
    return ask_per_spin("Offset-frequency [Hz] of Spin (", ") = ", g_runtime.resofreqs);
}

int PS_SpinSpinCouplingParams() {
    g_runtime.Jcount = 0;
    if (g_runtime.Nspins < 2)
        return 1;
    std::puts("1. Weak-Coupling approximation. ");
    std::puts("2. Exact calculation. ");
    if (!read_int_prompt(" Your choice [1,2] : ", &g_runtime.Jexact))
        return 0;
    std::puts("Give all Scalar coupling constants J(i,j)");
    std::puts("from the term J(i,j).I(i).S(j)");
    return ask_couplings();
}

int define_spin_system_params() {
    if (!PS_IspinsParams() || !PS_MakeBoltzmannParams() || !PS_MakeZeemanParams() ||
        !PS_SpinSpinCouplingParams())
        return 0;
    g_runtime.systemset = 1;
    return 1;
}

} // namespace kor
