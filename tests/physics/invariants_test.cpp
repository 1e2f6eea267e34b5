// What unitary evolution keeps, over random systems.
#include "support/engine_system.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor;
using namespace kor_test;

namespace {

constexpr int kSystems = 200;

struct Evolved {
    Dense before, after, propagator;
};

/// A random system in a random state, after a random waveform at a random voxel.
Evolved evolve(Random& random) {
    const EngineCase problem(random_system(random, 16), random_waveform(random, random.integer(1, 20), 3));
    EngineOpenSector(problem.sector(small_grid()));
    MarkedMatrix r;
    EngineSectorPropagator(random.integer(1, 3), random.integer(1, 2), random.integer(1, 4), r);
    const Dense before = random.density(problem.system.n);
    MarkedMatrix rho(before);
    EngineRotate(problem.system.n, r, rho);
    return {before, rho.dense(problem.system.n), r.dense(problem.system.n)};
}

} // namespace

TEST(Evolution, KeepsTheTrace) {
    Random random(201);
    for (int k = 0; k < kSystems; ++k) {
        EXPECT_LE(std::abs(evolve(random).after.trace() - 1.0), 1e-12) << "system " << k;
    }
}

TEST(Evolution, KeepsTheStateHermitian) {
    Random random(202);
    for (int k = 0; k < kSystems; ++k) {
        const Dense rho = evolve(random).after;
        EXPECT_LE(distance(rho, rho.adjoint()), 1e-13) << "system " << k;
    }
}

TEST(Evolution, KeepsThePurity) {
    Random random(203);
    for (int k = 0; k < kSystems; ++k) {
        const Evolved e = evolve(random);
        const double before = (e.before * e.before).trace().real();
        const double after = (e.after * e.after).trace().real();
        EXPECT_NEAR(after, before, 1e-12) << "system " << k;
    }
}

TEST(Evolution, KeepsTheEigenvaluesOfTheState) {
    Random random(204);
    for (int k = 0; k < kSystems; ++k) {
        const Evolved e = evolve(random);
        const Eigen::SelfAdjointEigenSolver<Dense> before(e.before);
        const Eigen::SelfAdjointEigenSolver<Dense> after(e.after);
        EXPECT_LE(distance(before.eigenvalues().cast<Complex>(), after.eigenvalues().cast<Complex>()), 1e-12)
            << k;
    }
}

TEST(Evolution, HasAUnitaryPropagator) {
    Random random(205);
    for (int k = 0; k < kSystems; ++k) {
        const Dense r = evolve(random).propagator;
        EXPECT_LE(distance(r.adjoint() * r, Dense::Identity(r.rows(), r.cols())), 1e-12) << "system " << k;
    }
}

TEST(Evolution, LeavesTheUnitStateAlone) {
    Random random(206);
    for (int k = 0; k < kSystems; ++k) {
        const Dense r = evolve(random).propagator;
        MarkedMatrix R(r);
        MarkedMatrix rho(Dense::Identity(r.rows(), r.cols()));
        EngineRotate(static_cast<int>(r.rows()), R, rho);
        EXPECT_LE(distance(rho, Dense::Identity(r.rows(), r.cols())), 1e-12) << "system " << k;
    }
}

TEST(Evolution, IsUndoneByTheReversedWaveformOfTheNegatedHamiltonian) {
    Random random(207);
    for (int k = 0; k < 50; ++k) {
        const RandomSystem system = random_system(random, 16);
        const RandomWaveform wave = random_waveform(random, 15, 0);
        RandomSystem negated = system;
        negated.H0 = -system.H0;
        RandomWaveform reversed = wave;
        reversed.offset = -wave.offset;
        for (std::size_t j = 0; j < 15; ++j) {
            reversed.xb[j] = -wave.xb[14 - j];
            reversed.yb[j] = -wave.yb[14 - j];
        }
        const EngineCase there(system, wave);
        const EngineCase back(negated, reversed);
        MarkedMatrix r;
        MarkedMatrix rho(system.Fx);
        for (const EngineCase* leg : {&there, &back}) {
            EngineOpenSector(leg->sector());
            EngineSectorPropagator(1, 1, 1, r);
            EngineRotate(system.n, r, rho);
        }
        EXPECT_LE(distance(rho, system.Fx), 1e-11) << "system " << k;
    }
}
