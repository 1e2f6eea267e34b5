// Floor 1.1 - mathematics: complex matrices, matrix exponential, Hermitian eigensolver, line lists
//
// Rooms in src/matrixmathlib/: cmatrix (elementwise), products, exponential, eigen, line_list.
// Every operation takes the active dimension n, 0..KOR_MAX_STATES, and trusts it. Matrices are 1-based:
// element (r, c) of an n x n matrix is m[r][c], r, c = 1..n; row 0, column 0 and whatever lies outside
// the leading n x n block are neither read nor written. With n = 0 nothing is done. "May be" an input
// means that the output may be the same matrix; where nothing is said it must be another one. No
// operation allocates or fails; work matrices are static, so nothing here is reentrant.
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

/// Line list: column k = 1..count is one line, row 1 its amplitude, row 2 its frequency in Hz. Row 0 and
/// column 0 are unused; the count travels beside the list.
using LineList = double[3][KOR_MAX_LINES + 1];

/// Rows 1 and 2, columns 1..n used: work block of the tridiagonal interface.
using TwoDiagonal = double[3][KOR_MAX_STATES + 1];

// Scalars.

/// 3.141592653589793
double pi_val();
/// |p| when q >= 0 (a negative zero counts as such), else -|p|.
double sign(double p, double q);

// Elementwise (cmatrix).

/// outmat = 0
void CMatZero(int n, CMatrix& outmat);
/// A = 1
void CMatIdentity(int n, CMatrix& A);
/// outmat = inmat; may be inmat.
void CopyCMatrix(int n, const CMatrix& inmat, CMatrix& outmat);
/// outmat = the matrix of `pairs`, 2 n^2 doubles: row by row, each element its real part, then its imaginary
/// part, as the files hold it; and back.
void CMatFromPairs(int n, const double* pairs, CMatrix& outmat);
void CMatToPairs(int n, const CMatrix& inmat, double* pairs);
/// outmat = inmat1 + inmat2; may be either.
void CMatAdd(int n, const CMatrix& inmat1, const CMatrix& inmat2, CMatrix& outmat);
/// outmat = rfac1 inmat1 + rfac2 inmat2; may be either.
void CMatRMultAdd(int n, const CMatrix& inmat1, double rfac1, const CMatrix& inmat2, double rfac2,
                  CMatrix& outmat);
/// outmat = rfac inmat; may be inmat.
void RMultCMat(int n, double rfac, const CMatrix& inmat, CMatrix& outmat);
/// outmat = cfac inmat; may be inmat, and cfac may be an element of it.
void CMultCMat(int n, const Complex2& cfac, const CMatrix& inmat, CMatrix& outmat);
/// Q(i, j) = conj(P(j, i)); Q may be P.
void Adjungate(int n, const CMatrix& P, CMatrix& Q);
/// q(i, j) = p(j, i), no conjugation; q may be p.
void Transpose(int n, const CMatrix& p, CMatrix& q);
/// trace = sum over i of mat(i, i)
void CalcTrace(int n, const CMatrix& mat, Complex2& trace);
/// mat = mat / sqrt(sum of |element|^2), unit Frobenius norm; a zero matrix stays zero.
void NormCMatrix(int n, CMatrix& mat);
/// Largest |re| + |im| over the elements (not the modulus); 0 for n = 0.
double maxabs_cmat(int n, const CMatrix& A);
/// Prints the real parts, then the imaginary parts, as titled tables on standard output.
void ShowCMatElements(int n, const CMatrix& inmat);

// Products.

/// outmat = inmat1 . inmat2 by the plain loop, each element summed over k = 1..n; may be either factor
/// (aliasing is decided by address).
void CMatMult(int n, const CMatrix& inmat1, const CMatrix& inmat2, CMatrix& outmat);
/// CMatMult for a left factor with few nonzero elements: the same sums in the same order, the terms of
/// its exact zeros left out, so the same bits. outmat must be neither factor.
void CMatMultSparse(int n, const CMatrix& inmat1, const CMatrix& inmat2, CMatrix& outmat);
/// outmat = outmat + rfac (inmat1 . inmat2); may be either factor.
void CMatMultAdd(int n, const CMatrix& inmat1, const CMatrix& inmat2, double rfac, CMatrix& outmat);
/// outmat = a . b - b . a; may be either.
void CMatCommutator(int n, const CMatrix& a, const CMatrix& b, CMatrix& outmat);
/// prod = Ut . H . U; the caller supplies both outer factors, nothing is conjugated. prod may be any of
/// the three.
void Transform(int n, const CMatrix& Ut, const CMatrix& H, const CMatrix& U, CMatrix& prod);
/// densmat = adjoint(romat) . densmat . romat, so a state that is to evolve as exp(-iHt) rho exp(+iHt)
/// takes romat = exp(+iHt).
void DoRotation(int n, const CMatrix& romat, CMatrix& densmat);
/// Eval = trace(inmat . dmat) = sum over k, l of inmat(k, l) dmat(l, k); not normalised.
void ExpectationValue(int n, const CMatrix& inmat, const CMatrix& dmat, Complex2& Eval);

// Exponential.

/// outm = exp(+i tau inm), Taylor series with scaling and squaring.
/// inm  n x n, elements 1..n, rad/s; any square matrix, Hermitian for a propagator
/// tau  seconds, any sign
/// outm n x n; may be inm itself
/// The matrix is halved until |tau| times its largest row sum of |re| + |im| is at most 0.5, at most 24
/// times; the series stops at a term with no element of 1e-14 or more, at the latest after 80 terms.
/// Beyond these limits the result is used as it stands.
/// Moler & Van Loan, SIAM Rev. 45 (2003) 3, method 3.
void ExpMatrix(int n, const CMatrix& inm, double tau, CMatrix& outm);
/// lamb[i] = exp(i EV[i] tau), i = 1..n; EV in rad/s, tau in seconds.
void Epower(int n, const double* EV, Complex2* lamb, double tau);

// Hermitian eigensolver.

/// A = Z diag(D) adjoint(Z): eigenvalues D[1..n] ascending, orthonormal eigenvectors the columns of Z.
/// A  n x n Hermitian, read whole       Z  n x n; may be A
/// Jacobi rotations on the 2n x 2n real embedding, at most 60 of them: what has not converged by then is
/// used as it stands. Equal eigenvalues (1e-9 relative) form a group that shares its first value and
/// gets an orthonormal basis. Serves n up to KOR_MAX_EIGEN_STATES; for a larger n, D and Z are set to 0.
/// Golub & Van Loan, Matrix Computations, section 8.5 (classical Jacobi).
void hermit(int n, const CMatrix& A, CMatrix& Z, double* D);

/// Eigenvalues d[0..N-1], eigenvectors the columns of v, unsorted, of the real symmetric a.
/// a, v  N x N, 0-based, row length 2 KOR_MAX_EIGEN_STATES (element (r, c) at 128 r + c); a is destroyed
/// Each rotation zeroes the largest element above the diagonal, the first one in row order among equals;
/// stops below 1e-12, or after 60 rotations.
void jacobi_real_symmetric(int N, double* a, double* d, double* v);

/// Sorts d[0..N-1] ascending by selection, the first of equal values first, and moves the columns of v
/// (row length as above) alike.
void sort_eigs(int N, double* d, double* v);

/// Row = component, column = vector number, both from 1.
using EigenvectorTable = double[KOR_MAX_STATES + 1][KOR_MAX_STATES + 1];
/// Modified Gram-Schmidt on columns 1..n with n components each; a dependent column becomes rounding
/// noise of unit length, or zero when nothing at all is left of it.
void complex_gs(int n, EigenvectorTable& vecs_re, EigenvectorTable& vecs_im);
/// The same for columns first_col..last_col, each against the earlier ones of this range only.
void complex_gs_range(int n, int first_col, int last_col, EigenvectorTable& vecs_re,
                      EigenvectorTable& vecs_im);

// The classic names of the tridiagonal route, serving one cached decomposition by hermit. They are part of
// the interface, for callers outside: nothing in the house calls them, nor Epower, nor complex_gs.

/// Decomposes A into the cache; D[1..n] = eigenvalues, E[1..n] = 0, tau row 1 = 1 and row 2 = 0.
/// E and tau may be null.
void HTRIDI(int n, const CMatrix& A, double* D, double* E, TwoDiagonal* tau);
/// D and Z from the cache when n is the cached dimension, else D = 0 and Z = 1; *ierr = 0 either way.
/// E is ignored; ierr may be null.
void TQL2(int n, double* D, double* E, CMatrix& Z, int* ierr);
/// Nothing: the vectors from TQL2 are already those of the Hermitian matrix.
void HTRIBK(int n, CMatrix& A, CMatrix& Z, TwoDiagonal* tau);
/// Places for printing the eigensolver's intermediate values; they print nothing.
void pr1();
void pr2();
void pr1x();
void pr3x();
void pr4x();
void pr5x();

// Line lists.

/// Rows 1 and 2, columns 1..KOR_MAX_LINES of spc = 0.
void zero_spectrum(LineList& spc);

/// The lines of trace(cohmat . rho(t)), rho(t) = exp(-i Hmat t) densmat exp(+i Hmat t):
/// sum over csp of A cos(2 pi f t) + sum over ssp of B sin(2 pi f t), constant part left out.
/// densmat, Hmat (rad/s, Hermitian, n up to KOR_MAX_EIGEN_STATES), cohmat  n x n
/// csp, ssp  cosine and sine lines, zeroed first; amplitudes up to 1e-12 and lines beyond 256 are dropped
/// Nc, Ns    their counts; a list whose count is null stays unmerged and unsorted
/// Both orders (r, c) and (c, r) of a pair of levels count, as the trace has them.
void DoSpectrum(int n, const CMatrix& densmat, const CMatrix& Hmat, const CMatrix& cohmat, LineList& csp,
                LineList& ssp, int* Nc, int* Ns);

/// Merges, in input order, each line into the first kept line within 0.05 Hz (bounds included), whose
/// frequency stays, then sorts by frequency ascending. Lines of equal frequency change places whenever a
/// pass of the bubble sort meets them. A null count, or fewer than 2 lines: unchanged.
void SortSpectrum(int* Npeaks, LineList& spc);

/// out[k] = sum of A cos(2 pi f t) over csp + sum of B sin(2 pi f t) over ssp at t = k acq_time_s/(ap - 1),
/// k = 0..ap-1: the last sample falls at acq_time_s (seconds). One sample only: t = 0.
void build_scalar_signal_from_spectrum(int ap, double acq_time_s, const LineList& csp, int Nc,
                                       const LineList& ssp, int Ns, double* out);

} // namespace kor
