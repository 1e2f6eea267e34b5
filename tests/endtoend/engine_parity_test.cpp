// Every shipped example through the whole program, once with each engine: the same text, the same files
// within 1e-12 of the largest element.
#include "support/build_paths.h"
#include "support/deviation.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace {

using namespace kor_test;
namespace fs = std::filesystem;

struct Edit {
    std::string file, from, to;
};

/// The reference engine takes a minute for valine's 1024 points and an hour for the 13,824 voxels of PRESS:
/// both run with fewer of them, the rest of the model as it is.
std::vector<Edit> shortened(const std::string& model) {
    const std::string acquire = "sequences/pulse-acquire/pulse-acquire.korseq";
    const std::string press = "models/lactate-press.kormodel";
    if (model == "valine-fid") {
        return {{acquire, "sector_timepoints: 2 1024", "sector_timepoints: 2 4"},
                {acquire, "sector_duration_s: 2 1.024", "sector_duration_s: 2 0.004"}};
    }
    if (model == "lactate-press") {
        return {{press, "ndx: 24", "ndx: 2"},
                {press, "ndy: 24", "ndy: 1"},
                {press, "ndz: 24", "ndz: 3"},
                {press, "dz_cm: 0.125", "dz_cm: 0.625"}};
    }
    return {};
}

void replace_once(std::string& text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    text.replace(at, from.size(), to);
}

/// A tree with the examples and one of the two programs as build/kor.
class Installation {
public:
    Installation(const char* program, const std::string& model) : program_(tree_.root()), model_(model) {
        fs::copy_file(program, tree_.root() / "build/kor", fs::copy_options::overwrite_existing);
        for (const char* folder : {"models", "spin-systems", "sequences"})
            fs::copy(fs::path(source_folder()) / folder, tree_.root() / folder, fs::copy_options::recursive);
        for (const Edit& edit : shortened(model)) {
            std::string text = tree_.read(edit.file);
            replace_once(text, edit.from, edit.to);
            tree_.write(edit.file, text);
        }
    }

    /// What the program prints, the tree's own name left out.
    std::string run(const std::vector<std::string>& arguments) const {
        const ProgramResult result = program_.run(arguments);
        EXPECT_EQ(result.status, 0) << result.err;
        std::string text = result.out + result.err;
        for (std::size_t at; (at = text.find(tree_.path())) != std::string::npos;)
            text.replace(at, tree_.path().size(), "TREE");
        return text;
    }
    std::string model_file() const { return tree_.path("models/" + model_ + ".kormodel"); }
    std::string result_file() const { return program_.result(model_); }
    std::string path(const std::string& name) const { return tree_.path(name); }

private:
    TempTree tree_;
    ProgramTree program_;
    std::string model_;
};

/// The last of the twelve digits that listings print, of a number of the order of 1.
constexpr double kPrinted = 1e-11;

/// Words that are no numbers must be equal. A number may differ by `share` of itself, or of 1 if it is less:
/// amplitudes and expectation values are of the order of 1, times as large as they are.
void expect_equal_texts(const std::string& judge, const std::string& text, double share) {
    std::istringstream a(judge), b(text);
    std::string expected, word;
    while (a >> expected) {
        ASSERT_TRUE(b >> word) << expected;
        if (word == expected)
            continue;
        char *end_a, *end_b;
        const double x = std::strtod(expected.c_str(), &end_a), y = std::strtod(word.c_str(), &end_b);
        ASSERT_TRUE(*end_a == 0 && *end_b == 0) << expected << " | " << word;
        ASSERT_NEAR(x, y, share * std::max(1.0, std::fabs(x)));
    }
    EXPECT_FALSE(b >> word) << word;
}

std::vector<double> doubles_of(const std::string& bytes) {
    std::vector<double> values((bytes.size() - 12) / sizeof(double));
    std::memcpy(values.data(), bytes.data() + 12, values.size() * sizeof(double));
    return values;
}

/// Headers to the byte, numbers to 1e-12 of the largest.
void expect_equal_data(const std::string& judge_file, const std::string& file) {
    const std::string a = read_file(judge_file), b = read_file(file);
    ASSERT_EQ(a.size(), b.size());
    ASSERT_GT(a.size(), 12u);
    EXPECT_EQ(a.substr(0, 12), b.substr(0, 12));
    const std::vector<double> judge = doubles_of(a), values = doubles_of(b);
    double largest = 0, worst = 0;
    for (std::size_t k = 0; k < judge.size(); ++k) {
        largest = std::max(largest, std::fabs(judge[k]));
        worst = larger_deviation(worst, std::fabs(judge[k] - values[k]));
    }
    EXPECT_GT(largest, 0.1) << "a state or a signal";
    EXPECT_LE(worst, 1e-12 * largest);
}

/// The profile as a table: the same first line, the same places, values to 1e-12 of full magnetisation.
void expect_equal_profiles(const std::string& judge_file, const std::string& file) {
    std::istringstream a(read_file(judge_file)), b(read_file(file));
    std::string expected, line;
    while (std::getline(a, expected)) {
        ASSERT_TRUE(std::getline(b, line));
        std::replace(expected.begin(), expected.end(), ',', ' ');
        std::replace(line.begin(), line.end(), ',', ' ');
        expect_equal_texts(expected, line, 1e-12);
    }
    EXPECT_FALSE(std::getline(b, line));
}

/// The number of a voxel in the middle of a density-matrix file; 0 for a signal file.
int middle_voxel(const std::string& result_file) {
    std::int32_t header[3];
    std::memcpy(header, read_file(result_file).data(), sizeof header);
    return header[0] == 0 ? header[2] / 2 + 1 : 0;
}

std::vector<std::string> shipped_models() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(fs::path(source_folder()) / "models"))
        if (entry.path().extension() == ".kormodel")
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string model_name(const testing::TestParamInfo<std::string>& model) {
    std::string name = model.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

class WholeProgram : public testing::TestWithParam<std::string> {};

} // namespace

TEST_P(WholeProgram, GivesTheSameWithEitherEngine) {
    const Installation judge(reference_program(), GetParam());
    const Installation kor(kor_program(), GetParam());
    expect_equal_texts(judge.run({"--run-model", judge.model_file()}),
                       kor.run({"--run-model", kor.model_file()}), kPrinted);
    expect_equal_data(judge.result_file(), kor.result_file());
    const int voxel = middle_voxel(judge.result_file());
    if (voxel == 0)
        return;
    for (const Installation* each : {&judge, &kor}) {
        each->run({"--expectation-profile", each->model_file(), each->result_file(), "Iy + Sy",
                   each->path("profile.csv")});
        each->run({"--voxel-signal", each->model_file(), each->result_file(), std::to_string(voxel),
                   each->path("voxel.bin")});
    }
    expect_equal_profiles(judge.path("profile.csv"), kor.path("profile.csv"));
    expect_equal_data(judge.path("voxel.bin"), kor.path("voxel.bin"));
}

INSTANTIATE_TEST_SUITE_P(Examples, WholeProgram, testing::ValuesIn(shipped_models()), model_name);
