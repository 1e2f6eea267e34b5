#include "matrixmathlib.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kor {

namespace {

constexpr int kStride = 2 * KOR_MAX_EIGEN_STATES; // row length of the real embedding
constexpr int kMaxRotations = 60;
constexpr double kOffDiagonalZero = 1e-12;
// A column whose part outside the group's earlier vectors is this small (squared norm) depends on them.
constexpr double kDependent = 1e-12;

int cached_n = 0;
double cached_D[KOR_MAX_STATES + 1];
CMatrix cached_Z;

EigenvectorTable vecs_re; // complex eigenvectors being assembled: row = component, column = number
EigenvectorTable vecs_im;

struct Pivot {
    int p, q;
    double size;
};

/// The first of the largest elements above the diagonal, row by row.
Pivot largest_off_diagonal(int N, const double* a) {
    Pivot pivot{0, 0, 0.0};
    for (int p = 0; p < N; ++p) {
        for (int q = p + 1; q < N; ++q) {
            const double size = std::fabs(a[p * kStride + q]);
            if (size > pivot.size) {
                pivot = {p, q, size};
            }
        }
    }
    return pivot;
}

/// Zeroes a(p, q) by a plane rotation of a and turns the columns p and q of v alike.
void jacobi_rotate(int N, int p, int q, double* a, double* v) {
    const auto A = [a](int r, int c) -> double& { return a[r * kStride + c]; };
    const double apq = A(p, q);
    const double theta = (A(q, q) - A(p, p)) / (2.0 * apq);
    const double t = sign(1.0, theta) / (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
    const double cs = 1.0 / std::sqrt(t * t + 1.0);
    const double sn = t * cs;
    A(p, p) = A(p, p) - t * apq;
    A(q, q) = A(q, q) + t * apq;
    A(p, q) = 0.0;
    A(q, p) = 0.0;
    for (int r = 0; r < N; ++r) {
        if (r != p && r != q) {
            const double apr = A(p, r);
            const double aqr = A(q, r);
            A(p, r) = A(r, p) = cs * apr - sn * aqr;
            A(q, r) = A(r, q) = cs * aqr + sn * apr;
        }
        const double vrp = v[r * kStride + p];
        const double vrq = v[r * kStride + q];
        v[r * kStride + p] = cs * vrp - sn * vrq;
        v[r * kStride + q] = cs * vrq + sn * vrp;
    }
}

double column_norm2(int n, int col, const EigenvectorTable& re, const EigenvectorTable& im) {
    double sum = 0.0;
    for (int r = 1; r <= n; ++r) {
        sum += re[r][col] * re[r][col] + im[r][col] * im[r][col];
    }
    return sum;
}

/// Takes out of column j its components along the orthonormal columns first..j-1.
void remove_components(int n, int first, int j, EigenvectorTable& re, EigenvectorTable& im) {
    for (int k = first; k < j; ++k) {
        double dot_re = 0.0;
        double dot_im = 0.0;
        for (int r = 1; r <= n; ++r) {
            dot_re += re[r][k] * re[r][j] + im[r][k] * im[r][j];
            dot_im += re[r][k] * im[r][j] - im[r][k] * re[r][j];
        }
        for (int r = 1; r <= n; ++r) {
            re[r][j] -= dot_re * re[r][k] - dot_im * im[r][k];
            im[r][j] -= dot_re * im[r][k] + dot_im * re[r][k];
        }
    }
}

/// Unit length; a zero column stays zero.
void normalise_column(int n, int j, EigenvectorTable& re, EigenvectorTable& im) {
    const double norm2 = column_norm2(n, j, re, im);
    const double scale = norm2 > 0.0 ? 1.0 / std::sqrt(norm2) : 0.0;
    for (int r = 1; r <= n; ++r) {
        re[r][j] *= scale;
        im[r][j] *= scale;
    }
}

/// M = [[re A, -im A], [im A, re A]], 2n x 2n and 0-based.
void embed(int n, const CMatrix& A, double* M) {
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const Complex2& element = A[i + 1][j + 1];
            M[i * kStride + j] = element[1];
            M[i * kStride + n + j] = -element[2];
            M[(n + i) * kStride + j] = element[2];
            M[(n + i) * kStride + n + j] = element[1];
        }
    }
}

/// Complex vector `number` from column `source` of the embedding's eigenvectors.
void load_vector(int n, const double* evecs, int source, int number) {
    for (int r = 0; r < n; ++r) {
        vecs_re[r + 1][number] = evecs[r * kStride + source];
        vecs_im[r + 1][number] = evecs[(n + r) * kStride + source];
    }
}

/// End of the group of equal eigenvalues that starts at p.
int group_end(int N, const double* evals, int p) {
    int q = p + 1;
    while (q < N) {
        const double tolerance = (std::fabs(evals[q]) + std::fabs(evals[p]) + 1.0) * 1e-9 + 1e-12;
        if (std::fabs(evals[q] - evals[p]) > tolerance) {
            break;
        }
        ++q;
    }
    return q;
}

/// Vector `number` of the group in columns p..q-1 (its vectors so far: first..number-1): column `source`,
/// or the next one, in cyclic order, that does not depend on the group's earlier vectors. A column and its
/// twin (the same complex vector times i) both belong to the group, so `source` alone may repeat a vector.
void take_independent(int n, const double* evecs, int p, int q, int source, int first, int number) {
    for (int tried = 0; tried < q - p; ++tried) {
        load_vector(n, evecs, p + (source - p + tried) % (q - p), number);
        remove_components(n, first, number, vecs_re, vecs_im);
        if (column_norm2(n, number, vecs_re, vecs_im) > kDependent) {
            break;
        }
    }
    normalise_column(n, number, vecs_re, vecs_im);
}

/// The eigenvectors of the sorted embedding, one of each pair, group by group. Returns their number.
int pick_by_group(int n, const double* evals, const double* evecs, double* D) {
    const int N = 2 * n;
    int picked = 0;
    for (int p = 0; p < N && picked < n;) {
        const int q = group_end(N, evals, p);
        const int multiplicity = std::min((q - p + 1) / 2, n - picked);
        const int first = picked + 1;
        for (int t = 0; t < multiplicity; ++t) {
            const int source = p + 2 * t < q ? p + 2 * t : p + t;
            D[++picked] = evals[p];
            take_independent(n, evecs, p, q, source, first, picked);
        }
        p = q;
    }
    return picked;
}

} // namespace

void jacobi_real_symmetric(int N, double* a, double* d, double* v) {
    for (int r = 0; r < N; ++r) {
        std::fill(v + r * kStride, v + r * kStride + N, 0.0);
        v[r * kStride + r] = 1.0;
    }
    for (int rotation = 0; rotation < kMaxRotations; ++rotation) {
        const Pivot pivot = largest_off_diagonal(N, a);
        if (pivot.size < kOffDiagonalZero) {
            break;
        }
        jacobi_rotate(N, pivot.p, pivot.q, a, v);
    }
    for (int i = 0; i < N; ++i) {
        d[i] = a[i * kStride + i];
    }
}

void sort_eigs(int N, double* d, double* v) {
    for (int i = 0; i < N - 1; ++i) {
        const int smallest = static_cast<int>(std::min_element(d + i, d + N) - d);
        if (smallest == i) {
            continue;
        }
        std::swap(d[i], d[smallest]);
        for (int r = 0; r < N; ++r) {
            std::swap(v[r * kStride + i], v[r * kStride + smallest]);
        }
    }
}

void complex_gs_range(int n, int first_col, int last_col, EigenvectorTable& re, EigenvectorTable& im) {
    for (int j = first_col; j <= last_col; ++j) {
        remove_components(n, first_col, j, re, im);
        normalise_column(n, j, re, im);
    }
}

void complex_gs(int n, EigenvectorTable& re, EigenvectorTable& im) {
    complex_gs_range(n, 1, n, re, im);
}

void hermit(int n, const CMatrix& A, CMatrix& Z, double* D) {
    static double M[kStride * kStride];
    static double evecs[kStride * kStride];
    static double evals[kStride];
    if (n > KOR_MAX_EIGEN_STATES) {
        CMatZero(n, Z);
        std::fill(D + 1, D + n + 1, 0.0);
        return;
    }
    const int N = 2 * n;
    embed(n, A, M);
    jacobi_real_symmetric(N, M, evals, evecs);
    sort_eigs(N, evals, evecs);
    int picked = pick_by_group(n, evals, evecs, D);
    for (int idx = 0; idx < N && picked < n; ++idx) {
        D[++picked] = evals[idx];
        load_vector(n, evecs, idx, picked);
        normalise_column(n, picked, vecs_re, vecs_im);
    }
    for (int i = 1; i <= n; ++i) {
        for (int k = 1; k <= n; ++k) {
            Z[i][k][1] = vecs_re[i][k];
            Z[i][k][2] = vecs_im[i][k];
        }
    }
}

void HTRIDI(int n, const CMatrix& A, double* D, double* E, TwoDiagonal* tau) {
    hermit(n, A, cached_Z, cached_D);
    cached_n = n;
    for (int i = 1; i <= n; ++i) {
        D[i] = cached_D[i];
        if (E) {
            E[i] = 0.0;
        }
        if (tau) {
            (*tau)[1][i] = 1.0;
            (*tau)[2][i] = 0.0;
        }
    }
}

void TQL2(int n, double* D, double*, CMatrix& Z, int* ierr) {
    if (ierr) {
        *ierr = 0;
    }
    if (n != cached_n) {
        std::fill(D + 1, D + n + 1, 0.0);
        CMatIdentity(n, Z);
        return;
    }
    std::copy(cached_D + 1, cached_D + n + 1, D + 1);
    CopyCMatrix(n, cached_Z, Z);
}

void HTRIBK(int, CMatrix&, CMatrix&, TwoDiagonal*) {}

void pr1() {}
void pr2() {}
void pr1x() {}
void pr3x() {}
void pr4x() {}
void pr5x() {}

} // namespace kor
