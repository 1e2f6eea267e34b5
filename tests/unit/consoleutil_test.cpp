#include "consoleutil.h"

#include "support/console_script.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <functional>

namespace {

using namespace kor;
using namespace kor_test;

/// Runs `action` on the answers; what of them it left unread.
std::string left_by(const std::string& answers, const std::function<void()>& action) {
    play_console(answers, action);
    return unread_answers();
}

void expect_int(int expected) {
    int value = 0;
    EXPECT_EQ(console_read_int(&value), 1);
    EXPECT_EQ(value, expected);
    EXPECT_FALSE(console_at_end());
}

void expect_no_int() {
    int value = -77;
    EXPECT_EQ(console_read_int(&value), 0);
    EXPECT_EQ(value, -77);
}

void expect_double(double expected) {
    double value = 0;
    EXPECT_EQ(console_read_double(&value), 1);
    EXPECT_EQ(value, expected);
}

void expect_line(const std::string& expected, std::size_t cap = 64) {
    char line[256];
    EXPECT_EQ(console_read_line(line, cap), 1);
    EXPECT_EQ(line, expected);
    EXPECT_FALSE(console_at_end());
}

void expect_text(const std::string& expected, std::size_t cap = 64) {
    char text[256];
    EXPECT_EQ(console_read_text(text, cap), 1);
    EXPECT_EQ(text, expected);
    EXPECT_FALSE(console_at_end());
}

void expect_word(const std::string& expected, std::size_t cap = 64) {
    char word[256];
    EXPECT_EQ(console_read_word(word, cap), 1);
    EXPECT_EQ(word, expected);
}

} // namespace

TEST(ReadInt, ConsumesItsLineEndAndNothingOfTheNextLine) {
    EXPECT_EQ(left_by("12\nnext\n", [] { expect_int(12); }), "next\n");
    EXPECT_EQ(left_by("12  \t\r\nnext\n", [] { expect_int(12); }), "next\n");
    EXPECT_EQ(left_by("12\n\nnext\n", [] { expect_int(12); }), "\nnext\n");
}

TEST(ReadInt, LeavesWhatElseStandsInItsLine) {
    EXPECT_EQ(left_by("12 abc\n", [] { expect_int(12); }), "abc\n");
    EXPECT_EQ(left_by("12abc\n", [] { expect_int(12); }), "abc\n");
    EXPECT_EQ(left_by("1.5\n", [] { expect_int(1); }), ".5\n");
}

TEST(ReadInt, SkipsBlankLinesAndTakesSigns) {
    play_console("\n \r\n\t -3\n+4\n007\n", [] {
        expect_int(-3);
        expect_int(4);
        expect_int(7);
    });
}

TEST(ReadInt, ReadsSeveralNumbersOfOneLine) {
    EXPECT_EQ(left_by("1 2 3\nrest",
                      [] {
                          expect_int(1);
                          expect_int(2);
                          expect_int(3);
                      }),
              "rest");
}

TEST(ReadInt, LeavesUnreadWhatIsNoNumber) {
    EXPECT_EQ(left_by("\n abc\n", [] { expect_no_int(); }), "abc\n");
    EXPECT_EQ(left_by("-\n", [] { expect_no_int(); }), "-\n");
    EXPECT_EQ(left_by("+x\n", [] { expect_no_int(); }), "+x\n");
    EXPECT_EQ(left_by("--5\n", [] { expect_no_int(); }), "--5\n");
    EXPECT_EQ(left_by(".5\n", [] { expect_no_int(); }), ".5\n");
}

TEST(ReadInt, IsCutToTheRangeOfInt) {
    play_console("2147483647 2147483648 99999999999999999999 -2147483648 -99999999999999999999\n", [] {
        expect_int(INT_MAX);
        expect_int(INT_MAX);
        expect_int(INT_MAX);
        expect_int(INT_MIN);
        expect_int(INT_MIN);
    });
}

TEST(ReadInt, TakesANumberThatEndsTheInput) {
    play_console("5", [] {
        expect_int(5);
        expect_no_int();
        EXPECT_TRUE(console_at_end());
        expect_no_int();
        EXPECT_TRUE(console_at_end());
    });
}

TEST(ReadInt, MeetsTheEndBehindBlankLines) {
    play_console("\n  \n", [] {
        expect_no_int();
        EXPECT_TRUE(console_at_end());
    });
    play_console("x", [] {
        expect_no_int();
        EXPECT_FALSE(console_at_end());
    });
}

TEST(ReadDouble, TakesDecimalNumbers) {
    play_console("1 -2.5 +.5 3. 1e3 -1.25E-2 0.1e+1\n", [] {
        expect_double(1.0);
        expect_double(-2.5);
        expect_double(0.5);
        expect_double(3.0);
        expect_double(1000.0);
        expect_double(-0.0125);
        expect_double(1.0);
    });
}

TEST(ReadDouble, RoundsLikeALiteral) {
    play_console("0.1 2.2250738585072014e-308 123456789012345678901234567890\n", [] {
        expect_double(0.1);
        expect_double(2.2250738585072014e-308);
        expect_double(123456789012345678901234567890.0);
    });
}

TEST(ReadDouble, StopsWhereTheNumberStops) {
    EXPECT_EQ(left_by("1.5 ms\n", [] { expect_double(1.5); }), "ms\n");
    EXPECT_EQ(left_by("1.5.5\n", [] { expect_double(1.5); }), ".5\n");
    EXPECT_EQ(left_by("1e\n", [] { expect_double(1); }), "e\n");
    EXPECT_EQ(left_by("1e+\n", [] { expect_double(1); }), "e+\n");
    EXPECT_EQ(left_by("0x10\n", [] { expect_double(0); }), "x10\n");
    EXPECT_EQ(left_by("2,5\n", [] { expect_double(2); }), ",5\n");
}

TEST(ReadDouble, LeavesUnreadWhatIsNoNumber) {
    for (const char* answer : {"abc\n", "-\n", ".\n", "-.\n", "e5\n", "nan\n", "inf\n", "-inf\n"})
        EXPECT_EQ(left_by(answer,
                          [] {
                              double value = -77;
                              EXPECT_EQ(console_read_double(&value), 0);
                              EXPECT_EQ(value, -77);
                          }),
                  answer);
}

TEST(ReadDouble, TakesNoNumberBeyondTheRangeButDropsIt) {
    const std::string many_digits(400, '9');
    for (const std::string& answer : {std::string("1e999"), std::string("-1e309"), many_digits}) {
        EXPECT_EQ(left_by(answer + "\r\nnext\n",
                          [] {
                              double value = -77;
                              EXPECT_EQ(console_read_double(&value), 0);
                              EXPECT_EQ(value, -77);
                              EXPECT_FALSE(console_at_end());
                              console_discard_line();
                          }),
                  "next\n");
    }
    play_console("1.7976931348623157e308 -1e-400 4.9406564584124654e-324\n", [] {
        expect_double(1.7976931348623157e308);
        expect_double(-0.0);
        expect_double(4.9406564584124654e-324);
    });
}

TEST(ReadDouble, ConsumesItsLineEnd) {
    EXPECT_EQ(left_by("1.5\r\nnext\n", [] { expect_double(1.5); }), "next\n");
}

TEST(ReadWord, IsTheNextBlankFreeText) {
    EXPECT_EQ(left_by("\n  I1x*2.txt more\n", [] { expect_word("I1x*2.txt"); }), "more\n");
    EXPECT_EQ(left_by("name \r\nnext\n", [] { expect_word("name"); }), "next\n");
}

TEST(ReadWord, LeavesTheRestOfALongerWord) {
    EXPECT_EQ(left_by("abcdef\n", [] { expect_word("abc", 4); }), "def\n");
    EXPECT_EQ(left_by("abc\nnext\n", [] { expect_word("abc", 4); }), "next\n");
}

TEST(ReadWord, IsEmptyAtTheEnd) {
    play_console(" \n", [] {
        char word[8] = "before";
        EXPECT_EQ(console_read_word(word, sizeof word), 0);
        EXPECT_STREQ(word, "");
        EXPECT_TRUE(console_at_end());
    });
}

TEST(ReadLine, KeepsTheLineEndAsItStands) {
    play_console("one\ntwo \r\n\nlast", [] {
        expect_line("one\n");
        expect_line("two \r\n");
        expect_line("\n");
        expect_line("last");
        char line[8] = "before";
        EXPECT_EQ(console_read_line(line, sizeof line), 0);
        EXPECT_STREQ(line, "");
        EXPECT_TRUE(console_at_end());
    });
}

TEST(ReadLine, ContinuesALongerLineInTheNextRead) {
    play_console("abcdefg\nxyz\n", [] {
        expect_line("abc", 4);
        expect_line("def", 4);
        expect_line("g\n", 4);
        expect_line("xyz", 4);
        expect_line("\n", 4);
    });
}

TEST(ReadText, HasNoLineEnd) {
    play_console("one\ntwo \r\n\n\r\nlast", [] {
        expect_text("one");
        expect_text("two ");
        expect_text("");
        expect_text("");
        expect_text("last");
        char text[8] = "before";
        EXPECT_EQ(console_read_text(text, sizeof text), 0);
        EXPECT_STREQ(text, "");
        EXPECT_TRUE(console_at_end());
    });
}

TEST(ReadText, FillsItsBufferBeforeItLeavesARest) {
    play_console("abc\nxyz\r\nlonger\nlast\r", [] {
        expect_text("abc", 4);
        expect_text("xyz", 4);
        expect_text("lon", 4);
        expect_text("ger", 4);
        expect_text("last", 16);
    });
}

TEST(ReadText, FollowsANumberOnAFreshLine) {
    play_console("3\nmy name\n", [] {
        expect_int(3);
        expect_text("my name");
    });
    play_console("3\n\n", [] {
        expect_int(3);
        expect_text("");
    });
}

TEST(DiscardLine, DropsTheRestOfALine) {
    EXPECT_EQ(left_by("abc def\nnext\n",
                      [] {
                          expect_no_int();
                          console_discard_line();
                      }),
              "next\n");
    EXPECT_EQ(left_by("3 abc\nnext\n",
                      [] {
                          expect_int(3);
                          console_discard_line();
                      }),
              "next\n");
    EXPECT_EQ(left_by("abcdefg\nnext\n",
                      [] {
                          expect_text("abc", 4);
                          console_discard_line();
                      }),
              "next\n");
}

TEST(DiscardLine, SparesTheNextLineAfterAFinishedAnswer) {
    const auto twice = [] {
        console_discard_line();
        console_discard_line();
    };
    EXPECT_EQ(left_by("3\nnext\n",
                      [&] {
                          expect_int(3);
                          twice();
                      }),
              "next\n");
    EXPECT_EQ(left_by("1.5\nnext\n",
                      [&] {
                          expect_double(1.5);
                          twice();
                      }),
              "next\n");
    EXPECT_EQ(left_by("word\nnext\n",
                      [&] {
                          expect_word("word");
                          twice();
                      }),
              "next\n");
    EXPECT_EQ(left_by("abc\nnext\n",
                      [&] {
                          expect_text("abc", 4);
                          twice();
                      }),
              "next\n");
    EXPECT_EQ(left_by("a\nnext\n",
                      [&] {
                          expect_line("a\n");
                          twice();
                      }),
              "next\n");
}

TEST(DiscardLine, DropsANonNumberThatBlankLinesPrecede) {
    EXPECT_EQ(left_by("3\n\nabc\nnext\n",
                      [] {
                          expect_int(3);
                          expect_no_int();
                          console_discard_line();
                      }),
              "next\n");
}

TEST(DiscardLine, EndsAtTheEndOfInput) {
    play_console("abc", [] {
        expect_no_int();
        console_discard_line();
        EXPECT_TRUE(console_at_end());
        console_discard_line();
        EXPECT_TRUE(console_at_end());
    });
}

TEST(WaitForEnter, ReadsThroughTheLineEnd) {
    EXPECT_EQ(left_by("\nnext\n", [] { console_wait_for_enter(); }), "next\n");
    EXPECT_EQ(left_by("anything at all\r\nnext\n", [] { console_wait_for_enter(); }), "next\n");
}

TEST(WaitForEnter, WaitsForALineOfItsOwnAfterANumber) {
    EXPECT_EQ(left_by("3\n\nnext\n",
                      [] {
                          expect_int(3);
                          console_discard_line();
                          console_wait_for_enter();
                          console_discard_line();
                      }),
              "next\n");
}

TEST(WaitForEnter, ReturnsAtTheEndOfInput) {
    play_console("", [] {
        console_wait_for_enter();
        EXPECT_TRUE(console_at_end());
        console_wait_for_enter();
        EXPECT_TRUE(console_at_end());
    });
}

TEST(WaitForEnter, FlushesThePrompt) {
    EXPECT_EQ(play_console("\n",
                           [] {
                               std::printf("Press Enter to continue...");
                               console_wait_for_enter();
                           })
                  .out,
              "Press Enter to continue...");
}

TEST(ConsoleReading, TakesTextOfManyLinesAcrossBuffers) {
    std::string script;
    for (int i = 0; i < 3000; ++i)
        script += std::to_string(i) + "\n-\n";
    EXPECT_EQ(left_by(script,
                      [] {
                          for (int i = 0; i < 3000; ++i) {
                              expect_int(i);
                              expect_no_int();
                              console_discard_line();
                          }
                      }),
              "");
}
