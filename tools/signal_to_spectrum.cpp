// Turns a receiver signal file of kor into a table for plotting:
//     signal-to-spectrum SIGNAL ACQUISITION_S BROADENING_HZ OUTPUT.csv
//         one signal: lines "offset_hz,re,im,magnitude"
//     signal-to-spectrum SIGNAL ACQUISITION_S BROADENING_HZ OUTPUT.csv EVOLUTION_STEP_S
//         all rows of a two-dimensional signal: lines "f1_hz,f2_hz,magnitude", an empty line behind each row
// ACQUISITION_S is the duration of the acquisition sector. One signal: exponential line broadening, eight
// times zero filling, and the phase of a 90 degree pulse about x (a signal that begins along +y is
// absorption). Two dimensions: sine bells over both times (BROADENING_HZ is not used), twice zero filling,
// magnitude. A spin of positive offset turns as exp(-i w t); the forward transform exp(+i w t) puts it at its
// positive offset. Exit status 0 or 1.
#include "binaryfilehandling.h"
#include "four3.h"
#include "korlimits.h"
#include "korplatform.h"

#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

using namespace kor;
using Row = std::vector<std::complex<double>>;

/// The rows of a signal file; none when it cannot be read or has no power of two points.
std::vector<Row> read_signals(const char* path) {
    std::vector<Row> rows;
    std::FILE* file = platform_open(path, "rb");
    if (!file) {
        std::perror(path);
        return rows;
    }
    int type = 0, points = 0, count = 0;
    const bool header = ReadBinFileHeader_status(file, &type, &points, &count) == BINFH_OK;
    if (header && type == 1 && points > 0 && count > 0 && is_power_of_two(static_cast<std::size_t>(points))) {
        rows.assign(static_cast<std::size_t>(count), Row(static_cast<std::size_t>(points)));
        for (Row& row : rows)
            if (std::fread(static_cast<void*>(row.data()), sizeof row[0], row.size(), file) != row.size()) {
                rows.clear();
                break;
            }
    }
    std::fclose(file);
    if (rows.empty())
        std::fprintf(stderr, "%s is no receiver signal with a power of two points\n", path);
    return rows;
}

/// Transforms a row of 2^k points in place and moves offset 0 to index size/2.
void transform_centred(Row& row) {
    std::vector<double> data(2 * row.size());
    for (std::size_t k = 0; k < row.size(); ++k) {
        data[2 * k] = row[k].real();
        data[2 * k + 1] = row[k].imag();
    }
    four2_status(data.data(), row.size(), false);
    for (std::size_t k = 0; k < row.size(); ++k)
        row[(k + row.size() / 2) % row.size()] = {data[2 * k], data[2 * k + 1]};
}

/// Offset in Hz of index k of a centred spectrum of `size` points with the dwell time in seconds.
double centred_offset(std::size_t k, std::size_t size, double dwell) {
    return (static_cast<double>(k) - static_cast<double>(size / 2)) / (static_cast<double>(size) * dwell);
}

void sine_bell(Row& row) {
    for (std::size_t k = 0; k < row.size(); ++k)
        row[k] *= std::sin(KOR_PI * (static_cast<double>(k) + 0.5) / static_cast<double>(row.size()));
}

void write_1d(std::FILE* out, Row row, double dwell, double broadening_hz) {
    row[0] *= 0.5;
    for (std::size_t k = 0; k < row.size(); ++k)
        row[k] *=
            std::complex<double>(0, -std::exp(-KOR_PI * broadening_hz * dwell * static_cast<double>(k)));
    row.resize(8 * row.size());
    transform_centred(row);
    std::fprintf(out, "# offset_hz,re,im,magnitude\n");
    for (std::size_t k = 0; k < row.size(); ++k)
        std::fprintf(out, "%.9g,%.9g,%.9g,%.9g\n", centred_offset(k, row.size(), dwell),
                     row[k].real() * dwell, row[k].imag() * dwell, std::abs(row[k]) * dwell);
}

void write_2d(std::FILE* out, std::vector<Row> rows, double dwell, double step) {
    std::size_t evolutions = 1;
    while (evolutions < 2 * rows.size())
        evolutions *= 2;
    const std::size_t points = 2 * rows[0].size();
    std::vector<Row> columns(points, Row(rows.size()));
    for (std::size_t r = 0; r < rows.size(); ++r) {
        sine_bell(rows[r]);
        rows[r].resize(points);
        transform_centred(rows[r]);
        for (std::size_t c = 0; c < points; ++c)
            columns[c][r] = rows[r][c];
    }
    for (Row& column : columns) {
        sine_bell(column);
        column.resize(evolutions);
        transform_centred(column);
    }
    std::fprintf(out, "# f1_hz,f2_hz,magnitude\n");
    for (std::size_t r = 0; r < evolutions; ++r) {
        for (std::size_t c = 0; c < points; ++c)
            std::fprintf(out, "%.9g,%.9g,%.9g\n", centred_offset(r, evolutions, step),
                         centred_offset(c, points, dwell), std::abs(columns[c][r]) * dwell * step);
        std::fprintf(out, "\n");
    }
}

} // namespace

int main(int argc, char** argv) {
    const double acquisition = argc > 2 ? std::atof(argv[2]) : 0;
    const double step = argc > 5 ? std::atof(argv[5]) : 0;
    if (argc < 5 || argc > 6 || acquisition <= 0 || (argc == 6 && step <= 0)) {
        std::fprintf(stderr, "usage: signal-to-spectrum SIGNAL ACQUISITION_S BROADENING_HZ OUTPUT.csv "
                             "[EVOLUTION_STEP_S]\n");
        return 1;
    }
    const std::vector<Row> rows = read_signals(argv[1]);
    if (rows.empty())
        return 1;
    std::FILE* out = platform_open(argv[4], "w");
    if (!out) {
        std::perror(argv[4]);
        return 1;
    }
    const double dwell = acquisition / static_cast<double>(rows[0].size());
    if (argc == 6)
        write_2d(out, rows, dwell, step);
    else
        write_1d(out, rows[0], dwell, std::atof(argv[3]));
    if (std::fclose(out) != 0) {
        std::perror(argv[4]);
        return 1;
    }
    return 0;
}
