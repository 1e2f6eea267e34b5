#include "kormodel/text_lines.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

using namespace kor;

namespace {

/// The lines of a text, read through a file.
std::vector<std::string> lines_of(const std::string& text, int* count = nullptr) {
    std::FILE* file = std::tmpfile();
    std::fwrite(text.data(), 1, text.size(), file);
    std::rewind(file);
    char line[KOR_LINE_SIZE];
    char* start = nullptr;
    int number = 0;
    std::vector<std::string> lines;
    while (read_model_line(file, line, &start, &number) == ModelLine::text)
        lines.push_back(start);
    std::fclose(file);
    if (count)
        *count = number;
    return lines;
}

std::string message_of(const ModelFileReader& reader) {
    return reader.errbuf;
}

} // namespace

TEST(ModelLine, IsTrimmedOfEveryKindOfWhiteSpace) {
    EXPECT_EQ(lines_of(" \t\v\f\rndx: 5 \t\v\f\r\n"), std::vector<std::string>{"ndx: 5"});
    EXPECT_EQ(lines_of("ndx: 5\r\nndy: 1\r\n"), (std::vector<std::string>{"ndx: 5", "ndy: 1"}));
    EXPECT_EQ(lines_of("without line end"), std::vector<std::string>{"without line end"});
}

TEST(ModelLine, EndsAtTheCommentSign) {
    EXPECT_EQ(lines_of("ndx: 5 # voxels # more\n#whole\n  # indented\n"),
              (std::vector<std::string>{"ndx: 5", "", ""}));
}

TEST(ModelLine, CountsEveryLine) {
    int count = 0;
    lines_of("a: 1\n\n# c\nb: 2\n", &count);
    EXPECT_EQ(count, 4);
    lines_of("", &count);
    EXPECT_EQ(count, 0);
}

TEST(ModelLine, LongerThan2047CharactersIsReadInPieces) {
    int count = 0;
    const std::vector<std::string> pieces = lines_of(std::string(2047, 'a') + "b\nc\n", &count);
    EXPECT_EQ(pieces, (std::vector<std::string>{std::string(2047, 'a'), "b", "c"}));
    EXPECT_EQ(count, 3);
    EXPECT_EQ(lines_of(std::string(2046, 'a') + "\nc\n").size(), 2u);
    EXPECT_EQ(lines_of(std::string(2047, 'a') + "\nc\n").size(), 3u); // the line end is a piece of its own
}

TEST(ModelLine, ACommentEndsWithItsPiece) {
    const std::vector<std::string> pieces = lines_of("a: 1 #" + std::string(2041, 'x') + "tail\n");
    EXPECT_EQ(pieces, (std::vector<std::string>{"a: 1", "tail"}));
}

TEST(MatchKey, GivesTheValueBehindTheColon) {
    EXPECT_STREQ(match_key("ndx: 5", "ndx"), "5");
    EXPECT_STREQ(match_key("ndx:5", "ndx"), "5");
    EXPECT_STREQ(match_key("ndx \t :  \t5 6", "ndx"), "5 6");
    EXPECT_STREQ(match_key("ndx:", "ndx"), "");
    EXPECT_STREQ(match_key("a:b:c", "a"), "b:c");
}

TEST(MatchKey, RefusesOtherKeys) {
    EXPECT_EQ(match_key("ndx 5", "ndx"), nullptr);
    EXPECT_EQ(match_key("ndx", "ndx"), nullptr);
    EXPECT_EQ(match_key("Ndx: 5", "ndx"), nullptr);
    EXPECT_EQ(match_key("ndxx: 5", "ndx"), nullptr);
    EXPECT_EQ(match_key("nd: 5", "ndx"), nullptr);
    EXPECT_EQ(match_key(": 5", "ndx"), nullptr);
    EXPECT_EQ(match_key("sector_type: 1 1", "sector"), nullptr);
}

TEST(ParseInt, TakesOneDecimalInteger) {
    const struct {
        const char* text;
        int value;
    } accepted[] = {{"5", 5},
                    {"+5", 5},
                    {"-5", -5},
                    {" \t5 \v", 5},
                    {"007", 7},
                    {"-0", 0},
                    {"2147483647", 2147483647},
                    {"-2147483648", -2147483647 - 1}};
    for (const auto& row : accepted) {
        int value = 99;
        EXPECT_EQ(parse_int_strict(row.text, &value), 1) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
}

TEST(ParseInt, RefusesEverythingElse) {
    for (const char* text : {"", " ", "x", "5x", "5 6", "5.0", "1e3", "0x10", "--5", "+ 5", "2147483648",
                             "-2147483649", "99999999999999999999999"}) {
        int value = 99;
        EXPECT_EQ(parse_int_strict(text, &value), 0) << text;
        EXPECT_EQ(value, 99) << text;
    }
}

TEST(ParseDouble, TakesOneReal) {
    const struct {
        const char* text;
        double value;
    } accepted[] = {{"5", 5.0},        {"-.5", -0.5},
                    {"5.", 5.0},       {"1e-05", 1e-5},
                    {"+2.5E+3", 2500}, {" 1 \t", 1.0},
                    {"inf", HUGE_VAL}, {"-INF", -HUGE_VAL},
                    {"1e-400", 0.0},   {"1.7976931348623157e308", 1.7976931348623157e308}};
    for (const auto& row : accepted) {
        double value = 99.0;
        EXPECT_EQ(parse_double_strict(row.text, &value), 1) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
    double value = 0.0;
    EXPECT_EQ(parse_double_strict("nan", &value), 1);
    EXPECT_TRUE(std::isnan(value));
}

TEST(ParseDouble, RefusesEverythingElse) {
    for (const char* text : {"", " ", "x", "5x", "5 6", "1,5", "1e", "1e400", "-1e400", "--1", ".", "e5"}) {
        double value = 99.0;
        EXPECT_EQ(parse_double_strict(text, &value), 0) << text;
        EXPECT_EQ(value, 99.0) << text;
    }
}

TEST(ParseList, TakesExactlyTheNumbersAskedFor) {
    int values[4] = {-1, -1, -1, -1};
    EXPECT_EQ(parse_int_list(" 7\t8 \v 9 ", 3, values, 3), 1);
    EXPECT_EQ(values[0], -1);
    EXPECT_EQ(values[1], 7);
    EXPECT_EQ(values[2], 8);
    EXPECT_EQ(values[3], 9);
    for (const char* text : {"", "7 8", "7 8 9 10", "7 8 x", "7 8 9x", "7,8,9", "7 8-9", "7 8 2147483648"})
        EXPECT_EQ(parse_int_list(text, 3, values, 3), 0) << text;
}

TEST(ParseList, ReadsReals) {
    double values[3] = {0.0, 0.0, 0.0};
    EXPECT_EQ(parse_double_list("-1e2 .5", 2, values, 2), 1);
    EXPECT_EQ(values[1], -100.0);
    EXPECT_EQ(values[2], 0.5);
    for (const char* text : {"1", "1 2 3", "1 x", "1.5.5", "1 1e400", "1 2;"})
        EXPECT_EQ(parse_double_list(text, 2, values, 2), 0) << text;
}

TEST(ParseList, StoresNothingBeyondTheCapacity) {
    int values[4] = {0, 0, 0, -1};
    EXPECT_EQ(parse_int_list("1 2 3 4 5", 5, values, 2), 1);
    EXPECT_EQ(values[1], 1);
    EXPECT_EQ(values[2], 2);
    EXPECT_EQ(values[3], -1);
}

TEST(ParseList, OfNothingIsAnEmptyText) {
    int values[2] = {-1, -1};
    for (int count : {0, -3}) {
        EXPECT_EQ(parse_int_list("", count, values, 1), 1);
        EXPECT_EQ(parse_int_list(" ", count, values, 1), 1);
        EXPECT_EQ(parse_int_list("1", count, values, 1), 0);
    }
    EXPECT_EQ(values[1], -1);
}

TEST(ScanNumber, StopsBehindTheNumber) {
    const char* text = " 12abc";
    int value = 0;
    EXPECT_EQ(scan_int(&text, &value), 1);
    EXPECT_EQ(value, 12);
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(scan_int(&text, &value), 0);
    EXPECT_STREQ(text, "abc");
    const char* real = "-2.5e1 rest";
    double number = 0.0;
    EXPECT_EQ(scan_double(&real, &number), 1);
    EXPECT_EQ(number, -25.0);
    EXPECT_STREQ(real, " rest");
}

TEST(CountWords, SeparatesAtBlankTabAndLineEndsOnly) {
    EXPECT_EQ(count_words(""), 0);
    EXPECT_EQ(count_words(" \t\r\n"), 0);
    EXPECT_EQ(count_words("a"), 1);
    EXPECT_EQ(count_words(" a\tb\rc\nd "), 4);
    EXPECT_EQ(count_words("a\vb\fc"), 1);
}

TEST(CopyTruncated, KeepsWhatFits) {
    char out[4] = "xyz";
    copy_truncated("ab", out, sizeof out);
    EXPECT_STREQ(out, "ab");
    copy_truncated("abcdef", out, sizeof out);
    EXPECT_STREQ(out, "abc");
    char own[8] = "abcdef";
    copy_truncated(own, own, 4);
    EXPECT_STREQ(own, "abc");
}

TEST(LineError, BeginsWithTheLineNumber) {
    char message[64] = "";
    const ModelFileReader reader{message, sizeof message, 17, 0, {}};
    EXPECT_EQ(line_error(reader, "bad %s", "ndx"), KOR_MODEL_ERR_PARSE);
    EXPECT_EQ(message_of(reader), "line 17: bad ndx");
}

TEST(FormatVersion, IsOne) {
    char message[64] = "";
    const ModelFileReader reader{message, sizeof message, 3, 0, {}};
    EXPECT_EQ(read_format_version(reader, "1"), KOR_MODEL_OK);
    EXPECT_EQ(read_format_version(reader, "+01 "), KOR_MODEL_OK);
    EXPECT_EQ(message_of(reader), "");
    for (const char* value : {"2", "0", "", "one", "1.0", "1 1"}) {
        message[0] = '\0';
        EXPECT_EQ(read_format_version(reader, value), KOR_MODEL_ERR_PARSE);
        EXPECT_EQ(message_of(reader), "line 3: unsupported format_version") << value;
    }
}

TEST(CopyValue, ACutTextKeepsNoBlanksAtItsEnd) {
    char out[8];
    copy_value("a bc", out, sizeof out);
    EXPECT_STREQ(out, "a bc");
    copy_value("a      bcdefg", out, sizeof out);
    EXPECT_STREQ(out, "a");
    copy_value("abcdefghij", out, sizeof out);
    EXPECT_STREQ(out, "abcdefg");
}

TEST(FindLost, NamesTheFirstCharacterThatReadingBackLoses) {
    const auto behind = [](const char* found) { return std::string(found ? found : "<none>"); };
    for (const char* value : {"", "a", "a b\tc", "a:b"})
        EXPECT_EQ(find_lost_in_text(value), nullptr) << value;
    EXPECT_EQ(find_lost_in_text(" a "), nullptr);
    EXPECT_EQ(behind(find_lost_in_text("a #b\nc")), "#b\nc");
    EXPECT_EQ(behind(find_lost_in_text("a\n#")), "\n#");
    for (const char* value : {"", "a", "a b", "C:/a b/c"})
        EXPECT_EQ(find_lost_in_path(value), nullptr) << value;
    EXPECT_EQ(behind(find_lost_in_path(" a")), " a");
    EXPECT_EQ(behind(find_lost_in_path("a b\r")), "\r");
    EXPECT_EQ(behind(find_lost_in_path("a#")), "#");
    for (const char* value : {"", "a", "../a/b"})
        EXPECT_EQ(find_lost_in_word(value), nullptr) << value;
    EXPECT_EQ(behind(find_lost_in_word("a b#")), " b#");
    EXPECT_EQ(behind(find_lost_in_word("a#b")), "#b");
}
