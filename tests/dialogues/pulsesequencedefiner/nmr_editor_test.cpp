#include "pulsesequencedefiner/nmr_editor.h"

#include "kor/runtime_state.h"
#include "korcurrentmodel/loaded_model.h"
#include "support/composer_state.h"
#include "support/composer_texts.h"
#include "support/console_script.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace kor;
using namespace kor_test;

namespace {

using Blocks = std::vector<std::vector<double>>;

const std::string nmr_editor_menu = "    1. Define / edit a sequence sector\n"
                                    "    2. Define / redefine spin system\n"
                                    "    3. Define result file name\n"
                                    "    4. Save current model now (.kormodel)\n"
                                    "    5. Return to previous menu\n\n"
                                    "Your choice is [1..5] : ";
const std::string sector_type_menu = "    1. Normal sector\n    2. Evolution sector\nYour choice [1,2] : ";
std::string header(int k) {
    return sector_header("1D / 2D", k) + sector_type_menu;
}

std::string nmr_file_dialogue(const std::string& leaf, const std::string& path) {
    return file_name_question("RF", leaf) + "Sector waveform file written to : " + path +
           "\nStatic offset frequency [Hz] : Sector note (optional): ";
}

std::string nmr_state_text(int nos, const std::string& next_step, const std::string& overview) {
    return editor_title_and_spins("1D / 2D") +
           "  sequence family       : 1D or 2D NMR (2)\n"
           "  sequence sectors      : " +
           std::to_string(nos) +
           "\n  result file           : <unset>\n"
           "  model file format     : .kormodel\n\nSuggested next step:\n" +
           next_step + "\n\nSector overview:\n" + overview + "\n";
}

ConsoleOutput edit_nmr_sequence(const std::string& answers) {
    return play_console(answers, Edit2DPulseSequence);
}

ConsoleOutput define_nmr_sector(const std::string& answers, int k = 1) {
    return play_console(answers, [k] { EXPECT_EQ(Define2DSeqSector(k), 1); });
}

} // namespace

TEST(Define2DSeqSector, HardPulse) {
    TempTree tree;
    fresh_state_with_short_name();
    const ConsoleOutput printed = define_nmr_sector("1\n1\n2\n./a.bin\n-40\nadc start\nleft\n", 2);
    EXPECT_EQ(printed.out,
              header(2) + CONTENT_MENU + HARD_PULSE_MENU + nmr_file_dialogue("lac_2d_s02.bin", "./a.bin"));
    EXPECT_EQ(g_runtime.sectype[2], 1);
    EXPECT_EQ(g_runtime.noti[2], 1);
    EXPECT_EQ(g_runtime.nevo[2], 1);
    EXPECT_EQ(g_runtime.sectdur[2], 1e-5);
    EXPECT_EQ(g_runtime.statoff[2], -40);
    EXPECT_STREQ(g_runtime.remarks[2], "adc start");
    const Blocks blocks = waveform_blocks(tree, "a.bin", 1, 2);
    EXPECT_NEAR(blocks[0][0], 0, 1e-10);
    EXPECT_DOUBLE_EQ(blocks[1][0], TWO_PI * 25000);
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(Define2DSeqSector, AHardPulseThatIsOnNoMenuIsNoPulseAndTold) {
    TempTree tree;
    fresh_state_with_short_name();
    EXPECT_EQ(define_nmr_sector("1\n1\n9\n./a.bin\n0\n\n").out,
              header(1) + CONTENT_MENU + HARD_PULSE_MENU +
                  "No RF pulse was defined: this sector has no RF.\n" +
                  nmr_file_dialogue("lac_2d_s01.bin", "./a.bin"));
    EXPECT_EQ(waveform_blocks(tree, "a.bin", 1, 2), Blocks(2, {0.0}));
}

TEST(Define2DSeqSector, SaysThatANoteWithANumberSignCannotBeSaved) {
    TempTree tree;
    fresh_state_with_short_name();
    const ConsoleOutput printed = define_nmr_sector("1\n1\n2\n./a.bin\n-40\nscan #2 adc\nleft\n");
    EXPECT_EQ(printed.out,
              header(1) + CONTENT_MENU + HARD_PULSE_MENU + nmr_file_dialogue("lac_2d_s01.bin", "./a.bin") +
                  "A model with '#' in a note cannot be saved: the rest of the line would be a comment.\n");
    EXPECT_STREQ(g_runtime.remarks[1], "scan #2 adc");
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(Define2DSeqSector, EveryShapeReachesTheFile) {
    const int N = 64;
    const double T = 3.2e-3;
    const struct {
        std::string answers;
        Pulse expected;
    } shapes[] = {
        {"2\n64\n3.2\n1\n30\n250\n", rectangular(N, 30, 250)},
        {"2\n64\n3.2\n2\n-90\n1.5\n800\n200\n", sinc_gauss(N, T, -90, 1.5, 800, 200)},
        {"2\n64\n3.2\n3\n1.5\n0.8\n2\n4\n", gauss_2d(N, T, 1.5, 0.8, 2, 4)},
        {"2\n64\n3.2\n4\n1.5\n0.8\n6\n4\n1\n2\n", sinc_2d(N, T, 1.5, 0.8, 6, 4, 1, 2)},
        {"3\n64\n3.2\n1\n20\n1500\n1000\n1.2\n", sech_tanh_sweep(N, T / N, N / 2.0, 1, 20, 1500, 1000, 1.2)},
        {"3\n64\n3.2\n2\n20\n1500\n1000\n1.2\n", sech_tanh_sweep(N, T / N, N, 1, 20, 1500, 1000, 1.2)},
        {"3\n64\n3.2\n3\n20\n1500\n1000\n1.2\n", sech_tanh_twice(N, T / N, 20, 1500, 1000, 1.2)},
        {"3\n64\n3.2\n4\n1.5\n0.5\n9\n6\n1\n0.8\n0.4\n-0.7\n",
         sinc_2d(N, T, 1.5, 0.5, 9, 6, 1, 0.8, 0.4, -0.7)},
    };
    for (const auto& shape : shapes) {
        TempTree tree;
        fresh_state_with_short_name();
        define_nmr_sector("1\n" + shape.answers + "./a.bin\n0\n\n");
        EXPECT_EQ(g_runtime.noti[1], N);
        EXPECT_DOUBLE_EQ(g_runtime.sectdur[1], T);
        expect_waveform(waveform_blocks(tree, "a.bin", N, 2), shape.expected);
    }
}

TEST(Define2DSeqSector, FourPointsAreSixtyFourBytes) {
    TempTree tree;
    fresh_state_with_short_name();
    define_nmr_sector("1\n2\n4\n1\n1\n0\n100\n./a.bin\n0\n\n");
    EXPECT_EQ(tree.read("a.bin").size(), 64u);
}

TEST(Define2DSeqSector, AReceiverMaySampleMoreOftenThanAFileHolds) {
    TempTree tree;
    fresh_state_with_short_name();
    const ConsoleOutput printed = define_nmr_sector("1\n2\n16384\n2000\n1\n0\n0\n./a.bin\n0\nadc\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(g_runtime.noti[1], 16384);
    EXPECT_EQ(g_runtime.sectdur[1], 2);
    EXPECT_EQ(tree.read("a.bin").size(), 2u * 8 * 8192);
}

TEST(Define2DSeqSector, WaitingTime) {
    TempTree tree;
    fresh_state_with_short_name();
    define_nmr_sector("1\n5\n3.5\n./a.bin\n0\n\n");
    EXPECT_EQ(g_runtime.sectdur[1], 0.0035);
    EXPECT_EQ(waveform_blocks(tree, "a.bin", 1, 2), Blocks(2, {0.0}));
}

TEST(Define2DSeqSector, EvolutionSectorSetsTheSteps) {
    TempTree tree;
    fresh_state_with_short_name();
    g_runtime.xb[0] = 5;
    const ConsoleOutput printed = define_nmr_sector("2\n0.5\n64\n./a.bin\n0\nt1\n", 3);
    EXPECT_EQ(printed.out, header(3) +
                               "Basic evolution-sector time [ms] : Number of evolution steps        : " +
                               nmr_file_dialogue("lac_2d_s03.bin", "./a.bin"));
    EXPECT_EQ(g_runtime.sectype[3], 2);
    EXPECT_EQ(g_runtime.noti[3], 1);
    EXPECT_EQ(g_runtime.nevo[3], 64);
    EXPECT_EQ(g_runtime.sectdur[3], 0.0005);
    EXPECT_EQ(waveform_blocks(tree, "a.bin", 1, 2), Blocks(2, {0.0}));
}

TEST(Define2DSeqSector, SectorsBehindAnEvolutionSectorInheritItsSteps) {
    TempTree tree;
    fresh_state_with_short_name();
    const std::string wait = "1\n5\n1\n./a.bin\n0\n\n";
    define_nmr_sector(wait, 1);
    EXPECT_EQ(g_runtime.nevo[1], 1);
    define_nmr_sector("2\n0.5\n64\n./a.bin\n0\n\n", 2);
    define_nmr_sector(wait, 3);
    define_nmr_sector(wait, 4);
    EXPECT_EQ(g_runtime.nevo[3], 64);
    EXPECT_EQ(g_runtime.nevo[4], 64);
}

TEST(Define2DSeqSector, ASecondEvolutionSectorIsRefused) {
    TempTree tree;
    fresh_state_with_short_name();
    define_nmr_sector("2\n0.5\n64\n./a.bin\n0\n\n", 1);
    for (int k : {2, 3}) {
        const ConsoleOutput printed = define_nmr_sector("2\n\nleft\n", k);
        EXPECT_EQ(printed.out, header(k) + "A 3D experiment is not allowed.\nPress <enter> to continue");
        EXPECT_EQ(g_runtime.sectype[k], 0);
        EXPECT_EQ(unread_answers(), "left\n");
        define_nmr_sector("1\n5\n1\n./a.bin\n0\n\n", k);
    }
}

// Sectors may be defined in any order: one that is still missing changes nothing behind it.
TEST(Define2DSeqSector, StepsReachAcrossMissingSectors) {
    TempTree tree;
    fresh_state_with_short_name();
    define_nmr_sector("2\n0.5\n4\n./a.bin\n0\n\n", 1);
    const ConsoleOutput printed = define_nmr_sector("2\n\nleft\n", 3);
    EXPECT_EQ(printed.out, header(3) + "A 3D experiment is not allowed.\nPress <enter> to continue");
    EXPECT_EQ(unread_answers(), "left\n");
    EXPECT_EQ(g_runtime.sectype[3], 0);
    const std::string wait = "1\n5\n1\n./a.bin\n0\n\n";
    define_nmr_sector(wait, 5);
    EXPECT_EQ(g_runtime.nevo[5], 4);
    define_nmr_sector(wait, 2);
    EXPECT_EQ(g_runtime.nevo[2], 4);
}

TEST(Define2DSeqSector, ARefusedSectorStaysWhatItWas) {
    TempTree tree;
    fresh_state_with_short_name();
    define_nmr_sector("2\n0.5\n64\n./a.bin\n0\n\n", 1);
    define_nmr_sector("1\n5\n1\n./a.bin\n0\nwait\n", 2);
    define_nmr_sector("2\n\n", 2);
    EXPECT_EQ(g_runtime.sectype[2], 1);
    EXPECT_EQ(g_runtime.sectdur[2], 0.001);
    EXPECT_STREQ(g_runtime.remarks[2], "wait");
}

TEST(Define2DSeqSector, AnEvolutionSectorMayBeEditedAgain) {
    TempTree tree;
    fresh_state_with_short_name();
    define_nmr_sector("2\n0.5\n64\n./a.bin\n0\n\n", 1);
    define_nmr_sector("2\n0.25\n128\n./a.bin\n0\n\n", 1);
    EXPECT_EQ(g_runtime.nevo[1], 128);
}

TEST(Define2DSeqSector, UnknownTypesAndContentsChangeNothing) {
    fresh_state_with_short_name();
    EXPECT_EQ(define_nmr_sector("3\n").out, header(1) + "Unknown sector type.\n");
    EXPECT_EQ(define_nmr_sector("1\n6\n").out, header(1) + CONTENT_MENU + "Unknown sector type.\n");
    EXPECT_EQ(g_runtime.sectype[1], 0);
}

TEST(Edit2DPulseSequence, ShowsStateGuidanceAndSectors) {
    TempTree tree;
    fresh_state_with_short_name();
    g_runtime.nevo[0] = 7;
    const ConsoleOutput printed = edit_nmr_sequence("1\n2\n2\n0.5\n64\n./a.bin\n12.5\nt1\n6\n5\nleft\n");
    const std::string after =
        nmr_state_text(2, "Define the next sector, save the current model, or run it from the main menu.",
                       "Defined sectors : 2\nMissing sectors : 1\nNext suggested sector number : 1\n"
                       "Sector 2\n"
                       "   type             : 2  evolution sector\n"
                       "   time intervals   : 1\n"
                       "   duration [ms]    : 5.000E-01\n"
                       "   evolution steps  : 64\n"
                       "   pulse file       : ./a.bin\n"
                       "   offset [Hz]      : 1.250000000000E+01\n"
                       "   remark           : t1\n") +
        nmr_editor_menu;
    EXPECT_EQ(printed.out, nmr_state_text(0, "Define sector 1 first.",
                                          "Defined sectors : <none>\nNext suggested sector number : 1\n") +
                               nmr_editor_menu + "Sector number to define / edit = " + header(2) +
                               "Basic evolution-sector time [ms] : Number of evolution steps        : " +
                               nmr_file_dialogue("lac_2d_s02.bin", "./a.bin") + after + "Unknown choice.\n" +
                               after);
    EXPECT_EQ(g_runtime.nevo[0], 1);
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(Edit2DPulseSequence, ShowsASectorOfAnUnknownType) {
    fresh_state_with_short_name();
    g_runtime.sectype[1] = 3;
    g_runtime.noti[1] = 1;
    g_runtime.sectdur[1] = 1e-3;
    std::strcpy(g_runtime.fnames[1], "a.bin");
    const ConsoleOutput printed = edit_nmr_sequence("5\n");
    EXPECT_NE(printed.out.find("Sector 1\n   type             : 3  <unknown>\n"), std::string::npos)
        << printed.out;
}

TEST(Edit2DPulseSequence, SpinsAndResultFileAreTheSameDialogues) {
    fresh_state();
    edit_nmr_sequence("2\n1\n1\n1\n0\n3\nfid 1.bin\n5\n");
    EXPECT_EQ(g_runtime.Nspins, 1);
    EXPECT_EQ(g_runtime.systemset, 1);
    EXPECT_STREQ(g_runtime.resultflnm, "fid 1.bin");
    edit_nmr_sequence("3\n\n5\n");
    EXPECT_STREQ(g_runtime.resultflnm, "");
}

TEST(Edit2DPulseSequence, AnEndedInputLeavesTheEditorAtEveryQuestion) {
    const std::vector<std::string> session = {
        "2",  "1", "1",  "1",       "0", "3",  "r.bin", "1", "1", "1",   "2",       "16",      "1.5",
        "1",  "0", "50", "./a.bin", "0", "90", "1",     "2", "2", "0.5", "8",       "./b.bin", "0",
        "t1", "1", "3",  "1",       "4", "2",  "1",     "3", "3", "1",   "./c.bin", "0",       "note"};
    std::string answers;
    for (const std::string& answer : session) {
        TempTree tree;
        fresh_state_with_short_name();
        edit_nmr_sequence(answers);
        EXPECT_EQ(unread_answers(), "");
        answers += answer + "\n";
    }
    TempTree tree;
    fresh_state_with_short_name();
    edit_nmr_sequence(answers + "5\nleft\n");
    EXPECT_EQ(unread_answers(), "left\n");
    EXPECT_STREQ(g_runtime.remarks[3], "note");
    EXPECT_EQ(g_runtime.nevo[3], 8);
}
