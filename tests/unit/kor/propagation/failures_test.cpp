#include "kor/propagation.h"

#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "support/console_script.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <filesystem>

namespace kor {
namespace {

/// From 2^31 voxels on; 64 bits would leave 3, 0 and a negative number of some products.
const std::vector<std::array<int, 3>> uncountable_grids = {
    {1 << 11, 1 << 10, 1 << 10}, {70000, 70000, 1},     {2147483647, 2147483647, 3},
    {1 << 30, 1 << 30, 1 << 4},  {1, 1 << 16, 1 << 15}, {2147483647, 2147483647, 2147483647}};

using kor_test::bytes_of;
using kor_test::Matrix;
using kor_test::play_console;
using kor_test::prepare_one_spin;
using kor_test::read_file;
using kor_test::system_line;
using kor_test::TempTree;
using kor_test::unread_answers;
using kor_test::write_density_file;
using kor_test::write_file;

TEST(Rotate3D, WithoutAPulseSaysSoAndWaits) {
    const TempTree folder;
    prepare_one_spin(1, 1e-3);
    g_runtime.pulseflag = 2;
    const auto printed = play_console("taken\nkept\n", Rotate3D);
    EXPECT_EQ(printed.out, ">>>> NO RF-PULSE DEFINED ERROR <<<<\n");
    EXPECT_EQ(unread_answers(), "kept\n");
    EXPECT_FALSE(std::filesystem::exists("dm.bin"));
    EXPECT_EQ(g_runtime.calc, 0);
}

TEST(Rotate2D, WithoutAPulseSaysSoAndGoesOn) {
    const TempTree folder;
    prepare_one_spin(1, 1e-3);
    g_runtime.ndw = 1;
    g_runtime.pulseflag = 2;
    const auto printed = play_console("kept\n", [] { Rotate2D_internal(1, 1e-3, 0.0); });
    EXPECT_EQ(printed.out, ">>>> NO RF-PULSE DEFINED ERROR <<<<\n");
    EXPECT_EQ(unread_answers(), "kept\n");
    EXPECT_FALSE(std::filesystem::exists("dm.bin"));
    EXPECT_EQ(g_runtime.calc, 0);
}

/// Runs both families on the "dm.bin" that is there and expects the same failure of both.
void expect_failure(const std::string& what_3d, const std::string& what_2d, int enters_taken) {
    const std::string before = std::filesystem::exists("dm.bin") ? read_file("dm.bin") : "";
    g_runtime.calc = 1;
    auto printed = play_console("one\ntwo\nthree\n", Rotate3D);
    EXPECT_EQ(printed.out + printed.err, what_3d);
    EXPECT_EQ(unread_answers(), enters_taken == 0 ? "one\ntwo\nthree\n" : "two\nthree\n");
    printed = play_console("one\n", [] { Rotate2D_internal(1, 1e-3, 0.0); });
    EXPECT_EQ(printed.out + printed.err, what_2d);
    EXPECT_EQ(unread_answers(), "one\n");
    EXPECT_EQ(g_runtime.calc, 1);
    EXPECT_EQ(std::filesystem::exists("dm.bin") ? read_file("dm.bin") : "", before);
}

TEST(FailedSector, StatesOfAnotherDimensionAreRefusedAndKept) {
    const TempTree folder;
    prepare_one_spin(1, 1e-3);
    g_runtime.ndw = 1;
    write_density_file("dm.bin", 4, {Matrix::Identity(4, 4)});
    expect_failure("Rotate3D: dm.bin dimensions mismatch (type=0 n=4 ndw=1), expected (0 2 1)\n",
                   "Rotate2D: dm.bin dimensions mismatch (type=0 n=4 ndw=1), expected (0 2 1)\n", 1);
    write_density_file("dm.bin", 4, {Matrix::Identity(4, 4), Matrix::Identity(4, 4)});
    expect_failure("Rotate3D: dm.bin dimensions mismatch (type=0 n=4 ndw=2), expected (0 2 1)\n",
                   "Rotate2D: dm.bin dimensions mismatch (type=0 n=4 ndw=2), expected (0 2 1)\n", 1);
}

TEST(FailedSector, SignalFileInPlaceOfStatesIsRefused) {
    const TempTree folder;
    prepare_one_spin(1, 1e-3);
    g_runtime.ndw = 1;
    write_file("dm.bin", bytes_of(std::vector<int>{1, 2, 1}) + std::string(64, '\0'));
    expect_failure("Rotate3D: dm.bin dimensions mismatch (type=1 n=2 ndw=1), expected (0 2 1)\n",
                   "Rotate2D: dm.bin dimensions mismatch (type=1 n=2 ndw=1), expected (0 2 1)\n", 1);
}

TEST(FailedSector, AbsentStatesGiveTheSystemText) {
    const TempTree folder;
    prepare_one_spin(1, 1e-3);
    g_runtime.ndw = 1;
    expect_failure(system_line("dm.bin", ENOENT), system_line("dm.bin", ENOENT), 0);
}

TEST(FailedSector, TruncatedStatesAreAReadErrorAndKept) {
    const TempTree folder;
    prepare_one_spin(1, 1e-3);
    kor_test::define_grid(1, 1, 2, 0, 0, 0, 0, 0, 0);
    g_runtime.ndw = 2;
    KOR_SetSmokeCheckMode(1);
    write_file("dm.bin", bytes_of(std::vector<int>{0, 2, 2}) + std::string(127, '\0'));
    expect_failure("Rotate3D: read error from dm.bin\n", "Rotate2D: read error from dm.bin\n", 1);
}

TEST(FailedSector, UnwritableStoreIsToldAndTheStatesKept) {
    const TempTree folder;
    prepare_one_spin(1, 1e-3);
    g_runtime.ndw = 1;
    write_density_file("dm.bin", 2, {Matrix::Identity(2, 2)});
    std::filesystem::create_directory("store");
    expect_failure(system_line("store", EISDIR), system_line("store", EISDIR), 0);
}

TEST(FailedSector, UncreatableStatesGiveTheSystemText) {
    const TempTree folder;
    prepare_one_spin(1, 1e-3);
    g_runtime.ndw = 1;
    std::filesystem::create_directory("dm.bin");
    auto printed = play_console("", Rotate3D);
    EXPECT_EQ(printed.out + printed.err, system_line("dm.bin", EISDIR));
    printed = play_console("", [] { Rotate2D_internal(1, 1e-3, 0.0); });
    EXPECT_EQ(printed.out + printed.err, system_line("dm.bin", EISDIR));
    EXPECT_EQ(g_runtime.calc, 0);
}

TEST(FailedSector, GridOfMoreVoxelsThanCanBeCountedIsRefused) {
    const TempTree folder;
    prepare_one_spin(1, 1e-3);
    write_file("dm.bin", "earlier states");
    for (const auto& [ndx, ndy, ndz] : uncountable_grids) {
        kor_test::define_grid(ndx, ndy, ndz, 0, 0, 0, 0, 0, 0);
        const auto printed = play_console("", Rotate3D);
        EXPECT_EQ(printed.out, "");
        EXPECT_EQ(
            printed.err,
            "The spatial grid of " + std::to_string(ndx) + " x " + std::to_string(ndy) + " x " +
                std::to_string(ndz) +
                " points has more voxels than the 2147483647 that can be simulated: define it again.\n");
        EXPECT_EQ(g_runtime.calc, 0);
        EXPECT_EQ(read_file("dm.bin"), "earlier states");
    }
}

/// Every odd header for a system with a single state: a message, or a run, but never a crash.
TEST(FailedSector, OddHeadersAreNamed) {
    const TempTree folder;
    kor_test::forget_model();
    kor_test::load_operators(kor_test::dense_system({0}, {0.0}, {0.0}, {}, true));
    g_runtime.pulseflag = 1;
    g_runtime.ndw = 257;
    const std::vector<int> odd{0, 1, -1, 2147483647, -2147483647 - 1, 257, 258};
    for (int type : odd) {
        for (int n : odd) {
            for (int count : odd) {
                const std::string bytes = bytes_of(std::vector<int>{type, n, count});
                write_file("dm.bin", bytes);
                g_runtime.calc = 1;
                const auto printed = play_console("", [] { Rotate2D_internal(1, 1e-3, 0.0); });
                const bool readable = type == 0 && n == 1 && count >= 1;
                EXPECT_EQ(printed.out,
                          readable ? "Rotate2D: read error from dm.bin\n"
                                   : "Rotate2D: dm.bin dimensions mismatch (type=" + std::to_string(type) +
                                         " n=" + std::to_string(n) + " ndw=" + std::to_string(count) +
                                         "), expected (0 1 257)\n");
                EXPECT_EQ(g_runtime.calc, 1);
                EXPECT_EQ(read_file("dm.bin"), bytes);
            }
        }
    }
}

} // namespace
} // namespace kor
