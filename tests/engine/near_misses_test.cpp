// What the fast engine takes a short cut for, missed by a billionth: equal samples, one direction or
// amplitude of the field, a gradient that stands still, a palindrome, no field, places that coincide.
#include "support/engine_system.h"
#include "support/engines.h"
#include "support/worst.h"

#include <algorithm>
#include <cmath>
#include <string>

using namespace kor;
using namespace kor_test;

namespace {

class NearMisses : public EngineTest {};

constexpr std::size_t kSampleCount = 18;
constexpr double kX = 0.4, kY = -0.3, kZ = 0.2; // cm
constexpr double kAllowed = 3e-13;

const std::vector<std::vector<int>> kSpinSystems = {{1}, {1, 1}, {1, 2}, {1, 1, 1, 1, 1}};

enum class Course { steady, along_x, along_y, tilted, turning, palindrome, none };
const std::vector<Course> kCourses = {Course::steady,  Course::along_x,    Course::along_y, Course::tilted,
                                      Course::turning, Course::palindrome, Course::none};

double size_of_field(Course course, std::size_t j) {
    switch (course) {
    case Course::none:
        return 0.0;
    case Course::steady:
    case Course::turning:
        return 3000.0;
    case Course::palindrome:
        return 3000.0 * std::cos(0.3 + 0.1 * static_cast<double>(std::min(j, kSampleCount - 1 - j)));
    default:
        return 3000.0 * std::cos(0.3 + 0.1 * static_cast<double>(j));
    }
}

double direction_of_field(Course course, std::size_t j) {
    switch (course) {
    case Course::along_x:
        return 0.0;
    case Course::turning:
        return 0.05 * static_cast<double>(j * j);
    default:
        return 0.7;
    }
}

/// A field of one course under a gradient that stands still; each sample turns by some tenths of a radian.
RandomWaveform waveform_of(Random& random, Course course) {
    RandomWaveform wave = random_waveform(random, static_cast<int>(kSampleCount), 0);
    wave.dt = 1e-4;
    wave.gx.assign(kSampleCount, 1500.0);
    wave.gy.assign(kSampleCount, -2500.0);
    wave.gz.assign(kSampleCount, 3500.0);
    for (std::size_t j = 0; j < kSampleCount; ++j) {
        const double size = size_of_field(course, j);
        const double direction = direction_of_field(course, j);
        wave.xb[j] = course == Course::along_y ? 0.0 : size * std::cos(direction);
        wave.yb[j] = course == Course::along_y ? size : size * std::sin(direction);
    }
    return wave;
}

} // namespace

TEST_P(NearMisses, InOneNumberOfOneSampleAreSeen) {
    Random random(221);
    Worst worst("near misses of samples, " + EngineName(GetParam()));
    const EngineGrid here = {1, 1, 1, kX, kY, kZ, 0.0, 0.0, 0.0};
    for (const std::vector<int>& spins : kSpinSystems) {
        for (const Course course : kCourses) {
            EngineCase problem(random_system(random, spins, Coupling::exact), waveform_of(random, course));
            const Dense exact = problem.expected(kX, kY, kZ);
            RandomWaveform& wave = problem.wave;
            for (std::vector<double>* values : {&wave.xb, &wave.yb, &wave.gx, &wave.gy, &wave.gz}) {
                for (const std::size_t at : {std::size_t{0}, std::size_t{4}, kSampleCount - 1}) {
                    const double kept = (*values)[at];
                    (*values)[at] = kept + 3e-6;
                    const Dense expected = problem.expected(kX, kY, kZ);
                    worst.check(
                        distance(sector_propagator(problem.sector(here), 1, 1, 1), expected), kAllowed,
                        testing::PrintToString(spins) + " course " +
                            std::to_string(static_cast<int>(course)) + " sample " + std::to_string(at));
                    EXPECT_GT(distance(expected, exact), 20.0 * kAllowed);
                    (*values)[at] = kept;
                }
            }
        }
    }
}

TEST_P(NearMisses, OfNoFieldAreSeen) {
    Random random(224);
    Worst worst("near misses of no field, " + EngineName(GetParam()));
    const EngineGrid here = {1, 1, 1, kX, kY, kZ, 0.0, 0.0, 0.0};
    for (const std::vector<int>& spins : kSpinSystems) {
        EngineCase problem(random_system(random, spins, Coupling::exact), waveform_of(random, Course::none));
        for (std::vector<double>* field : {&problem.wave.xb, &problem.wave.yb}) {
            const Dense without = problem.expected(kX, kY, kZ);
            field->at(7) = 1e-7; // 1e-11 rad
            const Dense expected = problem.expected(kX, kY, kZ);
            worst.check(distance(sector_propagator(problem.sector(here), 1, 1, 1), expected), kAllowed,
                        testing::PrintToString(spins));
            EXPECT_GT(distance(expected, without), 10.0 * kAllowed);
            field->at(7) = 0.0;
        }
    }
}

TEST_P(NearMisses, InPlacesThatCoincideAreSeen) {
    Random random(222);
    Worst worst("near misses of places, " + EngineName(GetParam()));
    const double step = 1e-7; // cm
    for (const std::vector<int>& spins : kSpinSystems) {
        const EngineCase problem(random_system(random, spins, Coupling::exact),
                                 waveform_of(random, Course::tilted));
        for (int axis = 0; axis < 3; ++axis) {
            const auto along = [axis](int which, int count) { return which == axis ? count : 1; };
            const auto apart = [axis, step](int which) { return which == axis ? step : 0.0; };
            const EngineGrid grid = {along(0, 3), along(1, 3), along(2, 3), kX,      kY,
                                     kZ,          apart(0),    apart(1),    apart(2)};
            for (int k = 0; k < 3; ++k) {
                const Dense expected =
                    problem.expected(kX + k * apart(0), kY + k * apart(1), kZ + k * apart(2));
                const Dense actual = sector_propagator(problem.sector(grid), along(0, k + 1), along(1, k + 1),
                                                       along(2, k + 1));
                worst.check(distance(actual, expected), kAllowed,
                            testing::PrintToString(spins) + " axis " + std::to_string(axis));
            }
        }
    }
}

TEST_P(NearMisses, InTheRunsOfAPalindromeAreSeen) {
    // The same fields forth and back, the runs of them of other lengths.
    Random random(223);
    Worst worst("near misses of runs, " + EngineName(GetParam()));
    for (const std::vector<int>& spins : kSpinSystems) {
        for (const std::size_t longer : {std::size_t{1}, std::size_t{6}}) {
            RandomWaveform wave = random_waveform(random, 0, 0);
            wave.dt = 1e-4;
            for (std::size_t run = 0; run < 12; ++run) {
                const double field = 1000.0 + 300.0 * static_cast<double>(std::min(run, 11 - run));
                for (std::size_t j = 0; j < (run == longer ? 3U : 2U); ++j, ++wave.count) {
                    wave.xb.push_back(field);
                    wave.yb.push_back(0.0);
                    for (std::vector<double>* gradient : {&wave.gx, &wave.gy, &wave.gz}) {
                        gradient->push_back(1000.0);
                    }
                }
            }
            const EngineCase problem(random_system(random, spins, Coupling::exact), wave);
            const EngineGrid here = {1, 1, 1, kX, kY, kZ, 0.0, 0.0, 0.0};
            worst.check(
                distance(sector_propagator(problem.sector(here), 1, 1, 1), problem.expected(kX, kY, kZ)),
                kAllowed, testing::PrintToString(spins) + ' ' + std::to_string(longer));
        }
    }
}

TEST_P(NearMisses, InTheLengthsOfAShapedPulsesStepsAreSeen) {
    // Neighbours of equal amplitude are one longer step among those that share the gradient.
    Random random(225);
    Worst worst("near misses of steps, " + EngineName(GetParam()));
    const EngineGrid line = {11, 1, 1, kX, kY, kZ, 0.01, 0.0, 0.0};
    for (const std::vector<int>& spins : std::vector<std::vector<int>>{{1}, {1, 1}, {1, 2}, {1, 1, 1}}) {
        RandomWaveform wave = random_waveform(random, 192, 0);
        wave.dt = 4e-5;
        wave.gx.assign(192, 1500.0);
        wave.yb.assign(192, 0.0);
        for (std::size_t j = 0; j < 192; ++j) {
            wave.xb[j] = 2000.0 * std::cos(0.02 * static_cast<double>(j % 97 == 96 ? j - 1 : j));
        }
        const EngineCase problem(random_system(random, spins, Coupling::exact), wave);
        for (const int ix : {1, 6, 11}) {
            worst.check(distance(sector_propagator(problem.sector(line), ix, 1, 1),
                                 problem.expected(kX + (ix - 1) * line.dx, kY, kZ)),
                        kAllowed, testing::PrintToString(spins));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, NearMisses, testing::ValuesIn(AllEngines()), EngineParamName);
