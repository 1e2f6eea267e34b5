#include "kor/propagation.h"

#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "support/console_script.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

namespace kor {
namespace {

using kor_test::Matrix;
using kor_test::play_console;
using kor_test::TempTree;

TEST(FailedSector, FullDiskIsToldAndTheStatesKept) {
    const TempTree folder;
    kor_test::prepare_one_spin(1, 1e-3);
    KOR_SetSmokeCheckMode(1);
    std::filesystem::create_symlink("/dev/full", "store");
    const std::string reason = kor_test::system_line("store", ENOSPC);
    for (const int count : {1, 40000}) { // noticed at the file's end, and on the way
        kor_test::define_grid(1, 1, count, 0, 0, 0, 0, 0, 0);
        g_runtime.ndw = count;
        g_runtime.calc = 1;
        kor_test::write_density_file(
            "dm.bin", 2, std::vector<Matrix>(static_cast<std::size_t>(count), Matrix::Identity(2, 2)));
        const std::string before = folder.read("dm.bin");
        auto printed = play_console("kept\n", Rotate3D);
        EXPECT_EQ(printed.out + printed.err, "Rotate3D: write error to store\n" + reason);
        EXPECT_EQ(kor_test::unread_answers(), "kept\n");
        printed = play_console("kept\n", [] { Rotate2D_internal(1, 1e-3, 0.0); });
        EXPECT_EQ(printed.out + printed.err, "Rotate2D: write error to store\n" + reason);
        EXPECT_EQ(kor_test::unread_answers(), "kept\n");
        EXPECT_EQ(g_runtime.calc, 1);
        EXPECT_EQ(folder.read("dm.bin"), before);
    }
}

} // namespace
} // namespace kor
