// What is written back over a file without the right to write it (wine lets the superuser write it all the
// same).
#include "kor/runtime_state.h"
#include "kormodel/sector_optimisation.h"

#include "support/console_script.h"
#include "support/ordinary_user.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using kor::g_runtime;
using kor_test::ConsoleOutput;
using kor_test::play_console;
using kor_test::TempTree;
using Rights = std::filesystem::perms;

TEST(OfferWriteback, AReadOnlyFileIsNotReplaced) {
    const TempTree tree;
    tree.write("pulse", "the older one");
    std::filesystem::permissions(tree.path(), Rights::all);
    std::filesystem::permissions("pulse", Rights::owner_read | Rights::others_read);
    std::strcpy(g_runtime.fnames[1], "pulse");
    g_runtime.ap = 64;
    std::fill_n(g_runtime.xb, 64, 1.0);
    std::fill_n(g_runtime.yb, 64, 2.0);
    ConsoleOutput console;
    {
        const kor_test::OrdinaryUser rights;
        console = play_console("1\n", [] { kor::kormodel_offer_writeback_of_optimized_sector(1); });
    }
    EXPECT_EQ(console.err, "pulse: Permission denied\n"
                           "The waveform file pulse could not be written and was left as it was.\n");
    EXPECT_EQ(console.out, "Write optimized pulse back into selected sector waveform file?\n"
                           "  1. Yes\n  2. No\nYour choice [1..2] : ");
    EXPECT_EQ(tree.read("pulse"), "the older one");
    EXPECT_EQ(tree.names(), std::vector<std::string>{"pulse"});
}

} // namespace
