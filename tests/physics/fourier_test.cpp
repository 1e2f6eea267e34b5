// Identities of the discrete Fourier transform, X[k] = sum of x[j] exp(+2 pi i j k / N). Bracewell, The
// Fourier Transform and Its Applications, chapter 11.
#include "four3.h"
#include "support/constants.h"
#include "support/deviation.h"
#include "support/random_systems.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor_test;

namespace {

using Series = std::vector<Complex>;

Series transform(Series x, bool inverse = false) {
    EXPECT_EQ(kor::four2_status(reinterpret_cast<double*>(x.data()), x.size(), inverse), kor::FOUR3_OK);
    return x;
}

Complex root(std::size_t N, double power) {
    return std::polar(1.0, TWO_PI * power / static_cast<double>(N));
}

Series random_series(Random& random, std::size_t N) {
    Series x;
    while (x.size() < N) {
        const double re = random.uniform(-1.0, 1.0);
        x.emplace_back(re, random.uniform(-1.0, 1.0));
    }
    return x;
}

/// f(k), k = 0..N-1.
template <typename Function> Series series_of(std::size_t N, const Function& f) {
    Series x;
    for (std::size_t k = 0; k < N; ++k) {
        x.push_back(f(static_cast<double>(k)));
    }
    return x;
}

} // namespace

TEST(FourierTransform, KeepsTheEnergyUpToItsLength) {
    // Parseval: sum |X|^2 = N sum |x|^2.
    Random random(301);
    for (const std::size_t N : {2U, 16U, 512U, 8192U}) {
        const Series x = random_series(random, N);
        double before = 0.0, after = 0.0;
        for (const Complex& v : x) {
            before += std::norm(v);
        }
        for (const Complex& v : transform(x)) {
            after += std::norm(v);
        }
        EXPECT_NEAR(after / (static_cast<double>(N) * before), 1.0, 1e-13) << N;
    }
}

TEST(FourierTransform, TurnsAShiftIntoAPhase) {
    Random random(302);
    const std::size_t N = 64;
    const Series x = random_series(random, N);
    const Series X = transform(x);
    for (const std::size_t shift : {1U, 7U, 63U}) {
        Series shifted(N);
        for (std::size_t j = 0; j < N; ++j) {
            shifted[(j + shift) % N] = x[j];
        }
        Series expected = X;
        for (std::size_t k = 0; k < N; ++k) {
            expected[k] *= root(N, static_cast<double>(k * shift));
        }
        EXPECT_LE(largest_gap(transform(shifted), expected), 1e-13 * N) << shift;
    }
}

TEST(FourierTransform, TurnsAConvolutionIntoAProduct) {
    Random random(303);
    const std::size_t N = 128;
    const Series a = random_series(random, N);
    const Series b = random_series(random, N);
    Series convolved(N);
    for (std::size_t i = 0; i < N; ++i) {
        for (std::size_t j = 0; j < N; ++j) {
            convolved[(i + j) % N] += a[i] * b[j];
        }
    }
    Series product = transform(a);
    const Series B = transform(b);
    for (std::size_t k = 0; k < N; ++k) {
        product[k] *= B[k];
    }
    EXPECT_LE(largest_gap(transform(product, true), convolved), 1e-12);
}

TEST(FourierTransform, OfADecayIsAGeometricSum) {
    // x[j] = q^j: (1 - q^N) / (1 - q w^k), the line shape of an exponentially damped signal.
    const std::size_t N = 256;
    const Complex q = std::polar(std::exp(-0.03), 0.7);
    const Series x = series_of(N, [&](double j) { return std::pow(q, j); });
    const Series expected =
        series_of(N, [&](double k) { return (1.0 - std::pow(q, N)) / (1.0 - q * root(N, k)); });
    EXPECT_LE(largest_gap(transform(x), expected), 1e-11);
}

TEST(FourierTransform, OfAPulseOfOnesIsDirichletsKernel) {
    // L ones: exp(i pi k (L - 1) / N) sin(pi k L / N) / sin(pi k / N).
    const std::size_t N = 128;
    for (const int L : {1, 5, 64, 127}) {
        const Series x = series_of(N, [L](double j) { return j < L ? 1.0 : 0.0; });
        const Series expected = series_of(N, [&](double k) {
            const double a = 0.5 * TWO_PI * k / N;
            return k == 0.0 ? Complex(L) : root(N, 0.5 * k * (L - 1)) * (std::sin(a * L) / std::sin(a));
        });
        EXPECT_LE(largest_gap(transform(x), expected), 1e-12) << L;
    }
}

TEST(FourierTransform, OfACombIsAComb) {
    const std::size_t N = 64;
    for (const int step : {2, 8, 32}) {
        const Series x =
            series_of(N, [step](double j) { return static_cast<int>(j) % step == 0 ? 1.0 : 0.0; });
        const int teeth = static_cast<int>(N) / step;
        const Series expected = series_of(N, [teeth](double k) {
            return static_cast<int>(k) % teeth == 0 ? static_cast<double>(teeth) : 0.0;
        });
        EXPECT_LE(largest_gap(transform(x), expected), 1e-13) << step;
    }
}

TEST(FourierTransform, OfBinomialsIsAPowerOfACosine) {
    // x[j] = C(n, j): (1 + w^k)^n.
    const std::size_t N = 32;
    const int n = 12;
    Series x(N, 0.0);
    double binomial = 1.0;
    for (int j = 0; j <= n; ++j) {
        x[static_cast<std::size_t>(j)] = binomial;
        binomial = binomial * (n - j) / (j + 1);
    }
    const Series expected = series_of(N, [&](double k) { return std::pow(1.0 + root(N, k), n); });
    EXPECT_LE(largest_gap(transform(x), expected), 1e-14 * std::pow(2.0, n));
}

TEST(FourierTransform, OfAPeriodicGaussianIsAPeriodicGaussian) {
    // Poisson: sum over r of exp(-pi (j + rN)^2 / N) transforms into sqrt(N) times itself.
    const std::size_t N = 64;
    const Series theta = series_of(N, [](double j) {
        double sum = 0.0;
        for (int r = -4; r <= 4; ++r) {
            sum += std::exp(-0.5 * TWO_PI * std::pow(j + 64.0 * r, 2) / 64.0);
        }
        return sum;
    });
    Series expected = theta;
    for (Complex& v : expected) {
        v *= 8.0;
    }
    EXPECT_LE(largest_gap(transform(theta), expected), 1e-13);
}

TEST(FourierTransform, OfTheChirpIsAChirp) {
    // exp(i pi j^2 / N), N even: sqrt(N) exp(i pi / 4) exp(-i pi k^2 / N) (Gauss's sum).
    const std::size_t N = 256;
    const Series x = series_of(N, [](double j) { return root(256, 0.5 * j * j); });
    const Series expected = series_of(N, [](double k) { return 16.0 * root(256, 32.0 - 0.5 * k * k); });
    EXPECT_LE(largest_gap(transform(x), expected), 1e-11);
}

TEST(FourierTransform, FourTimesIsTheSeriesItselfTimesTheSquaredLength) {
    Random random(304);
    const Series x = random_series(random, 32);
    Series four = transform(transform(transform(transform(x))));
    for (Complex& v : four) {
        v /= 32.0 * 32.0;
    }
    EXPECT_LE(largest_gap(four, x), 1e-14);
}

TEST(FourierTransform, OfRealSeriesIsConjugateEven) {
    Random random(305);
    const std::size_t N = 128;
    Series x = random_series(random, N);
    for (Complex& v : x) {
        v = v.real();
    }
    const Series X = transform(x);
    for (std::size_t k = 0; k < N; ++k) {
        EXPECT_LE(std::abs(X[k] - std::conj(X[(N - k) % N])), 1e-13) << k;
    }
}
