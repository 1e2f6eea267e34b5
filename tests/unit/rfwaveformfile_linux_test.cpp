#include "rfwaveformfile.h"

#include "support/console_script.h"
#include "support/ordinary_user.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <unistd.h>

using namespace kor;
using namespace kor_test;

TEST(WaveformFile, EveryShortBlockIsTold) {
    const double v[2] = {1, 2};
    const int ap = 2;
    const auto five = play_console("", [&] { BinArrayOut(&ap, v, v, v, v, v, "/dev/full"); });
    EXPECT_EQ(five.out, " >>> WRITE TO BINARY FILE ERROR (xb) <<< \n"
                        " >>> WRITE TO BINARY FILE ERROR (yb) <<< \n"
                        " >>> WRITE TO BINARY FILE ERROR (gx) <<< \n"
                        " >>> WRITE TO BINARY FILE ERROR (gy) <<< \n"
                        " >>> WRITE TO BINARY FILE ERROR (gz) <<< \n");
    const auto two = play_console("", [&] { BinArrayOut2D(ap, v, v, "/dev/full"); });
    EXPECT_EQ(two.out, " >>> WRITE TO BINARY FILE ERROR (xb) <<< \n"
                       " >>> WRITE TO BINARY FILE ERROR (yb) <<< \n");
}

TEST(WaveformFile, OneThatMayBeWrittenAndNotReplacedIsWrittenInPlace) {
    if (geteuid() != 0)
        GTEST_SKIP() << "needs a file of another user";
    // In such a folder everybody may make files and nobody may remove those of others.
    namespace fs = std::filesystem;
    const TempTree folder;
    folder.write("w", "of another user");
    fs::permissions("w", fs::perms::all);
    fs::permissions(folder.root(), fs::perms::all | fs::perms::sticky_bit);
    const double v[2] = {1, 2};
    int written = 0;
    const auto console = play_console("", [&] {
        const OrdinaryUser nobody;
        written = BinArrayOut2D(2, v, v, "w");
    });
    EXPECT_EQ(written, 1);
    EXPECT_EQ(console.err, "");
    EXPECT_EQ(folder.read("w"), bytes_of(std::vector<double>{1, 2, 1, 2}));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"w"});
}

TEST(WaveformFile, AReadErrorIsToldByTheSystemsText) {
    // The first page of a process's memory: a file that opens and whose first read fails.
    const char* const unreadable = "/proc/self/mem";
    double x[2], y[2];
    double* const arrays[] = {x, y};
    const auto blocks =
        play_console("", [&] { EXPECT_EQ(read_waveform_blocks(unreadable, 2, 2, arrays), 0); });
    EXPECT_EQ(blocks.err, system_line(unreadable, EIO));
    const auto pulse = play_console("", [&] { EXPECT_EQ(koropt_load_waveform_xy(unreadable, 2, x, y), 0); });
    EXPECT_EQ(pulse.err, system_line(unreadable, EIO));
}
