#include "kor/product_operator_dialogues.h"

#include "kor/runtime_state.h"
#include "support/console_script.h"
#include "support/spin_oracle.h"

#include <gtest/gtest.h>

#include <cstring>

namespace kor {
namespace {

using kor_test::Dense;
using kor_test::distance;
using kor_test::play_console;

constexpr char framed_title[] = "*******************************************************\n"
                                "***   EXPECTATION VALUES OF AN ARBITRARY OPERATOR   ***\n"
                                "***                  OR PRODUCT OPERATOR            ***\n"
                                "*******************************************************\n"
                                "Define operator:\n"
                                "    1. Choose from product-operator list (spin-1/2 only)\n"
                                "    2. Create manually\n"
                                "Your choice [1,2] : ";

constexpr char manual_menu[] = "*******************************************************\n"
                               "***   EXPECTATION VALUES OF AN ARBITRARY OPERATOR   ***\n"
                               "***                  (MANUAL MODE)                 ***\n"
                               "*******************************************************\n"
                               "OP1 and OP2 can be defined as single-spin operators.\n"
                               "You can add or multiply them to build more complex operators.\n"
                               "Possible actions:\n"
                               "  1. Define OP1\n"
                               "  2. Define OP2\n"
                               "  3. OP1 := OP1 + OP2\n"
                               "  4. OP1 := OP1 * OP2\n"
                               "  5. Use OP1 as expectation operator\n"
                               "Your choice [1..5]: ";

constexpr char operator_type_menu[] = "Operator type:\n"
                                      "  1. I+\n"
                                      "  2. I-\n"
                                      "  3. Ix\n"
                                      "  4. Iy\n"
                                      "  5. Iz\n"
                                      "Your choice [1..5]: ";

constexpr char factor_prompt[] = "Multiply by factor (real): ";

CMatrix operator_out;

Dense unit(const Dense& a) {
    return a / a.norm();
}

using Dialogue = void (*)(int, int, const SpinIList&, const SpinKet&, CMatrix&);

/// What the dialogue prints; its operator is in `operator_out`.
std::string play(Dialogue dialogue, const std::vector<int>& two_i, const std::string& answers) {
    static SpinKet ket;
    SpinIList Ilist = {};
    std::copy(two_i.begin(), two_i.end(), Ilist + 1);
    MakeKets(ket, Ilist);
    const int spins = static_cast<int>(two_i.size());
    const int n = infer_nstates(Ilist, spins);
    return play_console(answers, [&] { dialogue(n, spins, Ilist, ket, operator_out); }).out;
}

constexpr char pair_list[] = "Product-operator list (spin-1/2):\n"
                             "Spins are labeled: I S \n"
                             "Operator components: X, Y, Z. Identity is E.\n"
                             "\n"
                             "Available operators:\n"
                             "    0 : E\n"
                             "    1 : IX\n"
                             "    2 : IY\n"
                             "    3 : IZ\n"
                             "    4 : SX\n"
                             "    5 : IXSX\n"
                             "    6 : IYSX\n"
                             "    7 : IZSX\n"
                             "    8 : SY\n"
                             "    9 : IXSY\n"
                             "   10 : IYSY\n"
                             "   11 : IZSY\n"
                             "   12 : SZ\n"
                             "   13 : IXSZ\n"
                             "   14 : IYSZ\n"
                             "   15 : IZSZ\n"
                             "\n"
                             "Enter operator (e.g. IxSz) or number [0..15]: ";

TEST(OperatorList, ListsUpToThreeSpinsAndTakesANumber) {
    EXPECT_EQ(play(create_operator_from_list, {1, 1}, "7\n"),
              std::string(pair_list) + "Selected: IZSX (opno=7)\n");
    EXPECT_LT(distance(operator_out, unit(kor_test::product_of({1, 1}, "zx"))), 1e-15);
}

TEST(OperatorList, ClampsTheNumber) {
    EXPECT_EQ(play(create_operator_from_list, {1, 1}, "  99 and more\n"),
              std::string(pair_list) + "Selected: IZSZ (opno=15)\n");
    EXPECT_EQ(play(create_operator_from_list, {1, 1}, "99999999999999999999999\n"),
              std::string(pair_list) + "Selected: IZSZ (opno=15)\n");
    EXPECT_LT(distance(operator_out, unit(kor_test::product_of({1, 1}, "zz"))), 1e-15);
    EXPECT_EQ(play(create_operator_from_list, {1, 1}, "0\n"),
              std::string(pair_list) + "Selected: E (opno=0)\n");
    EXPECT_LT(distance(operator_out, Dense(0.5 * Dense::Identity(4, 4))), 1e-15);
}

TEST(OperatorList, TakesAName) {
    EXPECT_EQ(play(create_operator_from_list, {1, 1}, "  sz i1x\n"),
              std::string(pair_list) + "Selected: IXSZ\n");
    EXPECT_LT(distance(operator_out, unit(kor_test::product_of({1, 1}, "xz"))), 1e-15);
    EXPECT_EQ(play(create_operator_from_list, {1, 1}, "e\n"), std::string(pair_list) + "Selected: E\n");
    EXPECT_LT(distance(operator_out, Dense(0.5 * Dense::Identity(4, 4))), 1e-15);
}

TEST(OperatorList, FallsBackToThePlainIdentity) {
    for (const char* answer : {"Iq\n", "\n", "-3\n", "Ix Qz\n"}) {
        EXPECT_EQ(play(create_operator_from_list, {1, 1}, answer),
                  std::string(pair_list) +
                      "Could not parse operator string. Examples: Ix  Iy  Iz  IxSz  IxSzTz\n"
                      "Falling back to E (identity).\n");
        EXPECT_LT(distance(operator_out, Dense(Dense::Identity(4, 4))), 1e-300) << answer;
    }
}

TEST(OperatorList, EndOfInputIsThePlainIdentity) {
    EXPECT_EQ(play(create_operator_from_list, {1, 1}, ""), pair_list);
    EXPECT_LT(distance(operator_out, Dense(Dense::Identity(4, 4))), 1e-300);
}

TEST(OperatorList, TakesTheWholeLineWhateverItsLength) {
    play(create_operator_from_list, {1, 1}, "Ix" + std::string(300, ' ') + "\nnext\n");
    EXPECT_LT(distance(operator_out, unit(kor_test::product_of({1, 1}, "xe"))), 1e-15);
    EXPECT_EQ(kor_test::unread_answers(), "next\n");
}

TEST(OperatorList, Counts127Characters) {
    play(create_operator_from_list, {1, 1}, "Ix" + std::string(123, ' ') + "Sx\n");
    EXPECT_LT(distance(operator_out, unit(kor_test::product_of({1, 1}, "xx"))), 1e-15);
    play(create_operator_from_list, {1, 1}, "Ix" + std::string(124, ' ') + "Sx\n");
    EXPECT_LT(distance(operator_out, Dense(Dense::Identity(4, 4))), 1e-300) << "S without a component";
}

TEST(OperatorList, IsNotPrintedForFourSpins) {
    EXPECT_EQ(play(create_operator_from_list, {1, 1, 1, 1}, "228\n"),
              "Product-operator list (spin-1/2):\n"
              "Spins are labeled: I S T U \n"
              "Operator components: X, Y, Z. Identity is E.\n"
              "\n"
              "There are 256 operators; enter by name (e.g. IxSzUz) or by number [0..255].\n"
              "\n"
              "Enter operator (e.g. IxSz) or number [0..255]: Selected: SXTYUZ (opno=228)\n");
    EXPECT_LT(distance(operator_out, unit(kor_test::product_of({1, 1, 1, 1}, "exyz"))), 1e-15);
}

TEST(OperatorList, ServesSpinsHalfOnly) {
    for (const std::vector<int>& two_i : {std::vector{1, 2}, {2, 1}}) {
        EXPECT_EQ(play(create_operator_from_list, two_i, "Ix\n"),
                  "This list is only valid for spin-1/2 systems (2I must be 1).\n"
                  "Falling back to manual operator construction.\n");
        EXPECT_LT(distance(operator_out, Dense(Dense::Identity(6, 6))), 1e-300);
        EXPECT_EQ(kor_test::unread_answers(), "Ix\n");
    }
}

TEST(ManualOperator, AddsTwoSingleSpinOperators) {
    const std::vector<int> two_i = {1, 2};
    EXPECT_EQ(play(manual_expectation_operator, two_i, "1\n1\n3\n2.5\n2\n2\n5\n-1\n3\n5\n"),
              std::string(manual_menu) + "Spin number [1..2]: " + operator_type_menu + factor_prompt +
                  manual_menu + "Spin number [1..2]: " + operator_type_menu + factor_prompt + manual_menu +
                  manual_menu);
    const Dense expected = 2.5 * kor_test::on_spin(two_i, 1, 'x') - kor_test::on_spin(two_i, 2, 'z');
    EXPECT_LT(distance(operator_out, unit(expected)), 1e-15);
}

TEST(ManualOperator, MultipliesAndNormalises) {
    const std::vector<int> two_i = {1, 3};
    play(manual_expectation_operator, two_i, "1\n1\n1\n2\n2\n2\n2\n3\n4\n2\n1\n5\n1\n3\n5\n");
    const Dense product = unit(kor_test::product_of(two_i, "+-"));
    EXPECT_LT(distance(operator_out, unit(product + kor_test::on_spin(two_i, 1, 'z'))), 1e-14)
        << "the product has unit norm before the sum";
}

TEST(ManualOperator, ClampsTheSpinAndTakesIzForUnknownTypes) {
    const std::vector<int> two_i = {1, 1};
    play(manual_expectation_operator, two_i, "1\n7\n4\n1\n5\n");
    EXPECT_LT(distance(operator_out, unit(kor_test::on_spin(two_i, 2, 'y'))), 1e-15);
    play(manual_expectation_operator, two_i, "1\n-7\n17\n1\n5\n");
    EXPECT_LT(distance(operator_out, unit(kor_test::on_spin(two_i, 1, 'z'))), 1e-15);
}

TEST(ManualOperator, TakesSpinOneWhereThereIsNone) {
    EXPECT_EQ(play(manual_expectation_operator, {}, "1\n3\n5\n1\n5\n"),
              std::string(manual_menu) + "Spin number [1..0]: " + operator_type_menu + factor_prompt +
                  manual_menu);
    EXPECT_EQ(operator_out[1][1][1], 0.0); // no spin, no magnetisation
}

TEST(ManualOperator, AnUnreadableFactorIsOne) {
    const std::vector<int> two_i = {1};
    EXPECT_EQ(play(manual_expectation_operator, two_i, "1\n1\n3\nplenty\n5\n"),
              std::string(manual_menu) + "Spin number [1..1]: " + operator_type_menu + factor_prompt +
                  manual_menu);
    EXPECT_LT(distance(operator_out, unit(kor_test::single_spin(1, 'x'))), 1e-15);
}

TEST(ManualOperator, AnUnreadableSpinOrTypeChangesNothing) {
    const std::vector<int> two_i = {1};
    EXPECT_EQ(play(manual_expectation_operator, two_i, "1\n1\n3\n1\n1\nfirst\n1\n1\nIz\n5\n"),
              std::string(manual_menu) + "Spin number [1..1]: " + operator_type_menu + factor_prompt +
                  manual_menu + "Spin number [1..1]: " + manual_menu +
                  "Spin number [1..1]: " + operator_type_menu + manual_menu);
    EXPECT_LT(distance(operator_out, unit(kor_test::single_spin(1, 'x'))), 1e-15);
}

TEST(ManualOperator, OtherChoicesShowTheMenuAgain) {
    EXPECT_EQ(play(manual_expectation_operator, {1}, "9\nhelp\n0\n5\n"),
              std::string(manual_menu) + manual_menu + manual_menu + manual_menu);
    EXPECT_LT(distance(operator_out, Dense(Dense::Zero(2, 2))), 1e-300) << "both operators start at zero";
}

TEST(ManualOperator, EndOfInputUsesWhatOp1Holds) {
    EXPECT_EQ(play(manual_expectation_operator, {1}, "1\n1\n4\n3\n"),
              std::string(manual_menu) + "Spin number [1..1]: " + operator_type_menu + factor_prompt +
                  manual_menu);
    EXPECT_LT(distance(operator_out, unit(kor_test::single_spin(1, 'y'))), 1e-15);
    play(manual_expectation_operator, {1}, "");
    EXPECT_LT(distance(operator_out, Dense(Dense::Zero(2, 2))), 1e-300);
}

TEST(ExpectationOperator, OneIsTheList) {
    EXPECT_EQ(play(ExpectationOperator, {1, 1}, "1\nSx\n"),
              std::string(framed_title) + pair_list + "Selected: SX\n");
    EXPECT_LT(distance(operator_out, unit(kor_test::product_of({1, 1}, "ex"))), 1e-15);
}

TEST(ExpectationOperator, AnythingElseIsByHand) {
    for (const char* choice : {"2\n", "0\n", "by hand\n"})
        EXPECT_EQ(play(ExpectationOperator, {1}, std::string(choice) + "5\n"),
                  std::string(framed_title) + manual_menu)
            << choice;
}

TEST(CurrentOperatorDialogue, DefinesIstat) {
    g_runtime.spinsystemdefined = 1;
    g_runtime.Nspins = 1;
    g_runtime.n = 2;
    std::fill(g_runtime.Ilist, g_runtime.Ilist + KOR_MAX_SPINS + 1, 0);
    g_runtime.Ilist[1] = 1;
    MakeKets(g_runtime.ket, g_runtime.Ilist);
    const std::string printed =
        play_console("1\nIy\n", [] { KORDefineCurrentExpectationOperatorInteractive(); }).out;
    EXPECT_EQ(printed.rfind("Define operator whose expectation value is to be optimized:\n" +
                                std::string(framed_title),
                            0),
              0U);
    EXPECT_LT(distance(g_runtime.Istat, unit(kor_test::single_spin(1, 'y'))), 1e-15);
}

TEST(CurrentOperatorDialogue, NeedsASpinSystem) {
    for (const auto& [defined, spins] : {std::pair{0, 1}, {1, 0}}) {
        g_runtime.spinsystemdefined = defined;
        g_runtime.Nspins = spins;
        EXPECT_EQ(play_console("1\n", [] { KORDefineCurrentExpectationOperatorInteractive(); }).out,
                  "No current prepared spin system is available.\n");
        EXPECT_EQ(kor_test::unread_answers(), "1\n");
    }
}

} // namespace
} // namespace kor
