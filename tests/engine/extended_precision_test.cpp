// Propagators against sums in extended precision: the series of the exponential, halved until it is short,
// with a 64-bit mantissa throughout.
#include "support/engine_system.h"
#include "support/engines.h"
#include "support/worst.h"

#include <cmath>
#include <string>

using namespace kor;
using namespace kor_test;

namespace {

using Long = std::complex<long double>;
using LongMatrix = Eigen::Matrix<Long, Eigen::Dynamic, Eigen::Dynamic>;

LongMatrix exact_exponential(const LongMatrix& minus_i_h_dt) {
    const auto n = minus_i_h_dt.rows();
    const long double norm = minus_i_h_dt.cwiseAbs().rowwise().sum().maxCoeff();
    const int halvings = norm > 0.25L ? static_cast<int>(std::ceil(std::log2(norm / 0.25L))) : 0;
    const LongMatrix a = minus_i_h_dt * std::ldexp(1.0L, -halvings);
    LongMatrix sum = LongMatrix::Identity(n, n);
    LongMatrix term = sum;
    for (int k = 1; k <= 16; ++k) {
        term = (term * a / static_cast<long double>(k)).eval();
        sum += term;
    }
    for (int k = 0; k < halvings; ++k) {
        sum = (sum * sum).eval();
    }
    return sum;
}

Dense exact_propagator(const EngineCase& problem, double x, double y, double z) {
    const RandomWaveform& wave = problem.wave;
    const LongMatrix H0 = problem.system.H0.cast<Long>();
    const LongMatrix Fx = problem.system.Fx.cast<Long>();
    const LongMatrix Fy = problem.system.Fy.cast<Long>();
    const LongMatrix Fz = problem.system.Fz.cast<Long>();
    LongMatrix r = LongMatrix::Identity(H0.rows(), H0.cols());
    for (std::size_t j = 0; j < wave.xb.size(); ++j) {
        const long double w = static_cast<long double>(wave.gx[j]) * x +
                              static_cast<long double>(wave.gy[j]) * y +
                              static_cast<long double>(wave.gz[j]) * z + wave.offset;
        const LongMatrix H = H0 + Long(w) * Fz + Long(wave.xb[j]) * Fx + Long(wave.yb[j]) * Fy;
        r = (r * exact_exponential(Long(0.0L, -wave.dt) * H)).eval();
    }
    return r.cast<Complex>();
}

class ExtendedPrecision : public EngineTest {
protected:
    static std::string name_of_test() {
        return testing::UnitTest::GetInstance()->current_test_info()->name();
    }
};

} // namespace

TEST_P(ExtendedPrecision, ConfirmsPropagators) {
    Worst worst(name_of_test());
    Random random(181);
    const std::vector<std::vector<int>> systems = {{1},    {2},       {1, 1},       {1, 2},   {1, 1, 1},
                                                   {2, 2}, {1, 1, 2}, {1, 1, 1, 1}, {1, 2, 2}};
    for (int trial = 0; trial < 45; ++trial) {
        const auto& spins = systems[static_cast<std::size_t>(trial) % systems.size()];
        RandomWaveform wave = random_waveform(random, 12, 1);
        wave.dt = random.uniform(2e-6, 4e-5);
        if (trial % 3 == 1) { // of constant phase and a palindrome
            for (std::size_t j = 0; j < 12; ++j) {
                wave.yb[j] = 0.0;
                wave.xb[j] = wave.xb[std::min<std::size_t>(j, 11 - j)];
                wave.gx[j] = wave.gx[0];
            }
        }
        const EngineCase problem(random_system(random, spins, trial % 2 ? Coupling::exact : Coupling::weak),
                                 wave);
        const EngineGrid line = {3, 1, 1, -1.0, 0.0, 0.0, 0.75, 0.0, 0.0};
        EngineOpenSector(problem.sector(line));
        MarkedMatrix r;
        EngineSectorPropagator(2, 1, 1, r);
        worst.check(distance(r, exact_propagator(problem, -0.25, 0.0, 0.0)), 1e-13,
                    testing::PrintToString(spins) + ' ' + testing::PrintToString(trial));
    }
}

TEST_P(ExtendedPrecision, ConfirmsPropagatorsOfManyStates) {
    Worst worst(name_of_test());
    Random random(182);
    const std::vector<std::vector<int>> systems = {{1, 1, 1, 1, 1}, {1, 2, 2}, {1, 1, 1, 1, 1, 1}};
    for (int trial = 0; trial < 6; ++trial) {
        const auto& spins = systems[static_cast<std::size_t>(trial) % systems.size()];
        RandomWaveform wave = random_waveform(random, 4, 1);
        wave.dt = trial < 3 ? 1e-5 : 5e-5;
        const EngineCase problem(random_system(random, spins, trial % 2 ? Coupling::exact : Coupling::weak),
                                 wave);
        EngineOpenSector(problem.sector({2, 1, 1, 0.0, 0.0, 0.0, 0.5, 0.0, 0.0}));
        MarkedMatrix r;
        EngineSectorPropagator(2, 1, 1, r);
        worst.check(distance(r, exact_propagator(problem, 0.5, 0.0, 0.0)), 1e-13,
                    testing::PrintToString(spins) + ' ' + testing::PrintToString(trial));
    }
}

TEST_P(ExtendedPrecision, ConfirmsShapedPulsesUnderAConstantGradient) {
    // The gradient stands still while the field changes: its size, its size and direction, or its
    // direction alone; then perhaps a second gradient. Several voxels, and one, whose pulse is cut into
    // pieces.
    Worst worst(name_of_test());
    Random random(183);
    const std::vector<std::vector<int>> systems = {{2}, {1, 1}, {1, 1, 1}, {5}, {1, 1, 2}, {1, 1, 1, 1}};
    for (int trial = 0; trial < 24; ++trial) {
        const auto& spins = systems[static_cast<std::size_t>(trial) % systems.size()];
        const bool alone = trial >= 12;
        const std::size_t samples = alone && spins.size() < 4 ? 192 : 64;
        RandomWaveform wave = random_waveform(random, static_cast<int>(samples), 1);
        const double size = random.uniform(100.0, 3000.0); // rad/s
        for (std::size_t j = 0; j < samples; ++j) {
            const double amplitude = trial % 3 == 2 ? size : size * std::cos(0.05 * static_cast<double>(j));
            const double phase = trial % 3 == 0 ? 0.4 : 1e-3 * static_cast<double>(j * j);
            wave.xb[j] = amplitude * std::cos(phase);
            wave.yb[j] = amplitude * std::sin(phase);
            wave.gx[j] = wave.gx[!alone && trial % 2 == 0 && j > 40 ? 1 : 0];
        }
        wave.dt = random.uniform(2e-6, 4e-5);
        const EngineCase problem(random_system(random, spins, trial % 2 ? Coupling::exact : Coupling::weak),
                                 wave);
        const EngineGrid grid = {alone ? 1 : 11, 1, 1, -0.5, 0.0, 0.0, 0.125, 0.0, 0.0};
        EngineOpenSector(problem.sector(grid));
        MarkedMatrix r;
        EngineSectorPropagator(alone ? 1 : 4, 1, 1, r);
        worst.check(distance(r, exact_propagator(problem, alone ? -0.5 : -0.125, 0.0, 0.0)), 1e-13,
                    testing::PrintToString(spins) + ' ' + testing::PrintToString(trial));
    }
}

TEST_P(ExtendedPrecision, ConfirmsAmplitudesThatDifferByARounding) {
    // A range of the field between whose ends are no numbers, as in the amplitude of a frequency sweep.
    Worst worst(name_of_test());
    Random random(187);
    for (int trial = 0; trial < 12; ++trial) {
        RandomWaveform wave = random_waveform(random, 200, 0);
        wave.dt = 5e-5;
        const double size = random.uniform(30000.0, 40000.0); // rad/s
        for (std::size_t j = 0; j < 200; ++j) {
            wave.xb[j] = j % 2 ? size : std::nextafter(size, 1e9);
            wave.yb[j] = 0.0;
        }
        const EngineCase problem(random_system(random, {trial % 2 ? 9 : 2}, Coupling::weak), wave);
        EngineOpenSector(problem.sector());
        MarkedMatrix r;
        EngineSectorPropagator(1, 1, 1, r);
        const double allowed = GetParam().engine == Engine::reference ? 4e-12 // its halvings, 2000 rad
                               : trial % 2                            ? 4e-13
                                                                      : 2e-13;
        worst.check(distance(r, exact_propagator(problem, 0.0, 0.0, 0.0)), allowed,
                    testing::PrintToString(size));
    }
}

TEST_P(ExtendedPrecision, ConfirmsFieldsTooSmallToTurnAnything) {
    Worst worst(name_of_test());
    Random random(188);
    for (const double field : {1e-320, 1e-309, 1e-250, 1e-30}) {
        RandomWaveform wave = random_waveform(random, 40, 1);
        wave.gx.assign(40, 700.0);
        for (std::size_t j = 0; j < 40; ++j) {
            wave.xb[j] = field;
            wave.yb[j] = j % 2 ? field : 0.0;
        }
        const EngineCase problem(random_system(random, {1, 1, 1}, Coupling::exact), wave);
        EngineOpenSector(problem.sector({4, 1, 1, 0.0, 0.0, 0.0, 0.25, 0.0, 0.0}));
        MarkedMatrix r;
        EngineSectorPropagator(4, 1, 1, r);
        worst.check(distance(r, exact_propagator(problem, 0.75, 0.0, 0.0)), 1e-13,
                    testing::PrintToString(field));
    }
}

TEST_P(ExtendedPrecision, ConfirmsTheCentreOfASteepGradient) {
    // Its steps turn by little, those at the rim of the grid by 1.7 to 1000 rad: an error that grows with
    // the halvings there, or adds up over alike steps, must not reach the centre.
    Worst worst(name_of_test());
    Random random(186);
    for (const std::vector<int>& spins : std::vector<std::vector<int>>{{1}, {2}, {1, 1, 1}}) {
        for (const double rim : {1.7, 20.0, 1000.0}) {
            RandomWaveform wave = random_waveform(random, 512, 0);
            wave.dt = 1e-5;
            wave.offset = 10.0;
            for (std::size_t j = 0; j < 512; ++j) {
                wave.xb[j] = 300.0 + 1e-3 * static_cast<double>(j);
                wave.yb[j] = 20.0;
                wave.gz[j] = rim / wave.dt * (1.0 + 1e-5 * static_cast<double>(j % 3));
            }
            const EngineCase problem(random_system(random, spins, Coupling::exact), wave);
            EngineOpenSector(problem.sector({1, 1, 5, 0.0, 0.0, -1.0, 0.0, 0.0, 0.5}));
            MarkedMatrix r;
            EngineSectorPropagator(1, 1, 3, r);
            worst.check(distance(r, exact_propagator(problem, 0.0, 0.0, 0.0)), 1e-13,
                        testing::PrintToString(spins) + ' ' + testing::PrintToString(rim));
        }
    }
}

TEST_P(ExtendedPrecision, ConfirmsTheDurationOfManyEqualSamples) {
    // 8192 samples of one spin, together exp(-i T (w Iz + B Ix)) or, without the field, exp(-i T w Iz): an
    // angle of 500 to 640 rad, in which a relative error of the duration shows enlarged.
    Worst worst(name_of_test());
    Random random(184);
    for (const double field : {3000.0, 0.0}) {
        RandomWaveform wave = random_waveform(random, 8192, 0);
        wave.dt = 9.7656e-6; // of many binary digits
        wave.offset = 6283.185;
        wave.xb.assign(8192, field);
        wave.yb.assign(8192, 0.0);
        RandomSystem system = random_system(random, {1}, Coupling::weak);
        system.H0.setZero();
        const EngineCase problem(system, wave);
        const long double size =
            std::hypot(static_cast<long double>(wave.offset), static_cast<long double>(field));
        const long double half = 0.5L * size * 8192.0L * wave.dt;
        const Long diagonal(std::cos(half), -std::sin(half) * wave.offset / size);
        const Long across(0.0L, -std::sin(half) * field / size);
        LongMatrix turn(2, 2);
        turn << diagonal, across, across, std::conj(diagonal);
        EngineOpenSector(problem.sector());
        MarkedMatrix r;
        EngineSectorPropagator(1, 1, 1, r);
        worst.check(distance(r, turn.cast<Complex>()), 1e-12, testing::PrintToString(field));
    }
}

TEST_P(ExtendedPrecision, ConfirmsLongRampsOfAGradientWithoutField) {
    // The phase is the integral of a gradient that changes from sample to sample, once with a field at both
    // ends.
    Worst worst(name_of_test());
    Random random(185);
    for (const double field : {0.0, 4000.0}) {
        RandomWaveform wave = random_waveform(random, 4096, 0);
        wave.dt = 9.7656e-6;
        wave.offset = 1000.0;
        wave.xb.assign(4096, 0.0);
        wave.yb.assign(4096, 0.0);
        wave.xb.front() = wave.yb.back() = field;
        for (std::size_t j = 0; j < 4096; ++j) {
            wave.gx[j] = 2e4 * std::sin(7e-4 * static_cast<double>(j));
        }
        const EngineCase problem(random_system(random, {1}, Coupling::weak), wave);
        EngineOpenSector(problem.sector({3, 1, 1, 0.7, 0.0, 0.0, 0.125, 0.0, 0.0}));
        MarkedMatrix r;
        EngineSectorPropagator(3, 1, 1, r);
        worst.check(distance(r, exact_propagator(problem, 0.95, 0.0, 0.0)), 1e-12,
                    testing::PrintToString(field));
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, ExtendedPrecision, testing::ValuesIn(AllEngines()), EngineParamName);
