// The dialogue of expectation values on a full disk and with a pipe in place of a file.
#include "dialogues/kor/expectation_dialogue.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace kor_test;

namespace {

const std::string FULL = "ExpValNDensMat: write error on output file /dev/full: No space left on device\n";

}

TEST(ExpValNDensMat, ReportsAnOutputThatCannotBeWritten) {
    TempTree tree;
    prepare(tree, {1.0});
    const ConsoleOutput printed = ask(choose_ix + "1\n/dev/full\n\n");
    EXPECT_EQ(printed.err, FULL);
    EXPECT_EQ(behind_operator(printed), create_menu + "Output text file name : " + press_enter);
}

// A stream's buffer holds the first values: the number of the value that meets the full disk is not fixed.
TEST(ExpValNDensMat, NamesTheValueThatCannotBeWritten) {
    TempTree tree;
    constexpr int count = 20000;
    prepare(tree, std::vector<double>(count, 1.0));
    for (const std::string kind : {"1", "2"}) {
        const ConsoleOutput printed = ask(choose_ix + kind + "\n/dev/full\n\n");
        int dw = 0;
        ASSERT_EQ(std::sscanf(printed.err.c_str(), ">>> WRITE BINARY FILE ERROR <<< (dw=%d)", &dw), 1);
        EXPECT_EQ(printed.err, ">>> WRITE BINARY FILE ERROR <<< (dw=" + std::to_string(dw) + ")\n" + FULL);
        EXPECT_GE(dw, 1);
        EXPECT_LE(dw, count);
        EXPECT_EQ(printed.out.substr(printed.out.size() - press_enter.size()), press_enter);
    }
}

// A pipe has no position; what comes through it is read all the same.
TEST(ExpValNDensMat, WarnsWhenTheHeaderDoesNotEndAtItsPositionAndGoesOn) {
    TempTree tree;
    define_spins({0.0});
    ASSERT_EQ(mkfifo("dm.bin", 0600), 0);
    const int pipe = open("dm.bin", O_RDWR); // both ends, so that nobody waits for the other
    const std::string bytes = density_file(0, 2, 1, {bloch_matrix(0, 0, 0)});
    ASSERT_EQ(write(pipe, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    const ConsoleOutput printed = ask(choose_ix + "1\ntable.txt\n\n");
    close(pipe);
    EXPECT_EQ(printed.err,
              "ExpValNDensMat: warning: unexpected header size/position (ftell=-1, expected 12)\n");
    EXPECT_EQ(tree.read("table.txt"), "# index    expectation_re    expectation_im\n    1   0   0\n");
}
