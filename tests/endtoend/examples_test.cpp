#include "endtoend/example_oracle.h"
#include "endtoend/example_set.h"
#include "support/build_paths.h"
#include "support/constants.h"
#include "support/deviation.h"
#include "support/run_program.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

using namespace example_oracle;
using kor_test::largest_gap;
using kor_test::PI;
using kor_test::read_file;
namespace fs = std::filesystem;

/// The example waveforms are rounded to 2^-16 rad/s.
double rounded(double field) {
    return std::nearbyint(field * 65536) / 65536;
}
const double HARD_FIELD = rounded(2 * PI * 25000); // rad/s
constexpr double PULSE_90 = 1e-5;                  // s
/// A 90 degree pulse with a small offset acts like an ideal one with 2/pi of its length of free precession on
/// either side (average Hamiltonian of first order).
constexpr double PULSE_DELAY = 2 / PI * PULSE_90;
/// What first order leaves out: (2 pi 260 Hz 10 us)^2 = 2.7e-4 of a spin's signal, with room for a sum of
/// pulses.
constexpr double IDEAL_PULSE_TOLERANCE = 1e-3;
/// Exact against exact: the rounding of up to 1024 steps, a few 1e-16 each, on angles of some 1000 rad.
constexpr double EXACT_TOLERANCE = 1e-11;

Molecule lactate() {
    Molecule m = molecule({4.0974, 1.3142, 1.3142, 1.3142}, 3.0, 127.7, true);
    for (int methyl : {1, 2, 3})
        couple(m, 0, methyl, 6.933);
    return m;
}

Molecule citrate() {
    Molecule m = molecule({2.6735, 2.5265}, 2.6, 127.7, false);
    couple(m, 0, 1, -16.1);
    return m;
}

/// <Iy> of both protons (unit norm each) of an AB pair at time t after an ideal 90 degree pulse about x, seen
/// from the middle of the pair: lines at +-(D - J)/2 of weight (1 + J/D)/4 and at +-(D + J)/2 of weight (1 -
/// J/D)/4, where D^2 = J^2 + (difference of the offsets)^2.
double citrate_quartet(double t) {
    const double j = 16.1, d = std::hypot(0.147 * 127.7, j);
    return (1 + j / d) * std::cos(PI * (d - j) * t) + (1 - j / d) * std::cos(PI * (d + j) * t);
}

void expect_signal(const std::vector<Complex>& got, const std::vector<Complex>& expected, double tolerance) {
    EXPECT_LT(largest_gap(got, expected), tolerance);
}

/// Runs a model of the sequence pulse-acquire and holds its 1024 samples against the dense matrices; returns
/// them.
std::vector<Complex> checked_fid(const std::string& name, const Molecule& m) {
    const ExampleSet set;
    const std::string printed = set.run(name);
    EXPECT_NE(printed.find("pulse-acquire FID"), std::string::npos) << printed;
    const Signals got = set.result_signals(name);
    EXPECT_EQ(got.points, 1024);
    EXPECT_EQ(got.rows.size(), 1u);
    if (got.rows.size() != 1)
        return {};
    const DenseSpins spins(m);
    const Dense rho = spins.step(spins.equilibrium(), PULSE_90, HARD_FIELD, 0, 0);
    expect_signal(got.rows[0], spins.signal(rho, 1024, 0.001), EXACT_TOLERANCE);
    return got.rows[0];
}

/// i times the sum over spins of the weakly coupled precession: ideal 90 degree pulse about x.
std::vector<Complex> weak_fid(const Molecule& m) {
    std::vector<Complex> out(1024);
    for (int k = 0; k < 1024; ++k)
        for (int s = 0; s < static_cast<int>(m.two_i.size()); ++s)
            out[k] += m.intensity[s] * Complex(0, 1) * weak_precession(m, s, k * 0.001 + PULSE_DELAY);
    return out;
}

/// One spectral amplitude: mean of signal times exp(+2 pi i offset t) over the whole number of turns in 1.024
/// s.
double integral(const std::vector<Complex>& signal, double offset_hz) {
    Complex sum = 0;
    for (std::size_t k = 0; k < signal.size(); ++k)
        sum += signal[k] * std::polar(1.0, 2 * PI * offset_hz * static_cast<double>(k) * 0.001);
    return std::abs(sum) / static_cast<double>(signal.size());
}

} // namespace

TEST(Examples, GeneratorWritesTheCommittedWaveformsByteForByte) {
    const ExampleSet set;
    const fs::path fresh = set.root() / "fresh";
    fs::create_directories(fresh);
    ASSERT_EQ(kor_test::run_program({kor_test::make_waveforms_program(), {fresh.string()}}).status, 0);
    int files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(set.root() / "sequences")) {
        if (entry.path().extension() != ".bin")
            continue;
        ++files;
        EXPECT_EQ(read_file(fresh / fs::relative(entry.path(), set.root())), read_file(entry.path()))
            << entry.path();
    }
    for (const auto& entry : fs::recursive_directory_iterator(fresh))
        files -= entry.is_regular_file();
    EXPECT_EQ(files, 0) << "as many files are committed as the generator writes";
}

TEST(Examples, LactateFidIsADoubletAndAQuartet) {
    const std::vector<Complex> fid = checked_fid("lactate-fid", lactate());
    ASSERT_EQ(fid.size(), 1024u);
    expect_signal(fid, weak_fid(lactate()), 4 * IDEAL_PULSE_TOLERANCE);
    // Each methyl line carries 3/2 of a proton. The window of 1.024 s spreads a line over 1 Hz; the other
    // lines lie 6.9 Hz and more away and reach in with less than 1/(pi 6.9 1.024) = 5 % of their strength.
    EXPECT_NEAR(integral(fid, -215.277 + 6.933 / 2), 1.5, 0.08);
    EXPECT_NEAR(integral(fid, -215.277 - 6.933 / 2), 1.5, 0.08);
    EXPECT_LT(integral(fid, -215.277), 0.25);
}

TEST(Examples, AspartateFidIsThatOfThreeStronglyCoupledSpins) {
    Molecule m = molecule({3.8914, 2.8011, 2.6533}, 3.0, 127.7, false);
    couple(m, 0, 1, 3.647);
    couple(m, 0, 2, 9.107);
    couple(m, 1, 2, -17.426);
    const std::vector<Complex> fid = checked_fid("aspartate-fid", m);
    ASSERT_EQ(fid.size(), 1024u);
    EXPECT_NEAR(std::abs(fid[0] - Complex(0, 3)), 0,
                3 * IDEAL_PULSE_TOLERANCE + 2 * PI * 114 * PULSE_DELAY * 3);
    // Weak coupling is no description of this spectrum: the test would notice a mode that was mixed up.
    const std::vector<Complex> weak = weak_fid(m);
    EXPECT_GT(std::abs(weak[200] - fid[200]), 0.1);
}

TEST(Examples, ChloroformDFidIsAOneOneOneTriplet) {
    Molecule m = molecule({0, 0}, 0, 100.6, true);
    m.two_i = {1, 2};
    m.intensity = {1, 0};
    couple(m, 0, 1, 32.1);
    const std::vector<Complex> fid = checked_fid("chloroform-d-fid", m);
    ASSERT_EQ(fid.size(), 1024u);
    // The carbon is on resonance; during the pulse the coupling acts like an offset of 32.1 Hz.
    for (int k = 0; k < 1024; ++k) {
        const double t = k * 0.001 + PULSE_DELAY;
        EXPECT_NEAR(fid[k].imag(), (1 + 2 * std::cos(2 * PI * 32.1 * t)) / 3, IDEAL_PULSE_TOLERANCE);
        EXPECT_NEAR(fid[k].real(), 0, EXACT_TOLERANCE);
    }
}

TEST(Examples, CitrateSliceFollowsTheRotationOfEachVoxel) {
    const ExampleSet set;
    const std::string printed = set.run("citrate-slice");
    EXPECT_NE(printed.find("[KOR_PROGRESS] sector=2 sectors=2 voxel=101 voxels=101 percent=100\n"),
              std::string::npos);
    std::vector<double> samples(5 * 256);
    const std::string bytes =
        read_file(set.root() / "sequences/slice-selection/waveforms/sinc-gauss-90x.bin");
    ASSERT_EQ(bytes.size(), 8 * samples.size());
    std::memcpy(samples.data(), bytes.data(), bytes.size());

    const DenseSpins spins(citrate());
    const std::vector<ProfilePoint> x = set.profile("citrate-slice", "Ix + Sx");
    const std::vector<ProfilePoint> y = set.profile("citrate-slice", "Iy + Sy");
    const std::vector<ProfilePoint> z = set.profile("citrate-slice", "Iz + Sz");
    ASSERT_EQ(z.size(), 101u);
    for (int voxel = 0; voxel < 101; ++voxel) {
        const double position = -1.25 + 0.025 * voxel;
        Dense rho = spins.equilibrium();
        for (int j = 0; j < 256; ++j)
            rho = spins.step(rho, 0.004 / 256, samples[j], samples[256 + j],
                             samples[4 * 256 + j] / (2 * PI) * position);
        rho = spins.step(rho, 0.00205, 0, 0, rounded(-2 * PI * 2000) / (2 * PI) * position);
        EXPECT_NEAR(z[voxel].z_cm, position, 1e-14);
        EXPECT_NEAR(std::abs(x[voxel].value - (spins.observable(Axis::x, {0, 1}) * rho).trace()), 0,
                    EXACT_TOLERANCE);
        EXPECT_NEAR(std::abs(y[voxel].value - (spins.observable(Axis::y, {0, 1}) * rho).trace()), 0,
                    EXACT_TOLERANCE);
        EXPECT_NEAR(std::abs(z[voxel].value - (spins.observable(Axis::z, {0, 1}) * rho).trace()), 0,
                    EXACT_TOLERANCE);
    }
    // Two protons of weight 1 and an observable of unit norm: full magnetisation reads sqrt(2).
    EXPECT_NEAR(z[0].value.real(), std::sqrt(2), 0.001);
    EXPECT_NEAR(y[50].value.real(), std::sqrt(0.5) * citrate_quartet(0.00405), 0.01);
    EXPECT_LT(std::abs(y[50].value - y[40].value), 0.01) << "flat over the slice";
}

TEST(Examples, CitrateSliceRecordsTheSignalOfOneVoxel) {
    const ExampleSet set;
    set.run("citrate-slice");
    const Signals centre = set.voxel_signal("citrate-slice", 51);
    const Signals outside = set.voxel_signal("citrate-slice", 1);
    ASSERT_EQ(centre.points, 1024);
    ASSERT_EQ(centre.rows.size(), 1u);
    EXPECT_LT(std::abs(outside.rows[0][0]), 0.01);
    // The quartet runs since the middle of the pulse: 2 ms of it and 2.05 ms of rephasing.
    for (int k = 0; k < 1024; k += 37) {
        EXPECT_NEAR(centre.rows[0][k].imag(), citrate_quartet(k * 0.001 + 0.00405), 0.02);
        EXPECT_NEAR(centre.rows[0][k].real(), 0, 0.02);
    }
}

TEST(Examples, LactateEchoFollowsTheCosineOfTheEchoTime) {
    struct Case {
        const char* name;
        double te, wait1, wait2;
    };
    for (const Case& c : {Case{"lactate-echo-144", 0.144, 0.069983634, 0.06999},
                          Case{"lactate-echo-72", 0.072, 0.033983634, 0.03399}}) {
        const ExampleSet set;
        set.run(c.name);
        const std::vector<ProfilePoint> methine = set.profile(c.name, "Iy");
        const std::vector<ProfilePoint> methyl = set.profile(c.name, "Sy + Ty + Uy");
        ASSERT_EQ(methine.size(), 16u);
        const DenseSpins spins(lactate());
        const double cosine = std::cos(PI * 6.933 * c.te);
        for (int voxel = 0; voxel < 16; ++voxel) {
            const double crusher = rounded(2 * PI * 2000) / (2 * PI) * (-0.46875 + 0.0625 * voxel);
            Dense rho = spins.step(spins.equilibrium(), PULSE_90, HARD_FIELD, 0, 0);
            rho = spins.step(rho, c.wait1, 0, 0, 0);
            rho = spins.step(rho, 0.002, 0, 0, crusher);
            rho = spins.step(rho, 2 * PULSE_90, 0, HARD_FIELD, 0);
            rho = spins.step(rho, 0.002, 0, 0, crusher);
            rho = spins.step(rho, c.wait2, 0, 0, 0);
            EXPECT_NEAR(methine[voxel].value.real(), (spins.observable(Axis::y, {0}) * rho).trace().real(),
                        EXACT_TOLERANCE);
            EXPECT_NEAR(methyl[voxel].value.real(),
                        (spins.observable(Axis::y, {1, 2, 3}) * rho).trace().real(), EXACT_TOLERANCE);
            // Off resonance the pulse of 20 us turns about an axis tipped by 215 Hz / 25 kHz = 0.009 rad, an
            // error of second order, and the coupling acts for some microseconds more: pi J 10 us = 2e-4.
            EXPECT_NEAR(methine[voxel].value.real(), cosine * cosine * cosine, IDEAL_PULSE_TOLERANCE);
            EXPECT_NEAR(methyl[voxel].value.real(), std::sqrt(3) * cosine,
                        std::sqrt(3) * IDEAL_PULSE_TOLERANCE);
        }
    }
}

TEST(Examples, LactateEchoAtOneOverJStandsUpsideDown) {
    const ExampleSet set;
    set.run("lactate-echo-144");
    const Signals signal = set.voxel_signal("lactate-echo-144", 8);
    ASSERT_EQ(signal.points, 1024);
    // All four protons point along -y; then the decay of the pulse-acquire experiment with the sign turned.
    for (int k = 0; k < 1024; k += 31) {
        Complex expected = 0;
        for (int s = 0; s < 4; ++s)
            expected -= Complex(0, 1) * weak_precession(lactate(), s, k * 0.001);
        EXPECT_NEAR(std::abs(signal.rows[0][k] - expected), 0, 0.05);
    }
}

namespace {

/// A waveform file of N samples as xb, yb, gx, gy, gz.
std::vector<double> spatial_waveform(const fs::path& file, int samples) {
    std::vector<double> out(5 * static_cast<std::size_t>(samples));
    const std::string bytes = read_file(file);
    EXPECT_EQ(bytes.size(), 8 * out.size()) << file;
    std::memcpy(out.data(), bytes.data(), std::min(bytes.size(), 8 * out.size()));
    return out;
}

struct PressSector {
    const char* file;
    int samples;
    double seconds;
};
constexpr PressSector PRESS[] = {{"sinc-gauss-90x.bin", 255, 0.004},    {"wait-1.bin", 15, 0.0075},
                                 {"sinc-gauss-180y-x.bin", 255, 0.005}, {"wait-2.bin", 134, 0.067},
                                 {"sinc-gauss-180y-y.bin", 255, 0.005}, {"wait-3.bin", 115, 0.0575}};

/// Lactate at a place after all sectors; equal samples without RF are one step.
Dense press_state(const DenseSpins& spins, const fs::path& waveforms, const ProfilePoint& at) {
    Dense rho = spins.equilibrium();
    for (const PressSector& sector : PRESS) {
        const std::vector<double> w = spatial_waveform(waveforms / sector.file, sector.samples);
        const auto block = static_cast<std::size_t>(sector.samples);
        const auto offset = [&](std::size_t j) {
            return (w[2 * block + j] * at.x_cm + w[3 * block + j] * at.y_cm + w[4 * block + j] * at.z_cm) /
                   (2 * PI);
        };
        for (std::size_t j = 0; j < block;) {
            const bool free = w[j] == 0 && w[block + j] == 0;
            std::size_t next = j + 1;
            while (free && next < block && offset(next) == offset(j) && w[next] == 0 && w[block + next] == 0)
                ++next;
            rho = spins.step(rho, sector.seconds / sector.samples * static_cast<double>(next - j), w[j],
                             w[block + j], offset(j));
            j = next;
        }
    }
    return rho;
}

/// The methyl signal of the plane at `position` on an axis, as a part of that of a full cross-section of 1.5
/// cm.
double plane_sum(const std::vector<ProfilePoint>& methyl, double ProfilePoint::*axis, double position) {
    double sum = 0;
    for (const ProfilePoint& p : methyl)
        if (std::abs(p.*axis - position) < 1e-9)
            sum += p.value.real();
    return sum / (144 * std::sqrt(3));
}

} // namespace

TEST(Examples, LactatePressFollowsTheRotationOfEachVoxel) {
    const ExampleSet set;
    set.run("lactate-press");
    const std::vector<ProfilePoint> methine = set.profile("lactate-press", "Iy");
    const std::vector<ProfilePoint> methyl = set.profile("lactate-press", "Sy + Ty + Uy");
    ASSERT_EQ(methyl.size(), 24u * 24u * 24u);
    const DenseSpins spins(lactate());
    const fs::path waveforms = set.root() / "sequences/press-144/waveforms";
    // In the middle, on an edge, beyond the second slab, in a corner of the grid.
    for (const int voxel : {6924, 7212, 4040, 7356, 0}) {
        const Dense rho = press_state(spins, waveforms, methyl[voxel]);
        EXPECT_NEAR(methine[voxel].value.real(), (spins.observable(Axis::y, {0}) * rho).trace().real(),
                    EXACT_TOLERANCE);
        EXPECT_NEAR(methyl[voxel].value.real(), (spins.observable(Axis::y, {1, 2, 3}) * rho).trace().real(),
                    EXACT_TOLERANCE);
    }
    // The middle is refocused like an echo of ideal pulses; 4 % is what a slice profile rounds off there.
    EXPECT_NEAR(methyl[7188].value.real(), std::sqrt(3) * std::cos(PI * 6.933 * 0.144), 0.04 * std::sqrt(3));
}

TEST(Examples, LactatePressSelectsACubeOnThreeAxes) {
    const ExampleSet set;
    set.run("lactate-press");
    const std::vector<ProfilePoint> methyl = set.profile("lactate-press", "Sy + Ty + Uy");
    for (double ProfilePoint::*axis : {&ProfilePoint::x_cm, &ProfilePoint::y_cm, &ProfilePoint::z_cm}) {
        EXPECT_LT(plane_sum(methyl, axis, 0.0625), -0.4) << "inverted inside";
        // Crushers leave a few percent of what lies outside; the shift of the methyl protons, 215 Hz, moves
        // their slabs by 0.11 cm.
        for (const double outside : {-1.4375, -1.3125, -1.1875, -1.0625, 1.0625, 1.1875, 1.3125, 1.4375})
            EXPECT_LT(std::abs(plane_sum(methyl, axis, outside)), 0.1) << outside;
    }
    // Where the second 180 degree pulse refocuses the methyl protons but misses the methine proton, 355 Hz or
    // 0.18 cm away, the coupling acts for TE1 alone: the doublet stands upright.
    const double upright = plane_sum(methyl, &ProfilePoint::y_cm, 0.8125);
    EXPECT_GT(upright, 0.2);
    EXPECT_LT(upright, std::cos(PI * 6.933 * 0.024));
}

TEST(Examples, LactateCosyRowsFollowTheProductOperators) {
    const ExampleSet set;
    set.run("lactate-cosy");
    const Signals got = set.result_signals("lactate-cosy");
    ASSERT_EQ(got.points, 512);
    ASSERT_EQ(got.rows.size(), 128u);
    const Molecule m = lactate();
    const DenseSpins spins(m);
    const Dense excited = spins.step(spins.equilibrium(), PULSE_90, HARD_FIELD, 0, 0);
    for (int row = 0; row < 128; row += 9) {
        const double t1 = row * 0.0008;
        Dense rho = spins.step(excited, t1, 0, 0, 400);
        rho = spins.step(rho, PULSE_90, HARD_FIELD, 0, 0);
        expect_signal(got.rows[row], spins.signal(rho, 512, 0.001), EXACT_TOLERANCE);
        std::vector<Complex> ideal(512);
        for (int k = 0; k < 512; ++k)
            ideal[k] = weak_cosy(m, t1 + 2 * PULSE_DELAY, 2 * PI * 400 * t1, k * 0.001 + PULSE_DELAY);
        expect_signal(got.rows[row], ideal, 4 * 2 * IDEAL_PULSE_TOLERANCE);
    }
}

TEST(Examples, ValineFidIsTheProductOfItsCosines) {
    Molecule m = molecule({3.5953, 2.2577, 1.0271, 1.0271, 1.0271, 0.9764, 0.9764, 0.9764}, 3.0, 127.7, true);
    couple(m, 0, 1, 4.405);
    for (int methyl : {2, 3, 4}) {
        couple(m, 1, methyl, 6.971);
        couple(m, 1, methyl + 3, 7.071);
    }
    const std::vector<Complex> fid = checked_fid("valine-fid", m);
    ASSERT_EQ(fid.size(), 1024u);
    expect_signal(fid, weak_fid(m), 8 * IDEAL_PULSE_TOLERANCE);
}
