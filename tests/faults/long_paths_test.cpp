// Models at paths as long as the program's buffers, beside whole and cut names of their parts.
#include "faults/scenarios.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string_view>

namespace {

using namespace kor_test;
namespace fs = std::filesystem;

constexpr std::size_t LONGEST_NAME = 255;     // of a file in a folder
constexpr std::size_t LONGEST_WAVEFORM = 255; // path that a model keeps
constexpr std::size_t LENGTHS[] = {255, 256, 1023, 1024};

/// A folder below `base` whose path has this length, made when it is missing.
std::string folder_of_length(const std::string& base, std::size_t length) {
    std::string folder = base;
    while (folder.size() < length) {
        std::size_t step = std::min<std::size_t>(100, length - folder.size() - 1);
        if (folder.size() + 1 + step + 1 == length)
            --step; // a separator alone would be left
        folder += "/" + std::string(step, 'd');
    }
    fs::create_directories(folder);
    return folder;
}

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
    return text;
}

/// Characters of "/name" for this name.
constexpr std::size_t below(std::string_view name) {
    return name.size() + 1;
}

class LongPath : public testing::Test {
protected:
    LongPath() {
        EXPECT_EQ(run_program(scenario_->call()).status, 0);
        result_ = read_file(scenario_->path(RESULT));
        scenario_->reset();
    }

    /// A copy of the model at a path of this length: in `folder` or as far below it as its name leaves.
    std::string model_path(const std::string& folder, std::size_t length) const {
        const std::size_t name = std::min(LONGEST_NAME, length - folder.size() - 1);
        const std::string extension = ".kormodel";
        return folder_of_length(folder, length - name - 1) + "/" + std::string(name - extension.size(), 'm') +
               extension;
    }
    std::string model_text() const { return read_file(scenario_->path("models/grid.kormodel")); }
    ProgramResult run(const std::string& model) {
        scenario_->arguments = {"--run-model", model};
        return run_program(scenario_->call());
    }
    void copy_parts(const std::string& folder) const {
        for (const std::string part : {"/spin-systems", "/sequences"})
            fs::copy(scenario_->root() + part, folder + part, fs::copy_options::recursive);
    }
    bool has_result() const { return fs::exists(scenario_->path(RESULT)); }

    static constexpr const char* RESULT = "build/runtime/results/grid.bin";
    std::unique_ptr<Scenario> scenario_ = make_scenario("spatial");
    std::string result_;
};

TEST_F(LongPath, OfAModelWhosePartsLieNearRuns) {
    for (const std::size_t length : LENGTHS) {
        scenario_->reset();
        const std::string model = model_path(scenario_->root(), length);
        ASSERT_EQ(model.size(), length);
        write_file(model, replaced(model_text(), "../", scenario_->root() + "/"));
        const ProgramResult result = run(model);
        EXPECT_EQ(result.status, 0) << length;
        EXPECT_EQ(result.err, "") << length;
        EXPECT_TRUE(read_file(scenario_->path(RESULT)) == result_) << length;
    }
}

// The model keeps the first 255 characters of a waveform's path.
TEST_F(LongPath, OfAWaveformThatIsCutIsToldAndGivesNoResult) {
    for (const std::size_t length : LENGTHS) {
        scenario_->reset();
        const std::size_t name = length < 300 ? 20 : LONGEST_NAME;
        const std::string set = folder_of_length(scenario_->root(), length - name - 1 - below("models"));
        copy_parts(set);
        fs::create_directory(set + "/models");
        const std::string model = model_path(set + "/models", length);
        ASSERT_EQ(model.size(), length);
        write_file(model, model_text());
        const ProgramResult result = run(model);
        const std::string waveform = set + "/models/../sequences/grid/waveforms/sector1";
        EXPECT_EQ(result.status, 0) << length;
        EXPECT_EQ(result.err.rfind(waveform.substr(0, LONGEST_WAVEFORM) + ": ", 0), 0U) << result.err;
        EXPECT_FALSE(has_result()) << length;
    }
}

TEST_F(LongPath, OfAPartThatNoBufferHoldsIsRefused) {
    for (const std::size_t length : {1023U, 1024U}) {
        const std::string folder = folder_of_length(scenario_->root(), length - below("grid.kormodel"));
        const std::string model = folder + "/grid.kormodel";
        ASSERT_EQ(model.size(), length);
        write_file(model, model_text());
        const ProgramResult result = run(model);
        EXPECT_EQ(result.status, 1) << length;
        EXPECT_EQ(result.err, "[KOR] Load failed: i/o error (line 3: could not resolve spin_system_file)\n"
                              "[KOR] Path used: " +
                                  model + "\n");
        EXPECT_FALSE(has_result()) << length;
    }
}

TEST_F(LongPath, OfAWaveformThatCutIsAnotherOnesIsRefused) {
    const std::string waveforms = "/waveforms", other = "/sector1";
    const std::string sequence =
        folder_of_length(scenario_->root(), LONGEST_WAVEFORM - waveforms.size() - other.size());
    fs::copy(scenario_->path("sequences/grid"), sequence, fs::copy_options::recursive);
    fs::rename(sequence + waveforms + "/sector3", sequence + waveforms + "/sector12");
    const std::string file = sequence + "/grid.korseq";
    write_file(file, replaced(read_file(file), "waveforms/sector3", "waveforms/sector12"));
    const std::string model = scenario_->path("models/grid.kormodel");
    write_file(model, replaced(model_text(), "../sequences/grid/grid.korseq", file));
    const ProgramResult result = run(model);
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(
        result.err.find("sector_pulsefile for sector 3: the path is longer than 255 characters, and cut "
                        "there it is that of another file)\n"),
        std::string::npos)
        << result.err;
    EXPECT_FALSE(has_result());
}

TEST_F(LongPath, OfAModelOfTheMenuRuns) {
    for (const std::size_t length : {255U, 256U}) {
        scenario_->reset();
        const std::string text = model_text();
        fs::remove(scenario_->path("models/grid.kormodel"));
        const std::string model = model_path(scenario_->path("models"), length);
        ASSERT_EQ(model.size(), length);
        write_file(model, text);
        scenario_->arguments = {};
        scenario_->input = "3\n1\n\n2\n2\n\n7\n6\n";
        const ProgramResult result = run_program(scenario_->call());
        EXPECT_EQ(result.status, 0) << length;
        EXPECT_EQ(result.err, "") << length;
        EXPECT_NE(result.out.find("[KOR] Loaded model: " + model + "\n"), std::string::npos) << result.out;
        EXPECT_TRUE(read_file(scenario_->path(RESULT)) == result_) << length;
    }
}

// The path of the program itself is taken up to 259 characters; its models are looked for from there.
TEST_F(LongPath, OfTheProgramItselfLeavesTheMenuWithoutModels) {
    for (const std::size_t length : {1023U, 1024U}) {
        const std::string root =
            folder_of_length(scenario_->root(), length - LONGEST_NAME - 1 - below("models"));
        const ProgramTree tree(root);
        copy_parts(root);
        fs::create_directory(root + "/models");
        const std::string model = model_path(root + "/models", length);
        ASSERT_EQ(model.size(), length);
        write_file(model, model_text());
        const ProgramResult result = tree.run({}, "3\n\n6\n");
        EXPECT_EQ(result.status, 0) << length;
        EXPECT_NE(result.out.find("[KOR] Could not determine default models directory.\n"), std::string::npos)
            << result.out;
        EXPECT_EQ(result.out.find("Loaded model: "), std::string::npos) << length;
    }
}

} // namespace
