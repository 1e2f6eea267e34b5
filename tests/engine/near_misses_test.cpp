// What the fast engine takes a short cut for, missed by a billionth: equal samples, one direction or
// amplitude of the field, a gradient that stands still, a palindrome, no field, places that coincide.
#include "support/engine_system.h"
#include "support/engines.h"

#include <algorithm>
#include <cmath>

using namespace kor;
using namespace kor_test;

namespace {

class NearMisses : public EngineTest {};

constexpr std::size_t kSamples = 18;
constexpr double kX = 0.4, kY = -0.3, kZ = 0.2; // cm
constexpr double kTolerance = 3e-13;

const std::vector<std::vector<int>> kSpinLists = {{1}, {1, 1}, {1, 2}, {1, 1, 1, 1, 1}};

enum class Kind { steady, along_x, along_y, tilted, turning, palindrome, none };
const std::vector<Kind> kKinds = {Kind::steady,  Kind::along_x,    Kind::along_y, Kind::tilted,
                                  Kind::turning, Kind::palindrome, Kind::none};

double size_of_field(Kind kind, std::size_t j) {
    switch (kind) {
    case Kind::none:
        return 0.0;
    case Kind::steady:
    case Kind::turning:
        return 3000.0;
    case Kind::palindrome:
        return 3000.0 * std::cos(0.3 + 0.1 * static_cast<double>(std::min(j, kSamples - 1 - j)));
    default:
        return 3000.0 * std::cos(0.3 + 0.1 * static_cast<double>(j));
    }
}

double direction_of_field(Kind kind, std::size_t j) {
    switch (kind) {
    case Kind::along_x:
        return 0.0;
    case Kind::turning:
        return 0.05 * static_cast<double>(j * j);
    default:
        return 0.7;
    }
}

/// Of one of the kinds, under a gradient that stands still; each sample turns by some tenths of a radian.
RandomWaveform waveform(Random& random, Kind kind) {
    RandomWaveform wave = random_waveform(random, static_cast<int>(kSamples), 0);
    wave.dt = 1e-4;
    wave.gx.assign(kSamples, 1500.0);
    wave.gy.assign(kSamples, -2500.0);
    wave.gz.assign(kSamples, 3500.0);
    for (std::size_t j = 0; j < kSamples; ++j) {
        const double size = size_of_field(kind, j);
        const double direction = direction_of_field(kind, j);
        wave.xb[j] = kind == Kind::along_y ? 0.0 : size * std::cos(direction);
        wave.yb[j] = kind == Kind::along_y ? size : size * std::sin(direction);
    }
    return wave;
}

Dense propagator(const EngineCase& problem, const EngineGrid& grid, int ix, int iy, int iz) {
    static CMatrix r;
    EngineOpenSector(problem.sector(grid));
    EngineSectorPropagator(ix, iy, iz, r);
    return to_dense(problem.system.n, r);
}

} // namespace

TEST_P(NearMisses, OfOneNumberOfOneSampleCount) {
    Random random(221);
    const EngineGrid here = {1, 1, 1, kX, kY, kZ, 0.0, 0.0, 0.0};
    for (const std::vector<int>& spins : kSpinLists) {
        for (const Kind kind : kKinds) {
            EngineCase problem(random_system(random, spins, Coupling::exact), waveform(random, kind));
            const Dense exact = problem.expected(kX, kY, kZ);
            RandomWaveform& wave = problem.wave;
            for (std::vector<double>* values : {&wave.xb, &wave.yb, &wave.gx, &wave.gy, &wave.gz}) {
                for (const std::size_t at : {std::size_t{0}, std::size_t{4}, kSamples - 1}) {
                    const double kept = (*values)[at];
                    (*values)[at] = kept + 3e-6;
                    const Dense expected = problem.expected(kX, kY, kZ);
                    EXPECT_LE(distance(propagator(problem, here, 1, 1, 1), expected), kTolerance)
                        << testing::PrintToString(spins) << " kind " << static_cast<int>(kind) << " sample "
                        << at;
                    EXPECT_GT(distance(expected, exact), 20.0 * kTolerance);
                    (*values)[at] = kept;
                }
            }
        }
    }
}

TEST_P(NearMisses, OfPlacesThatCoincideCount) {
    Random random(222);
    const double step = 1e-7; // cm
    for (const std::vector<int>& spins : kSpinLists) {
        const EngineCase problem(random_system(random, spins, Coupling::exact),
                                 waveform(random, Kind::tilted));
        for (int axis = 0; axis < 3; ++axis) {
            const auto along = [axis](int which, int count) { return which == axis ? count : 1; };
            const auto apart = [axis, step](int which) { return which == axis ? step : 0.0; };
            const EngineGrid grid = {along(0, 3), along(1, 3), along(2, 3), kX,      kY,
                                     kZ,          apart(0),    apart(1),    apart(2)};
            for (int k = 0; k < 3; ++k) {
                const Dense expected =
                    problem.expected(kX + k * apart(0), kY + k * apart(1), kZ + k * apart(2));
                EXPECT_LE(
                    distance(propagator(problem, grid, along(0, k + 1), along(1, k + 1), along(2, k + 1)),
                             expected),
                    kTolerance)
                    << testing::PrintToString(spins) << " axis " << axis;
            }
        }
    }
}

TEST_P(NearMisses, OfAPalindromeOfRunsOfEqualSamplesCount) {
    // The same fields forth and back, the runs of them of other lengths.
    Random random(223);
    for (const std::vector<int>& spins : kSpinLists) {
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
            EXPECT_LE(distance(propagator(problem, {1, 1, 1, kX, kY, kZ, 0.0, 0.0, 0.0}, 1, 1, 1),
                               problem.expected(kX, kY, kZ)),
                      kTolerance)
                << testing::PrintToString(spins) << ' ' << longer;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, NearMisses, testing::ValuesIn(AllEngines()), EngineParamName);
