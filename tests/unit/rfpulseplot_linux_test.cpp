#include "rfpulseplot.h"

#include "support/console_script.h"

#include <gtest/gtest.h>

using namespace kor;
using kor_test::play_console;

TEST(PulseFiles, FullDiskIsAFailure) {
    const double value = 1;
    play_console("", [&] {
        EXPECT_EQ(WritePulseCSV("/dev/full", 1, 1, &value, &value), 0);
        EXPECT_EQ(WriteGnuplotPulseScript("/dev/full", "p.csv"), 0);
    });
}
