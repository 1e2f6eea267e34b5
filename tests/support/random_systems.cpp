#include "support/random_systems.h"
#include "support/constants.h"

#include <cmath>
#include <cstdio>

namespace kor_test {

Random::Random(unsigned seed) : engine_(seed) {
    std::printf("[   SEED   ] %u\n", seed);
}

double Random::uniform(double low, double high) {
    return low + (high - low) * std::ldexp(static_cast<double>(engine_() >> 11), -53);
}

int Random::integer(int low, int high) {
    return low + static_cast<int>(engine_() % static_cast<unsigned>(high - low + 1));
}

Dense Random::matrix(int n) {
    Dense m(n, n);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const double re = uniform(-1.0, 1.0);
            m(i, j) = Complex(re, uniform(-1.0, 1.0));
        }
    }
    return m;
}

Dense Random::hermitian(int n) {
    const Dense m = matrix(n);
    return 0.5 * (m + m.adjoint());
}

Dense Random::unitary(int n) {
    return exp_i(hermitian(n), 3.0);
}

Dense Random::density(int n) {
    const Dense m = matrix(n);
    const Dense square = m * m.adjoint();
    return square / square.trace();
}

RandomSystem random_system(Random& random, const std::vector<int>& twice_spins, Coupling coupling) {
    const int spins = static_cast<int>(twice_spins.size());
    RandomSystem system;
    system.twice_spins = twice_spins;
    system.Fx = total_operator(twice_spins, Axis::x);
    system.Fy = total_operator(twice_spins, Axis::y);
    system.Fz = total_operator(twice_spins, Axis::z);
    system.n = static_cast<int>(system.Fz.rows());
    system.H0 = Dense::Zero(system.n, system.n);
    for (int i = 1; i <= spins; ++i) {
        system.H0 += TWO_PI * random.uniform(-500.0, 500.0) * spin_operator(twice_spins, i, Axis::z);
        for (int j = i + 1; j <= spins; ++j) {
            const double J = TWO_PI * random.uniform(-40.0, 40.0);
            for (const Axis axis : {Axis::x, Axis::y, Axis::z}) {
                if (coupling == Coupling::exact || axis == Axis::z) {
                    system.H0 +=
                        J * spin_operator(twice_spins, i, axis) * spin_operator(twice_spins, j, axis);
                }
            }
        }
    }
    return system;
}

RandomSystem random_system(Random& random, int max_states) {
    const int spins = random.integer(1, 4);
    std::vector<int> twice_spins;
    int states = 1;
    for (int s = 0; s < spins; ++s) {
        const int twice_spin = random.integer(1, 3);
        if (states * (twice_spin + 1) <= max_states) {
            twice_spins.push_back(twice_spin);
            states *= twice_spin + 1;
        }
    }
    return random_system(random, twice_spins, random.integer(0, 1) ? Coupling::exact : Coupling::weak);
}

RandomWaveform random_waveform(Random& random, int count, int axes) {
    RandomWaveform wave;
    wave.count = count;
    wave.dt = random.uniform(5e-6, 2e-4);
    wave.offset = TWO_PI * random.uniform(-1000.0, 1000.0);
    for (int j = 0; j < count; ++j) {
        wave.xb.push_back(TWO_PI * random.uniform(-500.0, 500.0));
        wave.yb.push_back(TWO_PI * random.uniform(-500.0, 500.0));
        wave.gx.push_back(axes >= 1 ? TWO_PI * random.uniform(-2000.0, 2000.0) : 0.0);
        wave.gy.push_back(axes >= 2 ? TWO_PI * random.uniform(-2000.0, 2000.0) : 0.0);
        wave.gz.push_back(axes >= 3 ? TWO_PI * random.uniform(-2000.0, 2000.0) : 0.0);
    }
    return wave;
}

} // namespace kor_test
