// Density-matrix files on a disk that is full.
#include "kor/density_file.h"

#include "density_reports.h"
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
using kor_test::system_line;
using kor_test::TempTree;
using kor_test::unread_answers;
using kor_test::write_density_file;

TEST(CreateDensityFile, FullDiskIsTold) {
    const TempTree folder;
    std::filesystem::create_symlink("/dev/full", "dm.bin");
    static CMatrix m;
    auto printed = play_console("taken\nkept\n", [] { EXPECT_FALSE(create_density_file(waiting, 2, 1, m)); });
    EXPECT_EQ(printed.out, "Rotate3D: write error while initializing dm.bin\n");
    EXPECT_EQ(printed.err, system_line("dm.bin", ENOSPC));
    EXPECT_EQ(unread_answers(), "kept\n");
    printed = play_console("kept\n", [] { EXPECT_FALSE(create_density_file(silent, 16, 20, m)); });
    EXPECT_EQ(printed.out, "Rotate2D: write error while initializing dm.bin\n");
    EXPECT_EQ(printed.err, system_line("dm.bin", ENOSPC));
    EXPECT_EQ(unread_answers(), "kept\n");
}

TEST(DensityStream, FullDiskIsAWriteErrorWithoutWaiting) {
    const TempTree folder;
    write_density_file("dm.bin", 2, {Matrix::Identity(2, 2)});
    std::filesystem::create_symlink("/dev/full", "store");
    for (const DensityReport& report : {waiting, silent}) {
        const auto printed = play_console("kept\n", [&] {
            DensityStream stream;
            ASSERT_TRUE(open_density_stream(report, 2, 1, stream));
            const bool written = read_next_densities(report, stream, 2, 1) == 1 &&
                                 write_next_densities(report, stream, 2, 1) &&
                                 close_density_stream(report, stream);
            EXPECT_FALSE(written);
        });
        EXPECT_EQ(printed.out, std::string(report.prefix) + ": write error to store\n");
        EXPECT_EQ(printed.err, system_line("store", ENOSPC));
    }
    EXPECT_EQ(unread_answers(), "kept\n");
}

TEST(ResizeDensityFile, FullDiskIsToldAndTheStatesKept) {
    const TempTree folder;
    static CMatrix work;
    write_density_file("dm.bin", 2, {Matrix::Identity(2, 2)});
    std::filesystem::create_symlink("/dev/full", "store");
    const auto printed = play_console("", [] { EXPECT_FALSE(resize_density_file(silent, 2, 5, work)); });
    EXPECT_EQ(printed.out, "Rotate2D: write error while resizing dm.bin\n");
    EXPECT_EQ(printed.err, system_line("store", ENOSPC));
    EXPECT_EQ(kor_test::read_density_file("dm.bin").count, 1);
}

TEST(CopyDensityFile, AFullDiskFailsWithoutAWord) {
    const TempTree folder;
    folder.write("from", "states");
    const auto printed = play_console("", [] { EXPECT_EQ(copy_density_file("from", "/dev/full"), 0); });
    EXPECT_EQ(printed.out + printed.err, "");
}

} // namespace
} // namespace kor
