// The reference checks when the spatial case cannot enter its folder, or cannot leave it.
#include "faults/injection.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

namespace {

using namespace kor_test;
namespace fs = std::filesystem;

constexpr long INTO_THE_CASE = 2; // the first change of folder is the start of the program
constexpr long BACK_FROM_IT = 3;
constexpr const char* CASE_FOLDER = "kor-refcheck-work/spatial-gradient";
constexpr const char* DENIED = ": Permission denied\n";

/// The checks, then a run of an imported model.
class ReferenceChecks : public testing::Test {
protected:
    ReferenceChecks() {
        scenario_->arguments.clear();
        scenario_->input = "5\n\n3\n1\n\n2\n2\n\n7\n6\n";
    }

    /// What is printed when this change of folder fails.
    std::string played(long at) const {
        const FaultyRun run = run_with_fault(*scenario_, {"chdir", at, std::to_string(EACCES)});
        EXPECT_EQ(run.result.status, 0);
        EXPECT_EQ(run.witness.struck.size(), at > 0 ? 1U : 0U);
        return run.result.out;
    }
    bool states_in(const std::string& below_runtime) const {
        return fs::exists(runtime_ / below_runtime / "dm.bin");
    }

    std::unique_ptr<Scenario> scenario_ = make_scenario("spatial");
    const fs::path runtime_ = fs::path(scenario_->root()) / "build/runtime";
};

bool says(const std::string& out, const std::string& text) {
    return out.find(text) != std::string::npos;
}

TEST_F(ReferenceChecks, WorkInAFolderOfTheirOwn) {
    const std::string out = played(0);
    EXPECT_FALSE(says(out, "FAIL")) << out;
    EXPECT_TRUE(states_in("."));
}

TEST_F(ReferenceChecks, ThatCannotEnterTheFolderOfTheCaseStayWhereTheyAre) {
    const std::string out = played(INTO_THE_CASE);
    EXPECT_TRUE(says(out, "FAIL spatgrad  could not change to folder " + std::string(CASE_FOLDER) + DENIED))
        << out;
    EXPECT_FALSE(says(out, "the program goes on in"));
    EXPECT_TRUE(states_in("."));
    EXPECT_FALSE(states_in(CASE_FOLDER));
}

TEST_F(ReferenceChecks, ThatCannotLeaveTheFolderOfTheCaseSayWhereTheProgramGoesOn) {
    const std::string out = played(BACK_FROM_IT);
    EXPECT_TRUE(says(out, "FAIL spatgrad  could not change to folder " + runtime_.string() + DENIED +
                              "FAIL spatgrad  the program goes on in " + (runtime_ / CASE_FOLDER).string() +
                              ": scratch files and names without a folder belong there now\n"))
        << out;
    EXPECT_FALSE(states_in("."));
    EXPECT_TRUE(states_in(CASE_FOLDER));
}

} // namespace
