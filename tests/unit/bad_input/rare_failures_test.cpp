// Failures that need an odd file or folder in the way: each says what it met.
#include "kor/density_file.h"
#include "korcurrentmodel/work_dirs.h"
#include "korpaths.h"
#include "korplatform.h"
#include "observablespectrumcalculator/spectrum_2d.h"
#include "observablespectrumcalculator/spectrum_files.h"
#include "rfpulselib/start_pulse.h"
#include "rfwaveformfile.h"
#include "support/console_script.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>

using namespace kor;
using namespace kor_test;
namespace fs = std::filesystem;

TEST(RunScratchFolder, AFileInItsPlaceIsToldAndTheProgramStays) {
    char executable_dir[1024];
    ASSERT_EQ(KOR_GetExecutableDir(executable_dir, sizeof executable_dir), 1);
    const TempTree tree;
    const fs::path runs = fs::path(executable_dir) / "runtime/runs";
    const fs::path in_the_way = runs / ("in_the_way_" + std::to_string(platform_process_id()));
    write_file(in_the_way, "");
    const ConsoleOutput console =
        play_console("", [] { enter_private_model_run_work_dir("models/In the way.kormodel"); });
    EXPECT_EQ(console.out, "[KOR] Warning: could not enter run scratch directory: Not a directory\n");
    EXPECT_EQ(fs::current_path(), tree.root());
    fs::remove(in_the_way);
}

TEST(SignalFileHeader, OneThatIsCutIsNamedByTheTransformAndByTheWriters) {
    const TempTree tree;
    tree.write("korsign.bin", "eleven byte");
    const std::string text = "korsign.bin: its header could not be read\n";
    EXPECT_NE(play_console("", DispTransvSign).err.find(text), std::string::npos);
    EXPECT_NE(play_console("", [] { write_pv_wave_file("x.wave"); }).err.find(text), std::string::npos);
    const ConsoleOutput tables = play_console("", [] { write_spectrum_csv_files("x_td", "x_fd", 1.0); });
    EXPECT_NE(tables.err.find(text), std::string::npos);
}

TEST(ExplainFailedCopy, AFileWithoutASystemErrorEndsTooEarly) {
    const ConsoleOutput console = play_console("", [] {
        errno = 0;
        explain_failed_copy("store");
        errno = EACCES;
        explain_failed_copy("dm.bin");
    });
    EXPECT_EQ(console.err, "store: ends too early\ndm.bin: Permission denied\n");
}

TEST(FixedGridStartPulse, NeedsEveryArgument) {
    int ap = 4;
    double h = 1e-3;
    double xb[4] = {};
    const ConsoleOutput console = play_console("100\n90\n0\n", [&] {
        EXPECT_EQ(GenerateOptimizationStartPulseFixedGridInteractive(&ap, &h, xb, nullptr, 4), 0);
    });
    EXPECT_EQ(console.err, "GenerateOptimizationStartPulseFixedGridInteractive: null pointer argument\n");
    EXPECT_EQ(unread_answers(), "100\n90\n0\n");
}

TEST(WaveformFile, TheOptimisersReaderNamesAFileThatIsTooShort) {
    const TempTree tree;
    tree.write("short.bin", std::string(63, '\0'));
    double xb[4], yb[4];
    const ConsoleOutput console =
        play_console("", [&] { EXPECT_EQ(koropt_load_waveform_xy("short.bin", 4, xb, yb), 0); });
    EXPECT_EQ(console.err, "short.bin: too short for 2 blocks of 4 samples\n");
}
