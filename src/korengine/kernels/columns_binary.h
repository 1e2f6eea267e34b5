// Columns of spins 1/2 alone, whose state numbers are binary: the flip of a spin is one bit. A tile of 8
// rows, the states of the three spins that vary fastest, is summed in registers: flips of these spins permute
// registers, flips of any other one read the tile whose number differs by that bit, and a row costs no index.
#pragma once

namespace kor {

namespace {

constexpr int kTile = 8; // rows

/// The exponent A, and the factor of y in Clenshaw's sum.
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

/// out = y + kSign A b, or with kClenshaw y_factor y + out + kSign A b.
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

/// The exponent is kept as its diagonal, the field and, with kExchange, 8 x 8 exchanges.
template <bool kExchange> struct BinaryMethod {
    static constexpr int kColumns = kLanes;

    static void fill_exponent(const ColumnJob& job, int j, double* exponent) {
        for (int i = 0; i < job.n; ++i) {
            exponent[i] = job.h[j] * job.h0_diagonal[i] + job.hw[j] * job.m[i];
        }
        exponent[job.n] = 0.5 * job.hb[j];
        for (int p = 0; kExchange && p < 64; ++p) {
            exponent[job.n + 1 + p] = job.h[j] * job.exchange[p];
        }
    }

    /// out = y - i A b, or with kClenshaw y_factor y + out - i A b; A is block.scaled.
    template <bool kClenshaw>
    static void term(const ColumnJob& job, const ColumnBlock& block, double y_factor, const double* b,
                     double* out) {
        const int plane = job.n * kColumns;
        const BinaryTerm here = {
            job.n,   job.binary_spins - 3, block.scaled, block.scaled[job.n], block.scaled + job.n + 1,
            y_factor};
        binary_plane<1, kExchange, kClenshaw>(here, block.y, b + plane, out);
        binary_plane<-1, kExchange, kClenshaw>(here, block.y + plane, b, out + plane);
    }
};

void binary_columns(const ColumnJob& job) {
    if (job.exchange) {
        all_columns<BinaryMethod<true>>(job);
    } else {
        all_columns<BinaryMethod<false>>(job);
    }
}

} // namespace

} // namespace kor
