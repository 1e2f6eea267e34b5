#include "ladder_steps.h"

#include <cmath>
#include <cstring>

namespace kor {

namespace {

using LadderAction = void (*)(const SpinIList&, int, int, const SpinKet&, SpinKet&, double*);

void copy_state(int state, const SpinKet& inket, SpinKet& outket) {
    for (int s = 1; s <= KOR_MAX_SPINS; ++s) {
        outket[state][s] = inket[state][s];
    }
}

double root_or_zero(double product) {
    return product > 0.0 ? std::sqrt(product) : 0.0;
}

void give(double* target, double value) {
    if (target) {
        *target = value;
    }
}

/// <bra| ladder |ket>, through the work table newket.
void inproduct(LadderAction act, const SpinIList& Ilist, const SpinKet& ket, int Brastate, int Ketstate,
               int Xspin, SpinKet& newket, double* element1, double* element2) {
    double coefficient = 0.0;
    std::memset(newket, 0, sizeof newket);
    act(Ilist, Ketstate, Xspin, ket, newket, &coefficient);
    const bool connected =
        coefficient != 0.0 && ket_equal(ket[Brastate], newket[Ketstate], infer_nspins(Ilist));
    give(element1, connected ? coefficient : 0.0);
    give(element2, 0.0);
}

/// States between two neighbours that differ by one unit of spin Xspin: the last spin varies fastest.
int state_stride(const SpinIList& Ilist, int Xspin, int Nspins) {
    int stride = 1;
    for (int s = Xspin + 1; s <= Nspins; ++s) {
        stride *= Ilist[s] + 1;
    }
    return stride;
}

/// The steps of every state; the one that a step reaches lies `shift` states away.
void list_steps(LadderAction act, const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, int shift,
                LadderSteps& out) {
    static SpinKet newket;
    const int Nspins = infer_nspins(Ilist);
    out.shift = shift;
    for (int l = 1; l <= n; ++l) {
        const int k = l + shift;
        double coefficient = 0.0;
        act(Ilist, l, Xspin, ket, newket, &coefficient);
        const bool reached = coefficient != 0.0 && k >= 1 && k <= n && ket_equal(ket[k], newket[l], Nspins);
        out.coefficient[l] = reached ? coefficient : 0.0;
    }
}

/// Ladder matrix column by column.
void make_ladder(const LadderSteps& steps, int n, CMatrix& out) {
    CMatZero(n, out);
    for (int l = 1; l <= n; ++l) {
        if (steps.coefficient[l] != 0.0) {
            out[l + steps.shift][l][1] = steps.coefficient[l];
        }
    }
}

} // namespace

void operateIplus(const SpinIList& Ilist, int Xstate, int Xspin, const SpinKet& inket, SpinKet& outket,
                  double* coefficient) {
    const int twoI = Ilist[Xspin];
    const int twom = inket[Xstate][Xspin];
    copy_state(Xstate, inket, outket);
    if (twoI <= twom + 1) {
        give(coefficient, 0.0);
        return;
    }
    outket[Xstate][Xspin] = twom + 2;
    give(coefficient, root_or_zero(((twoI - twom) / 2.0) * ((twoI + twom + 2) / 2.0)));
}

void operateImin(const SpinIList& Ilist, int Xstate, int Xspin, const SpinKet& inket, SpinKet& outket,
                 double* coefficient) {
    const int twoI = Ilist[Xspin];
    const int twom = inket[Xstate][Xspin];
    copy_state(Xstate, inket, outket);
    if (twom - 1 <= -twoI) {
        give(coefficient, 0.0);
        return;
    }
    outket[Xstate][Xspin] = twom - 2;
    give(coefficient, root_or_zero(((twoI + twom) / 2.0) * ((twoI - twom + 2) / 2.0)));
}

void InproductIplus(const SpinIList& Ilist, const SpinKet& ket, int Brastate, int Ketstate, int Xspin,
                    double* element1, double* element2) {
    static SpinKet newket;
    inproduct(operateIplus, Ilist, ket, Brastate, Ketstate, Xspin, newket, element1, element2);
}

void inproductImin(const SpinIList& Ilist, const SpinKet& ket, int Brastate, int Ketstate, int Xspin,
                   double* element1, double* element2) {
    static SpinKet newket;
    inproduct(operateImin, Ilist, ket, Brastate, Ketstate, Xspin, newket, element1, element2);
}

void list_raising_steps(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, LadderSteps& out) {
    list_steps(operateIplus, Ilist, ket, n, Xspin, -state_stride(Ilist, Xspin, infer_nspins(Ilist)), out);
}

void list_lowering_steps(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, LadderSteps& out) {
    list_steps(operateImin, Ilist, ket, n, Xspin, state_stride(Ilist, Xspin, infer_nspins(Ilist)), out);
}

void MakeMatrixIplus(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out) {
    static LadderSteps steps;
    list_raising_steps(Ilist, ket, n, Xspin, steps);
    make_ladder(steps, n, out);
}

void MakeMatrixImin(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out) {
    static LadderSteps steps;
    list_lowering_steps(Ilist, ket, n, Xspin, steps);
    make_ladder(steps, n, out);
}

} // namespace kor
