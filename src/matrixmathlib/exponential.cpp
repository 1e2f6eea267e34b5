#include "matrixmathlib.h"

#include <algorithm>
#include <cmath>

namespace kor {

namespace {

constexpr int kMaxSquarings = 24;
constexpr int kMaxTerms = 80;
constexpr double kScaledNorm = 0.5;  // the series starts below this norm
constexpr double kSmallTerm = 1e-14; // and stops at a term with no larger element

/// Largest row sum of |re| + |im|.
double row_sum_norm(int n, const CMatrix& A) {
    double norm = 0.0;
    for (int i = 1; i <= n; ++i) {
        double sum = 0.0;
        for (int j = 1; j <= n; ++j) {
            sum += std::fabs(A[i][j][1]) + std::fabs(A[i][j][2]);
        }
        norm = std::max(norm, sum);
    }
    return norm;
}

int squarings_for(double norm) {
    int s = 0;
    for (double x = norm; x > kScaledNorm && s < kMaxSquarings; x /= 2.0) {
        ++s;
    }
    return s;
}

/// bmat = i tau A
void make_exponent(int n, const CMatrix& A, double tau, CMatrix& bmat) {
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            bmat[i][j][1] = -tau * A[i][j][2];
            bmat[i][j][2] = tau * A[i][j][1];
        }
    }
}

void divide_by(int n, const CMatrix& inmat, double divisor, CMatrix& outmat) {
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            outmat[i][j][1] = inmat[i][j][1] / divisor;
            outmat[i][j][2] = inmat[i][j][2] / divisor;
        }
    }
}

/// result = sum over k of bmat^k / k!
void sum_series(int n, const CMatrix& bmat, CMatrix& result) {
    static CMatrix term;
    static CMatrix product;
    CMatIdentity(n, result);
    CMatIdentity(n, term);
    for (int k = 1; k <= kMaxTerms; ++k) {
        CMatMult(n, term, bmat, product);
        divide_by(n, product, k, term);
        CMatAdd(n, result, term, result);
        if (maxabs_cmat(n, term) < kSmallTerm) {
            return;
        }
    }
}

} // namespace

void ExpMatrix(int n, const CMatrix& inm, double tau, CMatrix& outm) {
    static CMatrix bmat;
    static CMatrix result;
    const int s = squarings_for(std::fabs(tau) * row_sum_norm(n, inm));
    make_exponent(n, inm, tau / std::ldexp(1.0, s), bmat);
    sum_series(n, bmat, result);
    for (int i = 0; i < s; ++i) {
        CMatMult(n, result, result, result);
    }
    CopyCMatrix(n, result, outm);
}

void Epower(int n, const double* EV, Complex2* lamb, double tau) {
    for (int i = 1; i <= n; ++i) {
        lamb[i][1] = std::cos(EV[i] * tau);
        lamb[i][2] = std::sin(EV[i] * tau);
    }
}

} // namespace kor
