#include "kor/expectation_values.h"

#include "kor/runtime_state.h"
#include "kor/spin_system.h"
#include "observablespectrumcalculator/signals.h"
#include "support/console_script.h"
#include "support/constants.h"
#include "support/model_fixtures.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>

using namespace kor;
using namespace kor_test;

namespace {

const char profile_header[] = "# index,x_cm,y_cm,z_cm,expectation_re,expectation_im\n";

// What one call returned and printed.
struct CallOutcome {
    int result;
    std::string out, err;
};

CallOutcome profile(const char* density, const char* expression, const char* output) {
    int result = -1;
    const ConsoleOutput printed =
        play_console("", [&] { result = KORWriteExpectationProfile(density, expression, output); });
    return {result, printed.out, printed.err};
}

CallOutcome voxel_signal(const char* density, int point, const char* output) {
    int result = -1;
    const ConsoleOutput printed =
        play_console("", [&] { result = KORWriteVoxelSignal(density, point, output); });
    return {result, printed.out, printed.err};
}

// The last line of a text, its end included.
std::string last_line(const std::string& text) {
    const std::size_t end = text.rfind('\n', text.size() < 2 ? std::string::npos : text.size() - 2);
    return end == std::string::npos ? text : text.substr(end + 1);
}

void grid(int ndx, int ndy, int ndz) {
    g_runtime.ndx = ndx;
    g_runtime.ndy = ndy;
    g_runtime.ndz = ndz;
    g_runtime.x0 = -1.0;
    g_runtime.y0 = 0.25;
    g_runtime.z0 = 3.0;
    g_runtime.dx = 0.5;
    g_runtime.dy = 2.0;
    g_runtime.dz = -0.125;
}

// Sector 1 without and sector 2 with an acquisition remark.
void acquisition_sector(int samples, double duration_s, double offset_hz, const char* remark = "ADC") {
    g_runtime.nos = 2;
    std::snprintf(g_runtime.remarks[1], sizeof g_runtime.remarks[1], "excitation");
    g_runtime.noti[1] = 512;
    g_runtime.sectdur[1] = 1.0;
    g_runtime.statoff[1] = 777.0;
    std::snprintf(g_runtime.remarks[2], sizeof g_runtime.remarks[2], "%s", remark);
    g_runtime.noti[2] = samples;
    g_runtime.sectdur[2] = duration_s;
    g_runtime.statoff[2] = offset_hz;
}

const std::vector<int> odd_header_values = {0, 1, -1, INT_MAX, INT_MIN, 257, 258};

} // namespace

TEST(KORWriteExpectationProfile, NeedsASpinSystem) {
    TempTree tree;
    write_file("in.bin", density_file(0, 2, 1, {bloch_matrix(1, 0, 0)}));
    define_spins({0.0});
    g_runtime.spinsystemdefined = 0;
    CallOutcome outcome = profile("in.bin", "Ix", "out.csv");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.err, "Expectation profile: no prepared spin system.\n");

    define_spins({0.0});
    g_runtime.Nspins = 0;
    outcome = profile("in.bin", "Ix", "out.csv");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.err, "Expectation profile: no prepared spin system.\n");
    EXPECT_EQ(outcome.out, "");
    EXPECT_FALSE(std::filesystem::exists("out.csv"));
}

TEST(KORWriteExpectationProfile, ARejectedExpressionWritesNoFile) {
    TempTree tree;
    define_spins({0.0});
    write_file("in.bin", density_file(0, 2, 1, {bloch_matrix(1, 0, 0)}));
    for (const char* expression : {"Iq", "Sx", "", "  ", "Not Defined", "+", "Ix + Iq"}) {
        const CallOutcome outcome = profile("in.bin", expression, "out.csv");
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.err,
                  "Expectation profile: invalid operator expression '" + std::string(expression) + "'.\n");
        EXPECT_FALSE(std::filesystem::exists("out.csv")) << expression;
    }
    EXPECT_EQ(profile("in.bin", nullptr, "out.csv").err,
              "Expectation profile: invalid operator expression ''.\n");
}

TEST(KORWriteExpectationProfile, TheExpressionIsCheckedBeforeTheDensityFile) {
    TempTree tree;
    define_spins({0.0});
    EXPECT_EQ(profile("missing.bin", "Iq", "out.csv").err,
              "Expectation profile: invalid operator expression 'Iq'.\n");
}

TEST(KORWriteExpectationProfile, NamesTheFileThatCannotBeOpened) {
    TempTree tree;
    define_spins({0.0});
    CallOutcome outcome = profile("missing.bin", "Ix", "out.csv");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.err, "Expectation profile: input density file: No such file or directory\n");
    EXPECT_FALSE(std::filesystem::exists("out.csv"));

    write_file("in.bin", density_file(0, 2, 1, {bloch_matrix(1, 0, 0)}));
    outcome = profile("in.bin", "Ix", "no-folder/out.csv");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.err, "Expectation profile: output file: No such file or directory\n");
    EXPECT_EQ(outcome.out, "");
}

TEST(KORWriteExpectationProfile, RefusesAFileOfAnotherSpinSystem) {
    TempTree tree;
    define_spins({0.0});
    write_file("in.bin", density_file(0, 4, 3, {}));
    const CallOutcome outcome = profile("in.bin", "Ix", "out.csv");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.err,
              "Expectation profile: incompatible density header type=0 n=4 points=3; expected type=0 "
              "n=2.\n");
    EXPECT_FALSE(std::filesystem::exists("out.csv"));
}

TEST(KORWriteExpectationProfile, RefusesASignalFileAndAFileWithoutPoints) {
    TempTree tree;
    define_spins({0.0});
    write_file("in.bin", density_file(1, 2, 1, {bloch_matrix(1, 0, 0)}));
    EXPECT_EQ(profile("in.bin", "Ix", "out.csv").err,
              "Expectation profile: incompatible density header type=1 n=2 points=1; expected type=0 n=2.\n");
    write_file("in.bin", density_file(0, 2, 0, {}));
    EXPECT_EQ(profile("in.bin", "Ix", "out.csv").err,
              "Expectation profile: incompatible density header type=0 n=2 points=0; expected type=0 n=2.\n");
    write_file("in.bin", density_file(0, 2, -1, {}));
    EXPECT_EQ(
        profile("in.bin", "Ix", "out.csv").err,
        "Expectation profile: incompatible density header type=0 n=2 points=-1; expected type=0 n=2.\n");
}

TEST(KORWriteExpectationProfile, AnIncompleteHeaderIsIncompatible) {
    TempTree tree;
    define_spins({0.0});
    write_file("in.bin", density_file(0, 2, 1, {}).substr(0, 11));
    const CallOutcome outcome = profile("in.bin", "Ix", "out.csv");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(last_line(outcome.err),
              "Expectation profile: incompatible density header type=0 n=0 points=0; expected type=0 n=2.\n");
    EXPECT_FALSE(std::filesystem::exists("out.csv"));
}

TEST(KORWriteExpectationProfile, OddHeadersAreRefused) {
    TempTree tree;
    for (std::size_t spins : {1u, 8u}) {
        define_spins(std::vector<double>(spins, 0.0));
        for (int type : odd_header_values)
            for (int n : odd_header_values)
                for (int points : odd_header_values) {
                    write_file("in.bin", density_file(type, n, points, {bloch_matrix(1, 2, 3)}));
                    char expected[160];
                    std::snprintf(expected, sizeof expected,
                                  "Expectation profile: incompatible density header type=%d n=%d points=%d; "
                                  "expected type=0 n=%d.\n",
                                  type, n, points, g_runtime.n);
                    const CallOutcome outcome = profile("in.bin", "Ix", "out.csv");
                    ASSERT_EQ(outcome.result, 0);
                    ASSERT_EQ(outcome.err, expected);
                }
    }
}

TEST(KORWriteExpectationProfile, ReportsThePointWhereTheFileEnds) {
    TempTree tree;
    define_spins({0.0});
    const std::string whole =
        density_file(0, 2, 3, {bloch_matrix(1, 0, 0), bloch_matrix(0, 1, 0), bloch_matrix(0, 0, 1)});
    constexpr std::size_t header = 12, matrix = 64;
    for (std::size_t length :
         {header, header + 1, header + matrix - 1, header + matrix, header + 2 * matrix + 40}) {
        write_file("in.bin", whole.substr(0, length));
        const CallOutcome outcome = profile("in.bin", "Ix", "out.csv");
        const std::size_t complete = (length - header) / matrix;
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, "Expectation profile: truncated density matrix at point " +
                                   std::to_string(complete + 1) + ".\n");
        const std::string written = read_file("out.csv");
        EXPECT_EQ(static_cast<std::size_t>(std::count(written.begin(), written.end(), '\n')), 1 + complete);
        EXPECT_EQ(written.find(profile_header), 0u);
    }
}

TEST(KORWriteExpectationProfile, APointCountBeyondTheDataIsATruncation) {
    TempTree tree;
    define_spins({0.0});
    write_file("in.bin", density_file(0, 2, INT_MAX, {bloch_matrix(1, 0, 0)}));
    EXPECT_EQ(profile("in.bin", "Ix", "out.csv").err,
              "Expectation profile: truncated density matrix at point 2.\n");
}

TEST(KORWriteExpectationProfile, TwelvePointsOfATwoByTwoByThreeGridRunWithZFastest) {
    TempTree tree;
    define_spins({0.0});
    grid(2, 2, 3);
    write_file("in.bin", density_file(0, 2, 12, std::vector<DenseMatrix>(12, bloch_matrix(0, 0, 0))));
    const CallOutcome outcome = profile("in.bin", "Iz", "out.csv");
    EXPECT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "Wrote expectation profile for Iz to out.csv\n");
    EXPECT_EQ(read_file("out.csv"), std::string(profile_header) + "1,-1,0.25,3,0,0\n"
                                                                  "2,-1,0.25,2.875,0,0\n"
                                                                  "3,-1,0.25,2.75,0,0\n"
                                                                  "4,-1,2.25,3,0,0\n"
                                                                  "5,-1,2.25,2.875,0,0\n"
                                                                  "6,-1,2.25,2.75,0,0\n"
                                                                  "7,-0.5,0.25,3,0,0\n"
                                                                  "8,-0.5,0.25,2.875,0,0\n"
                                                                  "9,-0.5,0.25,2.75,0,0\n"
                                                                  "10,-0.5,2.25,3,0,0\n"
                                                                  "11,-0.5,2.25,2.875,0,0\n"
                                                                  "12,-0.5,2.25,2.75,0,0\n");
}

TEST(KORWriteExpectationProfile, ThePointCountComesFromTheFileAndNotFromTheGrid) {
    TempTree tree;
    define_spins({0.0});
    grid(1, 1, 2);
    write_file("in.bin", density_file(0, 2, 5, std::vector<DenseMatrix>(5, bloch_matrix(0, 0, 0))));
    ASSERT_EQ(profile("in.bin", "Iz", "out.csv").result, 1);
    EXPECT_EQ(last_line(read_file("out.csv")), "5,0,0.25,3,0,0\n");
}

TEST(KORWriteExpectationProfile, AnAxisWithoutPointsGivesIndexZero) {
    TempTree tree;
    define_spins({0.0});
    grid(1, 0, 0);
    write_file("in.bin", density_file(0, 2, 2, std::vector<DenseMatrix>(2, bloch_matrix(0, 0, 0))));
    ASSERT_EQ(profile("in.bin", "Iz", "out.csv").result, 1);
    EXPECT_EQ(read_file("out.csv"), std::string(profile_header) + "1,-1,0.25,3,0,0\n2,-1,0.25,3,0,0\n");
}

// The operators have unit Frobenius norm: Ix is scaled by the square root of 2 for one spin, and
// trace(sqrt(2) Ix (a Ix + b Iy + c Iz)) = a / sqrt(2).
TEST(KORWriteExpectationProfile, ReadsTheComponentsOfTheMagnetisation) {
    TempTree tree;
    define_spins({0.0});
    grid(3, 1, 1);
    const double vectors[3][3] = {{0.3, -0.7, 1.1}, {-2.0, 5.0, 0.125}, {0.0, 1e-9, -1e9}};
    std::vector<DenseMatrix> matrices;
    for (const auto& v : vectors)
        matrices.push_back(bloch_matrix(v[0], v[1], v[2]));
    write_file("in.bin", density_file(0, 2, 3, matrices));
    const char* expressions[3] = {"Ix", "Iy", "Iz"};
    for (int component = 0; component < 3; ++component) {
        ASSERT_EQ(profile("in.bin", expressions[component], "out.csv").result, 1);
        std::FILE* csv = std::fopen("out.csv", "r");
        ASSERT_NE(csv, nullptr);
        char header[100];
        ASSERT_NE(std::fgets(header, sizeof header, csv), nullptr);
        for (int point = 1; point <= 3; ++point) {
            int index = 0;
            double x = 0, y = 0, z = 0, re = 0, im = 0;
            ASSERT_EQ(std::fscanf(csv, "%d,%lf,%lf,%lf,%lf,%lf\n", &index, &x, &y, &z, &re, &im), 6);
            EXPECT_EQ(index, point);
            EXPECT_EQ(x, -1.0 + 0.5 * (point - 1));
            const double expected = vectors[point - 1][component] / std::sqrt(2.0);
            EXPECT_NEAR(re, expected, 1e-15 * (1.0 + std::fabs(vectors[point - 1][2])));
            EXPECT_NEAR(im, 0.0, 1e-15);
        }
        std::fclose(csv);
    }
}

// trace(sqrt(2) Ix rho) = (rho12 + rho21) / sqrt(2), whatever rho is.
TEST(KORWriteExpectationProfile, AMatrixThatIsNotHermitianHasAnImaginaryPart) {
    TempTree tree;
    define_spins({0.0});
    write_file("in.bin", density_file(0, 2, 1, {{{9, 9}, {1, 2}, {3, 5}, {-9, 4}}}));
    ASSERT_EQ(profile("in.bin", "I1x", "out.csv").result, 1);
    int index = 0;
    double x = 0, y = 0, z = 0, re = 0, im = 0;
    ASSERT_EQ(std::sscanf(last_line(read_file("out.csv")).c_str(), "%d,%lf,%lf,%lf,%lf,%lf", &index, &x, &y,
                          &z, &re, &im),
              6);
    EXPECT_NEAR(re, 4.0 / std::sqrt(2.0), 1e-14);
    EXPECT_NEAR(im, 7.0 / std::sqrt(2.0), 1e-14);
}

TEST(KORWriteExpectationProfile, DoesNotReplaceTheStatesItReads) {
    TempTree tree;
    define_spins({0.0});
    grid(1, 1, 1);
    const std::string states = density_file(0, 2, 1, {bloch_matrix(1, 0, 0)});
    write_file("in.bin", states);
    const CallOutcome outcome = profile("in.bin", "I1x", "./in.bin");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "Expectation profile: the output file ./in.bin is the input density file.\n");
    EXPECT_EQ(read_file("in.bin"), states);
}

TEST(KORWriteVoxelSignal, DoesNotReplaceTheStatesItReads) {
    TempTree tree;
    define_spins({0.0});
    acquisition_sector(8, 0.1, 0.0);
    const std::string states = density_file(0, 2, 1, {bloch_matrix(1, 0, 0)});
    write_file("in.bin", states);
    const CallOutcome outcome = voxel_signal("in.bin", 1, "./in.bin");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "Voxel signal: the output file ./in.bin is the input density file.\n");
    EXPECT_EQ(read_file("in.bin"), states);
}

TEST(KORWriteVoxelSignal, NeedsASpinSystem) {
    TempTree tree;
    define_spins({0.0});
    acquisition_sector(8, 0.1, 0.0);
    g_runtime.spinsystemdefined = 0;
    const CallOutcome outcome = voxel_signal("in.bin", 1, "out.bin");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.err, "Voxel signal: no prepared spin system.\n");
    g_runtime.spinsystemdefined = 1;
    g_runtime.Nspins = 0;
    EXPECT_EQ(voxel_signal("in.bin", 1, "out.bin").err, "Voxel signal: no prepared spin system.\n");
}

TEST(KORWriteVoxelSignal, NeedsAnAcquisitionSectorWithAPowerOfTwoOfSamples) {
    TempTree tree;
    define_spins({0.0});
    write_file("in.bin", density_file(0, 2, 1, {bloch_matrix(1, 0, 0)}));
    const std::string message = "Voxel signal: spatial sequence has no valid power-of-two ADC sector.\n";
    for (int samples : {-8, 0, 1, 3, 1000, 8191}) {
        acquisition_sector(samples, 0.1, 0.0);
        EXPECT_EQ(voxel_signal("in.bin", 1, "out.bin").err, message) << samples;
    }
    for (double duration : {0.0, -1.0, std::nan("")}) {
        acquisition_sector(8, duration, 0.0);
        EXPECT_EQ(voxel_signal("in.bin", 1, "out.bin").err, message) << duration;
    }
    acquisition_sector(8, 0.1, 0.0, "acq");
    const CallOutcome outcome = voxel_signal("in.bin", 1, "out.bin");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.err, message);
    EXPECT_FALSE(std::filesystem::exists("out.bin"));
    EXPECT_FALSE(std::filesystem::exists("dm.bin"));
}

TEST(KORWriteVoxelSignal, AnyLetterCaseMarksTheAcquisitionSectorAndTheFirstOneCounts) {
    TempTree tree;
    define_spins({0.0});
    write_file("in.bin", density_file(0, 2, 1, {bloch_matrix(1, 0, 0)}));
    for (const char* remark : {"Start ADC here", "Acquisition_Frequency", "long ACQUISITION"}) {
        acquisition_sector(2, 0.25, 0.0, remark);
        g_runtime.nos = 3;
        std::snprintf(g_runtime.remarks[3], sizeof g_runtime.remarks[3], "adc");
        g_runtime.noti[3] = 1024;
        g_runtime.sectdur[3] = 1.0;
        const CallOutcome outcome = voxel_signal("in.bin", 1, "out.bin");
        EXPECT_EQ(outcome.result, 1);
        EXPECT_EQ(last_line(outcome.out),
                  "Wrote voxel 1 receiver signal to out.bin (samples=2 acquisition=0.25 s).\n");
    }
}

TEST(KORWriteVoxelSignal, ReportsAMissingDensityFile) {
    TempTree tree;
    define_spins({0.0});
    acquisition_sector(8, 0.1, 0.0);
    const CallOutcome outcome = voxel_signal("missing.bin", 1, "out.bin");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.err, "Voxel signal: input density file: No such file or directory\n");
}

TEST(KORWriteVoxelSignal, ThePointIndexRunsFromOneToTheCount) {
    TempTree tree;
    define_spins({0.0});
    acquisition_sector(8, 0.1, 0.0);
    write_file("in.bin", density_file(0, 2, 3, std::vector<DenseMatrix>(3, bloch_matrix(1, 0, 0))));
    for (int point : {1, 3})
        EXPECT_EQ(voxel_signal("in.bin", point, "out.bin").result, 1) << point;
    std::filesystem::remove("out.bin");
    for (int point : {4, 0, -1, INT_MAX, INT_MIN}) {
        const CallOutcome outcome = voxel_signal("in.bin", point, "out.bin");
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.err,
                  "Voxel signal: incompatible density file or point index (type=0 n=2 points=3 requested=" +
                      std::to_string(point) + " expected_n=2).\n");
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_FALSE(std::filesystem::exists("out.bin"));
}

TEST(KORWriteVoxelSignal, OddHeadersAreRefused) {
    TempTree tree;
    define_spins({0.0});
    acquisition_sector(8, 0.1, 0.0);
    for (int type : odd_header_values)
        for (int n : odd_header_values)
            for (int points : odd_header_values) {
                write_file("in.bin", density_file(type, n, points, {bloch_matrix(1, 2, 3)}));
                char expected[160];
                std::snprintf(
                    expected, sizeof expected,
                    "Voxel signal: incompatible density file or point index (type=%d n=%d points=%d "
                    "requested=1 expected_n=2).\n",
                    type, n, points);
                ASSERT_EQ(voxel_signal("in.bin", 1, "out.bin").err, expected);
            }
    write_file("in.bin", "");
    EXPECT_EQ(last_line(voxel_signal("in.bin", 1, "out.bin").err),
              "Voxel signal: incompatible density file or point index (type=0 n=0 points=0 requested=1 "
              "expected_n=2).\n");
}

TEST(KORWriteVoxelSignal, ReportsThePointWhereTheFileEnds) {
    TempTree tree;
    define_spins({0.0});
    acquisition_sector(8, 0.1, 0.0);
    const std::string whole = density_file(0, 2, 4, std::vector<DenseMatrix>(4, bloch_matrix(1, 0, 0)));
    write_file("in.bin", whole.substr(0, 12 + 64 + 63));
    EXPECT_EQ(voxel_signal("in.bin", 1, "out.bin").result, 1);
    std::filesystem::remove("out.bin");
    const CallOutcome outcome = voxel_signal("in.bin", 4, "out.bin");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.err, "Voxel signal: truncated density matrix at point 2.\n");
    EXPECT_FALSE(std::filesystem::exists("out.bin"));
    EXPECT_FALSE(std::filesystem::exists("dm.bin"));
}

TEST(KORWriteVoxelSignal, ReportsATemporaryFileThatCannotBeCreated) {
    TempTree tree;
    define_spins({0.0});
    acquisition_sector(8, 0.1, 0.0);
    write_file("in.bin", density_file(0, 2, 1, {bloch_matrix(1, 0, 0)}));
    std::filesystem::create_directory("dm.bin");
    const CallOutcome outcome = voxel_signal("in.bin", 1, "out.bin");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.err, "Voxel signal: cannot create temporary single-voxel density file.\n");
}

TEST(KORWriteVoxelSignal, AnOutputThatCannotBeOpenedLeavesNoTemporaryFile) {
    TempTree tree;
    define_spins({0.0});
    acquisition_sector(8, 0.1, 0.0);
    write_file("in.bin", density_file(0, 2, 1, {bloch_matrix(1, 0, 0)}));
    const CallOutcome outcome = voxel_signal("in.bin", 1, "no-folder/out.bin");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.err, "fopen(signal output): No such file or directory\n"
                           "Voxel signal: receiver signal generation failed.\n");
    EXPECT_FALSE(std::filesystem::exists("dm.bin"));
}

// The receiver sees Ix and Iy at unit norm, so the start amplitude is (a + i b) / sqrt(2); an offset w turns
// it as exp(-i w t).
TEST(KORWriteVoxelSignal, OneSpinPrecessesAtItsOffsetPlusTheReceiverOffset) {
    TempTree tree;
    define_spins({35.0});
    acquisition_sector(64, 0.2, -10.0);
    write_file(
        "in.bin",
        density_file(0, 2, 3, {bloch_matrix(9, 9, 9), bloch_matrix(0.75, -0.5, 0.3), bloch_matrix(8, 8, 8)}));
    const CallOutcome outcome = voxel_signal("in.bin", 2, "out.bin");
    ASSERT_EQ(outcome.result, 1);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(last_line(outcome.out),
              "Wrote voxel 2 receiver signal to out.bin (samples=64 acquisition=0.2 s).\n");

    const std::string bytes = read_file("out.bin");
    EXPECT_EQ(bytes.substr(0, 12), bytes_of<int>({1, 64, 1}));
    const std::vector<double> samples = reals_behind_header(bytes);
    ASSERT_EQ(samples.size(), 128u);
    for (std::size_t k = 0; k < 64; ++k) {
        const double angle = 2.0 * PI * (35.0 - 10.0) * 0.2 / 64.0 * static_cast<double>(k);
        const std::complex<double> expected =
            std::complex<double>(0.75, -0.5) / std::sqrt(2.0) * std::polar(1.0, -angle);
        EXPECT_NEAR(samples[2 * k], expected.real(), 1e-12) << k;
        EXPECT_NEAR(samples[2 * k + 1], expected.imag(), 1e-12) << k;
    }
}

TEST(KORWriteVoxelSignal, TheSamplesAreThoseOfTheDirectComputation) {
    TempTree tree;
    define_spins({100.0, -40.0}, 12.0);
    constexpr int points = 32;
    acquisition_sector(points, 0.05, 17.0);
    const unsigned seed = 20240611;
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    std::vector<DenseMatrix> matrices(3, DenseMatrix(16));
    for (DenseMatrix& matrix : matrices)
        for (auto& element : matrix)
            element = {normal(random), normal(random)};
    write_file("in.bin", density_file(0, 4, 3, matrices));

    auto rho = std::make_unique<CMatrix>();
    auto hamiltonian = std::make_unique<CMatrix>();
    for (int r = 1; r <= 4; ++r)
        for (int c = 1; c <= 4; ++c) {
            const auto& element = matrices[2][static_cast<std::size_t>(4 * (r - 1) + c - 1)];
            (*rho)[r][c] = {{0.0, element.real(), element.imag()}};
        }
    CMatAdd(4, g_runtime.Izee, g_runtime.Icoup, *hamiltonian);
    CMatRMultAdd(4, *hamiltonian, 1.0, g_runtime.Iztot, 2.0 * PI * 17.0, *hamiltonian);
    RMultCMat(4, -1.0, *hamiltonian, *hamiltonian);
    make_transverse_totals(1);
    std::vector<double> re(points), im(points), expected;
    build_direct_observable_signal(4, points, 0.05, *rho, *hamiltonian, g_runtime.Ixtot, g_runtime.Iytot,
                                   re.data(), im.data());
    for (std::size_t k = 0; k < points; ++k) {
        expected.push_back(re[k]);
        expected.push_back(im[k]);
    }
    make_transverse_totals(0);

    ASSERT_EQ(voxel_signal("in.bin", 3, "out.bin").result, 1) << "seed " << seed;
    const std::vector<double> samples = reals_behind_header(read_file("out.bin"));
    ASSERT_EQ(samples.size(), expected.size());
    for (std::size_t k = 0; k < samples.size(); ++k)
        EXPECT_NEAR(samples[k], expected[k], 1e-13) << "seed " << seed << " value " << k;
}

TEST(KORWriteVoxelSignal, RestoresTheTotalOperatorsAndRemovesTheTemporaryFile) {
    TempTree tree;
    define_spins({35.0, 0.0}, 5.0);
    acquisition_sector(4, 0.2, 0.0);
    write_file("in.bin", density_file(0, 4, 1, {DenseMatrix(16)}));
    ASSERT_EQ(voxel_signal("in.bin", 1, "out.bin").result, 1);
    EXPECT_FALSE(std::filesystem::exists("dm.bin"));
    EXPECT_EQ(g_runtime.Ixtot[1][2][1], 0.5);
    EXPECT_EQ(g_runtime.Iytot[1][2][2], -0.5);
    EXPECT_EQ(g_runtime.Istat[1][1][1], g_runtime.Izee[1][1][1] + g_runtime.Icoup[1][1][1]);
}

TEST(KORWriteVoxelSignal, TheRunsOwnDensityFileMayBeTheInput) {
    TempTree tree;
    define_spins({0.0});
    acquisition_sector(2, 1.0, 0.0);
    const std::string states = density_file(0, 2, 2, {bloch_matrix(0, 0, 0), bloch_matrix(1, 0, 0)});
    write_file("dm.bin", states);
    ASSERT_EQ(voxel_signal("dm.bin", 2, "out.bin").result, 1);
    EXPECT_NEAR(reals_behind_header(read_file("out.bin"))[0], 1.0 / std::sqrt(2.0), 1e-15);
    EXPECT_EQ(read_file("dm.bin"), states);
    EXPECT_EQ(voxel_signal("dm.bin", 1, "no-folder/out.bin").result, 0);
    EXPECT_EQ(read_file("dm.bin"), states);
    EXPECT_EQ(tree.names(), (std::vector<std::string>{"dm.bin", "out.bin"}));
}
