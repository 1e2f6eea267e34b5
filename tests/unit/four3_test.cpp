#include "four3.h"
#include "support/constants.h"
#include "support/deviation.h"
#include "support/random_systems.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

using namespace kor;
using namespace kor_test;

namespace {

using Sequence = std::vector<Complex>;

/// X[k] = sum over j of x[j] exp(sign 2 pi i j k / n), the phase reduced before the cosine is taken.
Sequence direct_sum(const Sequence& x, double sign) {
    const std::size_t n = x.size();
    Sequence X(n);
    for (std::size_t k = 0; k < n; ++k) {
        for (std::size_t j = 0; j < n; ++j) {
            X[k] += x[j] *
                    std::polar(1.0, sign * TWO_PI * static_cast<double>(j * k % n) / static_cast<double>(n));
        }
    }
    return X;
}

Sequence random_sequence(Random& random, std::size_t n) {
    Sequence x(n);
    for (Complex& value : x) {
        const double re = random.uniform(-1.0, 1.0);
        value = Complex(re, random.uniform(-1.0, 1.0));
    }
    return x;
}

std::vector<double> interleaved(const Sequence& x) {
    std::vector<double> data;
    for (const Complex& value : x) {
        data.push_back(value.real());
        data.push_back(value.imag());
    }
    return data;
}

double error(const std::vector<double>& data, const Sequence& expected) {
    double largest = 0.0;
    for (std::size_t k = 0; k < expected.size(); ++k) {
        largest = larger_deviation(largest, std::abs(Complex(data[2 * k], data[2 * k + 1]) - expected[k]));
    }
    return largest;
}

struct Split {
    std::vector<double> real, imag;
};

Split split(const Sequence& x) {
    Split parts;
    for (const Complex& value : x) {
        parts.real.push_back(value.real());
        parts.imag.push_back(value.imag());
    }
    return parts;
}

/// Halves exchanged, as the centred layout has them.
Sequence swapped(const Sequence& x) {
    Sequence result(x.begin() + static_cast<std::ptrdiff_t>(x.size() / 2), x.end());
    result.insert(result.end(), x.begin(), x.begin() + static_cast<std::ptrdiff_t>(x.size() / 2));
    return result;
}

} // namespace

TEST(IsPowerOfTwo, HoldsForOneTwoFourAndSoOn) {
    for (const std::size_t n : {1u, 2u, 4u, 1024u, 1u << 30}) {
        EXPECT_TRUE(is_power_of_two(n)) << n;
    }
    for (const std::size_t n : {0u, 3u, 6u, 12u, 1023u, 1025u}) {
        EXPECT_FALSE(is_power_of_two(n)) << n;
    }
}

TEST(Four2Status, IsTheDirectSum) {
    Random random(81);
    for (std::size_t n = 1; n <= 1024; n *= 2) {
        const Sequence x = random_sequence(random, n);
        std::vector<double> data = interleaved(x);
        EXPECT_EQ(four2_status(data.data(), n, false), FOUR3_OK);
        EXPECT_LE(error(data, direct_sum(x, 1.0)), 1e-13 * static_cast<double>(n)) << n;
    }
}

TEST(Four2Status, InverseIsTheConjugateSumDividedByTheLength) {
    Random random(82);
    for (std::size_t n = 1; n <= 1024; n *= 2) {
        const Sequence x = random_sequence(random, n);
        Sequence expected = direct_sum(x, -1.0);
        for (Complex& value : expected) {
            value /= static_cast<double>(n);
        }
        std::vector<double> data = interleaved(x);
        EXPECT_EQ(four2_status(data.data(), n, true), FOUR3_OK);
        EXPECT_LE(error(data, expected), 1e-13) << n;
    }
}

TEST(Four2Status, MakesALonePointItsHarmonic) {
    Random random(88);
    for (std::size_t n = 1; n <= 32768; n *= 2) {
        for (const bool inverse : {false, true}) {
            const auto p = static_cast<std::size_t>(random.uniform(0.0, static_cast<double>(n)));
            std::vector<double> data(2 * n, 0.0);
            data[2 * p] = 1.0;
            EXPECT_EQ(four2_status(data.data(), n, inverse), FOUR3_OK);
            Sequence expected;
            for (std::size_t k = 0; k < n; ++k) {
                const double turns = static_cast<double>(p * k % n) / static_cast<double>(n);
                expected.push_back(std::polar(inverse ? 1.0 / static_cast<double>(n) : 1.0,
                                              (inverse ? -TWO_PI : TWO_PI) * turns));
            }
            EXPECT_LE(error(data, expected), 1e-12 * std::abs(expected.front())) << n << ' ' << p;
        }
    }
}

TEST(Four2Status, GivesTheSameAfterALongerTransform) {
    Random random(89);
    const std::vector<double> x = interleaved(random_sequence(random, 256));
    std::vector<double> before = x, after = x;
    EXPECT_EQ(four2_status(before.data(), 256, false), FOUR3_OK);
    std::vector<double> longer(2 * 4096, 1.0);
    EXPECT_EQ(four2_status(longer.data(), 4096, true), FOUR3_OK);
    EXPECT_EQ(four2_status(after.data(), 256, false), FOUR3_OK);
    EXPECT_EQ(after, before);
}

TEST(Four2Status, LeavesOnePointUnchanged) {
    for (const bool inverse : {false, true}) {
        double data[2] = {1.25, -3.5};
        EXPECT_EQ(four2_status(data, 1, inverse), FOUR3_OK);
        EXPECT_EQ(data[0], 1.25);
        EXPECT_EQ(data[1], -3.5);
    }
}

TEST(Four2Status, TurnsAnImpulseIntoOnes) {
    std::vector<double> data(32, 0.0);
    data[0] = 1.0;
    EXPECT_EQ(four2_status(data.data(), 16, false), FOUR3_OK);
    for (int k = 0; k < 16; ++k) {
        EXPECT_EQ(data[static_cast<std::size_t>(2 * k)], 1.0);
        EXPECT_EQ(data[static_cast<std::size_t>(2 * k + 1)], 0.0);
    }
}

TEST(Four2Status, RefusesBadLengthsAndNullDataUntouched) {
    std::vector<double> data(12, 2.5);
    const std::vector<double> before = data;
    EXPECT_EQ(four2_status(data.data(), 6, false), FOUR3_ERR_BADLEN);
    EXPECT_EQ(four2_status(data.data(), 0, false), FOUR3_ERR_BADLEN);
    EXPECT_EQ(data, before);
    EXPECT_EQ(four2_status(nullptr, 4, false), FOUR3_ERR_NULLPTR);
    EXPECT_EQ(four2_status(nullptr, 0, true), FOUR3_ERR_NULLPTR);
}

TEST(Four2, GoesForwardForPositiveAndBackForNegativeSigns) {
    Random random(83);
    const Sequence x = random_sequence(random, 64);
    for (const int isign : {1, 0}) {
        std::vector<double> data = interleaved(x);
        four2(data.data(), 64, isign);
        EXPECT_LE(error(data, direct_sum(x, 1.0)), 1e-12) << isign;
        four2(data.data(), 64, -1);
        EXPECT_LE(error(data, x), 1e-14) << isign;
    }
}

TEST(Four2, KeepsItsStatus) {
    double data[4] = {};
    four2(data, 3, 1);
    EXPECT_EQ(four3_last_status, FOUR3_ERR_BADLEN);
    four2(nullptr, 2, 1);
    EXPECT_EQ(four3_last_status, FOUR3_ERR_NULLPTR);
    four2(data, 2, 1);
    EXPECT_EQ(four3_last_status, FOUR3_OK);
}

TEST(FftStatus, IsTheDirectSumAboutTheCentre) {
    Random random(84);
    for (std::size_t n = 2; n <= 512; n *= 2) {
        const Sequence x = random_sequence(random, n);
        const Sequence expected = swapped(direct_sum(swapped(x), 1.0));
        Split parts = split(x);
        EXPECT_EQ(fft_status(n, parts.real.data(), parts.imag.data(), false), FOUR3_OK);
        for (std::size_t k = 0; k < n; ++k) {
            EXPECT_NEAR(parts.real[k], expected[k].real(), 1e-12);
            EXPECT_NEAR(parts.imag[k], expected[k].imag(), 1e-12);
        }
    }
}

TEST(FftStatus, TurnsACentralImpulseIntoOnesAndAConstantIntoACentralPeak) {
    std::vector<double> real(8, 0.0);
    std::vector<double> imag(8, 0.0);
    real[4] = 1.0;
    EXPECT_EQ(fft_status(8, real.data(), imag.data(), false), FOUR3_OK);
    EXPECT_EQ(real, std::vector<double>(8, 1.0));
    EXPECT_EQ(imag, std::vector<double>(8, 0.0));
    EXPECT_EQ(fft_status(8, real.data(), imag.data(), false), FOUR3_OK);
    EXPECT_EQ(real, std::vector<double>({0, 0, 0, 0, 8, 0, 0, 0}));
    EXPECT_EQ(imag, std::vector<double>(8, 0.0));
}

TEST(FftStatus, PutsANegativeFrequencyBelowTheCentre) {
    // exp(-2 pi i j k / n) summed with exp(+2 pi i j k'/n) peaks at k' = k, one above the centre for k = 1.
    for (const int k : {1, -2}) {
        std::vector<double> real(8);
        std::vector<double> imag(8);
        for (int j = -4; j < 4; ++j) {
            real[static_cast<std::size_t>(j + 4)] = std::cos(TWO_PI * j * k / 8.0);
            imag[static_cast<std::size_t>(j + 4)] = -std::sin(TWO_PI * j * k / 8.0);
        }
        EXPECT_EQ(fft_status(8, real.data(), imag.data(), false), FOUR3_OK);
        for (int j = -4; j < 4; ++j) {
            EXPECT_NEAR(real[static_cast<std::size_t>(j + 4)], j == k ? 8.0 : 0.0, 1e-14) << j;
        }
    }
}

TEST(FftStatus, RefusesBadLengthsAndNullDataUntouched) {
    std::vector<double> real(6, 1.5);
    std::vector<double> imag(6, 2.5);
    for (const std::size_t n : {std::size_t{0}, std::size_t{1}, std::size_t{6}, ~(~std::size_t{0} >> 1)}) {
        EXPECT_EQ(fft_status(n, real.data(), imag.data(), false), FOUR3_ERR_BADLEN) << n;
    }
    EXPECT_EQ(fft_status(4, nullptr, imag.data(), false), FOUR3_ERR_NULLPTR);
    EXPECT_EQ(fft_status(4, real.data(), nullptr, false), FOUR3_ERR_NULLPTR);
    EXPECT_EQ(real, std::vector<double>(6, 1.5));
    EXPECT_EQ(imag, std::vector<double>(6, 2.5));
}

TEST(Fft, GoesForwardForZeroAndBackForAnyOtherFlag) {
    Random random(85);
    const Sequence x = random_sequence(random, 128);
    for (const int flag : {1, -1, 7}) {
        Split parts = split(x);
        fft(128, parts.real.data(), parts.imag.data(), 0);
        EXPECT_NEAR(parts.real[64], std::accumulate(x.begin(), x.end(), Complex()).real(), 1e-12);
        fft(128, parts.real.data(), parts.imag.data(), flag);
        for (std::size_t k = 0; k < 128; ++k) {
            EXPECT_NEAR(parts.real[k], x[k].real(), 1e-14);
            EXPECT_NEAR(parts.imag[k], x[k].imag(), 1e-14);
        }
    }
}

TEST(Fft, KeepsItsStatus) {
    double data[2] = {};
    fft(1, data, data, 0);
    EXPECT_EQ(four3_last_status, FOUR3_ERR_BADLEN);
    fft(2, nullptr, data, 0);
    EXPECT_EQ(four3_last_status, FOUR3_ERR_NULLPTR);
    double imag[2] = {};
    fft(2, data, imag, 0);
    EXPECT_EQ(four3_last_status, FOUR3_OK);
}
