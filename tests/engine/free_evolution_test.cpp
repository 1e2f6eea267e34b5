#include "support/engine_system.h"
#include "support/engines.h"

#include <cmath>

using namespace kor;
using namespace kor_test;

namespace {

class FreeEvolution : public EngineTest {};
class FreeEvolutionParity : public EngineTest {};

/// One point more than was asked for, to see a stray write.
struct GuardedSignal {
    std::vector<double> re, im;
};

constexpr double kUnset = -9.5;

GuardedSignal guarded_sample(const RandomSystem& system, const Dense& H, double dt, int points,
                             const Dense& rho) {
    MarkedMatrix Hmat(H);
    MarkedMatrix Rho(rho);
    MarkedMatrix Ix(system.Fx);
    MarkedMatrix Iy(system.Fy);
    const auto length = static_cast<std::size_t>(points) + 1;
    GuardedSignal signal{std::vector<double>(length, kUnset), std::vector<double>(length, kUnset)};
    EngineSampleFreeEvolution(system.n, Hmat, dt, points, Rho, Ix, Iy, signal.re.data(), signal.im.data());
    EXPECT_EQ(distance(Rho, rho), 0.0);
    EXPECT_EQ(distance(Hmat, H), 0.0);
    EXPECT_EQ(signal.re.back(), kUnset);
    EXPECT_EQ(signal.im.back(), kUnset);
    return signal;
}

/// Each point from one exponential over the whole time, so that no error of a step adds up.
void expect_signal(const RandomSystem& system, const Dense& H, double dt, const Dense& rho,
                   const GuardedSignal& signal, double tolerance) {
    for (int k = 0; k + 1 < static_cast<int>(signal.re.size()); ++k) {
        const Dense U = exp_i(H, k * dt);
        const Dense state = U.adjoint() * rho * U;
        EXPECT_NEAR(signal.re[static_cast<std::size_t>(k)], (system.Fx * state).trace().real(), tolerance)
            << k;
        EXPECT_NEAR(signal.im[static_cast<std::size_t>(k)], (system.Fy * state).trace().real(), tolerance)
            << k;
    }
}

} // namespace

TEST_P(FreeEvolution, AgreesWithDenseAlgebraOnRandomSystems) {
    Random random(131);
    for (int trial = 0; trial < 30; ++trial) {
        const RandomSystem system = random_system(random, 16);
        const Dense rho = random.density(system.n);
        const GuardedSignal signal = guarded_sample(system, system.H0, 1e-3, 50, rho);
        expect_signal(system, system.H0, 1e-3, rho, signal, 1e-11);
    }
}

TEST_P(FreeEvolution, TakesAnyHamiltonianState) {
    // Not diagonal in blocks of equal total m, and a state that is not Hermitian.
    Random random(132);
    for (const int spins : {1, 2, 3}) {
        const std::vector<int> halves(static_cast<std::size_t>(spins), 1);
        const RandomSystem system = random_system(random, halves, Coupling::exact);
        const Dense H = 1000.0 * random.hermitian(system.n);
        const Dense rho = random.matrix(system.n);
        expect_signal(system, H, 2e-4, rho, guarded_sample(system, H, 2e-4, 30, rho), 1e-11);
    }
}

TEST_P(FreeEvolution, TurnsXTowardsPlusYForAPositiveHamiltonian) {
    Random random(133);
    RandomSystem system = random_system(random, {1}, Coupling::weak);
    system.H0 = 100.0 * system.Fz;
    const GuardedSignal signal = guarded_sample(system, system.H0, 1e-3, 20, system.Fx);
    for (int k = 0; k < 20; ++k) {
        EXPECT_NEAR(signal.re[static_cast<std::size_t>(k)], 0.5 * std::cos(0.1 * k), 1e-14);
        EXPECT_NEAR(signal.im[static_cast<std::size_t>(k)], 0.5 * std::sin(0.1 * k), 1e-14);
    }
}

TEST_P(FreeEvolution, StaysAccurateOverManyPoints) {
    Random random(134);
    const RandomSystem system = random_system(random, {1, 1}, Coupling::exact);
    const GuardedSignal signal = guarded_sample(system, system.H0, 1e-3, 2048, system.Fx);
    expect_signal(system, system.H0, 1e-3, system.Fx, signal, 1e-10);
}

TEST_P(FreeEvolution, OfOnePointIsTheStateItself) {
    Random random(135);
    const RandomSystem system = random_system(random, {1, 2}, Coupling::exact);
    const Dense rho = random.density(system.n);
    const GuardedSignal signal = guarded_sample(system, system.H0, 1e-3, 1, rho);
    EXPECT_NEAR(signal.re[0], (system.Fx * rho).trace().real(), 1e-15);
    EXPECT_NEAR(signal.im[0], (system.Fy * rho).trace().real(), 1e-15);
}

TEST_P(FreeEvolution, OfNoPointsWritesNothing) {
    Random random(136);
    const RandomSystem system = random_system(random, {1}, Coupling::exact);
    const GuardedSignal signal = guarded_sample(system, system.H0, 1e-3, 0, system.Fx);
    EXPECT_EQ(signal.re[0], kUnset);
}

TEST_P(FreeEvolution, CarriesAStateThatIsNotANumberThrough) {
    Random random(137);
    const RandomSystem system = random_system(random, {1, 1}, Coupling::weak);
    MarkedMatrix H(system.H0);
    MarkedMatrix Ix(system.Fx);
    MarkedMatrix Iy(system.Fy);
    MarkedMatrix Rho(system.Fx);
    Rho.get()[1][2][1] = std::nan("");
    double re[2];
    double im[2];
    EngineSampleFreeEvolution(4, H, 1e-3, 2, Rho, Ix, Iy, re, im);
    EXPECT_TRUE(std::isnan(re[0]));
    EXPECT_TRUE(std::isnan(re[1]));
}

TEST_P(FreeEvolution, SeesEveryElementThatIsNotANumber) {
    Random random(137);
    const RandomSystem system = random_system(random, {1, 1}, Coupling::exact);
    MarkedMatrix Hmat(system.H0);
    for (const int wrong : {0, 1, 2})
        for (int r = 1; r <= system.n; ++r)
            for (int c = 1; c <= system.n; ++c)
                for (const int part : {1, 2}) {
                    MarkedMatrix given[] = {MarkedMatrix(system.Fx), MarkedMatrix(system.Fx),
                                            MarkedMatrix(system.Fy)}; // state and observables
                    given[wrong].get()[r][c][part] = std::nan("");
                    std::vector<double> re(2), im(2);
                    EngineSampleFreeEvolution(system.n, Hmat, 1e-3, 2, given[0], given[1], given[2],
                                              re.data(), im.data());
                    for (const std::size_t k : {0U, 1U}) {
                        EXPECT_EQ(std::isnan(re[k]), wrong != 2) << wrong << " (" << r << ", " << c << ")";
                        EXPECT_EQ(std::isnan(im[k]), wrong != 1) << wrong << " (" << r << ", " << c << ")";
                    }
                }
}

TEST_P(FreeEvolutionParity, IsThatOfTheReferenceEngine) {
    Random random(138);
    for (int trial = 0; trial < 30; ++trial) {
        const RandomSystem system = random_system(random, 32);
        const Dense rho = random.matrix(system.n);
        EngineSelect(Engine::reference);
        const GuardedSignal reference = guarded_sample(system, system.H0, 5e-4, 40, rho);
        EngineSelect(GetParam());
        const GuardedSignal signal = guarded_sample(system, system.H0, 5e-4, 40, rho);
        for (std::size_t k = 0; k < 40; ++k) {
            const double scale = std::fmax(1.0, system.Fx.norm() * rho.norm());
            EXPECT_NEAR(signal.re[k], reference.re[k], 1e-12 * scale) << trial << ' ' << k;
            EXPECT_NEAR(signal.im[k], reference.im[k], 1e-12 * scale) << trial << ' ' << k;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, FreeEvolution, testing::ValuesIn(AllEngines()), EngineParamName);
INSTANTIATE_TEST_SUITE_P(Engines, FreeEvolutionParity, testing::ValuesIn(AllEngines()), EngineParamName);
