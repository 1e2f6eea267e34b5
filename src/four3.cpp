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

/// x_i and x_j become x_i + w x_j and x_i - w x_j, w or, inverse, its conjugate being given as
/// (wr, wr, -wi, wi).
template <bool inverse> inline void butterfly(Pair& xi, Pair& xj, const double* w) {
    const Pair along = load(w) * xj;
    const Pair across = load(w + 2) * __builtin_shufflevector(xj, xj, 1, 0);
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
    /// The next `count`, four doubles each, as the butterflies take them.
    void fill(double* out, std::size_t count) {
        for (std::size_t k = 0; k < count; ++k) {
            out[4 * k] = out[4 * k + 1] = wr_;
            out[4 * k + 2] = -wi_;
            out[4 * k + 3] = wi_;
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
    static double kept[8 * kKeptSpans]; // those of h begin at 4 h
    static std::size_t made = 1;        // half-spans below are there
    for (; made <= h; made *= 2) {
        Twiddles(made).fill(kept + 4 * made, made);
    }
    return kept + 4 * h;
}

/// The butterflies of half-span h.
template <bool inverse> void combine_stage(double* data, std::size_t nn, std::size_t h) {
    constexpr std::size_t together = 512;
    double w[4 * together];
    Twiddles twiddles(h);
    const std::size_t count = std::min(h, together);
    for (std::size_t first = 0; first < h; first += count) {
        twiddles.fill(w, count);
        for (std::size_t i = first; i < nn; i += 2 * h) {
            for (std::size_t k = 0; k < count; ++k) {
                double* x = data + 2 * (i + k);
                Pair a = load(x), b = load(x + 2 * h);
                butterfly<inverse>(a, b, w + 4 * k);
                store(x, a);
                store(x + 2 * h, b);
            }
        }
    }
}

/// The butterflies of two stages that meet in the same four points: those of half-span h take the factor
/// `first`, those of 2 h `second` and, h points on, `third`.
template <bool inverse>
inline void two_butterflies(Pair& a, Pair& b, Pair& c, Pair& d, const double* first, const double* second,
                            const double* third) {
    butterfly<inverse>(a, b, first);
    butterfly<inverse>(c, d, first);
    butterfly<inverse>(a, c, second);
    butterfly<inverse>(b, d, third);
}

/// The butterflies of half-spans h and 2 h, both kept.
template <bool inverse> void combine_two_stages(double* data, std::size_t nn, std::size_t h) {
    const double* first = kept_twiddles(h);
    const double* second = kept_twiddles(2 * h);
    for (std::size_t i = 0; i < nn; i += 4 * h) {
        for (std::size_t k = 0; k < h; ++k) {
            double* p = data + 2 * (i + k);
            Pair a = load(p), b = load(p + 2 * h), c = load(p + 4 * h), d = load(p + 6 * h);
            two_butterflies<inverse>(a, b, c, d, first + 4 * k, second + 4 * k, second + 4 * (k + h));
            store(p, a);
            store(p + 2 * h, b);
            store(p + 4 * h, c);
            store(p + 6 * h, d);
        }
    }
}

/// The stages from half-span h on.
template <bool inverse> void combine_from(std::size_t h, double* data, std::size_t nn) {
    while (h < nn) {
        const bool two = 4 * h <= nn && 2 * h <= kKeptSpans;
        two ? combine_two_stages<inverse>(data, nn, h) : combine_stage<inverse>(data, nn, h);
        h *= two ? 4 : 2;
    }
}

/// Takes the points of a centred transform in the order of their reversed indices, and combines them up to
/// half-span 2. Half the length more, modulo the length, swaps the halves.
template <bool inverse>
void take_centred(std::size_t ap, const double* real, const double* imag, double* out) {
    const double* first = kept_twiddles(1);
    const double* second = kept_twiddles(2);
    const std::size_t quarter = ap / 4;
    const auto point = [=](std::size_t k) { return Pair{real[k], imag[k]}; };
    std::size_t reversed = 0;
    for (std::size_t k = 0; k < quarter; ++k) {
        Pair a = point(k + 2 * quarter), b = point(k), c = point(k + 3 * quarter), d = point(k + quarter);
        two_butterflies<inverse>(a, b, c, d, first, second, second + 4);
        double* p = out + 8 * reversed;
        store(p, a);
        store(p + 2, b);
        store(p + 4, c);
        store(p + 6, d);
        reversed = next_reversed(k, reversed, quarter);
    }
}

/// `work` has room for the ap points.
template <bool inverse> void transform_centred(std::size_t ap, double* real, double* imag, double* work) {
    if (ap == 2) {
        const double points[4] = {real[1], imag[1], real[0], imag[0]};
        std::copy_n(points, 4, work);
        combine_stage<inverse>(work, 2, 1);
    } else {
        take_centred<inverse>(ap, real, imag, work);
        combine_from<inverse>(4, work, ap);
    }
    const double scale = inverse ? 1.0 / static_cast<double>(ap) : 1.0;
    const std::size_t half = ap / 2;
    for (std::size_t k = 0; k < half; ++k) {
        real[k] = work[2 * (k + half)] * scale;
        imag[k] = work[2 * (k + half) + 1] * scale;
        real[k + half] = work[2 * k] * scale;
        imag[k + half] = work[2 * k + 1] * scale;
    }
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
    if (!inverse) {
        combine_from<false>(1, data, nn);
        return FOUR3_OK;
    }
    combine_from<true>(1, data, nn);
    const double scale = 1.0 / static_cast<double>(nn);
    for (std::size_t k = 0; k < 2 * nn; ++k) {
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
    inverse ? transform_centred<true>(ap, real, imag, work.get())
            : transform_centred<false>(ap, real, imag, work.get());
    return FOUR3_OK;
}

void four2(double* data, std::size_t nn, int isign) {
    four3_last_status = four2_status(data, nn, isign < 0);
}

void fft(std::size_t ap, double* real, double* imag, int boole1) {
    four3_last_status = fft_status(ap, real, imag, boole1 != 0);
}

} // namespace kor
