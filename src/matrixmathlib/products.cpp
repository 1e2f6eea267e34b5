#include "matrixmathlib.h"

namespace kor {

void CMatMult(int n, const CMatrix& inmat1, const CMatrix& inmat2, CMatrix& outmat) {
    static CMatrix tmp;
    if (&outmat == &inmat1 || &outmat == &inmat2) {
        CMatMult(n, inmat1, inmat2, tmp);
        CopyCMatrix(n, tmp, outmat);
        return;
    }
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            double re = 0.0;
            double im = 0.0;
            for (int k = 1; k <= n; ++k) {
                const Complex2& a = inmat1[i][k];
                const Complex2& b = inmat2[k][j];
                re += a[1] * b[1] - a[2] * b[2];
                im += a[2] * b[1] + a[1] * b[2];
            }
            outmat[i][j][1] = re;
            outmat[i][j][2] = im;
        }
    }
}

void CMatMultSparse(int n, const CMatrix& inmat1, const CMatrix& inmat2, CMatrix& outmat) {
    CMatZero(n, outmat);
    for (int i = 1; i <= n; ++i) {
        // k in the middle: every element still adds its terms in the order k = 1..n.
        for (int k = 1; k <= n; ++k) {
            const Complex2& a = inmat1[i][k];
            if (a[1] == 0.0 && a[2] == 0.0) {
                continue;
            }
            for (int j = 1; j <= n; ++j) {
                const Complex2& b = inmat2[k][j];
                outmat[i][j][1] += a[1] * b[1] - a[2] * b[2];
                outmat[i][j][2] += a[2] * b[1] + a[1] * b[2];
            }
        }
    }
}

void CMatMultAdd(int n, const CMatrix& inmat1, const CMatrix& inmat2, double rfac, CMatrix& outmat) {
    static CMatrix prod;
    CMatMult(n, inmat1, inmat2, prod);
    CMatRMultAdd(n, prod, rfac, outmat, 1.0, outmat);
}

void CMatCommutator(int n, const CMatrix& a, const CMatrix& b, CMatrix& outmat) {
    static CMatrix ab;
    static CMatrix ba;
    CMatMult(n, a, b, ab);
    CMatMult(n, b, a, ba);
    CMatRMultAdd(n, ab, 1.0, ba, -1.0, outmat);
}

void Transform(int n, const CMatrix& Ut, const CMatrix& H, const CMatrix& U, CMatrix& prod) {
    static CMatrix tmp;
    CMatMult(n, Ut, H, tmp);
    CMatMult(n, tmp, U, prod);
}

void DoRotation(int n, const CMatrix& romat, CMatrix& densmat) {
    static CMatrix Aromat;
    static CMatrix tmp;
    Adjungate(n, romat, Aromat);
    Transform(n, Aromat, densmat, romat, tmp);
    CopyCMatrix(n, tmp, densmat);
}

void ExpectationValue(int n, const CMatrix& inmat, const CMatrix& dmat, Complex2& Eval) {
    Eval[1] = 0.0;
    Eval[2] = 0.0;
    for (int k = 1; k <= n; ++k) {
        double re = 0.0;
        double im = 0.0;
        for (int l = 1; l <= n; ++l) {
            const Complex2& a = inmat[k][l];
            const Complex2& b = dmat[l][k];
            re += a[1] * b[1] - a[2] * b[2];
            im += a[2] * b[1] + a[1] * b[2];
        }
        Eval[1] += re;
        Eval[2] += im;
    }
}

} // namespace kor
