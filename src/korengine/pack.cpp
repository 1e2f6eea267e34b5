#include "pack.h"

#include <cmath>

namespace kor {

bool pack(int n, const CMatrix& m, Planes& out) {
    out.shape(n);
    double unsound = 0.0; // x - x is 0 for a finite x and not a number for any other
    for (int i = 0; i < n; ++i) {
        const Complex2* row = m[i + 1];
        double* re = &out.re[out.at(i, 0)];
        double* im = &out.im[out.at(i, 0)];
        for (int j = 0; j < n; ++j) {
            re[j] = row[j + 1][1];
            im[j] = row[j + 1][2];
            unsound += (re[j] - re[j]) + (im[j] - im[j]);
        }
    }
    return unsound == 0.0;
}

void pack_adjoint(int n, const CMatrix& m, Planes& out) {
    out.shape(n);
    for (int i = 0; i < n; ++i) {
        const Complex2* row = m[i + 1];
        for (int j = 0; j < n; ++j) {
            out.re[out.at(j, i)] = row[j + 1][1];
            out.im[out.at(j, i)] = -row[j + 1][2];
        }
    }
}

void unpack(int n, const Planes& planes, CMatrix& out) {
    for (int i = 0; i < n; ++i) {
        Complex2* row = out[i + 1];
        const double* re = &planes.re[planes.at(i, 0)];
        const double* im = &planes.im[planes.at(i, 0)];
        for (int j = 0; j < n; ++j) {
            row[j + 1][1] = re[j];
            row[j + 1][2] = im[j];
        }
    }
}

void from_dense_planes(int n, const double* re, const double* im, CMatrix& out) {
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            out[i][j][1] = *re++;
            out[i][j][2] = *im++;
        }
    }
}

} // namespace kor
