// Eight processes on one model at once.
#include "faults/scenarios.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

namespace {

using namespace kor_test;
namespace fs = std::filesystem;

constexpr int PROCESSES = 8;

/// Runs eight at once, `rounds` times: every one prints what a single run prints, has a folder of its own
/// with the same states, and the result file that they share is whole.
void run_together(const std::string& name, int rounds) {
    const auto scenario = make_scenario(name);
    const ProgramResult alone = run_program(scenario->call());
    const std::string states = scenario->scratch_file("dm.bin");
    const std::string shared = scenario->path(scenario->results[0].path);
    const std::string result = read_file(shared);
    for (int round = 1; round <= rounds; ++round) {
        scenario->reset();
        const std::vector<ProgramCall> calls(PROCESSES, scenario->call());
        for (const ProgramResult& one : run_programs_together(calls)) {
            EXPECT_EQ(one.status, 0) << round;
            EXPECT_EQ(one.err, "") << round;
            EXPECT_EQ(one.out, alone.out) << round;
        }
        const auto folders = scenario->program().scratch_folders();
        EXPECT_EQ(folders.size(), static_cast<std::size_t>(PROCESSES)) << round;
        for (const fs::path& folder : folders)
            EXPECT_TRUE(read_file(folder / "dm.bin") == states) << round << ": " << folder;
        EXPECT_TRUE(read_file(shared) == result) << round;
        const auto results = fs::directory_iterator(scenario->path("build/runtime/results"));
        EXPECT_EQ(std::distance(results, fs::directory_iterator()), 1) << round;
    }
}

TEST(EightProcesses, OfOneModelGiveTheSameResults) {
    for (const char* name : {"spatial", "one-d", "two-d"})
        run_together(name, 2);
}

TEST(DeepEightProcesses, OfOneModelGiveTheSameResults) {
    for (const char* name : {"spatial", "one-d", "two-d"})
        run_together(name, 50);
}

} // namespace
