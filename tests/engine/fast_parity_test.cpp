// The fast engine against the reference on random sectors of every kind, with every instruction set.
#include "support/constants.h"
#include "support/deviation.h"
#include "support/engine_system.h"
#include "support/engines.h"
#include "support/worst.h"

#include <cmath>

using namespace kor;
using namespace kor_test;

namespace {

enum class Field {
    sweeping,
    none,
    along_x,
    along_y,
    tilted,
    strong,
    steady,
    equal_runs,
    palindrome,
    some_gaps
};
constexpr int kFields = 10;

void mirror(std::vector<double>& values, std::size_t lead) {
    for (std::size_t j = lead, k = values.size(); j + 1 < k; ++j) {
        values[--k] = values[j];
    }
}

/// Shapes a random waveform into one of the kinds.
void shape(Field field, Random& random, RandomWaveform& wave) {
    const std::size_t count = wave.xb.size();
    const double tilt = random.uniform(0.0, TWO_PI);
    const std::size_t lead = static_cast<std::size_t>(random.integer(0, 1));
    for (std::size_t j = 0; j < count; ++j) {
        const bool gap = field == Field::none || (field == Field::some_gaps && j % 4 != 0);
        if (gap) {
            wave.xb[j] = wave.yb[j] = 0.0;
        } else if (field == Field::along_x || (field == Field::palindrome && lead == 0)) {
            wave.yb[j] = 0.0;
        } else if (field == Field::along_y) {
            wave.xb[j] = 0.0;
        } else if (field == Field::tilted || field == Field::palindrome) {
            wave.yb[j] = wave.xb[j] * std::sin(tilt);
            wave.xb[j] *= std::cos(tilt);
        } else if (field == Field::strong) {
            wave.xb[j] *= 30.0;
            wave.yb[j] *= 30.0;
        } else if (field == Field::steady) { // under a gradient that changes
            wave.xb[j] = wave.xb[0];
            wave.yb[j] = wave.yb[0];
        } else if (field == Field::equal_runs && j % 5 != 0) {
            for (std::vector<double>* values : {&wave.xb, &wave.yb, &wave.gx, &wave.gy, &wave.gz}) {
                (*values)[j] = (*values)[j - 1];
            }
        }
    }
    if (field == Field::palindrome) {
        for (std::vector<double>* values : {&wave.xb, &wave.yb, &wave.gx, &wave.gy, &wave.gz}) {
            mirror(*values, lead);
        }
    }
}

/// Rounding of both engines: the angle that the samples turn through, and 2e-13 for everything else.
double allowance(const RandomWaveform& wave) {
    double angle = 0.0;
    for (std::size_t j = 0; j < wave.xb.size(); ++j) {
        angle += wave.dt * (std::hypot(wave.xb[j], wave.yb[j]) + std::fabs(wave.gx[j]) +
                            std::fabs(wave.gy[j]) + std::fabs(wave.gz[j]) + std::fabs(wave.offset));
    }
    return 2e-13 + 1e-15 * angle;
}

EngineGrid random_grid(Random& random) {
    switch (random.integer(0, 4)) {
    case 0:
        return {1, 1, 1, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    case 1:
        return {1, 1, 11, 0.2, -0.1, -0.5, 0.0, 0.0, 0.1};
    case 2:
        return {2, 5, 1, -0.3, -0.4, 0.3, 0.6, 0.2, 0.0};
    case 3:
        return {3, 2, 2, -0.5, 0.1, -0.3, 0.0, 0.0, 0.2}; // places that coincide
    default:
        return small_grid();
    }
}

std::vector<InstructionSet> instruction_sets() {
    std::vector<InstructionSet> sets;
    for (const InstructionSet set :
         {InstructionSet::baseline, InstructionSet::avx2, InstructionSet::avx512}) {
        if (EngineHasInstructionSet(set)) {
            sets.push_back(set);
        }
    }
    return sets;
}

/// Gradients on one, two or three axes, whichever.
RandomWaveform random_waveform_on_any_axes(Random& random, int most_samples) {
    RandomWaveform wave = random_waveform(random, random.integer(1, most_samples), random.integer(0, 3));
    for (int turns = random.integer(0, 2); turns > 0; --turns) {
        std::swap(wave.gx, wave.gy);
        std::swap(wave.gy, wave.gz);
    }
    return wave;
}

/// One random sector at one of its voxels, the reference first.
void check_parity(Random& random, const std::vector<int>& spins, int most_samples, Worst& worst) {
    const auto field = static_cast<Field>(random.integer(0, kFields - 1));
    const Coupling coupling = random.integer(0, 1) ? Coupling::exact : Coupling::weak;
    RandomSystem system = random_system(random, spins, coupling);
    RandomWaveform wave = random_waveform_on_any_axes(random, most_samples);
    shape(field, random, wave);
    const EngineCase problem(std::move(system), std::move(wave));
    const EngineSector sector = problem.sector(random_grid(random));
    const int ix = random.integer(1, sector.grid.ndx);
    const int iy = random.integer(1, sector.grid.ndy);
    const int iz = random.integer(1, sector.grid.ndz);
    static CMatrix reference, fast;
    const int n = problem.system.n;
    EngineSelect(Engine::reference);
    EngineOpenSector(sector);
    EngineSectorPropagator(ix, iy, iz, reference);
    EngineSelect(Engine::fast);
    for (const InstructionSet set : instruction_sets()) {
        EngineUseInstructionSet(set);
        EngineOpenSector(sector);
        ASSERT_STRNE(EngineSectorPlan(), "reference") << n;
        EngineSectorPropagator(ix, iy, iz, fast);
        worst.check(distance(fast, to_dense(n, reference)), allowance(problem.wave),
                    testing::PrintToString(spins) + " field " + std::to_string(static_cast<int>(field)) +
                        ' ' + EngineName({Engine::fast, set}) + ' ' + EngineSectorPlan());
    }
}

struct Turned {
    Dense state;
    std::vector<Complex> signal;
};

/// A state after a turn, and its signal of free evolution before it.
Turned turn_and_sample(const RandomSystem& system, const Dense& unitary, const Dense& rho) {
    const MarkedMatrix H(system.H0), Ix(system.Fx), Iy(system.Fy), R(unitary);
    MarkedMatrix state(rho);
    std::vector<double> re(system.n > 16 ? 20 : 200), im(re);
    EngineSampleFreeEvolution(system.n, H, 2e-4, static_cast<int>(re.size()), state, Ix, Iy, re.data(),
                              im.data());
    EngineRotate(system.n, R, state);
    Turned out{state.dense(system.n), {}};
    for (std::size_t k = 0; k < re.size(); ++k) {
        out.signal.emplace_back(re[k], im[k]);
    }
    return out;
}

struct FastParity : testing::Test {
    ~FastParity() override {
        EngineSelect(Engine::fast);
        EngineUseInstructionSet(instruction_sets().back());
    }
};

/// A fifth under the address sanitizer, where a sector takes ten times as long.
int sectors(int count) {
#ifdef __SANITIZE_ADDRESS__
    return count / 5;
#else
    return count;
#endif
}

} // namespace

TEST_F(FastParity, OfRandomSectorsUpTo8States) {
    const std::vector<std::vector<int>> systems = {{1},    {2}, {3}, {1, 1},    {4},   {5},
                                                   {1, 2}, {6}, {7}, {1, 1, 1}, {1, 3}};
    Random random(151);
    Worst worst("parity up to 8 states");
    for (int trial = 0; trial < sectors(9000); ++trial) {
        check_parity(random, systems[static_cast<std::size_t>(trial) % systems.size()], 12, worst);
    }
}

TEST_F(FastParity, OfRandomSectorsUpTo16States) {
    const std::vector<std::vector<int>> systems = {{8},       {2, 2}, {1, 4},       {10},  {1, 5},
                                                   {1, 1, 2}, {12},   {1, 6},       {14},  {2, 4},
                                                   {1, 1, 3}, {3, 3}, {1, 1, 1, 1}, {1, 7}};
    Random random(152);
    Worst worst("parity up to 16 states");
    for (int trial = 0; trial < sectors(1000); ++trial) {
        check_parity(random, systems[static_cast<std::size_t>(trial) % systems.size()], 30, worst);
    }
}

TEST_F(FastParity, OfRandomSectorsUpTo64States) {
    const std::vector<std::vector<int>> systems = {
        {1, 2, 2}, {2, 2, 2}, {1, 1, 1, 1, 1}, {1, 1, 2, 2}, {1, 1, 1, 1, 1, 1},
        {3, 3, 3}, {16},      {1, 1, 1, 1, 2}, {6, 6},       {1, 1, 3, 2}};
    Random random(153);
    Worst worst("parity up to 64 states");
    for (int trial = 0; trial < sectors(80); ++trial) {
        check_parity(random, systems[static_cast<std::size_t>(trial) % systems.size()], 12, worst);
    }
}

TEST_F(FastParity, OfRandomSectorsUpTo256States) {
    Random random(154);
    Worst worst("parity up to 256 states");
    for (const std::vector<int>& spins : std::vector<std::vector<int>>{{2, 2, 2, 2},
                                                                       {1, 1, 1, 1, 7},
                                                                       {1, 1, 1, 1, 1, 1, 1},
                                                                       {4, 4, 7},
                                                                       {1, 1, 4, 9},
                                                                       {3, 3, 3, 3},
                                                                       {1, 1, 1, 1, 1, 1, 3},
                                                                       {1, 1, 1, 1, 1, 1, 1, 1}}) {
        check_parity(random, spins, 2, worst);
    }
}

TEST_F(FastParity, OfRotationsAndFreeEvolutionAtEverySize) {
    Random random(155);
    for (const std::vector<int>& spins : std::vector<std::vector<int>>{{1},
                                                                       {2},
                                                                       {1, 1},
                                                                       {1, 2},
                                                                       {2, 2},
                                                                       {1, 1, 1, 1},
                                                                       {1, 2, 2},
                                                                       {1, 1, 1, 1, 1},
                                                                       {1, 1, 1, 1, 1, 1},
                                                                       {2, 2, 2, 2}}) {
        const RandomSystem system = random_system(random, spins, Coupling::exact);
        const Dense unitary = random.unitary(system.n);
        const Dense rho = random.density(system.n);
        EngineSelect(Engine::reference);
        const Turned reference = turn_and_sample(system, unitary, rho);
        const double size = largest_gap(reference.signal, std::vector<Complex>(reference.signal.size()));
        EngineSelect(Engine::fast);
        for (const InstructionSet set : instruction_sets()) {
            EngineUseInstructionSet(set);
            const Turned fast = turn_and_sample(system, unitary, rho);
            EXPECT_LT(distance(fast.state, reference.state), 1e-12 * largest(reference.state)) << system.n;
            EXPECT_LT(largest_gap(fast.signal, reference.signal), 1e-12 * size) << system.n;
        }
    }
}
