#include "spinoperatorlib.h"

#include <cstdio>
#include <cstring>

namespace kor {

int infer_nspins(const SpinIList& Ilist) {
    for (int s = KOR_MAX_SPINS; s >= 1; --s) {
        if (Ilist[s] > 0) {
            return s;
        }
    }
    return 0;
}

int infer_nstates(const SpinIList& Ilist, int Nspins) {
    int states = 1;
    for (int s = 1; s <= Nspins; ++s) {
        // The product stays within the capacity; the comparison comes first, so that nothing overflows.
        if (Ilist[s] < 0 || Ilist[s] >= KOR_MAX_STATES || KOR_MAX_STATES / (Ilist[s] + 1) < states) {
            return 0;
        }
        states *= Ilist[s] + 1;
    }
    return states;
}

void ketproc(SpinKet& ket, int state, const int* m, int Nspins) {
    for (int s = 1; s <= Nspins; ++s) {
        ket[state][s] = m[s];
    }
}

void enum_kets_rec(SpinKet& ket, const SpinIList& Ilist, int Nspins, int spin_index, int* m, int* state_io) {
    for (int twom = Ilist[spin_index]; twom >= -Ilist[spin_index]; twom -= 2) {
        m[spin_index] = twom;
        if (spin_index == Nspins) {
            ketproc(ket, ++*state_io, m, Nspins);
        } else {
            enum_kets_rec(ket, Ilist, Nspins, spin_index + 1, m, state_io);
        }
    }
}

void MakeKets(SpinKet& ket, const SpinIList& Ilist) {
    std::memset(ket, 0, sizeof ket);
    const int Nspins = infer_nspins(Ilist);
    if (Nspins == 0) {
        return;
    }
    if (infer_nstates(Ilist, Nspins) == 0) {
        std::fprintf(stderr, "MakeKets: too many states for Nspins=%d (max %d)\n", Nspins, KOR_MAX_STATES);
        return;
    }
    int m[KOR_MAX_SPINS + 1] = {};
    int state = 0;
    enum_kets_rec(ket, Ilist, Nspins, 1, m, &state);
}

int ket_equal(const int* a, const int* b, int Nspins) {
    for (int s = 1; s <= Nspins; ++s) {
        if (a[s] != b[s]) {
            return 0;
        }
    }
    return 1;
}

} // namespace kor
