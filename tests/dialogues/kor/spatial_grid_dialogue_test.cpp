#include "kor/spatial_grid_dialogue.h"

#include "kor/runtime_state.h"
#include "kor/spatial_grid.h"
#include "support/console_script.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

const std::string grid_banner = "\n           *******************************************\n"
                                "           ***  SPATIAL SIMULATION DOMAIN SETUP   ***\n"
                                "           *******************************************\n";
const std::string question =
    grid_banner + "\nDefine the spatial simulation grid for later spatially resolved sequence calculations.\n"
                  "Gradient waveforms are defined in the sequence sectors, not here.\n\n"
                  "Use a symmetric simulation volume around a center point? [1=yes, 0=no] : ";
const std::string closing = "  Used by     : spatially resolved pulse sequences\n"
                            "  Sequence type is chosen later in the pulse-sequence menu.\n";

void start_without_grid() {
    init();
    g_runtime.spinsystemdefined = 1;
    g_runtime.offsetset = g_runtime.offsetsdefined = 0;
    g_runtime.x0 = g_runtime.y0 = g_runtime.z0 = -9;
    g_runtime.dx = g_runtime.dy = g_runtime.dz = -9;
}

} // namespace

TEST(DefineSpatialSimulationDomain, NeedsASpinSystem) {
    start_without_grid();
    g_runtime.spinsystemdefined = 0;
    const ConsoleOutput printed = play_console("1\n", DefineSpatialSimulationDomain);
    EXPECT_EQ(printed.out, grid_banner + ">>>> No spin system is defined. Define spins first. <<<<\n");
    EXPECT_EQ(unread_answers(), "1\n");
}

TEST(DefineSpatialSimulationDomain, SymmetricVolumeSpreadsPointsAroundItsCenter) {
    start_without_grid();
    const ConsoleOutput printed =
        play_console("1\n0\n0.5\n-1\n5\n1\n3\n4\n7\n0.1\nleft\n", DefineSpatialSimulationDomain);
    EXPECT_EQ(printed.out, question +
                               "\nCenter of simulation volume [cm]\n"
                               "  x-center [cm] :   y-center [cm] :   z-center [cm] : \n"
                               "Number of spatial grid points\n"
                               "  ndx :   ndy :   ndz : \n"
                               "Full simulation volume widths [cm]\n"
                               "  widthx [cm] :   widthy [cm] :   widthz [cm] : \n"
                               "Spatial simulation domain defined.\n"
                               "  ndx=5  ndy=1  ndz=3\n"
                               "  x0=-2  y0=0.5  z0=-1.05 [cm]\n"
                               "  dx=1  dy=0  dz=0.05 [cm]\n" +
                               closing);
    EXPECT_EQ(g_runtime.x0, -2);
    EXPECT_EQ(g_runtime.dx, 1);
    EXPECT_EQ(g_runtime.y0, 0.5);
    EXPECT_EQ(g_runtime.dy, 0);
    EXPECT_EQ(g_runtime.offsetset, 1);
    EXPECT_EQ(g_runtime.offsetsdefined, 1);
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(DefineSpatialSimulationDomain, ManualGridDropsTheStepOfASinglePoint) {
    start_without_grid();
    const ConsoleOutput printed =
        play_console("0\n1\n300\n0\n-1\n-2\n-3\n0.5\n0.25\n0.125\n", DefineSpatialSimulationDomain);
    EXPECT_EQ(printed.out, question +
                               "\nManual grid definition (minimum coordinate + spacing)\n"
                               "  ndx :   ndy :   ndz : "
                               "Minimum coordinates [cm]\n"
                               "  x0 [cm] :   y0 [cm] :   z0 [cm] : "
                               "Grid spacing [cm]\n"
                               "  dx [cm] :   dy [cm] :   dz [cm] : \n"
                               "Spatial simulation domain defined.\n"
                               "  ndx=1  ndy=300  ndz=1\n"
                               "  x0=-1  y0=-2  z0=-3 [cm]\n"
                               "  dx=0  dy=0.25  dz=0 [cm]\n" +
                               closing);
    // The composer's clamp comes later.
    EXPECT_EQ(g_runtime.ndy, 300);
    clamp_spatial_grid();
    EXPECT_EQ(g_runtime.ndy, 256);
}

TEST(DefineSpatialSimulationDomain, AnyNonzeroAnswerMeansYes) {
    start_without_grid();
    play_console("-7\n1\n2\n3\n1\n1\n1\n1\n1\n1\n", DefineSpatialSimulationDomain);
    EXPECT_EQ(g_runtime.x0, 1);
    EXPECT_EQ(g_runtime.z0, 3);
}

TEST(DefineSpatialSimulationDomain, AnUnreadableAnswerKeepsWhatWasRead) {
    start_without_grid();
    play_console("1\n1\n2\n3\n4\n-5\nmany\nleft\n", DefineSpatialSimulationDomain);
    EXPECT_EQ(g_runtime.ndx, 4);
    EXPECT_EQ(g_runtime.ndy, 1);
    EXPECT_EQ(g_runtime.ndz, 1);
    EXPECT_EQ(g_runtime.x0, -9);
    EXPECT_EQ(g_runtime.offsetset, 0);
    EXPECT_EQ(g_runtime.offsetsdefined, 0);
    EXPECT_EQ(unread_answers(), "left\n");
}

// A voxel at infinity plus a step of minus infinity would be nowhere.
TEST(DefineSpatialSimulationDomain, ALengthBeyondTheRangeDefinesNoGrid) {
    start_without_grid();
    const ConsoleOutput printed =
        play_console("0\n1\n1\n2\n0\n0\n1e999\nleft\n", DefineSpatialSimulationDomain);
    EXPECT_EQ(printed.out.find("defined."), std::string::npos);
    EXPECT_EQ(g_runtime.z0, -9);
    EXPECT_EQ(g_runtime.offsetset, 0);
    EXPECT_EQ(g_runtime.offsetsdefined, 0);
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(DefineSpatialSimulationDomain, EveryQuestionMayBeTheLast) {
    for (const std::string first : {"1\n", "0\n"}) {
        std::string answers = first;
        for (int question_number = 0; question_number < 10; ++question_number) {
            start_without_grid();
            const std::string shown = question_number == 0 ? "" : answers;
            EXPECT_EQ(play_console(shown, DefineSpatialSimulationDomain).out.find("defined."),
                      std::string::npos);
            EXPECT_EQ(play_console(shown + "x\n", DefineSpatialSimulationDomain).out.find("defined."),
                      std::string::npos);
            EXPECT_EQ(g_runtime.offsetset, 0);
            EXPECT_EQ(unread_answers(), "");
            if (question_number > 0)
                answers += "2\n";
        }
        start_without_grid();
        play_console(answers, DefineSpatialSimulationDomain);
        EXPECT_EQ(g_runtime.offsetset, 1);
    }
}

TEST(SymmetricGridAxis, FivePointsOverFourCentimetres) {
    const GridAxis axis = symmetric_grid_axis(5, 0, 4);
    EXPECT_EQ(axis.first, -2);
    EXPECT_EQ(axis.step, 1);
}

TEST(SymmetricGridAxis, OnePointIsTheCenter) {
    const GridAxis axis = symmetric_grid_axis(1, 0.75, 4);
    EXPECT_EQ(axis.first, 0.75);
    EXPECT_EQ(axis.step, 0);
}

TEST(SymmetricGridAxis, EndsLieHalfAWidthFromTheCenter) {
    for (int points = 2; points <= 256; ++points) {
        const GridAxis axis = symmetric_grid_axis(points, 1.25, 3.5);
        EXPECT_NEAR(axis.first, 1.25 - 1.75, 1e-14);
        EXPECT_NEAR(axis.first + grid_fov_from_step(points, axis.step), 1.25 + 1.75, 1e-13) << points;
    }
}

TEST(GridAxisStep, OnePointHasNoStep) {
    EXPECT_EQ(grid_axis_step(1, 0.5), 0);
    EXPECT_EQ(grid_axis_step(0, 0.5), 0);
    EXPECT_EQ(grid_axis_step(2, 0.5), 0.5);
}
