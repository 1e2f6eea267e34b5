#include "pulsesequencedefiner/spin_prompts.h"

#include "kor/runtime_state.h"
#include "kor/spin_system.h"
#include "support/composer_state.h"
#include "support/console_script.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

const std::string heading = "Definition of the spinsystem: \n";
const std::string number = "Number of Spins = ";

std::string quantum(int k) {
    return "I quantum number of spin(" + std::to_string(k) + ") = x/2  with   x = ";
}

std::string quantum_prompts(int spins) {
    std::string text;
    for (int k = 1; k <= spins; ++k)
        text += quantum(k);
    return text;
}

} // namespace

TEST(PSIspinsParams, CollectsTheQuantumNumbers) {
    fresh_state();
    g_runtime.quantnum[3] = g_runtime.quantnum[6] = 5;
    const ConsoleOutput printed = play_console("2\n1\n3\n", [] { EXPECT_EQ(PS_IspinsParams(), 1); });
    EXPECT_EQ(printed.out, heading + number + quantum_prompts(2) + "n = 8\n");
    EXPECT_EQ(g_runtime.Nspins, 2);
    EXPECT_EQ(g_runtime.quantnum[1], 1);
    EXPECT_EQ(g_runtime.quantnum[2], 3);
    EXPECT_EQ(g_runtime.quantnum[3], 0);
    EXPECT_EQ(g_runtime.quantnum[6], 0);
}

TEST(PSIspinsParams, SevenSpinsRepeatTheQuestion) {
    fresh_state();
    const ConsoleOutput printed =
        play_console("7\n8\n6\n1\n1\n1\n1\n1\n1\n", [] { EXPECT_EQ(PS_IspinsParams(), 1); });
    EXPECT_EQ(printed.out, heading + number + number + number + quantum_prompts(6) + "n = 64\n");
    EXPECT_EQ(g_runtime.Nspins, 6);
}

TEST(PSIspinsParams, DimensionNinetySixStartsAgain) {
    fresh_state();
    const ConsoleOutput printed =
        play_console("5\n1\n1\n1\n1\n5\n1\n2\n", [] { EXPECT_EQ(PS_IspinsParams(), 1); });
    EXPECT_EQ(printed.out, heading + number + quantum_prompts(5) + number + quantum_prompts(1) + "n = 3\n");
    EXPECT_EQ(g_runtime.Nspins, 1);
    EXPECT_EQ(g_runtime.quantnum[5], 0);
}

TEST(PSIspinsParams, HugeQuantumNumbersStartAgain) {
    fresh_state();
    play_console("2\n2147483647\n2147483647\n1\n1\n", [] { EXPECT_EQ(PS_IspinsParams(), 1); });
    EXPECT_EQ(g_runtime.Nspins, 1);
}

TEST(PSIspinsParams, ANegativeQuantumNumberCountsAsOneState) {
    fresh_state();
    // The product with a factor of -4 would hide the 100 states of the other spin.
    const ConsoleOutput printed =
        play_console("2\n-5\n99\n2\n-5\n3\n", [] { EXPECT_EQ(PS_IspinsParams(), 1); });
    EXPECT_EQ(printed.out, heading + number + quantum_prompts(2) + number + quantum_prompts(2) + "n = 4\n");
}

TEST(PSIspinsParams, FewerThanOneSpinAreNone) {
    for (const char* answer : {"0\n", "-2\n", "-2147483648\n"}) {
        fresh_state_with_spins();
        const ConsoleOutput printed = play_console(answer, [] { EXPECT_EQ(PS_IspinsParams(), 1); });
        EXPECT_EQ(printed.out, heading + number + "n = 1\n");
        EXPECT_EQ(g_runtime.Nspins, 0);
    }
}

TEST(PSMakeBoltzmannParams, AsksPerSpin) {
    fresh_state_with_spins();
    const ConsoleOutput printed = play_console("0.5\n-2\n", [] { EXPECT_EQ(PS_MakeBoltzmannParams(), 1); });
    EXPECT_EQ(printed.out, "Relative Intensity of Spin (1) = Relative Intensity of Spin (2) = ");
    EXPECT_EQ(g_runtime.relspinamp[1], 0.5);
    EXPECT_EQ(g_runtime.relspinamp[2], -2);
}

TEST(PSMakeZeemanParams, AsksPerSpin) {
    fresh_state_with_spins();
    const ConsoleOutput printed = play_console("12.5\n-3e2\n", [] { EXPECT_EQ(PS_MakeZeemanParams(), 1); });
    EXPECT_EQ(printed.out, "Offset-frequency [Hz] of Spin (1) = Offset-frequency [Hz] of Spin (2) = ");
    EXPECT_EQ(g_runtime.resofreqs[1], 12.5);
    EXPECT_EQ(g_runtime.resofreqs[2], -300);
}

TEST(PSSpinSpinCouplingParams, AsksModeAndPairsInRowOrder) {
    fresh_state_with_spins();
    g_runtime.Nspins = 3;
    const ConsoleOutput printed =
        play_console("2\n7\n0\n-3.5\n", [] { EXPECT_EQ(PS_SpinSpinCouplingParams(), 1); });
    EXPECT_EQ(printed.out, "1. Weak-Coupling approximation. \n2. Exact calculation. \n Your choice [1,2] : "
                           "Give all Scalar coupling constants J(i,j)\nfrom the term J(i,j).I(i).S(j)\n"
                           "Scalar Coupling Constant J(1,2)  = Scalar Coupling Constant J(1,3)  = "
                           "Scalar Coupling Constant J(2,3)  = ");
    EXPECT_EQ(g_runtime.Jexact, 2);
    EXPECT_EQ(g_runtime.Jcount, 3);
    EXPECT_EQ(g_runtime.couplings[1], 7);
    EXPECT_EQ(g_runtime.couplings[2], 0);
    EXPECT_EQ(g_runtime.couplings[3], -3.5);
}

TEST(PSSpinSpinCouplingParams, OneSpinHasNoCouplings) {
    fresh_state_with_spins();
    g_runtime.Nspins = 1;
    EXPECT_EQ(play_console("1\n5\n", [] { EXPECT_EQ(PS_SpinSpinCouplingParams(), 1); }).out, "");
    EXPECT_EQ(g_runtime.Jcount, 0);
}

TEST(PSSpinSpinCouplingParams, NewCouplingsAreNotSeenWhileTheTableHoldsOthers) {
    fresh_state_with_spins();
    testing::internal::CaptureStdout();
    KOR_RebuildSpinSystemFromPulseSequenceGlobals();
    testing::internal::GetCapturedStdout();
    play_console("1\n12\n", [] { EXPECT_EQ(PS_SpinSpinCouplingParams(), 1); });
    EXPECT_EQ(g_runtime.couplings[1], 12);
    testing::internal::CaptureStdout();
    KOR_RebuildSpinSystemFromPulseSequenceGlobals();
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(g_runtime.jc[1][2], 7.3);
}

TEST(DefineSpinSystemParams, AllFourInOrderMakeTheSystemComplete) {
    fresh_state();
    play_console("2\n1\n1\n1\n0.5\n10\n-10\n1\n7\n", [] { EXPECT_EQ(define_spin_system_params(), 1); });
    EXPECT_EQ(g_runtime.relspinamp[2], 0.5);
    EXPECT_EQ(g_runtime.resofreqs[2], -10);
    EXPECT_EQ(g_runtime.couplings[1], 7);
    EXPECT_EQ(g_runtime.systemset, 1);
}

TEST(DefineSpinSystemParams, AnEndedInputLeavesItIncomplete) {
    std::string answers;
    for (const char* answer : {"2\n", "1\n", "1\n", "1\n", "0.5\n", "10\n", "-10\n", "1\n", "7\n"}) {
        fresh_state();
        play_console(answers, [] { EXPECT_EQ(define_spin_system_params(), 0); });
        EXPECT_EQ(g_runtime.systemset, 0);
        answers += answer;
    }
}
