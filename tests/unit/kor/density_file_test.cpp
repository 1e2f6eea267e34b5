#include "kor/density_file.h"

#include "density_reports.h"
#include "support/console_script.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

namespace kor {
namespace {

using kor_test::bytes_of;
using kor_test::DensityFile;
using kor_test::Matrix;
using kor_test::play_console;
using kor_test::read_density_file;
using kor_test::read_file;
using kor_test::system_line;
using kor_test::TempTree;
using kor_test::unread_answers;
using kor_test::write_density_file;
using kor_test::write_file;

Matrix numbered(int n, double from) {
    Matrix m(n, n);
    for (int r = 0; r < n; ++r) {
        for (int c = 0; c < n; ++c) {
            m(r, c) = {from + r * n + c, -(from + r * n + c) / 3};
        }
    }
    return m;
}

TEST(CreateDensityFile, HoldsCopiesBehindTheHeader) {
    const TempTree folder;
    static CMatrix m;
    kor_test::set_matrix(numbered(3, 1), m);
    EXPECT_TRUE(create_density_file(waiting, 3, 4, m));
    const DensityFile file = read_density_file("dm.bin");
    EXPECT_EQ(read_file("dm.bin").substr(0, 12), bytes_of(std::vector<int>{0, 3, 4}));
    ASSERT_EQ(file.matrices.size(), 4U);
    EXPECT_EQ(file.trailing_bytes, 0U);
    for (const Matrix& matrix : file.matrices) {
        EXPECT_EQ(matrix, numbered(3, 1));
    }
}

TEST(CreateDensityFile, UnopenableFileGivesTheSystemTextAndDoesNotWait) {
    const TempTree folder;
    std::filesystem::create_directory("dm.bin");
    static CMatrix m;
    const auto printed = play_console("kept\n", [] { EXPECT_FALSE(create_density_file(waiting, 2, 1, m)); });
    EXPECT_EQ(printed.err, system_line("dm.bin", EISDIR));
    EXPECT_EQ(printed.out, "");
    EXPECT_EQ(unread_answers(), "kept\n");
}

TEST(CreateDensityFile, CountThatTheHeaderCannotHoldIsAHeaderFailure) {
    const TempTree folder;
    static CMatrix m;
    auto printed =
        play_console("taken\nkept\n", [] { EXPECT_FALSE(create_density_file(waiting, 2, 2147483648LL, m)); });
    EXPECT_EQ(printed.out, "Rotate3D: failed to write dm.bin header\n");
    EXPECT_EQ(unread_answers(), "kept\n");
}

TEST(OpenDensityStream, RefusesEveryHeaderButTheExpectedOne) {
    const TempTree folder;
    const std::vector<int> odd{0, 1, -1, 2147483647, -2147483647 - 1, 257, 258};
    for (int type : odd) {
        for (int n : odd) {
            for (int count : odd) {
                const std::string bytes = bytes_of(std::vector<int>{type, n, count});
                write_file("dm.bin", bytes);
                DensityStream stream;
                bool opened = false;
                const auto printed = play_console("", [&] {
                    opened = open_density_stream(silent, 1, 257, stream);
                    if (opened) {
                        abandon_density_stream(stream);
                    }
                });
                const bool expected = type == 0 && n == 1 && count == 257;
                EXPECT_EQ(opened, expected);
                EXPECT_EQ(printed.out,
                          expected ? ""
                                   : "Rotate2D: dm.bin dimensions mismatch (type=" + std::to_string(type) +
                                         " n=" + std::to_string(n) + " ndw=" + std::to_string(count) +
                                         "), expected (0 1 257)\n");
                EXPECT_EQ(printed.err, "");
                EXPECT_EQ(read_file("dm.bin"), bytes);
            }
        }
    }
}

TEST(OpenDensityStream, MismatchWaitsForEnterWhereTheFamilyDoes) {
    const TempTree folder;
    write_density_file("dm.bin", 2, {numbered(2, 1)});
    DensityStream stream;
    play_console("taken\nkept\n", [&] {
        EXPECT_FALSE(open_density_stream(waiting, 2, 2, stream));
        EXPECT_FALSE(open_density_stream(silent, 2, 2, stream));
    });
    EXPECT_EQ(unread_answers(), "kept\n");
    EXPECT_FALSE(std::filesystem::exists("store"));
}

TEST(OpenDensityStream, ShortHeaderIsToldWithoutWaiting) {
    const TempTree folder;
    for (std::size_t length = 0; length < 12; ++length) {
        write_file("dm.bin", bytes_of(std::vector<int>{0, 2, 1}).substr(0, length));
        DensityStream stream;
        const auto printed = play_console("kept\n", [&] {
            EXPECT_FALSE(open_density_stream(waiting, 2, 1, stream));
            EXPECT_FALSE(open_density_stream(silent, 2, 1, stream));
        });
        EXPECT_EQ(printed.out,
                  "Rotate3D: failed to read dm.bin header\nRotate2D: failed to read dm.bin header\n");
    }
    EXPECT_EQ(unread_answers(), "kept\n");
}

TEST(OpenDensityStream, AbsentFilesGiveTheSystemText) {
    const TempTree folder;
    DensityStream stream;
    auto printed = play_console("", [&] { EXPECT_FALSE(open_density_stream(waiting, 2, 1, stream)); });
    EXPECT_EQ(printed.err, system_line("dm.bin", ENOENT));
    write_density_file("dm.bin", 2, {numbered(2, 1)});
    std::filesystem::create_directory("store");
    printed = play_console("", [&] { EXPECT_FALSE(open_density_stream(waiting, 2, 1, stream)); });
    EXPECT_EQ(printed.err, system_line("store", EISDIR));
    EXPECT_EQ(printed.out, "");
}

TEST(DensityStream, CarriesMatricesFromDmBinToStore) {
    const TempTree folder;
    write_density_file("dm.bin", 2, {numbered(2, 1), numbered(2, 10)});
    const std::string before = read_file("dm.bin");
    DensityStream stream;
    ASSERT_TRUE(open_density_stream(waiting, 2, 2, stream));
    for (const std::size_t at : {12, 12 + 64}) {
        ASSERT_EQ(read_next_densities(waiting, stream, 2, 1), 1);
        EXPECT_EQ(std::memcmp(stream.states, &before[at], 64), 0);
        EXPECT_TRUE(write_next_densities(waiting, stream, 2, 1));
    }
    EXPECT_TRUE(close_density_stream(waiting, stream));
    EXPECT_EQ(read_file("store"), before);
    EXPECT_EQ(read_file("dm.bin"), before);
}

TEST(DensityStream, MissingMatrixIsAReadError) {
    const TempTree folder;
    write_file("dm.bin", bytes_of(std::vector<int>{0, 2, 1}) + std::string(63, 'x'));
    DensityStream stream;
    const auto printed = play_console("taken\nkept\n", [&] {
        ASSERT_TRUE(open_density_stream(waiting, 2, 1, stream));
        EXPECT_EQ(read_next_densities(waiting, stream, 2, 1), 0);
        EXPECT_EQ(read_next_densities(silent, stream, 2, 1), 0);
        abandon_density_stream(stream);
    });
    EXPECT_EQ(printed.out, "Rotate3D: read error from dm.bin\nRotate2D: read error from dm.bin\n");
    EXPECT_EQ(unread_answers(), "kept\n");
}

TEST(ResizeDensityFile, RepeatsTheFirstMatrix) {
    const TempTree folder;
    static CMatrix work;
    for (int count : {1, 2, 5}) {
        write_density_file("dm.bin", 2, {numbered(2, 1), numbered(2, 10), numbered(2, 20)});
        EXPECT_TRUE(resize_density_file(silent, 2, count, work));
        const DensityFile file = read_density_file("dm.bin");
        EXPECT_EQ(file.type, 0);
        EXPECT_EQ(file.count, count);
        ASSERT_EQ(file.matrices.size(), static_cast<std::size_t>(count));
        for (const Matrix& matrix : file.matrices) {
            EXPECT_EQ(matrix, numbered(2, 1));
        }
        EXPECT_EQ(kor_test::dense(2, work), numbered(2, 1));
        EXPECT_FALSE(std::filesystem::exists("store"));
    }
}

TEST(ResizeDensityFile, LeavesAFileOfTheRightCountOrOfAnotherKind) {
    const TempTree folder;
    static CMatrix work;
    EXPECT_TRUE(resize_density_file(silent, 2, 5, work));
    EXPECT_FALSE(std::filesystem::exists("dm.bin"));
    for (const std::vector<int>& header :
         std::vector<std::vector<int>>{{0, 2, 5}, {1, 2, 3}, {0, 3, 3}, {0, 2, 0}, {0, 2, -1}}) {
        const std::string bytes = bytes_of(header) + std::string(1000, 'x');
        write_file("dm.bin", bytes);
        EXPECT_TRUE(resize_density_file(silent, 2, 5, work));
        EXPECT_EQ(read_file("dm.bin"), bytes);
    }
}

TEST(ResizeDensityFile, SaysWhatFailed) {
    const TempTree folder;
    static CMatrix work;
    write_file("dm.bin", bytes_of(std::vector<int>{0, 2, 3}) + std::string(63, 'x'));
    auto printed = play_console("", [] { EXPECT_FALSE(resize_density_file(silent, 2, 5, work)); });
    EXPECT_EQ(printed.out, "Rotate2D: read error from dm.bin\n");
    write_density_file("dm.bin", 2, {numbered(2, 1)});
    std::filesystem::create_directory("store");
    printed = play_console("", [] { EXPECT_FALSE(resize_density_file(silent, 2, 5, work)); });
    EXPECT_EQ(printed.err, system_line("store", EISDIR));
}

TEST(RenameStore, ReplacesDmBin) {
    const TempTree folder;
    write_file("dm.bin", "old");
    write_file("store", "new");
    EXPECT_TRUE(rename_store());
    EXPECT_EQ(read_file("dm.bin"), "new");
    EXPECT_FALSE(std::filesystem::exists("store"));
}

TEST(RenameStore, WithoutStoreGivesTheSystemTextAndKeepsDmBin) {
    const TempTree folder;
    write_file("dm.bin", "old");
    const auto printed = play_console("", [] { EXPECT_FALSE(rename_store()); });
    EXPECT_EQ(printed.err, system_line("rename(store->dm.bin)", ENOENT));
    EXPECT_EQ(read_file("dm.bin"), "old");
}

TEST(CopyStore, CopiesTheBytesAndDeletesStore) {
    const TempTree folder;
    write_file("dm.bin", "older and longer");
    write_file("store", "new");
    EXPECT_TRUE(copy_store(silent));
    EXPECT_EQ(read_file("dm.bin"), "new");
    EXPECT_FALSE(std::filesystem::exists("store"));
}

TEST(CopyStore, FailureIsToldAndStoreDeleted) {
    const TempTree folder;
    std::filesystem::create_directory("dm.bin");
    write_file("store", "new");
    const auto printed = play_console("", [] { EXPECT_FALSE(copy_store(silent)); });
    EXPECT_EQ(printed.out, "Rotate2D: failed to copy store to dm.bin\n");
    EXPECT_FALSE(std::filesystem::exists("store"));
}

TEST(CopyDensityFile, CopiesEveryByteOverAnExistingFile) {
    const TempTree folder;
    for (std::size_t size : {0U, 1U, 8191U, 8192U, 8193U, 50001U}) {
        std::string bytes(size, '\0');
        for (std::size_t k = 0; k < size; ++k) {
            bytes[k] = static_cast<char>(k * 31 + 7);
        }
        write_file("from", bytes);
        write_file("to", std::string(60000, 'x'));
        EXPECT_EQ(copy_density_file("from", "to"), 1);
        EXPECT_TRUE(read_file("to") == bytes) << size;
    }
}

TEST(CopyDensityFile, OntoItsOwnNameChangesNothing) {
    const TempTree folder;
    write_file("dm.bin", "states");
    EXPECT_EQ(copy_density_file("dm.bin", "dm.bin"), 1);
    EXPECT_EQ(read_file("dm.bin"), "states");
    EXPECT_EQ(copy_density_file("absent", "absent"), 0);
    for (const std::string& name : {std::string("./dm.bin"), folder.path("dm.bin")}) {
        EXPECT_EQ(copy_density_file("dm.bin", name.c_str()), 1);
        EXPECT_EQ(copy_density_file(name.c_str(), "dm.bin"), 1);
        EXPECT_EQ(read_file("dm.bin"), "states");
    }
}

TEST(CopyDensityFile, FailsAtTheSourceOrAtTheTarget) {
    const TempTree folder;
    write_file("from", "states");
    const char* culprit = nullptr;
    EXPECT_EQ(copy_density_file("absent", "to", &culprit), 0);
    EXPECT_STREQ(culprit, "absent");
    EXPECT_EQ(copy_density_file("from", "absent/to", &culprit), 0);
    EXPECT_STREQ(culprit, "absent/to");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"from"});
}

TEST(CopyDensityFile, FailsWithoutAWord) {
    const TempTree folder;
    write_file("from", "states");
    const auto printed = play_console("", [] {
        EXPECT_EQ(copy_density_file("absent", "to"), 0);
        EXPECT_EQ(copy_density_file("from", "absent/to"), 0);
        EXPECT_EQ(copy_density_file(nullptr, "to"), 0);
        EXPECT_EQ(copy_density_file("from", nullptr), 0);
        EXPECT_EQ(copy_density_file(".", "to"), 0);
    });
    EXPECT_EQ(printed.out + printed.err, "");
}

TEST(ReadDensityMatrix, ReadsRowsOfTheGivenLength) {
    const TempTree folder;
    write_file("f", bytes_of(std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    static CMatrix m;
    m[3][1][0] = 5.0;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen("f", "rb"), std::fclose);
    EXPECT_EQ(read_density_matrix(file.get(), 2, 3, m), 1);
    EXPECT_EQ(m[1][1][1], 1.0);
    EXPECT_EQ(m[2][2][2], 8.0);
    EXPECT_EQ(m[3][1][0], 0.0);
    EXPECT_EQ(m[3][1][1], 9.0);
    EXPECT_EQ(read_density_matrix(file.get(), 2, 1, m), 0);
}

TEST(ReadDensityMatrix, RefusesNumbersOutOfRange) {
    const TempTree folder;
    write_file("f", std::string(100, 'x'));
    static CMatrix m;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen("f", "rb"), std::fclose);
    for (int wrong : {0, -1, 258, 2147483647, -2147483647 - 1}) {
        EXPECT_EQ(read_density_matrix(file.get(), wrong, 1, m), 0);
        EXPECT_EQ(read_density_matrix(file.get(), 1, wrong, m), 0);
    }
    EXPECT_EQ(read_density_matrix(nullptr, 1, 1, m), 0);
    EXPECT_EQ(std::ftell(file.get()), 0);
}

} // namespace
} // namespace kor
