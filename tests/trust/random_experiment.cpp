#include "trust/random_experiment.h"
#include "support/constants.h"

#include <algorithm>
#include <cmath>

namespace kor_test {

namespace {

int random_twice_spin(Random& random, int max_states) {
    return random.integer(0, 9) ? random.integer(1, 3) : random.integer(4, std::min(7, max_states - 1));
}

/// Makes the last spin of a system the like of the first where both are spins 1/2.
void make_alike(Spins& spins) {
    const std::size_t last = spins.count() - 1;
    if (last < 1 || spins.twice_spins[0] != 1 || spins.twice_spins[last] != 1) {
        return;
    }
    spins.shift_hz[last] = spins.shift_hz[0];
    for (std::size_t k = 1; k < last; ++k) {
        spins.coupling_hz[last][k] = spins.coupling_hz[k][last] = spins.coupling_hz[0][k];
    }
}

enum class Kind { shaped, hard, along_x, gradient, delay };
enum class Gradients { none, one_direction, all };

constexpr double kMostGradient = TWO_PI * 2000.0; // rad/s per cm

Place random_gradient(Random& random) {
    return {random.uniform(-kMostGradient, kMostGradient), random.uniform(-kMostGradient, kMostGradient),
            random.uniform(-kMostGradient, kMostGradient)};
}

void add_random_sample(Random& random, Kind kind, Gradients gradients, const Place& direction, Train& train) {
    const bool field = kind == Kind::shaped || kind == Kind::along_x;
    const double bx = field ? TWO_PI * random.uniform(-500.0, 500.0) : 0.0;
    const double by = kind == Kind::shaped ? TWO_PI * random.uniform(-500.0, 500.0) : 0.0;
    Place g = {0.0, 0.0, 0.0};
    if (gradients == Gradients::one_direction) {
        const double size = random.uniform(-1.0, 1.0);
        g = {size * direction.x, size * direction.y, size * direction.z};
    } else if (gradients == Gradients::all) {
        g = random_gradient(random);
    }
    train.add_sample(bx, by, g.x, g.y, g.z);
}

Train hard_pulse(Random& random) {
    Train train;
    train.dt = 1e-5;
    const double phase = random.uniform(0.0, TWO_PI);
    const double field = random.uniform(0.1, 1.0) * TWO_PI * 50000.0;
    train.add_sample(field * std::cos(phase), field * std::sin(phase), 0.0, 0.0, 0.0);
    return train;
}

/// A shaped pulse under a constant gradient along z.
Train slice_pulse(Random& random) {
    Train train;
    train.dt = random.uniform(2e-5, 1e-4);
    while (train.samples() < 40) {
        train.add_sample(TWO_PI * random.uniform(-500.0, 500.0), TWO_PI * random.uniform(-500.0, 500.0), 0.0,
                         0.0, kMostGradient);
    }
    return train;
}

/// Thousands of samples of changing field and gradient, hundreds to thousands of radians in all.
Train long_pulse(Random& random) {
    Train train;
    train.dt = random.uniform(5e-6, 2e-4);
    const auto samples = static_cast<std::size_t>(random.integer(1000, 4096));
    const Place direction = random_gradient(random);
    while (train.samples() < samples) {
        add_random_sample(random, Kind::shaped, Gradients::one_direction, direction, train);
    }
    return train;
}

} // namespace

Spins random_spins(Random& random, int max_states) {
    Spins spins;
    const int wanted = random.integer(1, 4);
    for (int s = 0; s < wanted; ++s) {
        spins.twice_spins.push_back(random_twice_spin(random, max_states));
        if (spins.states() > max_states) {
            spins.twice_spins.pop_back();
        }
    }
    if (max_states >= 32) {
        spins.twice_spins.assign(5, 1);
    }
    const std::size_t count = spins.count();
    double squares = 0.0;
    for (std::size_t s = 0; s < count; ++s) {
        spins.intensity.push_back(random.uniform(-1.0, 1.0));
        spins.shift_hz.push_back(random.uniform(-500.0, 500.0));
        squares += spins.intensity[s] * spins.intensity[s];
    }
    spins.coupling_hz.assign(count, std::vector<double>(count, 0.0));
    for (std::size_t i = 0; i < count; ++i) {
        spins.intensity[i] /= std::sqrt(squares);
        for (std::size_t j = i + 1; j < count; ++j) {
            spins.coupling_hz[i][j] = spins.coupling_hz[j][i] = random.uniform(-40.0, 40.0);
        }
    }
    spins.weak = random.integer(0, 1) == 0;
    if (random.integer(0, 3) == 0) {
        make_alike(spins);
    }
    return spins;
}

Train random_train(Random& random) {
    const auto kind = static_cast<Kind>(random.integer(0, 4));
    if (kind == Kind::hard) {
        return hard_pulse(random);
    }
    Train train;
    train.dt = kind == Kind::delay ? random.uniform(0.0, 0.05) : random.uniform(5e-6, 2e-4);
    if (kind == Kind::delay && random.integer(0, 19) == 0) {
        train.dt = 0.0;
    }
    train.offset_hz = random.integer(0, 1) ? random.uniform(-1000.0, 1000.0) : 0.0;
    const int samples = kind == Kind::delay ? 1 : random.integer(1, 30);
    const auto gradients = static_cast<Gradients>(kind == Kind::delay      ? 0
                                                  : kind == Kind::gradient ? random.integer(1, 2)
                                                                           : random.integer(0, 2));
    const Place direction = random_gradient(random);
    while (static_cast<int>(train.samples()) < samples) {
        add_random_sample(random, kind, gradients, direction, train);
    }
    return train;
}

kor::EngineGrid random_grid(Random& random) {
    const double x0 = random.uniform(-0.5, 0.5);
    const double y0 = random.uniform(-0.5, 0.5);
    const double z0 = random.uniform(-0.5, 0.5);
    if (random.integer(0, 99) == 0) {
        return {1, 1, 160, x0, y0, z0, 0.0, 0.0, 0.001};
    }
    switch (random.integer(0, 3)) {
    case 0:
        return {1, 1, 1, x0, y0, z0, 0.0, 0.0, 0.0};
    case 1:
        return {1, 1, random.integer(2, 12), x0, y0, z0, 0.0, 0.0, 0.1};
    case 2:
        return {2, 3, 1, x0, y0, z0, 0.3, -0.2, 0.0};
    default:
        return {2, 2, random.integer(2, 3), x0, y0, z0, 0.1, 0.2, 0.15};
    }
}

Experiment random_experiment(Random& random, int max_states) {
    Experiment experiment;
    experiment.spins = random_spins(random, max_states);
    experiment.grid = random_grid(random);
    const int trains = random.integer(1, 5);
    for (int t = 0; t < trains; ++t) {
        experiment.trains.push_back(random_train(random));
    }
    if (experiment.voxels() > 64) {
        experiment.trains.push_back(slice_pulse(random));
    }
    if (experiment.voxels() == 1 && experiment.spins.states() <= 4 && random.integer(0, 9) == 0) {
        experiment.trains.push_back(long_pulse(random));
    }
    return experiment;
}

} // namespace kor_test
