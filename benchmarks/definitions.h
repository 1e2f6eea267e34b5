// The spin systems, waveforms and grids of the workloads, written into g_runtime.
#pragma once

#include <functional>
#include <vector>

namespace kor_benchmark {

enum class Coupling { weak = 1, exact = 2 };

/// Spins 1/2.
struct Spins {
    std::vector<double> offsets;       // Hz
    std::function<double(int, int)> j; // Hz, spins from 0
    Coupling coupling;
};

/// Defines the spins and builds their operators.
void set_spins(const Spins& spins);

Spins proton();
Spins ax3();
Spins pair();
Spins six_spins(Coupling coupling);
Spins eight_spins();

struct Gradient {
    double x, y, z; // Hz per cm
};

/// A waveform of `time` seconds without RF.
void set_waveform(int samples, double time, const Gradient& gradient);
/// time in s, angle in rad, f and b the shape's two parameters, phase in degrees.
void set_sinc_gauss(int samples, double time, double angle, double f, double b, double phase,
                    const Gradient& gradient);
/// `samples` samples of a 90 degree pulse in 10 microseconds.
void set_hard_pulse(int samples);

struct Axis {
    int count = 1;
    double first = 0.0, last = 0.0; // cm
    double step() const { return count > 1 ? (last - first) / (count - 1) : 0.0; }
};

void set_grid(const Axis& x, const Axis& y, const Axis& z);

/// A run of one sector, as the drivers begin it.
void start_run();

/// Propagators of the current waveform over the current grid, nothing else.
void propagate_only();

} // namespace kor_benchmark
