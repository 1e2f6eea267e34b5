// The operators of one spin by their few elements. Each element is formed like that of the whole matrices
// (operators), without the terms that are exactly 0: adding those changes no bit.
#include "ladder_steps.h"

#include <cmath>

namespace kor {

namespace {

/// Raising and lowering steps of one spin.
struct Ladder {
    LadderSteps up, down;
};

const Ladder& ladder_of(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin) {
    static Ladder ladder;
    list_raising_steps(Ilist, ket, n, Xspin, ladder.up);
    list_lowering_steps(Ilist, ket, n, Xspin, ladder.down);
    return ladder;
}

void append(SparseOperator& op, int row, int column, double re, double im) {
    op.element[row][op.count[row]++] = {column, re, im};
}

/// Rows of an operator between neighbours on the ladder: raise and lower are the factors of I+ and I-.
void fill_neighbours(const Ladder& ladder, int n, Complex2 raise, Complex2 lower, SparseOperator& out) {
    out.n = n;
    for (int k = 1; k <= n; ++k) {
        out.count[k] = 0;
        const int above = k + ladder.up.shift; // of higher m: lowering it gives k
        if (above >= 1 && ladder.down.coefficient[above] != 0.0) {
            const double c = ladder.down.coefficient[above];
            append(out, k, above, lower[1] * c, lower[2] * c);
        }
        const int below = k + ladder.down.shift;
        if (below <= n && ladder.up.coefficient[below] != 0.0) {
            const double c = ladder.up.coefficient[below];
            append(out, k, below, raise[1] * c, raise[2] * c);
        }
    }
}

} // namespace

void SparseIx(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, SparseOperator& out) {
    const Complex2 half = {{0.0, 0.5, 0.0}};
    fill_neighbours(ladder_of(Ilist, ket, n, Xspin), n, half, half, out);
}

void SparseIy(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, SparseOperator& out) {
    fill_neighbours(ladder_of(Ilist, ket, n, Xspin), n, {{0.0, 0.0, -0.5}}, {{0.0, 0.0, 0.5}}, out);
}

void SparseIz(const SpinIList& Ilist, const SpinKet& ket, int n, int Xspin, SparseOperator& out) {
    const Ladder& ladder = ladder_of(Ilist, ket, n, Xspin);
    out.n = n;
    for (int k = 1; k <= n; ++k) {
        out.count[k] = 0;
        const int above = k + ladder.up.shift;
        const int below = k + ladder.down.shift;
        const double up_down = below <= n ? ladder.up.coefficient[below] * ladder.down.coefficient[k] : 0.0;
        const double down_up = above >= 1 ? ladder.down.coefficient[above] * ladder.up.coefficient[k] : 0.0;
        append(out, k, k, 0.5 * (up_down - down_up), 0.0);
    }
}

void SparseNorm(SparseOperator& op) {
    double s = 0.0;
    for (int k = 1; k <= op.n; ++k) {
        for (int e = 0; e < op.count[k]; ++e) {
            s += op.element[k][e].re * op.element[k][e].re + op.element[k][e].im * op.element[k][e].im;
        }
    }
    const double factor = s > 0.0 ? 1.0 / std::sqrt(s) : 1.0;
    for (int k = 1; k <= op.n; ++k) {
        for (int e = 0; e < op.count[k]; ++e) {
            op.element[k][e].re *= factor;
            op.element[k][e].im *= factor;
        }
    }
}

void SparseProduct(const SparseOperator& a, const SparseOperator& b, SparseOperator& out) {
    out.n = a.n;
    for (int k = 1; k <= a.n; ++k) {
        out.count[k] = 0;
        for (int e = 0; e < a.count[k]; ++e) {
            const SparseOperator::Element& left = a.element[k][e];
            for (int f = 0; f < b.count[left.column]; ++f) {
                const SparseOperator::Element& right = b.element[left.column][f];
                append(out, k, right.column, left.re * right.re - left.im * right.im,
                       left.im * right.re + left.re * right.im);
            }
        }
    }
}

void AddSparse(const SparseOperator& op, double factor, CMatrix& mat) {
    for (int k = 1; k <= op.n; ++k) {
        for (int e = 0; e < op.count[k]; ++e) {
            Complex2& target = mat[k][op.element[k][e].column];
            target[1] += factor * op.element[k][e].re;
            target[2] += factor * op.element[k][e].im;
        }
    }
}

void SparseToMatrix(const SparseOperator& op, CMatrix& out) {
    CMatZero(op.n, out);
    AddSparse(op, 1.0, out);
}

} // namespace kor
