// Up to 16 states, one voxel or time segment per lane: a step's V = exp(-iA) = 1 + D - iS by polynomials in
// A^2, all real symmetric and commuting, so that only upper triangles are computed. D = cos A - 1 is small
// for a small step, so that what repeats from step to step carries no rounding of 1.
#pragma once

namespace kor {

namespace {

constexpr int kBlockColumns = kLanes == 8 ? 4 : 2; // of a register block

/// Rows and columns i0..i0 + 3 of a symmetric product: ten elements.
template <int N>
inline void diagonal_block(const Lanes* a, const Lanes* b, const Lanes* start, int i0, Lanes* out) {
    Lanes sum[4][4];
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
#pragma GCC unroll 4
        for (int j = i; j < 4; ++j) {
            sum[i][j] = start ? start[(i0 + i) * N + i0 + j] : Lanes{};
        }
    }
#pragma GCC unroll 4
    for (int k = 0; k < N; ++k) {
#pragma GCC unroll 4
        for (int i = 0; i < 4; ++i) {
#pragma GCC unroll 4
            for (int j = i; j < 4; ++j) {
                sum[i][j] += a[(i0 + i) * N + k] * b[(i0 + j) * N + k];
            }
        }
    }
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
#pragma GCC unroll 4
        for (int j = i; j < 4; ++j) {
            out[(i0 + i) * N + i0 + j] = sum[i][j];
            out[(i0 + j) * N + i0 + i] = sum[i][j];
        }
    }
}

/// Rows i0..i0 + 3, columns j0..j0 + kBlockColumns - 1 above the diagonal, and their mirror image.
template <int N>
inline void upper_block(const Lanes* a, const Lanes* b, const Lanes* start, int i0, int j0, Lanes* out) {
    Lanes sum[4][kBlockColumns];
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
#pragma GCC unroll 4
        for (int j = 0; j < kBlockColumns; ++j) {
            sum[i][j] = start ? start[(i0 + i) * N + j0 + j] : Lanes{};
        }
    }
    for (int k = 0; k < N; ++k) {
#pragma GCC unroll 4
        for (int i = 0; i < 4; ++i) {
#pragma GCC unroll 4
            for (int j = 0; j < kBlockColumns; ++j) {
                sum[i][j] += a[(i0 + i) * N + k] * b[(j0 + j) * N + k];
            }
        }
    }
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
#pragma GCC unroll 4
        for (int j = 0; j < kBlockColumns; ++j) {
            out[(i0 + i) * N + j0 + j] = sum[i][j];
            out[(j0 + j) * N + i0 + i] = sum[i][j];
        }
    }
}

/// out = start + a . b for commuting symmetric a, b; the upper triangle is computed and mirrored. start may
/// be null (zero) or out.
template <int N> void symmetric_product(const Lanes* a, const Lanes* b, const Lanes* start, Lanes* out) {
    for (int i0 = 0; i0 < N; i0 += 4) {
        diagonal_block<N>(a, b, start, i0, out);
        for (int j0 = i0 + 4; j0 < N; j0 += kBlockColumns) {
            upper_block<N>(a, b, start, i0, j0, out);
        }
    }
}

/// low = sum of c[k] X^k, k = 1..Q; high = sum of c[Q + k] X^k, left alone unless wanted. The same for t,
/// from k = 0.
template <int N, int Q>
void combine_powers(const TrigPolynomial& p, const Lanes* const* x, Lanes* low_c, Lanes* low_t, Lanes* high_c,
                    Lanes* high_t) {
    for (int i = 0; i < N; ++i) {
        for (int j = i; j < N; ++j) {
            const int e = i * N + j;
            const int mirrored = j * N + i;
            Lanes lc{}, lt{};
#pragma GCC unroll 4
            for (int k = 1; k <= Q; ++k) {
                lc += x[k][e] * p.c[k];
                lt += x[k][e] * p.t[k];
            }
            low_c[e] = low_c[mirrored] = lc;
            low_t[e] = low_t[mirrored] = lt;
            if (p.high) {
                Lanes hc{}, ht{};
#pragma GCC unroll 4
                for (int k = 1; k <= Q; ++k) {
                    hc += x[k][e] * p.c[Q + k];
                    ht += x[k][e] * p.t[Q + k];
                }
                high_c[e] = high_c[mirrored] = hc;
                high_t[e] = high_t[mirrored] = ht;
            }
        }
    }
    for (int i = 0; i < N; ++i) {
        low_t[i * N + i] += p.t[0];
    }
}

/// The matrices of LaneJob::work.
struct LaneMatrices {
    Lanes* a;
    Lanes* x[5]; // x[k] = A^(2k), from 1
    Lanes* d;
    Lanes* t;
    Lanes* s;
    Lanes* spare;
};

template <int N> LaneMatrices lane_matrices(Lanes* first) {
    constexpr int size = N * N;
    LaneMatrices w{};
    w.a = first;
    for (int k = 1; k <= 4; ++k) {
        w.x[k] = first + k * size;
    }
    w.d = first + 5 * size;
    w.t = first + 6 * size;
    w.s = first + 7 * size;
    w.spare = first + 8 * size;
    return w;
}

/// a = scale (h H0 + hw Fz + hb Fx) of the step, hb given.
template <int N> void build_exponent(const LaneJob& job, int step, Lanes field, double scale, Lanes* a) {
    const Lanes h = load(job.h + step * kLanes) * scale;
    const Lanes hw = load(job.hw + step * kLanes) * scale;
    const Lanes hb = field * scale;
    for (int i = 0; i < N; ++i) {
        for (int j = i; j < N; ++j) {
            a[i * N + j] = a[j * N + i] = h * job.h0[i * N + j] + hb * job.fx[i * N + j];
        }
    }
    for (int i = 0; i < N; ++i) {
        a[i * N + i] += hw * job.m[i];
    }
}

/// w.d = cos A - 1, w.s = sin A by the polynomial.
template <int N> void cosine_and_sine(const TrigPolynomial& p, LaneMatrices& w) {
    symmetric_product<N>(w.a, w.a, nullptr, w.x[1]);
    for (int k = 2; k <= p.powers; ++k) {
        symmetric_product<N>(w.x[k - 1], w.x[1], nullptr, w.x[k]);
    }
    switch (p.powers) {
    case 2:
        combine_powers<N, 2>(p, w.x, w.d, w.t, w.s, w.spare);
        break;
    case 3:
        combine_powers<N, 3>(p, w.x, w.d, w.t, w.s, w.spare);
        break;
    default:
        combine_powers<N, 4>(p, w.x, w.d, w.t, w.s, w.spare);
    }
    if (p.high) {
        symmetric_product<N>(w.x[p.powers], w.s, w.d, w.d);
        symmetric_product<N>(w.x[p.powers], w.spare, w.t, w.t);
    }
    symmetric_product<N>(w.a, w.t, nullptr, w.s);
}

/// (1 + D - iS) squared: D' = 2 D + D D - S S, S' = 2 (S + D S).
template <int N> void square(LaneMatrices& w) {
    symmetric_product<N>(w.s, w.s, nullptr, w.t);
    for (int e = 0; e < N * N; ++e) {
        w.t[e] = 2.0 * w.d[e] - w.t[e];
    }
    symmetric_product<N>(w.d, w.d, w.t, w.t);
    symmetric_product<N>(w.d, w.s, w.s, w.spare);
    for (int e = 0; e < N * N; ++e) {
        w.spare[e] *= 2.0;
    }
    Lanes* d = w.d;
    w.d = w.t;
    w.t = d;
    Lanes* s = w.s;
    w.s = w.spare;
    w.spare = s;
}

/// w.d and w.s of the step with the field hb.
template <int N>
void exponential(const LaneJob& job, int step, Lanes hb, const StepPlan& plan, LaneMatrices& w) {
    double scale = 1.0;
    for (int q = 0; q < plan.squarings; ++q) {
        scale *= 0.5;
    }
    build_exponent<N>(job, step, hb, scale, w.a);
    cosine_and_sine<N>(*plan.polynomial, w);
    for (int q = 0; q < plan.squarings; ++q) {
        square<N>(w);
    }
}

} // namespace

} // namespace kor
