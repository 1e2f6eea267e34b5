// Seeded random matrices, spin systems and waveforms. A Random prints its seed, so that a failure can be
// repeated; the numbers depend on the seed alone.
#pragma once

#include "support/dense_reference.h"

#include <random>
#include <vector>

namespace kor_test {

class Random {
public:
    explicit Random(unsigned seed);

    double uniform(double low, double high);
    int integer(int low, int high); // both included
    Dense matrix(int n);            // elements in the unit square around 0
    Dense hermitian(int n);
    Dense unitary(int n);
    /// Hermitian, positive, trace 1.
    Dense density(int n);

private:
    std::mt19937_64 engine_; // the standard fixes its numbers, not those of the distributions
};

enum class Coupling { weak, exact };

/// A spin system: shifts of up to 500 Hz, couplings of up to 40 Hz between all pairs, rad/s.
struct RandomSystem {
    std::vector<int> twice_spins;
    int n;
    Dense H0, Fx, Fy, Fz;
};
RandomSystem random_system(Random& random, const std::vector<int>& twice_spins, Coupling coupling);
/// One to four spins 1/2, 1 and 3/2, at most max_states states; weak or exact coupling by chance.
RandomSystem random_system(Random& random, int max_states);

/// RF of up to 500 Hz, gradients of up to 2 kHz per cm on the first `axes` axes (x, y, z), zero elsewhere.
struct RandomWaveform {
    int count;
    double dt;
    std::vector<double> xb, yb, gx, gy, gz;
    double offset;
};
RandomWaveform random_waveform(Random& random, int count, int axes);

} // namespace kor_test
