// Floor 1.1 - mathematics: complex matrices, matrix exponential, Hermitian eigensolver, line lists
//
// Rooms in src/matrixmathlib/: cmatrix, products, exponential, eigen, line_list. All matrices are
// 1-based: element (r, c) of an n x n matrix is m[r][c], r, c = 1..n; elements outside the leading
// n x n block are neither read nor written. Work storage is static: nothing here is reentrant.
#pragma once

#include "korlimits.h"

namespace kor {

/// A complex number: element 1 the real part, element 2 the imaginary part, element 0 unused.
struct Complex2 {
    double part[3];
    double& operator[](int i) { return part[i]; }
    double operator[](int i) const { return part[i]; }
};

/// Square complex matrix of fixed capacity; row 0 and column 0 are unused. About 1.6 MB: keep it in
/// static storage, never as a local.
struct CMatrix {
    Complex2 row[KOR_MAX_STATES + 1][KOR_MAX_STATES + 1];
    Complex2* operator[](int r) { return row[r]; }
    const Complex2* operator[](int r) const { return row[r]; }
};

/// Line list: column k = 1..count is one line, row 1 its amplitude, row 2 its frequency in Hz.
using LineList = double[3][KOR_MAX_LINES + 1];

/// Rows 1 and 2, columns 1..n used: work block of the tridiagonal interface.
using TwoDiagonal = double[3][KOR_MAX_STATES + 1];

double pi_val();
/// |p| when q >= 0 (a negative zero counts as such), else -|p|.
double sign(double p, double q);

void CMatZero(int n, CMatrix& outmat);
void CMatIdentity(int n, CMatrix& A);
void CopyCMatrix(int n, const CMatrix& inmat, CMatrix& outmat);
void CMatAdd(int n, const CMatrix& inmat1, const CMatrix& inmat2, CMatrix& outmat);
/// outmat = rfac1 inmat1 + rfac2 inmat2
void CMatRMultAdd(int n, const CMatrix& inmat1, double rfac1, const CMatrix& inmat2, double rfac2,
                  CMatrix& outmat);
void RMultCMat(int n, double rfac, const CMatrix& inmat, CMatrix& outmat);
void CMultCMat(int n, const Complex2& cfac, const CMatrix& inmat, CMatrix& outmat);
void CMatMult(int n, const CMatrix& inmat1, const CMatrix& inmat2, CMatrix& outmat);
/// CMatMult for a left factor with few nonzero elements: the same sums in the same order, the terms of
/// its exact zeros left out. outmat must be neither factor.
void CMatMultSparse(int n, const CMatrix& inmat1, const CMatrix& inmat2, CMatrix& outmat);
/// outmat = outmat + rfac (inmat1 . inmat2)
void CMatMultAdd(int n, const CMatrix& inmat1, const CMatrix& inmat2, double rfac, CMatrix& outmat);
/// outmat = a . b - b . a
void CMatCommutator(int n, const CMatrix& a, const CMatrix& b, CMatrix& outmat);
void Adjungate(int n, const CMatrix& P, CMatrix& Q);
void Transpose(int n, const CMatrix& p, CMatrix& q);
/// prod = Ut . H . U
void Transform(int n, const CMatrix& Ut, const CMatrix& H, const CMatrix& U, CMatrix& prod);
/// densmat = adjoint(romat) . densmat . romat
void DoRotation(int n, const CMatrix& romat, CMatrix& densmat);
/// Eval = trace(inmat . dmat)
void ExpectationValue(int n, const CMatrix& inmat, const CMatrix& dmat, Complex2& Eval);
void CalcTrace(int n, const CMatrix& mat, Complex2& trace);
void NormCMatrix(int n, CMatrix& mat);
double maxabs_cmat(int n, const CMatrix& A);
void ShowCMatElements(int n, const CMatrix& inmat);
void zero_spectrum(LineList& spc);

/// outm = exp(+i tau inm)
void ExpMatrix(int n, const CMatrix& inm, double tau, CMatrix& outm);
/// lamb[i] = exp(i EV[i] tau), i = 1..n
void Epower(int n, const double* EV, Complex2* lamb, double tau);

void hermit(int n, const CMatrix& A, CMatrix& Z, double* D);
void jacobi_real_symmetric(int N, double* a, double* d, double* v);
void sort_eigs(int N, double* d, double* v);
using EigenvectorTable = double[KOR_MAX_STATES + 1][KOR_MAX_STATES + 1];
void complex_gs(int n, EigenvectorTable& vecs_re, EigenvectorTable& vecs_im);
void complex_gs_range(int n, int first_col, int last_col, EigenvectorTable& vecs_re,
                      EigenvectorTable& vecs_im);
void HTRIDI(int n, const CMatrix& A, double* D, double* E, TwoDiagonal* tau);
void TQL2(int n, double* D, double* E, CMatrix& Z, int* ierr);
void HTRIBK(int n, CMatrix& A, CMatrix& Z, TwoDiagonal* tau);
void pr1();
void pr2();
void pr1x();
void pr3x();
void pr4x();
void pr5x();

void DoSpectrum(int n, const CMatrix& densmat, const CMatrix& Hmat, const CMatrix& cohmat, LineList& csp,
                LineList& ssp, int* Nc, int* Ns);
void SortSpectrum(int* Npeaks, LineList& spc);
void build_scalar_signal_from_spectrum(int ap, double acq_time_s, const LineList& csp, int Nc,
                                       const LineList& ssp, int Ns, double* out);

} // namespace kor
