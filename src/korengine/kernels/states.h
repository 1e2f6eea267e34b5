// States in the order of the files (row by row, each element its real part, then its imaginary part): their
// rotation, up to 16 x 16, and their signals. A product of two such matrices takes the elements of the left
// one as factors of whole rows of the right one, so that nothing is rearranged:
//   row i of a b = sum over k of re(a_ik) row k of b + im(a_ik) i (row k of b).
#pragma once

namespace kor {

namespace {

/// Registers of W doubles, W / 2 elements.
template <int W> struct Pairs {
    typedef double Vector __attribute__((vector_size(8 * W), aligned(8), may_alias));
};

template <int W> inline typename Pairs<W>::Vector load_pairs(const double* p) {
    return *reinterpret_cast<const typename Pairs<W>::Vector*>(p);
}

template <int W> inline void store_pairs(double* p, typename Pairs<W>::Vector v) {
    *reinterpret_cast<typename Pairs<W>::Vector*>(p) = v;
}

/// i v: (re, im) becomes (-im, re).
template <int W> inline typename Pairs<W>::Vector times_i(typename Pairs<W>::Vector v) {
    if constexpr (W == 2) {
        const typename Pairs<2>::Vector sign = {-1.0, 1.0};
        return __builtin_shufflevector(v, v, 1, 0) * sign;
    } else if constexpr (W == 4) {
        const typename Pairs<4>::Vector sign = {-1.0, 1.0, -1.0, 1.0};
        return __builtin_shufflevector(v, v, 1, 0, 3, 2) * sign;
    } else {
        const typename Pairs<8>::Vector sign = {-1.0, 1.0, -1.0, 1.0, -1.0, 1.0, -1.0, 1.0};
        return __builtin_shufflevector(v, v, 1, 0, 3, 2, 5, 4, 7, 6) * sign;
    }
}

/// Factors of a product: n x n elements each; ib = i b. out = a b and, unless null, iout = i a b.
struct PairProduct {
    const double *a, *b, *ib;
    double *out, *iout;
};

/// Rows i0..i0 + Rows - 1, registers j0..j0 + R - 1 of the product.
template <int W, int Rows, int R> inline void pair_tile(int n, const PairProduct& p, int i0, int j0) {
    typename Pairs<W>::Vector sum[Rows][R] = {};
    for (int k = 0; k < n; ++k) {
#pragma GCC unroll 4
        for (int j = 0; j < R; ++j) {
            const auto b = load_pairs<W>(p.b + 2 * n * k + j0 + j * W);
            const auto ib = load_pairs<W>(p.ib + 2 * n * k + j0 + j * W);
#pragma GCC unroll 4
            for (int i = 0; i < Rows; ++i) {
                const double* a = p.a + 2 * (n * (i0 + i) + k);
                sum[i][j] += b * a[0];
                sum[i][j] += ib * a[1];
            }
        }
    }
#pragma GCC unroll 4
    for (int i = 0; i < Rows; ++i) {
#pragma GCC unroll 4
        for (int j = 0; j < R; ++j) {
            const int e = 2 * n * (i0 + i) + j0 + j * W;
            store_pairs<W>(p.out + e, sum[i][j]);
            if (p.iout) {
                store_pairs<W>(p.iout + e, times_i<W>(sum[i][j]));
            }
        }
    }
}

template <int W, int Rows> inline void pair_rows(int n, const PairProduct& p, int i0) {
    int j = 0;
    for (; j + 2 * W <= 2 * n; j += 2 * W) {
        pair_tile<W, Rows, 2>(n, p, i0, j);
    }
    for (; j < 2 * n; j += W) {
        pair_tile<W, Rows, 1>(n, p, i0, j);
    }
}

template <int W> [[gnu::always_inline]] inline void pair_product(int n, const PairProduct& p) {
    int i = 0;
    for (; i + 4 <= n; i += 4) {
        pair_rows<W, 4>(n, p, i);
    }
    for (; i < n; ++i) {
        pair_rows<W, 1>(n, p, i);
    }
}

/// x - x is 0 for a finite x and not a number for any other.
template <int W> inline bool state_is_finite(int n, const double* state) {
    typename Pairs<W>::Vector sum = {};
    for (int e = 0; e < 2 * n * n; e += W) {
        const auto v = load_pairs<W>(state + e);
        sum += v - v;
    }
    double total = 0.0;
    for (int k = 0; k < W; ++k) {
        total += sum[k];
    }
    return total == 0.0;
}

template <int W> inline int turn_each(int n, const TurnJob& job) {
    alignas(64) double half[2 * kMaxTurnedStates * kMaxTurnedStates];
    alignas(64) double ihalf[2 * kMaxTurnedStates * kMaxTurnedStates];
    for (int k = 0; k < job.count; ++k) {
        double* state = job.states + static_cast<long>(k) * 2 * n * n;
        if (!state_is_finite<W>(n, state)) {
            return k;
        }
        pair_product<W>(n, {state, job.r, job.ir, half, ihalf});
        pair_product<W>(n, {job.adjoint, half, ihalf, state, nullptr});
    }
    return job.count;
}

/// The widest registers that divide a row.
int turn_states(const TurnJob& job) {
    constexpr int half = kLanes > 2 ? kLanes / 2 : 2;
    if (2 * job.n % kLanes == 0) {
        return job.n == 4 ? turn_each<kLanes>(4, job) : turn_each<kLanes>(job.n, job);
    }
    return 2 * job.n % half == 0 ? turn_each<half>(job.n, job) : turn_each<2>(job.n, job);
}

/// Two registers of (re[0], im[0], re[1], im[1], ...).
template <int W>
inline void store_interleaved(double* out, typename Pairs<W>::Vector re, typename Pairs<W>::Vector im) {
    if constexpr (W == 2) {
        store_pairs<W>(out, __builtin_shufflevector(re, im, 0, 2));
        store_pairs<W>(out + W, __builtin_shufflevector(re, im, 1, 3));
    } else if constexpr (W == 4) {
        store_pairs<W>(out, __builtin_shufflevector(re, im, 0, 4, 1, 5));
        store_pairs<W>(out + W, __builtin_shufflevector(re, im, 2, 6, 3, 7));
    } else {
        store_pairs<W>(out, __builtin_shufflevector(re, im, 0, 8, 1, 9, 2, 10, 3, 11));
        store_pairs<W>(out + W, __builtin_shufflevector(re, im, 4, 12, 5, 13, 6, 14, 7, 15));
    }
}

/// The amplitudes of every line in the middles of the blocks: xr, xi, yr, yi, each lines x blocks, in work.
inline void turn_to_block_middles(const SignalJob& job) {
    const int size = job.lines * job.blocks;
    for (int l = 0; l < job.lines; ++l) {
        const double* a = job.amplitude + 4 * l;
        for (int p = 0; p < job.blocks; p += kLanes) {
            const int e = l * job.blocks + p;
            const Lanes c = load(job.middle_cosine + e);
            const Lanes s = load(job.middle_sine + e);
            store(job.work + e, c * a[0] - s * a[1]);
            store(job.work + size + e, s * a[0] + c * a[1]);
            store(job.work + 2 * size + e, c * a[2] - s * a[3]);
            store(job.work + 3 * size + e, s * a[2] + c * a[3]);
        }
    }
}

/// The same backwards, to in front of `end`: (..., re[1], im[1], re[0], im[0]).
template <int W>
inline void store_backwards(double* end, typename Pairs<W>::Vector re, typename Pairs<W>::Vector im) {
    if constexpr (W == 2) {
        store_pairs<W>(end - W, __builtin_shufflevector(re, im, 0, 2));
        store_pairs<W>(end - 2 * W, __builtin_shufflevector(re, im, 1, 3));
    } else if constexpr (W == 4) {
        store_pairs<W>(end - W, __builtin_shufflevector(re, im, 1, 5, 0, 4));
        store_pairs<W>(end - 2 * W, __builtin_shufflevector(re, im, 3, 7, 2, 6));
    } else {
        store_pairs<W>(end - W, __builtin_shufflevector(re, im, 3, 11, 2, 10, 1, 9, 0, 8));
        store_pairs<W>(end - 2 * W, __builtin_shufflevector(re, im, 7, 15, 6, 14, 5, 13, 4, 12));
    }
}

/// Points as far before the middle of their block as behind it share the sums: that over the cosines is even,
/// that over the sines odd.
void signal_pairs(const SignalJob& job) {
    turn_to_block_middles(job);
    const int size = job.lines * job.blocks;
    const int half = job.points / 2;
    for (int p = 0; p < job.blocks; p += 2) {
        for (int q = 0; q < half; q += kLanes) {
            Lanes even_re[2] = {}, odd_re[2] = {}, even_im[2] = {}, odd_im[2] = {};
            for (int l = 0; l < job.lines; ++l) {
                const Lanes c = load(job.cosine + l * half + q);
                const Lanes s = load(job.sine + l * half + q);
                const double* a = job.work + l * job.blocks + p;
#pragma GCC unroll 4
                for (int i = 0; i < 2; ++i) {
                    even_re[i] += c * a[i];
                    odd_re[i] += s * a[size + i];
                    even_im[i] += c * a[2 * size + i];
                    odd_im[i] += s * a[3 * size + i];
                }
            }
#pragma GCC unroll 4
            for (int i = 0; i < 2; ++i) {
                double* middle = job.pairs + 2 * (static_cast<long>(p + i) * job.points + half);
                store_interleaved<kLanes>(middle + 2 * q, even_re[i] - odd_re[i], even_im[i] - odd_im[i]);
                store_backwards<kLanes>(middle - 2 * q, even_re[i] + odd_re[i], even_im[i] + odd_im[i]);
            }
        }
    }
}

} // namespace

} // namespace kor
