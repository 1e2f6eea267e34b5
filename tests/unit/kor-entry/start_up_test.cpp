#include "kor-entry.h"

#include "kor/runtime_state.h"
#include "support/console_script.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

TEST(TotalStartUp, SetsTheDefaultsAndAsksForNoSpinSystem) {
    g_runtime.spinsystemdefined = 1;
    g_runtime.gs = 3.0;
    g_runtime.ndx = g_runtime.ndy = g_runtime.ndz = 7;
    g_runtime.pulseflag = 1;
    EXPECT_EQ(play_console("2\n1\n1\n", TotalStartUp).out, "");
    EXPECT_EQ(unread_answers(), "2\n1\n1\n");
    EXPECT_EQ(g_runtime.spinsystemdefined, 0);
    EXPECT_EQ(g_runtime.gs, 0.0);
    EXPECT_EQ(g_runtime.ndx * g_runtime.ndy * g_runtime.ndz, 1);
    EXPECT_EQ(g_runtime.pulseflag, 2);
}

TEST(ScreenMode, WritesNothingIntoAFileInAnyMode) {
    EXPECT_EQ(play_console("",
                           [] {
                               for (int mode : {0, 1, 2, 3, 4})
                                   ScreenMode(mode);
                           })
                  .out,
              "");
}
