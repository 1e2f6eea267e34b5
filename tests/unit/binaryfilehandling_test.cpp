#include "binaryfilehandling.h"

#include "korplatform.h"
#include "support/console_script.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <random>

namespace kor {
namespace {

using kor_test::bytes_of;
using kor_test::play_console;
using kor_test::read_file;
using kor_test::system_line;
using kor_test::TempTree;
using kor_test::write_file;

struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

File open(const char* name, const char* mode) {
    return File(std::fopen(name, mode));
}

void fill(int n, CMatrix& matrix, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> value;
    for (int r = 1; r <= n; ++r) {
        for (int c = 1; c <= n; ++c) {
            matrix[r][c] = Complex2{{7.0, value(random), value(random)}};
        }
    }
}

TEST(BinFileHeader, IsThreeLittleEndianIntegers) {
    const TempTree folder;
    {
        const File file = open("f", "wb");
        EXPECT_EQ(WriteBinFileHeader_status(file.get(), 0, 4, 0x01020304), BINFH_OK);
    }
    EXPECT_EQ(read_file("f"), std::string("\0\0\0\0\4\0\0\0\4\3\2\1", 12));
}

TEST(BinFileHeader, ReadsBackWhatWasWritten) {
    const TempTree folder;
    for (int number : {0, 1, -1, 257, 2147483647, -2147483647 - 1}) {
        {
            const File file = open("f", "wb");
            WriteBinFileHeader_status(file.get(), number, 5, number);
        }
        const File file = open("f", "rb");
        int type = 9, num1 = 9, num2 = 9;
        EXPECT_EQ(ReadBinFileHeader_status(file.get(), &type, &num1, &num2), BINFH_OK);
        EXPECT_EQ(type, number);
        EXPECT_EQ(num1, 5);
        EXPECT_EQ(num2, number);
    }
}

TEST(BinFileHeader, ShortFileNamesTheMissingNumberAndLeavesTheOutputs) {
    const TempTree folder;
    const std::string whole = bytes_of(std::vector<int>{0, 4, 3});
    for (std::size_t length = 0; length < 12; ++length) {
        write_file("f", whole.substr(0, length));
        const File file = open("f", "rb");
        int type = 7, num1 = 8, num2 = 9;
        binfh_status status = BINFH_OK;
        const auto printed = play_console("", [&] {
            errno = EEXIST; // of an earlier call
            status = ReadBinFileHeader_status(file.get(), &type, &num1, &num2);
        });
        EXPECT_EQ(status, BINFH_ERR_IO);
        EXPECT_EQ(printed.err, system_line(length < 4   ? "fread(type)"
                                           : length < 8 ? "fread(num1)"
                                                        : "fread(num2)",
                                           PLATFORM_NO_DATA));
        EXPECT_EQ(printed.out, "");
        EXPECT_EQ(type, 7);
        EXPECT_EQ(num1, 8);
        EXPECT_EQ(num2, 9);
    }
}

TEST(BinFileHeader, MissingPointerIsToldBeforeAnythingIsRead) {
    const TempTree folder;
    write_file("f", bytes_of(std::vector<int>{0, 4, 3}));
    const File file = open("f", "rb");
    int a = 1, b = 2, c = 3;
    EXPECT_EQ(ReadBinFileHeader_status(nullptr, &a, &b, &c), BINFH_ERR_NULLPTR);
    EXPECT_EQ(ReadBinFileHeader_status(file.get(), nullptr, &b, &c), BINFH_ERR_NULLPTR);
    EXPECT_EQ(ReadBinFileHeader_status(file.get(), &a, nullptr, &c), BINFH_ERR_NULLPTR);
    EXPECT_EQ(ReadBinFileHeader_status(file.get(), &a, &b, nullptr), BINFH_ERR_NULLPTR);
    EXPECT_EQ(std::ftell(file.get()), 0);
    EXPECT_EQ(a + b + c, 6);
    EXPECT_EQ(WriteBinFileHeader_status(nullptr, 0, 4, 3), BINFH_ERR_NULLPTR);
}

TEST(BinFileHeader, WriteToAReadOnlyFileFailsAtTheType) {
    const TempTree folder;
    write_file("f", "");
    const File file = open("f", "rb");
    binfh_status status = BINFH_OK;
    int error = 0;
    const auto printed = play_console("", [&] {
        status = WriteBinFileHeader_status(file.get(), 0, 4, 3);
        error = errno;
    });
    EXPECT_EQ(status, BINFH_ERR_IO);
    EXPECT_EQ(printed.err, system_line("fwrite(type)", error));
}

TEST(BinFileHeader, PlainWrappersKeepTheLastStatus) {
    const TempTree folder;
    const int type = 0, num1 = 4, num2 = 3;
    {
        const File file = open("f", "wb");
        WriteBinFileHeader(file.get(), &type, nullptr, &num2);
        EXPECT_EQ(binfh_last_status, BINFH_ERR_NULLPTR);
        WriteBinFileHeader(file.get(), &type, &num1, &num2);
        EXPECT_EQ(binfh_last_status, BINFH_OK);
    }
    const File file = open("f", "rb");
    int a = 9, b = 9, c = 9;
    ReadBinFileHeader(file.get(), &a, nullptr, &c);
    EXPECT_EQ(binfh_last_status, BINFH_ERR_NULLPTR);
    ReadBinFileHeader(file.get(), &a, &b, &c);
    EXPECT_EQ(binfh_last_status, BINFH_OK);
    EXPECT_EQ(b, 4);
    play_console("", [&] { ReadBinFileHeader(file.get(), &a, &b, &c); });
    EXPECT_EQ(binfh_last_status, BINFH_ERR_IO);
}

TEST(BinFileHeader, LegacyReadGivesZerosForAnUnreadableHeader) {
    const TempTree folder;
    write_file("f", bytes_of(std::vector<int>{5, 4}));
    const File file = open("f", "rb");
    int a = 9, b = 9, c = 9;
    EXPECT_EQ(read_legacy_bin_header(file.get(), &a, &b, nullptr), 1);
    EXPECT_EQ(read_legacy_bin_header(nullptr, &a, &b, &c), 1);
    int returned = -1;
    play_console("", [&] { returned = read_legacy_bin_header(file.get(), &a, &b, &c); });
    EXPECT_EQ(returned, 0);
    EXPECT_EQ(a, 0);
    EXPECT_EQ(b, 0);
    EXPECT_EQ(c, 0);
}

TEST(MatrixRow, IsRealAndImaginaryPartOfEveryElement) {
    const TempTree folder;
    static CMatrix m;
    m[2][1] = Complex2{{9.0, 1.5, -2.5}};
    m[2][2] = Complex2{{9.0, 3.5, -4.5}};
    {
        const File file = open("f", "wb");
        EXPECT_EQ(write_cmatrix_row(file.get(), 2, m, 2), 1);
    }
    EXPECT_EQ(read_file("f"), bytes_of(std::vector<double>{1.5, -2.5, 3.5, -4.5}));
    static CMatrix back;
    back[2][1][0] = back[2][2][0] = 8.0;
    const File file = open("f", "rb");
    EXPECT_EQ(read_cmatrix_row(file.get(), 2, back, 2), 1);
    EXPECT_EQ(back[2][1][0], 0.0);
    EXPECT_EQ(back[2][2][0], 0.0);
    EXPECT_EQ(back[2][1][1], 1.5);
    EXPECT_EQ(back[2][2][2], -4.5);
}

TEST(MatrixRow, RefusesNumbersOutOfRangeAndMissingFiles) {
    const TempTree folder;
    static CMatrix m;
    write_file("f", std::string(32 * 300, '\0'));
    const File file = open("f", "r+b");
    for (int n : {-1, 0, 258, 2147483647}) {
        EXPECT_EQ(read_cmatrix_row(file.get(), n, m, 1), 0) << n;
        EXPECT_EQ(write_cmatrix_row(file.get(), n, m, 1), 0) << n;
        EXPECT_EQ(read_cmatrix(file.get(), n, m), 0) << n;
        EXPECT_EQ(write_cmatrix(file.get(), n, m), 0) << n;
        EXPECT_EQ(read_matrix_rows(file.get(), n, 2, m), 0) << n;
        EXPECT_EQ(read_matrix_rows(file.get(), 2, n, m), 0) << n;
    }
    for (int row : {-1, 0, 3}) {
        EXPECT_EQ(read_cmatrix_row(file.get(), 2, m, row), 0) << row;
    }
    EXPECT_EQ(read_cmatrix_row(nullptr, 2, m, 1), 0);
    EXPECT_EQ(write_cmatrix_row(nullptr, 2, m, 1), 0);
    EXPECT_EQ(std::ftell(file.get()), 0);
}

TEST(MatrixRow, AcceptsTheLongestRowButKeepsWhatAMatrixHolds) {
    const TempTree folder;
    constexpr int n = 257;
    std::vector<double> values;
    for (int k = 0; k < 2 * n * n; ++k) {
        values.push_back(k + 0.5);
    }
    write_file("f", bytes_of(values));
    static CMatrix m;
    {
        const File file = open("f", "rb");
        EXPECT_EQ(read_cmatrix(file.get(), n, m), 1);
        EXPECT_EQ(std::ftell(file.get()), 16 * n * n);
    }
    EXPECT_EQ(m[256][256][1], values[2 * (255 * n + 255)]);
    EXPECT_EQ(m[256][0][1], 0.0);
    {
        const File file = open("g", "wb");
        EXPECT_EQ(write_cmatrix(file.get(), n, m), 1);
    }
    for (int k = 0; k < n; ++k) {
        for (std::size_t part : {0U, 1U}) {
            values[2 * static_cast<std::size_t>(k * n + 256) + part] = 0.0;
            values[2 * static_cast<std::size_t>(256 * n + k) + part] = 0.0;
        }
    }
    EXPECT_EQ(read_file("g"), bytes_of(values));
}

TEST(MatrixRow, ThirdMatrixOfATwoMatrixFileFailsToRead) {
    const TempTree folder;
    static CMatrix m;
    fill(4, m, 4711);
    {
        const File file = open("f", "wb");
        WriteBinFileHeader_status(file.get(), 0, 4, 3);
        write_cmatrix(file.get(), 4, m);
        write_cmatrix(file.get(), 4, m);
    }
    const File file = open("f", "rb");
    int type, n, count;
    ASSERT_EQ(ReadBinFileHeader_status(file.get(), &type, &n, &count), BINFH_OK);
    static CMatrix back;
    EXPECT_EQ(read_cmatrix(file.get(), 4, back), 1);
    EXPECT_EQ(read_cmatrix(file.get(), 4, back), 1);
    EXPECT_EQ(read_cmatrix_row(file.get(), 4, back, 1), 0);
}

TEST(MatrixRow, AShortFileGivesItsWholeRowsAndLeavesTheRest) {
    const TempTree folder;
    static CMatrix other, matrix;
    fill(4, other, 7);
    fill(4, matrix, 8);
    const auto kept = std::make_unique<CMatrix>(matrix);
    {
        const File file = open("f", "wb");
        write_cmatrix(file.get(), 4, other);
    }
    write_file("f", read_file("f").substr(0, (2 * 8 + 5) * sizeof(double))); // two rows and a piece
    const File file = open("f", "rb");
    EXPECT_EQ(read_cmatrix(file.get(), 4, matrix), 0);
    for (int r = 1; r <= 4; ++r) {
        for (int c = 1; c <= 4; ++c) {
            EXPECT_EQ(matrix[r][c][1], r <= 2 ? other[r][c][1] : (*kept)[r][c][1]) << r << "," << c;
            EXPECT_EQ(matrix[r][c][2], r <= 2 ? other[r][c][2] : (*kept)[r][c][2]) << r << "," << c;
        }
    }
}

TEST(MatrixRow, RandomMatricesKeepEveryBit) {
    const TempTree folder;
    static CMatrix m, back;
    for (int n : {1, 2, 6, 64, 256}) {
        SCOPED_TRACE("n (and seed) " + std::to_string(n));
        fill(n, m, static_cast<unsigned>(n));
        {
            const File file = open("f", "wb");
            EXPECT_EQ(write_cmatrix(file.get(), n, m), 1);
        }
        EXPECT_EQ(read_file("f").size(), static_cast<std::size_t>(16 * n * n));
        const File file = open("f", "rb");
        EXPECT_EQ(read_cmatrix(file.get(), n, back), 1);
        for (int r = 1; r <= n; ++r) {
            for (int c = 1; c <= n; ++c) {
                ASSERT_EQ(back[r][c][1], m[r][c][1]);
                ASSERT_EQ(back[r][c][2], m[r][c][2]);
            }
        }
    }
}

TEST(MatrixRow, WriteToAReadOnlyFileFails) {
    const TempTree folder;
    write_file("f", "");
    static CMatrix m;
    const File file = open("f", "rb");
    EXPECT_EQ(write_cmatrix_row(file.get(), 2, m, 1), 0);
    EXPECT_EQ(write_cmatrix(file.get(), 2, m), 0);
}

TEST(CopyFileBinary, CopiesEveryByteOverAnExistingFile) {
    const TempTree folder;
    for (std::size_t size : {0U, 1U, 65535U, 65536U, 65537U, 200001U}) {
        std::string bytes(size, '\0');
        for (std::size_t k = 0; k < size; ++k) {
            bytes[k] = static_cast<char>(k * 31 + 7);
        }
        write_file("from", bytes);
        write_file("to", std::string(300000, 'x'));
        EXPECT_EQ(copy_file_binary("from", "to"), BINFH_OK);
        EXPECT_TRUE(read_file("to") == bytes) << size;
    }
}

TEST(CopyFileBinary, OntoItselfChangesNothing) {
    const TempTree folder;
    write_file("file", "bytes");
    EXPECT_EQ(copy_file_binary("file", "./file"), BINFH_OK);
    EXPECT_EQ(read_file("file"), "bytes");
}

TEST(CopyFileBinary, SaysWhichFileCannotBeOpened) {
    const TempTree folder;
    write_file("from", "abc");
    EXPECT_EQ(copy_file_binary(nullptr, "to"), BINFH_ERR_NULLPTR);
    EXPECT_EQ(copy_file_binary("from", nullptr), BINFH_ERR_NULLPTR);
    binfh_status status = BINFH_OK;
    auto printed = play_console("", [&] { status = copy_file_binary("absent", "to"); });
    EXPECT_EQ(status, BINFH_ERR_IO);
    EXPECT_EQ(printed.err, system_line("fopen(src)", ENOENT));
    EXPECT_FALSE(std::filesystem::exists("to"));
    printed = play_console("", [&] { status = copy_file_binary("from", "absent/to"); });
    EXPECT_EQ(status, BINFH_ERR_IO);
    EXPECT_EQ(printed.err, system_line("fopen(dst)", ENOENT));
}

TEST(PrintIoError, PutsTheContextBeforeTheSystemText) {
    auto printed = play_console("", [] {
        errno = EACCES;
        print_io_error("fread(num2)");
    });
    EXPECT_EQ(printed.err, system_line("fread(num2)", EACCES));
    printed = play_console("", [] {
        errno = EACCES;
        print_io_error(nullptr);
    });
    EXPECT_EQ(printed.err, system_line("I/O error", EACCES));
    EXPECT_EQ(printed.out, "");
}

} // namespace
} // namespace kor
