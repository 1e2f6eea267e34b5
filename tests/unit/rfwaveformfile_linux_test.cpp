#include "rfwaveformfile.h"

#include "support/console_script.h"

#include <gtest/gtest.h>

using namespace kor;
using kor_test::play_console;

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
