// Which way the fast engine takes, what it refuses, and that equal input gives equal bits.
#include "support/engine_system.h"
#include "support/engines.h"

#include <cmath>
#include <limits>
#include <string>

using namespace kor;
using namespace kor_test;

namespace {

class FastPlan : public EngineTest {};

EngineCase two_spins(unsigned seed, int samples) {
    Random random(seed);
    return {random_system(random, {1, 1}, Coupling::exact), random_waveform(random, samples, 3)};
}

} // namespace

TEST_P(FastPlan, FollowsFieldAndSize) {
    Random random(161);
    EngineCase small = two_spins(162, 10);
    EXPECT_EQ(plan_of(small.sector()), "lanes");
    EngineCase large(random_system(random, {1, 1, 1, 1, 1}, Coupling::weak), random_waveform(random, 2, 1));
    EXPECT_EQ(plan_of(large.sector()), "binary columns");
    EngineCase mixed(random_system(random, {1, 2, 1, 1}, Coupling::weak), random_waveform(random, 2, 1));
    EXPECT_EQ(plan_of(mixed.sector()), "columns");
    small.wave.xb.assign(10, 0.0);
    small.wave.yb.assign(10, 0.0);
    EXPECT_EQ(plan_of(small.sector()), "free precession");
    small.wave.dt = 0.0;
    EXPECT_EQ(plan_of(small.sector()), "identity");
}

TEST_P(FastPlan, LeavesOtherHamiltoniansToTheReference) {
    Random random(163);
    EngineCase problem = two_spins(164, 3);
    RandomSystem coupled = problem.system;
    coupled.H0(0, 1) = coupled.H0(1, 0) = 1e-9; // between states of different m
    const EngineCase mixing(coupled, problem.wave);
    EXPECT_EQ(plan_of(mixing.sector()), "reference");
    EXPECT_LE(distance(sector_propagator(mixing.sector(), 1, 1, 1), mixing.expected(0.0, 0.0, 0.0)),
              mixing.tolerance());
    RandomSystem complex_one = problem.system;
    complex_one.H0(1, 2) = Complex(3.0, 4.0);
    complex_one.H0(2, 1) = Complex(3.0, -4.0);
    const EngineCase phased(complex_one, problem.wave);
    EXPECT_EQ(plan_of(phased.sector()), "reference");
    EXPECT_LE(distance(sector_propagator(phased.sector(), 1, 1, 1), phased.expected(0.0, 0.0, 0.0)),
              phased.tolerance());
}

TEST_P(FastPlan, LeavesOtherFieldOperatorsToTheReference) {
    EngineCase problem = two_spins(165, 3);
    RandomSystem swapped = problem.system;
    swapped.Fy = -swapped.Fy; // a left-handed frame
    EXPECT_EQ(plan_of(EngineCase(swapped, problem.wave).sector()), "reference");
    RandomSystem weighted = problem.system;
    weighted.Fz = 0.5 * weighted.Fz; // steps of m that are not 1
    EXPECT_EQ(plan_of(EngineCase(weighted, problem.wave).sector()), "reference");
}

TEST_P(FastPlan, LeavesFieldOperatorsOfAnotherLengthThanFzToTheReference) {
    Random random(184);
    for (const std::vector<int>& spins : std::vector<std::vector<int>>{{1}, {1, 2}, {1, 1, 1, 1, 1}, {16}}) {
        const RandomSystem system = random_system(random, spins, Coupling::exact);
        const RandomWaveform wave = random_waveform(random, 3, 1);
        for (const double factor : {0.5, 2.0}) {
            RandomSystem scaled = system;
            scaled.Fx *= factor;
            scaled.Fy *= factor;
            const EngineCase problem(scaled, wave);
            EXPECT_EQ(plan_of(problem.sector()), "reference") << system.n << ' ' << factor;
            EXPECT_LE(distance(sector_propagator(problem.sector(), 1, 1, 1), problem.expected(0.0, 0.0, 0.0)),
                      problem.tolerance());
        }
        EXPECT_NE(plan_of(EngineCase(system, wave).sector()), "reference") << system.n;
    }
}

TEST_P(FastPlan, LeavesAFieldOnSomeSpinsToTheReference) {
    Random random(185);
    RandomSystem selective = random_system(random, {1, 1, 1}, Coupling::weak);
    selective.Fx = spin_operator(selective.twice_spins, 2, Axis::x);
    selective.Fy = spin_operator(selective.twice_spins, 2, Axis::y);
    EXPECT_EQ(plan_of(EngineCase(selective, random_waveform(random, 3, 1)).sector()), "reference");
}

TEST_P(FastPlan, LeavesAnFzWithMissingStepsToTheReference) {
    Random random(186);
    RandomSystem gapped = random_system(random, {16}, Coupling::weak);
    gapped.Fz.setZero();
    gapped.Fz(0, 0) = 200.0; // far above all other states, which have m = 0
    gapped.Fx.setZero();
    gapped.Fy.setZero();
    EXPECT_EQ(plan_of(EngineCase(gapped, random_waveform(random, 3, 1)).sector()), "reference");
}

TEST_P(FastPlan, LeavesWhatIsNotFiniteToTheReference) {
    for (const double value : {std::nan(""), std::numeric_limits<double>::infinity()}) {
        EngineCase problem = two_spins(166, 4);
        problem.wave.yb[2] = value;
        EXPECT_EQ(plan_of(problem.sector()), "reference");
        static CMatrix r;
        EngineSectorPropagator(1, 1, 1, r);
        EXPECT_TRUE(std::isnan(r[1][1][1]));
        problem = two_spins(166, 4);
        problem.wave.offset = value;
        EXPECT_EQ(plan_of(problem.sector()), "reference");
        problem = two_spins(166, 4);
        EngineGrid grid = small_grid();
        grid.dy = value;
        EXPECT_EQ(plan_of(problem.sector(grid)), "reference");
        problem.wave.dt = value;
        EXPECT_EQ(plan_of(problem.sector()), "reference");
    }
}

TEST_P(FastPlan, LeavesExtremeNormsToTheReference) {
    EngineCase problem = two_spins(167, 2);
    problem.wave.xb[1] = 4e6 / problem.wave.dt; // still within 24 halvings
    EXPECT_EQ(plan_of(problem.sector()), "lanes");
    problem.wave.xb[1] = 2e7 / problem.wave.dt;
    EXPECT_EQ(plan_of(problem.sector()), "reference");
}

TEST_P(FastPlan, GivesEqualBitsForEqualInput) {
    Random random(168);
    for (const std::vector<int>& spins :
         std::vector<std::vector<int>>{{1}, {1, 1}, {1, 1, 1}, {1, 1, 1, 1, 1}}) {
        const EngineCase problem(random_system(random, spins, Coupling::exact),
                                 random_waveform(random, 9, 3));
        const Dense first = sector_propagator(problem.sector(small_grid()), 2, 1, 3);
        sector_propagator(two_spins(169, 30).sector(), 1, 1, 1);
        EXPECT_EQ(distance(sector_propagator(problem.sector(small_grid()), 2, 1, 3), first), 0.0);
    }
}

TEST_P(FastPlan, GivesEqualBitsToVoxelsOfEqualOffsets) {
    Random random(170);
    for (const std::vector<int>& spins : std::vector<std::vector<int>>{{1}, {1, 1}, {1, 2, 2}}) {
        const EngineCase problem(random_system(random, spins, Coupling::exact),
                                 random_waveform(random, 6, 1));
        const EngineSector sector = problem.sector(small_grid()); // gradient along x only
        const Dense first = sector_propagator(sector, 2, 1, 1);
        EXPECT_EQ(distance(sector_propagator(sector, 2, 2, 4), first), 0.0);
        EXPECT_GT(distance(sector_propagator(sector, 3, 1, 1), first), 1e-3);
    }
}

TEST_P(FastPlan, DoesNotSeeWhichVoxelsAreComputedTogether) {
    // The same place as the only voxel that is asked for, and among others.
    Random random(171);
    for (const std::vector<int>& spins : std::vector<std::vector<int>>{{1}, {1, 1}, {1, 1, 1, 1}}) {
        const EngineCase problem(random_system(random, spins, Coupling::exact),
                                 random_waveform(random, 6, 1));
        const EngineGrid line = {37, 1, 1, -1.0, 0.0, 0.0, 0.0625, 0.0, 0.0};
        const EngineSector sector = problem.sector(line);
        const Dense alone = sector_propagator(sector, 20, 1, 1);
        static CMatrix r;
        EngineOpenSector(sector);
        for (int ix = 37; ix >= 1; --ix) {
            EngineSectorPropagator(ix, 1, 1, r);
            if (ix == 20) {
                EXPECT_EQ(distance(r, alone), 0.0);
            }
        }
    }
}

TEST_P(FastPlan, KeepsAFixedDirectionWhereTheFieldIsNegligible) {
    EngineCase problem = two_spins(172, 5);
    problem.wave.xb[2] = problem.wave.yb[2] = 0.0;
    const Dense without = sector_propagator(problem.sector(), 1, 1, 1);
    for (const double tiny : {1e-300, -1e-300, 4.9e-324}) {
        problem.wave.xb[2] = tiny;
        problem.wave.yb[2] = -3.0 * tiny;
        EXPECT_LE(distance(sector_propagator(problem.sector(), 1, 1, 1), without), 1e-14);
        EXPECT_LE(distance(sector_propagator(problem.sector(), 1, 1, 1), problem.expected(0.0, 0.0, 0.0)),
                  problem.tolerance());
    }
}

TEST_P(FastPlan, TakesNearMissesOfAPalindromeAsTheyAre) {
    Random random(173);
    for (const std::vector<int>& spins : std::vector<std::vector<int>>{{1}, {1, 1}, {1, 1, 1, 1, 1}}) {
        RandomWaveform wave = random_waveform(random, 16, 1);
        for (std::size_t j = 0; j < 16; ++j) {
            wave.yb[j] = 0.0;
            wave.xb[j] = wave.xb[std::min(j, 15 - j)];
            wave.gx[j] = wave.gx[std::min(j, 15 - j)];
        }
        EngineCase problem(random_system(random, spins, Coupling::exact), wave);
        const EngineGrid line = {3, 1, 1, -1.0, 0.0, 0.0, 0.5, 0.0, 0.0};
        const Dense symmetric = sector_propagator(problem.sector(line), 1, 1, 1);
        EXPECT_LE(distance(symmetric, problem.expected(-1.0, 0.0, 0.0)), problem.tolerance());
        EXPECT_LE(distance(symmetric, symmetric.transpose()), 1e-14);
        for (std::vector<double>* values : {&problem.wave.xb, &problem.wave.gx}) {
            const double kept = (*values)[12];
            (*values)[12] = kept * 1.001;
            const Dense other = sector_propagator(problem.sector(line), 1, 1, 1);
            EXPECT_LE(distance(other, problem.expected(-1.0, 0.0, 0.0)), problem.tolerance());
            EXPECT_GT(distance(other, other.transpose()), 1e-9);
            (*values)[12] = std::nextafter(kept, 1e9); // one bit
            EXPECT_LE(distance(sector_propagator(problem.sector(line), 1, 1, 1), symmetric), 1e-13);
            (*values)[12] = kept;
        }
    }
}

TEST_P(FastPlan, JoinsThePiecesOfAPalindromeInEveryDirectionOfTheField) {
    // With and without samples before it and a sample in its middle, for one voxel and for more voxels than
    // lanes.
    Random random(174);
    for (const std::vector<int>& spins : std::vector<std::vector<int>>{{1}, {1, 1}, {1, 1, 1}}) {
        for (int trial = 0; trial < 12; ++trial) {
            const std::size_t lead = static_cast<std::size_t>(trial % 3);
            const std::size_t samples = 17 + static_cast<std::size_t>(trial % 2) + lead;
            RandomWaveform wave = random_waveform(random, static_cast<int>(samples), 1);
            const double direction = trial < 6 ? 0.0 : 2.1;
            for (std::size_t j = 0; j < samples; ++j) {
                const std::size_t mirrored = j < lead ? j : std::min(j, samples - 1 - (j - lead));
                const double field = 1e3 * std::cos(1.0 + static_cast<double>(mirrored * mirrored));
                wave.xb[j] = field * std::cos(direction);
                wave.yb[j] = field * std::sin(direction);
                wave.gx[j] = wave.gx[mirrored];
            }
            const EngineCase problem(random_system(random, spins, Coupling::exact), wave);
            const bool alone = trial % 4 == 3;
            const EngineGrid line = {alone ? 1 : 19, 1, 1, -1.0, 0.0, 0.0, 0.125, 0.0, 0.0};
            EXPECT_LE(distance(sector_propagator(problem.sector(line), alone ? 1 : 11, 1, 1),
                               problem.expected(alone ? -1.0 : 0.25, 0.0, 0.0)),
                      problem.tolerance())
                << trial;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, FastPlan, testing::ValuesIn(FastEngines()), EngineParamName);
