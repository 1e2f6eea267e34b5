// Interpolation between propagators: real matrix products and Chebyshev sums over rows of doubles.
#pragma once

namespace kor {

namespace {

constexpr int kMixedRows = 4;

/// Rows i0..i0 + rows - 1 and two registers of columns, from column j0.
void mix_block(const MixJob& job, int i0, int rows, int j0) {
    const double* factor[kMixedRows];
    for (int i = 0; i < kMixedRows; ++i) {
        factor[i] = job.factor + static_cast<long>(i0 + (i < rows ? i : 0)) * job.inner;
    }
    Lanes sum[kMixedRows][2]{};
    for (int k = 0; k < job.inner; ++k) {
        const double* row = job.in + static_cast<long>(k) * job.width + j0;
        const Lanes left = load(row);
        const Lanes right = load(row + kLanes);
#pragma GCC unroll 4
        for (int i = 0; i < kMixedRows; ++i) {
            sum[i][0] += left * factor[i][k];
            sum[i][1] += right * factor[i][k];
        }
    }
    for (int i = 0; i < rows; ++i) {
        double* out = job.out + static_cast<long>(i0 + i) * job.width + j0;
        store(out, sum[i][0]);
        store(out + kLanes, sum[i][1]);
    }
}

void mix_rows(const MixJob& job) {
    for (int j0 = 0; j0 < job.width; j0 += 2 * kLanes) {
        for (int i0 = 0; i0 < job.rows; i0 += kMixedRows) {
            mix_block(job, i0, job.rows - i0 < kMixedRows ? job.rows - i0 : kMixedRows, j0);
        }
    }
}

/// V registers of one point's sum from element e0. Even and odd terms follow recurrences of their own,
/// T_(k+2) = 2 T_2 T_k - T_(k-2), so that neither waits for the other.
template <int V>
inline void chebyshev_sum_block(const ChebyshevSumJob& job, const double* coefficient, double t,
                                double* out) {
    Lanes sum[V];
#pragma GCC unroll 8
    for (int v = 0; v < V; ++v) {
        sum[v] = load(coefficient + v * kLanes);
    }
    const double twice = 4.0 * t * t - 2.0;       // 2 T_2
    double even_before = 0.5 * twice, even = 1.0; // T_-2 and T_0
    double odd_before = t, odd = t;               // T_-1 and T_1
    const double* row = coefficient + job.width;
    int k = 1;
    for (; k + 1 < job.terms; k += 2) {
        const double next_even = twice * even - even_before;
        even_before = even;
        even = next_even;
#pragma GCC unroll 8
        for (int v = 0; v < V; ++v) {
            sum[v] += load(row + v * kLanes) * odd;
            sum[v] += load(row + job.width + v * kLanes) * even;
        }
        row += 2 * job.width;
        const double next_odd = twice * odd - odd_before;
        odd_before = odd;
        odd = next_odd;
    }
#pragma GCC unroll 8
    for (int v = 0; v < V; ++v) {
        if (k < job.terms) {
            sum[v] += load(row + v * kLanes) * odd;
        }
        store(out + v * kLanes, sum[v]);
    }
}

void chebyshev_sums(const ChebyshevSumJob& job) {
    for (int p = 0; p < job.points; ++p) {
        const double* coefficient = job.coefficient + static_cast<long>(job.panel[p]) * job.terms * job.width;
        double* out = job.out + static_cast<long>(p) * job.width;
        int e = 0;
        for (; e + 8 * kLanes <= job.width; e += 8 * kLanes) {
            chebyshev_sum_block<8>(job, coefficient + e, job.t[p], out + e);
        }
        for (; e + 4 * kLanes <= job.width; e += 4 * kLanes) {
            chebyshev_sum_block<4>(job, coefficient + e, job.t[p], out + e);
        }
        for (; e < job.width; e += 2 * kLanes) {
            chebyshev_sum_block<2>(job, coefficient + e, job.t[p], out + e);
        }
    }
}

} // namespace

} // namespace kor
