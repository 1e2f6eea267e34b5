// More than 16 states: blocks of columns of the identity go through the steps, the last one first, while they
// stay in cache. A Method (columns_binary.h, columns_sparse.h) knows how the real exponent A acts on a block.
//
// A short step's exponential is a polynomial of A summed by Horner's rule on the ratios r of neighbouring
// coefficients, z_k = y - i r_k A z_(k+1), which leaves one product by A and one addition per term; a longer
// one's is a Chebyshev series summed by Clenshaw's recurrence,
//   b_k = c_k y - 2i (A/radius) b_(k+1) + b_(k+2),   exp(-iA) y = c_0 y - i (A/radius) b_1 + b_2.
// A takes the imaginary parts to real parts of the result and the real parts to imaginary ones.
#pragma once

namespace kor {

namespace {

/// Blocks of n rows: the real plane, rows of Method::kColumns doubles, then the imaginary one.
struct ColumnBlock {
    double *y, *b1, *b2;
    double* exponent; // what the Method keeps of A, job.exponent_size doubles
    double* scaled;   // the same times a factor
    double* powers;   // of the turn, real and imaginary parts
};

inline void swap(double*& a, double*& b) {
    double* const c = a;
    a = b;
    b = c;
}

inline void scale_exponent(const ColumnJob& job, double scale, const ColumnBlock& block) {
    for (int e = 0; e < job.exponent_size; e += kLanes) {
        store(block.scaled + e, load(block.exponent + e) * scale);
    }
}

template <typename Method> inline void horner(const ColumnJob& job, int j, ColumnBlock& block) {
    const ChebyshevSeries& series = *job.series[j];
    const double* from = block.y;
    for (int k = series.degree - 1; k >= 0; --k) {
        scale_exponent(job, series.ratio[k], block);
        Method::template term<false>(job, block, 1.0, from, block.b1);
        from = block.b1;
        swap(block.b1, block.b2);
    }
    swap(block.y, block.b2);
}

template <typename Method> inline void clenshaw(const ColumnJob& job, int j, ColumnBlock& block) {
    const ChebyshevSeries& series = *job.series[j];
    const double last = series.coefficient[series.degree];
    for (int e = 0; e < 2 * job.n * Method::kColumns; e += kLanes) {
        store(block.b1 + e, load(block.y + e) * last);
        store(block.b2 + e, Lanes{});
    }
    scale_exponent(job, 2.0 / series.radius, block);
    for (int k = series.degree - 1; k >= 0; --k) {
        if (k == 0) {
            scale_exponent(job, 1.0 / series.radius, block);
        }
        Method::template term<true>(job, block, series.coefficient[k], block.b1, block.b2);
        swap(block.b1, block.b2);
    }
    swap(block.y, block.b1);
}

/// y = exp(-iA) y of step j.
template <typename Method> inline void apply_step(const ColumnJob& job, int j, ColumnBlock& block) {
    Method::fill_exponent(job, j, block.exponent);
    if (job.series[j]->ratio) {
        horner<Method>(job, j, block);
    } else {
        clenshaw<Method>(job, j, block);
    }
}

/// y = Z y, Z the turn of the field's direction between step j - 1 and step j.
template <int kColumns> inline void turn_rows(const ColumnJob& job, int j, ColumnBlock& block) {
    double re = 1.0, im = 0.0;
    for (int k = 0; k <= job.ladder_top; ++k) {
        block.powers[2 * k] = re;
        block.powers[2 * k + 1] = im;
        const double next = re * job.zc[j] - im * job.zs[j];
        im = re * job.zs[j] + im * job.zc[j];
        re = next;
    }
    for (int i = 0; i < job.n; ++i) {
        const double zr = block.powers[2 * job.ladder[i]];
        const double zi = block.powers[2 * job.ladder[i] + 1];
        for (int c = 0; c < kColumns; c += kLanes) {
            double* row_re = block.y + i * kColumns + c;
            double* row_im = row_re + job.n * kColumns;
            const Lanes yr = load(row_re);
            const Lanes yi = load(row_im);
            store(row_re, yr * zr - yi * zi);
            store(row_im, yr * zi + yi * zr);
        }
    }
}

/// Columns c0..c0 + kColumns - 1 of the product of all steps.
template <typename Method> inline void column_block(const ColumnJob& job, int c0, ColumnBlock& block) {
    constexpr int kColumns = Method::kColumns;
    const int plane = job.n * kColumns;
    for (int e = 0; e < 2 * plane; ++e) {
        block.y[e] = 0.0;
    }
    for (int c = 0; c < kColumns && c0 + c < job.n; ++c) {
        block.y[(c0 + c) * kColumns + c] = 1.0;
    }
    for (int j = job.steps - 1; j >= 0; --j) {
        if (job.zc && j + 1 < job.steps) {
            turn_rows<kColumns>(job, j + 1, block);
        }
        apply_step<Method>(job, j, block);
    }
    for (int i = 0; i < job.n; ++i) {
        for (int c = 0; c < kColumns; c += kLanes) {
            store(job.re + i * job.stride + c0 + c, load(block.y + i * kColumns + c));
            store(job.im + i * job.stride + c0 + c, load(block.y + plane + i * kColumns + c));
        }
    }
}

template <typename Method> void all_columns(const ColumnJob& job) {
    const int size = 2 * job.n * Method::kColumns;
    double* exponent = job.work + 3 * size;
    ColumnBlock block{job.work,
                      job.work + size,
                      job.work + 2 * size,
                      exponent,
                      exponent + job.exponent_size,
                      exponent + 2 * job.exponent_size};
    for (int c0 = 0; c0 < job.n; c0 += Method::kColumns) {
        column_block<Method>(job, c0, block);
    }
}

} // namespace

} // namespace kor
