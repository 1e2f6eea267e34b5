#include "kor/product_operators.h"

#include "kor/runtime_state.h"
#include "support/spin_oracle.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace kor {
namespace {

using kor_test::Dense;
using kor_test::distance;

constexpr char unparsed[] = "error";

/// The symbolic operator of a text, or "error".
std::string parsed(const char* text, int Nspins) {
    char symbolic[KOR_MAX_SPINS + 1];
    return parse_product_operator_string(text, Nspins, symbolic) ? symbolic : unparsed;
}

struct GrammarCase {
    const char* text;
    int Nspins;
    const char* expected;
};

const GrammarCase grammar[] = {
    // one spin
    {"Ix", 1, "x"},
    {"Iy", 1, "y"},
    {"Iz", 1, "z"},
    {"ix", 1, "x"},
    {"IX", 1, "x"},
    {"iZ", 1, "z"},
    {"I1x", 1, "x"},
    {"i1Y", 1, "y"},
    {"I01z", 1, "z"},
    {"I000000000001z", 1, "z"},
    {"Sx", 1, unparsed},
    {"I2x", 1, unparsed},
    {"I0x", 1, unparsed},
    {"I99999999999999999999x", 1, unparsed},
    // the identity
    {"E", 2, "ee"},
    {"e", 2, "ee"},
    {"  E", 2, "ee"},
    {"E  ", 2, "ee"},
    {"E\n", 2, "ee"},
    {"E Ix", 2, "ee"},
    {"e garbage", 2, "ee"},
    {"Ex", 2, unparsed},
    {"E,", 2, unparsed},
    {"EE", 2, unparsed},
    {"Ix E", 2, unparsed},
    // nothing
    {"", 2, unparsed},
    {"   ", 2, unparsed},
    {"\t\n", 2, unparsed},
    // products and separators
    {"IxSz", 2, "xz"},
    {"SzIx", 2, "xz"},
    {"I1x I2z", 2, "xz"},
    {"I1xI2z", 2, "xz"},
    {"I2zI1x", 2, "xz"},
    {"Ix_Sz", 2, "xz"},
    {"Ix,Sz", 2, "xz"},
    {"Ix;Sz", 2, "xz"},
    {"Ix , ; _ Sz", 2, "xz"},
    {"Ix\tSz\r\n", 2, "xz"},
    {"  IxSz  ", 2, "xz"},
    {"IxSz,", 2, "xz"},
    {"IxSz;;;", 2, "xz"},
    {",IxSz", 2, unparsed},
    {"_Ix", 2, unparsed},
    {"ix,sz;tz", 3, "xzz"},
    {"TyIx", 3, "xey"},
    {"I3y I1x", 3, "xey"},
    {"I3x", 2, unparsed},
    {"I2x", 2, "ex"},
    {"Tx", 2, unparsed},
    // a spin named twice keeps the later component
    {"IxIz", 1, "z"},
    {"IxSyIz", 2, "zy"},
    {"IxI1y", 2, "ye"},
    // broken components and designators
    {"I", 2, unparsed},
    {"I1", 2, unparsed},
    {"Iq", 2, unparsed},
    {"I x", 2, unparsed},
    {"I 1x", 2, unparsed},
    {"I1 x", 2, unparsed},
    {"I,x", 2, unparsed},
    {"Ix Qz", 2, unparsed},
    {"IxS", 2, unparsed},
    {"Ix S", 2, unparsed},
    {"1x", 2, unparsed},
    {"x", 2, unparsed},
    {"Ix+Sx", 2, unparsed},
    {"-Ix", 2, unparsed},
    {"2IxSz", 2, unparsed},
    {"Ie", 2, unparsed},
    {"I+", 2, unparsed},
    {"Ixx", 2, unparsed},
    {"not defined", 2, unparsed},
    // all eight letters
    {"IxSyTzUxVyWzAxBy", 8, "xyzxyzxy"},
    {"I1xI2yI3zI4xI5yI6zI7xI8y", 8, "xyzxyzxy"},
    {"axbz", 8, "eeeeeexz"},
    {"Bz", 7, unparsed},
    {"I8z", 8, "eeeeeeez"},
    {"I9z", 8, unparsed},
    {"Wz", 6, "eeeeez"},
};

TEST(ParseProductOperatorString, Grammar) {
    static_assert(sizeof grammar / sizeof grammar[0] >= 60);
    for (const GrammarCase& one : grammar)
        EXPECT_EQ(parsed(one.text, one.Nspins), one.expected)
            << "'" << one.text << "' for " << one.Nspins << " spins";
}

TEST(ParseProductOperatorString, MissingTextIsAnError) {
    EXPECT_EQ(parsed(nullptr, 2), unparsed);
}

TEST(DecimalToBase4Symbols, LeastSignificantDigitIsTheFirstSpin) {
    char symbolic[KOR_MAX_SPINS + 1];
    const std::pair<int, const char*> cases[] = {{0, "ee"}, {1, "xe"}, {2, "ye"}, {3, "ze"},
                                                 {4, "ex"}, {7, "zx"}, {15, "zz"}};
    for (const auto& [opno, expected] : cases) {
        decimal_to_base4_symbols(opno, 2, symbolic);
        EXPECT_STREQ(symbolic, expected) << "operator " << opno;
    }
    decimal_to_base4_symbols(65535, 8, symbolic);
    EXPECT_STREQ(symbolic, "zzzzzzzz");
}

TEST(SpinLabels, AreTheFixedLettersClampedAtBothEnds) {
    std::string letters;
    for (int s = 1; s <= 8; ++s)
        letters += spin_labels_for(s);
    EXPECT_EQ(letters, "ISTUVWAB");
    EXPECT_STREQ(spin_labels_for(0), "I");
    EXPECT_STREQ(spin_labels_for(-7), "I");
    EXPECT_STREQ(spin_labels_for(32), "Z");
    EXPECT_STREQ(spin_labels_for(33), "Z");
}

std::string label(const char* symbolic, std::size_t cap) {
    std::vector<char> out(cap + 1, '#');
    format_operator_label(symbolic, static_cast<int>(std::strlen(symbolic)), out.data(), cap);
    EXPECT_EQ(out[cap], '#') << "nothing behind the capacity";
    return out.data();
}

TEST(FormatOperatorLabel, NamesSpinsAndComponentsInCapitals) {
    EXPECT_EQ(label("xz", 17), "IXSZ");
    EXPECT_EQ(label("zx", 17), "IZSX");
    EXPECT_EQ(label("exe", 17), "SX");
    EXPECT_EQ(label("ee", 17), "E");
    EXPECT_EQ(label("xyzxyzxy", 17), "IXSYTZUXVYWZAXBY");
}

TEST(FormatOperatorLabel, StopsBeforeAPairThatDoesNotFit) {
    EXPECT_EQ(label("xz", 5), "IXSZ");
    EXPECT_EQ(label("xz", 4), "IX");
    EXPECT_EQ(label("xz", 3), "IX");
    EXPECT_EQ(label("xz", 2), "");
    EXPECT_EQ(label("xz", 1), "");
    EXPECT_EQ(label("ee", 2), "E");
    EXPECT_EQ(label("ee", 1), "");
}

/// A system's basis as the operator routes take it.
struct Basis {
    SpinIList Ilist = {};
    SpinKet ket = {};
    int Nspins;
    int n;
    explicit Basis(const std::vector<int>& two_i) : Nspins(static_cast<int>(two_i.size())) {
        std::copy(two_i.begin(), two_i.end(), Ilist + 1);
        n = infer_nstates(Ilist, Nspins);
        MakeKets(ket, Ilist);
    }
};

CMatrix operator_out;

int build_sum(const Basis& basis, const char* expression) {
    return create_operator_expression_spinhalf(basis.n, basis.Nspins, basis.Ilist, basis.ket, expression,
                                               operator_out);
}

Dense unit(const Dense& a) {
    return a / a.norm();
}

TEST(NormOperator, IsTheKroneckerProductOfUnitNorm) {
    const unsigned seed = 77;
    std::mt19937 random(seed);
    for (int round = 0; round < 40; ++round) {
        const int spins = 1 + static_cast<int>(random() % 6);
        std::string symbolic;
        for (int s = 0; s < spins; ++s)
            symbolic += "exyz"[random() % 4];
        SCOPED_TRACE("seed " + std::to_string(seed) + " operator " + symbolic);
        const std::vector<int> two_i(static_cast<std::size_t>(spins), 1);
        const Basis basis(two_i);
        create_norm_operator_spinhalf(basis.n, spins, basis.Ilist, basis.ket, symbolic.c_str(), operator_out);
        EXPECT_LT(distance(operator_out, unit(kor_test::product_of(two_i, symbolic))), 1e-14);
    }
}

TEST(NormOperator, NonzeroEntriesHaveModulusOneOverRootN) {
    const Basis basis({1, 1, 1});
    for (const char* symbolic : {"xee", "xye", "zyx"}) {
        create_norm_operator_spinhalf(8, 3, basis.Ilist, basis.ket, symbolic, operator_out);
        const Dense dense = kor_test::to_dense(8, operator_out);
        for (Eigen::Index r = 0; r < 8; ++r)
            EXPECT_NEAR(dense.row(r).cwiseAbs().maxCoeff(), 1.0 / std::sqrt(8.0), 1e-15) << symbolic;
    }
}

TEST(NormOperator, AnyOtherComponentMeansIz) {
    const Basis basis({1});
    create_norm_operator_spinhalf(2, 1, basis.Ilist, basis.ket, "q", operator_out);
    EXPECT_LT(distance(operator_out, unit(kor_test::product_of({1}, "z"))), 1e-15);
}

TEST(OperatorExpression, IdentityIsNormalised) {
    const Basis basis({1, 1});
    ASSERT_EQ(build_sum(basis, "E"), 1);
    EXPECT_LT(distance(operator_out, Dense(0.5 * Dense::Identity(4, 4))), 1e-15);
    make_identity_operator(4, operator_out);
    EXPECT_LT(distance(operator_out, Dense(Dense::Identity(4, 4))), 1e-300);
}

TEST(OperatorExpression, SumsWeighEachTermAlike) {
    const Basis basis({1, 1});
    ASSERT_EQ(build_sum(basis, "Ix + Sx"), 1);
    EXPECT_LT(distance(operator_out, unit(kor_test::total({1, 1}, 'x'))), 1e-15);
    ASSERT_EQ(build_sum(basis, "Ix+IxSz"), 1);
    const Dense ix = unit(kor_test::product_of({1, 1}, "xe"));
    const Dense ixsz = unit(kor_test::product_of({1, 1}, "xz"));
    EXPECT_LT(distance(operator_out, unit(ix + ixsz)), 1e-15);
}

TEST(OperatorExpression, ATermTwiceCountsTwice) {
    const Basis basis({1, 1});
    ASSERT_EQ(build_sum(basis, "Ix+Ix+Sx"), 1);
    const Dense expected = 2.0 * kor_test::product_of({1, 1}, "xe") + kor_test::product_of({1, 1}, "ex");
    EXPECT_LT(distance(operator_out, unit(expected)), 1e-15);
}

TEST(OperatorExpression, EmptyTermsAreSkipped) {
    const Basis basis({1, 1});
    const Dense ix = unit(kor_test::product_of({1, 1}, "xe"));
    for (const char* text : {"Ix+", "+Ix", "++ Ix +\t+", " Ix +  "}) {
        ASSERT_EQ(build_sum(basis, text), 1) << text;
        EXPECT_LT(distance(operator_out, ix), 1e-15) << text;
    }
    EXPECT_EQ(build_sum(basis, "+"), 0);
    EXPECT_EQ(build_sum(basis, " + + "), 0);
}

TEST(OperatorExpression, ATermThatDoesNotParseFailsAndLeavesTheTermsBefore) {
    const Basis basis({1, 1});
    EXPECT_EQ(build_sum(basis, "Ix+Qz+Sx"), 0);
    EXPECT_LT(distance(operator_out, unit(kor_test::product_of({1, 1}, "xe"))), 1e-15);
    EXPECT_EQ(build_sum(basis, "Ix - Sx"), 0);
    EXPECT_EQ(build_sum(basis, "I3x"), 0);
    ASSERT_EQ(build_sum(basis, "I2x"), 1);
    EXPECT_LT(distance(operator_out, unit(kor_test::product_of({1, 1}, "ex"))), 1e-15);
}

TEST(OperatorExpression, ASpinThatIsNoSpinHalfFailsWithoutTouchingTheResult) {
    const Basis basis({1, 2});
    CMatIdentity(6, operator_out);
    EXPECT_EQ(build_sum(basis, "Ix"), 0);
    EXPECT_LT(distance(operator_out, Dense(Dense::Identity(6, 6))), 1e-300);
}

TEST(OperatorExpression, UndefinedTextFails) {
    const Basis basis({1});
    for (const char* text : {static_cast<const char*>(nullptr), "", "  \t", "not defined", "  Not DEFINED\n"})
        EXPECT_EQ(build_sum(basis, text), 0);
}

TEST(OperatorExpression, CharactersBeyondTheLimitDoNotCount) {
    const Basis basis({1});
    const std::string kept = "Ix" + std::string(509, ' ');
    ASSERT_EQ(kept.size(), 511U);
    EXPECT_EQ(build_sum(basis, (kept + "junk").c_str()), 1);
    EXPECT_EQ(build_sum(basis, ("Ix" + std::string(508, ' ') + "junk").c_str()), 0);
}

TEST(OperatorExpression, RandomSumsAgreeWithKroneckerProducts) {
    const unsigned seed = 4711;
    std::mt19937 random(seed);
    for (int round = 0; round < 30; ++round) {
        const int spins = 1 + static_cast<int>(random() % 4);
        const std::vector<int> two_i(static_cast<std::size_t>(spins), 1);
        const Basis basis(two_i);
        std::string expression;
        Dense sum = Dense::Zero(basis.n, basis.n);
        for (unsigned term = 0; term <= random() % 4; ++term) {
            std::string symbolic;
            std::string text;
            for (int s = 1; s <= spins; ++s) {
                symbolic += "exyz"[random() % 4];
                if (symbolic.back() != 'e')
                    text += spin_labels_for(s) + std::string(1, symbolic.back());
            }
            expression += (term > 0 ? " + " : "") + (text.empty() ? "E" : text);
            sum += unit(kor_test::product_of(two_i, symbolic));
        }
        SCOPED_TRACE("seed " + std::to_string(seed) + " expression " + expression);
        ASSERT_EQ(build_sum(basis, expression.c_str()), 1);
        EXPECT_LT(distance(operator_out, unit(sum)), 1e-14);
    }
}

TEST(UndefinedOperatorExpression, RecognisesMissingBlankAndNotDefined) {
    for (const char* text : {static_cast<const char*>(nullptr), "", " \t\r\n", "not defined", "NOT DEFINED",
                             "  Not Defined\t", "nOt DeFiNeD"})
        EXPECT_TRUE(is_undefined_operator_expression(text)) << (text ? text : "null");
    for (const char* text : {"Ix", "notdefined", "not  defined", "not defined yet", "undefined"})
        EXPECT_FALSE(is_undefined_operator_expression(text)) << text;
}

TEST(UndefinedOperatorExpression, LooksAtTheFirst63Characters) {
    const std::string start = "not defined" + std::string(52, ' ');
    ASSERT_EQ(start.size(), 63U);
    EXPECT_TRUE(is_undefined_operator_expression((start + "yet").c_str()));
    EXPECT_FALSE(is_undefined_operator_expression(("not defined" + std::string(51, ' ') + "yet").c_str()));
}

TEST(TrimOperatorToken, RemovesWhiteSpaceFromBothEnds) {
    for (const auto& [text, expected] :
         {std::pair{"  Ix Sz\t\n", "Ix Sz"}, {"Ix", "Ix"}, {" \t ", ""}, {"", ""}, {"Ix ", "Ix"}}) {
        char token[32];
        std::snprintf(token, sizeof token, "%s", text);
        trim_operator_token(token);
        EXPECT_STREQ(token, expected);
    }
}

TEST(SingleSpinOperator, TypesAreRaisingLoweringAndCartesianTimesTheFactor) {
    const std::vector<int> two_i = {2, 1};
    const Basis basis(two_i);
    const std::pair<int, char> types[] = {{1, '+'}, {2, '-'}, {3, 'x'}, {4, 'y'},
                                          {5, 'z'}, {0, 'z'}, {9, 'z'}};
    for (const auto& [type, component] : types) {
        create_single_spin_operator(basis.n, basis.Ilist, basis.ket, 1, type, -1.5, operator_out);
        EXPECT_LT(distance(operator_out, Dense(-1.5 * kor_test::on_spin(two_i, 1, component))), 1e-14)
            << type;
    }
}

TEST(MultiplyAndNormalise, ScalesTheProductToUnitNorm) {
    static CMatrix op2;
    const std::vector<int> two_i = {1, 2};
    const Basis basis(two_i);
    create_single_spin_operator(basis.n, basis.Ilist, basis.ket, 1, 3, 4.0, operator_out);
    create_single_spin_operator(basis.n, basis.Ilist, basis.ket, 2, 5, 2.0, op2);
    multiply_and_normalise(basis.n, operator_out, op2);
    EXPECT_LT(distance(operator_out, unit(kor_test::product_of(two_i, "xz"))), 1e-14);
}

/// The current state holds two spins 1/2.
void prepare_two_spins() {
    const Basis basis({1, 1});
    g_runtime.Nspins = 2;
    g_runtime.n = 4;
    std::memcpy(g_runtime.Ilist, basis.Ilist, sizeof basis.Ilist);
    std::memcpy(g_runtime.ket, basis.ket, sizeof basis.ket);
    g_runtime.spinsystemdefined = 1;
}

TEST(CurrentExpectationOperator, IsBuiltIntoIstatAndNamed) {
    prepare_two_spins();
    testing::internal::CaptureStdout();
    EXPECT_EQ(KORDefineCurrentExpectationOperatorExpression("  Ix + Sx \n"), 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Using GUI-defined expectation operator: Ix + Sx\n");
    EXPECT_LT(distance(g_runtime.Istat, unit(kor_test::total({1, 1}, 'x'))), 1e-15);
}

TEST(CurrentExpectationOperator, NamesAtMost511Characters) {
    prepare_two_spins();
    const std::string expression = "Ix" + std::string(508, ',') + "Sz";
    testing::internal::CaptureStdout();
    EXPECT_EQ(KORDefineCurrentExpectationOperatorExpression((expression + "+Sx").c_str()), 0)
        << "the 511 characters end in a designator without component";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    const std::string commas = "Ix" + std::string(600, ',');
    testing::internal::CaptureStdout();
    EXPECT_EQ(KORDefineCurrentExpectationOperatorExpression(commas.c_str()), 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Using GUI-defined expectation operator: " + commas.substr(0, 511) + "\n");
}

TEST(CurrentExpectationOperator, NeedsASpinSystem) {
    for (const auto& [defined, spins] : {std::pair{0, 2}, {1, 0}}) {
        prepare_two_spins();
        g_runtime.spinsystemdefined = defined;
        g_runtime.Nspins = spins;
        testing::internal::CaptureStdout();
        EXPECT_EQ(KORDefineCurrentExpectationOperatorExpression("Ix"), 0);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "No current prepared spin system is available.\n");
    }
}

TEST(CurrentExpectationOperator, FailsSilentlyOnABadOrMissingExpression) {
    prepare_two_spins();
    for (const char* text : {static_cast<const char*>(nullptr), "Qx", "not defined"}) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(KORDefineCurrentExpectationOperatorExpression(text), 0);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    }
}

} // namespace
} // namespace kor
