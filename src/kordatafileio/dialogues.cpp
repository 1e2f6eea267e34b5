#include "consoleutil.h"
#include "kordatafileio.h"
#include "korlimits.h"
#include "modelfiles.h"

#include <algorithm>
#include <cstdio>

namespace kor {

namespace {

void write_prompt(const char* prompt) {
    if (prompt)
        std::fputs(prompt, stdout);
}

/// Drops an answer that could not be read, so that it does not meet the next question.
int accepted(int read) {
    if (!read)
        console_discard_line();
    return read;
}

/// Asks for the file name and calls transfer(N, path), the operation on the file.
template <typename Transfer>
void transfer_named_file(const int* count, const double* values, const char* prompt, Transfer transfer) {
    char path[KOR_FILE_NAME_SIZE];
    if (!count || !values)
        dataio_last_status = DATAIO_ERR_NULLPTR;
    else if (*count < 0)
        dataio_last_status = DATAIO_ERR_BADARG;
    else if (!scan_string(prompt, path, sizeof path))
        dataio_last_status = DATAIO_ERR_IO;
    else
        dataio_last_status = transfer(static_cast<unsigned>(*count), path);
}

/// A transfer that writes: none of the loaded model's files.
template <typename Transfer> auto unless_it_replaces_the_model(Transfer transfer) {
    return [=](unsigned N, const char* path) {
        return replaces_model_files(path) ? DATAIO_ERR_IO : transfer(N, path);
    };
}

int scan_then_empty_line(const char* prompt, double* out) {
    if (!scan_double(prompt, out))
        return 0;
    std::printf("\n");
    return 1;
}

void write_sg_plot(const int* count, const double* values) {
    int define_x = 0;
    if (!scan_int("Define x-axis [1=yes] : ", &define_x)) {
        dataio_last_status = DATAIO_ERR_IO;
        return;
    }
    std::printf("\n");
    if (define_x != 1) {
        SGFileOut(count, values);
        return;
    }
    double xmin = 0.0, xinc = 0.0;
    if (scan_then_empty_line("Minimum x-value   : ", &xmin) &&
        scan_then_empty_line("Increment x-value : ", &xinc))
        SGXYFileOut(count, values, xmin, xinc);
    else
        dataio_last_status = DATAIO_ERR_IO;
}

/// Shows a layout menu and reads the choice; 0 when it could not be read.
int choose_layout(const char* heading, const char* cancel, int* choice) {
    std::printf("%s\n"
                "      1. Normal ASCII file\n"
                "      2. SGplot file format\n"
                "      3. %s\n",
                heading, cancel);
    if (!scan_int("Your choice [1..3] : ", choice)) {
        dataio_last_status = DATAIO_ERR_IO;
        return 0;
    }
    std::printf("\n");
    return 1;
}

} // namespace

int scan_int(const char* prompt, int* out) {
    if (!out)
        return 0;
    write_prompt(prompt);
    return accepted(console_read_int(out));
}

int scan_double(const char* prompt, double* out) {
    if (!out)
        return 0;
    write_prompt(prompt);
    return accepted(console_read_double(out));
}

int scan_string(const char* prompt, char* out, std::size_t cap) {
    if (!out || cap == 0)
        return 0;
    write_prompt(prompt);
    return console_read_word(out, std::min<std::size_t>(cap, KOR_FILE_NAME_SIZE));
}

void AsciiOut(const int* count, const double* values) {
    transfer_named_file(count, values, "Ascii File Out >>\nEnter filename : ",
                        unless_it_replaces_the_model(
                            [=](unsigned N, const char* path) { return AsciiOut_status(N, values, path); }));
}

void AsciiIn(const int* count, double* values) {
    transfer_named_file(count, values, "<< ASCII File In >>\nEnter filename : ",
                        [=](unsigned N, const char* path) { return AsciiIn_status(N, values, path); });
}

void SGFileOut(const int* count, const double* values) {
    transfer_named_file(count, values, "SG-Plot File Out >>\nEnter filename : ",
                        unless_it_replaces_the_model(
                            [=](unsigned N, const char* path) { return SGFileOut_status(N, values, path); }));
}

void SGFileIn(const int* count, double* values) {
    transfer_named_file(count, values, "<< SG-Plot File In >>\nEnter filename : ",
                        [=](unsigned N, const char* path) { return SGFileIn_status(N, values, path); });
}

void SGXYFileOut(const int* ap, const double* x, double xmin, double xinc) {
    transfer_named_file(ap, x, "SG-Plot XY File Out >>\nEnter filename : ",
                        unless_it_replaces_the_model([=](unsigned N, const char* path) {
                            return SGXYFileOut_status(N, x, path, xmin, xinc);
                        }));
}

void RealArrayOut(const int* count, const double* values) {
    if (!count || !values) {
        dataio_last_status = DATAIO_ERR_NULLPTR;
        return;
    }
    int choice = 0;
    if (!choose_layout("Write real-array to ASCII-file:", "Cancel file output", &choice))
        return;
    if (choice == 1)
        AsciiOut(count, values);
    else if (choice == 2)
        write_sg_plot(count, values);
    else
        dataio_last_status = DATAIO_OK;
}

bool RealArrayIn(const int* count, double* values) {
    if (!count || !values) {
        dataio_last_status = DATAIO_ERR_NULLPTR;
        return false;
    }
    int choice = 0;
    if (!choose_layout("Read ASCII-file containing reals:", "Cancel file input", &choice))
        return false;
    if (choice == 1) {
        AsciiIn(count, values);
    } else if (choice == 2) {
        SGFileIn(count, values);
    } else {
        // Without a file the series is zero: the caller's array may hold another pulse.
        std::fill_n(values, std::max(*count, 0), 0.0);
        dataio_last_status = DATAIO_OK;
        return false;
    }
    return dataio_last_status == DATAIO_OK;
}

} // namespace kor
