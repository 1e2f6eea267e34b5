#include "four3.h"

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

/// x_i and x_j become x_i + w x_j and x_i - w x_j; real = (wr, wr), imaginary = (-wi, wi).
void butterfly(double* xi, double* xj, Pair real, Pair imaginary) {
    const Pair a = load(xi);
    const Pair b = load(xj);
    const Pair t = real * b + imaginary * __builtin_shufflevector(b, b, 1, 0);
    store(xj, a - t);
    store(xi, a + t);
}

/// The butterflies of half-span h, the twiddle factors by the sine recurrence.
void combine_stage(double* data, std::size_t nn, std::size_t h, bool inverse) {
    const std::size_t span = 2 * h;
    const double forward_angle = kTwoPi / static_cast<double>(span);
    const double theta = inverse ? -forward_angle : forward_angle;
    const double half_sine = std::sin(theta / 2.0);
    const double wpr = -2.0 * half_sine * half_sine;
    const double wpi = std::sin(theta);
    double wr = 1.0;
    double wi = 0.0;
    for (std::size_t k = 0; k < h; ++k) {
        const Pair real{wr, wr};
        const Pair imaginary{-wi, wi};
        for (std::size_t i = k; i < nn; i += span) {
            butterfly(data + 2 * i, data + 2 * (i + h), real, imaginary);
        }
        const double old_wr = wr;
        wr = wr + wr * wpr - wi * wpi;
        wi = wi + old_wr * wpi + wi * wpr;
    }
}

/// Transforms points that stand in the order of their reversed indices.
void combine(double* data, std::size_t nn, bool inverse) {
    for (std::size_t h = 1; h < nn; h *= 2) {
        combine_stage(data, nn, h, inverse);
    }
    if (inverse) {
        const double scale = 1.0 / static_cast<double>(nn);
        for (std::size_t k = 0; k < 2 * nn; ++k) {
            data[k] *= scale;
        }
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
    combine(data, nn, inverse);
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
    combine(work.get(), ap, inverse);
    for (std::size_t k = 0; k < ap; ++k) {
        real[k] = work[2 * (k ^ half)];
        imag[k] = work[2 * (k ^ half) + 1];
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
