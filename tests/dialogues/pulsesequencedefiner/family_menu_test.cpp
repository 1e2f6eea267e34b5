#include "pulsesequencedefiner/family_menu.h"

#include "kor/runtime_state.h"
#include "korcurrentmodel/loaded_model.h"
#include "support/composer_state.h"
#include "support/console_script.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

const std::string family_banner = "*****************************************************\n"
                                  "*** Prepare / Edit Current Pulse Sequence         ***\n"
                                  "***              current model workflow           ***\n"
                                  "*****************************************************\n\n";
const std::string family_question = "\nChoose the sequence family first.\n\n"
                                    "    1. Spatially resolved pulse sequence\n"
                                    "    2. 1D or 2D NMR pulse sequence\n"
                                    "    3. Back\n\n"
                                    "Your choice [1..3] : ";

std::string round_text(int sectors) {
    return family_banner +
           "Current loaded/prepared spin system:\n  Nspins = 2\n  Current sequence sectors = " +
           std::to_string(sectors) + "\n" + family_question;
}

std::string actions(const std::string& family) {
    return "\n    1. Continue editing the current " + family + " sequence\n    2. Start a new " + family +
           " sequence\n    3. Choose another sequence family\n\nYour choice [1..3] : ";
}

std::string spatial_actions(const std::string& grid) {
    return "\nSelected sequence family: spatially resolved pulse sequence\n\n" + grid +
           actions("spatially resolved");
}

const std::string nmr_actions = "\nSelected sequence family: 1D or 2D NMR pulse sequence\n\n"
                                "This family does not use the spatial simulation domain.\n" +
                                actions("1D or 2D NMR");
const std::string one_voxel = "Current spatial grid: ndx=1  ndy=1  ndz=1\n"
                              "  origin [cm] : (0, 0, 0)\n"
                              "  delta  [cm] : (0, 0, 0)\n";

ConsoleOutput compose(const std::string& answers) {
    return play_console(answers, ComposePulseSequence);
}

/// A prepared 1D/2D sequence of two sectors.
void start_with_nmr_sequence() {
    fresh_state_with_spins();
    g_runtime.sequencetype = 2;
    g_runtime.nos = 2;
    g_runtime.noti[1] = g_runtime.noti[2] = 1;
}

} // namespace

TEST(ComposePulseSequence, ThreeGoesBack) {
    fresh_state_with_spins();
    EXPECT_EQ(compose("3\nleft\n").out, round_text(0));
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(ComposePulseSequence, SaysWhenThereIsNoSpinSystem) {
    fresh_state();
    EXPECT_EQ(compose("3\n").out,
              family_banner + "No spin system is currently prepared.\n" + family_question);
}

TEST(ComposePulseSequence, AnUnknownFamilyIsToldAboveTheNextMenu) {
    fresh_state_with_spins();
    EXPECT_EQ(compose("4\n3\n").out, round_text(0) + "Unknown choice.\n\n" + round_text(0));
}

TEST(ComposePulseSequence, AnUnknownActionIsToldAboveTheNextMenu) {
    fresh_state_with_spins();
    EXPECT_EQ(compose("2\n0\n3\n").out, round_text(0) + nmr_actions + "Unknown choice.\n\n" + round_text(0));
}

TEST(ComposePulseSequence, AnotherFamilyMayBeChosen) {
    fresh_state_with_spins();
    EXPECT_EQ(compose("1\n3\n2\n3\n3\n").out,
              round_text(0) + spatial_actions(one_voxel) + round_text(0) + nmr_actions + round_text(0));
    EXPECT_EQ(g_runtime.sequencetype, 0);
}

TEST(ComposePulseSequence, ShowsTheGridOfTheSpatialFamily) {
    fresh_state_with_spins();
    g_runtime.ndx = 5;
    g_runtime.x0 = -0.25;
    g_runtime.dx = 0.1;
    const std::string grid = "Current spatial grid: ndx=5  ndy=1  ndz=1\n"
                             "  origin [cm] : (-0.25, 0, 0)\n"
                             "  delta  [cm] : (0.1, 0, 0)\n";
    EXPECT_EQ(compose("1\n3\n3\n").out, round_text(0) + spatial_actions(grid) + round_text(0));
    g_runtime.ndy = 0;
    const std::string none = "Current spatial grid: <not explicitly defined yet>\n"
                             "  Note: the spatial editor will clamp the grid to at least 1 x 1 x 1.\n";
    EXPECT_EQ(compose("1\n3\n3\n").out, round_text(0) + spatial_actions(none) + round_text(0));
}

TEST(ComposePulseSequence, ContinuingAnotherFamilyIsRefused) {
    start_with_nmr_sequence();
    EXPECT_EQ(compose("1\n1\n3\n").out, round_text(2) + spatial_actions(one_voxel) +
                                            "A different sequence family is already prepared in memory.\n"
                                            "Start a new spatially resolved sequence instead.\n\n" +
                                            round_text(2));
    EXPECT_EQ(g_runtime.sequencetype, 2);
    EXPECT_EQ(g_runtime.nos, 2);
}

TEST(ComposePulseSequence, ContinuingTheSameFamilyOpensItsEditor) {
    start_with_nmr_sequence();
    const ConsoleOutput printed = compose("2\n1\n5\n3\nleft\n");
    EXPECT_EQ(printed.out.rfind(round_text(2) + nmr_actions + "\n====", 0), 0u);
    EXPECT_NE(printed.out.find("Defined sectors : 1, 2\n"), std::string::npos);
    EXPECT_EQ(g_runtime.sectorset, 1);
    EXPECT_EQ(g_runtime.offsetset, 0);
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(ComposePulseSequence, WithoutSectorsAnyFamilyMayContinue) {
    start_with_nmr_sequence();
    g_runtime.nos = 0;
    compose("1\n1\n6\n3\n");
    EXPECT_EQ(g_runtime.sequencetype, 1);
    EXPECT_EQ(g_runtime.offsetset, 1);
}

TEST(ComposePulseSequence, ANewSequenceIsEmpty) {
    start_with_nmr_sequence();
    const ConsoleOutput printed = compose("1\n2\n6\n3\n");
    EXPECT_NE(printed.out.find("Defined sectors : <none>\nNext suggested sector number : 1\n"),
              std::string::npos);
    EXPECT_NE(printed.out.find("  result file           : result.bin\n"), std::string::npos);
    EXPECT_EQ(g_runtime.sequencetype, 1);
    EXPECT_EQ(g_runtime.nos, 0);
}

TEST(ComposePulseSequence, AnEndedInputLeavesEveryMenu) {
    for (const char* answers : {"", "x\n", "1\n", "1\n2\n", "2\n1\n", "2\n1\n1\n", "4\n"}) {
        fresh_state_with_spins();
        compose(answers);
        EXPECT_EQ(unread_answers(), "") << answers;
    }
}
