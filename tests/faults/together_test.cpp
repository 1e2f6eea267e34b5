// Eight processes on one model at once.
#include "faults/scenarios.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>

namespace {

using namespace kor_test;
namespace fs = std::filesystem;

constexpr std::size_t PROCESSES = 8;

/// The files of this name in the scratch folders of all runs.
std::vector<std::string> scratch_files(const Scenario& scenario, const char* name) {
    std::vector<std::string> files;
    for (const fs::path& folder : scenario.program().scratch_folders())
        if (fs::exists(folder / name))
            files.push_back(read_file(folder / name));
    return files;
}

/// Runs eight at once, `rounds` times: every one prints what a single run prints, has a folder of its own (if
/// a single run has one) with the same states, and the result file that they share is whole.
void run_together(const std::string& name, int rounds) {
    const auto scenario = make_scenario(name);
    const ProgramResult alone = run_program(scenario->call());
    const std::size_t folders = scenario->program().scratch_folders().size();
    const std::vector<std::string> states = scratch_files(*scenario, "dm.bin");
    const fs::path shared = scenario->path(scenario->results[0].path);
    const std::string result = read_file(shared);
    for (int round = 1; round <= rounds; ++round) {
        scenario->reset();
        const std::vector<ProgramCall> calls(PROCESSES, scenario->call());
        for (const ProgramResult& one : run_programs_together(calls)) {
            EXPECT_EQ(one.status, 0) << round;
            EXPECT_EQ(one.err, "") << round;
            EXPECT_EQ(one.out, alone.out) << round;
        }
        EXPECT_EQ(scenario->program().scratch_folders().size(), PROCESSES * folders) << round;
        const std::vector<std::string> all_states = scratch_files(*scenario, "dm.bin");
        EXPECT_EQ(all_states.size(), PROCESSES * states.size()) << round;
        for (const std::string& one : all_states)
            EXPECT_TRUE(one == states[0]) << round;
        EXPECT_TRUE(read_file(shared) == result) << round;
        for (const auto& entry : fs::directory_iterator(shared.parent_path()))
            EXPECT_NE(entry.path().extension(), ".new") << round;
    }
}

constexpr const char* USES[] = {"spatial", "one-d", "two-d", "profile", "voxel-signal"};

TEST(EightProcesses, OfOneModelGiveTheSameResults) {
    for (const char* name : USES)
        run_together(name, 2);
}

TEST(DeepEightProcesses, OfOneModelGiveTheSameResults) {
    for (const char* name : USES)
        run_together(name, 50);
}

} // namespace
