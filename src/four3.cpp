#include "four3.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

namespace kor {

four3_status four3_last_status = FOUR3_OK;

namespace {

constexpr double kTwoPi = 6.283185307179586;

/// The index after i, bits reversed, from that of i: a carry that runs down from the highest bit.
std::size_t next_reversed(std::size_t i, std::size_t reversed, std::size_t nn) {
    return reversed ^ (nn - (nn >> (std::countr_one(i) + 1)));
}

void bit_reverse(double* data, std::size_t nn) {
    std::size_t j = 0;
    for (std::size_t i = 0; i < nn; ++i) {
        if (i < j) {
            std::swap(data[2 * i], data[2 * j]);
            std::swap(data[2 * i + 1], data[2 * j + 1]);
        }
        j = next_reversed(i, j, nn);
    }
}

/// A complex number as one register.
typedef double Pair __attribute__((vector_size(16)));

Pair load(const double* x) {
    return Pair{x[0], x[1]};
}

void store(double* x, Pair value) {
    x[0] = value[0];
    x[1] = value[1];
}

/// x_i and x_j become x_i + w x_j and x_i - w x_j, w = (cosine, sine) or, inverse, its conjugate.
template <bool inverse> inline void butterfly(Pair& xi, Pair& xj, const double* w) {
    const Pair along = Pair{w[0], w[0]} * xj;
    const Pair across = Pair{-w[1], w[1]} * __builtin_shufflevector(xj, xj, 1, 0);
    const Pair t = inverse ? along - across : along + across;
    xj = xi - t;
    xi = xi + t;
}

/// The twiddle factors of half-span h, from k = 0 on, by the sine recurrence.
class Twiddles {
public:
    explicit Twiddles(std::size_t h) {
        const double theta = kTwoPi / static_cast<double>(2 * h);
        const double half_sine = std::sin(theta / 2.0);
        wpr_ = -2.0 * half_sine * half_sine;
        wpi_ = std::sin(theta);
    }
    /// The next `count`, each a cosine and a sine.
    void fill(double* out, std::size_t count) {
        for (std::size_t k = 0; k < count; ++k) {
            out[2 * k] = wr_;
            out[2 * k + 1] = wi_;
            const double old_wr = wr_;
            wr_ = wr_ + wr_ * wpr_ - wi_ * wpi_;
            wi_ = wi_ + old_wr * wpi_ + wi_ * wpr_;
        }
    }

private:
    double wpr_, wpi_;
    double wr_ = 1.0, wi_ = 0.0;
};

/// The factors of half-spans up to those of the longest waveform are kept.
constexpr std::size_t kKeptSpans = 4096;

/// All factors of half-span h, at most kKeptSpans.
const double* kept_twiddles(std::size_t h) {
    static double kept[4 * kKeptSpans]; // those of h begin at 2 h
    static std::size_t made = 1;        // half-spans below are there
    for (; made <= h; made *= 2) {
        Twiddles(made).fill(kept + 2 * made, made);
    }
    return kept + 2 * h;
}

/// The butterflies of half-span h.
template <bool inverse> void combine_stage(double* data, std::size_t nn, std::size_t h) {
    constexpr std::size_t together = 512;
    double w[2 * together];
    Twiddles twiddles(h);
    const std::size_t count = std::min(h, together);
    for (std::size_t first = 0; first < h; first += count) {
        twiddles.fill(w, count);
        for (std::size_t i = first; i < nn; i += 2 * h) {
            for (std::size_t k = 0; k < count; ++k) {
                double* x = data + 2 * (i + k);
                Pair a = load(x), b = load(x + 2 * h);
                butterfly<inverse>(a, b, w + 2 * k);
                store(x, a);
                store(x + 2 * h, b);
            }
        }
    }
}

/// Those of half-spans h and 2 h, both kept, while the points are at hand.
template <bool inverse> void combine_two_stages(double* data, std::size_t nn, std::size_t h) {
    const double* first = kept_twiddles(h);
    const double* second = kept_twiddles(2 * h);
    for (std::size_t i = 0; i < nn; i += 4 * h) {
        for (std::size_t k = 0; k < h; ++k) {
            double* x = data + 2 * (i + k);
            Pair a = load(x), b = load(x + 2 * h), c = load(x + 4 * h), d = load(x + 6 * h);
            butterfly<inverse>(a, b, first + 2 * k);
            butterfly<inverse>(c, d, first + 2 * k);
            butterfly<inverse>(a, c, second + 2 * k);
            butterfly<inverse>(b, d, second + 2 * (k + h));
            store(x, a);
            store(x + 2 * h, b);
            store(x + 4 * h, c);
            store(x + 6 * h, d);
        }
    }
}

template <bool inverse> void combine_stages(double* data, std::size_t nn) {
    std::size_t h = 1;
    if (std::countr_zero(nn) % 2 == 1) {
        combine_stage<inverse>(data, nn, h);
        h = 2;
    }
    for (; h < nn; h *= 4) {
        if (2 * h <= kKeptSpans) {
            combine_two_stages<inverse>(data, nn, h);
        } else {
            combine_stage<inverse>(data, nn, h);
            combine_stage<inverse>(data, nn, 2 * h);
        }
    }
}

/// Transforms points that stand in the order of their reversed indices; what this returns has still to be
/// multiplied into them.
double combine(double* data, std::size_t nn, bool inverse) {
    if (!inverse) {
        combine_stages<false>(data, nn);
        return 1.0;
    }
    combine_stages<true>(data, nn);
    return 1.0 / static_cast<double>(nn);
}

} // namespace

bool is_power_of_two(std::size_t n) {
    return n != 0 && (n & (n - 1)) == 0;
}

four3_status four2_status(double* data, std::size_t nn, bool inverse) {
    if (!data) {
        return FOUR3_ERR_NULLPTR;
    }
    if (!is_power_of_two(nn)) {
        return FOUR3_ERR_BADLEN;
    }
    bit_reverse(data, nn);
    const double scale = combine(data, nn, inverse);
    for (std::size_t k = 0; inverse && k < 2 * nn; ++k) {
        data[k] *= scale;
    }
    return FOUR3_OK;
}

four3_status fft_status(std::size_t ap, double* real, double* imag, bool inverse) {
    if (!real || !imag) {
        return FOUR3_ERR_NULLPTR;
    }
    if (ap < 2 || !is_power_of_two(ap) || ap > SIZE_MAX / (2 * sizeof(double))) {
        return FOUR3_ERR_BADLEN;
    }
    const std::unique_ptr<double[]> work(new (std::nothrow) double[2 * ap]);
    if (!work) {
        return FOUR3_ERR_BADLEN;
    }
    // Half the length more, modulo the length, swaps the halves, on the way in and on the way out.
    const std::size_t half = ap / 2;
    std::size_t reversed = 0;
    for (std::size_t k = 0; k < ap; ++k) {
        work[2 * reversed] = real[k ^ half];
        work[2 * reversed + 1] = imag[k ^ half];
        reversed = next_reversed(k, reversed, ap);
    }
    const double scale = combine(work.get(), ap, inverse);
    for (std::size_t k = 0; k < ap; ++k) {
        real[k] = work[2 * (k ^ half)] * scale;
        imag[k] = work[2 * (k ^ half) + 1] * scale;
    }
    return FOUR3_OK;
}

void four2(double* data, std::size_t nn, int isign) {
    four3_last_status = four2_status(data, nn, isign < 0);
}

void fft(std::size_t ap, double* real, double* imag, int boole1) {
    four3_last_status = fft_status(ap, real, imag, boole1 != 0);
}

} // namespace kor
