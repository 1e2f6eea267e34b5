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

using Blocks = std::vector<std::vector<double>>;

const std::string no_pulse = "No RF pulse was defined: this sector has no RF.\n";

/// Defines sector 1 and returns what was printed.
ConsoleOutput define_spatial_sector(const std::string& answers, int k = 1) {
    return play_console(answers, [k] { EXPECT_EQ(DefineSeqSector(k), 1); });
}

} // namespace

TEST(DefineSeqSector, HardPulseWithConstantGradients) {
    TempTree tree;
    fresh_state_with_short_name();
    const ConsoleOutput printed =
        define_spatial_sector("1\n6\n-12.5\n1\n2000\n1\n-1\n1\n0.5\n./a.bin\n  refocus, 180 y \nleft\n", 3);
    EXPECT_EQ(printed.out, sector_header("Spatial", 3) + CONTENT_MENU + HARD_PULSE_MENU +
                               "Static offset frequency [Hz] : " + constant_gradient_dialogues() +
                               spatial_file_dialogue("lac_s03.bin", "./a.bin"));
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
    fresh_state_with_short_name();
    define_spatial_sector("1\n1\n0\n1\n2000\n1\n0\n1\n0\n./a.bin\n\n");
    const Blocks blocks = waveform_blocks(tree, "a.bin", 1, 5);
    EXPECT_DOUBLE_EQ(blocks[0][0], TWO_PI / 4 / 1e-5);
    EXPECT_EQ(blocks[1][0], 0);
    EXPECT_DOUBLE_EQ(blocks[2][0], TWO_PI * 2000);
    EXPECT_EQ(blocks[3][0], 0);
    EXPECT_EQ(blocks[4][0], 0);
}

TEST(DefineSeqSector, AnUnknownHardPulseIsNoPulseAndTold) {
    TempTree tree;
    fresh_state_with_short_name();
    g_runtime.xb[0] = g_runtime.yb[0] = 5;
    const ConsoleOutput printed = define_spatial_sector("1\n9\n0\n" + NO_GRADIENTS + "./a.bin\n\n");
    EXPECT_EQ(printed.out, sector_header("Spatial", 1) + CONTENT_MENU + HARD_PULSE_MENU + no_pulse +
                               "Static offset frequency [Hz] : " + constant_gradient_dialogues() +
                               spatial_file_dialogue("lac_s01.bin", "./a.bin"));
    EXPECT_EQ(waveform_blocks(tree, "a.bin", 1, 5), Blocks(5, {0.0}));
    EXPECT_EQ(g_runtime.noti[1], 1);
    EXPECT_EQ(g_runtime.sectdur[1], 1e-5);
}

TEST(DefineSeqSector, WaitingTimeIsOneSampleWithoutField) {
    TempTree tree;
    fresh_state_with_short_name();
    g_runtime.xb[0] = 5;
    const ConsoleOutput printed = define_spatial_sector("5\n12.5\n3\n" + NO_GRADIENTS + "./a.bin\nTE/2\n");
    EXPECT_EQ(printed.out,
              sector_header("Spatial", 1) + CONTENT_MENU +
                  "Waiting time [ms] : Static offset frequency [Hz] : " + constant_gradient_dialogues() +
                  spatial_file_dialogue("lac_s01.bin", "./a.bin"));
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
        fresh_state_with_short_name();
        define_spatial_sector("2\n65\n6.5\n" + shape.answers + "0\n" + NO_GRADIENTS + "./a.bin\n\n");
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
            fresh_state_with_short_name();
            // What an earlier sector left behind does not show through an odd sample.
            g_runtime.xb[N - 1] = 1e6;
            define_spatial_sector("3\n" + std::to_string(N) + "\n4\n" + shape.answers + "0\n" + NO_GRADIENTS +
                                  "./a.bin\n\n");
            expect_waveform(waveform_blocks(tree, "a.bin", N, 5), shape.expected);
        }
    }
}

TEST(DefineSeqSector, EveryGradientReachesTheFile) {
    const int N = 32;
    const double T = 3.2e-3, w = TWO_PI * 4;
    TempTree tree;
    fresh_state_with_short_name();
    const ConsoleOutput printed =
        define_spatial_sector("2\n32\n3.2\n1\n0\n0\n0\n1\n-150\n2\n0.5\n4\n3\n0.25\n4\n./a.bin\n\n");
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
    fresh_state_with_short_name();
    g_runtime.gx[0] = g_runtime.gy[0] = g_runtime.gz[0] = 4;
    const ConsoleOutput printed = define_spatial_sector("5\n1\n0\nnone\n7\n1\nlots\n./a.bin\n\n");
    std::string expected;
    const char* extra[] = {"", "", " Constant gradient strength [Hz/cm] : "};
    const char* axes[] = {"X", "Y", "Z"};
    for (int i = 0; i < 3; ++i)
        expected += "Define " + std::string(axes[i]) + "-gradient waveform\n" + GRADIENT_MENU + extra[i] +
                    "No " + axes[i] + "-gradient waveform was defined: this sector has no " + axes[i] +
                    "-gradient.\n";
    EXPECT_NE(printed.out.find(expected), std::string::npos) << printed.out;
    EXPECT_EQ(waveform_blocks(tree, "a.bin", 1, 5), Blocks(5, {0.0}));
}

TEST(DefineSeqSector, PulseFromDiskIsScaled) {
    TempTree tree;
    tree.write("bx.txt", "1\n2\n3\n");
    tree.write("by.txt", "-1\n");
    fresh_state_with_short_name();
    const ConsoleOutput printed =
        define_spatial_sector("4\n3\n6\n1\nbx.txt\n1\nby.txt\n10\n0\n" + NO_GRADIENTS + "./a.bin\n\n");
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
    fresh_state_with_short_name();
    // 8.192 ms over 8192 points: the first point of the half sweep lies at -8.192 ms.
    const ConsoleOutput printed =
        define_spatial_sector("3\n9000\n8.192\n2\n0\n100\n300\n1\n0\n" + NO_GRADIENTS + "./a.bin\n\n");
    EXPECT_EQ(printed.err, "WARNING: ap=9000 exceeds KOR_MAX_RF_POINTS=8192; clamping.\n");
    EXPECT_EQ(g_runtime.noti[1], 9000);
    expect_waveform(waveform_blocks(tree, "a.bin", 8192, 5),
                    sech_tanh_sweep(8192, 1e-6, 8192, 1, 0, 100, 300, 1));
}

TEST(DefineSeqSector, NoIntervalsMakeAnEmptyFile) {
    for (const char* intervals : {"0", "-5"}) {
        TempTree tree;
        fresh_state_with_short_name();
        define_spatial_sector(std::string("2\n") + intervals + "\n1\n1\n0\n5\n0\n" + NO_GRADIENTS +
                              "./a.bin\n\n");
        EXPECT_EQ(tree.read("a.bin"), "");
        EXPECT_EQ(g_runtime.noti[1], std::stoi(intervals));
    }
}

TEST(DefineSeqSector, AnAbandonedPulseIsNoPulseAndTold) {
    const struct {
        const char *answers, *question;
    } pulses[] = {
        {"1\nx\n", "Your choice is [1..8] : "},
        {"2\n3\n1\n5\n", "Your Choice is [1..4] : \n"},
        {"2\n3\n1\n1\nninety\n", " pulse-phase (in degrees) : "},
        {"2\n3\n1\n1\n90\nstrong\n", " pulse amplitude [Hz]     : "},
        {"3\n3\n1\n0\n", "Your choice is [1..6] : \n"},
        {"3\n3\n1\n1\n0\n500\nnone\n", " b (damping constant)     : "},
        {"3\n3\n1\n5\n2\n", "Your choice [1,2] : \n"},
        {"3\n3\n1\n6\nnowhere.txt\n", "Pulse parameter file name: \n"},
        {"4\n3\n1\nx\n9\n2\n", "Multiplication factor : "},
    };
    for (const auto& pulse : pulses) {
        TempTree tree;
        fresh_state_with_short_name();
        g_runtime.xb[1] = g_runtime.yb[1] = 5;
        const std::string out =
            define_spatial_sector(pulse.answers + ("0\n" + NO_GRADIENTS) + "./a.bin\n\n").out;
        EXPECT_NE(out.find(pulse.question + no_pulse + "Static offset frequency [Hz] : "), std::string::npos)
            << out;
        const std::vector<double> zero(static_cast<std::size_t>(g_runtime.noti[1]), 0.0);
        EXPECT_EQ(waveform_blocks(tree, "a.bin", g_runtime.noti[1], 5), Blocks(5, zero));
    }
}

TEST(DefineSeqSector, APulseOfNoAmplitudeMayBeMeant) {
    TempTree tree;
    tree.write("zero.txt", "0\n0\n0\n");
    for (const char* pulse : {"2\n3\n1\n1\n90\n0\n", "3\n3\n1\n1\n0\n0\n100\n1\n",
                              "4\n3\n1\n1\nzero.txt\n3\n1\n", "4\n3\n1\n3\n1\nzero.txt\n1\n"}) {
        fresh_state_with_short_name();
        const std::string out = define_spatial_sector(pulse + ("0\n" + NO_GRADIENTS) + "./a.bin\n\n").out;
        EXPECT_EQ(out.find("No RF pulse"), std::string::npos) << out;
        const Blocks blocks = waveform_blocks(tree, "a.bin", 3, 5);
        for (int block : {0, 1})
            for (double sample : blocks[block])
                EXPECT_EQ(sample, 0.0) << pulse;
    }
}

TEST(DefineSeqSector, AnInputThatHasEndedForGoodIsToldNothingOfThePulse) {
    fresh_state_with_short_name();
    for (const char* answers :
         {"1\n", "1\nx", "2\n3\n1\n", "2\n3\n1\n1\n90\n", "3\n3\n1\n5\n", "4\n3\n1\n"}) {
        const ConsoleOutput printed = play_console(answers, [] { EXPECT_EQ(DefineSeqSector(1), 0); });
        EXPECT_EQ(printed.out.find("No RF pulse"), std::string::npos) << answers;
    }
}

// A Gaussian of no duration divides by it; sech(b t) of so large a b has no logarithm left.
TEST(DefineSeqSector, AWaveformThatIsNotFiniteReplacesNoFile) {
    TempTree tree;
    fresh_state_with_short_name();
    tree.write("a.bin", "older");
    for (const char* pulse : {"2\n3\n0\n3\n1\n1\n1\n1\n", "3\n3\n1000\n1\n0\n500\n5000\n5\n"}) {
        std::snprintf(g_runtime.fnames[1], sizeof g_runtime.fnames[1], "older.bin");
        const std::string out = define_spatial_sector(pulse + ("0\n" + NO_GRADIENTS) + "./a.bin\nnote\n").out;
        EXPECT_NE(
            out.find("File name : Sample 0 of the waveform is not finite: these parameters make no pulse or "
                     "gradient.\nSector waveform file was not written.\nSector note (optional): "),
            std::string::npos)
            << out;
        EXPECT_STREQ(g_runtime.fnames[1], "");
        EXPECT_EQ(tree.read("a.bin"), "older");
    }
}

TEST(DefineSeqSector, AnUnknownContentChangesNothing) {
    fresh_state_with_short_name();
    for (const char* answer : {"0\n", "6\n", "-1\n"}) {
        EXPECT_EQ(define_spatial_sector(answer).out,
                  sector_header("Spatial", 1) + CONTENT_MENU + "Unknown sector type.\n");
        EXPECT_EQ(g_runtime.sectype[1], 0);
        EXPECT_EQ(g_runtime.noti[1], 0);
    }
}

TEST(DefineSeqSector, NumberPromptsRepeatAtBadInput) {
    TempTree tree;
    fresh_state_with_short_name();
    const ConsoleOutput printed =
        define_spatial_sector("x\n5\nsoon\n12.5\nfar\n0\n" + NO_GRADIENTS + "./a.bin\n\n");
    EXPECT_NE(printed.out.find("Your choice [1..5] : Please enter a whole number.\nYour choice [1..5] : "
                               "Waiting time [ms] : Please enter a numeric value.\nWaiting time [ms] : "
                               "Static offset frequency [Hz] : Please enter a numeric value.\n"
                               "Static offset frequency [Hz] : "),
              std::string::npos);
    EXPECT_EQ(g_runtime.sectdur[1], 0.0125);
}

TEST(DefineSeqSector, ALongNoteIsCutAndUsedUp) {
    TempTree tree;
    fresh_state_with_short_name();
    define_spatial_sector("5\n1\n0\n" + NO_GRADIENTS + "./a.bin\n" + std::string(700, 'n') + "\nleft\n");
    EXPECT_EQ(g_runtime.remarks[1], std::string(511, 'n'));
    EXPECT_EQ(unread_answers(), "left\n");
}
