#include "kor/propagation.h"

#include "kor/runtime_state.h"
#include "support/console_script.h"
#include "support/constants.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kor {
namespace {

using kor_test::bytes_of;
using kor_test::largest_difference;
using kor_test::Matrix;
using kor_test::PI;
using kor_test::play_console;
using kor_test::prepare_one_spin;
using kor_test::read_density_file;
using kor_test::read_file;
using kor_test::step_propagator;
using kor_test::TempTree;
using kor_test::write_density_file;

constexpr double tolerance = 1e-12;

void fill_field(double xb, double yb) {
    for (int j = 0; j < g_runtime.ap; ++j) {
        g_runtime.xb[j] = xb;
        g_runtime.yb[j] = yb;
    }
}

std::vector<Matrix> states() {
    return read_density_file("dm.bin").matrices;
}

/// r = U_0 U_1 ... of the runtime's samples, at offset w_j = offset + (gradients) . position.
Matrix runtime_propagator(const kor_test::DenseSystem& system, double dt, double offset, double x = 0,
                          double y = 0, double z = 0) {
    const RuntimeState& s = g_runtime;
    Matrix r = Matrix::Identity(system.n, system.n);
    for (int j = 0; j < s.ap; ++j) {
        const double w = s.gx[j] * x + s.gy[j] * y + s.gz[j] * z + offset;
        r = r * step_propagator(system.h0 + w * system.fz + s.xb[j] * system.fx + s.yb[j] * system.fy, dt);
    }
    return r;
}

Matrix rotated(const Matrix& r, const Matrix& rho) {
    return r.adjoint() * rho * r;
}

TEST(Rotate3D, QuarterTurnAboutXTakesIzToPlusIy) {
    const TempTree folder;
    const auto system = prepare_one_spin(5, 2e-5);
    fill_field(PI / (2 * 5 * 2e-5), 0);
    play_console("", Rotate3D);
    ASSERT_EQ(states().size(), 1U);
    EXPECT_LT(largest_difference(states()[0], system.iy[0]), tolerance);
    EXPECT_NEAR(states()[0](0, 1).imag(), -0.5, tolerance);
    EXPECT_NEAR(states()[0](1, 0).imag(), 0.5, tolerance);
}

TEST(Rotate2D, QuarterTurnAboutXTakesIzToPlusIy) {
    const TempTree folder;
    const auto system = prepare_one_spin(5, 0);
    g_runtime.ndw = 2;
    fill_field(PI / (2 * 5 * 2e-5), 0);
    play_console("", [] { Rotate2D_internal(1, 2e-5, 0.0); });
    ASSERT_EQ(states().size(), 2U);
    for (const Matrix& rho : states()) {
        EXPECT_LT(largest_difference(rho, system.iy[0]), tolerance);
    }
}

TEST(Rotate3D, WithoutSamplesEveryStateStaysAndTheSectorCounts) {
    const TempTree folder;
    const auto system = prepare_one_spin(0, 0.0);
    kor_test::define_grid(2, 1, 3, 0, 1, 0, 1, 0, 1);
    play_console("", Rotate3D);
    EXPECT_EQ(g_runtime.calc, 1);
    EXPECT_EQ(g_runtime.ndw, 6);
    ASSERT_EQ(states().size(), 6U);
    for (const Matrix& rho : states()) {
        EXPECT_EQ(rho, system.iz[0]);
    }
    EXPECT_EQ(read_file("dm.bin").substr(0, 12), bytes_of(std::vector<int>{0, 2, 6}));
    EXPECT_EQ(kor_test::dense(2, g_runtime.densmat), system.iz[0]);
    EXPECT_FALSE(std::filesystem::exists("store"));
}

TEST(Rotate2D, WithoutSamplesEveryStateStaysAndTheSectorCounts) {
    const TempTree folder;
    const auto system = prepare_one_spin(0, 0.0);
    g_runtime.ndw = 3;
    play_console("", [] { Rotate2D_internal(1, 0.0, 0.0); });
    EXPECT_EQ(g_runtime.calc, 1);
    ASSERT_EQ(states().size(), 3U);
    for (const Matrix& rho : states()) {
        EXPECT_EQ(rho, system.iz[0]);
    }
    EXPECT_FALSE(std::filesystem::exists("store"));
}

TEST(Rotate3D, FirstSampleActsFirst) {
    const TempTree folder;
    const auto system = prepare_one_spin(2, 1e-3);
    g_runtime.xb[0] = PI / 2 / 1e-3; // Iz -> +Iy
    g_runtime.yb[1] = PI / 2 / 1e-3; // +Iy stays; the other order would end at -Ix
    play_console("", Rotate3D);
    EXPECT_LT(largest_difference(states()[0], system.iy[0]), tolerance);
}

TEST(Rotate3D, EveryVoxelTurnsByItsOwnGradientOffsetInVoxelOrder) {
    const TempTree folder;
    const auto system = prepare_one_spin(3, 1e-3);
    kor_test::define_grid(3, 2, 2, 0, 0, 0, 0, 0, 0);
    RuntimeState& s = g_runtime;
    s.x0_s = -1;
    s.dx_s = 0.75;
    s.y0_s = 0.5;
    s.dy_s = -0.25;
    s.z0_s = 2;
    s.dz_s = 0.125;
    s.statoff_s = 40;
    for (int j = 0; j < 3; ++j) {
        s.xb[j] = 200.0 + 30 * j;
        s.yb[j] = -100.0 * j;
        s.gx[j] = 300.0 - 100 * j;
        s.gy[j] = 150.0 * j;
        s.gz[j] = 80.0;
    }
    play_console("", Rotate3D);
    const std::vector<Matrix> after = states();
    ASSERT_EQ(after.size(), 12U);
    std::size_t voxel = 0;
    for (int ix = 0; ix < 3; ++ix) {
        for (int iy = 0; iy < 2; ++iy) {
            for (int iz = 0; iz < 2; ++iz) {
                const Matrix r =
                    runtime_propagator(system, 1e-3, 40, -1 + 0.75 * ix, 0.5 - 0.25 * iy, 2 + 0.125 * iz);
                EXPECT_LT(largest_difference(after[voxel++], rotated(r, system.iz[0])), tolerance);
            }
        }
    }
}

TEST(Rotate3D, SectorsFollowOneAnother) {
    const TempTree folder;
    const auto system = prepare_one_spin(1, 1e-3);
    g_runtime.xb[0] = PI / 2 / 1e-3;
    play_console("", Rotate3D);
    g_runtime.xb[0] = 0;
    g_runtime.statoff_s = PI / 2 / 1e-3; // a quarter turn about z: Iy -> Ix
    play_console("", Rotate3D);
    EXPECT_EQ(g_runtime.calc, 2);
    EXPECT_LT(largest_difference(states()[0], system.ix[0]), tolerance);
}

TEST(Rotate2D, SectorsFollowOneAnother) {
    const TempTree folder;
    const auto system = prepare_one_spin(1, 0);
    g_runtime.ndw = 1;
    g_runtime.xb[0] = PI / 2 / 1e-3;
    play_console("", [] { Rotate2D_internal(1, 1e-3, 0.0); });
    g_runtime.xb[0] = 0;
    play_console("", [] { Rotate2D_internal(1, 1e-3, PI / 2 / 1e-3); });
    EXPECT_EQ(g_runtime.calc, 2);
    EXPECT_LT(largest_difference(states()[0], system.ix[0]), tolerance);
}

TEST(Rotate2D, EvolutionRowKRunsKMinusOneTimesTheSamples) {
    const TempTree folder;
    const auto system = prepare_one_spin(3, 0);
    g_runtime.ndw = 5;
    for (int j = 0; j < 3; ++j) {
        g_runtime.xb[j] = 150.0 * j;
        g_runtime.yb[j] = 100.0 - 20 * j;
        g_runtime.gx[j] = 1e6; // rows have no position
    }
    play_console("", [] { Rotate2D_internal(2, 2e-4, 77.0); });
    const std::vector<Matrix> rows = states();
    ASSERT_EQ(rows.size(), 5U);
    EXPECT_EQ(rows[0], system.iz[0]);
    g_runtime.gx[0] = g_runtime.gx[1] = g_runtime.gx[2] = 0;
    for (int k = 1; k <= 5; ++k) {
        const Matrix r = runtime_propagator(system, (k - 1) * 2e-4, 77.0);
        EXPECT_LT(largest_difference(rows[static_cast<std::size_t>(k - 1)], rotated(r, system.iz[0])),
                  tolerance);
    }
}

TEST(Rotate2D, NormalSectorTurnsEveryRowAlike) {
    const TempTree folder;
    const auto system = prepare_one_spin(2, 0);
    write_density_file("dm.bin", 2, {system.ix[0], system.iy[0], system.iz[0]});
    g_runtime.calc = 4;
    g_runtime.ndw = 3;
    fill_field(300, -200);
    for (int sectortype : {1, 0, 3}) {
        const std::vector<Matrix> before = states();
        play_console("", [&] { Rotate2D_internal(sectortype, 1e-3, 55.0); });
        const Matrix r = runtime_propagator(system, 1e-3, 55.0);
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_LT(largest_difference(states()[k], rotated(r, before[k])), tolerance);
        }
    }
    EXPECT_EQ(g_runtime.calc, 7);
}

TEST(Rotate2D, OtherNumberOfRowsStartsEveryRowFromTheFirst) {
    for (int rows : {1, 2, 5}) {
        const TempTree folder;
        const auto system = prepare_one_spin(1, 0);
        write_density_file("dm.bin", 2, {system.ix[0], system.iy[0], system.iz[0]});
        g_runtime.calc = 1;
        g_runtime.ndw = rows;
        play_console("", [] { Rotate2D_internal(2, 1e-3, 300.0); });
        EXPECT_EQ(g_runtime.calc, 2);
        ASSERT_EQ(states().size(), static_cast<std::size_t>(rows));
        for (int k = 0; k < rows; ++k) {
            const Matrix expected = std::cos(0.3 * k) * system.ix[0] - std::sin(0.3 * k) * system.iy[0];
            EXPECT_LT(largest_difference(states()[static_cast<std::size_t>(k)], expected), tolerance);
        }
    }
}

} // namespace
} // namespace kor
