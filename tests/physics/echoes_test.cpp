// Echoes and coherence orders in closed form. Isochromats are 16 places on a line of 1 cm under gradients of
// whole turns per cm: their mean is that over all phases, exactly, for every coherence order below 16.
#include "support/constants.h"
#include "support/laboratory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

using namespace kor_test;

namespace {

constexpr int kPlaces = 16;

Dense mean_over_places(const std::function<Dense(double z)>& state_at) {
    Dense sum = state_at(0.0);
    for (int k = 1; k < kPlaces; ++k) {
        sum += state_at(static_cast<double>(k) / kPlaces);
    }
    return sum / kPlaces;
}

/// A gradient of `turns` whole turns per cm, in no time.
Dense after_gradient(Laboratory& lab, int turns, double z, const Dense& rho) {
    return lab.after({1, 1.0, 0.0, 0.0, 0.0, 0.0, 0.0, 2.0 * PI * turns}, rho, 0.0, 0.0, z);
}

double transverse(Laboratory& lab, const Dense& rho) {
    return std::hypot(coefficient(lab.total(Axis::x), rho), coefficient(lab.total(Axis::y), rho));
}

const std::vector<double> kAngles = {0.3, 0.5 * PI, 1.9, PI};

/// |to><from| + |from><to| of one spin, m descending from 0.
Dense coherence(int n, int to, int from) {
    Dense op = Dense::Zero(n, n);
    op(to, from) = op(from, to) = 1.0;
    return op;
}

} // namespace

TEST(HahnEcho, OfTwoPulsesIsSinTimesSquaredSineOfTheHalf) {
    // |M| = sin a1 sin^2(a2 / 2) at the echo. Hahn, Phys. Rev. 80 (1950) 580.
    Laboratory lab({1});
    for (const double a1 : kAngles) {
        for (const double a2 : kAngles) {
            const Dense echo = mean_over_places([&](double z) {
                Dense rho = lab.after_ideal_pulse(Axis::x, a1, lab.total(Axis::z));
                rho = lab.after_ideal_pulse(Axis::x, a2, after_gradient(lab, 1, z, rho));
                return after_gradient(lab, 1, z, rho);
            });
            EXPECT_NEAR(transverse(lab, echo), std::fabs(std::sin(a1)) * std::pow(std::sin(0.5 * a2), 2),
                        1e-13);
        }
    }
}

TEST(HahnEcho, AppearsAtEqualAreasOnly) {
    Laboratory lab({1});
    const Dense none = mean_over_places([&](double z) {
        Dense rho = lab.after_ideal_pulse(Axis::x, 0.5 * PI, lab.total(Axis::z));
        rho = lab.after_ideal_pulse(Axis::x, 2.0, after_gradient(lab, 2, z, rho));
        return after_gradient(lab, 1, z, rho);
    });
    EXPECT_NEAR(transverse(lab, none), 0.0, 1e-13);
}

TEST(StimulatedEcho, IsHalfTheProductOfThreeSines) {
    // The mixing time's gradient is crushed by one of another area: |M| = sin a1 sin a2 sin a3 / 2. Hahn
    // 1950.
    Laboratory lab({1});
    for (const double a1 : {0.4, 0.5 * PI, 2.2}) {
        for (const double a2 : {0.7, 0.5 * PI}) {
            for (const double a3 : {0.25, 0.5 * PI, 1.4}) {
                const Dense echo = mean_over_places([&](double z) {
                    Dense rho = lab.after_ideal_pulse(Axis::x, a1, lab.total(Axis::z));
                    rho = lab.after_ideal_pulse(Axis::x, a2, after_gradient(lab, 1, z, rho));
                    rho = lab.after_ideal_pulse(Axis::x, a3, after_gradient(lab, 5, z, rho));
                    return after_gradient(lab, 1, z, rho);
                });
                EXPECT_NEAR(transverse(lab, echo), 0.5 * std::sin(a1) * std::sin(a2) * std::sin(a3), 1e-13);
            }
        }
    }
}

TEST(CrushedRefocusing, KeepsSquaredSineOfTheHalfAngle) {
    // Equal gradients around a pulse of angle b: -Iy sin^2(b/2) of Iy about x, Ix sin^2(b/2) of Ix; all else
    // is dephased. Bernstein, King & Zhou, Handbook of MRI Pulse Sequences, section 10.2.
    Laboratory lab({1});
    for (const double b : kAngles) {
        const auto refocused = [&](const Dense& start) {
            return mean_over_places([&](double z) {
                const Dense rho = after_gradient(lab, 1, z, start);
                return after_gradient(lab, 1, z, lab.after_ideal_pulse(Axis::x, b, rho));
            });
        };
        const double kept = std::pow(std::sin(0.5 * b), 2);
        EXPECT_LE(distance(refocused(lab.total(Axis::y)), -kept * lab.total(Axis::y)), 1e-13);
        EXPECT_LE(distance(refocused(lab.total(Axis::x)), kept * lab.total(Axis::x)), 1e-13);
    }
}

TEST(SpoiledPulse, LeavesTheCosineAlongZ) {
    Laboratory lab({1, 2});
    for (const double a : kAngles) {
        const Dense mean = mean_over_places([&](double z) {
            return after_gradient(lab, 1, z, lab.after_ideal_pulse(Axis::y, a, lab.total(Axis::z)));
        });
        EXPECT_LE(distance(mean, std::cos(a) * lab.total(Axis::z)), 1e-13);
    }
}

TEST(CarrPurcell, AddsUpTheErrorOfItsPulses) {
    // Refocusing pulses of 180 + e degrees about the axis across the magnetisation: on resonance My turns by
    // N e into z. Carr & Purcell, Phys. Rev. 94 (1954) 630.
    Laboratory lab({1});
    const double e = 0.06;
    Dense rho = lab.after_ideal_pulse(Axis::x, 0.5 * PI, lab.total(Axis::z));
    for (int pulse = 1; pulse <= 8; ++pulse) {
        rho = lab.after_ideal_pulse(Axis::x, PI + e, rho);
        EXPECT_NEAR(std::fabs(coefficient(lab.total(Axis::y), rho)), std::cos(pulse * e), 1e-13);
    }
}

TEST(MeiboomGill, HoldsTheEchoesWhateverItsPulsesTurn) {
    // The same pulses along the magnetisation. Meiboom & Gill, Rev. Sci. Instrum. 29 (1958) 688.
    Laboratory lab({1});
    Dense rho = lab.after_ideal_pulse(Axis::x, 0.5 * PI, lab.total(Axis::z));
    for (int pulse = 1; pulse <= 8; ++pulse) {
        rho = lab.after_ideal_pulse(Axis::y, PI + 0.06, rho);
        EXPECT_LE(distance(rho, lab.total(Axis::y)), 1e-13);
    }
}

TEST(EchoTrain, RefocusesAnyOffsetAtEveryEcho) {
    Laboratory lab({1});
    for (const double offset : {-300.0, 55.0, 1700.0}) {
        Dense rho = lab.total(Axis::y);
        for (int pulse = 1; pulse <= 6; ++pulse) {
            const Stretch delay = {3, 1e-3, 0.0, 0.0, offset, 0.0, 0.0, 0.0};
            rho = lab.after(delay, lab.after_ideal_pulse(Axis::y, PI, lab.after(delay, rho)));
            EXPECT_LE(distance(rho, lab.total(Axis::y)), 1e-12) << offset;
        }
    }
}

TEST(CoherenceOrder, OfSpinIIsMultipliedByTheOrderUnderAGradient) {
    // |m><m - p| turns by p times the single-quantum angle, in the sense of Ix -> -Iy. Ernst, Bodenhausen &
    // Wokaun, Principles of NMR in One and Two Dimensions, section 2.1.
    for (const int twice_spin : {1, 2, 3, 5}) {
        Laboratory lab({twice_spin});
        for (int p = 1; p <= twice_spin; ++p) {
            const Dense start = coherence(lab.n(), 0, p);
            const double angle = 0.37;
            const Dense rho = lab.after({1, 1.0, 0.0, 0.0, 0.0, 0.0, 0.0, angle}, start, 0.0, 0.0, 1.0);
            EXPECT_LE(std::abs(rho(0, p) - std::polar(1.0, p * angle)), 1e-14) << twice_spin << ' ' << p;
        }
    }
}

TEST(CoherenceOrder, TwoOfAPairDephasesTwiceAsFastAndZeroNotAtAll) {
    Laboratory lab({1, 1});
    const Dense xx = lab.op(1, Axis::x) * lab.op(2, Axis::x);
    const Dense yy = lab.op(1, Axis::y) * lab.op(2, Axis::y);
    const Dense xy = lab.op(1, Axis::x) * lab.op(2, Axis::y) + lab.op(1, Axis::y) * lab.op(2, Axis::x);
    for (const double angle : {0.2, 1.1, 2.9}) {
        const Stretch gradient = {1, 1.0, 0.0, 0.0, 0.0, 0.0, 0.0, angle};
        EXPECT_LE(distance(lab.after(gradient, xx - yy, 0.0, 0.0, 1.0),
                           std::cos(2.0 * angle) * (xx - yy) - std::sin(2.0 * angle) * xy),
                  1e-14);
        EXPECT_LE(distance(lab.after(gradient, xx + yy, 0.0, 0.0, 1.0), xx + yy), 1e-14);
    }
}

TEST(CoherenceTransferEcho, RefocusesAtTheRatioOfTheOrders) {
    // Double quantum under one gradient, a quarter turn, single quantum under twice its area of either sign:
    // half of the order comes back as single quantum (+2 to -1 and -2 to +1, or +2 to +1 and -2 to -1), and
    // nothing at any other area. Maudsley, Wokaun & Ernst, Chem. Phys. Lett. 55 (1978) 9.
    Laboratory lab({1, 1});
    const Dense double_quantum =
        lab.op(1, Axis::x) * lab.op(2, Axis::y) + lab.op(1, Axis::y) * lab.op(2, Axis::x);
    const auto single_quantum_echo = [&](int turns) {
        Dense mean = mean_over_places([&](double z) {
            const Dense rho =
                lab.after_ideal_pulse(Axis::x, 0.5 * PI, after_gradient(lab, 1, z, double_quantum));
            return after_gradient(lab, turns, z, rho);
        });
        const int order[4] = {1, 0, 0, -1};
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                mean(i, j) *= std::abs(order[i] - order[j]) == 1 ? 1.0 : 0.0;
            }
        }
        return mean.norm() / double_quantum.norm();
    };
    EXPECT_NEAR(single_quantum_echo(2), 0.5, 1e-13);
    EXPECT_NEAR(single_quantum_echo(-2), 0.5, 1e-13);
    for (const int turns : {-4, -3, -1, 0, 1, 3}) {
        EXPECT_NEAR(single_quantum_echo(turns), 0.0, 1e-13) << turns;
    }
}

TEST(GradientMoments, OfEqualAreaRefocusWhateverTheirShape) {
    Laboratory lab({1});
    Dense rho = lab.after({10, 2e-4, 0.0, 0.0, 0.0, 0.0, 0.0, 1500.0}, lab.total(Axis::x), 0.0, 0.0, 0.6);
    rho = lab.after({1, 1e-3, 0.0, 0.0, 0.0, 0.0, 0.0, -500.0}, rho, 0.0, 0.0, 0.6);
    rho = lab.after({5, 5e-4, 0.0, 0.0, 0.0, 0.0, 0.0, -1000.0}, rho, 0.0, 0.0, 0.6);
    EXPECT_LE(distance(rho, lab.total(Axis::x)), 1e-13);
}
