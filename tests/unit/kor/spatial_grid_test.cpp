#include "kor/spatial_grid.h"

#include "kor/runtime_state.h"
#include "support/console_script.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

namespace kor {
namespace {

TEST(FieldOfView, IsTheDistanceOfTheOuterPoints) {
    EXPECT_EQ(grid_fov_from_step(1, 0.2), 0.0);
    EXPECT_EQ(grid_fov_from_step(0, 0.2), 0.0);
    EXPECT_EQ(grid_fov_from_step(-5, 0.2), 0.0);
    EXPECT_DOUBLE_EQ(grid_fov_from_step(2, 0.2), 0.2);
    EXPECT_DOUBLE_EQ(grid_fov_from_step(11, 0.2), 2.0);
    EXPECT_DOUBLE_EQ(grid_fov_from_step(3, -0.5), -1.0);
}

TEST(ClampSpatialGrid, MovesEveryAxisIntoOneTo256) {
    kor_test::forget_model();
    const struct {
        int given, clamped;
    } cases[] = {{-2147483647 - 1, 1}, {-1, 1},    {0, 1},     {1, 1},     {2, 2},
                 {255, 255},           {256, 256}, {257, 256}, {300, 256}, {2147483647, 256}};
    for (const auto& a : cases) {
        for (const auto& b : cases) {
            g_runtime.ndx = a.given;
            g_runtime.ndy = b.given;
            g_runtime.ndz = a.given;
            clamp_spatial_grid();
            EXPECT_EQ(g_runtime.ndx, a.clamped);
            EXPECT_EQ(g_runtime.ndy, b.clamped);
            EXPECT_EQ(g_runtime.ndz, a.clamped);
        }
    }
}

TEST(ClampSpatialGrid, LargestGridIsAllowed) {
    kor_test::forget_model();
    kor_test::define_grid(256, 256, 256, 0, 0, 0, 0, 0, 0);
    const auto printed = kor_test::play_console("", [] { clamp_spatial_grid(); });
    EXPECT_EQ(printed.err, "");
}

TEST(ApplyGlobalSpatialGrid, ClampsTheCountsAndStoresThePositions) {
    kor_test::forget_model();
    g_runtime.ndx = 300;
    g_runtime.ndy = 0;
    g_runtime.ndz = 5;
    apply_global_spatial_grid(-2.0, 0.1, 3.0, 0.2, -4.0, 0.3);
    EXPECT_EQ(g_runtime.ndx, 256);
    EXPECT_EQ(g_runtime.ndy, 1);
    EXPECT_EQ(g_runtime.ndz, 5);
    EXPECT_EQ(g_runtime.x0, -2.0);
    EXPECT_EQ(g_runtime.dx, 0.1);
    EXPECT_EQ(g_runtime.y0, 3.0);
    EXPECT_EQ(g_runtime.dy, 0.2);
    EXPECT_EQ(g_runtime.z0, -4.0);
    EXPECT_EQ(g_runtime.dz, 0.3);
}

TEST(CountVoxels, CountsAsFarAsAnInt) {
    int voxels = 0;
    const auto set_points = [](int ndx, int ndy, int ndz) {
        g_runtime.ndx = ndx;
        g_runtime.ndy = ndy;
        g_runtime.ndz = ndz;
    };
    set_points(3, 5, 7);
    EXPECT_TRUE(count_voxels(&voxels));
    EXPECT_EQ(voxels, 105);
    set_points(1, 2147483647, 1);
    EXPECT_TRUE(count_voxels(&voxels));
    EXPECT_EQ(voxels, 2147483647);
    set_points(2, 1, 1073741824);
    const auto printed = kor_test::play_console("", [&] { EXPECT_FALSE(count_voxels(&voxels)); });
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(printed.err,
              "The spatial grid of 2 x 1 x 1073741824 points has more voxels than the 2147483647 "
              "that can be simulated: define it again.\n");
    EXPECT_EQ(voxels, 2147483647);
}

TEST(VoxelNumber, CountsZFastestThenYThenX) {
    long long expected = 0;
    for (int ix = 1; ix <= 3; ++ix) {
        for (int iy = 1; iy <= 4; ++iy) {
            for (int iz = 1; iz <= 5; ++iz) {
                EXPECT_EQ(voxel_number(ix, iy, iz, 4, 5), ++expected);
            }
        }
    }
}

TEST(VoxelNumber, LastVoxelOfTheLargestGridIsItsCount) {
    EXPECT_EQ(voxel_number(256, 256, 256, 256, 256), 16777216);
}

TEST(VoxelCoordinates, BelongToTheVoxelNumber) {
    kor_test::forget_model();
    kor_test::define_grid(3, 4, 5, -1.0, 0.5, 2.0, 0.25, -3.0, 0.125);
    for (int ix = 1; ix <= 3; ++ix) {
        for (int iy = 1; iy <= 4; ++iy) {
            for (int iz = 1; iz <= 5; ++iz) {
                double x, y, z;
                voxel_coordinates(static_cast<int>(voxel_number(ix, iy, iz, 4, 5)) - 1, &x, &y, &z);
                EXPECT_EQ(x, -1.0 + (ix - 1) * 0.5);
                EXPECT_EQ(y, 2.0 + (iy - 1) * 0.25);
                EXPECT_EQ(z, -3.0 + (iz - 1) * 0.125);
            }
        }
    }
}

TEST(VoxelCoordinates, DoNotConsultTheCountAlongX) {
    kor_test::forget_model();
    kor_test::define_grid(0, 2, 3, 10.0, 1.0, 0.0, 1.0, 0.0, 1.0);
    double x, y, z;
    voxel_coordinates(6 * 7 + 3 + 2, &x, &y, &z);
    EXPECT_EQ(x, 17.0);
    EXPECT_EQ(y, 1.0);
    EXPECT_EQ(z, 2.0);
}

TEST(VoxelCoordinates, DivisorThatIsNotPositiveGivesTheFirstPoint) {
    kor_test::forget_model();
    for (int ndz : {0, -1}) {
        kor_test::define_grid(2, 2, ndz, 10.0, 1.0, 20.0, 1.0, 30.0, 1.0);
        double x, y, z;
        voxel_coordinates(7, &x, &y, &z);
        EXPECT_EQ(x, 10.0);
        EXPECT_EQ(y, 20.0);
        EXPECT_EQ(z, 30.0);
    }
}

} // namespace
} // namespace kor
