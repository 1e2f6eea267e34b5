// The run menu: its transcript through the built program, and what its spectrum item leaves in the state.
#include "kor-entry.h"
#include "kor/runtime_state.h"
#include "korcurrentmodel/loaded_model.h"
#include "support/console_script.h"
#include "support/menu_texts.h"
#include "support/model_fixtures.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"
#include "support/two_spin_model.h"

#include <gtest/gtest.h>

using namespace kor_test;

namespace {

const std::string SPECTRUM_QUESTION = "\nOptions:\n"
                                      "  1. Calculate average spectrum\n"
                                      "  2. Calculate spectra separately\n"
                                      "Your choice [1,2] : ";
const std::string AVERAGE_TITLE = "*** Calculation of average spectrum of density matrices ***\n";
const std::string SEPARATE_TITLE = "-    Calculation spectra of density matrix / matrices    -\n";

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

class RunMenu : public testing::Test {
protected:
    /// What is printed between opening the menu without a model and leaving it with the last of the answers.
    std::string without_model(const std::string& answers) const {
        const ProgramResult result = program_.run({}, "2\n" + answers);
        EXPECT_EQ(result.status, 0);
        const std::string begin = main_menu_text() + OPENING_RUN_MENU;
        const std::string end = main_menu_text() + EXITING;
        EXPECT_EQ(result.out.substr(0, begin.size()), begin);
        EXPECT_EQ(result.out.substr(result.out.size() - end.size()), end);
        return result.out.substr(begin.size(), result.out.size() - begin.size() - end.size());
    }

    TempTree tree_;
    ProgramTree program_{tree_.root()};
    const std::string menu_ = run_menu_text("", NOTHING_TO_RUN);
};

/// The run menu of this process on two uncoupled spins whose density file holds one matrix, Ix of spin 1.
class SpectrumItem : public testing::Test {
protected:
    void SetUp() override {
        kor::clear_loaded_model_path();
        define_spins({100.0, -40.0});
        DenseMatrix ix(16);
        ix[0 * 4 + 2] = ix[1 * 4 + 3] = ix[2 * 4 + 0] = ix[3 * 4 + 1] = 0.5;
        tree_.write("dm.bin", density_file(0, 4, 1, {ix}));
    }

    std::string played(const std::string& answers) const {
        return play_console(answers, kor::LiouvilleNonInteractive).out;
    }

    TempTree tree_;
};

} // namespace

TEST_F(RunMenu, GoesBackWithSeven) {
    EXPECT_EQ(without_model("7\n6\n"), menu_ + "\n");
}

TEST_F(RunMenu, GoesBackForALetterAndDropsItsLine) {
    EXPECT_EQ(without_model("back 7\n6\n"), menu_);
}

TEST_F(RunMenu, WaitsForEnterAfterAnUnknownNumber) {
    for (const char* answer : {"9", "0", "-7", "8 7", "9\r"})
        EXPECT_EQ(without_model(std::string(answer) + "\n7 is swallowed by the prompt\n7\n6\n"),
                  menu_ + "\nUnknown choice.\n" + NEW_LINE_ENTER + menu_ + "\n")
            << answer;
}

TEST_F(RunMenu, RunsNothingWithoutAModel) {
    EXPECT_EQ(without_model("2\n\n7\n6\n"), menu_ +
                                                "\nNo spin system is currently prepared.\n"
                                                "Import or define a model first.\n" +
                                                NEW_LINE_ENTER + menu_ + "\n");
}

TEST_F(RunMenu, ReturnsFromTheMenuOfExpectationValues) {
    const std::string out = without_model("3\n2\n\n7\n6\n");
    const std::string begin = menu_ + "\n****************************************************\n"
                                      "***       CALCULATION OF EXPECTATION VALUES      ***\n";
    const std::string end = "Your choice [1,2] : " + NEW_LINE_ENTER + menu_ + "\n";
    EXPECT_EQ(out.substr(0, begin.size()), begin);
    EXPECT_EQ(out.substr(out.size() - end.size()), end);
}

TEST_F(RunMenu, HasNothingToSaveWithoutAModel) {
    EXPECT_EQ(without_model("6\nmine\n\n\n7\n6\n"),
              menu_ + "\n" + export_question(tree_.path("models")) +
                  "\n[KOR] No current model is available to export yet.\n"
                  "[KOR] Load, import, or define a spin system first, then export it.\n" +
                  ENTER_FOR_MENU + NEW_LINE_ENTER + menu_ + "\n");
}

TEST_F(RunMenu, EndsAtTheEndOfInputBehindAnyPrompt) {
    const std::string wait = menu_ + "\nUnknown choice.\n" + NEW_LINE_ENTER;
    EXPECT_EQ(without_model(""), menu_);
    EXPECT_EQ(without_model("9"), wait + menu_);
    EXPECT_EQ(without_model("9\n"), wait + menu_);
    for (const char* item : {"3\n", "3\n1\n", "4\n", "4\n2\n", "6\n"}) {
        const std::string out = without_model(item);
        const std::string end = NEW_LINE_ENTER + menu_;
        EXPECT_EQ(out.substr(out.size() - end.size()), end) << item;
    }
}

TEST_F(RunMenu, RunsAnImportedModelInTheRuntimeFolder) {
    const std::string path = program_.write_model(two_spin_model("two"));
    const ProgramResult result = program_.run({}, "3\n1\n\n2\n2\n\n7\n6\n");
    const std::string menu = run_menu_text(path, two_spin_run_status(program_, "two"));
    const std::string begin = OPENING_RUN_MENU + menu + "\n" + two_spin_run_begin(program_, "two");
    const std::string end =
        two_spin_run_end(program_, "two") + NEW_LINE_ENTER + menu + "\n" + main_menu_text(path) + EXITING;
    EXPECT_TRUE(contains(result.out, begin)) << result.out;
    EXPECT_EQ(result.out.substr(result.out.size() - end.size()), end);
    EXPECT_TRUE(tree_.exists("build/runtime/dm.bin"));
    EXPECT_TRUE(tree_.exists("build/runtime/results/two.bin"));
    EXPECT_FALSE(tree_.exists("build/runtime/runs"));
}

TEST_F(RunMenu, RunsNoModelWhoseResultWouldReplaceItsFile) {
    const std::string path = program_.write_model(two_spin_model("two"));
    std::string text = tree_.read("models/two.kormodel");
    text.replace(text.find("two.bin"), std::string("two.bin").size(), path);
    tree_.write("models/two.kormodel", text);
    const ProgramResult result = program_.run({}, "3\n1\n\n2\n2\n\n7\n6\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "[KOR] The output file " + path + " is the model file.\n");
    EXPECT_EQ(tree_.read("models/two.kormodel"), text);
    EXPECT_FALSE(tree_.exists("build/runtime/dm.bin"));
}

// The files of an imported model, and of a model that was saved under a new name: the tables of expectation
// values and the viewer data of a spectrum replace none of them.
TEST_F(RunMenu, OutputsReplaceNoFileOfTheModel) {
    const std::string path = program_.write_model(two_spin_model("two"));
    const std::string run = "3\n1\n\n2\n2\n\n", end = "7\n6\n";
    const auto refused = [&](const std::string& answers, const std::string& name, const std::string& what) {
        const std::string file = tree_.path(name);
        const bool saved_later = !tree_.exists(name);
        const std::string bytes = saved_later ? "" : tree_.read(name);
        const ProgramResult result = program_.run({}, run + answers + end);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "[KOR] The output file " + file + " is " + what + ".\n") << result.out;
        EXPECT_TRUE(saved_later ? tree_.read(name).starts_with("format_version: 1")
                                : tree_.read(name) == bytes);
    };
    const auto table = [&](const std::string& name) {
        return "3\n1\n1\nIx\n1\n" + tree_.path(name) + "\n\n2\n\n";
    };
    refused(table("models/two.kormodel"), "models/two.kormodel", "the model file");
    refused(table("spin-systems/two.korspin"), "spin-systems/two.korspin",
            "the spin-system file of the loaded model");
    const auto viewer_data = [&](const std::string& name) {
        return "4\n2\n4\n0.01\n0\n1\n" + tree_.path(name) + "\n\n";
    };
    refused(viewer_data("models/two.kormodel"), "models/two.kormodel", "the model file");
    refused("6\nnew\n\n\n" + table("sequences/new/new.korseq"), "sequences/new/new.korseq",
            "the sequence file of the loaded model");
}

// The scratch files of runs and spectra have fixed names.
TEST_F(RunMenu, ScratchFilesReplaceNoWaveformOfTheModel) {
    const std::string path = program_.write_model(two_spin_model("two"));
    program_.run({}, "3\n1\n\n2\n2\n\n7\n6\n"); // leaves states, of which a spectrum can be calculated
    std::string text = tree_.read("sequences/two/two.korseq");
    const std::string key = "sector_pulsefile: 1 ";
    const std::size_t at = text.find(key) + key.size();
    text.replace(at, text.find('\n', at) - at, tree_.path("build/runtime/korsign.bin"));
    tree_.write("sequences/two/two.korseq", text);
    tree_.write("build/runtime/korsign.bin", std::string(1000, '\0'));
    const std::string states = tree_.read("build/runtime/dm.bin");
    for (const char* item : {"2\n\n", "4\n\n"}) {
        const ProgramResult result = program_.run({}, "3\n1\n\n2\n" + std::string(item) + "7\n6\n");
        EXPECT_EQ(result.err, "[KOR] The output file korsign.bin is the waveform file of sector 1.\n")
            << result.out;
        EXPECT_EQ(tree_.read("build/runtime/korsign.bin"), std::string(1000, '\0'));
        EXPECT_EQ(tree_.read("build/runtime/dm.bin"), states);
    }
}

TEST_F(SpectrumItem, AsksForTheKindOfSpectrum) {
    const std::string average = played("4\n1\n");
    EXPECT_TRUE(contains(average, SPECTRUM_QUESTION));
    EXPECT_TRUE(contains(average, AVERAGE_TITLE));
    EXPECT_FALSE(contains(average, SEPARATE_TITLE));
    for (const char* other : {"2", "3", "0"}) {
        const std::string separate = played("4\n" + std::string(other) + "\n");
        EXPECT_TRUE(contains(separate, SEPARATE_TITLE)) << other;
        EXPECT_FALSE(contains(separate, AVERAGE_TITLE)) << other;
    }
}

TEST_F(SpectrumItem, TakesAnAnswerThatIsNoNumberForTheAverage) {
    const std::string out = played("4\nxyz 2\n");
    EXPECT_TRUE(contains(out, AVERAGE_TITLE));
    EXPECT_FALSE(contains(out, SEPARATE_TITLE));
}

TEST_F(SpectrumItem, WritesASignalAndPutsThePlainTotalsBack) {
    kor::g_runtime.Istat[1][1][1] = -1.0;
    played("4\n2\n8\n0.008\n0\n");
    EXPECT_EQ(tree_.read("korsign.bin").substr(0, 12), bytes_of<int>({1, 8, 1}));
    // Izee + Icoup of offsets 100 and -40 Hz: pi (100 - 40) rad/s for the first state.
    EXPECT_NEAR(kor::g_runtime.Istat[1][1][1], 60.0 * 3.141592653589793, 1e-9);
    // Plain sums: Iz of the first state is 1/2 + 1/2. At unit norm each spin would add 1/2.
    EXPECT_DOUBLE_EQ(kor::g_runtime.Iztot[1][1][1], 1.0);
    EXPECT_DOUBLE_EQ(kor::g_runtime.Ixtot[1][2][1], 0.5);
    EXPECT_DOUBLE_EQ(kor::g_runtime.Iytot[4][4][1], 0.0);
}
