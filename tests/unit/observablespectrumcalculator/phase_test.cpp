#include "observablespectrumcalculator/phase.h"

#include "korlimits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>

namespace kor {
namespace {

TEST(UnwrapPhase, LeavesStepsWithinAFullTurn) {
    // From -pi to pi is a full turn: half a turn would be the usual threshold.
    std::vector<double> theta = {0.0, 3.1, -3.1, 3.1, -3.1};
    const std::vector<double> before = theta;
    unwrap_phase(theta.data(), 5);
    EXPECT_EQ(theta, before);
}

TEST(UnwrapPhase, TakesWholeTurnsOffLargerSteps) {
    std::vector<double> theta = {0.0, 7.0, -9.0, 40.0};
    unwrap_phase(theta.data(), 4);
    const double turn = 2.0 * KOR_PI;
    EXPECT_NEAR(theta[1], 7.0 - turn, 1e-12);
    EXPECT_NEAR(theta[2], -9.0 + turn, 1e-12);
    EXPECT_NEAR(theta[3], 40.0 - 6.0 * turn, 1e-12);
    for (std::size_t i = 1; i < theta.size(); ++i)
        EXPECT_LE(std::fabs(theta[i] - theta[i - 1]), turn + 1e-12);
}

TEST(UnwrapPhase, ComparesWithTheCorrectedNeighbour) {
    std::vector<double> theta = {0.0, 7.0, 7.5};
    unwrap_phase(theta.data(), 3);
    EXPECT_NEAR(theta[1], 7.0 - 2.0 * KOR_PI, 1e-12);
    EXPECT_NEAR(theta[2], 7.5 - 2.0 * KOR_PI, 1e-12) << "half a unit from 7, but more than a turn from 0.7";
}

TEST(UnwrapPhase, PassesOverNonFinitePhases) {
    const double infinity = std::numeric_limits<double>::infinity();
    std::vector<double> theta = {0.0, infinity, 1.0};
    unwrap_phase(theta.data(), 3);
    EXPECT_EQ(theta[1], infinity);
    EXPECT_EQ(theta[2], 1.0);
}

/// Interleaved points of magnitude 1 + k whose phase is a straight line.
std::vector<double> line_spectrum(int pp, double df, double fref, double phi0, double phi1) {
    std::vector<double> spec;
    for (int k = 0; k < pp; ++k) {
        const double x = (k - pp / 2) * df - fref;
        const std::complex<double> point = std::polar(1.0 + k, phi0 + phi1 * x);
        spec.insert(spec.end(), {point.real(), point.imag()});
    }
    return spec;
}

TEST(FitPhase, FindsTheStraightLine) {
    for (const int pp : {2, 9, 64}) {
        double phi0 = 9.0, phi1 = 9.0;
        const std::vector<double> spec = line_spectrum(pp, 0.5, 3.0, 0.4, 0.03);
        fit_phase0_phase1(spec.data(), pp, 0.5, 3.0, &phi0, &phi1);
        EXPECT_NEAR(phi0, 0.4, 1e-12) << pp;
        EXPECT_NEAR(phi1, 0.03, 1e-13) << pp;
    }
}

TEST(FitPhase, LeavesOutPointsWithoutMagnitude) {
    double phi0 = 0.0, phi1 = 0.0;
    std::vector<double> spec = line_spectrum(16, 1.0, 0.0, 0.2, 0.1);
    spec[6] = -1e-10; // phase pi, which would bend the line
    spec[7] = 0.0;
    fit_phase0_phase1(spec.data(), 16, 1.0, 0.0, &phi0, &phi1);
    EXPECT_NEAR(phi0, 0.2, 1e-12);
    EXPECT_NEAR(phi1, 0.1, 1e-12);
}

TEST(FitPhase, CountsPointsFromAMagnitudeOf1e9th) {
    for (const double magnitude : {1.1e-9, 0.9e-9}) {
        std::vector<double> spec = line_spectrum(8, 1.0, 0.0, 0.2, 0.1);
        for (std::size_t k = 0; k < spec.size(); ++k)
            spec[k] *= magnitude / static_cast<double>(1 + k / 2);
        double phi0 = 9.0, phi1 = 9.0;
        fit_phase0_phase1(spec.data(), 8, 1.0, 0.0, &phi0, &phi1);
        EXPECT_NEAR(phi0, magnitude > 1e-9 ? 0.2 : 0.0, 1e-12) << magnitude;
        EXPECT_NEAR(phi1, magnitude > 1e-9 ? 0.1 : 0.0, 1e-12) << magnitude;
    }
}

TEST(FitPhase, NeedsADeterminantOf1e30th) {
    // Two points of magnitude w, df apart, one of them at 0: D = (w df)^2.
    const double w = 2e-9;
    const double spec[] = {w, 0.0, w * std::cos(0.1), w * std::sin(0.1)};
    double phi0 = 9.0, phi1 = 9.0;
    fit_phase0_phase1(spec, 2, 1e-6, 0.0, &phi0, &phi1);
    EXPECT_NEAR(phi0, 0.1, 1e-9);
    EXPECT_NEAR(phi1, 1e5, 1e-3);
    fit_phase0_phase1(spec, 2, 4e-7, 0.0, &phi0, &phi1);
    EXPECT_EQ(phi0, 0.0);
    EXPECT_EQ(phi1, 0.0);
}

TEST(FitPhase, WeighsPointsByTheirMagnitude) {
    const double spec[] = {1.0, 0.0, 0.0, 3.0, 1.0, 0.0}; // x = -1, 0, 1; phases 0, pi/2, 0
    double phi0 = 0.0, phi1 = 9.0;
    fit_phase0_phase1(spec, 3, 1.0, 0.0, &phi0, &phi1);
    EXPECT_NEAR(phi1, 0.0, 1e-14);
    EXPECT_NEAR(phi0, 3.0 * (KOR_PI / 2.0) / 5.0, 1e-14);
}

TEST(FitPhase, GivesZeroWhereNoLineIsDetermined) {
    const double one_point[] = {0.0, 2.0};
    const double empty[] = {0.0, 0.0, 0.0, 0.0};
    double phi0 = 9.0, phi1 = 9.0;
    fit_phase0_phase1(one_point, 1, 1.0, 0.0, &phi0, &phi1);
    EXPECT_EQ(phi0, 0.0);
    EXPECT_EQ(phi1, 0.0);
    phi0 = phi1 = 9.0;
    fit_phase0_phase1(empty, 2, 1.0, 0.0, &phi0, &phi1);
    EXPECT_EQ(phi0, 0.0);
    EXPECT_EQ(phi1, 0.0);
    phi0 = phi1 = 9.0;
    fit_phase0_phase1(empty, 0, 1.0, 0.0, &phi0, &phi1);
    EXPECT_EQ(phi0, 0.0);
    EXPECT_EQ(phi1, 0.0);
}

} // namespace
} // namespace kor
