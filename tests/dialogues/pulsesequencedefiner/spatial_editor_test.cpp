#include "pulsesequencedefiner/spatial_editor.h"

#include "kor/runtime_state.h"
#include "korcurrentmodel/loaded_model.h"
#include "korpaths.h"
#include "support/composer_state.h"
#include "support/console_script.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace kor;
using namespace kor_test;

namespace {

using Blocks = std::vector<std::vector<double>>;

const std::string menu = "    1. Define / edit a sequence sector\n"
                         "    2. Define / redefine spin system\n"
                         "    3. Define / redefine spatial grid\n"
                         "    4. Define result file name\n"
                         "    5. Save current model now (.kormodel)\n"
                         "    6. Return to previous menu\n\n"
                         "Your choice is [1..6] : ";
const std::string content_menu = "    1. Hard pulse\n"
                                 "       (90 x, 90 y, 90 -x, 90 -y, 180 x, 180 y, 180 -x, 180 -y)\n"
                                 "    2. Amplitude-modulated RF pulse   : Hp(t) = f(t) * Ix\n"
                                 "    3. General RF pulse               : Hp(t) = f(t) * Ix + g(t) * Iy\n"
                                 "    4. Read RF pulse from disk        : (Bx, By)\n"
                                 "    5. Waiting time / free precession\n"
                                 "Your choice [1..5] : ";
const std::string gradient_menu = "Possible gradient modulation types:\n"
                                  "   1.  Constant gradient \n"
                                  "   2.  cosine spiral (2D excitation)\n"
                                  "   3.  sine spiral   (2D excitation)\n"
                                  "Your choice [1..3] : ";
const std::string hard_menu = "\nStandard Hard Pulses:\n\n"
                              "   1. (pi/2) (x')            5. (pi) (x')\n"
                              "   2. (pi/2) (y')            6. (pi) (y')\n"
                              "   3. (pi/2) (-x')           7. (pi) (-x')\n"
                              "   4. (pi/2) (-y')           8. (pi) (-y')\n\n"
                              "Your choice is [1..8] : \n";

/// Three constant gradients of 0 Hz/cm.
const std::string no_gradients = "1\n0\n1\n0\n1\n0\n";

std::string header(int k) {
    return "\n========================================\n Edit Spatial Sequence Sector " + std::to_string(k) +
           "\n========================================\n\n";
}

std::string constant_gradients() {
    std::string text;
    for (const char* axis : {"X", "Y", "Z"})
        text += "Define " + std::string(axis) + "-gradient waveform\n" + gradient_menu +
                " Constant gradient strength [Hz/cm] : \n";
    return text;
}

std::string file_dialogue(const std::string& leaf, const std::string& path) {
    char folder[KOR_PATH_SIZE];
    EXPECT_TRUE(KOR_GetDefaultRFOutputDir(folder, sizeof folder));
    return "Default sector waveform directory : " + std::string(folder) +
           "\nDefault sector waveform file name : " + leaf +
           "\nThis binary file stores RF and gradient samples for this sector.\n"
           "Bare names are written to the default sector waveform directory.\n"
           "Press Enter to use the default name: " +
           leaf + "\nFile name : Sector waveform file written to : " + path + "\nSector note (optional): ";
}

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

std::string state_text(const Shown& shown) {
    return "\n========================================\n"
           " Spatially Resolved Pulse Sequence Editor\n"
           "========================================\n\n"
           "Current model file : <unsaved current model>\n\n"
           "Current model state:\n"
           "  number of spins       : 2\n"
           "  quantum numbers (2I)  : 1 1\n"
           "  relative intensities  : 1.000E+00 1.000E+00\n"
           "  offsets [Hz]          : 1.000E+02 -5.025E+01\n"
           "  coupling mode         : 1  Weak coupling approximation\n"
           "  number of couplings   : 1\n"
           "  J(1,2) [Hz]           : 7.300E+00\n" +
           shown.grid + "  sequence family       : spatially resolved (1)\n" +
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

ConsoleOutput edit(const std::string& answers) {
    return play_console(answers, EditPulseSequence);
}

/// Defines sector 1 and returns what was printed.
ConsoleOutput define_sector(const std::string& answers, int k = 1) {
    return play_console(answers, [k] { EXPECT_EQ(DefineSeqSector(k), 1); });
}

void start() {
    fresh_state_with_spins();
    set_current_model_short_name("lac");
}

} // namespace

TEST(DefineSeqSector, HardPulseWithConstantGradients) {
    TempTree tree;
    start();
    const ConsoleOutput printed =
        define_sector("1\n6\n-12.5\n1\n2000\n1\n-1\n1\n0.5\n./a.bin\n  refocus, 180 y \nleft\n", 3);
    EXPECT_EQ(printed.out, header(3) + content_menu + hard_menu + "Static offset frequency [Hz] : " +
                               constant_gradients() + file_dialogue("lac_s03.bin", "./a.bin"));
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(g_runtime.noti[3], 1);
    EXPECT_EQ(g_runtime.sectdur[3], 1e-5);
    EXPECT_EQ(g_runtime.sectype[3], 1);
    EXPECT_EQ(g_runtime.nevo[3], 1);
    EXPECT_EQ(g_runtime.statoff[3], -12.5);
    EXPECT_STREQ(g_runtime.remarks[3], "  refocus, 180 y ");
    const Blocks blocks = waveform_blocks(tree, "a.bin", 1, 5);
    EXPECT_NEAR(blocks[0][0], 0, 1e-10);
    EXPECT_DOUBLE_EQ(blocks[1][0], TWO_PI * 50000);
    EXPECT_DOUBLE_EQ(blocks[2][0], TWO_PI * 2000);
    EXPECT_DOUBLE_EQ(blocks[3][0], -TWO_PI);
    EXPECT_DOUBLE_EQ(blocks[4][0], TWO_PI * 0.5);
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(DefineSeqSector, NinetyXHardPulseWithATwoKilohertzGradientIsFiveNumbers) {
    TempTree tree;
    start();
    define_sector("1\n1\n0\n1\n2000\n1\n0\n1\n0\n./a.bin\n\n");
    const Blocks blocks = waveform_blocks(tree, "a.bin", 1, 5);
    EXPECT_DOUBLE_EQ(blocks[0][0], TWO_PI / 4 / 1e-5);
    EXPECT_EQ(blocks[1][0], 0);
    EXPECT_DOUBLE_EQ(blocks[2][0], TWO_PI * 2000);
    EXPECT_EQ(blocks[3][0], 0);
    EXPECT_EQ(blocks[4][0], 0);
}

TEST(DefineSeqSector, AnUnknownHardPulseIsNoPulse) {
    TempTree tree;
    start();
    g_runtime.xb[0] = g_runtime.yb[0] = 5;
    define_sector("1\n9\n0\n" + no_gradients + "./a.bin\n\n");
    EXPECT_EQ(waveform_blocks(tree, "a.bin", 1, 5), Blocks(5, {0.0}));
    EXPECT_EQ(g_runtime.noti[1], 1);
    EXPECT_EQ(g_runtime.sectdur[1], 1e-5);
}

TEST(DefineSeqSector, WaitingTimeIsOneSampleWithoutField) {
    TempTree tree;
    start();
    g_runtime.xb[0] = 5;
    const ConsoleOutput printed = define_sector("5\n12.5\n3\n" + no_gradients + "./a.bin\nTE/2\n");
    EXPECT_EQ(printed.out, header(1) + content_menu + "Waiting time [ms] : Static offset frequency [Hz] : " +
                               constant_gradients() + file_dialogue("lac_s01.bin", "./a.bin"));
    EXPECT_EQ(g_runtime.noti[1], 1);
    EXPECT_EQ(g_runtime.sectdur[1], 0.0125);
    EXPECT_EQ(waveform_blocks(tree, "a.bin", 1, 5), Blocks(5, {0.0}));
}

TEST(DefineSeqSector, EveryAmplitudeModulatedShapeReachesTheFile) {
    const int N = 65;
    const double T = 6.5e-3;
    const struct {
        std::string answers;
        Pulse expected;
    } shapes[] = {
        {"1\n30\n250\n", rectangular(N, 30, 250)},
        {"2\n-90\n1.5\n800\n200\n", sinc_gauss(N, T, -90, 1.5, 800, 200)},
        {"3\n1.5\n0.8\n2\n4\n", gauss_2d(N, T, 1.5, 0.8, 2, 4)},
        {"4\n1.5\n0.8\n6\n4\n1\n2\n", sinc_2d(N, T, 1.5, 0.8, 6, 4, 1, 2)},
    };
    for (const auto& shape : shapes) {
        TempTree tree;
        start();
        define_sector("2\n65\n6.5\n" + shape.answers + "0\n" + no_gradients + "./a.bin\n\n");
        EXPECT_EQ(g_runtime.noti[1], N);
        EXPECT_DOUBLE_EQ(g_runtime.sectdur[1], T);
        expect_waveform(waveform_blocks(tree, "a.bin", N, 5), shape.expected);
    }
}

TEST(DefineSeqSector, EveryGeneralShapeReachesTheFile) {
    for (const int N : {64, 65, 1}) {
        const double T = 4e-3, ti = T / N;
        TempTree tree;
        tree.write("pulses.txt", "1.5 0.5 9 6 1 0.8 0.4 -0.7\n");
        const Pulse off_centre = sinc_2d(N, T, 1.5, 0.5, 9, 6, 1, 0.8, 0.4, -0.7);
        const struct {
            std::string answers;
            Pulse expected;
        } shapes[] = {
            {"1\n20\n1500\n1000\n1.2\n", sech_tanh_sweep(N, ti, N / 2.0, 1, 20, 1500, 1000, 1.2)},
            {"2\n20\n1500\n1000\n1.2\n", sech_tanh_sweep(N, ti, N, 1, 20, 1500, 1000, 1.2)},
            {"3\n20\n1500\n1000\n1.2\n", sech_tanh_twice(N, ti, 20, 1500, 1000, 1.2)},
            {"4\n1.5\n0.5\n9\n6\n1\n0.8\n0.4\n-0.7\n", off_centre},
            {"5\n1\n1.5\n0.5\n9\n6\n1\n0.8\n0.4\n-0.7\n2\n", off_centre},
            {"6\npulses.txt\n", off_centre},
        };
        for (const auto& shape : shapes) {
            start();
            // What an earlier sector left behind does not show through an odd sample.
            g_runtime.xb[N - 1] = 1e6;
            define_sector("3\n" + std::to_string(N) + "\n4\n" + shape.answers + "0\n" + no_gradients +
                          "./a.bin\n\n");
            expect_waveform(waveform_blocks(tree, "a.bin", N, 5), shape.expected);
        }
    }
}

TEST(DefineSeqSector, EveryGradientReachesTheFile) {
    const int N = 32;
    const double T = 3.2e-3, w = TWO_PI * 4;
    TempTree tree;
    start();
    const ConsoleOutput printed =
        define_sector("2\n32\n3.2\n1\n0\n0\n0\n1\n-150\n2\n0.5\n4\n3\n0.25\n4\n./a.bin\n\n");
    EXPECT_NE(printed.out.find("f(t) = cos(2*pi*n*t/T)\nA    : \nn    : \nDefine Z-gradient waveform\n"),
              std::string::npos);
    const Blocks blocks = waveform_blocks(tree, "a.bin", N, 5);
    for (int k = 0; k < N; ++k) {
        const double phase = w * k / N, g = 1 - double(k) / N;
        EXPECT_DOUBLE_EQ(blocks[2][k], TWO_PI * -150);
        EXPECT_NEAR(blocks[3][k], -0.5 / T * (std::cos(phase) + w * g * std::sin(phase)), 1e-9);
        EXPECT_NEAR(blocks[4][k], 0.25 / T * (w * g * std::cos(phase) - std::sin(phase)), 1e-9);
    }
}

TEST(DefineSeqSector, AGradientWithoutAUsableAnswerIsZeroAndTold) {
    TempTree tree;
    start();
    g_runtime.gx[0] = g_runtime.gy[0] = g_runtime.gz[0] = 4;
    const ConsoleOutput printed = define_sector("5\n1\n0\nnone\n7\n1\nlots\n./a.bin\n\n");
    std::string expected;
    const char* extra[] = {"", "", " Constant gradient strength [Hz/cm] : "};
    const char* axes[] = {"X", "Y", "Z"};
    for (int i = 0; i < 3; ++i)
        expected += "Define " + std::string(axes[i]) + "-gradient waveform\n" + gradient_menu + extra[i] +
                    "No " + axes[i] + "-gradient waveform was defined: this sector has no " + axes[i] +
                    "-gradient.\n";
    EXPECT_NE(printed.out.find(expected), std::string::npos) << printed.out;
    EXPECT_EQ(waveform_blocks(tree, "a.bin", 1, 5), Blocks(5, {0.0}));
}

TEST(DefineSeqSector, PulseFromDiskIsScaled) {
    TempTree tree;
    tree.write("bx.txt", "1\n2\n3\n");
    tree.write("by.txt", "-1\n");
    start();
    const ConsoleOutput printed =
        define_sector("4\n3\n6\n1\nbx.txt\n1\nby.txt\n10\n0\n" + no_gradients + "./a.bin\n\n");
    EXPECT_NE(
        printed.out.find("Number of time intervals : Total sector duration [ms] : \n\nFile name Bx(t)\n"),
        std::string::npos);
    EXPECT_EQ(printed.err.rfind("fscanf: ", 0), 0u) << "the second file is short: " << printed.err;
    const Blocks blocks = waveform_blocks(tree, "a.bin", 3, 5);
    EXPECT_EQ(blocks[0], (std::vector<double>{10, 20, 30}));
    EXPECT_EQ(blocks[1], (std::vector<double>{-10, 0, 0}));
}

TEST(DefineSeqSector, MoreThan8192IntervalsAreClampedWithAWarning) {
    TempTree tree;
    start();
    // 8.192 ms over 8192 points: the first point of the half sweep lies at -8.192 ms.
    const ConsoleOutput printed =
        define_sector("3\n9000\n8.192\n2\n0\n100\n300\n1\n0\n" + no_gradients + "./a.bin\n\n");
    EXPECT_EQ(printed.err, "WARNING: ap=9000 exceeds KOR_MAX_RF_POINTS=8192; clamping.\n");
    EXPECT_EQ(g_runtime.noti[1], 9000);
    expect_waveform(waveform_blocks(tree, "a.bin", 8192, 5),
                    sech_tanh_sweep(8192, 1e-6, 8192, 1, 0, 100, 300, 1));
}

TEST(DefineSeqSector, NoIntervalsMakeAnEmptyFile) {
    for (const char* intervals : {"0", "-5"}) {
        TempTree tree;
        start();
        define_sector(std::string("2\n") + intervals + "\n1\n1\n0\n5\n0\n" + no_gradients + "./a.bin\n\n");
        EXPECT_EQ(tree.read("a.bin"), "");
        EXPECT_EQ(g_runtime.noti[1], std::stoi(intervals));
    }
}

TEST(DefineSeqSector, AnAbandonedPulseIsNoPulse) {
    TempTree tree;
    start();
    g_runtime.xb[1] = g_runtime.yb[1] = 5;
    define_sector("2\n3\n1\n1\nninety\n0\n" + no_gradients + "./a.bin\n\n");
    EXPECT_EQ(waveform_blocks(tree, "a.bin", 3, 5), Blocks(5, std::vector<double>(3, 0.0)));
}

TEST(DefineSeqSector, AnUnknownContentChangesNothing) {
    start();
    for (const char* answer : {"0\n", "6\n", "-1\n"}) {
        EXPECT_EQ(define_sector(answer).out, header(1) + content_menu + "Unknown sector type.\n");
        EXPECT_EQ(g_runtime.sectype[1], 0);
        EXPECT_EQ(g_runtime.noti[1], 0);
    }
}

TEST(DefineSeqSector, NumberPromptsRepeatAtBadInput) {
    TempTree tree;
    start();
    const ConsoleOutput printed = define_sector("x\n5\nsoon\n12.5\nfar\n0\n" + no_gradients + "./a.bin\n\n");
    EXPECT_NE(printed.out.find("Your choice [1..5] : Please enter a whole number.\nYour choice [1..5] : "
                               "Waiting time [ms] : Please enter a numeric value.\nWaiting time [ms] : "
                               "Static offset frequency [Hz] : Please enter a numeric value.\n"
                               "Static offset frequency [Hz] : "),
              std::string::npos);
    EXPECT_EQ(g_runtime.sectdur[1], 0.0125);
}

TEST(DefineSeqSector, ALongNoteIsCutAndUsedUp) {
    TempTree tree;
    start();
    define_sector("5\n1\n0\n" + no_gradients + "./a.bin\n" + std::string(700, 'n') + "\nleft\n");
    EXPECT_EQ(g_runtime.remarks[1], std::string(511, 'n'));
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(EditPulseSequence, GuidesFromGridToSectorToRun) {
    TempTree tree;
    start();
    const std::string sector = "1\n1\n5\n2\n0\n" + no_gradients + "./a.bin\nwait\n";
    const ConsoleOutput printed = edit("3\n2\n-0.5\n1\n0\n0\n0\n300\n0.25\n0.125\n" + sector + "6\nleft\n");
    Shown shown;
    shown.next_step = grid_advice;
    shown.overview = nothing_defined;
    std::string expected = state_text(shown) + menu;
    for (const char* axis : {"x", "y", "z"})
        expected += "Number of " + std::string(axis) + "-grid points   : " + axis +
                    "-offset coordinate [cm]  : " + axis + "-step size         [cm]  : ";
    shown.grid = "  spatial grid          : ndx=2  ndy=1  ndz=256\n"
                 "  grid origin [cm]      : (-0.5, 0, 0.25)\n"
                 "  grid delta  [cm]      : (1, 0, 0.125)\n";
    shown.next_step = first_advice;
    expected += state_text(shown) + menu + "Sector number to define / edit = " + header(1) + content_menu +
                "Waiting time [ms] : Static offset frequency [Hz] : " + constant_gradients() +
                file_dialogue("lac_s01.bin", "./a.bin");
    shown.nos = 1;
    shown.next_step = go_on_advice;
    shown.overview = "Defined sectors : 1\nMissing sectors : <none>\nNext suggested sector number : 2\n"
                     "Sector 1\n"
                     "   time intervals   : 1\n"
                     "   duration [ms]    : 2.000E+00\n"
                     "   RF/gradient file : ./a.bin\n"
                     "   offset [Hz]      : 0.000E+00\n"
                     "   remark           : wait\n";
    expected += state_text(shown) + menu;
    EXPECT_EQ(printed.out, expected);
    EXPECT_EQ(g_runtime.offsetset, 1);
    EXPECT_EQ(g_runtime.sectorset, 1);
    EXPECT_EQ(g_runtime.sector, 1);
    EXPECT_EQ(g_runtime.nevo[0], 1);
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(EditPulseSequence, SectorThreeFirstLeavesTwoMissing) {
    TempTree tree;
    start();
    g_runtime.offsetset = 1;
    const ConsoleOutput printed = edit("1\n3\n1\n1\n0\n" + no_gradients + "./a.bin\n\n6\n");
    EXPECT_EQ(g_runtime.nos, 3);
    EXPECT_NE(
        printed.out.find("Defined sectors : 3\nMissing sectors : 1, 2\nNext suggested sector number : 1\n"
                         "Sector 3\n"
                         "   time intervals   : 1\n"
                         "   duration [ms]    : 1.000E-02\n"),
        std::string::npos);
}

TEST(EditPulseSequence, ASectorOfUnknownContentIsCountedAndMissing) {
    start();
    g_runtime.offsetset = 1;
    const ConsoleOutput printed = edit("1\n4\n6\n6\n");
    EXPECT_EQ(g_runtime.nos, 4);
    EXPECT_EQ(g_runtime.sectorset, 1);
    EXPECT_NE(printed.out.find("Unknown sector type.\n"), std::string::npos);
    EXPECT_NE(printed.out.find("Defined sectors : <none>\nMissing sectors : 1, 2, 3, 4\n"),
              std::string::npos);
}

TEST(EditPulseSequence, SpinsComeFirst) {
    fresh_state();
    const ConsoleOutput printed = edit("2\n1\n1\n1\n0\n6\n");
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

TEST(EditPulseSequence, ASectorNumberOutsideOneToTwentyIsRefused) {
    start();
    g_runtime.offsetset = 1;
    const ConsoleOutput printed = edit("1\n0\n1\n21\n6\n");
    Shown shown;
    shown.next_step = first_advice;
    shown.overview = nothing_defined;
    const std::string round = state_text(shown) + menu;
    const std::string refused =
        "Sector number to define / edit = Invalid sector number. Allowed range is 1..20.\n";
    EXPECT_EQ(printed.out, round + refused + round + refused + round);
    EXPECT_EQ(g_runtime.nos, 0);
}

TEST(EditPulseSequence, TheResultFileIsOneLineAndMayBeEmpty) {
    start();
    const ConsoleOutput printed = edit("4\n  my result.bin \n4\n\n6\n");
    EXPECT_NE(printed.out.find("File name to store results in : \n===="), std::string::npos);
    EXPECT_NE(printed.out.find("  result file           : my result.bin\n"), std::string::npos);
    EXPECT_STREQ(g_runtime.resultflnm, "");
    edit("4\n" + std::string(400, 'r') + "\n6\n");
    EXPECT_EQ(g_runtime.resultflnm, std::string(255, 'r'));
}

TEST(EditPulseSequence, AnUnknownChoiceIsToldAndTheMenuComesAgain) {
    start();
    Shown shown;
    shown.next_step = grid_advice;
    shown.overview = nothing_defined;
    const std::string round = state_text(shown) + menu;
    EXPECT_EQ(edit("7\n0\n6\n").out, round + "Unknown choice.\n" + round + "Unknown choice.\n" + round);
}

TEST(EditPulseSequence, AllTwentySectorsSuggestTheLast) {
    start();
    for (int k = 1; k <= 20; ++k)
        g_runtime.noti[k] = 1;
    g_runtime.nos = 20;
    const ConsoleOutput printed = edit("6\n");
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
        start();
        edit(answers);
        EXPECT_EQ(unread_answers(), "");
        answers += answer + "\n";
    }
    TempTree tree;
    start();
    edit(answers + "6\nleft\n");
    EXPECT_EQ(unread_answers(), "left\n");
    EXPECT_STREQ(g_runtime.remarks[1], "note");
}

TEST(EditPulseSequence, AnAbandonedSectorDoesNotCount) {
    TempTree tree;
    start();
    edit("1\n4\n5\n2\n");
    EXPECT_EQ(g_runtime.nos, 0);
}
