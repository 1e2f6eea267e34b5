#include "kor/runtime_state.h"
#include "kor/sequence_driver.h"
#include "kor/smoke_check_mode.h"

#include "modelfiles.h"
#include "support/console_script.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cstring>

namespace kor {
namespace {

using kor_test::play_console;
using kor_test::TempTree;

/// A model that is ready but for one missing waveform file.
void model_without_waveform(int family) {
    kor_test::forget_model();
    kor_test::define_spins({1}, {1.0}, {0.0}, {}, true);
    kor_test::Sector sector;
    sector.file = "absent";
    kor_test::define_sequence(family, {sector}, "");
    kor_test::define_grid(1, 1, 1, 0, 0, 0, 0, 0, 0);
}

std::string answer() {
    return play_console("", RunCurrentPreparedModel).out;
}

constexpr const char* no_spins = "No spin system is currently prepared.\nImport or define a model first.\n";
constexpr const char* no_family = "No sequence family is currently selected.\n"
                                  "Choose a sequence family and define at least one sector first.\n";
constexpr const char* no_sectors = "No pulse sequence is currently prepared.\n"
                                   "Compose or import a model with at least one sector first.\n";
constexpr const char* no_grid = "The current model is spatially resolved, but the spatial grid\n"
                                "is not fully defined yet.\n"
                                "Define the spatial simulation domain first.\n";

TEST(RunCurrentPreparedModel, NamesWhatIsMissingFirst) {
    const TempTree folder;
    kor_test::forget_model();
    EXPECT_EQ(answer(), no_spins);
    g_runtime.Nspins = 1;
    EXPECT_EQ(answer(), no_spins);
    g_runtime.systemset = 1;
    g_runtime.sequencetype = 0;
    EXPECT_EQ(answer(), no_family);
    g_runtime.sequencetype = -1;
    EXPECT_EQ(answer(), no_family);
    g_runtime.sequencetype = 1;
    EXPECT_EQ(answer(), no_sectors);
    g_runtime.nos = 1;
    EXPECT_EQ(answer(), no_sectors);
    g_runtime.sectorset = 1;
    g_runtime.ndx = g_runtime.ndy = g_runtime.ndz = 1;
    g_runtime.offsetset = 0;
    EXPECT_EQ(answer(), no_grid);
    g_runtime.Nspins = 0;
    EXPECT_EQ(answer(), no_spins);
}

TEST(RunCurrentPreparedModel, DoesNotRunSpinsOfTooManyStates) {
    for (const int family : {1, 2}) {
        const TempTree folder;
        model_without_waveform(family);
        kor_test::define_spins({40, -4, 8}, {1.0, 1.0, 1.0}, {0.0, 0.0, 0.0}, {}, true);
        const kor_test::ConsoleOutput run = play_console("", RunCurrentPreparedModel);
        EXPECT_EQ(run.err,
                  "The spin system has more states than the 256 that can be simulated: define it again.\n");
        EXPECT_EQ(run.out.find("Calculating"), std::string::npos) << run.out;
        EXPECT_EQ(folder.names(), std::vector<std::string>{});
    }
}

TEST(RunCurrentPreparedModel, SpatialFamilyNeedsEveryAxisAndTheFlag) {
    const TempTree folder;
    for (int* axis : {&g_runtime.ndx, &g_runtime.ndy, &g_runtime.ndz}) {
        for (int points : {0, -1}) {
            model_without_waveform(1);
            *axis = points;
            EXPECT_EQ(answer(), no_grid);
        }
    }
    model_without_waveform(1);
    g_runtime.offsetset = 0;
    EXPECT_EQ(answer(), no_grid);
}

TEST(RunCurrentPreparedModel, UnknownFamilyIsNamed) {
    const TempTree folder;
    model_without_waveform(3);
    EXPECT_EQ(answer(),
              "Unknown sequence type (3).\nChoose a valid sequence family and verify the current model.\n");
}

TEST(RunCurrentPreparedModel, EachFamilyAnnouncesItsRun) {
    const TempTree folder;
    model_without_waveform(1);
    EXPECT_EQ(answer().find("Running current prepared spatially resolved model...\n"), 0U);
    model_without_waveform(2);
    EXPECT_EQ(answer().find("Running current prepared 1D / 2D NMR model...\n"), 0U);
}

TEST(RunCurrentPreparedModel, ForwardersRunTheSame) {
    const TempTree folder;
    model_without_waveform(2);
    const std::string direct = answer();
    EXPECT_EQ(play_console("", KORRunCurrentPreparedModel).out, direct);
    EXPECT_EQ(play_console("", KOR_RunCurrentPreparedModel).out, direct);
}

TEST(RunCurrentPreparedModel, QuietModeLeavesTheFailuresOnly) {
    const TempTree folder;
    for (int family : {1, 2}) {
        model_without_waveform(family);
        KOR_SetSmokeCheckMode(1);
        EXPECT_EQ(answer(), "Error reading pulse file absent\n");
        g_runtime.systemset = 0;
        EXPECT_EQ(answer(), no_spins);
        KOR_SetSmokeCheckMode(0);
    }
}

TEST(RunCurrentPreparedModel, DeletesTheFilesOfAnEarlierRunOnlyWhenTheModelIsPrepared) {
    const TempTree folder;
    const std::vector<std::string> scratch{"dm.bin", "korsign.bin", "spectra.bin", "store"};
    for (const std::string& name : scratch) {
        folder.write(name, "old");
    }
    folder.write("result.bin", "old");
    model_without_waveform(2);
    g_runtime.sectorset = 0;
    answer();
    for (const std::string& name : scratch) {
        EXPECT_TRUE(folder.exists(name)) << name;
    }
    g_runtime.sectorset = 1;
    g_runtime.sequencetype = 3;
    answer();
    EXPECT_EQ(folder.names(), std::vector<std::string>{"result.bin"});
}

TEST(RunCurrentPreparedModel, DeletesNoScratchFileThatBelongsToTheModel) {
    const TempTree folder;
    const std::vector<std::string> scratch{"dm.bin", "korsign.bin", "sort.bin", "spectra.bin", "store"};
    for (const std::string& name : scratch)
        folder.write(name, name);
    const auto expect_refusal = [&](const std::string& name, const std::string& role) {
        const kor_test::ConsoleOutput run = play_console("", RunCurrentPreparedModel);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, "[KOR] The output file " + name + " is the " + role + ".\n");
        EXPECT_EQ(folder.names(), scratch);
        for (const std::string& kept : scratch)
            EXPECT_EQ(folder.read(kept), kept);
    };
    model_without_waveform(2);
    for (const std::string& name : scratch) {
        std::strcpy(g_runtime.fnames[1], folder.path(name).c_str());
        expect_refusal(name, "waveform file of sector 1");
    }
    std::strcpy(g_runtime.fnames[1], "absent");
    remember_model_files("m", "s", folder.path("store").c_str());
    expect_refusal("store", "sequence file of the loaded model");
    forget_model_files();
}

// 3 and 0 are what 64 bits leave of the first two products.
TEST(RunCurrentPreparedModel, RefusesAGridOfMoreVoxelsThanItCanCountAndKeepsEarlierFiles) {
    const TempTree folder;
    folder.write("dm.bin", "old states");
    folder.write("result.bin", "old result");
    model_without_waveform(1);
    std::strcpy(g_runtime.resultflnm, "result.bin");
    const struct {
        int ndx, ndy, ndz;
        const char* counts;
    } grids[] = {{2147483647, 2147483647, 3, "2147483647 x 2147483647 x 3"},
                 {1 << 30, 1 << 30, 16, "1073741824 x 1073741824 x 16"},
                 {70000, 70000, 1, "70000 x 70000 x 1"}};
    for (const auto& grid : grids) {
        kor_test::define_grid(grid.ndx, grid.ndy, grid.ndz, 0, 0, 0, 0, 0, 0);
        const auto printed = play_console("", RunCurrentPreparedModel);
        EXPECT_EQ(printed.out, "");
        EXPECT_EQ(
            printed.err,
            "The spatial grid of " + std::string(grid.counts) +
                " points has more voxels than the 2147483647 that can be simulated: define it again.\n");
    }
    EXPECT_EQ(folder.read("dm.bin"), "old states");
    EXPECT_EQ(folder.read("result.bin"), "old result");
    // The grid of a model without voxels is not looked at.
    g_runtime.sequencetype = 2;
    EXPECT_EQ(answer().find("Running current prepared 1D / 2D NMR model...\n"), 0u);
}

} // namespace
} // namespace kor
