// The judge of the injected faults: it must see what it is there to see.
#include "faults/injection.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

namespace {

using namespace kor_test;
namespace fs = std::filesystem;

class Judge : public testing::Test {
protected:
    Judge() {
        run_ = whole_.run;
        fail("open", "");
    }

    /// The run's fault is one on "dm.bin".
    void fail(const std::string& kind, const std::string& error) {
        run_.fault = {kind, 1, error, false};
        run_.witness.struck = {{kind, "dm.bin"}};
    }
    std::string verdict() const { return judge(*scenario_, whole_, before_, run_); }
    bool finds(const std::string& what) const { return verdict().find(what) != std::string::npos; }
    std::string result() const { return scenario_->path(scenario_->results[0].path); }

    std::unique_ptr<Scenario> scenario_ = make_scenario("spatial");
    Files before_ = scenario_->files();
    Undisturbed whole_ = run_undisturbed(*scenario_);
    FaultyRun run_;
};

TEST_F(Judge, AcceptsAWholeRun) {
    EXPECT_EQ(verdict(), "");
}

TEST_F(Judge, SeesAResultThatIsMissingWithoutAWord) {
    fs::remove(result());
    EXPECT_TRUE(finds("no message names dm.bin"));
    run_.result.out += "Rotate3D: write error to store\n";
    EXPECT_TRUE(finds("no message names dm.bin"));
    run_.result.out += "Rotate3D: read error from dm.bin\n";
    EXPECT_EQ(verdict(), "");
}

TEST_F(Judge, SeesASilentFailureBehindAWholeResult) {
    for (const char* kind : {"write", "flush", "rename", "chdir", "read"}) {
        fail(kind, std::to_string(EIO));
        EXPECT_EQ(verdict().rfind("no message names dm.bin\n", 0), 0U) << kind;
    }
    fail("read", "short");
    EXPECT_EQ(verdict(), "");
    fail("close", std::to_string(EIO));
    EXPECT_EQ(verdict(), "");
    run_.witness.struck = {{"close", "dm.bin.7.new"}};
    EXPECT_TRUE(finds("no message names dm.bin.7.new"));
}

TEST_F(Judge, TakesAMessageOfAnotherUseForNone) {
    fs::remove(result());
    fail("write", std::to_string(EIO));
    run_.result.err = "Voxel signal: cannot write temporary density matrix.\n";
    EXPECT_TRUE(finds("no message names dm.bin"));
}

TEST_F(Judge, SeesAPieceThatPassesForWhole) {
    run_.result.err = "dm.bin: Input/output error\n";
    std::string bytes = read_file(result());
    write_file(result(), bytes.substr(0, bytes.size() - 1)); // fewer bytes than the header says
    EXPECT_EQ(verdict(), "");
    bytes[20] = static_cast<char>(bytes[20] + 1);
    write_file(result(), bytes);
    EXPECT_TRUE(finds("passes for whole"));
    bytes.resize(12 + 5 * 4 * 4 * 16);
    bytes[8] = 5; // five voxels, and the header says so
    write_file(result(), bytes);
    EXPECT_TRUE(finds("passes for whole"));
}

// A session keeps the signals of the spectrum before only as they were, and states of a failed run only when
// it was told.
TEST(JudgeOfSessions, SeesResultsOfNoState) {
    const auto scenario = make_scenario("analysis");
    const Files before = scenario->files();
    const Undisturbed whole = run_undisturbed(*scenario);
    const std::string signals = scenario->path("build/runtime/korsign.bin");
    FaultyRun run = whole.run;
    run.fault = {"open", 1, std::to_string(EIO), false};
    run.witness.struck = {{"open", "korsign.bin"}};
    run.result.err = "fopen(signal output): Input/output error\n";
    // Both files give the points of a signal and the number of signals; the signal file's type is 1.
    const std::string& viewer_data = whole.files.at("build/runtime/separate.wave");
    std::string bytes = whole.files.at("build/runtime/korsign.bin").substr(0, 4) + viewer_data.substr(16, 8) +
                        viewer_data.substr(1024);
    write_file(signals, bytes);
    EXPECT_EQ(judge(*scenario, whole, before, run), "");
    bytes.back() = static_cast<char>(bytes.back() ^ 1);
    write_file(signals, bytes);
    EXPECT_EQ(judge(*scenario, whole, before, run).rfind("passes for whole: build/runtime/korsign.bin\n", 0),
              0U);
    run.result.err += "store: Input/output error\n";
    EXPECT_EQ(judge(*scenario, whole, before, run), "");
}

TEST(JudgeOfTables, SeesAGap) {
    const auto scenario = make_scenario("wide-profile");
    const Files before = scenario->files();
    const Undisturbed whole = run_undisturbed(*scenario);
    const std::string table = scenario->path("profile.csv"), bytes = read_file(table);
    FaultyRun run = whole.run;
    run.result.status = 1;
    run.result.err = "Expectation profile: write error on output file profile.csv\n";
    run.fault.kind = "write";
    run.witness.struck = {{"write", "profile.csv"}};
    write_file(table, bytes.substr(0, 4096));
    EXPECT_EQ(judge(*scenario, whole, before, run), "");
    write_file(table, bytes.substr(0, 4096) + bytes.substr(5000));
    EXPECT_EQ(judge(*scenario, whole, before, run).rfind("has a gap: profile.csv\n", 0), 0U);
}

TEST_F(Judge, SeesAModelThatChanged) {
    write_file(scenario_->path("spin-systems/grid.korspin"), "");
    EXPECT_TRUE(finds("changed: spin-systems/grid.korspin"));
    scenario_->reset();
    run_undisturbed(*scenario_);
    write_file(scenario_->path("models/grid.kormodel.1.new"), "");
    EXPECT_TRUE(finds("changed: models/grid.kormodel.1.new"));
}

TEST_F(Judge, SeesCrashesAndHangs) {
    run_.result.status = 128 + 11;
    EXPECT_TRUE(finds("ends with status 139"));
    run_.result.timed_out = true;
    EXPECT_TRUE(finds("hangs"));
}

} // namespace
