// Columns of any spins: the exponent as sparse rows.
#pragma once

namespace kor {

namespace {

/// out = y - i A b, or with kClenshaw y_factor y + out - i A b, A the values in the pattern of the rows.
/// Planes as in ColumnBlock, two registers in a row, so that an element's index and value serve four.
template <bool kClenshaw>
[[gnu::noinline]] void sparse_planes(int n, const SparseRows& rows, const double* values, double y_factor,
                                     const double* y, const double* b, double* out) {
    constexpr int kRow = 2 * kLanes;
    const int plane = n * kRow;
    const double* b_im = b + plane;
    for (int i = 0; i < n; ++i) {
        const double* yi = y + i * kRow;
        double* to = out + i * kRow;
        Lanes re0 = load(yi);
        Lanes re1 = load(yi + kLanes);
        Lanes im0 = load(yi + plane);
        Lanes im1 = load(yi + plane + kLanes);
        if constexpr (kClenshaw) {
            re0 = re0 * y_factor + load(to);
            re1 = re1 * y_factor + load(to + kLanes);
            im0 = im0 * y_factor + load(to + plane);
            im1 = im1 * y_factor + load(to + plane + kLanes);
        }
        const int end = rows.start[i + 1];
        for (int e = rows.start[i]; e < end; ++e) {
            const double value = values[e];
            const int at = rows.column[e] * kRow;
            re0 += load(b_im + at) * value;
            re1 += load(b_im + at + kLanes) * value;
            im0 -= load(b + at) * value;
            im1 -= load(b + at + kLanes) * value;
        }
        store(to, re0);
        store(to + kLanes, re1);
        store(to + plane, im0);
        store(to + plane + kLanes, im1);
    }
}

struct SparseMethod {
    static constexpr int kColumns = 2 * kLanes;

    static void fill_exponent(const ColumnJob& job, int j, double* exponent) {
        for (int e = 0; e < job.exponent_size; e += kLanes) {
            store(exponent + e, load(job.rows.h0 + e) * job.h[j] + load(job.rows.fz + e) * job.hw[j] +
                                    load(job.rows.fx + e) * job.hb[j]);
        }
    }

    /// As sparse_planes, A being block.scaled.
    template <bool kClenshaw>
    static void term(const ColumnJob& job, const ColumnBlock& block, double y_factor, const double* b,
                     double* out) {
        sparse_planes<kClenshaw>(job.n, job.rows, block.scaled, y_factor, block.y, b, out);
    }
};

void sparse_columns(const ColumnJob& job) {
    all_columns<SparseMethod>(job);
}

} // namespace

} // namespace kor
