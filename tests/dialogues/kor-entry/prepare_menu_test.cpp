// The preparation menu, as the built program shows it.
#include "kor-entry.h"
#include "kor/runtime_state.h"
#include "support/console_script.h"
#include "support/menu_texts.h"
#include "support/program_tree.h"
#include "support/temp_tree.h"
#include "support/two_spin_model.h"

#include <gtest/gtest.h>

using namespace kor_test;

namespace {

class PrepareMenu : public testing::Test {
protected:
    /// What is printed between opening the menu without a model and leaving it with the last of the answers.
    std::string without_model(const std::string& answers) const {
        const ProgramResult result = program_.run({}, "1\n" + answers);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        const std::string begin = main_menu_text() + OPENING_PREPARATION;
        const std::string end = main_menu_text() + EXITING;
        EXPECT_EQ(result.out.substr(0, begin.size()), begin);
        EXPECT_EQ(result.out.substr(result.out.size() - end.size()), end);
        return result.out.substr(begin.size(), result.out.size() - begin.size() - end.size());
    }

    TempTree tree_;
    ProgramTree program_{tree_.root()};
    const std::string menu_ = prepare_menu_text("", NOTHING_PREPARED);
};

} // namespace

TEST_F(PrepareMenu, GoesBackWithSix) {
    EXPECT_EQ(without_model("6\n6\n"), menu_ + "\n");
}

TEST_F(PrepareMenu, GoesBackForALetterAndDropsItsLine) {
    EXPECT_EQ(without_model("x 6\n6\n"), menu_);
    EXPECT_EQ(without_model("- 6\n6\n"), menu_);
}

TEST_F(PrepareMenu, SkipsEmptyLinesBeforeANumber) {
    EXPECT_EQ(without_model("\n\n6\n6\n"), menu_ + "\n");
}

TEST_F(PrepareMenu, WaitsForEnterAfterAnUnknownNumber) {
    for (const char* answer : {"9", "0", "-6", "7 6", "9\r"})
        EXPECT_EQ(without_model(std::string(answer) + "\n6 is swallowed by the prompt\n6\n6\n"),
                  menu_ + "\nUnknown choice.\n" + ENTER_TO_CONTINUE + menu_ + "\n")
            << answer;
}

TEST_F(PrepareMenu, ComposesNothingWithoutASpinSystem) {
    EXPECT_EQ(without_model("3\n\n6\n6\n"), menu_ +
                                                "\nNo spin system is currently prepared.\n"
                                                "Define or import a model first.\n" +
                                                ENTER_TO_CONTINUE + menu_ + "\n");
}

TEST_F(PrepareMenu, DefinesASpinSystemAndWaits) {
    const std::string out = without_model("1\n1\n1\n1\n250\n\n6\n6\n");
    const std::string status = "Current model state:\n"
                               "  Nspins           : 1\n"
                               "  sequence family  : <unset>\n"
                               "  sequence sectors : 0\n"
                               "  result file      : <unset>\n"
                               "  pulse sequence   : <none prepared>\n"
                               "\n";
    const std::string end = ENTER_TO_CONTINUE + prepare_menu_text("", status) + "\n";
    EXPECT_NE(out.find("Spin system defined: Nspins=1, n=2\n"), std::string::npos) << out;
    EXPECT_EQ(out.substr(out.size() - end.size()), end);
}

TEST_F(PrepareMenu, OpensTheDialogueOfTheSpatialDomain) {
    const std::string out = without_model("1\n1\n1\n1\n250\n\n2\nx\n6\n6\n");
    EXPECT_NE(out.find("***  SPATIAL SIMULATION DOMAIN SETUP   ***\n"), std::string::npos) << out;
}

TEST_F(PrepareMenu, OpensTheComposerForASpinSystem) {
    const std::string out = without_model("1\n1\n1\n1\n250\n\n3\n");
    EXPECT_NE(out.find("Choose the sequence family first.\n"), std::string::npos) << out;
    EXPECT_EQ(out.find("No spin system is currently prepared."), std::string::npos);
}

TEST(RedefineSpinSystem, BuildsTheOperatorsOfTheAnswers) {
    kor::init();
    kor::g_runtime.systemset = 0;
    const ConsoleOutput console =
        play_console("2\n1\n2\n1\n0.5\n100\n-40\n1\n12\nunread\n", kor::RedefineSpinSystem);
    EXPECT_EQ(console.err, "");
    EXPECT_EQ(unread_answers(), "unread\n");
    EXPECT_NE(console.out.find("Spin system defined: Nspins=2, n=6\n"), std::string::npos) << console.out;
    EXPECT_EQ(kor::g_runtime.systemset, 1);
    EXPECT_EQ(kor::g_runtime.spinsystemdefined, 1);
    EXPECT_EQ(kor::g_runtime.Nspins, 2);
    EXPECT_EQ(kor::g_runtime.n, 6);
    // Spin 1/2 with 100 Hz up, spin 1 with -40 Hz at m = 1: 2 pi (50 - 40) rad/s, and the coupling 2 pi 12
    // / 2.
    const double two_pi = 2.0 * 3.141592653589793;
    EXPECT_NEAR(kor::g_runtime.Izee[1][1][1], two_pi * 10.0, 1e-11);
    EXPECT_NEAR(kor::g_runtime.Icoup[1][1][1], two_pi * 6.0, 1e-11);
}

TEST(RedefineSpinSystem, StopsWhenNoSpinsAreDefined) {
    kor::init();
    kor::g_runtime.systemset = 0;
    const ConsoleOutput console = play_console("", kor::RedefineSpinSystem);
    EXPECT_EQ(console.out.find("Spin system defined"), std::string::npos);
    EXPECT_EQ(kor::g_runtime.spinsystemdefined, 0);
    EXPECT_EQ(kor::g_runtime.systemset, 0);
}

TEST_F(PrepareMenu, ShowsTheSummaryOfAnEmptyModel) {
    EXPECT_EQ(without_model("4\n\n6\n6\n"), menu_ +
                                                "\n"
                                                "========================================\n"
                                                " Current Model Summary\n"
                                                "========================================\n"
                                                "\n"
                                                "Current model file : <unsaved current model>\n"
                                                "\n"
                                                "Model state:\n"
                                                "  Nspins           : 0\n"
                                                "  sequence family  : <unset>\n"
                                                "  sequence sectors : 0\n"
                                                "  result file      : <unset>\n"
                                                "\n"
                                                "Spin system:\n"
                                                "  Hilbert size n   : 0\n"
                                                "  spin quantum numbers : <none>\n"
                                                "  relative intensities : <none>\n"
                                                "  resonance offsets [Hz] : <none>\n"
                                                "  coupling mode    : no couplings\n"
                                                "\n"
                                                "Sequence overview:\n"
                                                "  <no sectors defined>\n"
                                                "\n" +
                                                ENTER_TO_CONTINUE + menu_ + "\n");
}

TEST_F(PrepareMenu, HasNothingToSaveWithoutAModel) {
    EXPECT_EQ(without_model("5\nmine\n\n\n6\n6\n"),
              menu_ + "\n" + export_question(tree_.path("models")) +
                  "\n[KOR] No current model is available to export yet.\n"
                  "[KOR] Load, import, or define a spin system first, then export it.\n" +
                  ENTER_FOR_MENU + ENTER_TO_CONTINUE + menu_ + "\n");
    EXPECT_FALSE(tree_.exists("models/mine.kormodel"));
}

TEST_F(PrepareMenu, EndsAtTheEndOfInputBehindAnyPrompt) {
    const std::string wait = menu_ + "\nUnknown choice.\n" + ENTER_TO_CONTINUE;
    EXPECT_EQ(without_model(""), menu_);
    EXPECT_EQ(without_model("9"), wait + menu_);
    EXPECT_EQ(without_model("9\n"), wait + menu_);
    EXPECT_EQ(without_model("9\n\n"), wait + menu_);
    EXPECT_EQ(without_model("5\n"),
              menu_ + "\n" + export_question(tree_.path("models")) + ENTER_TO_CONTINUE + menu_);
}

TEST_F(PrepareMenu, ShowsAnImportedModel) {
    const std::string path = program_.write_model(two_spin_model("two"));
    const ProgramResult result = program_.run({}, "3\n1\n\n1\n4\n\n6\n6\n");
    const std::string menu = prepare_menu_text(path, two_spin_status(program_, "two"));
    const std::string expected = main_menu_text(path) + OPENING_PREPARATION + menu +
                                 "\n"
                                 "========================================\n"
                                 " Current Model Summary\n"
                                 "========================================\n"
                                 "\n"
                                 "Current model file : " +
                                 path +
                                 "\n"
                                 "\n"
                                 "Model state:\n"
                                 "  Nspins           : 2\n"
                                 "  sequence family  : 1D/2D NMR (2)\n"
                                 "  sequence sectors : 2\n"
                                 "  result file      : " +
                                 program_.result("two") +
                                 "\n"
                                 "\n"
                                 "Spin system:\n"
                                 "  Hilbert size n   : 4\n"
                                 "  spin quantum numbers : 1 1\n"
                                 "  relative intensities : 1 0.75\n"
                                 "  resonance offsets [Hz] : 100 -40.5\n"
                                 "  coupling mode    : 1\n"
                                 "  J-coupling 1    : 12 Hz\n"
                                 "\n"
                                 "Sequence overview:\n"
                                 "  sector 1 : timepoints=1  duration=1e-05 s  file=" +
                                 program_.waveform("two", 1) +
                                 "\n"
                                 "  sector 2 : timepoints=4  duration=0.004 s  file=" +
                                 program_.waveform("two", 2) + "\n\n" + ENTER_TO_CONTINUE + menu + "\n" +
                                 main_menu_text(path) + EXITING;
    ASSERT_GE(result.out.size(), expected.size());
    EXPECT_EQ(result.out.substr(result.out.size() - expected.size()), expected);
}
