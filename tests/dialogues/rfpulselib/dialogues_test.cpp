#include "rfpulselib/dialogues.h"

#include "support/console_script.h"
#include "support/constants.h"
#include "support/pulse_formulas.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace kor;
using namespace kor_test;

namespace {

const std::string hard_menu = "\nStandard Hard Pulses:\n\n"
                              "   1. (pi/2) (x')            5. (pi) (x')\n"
                              "   2. (pi/2) (y')            6. (pi) (y')\n"
                              "   3. (pi/2) (-x')           7. (pi) (-x')\n"
                              "   4. (pi/2) (-y')           8. (pi) (-y')\n\n"
                              "Your choice is [1..8] : ";
const std::string am_menu = "What Amplitude Modulated Pulse-shape is to be used\n\n"
                            "   1. rectangular or hard-pulse\n"
                            "   2. sinc-Gauss pulse\n"
                            "   3. 2D - GauB pulse\n"
                            "   4. 2D - sinc-Pulse (centre (x,y) = (0,0)\n\n"
                            "Your Choice is [1..4] : ";
const std::string fm_menu = "What Frequency Modulated Pulse-shape is to be used\n\n"
                            "      1. 180 sech-tanh (-T,T)\n"
                            "      2. 90  sech-tanh (-T,0)\n"
                            "      3. 360 sech-tanh 2*(-T,T)\n"
                            "      4. 2D - sinc-Pulses off centre\n"
                            "      5. Sum of off centre 2D-sinc-Pulses\n"
                            "      6. Sum of off centre 2D-sinc-Pulses using file parameters\n\n"
                            "Your choice is [1..6] : ";
const std::string rule = "*************************************************************\n";
const std::string sum_banner = rule + "** A sum of 2D sinc pulses which excite rectangular areas   **\n"
                                      "** with shifted centres from (0,0) to (x0,y0)               **\n";
const std::string add_menu = "    1. Add new 2D pulse\n    2. Exit\nYour choice [1,2] : ";
const std::string sinc_2d_banner = "A 2D sinc pulse which excites a rectangular area\n"
                                   "with a shifted centre from (0,0) to (x0,y0)\n\n"
                                   "b1(t) = (a.A/T)*sinc(kx(t).dx/2)*sinc(ky(t).dy/2)\n"
                                   "        * exp(i kx(t).x0) * exp(i ky(t).y0) * f(t)\n"
                                   "f(t)  = sqrt((2*pi*n*(1-(t/T)))^2 + 1)\n"
                                   "kx(t) = B*(1-(t/T))*cos(2*pi*n*t/T)\n"
                                   "ky(t) = B*(1-(t/T))*sin(2*pi*n*t/T)\n\n";
const std::string sinc_2d_prompts = "a     : \nA     : \nB     : \nn     : \n"
                                    "dx    : \ndy    : \nx0    : \ny0    : \n";

using Definition = bool (*)(const int*, const double*, double*, double*);

struct Asked {
    bool defined = false;
    std::string out, err, unread;
    std::vector<double> xb, yb; // one sample more than asked for
    Field operator[](int j) const { return {xb[j], yb[j]}; }
};

Asked ask_pulse(Definition definition, const std::string& answers, int ap, double ti) {
    Asked asked;
    asked.xb.assign(ap + 1, UNTOUCHED);
    asked.yb.assign(ap + 1, UNTOUCHED);
    const ConsoleOutput printed = play_console(
        answers, [&] { asked.defined = definition(&ap, &ti, asked.xb.data(), asked.yb.data()); });
    asked.out = printed.out;
    asked.err = printed.err;
    asked.unread = unread_answers();
    return asked;
}

/// Equal to 1e-12 of the largest sample (arguments of sines reach a few hundred radians); nothing behind.
void expect_pulse(const Asked& asked, const Pulse& expected) {
    const double scale = largest(expected);
    ASSERT_LT(expected.size(), asked.xb.size());
    for (std::size_t j = 0; j < expected.size(); ++j)
        EXPECT_NEAR(std::abs(asked[int(j)] - expected[j]), 0, 1e-12 * scale) << "sample " << j;
    for (std::size_t j = expected.size(); j < asked.xb.size(); ++j)
        EXPECT_EQ(asked[int(j)], Field(UNTOUCHED, UNTOUCHED)) << "sample " << j;
}

void expect_untouched(const Asked& asked) {
    for (std::size_t j = 0; j < asked.xb.size(); ++j)
        EXPECT_EQ(asked[int(j)], Field(UNTOUCHED, UNTOUCHED)) << "sample " << j;
}

} // namespace

TEST(AMHardPulseDefinition, EightChoicesAreTwoAnglesAboutFourAxes) {
    const Field axes[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    for (int choice = 1; choice <= 8; ++choice) {
        int ap = 99;
        double ti = 3, xb[2] = {UNTOUCHED, UNTOUCHED}, yb[2] = {UNTOUCHED, UNTOUCHED};
        const std::string answer = std::to_string(choice) + "\n";
        const ConsoleOutput printed =
            play_console(answer, [&] { EXPECT_TRUE(AMHardPulseDefinition(&ap, &ti, xb, yb)); });
        EXPECT_EQ(printed.out, hard_menu + "\n");
        EXPECT_EQ(ap, 1);
        EXPECT_EQ(ti, 1e-5);
        const double angle = std::hypot(xb[0], yb[0]) * ti;
        EXPECT_NEAR(angle, choice <= 4 ? PI / 2 : PI, 1e-14) << choice;
        const Field expected = axes[(choice - 1) % 4] * angle / ti;
        EXPECT_NEAR(std::abs(Field(xb[0], yb[0]) - expected), 0, 1e-10) << choice;
        EXPECT_EQ(xb[1], UNTOUCHED);
    }
}

TEST(AMHardPulseDefinition, OtherAnswersSetTheStepOnly) {
    for (const char* answer : {"0\n", "9\n", "-1\n", "x\n", ""}) {
        int ap = 99;
        double ti = 3, xb[1] = {UNTOUCHED}, yb[1] = {UNTOUCHED};
        play_console(answer, [&] { EXPECT_FALSE(AMHardPulseDefinition(&ap, &ti, xb, yb)); });
        EXPECT_EQ(ap, 99);
        EXPECT_EQ(ti, 1e-5);
        EXPECT_EQ(xb[0], UNTOUCHED);
    }
}

TEST(AMHardPulseDefinition, TheStepMayBeMissing) {
    int ap = 99;
    double xb[1], yb[1];
    play_console("6\n", [&] { EXPECT_TRUE(AMHardPulseDefinition(&ap, nullptr, xb, yb)); });
    EXPECT_EQ(ap, 1);
    EXPECT_NEAR(xb[0], 0, 1e-10);
    EXPECT_DOUBLE_EQ(yb[0], 100000 * PI);
}

TEST(AMPulseDefinition, RectangularPulse) {
    const Asked asked = ask_pulse(AMPulseDefinition, "1\n90\n125.5\nnext\n", 5, 1e-3);
    EXPECT_EQ(asked.out, am_menu + "\n Rectangular pulse or hard pulse\n"
                                   " pulse-phase (in degrees) : \n"
                                   " pulse amplitude [Hz]     : \n");
    expect_pulse(asked, rectangular(5, 90, 125.5));
    EXPECT_EQ(asked.unread, "next\n");
}

TEST(AMPulseDefinition, SincGaussPulse) {
    for (int ap : {1, 2, 65, 256}) {
        const double ti = 5e-3 / ap;
        const Asked asked = ask_pulse(AMPulseDefinition, "2\n-30\n1.5707963\n900\n350\n", ap, ti);
        EXPECT_EQ(asked.out, am_menu + "\n sinc Gauss - AM-pulse shape :\n\n"
                                       " q*sin(2*pi*f*t)*exp(-(b*b*t*t))/ (pi*t)\n"
                                       " pulse-phase (in degrees) : \n"
                                       " q  (teta = q*180/pi)     : \n"
                                       " f (pulse bandwidth)      : \n"
                                       " b (damping constant)     : \n");
        expect_pulse(asked, sinc_gauss(ap, 5e-3, -30, 1.5707963, 900, 350));
    }
}

TEST(AMPulseDefinition, CentreOfAnEvenSincGaussIsTwiceQF) {
    const Asked asked = ask_pulse(AMPulseDefinition, "2\n0\n1.5\n900\n350\n", 64, 1e-4);
    EXPECT_NEAR(asked.xb[32], 2 * 1.5 * 900, 1e-6);
}

TEST(AMPulseDefinition, Gauss2DPulse) {
    const Asked asked = ask_pulse(AMPulseDefinition, "3\n1.57\n0.8\n2.5\n8\n", 33, 2e-4);
    EXPECT_EQ(asked.out, am_menu + "\nbx(t) = (a.A/T)*exp(-(B*(1-t/T))^2)*sqrt(f(t))\n"
                                   "With : f(t) = ((2*pi*n(1-(t/T))^2)+1\n\n"
                                   "a   : \nA   : \nB   : \nn   : \n");
    expect_pulse(asked, gauss_2d(33, 33 * 2e-4, 1.57, 0.8, 2.5, 8));
}

TEST(AMPulseDefinition, Sinc2DPulse) {
    const Asked asked = ask_pulse(AMPulseDefinition, "4\n1.57\n0.8\n6\n4\n1.5\n2\n", 40, 1e-4);
    EXPECT_EQ(asked.out, am_menu + "\nbx(t) = (a.A/T)*sinc(kx(t).dx/2)*sinc(ky(t).dy/2).f(t)\n"
                                   "f(t)  = sqrt((2*pi*n*(1-(t/T)))^2 + 1)\n"
                                   "kx(t) = B*(1-(t/T))*cos(2*pi*n*t/T)\n"
                                   "ky(t) = B*(1-(t/T))*sin(2*pi*n*t/T)\n"
                                   "a     : \nA     : \nB     : \nn     : \ndx    : \ndy    : \n");
    Pulse expected = sinc_2d(40, 4e-3, 1.57, 0.8, 6, 4, 1.5, 2);
    expect_pulse(asked, expected);
    for (int j = 0; j < 40; ++j)
        EXPECT_EQ(asked.yb[j], 0);
}

TEST(FMPulseDefinition, InversionPulse) {
    for (int ap : {1, 64, 101}) {
        const Asked asked = ask_pulse(FMPulseDefinition, "1\n45\n1500\n1050.5\n0.95\n", ap, 5e-3 / ap);
        EXPECT_EQ(asked.out, fm_menu + "\n 180 degree FM sech-tanh pulse (-T,T) :\n\n"
                                       " x  : w*sech(b*t)*cos(2*pi*u*ln(sech(bt)))\n"
                                       " y  : w*sech(b*t)*sin(2*pi*u*ln(sech(bt)))\n"
                                       " pulse-phase (in degrees) : \n"
                                       " w  [Hz]                  : \n"
                                       " b (damping constant)     : \n"
                                       " u (selectivity constant) : \n");
        expect_pulse(asked, sech_tanh_sweep(ap, 5e-3 / ap, ap / 2.0, 1, 45, 1500, 1050.5, 0.95));
    }
}

TEST(FMPulseDefinition, HalfSweepEndsOneStepBeforeItsCentre) {
    const Asked asked = ask_pulse(FMPulseDefinition, "2\n0\n1500\n1050\n0.9\n", 51, 1e-4);
    EXPECT_EQ(asked.out, fm_menu + "\n 90 degree FM sech-tanh pulse (-T,0) :\n\n"
                                   " x : w*sech(b*t)*cos(2*pi*u*ln(sech(bt)))\n"
                                   " y : w*sech(b*t)*sin(2*pi*u*ln(sech(bt)))\n"
                                   " pulse-phase (in degrees) : \n"
                                   " w  [Hz]                  : \n"
                                   " b (damping constant)     : \n"
                                   " u (selectivity constant) : \n");
    expect_pulse(asked, sech_tanh_sweep(51, 1e-4, 51, 1, 0, 1500, 1050, 0.9));
    EXPECT_NEAR(std::abs(asked[50] - sech_tanh(-1e-4, 0, 1500, 1050, 0.9)), 0, 1e-8);
}

TEST(FMPulseDefinition, DoubleSweepLeavesTheLastOddSample) {
    for (int ap : {1, 2, 3, 64, 65}) {
        const Asked asked = ask_pulse(FMPulseDefinition, "3\n10\n800\n600\n1.1\n", ap, 1e-4);
        EXPECT_EQ(asked.out, fm_menu + "\n 360 degree FM sech-tanh pulse 2*(-T,T) :\n\n"
                                       " x  : w*sech(b*t)*cos(2*pi*u*ln(sech(bt)))\n"
                                       " y  : w*sech(b*t)*sin(2*pi*u*ln(sech(bt)))\n\n"
                                       " pulse-phase (in degrees)  : \n"
                                       " w                    [Hz] : \n"
                                       " b (damping constant)      : \n"
                                       " u (selectivity constant)  : \n");
        expect_pulse(asked, sech_tanh_twice(ap, 1e-4, 10, 800, 600, 1.1));
    }
}

TEST(FMPulseDefinition, OffCentreSinc2DPulse) {
    const Asked asked = ask_pulse(FMPulseDefinition, "4\n1.5\n0.5\n9\n6\n1\n0.8\n0.4\n-0.7\n", 50, 1e-4);
    EXPECT_EQ(asked.out, fm_menu + "\n" + sinc_2d_banner + sinc_2d_prompts);
    expect_pulse(asked, sinc_2d(50, 5e-3, 1.5, 0.5, 9, 6, 1, 0.8, 0.4, -0.7));
}

TEST(FMPulseDefinition, NoKSpaceExtentReplacesBothComponents) {
    const Asked asked = ask_pulse(FMPulseDefinition, "4\n1\n1\n0\n2\n1\n1\n3\n5\n", 4, 1e-3);
    const double f0 = std::hypot(TWO_PI * 2, 1.0) / 4e-3;
    EXPECT_NEAR(asked.xb[0], f0 * std::cos(8e-5), 1e-9 * f0);
    EXPECT_NEAR(asked.yb[0], f0 * std::sin(8e-5), 1e-9 * f0);
}

TEST(FMPulseDefinition, SumOfTwoPulses) {
    const Asked asked = ask_pulse(FMPulseDefinition,
                                  "5\n1\n1.5\n0.5\n9\n6\n1\n0.8\n0.4\n-0.7\n"
                                  "1\n0.7\n1\n5\n6\n2\n2\n-1\n0\n2\nnext\n",
                                  20, 1e-4);
    const std::string one_pulse = "\n" + sinc_2d_banner + sinc_2d_prompts;
    EXPECT_EQ(asked.out, fm_menu + "\n" + sum_banner + rule + "\n" + add_menu + one_pulse + add_menu +
                             one_pulse + add_menu + "\n");
    Pulse expected = sinc_2d(20, 2e-3, 1.5, 0.5, 9, 6, 1, 0.8, 0.4, -0.7);
    const Pulse second = sinc_2d(20, 2e-3, 0.7, 1, 5, 6, 2, 2, -1, 0);
    for (int j = 0; j < 20; ++j)
        expected[j] += second[j];
    expect_pulse(asked, expected);
    EXPECT_EQ(asked.unread, "next\n");
}

TEST(FMPulseDefinition, AnAdditionThatFailsPartWayAddsTheLastPulseAgain) {
    const Asked asked =
        ask_pulse(FMPulseDefinition, "5\n1\n1.5\n0.5\n9\n6\n1\n0.8\n0.4\n-0.7\n1\n2\n2\nfour\n2\n", 20, 1e-4);
    Pulse expected = sinc_2d(20, 2e-3, 1.5, 0.5, 9, 6, 1, 0.8, 0.4, -0.7);
    for (Field& sample : expected)
        sample *= 2;
    expect_pulse(asked, expected);
}

TEST(FMPulseDefinition, ASumOfNothingIsZero) {
    for (const char* answers : {"5\n2\n", "5\n7\n", "5\nx\n", "5\n", "6\n", "5\n1\nx\n2\n"}) {
        const Asked asked = ask_pulse(FMPulseDefinition, answers, 8, 1e-4);
        expect_pulse(asked, Pulse(8, 0.0));
    }
}

TEST(FMPulseDefinition, SumFromAParameterFile) {
    TempTree tree;
    tree.write("pulses.txt", "1.5 0.5 9 6 1 0.8 0.4 -0.7\n"
                             "  0.7\t1 5 6 2 2 -1 0 trailing\n"
                             "0 1 5 6 2 2 -1 0\n"
                             "9 9 9 9 9 9 9 9\n");
    const Asked asked = ask_pulse(FMPulseDefinition, "6\npulses.txt\nnext\n", 20, 1e-4);
    EXPECT_EQ(asked.out, fm_menu + "\n" + sum_banner +
                             "** using pulse parameters read from a text file             **\n" + rule +
                             "\nPulse parameter file name: \n");
    Pulse expected = sinc_2d(20, 2e-3, 1.5, 0.5, 9, 6, 1, 0.8, 0.4, -0.7);
    const Pulse second = sinc_2d(20, 2e-3, 0.7, 1, 5, 6, 2, 2, -1, 0);
    for (int j = 0; j < 20; ++j)
        expected[j] += second[j];
    expect_pulse(asked, expected);
    EXPECT_EQ(asked.unread, "next\n");
}

TEST(FMPulseDefinition, ALineWithoutEightNumbersEndsTheParameterFile) {
    TempTree tree;
    tree.write("pulses.txt", "1.5 0.5 9 6 1 0.8 0.4 -0.7\n1 2 3 4 5 6 7\n0.7 1 5 6 2 2 -1 0\n");
    const Asked asked = ask_pulse(FMPulseDefinition, "6\npulses.txt\n", 12, 1e-4);
    expect_pulse(asked, sinc_2d(12, 12e-4, 1.5, 0.5, 9, 6, 1, 0.8, 0.4, -0.7));
}

TEST(FMPulseDefinition, AFirstPulseOfZeroAngleLeavesZero) {
    TempTree tree;
    tree.write("pulses.txt", "0 1 2 3 4 5 6 7\n1 1 1 1 1 1 1 1\n");
    expect_pulse(ask_pulse(FMPulseDefinition, "6\npulses.txt\n", 6, 1e-4), Pulse(6, 0.0));
}

TEST(FMPulseDefinition, AMissingParameterFileIsReported) {
    TempTree tree;
    const Asked asked = ask_pulse(FMPulseDefinition, "6\nnowhere.txt\n", 6, 1e-4);
    EXPECT_EQ(asked.err, "fopen(parameter file): No such file or directory\n");
    expect_pulse(asked, Pulse(6, 0.0));
}

TEST(PulseMenus, OtherChoicesLeaveTheArrays) {
    for (const char* answer : {"0\n", "5\n", "-2\n", "x\n", ""})
        expect_untouched(ask_pulse(AMPulseDefinition, answer, 3, 1e-3));
    for (const char* answer : {"0\n", "7\n", "-2\n", "x\n", ""})
        expect_untouched(ask_pulse(FMPulseDefinition, answer, 3, 1e-3));
}

TEST(PulseMenus, AnyUnreadableParameterLeavesTheArraysAndIsUsedUp) {
    const struct {
        Definition definition;
        const char* choice;
        int parameters;
    } shapes[] = {{AMPulseDefinition, "1", 2}, {AMPulseDefinition, "2", 4}, {AMPulseDefinition, "3", 4},
                  {AMPulseDefinition, "4", 6}, {FMPulseDefinition, "1", 4}, {FMPulseDefinition, "2", 4},
                  {FMPulseDefinition, "3", 4}, {FMPulseDefinition, "4", 8}};
    for (const auto& shape : shapes) {
        for (int bad = 0; bad < shape.parameters; ++bad) {
            std::string answers = std::string(shape.choice) + "\n";
            for (int i = 0; i < bad; ++i)
                answers += "1\n";
            expect_untouched(ask_pulse(shape.definition, answers, 3, 1e-3));
            const Asked asked = ask_pulse(shape.definition, answers + "one\nleft\n", 3, 1e-3);
            expect_untouched(asked);
            EXPECT_EQ(asked.unread, "left\n");
        }
    }
}

TEST(PulseMenus, TellWhetherAPulseWasDefined) {
    TempTree tree;
    tree.write("pulse.txt", "1 1 1 1 1 1 0 0\n");
    tree.write("none.txt", "0 1 1 1 1 1 0 0\n");
    const struct {
        Definition definition;
        std::string answers;
        bool defined;
    } dialogues[] = {
        {AMPulseDefinition, "1\n0\n0\n", true},
        {AMPulseDefinition, "1\n0\nx\n", false},
        {AMPulseDefinition, "2\n0\n1\n1\n1\n", true},
        {AMPulseDefinition, "2\n0\n1\n1\nx\n", false},
        {AMPulseDefinition, "3\n1\n1\n1\n1\n", true},
        {AMPulseDefinition, "3\n1\n1\n1\nx\n", false},
        {AMPulseDefinition, "4\n1\n1\n1\n1\n1\n1\n", true},
        {AMPulseDefinition, "4\n1\n1\n1\n1\n1\nx\n", false},
        {AMPulseDefinition, "5\n", false},
        {AMPulseDefinition, "x\n", false},
        {FMPulseDefinition, "1\n0\n1\n1\n1\n", true},
        {FMPulseDefinition, "1\n0\n1\n1\nx\n", false},
        {FMPulseDefinition, "2\n0\n1\n1\n1\n", true},
        {FMPulseDefinition, "2\n0\n1\n1\nx\n", false},
        {FMPulseDefinition, "3\n0\n1\n1\n1\n", true},
        {FMPulseDefinition, "3\n0\n1\n1\nx\n", false},
        {FMPulseDefinition, "4\n1\n1\n1\n1\n1\n1\n0\n0\n", true},
        {FMPulseDefinition, "4\n1\n1\n1\n1\n1\n1\n0\nx\n", false},
        {FMPulseDefinition, "5\n1\n1\n1\n1\n1\n1\n1\n0\n0\n2\n", true},
        {FMPulseDefinition, "5\n1\n1\n1\n1\n1\n1\n1\n0\n0\n1\nx\n2\n", true},
        {FMPulseDefinition, "5\n1\nx\n2\n", false},
        {FMPulseDefinition, "5\n2\n", false},
        {FMPulseDefinition, "6\npulse.txt\n", true},
        {FMPulseDefinition, "6\nnone.txt\n", false},
        {FMPulseDefinition, "6\nnowhere.txt\n", false},
        {FMPulseDefinition, "6\n", false},
        {FMPulseDefinition, "0\n", false},
        {FMPulseDefinition, "", false},
    };
    for (const auto& dialogue : dialogues)
        EXPECT_EQ(ask_pulse(dialogue.definition, dialogue.answers, 4, 1e-3).defined, dialogue.defined)
            << dialogue.answers;
}

TEST(PulseMenus, MissingPointersAskNothing) {
    const int ap = 1;
    const double ti = 1e-3;
    double b[1] = {UNTOUCHED};
    const ConsoleOutput printed = play_console("1\n1\n1\n", [&] {
        for (const auto shape :
             {ampulseproc1, ampulseproc2, ampulseproc3, ampulseproc4, fmpulseproc1, fmpulseproc2,
              fmpulseproc3, fmpulseproc4, fmpulseproc5, fmpulseproc6, AMPulseDefinition, FMPulseDefinition}) {
            EXPECT_FALSE(shape(nullptr, &ti, b, b));
            EXPECT_FALSE(shape(&ap, nullptr, b, b));
            EXPECT_FALSE(shape(&ap, &ti, nullptr, b));
            EXPECT_FALSE(shape(&ap, &ti, b, nullptr));
        }
        int hard_ap = 5;
        double step = 7;
        EXPECT_FALSE(AMHardPulseDefinition(nullptr, &step, b, b));
        EXPECT_FALSE(AMHardPulseDefinition(&hard_ap, &step, nullptr, b));
        EXPECT_FALSE(AMHardPulseDefinition(&hard_ap, &step, b, nullptr));
        EXPECT_EQ(hard_ap, 5);
        EXPECT_EQ(step, 7);
    });
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(b[0], UNTOUCHED);
    EXPECT_EQ(unread_answers(), "1\n1\n1\n");
}

TEST(ScanPrompts, ReadOneNumberAfterThePrompt) {
    int number = 0;
    double real = 0;
    const ConsoleOutput printed = play_console("3\n2.5\nx\n", [&] {
        EXPECT_EQ(scan_int_prompt("points : ", &number), 1);
        EXPECT_EQ(scan_double_prompt(nullptr, &real), 1);
        EXPECT_EQ(scan_double_prompt("more : ", &real), 0);
        EXPECT_EQ(scan_int_prompt("n", nullptr), 0);
    });
    EXPECT_EQ(printed.out, "points : more : ");
    EXPECT_EQ(number, 3);
    EXPECT_EQ(real, 2.5);
}
