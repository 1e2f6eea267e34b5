// Floor 1.2 - mathematics: product basis and spin operators
#pragma once

#include "matrixmathlib.h"

namespace kor {

/// Twice the spin quantum number of spins 1..8 (element 0 unused); 0 is a spin with one state.
using SpinIList = int[KOR_MAX_SPINS + 1];
/// Row k = 1..n: twice the magnetic quantum number of spins 1..8 in basis state k.
using SpinKet = int[KOR_MAX_STATES + 1][KOR_MAX_SPINS + 1];

int infer_nspins(const SpinIList& Ilist);
int infer_nstates(const SpinIList& Ilist, int Nspins);
void MakeKets(SpinKet& ket, const SpinIList& Ilist);
void ketproc(SpinKet& ket, int state, const int* m, int Nspins);
void enum_kets_rec(SpinKet& ket, const SpinIList& Ilist, int Nspins, int spin_index, int* m, int* state_io);
void operateIplus(const SpinIList& Ilist, int Xstate, int Xspin, const SpinKet& inket, SpinKet& outket,
                  double* coefficient);
void operateImin(const SpinIList& Ilist, int Xstate, int Xspin, const SpinKet& inket, SpinKet& outket,
                 double* coefficient);
int ket_equal(const int* a, const int* b, int Nspins);
void InproductIplus(const SpinIList& Ilist, const SpinKet& ket, int Brastate, int Ketstate, int Xspin,
                    double* element1, double* element2);
void inproductImin(const SpinIList& Ilist, const SpinKet& ket, int Brastate, int Ketstate, int Xspin,
                   double* element1, double* element2);
void MakeMatrixIplus(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out);
void MakeMatrixImin(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out);
void MakeMatrixIx(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out);
void MakeMatrixIy(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out);
void MakeMatrixIz(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out);
/// Sum over spins 1..Nspins; Norm = 1 scales each single-spin operator to unit Frobenius norm first.
void MakeTotalIx(int n, int Nspins, const SpinKet& ket, const SpinIList& Ilist, int Norm, CMatrix& out);
void MakeTotalIy(int n, int Nspins, const SpinKet& ket, const SpinIList& Ilist, int Norm, CMatrix& out);
void MakeTotalIz(int n, int Nspins, const SpinKet& ket, const SpinIList& Ilist, int Norm, CMatrix& out);

} // namespace kor
