// Up to 16 states: the ordered product of the steps, P = P Z V, its ends in the frame of the operators. In a
// stretch of constant gradient V depends on the field's strength alone, and is the sum of a short series
// instead of products of matrices.
#pragma once

namespace kor {

namespace {

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

/// P = P Z (1 + D - iS), two rows at a time; Z turns column j by powers[ladder[j]], or not at all.
template <int N>
void multiply_step(const LaneMatrices& w, const Lanes* powers, const int* ladder, Lanes* pr, Lanes* pi) {
    for (int i0 = 0; i0 < N; i0 += 2) {
        Lanes row_re[2][N], row_im[2][N];
        turned_rows<N>(pr + i0 * N, pi + i0 * N, powers, ladder, row_re, row_im);
        for (int j0 = 0; j0 < N; j0 += kBlockColumns) {
            Lanes re[2][kBlockColumns], im[2][kBlockColumns];
#pragma GCC unroll 4
            for (int i = 0; i < 2; ++i) {
#pragma GCC unroll 4
                for (int j = 0; j < kBlockColumns; ++j) {
                    re[i][j] = row_re[i][j0 + j];
                    im[i][j] = row_im[i][j0 + j];
                }
            }
            for (int k = 0; k < N; ++k) {
#pragma GCC unroll 4
                for (int j = 0; j < kBlockColumns; ++j) {
                    const Lanes d = w.d[(j0 + j) * N + k];
                    const Lanes s = w.s[(j0 + j) * N + k];
#pragma GCC unroll 4
                    for (int i = 0; i < 2; ++i) {
                        re[i][j] += row_re[i][k] * d;
                        re[i][j] += row_im[i][k] * s;
                        im[i][j] += row_im[i][k] * d;
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

/// Where element (i, j), i <= j, and term k stand in a stretch's series: D and S side by side.
inline int series_at(int element, int term, int terms) {
    return 2 * (element * terms + term);
}

/// w.d and w.s at node m of the stretch and the nodes behind it, one per lane, or in all lanes at node m.
template <int N>
void exponential_at_nodes(const LaneJob& job, const FieldStretch& f, int m, LaneMatrices& w) {
    Lanes hb{};
    for (int lane = 0; lane < kLanes; ++lane) {
        const int node = job.one_place ? m + lane : m;
        hb[lane] = f.middle + f.half * f.node[node < f.terms ? node : m];
    }
    exponential<N>(job, f.first, hb, f.plan, w);
}

/// An element as a series holds it: for every lane, or once for all of them.
inline void take_lane(Lanes from, int, Lanes& to) {
    to = from;
}
inline void take_lane(Lanes from, int lane, double& to) {
    to = from[lane];
}

/// The series of a stretch in hb from the exponentials at its nodes; Value is double where all lanes have one
/// place, else Lanes.
template <int N, typename Value>
void make_series(const LaneJob& job, const FieldStretch& f, LaneMatrices& w, Value* series) {
    for (int e = 0; e < N * (N + 1) * f.terms; ++e) {
        series[e] = Value{};
    }
    const int at_once = job.one_place ? kLanes : 1;
    for (int m = 0; m < f.terms; ++m) {
        const int lane = m % at_once;
        if (lane == 0) {
            exponential_at_nodes<N>(job, f, m, w);
        }
        int element = 0;
        for (int i = 0; i < N; ++i) {
            for (int j = i; j < N; ++j, ++element) {
                Value d, s;
                take_lane(w.d[i * N + j], lane, d);
                take_lane(w.s[i * N + j], lane, s);
                for (int k = 0; k < f.terms; ++k) {
                    Value* to = series + series_at(element, k, f.terms);
                    to[0] += d * f.to_series[k * f.terms + m];
                    to[1] += s * f.to_series[k * f.terms + m];
                }
            }
        }
    }
}

/// Chebyshev polynomials 0..terms - 1 at the field hb.
inline void chebyshev_values(const FieldStretch& f, Lanes hb, Lanes* chebyshev) {
    const Lanes t = f.half > 0.0 ? (hb - f.middle) * (1.0 / f.half) : Lanes{};
    chebyshev[0] = Lanes{} + 1.0;
    chebyshev[1] = t;
    for (int k = 2; k < f.terms; ++k) {
        chebyshev[k] = 2.0 * t * chebyshev[k - 1] - chebyshev[k - 2];
    }
}

/// w.d and w.s, from the series at the field of these polynomials; kTerms = 0: any number of terms.
template <int N, int kTerms, typename Value>
void sum_terms(const FieldStretch& f, const Value* series, const Lanes* chebyshev, LaneMatrices& w) {
    const int terms = kTerms > 0 ? kTerms : f.terms;
    for (int i = 0; i < N; ++i) {
        for (int j = i; j < N; ++j) {
            Lanes d = Lanes{} + series[0];
            Lanes s = Lanes{} + series[1];
#pragma GCC unroll 16
            for (int k = 1; k < terms; ++k) {
                d += series[2 * k] * chebyshev[k];
                s += series[2 * k + 1] * chebyshev[k];
            }
            series += series_at(1, 0, terms);
            w.d[i * N + j] = w.d[j * N + i] = d;
            w.s[i * N + j] = w.s[j * N + i] = s;
        }
    }
}

template <int N, typename Value>
void sum_series(const FieldStretch& f, const Value* series, Lanes hb, LaneMatrices& w) {
    Lanes chebyshev[kMaxFieldTerms];
    chebyshev_values(f, hb, chebyshev);
    switch (f.terms) {
    case 4:
        return sum_terms<N, 4, Value>(f, series, chebyshev, w);
    case 5:
        return sum_terms<N, 5, Value>(f, series, chebyshev, w);
    case 6:
        return sum_terms<N, 6, Value>(f, series, chebyshev, w);
    case 8:
        return sum_terms<N, 8, Value>(f, series, chebyshev, w);
    case 10:
        return sum_terms<N, 10, Value>(f, series, chebyshev, w);
    default:
        return sum_terms<N, 0, Value>(f, series, chebyshev, w);
    }
}

/// P = 1 + D - iS
template <int N> void first_step(const LaneMatrices& w, Lanes* pr, Lanes* pi) {
    for (int e = 0; e < N * N; ++e) {
        pr[e] = w.d[e];
        pi[e] = -w.s[e];
    }
    for (int i = 0; i < N; ++i) {
        pr[i * N + i] += 1.0;
    }
}

/// Element (i, j) times powers[ladder[i]]: from the frame of the field's direction on the left.
template <int N> void turn_rows(const Lanes* powers, const int* ladder, Lanes* pr, Lanes* pi) {
    for (int i = 0; i < N; ++i) {
        const Lanes zr = powers[2 * ladder[i]];
        const Lanes zi = powers[2 * ladder[i] + 1];
        for (int e = i * N; e < (i + 1) * N; ++e) {
            const Lanes re = pr[e];
            pr[e] = re * zr - pi[e] * zi;
            pi[e] = re * zi + pi[e] * zr;
        }
    }
}

/// Element (i, j) times powers[ladder[j]]: back to that frame on the right.
template <int N> void turn_columns(const Lanes* powers, const int* ladder, Lanes* pr, Lanes* pi) {
    for (int j = 0; j < N; ++j) {
        const Lanes zr = powers[2 * ladder[j]];
        const Lanes zi = powers[2 * ladder[j] + 1];
        for (int e = j; e < N * N; e += N) {
            const Lanes re = pr[e];
            pr[e] = re * zr - pi[e] * zi;
            pi[e] = re * zi + pi[e] * zr;
        }
    }
}

template <int N, typename Value> void lane_product_of(const LaneJob& job) {
    Lanes* powers = as_lanes(job.work);
    LaneMatrices w = lane_matrices<N>(powers + 2 * (job.ladder_top + 1));
    Value* const series = reinterpret_cast<Value*>(job.series);
    Lanes* pr = as_lanes(job.re);
    Lanes* pi = as_lanes(job.im);
    const FieldStretch* next = job.stretch;
    const FieldStretch* const last = job.stretch + job.stretches;
    for (int j = 0; j < job.steps; ++j) {
        if (next != last && j == next->first) {
            make_series<N, Value>(job, *next, w, series);
        }
        const Lanes hb = load(job.hb + j * kLanes);
        if (next != last && j >= next->first) {
            sum_series<N, Value>(*next, series, hb, w);
            next += j + 1 == next->end;
        } else {
            exponential<N>(job, j, hb, job.plan[j], w);
        }
        if (job.zc) {
            turn_powers(load(job.zc + j * kLanes), load(job.zs + j * kLanes), job.ladder_top, powers);
        }
        if (j > 0) {
            multiply_step<N>(w, job.zc ? powers : nullptr, job.ladder, pr, pi);
        } else {
            first_step<N>(w, pr, pi);
            if (job.zc) {
                turn_rows<N>(powers, job.ladder, pr, pi);
            }
        }
    }
    if (job.zc) {
        turn_powers(load(job.last_c), -load(job.last_s), job.ladder_top, powers);
        turn_columns<N>(powers, job.ladder, pr, pi);
    }
}

template <int N> void lane_product_of(const LaneJob& job) {
    job.one_place ? lane_product_of<N, double>(job) : lane_product_of<N, Lanes>(job);
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
