// Whole runs through files against an independent computation: operators by Kronecker products,
// propagators by diagonalisation of each sample's Hamiltonian.
#include "kor/runtime_state.h"
#include "kor/sequence_driver.h"

#include "support/console_script.h"
#include "support/constants.h"
#include "support/run_models.h"
#include "support/signal_files.h"
#include "support/temp_tree.h"
#include "support/transform_2d.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace kor {
namespace {

using kor_test::bytes_of;
using kor_test::DenseSystem;
using kor_test::Matrix;
using kor_test::Sector;
using kor_test::TempTree;
using kor_test::TWO_PI;

using Doubles = std::vector<double>;

constexpr double tolerance = 1e-12;

Doubles random_values(std::mt19937& random, std::size_t count, double scale) {
    std::normal_distribution<double> value(0.0, scale);
    Doubles values(count);
    for (double& v : values) {
        v = value(random);
    }
    return values;
}

/// A waveform sector and its samples.
struct SectorWaveform {
    Sector sector;
    Doubles xb, yb, gx, gy, gz;
};

SectorWaveform random_sector_waveform(std::mt19937& random, const std::string& file, int samples) {
    SectorWaveform wave;
    wave.sector.file = file;
    wave.sector.samples = samples;
    wave.sector.duration_s = 1e-3;
    wave.sector.offset_hz = random_values(random, 1, 200.0)[0];
    const auto count = static_cast<std::size_t>(samples);
    wave.xb = random_values(random, count, 3000.0);
    wave.yb = random_values(random, count, 3000.0);
    wave.gx = random_values(random, count, 2000.0);
    wave.gy = random_values(random, count, 2000.0);
    wave.gz = random_values(random, count, 2000.0);
    return wave;
}

/// The state behind a sector at a position, each sample taking rho to exp(+i H dt) rho exp(-i H dt).
Matrix behind(const DenseSystem& system, const SectorWaveform& wave, double dt, double x, double y, double z,
              Matrix rho) {
    for (std::size_t j = 0; j < wave.xb.size(); ++j) {
        const double w = wave.gx[j] * x + wave.gy[j] * y + wave.gz[j] * z + TWO_PI * wave.sector.offset_hz;
        const Matrix step = kor_test::step_propagator(
            system.h0 + w * system.fz + wave.xb[j] * system.fx + wave.yb[j] * system.fy, dt);
        rho = step.adjoint() * rho * step;
    }
    return rho;
}

TEST(SpatialRun, EveryVoxelAgreesWithTheIndependentComputation) {
    for (unsigned seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const TempTree folder;
        const bool weak = seed % 2 == 0;
        const DenseSystem system = kor_test::dense_system({1, 1}, {1.0, 0.6}, {120.0, -75.0}, {11.0}, weak);
        std::vector<SectorWaveform> waves{random_sector_waveform(random, "w1", 7),
                                          random_sector_waveform(random, "w2", 3)};
        for (const SectorWaveform& wave : waves) {
            folder.write(wave.sector.file, bytes_of(wave.xb) + bytes_of(wave.yb) + bytes_of(wave.gx) +
                                               bytes_of(wave.gy) + bytes_of(wave.gz));
        }
        kor_test::forget_model();
        kor_test::define_spins({1, 1}, {1.0, 0.6}, {120.0, -75.0}, {11.0}, weak);
        kor_test::define_sequence(1, {waves[0].sector, waves[1].sector}, "result.bin");
        kor_test::define_grid(3, 2, 2, -0.5, 0.4, 0.25, -0.75, 1.0, 0.125);
        kor_test::play_console("", RunCurrentPreparedModel);
        const auto file = kor_test::read_density_file("result.bin");
        ASSERT_EQ(file.matrices.size(), 12U);
        EXPECT_EQ(file.type, 0);
        EXPECT_EQ(file.n, 4);
        EXPECT_EQ(file.trailing_bytes, 0U);
        std::size_t voxel = 0;
        for (int ix = 0; ix < 3; ++ix) {
            for (int iy = 0; iy < 2; ++iy) {
                for (int iz = 0; iz < 2; ++iz) {
                    Matrix rho = system.equilibrium;
                    for (const SectorWaveform& wave : waves) {
                        rho = behind(system, wave, wave.sector.duration_s / wave.sector.samples,
                                     -0.5 + 0.4 * ix, 0.25 - 0.75 * iy, 1.0 + 0.125 * iz, rho);
                    }
                    EXPECT_LT(kor_test::largest_difference(file.matrices[voxel++], rho), tolerance);
                }
            }
        }
    }
}

TEST(NmrRun, EveryEvolutionRowAgreesWithTheIndependentComputation) {
    for (unsigned seed = 11; seed <= 14; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const TempTree folder;
        const bool weak = seed % 2 == 0;
        const DenseSystem system = kor_test::dense_system({1, 2}, {1.0, 0.6}, {120.0, -75.0}, {11.0}, weak);
        std::vector<SectorWaveform> waves{random_sector_waveform(random, "w1", 5),
                                          random_sector_waveform(random, "w2", 4),
                                          random_sector_waveform(random, "w3", 2)};
        waves[1].sector.type = 2;
        waves[1].sector.rows = waves[2].sector.rows = 5;
        for (SectorWaveform& wave : waves) {
            folder.write(wave.sector.file, bytes_of(wave.xb) + bytes_of(wave.yb));
        }
        kor_test::forget_model();
        kor_test::define_spins({1, 2}, {1.0, 0.6}, {120.0, -75.0}, {11.0}, weak);
        kor_test::define_sequence(2, {waves[0].sector, waves[1].sector, waves[2].sector}, "result.bin");
        kor_test::play_console("", RunCurrentPreparedModel);
        const auto file = kor_test::read_density_file("result.bin");
        ASSERT_EQ(file.matrices.size(), 5U);
        EXPECT_EQ(file.n, 6);
        for (int row = 1; row <= 5; ++row) {
            Matrix rho = behind(system, waves[0], 1e-3 / 5, 0, 0, 0, system.equilibrium);
            rho = behind(system, waves[1], (row - 1) * 1e-3 / 4, 0, 0, 0, rho);
            rho = behind(system, waves[2], 1e-3 / 2, 0, 0, 0, rho);
            EXPECT_LT(kor_test::largest_difference(file.matrices[static_cast<std::size_t>(row - 1)], rho),
                      tolerance);
        }
    }
}

/// Signals <Fx> + i <Fy> of free evolution, Fx and Fy summed over the spins at unit norm.
kor_test::Row receiver_signal(const DenseSystem& system, double offset_hz, int points, double acquisition_s,
                              Matrix rho) {
    Matrix fx = Matrix::Zero(system.n, system.n);
    Matrix fy = fx;
    for (std::size_t s = 0; s < system.ix.size(); ++s) {
        fx += system.ix[s] / system.ix[s].norm();
        fy += system.iy[s] / system.iy[s].norm();
    }
    const Matrix step =
        kor_test::step_propagator(system.h0 + TWO_PI * offset_hz * system.fz, acquisition_s / points);
    kor_test::Row signal;
    for (int k = 0; k < points; ++k) {
        signal.emplace_back((fx * rho).trace().real(), (fy * rho).trace().real());
        rho = step.adjoint() * rho * step;
    }
    return signal;
}

TEST(NmrRun, TwoDimensionalSpectrumAgreesWithTheIndependentComputation) {
    constexpr unsigned seed = 21;
    constexpr int rows = 16;
    constexpr int points = 32;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const TempTree folder;
    const DenseSystem system = kor_test::dense_system({1, 1}, {1.0, 0.6}, {120.0, -75.0}, {11.0}, false);
    std::vector<SectorWaveform> waves{random_sector_waveform(random, "w1", 5),
                                      random_sector_waveform(random, "w2", 1),
                                      random_sector_waveform(random, "w3", 2)};
    waves[1].xb = waves[1].yb = {0.0};
    waves[1].sector.type = 2;
    waves[1].sector.rows = waves[2].sector.rows = rows;
    for (const SectorWaveform& wave : waves) {
        folder.write(wave.sector.file, bytes_of(wave.xb) + bytes_of(wave.yb));
    }
    kor_test::forget_model();
    kor_test::define_spins({1, 1}, {1.0, 0.6}, {120.0, -75.0}, {11.0}, false);
    kor_test::define_sequence(2, {waves[0].sector, waves[1].sector, waves[2].sector}, "");
    kor_test::play_console(std::to_string(points) + "\n0.05\n13\n2\n0\n", RunCurrentPreparedModel);

    kor_test::Row signals;
    for (int row = 0; row < rows; ++row) {
        Matrix rho = behind(system, waves[0], 1e-3 / 5, 0, 0, 0, system.equilibrium);
        rho = behind(system, waves[1], row * 1e-3, 0, 0, 0, rho);
        rho = behind(system, waves[2], 1e-3 / 2, 0, 0, 0, rho);
        const kor_test::Row signal = receiver_signal(system, 13.0, points, 0.05, rho);
        signals.insert(signals.end(), signal.begin(), signal.end());
    }
    const kor_test::Row expected = kor_test::transform_2d(signals, points);
    const kor_test::SignalFile spectrum = kor_test::read_signal_file("sort.bin");
    EXPECT_EQ(spectrum.header[1], points);
    EXPECT_EQ(spectrum.header[2], rows);
    ASSERT_EQ(spectrum.samples.size(), expected.size());
    for (std::size_t k = 0; k < expected.size(); ++k) {
        EXPECT_LT(std::abs(spectrum.samples[k] - expected[k]), 1e-11) << "bin " << k;
    }
}

TEST(SpatialRun, KeepsTracePurityAndHermiticityOfEveryVoxel) {
    constexpr unsigned seed = 99;
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const TempTree folder;
    const SectorWaveform wave = random_sector_waveform(random, "w", 50);
    folder.write("w", bytes_of(wave.xb) + bytes_of(wave.yb) + bytes_of(wave.gx) + bytes_of(wave.gy) +
                          bytes_of(wave.gz));
    kor_test::forget_model();
    kor_test::define_spins({1, 1, 1}, {1, 1, 1}, {300, 0, -200}, {8, 0, -12}, false);
    kor_test::define_sequence(1, {wave.sector}, "result.bin");
    kor_test::define_grid(2, 2, 5, -1, 2, -1, 2, -1, 0.5);
    const Matrix start =
        kor_test::dense_system({1, 1, 1}, {1, 1, 1}, {300, 0, -200}, {8, 0, -12}, false).equilibrium;
    kor_test::play_console("", RunCurrentPreparedModel);
    const auto file = kor_test::read_density_file("result.bin");
    ASSERT_EQ(file.matrices.size(), 20U);
    for (const Matrix& rho : file.matrices) {
        EXPECT_LT(std::abs(rho.trace()), 1e-12);
        EXPECT_NEAR(rho.squaredNorm(), start.squaredNorm(), 1e-11);
        EXPECT_LT(kor_test::largest_difference(rho, rho.adjoint()), 1e-12);
    }
}

} // namespace
} // namespace kor
