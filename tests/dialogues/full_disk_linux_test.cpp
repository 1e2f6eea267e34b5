// What is written back at the console on a disk that is full.
#include "kor/runtime_state.h"
#include "kormodel/sector_optimisation.h"

#include "support/console_script.h"
#include "support/small_disk_linux.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

using kor::g_runtime;
using kor_test::ConsoleOutput;
using kor_test::play_console;
using kor_test::SmallDisk;
using kor_test::TempTree;

TEST(OfferWriteback, AFullDiskLeavesTheOldFile) {
    const TempTree tree;
    tree.write("pulse", "the older one");
    std::strcpy(g_runtime.fnames[1], "pulse");
    g_runtime.ap = 64; // two blocks of 512 bytes
    std::fill_n(g_runtime.xb, 64, 1.0);
    std::fill_n(g_runtime.yb, 64, 2.0);
    ConsoleOutput console;
    {
        const SmallDisk disk(600);
        console = play_console("1\n", [] { kor::kormodel_offer_writeback_of_optimized_sector(1); });
    }
    EXPECT_NE(console.out.find(" >>> WRITE TO BINARY FILE ERROR (yb) <<< \n"), std::string::npos);
    EXPECT_EQ(console.err, "The waveform file pulse could not be written and was left as it was.\n");
    EXPECT_EQ(tree.read("pulse"), "the older one");
    EXPECT_EQ(tree.names(), std::vector<std::string>{"pulse"});
}

} // namespace
