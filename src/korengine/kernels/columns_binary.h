// More than 16 states of spins 1/2 alone, whose state numbers are binary: the flip of a spin is one bit.
// Blocks of kLanes columns go through all steps while they stay in cache. A tile of 8 rows, the states of
// the three spins that vary fastest, is summed in registers: flips of these spins permute registers, flips
// of any other one read the tile whose number differs by that bit, and a row costs no index.
//
// Each exponential is a polynomial of A. Small ones are summed by Horner's rule on the ratios r of
// neighbouring coefficients, z_k = y - i r_k A z_(k+1), which leaves one product by A and one addition per
// term; larger ones by Clenshaw's recurrence (columns.h). The real A takes the imaginary parts of z to the
// real parts of the result and the real parts to the imaginary ones.
#pragma once

namespace kor {

namespace {

constexpr int kTile = 8; // rows

/// scale . A, and how the sum goes on: Clenshaw's adds y times `y_factor` and what stands in the result.
struct BinaryTerm {
    int n;
    int slow_bits;          // of the tile's number
    const double* diagonal; // n
    double field;           // of each flip
    const double* exchange; // 8 x 8: bits of two spins that flip in opposite directions
    double y_factor;
};

template <int kSign> inline Lanes plus_product(Lanes sum, Lanes x, double factor) {
    if constexpr (kSign > 0) {
        return sum + x * factor;
    } else {
        return sum - x * factor;
    }
}

/// Flips of the tile's own spins; `b` its rows.
template <int kSign, bool kExchange>
[[gnu::always_inline]] inline void add_own(const BinaryTerm& term, int row, const double* b, Lanes* sum) {
    Lanes v[kTile];
#pragma GCC unroll 8
    for (int e = 0; e < kTile; ++e) {
        v[e] = load(b + e * kLanes);
        sum[e] = plus_product<kSign>(sum[e], v[e], term.diagonal[row + e]);
    }
#pragma GCC unroll 8
    for (int e = 0; e < kTile; e += 4) { // states 00 and 11 of the last two spins have the same neighbours
        const Lanes outer = v[e + 1] + v[e + 2];
        const Lanes inner = v[e] + v[e + 3];
        sum[e] = plus_product<kSign>(sum[e], outer + v[e ^ 4], term.field);
        sum[e + 1] = plus_product<kSign>(sum[e + 1], inner + v[(e + 1) ^ 4], term.field);
        sum[e + 2] = plus_product<kSign>(sum[e + 2], inner + v[(e + 2) ^ 4], term.field);
        sum[e + 3] = plus_product<kSign>(sum[e + 3], outer + v[(e + 3) ^ 4], term.field);
    }
    if constexpr (kExchange) {
#pragma GCC unroll 8
        for (int p = 0; p < 3; ++p) {
#pragma GCC unroll 8
            for (int q = p + 1; q < 3; ++q) {
#pragma GCC unroll 8
                for (int e = 0; e < kTile; ++e) {
                    if (((e >> p) ^ (e >> q)) & 1) {
                        sum[e] =
                            plus_product<kSign>(sum[e], v[e ^ (1 << p) ^ (1 << q)], term.exchange[8 * p + q]);
                    }
                }
            }
        }
    }
}

/// Flips of one other spin, bit `bit` of the state, alone and together with one of the tile's spins. That
/// spin is down (up) in this tile: kDown.
template <int kSign, bool kExchange, bool kDown>
[[gnu::always_inline]] inline void add_neighbour(const BinaryTerm& term, int bit, const double* b,
                                                 Lanes* sum) {
#pragma GCC unroll 8
    for (int e = 0; e < kTile; ++e) {
        sum[e] = plus_product<kSign>(sum[e], load(b + e * kLanes), term.field);
    }
    if constexpr (kExchange) {
#pragma GCC unroll 8
        for (int p = 0; p < 3; ++p) {
#pragma GCC unroll 8
            for (int e = 0; e < kTile; ++e) {
                if (((e >> p) & 1) != static_cast<int>(kDown)) {
                    sum[e] = plus_product<kSign>(sum[e], load(b + (e ^ (1 << p)) * kLanes),
                                                 term.exchange[8 * p + bit]);
                }
            }
        }
    }
}

/// Opposite flips of two other spins.
template <int kSign>
[[gnu::always_inline]] inline void add_far_exchange(const BinaryTerm& term, int tile, const double* b,
                                                    Lanes* sum) {
    for (int p = 0; p < term.slow_bits; ++p) {
        for (int q = p + 1; q < term.slow_bits; ++q) {
            if (((tile >> p) ^ (tile >> q)) & 1) {
                const double* far = b + (tile ^ (1 << p) ^ (1 << q)) * kTile * kLanes;
                const double factor = term.exchange[8 * (p + 3) + q + 3];
#pragma GCC unroll 8
                for (int e = 0; e < kTile; ++e) {
                    sum[e] = plus_product<kSign>(sum[e], load(far + e * kLanes), factor);
                }
            }
        }
    }
}

/// out = y + kSign scale A b, or y_factor y + out + kSign scale A b with kClenshaw.
template <int kSign, bool kExchange, bool kClenshaw>
[[gnu::noinline]] void binary_plane(const BinaryTerm& term, const double* y, const double* b, double* out) {
    for (int tile = 0; tile < term.n / kTile; ++tile) {
        const int row = tile * kTile;
        Lanes sum[kTile];
#pragma GCC unroll 8
        for (int e = 0; e < kTile; ++e) {
            sum[e] = load(y + (row + e) * kLanes);
            if constexpr (kClenshaw) {
                sum[e] = sum[e] * term.y_factor + load(out + (row + e) * kLanes);
            }
        }
        add_own<kSign, kExchange>(term, row, b + row * kLanes, sum);
        for (int p = 0; p < term.slow_bits; ++p) {
            const double* other = b + (tile ^ (1 << p)) * kTile * kLanes;
            if (kExchange && ((tile >> p) & 1)) {
                add_neighbour<kSign, kExchange, true>(term, p + 3, other, sum);
            } else {
                add_neighbour<kSign, kExchange, false>(term, p + 3, other, sum);
            }
        }
        if constexpr (kExchange) {
            add_far_exchange<kSign>(term, tile, b, sum);
        }
#pragma GCC unroll 8
        for (int e = 0; e < kTile; ++e) {
            store(out + (row + e) * kLanes, sum[e]);
        }
    }
}

/// out = y - i scale A b (with kClenshaw as above); a block is its real plane, then its imaginary one.
template <bool kExchange, bool kClenshaw>
inline void binary_term(const BinaryTerm& term, const double* y, const double* b, double* out) {
    const int plane = term.n * kLanes;
    binary_plane<1, kExchange, kClenshaw>(term, y, b + plane, out);
    binary_plane<-1, kExchange, kClenshaw>(term, y + plane, b, out + plane);
}

struct BinaryBlock {
    double *y, *b1, *b2; // 2 x n x kLanes
    double* exponent;    // n, the diagonal of A
    double* diagonal;    // n, scaled
    double* exchange;    // 8 x 8, scaled
    double* powers;      // of the turn, real and imaginary parts
};

inline BinaryTerm scaled_term(const ColumnJob& job, int j, double scale, double y_factor,
                              const BinaryBlock& block) {
    for (int i = 0; i < job.n; ++i) {
        block.diagonal[i] = scale * block.exponent[i];
    }
    if (job.exchange) {
        for (int p = 0; p < 64; ++p) {
            block.exchange[p] = scale * job.h[j] * job.exchange[p];
        }
    }
    return {job.n, job.spins - 3, block.diagonal, 0.5 * scale * job.hb[j], block.exchange, y_factor};
}

inline void swap(double*& a, double*& b) {
    double* const c = a;
    a = b;
    b = c;
}

template <bool kExchange> inline void horner(const ColumnJob& job, int j, BinaryBlock& block) {
    const ChebyshevSeries& series = *job.series[j];
    const double* from = block.y;
    for (int k = series.degree - 1; k >= 0; --k) {
        binary_term<kExchange, false>(scaled_term(job, j, series.ratio[k], 1.0, block), block.y, from,
                                      block.b1);
        from = block.b1;
        swap(block.b1, block.b2);
    }
    swap(block.y, block.b2);
}

template <bool kExchange> inline void clenshaw(const ColumnJob& job, int j, BinaryBlock& block) {
    const ChebyshevSeries& series = *job.series[j];
    const double scale = 2.0 / series.radius;
    const double last = series.coefficient[series.degree];
    for (int e = 0; e < 2 * job.n * kLanes; e += kLanes) {
        store(block.b1 + e, load(block.y + e) * last);
        store(block.b2 + e, Lanes{});
    }
    for (int k = series.degree - 1; k >= 0; --k) {
        const double halved = k > 0 ? scale : 0.5 * scale;
        binary_term<kExchange, true>(scaled_term(job, j, halved, series.coefficient[k], block), block.y,
                                     block.b1, block.b2);
        swap(block.b1, block.b2);
    }
    swap(block.y, block.b1);
}

/// y = exp(-iA) y of step j.
template <bool kExchange> inline void apply_binary_step(const ColumnJob& job, int j, BinaryBlock& block) {
    for (int i = 0; i < job.n; ++i) {
        block.exponent[i] = job.h[j] * job.h0_diagonal[i] + job.hw[j] * job.m[i];
    }
    if (job.series[j]->ratio) {
        horner<kExchange>(job, j, block);
    } else {
        clenshaw<kExchange>(job, j, block);
    }
}

/// y = Z y, Z the turn of the field's direction between step j - 1 and step j.
inline void turn_binary_rows(const ColumnJob& job, int j, BinaryBlock& block) {
    fill_turns(job, j, block.powers);
    for (int i = 0; i < job.n; ++i) {
        const double zr = block.powers[2 * job.ladder[i]];
        const double zi = block.powers[2 * job.ladder[i] + 1];
        double* re = block.y + i * kLanes;
        double* im = re + job.n * kLanes;
        const Lanes yr = load(re);
        const Lanes yi = load(im);
        store(re, yr * zr - yi * zi);
        store(im, yr * zi + yi * zr);
    }
}

template <bool kExchange> void binary_block(const ColumnJob& job, int c0, BinaryBlock& block) {
    for (int e = 0; e < 2 * job.n * kLanes; ++e) {
        block.y[e] = 0.0;
    }
    for (int c = 0; c < kLanes; ++c) {
        block.y[(c0 + c) * kLanes + c] = 1.0;
    }
    for (int j = job.steps - 1; j >= 0; --j) {
        if (job.zc && j + 1 < job.steps) {
            turn_binary_rows(job, j + 1, block);
        }
        apply_binary_step<kExchange>(job, j, block);
    }
    for (int i = 0; i < job.n; ++i) {
        store(job.re + i * job.stride + c0, load(block.y + i * kLanes));
        store(job.im + i * job.stride + c0, load(block.y + (job.n + i) * kLanes));
    }
}

void binary_column_product(const ColumnJob& job) {
    const int size = 2 * job.n * kLanes;
    double* rest = job.work + 3 * size;
    BinaryBlock block{job.work,     job.work + size,  job.work + 2 * size,  rest,
                      rest + job.n, rest + 2 * job.n, rest + 2 * job.n + 64};
    for (int c0 = 0; c0 < job.n; c0 += kLanes) {
        if (job.exchange) {
            binary_block<true>(job, c0, block);
        } else {
            binary_block<false>(job, c0, block);
        }
    }
}

} // namespace

} // namespace kor
