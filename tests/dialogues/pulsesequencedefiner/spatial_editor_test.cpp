#include "pulsesequencedefiner/spatial_editor.h"

#include "kor/runtime_state.h"
#include "korcurrentmodel/loaded_model.h"
#include "support/composer_state.h"
#include "support/composer_texts.h"
#include "support/console_script.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

const std::string spatial_editor_menu = "    1. Define / edit a sequence sector\n"
                                        "    2. Define / redefine spin system\n"
                                        "    3. Define / redefine spatial grid\n"
                                        "    4. Define result file name\n"
                                        "    5. Save current model now (.kormodel)\n"
                                        "    6. Return to previous menu\n\n"
                                        "Your choice is [1..6] : ";

/// What the editor shows of fresh_state_with_spins() before its menu.
struct Shown {
    int nos = 0;
    std::string grid = "  spatial grid          : ndx=1  ndy=1  ndz=1\n"
                       "  grid origin [cm]      : (0, 0, 0)\n"
                       "  grid delta  [cm]      : (0, 0, 0)\n";
    std::string result = "<unset>";
    std::string next_step;
    std::string overview;
};

std::string spatial_state_text(const Shown& shown) {
    return editor_title_and_spins("Spatially Resolved") + shown.grid +
           "  sequence family       : spatially resolved (1)\n" +
           "  sequence sectors      : " + std::to_string(shown.nos) + "\n" +
           "  result file           : " + shown.result + "\n" +
           "  model file format     : .kormodel\n\nSuggested next step:\n" + shown.next_step +
           "\n\nSector overview:\n" + shown.overview + "\n";
}

const std::string grid_advice = "Define or review the global spatial grid.";
const std::string first_advice = "Define sector 1 first.";
const std::string go_on_advice =
    "Define the next sector, save the current model, or run it from the main menu.";
const std::string nothing_defined = "Defined sectors : <none>\nNext suggested sector number : 1\n";

ConsoleOutput edit_spatial_sequence(const std::string& answers) {
    return play_console(answers, EditPulseSequence);
}

} // namespace

TEST(EditPulseSequence, GuidesFromGridToSectorToRun) {
    TempTree tree;
    fresh_state_with_short_name();
    const std::string sector = "1\n1\n5\n2\n0\n" + NO_GRADIENTS + "./a.bin\nwait\n";
    const ConsoleOutput printed =
        edit_spatial_sequence("3\n2\n-0.5\n1\n0\n0\n0\n300\n0.25\n0.125\n" + sector + "6\nleft\n");
    Shown shown;
    shown.next_step = grid_advice;
    shown.overview = nothing_defined;
    std::string expected = spatial_state_text(shown) + spatial_editor_menu;
    for (const char* axis : {"x", "y", "z"})
        expected += "Number of " + std::string(axis) + "-grid points   : " + axis +
                    "-offset coordinate [cm]  : " + axis + "-step size         [cm]  : ";
    shown.grid = "  spatial grid          : ndx=2  ndy=1  ndz=256\n"
                 "  grid origin [cm]      : (-0.5, 0, 0.25)\n"
                 "  grid delta  [cm]      : (1, 0, 0.125)\n";
    shown.next_step = first_advice;
    expected += spatial_state_text(shown) + spatial_editor_menu +
                "Sector number to define / edit = " + sector_header("Spatial", 1) + CONTENT_MENU +
                "Waiting time [ms] : Static offset frequency [Hz] : " + constant_gradient_dialogues() +
                spatial_file_dialogue("lac_s01.bin", "./a.bin");
    shown.nos = 1;
    shown.next_step = go_on_advice;
    shown.overview = "Defined sectors : 1\nMissing sectors : <none>\nNext suggested sector number : 2\n"
                     "Sector 1\n"
                     "   time intervals   : 1\n"
                     "   duration [ms]    : 2.000E+00\n"
                     "   RF/gradient file : ./a.bin\n"
                     "   offset [Hz]      : 0.000E+00\n"
                     "   remark           : wait\n";
    expected += spatial_state_text(shown) + spatial_editor_menu;
    EXPECT_EQ(printed.out, expected);
    EXPECT_EQ(g_runtime.offsetset, 1);
    EXPECT_EQ(g_runtime.sectorset, 1);
    EXPECT_EQ(g_runtime.sector, 1);
    EXPECT_EQ(g_runtime.nevo[0], 1);
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(EditPulseSequence, SectorThreeFirstLeavesTwoMissing) {
    TempTree tree;
    fresh_state_with_short_name();
    g_runtime.offsetset = 1;
    const ConsoleOutput printed = edit_spatial_sequence("1\n3\n1\n1\n0\n" + NO_GRADIENTS + "./a.bin\n\n6\n");
    EXPECT_EQ(g_runtime.nos, 3);
    EXPECT_NE(
        printed.out.find("Defined sectors : 3\nMissing sectors : 1, 2\nNext suggested sector number : 1\n"
                         "Sector 3\n"
                         "   time intervals   : 1\n"
                         "   duration [ms]    : 1.000E-02\n"),
        std::string::npos);
}

TEST(EditPulseSequence, ASectorOfUnknownContentIsCountedAndMissing) {
    fresh_state_with_short_name();
    g_runtime.offsetset = 1;
    const ConsoleOutput printed = edit_spatial_sequence("1\n4\n6\n6\n");
    EXPECT_EQ(g_runtime.nos, 4);
    EXPECT_EQ(g_runtime.sectorset, 1);
    EXPECT_NE(printed.out.find("Unknown sector type.\n"), std::string::npos);
    EXPECT_NE(printed.out.find("Defined sectors : <none>\nMissing sectors : 1, 2, 3, 4\n"),
              std::string::npos);
}

TEST(EditPulseSequence, SpinsComeFirst) {
    fresh_state();
    const ConsoleOutput printed = edit_spatial_sequence("2\n1\n1\n1\n0\n6\n");
    EXPECT_NE(printed.out.find("  number of spins       : 0\n"
                               "  quantum numbers (2I)  : <none>\n"
                               "  relative intensities  : <none>\n"
                               "  offsets [Hz]          : <none>\n"),
              std::string::npos);
    const std::size_t asked = printed.out.find("Definition of the spinsystem: \n");
    const std::size_t first = printed.out.find("Define or review the spin system first.");
    ASSERT_NE(asked, std::string::npos);
    EXPECT_LT(first, asked);
    EXPECT_EQ(printed.out.find("Define or review the spin system first.", asked), std::string::npos);
    EXPECT_EQ(g_runtime.systemset, 1);
    EXPECT_EQ(g_runtime.Nspins, 1);
}

TEST(EditPulseSequence, SpinsThatAreNotCompleteComeFirstToo) {
    fresh_state_with_short_name();
    g_runtime.systemset = 0;
    g_runtime.offsetset = 1;
    Shown shown;
    shown.next_step = "Define or review the spin system first.";
    shown.overview = nothing_defined;
    EXPECT_EQ(edit_spatial_sequence("6\n").out, spatial_state_text(shown) + spatial_editor_menu);
}

TEST(EditPulseSequence, ASectorNumberOutsideOneToTwentyIsRefused) {
    fresh_state_with_short_name();
    g_runtime.offsetset = 1;
    const ConsoleOutput printed = edit_spatial_sequence("1\n0\n1\n21\n6\n");
    Shown shown;
    shown.next_step = first_advice;
    shown.overview = nothing_defined;
    const std::string round = spatial_state_text(shown) + spatial_editor_menu;
    const std::string refused =
        "Sector number to define / edit = Invalid sector number. Allowed range is 1..20.\n";
    EXPECT_EQ(printed.out, round + refused + round + refused + round);
    EXPECT_EQ(g_runtime.nos, 0);
}

TEST(EditPulseSequence, TheResultFileIsOneLineAndMayBeEmpty) {
    fresh_state_with_short_name();
    const ConsoleOutput printed = edit_spatial_sequence("4\n  my result.bin \n4\n\n6\n");
    EXPECT_NE(printed.out.find("File name to store results in : \n===="), std::string::npos);
    EXPECT_NE(printed.out.find("  result file           : my result.bin\n"), std::string::npos);
    EXPECT_STREQ(g_runtime.resultflnm, "");
    edit_spatial_sequence("4\n" + std::string(400, 'r') + "\n6\n");
    EXPECT_EQ(g_runtime.resultflnm, std::string(255, 'r'));
}

TEST(EditPulseSequence, AnUnknownChoiceIsToldAndTheMenuComesAgain) {
    fresh_state_with_short_name();
    Shown shown;
    shown.next_step = grid_advice;
    shown.overview = nothing_defined;
    const std::string round = spatial_state_text(shown) + spatial_editor_menu;
    EXPECT_EQ(edit_spatial_sequence("7\n0\n6\n").out,
              round + "Unknown choice.\n" + round + "Unknown choice.\n" + round);
}

TEST(EditPulseSequence, AllTwentySectorsSuggestTheLast) {
    fresh_state_with_short_name();
    for (int k = 1; k <= 20; ++k)
        g_runtime.noti[k] = 1;
    g_runtime.nos = 20;
    const ConsoleOutput printed = edit_spatial_sequence("6\n");
    EXPECT_NE(printed.out.find("Defined sectors : 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, "
                               "18, 19, 20\nMissing sectors : <none>\nNext suggested sector number : 20\n"),
              std::string::npos);
    EXPECT_NE(printed.out.find("   RF/gradient file : <unset>\n"), std::string::npos);
}

TEST(EditPulseSequence, AnEndedInputLeavesTheEditorAtEveryQuestion) {
    const std::vector<std::string> session = {
        "2", "2", "1", "1", "1", "1", "10",    "-10", "1", "7.3", "3",  "2",       "0",   "1", "1",
        "0", "0", "1", "0", "0", "4", "r.bin", "1",   "1", "2",   "16", "1.5",     "2",   "0", "1.5",
        "9", "8", "0", "1", "5", "2", "1",     "2",   "3", "1",   "2",  "./a.bin", "note"};
    std::string answers;
    for (const std::string& answer : session) {
        TempTree tree;
        fresh_state_with_short_name();
        edit_spatial_sequence(answers);
        EXPECT_EQ(unread_answers(), "");
        answers += answer + "\n";
    }
    TempTree tree;
    fresh_state_with_short_name();
    edit_spatial_sequence(answers + "6\nleft\n");
    EXPECT_EQ(unread_answers(), "left\n");
    EXPECT_STREQ(g_runtime.remarks[1], "note");
}

TEST(EditPulseSequence, AnAbandonedSectorDoesNotCount) {
    TempTree tree;
    fresh_state_with_short_name();
    edit_spatial_sequence("1\n4\n5\n2\n");
    EXPECT_EQ(g_runtime.nos, 0);
}
