#include "kor/runtime_state.h"
#include "kor/sequence_driver.h"
#include "kor/smoke_check_mode.h"

#include "support/console_script.h"
#include "support/constants.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <limits>

namespace kor {
namespace {

using kor_test::bytes_of;
using kor_test::ConsoleOutput;
using kor_test::NOT_A_NUMBER;
using kor_test::PI;
using kor_test::play_console;
using kor_test::POSITIVE_INFINITY;
using kor_test::Sector;
using kor_test::system_line;
using kor_test::TempTree;

using Doubles = std::vector<double>;

Sector waveform_sector(const std::string& file, int samples, const std::string& remark) {
    Sector s;
    s.file = file;
    s.samples = samples;
    s.remark = remark;
    return s;
}

/// One spin on 1 x 1 x 2 voxels.
void define_spatial_model(const std::vector<Sector>& sectors, const std::string& result) {
    kor_test::forget_model();
    kor_test::define_spins({1}, {1.0}, {100.0}, {}, true);
    kor_test::define_sequence(1, sectors, result);
    kor_test::define_grid(1, 1, 2, 0.5, 0, -1, 0, 2, 0.25);
}

/// Blocks xb, yb, gx, gy, gz of `samples` values.
std::string blocks(int samples, double xb, double yb, double gx, double gy, double gz) {
    std::string bytes;
    for (double value : {xb, yb, gx, gy, gz}) {
        bytes += bytes_of(Doubles(static_cast<std::size_t>(samples), value));
    }
    return bytes;
}

/// What a run prints behind the announcement and the spin-system listing.
std::string spatial_run_text(const ConsoleOutput& printed) {
    const std::size_t start = printed.out.find("# x-direction");
    return start == std::string::npos ? printed.out : printed.out.substr(start);
}

TEST(SpatialRun, PrintsEveryStepAndCopiesTheStates) {
    const TempTree folder;
    folder.write("w1", blocks(2, 10, 20, 30, 40, 50));
    folder.write("w2", blocks(1, 0, 0, 0, 0, 0));
    define_spatial_model({waveform_sector("w1", 2, "excite"), waveform_sector("w2", 1, ""),
                          waveform_sector("absent", 4, "ADC")},
                         "result.bin");
    const ConsoleOutput printed = play_console("", RunCurrentPreparedModel);
    EXPECT_EQ(printed.err, "");
    const std::string grid = "Spatial starting point x-direction [cm] : 0.5\n"
                             "Spatial x-stepsize                 [cm] : 0\n"
                             "Spatial starting point y-direction [cm] : -1\n"
                             "Spatial y-stepsize                 [cm] : 0\n"
                             "Spatial starting point z-direction [cm] : 2\n"
                             "Spatial z-stepsize                 [cm] : 0.25\n";
    EXPECT_EQ(spatial_run_text(printed),
              "# x-direction : 1  # y-direction : 1  # z-direction : 2\n"
              "Number of pulse sectors to calculate      : 3\n"
              "\nCalculating sector                      : 1\n"
              "Number of time intervals in this sector : 2\n"
              "Sector or pulsetime                [ms] : 1\n"
              "Reading pulse file                      : w1\n" +
                  grid +
                  "Remark : excite\n\n"
                  "[KOR_PROGRESS] sector=1 sectors=2 voxel=1 voxels=2 percent=25\n"
                  "[KOR_PROGRESS] sector=1 sectors=2 voxel=2 voxels=2 percent=50\n"
                  "\n"
                  "\nCalculating sector                      : 2\n"
                  "Number of time intervals in this sector : 1\n"
                  "Sector or pulsetime                [ms] : 1\n"
                  "Reading pulse file                      : w2\n" +
                  grid +
                  "Remark : \n\n"
                  "[KOR_PROGRESS] sector=2 sectors=2 voxel=1 voxels=2 percent=75\n"
                  "[KOR_PROGRESS] sector=2 sectors=2 voxel=2 voxels=2 percent=100\n"
                  "\n"
                  "\nSpatial propagation stops at acquisition sector 3.\n"
                  "The density matrix is stored at acquisition start.\n"
                  "Copied spatial density-matrix result to result.bin\n");
    EXPECT_EQ(folder.read("result.bin"), folder.read("dm.bin"));
    EXPECT_EQ(folder.read("result.bin").size(), 12U + 2 * 64);
    EXPECT_EQ(g_runtime.calc, 2);
}

TEST(SpatialRun, SetsThePropagationParametersOfTheSector) {
    const TempTree folder;
    folder.write("w", blocks(4, 1, 2, 3, 4, 5));
    Sector s = waveform_sector("w", 4, "");
    s.duration_s = 2e-3;
    s.offset_hz = 25;
    define_spatial_model({s}, "");
    play_console("", RunCurrentPreparedModel);
    const RuntimeState& state = g_runtime;
    EXPECT_EQ(state.ap, 4);
    EXPECT_EQ(state.pt, 2e-3);
    EXPECT_EQ(state.h, 5e-4);
    EXPECT_EQ(state.ti, 5e-4);
    EXPECT_DOUBLE_EQ(state.statoff_s, 50 * PI);
    EXPECT_EQ(state.x0_s, 0.5);
    EXPECT_EQ(state.y0_s, -1.0);
    EXPECT_EQ(state.z0_s, 2.0);
    EXPECT_EQ(state.dz_s, 0.25);
    EXPECT_EQ(state.spatial_progress_sector, 1);
    EXPECT_EQ(state.spatial_progress_sector_count, 1);
    EXPECT_EQ(state.pulseflag, 1);
    EXPECT_EQ(state.gz[3], 5.0);
}

TEST(SpatialRun, WithoutResultFileLeavesTheStatesInDmBin) {
    const TempTree folder;
    folder.write("w", blocks(1, 0, 0, 0, 0, 0));
    define_spatial_model({waveform_sector("w", 1, "")}, "");
    play_console("", RunCurrentPreparedModel);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"dm.bin", "w"}));
}

TEST(SpatialRun, SectorsBehindTheAcquisitionAreNotRun) {
    const TempTree folder;
    folder.write("w", blocks(1, 100, 0, 0, 0, 0));
    define_spatial_model({waveform_sector("w", 1, ""), waveform_sector("absent", 1, "Start ADC"),
                          waveform_sector("absent", 1, "")},
                         "r");
    const ConsoleOutput printed = play_console("", RunCurrentPreparedModel);
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(g_runtime.spatial_progress_sector_count, 1);
    EXPECT_NE(printed.out.find("Spatial propagation stops at acquisition sector 2.\n"), std::string::npos);
    EXPECT_TRUE(folder.exists("r"));
}

TEST(SpatialRun, RemarkThatIsNoMarkerIsPropagated) {
    const TempTree folder;
    folder.write("w", blocks(1, 0, 0, 0, 0, 0));
    define_spatial_model({waveform_sector("w", 1, "acq")}, "");
    play_console("", RunCurrentPreparedModel);
    EXPECT_EQ(g_runtime.calc, 1);
}

TEST(SpatialRun, AcquisitionFirstPropagatesNothingAndHasNothingToCopy) {
    const TempTree folder;
    folder.write("dm.bin", "of an earlier run");
    define_spatial_model({waveform_sector("absent", 1, "acquisition")}, "r");
    const ConsoleOutput printed = play_console("", RunCurrentPreparedModel);
    EXPECT_EQ(spatial_run_text(printed), "# x-direction : 1  # y-direction : 1  # z-direction : 2\n"
                                         "Number of pulse sectors to calculate      : 1\n"
                                         "\nSpatial propagation stops at acquisition sector 1.\n"
                                         "The density matrix is stored at acquisition start.\n"
                                         "Failed to copy spatial density-matrix result to r\n");
    EXPECT_EQ(g_runtime.spatial_progress_sector_count, 0);
    EXPECT_EQ(g_runtime.calc, 0);
    EXPECT_TRUE(folder.names().empty());
}

TEST(SpatialRun, UnopenableResultFileIsTold) {
    const TempTree folder;
    folder.write("w", blocks(1, 0, 0, 0, 0, 0));
    define_spatial_model({waveform_sector("w", 1, "")}, "absent/r");
    const ConsoleOutput printed = play_console("", RunCurrentPreparedModel);
    EXPECT_NE(printed.out.find("Failed to copy spatial density-matrix result to absent/r\n"),
              std::string::npos);
    EXPECT_EQ(printed.out.find("Copied"), std::string::npos);
}

TEST(SpatialRun, ResultMayBeTheScratchFileItself) {
    const TempTree folder;
    folder.write("w", blocks(1, 0, 0, 0, 0, 0));
    define_spatial_model({waveform_sector("w", 1, "")}, "dm.bin");
    play_console("", RunCurrentPreparedModel);
    EXPECT_EQ(folder.read("dm.bin").size(), 12U + 2 * 64);
}

TEST(SpatialRun, AbsentWaveformFileEndsTheRun) {
    const TempTree folder;
    define_spatial_model({waveform_sector("absent", 1, "")}, "r");
    const ConsoleOutput printed = play_console("", RunCurrentPreparedModel);
    EXPECT_EQ(printed.err, system_line("absent", ENOENT));
    EXPECT_NE(printed.out.find("Reading pulse file                      : absent\n"
                               "Error reading pulse file absent\n"),
              std::string::npos);
    EXPECT_TRUE(folder.names().empty());
}

TEST(SpatialRun, ShortWaveformFileInALaterSectorLeavesNoResult) {
    const TempTree folder;
    folder.write("w", blocks(2, 0, 0, 0, 0, 0));
    folder.write("short", blocks(2, 0, 0, 0, 0, 0).substr(0, 79));
    define_spatial_model({waveform_sector("w", 2, ""), waveform_sector("short", 2, "")}, "r");
    const ConsoleOutput printed = play_console("", RunCurrentPreparedModel);
    EXPECT_EQ(printed.err, "short: too short for 5 blocks of 2 samples\n");
    EXPECT_NE(printed.out.find("Error reading pulse file short\n"), std::string::npos);
    EXPECT_FALSE(folder.exists("r"));
    EXPECT_EQ(g_runtime.calc, 1);
}

TEST(SpatialRun, EmptyWaveformNameIsUnreadable) {
    const TempTree folder;
    define_spatial_model({waveform_sector("", 1, "")}, "r");
    EXPECT_NE(play_console("", RunCurrentPreparedModel).out.find("Error reading pulse file \n"),
              std::string::npos);
}

TEST(SpatialRun, TooManySamplesAreUnreadable) {
    const TempTree folder;
    folder.write("w", std::string(8193 * 40, '\0'));
    for (int samples : {8193, -1}) {
        define_spatial_model({waveform_sector("w", samples, "")}, "r");
        const ConsoleOutput printed = play_console("", RunCurrentPreparedModel);
        EXPECT_NE(printed.out.find("Error reading pulse file w\n"), std::string::npos);
    }
}

TEST(SpatialRun, SampleThatIsNotFiniteEndsTheRun) {
    const TempTree folder;
    for (double bad : {NOT_A_NUMBER, POSITIVE_INFINITY, -POSITIVE_INFINITY}) {
        for (std::size_t block = 0; block < 5; ++block) {
            Doubles values(15, 1.0);
            values[3 * block + 2] = bad;
            folder.write("w", bytes_of(values));
            define_spatial_model({waveform_sector("w", 3, "")}, "r");
            const ConsoleOutput printed = play_console("", RunCurrentPreparedModel);
            char expected[160];
            std::snprintf(expected, sizeof expected,
                          "Bad pulse sample at l=2: xb=%g yb=%g gx=%g gy=%g gz=%g\n", values[2], values[5],
                          values[8], values[11], values[14]);
            EXPECT_NE(printed.out.find(expected), std::string::npos) << expected << printed.out;
            EXPECT_EQ(printed.out.find("Spatial starting"), std::string::npos);
            EXPECT_EQ(folder.names(), std::vector<std::string>{"w"});
        }
    }
}

TEST(SpatialRun, FirstBadSampleIsNamed) {
    const TempTree folder;
    Doubles values(15, 1.0);
    values[2] = NOT_A_NUMBER;       // xb, l = 2
    values[13] = POSITIVE_INFINITY; // gz, l = 1
    folder.write("w", bytes_of(values));
    define_spatial_model({waveform_sector("w", 3, "")}, "");
    EXPECT_NE(play_console("", RunCurrentPreparedModel)
                  .out.find("Bad pulse sample at l=1: xb=1 yb=1 gx=1 gy=1 gz=inf\n"),
              std::string::npos);
}

TEST(SpatialRun, FailedPropagationEndsTheRunWithoutResult) {
    const TempTree folder;
    folder.write("w", blocks(1, 0, 0, 0, 0, 0));
    folder.write("store/occupied", "");
    define_spatial_model({waveform_sector("w", 1, ""), waveform_sector("w", 1, "")}, "r");
    const ConsoleOutput printed = play_console("", RunCurrentPreparedModel);
    EXPECT_EQ(printed.err, system_line("store", EISDIR));
    EXPECT_EQ(printed.out.find("Calculating sector                      : 2"), std::string::npos);
    EXPECT_EQ(printed.out.find("result"), std::string::npos);
    EXPECT_FALSE(folder.exists("r"));
}

TEST(SpatialRun, SectorWithoutSamplesCountsAndChangesNothing) {
    const TempTree folder;
    folder.write("w", "");
    define_spatial_model({waveform_sector("w", 0, "")}, "r");
    play_console("", RunCurrentPreparedModel);
    EXPECT_EQ(g_runtime.h, 0.0);
    EXPECT_EQ(g_runtime.calc, 1);
    const auto file = kor_test::read_density_file("r");
    ASSERT_EQ(file.matrices.size(), 2U);
    EXPECT_NEAR(file.matrices[1](0, 0).real(), std::sqrt(0.5), 1e-15);
}

TEST(SpatialRun, SecondRunGivesTheSameBytesQuietOrNot) {
    const TempTree folder;
    folder.write("w", blocks(3, 500, -200, 1000, 2000, -3000));
    define_spatial_model({waveform_sector("w", 3, ""), waveform_sector("w", 3, "")}, "r");
    play_console("", RunCurrentPreparedModel);
    const std::string first = folder.read("r");
    folder.write("dm.bin", "spoilt");
    play_console("", RunCurrentPreparedModel);
    EXPECT_EQ(folder.read("r"), first);
    KOR_SetSmokeCheckMode(1);
    const ConsoleOutput quiet = play_console("", RunCurrentPreparedModel);
    EXPECT_EQ(quiet.out + quiet.err, "");
    EXPECT_EQ(folder.read("r"), first);
    KOR_SetSmokeCheckMode(0);
}

TEST(LoadSectorFiles, FillTheWaveformsOfTheRuntimeState) {
    const TempTree folder;
    folder.write("w", bytes_of(Doubles{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    kor_test::forget_model();
    EXPECT_EQ(LoadSpatialSectorPulseFile("w", 2), 1);
    EXPECT_EQ(g_runtime.xb[1], 2.0);
    EXPECT_EQ(g_runtime.yb[0], 3.0);
    EXPECT_EQ(g_runtime.gx[1], 6.0);
    EXPECT_EQ(g_runtime.gy[0], 7.0);
    EXPECT_EQ(g_runtime.gz[1], 10.0);
    EXPECT_EQ(LoadSpatialSectorPulseFile("w", 3), 0);
    EXPECT_EQ(Load2DSectorPulseFile("w", 5), 1);
    EXPECT_EQ(g_runtime.yb[4], 10.0);
    EXPECT_EQ(Load2DSectorPulseFile("w", 6), 0);
    EXPECT_EQ(Load2DSectorPulseFile(nullptr, 1), 0);
}

TEST(AccumulateCMat, AddsInPlace) {
    static CMatrix acc, add;
    acc[1][2] = Complex2{{0, 1, 2}};
    add[1][2] = Complex2{{0, 10, 20}};
    acc[3][3] = Complex2{{0, 5, 5}};
    add[3][3] = Complex2{{0, 7, 7}};
    AccumulateCMat(2, acc, add);
    EXPECT_EQ(acc[1][2][1], 11.0);
    EXPECT_EQ(acc[1][2][2], 22.0);
    EXPECT_EQ(acc[3][3][1], 5.0);
    EXPECT_EQ(add[1][2][1], 10.0);
}

} // namespace
} // namespace kor
