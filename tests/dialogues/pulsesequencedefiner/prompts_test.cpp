#include "pulsesequencedefiner/prompts.h"

#include "support/console_script.h"

#include <gtest/gtest.h>

#include <climits>

using namespace kor;
using namespace kor_test;

namespace {

const std::string whole = "Please enter a whole number.\n";
const std::string numeric = "Please enter a numeric value.\n";

struct IntAnswer {
    int read = -1, value = 77;
    std::string out, unread;
};

IntAnswer ask_int(const std::string& answers) {
    IntAnswer answer;
    answer.out = play_console(answers, [&] { answer.read = read_int_prompt("n : ", &answer.value); }).out;
    answer.unread = unread_answers();
    return answer;
}

struct DoubleAnswer {
    int read = -1;
    double value = 77;
    std::string out;
};

DoubleAnswer ask_double(const std::string& answers) {
    DoubleAnswer answer;
    answer.out = play_console(answers, [&] { answer.read = read_double_prompt("x : ", &answer.value); }).out;
    return answer;
}

} // namespace

TEST(ReadIntPrompt, ReadsOneLine) {
    const IntAnswer answer = ask_int("  -12 \nleft\n");
    EXPECT_EQ(answer.read, 1);
    EXPECT_EQ(answer.value, -12);
    EXPECT_EQ(answer.out, "n : ");
    EXPECT_EQ(answer.unread, "left\n");
}

TEST(ReadIntPrompt, AsksUntilTheWholeLineIsANumber) {
    for (const std::string bad : {"x", "", "   ", "1.5", "12 13", "3x", "0x10", "99999999999999999999", "--1",
                                  "2147483648", "-2147483649"}) {
        const IntAnswer answer = ask_int(bad + "\n5\n");
        EXPECT_EQ(answer.out, "n : " + whole + "n : ") << bad;
        EXPECT_EQ(answer.value, 5) << bad;
    }
}

TEST(ReadIntPrompt, TakesTheWholeRangeOfInt) {
    EXPECT_EQ(ask_int("2147483647\n").value, INT_MAX);
    EXPECT_EQ(ask_int("-2147483648\n").value, INT_MIN);
    EXPECT_EQ(ask_int("+7\r\n").value, 7);
}

TEST(ReadIntPrompt, AVeryLongLineIsOneAnswer) {
    const std::string line(5000, '1');
    const IntAnswer answer = ask_int(line + "\n5\nleft\n");
    EXPECT_EQ(answer.out, "n : " + whole + "n : ");
    EXPECT_EQ(answer.value, 5);
    EXPECT_EQ(answer.unread, "left\n");
}

TEST(ReadIntPrompt, Counts255Characters) {
    EXPECT_EQ(ask_int(std::string(254, '0') + "7\n").value, 7);
    EXPECT_EQ(ask_int(std::string(255, '0') + "7\n").value, 0);
}

TEST(ReadIntPrompt, TheLastLineNeedsNoLineEnd) {
    EXPECT_EQ(ask_int("8").value, 8);
}

TEST(ReadIntPrompt, AnEndedInputIsTriedAgainAndThenLeft) {
    const IntAnswer answer = ask_int("");
    EXPECT_EQ(answer.read, 0);
    EXPECT_EQ(answer.value, 77);
    EXPECT_EQ(answer.out, "n : \nn : \n");
    EXPECT_EQ(ask_int("x\n").out, "n : " + whole + "n : \nn : \n");
}

TEST(ReadDoublePrompt, ReadsDecimalNumbers) {
    EXPECT_EQ(ask_double("-2.5e-3\n").value, -2.5e-3);
    EXPECT_EQ(ask_double(" .5\n").value, 0.5);
    EXPECT_EQ(ask_double("7\n").value, 7);
    EXPECT_EQ(ask_double("1e-320\n").value, 1e-320);
    EXPECT_EQ(ask_double("").read, 0);
}

TEST(ReadDoublePrompt, AsksAgainForAnythingElse) {
    for (const std::string bad :
         {"x", "", "nan", "inf", "-infinity", "1e999", "0x1p3", "1,5", "1 2", "e5", "."}) {
        const DoubleAnswer answer = ask_double(bad + "\n0.25\n");
        EXPECT_EQ(answer.out, "x : " + numeric + "x : ") << bad;
        EXPECT_EQ(answer.value, 0.25) << bad;
    }
}

TEST(ReadLinePrompt, KeepsBlanksAndDropsWhatIsTooLong) {
    char line[8];
    const ConsoleOutput printed = play_console("  a b \n12345678\nleft\n", [&] {
        EXPECT_EQ(read_line_prompt("note: ", line, sizeof line), 1);
        EXPECT_STREQ(line, "  a b ");
        EXPECT_EQ(read_line_prompt("note: ", line, sizeof line), 1);
        EXPECT_STREQ(line, "1234567");
    });
    EXPECT_EQ(printed.out, "note: note: ");
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(ReadTrimmedLinePrompt, DropsBlanksAtBothEnds) {
    char line[20];
    play_console("\t my wave.bin \r\n \t \n\n", [&] {
        read_trimmed_line_prompt("", line, sizeof line);
        EXPECT_STREQ(line, "my wave.bin");
        EXPECT_EQ(read_trimmed_line_prompt("", line, sizeof line), 1);
        EXPECT_STREQ(line, "");
        EXPECT_EQ(read_trimmed_line_prompt("", line, sizeof line), 1);
        EXPECT_STREQ(line, "");
        EXPECT_EQ(read_trimmed_line_prompt("", line, sizeof line), 0);
    });
}
