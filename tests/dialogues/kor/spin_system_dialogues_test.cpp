#include "kor/spin_system_dialogues.h"

#include "kor/runtime_state.h"
#include "support/console_script.h"
#include "support/constants.h"
#include "support/dense_reference.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>

using namespace kor;
using namespace kor_test;

namespace {

const std::string number_prompt = "\nNumber of Spins (1..8) = ";
const std::string coupling_heading = "*************************************\n"
                                     "***  Define J coupling constants  ***\n"
                                     "*************************************\n\n"
                                     "1. Weak-Coupling approximation\n"
                                     "2. Exact calculation\n"
                                     "Your choice [1,2] : ";
const std::string coupling_text = "Give all scalar coupling constants J(i,j) [Hz]\n"
                                  "Hamiltonian term: 2π J(i,j) (Ix_i Ix_j + Iy_i Iy_j + Iz_i Iz_j)\n"
                                  "(weak coupling drops transverse terms)\n\n";

std::string spin_prompt(int spin) {
    return "I quantum number of spin(" + std::to_string(spin) + ") = x/2  with x = ";
}

/// A system with these doubled quantum numbers, defined at the console.
void define(const std::vector<int>& doubled) {
    std::string answers = std::to_string(doubled.size()) + "\n";
    for (int x : doubled)
        answers += std::to_string(x) + "\n";
    play_console(answers, SetupSpins);
    ASSERT_EQ(g_runtime.spinsystemdefined, 1);
}

double rounding(double scale) {
    return 1e-13 * scale;
}

/// Scalar coupling of spins i and j by independent algebra, rad/s.
Dense coupling_term(const std::vector<int>& doubled, int i, int j, double j_hz, bool exact) {
    const auto product = [&](Axis axis) {
        return Dense(spin_operator(doubled, i, axis) * spin_operator(doubled, j, axis));
    };
    Dense sum = product(Axis::z);
    if (exact)
        sum += product(Axis::x) + product(Axis::y);
    return TWO_PI * j_hz * sum;
}

class Stream {
public:
    explicit Stream(const std::string& text) : file_(std::tmpfile()) {
        std::fputs(text.c_str(), file_);
        std::rewind(file_);
    }
    ~Stream() { std::fclose(file_); }
    std::FILE* file() const { return file_; }

private:
    std::FILE* file_;
};

} // namespace

TEST(Ispins, AsksForNumberAndQuantumNumbers) {
    const ConsoleOutput printed = play_console("2\n1\n2\nleft\n", [] { EXPECT_EQ(Ispins(), 1); });
    EXPECT_EQ(printed.out, number_prompt + spin_prompt(1) + spin_prompt(2) + "\nNumber of states n = 6\n");
    EXPECT_EQ(g_runtime.Nspins, 2);
    EXPECT_EQ(g_runtime.n, 6);
    EXPECT_EQ(g_runtime.quantnum[1], 1);
    EXPECT_EQ(g_runtime.quantnum[2], 2);
    EXPECT_EQ(g_runtime.Ilist[2], 2);
    EXPECT_EQ(g_runtime.ket[1][2], 2);
    EXPECT_EQ(g_runtime.ket[6][2], -2);
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(Ispins, ANumberOutsideOneToEightIsAskedAgain) {
    const ConsoleOutput printed = play_console("0\n9\n-1\n1\n1\n", [] { EXPECT_EQ(Ispins(), 1); });
    EXPECT_EQ(printed.out, number_prompt + number_prompt + number_prompt + number_prompt + spin_prompt(1) +
                               "\nNumber of states n = 2\n");
}

TEST(Ispins, AWordIsDroppedWithItsLine) {
    const ConsoleOutput printed = play_console("two 2\n1\n3\n", [] { EXPECT_EQ(Ispins(), 1); });
    EXPECT_EQ(printed.out, number_prompt + number_prompt + spin_prompt(1) + "\nNumber of states n = 4\n");
}

TEST(Ispins, AnUnreadableQuantumNumberRestartsTheDefinition) {
    const ConsoleOutput printed = play_console("2\n1\nhalf 1\n1\n4\n", [] { EXPECT_EQ(Ispins(), 1); });
    EXPECT_EQ(printed.out, number_prompt + spin_prompt(1) + spin_prompt(2) + number_prompt + spin_prompt(1) +
                               "\nNumber of states n = 5\n");
    EXPECT_EQ(g_runtime.Nspins, 1);
    EXPECT_EQ(g_runtime.Ilist[2], 0);
}

TEST(Ispins, TooManyStatesRestartTheDefinition) {
    const ConsoleOutput printed = play_console("1\n256\n1\n255\n", [] { EXPECT_EQ(Ispins(), 1); });
    EXPECT_EQ(printed.out, number_prompt + spin_prompt(1) +
                               "\nToo many states (n=257 > 256). Redefine spins.\n" + number_prompt +
                               spin_prompt(1) + "\nNumber of states n = 256\n");
}

TEST(Ispins, EightSpinsOneHalfAreAccepted) {
    define({1, 1, 1, 1, 1, 1, 1, 1});
    EXPECT_EQ(g_runtime.n, 256);
}

TEST(Ispins, HugeQuantumNumbersAreTooManyStates) {
    const ConsoleOutput printed =
        play_console("3\n2147483647\n2147483647\n2147483647\n1\n1\n", [] { EXPECT_EQ(Ispins(), 1); });
    EXPECT_NE(printed.out.find("Too many states (n=2147483647 > 256)"), std::string::npos);
}

TEST(Ispins, AnEndOfInputLeavesTheDefinitionAsItWas) {
    define({1, 1});
    for (const char* answers : {"", "3\n", "3\n1\n1\n", "x\n", "3\n1\nx\n"}) {
        play_console(answers, [] { EXPECT_EQ(Ispins(), 0); });
        EXPECT_EQ(g_runtime.Nspins, 2);
        EXPECT_EQ(g_runtime.n, 4);
    }
}

TEST(SetupSpins, BuildsTheTotalOperators) {
    for (const std::vector<int>& doubled : {std::vector<int>{1}, {2, 1}, {3, 1, 1}}) {
        define(doubled);
        const int n = g_runtime.n;
        EXPECT_LT(distance(g_runtime.Ixtot, total_operator(doubled, Axis::x)), rounding(n));
        EXPECT_LT(distance(g_runtime.Iytot, total_operator(doubled, Axis::y)), rounding(n));
        EXPECT_LT(distance(g_runtime.Iztot, total_operator(doubled, Axis::z)), rounding(n));
    }
}

TEST(SetupSpins, ANegativeQuantumNumberIsRefused) {
    define({1});
    const ConsoleOutput printed = play_console("2\n1\n-1\n", SetupSpins);
    EXPECT_EQ(printed.err,
              "SetupSpins: invalid spin quantum number for spin 2\n"
              "SetupSpins: resulting dimension n=0 out of supported range (1..MATRIXMATH_DIM)\n");
    EXPECT_EQ(g_runtime.spinsystemdefined, 0);
    EXPECT_EQ(g_runtime.n, 0);
    EXPECT_EQ(g_runtime.Nspins, 0) << "no run takes it for a definition";
    EXPECT_EQ(g_runtime.Ilist[1], 0);
    EXPECT_EQ(g_runtime.Ilist[2], 0);
}

TEST(SetupSpins, ANegativeQuantumNumberBelowTheLastSpinLeavesNoKets) {
    define({1, 1});
    const ConsoleOutput printed = play_console("2\n-1\n1\n", SetupSpins);
    EXPECT_EQ(printed.err,
              "MakeKets: too many states for Nspins=2 (max 256)\n"
              "SetupSpins: invalid spin quantum number for spin 1\n"
              "SetupSpins: resulting dimension n=0 out of supported range (1..MATRIXMATH_DIM)\n");
    EXPECT_EQ(g_runtime.ket[1][2], 0) << "nothing is left of the definition before";
}

TEST(SetupSpins, TwoNegativeQuantumNumbersAreRefusedToo) {
    const ConsoleOutput printed = play_console("2\n-3\n-4\n", SetupSpins);
    EXPECT_EQ(printed.err,
              "SetupSpins: invalid spin quantum number for spin 1\n"
              "SetupSpins: resulting dimension n=0 out of supported range (1..MATRIXMATH_DIM)\n");
    EXPECT_EQ(g_runtime.spinsystemdefined, 0);
}

TEST(SetupSpins, AnEndOfInputLeavesNoSpinSystem) {
    define({1});
    play_console("", SetupSpins);
    EXPECT_EQ(g_runtime.spinsystemdefined, 0);
}

TEST(MakeBoltzmann, OneSpinIsItsScaledIz) {
    define({1});
    const ConsoleOutput printed = play_console("1\n", MakeBoltzmann);
    EXPECT_EQ(printed.out, "\nRelative Intensity of Spin (1) : ");
    EXPECT_NEAR(g_runtime.densmat[1][1][1], std::sqrt(0.5), 1e-15);
    EXPECT_NEAR(g_runtime.densmat[2][2][1], -std::sqrt(0.5), 1e-15);
}

TEST(MakeBoltzmann, SumsScaledIzWeightedByIntensity) {
    const std::vector<int> doubled = {1, 2, 1};
    define(doubled);
    const ConsoleOutput printed = play_console("1\n-2.5\n0.5\n", MakeBoltzmann);
    EXPECT_EQ(printed.out, "\nRelative Intensity of Spin (1) : \nRelative Intensity of Spin (2) : "
                           "\nRelative Intensity of Spin (3) : ");
    Dense expected = Dense::Zero(12, 12);
    const double intensities[] = {1, -2.5, 0.5};
    for (int s = 1; s <= 3; ++s) {
        const Dense Iz = spin_operator(doubled, s, Axis::z);
        expected += intensities[s - 1] * Iz / Iz.norm();
        EXPECT_EQ(g_runtime.relspinamp[s], intensities[s - 1]);
    }
    EXPECT_LT(distance(g_runtime.densmat, expected), rounding(1));
}

TEST(MakeBoltzmann, AnUnreadableAnswerCountsAsZeroAndStays) {
    define({1, 1});
    g_runtime.relspinamp[1] = g_runtime.relspinamp[2] = 7;
    play_console("lots\n2\n", MakeBoltzmann);
    EXPECT_EQ(g_runtime.relspinamp[1], 0);
    EXPECT_EQ(g_runtime.relspinamp[2], 0);
    EXPECT_LT(distance(g_runtime.densmat, Dense::Zero(4, 4)), 1e-300);
    EXPECT_EQ(unread_answers(), "lots\n2\n");
}

TEST(MakeZeeman, SumsOffsets) {
    const std::vector<int> doubled = {1, 1};
    define(doubled);
    const ConsoleOutput printed = play_console("100\n-50.5\n", MakeZeeman);
    EXPECT_EQ(printed.out, "\nOffset-frequency [Hz] of Spin(1) : \nOffset-frequency [Hz] of Spin(2) : ");
    const Dense expected =
        TWO_PI * (100 * spin_operator(doubled, 1, Axis::z) - 50.5 * spin_operator(doubled, 2, Axis::z));
    EXPECT_LT(distance(g_runtime.Izee, expected), rounding(1000));
    EXPECT_EQ(g_runtime.resofreqs[2], -50.5);
    play_console("", MakeZeeman);
    EXPECT_EQ(g_runtime.resofreqs[1], 0);
    EXPECT_LT(distance(g_runtime.Izee, Dense::Zero(4, 4)), 1e-300);
}

TEST(SpinSpinCoupling, WeakPairIsDiagonal) {
    define({1, 1});
    const ConsoleOutput printed = play_console("1\n10\n", SpinSpinCoupling);
    EXPECT_EQ(printed.out,
              coupling_heading + coupling_text + "J(1,2) = Calculating coupling term for (1,2)\n");
    for (int i = 1; i <= 4; ++i) {
        const double sign = i == 1 || i == 4 ? 1 : -1;
        EXPECT_NEAR(g_runtime.Icoup[i][i][1], sign * 15.707963267948966, 1e-13);
    }
    EXPECT_EQ(g_runtime.Icoup[2][3][1], 0);
    EXPECT_EQ(g_runtime.Jexact, 1);
    EXPECT_EQ(g_runtime.Jcount, 1);
    EXPECT_EQ(g_runtime.couplings[1], 10);
    EXPECT_EQ(g_runtime.jc[1][2], 10);
    EXPECT_EQ(g_runtime.jc[2][1], 10);
}

TEST(SpinSpinCoupling, ExactPairAddsTheFlipFlop) {
    define({1, 1});
    play_console("2\n10\n", SpinSpinCoupling);
    EXPECT_NEAR(g_runtime.Icoup[2][3][1], 31.415926535897931, 1e-13);
    EXPECT_NEAR(g_runtime.Icoup[3][2][1], 31.415926535897931, 1e-13);
    EXPECT_NEAR(g_runtime.Icoup[1][1][1], 15.707963267948966, 1e-13);
}

TEST(SpinSpinCoupling, AsksPairsInRowOrderAndSkipsZero) {
    const std::vector<int> doubled = {1, 2, 1};
    define(doubled);
    const ConsoleOutput printed = play_console("2\n7\n0\n-3.5\n", SpinSpinCoupling);
    EXPECT_EQ(printed.out, coupling_heading + coupling_text +
                               "J(1,2) = Calculating coupling term for (1,2)\n"
                               "J(1,3) = J(2,3) = Calculating coupling term for (2,3)\n");
    EXPECT_EQ(g_runtime.Jcount, 3);
    EXPECT_EQ(g_runtime.couplings[2], 0);
    EXPECT_EQ(g_runtime.jc[3][2], -3.5);
    const Dense expected = coupling_term(doubled, 1, 2, 7, true) + coupling_term(doubled, 2, 3, -3.5, true);
    EXPECT_LT(distance(g_runtime.Icoup, expected), rounding(100));
}

TEST(SpinSpinCoupling, AnUnreadableModeIsWeak) {
    define({1, 1});
    g_runtime.jc[1][2] = g_runtime.couplings[7] = 99;
    play_console("exact\n", SpinSpinCoupling);
    EXPECT_EQ(g_runtime.Jexact, 1);
    EXPECT_EQ(g_runtime.Jcount, 1);
    EXPECT_EQ(g_runtime.jc[1][2], 0);
    EXPECT_EQ(g_runtime.couplings[7], 0);
}

TEST(SpinSpinCoupling, OneSpinAsksNothing) {
    define({1});
    g_runtime.Jexact = 2;
    g_runtime.Icoup[1][1][1] = 5;
    EXPECT_EQ(play_console("1\n5\n", SpinSpinCoupling).out, "");
    EXPECT_EQ(g_runtime.Jexact, 1);
    EXPECT_EQ(g_runtime.Jcount, 0);
    EXPECT_EQ(g_runtime.Icoup[1][1][1], 0);
}

TEST(NonIntIspins, StreamAndConsoleBuildTheSameMatrices) {
    const unsigned seed = 77;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> real(-200, 200);
    const std::vector<int> doubled = {1, 2, 1};
    std::string spins = "3\n1\n2\n1\n", intensities, offsets, couplings = "2\n", stream_couplings = "2 9 ";
    for (int i = 0; i < 3; ++i) {
        intensities += std::to_string(real(random)) + "\n";
        offsets += std::to_string(real(random)) + "\n";
        const std::string j = std::to_string(real(random)) + "\n";
        couplings += j;
        stream_couplings += j;
    }
    play_console(spins + intensities + offsets + couplings, [] {
        SetupSpins();
        MakeBoltzmann();
        MakeZeeman();
        SpinSpinCoupling();
    });
    const Dense densmat = to_dense(12, g_runtime.densmat), Izee = to_dense(12, g_runtime.Izee),
                Icoup = to_dense(12, g_runtime.Icoup);
    const double j13 = g_runtime.jc[1][3];
    g_runtime.Jexact = 1;
    g_runtime.relspinamp[2] = g_runtime.resofreqs[2] = g_runtime.quantnum[2] = 55;
    g_runtime.couplings[1] = 56;
    g_runtime.Jcount = 0;
    Stream stream(spins + intensities + offsets + stream_couplings);
    NonIntIspins(stream.file());
    NonIntMakeBoltzmann(stream.file());
    NonIntMakeZeeman(stream.file());
    NonIntSpinSpinCoupling(stream.file());
    EXPECT_EQ(distance(g_runtime.densmat, densmat), 0);
    EXPECT_EQ(distance(g_runtime.Izee, Izee), 0);
    EXPECT_EQ(distance(g_runtime.Icoup, Icoup), 0);
    EXPECT_EQ(g_runtime.jc[1][3], j13);
    // The parameters of the definition belong to the console.
    EXPECT_EQ(g_runtime.quantnum[2], 55);
    EXPECT_EQ(g_runtime.relspinamp[2], 55);
    EXPECT_EQ(g_runtime.resofreqs[2], 55);
    EXPECT_EQ(g_runtime.couplings[1], 56);
    EXPECT_EQ(g_runtime.Jexact, 1);
    EXPECT_EQ(g_runtime.Jcount, 0);
}

TEST(NonIntIspins, AnEmptyStreamIsOneSpinOneHalf) {
    Stream stream("");
    NonIntIspins(stream.file());
    EXPECT_EQ(g_runtime.Nspins, 1);
    EXPECT_EQ(g_runtime.Ilist[1], 1);
    EXPECT_EQ(g_runtime.n, 2);
    NonIntMakeBoltzmann(stream.file());
    NonIntMakeZeeman(stream.file());
    EXPECT_EQ(distance(g_runtime.densmat, Dense::Zero(2, 2)), 0);
    EXPECT_EQ(distance(g_runtime.Izee, Dense::Zero(2, 2)), 0);
}

TEST(NonIntIspins, OutOfRangeNumbersAreBroughtIntoRange) {
    Stream many("12 1 1 1 1 1 1 1 1 1");
    NonIntIspins(many.file());
    EXPECT_EQ(g_runtime.Nspins, 8);
    EXPECT_EQ(g_runtime.n, 256);
    Stream negative("2 -5 1");
    NonIntIspins(negative.file());
    EXPECT_EQ(g_runtime.Ilist[1], 0);
    EXPECT_EQ(g_runtime.n, 2);
}

TEST(NonIntIspins, TooManyStatesLeaveNoKets) {
    define({1, 1});
    Stream large("2 300 1");
    const ConsoleOutput printed = play_console("", [&] { NonIntIspins(large.file()); });
    EXPECT_EQ(printed.err, "MakeKets: too many states for Nspins=2 (max 256)\n");
    EXPECT_EQ(g_runtime.n, 0);
    EXPECT_EQ(g_runtime.ket[1][1], 0);
}
