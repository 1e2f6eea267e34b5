// More than 16 states: the kernels of spins 1/2 alone, which flip bits, and of any spins, which read sparse
// rows, each in all of its forms against the reference; and the near misses that must go from one to the
// other.
#include "support/engine_system.h"
#include "support/engines.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

using namespace kor;
using namespace kor_test;

namespace {

class Columns : public EngineTest {};

enum class Phase { fixed, sweeping };

/// Samples whose exponents are about `angle` long.
RandomWaveform waveform_of_angle(Random& random, const RandomSystem& system, int samples, Phase phase,
                                 double angle) {
    RandomWaveform wave = random_waveform(random, samples, 3);
    wave.dt = angle / (6000.0 * std::accumulate(system.twice_spins.begin(), system.twice_spins.end(), 0));
    for (std::size_t j = 0; phase == Phase::fixed && j < wave.xb.size(); ++j) {
        wave.yb[j] = 0.75 * wave.xb[j];
    }
    return wave;
}

/// At one voxel, largest difference of an element from the reference's.
double distance_from_reference(const EngineChoice& choice, const EngineSector& sector) {
    EngineSelect(Engine::reference);
    const Dense expected = sector_propagator(sector, 2, 1, 3);
    EngineSelect(choice);
    return distance(sector_propagator(sector, 2, 1, 3), expected);
}

} // namespace

TEST_P(Columns, AgreeWithTheReferenceForShortAndLongStepsOfEveryKind) {
    Random random(191);
    const std::vector<std::pair<std::vector<int>, const char*>> systems = {
        {{1, 1, 1, 1, 1}, "binary columns"},
        {{1, 1, 1, 1, 1, 1}, "binary columns"},
        {{1, 2, 2}, "columns"},
        {{2, 2, 2}, "columns"},
        {{16}, "columns"},
        {{1, 3, 1, 2}, "columns"}};
    for (const auto& [spins, plan] : systems) {
        for (const Coupling coupling : {Coupling::weak, Coupling::exact}) {
            for (const Phase phase : {Phase::fixed, Phase::sweeping}) {
                for (const double angle : {1e-4, 0.03, 0.5, 0.9, 3.0, 30.0}) {
                    const RandomSystem system = random_system(random, spins, coupling);
                    const EngineCase problem(system, waveform_of_angle(random, system, 3, phase, angle));
                    const EngineSector sector = problem.sector(small_grid());
                    ASSERT_EQ(plan_of(sector), plan);
                    EXPECT_LE(distance_from_reference(GetParam(), sector), 2e-13 + 3e-15 * angle)
                        << testing::PrintToString(spins) << " angle " << angle;
                }
            }
        }
    }
}

TEST(ColumnsOfEverySet, AgreeWithTheReferenceUpToEightSpins) {
    Random random(192);
    for (const std::size_t spins : {std::size_t{7}, std::size_t{8}}) {
        const Coupling coupling = spins == 7 ? Coupling::weak : Coupling::exact;
        const RandomSystem system = random_system(random, std::vector<int>(spins, 1), coupling);
        const EngineCase problem(system, waveform_of_angle(random, system, 1, Phase::sweeping, 0.4));
        const EngineSector sector = problem.sector(small_grid());
        EngineSelect(Engine::reference);
        const Dense expected = sector_propagator(sector, 2, 1, 3);
        EngineSelect(Engine::fast);
        for (const EngineChoice& choice : FastEngines()) {
            EngineUseInstructionSet(choice.set);
            ASSERT_EQ(plan_of(sector), "binary columns");
            EXPECT_LE(distance(sector_propagator(sector, 2, 1, 3), expected), 2e-13)
                << spins << ' ' << EngineName(choice);
        }
        EngineUseInstructionSet(FastEngines().back().set);
    }
}

TEST_P(Columns, AgreeWhereOnlySomeSpinsAreCoupled) {
    Random random(193);
    for (int trial = 0; trial < 15; ++trial) {
        RandomSystem system = random_system(random, {1, 1, 1, 1, 1, 1}, Coupling::weak);
        const int i = random.integer(1, 5);
        const int j = random.integer(i + 1, 6);
        for (const Axis axis : {Axis::x, Axis::y}) {
            system.H0 += 200.0 * spin_operator(system.twice_spins, i, axis) *
                         spin_operator(system.twice_spins, j, axis);
        }
        const EngineCase problem(system, waveform_of_angle(random, system, 2, Phase::sweeping, 0.4));
        const EngineSector sector = problem.sector(small_grid());
        ASSERT_EQ(plan_of(sector), "binary columns");
        EXPECT_LE(distance_from_reference(GetParam(), sector), 2e-13) << i << ' ' << j;
    }
}

TEST_P(Columns, LeaveAnExchangeThatIsOneBitUnevenToTheSparseRows) {
    Random random(194);
    RandomSystem system = random_system(random, {1, 1, 1, 1, 1}, Coupling::exact);
    const int row = 0b01000; // and 0b00001: neighbours by the exchange of spins 2 and 5
    const double uneven = std::nextafter(system.H0(row, 1).real(), std::numeric_limits<double>::infinity());
    system.H0(row, 1) = system.H0(1, row) = uneven;
    const EngineCase problem(system, waveform_of_angle(random, system, 3, Phase::fixed, 0.4));
    const EngineSector sector = problem.sector(small_grid());
    EXPECT_EQ(plan_of(sector), "columns");
    EXPECT_LE(distance_from_reference(GetParam(), sector), 2e-13);
}

TEST_P(Columns, LeaveAFlipThatIsOneBitUnevenToTheSparseRows) {
    Random random(195);
    RandomSystem system = random_system(random, {1, 1, 1, 1, 1}, Coupling::weak);
    const double uneven = std::nextafter(0.5, 1.0);
    system.Fx(3, 7) = system.Fx(7, 3) = uneven;
    const EngineCase problem(system, waveform_of_angle(random, system, 3, Phase::fixed, 0.4));
    const EngineSector sector = problem.sector(small_grid());
    EXPECT_EQ(plan_of(sector), "columns");
    EXPECT_LE(distance_from_reference(GetParam(), sector), 2e-13);
}

TEST_P(Columns, GiveAVoxelTheSameBitsWhateverTheGridAroundIt) {
    Random random(196);
    const RandomSystem system = random_system(random, {1, 1, 1, 1, 1}, Coupling::exact);
    const EngineCase problem(system, waveform_of_angle(random, system, 4, Phase::sweeping, 0.3));
    const EngineGrid near = {3, 1, 1, 0.25, 0.0, 0.0, 0.125, 0.0, 0.0};
    const EngineGrid wide = {2, 1, 1, 0.25, 0.0, 0.0, 0.5, 0.0, 0.0};
    EXPECT_EQ(distance(sector_propagator(problem.sector(near), 1, 1, 1),
                       sector_propagator(problem.sector(wide), 1, 1, 1)),
              0.0);
}

INSTANTIATE_TEST_SUITE_P(Engines, Columns, testing::ValuesIn(FastEngines()), EngineParamName);
