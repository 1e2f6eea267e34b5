// Multiplets: signals and line lists of coupled spins against closed forms. Receiver signals start from
// transverse magnetisation along x, so that a line of frequency f and intensity a gives a exp(2 pi i f t).
#include "support/constants.h"
#include "support/coupled_hamiltonian.h"
#include "support/deviation.h"
#include "support/laboratory.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor_test;

namespace {

constexpr int kPoints = 256;
constexpr double kDwell = 1.7e-3;

/// <F+> of the spins whose operators are `observed`, from `start`.
std::vector<Complex> signal(Laboratory& lab, const Dense& H, const Dense& start, const Dense& observed_x,
                            const Dense& observed_y) {
    const MarkedMatrix h(H), rho(start), x(observed_x), y(observed_y);
    std::vector<double> re(kPoints), im(kPoints);
    kor::EngineSampleFreeEvolution(lab.n(), h, kDwell, kPoints, rho, x, y, re.data(), im.data());
    std::vector<Complex> out;
    for (std::size_t k = 0; k < kPoints; ++k) {
        out.emplace_back(re[k], im[k]);
    }
    return out;
}

std::vector<Complex> whole_signal(Laboratory& lab, const Dense& H) {
    const Dense Fx = lab.total(Axis::x);
    return signal(lab, H, Fx, Fx, lab.total(Axis::y));
}

std::vector<Complex> signal_of_first(Laboratory& lab, const Dense& H) {
    const Dense Ix = lab.op(1, Axis::x);
    return signal(lab, H, Ix, Ix, lab.op(1, Axis::y));
}

/// Largest difference from `expected(t)`, both divided by their value at t = 0.
template <typename Expected> double signal_gap(const std::vector<Complex>& actual, const Expected& expected) {
    double worst = 0.0;
    for (std::size_t k = 0; k < actual.size(); ++k) {
        const Complex wanted = expected(static_cast<double>(k) * kDwell);
        const Complex first = expected(0.0);
        worst = larger_deviation(worst, std::abs(actual[k] / actual[0].real() - wanted / first.real()));
    }
    return worst;
}

Complex turn(double hz, double t) {
    return std::polar(1.0, TWO_PI * hz * t);
}

struct Peak {
    double hz, intensity;
};

Complex sum_of(const std::vector<Peak>& peaks, double t) {
    Complex sum = 0.0;
    for (const Peak& peak : peaks) {
        sum += peak.intensity * turn(peak.hz, t);
    }
    return sum;
}

/// The nine lines of AB2 (A one spin, B two), the combination line last. Emsley, Feeney & Sutcliffe, High
/// Resolution NMR Spectroscopy, vol. 1, section 8.4; each from the difference and the eigenvectors of the 2 x
/// 2 blocks of the triplet of B, M = +1/2 and -1/2.
std::vector<Peak> ab2_lines(double a, double b, double J) {
    const double sum = 0.5 * (a + b);
    const double half = 0.5 * (a - b);
    const double off = J / std::sqrt(2.0);
    const double plus = std::hypot(half + 0.25 * J, off);
    const double minus = std::hypot(half - 0.25 * J, off);
    const double tp = 0.5 * std::atan2(off, half + 0.25 * J);
    const double tm = 0.5 * std::atan2(off, half - 0.25 * J);
    const double r = std::sqrt(2.0);
    const auto square = [](double x) { return x * x; };
    return {{sum + 0.75 * J + plus, square(r * std::sin(tp) - std::cos(tp))},
            {b + plus + minus, square(r * std::sin(tp - tm) + std::cos(tp) * std::cos(tm))},
            {a, 1.0},
            {sum - 0.75 * J + minus, square(r * std::sin(tm) + std::cos(tm))},
            {b + plus - minus, square(r * std::cos(tp - tm) + std::cos(tp) * std::sin(tm))},
            {sum + 0.75 * J - plus, square(r * std::cos(tp) + std::sin(tp))},
            {b - plus + minus, square(r * std::cos(tp - tm) - std::sin(tp) * std::cos(tm))},
            {sum - 0.75 * J - minus, square(r * std::cos(tm) - std::sin(tm))},
            {b - plus - minus, square(r * std::sin(tp - tm) + std::sin(tp) * std::sin(tm))}};
}

} // namespace

TEST(AbQuartet, HasItsFourPositionsAndIntensities) {
    // D = sqrt(J^2 + difference^2): +-(D + J)/2 of weight 1 - J/D, +-(D - J)/2 of weight 1 + J/D, from the
    // middle. Pople, Schneider & Bernstein, High-resolution NMR, section 6-3.
    Laboratory lab({1, 1});
    for (const double J : {-16.1, 7.0, 12.0}) {
        for (const double difference : {2.0, 18.8, 150.0}) {
            const double D = std::hypot(J, difference);
            const std::vector<Peak> quartet = {{30.0 + 0.5 * (D + J), 1.0 - J / D},
                                               {30.0 - 0.5 * (D + J), 1.0 - J / D},
                                               {30.0 + 0.5 * (D - J), 1.0 + J / D},
                                               {30.0 - 0.5 * (D - J), 1.0 + J / D}};
            const Dense H =
                hamiltonian(lab, {30.0 + 0.5 * difference, 30.0 - 0.5 * difference}, {{1, 2, J}}, true);
            EXPECT_LE(signal_gap(whole_signal(lab, H), [&](double t) { return sum_of(quartet, t); }), 1e-12);
        }
    }
}

TEST(AbQuartet, OfEqualShiftsIsASinglet) {
    Laboratory lab({1, 1});
    const Dense H = hamiltonian(lab, {44.0, 44.0}, {{1, 2, 16.0}}, true);
    EXPECT_LE(signal_gap(whole_signal(lab, H), [](double t) { return turn(44.0, t); }), 1e-12);
}

TEST(Ab2Multiplet, HasItsNineLines) {
    Laboratory lab({1, 1, 1});
    for (const double J : {8.0, -5.0}) {
        for (const double difference : {4.0, 15.0, -30.0, 120.0}) {
            const double a = 10.0 + difference;
            const double b = 10.0;
            const Dense H = hamiltonian(lab, {a, b, b}, {{1, 2, J}, {1, 3, J}, {2, 3, 3.3}}, true);
            const std::vector<Peak> lines = ab2_lines(a, b, J);
            EXPECT_LE(signal_gap(whole_signal(lab, H), [&](double t) { return sum_of(lines, t); }), 1e-12)
                << J << ' ' << difference;
        }
    }
}

TEST(A3Singlet, DoesNotShowTheCouplingsOfEquivalentSpins) {
    Laboratory lab({1, 1, 1});
    const Dense H = hamiltonian(lab, {21.0, 21.0, 21.0}, {{1, 2, -14.0}, {1, 3, -14.0}, {2, 3, -14.0}}, true);
    EXPECT_LE(signal_gap(whole_signal(lab, H), [](double t) { return turn(21.0, t); }), 1e-12);
}

TEST(WeakMultiplet, OfNEqualPartnersIsBinomial) {
    // AXn: the signal of A is cos^n(pi J t), lines 1:1, 1:2:1, 1:3:3:1, ...
    for (int n = 1; n <= 5; ++n) {
        Laboratory lab(std::vector<int>(static_cast<std::size_t>(n) + 1, 1));
        std::vector<double> shifts(static_cast<std::size_t>(n) + 1, -80.0);
        shifts[0] = 55.0;
        const Dense H = hamiltonian(lab, shifts, star(n, 6.9), false);
        EXPECT_LE(signal_gap(signal_of_first(lab, H),
                             [n](double t) { return turn(55.0, t) * std::pow(std::cos(PI * 6.9 * t), n); }),
                  1e-12)
            << n;
    }
}

TEST(WeakMultiplet, OfAx3IsAQuartetAndADoublet) {
    Laboratory lab({1, 1, 1, 1});
    const Dense H = hamiltonian(lab, {60.0, -90.0, -90.0, -90.0}, star(3, 7.2), false);
    EXPECT_LE(signal_gap(whole_signal(lab, H),
                         [](double t) {
                             const double c = std::cos(PI * 7.2 * t);
                             return turn(60.0, t) * c * c * c + 3.0 * turn(-90.0, t) * c;
                         }),
              1e-12);
}

TEST(WeakMultiplet, OfAmxIsTwelveLines) {
    Laboratory lab({1, 1, 1});
    const double Jam = 9.0, Jax = 3.5, Jmx = -15.0;
    const Dense H = hamiltonian(lab, {-100.0, 20.0, 140.0}, {{1, 2, Jam}, {1, 3, Jax}, {2, 3, Jmx}}, false);
    EXPECT_LE(signal_gap(whole_signal(lab, H),
                         [=](double t) {
                             const double am = std::cos(PI * Jam * t), ax = std::cos(PI * Jax * t);
                             const double mx = std::cos(PI * Jmx * t);
                             return turn(-100.0, t) * am * ax + turn(20.0, t) * am * mx +
                                    turn(140.0, t) * ax * mx;
                         }),
              1e-12);
}

TEST(WeakMultiplet, OfA2X2IsTwoTriplets) {
    Laboratory lab({1, 1, 1, 1});
    const double J = 5.5;
    const Dense H =
        hamiltonian(lab, {30.0, 30.0, -70.0, -70.0}, {{1, 3, J}, {1, 4, J}, {2, 3, J}, {2, 4, J}}, false);
    EXPECT_LE(signal_gap(whole_signal(lab, H),
                         [J](double t) {
                             const double c = std::cos(PI * J * t);
                             return (turn(30.0, t) + turn(-70.0, t)) * c * c;
                         }),
              1e-12);
}

TEST(WeakMultiplet, ToAnySpinHasEqualLines) {
    // 2S + 1 lines J apart: sin((2S + 1) pi J t) / ((2S + 1) sin(pi J t)), here as the sum over m.
    for (int twice_spin = 1; twice_spin <= 7; ++twice_spin) {
        Laboratory lab({1, twice_spin});
        const double J = 13.0;
        const Dense H = hamiltonian(lab, {12.0, 0.0}, {{1, 2, J}}, false);
        EXPECT_LE(signal_gap(signal_of_first(lab, H),
                             [&](double t) {
                                 Complex sum = 0.0;
                                 for (int m = -twice_spin; m <= twice_spin; m += 2) {
                                     sum += turn(12.0 + 0.5 * m * J, t);
                                 }
                                 return sum;
                             }),
                  1e-12)
            << twice_spin;
    }
}

TEST(WeakMultiplet, OfASpinOneShowsItsPartnersAsASpinHalf) {
    // The spin 1 of a pair with a spin 1/2 is a doublet of J: all its single-quantum steps turn alike.
    Laboratory lab({2, 1});
    const Dense H = hamiltonian(lab, {-25.0, 0.0}, {{1, 2, 18.0}}, false);
    EXPECT_LE(signal_gap(signal_of_first(lab, H),
                         [](double t) { return turn(-25.0, t) * std::cos(PI * 18.0 * t); }),
              1e-12);
}

TEST(StrongCoupling, ApproachesTheWeakFormAsTheSquareOfJOverTheDifference) {
    // Second order: lines of the two doublets move by J^2 / (4 difference) outwards; first order: the inner
    // ones gain J / difference of their intensity (the roof).
    Laboratory lab({1, 1});
    const double J = 4.0;
    const auto deviation = [&](double difference) {
        const double D = std::hypot(J, difference);
        const Dense H = hamiltonian(lab, {0.5 * difference, -0.5 * difference}, {{1, 2, J}}, true);
        const double moved = difference + 0.5 * J * J / difference;
        EXPECT_NEAR(D, moved, std::pow(J, 4) / (8.0 * std::pow(difference, 3)) * 1.01);
        return signal_gap(whole_signal(lab, H), [&](double t) {
            return 2.0 * std::cos(PI * moved * t) * std::cos(PI * J * t) +
                   2.0 * (J / moved) * std::sin(PI * moved * t) * std::sin(PI * J * t);
        });
    };
    EXPECT_LE(deviation(200.0), 1e-4);
    EXPECT_LE(deviation(800.0), 3e-6);
}

TEST(SpectralMoments, AreThoseOfTheShiftsForIsotropicCoupling) {
    // [J I.S, F+] = 0, so that couplings leave first and second moment alone: mean and mean square of the
    // shifts. Anderson & Weiss, Rev. Mod. Phys. 25 (1953) 269. The moments are commutators with the
    // Hamiltonian.
    Laboratory lab({1, 1, 1});
    const std::vector<double> shifts = {31.0, -12.0, 80.0};
    const Dense H = hamiltonian(lab, shifts, {{1, 2, 13.0}, {1, 3, -8.0}, {2, 3, 4.0}}, true);
    const Dense plus = lab.total(Axis::x) + Complex(0.0, 1.0) * lab.total(Axis::y);
    // From the signal itself: s(t) = sum of a exp(2 pi i f t), s' and s'' by central differences of
    // propagated states at a step of 1e-4 s, whose error is of fourth order.
    const auto s = [&](double t) {
        lab.set_hamiltonian(H);
        const Dense rho = lab.after_delay(-t, lab.total(Axis::x));
        return (plus * rho).trace() / (plus * lab.total(Axis::x)).trace();
    };
    const double h = 1e-4;
    const Complex first =
        (8.0 * (s(h) - s(-h)) - (s(2.0 * h) - s(-2.0 * h))) / (12.0 * h) / Complex(0.0, TWO_PI);
    const Complex second = (16.0 * (s(h) + s(-h)) - (s(2.0 * h) + s(-2.0 * h)) - 30.0 * s(0.0)) /
                           (12.0 * h * h) / -(TWO_PI * TWO_PI);
    EXPECT_NEAR(first.real(), (31.0 - 12.0 + 80.0) / 3.0, 1e-4);
    EXPECT_NEAR(second.real(), (31.0 * 31.0 + 12.0 * 12.0 + 80.0 * 80.0) / 3.0, 1e-2);
}

TEST(SpinEcho, OfAStronglyCoupledPairIsModulatedAsAllerhandFound) {
    // The half turn about y leaves J I.S and inverts the shifts, so that the zero-quantum block turns by 2 pi
    // D tau about two axes that are tilted to either side, while the outer levels see J alone. Allerhand, J.
    // Chem. Phys. 44 (1966) 1.
    Laboratory lab({1, 1});
    const double J = 11.0;
    const double difference = 17.0;
    const double D = std::hypot(J, difference);
    const double cosine = difference / D; // of the mixing angle of the zero-quantum block
    const double sine = J / D;
    lab.set_hamiltonian(hamiltonian(lab, {0.5 * difference, -0.5 * difference}, {{1, 2, J}}, true));
    for (const double tau : {0.004, 0.02, 0.045}) {
        Dense rho = lab.after_delay(tau, lab.total(Axis::y));
        rho = lab.after_delay(tau, lab.after_ideal_pulse(Axis::y, PI, rho));
        const double half = PI * D * tau;
        const double same = std::cos(half) * std::cos(half) -
                            std::sin(half) * std::sin(half) * (sine * sine - cosine * cosine);
        const double along = 2.0 * std::sin(half) * std::cos(half) * sine;
        const double angle = TWO_PI * J * tau;
        const double expected = same * std::cos(angle) + along * std::sin(angle);
        EXPECT_NEAR(coefficient(lab.total(Axis::y), rho), expected, 1e-12) << tau;
    }
}
