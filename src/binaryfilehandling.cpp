#include "binaryfilehandling.h"

#include "korplatform.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kor {

binfh_status binfh_last_status = BINFH_OK;

namespace {

static_assert(sizeof(int) == 4 && sizeof(double) == 8, "the file format is int32 and IEEE-754 double");

constexpr int kLongestRow = KOR_MAX_STATES + 1;
constexpr std::size_t kCopyChunk = 65536;

// One row in file order; longest row 257 elements.
double g_row_values[2 * kLongestRow];

bool row_length_is_valid(int n) {
    return n >= 1 && n <= kLongestRow;
}

bool read_number(std::FILE* file, int* value, const char* context) {
    errno = 0; // a file that ends too early has no error of the system, and an earlier one is not its reason
    if (std::fread(value, sizeof *value, 1, file) == 1) {
        return true;
    }
    errno = errno != 0 ? errno : PLATFORM_NO_DATA;
    print_io_error(context);
    return false;
}

bool write_number(std::FILE* file, int value, const char* context) {
    if (std::fwrite(&value, sizeof value, 1, file) == 1) {
        return true;
    }
    print_io_error(context);
    return false;
}

void take_row(const double* values, int columns, CMatrix& matrix, int row) {
    if (row > KOR_MAX_STATES) {
        return;
    }
    for (int j = 1; j <= std::min(columns, KOR_MAX_STATES); ++j) {
        matrix[row][j] = Complex2{{0.0, values[2 * j - 2], values[2 * j - 1]}};
    }
}

void give_row(const CMatrix& matrix, int columns, int row, double* values) {
    for (int j = 1; j <= columns; ++j) {
        const bool kept = row <= KOR_MAX_STATES && j <= KOR_MAX_STATES;
        values[2 * j - 2] = kept ? matrix[row][j][1] : 0.0;
        values[2 * j - 1] = kept ? matrix[row][j][2] : 0.0;
    }
}

/// Reads rows first..last as one piece, which must fit g_row_values; what came in whole rows is taken even
/// when the file ends too early.
bool read_rows(std::FILE* file, int columns, CMatrix& matrix, int first, int last) {
    const std::size_t count = 2 * static_cast<std::size_t>(columns);
    const auto rows = static_cast<std::size_t>(last - first + 1);
    const std::size_t got = std::fread(g_row_values, sizeof(double), rows * count, file);
    for (std::size_t k = 0; k < got / count; ++k) {
        take_row(g_row_values + k * count, columns, matrix, first + static_cast<int>(k));
    }
    return got == rows * count;
}

/// Rows of this length that fit g_row_values.
int rows_together(int columns) {
    return std::max(1, kLongestRow / columns);
}

binfh_status copy_chunks(std::FILE* in, std::FILE* out) {
    static unsigned char chunk[kCopyChunk];
    std::size_t got;
    while ((got = std::fread(chunk, 1, kCopyChunk, in)) > 0) {
        if (std::fwrite(chunk, 1, got, out) != got) {
            print_io_error("fwrite");
            return BINFH_ERR_IO;
        }
    }
    if (std::ferror(in)) {
        print_io_error("fread");
        return BINFH_ERR_IO;
    }
    return BINFH_OK;
}

} // namespace

void print_io_error(const char* context) {
    const char* reason = std::strerror(errno);
    std::fprintf(stderr, "%s: %s\n", context ? context : "I/O error", reason);
}

binfh_status ReadBinFileHeader_status(std::FILE* file, int* type, int* num1, int* num2) {
    if (!file || !type || !num1 || !num2) {
        return BINFH_ERR_NULLPTR;
    }
    int read_type, read_num1, read_num2;
    if (!read_number(file, &read_type, "fread(type)") || !read_number(file, &read_num1, "fread(num1)") ||
        !read_number(file, &read_num2, "fread(num2)")) {
        return BINFH_ERR_IO;
    }
    *type = read_type;
    *num1 = read_num1;
    *num2 = read_num2;
    return BINFH_OK;
}

binfh_status WriteBinFileHeader_status(std::FILE* file, int type, int num1, int num2) {
    if (!file) {
        return BINFH_ERR_NULLPTR;
    }
    const bool written = write_number(file, type, "fwrite(type)") &&
                         write_number(file, num1, "fwrite(num1)") && write_number(file, num2, "fwrite(num2)");
    return written ? BINFH_OK : BINFH_ERR_IO;
}

void ReadBinFileHeader(std::FILE* file, int* type, int* num1, int* num2) {
    binfh_last_status = ReadBinFileHeader_status(file, type, num1, num2);
}

void WriteBinFileHeader(std::FILE* file, const int* type, const int* num1, const int* num2) {
    binfh_last_status =
        type && num1 && num2 ? WriteBinFileHeader_status(file, *type, *num1, *num2) : BINFH_ERR_NULLPTR;
}

int read_legacy_bin_header(std::FILE* file, int* type, int* num1, int* num2) {
    if (type && num1 && num2) {
        *type = *num1 = *num2 = 0;
    }
    ReadBinFileHeader(file, type, num1, num2);
    return binfh_last_status == BINFH_ERR_NULLPTR ? 1 : 0;
}

int read_cmatrix_row(std::FILE* file, int n, CMatrix& matrix, int row) {
    if (!file || !row_length_is_valid(n) || row < 1 || row > n) {
        return 0;
    }
    return read_rows(file, n, matrix, row, row) ? 1 : 0;
}

int write_cmatrix_row(std::FILE* file, int n, const CMatrix& matrix, int row) {
    if (!file || !row_length_is_valid(n) || row < 1 || row > n) {
        return 0;
    }
    give_row(matrix, n, row, g_row_values);
    const std::size_t count = 2 * static_cast<std::size_t>(n);
    return std::fwrite(g_row_values, sizeof(double), count, file) == count ? 1 : 0;
}

int read_matrix_rows(std::FILE* file, int columns, int rows, CMatrix& matrix) {
    if (!file || !row_length_is_valid(columns) || !row_length_is_valid(rows)) {
        return 0;
    }
    const int together = rows_together(columns);
    for (int row = 1; row <= rows; row += together) {
        if (!read_rows(file, columns, matrix, row, std::min(row + together - 1, rows))) {
            return 0;
        }
    }
    return 1;
}

int read_cmatrix(std::FILE* file, int n, CMatrix& matrix) {
    return read_matrix_rows(file, n, n, matrix);
}

int write_cmatrix(std::FILE* file, int n, const CMatrix& matrix) {
    if (!file || !row_length_is_valid(n)) {
        return 0;
    }
    const std::size_t length = 2 * static_cast<std::size_t>(n);
    const int together = rows_together(n);
    for (int first = 1; first <= n; first += together) {
        const int last = std::min(first + together - 1, n);
        for (int row = first; row <= last; ++row) {
            give_row(matrix, n, row, g_row_values + static_cast<std::size_t>(row - first) * length);
        }
        const std::size_t count = static_cast<std::size_t>(last - first + 1) * length;
        if (std::fwrite(g_row_values, sizeof(double), count, file) != count) {
            return 0;
        }
    }
    return 1;
}

binfh_status copy_file_binary(const char* src, const char* dst) {
    if (!src || !dst) {
        return BINFH_ERR_NULLPTR;
    }
    std::FILE* in = platform_open(src, "rb");
    if (!in) {
        print_io_error("fopen(src)");
        return BINFH_ERR_IO;
    }
    if (platform_same_file(src, dst)) {
        std::fclose(in);
        return BINFH_OK;
    }
    std::FILE* out = platform_open(dst, "wb");
    if (!out) {
        print_io_error("fopen(dst)");
        std::fclose(in);
        return BINFH_ERR_IO;
    }
    binfh_status status = copy_chunks(in, out);
    std::fclose(in);
    // A buffered write may fail as late as here.
    if (std::fclose(out) != 0 && status == BINFH_OK) {
        print_io_error("fwrite");
        status = BINFH_ERR_IO;
    }
    return status;
}

} // namespace kor
