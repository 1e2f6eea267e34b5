#include "support/engine_system.h"
#include "support/engines.h"

#include <algorithm>

using namespace kor;
using namespace kor_test;

namespace {

class SectorPropagator : public EngineTest {};
class SectorPropagatorParity : public EngineTest {};

const std::vector<std::vector<int>> kPropagatedSpins = {{1},    {2},    {3},       {1, 1},    {1, 2},
                                                        {2, 3}, {3, 3}, {1, 1, 1}, {1, 2, 3}, {1, 1, 1, 1}};

Dense checked_propagator(const EngineCase& problem, int ix, int iy, int iz) {
    MarkedMatrix r;
    EngineSectorPropagator(ix, iy, iz, r);
    EXPECT_TRUE(r.border_untouched(problem.system.n));
    return r.dense(problem.system.n);
}

/// Every voxel of the open sector against dense algebra.
void expect_every_voxel(const EngineCase& problem, const EngineGrid& grid) {
    for (int ix = 1; ix <= grid.ndx; ++ix) {
        for (int iy = 1; iy <= grid.ndy; ++iy) {
            for (int iz = 1; iz <= grid.ndz; ++iz) {
                const Dense expected = problem.expected(
                    grid.x0 + (ix - 1) * grid.dx, grid.y0 + (iy - 1) * grid.dy, grid.z0 + (iz - 1) * grid.dz);
                EXPECT_LE(distance(checked_propagator(problem, ix, iy, iz), expected), problem.tolerance())
                    << "voxel " << ix << ' ' << iy << ' ' << iz << ", n = " << problem.system.n;
            }
        }
    }
}

} // namespace

TEST_P(SectorPropagator, AgreesWithDenseAlgebraWithoutGradients) {
    Random random(101);
    for (const std::vector<int>& spins : kPropagatedSpins) {
        for (const Coupling coupling : {Coupling::weak, Coupling::exact}) {
            const EngineCase problem(random_system(random, spins, coupling), random_waveform(random, 20, 3));
            EngineOpenSector(problem.sector());
            EXPECT_LE(distance(checked_propagator(problem, 1, 1, 1), problem.expected(0.0, 0.0, 0.0)),
                      problem.tolerance())
                << testing::PrintToString(spins);
        }
    }
}

TEST_P(SectorPropagator, AgreesWithDenseAlgebraOnOneTwoAndThreeGradientAxes) {
    Random random(102);
    for (int axes = 1; axes <= 3; ++axes) {
        for (const std::vector<int>& spins : kPropagatedSpins) {
            const EngineCase problem(random_system(random, spins, Coupling::exact),
                                     random_waveform(random, 5, axes));
            EngineOpenSector(problem.sector(small_grid()));
            expect_every_voxel(problem, small_grid());
        }
    }
}

TEST_P(SectorPropagator, AgreesWithDenseAlgebraOnRandomSystems) {
    Random random(103);
    for (int trial = 0; trial < 40; ++trial) {
        const EngineCase problem(random_system(random, 16),
                                 random_waveform(random, random.integer(1, 60), 1));
        const EngineGrid line = {5, 1, 1, -1.0, 0.0, 0.0, 0.5, 0.0, 0.0};
        EngineOpenSector(problem.sector(line));
        expect_every_voxel(problem, line);
    }
}

TEST_P(SectorPropagator, AgreesWithDenseAlgebraOn64States) {
    Random random(104);
    const EngineCase problem(random_system(random, {1, 1, 1, 1, 1, 1}, Coupling::exact),
                             random_waveform(random, 2, 0));
    EngineOpenSector(problem.sector());
    EXPECT_LE(distance(checked_propagator(problem, 1, 1, 1), problem.expected(0.0, 0.0, 0.0)),
              problem.tolerance());
}

TEST_P(SectorPropagator, DoesNotDependOnTheOrderOfTheVoxels) {
    Random random(105);
    const EngineCase problem(random_system(random, {1, 1}, Coupling::exact), random_waveform(random, 8, 3));
    EngineOpenSector(problem.sector(small_grid()));
    const Dense first = checked_propagator(problem, 2, 1, 3);
    checked_propagator(problem, 3, 2, 4);
    checked_propagator(problem, 1, 1, 1);
    EXPECT_EQ(distance(checked_propagator(problem, 2, 1, 3), first), 0.0);
}

TEST_P(SectorPropagator, OfNoSamplesIsTheIdentity) {
    Random random(106);
    const EngineCase problem(random_system(random, {1, 2}, Coupling::exact), random_waveform(random, 0, 3));
    EngineOpenSector(problem.sector(small_grid()));
    EXPECT_EQ(distance(checked_propagator(problem, 3, 2, 4), Dense::Identity(6, 6)), 0.0);
}

TEST_P(SectorPropagator, OfNoTimeIsTheIdentity) {
    Random random(107);
    const EngineCase problem(random_system(random, {1, 2}, Coupling::exact), random_waveform(random, 7, 3));
    EngineSector sector = problem.sector();
    sector.samples.dt = 0.0; // the first evolution row
    EngineOpenSector(sector);
    EXPECT_EQ(distance(checked_propagator(problem, 1, 1, 1), Dense::Identity(6, 6)), 0.0);
}

TEST_P(SectorPropagator, FollowsTheTimeStepOfTheSectorOpenedLast) {
    Random random(108);
    EngineCase problem(random_system(random, {1, 1}, Coupling::exact), random_waveform(random, 6, 0));
    const double dt = problem.wave.dt;
    for (int row = 0; row < 4; ++row) {
        problem.wave.dt = row * dt;
        EngineOpenSector(problem.sector());
        EXPECT_LE(distance(checked_propagator(problem, 1, 1, 1), problem.expected(0.0, 0.0, 0.0)),
                  problem.tolerance())
            << row;
    }
}

TEST_P(SectorPropagator, KeepsItsOwnCopyOfTheRecord) {
    Random random(109);
    const EngineCase problem(random_system(random, {1, 1}, Coupling::weak), random_waveform(random, 6, 0));
    EngineSector sector = problem.sector();
    EngineOpenSector(sector);
    sector.samples.dt = 1.0;
    sector.samples.count = 0;
    sector.grid = {};
    EXPECT_LE(distance(checked_propagator(problem, 1, 1, 1), problem.expected(0.0, 0.0, 0.0)),
              problem.tolerance());
}

TEST_P(SectorPropagator, IsUnitary) {
    Random random(110);
    for (int trial = 0; trial < 20; ++trial) {
        const EngineCase problem(random_system(random, 16), random_waveform(random, 50, 3));
        EngineOpenSector(problem.sector(small_grid()));
        const Dense r = checked_propagator(problem, 2, 2, 2);
        EXPECT_LE(distance(r.adjoint() * r, Dense::Identity(r.rows(), r.cols())), problem.tolerance());
    }
}

TEST_P(SectorPropagatorParity, IsThatOfTheReferenceEngine) {
    Random random(111);
    for (int trial = 0; trial < 40; ++trial) {
        const EngineCase problem(random_system(random, 32), random_waveform(random, 30, trial % 4));
        const EngineSector sector = trial % 4 ? problem.sector(small_grid()) : problem.sector();
        const int ix = random.integer(1, sector.grid.ndx);
        const int iz = random.integer(1, sector.grid.ndz);
        EngineSelect(Engine::reference);
        EngineOpenSector(sector);
        const Dense reference = checked_propagator(problem, ix, 1, iz);
        EngineSelect(GetParam());
        EngineOpenSector(sector);
        const Dense r = checked_propagator(problem, ix, 1, iz);
        EXPECT_LT(distance(r, reference), 1e-12 * largest(reference)) << trial;
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, SectorPropagator, testing::ValuesIn(AllEngines()), EngineParamName);
INSTANTIATE_TEST_SUITE_P(Engines, SectorPropagatorParity, testing::ValuesIn(AllEngines()), EngineParamName);
