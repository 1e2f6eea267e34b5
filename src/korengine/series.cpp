#include "series.h"

#include "korlimits.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace kor {

namespace {

constexpr int kNodes = 20; // of the Chebyshev expansions, whose coefficients vanish before
constexpr long double kPi = 3.141592653589793238462643383279502884L;

using Series = std::array<long double, kNodes>;

long double sine_over(long double x) {
    return x < 1e-9L ? 1.0L - x * x / 6.0L : std::sin(x) / x;
}

struct Range {
    long double low, high;

    long double middle() const { return 0.5L * (low + high); }
    long double half() const { return 0.5L * (high - low); }
};

/// Coefficients of f(x), x in the range, in Chebyshev polynomials of (x - middle) / half.
template <typename Function> Series chebyshev_coefficients(Function f, const Range& range) {
    Series a{};
    for (int i = 0; i < kNodes; ++i) {
        const long double angle = kPi * (i + 0.5L) / kNodes;
        const long double node = std::cos(angle);
        const long double value = f(range.middle() + range.half() * node);
        long double previous = node, current = 1.0L; // cos(-angle) and cos(0)
        for (int k = 0; k < kNodes; ++k) {
            a[static_cast<std::size_t>(k)] += (k == 0 ? 1.0L : 2.0L) / kNodes * value * current;
            const long double next = 2.0L * node * current - previous;
            previous = current;
            current = next;
        }
    }
    return a;
}

/// The first `degree` terms as powers of x.
void to_powers(const Series& a, int degree, const Range& range, double* out) {
    Series sum{}, previous{}, current{};
    current[0] = 1.0L; // T_0; T_(k+1) = 2 (x - middle) / half T_k - T_(k-1)
    for (int k = 0; k <= degree; ++k) {
        Series next{};
        for (std::size_t p = 0; p <= static_cast<std::size_t>(degree); ++p) {
            sum[p] += a[static_cast<std::size_t>(k)] * current[p];
            const long double raised = p > 0 ? current[p - 1] : 0.0L;
            const long double turned = (raised - range.middle() * current[p]) / range.half();
            next[p] = k == 0 ? turned : 2.0L * turned - previous[p];
        }
        previous = current;
        current = next;
    }
    for (int p = 0; p <= degree; ++p) {
        out[p] = static_cast<double>(sum[static_cast<std::size_t>(p)]);
    }
}

/// cos(sqrt(x)) - 1, also for the x < 0 that continue it.
long double cosine_less_one(long double x) {
    const long double half = 0.5L * std::sqrt(std::fabs(x));
    const long double half_sine = x < 0.0L ? std::sinh(half) : std::sin(half);
    return (x < 0.0L ? 2.0L : -2.0L) * half_sine * half_sine;
}

/// The range that makes the first term left out, T_(degree + 1), vanish at 0 and ends at top.
Range range_with_root_at_zero(int degree, long double top) {
    const long double root = std::cos(0.5L * kPi / (degree + 1)); // the outermost
    return {-top * (1.0L - root) / (1.0L + root), top};
}

TrigPolynomial make_polynomial(double bound, int powers, bool high) {
    TrigPolynomial p{bound, powers, high, {}, {}};
    const int degree = high ? 2 * powers : powers;
    const long double top = static_cast<long double>(bound) * bound;
    const Range stretched = range_with_root_at_zero(degree, top);
    to_powers(chebyshev_coefficients(cosine_less_one, stretched), degree, stretched, p.c);
    p.c[0] = 0.0; // but for the terms behind the first one left out, it is
    const auto sine = [](long double x) { return sine_over(std::sqrt(x)); };
    const Range range{0.0L, top};
    to_powers(chebyshev_coefficients(sine, range), degree, range, p.t);
    return p;
}

/// Bounds at which the first term left out, top^(d+1) / (2d+2)! / 2^(2d+1), reaches 1e-16; 3, 4, 5, 6 and 7
/// products of matrices.
const std::array<TrigPolynomial, 5>& polynomials() {
    static const std::array<TrigPolynomial, 5> ladder = {
        make_polynomial(0.0110, 2, false), make_polynomial(0.067, 3, false), make_polynomial(0.208, 2, true),
        make_polynomial(0.81, 3, true), make_polynomial(1.82, 4, true)};
    return ladder;
}

struct OwnedSeries {
    std::vector<double> coefficients;
    std::vector<double> ratios;
    ChebyshevSeries series{};
};

/// J_0(r), 2 J_1(r), 2 J_2(r), ... by backward recurrence, normalised by J_0 + 2 J_2 + 2 J_4 + ... = 1.
std::vector<long double> bessel_coefficients(long double r) {
    const int top = static_cast<int>(r + 20.0L * std::cbrt(r)) + 30;
    std::vector<long double> j(static_cast<std::size_t>(top) + 2, 0.0L);
    j[static_cast<std::size_t>(top)] = 1e-4000L;
    long double sum = 0.0L;
    for (int k = top; k >= 1; --k) {
        const auto at = static_cast<std::size_t>(k);
        j[at - 1] = 2.0L * k / r * j[at] - j[at + 1];
        if (k % 2 == 1) {
            sum += (k == 1 ? 1.0L : 2.0L) * j[at - 1];
        }
    }
    for (std::size_t k = 0; k < j.size(); ++k) {
        j[k] *= (k == 0 ? 1.0L : 2.0L) / sum;
    }
    return j;
}

OwnedSeries make_series(double radius) {
    constexpr long double kTail = 5e-17L;
    const std::vector<long double> j = bessel_coefficients(radius);
    std::size_t degree = j.size() - 1;
    for (long double tail = 0.0L; degree > 1; --degree) {
        tail += std::fabs(j[degree]);
        if (tail > kTail) {
            break;
        }
    }
    OwnedSeries owned;
    for (std::size_t k = 0; k <= degree; ++k) {
        owned.coefficients.push_back(static_cast<double>(j[k]));
    }
    owned.series = {radius, static_cast<int>(degree), nullptr, nullptr};
    return owned;
}

/// a_(k+1) / a_k of the sum of j[k] (-i)^k T_k(x / radius) written as the sum of a_k (-i x)^k. As
/// U_k = (-i)^k T_k(x / radius) follows U_(k+1) = 2 (-i x / radius) U_k + U_(k-1), all a_k are positive.
std::vector<double> power_ratios(const OwnedSeries& owned) {
    const auto terms = owned.coefficients.size();
    const long double radius = owned.series.radius;
    std::vector<long double> sum(terms, 0.0L), previous(terms, 0.0L), current(terms, 0.0L);
    current[0] = 1.0L;
    for (std::size_t k = 0; k < terms; ++k) {
        std::vector<long double> next(terms, 0.0L);
        for (std::size_t p = 0; p <= k; ++p) {
            sum[p] += owned.coefficients[k] * current[p];
        }
        for (std::size_t p = 0; p < terms; ++p) {
            const long double shifted = p > 0 ? current[p - 1] / radius : 0.0L;
            next[p] = k == 0 ? shifted : 2.0L * shifted + previous[p];
        }
        previous = current;
        current = next;
    }
    std::vector<double> ratios;
    for (std::size_t p = 0; p + 1 < terms; ++p) {
        ratios.push_back(static_cast<double>(sum[p + 1] / sum[p]));
    }
    return ratios;
}

// Radii 2^(rung / 4).
constexpr int kLowestRung = -80;
constexpr int kHighestRung = 24;
/// Beyond it the terms of a sum of powers exceed their sum by more than e.
constexpr double kMaxPowerRadius = 1.0;

} // namespace

StepPlan plan_step(double bound) {
    const auto& ladder = polynomials();
    int squarings = 0;
    for (; bound > ladder.back().bound; bound *= 0.5) {
        ++squarings;
    }
    for (const TrigPolynomial& p : ladder) {
        if (bound <= p.bound) {
            return {&p, squarings};
        }
    }
    return {&ladder.back(), squarings};
}

int chebyshev_terms(double reach) {
    constexpr double kSmallest = -39.0; // log(1e-17)
    const auto log_bound = [reach](int k) {
        const double z = reach / k;
        const double r = std::sqrt(1.0 - z * z);
        return k * (std::log(z / (1.0 + r)) + r);
    };
    if (!(reach < 1e6)) {
        return 1 << 24;
    }
    int low = static_cast<int>(reach) + 1;
    int high = low + 16 + static_cast<int>(16.0 * std::cbrt(reach)); // enough
    while (low < high) {                                             // the bound falls with k
        const int middle = (low + high) / 2;
        if (log_bound(middle) > kSmallest) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

double chebyshev_angle(int k, int count) {
    return KOR_PI * (k + 0.5) / count;
}

std::vector<double> chebyshev_transform(int count) {
    const auto terms = static_cast<std::size_t>(count);
    std::vector<double> cosines(4 * terms); // of i pi / (2 count)
    for (std::size_t i = 0; i < cosines.size(); ++i) {
        cosines[i] = std::cos(KOR_PI * static_cast<double>(i) / (2.0 * count));
    }
    std::vector<double> rows(terms * terms);
    for (std::size_t k = 0; k < terms; ++k) {
        for (std::size_t j = 0; j < terms; ++j) {
            rows[k * terms + j] = (k == 0 ? 1.0 : 2.0) / count * cosines[k * (2 * j + 1) % cosines.size()];
        }
    }
    return rows;
}

const ChebyshevSeries* chebyshev_series(double bound) {
    static std::array<OwnedSeries, kHighestRung - kLowestRung + 1> ladder;
    const double rung = bound > 0.0 ? std::ceil(4.0 * std::log2(bound)) : kLowestRung;
    const int r = static_cast<int>(std::clamp<double>(rung, kLowestRung, kHighestRung));
    OwnedSeries& owned = ladder[static_cast<std::size_t>(r - kLowestRung)];
    if (owned.coefficients.empty()) {
        owned = make_series(std::exp2(0.25 * r));
        owned.series.coefficient = owned.coefficients.data();
        if (owned.series.radius <= kMaxPowerRadius) {
            owned.ratios = power_ratios(owned);
            owned.series.ratio = owned.ratios.data();
        }
    }
    return &owned.series;
}

} // namespace kor
