// Every form of the command line: what it prints, its exit status, and the folders it works in.
#include "support/build_paths.h"
#include "support/menu_texts.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"
#include "support/two_spin_model.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

using namespace kor_test;
namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;
const char* const RUNS = "build/runtime/runs";
const std::string MENU_AND_EXIT = main_menu_text() + EXITING;

class CommandLine : public testing::Test {
protected:
    std::string model(const std::string& name) const { return tree_.path("models/" + name + ".kormodel"); }

    /// The scratch folders without their process ids, which must be numbers.
    Names run_names() const {
        Names names;
        for (const std::string& folder : tree_.names(RUNS)) {
            const std::size_t cut = folder.rfind('_');
            EXPECT_NE(cut, std::string::npos) << folder;
            EXPECT_EQ(folder.find_first_not_of("0123456789", cut + 1), std::string::npos) << folder;
            EXPECT_LT(cut + 1, folder.size()) << folder;
            names.push_back(folder.substr(0, cut));
        }
        return names;
    }

    void expect_failure(const ProgramResult& result, const std::string& message) const {
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, message);
    }

    TempTree tree_;
    ProgramTree program_{tree_.root()};
};

using RunModelMode = CommandLine;
using ExpectationProfileMode = CommandLine;
using VoxelSignalMode = CommandLine;
using RuntimeFolder = CommandLine;

const std::string BAD_POINT = "[KOR] Voxel signal point index must be a positive integer.\n";

} // namespace

TEST_F(CommandLine, ShowsTheMenuForAnyOtherFormWithoutAMessage) {
    const std::vector<Names> forms = {{},
                                      {""},
                                      {"--help"},
                                      {"--run-model"},
                                      {"--run-model", "a", "b"},
                                      {"--run-model", "a", "b", "c"},
                                      {"--RUN-MODEL", "a"},
                                      {"--run-models", "a"},
                                      {"-run-model", "a"},
                                      {"a", "--run-model"},
                                      {"--run-model", "a", "b", "c", "d"},
                                      {"--expectation-profile"},
                                      {"--expectation-profile", "a", "b", "c"},
                                      {"--expectation-profile", "a", "b", "c", "d", "e"},
                                      {"--Expectation-Profile", "a", "b", "c", "d"},
                                      {"--voxel-signal", "a"},
                                      {"--voxel-signal", "a", "b", "0"},
                                      {"--voxel-signal", "a", "b", "0", "d", "e"},
                                      {"--voxel-signal=1", "a", "b", "0", "d"}};
    for (const Names& arguments : forms) {
        const ProgramResult result = program_.run(arguments);
        EXPECT_EQ(result.status, 0) << testing::PrintToString(arguments);
        EXPECT_EQ(result.out, MENU_AND_EXIT) << testing::PrintToString(arguments);
        EXPECT_EQ(result.err, "") << testing::PrintToString(arguments);
    }
    EXPECT_FALSE(tree_.exists(RUNS));
}

TEST_F(CommandLine, WorksInTheRuntimeFolderBesideTheExecutable) {
    program_.run({});
    EXPECT_EQ(tree_.names(), Names{"build"});
    EXPECT_EQ(tree_.names("build"), (Names{program_file(), "runtime"}));
    EXPECT_EQ(tree_.names("build/runtime"), Names{});
}

TEST_F(RunModelMode, NeedsAPath) {
    const ProgramResult result = program_.run({"--run-model", ""});
    expect_failure(result, "[KOR] --run-model requires a .kormodel path\n");
    EXPECT_EQ(result.out, "");
    EXPECT_FALSE(tree_.exists(RUNS));
}

TEST_F(RunModelMode, PrintsTheSummaryAndTheRun) {
    const std::string path = program_.write_model(two_spin_model("two"));
    const ProgramResult result = program_.run({"--run-model", path});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    const std::string begin =
        TWO_SPIN_BUILD_REPORT + two_spin_summary(program_, "two") + two_spin_run_begin(program_, "two");
    const std::string end = two_spin_run_end(program_, "two");
    ASSERT_GT(result.out.size(), begin.size() + end.size());
    EXPECT_EQ(result.out.substr(0, begin.size()), begin);
    EXPECT_EQ(result.out.substr(result.out.size() - end.size()), end);
}

TEST_F(RunModelMode, LeavesItsFilesInAScratchFolderOfItsOwn) {
    program_.run({"--run-model", program_.write_model(two_spin_model("two"))});
    EXPECT_EQ(run_names(), Names{"two"});
    EXPECT_EQ(tree_.names("build/runtime"), (Names{"results", "runs"}));
    EXPECT_EQ(tree_.names("build/runtime/results"), Names{"two.bin"});
    EXPECT_TRUE(fs::exists(program_.scratch_folders()[0] / "dm.bin"));
}

TEST_F(RunModelMode, NamesTheScratchFolderAfterTheModelFile) {
    const struct {
        const char* file;
        std::string name;
    } cases[] = {{"My Model.rev.kormodel", "my_model_rev"},
                 {"%%%.kormodel", "model"},
                 {"--x--.kormodel", "x"},
                 {"\xC3\x84pfel 2.kormodel", "pfel_2"},
                 {"no-extension", "no-extension"}};
    for (const auto& one : cases) {
        fs::remove_all(tree_.path(RUNS));
        expect_failure(program_.run({"--run-model", tree_.path(one.file)}),
                       "[KOR] Load failed: i/o error (could not open '" + tree_.path(one.file) +
                           "' for reading)\n[KOR] Path used: " + tree_.path(one.file) + "\n");
        EXPECT_EQ(run_names(), Names{one.name}) << one.file;
    }
}

TEST_F(RunModelMode, TakesTheNameOfAWindowsPathBehindItsBackslashes) {
    program_.run({"--run-model", "D:\\data\\My Model.rev.kormodel"});
    EXPECT_EQ(run_names(), Names{"my_model_rev"});
}

TEST_F(RunModelMode, CutsTheNameOfTheScratchFolderTo96Characters) {
    program_.run({"--run-model", tree_.path(std::string(120, 'n') + ".kormodel")});
    EXPECT_EQ(run_names(), Names{std::string(96, 'n')});
}

TEST_F(RunModelMode, CallsTheFolderModelWhenTheNameIsTooLongForAShortName) {
    program_.run({"--run-model", tree_.path(std::string(128, 'n') + ".kormodel")});
    EXPECT_EQ(run_names(), Names{"model"});
}

TEST_F(RunModelMode, LooksForARelativePathInItsScratchFolder) {
    program_.write_model(two_spin_model("two"));
    const ProgramResult result = program_.run({"--run-model", "models/two.kormodel"});
    expect_failure(result, "[KOR] Load failed: i/o error (could not open 'models/two.kormodel' for reading)\n"
                           "[KOR] Path used: models/two.kormodel\n");
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(run_names(), Names{"two"});
    // From the scratch folder the models lie four folders up.
    EXPECT_EQ(program_.run({"--run-model", "../../../../models/two.kormodel"}).status, 0);
}

TEST_F(RunModelMode, ReportsTheFirstErrorOfAModelFile) {
    tree_.write("models/bad.kormodel", "format_version: 1\nwrong_key: 3\n");
    expect_failure(program_.run({"--run-model", model("bad")}),
                   "[KOR] Load failed: parse error (line 2: unknown key)\n[KOR] Path used: " + model("bad") +
                       "\n");
}

TEST_F(RunModelMode, RefusesAFolder) {
    tree_.make_folder("models/dir.kormodel");
    expect_failure(program_.run({"--run-model", model("dir")}),
                   "[KOR] Load failed: i/o error (could not open '" + model("dir") +
                       "' for reading)\n[KOR] Path used: " + model("dir") + "\n");
}

TEST_F(RunModelMode, TakesPathsWithBlanksAndOtherLetters) {
    const std::string name = "Ein Modell \xC3\xBC\xE2\x82\xAC";
    ModelText text = two_spin_model("plain");
    program_.write_model(text);
    tree_.write("Meine Modelle/" + name + ".kormodel", tree_.read("models/plain.kormodel"));
    const ProgramResult result =
        program_.run({"--run-model", tree_.path("Meine Modelle/" + name + ".kormodel")});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(
        result.out.find("\n[KOR] Loaded model: " + tree_.path("Meine Modelle/" + name + ".kormodel") + "\n"),
        std::string::npos);
    EXPECT_EQ(run_names(), Names{"ein_modell"});
    EXPECT_TRUE(tree_.exists("build/runtime/results/plain.bin"));
}

TEST_F(RunModelMode, TakesBackslashesForSeparators) {
    program_.write_model(two_spin_model("two"));
    const ProgramResult result = program_.run({"--run-model", tree_.path() + "\\models\\two.kormodel"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(run_names(), Names{"two"});
}

TEST_F(RunModelMode, GivesTwoProcessesAtOnceTheirOwnFolders) {
    const std::string path = program_.write_model(two_spin_model("two"));
    const ProgramCall call = {
        .executable = program_.executable(), .arguments = {"--run-model", path}, .working_dir = tree_.path()};
    const std::vector<ProgramResult> results = run_programs_together({call, call, call});
    for (const ProgramResult& result : results)
        EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(run_names(), (Names{"two", "two", "two"}));
    EXPECT_EQ(results[0].out, results[1].out);
    const std::vector<fs::path> folders = program_.scratch_folders();
    ASSERT_EQ(folders.size(), 3u);
    EXPECT_EQ(read_file(folders[0] / "dm.bin"), read_file(folders[1] / "dm.bin"));
}

TEST_F(RunModelMode, StaysInTheRuntimeFolderWhenThereIsNoScratchFolder) {
    const std::string path = program_.write_model(two_spin_model("two"));
    tree_.write(RUNS, "a file in the way");
    const ProgramResult result = program_.run({"--run-model", path});
    EXPECT_EQ(result.status, 0);
    const std::string begin =
        "[KOR] Warning: could not create run scratch directory: Not a directory\n" + TWO_SPIN_BUILD_REPORT;
    EXPECT_EQ(result.out.substr(0, begin.size()), begin);
    EXPECT_TRUE(tree_.exists("build/runtime/dm.bin"));
}

TEST_F(RuntimeFolder, IsReusedByEveryProcess) {
    EXPECT_EQ(program_.run({}).out, MENU_AND_EXIT);
    tree_.write("build/runtime/kept", "x");
    EXPECT_EQ(program_.run({}).out, MENU_AND_EXIT);
    EXPECT_TRUE(tree_.exists("build/runtime/kept"));
}

TEST_F(RuntimeFolder, WarnsWhenAFileIsInItsPlace) {
    tree_.write("build/runtime", "a file in the way");
    const ProgramResult result = program_.run({});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out,
              "[KOR] Warning: could not enter runtime directory: Not a directory\n" + MENU_AND_EXIT);
    EXPECT_EQ(result.err, "");
}

TEST_F(ExpectationProfileMode, WritesRelativePathsFromTheRuntimeFolder) {
    const std::string path = program_.write_model(two_spin_model("two"));
    ASSERT_EQ(program_.run({"--run-model", path}).status, 0);
    fs::copy_file(program_.scratch_folders()[0] / "dm.bin", tree_.path("build/runtime/states.bin"));
    const ProgramResult result = program_.run(
        {"--expectation-profile", "../../models/two.kormodel", "states.bin", "I1y", "profile.csv"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out.find("[KOR] Loaded model"), std::string::npos);
    EXPECT_TRUE(tree_.exists("build/runtime/profile.csv"));
    EXPECT_EQ(run_names(), Names{"two"}) << "only the run made a scratch folder";
}

TEST_F(ExpectationProfileMode, FailsWhenTheProfileCannotBeWritten) {
    const std::string path = program_.write_model(two_spin_model("two"));
    const ProgramResult result =
        program_.run({"--expectation-profile", path, tree_.path("missing.bin"), "I1y", tree_.path("p.csv")});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err, "");
    EXPECT_FALSE(tree_.exists("p.csv"));
    EXPECT_FALSE(tree_.exists(RUNS));
}

TEST_F(ExpectationProfileMode, ReportsAModelThatCannotBeLoaded) {
    expect_failure(program_.run({"--expectation-profile", model("gone"), "a", "I1y", "b"}),
                   "[KOR] Expectation profile model load failed: i/o error (could not open '" +
                       model("gone") + "' for reading)\n");
    expect_failure(
        program_.run({"--expectation-profile", "", "a", "I1y", "b"}),
        "[KOR] Expectation profile model load failed: i/o error (could not open '' for reading)\n");
}

TEST_F(VoxelSignalMode, TakesOnlyAPositiveIntegerAndMakesNoFolderOtherwise) {
    const std::string path = program_.write_model(two_spin_model("two"));
    for (const char* point : {"0", "-3", "12abc", "", " ", "1 ", "1.0", "x", "-9999999999999999999999"}) {
        const ProgramResult result = program_.run({"--voxel-signal", path, "dm.bin", point, "signal.bin"});
        expect_failure(result, BAD_POINT);
        EXPECT_EQ(result.out, "") << point;
    }
    EXPECT_FALSE(tree_.exists(RUNS));
}

TEST_F(VoxelSignalMode, LooksAtThePointBeforeTheModel) {
    expect_failure(program_.run({"--voxel-signal", model("gone"), "dm.bin", "0", "signal.bin"}), BAD_POINT);
}

TEST_F(VoxelSignalMode, WritesTheSignalFromItsScratchFolder) {
    const std::string path = program_.write_model(two_spin_model("two"));
    ASSERT_EQ(program_.run({"--run-model", path}).status, 0);
    const std::string states = (program_.scratch_folders()[0] / "dm.bin").string();
    for (const char* point : {"1", "+1", " 001"}) {
        fs::remove_all(tree_.path("build/runtime/signal.bin"));
        // Two folders up from the scratch folder is the runtime folder.
        const ProgramResult result =
            program_.run({"--voxel-signal", path, states, point, "../../signal.bin"});
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_TRUE(tree_.exists("build/runtime/signal.bin")) << point;
    }
    EXPECT_EQ(run_names(), (Names{"two", "two", "two", "two"}));
}

TEST_F(VoxelSignalMode, AcceptsPointTwelveAndFindsItBeyondTheFile) {
    const std::string path = program_.write_model(two_spin_model("two"));
    ASSERT_EQ(program_.run({"--run-model", path}).status, 0);
    const std::string states = (program_.scratch_folders()[0] / "dm.bin").string();
    std::set<std::string> messages;
    for (const char* point : {"12", "2147483648", "9223372036854775807", "99999999999999999999999"}) {
        const ProgramResult result =
            program_.run({"--voxel-signal", path, states, point, tree_.path("signal.bin")});
        EXPECT_EQ(result.status, 1) << point;
        EXPECT_NE(result.err, BAD_POINT) << point;
        messages.insert(result.err);
    }
    EXPECT_EQ(messages.size(), 2u) << "one for 12, one for all beyond the range of int";
    EXPECT_FALSE(tree_.exists("signal.bin"));
}

TEST_F(VoxelSignalMode, ReportsAModelThatCannotBeLoaded) {
    expect_failure(program_.run({"--voxel-signal", model("gone"), "a", "1", "b"}),
                   "[KOR] Voxel signal model load failed: i/o error (could not open '" + model("gone") +
                       "' for reading)\n");
    EXPECT_EQ(run_names(), Names{"gone"});
}
