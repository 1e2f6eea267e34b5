// Writes the waveform files of the shipped example sequences:
//     make-example-waveforms ROOT
// fills ROOT/sequences/NAME/waveforms/ for every example sequence. The files in the repository are this
// program's output, byte for byte. Exit status 0, or 1 when a file could not be written.
#include "korlimits.h"
#include "korplatform.h"
#include "rfpulselib/shapes.h"
#include "rfwaveformfile.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using namespace kor;

/// One sector's samples, each 0 to begin with: free precession.
struct Waveform {
    explicit Waveform(std::size_t samples)
        : xb(samples), yb(samples), gx(samples), gy(samples), gz(samples) {}
    int samples() const { return static_cast<int>(xb.size()); }
    std::vector<double> xb, yb;     // rad/s
    std::vector<double> gx, gy, gz; // rad/s per cm
};

enum class Layout { spatial, nmr };

/// Rounds to 2^-16 rad/s (2e-6 Hz), far coarser than the last bits in which sine and exponential differ
/// between mathematics libraries: every machine writes the same bytes.
double round_sample(double value) {
    return std::nearbyint(value * 65536) / 65536;
}

void round_samples(Waveform& w) {
    for (auto* samples : {&w.xb, &w.yb, &w.gx, &w.gy, &w.gz})
        for (double& value : *samples)
            value = round_sample(value);
}

/// 25 kHz along phase_deg: 90 degrees in 10 microseconds, 180 degrees in 20.
Waveform hard_pulse(double phase_deg) {
    Waveform w(1);
    rectangular_waveform(w.samples(), phase_deg, 25000, w.xb.data(), w.yb.data());
    return w;
}

/// One sample of a constant gradient along z, hz_per_cm in Hz/cm.
Waveform gradient_z(double hz_per_cm) {
    Waveform w(1);
    w.gz[0] = 2 * KOR_PI * hz_per_cm;
    return w;
}

/// 90 degrees about x in 4 ms over a band of 2 kHz; under 2 kHz/cm along z this is a slice of 1 cm.
Waveform slice_pulse() {
    Waveform w(256);
    sinc_gauss_waveform(w.samples(), 0.004 / w.samples(), 0, KOR_PI / 2, 1000, 1000, w.xb.data(),
                        w.yb.data());
    w.gz.assign(w.gz.size(), 2 * KOR_PI * 2000);
    return w;
}

enum class Slab { x, y, z };

/// A pulse of 255 samples that turns by `flip` (rad), along phase_deg and under a gradient of 2 kHz/cm. The
/// shape of 256 samples without its first one reads the same backwards.
Waveform press_pulse(double duration_s, double flip, double half_band_hz, double phase_deg, Slab slab) {
    Waveform w(256);
    sinc_gauss_waveform(w.samples(), duration_s / 255, phase_deg, flip, half_band_hz, 1000, w.xb.data(),
                        w.yb.data());
    for (auto* samples : {&w.xb, &w.yb, &w.gx, &w.gy, &w.gz})
        samples->erase(samples->begin());
    auto& gradient = slab == Slab::x ? w.gx : slab == Slab::y ? w.gy : w.gz;
    gradient.assign(gradient.size(), 2 * KOR_PI * 2000);
    return w;
}

/// Samples first..first + 5 of 0.5 ms become a crusher: `turns` per 3 cm along each axis.
void add_crusher(Waveform& w, std::size_t first, double turns) {
    for (std::size_t j = first; j < first + 6; ++j)
        w.gx[j] = w.gy[j] = w.gz[j] = 2 * KOR_PI * turns / (3 * 0.003);
}

/// 1 when the file holds the waveform afterwards.
int write_waveform(const std::string& folder, const char* leaf, Layout layout, Waveform w) {
    round_samples(w);
    const std::string path = folder + platform_separator() + leaf;
    const int blocks = layout == Layout::spatial ? 5 : 2;
    const int samples = w.samples();
    if (layout == Layout::spatial)
        BinArrayOut(&samples, w.xb.data(), w.yb.data(), w.gx.data(), w.gy.data(), w.gz.data(), path.c_str());
    else
        BinArrayOut2D(samples, w.xb.data(), w.yb.data(), path.c_str());
    Waveform back(w.xb.size());
    double* const arrays[] = {back.xb.data(), back.yb.data(), back.gx.data(), back.gy.data(), back.gz.data()};
    return read_waveform_blocks(path.c_str(), samples, blocks, arrays) && back.xb == w.xb &&
           back.yb == w.yb && back.gx == w.gx && back.gy == w.gy && back.gz == w.gz;
}

/// Makes root/sequences/name/waveforms and returns it; folders that exist are left alone.
std::string waveform_folder(const std::string& root, const char* name) {
    std::string folder = root;
    for (const char* part : {"sequences", name, "waveforms"}) {
        folder += platform_separator();
        folder += part;
        platform_make_dir(folder.c_str());
    }
    return folder;
}

int write_pulse_acquire(const std::string& root) {
    const std::string folder = waveform_folder(root, "pulse-acquire");
    return write_waveform(folder, "hard-90x.bin", Layout::nmr, hard_pulse(0)) &&
           write_waveform(folder, "receiver-1024.bin", Layout::nmr, Waveform(1024));
}

int write_cosy(const std::string& root) {
    const std::string folder = waveform_folder(root, "cosy");
    return write_waveform(folder, "hard-90x.bin", Layout::nmr, hard_pulse(0)) &&
           write_waveform(folder, "evolution.bin", Layout::nmr, Waveform(1)) &&
           write_waveform(folder, "receiver-512.bin", Layout::nmr, Waveform(512));
}

int write_slice_selection(const std::string& root) {
    const std::string folder = waveform_folder(root, "slice-selection");
    return write_waveform(folder, "sinc-gauss-90x.bin", Layout::spatial, slice_pulse()) &&
           write_waveform(folder, "rephase.bin", Layout::spatial, gradient_z(-2000)) &&
           write_waveform(folder, "receiver-1024.bin", Layout::spatial, Waveform(1024));
}

int write_spin_echo(const std::string& root, const char* name) {
    const std::string folder = waveform_folder(root, name);
    return write_waveform(folder, "hard-90x.bin", Layout::spatial, hard_pulse(0)) &&
           write_waveform(folder, "hard-180y.bin", Layout::spatial, hard_pulse(90)) &&
           write_waveform(folder, "wait.bin", Layout::spatial, Waveform(1)) &&
           write_waveform(folder, "crusher.bin", Layout::spatial, gradient_z(2000)) &&
           write_waveform(folder, "receiver-1024.bin", Layout::spatial, Waveform(1024));
}

/// Samples of the waits last 0.5 ms; the first 2 ms rephase the slab of the 90 degree pulse. The crushers
/// make 7 and 14 turns over the 24 voxels of an axis: every unwanted pathway (7, 11, 14, 21, ... turns) is
/// out of step from voxel to voxel, and none falls on a multiple of 24. Scaled to 180 degrees, a band of 4
/// kHz refocuses 3 kHz.
int write_press(const std::string& root) {
    Waveform wait1(15), wait2(134), wait3(115);
    std::fill_n(wait1.gz.begin(), 4, -2 * KOR_PI * 2000);
    add_crusher(wait1, 9, 7);
    add_crusher(wait2, 0, 7);
    add_crusher(wait2, 128, 14);
    add_crusher(wait3, 0, 14);
    const std::string folder = waveform_folder(root, "press-144");
    return write_waveform(folder, "sinc-gauss-90x.bin", Layout::spatial,
                          press_pulse(0.004, KOR_PI / 2, 1500, 0, Slab::z)) &&
           write_waveform(folder, "sinc-gauss-180y-x.bin", Layout::spatial,
                          press_pulse(0.005, KOR_PI, 2000, 90, Slab::x)) &&
           write_waveform(folder, "sinc-gauss-180y-y.bin", Layout::spatial,
                          press_pulse(0.005, KOR_PI, 2000, 90, Slab::y)) &&
           write_waveform(folder, "wait-1.bin", Layout::spatial, wait1) &&
           write_waveform(folder, "wait-2.bin", Layout::spatial, wait2) &&
           write_waveform(folder, "wait-3.bin", Layout::spatial, wait3) &&
           write_waveform(folder, "receiver-1024.bin", Layout::spatial, Waveform(1024));
}

/// What the optimiser starts from: 128 samples of a rectangular 90 degree pulse about x.
int write_pulse_to_optimise(const std::string& root, const char* name, double duration_s) {
    Waveform w(128);
    rectangular_waveform(w.samples(), 0, 0.25 / duration_s, w.xb.data(), w.yb.data());
    const std::string folder = waveform_folder(root, name);
    return write_waveform(folder, "pulse.bin", Layout::nmr, w) &&
           write_waveform(folder, "receiver-1024.bin", Layout::nmr, Waveform(1024));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-example-waveforms ROOT\n");
        return 1;
    }
    const std::string root = argv[1];
    const int written = write_pulse_acquire(root) && write_cosy(root) && write_slice_selection(root) &&
                        write_spin_echo(root, "spin-echo-144") && write_spin_echo(root, "spin-echo-72") &&
                        write_press(root) && write_pulse_to_optimise(root, "optimise-excitation", 0.004) &&
                        write_pulse_to_optimise(root, "optimise-two-spin-order", 0.06);
    if (!written)
        std::fprintf(stderr, "make-example-waveforms: could not write below %s\n", argv[1]);
    return written ? 0 : 1;
}
