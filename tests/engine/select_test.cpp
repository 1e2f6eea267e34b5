#include "support/engine_system.h"
#include "support/engines.h"

using namespace kor;
using namespace kor_test;

TEST(EngineSelect, IsTheFastEngineAtStart) {
    EXPECT_EQ(EngineSelected(), Engine::fast);
}

TEST(EngineSelect, StartsWithTheWidestInstructionSet) {
    const InstructionSet start = EngineInstructionSet();
    for (const InstructionSet set :
         {InstructionSet::baseline, InstructionSet::avx2, InstructionSet::avx512}) {
        if (EngineHasInstructionSet(set)) {
            EXPECT_GE(start, set);
        }
    }
    EXPECT_TRUE(EngineHasInstructionSet(InstructionSet::baseline));
}

TEST(EngineSelect, RefusesAnInstructionSetThatTheMachineLacks) {
    const InstructionSet start = EngineInstructionSet();
    for (const InstructionSet set :
         {InstructionSet::baseline, InstructionSet::avx2, InstructionSet::avx512}) {
        EngineUseInstructionSet(start);
        EXPECT_EQ(EngineUseInstructionSet(set), EngineHasInstructionSet(set));
        EXPECT_EQ(EngineInstructionSet(), EngineHasInstructionSet(set) ? set : start);
    }
    EngineUseInstructionSet(start);
}

TEST(EngineSelect, KeepsTheChoice) {
    for (const Engine engine : {Engine::reference, Engine::fast}) {
        EngineSelect(engine);
        EXPECT_EQ(EngineSelected(), engine);
    }
}

TEST(ReferenceEngine, AddsTheTermsOfItsHamiltonianInTheStatedOrder) {
    // The propagator from the public matrix operations, bit for bit.
    Random random(141);
    const EngineCase problem(random_system(random, {1, 2}, Coupling::exact), random_waveform(random, 9, 3));
    const EngineGrid grid = small_grid();
    const EngineSector sector = problem.sector(grid);
    const EngineSystem& s = sector.system;
    MarkedMatrix hs, ht, hb, U, expected;
    CMatIdentity(s.n, expected);
    for (int j = 0; j < sector.samples.count; ++j) {
        const auto k = static_cast<std::size_t>(j);
        const double w = problem.wave.gx[k] * (2 * grid.dx + grid.x0) +
                         problem.wave.gy[k] * (1 * grid.dy + grid.y0) +
                         problem.wave.gz[k] * (3 * grid.dz + grid.z0) + problem.wave.offset;
        CMatRMultAdd(s.n, *s.Fz, w, *s.H0, 1.0, hs);
        RMultCMat(s.n, problem.wave.xb[k], *s.Fx, ht);
        CMatAdd(s.n, hs, ht, hb);
        RMultCMat(s.n, problem.wave.yb[k], *s.Fy, ht);
        CMatAdd(s.n, hb, ht, hb);
        RMultCMat(s.n, -1.0, hb, hb);
        ExpMatrix(s.n, hb, problem.wave.dt, U);
        CMatMult(s.n, expected, U, expected);
    }
    EngineSelect(Engine::reference);
    EngineOpenSector(sector);
    MarkedMatrix r;
    EngineSectorPropagator(3, 2, 4, r);
    EXPECT_EQ(distance(r, expected.dense(s.n)), 0.0);
}
