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
#include <complex>
#include <cstring>
#include <limits>

namespace kor {
namespace {

using kor_test::bytes_of;
using kor_test::ConsoleOutput;
using kor_test::PI;
using kor_test::play_console;
using kor_test::Sector;
using kor_test::system_line;
using kor_test::TempTree;

using Doubles = std::vector<double>;

/// A quarter turn about x in one sample of 1 ms.
Sector pulse(const std::string& remark = "pulse") {
    Sector s;
    s.file = "quarter";
    s.remark = remark;
    return s;
}

Sector evolution(int rows, const std::string& remark = "evolve") {
    Sector s;
    s.type = 2;
    s.rows = rows;
    s.file = "free";
    s.remark = remark;
    return s;
}

Sector receiver(int samples, double duration_s, double offset_hz) {
    Sector s;
    s.samples = samples;
    s.duration_s = duration_s;
    s.offset_hz = offset_hz;
    s.file = "never read";
    s.remark = "ADC";
    return s;
}

/// One spin 1/2 at 100 Hz.
void define_nmr_model(const TempTree& folder, const std::vector<Sector>& sectors, const std::string& result) {
    folder.write("quarter", bytes_of(Doubles{PI / 2 / 1e-3, 0}));
    folder.write("free", bytes_of(Doubles{0, 0}));
    kor_test::forget_model();
    kor_test::define_spins({1}, {1.0}, {100.0}, {}, true);
    kor_test::define_sequence(2, sectors, result);
}

ConsoleOutput run() {
    return play_console("", RunCurrentPreparedModel);
}

std::string nmr_run_text(const ConsoleOutput& printed) {
    const std::size_t start = printed.out.find("Number of pulse sectors");
    return start == std::string::npos ? printed.out : printed.out.substr(start);
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

struct Signals {
    int type = -1, points = -1, count = -1;
    Doubles values;
};

Signals read_signals(const TempTree& folder, const std::string& name) {
    const std::string bytes = folder.read(name);
    Signals signals;
    int header[3];
    std::memcpy(header, bytes.data(), 12);
    signals.type = header[0];
    signals.points = header[1];
    signals.count = header[2];
    signals.values.resize((bytes.size() - 12) / 8);
    std::memcpy(signals.values.data(), bytes.data() + 12, bytes.size() - 12);
    return signals;
}

TEST(NmrRun, PrintsEveryStep) {
    const TempTree folder;
    define_nmr_model(folder, {pulse("first"), evolution(3)}, "r");
    const ConsoleOutput printed = run();
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(nmr_run_text(printed), "Number of pulse sectors to calculate    : 2\n"
                                     "\nCalculating sector                      : 1\n"
                                     "Sector type                             : 1  # normal sector\n"
                                     "Number of time intervals in this sector : 1\n"
                                     "Number of evolution intervals           : 1\n"
                                     "Sector or pulsetime                [ms] : 1\n"
                                     "Reading pulse file                      : quarter\n"
                                     "Remark on sector                        : first\n"
                                     "*\n"
                                     "\nCalculating sector                      : 2\n"
                                     "Sector type                             : 2  # evolution sector\n"
                                     "Number of time intervals in this sector : 1\n"
                                     "Number of evolution intervals           : 3\n"
                                     "Sector or pulsetime                [ms] : 1\n"
                                     "Reading pulse file                      : free\n"
                                     "Remark on sector                        : evolve\n"
                                     "***\n"
                                     "Copied density-matrix result to r\n");
    EXPECT_EQ(folder.read("r"), folder.read("dm.bin"));
    EXPECT_EQ(folder.read("r").size(), 12U + 3 * 64);
}

TEST(NmrRun, PulseAcquireWritesTheReceiverSignal) {
    const TempTree folder;
    define_nmr_model(folder, {pulse(), receiver(1024, 0.5, 7.0)}, "fid");
    g_runtime.resofreqs[1] = 20.0;
    const ConsoleOutput printed = run();
    EXPECT_EQ(printed.err, "");
    const std::string text = nmr_run_text(printed);
    EXPECT_TRUE(contains(text, "Number of pulse sectors to calculate    : 2\n"
                               "Detected sequence subtype               : pulse-acquire FID\n"));
    EXPECT_TRUE(contains(text, "Reading pulse file                      : never read\n"
                               "Remark on sector                        : ADC\n"
                               "ADC sector marked for receiver/FID export; density matrix is preserved at "
                               "acquisition start.\n"));
    EXPECT_TRUE(contains(text, "Wrote complex receiver signal to fid (samples=1024, acquisition=0.5 s)\n"));
    const Signals signals = read_signals(folder, "fid");
    EXPECT_EQ(signals.type, 1);
    EXPECT_EQ(signals.points, 1024);
    EXPECT_EQ(signals.count, 1);
    ASSERT_EQ(signals.values.size(), 2048U);
    // The pulse leaves a tilted axis: the offset acts during it. Afterwards the signal turns at the offset
    // from the receiver, exp(-i w t), with the start that the states in "dm.bin" give.
    const auto rho = kor_test::read_density_file("dm.bin").matrices.at(0);
    const double root2 = std::sqrt(2.0); // unit norm of Ix of one spin 1/2
    const std::complex<double> start(root2 * rho(0, 1).real(), -root2 * rho(0, 1).imag());
    for (std::size_t k = 0; k < 1024; ++k) {
        const double t = 0.5 * static_cast<double>(k) / 1024;
        const std::complex<double> expected = start * std::polar(1.0, -2 * PI * 27.0 * t);
        ASSERT_NEAR(signals.values[2 * k], expected.real(), 1e-10);
        ASSERT_NEAR(signals.values[2 * k + 1], expected.imag(), 1e-10);
    }
    EXPECT_EQ(g_runtime.Ixtot[1][2][1], 0.5); // plain sums again
}

TEST(NmrRun, ReceiverSamplesMustBeAPowerOfTwo) {
    const TempTree folder;
    define_nmr_model(folder, {pulse(), receiver(1000, 0.5, 0)}, "fid");
    EXPECT_TRUE(
        contains(run().out, "ADC sample count 1000 is not a power of two; not writing receiver signal.\n"));
    EXPECT_FALSE(folder.exists("fid"));
    define_nmr_model(folder, {pulse(), evolution(2), receiver(1000, 0.5, 0)}, "fid");
    EXPECT_TRUE(contains(run().out,
                         "ADC sample count 1000 is not a power of two; not writing 2D receiver signal.\n"));
    EXPECT_FALSE(folder.exists("fid"));
}

TEST(NmrRun, EvolutionAndReceiverGiveOneSignalPerRow) {
    const TempTree folder;
    define_nmr_model(folder, {pulse(), evolution(3), receiver(4, 0.004, 0)}, "fid");
    const ConsoleOutput printed = run();
    EXPECT_TRUE(contains(printed.out, "Wrote 2D complex receiver signal to fid (samples=4, evolution rows=3, "
                                      "acquisition=0.004 s)\n"));
    const Signals signals = read_signals(folder, "fid");
    EXPECT_EQ(signals.points, 4);
    EXPECT_EQ(signals.count, 3);
    ASSERT_EQ(signals.values.size(), 24U);
    // Row k starts where row 1 is after k - 1 milliseconds, which is its sample k.
    for (std::size_t row = 1; row < 3; ++row) {
        for (std::size_t k = 0; k + row < 4; ++k) {
            EXPECT_NEAR(signals.values[8 * row + 2 * k], signals.values[2 * (k + row)], 1e-12);
            EXPECT_NEAR(signals.values[8 * row + 2 * k + 1], signals.values[2 * (k + row) + 1], 1e-12);
        }
    }
    EXPECT_EQ(g_runtime.Iytot[1][2][2], -0.5);
}

TEST(NmrRun, UnwritableSignalFileIsTold) {
    const TempTree folder;
    define_nmr_model(folder, {pulse(), receiver(4, 0.5, 0)}, "absent/fid");
    ConsoleOutput printed = run();
    EXPECT_TRUE(contains(printed.out, "Failed to write complex receiver signal to absent/fid\n"));
    EXPECT_FALSE(contains(printed.out, "Wrote"));
    define_nmr_model(folder, {pulse(), evolution(2), receiver(4, 0.5, 0)}, "absent/fid");
    printed = run();
    EXPECT_TRUE(contains(printed.out, "Failed to write 2D complex receiver signal to absent/fid\n"));
    EXPECT_EQ(g_runtime.Ixtot[1][2][1], 0.5);
}

TEST(NmrRun, ReceiverWithoutStatesHasNothingToWrite) {
    const TempTree folder;
    define_nmr_model(folder, {receiver(4, 0.5, 0)}, "fid");
    const ConsoleOutput printed = run();
    EXPECT_EQ(printed.err, system_line("fopen(dm.bin)", ENOENT));
    EXPECT_TRUE(contains(printed.out, "Failed to write complex receiver signal to fid\n"));
}

TEST(NmrRun, LaterReceiverReplacesAnEarlierOne) {
    const TempTree folder;
    define_nmr_model(folder, {pulse(), receiver(4, 0.5, 0), receiver(8, 0.25, 0)}, "fid");
    EXPECT_TRUE(
        contains(run().out, "Wrote complex receiver signal to fid (samples=8, acquisition=0.25 s)\n"));
    EXPECT_EQ(read_signals(folder, "fid").points, 8);
}

TEST(NmrRun, SectorsBehindTheReceiverAreStillRun) {
    const TempTree folder;
    define_nmr_model(folder, {pulse(), receiver(4, 0.5, 0), pulse("again")}, "fid");
    run();
    EXPECT_EQ(g_runtime.calc, 2);
}

TEST(NmrRun, MarkerOnAnEvolutionSectorMeansNothing) {
    const TempTree folder;
    define_nmr_model(folder, {pulse(), evolution(2, "ADC")}, "r");
    const ConsoleOutput printed = run();
    EXPECT_FALSE(contains(printed.out, "ADC sector marked"));
    EXPECT_TRUE(contains(printed.out, "Copied density-matrix result to r\n"));
    EXPECT_EQ(kor_test::read_density_file("r").count, 2);
}

TEST(NmrRun, WithoutReceiverTheStatesAreTheResult) {
    const TempTree folder;
    define_nmr_model(folder, {pulse()}, "r");
    EXPECT_TRUE(contains(run().out, "Copied density-matrix result to r\n"));
    EXPECT_EQ(folder.read("r"), folder.read("dm.bin"));
    define_nmr_model(folder, {pulse()}, "absent/r");
    EXPECT_TRUE(contains(run().out, "Failed to copy density-matrix result to absent/r\n"));
}

TEST(NmrRun, WithoutResultFileAndEvolutionNothingIsWritten) {
    const TempTree folder;
    define_nmr_model(folder, {pulse(), receiver(4, 0.5, 0)}, "");
    const ConsoleOutput printed = run();
    EXPECT_FALSE(contains(printed.out, "receiver signal"));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"dm.bin", "free", "quarter"}));
}

TEST(NmrRun, EvolutionWithoutResultFileEndsInA2dSpectrum) {
    const TempTree folder;
    define_nmr_model(folder, {pulse(), evolution(2)}, "");
    EXPECT_TRUE(contains(run().out, "How many time-points (power of 2): "));
    EXPECT_EQ(g_runtime.Ixtot[1][2][1], 0.5);
    KOR_SetSmokeCheckMode(1);
    const ConsoleOutput quiet = run();
    EXPECT_EQ(quiet.out + quiet.err, "");
    const Signals signals = read_signals(folder, "korsign.bin");
    EXPECT_EQ(signals.points, 1);
    EXPECT_EQ(signals.count, 2);
    KOR_SetSmokeCheckMode(0);
}

TEST(NmrRun, EvolutionWithResultFileMakesNo2dSpectrum) {
    const TempTree folder;
    define_nmr_model(folder, {pulse(), evolution(2)}, "r");
    run();
    EXPECT_FALSE(folder.exists("korsign.bin"));
}

/// Runs a model whose second sector is broken in one way.
std::string refusal(const TempTree& folder, int type, int samples, int rows) {
    Sector s = pulse("broken");
    s.type = type;
    s.samples = samples;
    s.rows = rows;
    define_nmr_model(folder, {pulse(), s}, "r");
    const std::string out = run().out;
    EXPECT_FALSE(folder.exists("r"));
    EXPECT_FALSE(contains(out, "Calculating sector                      : 2"));
    EXPECT_EQ(g_runtime.calc, 1);
    return out.substr(out.rfind("*\n") + 2);
}

TEST(NmrRun, InvalidSectorEndsTheRun) {
    const TempTree folder;
    for (int type : {0, 3, -1}) {
        EXPECT_EQ(refusal(folder, type, 0, 0),
                  "Invalid 1D/2D sector type in sector 2 : " + std::to_string(type) + "\n");
    }
    for (int type : {1, 2}) {
        EXPECT_EQ(refusal(folder, type, 0, 0), "Invalid number of time intervals in sector 2 : 0\n");
        EXPECT_EQ(refusal(folder, type, -5, 1), "Invalid number of time intervals in sector 2 : -5\n");
        EXPECT_EQ(refusal(folder, type, 1, 0), "Invalid number of evolution intervals in sector 2 : 0\n");
    }
}

TEST(NmrRun, UnreadableWaveformFileEndsTheRun) {
    const TempTree folder;
    Sector s = pulse();
    s.file = "absent";
    define_nmr_model(folder, {s}, "r");
    ConsoleOutput printed = run();
    EXPECT_EQ(printed.err, system_line("absent", ENOENT));
    EXPECT_TRUE(contains(printed.out, "Error reading pulse file absent\n"));
    s.file = "quarter";
    s.samples = 2;
    define_nmr_model(folder, {s}, "r");
    printed = run();
    EXPECT_EQ(printed.err, "quarter: too short for 2 blocks of 2 samples\n");
    EXPECT_TRUE(contains(printed.out, "Error reading pulse file quarter\n"));
    EXPECT_FALSE(folder.exists("r"));
    EXPECT_FALSE(folder.exists("dm.bin"));
}

TEST(NmrRun, SampleThatIsNotFiniteEndsTheRun) {
    const TempTree folder;
    for (double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        for (std::size_t at : {1U, 4U}) {
            Sector s = pulse();
            s.samples = 3;
            s.file = "bad";
            Doubles values{1, 2, 3, 4, 5, 6};
            values[at] = bad;
            folder.write("bad", bytes_of(values));
            define_nmr_model(folder, {s}, "r");
            char expected[80];
            std::snprintf(expected, sizeof expected, "Bad pulse sample at l=1: xb=%g yb=%g\n", values[1],
                          values[4]);
            const std::string out = run().out;
            EXPECT_TRUE(contains(out, expected)) << expected << out;
            EXPECT_FALSE(contains(out, "Remark on sector"));
            EXPECT_FALSE(folder.exists("r"));
        }
    }
}

TEST(NmrRun, FailedPropagationEndsTheRunWithoutResult) {
    const TempTree folder;
    folder.write("store/occupied", "");
    define_nmr_model(folder, {pulse(), pulse()}, "r");
    const ConsoleOutput printed = run();
    EXPECT_EQ(printed.err, system_line("store", EISDIR));
    EXPECT_FALSE(contains(printed.out, "Calculating sector                      : 2"));
    EXPECT_FALSE(folder.exists("r"));
}

TEST(NmrRun, RowsOfALaterSectorStartFromTheFirstRow) {
    const TempTree folder;
    Sector two_rows = pulse();
    two_rows.rows = 2;
    define_nmr_model(folder, {pulse(), evolution(4), two_rows}, "r");
    run();
    const auto file = kor_test::read_density_file("r");
    ASSERT_EQ(file.matrices.size(), 2U);
    EXPECT_EQ(file.matrices[0], file.matrices[1]);
}

TEST(NmrRun, SecondRunGivesTheSameBytesQuietOrNot) {
    const TempTree folder;
    define_nmr_model(folder, {pulse(), evolution(3), receiver(16, 0.1, -30)}, "fid");
    run();
    const std::string first = folder.read("fid");
    folder.write("dm.bin", "spoilt");
    run();
    EXPECT_EQ(folder.read("fid"), first);
    KOR_SetSmokeCheckMode(1);
    const ConsoleOutput quiet = run();
    EXPECT_EQ(quiet.out + quiet.err, "");
    EXPECT_EQ(folder.read("fid"), first);
    KOR_SetSmokeCheckMode(0);
}

TEST(NmrRun, QuietModeKeepsTheFailures) {
    const TempTree folder;
    define_nmr_model(folder, {pulse(), receiver(1000, 0.5, 0)}, "fid");
    KOR_SetSmokeCheckMode(1);
    EXPECT_EQ(run().out, "ADC sample count 1000 is not a power of two; not writing receiver signal.\n");
    define_nmr_model(folder, {pulse()}, "absent/r");
    KOR_SetSmokeCheckMode(1);
    EXPECT_EQ(run().out, "Failed to copy density-matrix result to absent/r\n");
    KOR_SetSmokeCheckMode(0);
}

} // namespace
} // namespace kor
