// Floor 1.2 - mathematics: product basis and spin operators
//
// Rooms in src/spinoperatorlib/: kets (the basis), ladder (I+ and I-), operators (Ix, Iy, Iz, totals),
// sparse_operators (the same by their few elements).
// Quantum numbers are doubled integers: twice I and twice m. Spins, basis states and matrix elements count
// from 1. The basis order is fixed: state 1 has every spin at its highest m, m descends, spin 1 varies
// slowest and the last spin fastest. The builders trust n, Xspin and the ket table of MakeKets(Ilist).
// Nothing here is reentrant.
#pragma once

#include "matrixmathlib.h"

namespace kor {

/// Twice the spin quantum number of spins 1..8 (element 0 unused); 0 is a spin with one state.
using SpinIList = int[KOR_MAX_SPINS + 1];
/// Row k = 1..n: twice the magnetic quantum number of spins 1..8 in basis state k.
using SpinKet = int[KOR_MAX_STATES + 1][KOR_MAX_SPINS + 1];

// The basis (kets).

/// Number of the highest spin with a positive entry; 0 when there is none.
int infer_nspins(const SpinIList& Ilist);
/// Hilbert dimension: product of Ilist[s] + 1 over s = 1..Nspins; 0 when an entry is negative or the
/// product exceeds KOR_MAX_STATES.
int infer_nstates(const SpinIList& Ilist, int Nspins);
/// Fills ket with the basis, zeros elsewhere. Too many states (or a negative entry): a message on standard
/// error and an all-zero table.
void MakeKets(SpinKet& ket, const SpinIList& Ilist);
/// Row `state` of ket = m[1..Nspins].
void ketproc(SpinKet& ket, int state, const int* m, int Nspins);
/// Enumerates spins spin_index..Nspins for given m[1..spin_index-1]; m is a work array of 9,
/// *state_io the number of the last row written.
void enum_kets_rec(SpinKet& ket, const SpinIList& Ilist, int Nspins, int spin_index, int* m, int* state_io);
/// 1 when rows a and b (indices from 1) agree in spins 1..Nspins, else 0.
int ket_equal(const int* a, const int* b, int Nspins);

// Ladder operators.

/// Row Xstate of outket = that of inket with spin Xspin raised by one unit, *coefficient (may be null) =
/// sqrt((I - m)(I + m + 1)). At the top of the ladder the row is copied unchanged and the coefficient is 0.
void operateIplus(const SpinIList& Ilist, int Xstate, int Xspin, const SpinKet& inket, SpinKet& outket,
                  double* coefficient);
/// The same one unit down: sqrt((I + m)(I - m + 1)).
void operateImin(const SpinIList& Ilist, int Xstate, int Xspin, const SpinKet& inket, SpinKet& outket,
                 double* coefficient);
/// Matrix element <Brastate| I+ |Ketstate> of spin Xspin: real part element1, imaginary part (always 0)
/// element2; either may be null.
void InproductIplus(const SpinIList& Ilist, const SpinKet& ket, int Brastate, int Ketstate, int Xspin,
                    double* element1, double* element2);
/// The same for I-.
void inproductImin(const SpinIList& Ilist, const SpinKet& ket, int Brastate, int Ketstate, int Xspin,
                   double* element1, double* element2);
/// out = I+ of spin Xspin, n x n, zeros included: the elements of InproductIplus. Each column state is
/// stepped once; the state it reaches lies at a fixed distance in the basis order.
void MakeMatrixIplus(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out);
/// out = I- of spin Xspin.
void MakeMatrixImin(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out);

// Cartesian and total operators, n x n, dimensionless.

/// out = (I+ + I-) / 2
void MakeMatrixIx(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out);
/// out = (I+ - I-) / 2i
void MakeMatrixIy(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out);
/// out = [I+, I-] / 2
void MakeMatrixIz(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, CMatrix& out);
/// Sum over spins 1..Nspins; Norm = 1 scales each single-spin operator to unit Frobenius norm first.
void MakeTotalIx(int n, int Nspins, const SpinKet& ket, const SpinIList& Ilist, int Norm, CMatrix& out);
void MakeTotalIy(int n, int Nspins, const SpinKet& ket, const SpinIList& Ilist, int Norm, CMatrix& out);
void MakeTotalIz(int n, int Nspins, const SpinKet& ket, const SpinIList& Ilist, int Norm, CMatrix& out);

// The same operators by their few elements.

/// A matrix with few nonzero elements: element[k][0..count[k]-1] of row k = 1..n, in ascending columns for
/// the operators of one spin.
struct SparseOperator {
    struct Element {
        int column; // from 1
        double re, im;
    };
    int n;
    int count[KOR_MAX_STATES + 1];
    Element element[KOR_MAX_STATES + 1][4];
};

/// out = the elements of MakeMatrixIx (Iy, Iz), bit by bit.
void SparseIx(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, SparseOperator& out);
void SparseIy(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, SparseOperator& out);
void SparseIz(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, SparseOperator& out);
/// NormCMatrix: unit Frobenius norm; a zero operator stays zero.
void SparseNorm(SparseOperator& op);
/// out = a . b, a and b operators of two different spins: each element is one product, as in CMatMult.
void SparseProduct(const SparseOperator& a, const SparseOperator& b, SparseOperator& out);
/// mat += factor op, for a finite factor the bits of CMatRMultAdd on a matrix without negative zeros.
void AddSparse(const SparseOperator& op, double factor, CMatrix& mat);
/// out = op, zeros included.
void SparseToMatrix(const SparseOperator& op, CMatrix& out);

} // namespace kor
