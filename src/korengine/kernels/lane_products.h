// Up to 16 states, one voxel or time segment per lane: each step's V = C - iS by polynomials in A^2, all
// real symmetric and commuting, so that only upper triangles are computed; then P = P Z V.
#pragma once

namespace kor {

namespace {

constexpr int kBlockColumns = kLanes == 8 ? 4 : 2; // of a register block of real products

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

/// low = c[0] + sum of c[k] X^k, k = 1..Q; high = sum of c[Q + k] X^k, left alone unless wanted. The same
/// for t.
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
        low_c[i * N + i] += p.c[0];
        low_t[i * N + i] += p.t[0];
    }
}

/// The matrices of LaneJob::work.
struct LaneMatrices {
    Lanes* a;
    Lanes* x[5]; // x[k] = A^(2k), from 1
    Lanes* c;
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
    w.c = first + 5 * size;
    w.t = first + 6 * size;
    w.s = first + 7 * size;
    w.spare = first + 8 * size;
    return w;
}

template <int N> void build_exponent(const LaneJob& job, int step, double scale, Lanes* a) {
    const Lanes h = load(job.h + step * kLanes) * scale;
    const Lanes hw = load(job.hw + step * kLanes) * scale;
    const Lanes hb = load(job.hb + step * kLanes) * scale;
    for (int i = 0; i < N; ++i) {
        for (int j = i; j < N; ++j) {
            a[i * N + j] = a[j * N + i] = h * job.h0[i * N + j] + hb * job.fx[i * N + j];
        }
    }
    for (int i = 0; i < N; ++i) {
        a[i * N + i] += hw * job.m[i];
    }
}

/// w.c = cos A, w.s = sin A by the polynomial.
template <int N> void cosine_and_sine(const TrigPolynomial& p, LaneMatrices& w) {
    symmetric_product<N>(w.a, w.a, nullptr, w.x[1]);
    for (int k = 2; k <= p.powers; ++k) {
        symmetric_product<N>(w.x[k - 1], w.x[1], nullptr, w.x[k]);
    }
    switch (p.powers) {
    case 2:
        combine_powers<N, 2>(p, w.x, w.c, w.t, w.s, w.spare);
        break;
    case 3:
        combine_powers<N, 3>(p, w.x, w.c, w.t, w.s, w.spare);
        break;
    default:
        combine_powers<N, 4>(p, w.x, w.c, w.t, w.s, w.spare);
    }
    if (p.high) {
        symmetric_product<N>(w.x[p.powers], w.s, w.c, w.c);
        symmetric_product<N>(w.x[p.powers], w.spare, w.t, w.t);
    }
    symmetric_product<N>(w.a, w.t, nullptr, w.s);
}

/// (C - iS) squared: C' = C C - S S, S' = 2 C S. (2 C C - 1 would double the error of C twice.)
template <int N> void square(LaneMatrices& w) {
    symmetric_product<N>(w.s, w.s, nullptr, w.t);
    for (int e = 0; e < N * N; ++e) {
        w.t[e] = -w.t[e];
    }
    symmetric_product<N>(w.c, w.c, w.t, w.t);
    symmetric_product<N>(w.c, w.s, nullptr, w.spare);
    for (int e = 0; e < N * N; ++e) {
        w.spare[e] *= 2.0;
    }
    Lanes* c = w.c;
    w.c = w.t;
    w.t = c;
    Lanes* s = w.s;
    w.s = w.spare;
    w.spare = s;
}

/// Powers 0..top of zc + i zs, interleaved.
inline void turn_powers(Lanes zc, Lanes zs, int top, Lanes* powers) {
    Lanes re = Lanes{} + 1.0, im{};
    for (int k = 0; k <= top; ++k) {
        powers[2 * k] = re;
        powers[2 * k + 1] = im;
        const Lanes next = re * zc - im * zs;
        im = re * zs + im * zc;
        re = next;
    }
}

/// Two rows of P, column k turned by powers[ladder[k]], or not at all.
template <int N>
inline void turned_rows(const Lanes* pr, const Lanes* pi, const Lanes* powers, const int* ladder,
                        Lanes (&row_re)[2][N], Lanes (&row_im)[2][N]) {
#pragma GCC unroll 4
    for (int i = 0; i < 2; ++i) {
        for (int k = 0; k < N; ++k) {
            const Lanes re = pr[i * N + k];
            const Lanes im = pi[i * N + k];
            if (powers && ladder[k] > 0) {
                const Lanes zr = powers[2 * ladder[k]];
                const Lanes zi = powers[2 * ladder[k] + 1];
                row_re[i][k] = re * zr - im * zi;
                row_im[i][k] = re * zi + im * zr;
            } else {
                row_re[i][k] = re;
                row_im[i][k] = im;
            }
        }
    }
}

/// P = P Z (C - iS), two rows at a time; Z turns column j by powers[ladder[j]], or not at all.
template <int N>
void multiply_step(const LaneMatrices& w, const Lanes* powers, const int* ladder, Lanes* pr, Lanes* pi) {
    for (int i0 = 0; i0 < N; i0 += 2) {
        Lanes row_re[2][N], row_im[2][N];
        turned_rows<N>(pr + i0 * N, pi + i0 * N, powers, ladder, row_re, row_im);
        for (int j0 = 0; j0 < N; j0 += kBlockColumns) {
            Lanes re[2][kBlockColumns]{}, im[2][kBlockColumns]{};
            for (int k = 0; k < N; ++k) {
#pragma GCC unroll 4
                for (int j = 0; j < kBlockColumns; ++j) {
                    const Lanes c = w.c[(j0 + j) * N + k];
                    const Lanes s = w.s[(j0 + j) * N + k];
#pragma GCC unroll 4
                    for (int i = 0; i < 2; ++i) {
                        re[i][j] += row_re[i][k] * c;
                        re[i][j] += row_im[i][k] * s;
                        im[i][j] += row_im[i][k] * c;
                        im[i][j] -= row_re[i][k] * s;
                    }
                }
            }
#pragma GCC unroll 4
            for (int i = 0; i < 2; ++i) {
#pragma GCC unroll 4
                for (int j = 0; j < kBlockColumns; ++j) {
                    pr[(i0 + i) * N + j0 + j] = re[i][j];
                    pi[(i0 + i) * N + j0 + j] = im[i][j];
                }
            }
        }
    }
}

template <int N> void lane_product_of(const LaneJob& job) {
    Lanes* powers = as_lanes(job.work);
    LaneMatrices w = lane_matrices<N>(powers + 2 * (job.ladder_top + 1));
    Lanes* pr = as_lanes(job.re);
    Lanes* pi = as_lanes(job.im);
    for (int j = 0; j < job.steps; ++j) {
        double scale = 1.0;
        for (int q = 0; q < job.plan[j].squarings; ++q) {
            scale *= 0.5;
        }
        build_exponent<N>(job, j, scale, w.a);
        cosine_and_sine<N>(*job.plan[j].polynomial, w);
        for (int q = 0; q < job.plan[j].squarings; ++q) {
            square<N>(w);
        }
        if (j == 0) {
            for (int e = 0; e < N * N; ++e) {
                pr[e] = w.c[e];
                pi[e] = -w.s[e];
            }
            continue;
        }
        if (job.zc) {
            turn_powers(load(job.zc + j * kLanes), load(job.zs + j * kLanes), job.ladder_top, powers);
        }
        multiply_step<N>(w, job.zc ? powers : nullptr, job.ladder, pr, pi);
    }
}

void lane_product(const LaneJob& job) {
    switch (job.n) {
    case 4:
        return lane_product_of<4>(job);
    case 8:
        return lane_product_of<8>(job);
    case 12:
        return lane_product_of<12>(job);
    default:
        return lane_product_of<16>(job);
    }
}

} // namespace

} // namespace kor
