#include "pulsesequencedefiner/pulse_menu.h"

#include "kor/runtime_state.h"
#include "support/composer_state.h"
#include "support/console_script.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

const std::string pulse_menu = "Pulse definition:\n"
                               "  1. AM hard pulse\n"
                               "  2. AM pulse\n"
                               "  3. FM pulse\n"
                               "  4. Read Bx/By pulse from disk\n"
                               "  5. Optimization start RF-pulse (Bx/By waveform)\n"
                               "  6. Edit current prepared spatial pulse sequence / sectors\n"
                               "  0. Back\n"
                               "Your choice [0..6] : ";
const std::string pulse_output_menu = "Output pulse arrays (ASCII/SG style):\n"
                                      "  1. Output Bx(t)\n"
                                      "  2. Output By(t)\n"
                                      "  0. Back\n"
                                      "Your choice [0..2] : ";

/// Four samples, and nothing defined yet.
void start_with_four_samples() {
    fresh_state_with_spins();
    g_runtime.ap = 4;
    g_runtime.ti = 2e-3;
    g_runtime.h = 77;
    g_runtime.rfpulsedefined = 0;
}

void expect_defined(double h) {
    EXPECT_EQ(g_runtime.rfpulsedefined, 1);
    EXPECT_EQ(g_runtime.pulseflag, 1);
    EXPECT_EQ(g_runtime.h, h);
}

ConsoleOutput redefine(const std::string& answers) {
    return play_console(answers, RedefinePulseHamiltonian);
}
ConsoleOutput output(const std::string& answers) {
    return play_console(answers, OutputPulse);
}

} // namespace

TEST(RedefinePulseHamiltonian, HardPulse) {
    start_with_four_samples();
    const ConsoleOutput printed = redefine("1\n5\n");
    EXPECT_EQ(printed.out.rfind(pulse_menu + "\nStandard Hard Pulses:\n", 0), 0u);
    EXPECT_EQ(g_runtime.ap, 1);
    EXPECT_DOUBLE_EQ(g_runtime.xb[0], TWO_PI * 50000);
    expect_defined(1e-5);
}

TEST(RedefinePulseHamiltonian, ShapedPulsesDivideTheTotalTime) {
    start_with_four_samples();
    redefine("2\n1\n90\n10\n");
    EXPECT_NEAR(g_runtime.yb[3], TWO_PI * 10, 1e-12);
    expect_defined(2e-3 / 4);
    start_with_four_samples();
    redefine("3\n1\n0\n10\n100\n1\n");
    EXPECT_NEAR(g_runtime.xb[2], TWO_PI * 10, 1e-12);
    expect_defined(2e-3 / 4);
}

TEST(RedefinePulseHamiltonian, PulseFromDisk) {
    TempTree tree;
    tree.write("b.txt", "1\n2\n3\n4\n");
    start_with_four_samples();
    redefine("4\n1\nb.txt\n3\n0.5\n");
    EXPECT_EQ(g_runtime.xb[3], 2);
    EXPECT_EQ(g_runtime.yb[3], 0);
    expect_defined(2e-3 / 4);
}

TEST(RedefinePulseHamiltonian, WithoutSamplesTheStepIsZero) {
    start_with_four_samples();
    g_runtime.ap = 0;
    redefine("2\n1\n90\n10\n");
    expect_defined(0);
}

TEST(RedefinePulseHamiltonian, TooManySamplesAreClamped) {
    start_with_four_samples();
    g_runtime.ap = 9000;
    const ConsoleOutput printed = redefine("2\n1\n0\n10\n");
    EXPECT_EQ(printed.err, "WARNING: ap=9000 exceeds KOR_MAX_RF_POINTS=8192; clamping.\n");
    expect_defined(2e-3 / 8192);
}

TEST(RedefinePulseHamiltonian, StartPulseSetsTheTotalTime) {
    start_with_four_samples();
    g_runtime.npar = 40;
    redefine("5\n64\n1000\n90\n0\n0.1\n");
    EXPECT_EQ(g_runtime.ap, 64);
    EXPECT_DOUBLE_EQ(g_runtime.ti, 6.4e-3);
    expect_defined(1e-4);
    double angle = 0;
    for (int l = 0; l < 64; ++l)
        angle += g_runtime.xb[l] * g_runtime.h;
    EXPECT_NEAR(angle, TWO_PI / 4, 1e-10);
}

TEST(RedefinePulseHamiltonian, AStartPulseThatFailsIsTold) {
    start_with_four_samples();
    g_runtime.npar = 40;
    const ConsoleOutput printed = redefine("5\n1\n");
    EXPECT_NE(printed.out.find("Optimization start pulse was not generated.\n"), std::string::npos);
    EXPECT_EQ(g_runtime.rfpulsedefined, 0);
    EXPECT_EQ(g_runtime.h, 77);
}

TEST(RedefinePulseHamiltonian, SixOpensTheSpatialEditor) {
    start_with_four_samples();
    const ConsoleOutput printed = redefine("6\n6\nleft\n");
    EXPECT_NE(printed.out.find(" Spatially Resolved Pulse Sequence Editor\n"), std::string::npos);
    EXPECT_EQ(g_runtime.rfpulsedefined, 0);
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(RedefinePulseHamiltonian, OtherAnswersGoBack) {
    for (const char* answer : {"0\n", "7\n", "-1\n", "x\n", ""}) {
        start_with_four_samples();
        EXPECT_EQ(redefine(answer).out, pulse_menu);
        EXPECT_EQ(g_runtime.rfpulsedefined, 0);
    }
}

TEST(RedefinePulseHamiltonian, AnEndedInputDefinesNoPulseFromDisk) {
    start_with_four_samples();
    redefine("4\n3\n3\n");
    EXPECT_EQ(g_runtime.rfpulsedefined, 0);
}

TEST(OutputPulse, WritesOneComponent) {
    TempTree tree;
    start_with_four_samples();
    g_runtime.rfpulsedefined = 1;
    for (int l = 0; l < 4; ++l) {
        g_runtime.xb[l] = l;
        g_runtime.yb[l] = -l;
    }
    const ConsoleOutput printed = output("1\n1\nbx.txt\n");
    EXPECT_EQ(printed.out, pulse_output_menu + "Write real-array to ASCII-file:\n"
                                               "      1. Normal ASCII file\n"
                                               "      2. SGplot file format\n"
                                               "      3. Cancel file output\n"
                                               "Your choice [1..3] : \n"
                                               "Ascii File Out >>\nEnter filename : ");
    output("2\n1\nby.txt\n");
    EXPECT_EQ(tree.read("bx.txt"),
              "0.000000000000E+00\n1.000000000000E+00\n2.000000000000E+00\n3.000000000000E+00\n");
    EXPECT_EQ(tree.read("by.txt"),
              "0.000000000000E+00\n-1.000000000000E+00\n-2.000000000000E+00\n-3.000000000000E+00\n");
}

TEST(OutputPulse, OtherAnswersWriteNothing) {
    start_with_four_samples();
    g_runtime.rfpulsedefined = 1;
    for (const char* answer : {"0\n", "3\n", "x\n", ""})
        EXPECT_EQ(output(answer).out, pulse_output_menu);
}

TEST(OutputPulse, NeedsAPulse) {
    start_with_four_samples();
    EXPECT_EQ(output("\nleft\n").out, ">>>> NO RF-PULSE DEFINED. <<<<\n");
    EXPECT_EQ(unread_answers(), "left\n");
}
