#include "binaryfilehandling.h"
#include "kordatafileio.h"
#include "korplatform.h"

#include <cerrno>
#include <cstdio>

namespace kor {

dataio_status dataio_last_status = DATAIO_OK;

namespace {

/// Opens the file and calls write_line(file, i), which returns the count of fprintf, for i = 0..N-1.
template <typename WriteLine>
dataio_status write_lines(unsigned N, const double* values, const char* path, WriteLine write_line) {
    if (!values || !path)
        return DATAIO_ERR_NULLPTR;
    std::FILE* file = platform_open(path, "w");
    if (!file) {
        print_io_error("fopen(write)");
        return DATAIO_ERR_IO;
    }
    bool written = true;
    for (unsigned i = 0; i < N && written; ++i)
        written = write_line(file, i) > 0;
    // A full disk shows when the buffered lines leave for it, at the latest when the file is closed.
    written = std::fclose(file) == 0 && written;
    if (!written)
        print_io_error("fprintf");
    return written ? DATAIO_OK : DATAIO_ERR_IO;
}

/// Opens the file and calls read_item(file, i), true when item i was read, for i = 0..N-1.
template <typename ReadItem>
dataio_status read_items(unsigned N, const double* values, const char* path, ReadItem read_item) {
    if (!values || !path)
        return DATAIO_ERR_NULLPTR;
    std::FILE* file = platform_open(path, "r");
    if (!file) {
        print_io_error("fopen(read)");
        return DATAIO_ERR_IO;
    }
    bool complete = true;
    for (unsigned i = 0; i < N && complete; ++i) {
        errno = 0; // an item that is missing has no error of the system, and an earlier one is not its reason
        complete = read_item(file, i);
    }
    if (!complete) {
        errno = errno != 0 ? errno : PLATFORM_NO_DATA;
        print_io_error("fscanf");
    }
    std::fclose(file);
    return complete ? DATAIO_OK : DATAIO_ERR_IO;
}

int write_sg_line(std::FILE* file, double second, double third) {
    return std::fprintf(file, "%d   %1.12E   %1.12E\n", 1, second, third);
}

} // namespace

dataio_status AsciiOut_status(unsigned N, const double* values, const char* path) {
    return write_lines(N, values, path, [=](std::FILE* file, unsigned i) {
        return std::fprintf(file, "%1.12E\n", values[i]);
    });
}

dataio_status SGFileOut_status(unsigned N, const double* values, const char* path) {
    return write_lines(N, values, path,
                       [=](std::FILE* file, unsigned i) { return write_sg_line(file, i, values[i]); });
}

dataio_status SGXYFileOut_status(unsigned ap, const double* x, const char* filename, double xmin,
                                 double xinc) {
    return write_lines(ap, x, filename, [=](std::FILE* file, unsigned i) {
        return write_sg_line(file, x[i], xmin + i * xinc);
    });
}

dataio_status AsciiIn_status(unsigned N, double* values, const char* path) {
    return read_items(N, values, path,
                      [=](std::FILE* file, unsigned i) { return std::fscanf(file, "%lf", &values[i]) == 1; });
}

dataio_status SGFileIn_status(unsigned N, double* values, const char* path) {
    return read_items(N, values, path, [=](std::FILE* file, unsigned i) {
        int curve = 0;
        double index = 0.0;
        return std::fscanf(file, "%d %lf %lf", &curve, &index, &values[i]) == 3;
    });
}

} // namespace kor
