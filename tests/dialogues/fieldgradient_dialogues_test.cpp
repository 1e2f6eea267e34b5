#include "fieldgradient_dialogues.h"

#include "fieldgradientlib.h"
#include "support/composer_texts.h"
#include "support/console_script.h"
#include "support/constants.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace kor;
using namespace kor_test;

namespace {

const std::string cosine_text = "g(t) = -(A/T)*(2*pi*n*(1-(t/T))*((sin(2*pi*n*t/T)+f(t))\n"
                                "f(t) = cos(2*pi*n*t/T)\n";
const std::string sine_text = "g(t) = (A/T)*(2*pi*n*(1-(t/T))*((cos(2*pi*n*t/T)+f(t))\n"
                              "f(t) = -sin(2*pi*n*t/T)\n";

struct Gradient {
    std::string out, unread;
    std::vector<double> samples;
};

Gradient choose(const std::string& answers, int count, double step) {
    Gradient result;
    result.samples.assign(static_cast<std::size_t>(std::max(count, 0)) + 1, UNTOUCHED);
    result.out = play_console(answers, [&] { CalcGrad(&count, &step, result.samples.data()); }).out;
    result.unread = unread_answers();
    return result;
}

} // namespace

TEST(CalcGrad, OneAsksForAConstantGradient) {
    const Gradient g = choose("1\n-250.5\nnext\n", 5, 1e-3);
    EXPECT_EQ(g.out, GRADIENT_MENU + " Constant gradient strength [Hz/cm] : \n");
    EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_OK);
    for (int k = 0; k < 5; ++k)
        EXPECT_DOUBLE_EQ(g.samples[k], TWO_PI * -250.5);
    EXPECT_EQ(g.samples[5], UNTOUCHED);
    EXPECT_EQ(g.unread, "next\n");
}

TEST(CalcGrad, TwoAsksForACosineSpiral) {
    const int N = 7;
    const double h = 2e-4, A = 3.5, n = 4.25, T = N * h, w = TWO_PI * n;
    const Gradient g = choose("2\n3.5\n4.25\n", N, h);
    EXPECT_EQ(g.out, GRADIENT_MENU + cosine_text + "A    : \nn    : \n");
    for (int k = 0; k < N; ++k) {
        const double phase = w * k / N;
        const double expected = -A * (std::cos(phase) + w * (1 - double(k) / N) * std::sin(phase)) / T;
        EXPECT_NEAR(g.samples[k], expected, 1e-12 * A * w / T) << k;
    }
    EXPECT_EQ(g.samples[N], UNTOUCHED);
}

TEST(CalcGrad, ThreeAsksForASineSpiral) {
    const int N = 9;
    const double h = 1e-4, A = 2, n = 3, T = N * h, w = TWO_PI * n;
    const Gradient g = choose("3\n2\n3\n", N, h);
    EXPECT_EQ(g.out, GRADIENT_MENU + sine_text + "A : n : ");
    for (int k = 0; k < N; ++k) {
        const double phase = w * k / N;
        const double expected = A * (w * (1 - double(k) / N) * std::cos(phase) - std::sin(phase)) / T;
        EXPECT_NEAR(g.samples[k], expected, 1e-12 * A * w / T) << k;
    }
}

TEST(CalcGrad, AnUnreadableAnswerIsStatusFourAndUsedUp) {
    for (const char* answers : {"x\n", "1\nx\n", "2\nx\n", "2\n1\nx\n", "3\nx\n", "3\n1\nx\n"}) {
        fieldgrad_last_status = FIELDGRAD_OK;
        const Gradient g = choose(std::string(answers) + "left\n", 3, 1e-3);
        EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_IO) << answers;
        EXPECT_EQ(g.samples, std::vector<double>(4, UNTOUCHED)) << answers;
        EXPECT_EQ(g.unread, "left\n") << answers;
    }
    for (const char* answers : {"", "1\n", "2\n", "2\n1\n", "3\n", "3\n1\n"}) {
        fieldgrad_last_status = FIELDGRAD_OK;
        choose(answers, 3, 1e-3);
        EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_IO) << answers;
    }
}

TEST(CalcGrad, AnotherNumberIsStatusThree) {
    for (const char* answers : {"0\n", "4\n", "-1\n"}) {
        const Gradient g = choose(answers, 3, 1e-3);
        EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_BADARG);
        EXPECT_EQ(g.out, GRADIENT_MENU);
        EXPECT_EQ(g.samples, std::vector<double>(4, UNTOUCHED));
    }
}

TEST(CalcGrad, TheComputationsStatusIsKept) {
    choose("1\n5\n", 0, 1e-3);
    EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_BADLEN);
    choose("1\n5\n", -4, 1e-3);
    EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_BADLEN);
    choose("2\n5\n1\n", 3, 0.0);
    EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_BADARG);
    choose("3\n5\n1\n", 0, 1e-3);
    EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_BADARG);
}

TEST(CalcGrad, AMissingPointerIsStatusOneAndAsksNothing) {
    const int count = 2;
    const double step = 1e-3;
    double out[2] = {1, 2};
    const ConsoleOutput printed = play_console("1\n5\n", [&] {
        for (const auto dialogue : {CalcGrad, gradproc1, gradproc2, gradproc3}) {
            fieldgrad_last_status = FIELDGRAD_OK;
            dialogue(nullptr, &step, out);
            EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_NULLPTR);
            fieldgrad_last_status = FIELDGRAD_OK;
            dialogue(&count, nullptr, out);
            EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_NULLPTR);
            fieldgrad_last_status = FIELDGRAD_OK;
            dialogue(&count, &step, nullptr);
            EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_NULLPTR);
        }
    });
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(unread_answers(), "1\n5\n");
    EXPECT_EQ(out[0], 1);
}
