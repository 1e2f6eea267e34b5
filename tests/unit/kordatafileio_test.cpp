#include "kordatafileio.h"

#include "korplatform.h"
#include "modelfiles.h"
#include "support/console_script.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace kor;
using namespace kor_test;

namespace {

const std::vector<double> three = {1, 2.5, -0.001};
const std::string no_such_file = "No such file or directory\n";

const std::string out_menu = "Write real-array to ASCII-file:\n"
                             "      1. Normal ASCII file\n"
                             "      2. SGplot file format\n"
                             "      3. Cancel file output\n"
                             "Your choice [1..3] : ";
const std::string in_menu = "Read ASCII-file containing reals:\n"
                            "      1. Normal ASCII file\n"
                            "      2. SGplot file format\n"
                            "      3. Cancel file input\n"
                            "Your choice [1..3] : ";

/// Runs a status operation and returns what it wrote to standard error.
template <typename Operation> std::string error_text(dataio_status expected, Operation operation) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(operation(), expected);
    return testing::internal::GetCapturedStderr();
}

ConsoleOutput write_real_array(const std::string& answers, const std::vector<double>& values) {
    const int count = static_cast<int>(values.size());
    return play_console(answers, [&] { RealArrayOut(&count, values.data()); });
}

ConsoleOutput read_real_array(const std::string& answers, std::vector<double>& values) {
    const int count = static_cast<int>(values.size());
    return play_console(answers, [&] { RealArrayIn(&count, values.data()); });
}

} // namespace

TEST(AsciiOutStatus, WritesOneValuePerLine) {
    TempTree tree;
    EXPECT_EQ(AsciiOut_status(3, three.data(), "series.txt"), DATAIO_OK);
    EXPECT_EQ(tree.read("series.txt"), "1.000000000000E+00\n2.500000000000E+00\n-1.000000000000E-03\n");
}

TEST(AsciiOutStatus, NoValuesMakeAnEmptyFile) {
    TempTree tree;
    tree.write("series.txt", "left from before\n");
    EXPECT_EQ(AsciiOut_status(0, three.data(), "series.txt"), DATAIO_OK);
    EXPECT_EQ(tree.read("series.txt"), "");
}

TEST(SGFileOutStatus, WritesCurveIndexAndValue) {
    TempTree tree;
    EXPECT_EQ(SGFileOut_status(3, three.data(), "series.sg"), DATAIO_OK);
    EXPECT_EQ(tree.read("series.sg"), "1   0.000000000000E+00   1.000000000000E+00\n"
                                      "1   1.000000000000E+00   2.500000000000E+00\n"
                                      "1   2.000000000000E+00   -1.000000000000E-03\n");
}

TEST(SGXYFileOutStatus, WritesTheValueBeforeItsX) {
    TempTree tree;
    EXPECT_EQ(SGXYFileOut_status(3, three.data(), "series.xy", -0.5, 0.25), DATAIO_OK);
    EXPECT_EQ(tree.read("series.xy"), "1   1.000000000000E+00   -5.000000000000E-01\n"
                                      "1   2.500000000000E+00   -2.500000000000E-01\n"
                                      "1   -1.000000000000E-03   0.000000000000E+00\n");
}

TEST(SGFileInStatus, ReadsBackWhatWasWritten) {
    TempTree tree;
    std::vector<double> values(3, 0.0);
    SGFileOut_status(3, three.data(), "series.sg");
    EXPECT_EQ(SGFileIn_status(3, values.data(), "series.sg"), DATAIO_OK);
    EXPECT_EQ(values, three);
}

TEST(SGFileInStatus, YieldsTheXValuesOfAnXYFile) {
    TempTree tree;
    std::vector<double> values(3, 9.0);
    SGXYFileOut_status(3, three.data(), "series.xy", -0.5, 0.25);
    EXPECT_EQ(SGFileIn_status(3, values.data(), "series.xy"), DATAIO_OK);
    EXPECT_EQ(values, (std::vector<double>{-0.5, -0.25, 0.0}));
}

TEST(AsciiInStatus, TwelveDecimalsSurviveTheFile) {
    TempTree tree;
    const unsigned seed = 4021;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> mantissa(-10, 10), exponent(-300, 300);
    std::vector<double> values(500);
    for (double& value : values)
        value = mantissa(random) * std::pow(10.0, exponent(random));
    std::vector<double> read(values.size(), 0.0);
    ASSERT_EQ(AsciiOut_status(500, values.data(), "series.txt"), DATAIO_OK);
    ASSERT_EQ(AsciiIn_status(500, read.data(), "series.txt"), DATAIO_OK);
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_NEAR(read[i], values[i], 5.1e-13 * std::fabs(values[i])) << i;
}

TEST(AsciiInStatus, IgnoresWhatFollowsTheLastItem) {
    TempTree tree;
    tree.write("series.txt", " 1\n\n2e1 -3\n4 trailing words\n");
    std::vector<double> values(3, 0.0);
    EXPECT_EQ(AsciiIn_status(3, values.data(), "series.txt"), DATAIO_OK);
    EXPECT_EQ(values, (std::vector<double>{1, 20, -3}));
}

TEST(AsciiInStatus, AShortFileLeavesItsElementsAndFails) {
    TempTree tree;
    tree.write("series.txt", "1\n2\n");
    std::vector<double> values(4, 7.0);
    const std::string error = error_text(DATAIO_ERR_IO, [&] {
        errno = EEXIST; // of an earlier call
        return AsciiIn_status(4, values.data(), "series.txt");
    });
    EXPECT_EQ(error, system_line("fscanf", PLATFORM_NO_DATA));
    EXPECT_EQ(values, (std::vector<double>{1, 2, 7, 7}));
}

TEST(AsciiInStatus, AWordAmongTheNumbersEndsTheSeries) {
    TempTree tree;
    tree.write("series.txt", "1\ntwo\n3\n");
    std::vector<double> values(3, 7.0);
    const std::string error =
        error_text(DATAIO_ERR_IO, [&] { return AsciiIn_status(3, values.data(), "series.txt"); });
    EXPECT_EQ(error, system_line("fscanf", PLATFORM_NO_DATA));
    EXPECT_EQ(values, (std::vector<double>{1, 7, 7}));
}

TEST(SGFileInStatus, ALineWithTwoNumbersEndsTheSeries) {
    TempTree tree;
    tree.write("series.sg", "1 0 5\n1 1\n");
    std::vector<double> values(2, 7.0);
    const std::string error =
        error_text(DATAIO_ERR_IO, [&] { return SGFileIn_status(2, values.data(), "series.sg"); });
    EXPECT_EQ(error.rfind("fscanf: ", 0), 0u) << error;
    EXPECT_EQ(values, (std::vector<double>{5, 7}));
}

TEST(SeriesFiles, AnOpenFailureIsReportedOnce) {
    TempTree tree;
    std::vector<double> values = three;
    const auto write_error = [&](auto operation) { return error_text(DATAIO_ERR_IO, operation); };
    EXPECT_EQ(write_error([&] { return AsciiOut_status(3, values.data(), "no/a"); }),
              "fopen(write): " + no_such_file);
    EXPECT_EQ(write_error([&] { return SGFileOut_status(3, values.data(), "no/a"); }),
              "fopen(write): " + no_such_file);
    EXPECT_EQ(write_error([&] { return SGXYFileOut_status(3, values.data(), "no/a", 0, 1); }),
              "fopen(write): " + no_such_file);
    EXPECT_EQ(write_error([&] { return AsciiIn_status(3, values.data(), "a"); }),
              "fopen(read): " + no_such_file);
    EXPECT_EQ(write_error([&] { return SGFileIn_status(3, values.data(), "a"); }),
              "fopen(read): " + no_such_file);
    EXPECT_EQ(values, three);
}

TEST(SeriesFiles, MissingPointersAreRefused) {
    double value = 4;
    EXPECT_EQ(AsciiOut_status(1, nullptr, "a"), DATAIO_ERR_NULLPTR);
    EXPECT_EQ(AsciiIn_status(1, &value, nullptr), DATAIO_ERR_NULLPTR);
    EXPECT_EQ(SGFileOut_status(1, &value, nullptr), DATAIO_ERR_NULLPTR);
    EXPECT_EQ(SGFileIn_status(1, nullptr, "a"), DATAIO_ERR_NULLPTR);
    EXPECT_EQ(SGXYFileOut_status(1, nullptr, "a", 0, 1), DATAIO_ERR_NULLPTR);
}

TEST(ScanInt, WritesThePromptAndReadsOneItem) {
    int number = 0;
    double real = 0;
    char word[256];
    const char* const no_prompt = nullptr;
    const ConsoleOutput printed = play_console("12 -2.5e1 pulse.txt\nnext\n", [&] {
        EXPECT_EQ(scan_int("n : ", &number), 1);
        EXPECT_EQ(scan_double(no_prompt, &real), 1);
        EXPECT_EQ(scan_string("file : ", word, sizeof word), 1);
    });
    EXPECT_EQ(printed.out, "n : file : ");
    EXPECT_EQ(number, 12);
    EXPECT_EQ(real, -25.0);
    EXPECT_STREQ(word, "pulse.txt");
    EXPECT_EQ(unread_answers(), "next\n");
}

TEST(ScanInt, ARejectedAnswerIsDroppedWithItsLine) {
    int number = 77;
    double real = 77;
    play_console("twelve 12\nhalf\n3\n", [&] {
        EXPECT_EQ(scan_int("n : ", &number), 0);
        EXPECT_EQ(scan_double("x : ", &real), 0);
    });
    EXPECT_EQ(number, 77);
    EXPECT_EQ(real, 77);
    EXPECT_EQ(unread_answers(), "3\n");
}

TEST(ScanString, AWordHasAtMost255Characters) {
    char word[400];
    const std::string answer(300, 'a');
    play_console(answer, [&] { EXPECT_EQ(scan_string("", word, sizeof word), 1); });
    EXPECT_EQ(std::string(word), std::string(255, 'a'));
    play_console("abcdef\n", [&] { EXPECT_EQ(scan_string("", word, 4), 1); });
    EXPECT_STREQ(word, "abc");
}

TEST(ScanInt, EndOfInputAndNullAreNoAnswer) {
    int number = 5;
    char word[8];
    play_console("", [&] {
        EXPECT_EQ(scan_int("", &number), 0);
        EXPECT_EQ(scan_string("", word, sizeof word), 0);
        EXPECT_EQ(scan_int("", nullptr), 0);
        EXPECT_EQ(scan_double("", nullptr), 0);
        EXPECT_EQ(scan_string("", nullptr, 8), 0);
        EXPECT_EQ(scan_string("", word, 0), 0);
    });
    EXPECT_EQ(number, 5);
}

TEST(RealArrayOut, ChoiceOneWritesPlainAscii) {
    TempTree tree;
    const ConsoleOutput printed = write_real_array("1\nseries.txt\nmore\n", three);
    EXPECT_EQ(printed.out, out_menu + "\nAscii File Out >>\nEnter filename : ");
    EXPECT_EQ(dataio_last_status, DATAIO_OK);
    EXPECT_EQ(tree.read("series.txt"), "1.000000000000E+00\n2.500000000000E+00\n-1.000000000000E-03\n");
    EXPECT_EQ(unread_answers(), "more\n");
}

TEST(RealArrayOut, DoesNotReplaceTheLoadedModel) {
    TempTree tree;
    tree.write("m.kormodel", "the model");
    remember_model_files("m.kormodel", "", "");
    for (const char* answers : {"1\nm.kormodel\n", "2\n0\nm.kormodel\n", "2\n1\n0\n1\nm.kormodel\n"}) {
        dataio_last_status = DATAIO_OK;
        EXPECT_EQ(write_real_array(answers, three).err,
                  "[KOR] The output file m.kormodel is the model file.\n");
        EXPECT_EQ(dataio_last_status, DATAIO_ERR_IO);
    }
    forget_model_files();
    EXPECT_EQ(tree.read("m.kormodel"), "the model");
}

TEST(RealArrayOut, ChoiceTwoWithoutAxisWritesSGPlot) {
    TempTree tree;
    for (const std::string answer : {"0", "2", "-1"}) {
        const ConsoleOutput printed = write_real_array("2\n" + answer + "\nseries.sg\n", {4});
        EXPECT_EQ(printed.out,
                  out_menu + "\nDefine x-axis [1=yes] : \nSG-Plot File Out >>\nEnter filename : ");
        EXPECT_EQ(tree.read("series.sg"), "1   0.000000000000E+00   4.000000000000E+00\n");
    }
}

TEST(RealArrayOut, ChoiceTwoWithAxisWritesXY) {
    TempTree tree;
    const ConsoleOutput printed = write_real_array("2\n1\n10\n0.5\nseries.xy\n", {4, 5});
    EXPECT_EQ(printed.out, out_menu + "\nDefine x-axis [1=yes] : \nMinimum x-value   : \n"
                                      "Increment x-value : \nSG-Plot XY File Out >>\nEnter filename : ");
    EXPECT_EQ(tree.read("series.xy"), "1   4.000000000000E+00   1.000000000000E+01\n"
                                      "1   5.000000000000E+00   1.050000000000E+01\n");
    EXPECT_EQ(dataio_last_status, DATAIO_OK);
}

TEST(RealArrayOut, AnyOtherChoiceWritesNothing) {
    TempTree tree;
    for (const char* choice : {"3\n", "0\n", "-1\n", "44\n"}) {
        dataio_last_status = DATAIO_ERR_IO;
        EXPECT_EQ(write_real_array(choice, three).out, out_menu + "\n");
        EXPECT_EQ(dataio_last_status, DATAIO_OK);
    }
    EXPECT_TRUE(tree.names().empty());
}

TEST(RealArrayOut, EveryUnreadableAnswerIsStatusThree) {
    TempTree tree;
    for (const char* answers : {"", "one\n", "1\n", "2\n", "2\nyes\n", "2\n1\n", "2\n1\n0\n", "2\n1\n0\n1\n",
                                "2\n1\nlow\n", "2\n1\n0\nhigh\n", "2\n0\n"}) {
        dataio_last_status = DATAIO_OK;
        EXPECT_EQ(write_real_array(answers, three).err, "") << answers;
        EXPECT_EQ(dataio_last_status, DATAIO_ERR_IO) << answers;
    }
    EXPECT_TRUE(tree.names().empty());
}

TEST(RealArrayOut, AFailedOpenIsStored) {
    TempTree tree;
    EXPECT_EQ(write_real_array("1\nno/such/folder\n", three).err, "fopen(write): " + no_such_file);
    EXPECT_EQ(dataio_last_status, DATAIO_ERR_IO);
}

TEST(RealArrayIn, ChoiceOneReadsPlainAscii) {
    TempTree tree;
    tree.write("series.txt", "3\n4\n");
    std::vector<double> values(2, 0.0);
    EXPECT_EQ(read_real_array("1\nseries.txt\n", values).out,
              in_menu + "\n<< ASCII File In >>\nEnter filename : ");
    EXPECT_EQ(values, (std::vector<double>{3, 4}));
    EXPECT_EQ(dataio_last_status, DATAIO_OK);
}

TEST(RealArrayIn, ChoiceTwoReadsSGPlot) {
    TempTree tree;
    tree.write("series.sg", "1 0 3\n1 1 4\n");
    std::vector<double> values(2, 0.0);
    EXPECT_EQ(read_real_array("2\nseries.sg\n", values).out,
              in_menu + "\n<< SG-Plot File In >>\nEnter filename : ");
    EXPECT_EQ(values, (std::vector<double>{3, 4}));
}

TEST(RealArrayIn, CancellingZeroesTheArray) {
    for (const char* choice : {"3\n", "0\n", "9\n"}) {
        std::vector<double> values = three;
        EXPECT_EQ(read_real_array(choice, values).out, in_menu + "\n");
        EXPECT_EQ(values, (std::vector<double>{0, 0, 0}));
        EXPECT_EQ(dataio_last_status, DATAIO_OK);
    }
}

TEST(RealArrayIn, AnUnreadableAnswerLeavesTheArray) {
    for (const char* answers : {"", "one\n", "1\n", "2\n"}) {
        std::vector<double> values = three;
        read_real_array(answers, values);
        EXPECT_EQ(values, three) << answers;
        EXPECT_EQ(dataio_last_status, DATAIO_ERR_IO) << answers;
    }
}

TEST(RealArrayIn, AMissingFileIsReported) {
    TempTree tree;
    std::vector<double> values = three;
    EXPECT_EQ(read_real_array("1\nnowhere.txt\n", values).err, "fopen(read): " + no_such_file);
    EXPECT_EQ(dataio_last_status, DATAIO_ERR_IO);
    EXPECT_EQ(values, three);
}

TEST(RealArrayIn, ReturnsWhetherAFileHeldAllElements) {
    TempTree tree;
    tree.write("three.txt", "0\n0\n0\n");
    tree.write("two.txt", "1\n2\n");
    const std::pair<const char*, bool> sessions[] = {{"1\nthree.txt\n", true},
                                                     {"1\ntwo.txt\n", false},
                                                     {"1\nnowhere.txt\n", false},
                                                     {"1\n", false},
                                                     {"3\n", false},
                                                     {"9\n", false},
                                                     {"one\n", false},
                                                     {"", false}};
    for (const auto& [answers, whole] : sessions) {
        std::vector<double> values = three;
        const int count = 3;
        bool read = !whole;
        play_console(answers, [&] { read = RealArrayIn(&count, values.data()); });
        EXPECT_EQ(read, whole) << answers;
    }
}

TEST(RealArrayIn, MissingPointersAndNegativeCountsAreRefused) {
    const int count = 2, negative = -1;
    double values[2] = {5, 6};
    play_console("1\na\n1\na\n", [&] {
        dataio_last_status = DATAIO_OK;
        RealArrayIn(nullptr, values);
        EXPECT_EQ(dataio_last_status, DATAIO_ERR_NULLPTR);
        dataio_last_status = DATAIO_OK;
        RealArrayOut(&count, nullptr);
        EXPECT_EQ(dataio_last_status, DATAIO_ERR_NULLPTR);
        dataio_last_status = DATAIO_OK;
        AsciiOut(nullptr, values);
        EXPECT_EQ(dataio_last_status, DATAIO_ERR_NULLPTR);
        AsciiIn(&negative, values);
        EXPECT_EQ(dataio_last_status, DATAIO_ERR_BADARG);
    });
    EXPECT_EQ(unread_answers(), "1\na\n1\na\n");
    EXPECT_EQ(values[0], 5);
}
