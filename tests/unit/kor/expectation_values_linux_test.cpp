// Profiles and voxel signals on a disk that is full.
#include "kor/expectation_values.h"

#include "kor/runtime_state.h"
#include "support/console_script.h"
#include "support/model_fixtures.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

using namespace kor;
using namespace kor_test;

TEST(KORWriteExpectationProfile, ReportsAFailedWrite) {
    TempTree tree;
    define_spins({0.0});
    write_file("in.bin", density_file(0, 2, 1, {bloch_matrix(1, 0, 0)}));
    const ConsoleOutput printed =
        play_console("", [] { EXPECT_EQ(KORWriteExpectationProfile("in.bin", "Ix", "/dev/full"), 0); });
    EXPECT_EQ(printed.err,
              "Expectation profile: write error on output file /dev/full: No space left on device\n");
    EXPECT_EQ(printed.out, "");
}

TEST(KORWriteVoxelSignal, ATemporaryFileThatCannotBeWrittenIsToldAndRemoved) {
    TempTree tree;
    for (std::size_t spins : {1u, 5u}) { // less and more than a stream's buffer
        define_spins(std::vector<double>(spins, 0.0));
        g_runtime.nos = 1;
        g_runtime.noti[1] = 8;
        g_runtime.sectdur[1] = 0.1;
        g_runtime.statoff[1] = 0.0;
        std::strcpy(g_runtime.remarks[1], "ADC");
        const std::size_t elements = std::size_t{1} << (2 * spins);
        write_file("in.bin", density_file(0, g_runtime.n, 1, {DenseMatrix(elements)}));
        std::filesystem::create_symlink("/dev/full", "dm.bin");
        const ConsoleOutput printed =
            play_console("", [] { EXPECT_EQ(KORWriteVoxelSignal("in.bin", 1, "out.bin"), 0); });
        EXPECT_EQ(printed.err, "Voxel signal: cannot write temporary density matrix.\n");
        EXPECT_EQ(printed.out, "");
        EXPECT_EQ(tree.names(), std::vector<std::string>{"in.bin"});
    }
}
