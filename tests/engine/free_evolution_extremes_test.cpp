// Free evolution under Hamiltonians whose elements differ by more than the squares of doubles can.
#include "support/engine_system.h"
#include "support/engines.h"

#include <cmath>

using namespace kor;
using namespace kor_test;

namespace {

class FreeEvolutionExtremes : public EngineTest {};

struct SignalFromX {
    std::vector<double> re, im;
};

SignalFromX sample_from_x(const RandomSystem& system, const Dense& H, double dt, int points) {
    const MarkedMatrix Hmat(H);
    const MarkedMatrix Ix(system.Fx);
    const MarkedMatrix Iy(system.Fy);
    const auto length = static_cast<std::size_t>(points);
    SignalFromX signal{std::vector<double>(length), std::vector<double>(length)};
    EngineSampleFreeEvolution(system.n, Hmat, dt, points, Ix, Ix, Iy, signal.re.data(), signal.im.data());
    return signal;
}

void expect_near(const SignalFromX& signal, const SignalFromX& expected, double tolerance) {
    for (std::size_t k = 0; k < expected.re.size(); ++k) {
        EXPECT_NEAR(signal.re[k], expected.re[k], tolerance) << k;
        EXPECT_NEAR(signal.im[k], expected.im[k], tolerance) << k;
    }
}

} // namespace

TEST_P(FreeEvolutionExtremes, TakesCouplingsTooSmallToSquareForNone) {
    Random random(211);
    for (const double tiny : {1e-130, 1e-158, 1e-160, 1e-200, 1e-300, 5e-324}) {
        const RandomSystem system = random_system(random, {1, 1, 1, 1}, Coupling::exact);
        Dense H = system.H0.diagonal().asDiagonal();
        const SignalFromX uncoupled = sample_from_x(system, H, 1e-3, 40);
        for (int i = 0; i < system.n; ++i) {
            for (int j = 0; j < i; ++j) {
                H(i, j) = H(j, i) = system.H0(i, j) != 0.0 ? tiny * (1 + (i * j) % 3) : 0.0;
            }
        }
        expect_near(sample_from_x(system, H, 1e-3, 40), uncoupled, 1e-12);
    }
}

TEST_P(FreeEvolutionExtremes, DependsOnTheProductOfHamiltonianAndTimeAlone) {
    Random random(212);
    for (const int exponent : {-900, -600, -520, 500, 600, 900}) {
        const RandomSystem system = random_system(random, {1, 1, 1, 1}, Coupling::exact);
        const double factor = std::ldexp(1.0, exponent);
        const SignalFromX usual = sample_from_x(system, system.H0, 0x1p-10, 40);
        expect_near(sample_from_x(system, factor * system.H0, 0x1p-10 / factor, 40), usual, 1e-12);
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, FreeEvolutionExtremes, testing::ValuesIn(AllEngines()), EngineParamName);
