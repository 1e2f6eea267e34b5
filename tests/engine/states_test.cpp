// The operations on many states in the order of the files, held against the same for one matrix.
#include "support/engine_system.h"
#include "support/engines.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

using namespace kor;
using namespace kor_test;

namespace {

class States : public EngineTest {};

const std::vector<int> kStateSizes = {1, 2, 3, 4, 5, 6, 8, 9, 10, 12, 15, 16, 18, 27, 32};
const std::vector<std::vector<int>> kSpinsOfStates = {{1},    {2},       {1, 1},         {1, 2},
                                                      {2, 2}, {1, 1, 1}, {1, 1, 1, 1, 1}};

std::vector<double> in_file_order(const std::vector<Dense>& matrices) {
    std::vector<double> pairs;
    for (const Dense& m : matrices) {
        for (int i = 0; i < m.rows(); ++i) {
            for (int j = 0; j < m.cols(); ++j) {
                pairs.push_back(m(i, j).real());
                pairs.push_back(m(i, j).imag());
            }
        }
    }
    return pairs;
}

Dense state_number(const std::vector<double>& states, int n, int k) {
    Dense m(n, n);
    for (int e = 0; e < n * n; ++e) {
        const auto at = static_cast<std::size_t>(2 * (k * n * n + e));
        m(e / n, e % n) = Complex(states[at], states[at + 1]);
    }
    return m;
}

std::vector<Dense> random_states(Random& random, int n, int count) {
    std::vector<Dense> states;
    for (int k = 0; k < count; ++k) {
        states.push_back(random.matrix(n)); // any matrix, not a state alone
    }
    return states;
}

bool agree_to_the_bit(const std::vector<double>& a, const std::vector<double>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

EngineGrid grid_of(int ndx, int ndy, int ndz) {
    return {ndx, ndy, ndz, -0.3, 0.2, -0.1, 0.15, 0.25, 0.05};
}

int voxels_of(const EngineGrid& grid) {
    return grid.ndx * grid.ndy * grid.ndz;
}

/// Rotates all voxels of the open sector, `together` at a time.
std::vector<double> rotate_voxels(const std::vector<Dense>& before, int together) {
    std::vector<double> states = in_file_order(before);
    const std::size_t one = states.size() / before.size();
    const auto count = static_cast<int>(before.size());
    for (int done = 0; done < count; done += together) {
        EngineRotateVoxels(done + 1, std::min(together, count - done),
                           &states[static_cast<std::size_t>(done) * one]);
    }
    return states;
}

struct Acquisition {
    double dt;
    int points;
};

std::vector<double> signals(const RandomSystem& system, const Acquisition& acquisition,
                            const std::vector<double>& states, int count) {
    const MarkedMatrix H(system.H0), Ix(system.Fx), Iy(system.Fy);
    std::vector<double> pairs(2 * static_cast<std::size_t>(acquisition.points * count), -9.5);
    EngineSampleStates(system.n, H, acquisition.dt, acquisition.points, count, states.data(), Ix, Iy,
                       pairs.data());
    return pairs;
}

/// Each part that is not 0 becomes the next number away from 0.
void change_one_bit(std::complex<double>& element) {
    const auto next = [](double part) { return std::nextafter(part, 1e300 * part); };
    ASSERT_NE(element, 0.0);
    element = {next(element.real()), next(element.imag())};
}

} // namespace

TEST_P(States, RotateByOnePropagatorAsDenseMatricesDo) {
    Random random(171);
    for (const int n : kStateSizes) {
        const Dense r = random.unitary(n);
        const std::vector<Dense> before = random_states(random, n, 5);
        std::vector<double> states = in_file_order(before);
        EngineRotateStates(n, MarkedMatrix(r), 5, states.data());
        for (int k = 0; k < 5; ++k) {
            const Dense expected = r.adjoint() * before[static_cast<std::size_t>(k)] * r;
            EXPECT_LE(distance(state_number(states, n, k), expected), 1e-14 * n) << n;
        }
    }
}

TEST_P(States, OfVoxelsRotateByTheirOwnPropagators) {
    Random random(172);
    for (const std::vector<int>& spins : kSpinsOfStates) {
        for (int axes = 0; axes <= 3; ++axes) {
            const EngineCase problem(random_system(random, spins, Coupling::exact),
                                     random_waveform(random, 5, axes));
            const EngineGrid grid = grid_of(2, 3, 4);
            const int n = problem.system.n;
            EngineOpenSector(problem.sector(grid));
            const std::vector<Dense> before = random_states(random, n, voxels_of(grid));
            const std::vector<double> states = rotate_voxels(before, 7);
            for (int v = 0; v < voxels_of(grid); ++v) {
                MarkedMatrix r;
                EngineSectorPropagator(v / 12 + 1, v / 4 % 3 + 1, v % 4 + 1, r);
                const Dense u = r.dense(n);
                const Dense expected = u.adjoint() * before[static_cast<std::size_t>(v)] * u;
                EXPECT_LE(distance(state_number(states, n, v), expected), 1e-13 * n) << "voxel " << v;
            }
        }
    }
}

TEST_P(States, OfVoxelsDoNotDependOnTheirCompany) {
    Random random(173);
    for (int axis = 0; axis < 4; ++axis) { // gradient on x, y, z, or none
        RandomWaveform wave = random_waveform(random, 6, 3);
        for (auto* gradient : {&wave.gx, &wave.gy, &wave.gz}) {
            std::fill(gradient->begin(), gradient->end(), 0.0);
        }
        if (axis < 3) {
            (axis == 0 ? wave.gx : axis == 1 ? wave.gy : wave.gz).assign(6, 3000.0);
        }
        const EngineCase problem(random_system(random, {1, 1}, Coupling::exact), wave);
        const EngineGrid grid = grid_of(3, 4, 5);
        const std::vector<Dense> before = random_states(random, 4, voxels_of(grid));
        EngineOpenSector(problem.sector(grid));
        const std::vector<double> alone = rotate_voxels(before, 1);
        EXPECT_TRUE(agree_to_the_bit(rotate_voxels(before, voxels_of(grid)), alone)) << axis;
        EXPECT_TRUE(agree_to_the_bit(rotate_voxels(before, 7), alone)) << axis;
    }
}

TEST_P(States, OfEvolutionRowsRotateForTheirOwnTimes) {
    Random random(174);
    for (const std::vector<int>& spins : kSpinsOfStates) {
        for (const bool pulsed : {false, true}) {
            RandomWaveform wave = random_waveform(random, 3, 0);
            if (!pulsed) {
                wave.xb.assign(3, 0.0);
                wave.yb.assign(3, 0.0);
            }
            const EngineCase problem(random_system(random, spins, Coupling::exact), wave);
            const int n = problem.system.n;
            const std::vector<Dense> before = random_states(random, n, 6);
            std::vector<double> states = in_file_order(before);
            EngineRotateRows(problem.sector(), 1, 2, states.data());
            EngineRotateRows(problem.sector(), 3, 4, &states[2 * static_cast<std::size_t>(2 * n * n)]);
            EXPECT_EQ(distance(state_number(states, n, 0), before[0]), 0.0);
            for (int k = 1; k < 6; ++k) {
                RandomWaveform longer = wave;
                longer.dt *= k;
                const EngineCase row(problem.system, longer);
                const Dense u = row.expected(0.0, 0.0, 0.0);
                const Dense expected = u.adjoint() * before[static_cast<std::size_t>(k)] * u;
                EXPECT_LE(distance(state_number(states, n, k), expected), 10 * row.tolerance())
                    << "row " << k + 1 << ", n = " << n;
            }
        }
    }
}

TEST_P(States, NotFiniteSpreadAsInThePlainLoopsAndNoFurther) {
    Random random(175);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const int n : {2, 3, 4, 16, 18}) {
        const MarkedMatrix r(random.unitary(n));
        const std::vector<double> sound = in_file_order(random_states(random, n, 4));
        std::vector<double> spoilt = sound;
        const auto one = static_cast<std::size_t>(2 * n * n);
        spoilt[one + 1] = nan;
        spoilt[2 * one] = std::numeric_limits<double>::infinity();
        std::vector<double> judge = spoilt;
        std::vector<double> without = sound;
        EngineRotateStates(n, r, 4, spoilt.data());
        EngineRotateStates(n, r, 4, without.data());
        EngineSelect(Engine::reference);
        EngineRotateStates(n, r, 4, judge.data());
        EngineSelect(GetParam());
        for (std::size_t e = 0; e < spoilt.size(); ++e) {
            if (e < one || e >= 3 * one) {
                EXPECT_EQ(spoilt[e], without[e]);
            } else {
                EXPECT_EQ(std::isfinite(spoilt[e]), std::isfinite(judge[e])) << n << ' ' << e;
            }
        }
    }
}

TEST_P(States, GiveTheSignalsOfTheirMatrices) {
    Random random(176);
    for (const std::vector<int>& spins : kSpinsOfStates) {
        for (const int points : {1, 16, 50, 64, 100, 1024}) {
            const RandomSystem system = random_system(random, spins, Coupling::exact);
            const int n = system.n;
            const std::vector<Dense> matrices = random_states(random, n, 3);
            const std::vector<double> pairs = signals(system, {2e-4, points}, in_file_order(matrices), 3);
            const MarkedMatrix H(system.H0), Ix(system.Fx), Iy(system.Fy);
            std::vector<double> re(static_cast<std::size_t>(points)), im(re);
            for (std::size_t m = 0; m < 3; ++m) {
                EngineSampleFreeEvolution(n, H, 2e-4, points, MarkedMatrix(matrices[m]), Ix, Iy, re.data(),
                                          im.data());
                const double* pair = &pairs[2 * m * re.size()];
                for (std::size_t k = 0; k < re.size(); ++k) {
                    ASSERT_NEAR(pair[2 * k], re[k], 1e-12 * n) << points << ' ' << k;
                    ASSERT_NEAR(pair[2 * k + 1], im[k], 1e-12 * n) << points << ' ' << k;
                }
            }
        }
    }
}

TEST_P(States, GiveZerosForSignalsThatAreNotFinite) {
    Random random(177);
    const RandomSystem system = random_system(random, {1, 1}, Coupling::exact);
    std::vector<double> states = in_file_order(random_states(random, 4, 3));
    const std::vector<double> sound = signals(system, {1e-3, 32}, states, 3);
    states[32 + 3] = std::numeric_limits<double>::quiet_NaN();
    const std::vector<double> pairs = signals(system, {1e-3, 32}, states, 3);
    for (std::size_t e = 0; e < pairs.size(); ++e) {
        EXPECT_EQ(pairs[e], e / 64 == 1 ? 0.0 : sound[e]) << e;
    }
}

TEST_P(States, KeepNothingOfAnotherReceiverToTheBit) {
    // Whatever was sampled before, the same input gives the same bits: what an engine keeps is used for a
    // bit-equal receiver only.
    Random random(178);
    const RandomSystem other = random_system(random, {1, 1, 1}, Coupling::exact);
    const std::vector<double> other_states = in_file_order(random_states(random, other.n, 1));
    const auto forget = [&] { signals(other, {1e-3, 16}, other_states, 1); };
    for (const std::vector<int>& spins : {std::vector<int>{1}, {1, 1}, {1, 2}}) {
        const RandomSystem first = random_system(random, spins, Coupling::exact);
        const std::vector<double> states = in_file_order(random_states(random, first.n, 2));
        const Acquisition acquisition{1e-3, 64};
        forget();
        const std::vector<double> fresh = signals(first, acquisition, states, 2);
        EXPECT_TRUE(agree_to_the_bit(signals(first, acquisition, states, 2), fresh));
        RandomSystem shifted = first, weighed_x = first, weighed_y = first;
        change_one_bit(shifted.H0(0, 0));
        change_one_bit(weighed_x.Fx(0, 1));
        change_one_bit(weighed_y.Fy(1, 0));
        const std::vector<std::pair<RandomSystem, Acquisition>> changed = {
            {shifted, acquisition},
            {weighed_x, acquisition},
            {weighed_y, acquisition},
            {first, {std::nextafter(acquisition.dt, 1.0), acquisition.points}},
            {first, {acquisition.dt, 32}}};
        for (const auto& [system, sampling] : changed) {
            signals(first, acquisition, states, 2);
            const std::vector<double> after = signals(system, sampling, states, 2);
            forget();
            EXPECT_TRUE(agree_to_the_bit(after, signals(system, sampling, states, 2)));
        }
        forget();
        EXPECT_TRUE(agree_to_the_bit(signals(first, acquisition, states, 2), fresh));
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, States, testing::ValuesIn(AllEngines()), EngineParamName);
