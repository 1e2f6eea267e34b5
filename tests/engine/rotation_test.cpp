#include "support/engine_system.h"
#include "support/engines.h"

using namespace kor;
using namespace kor_test;

namespace {

class Rotation : public EngineTest {};
class RotationParity : public EngineTest {};

const std::vector<int> kRotatedSizes = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 24, 64};

} // namespace

TEST_P(Rotation, PutsTheAdjointOnTheLeft) {
    Random random(121);
    for (const int n : kRotatedSizes) {
        const Dense r = random.unitary(n);
        const Dense rho = random.matrix(n); // any matrix, not a state alone
        MarkedMatrix R(r);
        MarkedMatrix Rho(rho);
        EngineRotate(n, R, Rho);
        EXPECT_LE(distance(Rho, r.adjoint() * rho * r), 1e-14 * n) << n;
        EXPECT_TRUE(Rho.border_untouched(n)) << n;
        EXPECT_EQ(distance(R, r), 0.0) << n;
    }
}

TEST_P(Rotation, ByTheIdentityChangesNothing) {
    Random random(122);
    const Dense rho = random.density(12);
    MarkedMatrix R(Dense::Identity(12, 12));
    MarkedMatrix Rho(rho);
    EngineRotate(12, R, Rho);
    EXPECT_EQ(distance(Rho, rho), 0.0);
}

TEST_P(Rotation, KeepsTraceHermiticityAndPurity) {
    Random random(123);
    for (const int n : kRotatedSizes) {
        const Dense rho = random.density(n);
        MarkedMatrix R(random.unitary(n));
        MarkedMatrix Rho(rho);
        EngineRotate(n, R, Rho);
        const Dense out = Rho.dense(n);
        EXPECT_LE(std::abs(out.trace() - rho.trace()), 1e-12) << n;
        EXPECT_LE(distance(out, out.adjoint()), 1e-13) << n;
        EXPECT_LE(std::abs((out * out).trace() - (rho * rho).trace()), 1e-12) << n;
    }
}

TEST_P(RotationParity, IsThatOfTheReferenceEngine) {
    Random random(124);
    for (const int n : kRotatedSizes) {
        const Dense rho = random.matrix(n);
        MarkedMatrix R(random.unitary(n));
        MarkedMatrix reference(rho);
        MarkedMatrix out(rho);
        EngineSelect(Engine::reference);
        EngineRotate(n, R, reference);
        EngineSelect(GetParam());
        EngineRotate(n, R, out);
        const Dense judge = reference.dense(n);
        EXPECT_LT(distance(out, judge), 1e-12 * largest(judge)) << n;
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, Rotation, testing::ValuesIn(AllEngines()), EngineParamName);
INSTANTIATE_TEST_SUITE_P(Engines, RotationParity, testing::ValuesIn(AllEngines()), EngineParamName);
