#include "kor/spin_system_dialogues.h"

#include "kor/runtime_state.h"
#include "kor/spin_system.h"

#include <algorithm>
#include <cstring>

namespace kor {

namespace {

int read_int(std::FILE* stream, int otherwise) {
    int value = 0;
    return stream && std::fscanf(stream, "%d", &value) == 1 ? value : otherwise;
}

double read_double(std::FILE* stream) {
    double value = 0.0;
    return stream && std::fscanf(stream, "%lf", &value) == 1 ? value : 0.0;
}

} // namespace

void NonIntIspins(std::FILE* stream) {
    RuntimeState& rt = g_runtime;
    rt.Nspins = std::clamp(read_int(stream, 0), 1, KOR_MAX_SPINS);
    std::fill(rt.Ilist + 1, rt.Ilist + KOR_MAX_SPINS + 1, 0);
    long long states = 1;
    for (int s = 1; s <= rt.Nspins; ++s) {
        rt.Ilist[s] = std::max(read_int(stream, 1), 0);
        states = std::min<long long>(states * (rt.Ilist[s] + 1LL), KOR_MAX_STATES + 1);
    }
    rt.n = states <= KOR_MAX_STATES ? static_cast<int>(states) : 0;
    MakeKets(rt.ket, rt.Ilist);
}

void NonIntMakeBoltzmann(std::FILE* stream) {
    CMatZero(g_runtime.n, g_runtime.densmat);
    for (int s = 1; s <= g_runtime.Nspins; ++s)
        add_equilibrium_term(s, read_double(stream));
}

void NonIntMakeZeeman(std::FILE* stream) {
    CMatZero(g_runtime.n, g_runtime.Izee);
    for (int s = 1; s <= g_runtime.Nspins; ++s)
        add_zeeman_term(s, read_double(stream));
}

void NonIntSpinSpinCoupling(std::FILE* stream) {
    RuntimeState& rt = g_runtime;
    std::memset(rt.jc, 0, sizeof rt.jc);
    CMatZero(rt.n, rt.Icoup);
    if (rt.Nspins <= 1)
        return;
    const bool exact = read_int(stream, 1) != 1;
    read_int(stream, 0);
    for (int i = 1; i < rt.Nspins; ++i)
        for (int j = i + 1; j <= rt.Nspins; ++j)
            add_coupling_term(i, j, read_double(stream), exact);
}

} // namespace kor
