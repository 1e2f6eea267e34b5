// What the fast engine makes of interchangeable spins and of one gradient direction over many voxels.
#include "support/constants.h"
#include "support/engine_system.h"
#include "support/engines.h"

#include <algorithm>
#include <cmath>
#include <string>

using namespace kor;
using namespace kor_test;

namespace {

/// Spins 1/2 of some groups; spins of one group have one shift, pairs of two groups one coupling.
struct Grouped {
    std::vector<int> group;
    std::vector<double> shift; // rad/s, per spin
    RandomSystem system;
};

Grouped grouped_spins(Random& random, const std::vector<int>& group, Coupling coupling) {
    Grouped g{group, {}, {}};
    const int spins = static_cast<int>(group.size());
    const int groups = *std::max_element(group.begin(), group.end()) + 1;
    std::vector<double> shifts;
    std::vector<double> couplings;
    for (int k = 0; k < groups * groups; ++k) {
        shifts.push_back(TWO_PI * random.uniform(-400.0, 400.0));
        couplings.push_back(TWO_PI * random.uniform(-30.0, 30.0));
    }
    RandomSystem& s = g.system;
    s.twice_spins.assign(group.size(), 1);
    s.Fx = total_operator(s.twice_spins, Axis::x);
    s.Fy = total_operator(s.twice_spins, Axis::y);
    s.Fz = total_operator(s.twice_spins, Axis::z);
    s.n = static_cast<int>(s.Fz.rows());
    s.H0 = Dense::Zero(s.n, s.n);
    for (int i = 0; i < spins; ++i) {
        const int a = group[static_cast<std::size_t>(i)];
        g.shift.push_back(shifts[static_cast<std::size_t>(a)]);
        s.H0 += g.shift.back() * spin_operator(s.twice_spins, i + 1, Axis::z);
        for (int j = i + 1; j < spins; ++j) {
            const int b = group[static_cast<std::size_t>(j)];
            const double J = couplings[static_cast<std::size_t>(std::min(a, b) * groups + std::max(a, b))];
            for (const Axis axis : {Axis::x, Axis::y, Axis::z}) {
                if (coupling == Coupling::exact || axis == Axis::z) {
                    s.H0 += J * spin_operator(s.twice_spins, i + 1, axis) *
                            spin_operator(s.twice_spins, j + 1, axis);
                }
            }
        }
    }
    return g;
}

EngineSector with_groups(const EngineCase& problem, const EngineGrid& grid, const std::vector<int>& group) {
    EngineSector sector = problem.sector(grid);
    sector.system.spins = static_cast<int>(group.size());
    sector.system.spin_group = group.data();
    return sector;
}

Dense open_sector_propagator(int n, int ix, int iy, int iz) {
    static CMatrix r;
    EngineSectorPropagator(ix, iy, iz, r);
    return to_dense(n, r);
}

Dense reference_propagator(const EngineSector& sector, int ix, int iy, int iz) {
    EngineSelect(Engine::reference);
    EngineOpenSector(sector);
    const Dense r = open_sector_propagator(sector.system.n, ix, iy, iz);
    EngineSelect(Engine::fast);
    return r;
}

class FastSymmetry : public EngineTest {};

const EngineGrid kOrigin = {1, 1, 1, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};

} // namespace

TEST_P(FastSymmetry, LooksAgainWhenTheFieldOperatorsChange) {
    Random random(197);
    const Grouped grouped = grouped_spins(random, {0, 0}, Coupling::weak);
    const RandomWaveform wave = random_waveform(random, 5, 3);
    const EngineCase alike(grouped.system, wave);
    EngineOpenSector(with_groups(alike, kOrigin, grouped.group));
    EXPECT_STREQ(EngineSectorPlan(), "equivalent spins");
    RandomSystem other = grouped.system; // the same physics in a basis with another sign of the second state
    for (Dense* field : {&other.Fx, &other.Fy}) {
        field->row(1) *= -1.0;
        field->col(1) *= -1.0;
    }
    const EngineCase signs(other, wave);
    const EngineSector sector = with_groups(signs, kOrigin, grouped.group);
    const Dense expected = reference_propagator(sector, 1, 1, 1);
    EngineOpenSector(sector);
    EXPECT_STREQ(EngineSectorPlan(), "lanes");
    EXPECT_LE(distance(open_sector_propagator(4, 1, 1, 1), expected), 2e-13);
}

TEST_P(FastSymmetry, LooksAgainWhenTheOffsetsOperatorChanges) {
    Random random(200);
    const Grouped grouped = grouped_spins(random, {0, 0}, Coupling::exact);
    const RandomWaveform wave = random_waveform(random, 5, 3);
    const EngineCase alike(grouped.system, wave);
    EngineOpenSector(with_groups(alike, kOrigin, grouped.group));
    EXPECT_STREQ(EngineSectorPlan(), "equivalent spins");
    RandomSystem other = grouped.system; // half a turn about x: the same H0 and Fx
    other.Fy *= -1.0;
    other.Fz *= -1.0;
    const EngineCase upside_down(other, wave);
    const EngineSector sector = with_groups(upside_down, kOrigin, grouped.group);
    const Dense expected = reference_propagator(sector, 1, 1, 1);
    EngineOpenSector(sector);
    EXPECT_STREQ(EngineSectorPlan(), "equivalent spins");
    EXPECT_LE(distance(open_sector_propagator(4, 1, 1, 1), expected), 2e-13);
}

TEST_P(FastSymmetry, TakesAlikeSpinsTogether) {
    Random random(191);
    for (const std::vector<int>& group : std::vector<std::vector<int>>{{0, 0},
                                                                       {0, 0, 0},
                                                                       {0, 1, 1},
                                                                       {0, 1, 1, 1},
                                                                       {0, 0, 1, 1},
                                                                       {1, 0, 1, 0},
                                                                       {0, 0, 0, 0},
                                                                       {0, 1, 2, 1, 0},
                                                                       {0, 0, 0, 1, 1, 1},
                                                                       {0, 1, 1, 1, 1, 1}}) {
        for (const Coupling coupling : {Coupling::weak, Coupling::exact}) {
            const Grouped grouped = grouped_spins(random, group, coupling);
            const EngineCase problem(grouped.system, random_waveform(random, 5, 3));
            const EngineSector sector = with_groups(problem, small_grid(), group);
            const Dense expected = reference_propagator(sector, 3, 1, 2);
            EngineOpenSector(sector);
            EXPECT_STREQ(EngineSectorPlan(), "equivalent spins");
            EXPECT_LE(distance(open_sector_propagator(sector.system.n, 3, 1, 2), expected), 2e-13)
                << testing::PrintToString(group);
        }
    }
}

TEST_P(FastSymmetry, TakesSpinsThatNobodyCallsAlikeOneByOne) {
    // One bit off: the caller compares the shifts bit by bit and gives the spins different numbers.
    Random random(192);
    const Grouped grouped = grouped_spins(random, {0, 1, 1, 1}, Coupling::exact);
    RandomSystem nearly = grouped.system;
    const double next = std::nextafter(grouped.shift[3], 1e9);
    nearly.H0 += (next - grouped.shift[3]) * spin_operator(nearly.twice_spins, 4, Axis::z);
    const EngineCase problem(nearly, random_waveform(random, 5, 1));
    const std::vector<int> two_alike = {0, 1, 1, 2};
    const EngineSector sector = with_groups(problem, small_grid(), two_alike);
    EngineOpenSector(sector);
    EXPECT_STREQ(EngineSectorPlan(), "equivalent spins"); // spins 2 and 3 still are
    const std::vector<int> all_different = {0, 1, 2, 3};
    const EngineSector general = with_groups(problem, small_grid(), all_different);
    EngineOpenSector(general);
    EXPECT_STREQ(EngineSectorPlan(), "lanes");
    EXPECT_LE(distance(open_sector_propagator(16, 2, 1, 1), reference_propagator(general, 2, 1, 1)), 2e-13);
}

TEST_P(FastSymmetry, DoesNotBelieveThatUnlikeSpinsAreAlike) {
    Random random(193);
    Grouped grouped = grouped_spins(random, {0, 1, 1, 1}, Coupling::exact);
    grouped.system.H0 += 1e-9 * spin_operator(grouped.system.twice_spins, 4, Axis::z);
    const EngineCase problem(grouped.system, random_waveform(random, 5, 1));
    const EngineSector sector = with_groups(problem, kOrigin, grouped.group);
    EngineOpenSector(sector);
    EXPECT_STREQ(EngineSectorPlan(), "lanes");
}

TEST_P(FastSymmetry, InterpolatesAlongOneGradientDirection) {
    Random random(194);
    for (const std::vector<int>& spins : std::vector<std::vector<int>>{{1, 1}, {1, 2}, {1, 1, 1}}) {
        RandomWaveform wave = random_waveform(random, 40, 0);
        for (std::size_t j = 0; j < 40; ++j) {
            const double strength = TWO_PI * 500.0 * std::cos(0.1 * static_cast<double>(j));
            wave.gx[j] = strength;
            wave.gy[j] = 0.5 * strength;
            wave.gz[j] = -0.25 * strength;
        }
        wave.dt = 2e-5;
        EngineCase problem(random_system(random, spins, Coupling::exact), wave);
        const EngineGrid cube = {12, 11, 10, -0.5, -0.45, -0.6, 0.09, 0.1, 0.11};
        const EngineSector sector = problem.sector(cube);
        EngineOpenSector(sector);
        EXPECT_STREQ(EngineSectorPlan(), "interpolation");
        for (int trial = 0; trial < 5; ++trial) {
            const int ix = random.integer(1, 12), iy = random.integer(1, 11), iz = random.integer(1, 10);
            EngineOpenSector(sector);
            const Dense r = open_sector_propagator(sector.system.n, ix, iy, iz);
            EXPECT_LE(distance(r, reference_propagator(sector, ix, iy, iz)), 2e-13);
        }
        problem.wave.gz[7] *= 1.0 + 1e-9; // two directions
        EngineOpenSector(problem.sector(cube));
        EXPECT_STREQ(EngineSectorPlan(), "lanes");
    }
}

TEST_P(FastSymmetry, InterpolatesToTheCornersOfFewAndManyVoxels) {
    // The more voxels, the more panels of ever fewer terms; the corners are the ends of the first and the
    // last one.
    Random random(197);
    const std::vector<EngineGrid> grids = {{9, 9, 5, -0.5, -0.5, -0.5, 0.125, 0.125, 0.25},
                                           {16, 16, 16, -0.5, -0.4, -0.3, 0.07, 0.07, 0.07},
                                           {40, 40, 40, -0.5, -0.4, -0.3, 0.03, 0.03, 0.03}};
    for (const EngineGrid& grid : grids) {
        for (const std::vector<int>& spins : std::vector<std::vector<int>>{{1, 1}, {5}, {1, 1, 1}}) {
            RandomWaveform wave = random_waveform(random, 40, 0);
            const double strength = TWO_PI * random.uniform(200.0, 400.0);
            wave.gx.assign(40, strength);
            wave.gy.assign(40, 0.3 * strength);
            wave.gz.assign(40, -0.4 * strength);
            wave.dt = 2e-5;
            const EngineCase problem(random_system(random, spins, Coupling::exact), wave);
            const EngineSector sector = problem.sector(grid);
            EngineOpenSector(sector);
            ASSERT_STREQ(EngineSectorPlan(), "interpolation") << grid.ndx << testing::PrintToString(spins);
            for (int k = 0; k < 20; ++k) {
                const bool corner = k < 8; // each of the eight once
                const int ix = corner ? (k & 1 ? grid.ndx : 1) : random.integer(1, grid.ndx);
                const int iy = corner ? (k & 2 ? grid.ndy : 1) : random.integer(1, grid.ndy);
                const int iz = corner ? (k & 4 ? grid.ndz : 1) : random.integer(1, grid.ndz);
                const Dense expected = problem.expected(
                    (ix - 1) * grid.dx + grid.x0, (iy - 1) * grid.dy + grid.y0, (iz - 1) * grid.dz + grid.z0);
                EXPECT_LE(distance(open_sector_propagator(sector.system.n, ix, iy, iz), expected), 2e-13)
                    << ix << ' ' << iy << ' ' << iz;
            }
        }
    }
}

TEST_P(FastSymmetry, ComputesTheVoxelsOfASteepGradientOneByOne) {
    // 30,000 turns over the grid: nodes enough for the voxels would fill the memory, and roundings be seen.
    Random random(198);
    RandomWaveform wave = random_waveform(random, 2048, 0);
    wave.dt = 1e-4;
    for (std::size_t j = 0; j < 2048; ++j) {
        wave.xb[j] = 300.0 * std::sin(0.1 * static_cast<double>(j));
        wave.yb[j] = 0.0;
        wave.gx[j] = 1.5e5;
        wave.gy[j] = 0.37 * 1.5e5;
        wave.gz[j] = -0.61 * 1.5e5;
    }
    const EngineCase problem(random_system(random, {1}, Coupling::weak), wave);
    const double step = 1.0 / 128.0;
    EngineOpenSector(problem.sector({256, 256, 256, -1.0, -1.0, -1.0, step, step, step}));
    EXPECT_STREQ(EngineSectorPlan(), "lanes");
    const Dense expected = problem.expected(-0.25, 0.5, 99.0 * step - 1.0);
    EXPECT_LE(distance(open_sector_propagator(2, 97, 193, 100), expected), problem.tolerance());
}

TEST_P(FastSymmetry, SeesNoDirectionInGradientsThatTurnNothing) {
    Random random(199);
    for (const double gradient : {1e-162, 1e-310}) { // whose squares are no numbers of full length
        RandomWaveform wave = random_waveform(random, 400, 0);
        wave.gx.assign(400, gradient);
        wave.gy.assign(400, 0.3 * gradient);
        const EngineCase problem(random_system(random, {1, 1, 1}, Coupling::exact), wave);
        EngineOpenSector(problem.sector({256, 2, 1, -1.0, 0.0, 0.0, 0.01, 0.1, 0.0}));
        EXPECT_STREQ(EngineSectorPlan(), "lanes");
        EXPECT_LE(distance(open_sector_propagator(8, 200, 2, 1), problem.expected(0.0, 0.0, 0.0)),
                  problem.tolerance());
    }
}

TEST_P(FastSymmetry, InterpolatesBlocksOfAlikeSpins) {
    Random random(195);
    const Grouped grouped = grouped_spins(random, {0, 1, 1, 1}, Coupling::exact);
    RandomWaveform wave = random_waveform(random, 24, 0);
    wave.dt = 2e-5;
    std::fill(wave.gz.begin(), wave.gz.end(), TWO_PI * 300.0);
    const EngineCase problem(grouped.system, wave);
    const EngineSector sector =
        with_groups(problem, {1, 1, 256, 0.0, 0.0, -1.0, 0.0, 0.0, 2.0 / 255}, grouped.group);
    const Dense expected = reference_propagator(sector, 1, 1, 77);
    EngineOpenSector(sector);
    EXPECT_STREQ(EngineSectorPlan(), "interpolation");
    EXPECT_LE(distance(open_sector_propagator(16, 1, 1, 77), expected), 2e-13);
}

TEST_P(FastSymmetry, ComputesFewPlacesOneByOne) {
    Random random(196);
    RandomWaveform wave = random_waveform(random, 24, 0);
    std::fill(wave.gz.begin(), wave.gz.end(), TWO_PI * 30000.0); // more turns than voxels
    const EngineCase problem(random_system(random, {1, 1}, Coupling::exact), wave);
    EngineOpenSector(problem.sector({1, 1, 256, 0.0, 0.0, -1.0, 0.0, 0.0, 2.0 / 255}));
    EXPECT_STREQ(EngineSectorPlan(), "lanes");
}

INSTANTIATE_TEST_SUITE_P(Engines, FastSymmetry, testing::ValuesIn(FastEngines()), EngineParamName);
