#include "matrixmathlib.h"
#include "support/constants.h"
#include "support/marked_matrix.h"
#include "support/random_systems.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <utility>

using namespace kor;
using namespace kor_test;

namespace {

struct Line {
    double amplitude, frequency;
};

struct Lists {
    LineList csp, ssp;
    int Nc, Ns;
};

/// The sorted line lists of one observable; static, because the lists are large.
const Lists& spectrum(const Dense& rho, const Dense& H, const Dense& observable) {
    static Lists lists;
    MarkedMatrix Rho(rho);
    MarkedMatrix Hmat(H);
    MarkedMatrix Obs(observable);
    DoSpectrum(static_cast<int>(H.rows()), Rho, Hmat, Obs, lists.csp, lists.ssp, &lists.Nc, &lists.Ns);
    return lists;
}

void expect_lines(const LineList& list, int count, const std::vector<Line>& expected) {
    ASSERT_EQ(count, static_cast<int>(expected.size()));
    for (int k = 1; k <= count; ++k) {
        EXPECT_NEAR(list[1][k], expected[static_cast<std::size_t>(k - 1)].amplitude, 1e-12) << k;
        EXPECT_NEAR(list[2][k], expected[static_cast<std::size_t>(k - 1)].frequency, 1e-9) << k;
    }
}

void fill_list(LineList& list, const std::vector<Line>& lines) {
    zero_spectrum(list);
    for (std::size_t k = 0; k < lines.size(); ++k) {
        list[1][k + 1] = lines[k].amplitude;
        list[2][k + 1] = lines[k].frequency;
    }
}

std::vector<std::pair<double, double>> sorted(const std::vector<Line>& lines) {
    static LineList list;
    fill_list(list, lines);
    int count = static_cast<int>(lines.size());
    SortSpectrum(&count, list);
    std::vector<std::pair<double, double>> result;
    for (int k = 1; k <= count; ++k) {
        result.emplace_back(list[1][k], list[2][k]);
    }
    for (int k = count + 1; k <= KOR_MAX_LINES; ++k) {
        EXPECT_EQ(list[1][k], 0.0);
        EXPECT_EQ(list[2][k], 0.0);
    }
    return result;
}

using Pairs = std::vector<std::pair<double, double>>;

/// H of two spins 1/2, shifts and coupling in Hz.
Dense two_spins(double shift_a, double shift_b, double J, bool exact) {
    const std::vector<int> spins = {1, 1};
    Dense H = shift_a * spin_operator(spins, 1, Axis::z) + shift_b * spin_operator(spins, 2, Axis::z);
    for (const Axis axis : {Axis::x, Axis::y, Axis::z}) {
        if (exact || axis == Axis::z) {
            H += J * spin_operator(spins, 1, axis) * spin_operator(spins, 2, axis);
        }
    }
    return TWO_PI * H;
}

} // namespace

TEST(ZeroSpectrum, ClearsBothRowsOfLinesAndNothingElse) {
    static LineList list;
    for (auto& row : list) {
        for (double& cell : row) {
            cell = 5.0;
        }
    }
    zero_spectrum(list);
    for (int k = 0; k <= KOR_MAX_LINES; ++k) {
        EXPECT_EQ(list[0][k], 5.0);
        EXPECT_EQ(list[1][k], k ? 0.0 : 5.0);
        EXPECT_EQ(list[2][k], k ? 0.0 : 5.0);
    }
}

TEST(SortSpectrum, LeavesASingleLineAndAnEmptyListAlone) {
    EXPECT_EQ(sorted({{2.0, 10.0}}), Pairs({{2.0, 10.0}}));
    EXPECT_EQ(sorted({}), Pairs());
}

TEST(SortSpectrum, DoesNothingWithoutACount) {
    static LineList list;
    fill_list(list, {{1.0, 5.0}, {2.0, 3.0}});
    SortSpectrum(nullptr, list);
    EXPECT_EQ(list[2][1], 5.0);
    EXPECT_EQ(list[2][2], 3.0);
}

TEST(SortSpectrum, SortsByFrequency) {
    EXPECT_EQ(sorted({{1.0, 30.0}, {2.0, 10.0}, {3.0, 20.0}}),
              Pairs({{2.0, 10.0}, {3.0, 20.0}, {1.0, 30.0}}));
}

TEST(SortSpectrum, MergesNearLinesAtTheFirstFrequency) {
    EXPECT_EQ(sorted({{1.0, 10.0}, {0.5, 10.04}}), Pairs({{1.5, 10.0}}));
    EXPECT_EQ(sorted({{0.5, 10.04}, {1.0, 10.0}}), Pairs({{1.5, 10.04}}));
}

TEST(SortSpectrum, MergesUpToBothBoundsIncluded) {
    const double beyond = std::nextafter(0.05, 1.0);
    EXPECT_EQ(sorted({{1.0, 0.0}, {2.0, 0.05}}), Pairs({{3.0, 0.0}}));
    EXPECT_EQ(sorted({{1.0, 0.0}, {2.0, -0.05}}), Pairs({{3.0, 0.0}}));
    EXPECT_EQ(sorted({{1.0, 0.0}, {2.0, beyond}}), Pairs({{1.0, 0.0}, {2.0, beyond}}));
    EXPECT_EQ(sorted({{1.0, 0.0}, {2.0, -beyond}}), Pairs({{2.0, -beyond}, {1.0, 0.0}}));
    const double upper = 100.0 + 0.05; // the bound as doubles have it
    EXPECT_EQ(sorted({{1.0, 100.0}, {2.0, upper}}), Pairs({{3.0, 100.0}}));
    EXPECT_EQ(sorted({{1.0, 100.0}, {2.0, std::nextafter(upper, 200.0)}}).size(), 2u);
}

TEST(SortSpectrum, ComparesWithKeptFrequenciesSoThatChainsDoNotGrow) {
    EXPECT_EQ(sorted({{1.0, 0.0}, {2.0, 0.04}, {4.0, 0.08}}), Pairs({{3.0, 0.0}, {4.0, 0.08}}));
}

TEST(SortSpectrum, GivesALineToTheFirstOfTwoCandidates) {
    EXPECT_EQ(sorted({{1.0, 0.08}, {2.0, 0.0}, {4.0, 0.04}}), Pairs({{2.0, 0.0}, {5.0, 0.08}}));
}

TEST(SortSpectrum, KeepsAFullListOfDistinctLines) {
    std::vector<Line> lines;
    for (int k = 0; k < KOR_MAX_LINES; ++k) {
        lines.push_back({1.0 + k, 1000.0 - k});
    }
    const Pairs result = sorted(lines);
    ASSERT_EQ(result.size(), static_cast<std::size_t>(KOR_MAX_LINES));
    EXPECT_EQ(result.front(), std::make_pair(256.0, 745.0));
    EXPECT_EQ(result.back(), std::make_pair(1.0, 1000.0));
}

TEST(DoSpectrum, SeesTheSenseOfAVerySlowTurn) {
    const std::vector<int> spin = {1};
    const auto [x, y, z] = std::array{spin_operator(spin, 1, Axis::x), spin_operator(spin, 1, Axis::y),
                                      spin_operator(spin, 1, Axis::z)};
    // <Ix> = -sin(wt)/2 from Iy under w Iz, however small w is.
    constexpr double amplitude = -0.5;
    const Lists& slow = spectrum(y, TWO_PI * 1e-4 * z, x);
    expect_lines(slow.ssp, slow.Ns, {{amplitude, 1e-4}});
    const Lists& fast = spectrum(y, TWO_PI * 100.0 * z, x);
    expect_lines(fast.ssp, fast.Ns, {{amplitude, 100.0}});
}

TEST(DoSpectrum, OfOneSpinIsOneCosineLine) {
    const Dense Ix = one_spin_operator(1, Axis::x);
    const Dense H = TWO_PI * -120.0 * one_spin_operator(1, Axis::z);
    const Lists& lists = spectrum(Ix, H, Ix);
    expect_lines(lists.csp, lists.Nc, {{0.5, 120.0}});
    expect_lines(lists.ssp, lists.Ns, {});
}

TEST(DoSpectrum, GivesTheSineItsSenseOfRotation) {
    // exp(-iHt) Iy exp(+iHt) = Iy cos(wt) - Ix sin(wt) for H = w Iz, so <Ix> = -sin(wt)/2.
    const Dense Ix = one_spin_operator(1, Axis::x);
    const Dense Iy = one_spin_operator(1, Axis::y);
    const Dense Iz = one_spin_operator(1, Axis::z);
    const Lists& positive = spectrum(Iy, TWO_PI * 120.0 * Iz, Ix);
    expect_lines(positive.csp, positive.Nc, {});
    expect_lines(positive.ssp, positive.Ns, {{-0.5, 120.0}});
    const Lists& negative = spectrum(Iy, TWO_PI * -120.0 * Iz, Ix);
    expect_lines(negative.ssp, negative.Ns, {{0.5, 120.0}});
}

TEST(DoSpectrum, OfAWeaklyCoupledPairIsTwoDoublets) {
    const Dense Fx = total_operator({1, 1}, Axis::x);
    const Lists& lists = spectrum(Fx, two_spins(100.0, 300.0, 8.0, false), Fx);
    expect_lines(lists.csp, lists.Nc, {{0.5, 96.0}, {0.5, 104.0}, {0.5, 296.0}, {0.5, 304.0}});
    expect_lines(lists.ssp, lists.Ns, {});
}

TEST(DoSpectrum, OfAStronglyCoupledPairHasTheRoofEffect) {
    // AB pair: lines at the centre plus or minus (D + J)/2 and (D - J)/2, D = sqrt(delta^2 + J^2), with
    // intensities proportional to 1 - J/D (outer) and 1 + J/D (inner).
    const double J = 12.0;
    const double D = std::hypot(30.0, J);
    const double outer = 0.5 * (1.0 - J / D);
    const double inner = 0.5 * (1.0 + J / D);
    const Dense Fx = total_operator({1, 1}, Axis::x);
    const Lists& lists = spectrum(Fx, two_spins(200.0, 230.0, J, true), Fx);
    expect_lines(lists.csp, lists.Nc,
                 {{outer, 215.0 - (D + J) / 2.0},
                  {inner, 215.0 - (D - J) / 2.0},
                  {inner, 215.0 + (D - J) / 2.0},
                  {outer, 215.0 + (D + J) / 2.0}});
}

TEST(DoSpectrum, OfTwoEquivalentSpinsDoesNotShowTheirCoupling) {
    const Dense Fx = total_operator({1, 1}, Axis::x);
    const Lists& lists = spectrum(Fx, two_spins(50.0, 50.0, 7.0, true), Fx);
    expect_lines(lists.csp, lists.Nc, {{2.0, 50.0}});
}

TEST(DoSpectrum, OfMagnetisationAlongZIsEmpty) {
    const Lists& lists = spectrum(total_operator({1, 1}, Axis::z), two_spins(200.0, 230.0, 12.0, true),
                                  total_operator({1, 1}, Axis::x));
    EXPECT_EQ(lists.Nc, 0);
    EXPECT_EQ(lists.Ns, 0);
}

TEST(DoSpectrum, SignalOfItsLinesIsThePropagatedExpectationValue) {
    Random random(71);
    for (int trial = 0; trial < 20; ++trial) {
        const RandomSystem system = random_system(random, {1, 1}, Coupling::exact);
        const Dense rho = random.density(system.n);
        const Lists& lists = spectrum(rho, system.H0, system.Fx);
        double out[11];
        build_scalar_signal_from_spectrum(11, 0.02, lists.csp, lists.Nc, lists.ssp, lists.Ns, out);
        // Levels have no constant part in <Fx>: the diagonal of Fx vanishes in the eigenbasis here.
        for (int k = 0; k < 11; ++k) {
            const Dense U = exp_i(system.H0, -0.002 * k);
            const double expected = (system.Fx * U * rho * U.adjoint()).trace().real();
            EXPECT_NEAR(out[k], expected, 1e-10) << k;
        }
    }
}

TEST(DoSpectrum, KeepsTheFirst256LinesInTheOrderOfThePairs) {
    const int n = 24; // 552 ordered pairs, each a cosine line of amplitude 1
    Random random(72);
    Dense H = Dense::Zero(n, n);
    for (int k = 0; k < n; ++k) {
        H(k, k) = TWO_PI * (1000.0 * k + random.uniform(0.0, 500.0));
    }
    const Lists& lists = spectrum(Dense::Ones(n, n), H, Dense::Ones(n, n));
    double kept = 0.0;
    double largest_frequency = 0.0;
    for (int k = 1; k <= lists.Nc; ++k) {
        kept += lists.csp[1][k];
        largest_frequency = std::fmax(largest_frequency, lists.csp[2][k]);
    }
    EXPECT_NEAR(kept, 256.0, 1e-9); // merging adds amplitudes; what came after 256 lines is lost
    EXPECT_NEAR(largest_frequency, (H(n - 1, n - 1) - H(0, 0)).real() / TWO_PI, 1e-6); // the first row is in
    EXPECT_EQ(lists.Ns, 0);
}

TEST(DoSpectrum, LeavesAListWithoutACountAsItWasCollected) {
    const Dense Fx = total_operator({1, 1}, Axis::x);
    static LineList csp;
    static LineList ssp;
    MarkedMatrix F(Fx);
    MarkedMatrix H(two_spins(300.0, 100.0, 8.0, false));
    int Ns = -1;
    DoSpectrum(4, F, H, F, csp, ssp, nullptr, &Ns);
    EXPECT_EQ(Ns, 0);
    double sum = 0.0;
    for (int k = 1; k <= 8; ++k) { // four transitions, each in both orders
        EXPECT_NEAR(csp[1][k], 0.25, 1e-12) << k;
        sum += csp[2][k];
    }
    EXPECT_EQ(csp[1][9], 0.0);
    EXPECT_NEAR(sum, 2.0 * (96.0 + 104.0 + 296.0 + 304.0), 1e-9);
    int Nc = -1;
    DoSpectrum(4, F, H, F, csp, ssp, &Nc, nullptr);
    EXPECT_EQ(Nc, 4);
}

TEST(DoSpectrum, DropsAmplitudesUpToItsThreshold) {
    const Dense Ix = one_spin_operator(1, Axis::x);
    const Dense H = TWO_PI * 10.0 * one_spin_operator(1, Axis::z);
    EXPECT_EQ(spectrum(3e-12 * Ix, H, Ix).Nc, 0); // two orders of 0.75e-12
    EXPECT_EQ(spectrum(5e-12 * Ix, H, Ix).Nc, 1); // two orders of 1.25e-12
}

TEST(BuildScalarSignal, EndsAtTheAcquisitionTime) {
    static LineList csp;
    static LineList ssp;
    fill_list(csp, {{2.0, 3.0}, {0.5, 11.0}});
    fill_list(ssp, {{-1.0, 7.0}});
    double out[9];
    build_scalar_signal_from_spectrum(9, 0.4, csp, 2, ssp, 1, out);
    for (int k = 0; k < 9; ++k) {
        const double t = 0.05 * k;
        const double expected =
            2.0 * std::cos(TWO_PI * 3.0 * t) + 0.5 * std::cos(TWO_PI * 11.0 * t) - std::sin(TWO_PI * 7.0 * t);
        EXPECT_NEAR(out[k], expected, 1e-13) << k;
    }
}

TEST(BuildScalarSignal, OfOnePointIsTheSumAtTimeZero) {
    static LineList csp;
    static LineList ssp;
    fill_list(csp, {{2.0, 3.0}, {0.5, 11.0}});
    fill_list(ssp, {{-1.0, 7.0}});
    double out[2] = {9.0, 9.0};
    build_scalar_signal_from_spectrum(1, 0.4, csp, 2, ssp, 1, out);
    EXPECT_EQ(out[0], 2.5);
    EXPECT_EQ(out[1], 9.0);
    build_scalar_signal_from_spectrum(0, 0.4, csp, 2, ssp, 1, out);
    EXPECT_EQ(out[0], 2.5);
}

TEST(BuildScalarSignal, OfNoLinesIsZero) {
    static LineList none;
    double out[3] = {9.0, 9.0, 9.0};
    build_scalar_signal_from_spectrum(3, 1.0, none, 0, none, 0, out);
    for (const double sample : out) {
        EXPECT_EQ(sample, 0.0);
    }
}
