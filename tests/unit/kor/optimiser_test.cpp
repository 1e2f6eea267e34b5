#include "kor/optimiser.h"

#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "kor/spin_system.h"
#include "rfpulseparam.h"
#include "support/console_script.h"
#include "support/constants.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace {

using kor::g_runtime;
using kor_test::play_console;
using kor_test::TWO_PI;

/// One spin 1/2 at `offset_hz`, state Iz, operator Iy, and a pulse of `points` samples in `duration` seconds
/// with two modes per component. trace(Iy Iy) = 1/2, so that <Iy> of a perfect 90 degree pulse about x is
/// 1/2.
void prepare_offset_spin(double offset_hz, int points = 64, double duration = 1e-3) {
    kor::KOR_SetSmokeCheckMode(1);
    g_runtime.Nspins = 1;
    g_runtime.Jexact = 1;
    g_runtime.quantnum[1] = 1;
    g_runtime.relspinamp[1] = 1.0;
    g_runtime.resofreqs[1] = offset_hz;
    kor::BuildSpinSystemFromPulseSequenceGlobals();
    kor::KOR_SetSmokeCheckMode(0);
    kor::CopyCMatrix(2, g_runtime.Iztot, g_runtime.densmat);
    kor::CopyCMatrix(2, g_runtime.Iytot, g_runtime.Istat);
    g_runtime.ap = points;
    g_runtime.h = duration / points;
    g_runtime.gs = g_runtime.x0_s = 0.0;
    g_runtime.npar = 8;
    g_runtime.kor_ncom = 0;
    std::fill_n(g_runtime.xb, points, 0.0);
    std::fill_n(g_runtime.yb, points, 0.0);
}

/// A constant field along x as parameters: mode 0 of x is the field times the number of points.
std::vector<double> constant_pulse(double field_hz) {
    std::vector<double> par(8, 0.0);
    par[0] = TWO_PI * field_hz * g_runtime.ap;
    return par;
}

/// -Re <Iy> behind a constant field along x at an offset: the magnetisation turns about the tilted effective
/// field. Textbook rotation with the sense of rho -> exp(+iHt) rho exp(-iHt).
double closed_form(double field_hz, double offset_hz, double duration) {
    const double effective = TWO_PI * std::hypot(field_hz, offset_hz);
    return -0.5 * field_hz * TWO_PI / effective * std::sin(effective * duration);
}

/// The log with an imaginary part at rounding level written as 0.
std::string without_imaginary_rounding(const std::string& log) {
    const std::size_t begin = log.find("+ i ") + 4;
    const std::size_t end = log.find('\n', begin);
    EXPECT_LT(std::fabs(std::stod(log.substr(begin, end - begin))), 1e-14);
    return log.substr(0, begin) + "0.000000000000e+00" + log.substr(end);
}

TEST(OptimiserObjective, IsMinusTheExpectationValueBehindThePulse) {
    for (const double offset : {0.0, 130.0, -400.0}) {
        for (const double field : {250.0, 90.0, 700.0}) {
            prepare_offset_spin(offset);
            const auto par = constant_pulse(field);
            double value = 0.0;
            const auto console = play_console("", [&] { value = kor::fnc(par.data()); });
            EXPECT_NEAR(value, closed_form(field, offset, 1e-3), 1e-12);
            char lines[200];
            std::snprintf(lines, sizeof lines,
                          "Expectation Value <O>        : %.12e + i 0.000000000000e+00\n"
                          "Objective used by optimizer  : %.12e  (= -Re <O>)\n\n",
                          -value, value);
            EXPECT_EQ(without_imaginary_rounding(console.out), lines);
        }
    }
}

TEST(OptimiserObjective, LeavesTheStartStateAndAddsTheGradientOffset) {
    prepare_offset_spin(0.0);
    g_runtime.gs = TWO_PI * 200.0;
    g_runtime.x0_s = 0.65;
    const auto par = constant_pulse(250.0);
    double value = 0.0;
    play_console("", [&] { value = kor::fnc(par.data()); });
    EXPECT_NEAR(value, closed_form(250.0, 130.0, 1e-3), 1e-12);
    EXPECT_EQ(g_runtime.densmat[1][1][1], 0.5);
    EXPECT_EQ(g_runtime.densmat[1][2][2], 0.0);
}

TEST(OptimiserGradient, AgreesWithCentralDifferences) {
    prepare_offset_spin(170.0);
    std::vector<double> par = {TWO_PI * 200.0 * 64, 3e3, -2e4, 1e3, 4e3, -5e3, 6e3, 7e3};
    std::vector<double> gradient(8), central(8);
    play_console("", [&] {
        kor::dfnc(kor::fnc(par.data()), par.data(), 8, gradient.data());
        for (std::size_t i = 0; i < 8; ++i) {
            std::vector<double> up = par, down = par;
            up[i] += 1.0;
            down[i] -= 1.0;
            central[i] = (kor::fnc(up.data()) - kor::fnc(down.data())) / 2.0;
        }
    });
    // A forward difference over p / 1e7 carries the rounding of the objective, a few 1e-15, divided by the
    // step.
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_NEAR(gradient[i], central[i], 3e-8 / std::fabs(par[i]) + 1e-6 * std::fabs(central[i])) << i;
}

TEST(OptimiserGradient, StepsByTheTenMillionthOfAParameterOrOfOne) {
    prepare_offset_spin(0.0);
    // Mode 0 of x is a field of p / 64 rad/s; over 64 samples of 1 s it turns by p rad.
    g_runtime.h = 1.0;
    g_runtime.npar = 8;
    std::vector<double> par = {-3.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    std::vector<double> gradient(8);
    const auto console = play_console("", [&] { kor::dfnc(0.25, par.data(), 8, gradient.data()); });
    const auto objective = [](double p) { return -0.5 * std::sin(p); };
    EXPECT_NEAR(gradient[0] * -3e-7, objective(-3.0 - 3e-7) - 0.25, 1e-13);
    EXPECT_NEAR(gradient[1] * 1e-7, objective(-3.0) - 0.25, 1e-7);
    EXPECT_EQ(std::count(console.out.begin(), console.out.end(), '\n'), 24);
}

TEST(OptimiserLine, WithoutALineEvaluatesAtParWhateverThePlace) {
    prepare_offset_spin(0.0);
    const auto par = constant_pulse(100.0);
    std::copy(par.begin(), par.end(), g_runtime.par);
    double first = 0.0, second = 1.0, beyond = 2.0;
    play_console("", [&] {
        g_runtime.kor_ncom = 0;
        first = kor::func(0.0);
        second = kor::func(5.0);
        g_runtime.kor_ncom = 161;
        beyond = kor::func(-7.0);
    });
    EXPECT_NEAR(first, closed_form(100.0, 0.0, 1e-3), 1e-13);
    EXPECT_EQ(first, second);
    EXPECT_EQ(first, beyond);
}

/// The line p0 = z along mode 0 of x at resonance: func(z) = -sin(z) / 2, a function known everywhere.
void prepare_sine_line(double start) {
    prepare_offset_spin(0.0, 64, 64.0);
    g_runtime.kor_ncom = 8;
    std::fill_n(g_runtime.pcom, 8, 0.0);
    std::fill_n(g_runtime.xicom, 8, 0.0);
    g_runtime.pcom[0] = start;
    g_runtime.xicom[0] = 1.0;
}

TEST(Mnbrak, BracketsAMinimumDownhill) {
    for (const double start : {0.0, 0.4, -2.5, -9.0, 3.0}) {
        prepare_sine_line(start);
        double ax = 0.0, bx = 0.3, cx = 0.0, fa = 0.0, fb = 0.0, fc = 0.0;
        play_console("", [&] { kor::mnbrak(&ax, &bx, &cx, &fa, &fb, &fc); });
        EXPECT_TRUE((ax < bx && bx < cx) || (cx < bx && bx < ax)) << start;
        EXPECT_LE(fb, fa);
        EXPECT_LE(fb, fc);
        EXPECT_NEAR(fa, -0.5 * std::sin(start + ax), 1e-12);
        EXPECT_NEAR(fb, -0.5 * std::sin(start + bx), 1e-12);
        EXPECT_NEAR(fc, -0.5 * std::sin(start + cx), 1e-12);
    }
}

/// A place on a line and its objective.
struct Place {
    double x, f;
};

/// Where the parabola through three places has its extremum, by Newton's divided differences.
double parabola_extremum(const Place& a, const Place& b, const Place& c) {
    const double first = (b.f - a.f) / (b.x - a.x);
    const double second = ((c.f - b.f) / (c.x - b.x) - first) / (c.x - a.x);
    return 0.5 * (a.x + b.x - first / second);
}

Place on_sine(double start, double x) {
    return {x, -0.5 * std::sin(start + x)};
}

// From a and b downhill by the golden ratio to c; where the parabola's extremum lies between b and c and
// below both, it is the middle of the bracket.
TEST(Mnbrak, TakesTheExtremumOfTheParabolaBetweenItsLastTwoPlaces) {
    const struct {
        double start, a, b;
    } lines[] = {{0.97, 0.0, 0.3}, {0.5, 0.0, 0.5}, {1.2, -0.1, 0.1}, {0.25, 0.5, 0.9}, {2.97, -0.7, -1.0}};
    for (const auto& [start, a, b] : lines) {
        prepare_sine_line(start);
        const double c = b + 1.618034 * (b - a);
        const double vertex = parabola_extremum(on_sine(start, a), on_sine(start, b), on_sine(start, c));
        ASSERT_GT((b - vertex) * (vertex - c), 0.0);
        double ax = a, bx = b, cx = 0.0, fa = 0.0, fb = 0.0, fc = 0.0;
        play_console("", [&] { kor::mnbrak(&ax, &bx, &cx, &fa, &fb, &fc); });
        EXPECT_EQ(ax, b);
        EXPECT_NEAR(bx, vertex, 1e-12) << start;
        EXPECT_NEAR(cx, c, 1e-15);
    }
}

/// The objectives in the order of their evaluation, as the log has them.
std::vector<double> objectives(const std::string& log) {
    const std::string label = "Objective used by optimizer  : ";
    std::vector<double> values;
    for (std::size_t at = log.find(label); at != std::string::npos; at = log.find(label, at + 1))
        values.push_back(std::stod(log.substr(at + label.size())));
    return values;
}

// The parabola through places on a slope that grows has a maximum, which leads nowhere.
TEST(Mnbrak, WalksOnByTheGoldenRatioWhereTheSlopeGrows) {
    for (const double start : {-1.5, -1.3, -1.1}) {
        prepare_sine_line(start);
        double ax = 0.0, bx = 0.1, cx = 0.0, fa = 0.0, fb = 0.0, fc = 0.0;
        const auto values =
            objectives(play_console("", [&] { kor::mnbrak(&ax, &bx, &cx, &fa, &fb, &fc); }).out);
        ASSERT_GE(values.size(), 4U);
        const double third = 0.1 + 1.618034 * 0.1;
        const double fourth = third + 1.618034 * (third - 0.1);
        EXPECT_NEAR(values[2], on_sine(start, third).f, 1e-12);
        EXPECT_NEAR(values[3], on_sine(start, fourth).f, 1e-12) << start;
    }
}

/// The objectives of a search on the sine line from 0.
std::vector<double> brent_objectives(double ax, double bx, double cx, double tolerance) {
    prepare_sine_line(0.0);
    double xmin = 0.0;
    return objectives(play_console("", [&] { kor::brent(ax, bx, cx, tolerance, &xmin); }).out);
}

TEST(Brent, StepsFirstIntoTheLargerPartByTheGoldenSection) {
    const double golden = (3.0 - std::sqrt(5.0)) / 2.0;
    const struct {
        double middle, second;
    } searches[] = {{1.0, 1.0 + golden * 3.0}, {3.0, 3.0 - golden * 3.0}, {2.0, 2.0 - golden * 2.0}};
    for (const auto& [middle, second] : searches) {
        const auto values = brent_objectives(0.0, middle, 4.0, 1e-6);
        ASSERT_GE(values.size(), 2U);
        EXPECT_NEAR(values[0], on_sine(0.0, middle).f, 1e-12);
        EXPECT_NEAR(values[1], on_sine(0.0, second).f, 2e-7) << middle;
    }
}

// Golden sections alone would need forty evaluations for eight digits.
TEST(Brent, ConvergesFasterThanByGoldenSections) {
    for (const double low : {0.0, 0.3, 0.9})
        for (const double middle : {1.2, 1.4, 1.9})
            for (const double high : {2.4, 3.0, 4.0})
                EXPECT_LE(brent_objectives(low, middle, high, 1e-8).size(), 12U)
                    << low << " " << middle << " " << high;
}

// The objective falls from one end to the other: the parabola points beyond that end, and golden sections
// lead there.
TEST(Brent, ClosesInOnTheLowerEndWithoutAMinimumInside) {
    for (const double end : {0.4, 0.8, 1.2, 1.5})
        for (const double part : {0.02, 0.1, 0.3, 0.5, 0.7, 0.9, 0.97}) {
            const double mirrored = kor::KOR_PI - end; // at the line's minimum
            const double middle = kor::KOR_PI - part * end;
            for (const auto& values : {brent_objectives(0.0, part * end, end, 1e-6),
                                       brent_objectives(mirrored, middle, kor::KOR_PI, 1e-6)}) {
                const auto [least, most] = std::minmax_element(values.begin(), values.end());
                EXPECT_NEAR(*least, on_sine(0.0, end).f, 3e-6) << end << " " << part;
                EXPECT_GE(*least, on_sine(0.0, end).f - 1e-12) << end << " " << part;
                EXPECT_LE(*most, 1e-12) << end << " " << part;
                EXPECT_LE(values.size(), 30U) << end << " " << part;
            }
        }
}

TEST(Brent, FindsTheMinimumInsideTheBracket) {
    prepare_sine_line(0.0);
    double xmin = 0.0, minimum = 0.0;
    play_console("", [&] { minimum = kor::brent(0.0, 1.0, 4.0, 1e-6, &xmin); });
    EXPECT_NEAR(xmin, kor::KOR_PI / 2.0, 1e-5);
    EXPECT_NEAR(minimum, -0.5, 1e-10);
    // The bracket may run the other way.
    play_console("", [&] { minimum = kor::brent(4.0, 1.0, 0.0, 1e-6, &xmin); });
    EXPECT_NEAR(xmin, kor::KOR_PI / 2.0, 1e-5);
}

TEST(Linmin, MovesThePointAndTurnsTheDirectionIntoTheStep) {
    prepare_offset_spin(0.0, 64, 64.0);
    std::vector<double> point(9, 0.0), direction(9, 0.0);
    point[0] = 0.2;
    direction[0] = 0.25;
    point[8] = 3.0; // behind the eight parameters
    direction[8] = 5.0;
    double minimum = 0.0;
    play_console("", [&] { kor::linmin(point.data(), direction.data(), 8, &minimum); });
    EXPECT_NEAR(point[0], kor::KOR_PI / 2.0, 1e-3);
    EXPECT_DOUBLE_EQ(direction[0], point[0] - 0.2);
    EXPECT_NEAR(minimum, -0.5 * std::sin(point[0]), 1e-13);
    EXPECT_EQ(point[8], 3.0);
    EXPECT_EQ(direction[8], 5.0);
    EXPECT_EQ(g_runtime.kor_ncom, 8);
}

TEST(Linmin, MovesAPointOfOneParameter) {
    prepare_offset_spin(0.0, 64, 64.0);
    std::vector<double> point(8, 0.0);
    point[0] = 0.2;
    double direction = 0.25;
    double minimum = 0.0;
    play_console("", [&] { kor::linmin(point.data(), &direction, 1, &minimum); });
    EXPECT_NEAR(point[0], kor::KOR_PI / 2.0, 1e-3);
    EXPECT_NEAR(minimum, -0.5 * std::sin(point[0]), 1e-13);
}

TEST(Linmin, KeepsToItsArraysForALineThatIsTooLong) {
    prepare_offset_spin(0.0);
    std::vector<double> point(200, 1.0), direction(200, 2.0);
    std::fill_n(g_runtime.xt, kor::KOR_MAX_PARAMETERS, 7.0);
    double minimum = 0.0;
    play_console("", [&] { kor::linmin(point.data(), direction.data(), 200, &minimum); });
    EXPECT_EQ(g_runtime.kor_ncom, 200);
    EXPECT_EQ(g_runtime.pcom[159], 1.0);
    EXPECT_EQ(g_runtime.xicom[159], 2.0);
    EXPECT_EQ(g_runtime.xt[0], 7.0);
}

TEST(Frprmn, ReachesTheBestPulseOfOneSpinOffResonance) {
    prepare_offset_spin(120.0);
    auto par = constant_pulse(180.0);
    int iterations = 0;
    double minimum = 0.0, start = 0.0;
    play_console("", [&] {
        start = kor::fnc(par.data());
        kor::frprmn(par.data(), 8, 3e-5, &iterations, &minimum);
    });
    EXPECT_GE(iterations, 1);
    EXPECT_LT(minimum, start);
    // No pulse does better than turning all of Iz into Iy: -trace(Iy Iy) = -1/2.
    EXPECT_GE(minimum, -0.5 - 1e-12);
    EXPECT_LT(minimum, -0.5 * 0.999);
    EXPECT_EQ(g_runtime.densmat[1][1][1], 0.5);
    EXPECT_EQ(g_runtime.densmat[1][2][1], 0.0);
    EXPECT_EQ(g_runtime.densmat[1][2][2], 0.0);
    EXPECT_EQ(g_runtime.densmat[2][2][1], -0.5);
    double again = 0.0;
    play_console("", [&] { again = kor::fnc(par.data()); });
    EXPECT_NEAR(again, minimum, 1e-9);
}

// Close to its minimum the objective is a quadratic of the eight parameters: conjugate directions find the
// way down in a few line searches. Whether the last percent is still worth one more hangs on the last bits of
// the forward differences.
TEST(Frprmn, NearAMinimumConvergesAsOnAQuadratic) {
    prepare_offset_spin(120.0);
    auto par = constant_pulse(250.0);
    int iterations = 0;
    double best = 0.0, minimum = 0.0, start = 0.0;
    play_console("", [&] { kor::frprmn(par.data(), 8, 1e-9, &iterations, &best); });
    for (std::size_t i = 0; i < 8; ++i)
        par[i] += 0.02 * par[0] * (i % 2 == 0 ? 1.0 : -0.5);
    play_console("", [&] {
        start = kor::fnc(par.data());
        kor::frprmn(par.data(), 8, 1e-9, &iterations, &minimum);
    });
    EXPECT_GT(start, best + 1e-5);
    EXPECT_NEAR(minimum, best, 0.03 * (start - best));
    EXPECT_LE(iterations, 8);
}

// Polak & Ribiere: the second line runs along g1 + gamma g0 with gamma = (g1 - g0).g1 / g0.g0, g = -gradient.
TEST(Frprmn, TheSecondLineIsThePolakRibiereDirection) {
    constexpr int n = 8;
    prepare_offset_spin(120.0);
    auto par = constant_pulse(120.0);
    for (std::size_t j = 1; j < n; ++j) // far from 0, where forward differences are exact to 1e-9
        par[j] = par[0] * (0.1 + 0.03 * static_cast<double>(j));
    auto point = par;
    double f0 = 0.0, f1 = 0.0, f2 = 0.0;
    std::vector<double> first(n), second(n), step(n);
    play_console("", [&] {
        f0 = kor::fnc(point.data());
        kor::dfnc(f0, point.data(), n, first.data());
        std::transform(first.begin(), first.end(), step.begin(), std::negate<>());
        kor::linmin(point.data(), step.data(), n, &f1);
        kor::dfnc(kor::fnc(point.data()), point.data(), n, second.data());
    });
    double change = 0.0, size = 0.0;
    for (std::size_t j = 0; j < n; ++j) {
        change += (second[j] - first[j]) * second[j];
        size += first[j] * first[j];
    }
    std::vector<double> direction(n);
    for (std::size_t j = 0; j < n; ++j)
        direction[j] = -second[j] - change / size * first[j];
    step = direction;
    play_console("", [&] { kor::linmin(point.data(), step.data(), n, &f2); });
    const double first_change = 2.0 * (f0 - f1) / (std::fabs(f0) + std::fabs(f1));
    const double second_change = 2.0 * (f1 - f2) / (std::fabs(f1) + std::fabs(f2));
    ASSERT_GT(first_change, 1.01 * second_change);
    int iterations = 0;
    double minimum = 0.0;
    play_console(
        "", [&] { kor::frprmn(par.data(), n, 0.5 * (first_change + second_change), &iterations, &minimum); });
    EXPECT_EQ(iterations, 2);
    EXPECT_NEAR(minimum, f2, 1e-6);
    for (std::size_t j = 0; j < n; ++j)
        EXPECT_NEAR(g_runtime.xicom[j], direction[j], 1e-4 * std::sqrt(size)) << j;
}

TEST(Frprmn, AVanishingGradientEndsAfterTheFirstLineSearch) {
    prepare_offset_spin(0.0);
    kor::CMatZero(2, g_runtime.Istat);
    auto par = constant_pulse(180.0);
    int iterations = 0;
    double minimum = 1.0;
    play_console("", [&] { kor::frprmn(par.data(), 8, 3e-5, &iterations, &minimum); });
    EXPECT_EQ(iterations, 1);
    EXPECT_EQ(minimum, 0.0);
}

TEST(Frprmn, AcceptedPointsNeverGetWorse) {
    prepare_offset_spin(-310.0);
    auto par = constant_pulse(100.0);
    double last = std::numeric_limits<double>::infinity();
    for (int restart = 0; restart < 4; ++restart) {
        int iterations = 0;
        double minimum = 0.0;
        play_console("", [&] { kor::frprmn(par.data(), 8, 1e-3, &iterations, &minimum); });
        EXPECT_LE(minimum, last + 1e-12);
        last = minimum;
    }
}

TEST(OptimisedPulseIsFinite, SeesEverySample) {
    std::vector<double> xb(4, 1.0), yb(4, -1.0);
    EXPECT_EQ(kor::optimised_pulse_is_finite(4, xb.data(), yb.data()), 1);
    yb[3] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(kor::optimised_pulse_is_finite(4, xb.data(), yb.data()), 0);
    EXPECT_EQ(kor::optimised_pulse_is_finite(3, xb.data(), yb.data()), 1);
    xb[0] = std::numeric_limits<double>::infinity();
    EXPECT_EQ(kor::optimised_pulse_is_finite(3, xb.data(), yb.data()), 0);
}

TEST(SignDouble, CarriesTheSignOfTheSecond) {
    EXPECT_EQ(kor::sign_double(-3.0, 0.0), 3.0);
    EXPECT_EQ(kor::sign_double(3.0, -1e-300), -3.0);
    EXPECT_EQ(kor::sign_double(3.0, -0.0), 3.0);
    EXPECT_EQ(kor::kor_max(1.0, 2.0), 2.0);
    EXPECT_EQ(kor::kor_max(3.0, 2.0), 3.0);
}

} // namespace
