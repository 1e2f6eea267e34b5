// Disks without room, folders that are missing, protected or files, and names at the limits of the system.
#include "faults/injection.h"
#include "faults/scenarios.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include <sys/resource.h>
#include <unistd.h>

namespace {

using namespace kor_test;
namespace fs = std::filesystem;

constexpr std::size_t WHOLE_RESULT = 12 + 6 * 4 * 4 * 16; // header, six voxels, 4 x 4 complex numbers

/// Runs the scenario where no file may grow beyond `bytes`.
FaultyRun run_on_small_disk(const Scenario& scenario, rlim_t bytes) {
    scenario.reset();
    ProgramCall call;
    call.prepare = [bytes] {
        const rlimit limit{bytes, bytes};
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    FaultyRun run;
    run.result = run_program(scenario.call(call));
    return run;
}

class FullDisk : public testing::TestWithParam<std::string> {};

// Standard output and error are files too, and limited with the others: what is asked is the end of the
// process and the files, not the texts.
TEST_P(FullDisk, AFileSizeLimitIsNoCrashAndLeavesNoPiece) {
    const auto scenario = make_scenario(GetParam());
    const Files before = scenario->files();
    const Undisturbed whole = run_undisturbed(*scenario);
    std::size_t largest = 0;
    for (const ResultFile& result : scenario->results)
        largest = std::max(largest, whole.files.at(result.path).size());
    for (std::size_t limit = 0; limit <= largest; limit += largest / 12 + 1) {
        const FaultyRun run = run_on_small_disk(*scenario, limit);
        EXPECT_TRUE(run.result.status == 0 || run.result.status == 1)
            << GetParam() << " " << run.result.status;
        const Files after = scenario->files();
        for (const ResultFile& result : scenario->results) {
            const std::string& wanted = whole.files.at(result.path);
            const auto found = after.find(result.path);
            const bool was =
                before.count(result.path) && found != after.end() && found->second == before.at(result.path);
            EXPECT_TRUE(found == after.end() || was || found->second == wanted ||
                        (result.contents != Contents::model_set &&
                         !passes_for_whole(result.contents, found->second, wanted)))
                << GetParam() << " with " << limit << " bytes: " << result.path;
        }
        for (const auto& [name, bytes] : after)
            EXPECT_FALSE(name.ends_with(".new")) << name;
    }
}
INSTANTIATE_TEST_SUITE_P(EveryUse, FullDisk, testing::ValuesIn(scenario_names()),
                         [](const auto& name) { return kor_test::test_name(name.param); });

class OutOfReach : public testing::Test {
protected:
    ProgramResult run(const std::vector<std::string>& arguments) {
        scenario_->arguments = arguments;
        return run_program(scenario_->call());
    }
    /// Runs the model with this result file.
    ProgramResult run_with_result(const std::string& result) {
        const std::string model = scenario_->arguments[1];
        std::string text = read_file(model);
        const std::size_t key = text.find("result_file:");
        write_file(model, text.substr(0, key) + "result_file: " + result + "\n");
        return run_program(scenario_->call());
    }

    std::unique_ptr<Scenario> scenario_ = make_scenario("spatial");
};

/// What the system says of a file, or of what it is for.
std::string system_text(const std::string& name, int error) {
    return name + ": " + std::generic_category().message(error) + "\n";
}

TEST_F(OutOfReach, AResultThatCannotBeWrittenIsNamedWithItsReason) {
    write_file(scenario_->path("a-file"), "");
    fs::create_directory(scenario_->path("a-folder"));
    const struct {
        std::string result;
        int error;
    } cases[] = {{"/dev/full", ENOSPC},
                 {scenario_->path("a-file/result.bin"), ENOTDIR},
                 {scenario_->path("missing/result.bin"), ENOENT},
                 {scenario_->path("a-folder"), EISDIR}};
    for (const auto& one : cases) {
        const ProgramResult result = run_with_result(one.result);
        EXPECT_EQ(result.status, 0) << one.result;
        EXPECT_EQ(result.err, system_text(one.result, one.error));
        EXPECT_NE(result.out.find("Failed to copy spatial density-matrix result to " + one.result + "\n"),
                  std::string::npos);
    }
    EXPECT_EQ(fs::file_size(scenario_->path("a-file")), 0U);
}

// The name of a result file is kept in 256 bytes.
TEST_F(OutOfReach, AResultPathOf255CharactersWorksAndALongerOneIsRefused) {
    const auto path_of = [&](std::size_t length) {
        return scenario_->path(std::string(length - scenario_->root().size() - 1, 'r'));
    };
    EXPECT_EQ(run_with_result(path_of(255)).err, "");
    EXPECT_EQ(fs::file_size(path_of(255)), WHOLE_RESULT);
    for (const std::size_t length : {256U, 257U, 1023U, 1024U}) {
        const ProgramResult refused = run_with_result(path_of(length));
        EXPECT_EQ(refused.status, 1) << length;
        EXPECT_NE(refused.err.find("could not resolve result_file"), std::string::npos) << refused.err;
    }
}

// A name has 255 characters at most, a path 4095; arguments of the command line are not cut.
TEST(ReadOut, TakesOutputPathsUpToTheSystemsLimits) {
    const auto scenario = make_scenario("profile");
    ASSERT_EQ(run_program(scenario->call()).status, 0);
    const std::string profile = read_file(scenario->path("profile.csv"));
    std::string deep = scenario->root();
    while (deep.size() < 900) {
        deep += "/" + std::string(99, 'd');
        fs::create_directory(deep);
    }
    const auto path_of = [&](std::size_t length) {
        return deep + "/" + std::string(length - deep.size() - 1, 'p');
    };
    for (const std::string& output : {scenario->path(std::string(255, 'p')), path_of(1023), path_of(1024)}) {
        scenario->arguments[4] = output;
        const ProgramResult result = run_program(scenario->call());
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_TRUE(read_file(output) == profile) << output.size();
    }
    for (const std::string& output : {scenario->path(std::string(256, 'p')), std::string(4096, '/') + "p"}) {
        scenario->arguments[4] = output;
        const ProgramResult result = run_program(scenario->call());
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, system_text("Expectation profile: output file", ENAMETOOLONG));
    }
}

TEST_F(OutOfReach, ModelPathsOfEveryLengthEndCleanly) {
    for (const std::size_t length : {255U, 256U, 1022U, 1023U, 1024U, 4095U, 4096U, 5000U}) {
        const ProgramResult result = run({"--run-model", "/" + std::string(length - 1, 'm')});
        EXPECT_EQ(result.status, 1) << length;
        EXPECT_EQ(result.err.find("[KOR] Load failed: i/o error (could not open '/mmm"), 0U) << length;
    }
}

TEST_F(OutOfReach, AResultInThePlaceOfItsOwnModelIsRefused) {
    const std::string model = scenario_->arguments[1];
    const std::string waveform = scenario_->path("sequences/grid/waveforms/sector2");
    const std::string samples = read_file(waveform);
    const ProgramResult over_waveform = run_with_result(waveform);
    EXPECT_EQ(over_waveform.status, 0);
    EXPECT_EQ(over_waveform.err, waveform + ": the result file is the waveform file of sector 2\n");
    EXPECT_TRUE(read_file(waveform) == samples);
    EXPECT_TRUE(scenario_->scratch_file("dm.bin").empty());
    const ProgramResult over_model = run_with_result(model);
    EXPECT_EQ(over_model.status, 1);
    EXPECT_EQ(over_model.err, "[KOR] The output file " + model + " is the model file.\n");
    EXPECT_NE(read_file(model).find("result_file: " + model), std::string::npos);
    for (const auto& [name, kind] :
         {std::pair<std::string, std::string>{"spin-systems/grid.korspin", "spin-system"},
          {"sequences/grid/grid.korseq", "sequence"}}) {
        const std::string part = scenario_->path(name), text = read_file(part);
        const ProgramResult over_part = run_with_result(part);
        EXPECT_EQ(over_part.status, 1);
        EXPECT_EQ(over_part.err,
                  "[KOR] The output file " + part + " is the " + kind + " file of the loaded model.\n");
        EXPECT_TRUE(read_file(part) == text);
    }
}

TEST_F(OutOfReach, AFileWhereAScratchFolderBelongsIsTold) {
    const std::string model = scenario_->arguments[1];
    for (const std::string file : {"build/runtime", "build/runtime/runs"}) {
        scenario_->reset();
        write_file(scenario_->path(file), "in the way");
        const ProgramResult result = run({"--run-model", model});
        EXPECT_EQ(result.status, 0) << file;
        EXPECT_NE(result.out.find("[KOR] Warning: "), std::string::npos) << file;
        EXPECT_EQ(read_file(scenario_->path(file)), "in the way");
        // Wherever it worked then, the result is whole.
        EXPECT_NE(result.out.find("Copied spatial density-matrix result to "), std::string::npos) << file;
        std::size_t whole = 0;
        for (const auto& entry : fs::recursive_directory_iterator(scenario_->root()))
            whole += entry.path().filename() == "grid.bin" && entry.file_size() == WHOLE_RESULT ? 1 : 0;
        EXPECT_EQ(whole, 1U) << file;
    }
}

TEST_F(OutOfReach, AFileWhereTheResultsBelongIsTold) {
    const std::string results = scenario_->path("build/runtime/results");
    write_file(results, "in the way");
    const ProgramResult result = run_program(scenario_->call());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, system_text(results + "/grid.bin", ENOTDIR));
    EXPECT_EQ(read_file(results), "in the way");
}

// The superuser may write into protected folders; a file system that is mounted for reading only refuses
// everyone, with the same errors as here.
TEST_F(OutOfReach, AReadOnlyFileSystemIsTold) {
    const FaultyRun unmade = run_with_fault(*scenario_, {"mkdir", 1, std::to_string(EROFS), true});
    EXPECT_EQ(unmade.result.status, 0);
    EXPECT_NE(unmade.result.out.find("could not create runtime directory: Read-only file system\n"),
              std::string::npos);
    const FaultyRun unnamed = run_with_fault(*scenario_, {"rename", 1, std::to_string(EROFS), true});
    EXPECT_EQ(unnamed.result.status, 0);
    EXPECT_NE(unnamed.result.out.find("Rotate3D: write error while initializing dm.bin\n"),
              std::string::npos);
    EXPECT_FALSE(fs::exists(scenario_->path("build/runtime/results/grid.bin")));
}

// A user who may read everything here and write nothing.
TEST(ReadOut, AProtectedFolderIsToldAndAWritableFileInItIsWritten) {
    const auto scenario = make_scenario("profile");
    ASSERT_EQ(run_program(scenario->call()).status, 0);
    const std::string output = scenario->path("profile.csv"), profile = read_file(output);
    scenario->reset();
    const auto readable = fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                          fs::perms::others_read | fs::perms::others_exec;
    fs::permissions(scenario->root(), geteuid() == 0 ? readable : readable & ~fs::perms::owner_write);
    ProgramCall call;
    call.unprivileged = true;
    const ProgramResult refused = run_program(scenario->call(call));
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, system_text("Expectation profile: output file", EACCES));
    EXPECT_FALSE(fs::exists(output));
    fs::permissions(scenario->root(), fs::perms::owner_all);
    write_file(output, "an older and longer profile, to be replaced");
    fs::permissions(output, fs::perms::owner_all | fs::perms::others_all);
    fs::permissions(scenario->root(), geteuid() == 0 ? readable : readable & ~fs::perms::owner_write);
    const ProgramResult written = run_program(scenario->call(call));
    EXPECT_EQ(written.status, 0) << written.err;
    EXPECT_TRUE(read_file(output) == profile);
    fs::permissions(scenario->root(), fs::perms::owner_all);
}

TEST(ReadOut, NeverReplacesTheModel) {
    for (const char* name : {"profile", "voxel-signal"}) {
        const auto scenario = make_scenario(name);
        const std::pair<std::string, std::string> files[] = {
            {scenario->arguments[1], "the model file"},
            {scenario->path("spin-systems/grid.korspin"), "the spin-system file of the loaded model"},
            {scenario->path("sequences/grid/grid.korseq"), "the sequence file of the loaded model"},
            {scenario->path("sequences/grid/waveforms/sector2"), "the waveform file of sector 2"}};
        for (const auto& [file, what] : files) {
            const std::string bytes = read_file(file);
            scenario->arguments[4] = file;
            const ProgramResult result = run_program(scenario->call());
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(result.err, "[KOR] The output file " + file + " is " + what + ".\n");
            EXPECT_TRUE(read_file(file) == bytes);
        }
    }
}

TEST(ReadOut, NeverReplacesItsOwnInput) {
    for (const auto& [name, mode] : {std::pair<std::string, std::string>{"profile", "Expectation profile"},
                                     {"voxel-signal", "Voxel signal"}}) {
        const auto scenario = make_scenario(name);
        const std::string states = read_file(scenario->path("density.bin"));
        const std::string output = scenario->path("./density.bin");
        scenario->arguments[4] = output;
        const ProgramResult result = run_program(scenario->call());
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, mode + ": the output file " + output + " is the input density file.\n");
        EXPECT_TRUE(read_file(scenario->path("density.bin")) == states);
    }
}

} // namespace
