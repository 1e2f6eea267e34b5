#include "spinoperatorlib.h"

namespace kor {

namespace {

using SparseBuilder = void (*)(const SpinIList&, const SpinKet&, int, int, SparseOperator&);

void make_total(SparseBuilder build, int n, int Nspins, const SpinKet& ket, const SpinIList& Ilist, int Norm,
                CMatrix& out) {
    static SparseOperator store;
    CMatZero(n, out);
    for (int s = 1; s <= Nspins; ++s) {
        build(Ilist, ket, n, s, store);
        if (Norm == 1) {
            SparseNorm(store);
        }
        AddSparse(store, 1.0, out);
    }
}

} // namespace

void MakeMatrixIx(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out) {
    static CMatrix plus;
    static CMatrix minu;
    MakeMatrixIplus(Ilist, ket, n, Xspin, plus);
    MakeMatrixImin(Ilist, ket, n, Xspin, minu);
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            out[i][j][1] = 0.5 * (plus[i][j][1] + minu[i][j][1]);
            out[i][j][2] = 0.0;
        }
    }
}

void MakeMatrixIy(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out) {
    static CMatrix plus;
    static CMatrix minu;
    MakeMatrixIplus(Ilist, ket, n, Xspin, plus);
    MakeMatrixImin(Ilist, ket, n, Xspin, minu);
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            out[i][j][1] = 0.0;
            out[i][j][2] = 0.5 * (minu[i][j][1] - plus[i][j][1]);
        }
    }
}

void MakeMatrixIz(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out) {
    static CMatrix plus;
    static CMatrix minu;
    static CMatrix plus_minu;
    static CMatrix minu_plus;
    MakeMatrixIplus(Ilist, ket, n, Xspin, plus);
    MakeMatrixImin(Ilist, ket, n, Xspin, minu);
    // The commutator [I+, I-] = 2 Iz, with products that skip the zeros of the ladder matrices.
    CMatMultSparse(n, plus, minu, plus_minu);
    CMatMultSparse(n, minu, plus, minu_plus);
    CMatRMultAdd(n, plus_minu, 1.0, minu_plus, -1.0, out);
    RMultCMat(n, 0.5, out, out);
}

void MakeTotalIx(int n, int Nspins, const SpinKet& ket, const SpinIList& Ilist, int Norm, CMatrix& out) {
    make_total(SparseIx, n, Nspins, ket, Ilist, Norm, out);
}

void MakeTotalIy(int n, int Nspins, const SpinKet& ket, const SpinIList& Ilist, int Norm, CMatrix& out) {
    make_total(SparseIy, n, Nspins, ket, Ilist, Norm, out);
}

void MakeTotalIz(int n, int Nspins, const SpinKet& ket, const SpinIList& Ilist, int Norm, CMatrix& out) {
    make_total(SparseIz, n, Nspins, ket, Ilist, Norm, out);
}

} // namespace kor
