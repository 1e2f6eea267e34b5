#include "kor/propagation.h"

#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "support/console_script.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

namespace kor {
namespace {

using kor_test::play_console;
using kor_test::prepare_one_spin;
using kor_test::TempTree;

std::string progress_line(int sector, int sectors, int voxel, int voxels, int percent) {
    return "[KOR_PROGRESS] sector=" + std::to_string(sector) + " sectors=" + std::to_string(sectors) +
           " voxel=" + std::to_string(voxel) + " voxels=" + std::to_string(voxels) +
           " percent=" + std::to_string(percent) + "\n";
}

std::string progress_of(int ndx, int ndy, int ndz, int sector, int sectors) {
    const TempTree folder;
    prepare_one_spin(0, 0.0);
    kor_test::define_grid(ndx, ndy, ndz, 0, 0, 0, 0, 0, 0);
    g_runtime.spatial_progress_sector = sector;
    g_runtime.spatial_progress_sector_count = sectors;
    return play_console("", Rotate3D).out;
}

TEST(ProgressLine, ThousandVoxelsReportTheFirstAndEveryTenth) {
    std::string expected = progress_line(1, 1, 1, 1000, 0);
    for (int voxel = 10; voxel <= 1000; voxel += 10) {
        expected += progress_line(1, 1, voxel, 1000, voxel / 10);
    }
    EXPECT_EQ(progress_of(10, 10, 10, 1, 1), expected + "\n");
}

TEST(ProgressLine, UpToAHundredVoxelsReportEach) {
    std::string expected;
    for (int voxel = 1; voxel <= 100; ++voxel) {
        expected += progress_line(1, 1, voxel, 100, voxel);
    }
    EXPECT_EQ(progress_of(4, 5, 5, 1, 1), expected + "\n");
}

TEST(ProgressLine, StrideIsTheHundredthRoundedDown) {
    std::string expected;
    for (int voxel = 1; voxel <= 101; ++voxel) {
        expected += progress_line(1, 1, voxel, 101, voxel * 100 / 101);
    }
    EXPECT_EQ(progress_of(101, 1, 1, 1, 1), expected + "\n");
    expected = progress_line(1, 1, 1, 255, 0);
    for (int voxel = 2; voxel <= 254; voxel += 2) {
        expected += progress_line(1, 1, voxel, 255, voxel * 100 / 255);
    }
    EXPECT_EQ(progress_of(3, 5, 17, 1, 1), expected + progress_line(1, 1, 255, 255, 100) + "\n");
}

TEST(ProgressLine, PercentCountsTheSectorsBefore) {
    EXPECT_EQ(progress_of(1, 1, 2, 2, 3),
              progress_line(2, 3, 1, 2, 50) + progress_line(2, 3, 2, 2, 66) + "\n");
}

TEST(ProgressLine, UnknownTotalIsAHundredPercent) {
    EXPECT_EQ(progress_of(1, 1, 1, 1, 0), progress_line(1, 0, 1, 1, 100) + "\n");
    EXPECT_EQ(progress_of(1, 1, 1, 1, -2), progress_line(1, -2, 1, 1, 100) + "\n");
}

TEST(ProgressLine, EachRowIsAStar) {
    const TempTree folder;
    prepare_one_spin(1, 0);
    g_runtime.ndw = 4;
    EXPECT_EQ(play_console("", [] { Rotate2D_internal(2, 1e-3, 0.0); }).out, "****\n");
}

TEST(QuietPropagation, PrintsNothingAndGivesTheSameBytes) {
    std::string bytes[2][2];
    for (int quiet : {0, 1}) {
        const TempTree folder;
        prepare_one_spin(3, 1e-3);
        kor_test::define_grid(2, 2, 1, 0, 0, 0, 0, 0, 0);
        for (int j = 0; j < 3; ++j) {
            g_runtime.xb[j] = 100;
            g_runtime.yb[j] = 200;
        }
        KOR_SetSmokeCheckMode(quiet);
        auto printed = play_console("", Rotate3D);
        EXPECT_EQ(printed.out.empty(), quiet == 1);
        EXPECT_EQ(printed.err, "");
        bytes[0][quiet] = folder.read("dm.bin");
        printed = play_console("", [] { Rotate2D_internal(2, 1e-3, 10.0); });
        EXPECT_EQ(printed.out.empty(), quiet == 1);
        bytes[1][quiet] = folder.read("dm.bin");
        EXPECT_EQ(g_runtime.calc, 2);
    }
    EXPECT_EQ(bytes[0][0], bytes[0][1]);
    EXPECT_EQ(bytes[1][0], bytes[1][1]);
    KOR_SetSmokeCheckMode(0);
}

} // namespace
} // namespace kor
