// Density-matrix files of every wrong length, given to the two modes that read them.
#include "faults/injection.h"
#include "faults/scenarios.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

namespace {

using namespace kor_test;
namespace fs = std::filesystem;

constexpr std::size_t HEADER = 12, ROW = 4 * 16, MATRIX = 4 * ROW;

/// Runs the mode on the first `length` bytes of its input.
ProgramResult run_on_first_bytes(const Scenario& scenario, const std::string& whole, std::size_t length) {
    write_file(scenario.path("density.bin"), whole.substr(0, length));
    return run_program(scenario.call());
}

/// Every length in the header, the first ones and the last ones of a row and of a matrix, and all but one
/// byte.
std::vector<std::size_t> lengths_below(std::size_t size) {
    std::vector<std::size_t> lengths;
    for (std::size_t length = 0; length < size; ++length) {
        const std::size_t behind = length < HEADER ? 0 : (length - HEADER) % ROW;
        if (length < HEADER || behind <= 1 || behind == ROW / 2 + 3 || behind == ROW - 1)
            lengths.push_back(length);
    }
    return lengths;
}

TEST(TruncatedDensityFile, GivesNoProfile) {
    const auto scenario = make_scenario("profile");
    const std::string whole = read_file(scenario->path("density.bin"));
    ASSERT_EQ(whole.size(), HEADER + 6 * MATRIX);
    ASSERT_EQ(run_program(scenario->call()).status, 0);
    const std::string profile = read_file(scenario->path("profile.csv"));
    for (const std::size_t length : lengths_below(whole.size())) {
        fs::remove(scenario->path("profile.csv"));
        const ProgramResult result = run_on_first_bytes(*scenario, whole, length);
        EXPECT_EQ(result.status, 1) << length;
        if (length < HEADER) {
            EXPECT_NE(result.err.find("Expectation profile: incompatible density header"), std::string::npos);
            EXPECT_FALSE(fs::exists(scenario->path("profile.csv"))) << length;
        } else {
            const std::string point = std::to_string((length - HEADER) / MATRIX + 1);
            EXPECT_EQ(result.err, "Expectation profile: truncated density matrix at point " + point + ".\n");
            // The points before the end, and no more.
            const std::string piece = read_file(scenario->path("profile.csv"));
            EXPECT_LT(piece.size(), profile.size()) << length;
            EXPECT_EQ(profile.compare(0, piece.size(), piece), 0) << length;
        }
    }
}

TEST(TruncatedDensityFile, GivesNoSignal) {
    const auto scenario = make_scenario("voxel-signal"); // of voxel 5
    const std::string whole = read_file(scenario->path("density.bin"));
    for (const std::size_t length : lengths_below(HEADER + 5 * MATRIX)) {
        const ProgramResult result = run_on_first_bytes(*scenario, whole, length);
        EXPECT_EQ(result.status, 1) << length;
        const std::string message = length < HEADER
                                        ? "Voxel signal: incompatible density file or point index"
                                        : "Voxel signal: truncated density matrix at point " +
                                              std::to_string((length - HEADER) / MATRIX + 1) + ".\n";
        EXPECT_NE(result.err.find(message), std::string::npos) << length;
        EXPECT_FALSE(fs::exists(scenario->path("voxel.bin"))) << length;
    }
}

// What stands behind the matrices that the header counts is not looked at.
TEST(LongDensityFile, GivesWhatTheWholeOneGives) {
    for (const char* name : {"profile", "voxel-signal"}) {
        const auto scenario = make_scenario(name);
        const std::string whole = read_file(scenario->path("density.bin"));
        const std::string output = scenario->path(scenario->results[0].path);
        ASSERT_EQ(run_program(scenario->call()).status, 0);
        const std::string wanted = read_file(output);
        for (const std::size_t more : {std::size_t{1}, ROW, MATRIX}) {
            write_file(scenario->path("density.bin"), whole + std::string(more, 'x'));
            EXPECT_EQ(run_program(scenario->call()).status, 0) << more;
            EXPECT_TRUE(read_file(output) == wanted) << more;
        }
    }
}

/// Lets every read of the scenario fail with EIO in turn. The number of runs that said `message`, each of
/// which must have given `reason` too.
int reads_with_reason(const char* name, const std::string& message, const std::string& reason) {
    const auto scenario = make_scenario(name);
    const long reads = run_undisturbed(*scenario).run.witness.counts.at("read");
    int said = 0;
    for (long k = 1; k <= reads; ++k) {
        const ProgramResult run = run_with_fault(*scenario, {"read", k, std::to_string(EIO)}).result;
        if ((run.out + run.err).find(message) == std::string::npos)
            continue;
        ++said;
        EXPECT_NE(run.err.find(reason + ": Input/output error\n"), std::string::npos) << name << " at " << k;
    }
    return said;
}

// A disk that fails in the middle of a file is not a file that ends there.
TEST(UnreadableDensityFile, IsToldFromATruncatedOne) {
    EXPECT_GT(reads_with_reason("wide-profile", "truncated density matrix", "/density.bin"), 0);
    EXPECT_GT(reads_with_reason("wide-spatial", "Rotate3D: read error from dm.bin", "dm.bin"), 0);
}

} // namespace
