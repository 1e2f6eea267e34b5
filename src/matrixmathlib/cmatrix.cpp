#include "matrixmathlib.h"

#include <cmath>
#include <cstdio>

namespace kor {

double pi_val() {
    return KOR_PI;
}

double sign(double p, double q) {
    return q >= 0.0 ? std::fabs(p) : -std::fabs(p);
}

void CMatZero(int n, CMatrix& outmat) {
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            outmat[i][j][1] = 0.0;
            outmat[i][j][2] = 0.0;
        }
    }
}

void CMatIdentity(int n, CMatrix& A) {
    CMatZero(n, A);
    for (int i = 1; i <= n; ++i) {
        A[i][i][1] = 1.0;
    }
}

void CopyCMatrix(int n, const CMatrix& inmat, CMatrix& outmat) {
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            outmat[i][j][1] = inmat[i][j][1];
            outmat[i][j][2] = inmat[i][j][2];
        }
    }
}

void CMatFromPairs(int n, const double* pairs, CMatrix& outmat) {
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            outmat[i][j][1] = *pairs++;
            outmat[i][j][2] = *pairs++;
        }
    }
}

void CMatToPairs(int n, const CMatrix& inmat, double* pairs) {
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            *pairs++ = inmat[i][j][1];
            *pairs++ = inmat[i][j][2];
        }
    }
}

void CMatAdd(int n, const CMatrix& inmat1, const CMatrix& inmat2, CMatrix& outmat) {
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            outmat[i][j][1] = inmat1[i][j][1] + inmat2[i][j][1];
            outmat[i][j][2] = inmat1[i][j][2] + inmat2[i][j][2];
        }
    }
}

void CMatRMultAdd(int n, const CMatrix& inmat1, double rfac1, const CMatrix& inmat2, double rfac2,
                  CMatrix& outmat) {
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            outmat[i][j][1] = rfac1 * inmat1[i][j][1] + rfac2 * inmat2[i][j][1];
            outmat[i][j][2] = rfac1 * inmat1[i][j][2] + rfac2 * inmat2[i][j][2];
        }
    }
}

void RMultCMat(int n, double rfac, const CMatrix& inmat, CMatrix& outmat) {
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            outmat[i][j][1] = rfac * inmat[i][j][1];
            outmat[i][j][2] = rfac * inmat[i][j][2];
        }
    }
}

void CMultCMat(int n, const Complex2& cfac, const CMatrix& inmat, CMatrix& outmat) {
    // Read once: the factor may be an element of outmat.
    const double fre = cfac[1];
    const double fim = cfac[2];
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            const double are = inmat[i][j][1];
            const double aim = inmat[i][j][2];
            outmat[i][j][1] = fre * are - fim * aim;
            outmat[i][j][2] = fim * are + fre * aim;
        }
    }
}

void Adjungate(int n, const CMatrix& P, CMatrix& Q) {
    static CMatrix tmp;
    if (&P == &Q) {
        Adjungate(n, P, tmp);
        CopyCMatrix(n, tmp, Q);
        return;
    }
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            Q[i][j][1] = P[j][i][1];
            Q[i][j][2] = -P[j][i][2];
        }
    }
}

void Transpose(int n, const CMatrix& p, CMatrix& q) {
    static CMatrix tmp;
    if (&p == &q) {
        Transpose(n, p, tmp);
        CopyCMatrix(n, tmp, q);
        return;
    }
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            q[i][j][1] = p[j][i][1];
            q[i][j][2] = p[j][i][2];
        }
    }
}

void CalcTrace(int n, const CMatrix& mat, Complex2& trace) {
    trace[1] = 0.0;
    trace[2] = 0.0;
    for (int i = 1; i <= n; ++i) {
        trace[1] += mat[i][i][1];
        trace[2] += mat[i][i][2];
    }
}

void NormCMatrix(int n, CMatrix& mat) {
    double s = 0.0;
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            s += mat[i][j][1] * mat[i][j][1] + mat[i][j][2] * mat[i][j][2];
        }
    }
    if (s > 0.0) {
        RMultCMat(n, 1.0 / std::sqrt(s), mat, mat);
    }
}

double maxabs_cmat(int n, const CMatrix& A) {
    double largest = 0.0;
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            const double size = std::fabs(A[i][j][1]) + std::fabs(A[i][j][2]);
            if (size > largest) {
                largest = size;
            }
        }
    }
    return largest;
}

namespace {

/// One titled table of the elements' real (index 1) or imaginary (index 2) halves.
void show_part(int n, const CMatrix& inmat, const char* title, int part) {
    const char* rule = "====================================================";
    std::printf("\n%s\n%s (n = %d)\n%s\n\n        ", rule, title, n, rule);
    for (int j = 1; j <= n; ++j) {
        std::printf("   %3d        ", j);
    }
    std::printf("\n");
    for (int i = 1; i <= n; ++i) {
        std::printf(" %3d  ", i);
        for (int j = 1; j <= n; ++j) {
            std::printf(" %8.1E ", inmat[i][j][part]);
        }
        std::printf("\n");
    }
}

} // namespace

void ShowCMatElements(int n, const CMatrix& inmat) {
    show_part(n, inmat, "REAL PART", 1);
    show_part(n, inmat, "IMAGINARY PART", 2);
    std::printf("\n");
}

} // namespace kor
