// More than 16 states: the steps act on blocks of columns that stay in cache, the last step first. Each
// exponential is a Chebyshev series summed by Clenshaw's recurrence,
//   b_k = c_k y - 2i (A/radius) b_(k+1) + b_(k+2),   exp(-iA) y = c_0 y - i (A/radius) b_1 + b_2,
// in which the real A acts on real and imaginary parts alike.
#pragma once

namespace kor {

namespace {

// A row of a block: kColumns real parts, then kColumns imaginary parts, two registers each.
constexpr int kColumns = 2 * kLanes;
constexpr int kRow = 2 * kColumns;

struct RowSum {
    Lanes re0{}, re1{}, im0{}, im1{};
};

inline void add_row(RowSum& sum, double value, const double* row) {
    sum.re0 += load(row) * value;
    sum.re1 += load(row + kLanes) * value;
    sum.im0 += load(row + kColumns) * value;
    sum.im1 += load(row + kColumns + kLanes) * value;
}

inline void add_entries(RowSum& sum, const SparseRows& rows, int i, const double* b) {
    for (int e = rows.start[i]; e < rows.start[i + 1]; ++e) {
        add_row(sum, rows.value[e], b + rows.column[e] * kRow);
    }
}

/// One term of the recurrence: b2 = ck y + b2 - i (diagonal + sh h0 + sf fx) b1.
inline void clenshaw_term(const ColumnJob& job, const double* diagonal, double sh, double sf, double ck,
                          const double* y, const double* b1, double* b2) {
    for (int i = 0; i < job.n; ++i) {
        RowSum total, field;
        add_entries(total, job.h0, i, b1);
        total.re0 *= sh;
        total.re1 *= sh;
        total.im0 *= sh;
        total.im1 *= sh;
        add_entries(field, job.fx, i, b1);
        add_row(total, diagonal[i], b1 + i * kRow);
        total.re0 += field.re0 * sf;
        total.re1 += field.re1 * sf;
        total.im0 += field.im0 * sf;
        total.im1 += field.im1 * sf;
        const double* yi = y + i * kRow;
        double* out = b2 + i * kRow;
        store(out, load(yi) * ck + load(out) + total.im0);
        store(out + kLanes, load(yi + kLanes) * ck + load(out + kLanes) + total.im1);
        store(out + kColumns, load(yi + kColumns) * ck + load(out + kColumns) - total.re0);
        store(out + kColumns + kLanes,
              load(yi + kColumns + kLanes) * ck + load(out + kColumns + kLanes) - total.re1);
    }
}

struct ColumnBlock {
    double* y;
    double* b1;
    double* b2;
    double* diagonal;
    double* powers; // of the turn, real and imaginary parts
};

/// y = exp(-iA) y of step j.
inline void apply_step(const ColumnJob& job, int j, ColumnBlock& block) {
    const ChebyshevSeries& series = *job.series[j];
    const double scale = 2.0 / series.radius;
    for (int i = 0; i < job.n; ++i) {
        block.diagonal[i] = scale * (job.h[j] * job.h0_diagonal[i] + job.hw[j] * job.m[i]);
    }
    const double last = series.coefficient[series.degree];
    for (int e = 0; e < job.n * kRow; e += kLanes) {
        store(block.b1 + e, load(block.y + e) * last);
        store(block.b2 + e, Lanes{});
    }
    for (int k = series.degree - 1; k >= 1; --k) {
        clenshaw_term(job, block.diagonal, scale * job.h[j], scale * job.hb[j], series.coefficient[k],
                      block.y, block.b1, block.b2);
        double* swapped = block.b1;
        block.b1 = block.b2;
        block.b2 = swapped;
    }
    for (int i = 0; i < job.n; ++i) {
        block.diagonal[i] *= 0.5;
    }
    clenshaw_term(job, block.diagonal, 0.5 * scale * job.h[j], 0.5 * scale * job.hb[j], series.coefficient[0],
                  block.y, block.b1, block.b2);
    double* result = block.b2;
    block.b2 = block.y;
    block.y = result;
}

/// Powers of the turn of the field's direction between step j - 1 and step j.
inline void fill_turns(const ColumnJob& job, int j, double* powers) {
    double re = 1.0, im = 0.0;
    for (int k = 0; k <= job.ladder_top; ++k) {
        powers[2 * k] = re;
        powers[2 * k + 1] = im;
        const double next = re * job.zc[j] - im * job.zs[j];
        im = re * job.zs[j] + im * job.zc[j];
        re = next;
    }
}

/// y = Z y, Z the turn of the field's direction between step j - 1 and step j.
inline void turn_rows(const ColumnJob& job, int j, ColumnBlock& block) {
    fill_turns(job, j, block.powers);
    for (int i = 0; i < job.n; ++i) {
        const double zr = block.powers[2 * job.ladder[i]];
        const double zi = block.powers[2 * job.ladder[i] + 1];
        double* row = block.y + i * kRow;
        for (int c = 0; c < kColumns; c += kLanes) {
            const Lanes yr = load(row + c);
            const Lanes yi = load(row + kColumns + c);
            store(row + c, yr * zr - yi * zi);
            store(row + kColumns + c, yr * zi + yi * zr);
        }
    }
}

void column_product(const ColumnJob& job) {
    const int size = job.n * kRow;
    ColumnBlock block{job.work, job.work + size, job.work + 2 * size, job.work + 3 * size,
                      job.work + 3 * size + job.n};
    for (int c0 = 0; c0 < job.n; c0 += kColumns) {
        for (int e = 0; e < size; ++e) {
            block.y[e] = 0.0;
        }
        for (int c = 0; c < kColumns && c0 + c < job.n; ++c) {
            block.y[(c0 + c) * kRow + c] = 1.0;
        }
        for (int j = job.steps - 1; j >= 0; --j) {
            if (job.zc && j + 1 < job.steps) {
                turn_rows(job, j + 1, block);
            }
            apply_step(job, j, block);
        }
        for (int i = 0; i < job.n; ++i) {
            for (int c = 0; c < kColumns; c += kLanes) {
                store(job.re + i * job.stride + c0 + c, load(block.y + i * kRow + c));
                store(job.im + i * job.stride + c0 + c, load(block.y + i * kRow + kColumns + c));
            }
        }
    }
}

} // namespace

} // namespace kor
