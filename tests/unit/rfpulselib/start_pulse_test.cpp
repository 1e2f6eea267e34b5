#include "rfpulselib.h"

#include "korlimits.h"
#include "support/console_script.h"
#include "support/constants.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>
#include <vector>

namespace {

using kor_test::play_console;
using kor_test::TWO_PI;

struct StartPulse {
    int ap = 0;
    double h = 0.0;
    std::vector<double> xb = std::vector<double>(kor::KOR_MAX_RF_POINTS);
    std::vector<double> yb = std::vector<double>(kor::KOR_MAX_RF_POINTS);
    int result = -1;
    kor_test::ConsoleOutput console;
};

StartPulse core(int ap, double h, int npar, double limit_hz, double flip, double phase) {
    StartPulse pulse;
    pulse.console = play_console("", [&] {
        pulse.result = kor::generate_optimization_start_pulse_core(ap, h, pulse.xb.data(), pulse.yb.data(),
                                                                   npar, limit_hz, flip, phase);
    });
    return pulse;
}

StartPulse prompted_pulse(const std::string& answers, int npar) {
    StartPulse pulse;
    pulse.console = play_console(answers, [&] {
        pulse.result =
            kor::GenerateOptimizationStartPulse(&pulse.ap, &pulse.h, pulse.xb.data(), pulse.yb.data(), npar);
    });
    return pulse;
}

double flip_degrees(const StartPulse& pulse, int ap, double h, double phase_deg) {
    const double phase = phase_deg * kor::KOR_PI / 180.0;
    double sum = 0.0;
    for (std::size_t k = 0; k < static_cast<std::size_t>(ap); ++k)
        sum += (pulse.xb[k] * std::cos(phase) + pulse.yb[k] * std::sin(phase)) * h;
    return sum * 180.0 / kor::KOR_PI;
}

TEST(StartPulseCore, OneModeIsAConstantWithTheWantedArea) {
    const StartPulse pulse = core(64, 1e-3 / 64, 4, 1000.0, 90.0, 0.0);
    ASSERT_EQ(pulse.result, 1);
    for (std::size_t k = 0; k < 64; ++k) {
        EXPECT_NEAR(pulse.xb[k], TWO_PI * 250.0, 1e-9);
        EXPECT_NEAR(pulse.yb[k], 0.0, 1e-9);
    }
    EXPECT_EQ(pulse.console.out, "\nOptimization start pulse generated (direct Fourier-domain):\n"
                                 "  ap                   = 64\n"
                                 "  h                    = 1.5625e-05 s\n"
                                 "  retained modes/ch    = 1\n"
                                 "  initial phase        = 0 deg\n"
                                 "  target flip angle    = 90 deg\n"
                                 "  actual flip angle    = 90 deg\n"
                                 "  max amplitude limit  = 1000 Hz\n"
                                 "  peak |B1| (internal) = 1570.8 rad/s\n"
                                 "  peak |B1|            = 250 Hz\n");
    EXPECT_EQ(pulse.console.err, "");
}

TEST(StartPulseCore, TheAmplitudeLimitWinsOverTheFlipAngle) {
    const StartPulse pulse = core(64, 1e-3 / 64, 4, 100.0, 90.0, 0.0);
    ASSERT_EQ(pulse.result, 1);
    EXPECT_NEAR(flip_degrees(pulse, 64, 1e-3 / 64, 0.0), 36.0, 1e-11);
    EXPECT_NE(pulse.console.out.find("  actual flip angle    = 36 deg\n"), std::string::npos);
    EXPECT_NE(pulse.console.out.find("  peak |B1|            = 100 Hz\n"
                                     "  NOTE: start pulse was rescaled to satisfy the RF amplitude limit.\n"),
              std::string::npos);
}

TEST(StartPulseCore, ModesFallOffAsARaisedCosine) {
    const int ap = 128;
    const StartPulse pulse = core(ap, 1e-5, 16, 1e6, 90.0, 0.0);
    ASSERT_EQ(pulse.result, 1);
    // Modes 0..3 weighted 1, 3/4, 1/4, 0; the zero of time is sample ap / 2.
    const double area = kor::KOR_PI / 2.0 / (1e-5 * ap);
    for (int k = 0; k < ap; ++k) {
        const double angle = TWO_PI * (k - ap / 2) / ap;
        const double expected =
            area * (1.0 + 2.0 * 0.75 * std::cos(angle) + 2.0 * 0.25 * std::cos(2.0 * angle));
        EXPECT_NEAR(pulse.xb[static_cast<std::size_t>(k)], expected, 1e-9 * area) << k;
    }
}

TEST(StartPulseCore, PhaseNinetyLiesAlongY) {
    const StartPulse pulse = core(32, 1e-5, 8, 1e6, 45.0, 90.0);
    ASSERT_EQ(pulse.result, 1);
    EXPECT_NEAR(flip_degrees(pulse, 32, 1e-5, 90.0), 45.0, 1e-11);
    for (std::size_t k = 0; k < 32; ++k)
        EXPECT_LE(std::fabs(pulse.xb[k]), 1e-15 * TWO_PI * 1e6);
    std::ostringstream peak; // six digits, as the summary has them
    peak << std::fabs(*std::max_element(pulse.yb.begin(), pulse.yb.begin() + 32));
    EXPECT_NE(pulse.console.out.find("  actual flip angle    = 45 deg\n"), std::string::npos);
    EXPECT_NE(pulse.console.out.find("  peak |B1| (internal) = " + peak.str() + " rad/s\n"),
              std::string::npos);
}

TEST(StartPulseCore, SamplesBehindThePulseDoNotCount) {
    const StartPulse expected = core(64, 1e-3 / 64, 4, 1000.0, 90.0, 30.0);
    StartPulse pulse;
    std::fill(pulse.xb.begin() + 64, pulse.xb.end(), 1e9);
    std::fill(pulse.yb.begin() + 64, pulse.yb.end(), -1e9);
    pulse.console = play_console("", [&] {
        pulse.result = kor::generate_optimization_start_pulse_core(64, 1e-3 / 64, pulse.xb.data(),
                                                                   pulse.yb.data(), 4, 1000.0, 90.0, 30.0);
    });
    EXPECT_EQ(pulse.console.out, expected.console.out);
    EXPECT_TRUE(std::equal(expected.xb.begin(), expected.xb.begin() + 64, pulse.xb.begin()));
    EXPECT_TRUE(std::equal(expected.yb.begin(), expected.yb.begin() + 64, pulse.yb.begin()));
    EXPECT_EQ(pulse.xb[64], 1e9);
    EXPECT_EQ(pulse.yb[64], -1e9);
}

TEST(StartPulseCore, RefusesWhatItCannotMake) {
    double one = 0.0;
    const auto refusal = [&](int ap, double h, double* xb, int npar, double limit, double flip) {
        int result = -1;
        const auto console = play_console("", [&] {
            result = kor::generate_optimization_start_pulse_core(ap, h, xb, xb, npar, limit, flip, 0.0);
        });
        EXPECT_EQ(result, 0);
        EXPECT_EQ(console.out, "");
        return console.err;
    };
    EXPECT_EQ(refusal(64, 1e-5, nullptr, 4, 1.0, 1.0), "GenerateOptimizationStartPulse: null pulse arrays\n");
    const std::string sizes = "GenerateOptimizationStartPulse: invalid ap/h/npar\n";
    EXPECT_EQ(refusal(1, 1e-5, &one, 4, 1.0, 1.0), sizes);
    EXPECT_EQ(refusal(64, 0.0, &one, 4, 1.0, 1.0), sizes);
    EXPECT_EQ(refusal(64, 1e-5, &one, 0, 1.0, 1.0), sizes);
    const std::string wishes = "GenerateOptimizationStartPulse: invalid RF amplitude or flip angle\n";
    EXPECT_EQ(refusal(64, 1e-5, &one, 4, 0.0, 1.0), wishes);
    EXPECT_EQ(refusal(64, 1e-5, &one, 4, 1.0, -1.0), wishes);
    const std::string modes = "GenerateOptimizationStartPulse: no usable Fourier modes\n";
    EXPECT_EQ(refusal(2, 1e-5, &one, 4, 1.0, 1.0), modes);
    EXPECT_EQ(refusal(64, 1e-5, &one, 3, 1.0, 1.0), modes);
}

TEST(StartPulseCore, AVanishingFlipAngleIsRefused) {
    const StartPulse pulse = core(64, 1e-300, 4, 1.0, 90.0, 0.0);
    EXPECT_EQ(pulse.result, 0);
    EXPECT_EQ(pulse.console.err, "GenerateOptimizationStartPulse: initial flip angle is zero\n");
}

TEST(GenerateOptimizationStartPulse, AsksForFiveNumbersAndTakesTheStepInMilliseconds) {
    const StartPulse pulse = prompted_pulse("64\n500\n90\n0\n0.015625\n", 4);
    ASSERT_EQ(pulse.result, 1);
    EXPECT_EQ(pulse.ap, 64);
    EXPECT_DOUBLE_EQ(pulse.h, 1.5625e-05);
    EXPECT_NEAR(pulse.xb[10], TWO_PI * 250.0, 1e-9);
    EXPECT_EQ(pulse.console.out.substr(0, pulse.console.out.find("\nOptimization")),
              "Total number of RF pulse sample points : RF-amplitude A [Hz]                    : "
              "Target flip angle [deg]                : Initial RF phase [deg]                 : "
              "Pulse time step h [ms]                 : ");
}

TEST(GenerateOptimizationStartPulse, NamesTheAnswerThatItCannotUse) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"x\n", "Invalid number of points\n"},
        {"1\n", "Invalid number of points\n"},
        {"8193\n", "Invalid number of points\n"},
        {"", "Invalid number of points\n"},
        {"100\n500\n90\n0\n0.01\n", "Invalid number of points: only a power of two can be optimized\n"},
        {"8191\n", "Invalid number of points: only a power of two can be optimized\n"},
        {"64\n0\n", "Invalid RF amplitude\n"},
        {"64\n", "Invalid RF amplitude\n"},
        {"64\n100\n-5\n", "Invalid target flip angle\n"},
        {"64\n100\n90\nabc\n", "Invalid initial RF phase\n"},
        {"64\n100\n90\n-20\n0\n", "Invalid time step\n"},
    };
    for (const auto& [answers, message] : cases) {
        const StartPulse pulse = prompted_pulse(answers, 4);
        EXPECT_EQ(pulse.result, 0) << answers;
        EXPECT_EQ(pulse.console.err, message) << answers;
    }
    EXPECT_EQ(prompted_pulse("", 0).console.err, "GenerateOptimizationStartPulse: npar not initialized\n");
    int result = -1;
    const auto console = play_console(
        "", [&] { result = kor::GenerateOptimizationStartPulse(nullptr, nullptr, nullptr, nullptr, 4); });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(console.err, "GenerateOptimizationStartPulse: null pointer argument\n");
}

TEST(GenerateOptimizationStartPulse, AcceptsTheLargestWaveform) {
    const StartPulse pulse = prompted_pulse("8192\n50000\n90\n0\n0.001\n", 160);
    ASSERT_EQ(pulse.result, 1);
    EXPECT_NEAR(flip_degrees(pulse, 8192, 1e-6, 0.0), 90.0, 1e-9);
}

TEST(StartPulseFixedGrid, ShowsTheGridAndAsksForTheRest) {
    StartPulse pulse;
    pulse.ap = 64;
    pulse.h = 1e-3 / 64;
    pulse.console = play_console("500\n90\n0\n", [&] {
        pulse.result = kor::GenerateOptimizationStartPulseFixedGridInteractive(
            &pulse.ap, &pulse.h, pulse.xb.data(), pulse.yb.data(), 4);
    });
    ASSERT_EQ(pulse.result, 1);
    EXPECT_EQ(pulse.console.out.substr(0, pulse.console.out.find("\nOptimization")),
              "Selected sector grid is fixed:\n  ap = 64\n  h  = 1.5625e-05 s  (0.015625 ms)\n"
              "RF-amplitude A [Hz]                    : Target flip angle [deg]                : "
              "Initial RF phase [deg]                 : ");
    EXPECT_NEAR(flip_degrees(pulse, 64, pulse.h, 0.0), 90.0, 1e-11);
}

TEST(StartPulseFixedGrid, RefusesAMissingGridOrParameterCount) {
    std::vector<double> xb(64), yb(64);
    const auto refusal = [&](int ap, double h, int npar) {
        return play_console("500\n90\n0\n",
                            [&] {
                                EXPECT_EQ(kor::GenerateOptimizationStartPulseFixedGridInteractive(
                                              &ap, &h, xb.data(), yb.data(), npar),
                                          0);
                            })
            .err;
    };
    EXPECT_EQ(refusal(64, 1e-5, 0),
              "GenerateOptimizationStartPulseFixedGridInteractive: npar not initialized\n");
    const std::string grid = "GenerateOptimizationStartPulseFixedGridInteractive: invalid ap/h\n";
    EXPECT_EQ(refusal(1, 1e-5, 4), grid);
    EXPECT_EQ(refusal(64, 0.0, 4), grid);
}

} // namespace
