#include "observablespectrumcalculator/spectrum_2d.h"

#include "binaryfilehandling.h"
#include "double_buffer.h"
#include "four3.h"
#include "korplatform.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace kor {

namespace {

constexpr char signal_name[] = "korsign.bin";
constexpr char spectra_name[] = "spectra.bin";
constexpr char sorted_name[] = "sort.bin";

struct Header {
    int type = 0;
    int num1 = 0;
    int num2 = 0;
};

std::size_t positive(int count) {
    return static_cast<std::size_t>(std::max(count, 0));
}

/// Null, with a message, when there is not enough memory.
DoubleBuffer allocate_or_report(std::size_t count) {
    DoubleBuffer doubles = allocate_doubles(count);
    if (!doubles)
        std::perror("signal buffer");
    return doubles;
}

/// Weighted, first point halved, transformed forward.
void transform_row(double* row, int points) {
    row[0] *= 0.5;
    row[1] *= 0.5;
    for (int k = 0; k < points; ++k) {
        const double weight = std::exp(-10.0 * k / points);
        row[2 * k] *= weight;
        row[2 * k + 1] *= weight;
    }
    four2(row, static_cast<std::size_t>(points), 1);
}

/// The halves of the row exchanged: zero frequency moves to the middle.
void swap_row_halves(double* row, int points) {
    std::rotate(row, row + points, row + 2 * points);
}

/// The two files of a pass.
struct Pass {
    const char* in_name;
    const char* out_name;
    std::FILE* in;
    std::FILE* out;
};

/// All zeros, with a message, when there is none.
Header read_header(const Pass& pass) {
    Header header;
    read_legacy_bin_header(pass.in, &header.type, &header.num1, &header.num2);
    if (binfh_last_status != BINFH_OK)
        std::fprintf(stderr, "%s: its header could not be read\n", pass.in_name);
    return header;
}

void report_write_error(const Pass& pass) {
    std::perror(pass.out_name);
    std::printf(">>> WRITE TO BINARY FILE ERROR <<<\n");
}

void report_read_error(const Pass& pass, const char* text) {
    const char* reason = std::ferror(pass.in) ? std::strerror(errno) : "ends too early";
    std::fprintf(stderr, "%s: %s\n", pass.in_name, reason);
    std::printf("%s\n", text);
}

void close_pass(const Pass& pass) {
    std::fclose(pass.in);
    if (std::fclose(pass.out) != 0)
        report_write_error(pass);
}

/// Every row of the input through `change` into the output, behind the same header.
void pass_rows(const Pass& pass, void (*change)(double*, int)) {
    const Header header = read_header(pass);
    if (WriteBinFileHeader_status(pass.out, header.type, header.num1, header.num2) != BINFH_OK) {
        report_write_error(pass);
        return;
    }
    const std::size_t width = 2 * positive(header.num1);
    if (width == 0)
        return;
    const DoubleBuffer row = allocate_or_report(width);
    for (int r = 0; row && r < header.num2; ++r) {
        if (std::fread(row.get(), sizeof(double), width, pass.in) != width) {
            report_read_error(pass, ">>> READ BINARY FILE ERROR <<<");
            return;
        }
        change(row.get(), header.num1);
        if (std::fwrite(row.get(), sizeof(double), width, pass.out) != width) {
            report_write_error(pass);
            return;
        }
    }
}

/// One pass from file to file. Returns whether both could be opened; `tag` (may be null) names an open
/// failure.
bool run_pass(const char* in_name, const char* out_name, void (*change)(double*, int), const char* tag) {
    std::FILE* const in = platform_open(in_name, "rb");
    std::FILE* const out = in != nullptr ? platform_open(out_name, "wb") : nullptr;
    if (out == nullptr) {
        if (tag != nullptr)
            std::perror(tag);
        if (in != nullptr)
            std::fclose(in);
        return false;
    }
    const Pass pass = {in_name, out_name, in, out};
    pass_rows(pass, change);
    close_pass(pass);
    return true;
}

bool write_columns_as_rows(std::FILE* out, const double* data, std::size_t rows, std::size_t cols) {
    // A damaged header may promise 2^31 columns of nothing.
    for (std::size_t c = 0; rows > 0 && c < cols; ++c)
        for (std::size_t r = 0; r < rows; ++r)
            if (std::fwrite(data + 2 * (r * cols + c), sizeof(double), 2, out) != 2)
                return false;
    return true;
}

void transpose_open_files(const Pass& pass) {
    const Header header = read_header(pass);
    const std::size_t cols = positive(header.num1);
    const std::size_t rows = positive(header.num2);
    const std::size_t count = 2 * rows * cols;
    const DoubleBuffer data = allocate_or_report(count);
    if (!data)
        return;
    if (std::fread(data.get(), sizeof(double), count, pass.in) != count) {
        report_read_error(pass, ">>> READ BINARY FILE ERROR (transpose) <<<");
        return;
    }
    if (WriteBinFileHeader_status(pass.out, header.type, header.num2, header.num1) != BINFH_OK ||
        !write_columns_as_rows(pass.out, data.get(), rows, cols))
        report_write_error(pass);
}

/// Returns whether both files could be opened; a message when not.
bool transpose(const char* in_name, const char* out_name) {
    std::FILE* const in = platform_open(in_name, "rb");
    if (in == nullptr) {
        std::perror("fopen(in)");
        return false;
    }
    std::FILE* const out = platform_open(out_name, "wb");
    if (out == nullptr) {
        std::perror("fopen(out)");
        std::fclose(in);
        return false;
    }
    const Pass pass = {in_name, out_name, in, out};
    transpose_open_files(pass);
    close_pass(pass);
    return true;
}

} // namespace

void DispTransvSign() {
    run_pass(signal_name, spectra_name, transform_row, "fopen");
}

void TransposeDataMatrix(const char* in_mat_name, const char* out_mat_name) {
    transpose(in_mat_name, out_mat_name);
}

void Calc2Dfft() {
    const bool finished =
        run_pass(signal_name, spectra_name, transform_row, "fopen") &&
        run_pass(spectra_name, sorted_name, swap_row_halves, nullptr) &&
        transpose(sorted_name, spectra_name) && run_pass(spectra_name, sorted_name, transform_row, nullptr) &&
        run_pass(sorted_name, spectra_name, swap_row_halves, nullptr) && transpose(spectra_name, sorted_name);
    // What stands there now is of an earlier pass, or of an earlier spectrum.
    if (!finished)
        platform_remove(sorted_name);
}

} // namespace kor
