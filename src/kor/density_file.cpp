#include "kor/density_file.h"

#include "binaryfilehandling.h"
#include "consoleutil.h"
#include "korplatform.h"
#include "wholefile.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstring>

namespace kor {

namespace {

constexpr const char* kStates = "dm.bin";
constexpr const char* kNewStates = "store";
constexpr int kDensityType = 0;
constexpr std::size_t kCopyChunk = 8192;

// Matrices in work, in the order of the files: many small ones, so that the system is called rarely, or a few
// of the largest.
constexpr std::size_t kLargestState = 2 * std::size_t{KOR_MAX_STATES} * KOR_MAX_STATES;
constexpr std::size_t kBlockDoubles = 32768; // stays in the processor's cache
alignas(64) double g_states[kLargestState];  // from a cache line on, for the engine's registers

std::size_t state_doubles(int n) {
    return 2 * static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
}

int states_together(int n) {
    return static_cast<int>(std::max<std::size_t>(1, kBlockDoubles / state_doubles(n)));
}

enum class Wait { no, yes };

bool fail(const DensityReport& report, const char* what, Wait wait) {
    std::printf("%s: %s\n", report.prefix, what);
    if (report.waits && wait == Wait::yes) {
        console_wait_for_enter();
    }
    return false;
}

bool fail_for_system_reason(const char* context) {
    std::perror(context);
    return false;
}

/// A write that failed, with the system's reason.
bool fail_to_write(const DensityReport& report, const char* name, const char* what, Wait wait) {
    std::perror(name);
    return fail(report, what, wait);
}

/// States that could not be read, with the system's reason where the file does not simply end.
bool fail_to_read_states(const DensityReport& report, std::FILE* in) {
    if (std::ferror(in)) {
        std::perror(kStates);
    }
    return fail(report, "read error from dm.bin", Wait::yes);
}

std::FILE* open_or_explain(const char* name, const char* mode) {
    std::FILE* file = platform_open(name, mode);
    if (!file) {
        std::perror(name);
    }
    return file;
}

bool write_states(std::FILE* file, int n, int count) {
    const std::size_t doubles = static_cast<std::size_t>(count) * state_doubles(n);
    return std::fwrite(g_states, sizeof(double), doubles, file) == doubles;
}

bool write_copies(std::FILE* file, int n, int count, const CMatrix& matrix) {
    const int together = std::min(states_together(n), count);
    for (int k = 0; k < together; ++k) {
        CMatToPairs(n, matrix, g_states + static_cast<std::size_t>(k) * state_doubles(n));
    }
    for (long long done = 0; done < count; done += together) {
        if (!write_states(file, n, static_cast<int>(std::min<long long>(together, count - done)))) {
            return false;
        }
    }
    return true;
}

/// A buffered write may fail as late as in fclose.
bool close_written(std::FILE* file) {
    const bool sound = !std::ferror(file);
    return std::fclose(file) == 0 && sound;
}

bool header_is_written(std::FILE* file, int n, int count) {
    return WriteBinFileHeader_status(file, kDensityType, n, count) == BINFH_OK;
}

bool check_header(const DensityReport& report, std::FILE* file, int n, int count) {
    int type, found_n, found_count;
    if (ReadBinFileHeader_status(file, &type, &found_n, &found_count) != BINFH_OK) {
        return fail(report, "failed to read dm.bin header", Wait::no);
    }
    if (type == kDensityType && found_n == n && found_count == count) {
        return true;
    }
    char text[160];
    std::snprintf(text, sizeof text, "dm.bin dimensions mismatch (type=%d n=%d ndw=%d), expected (0 %d %d)",
                  type, found_n, found_count, n, count);
    return fail(report, text, Wait::yes);
}

/// Whether "dm.bin" holds at least one n x n matrix but not `count` of them; it is then left open behind
/// its header.
bool open_for_resizing(int n, int count, std::FILE** file) {
    *file = platform_open(kStates, "rb");
    if (!*file) {
        return false;
    }
    int type, found_n, found_count;
    const bool resize = ReadBinFileHeader_status(*file, &type, &found_n, &found_count) == BINFH_OK &&
                        type == kDensityType && found_n == n && found_count >= 1 && found_count != count;
    if (!resize) {
        std::fclose(*file);
    }
    return resize;
}

enum class Copied { whole, unread, unwritten };

Copied copy_chunks(std::FILE* in, std::FILE* out) {
    static unsigned char chunk[kCopyChunk];
    long long left = platform_file_size(in);
    std::size_t got;
    while ((got = std::fread(chunk, 1, kCopyChunk, in)) > 0) {
        if (std::fwrite(chunk, 1, got, out) != got) {
            return Copied::unwritten;
        }
        left -= static_cast<long long>(got);
    }
    return std::ferror(in) || left != 0 ? Copied::unread : Copied::whole;
}

} // namespace

bool create_density_file(const DensityReport& report, int n, long long count, const CMatrix& matrix) {
    WholeFile states;
    if (!open_whole_file(kStates, "wb", states)) {
        return fail_for_system_reason(kStates);
    }
    // A count that the header's 32 bits cannot hold is a header that cannot be written.
    if (count > INT_MAX || !header_is_written(states.file, n, static_cast<int>(count))) {
        drop_whole_file(states);
        return fail(report, "failed to write dm.bin header", Wait::yes);
    }
    const bool copied = write_copies(states.file, n, static_cast<int>(count), matrix);
    if (!keep_whole_file(states) || !copied) {
        return fail_to_write(report, kStates, "write error while initializing dm.bin", Wait::yes);
    }
    return true;
}

bool resize_density_file(const DensityReport& report, int n, int count, CMatrix& matrix) {
    std::FILE* in;
    if (!open_for_resizing(n, count, &in)) {
        return true;
    }
    const bool first_read = read_cmatrix(in, n, matrix) || fail_to_read_states(report, in);
    std::fclose(in);
    if (!first_read) {
        return false;
    }
    std::FILE* out = open_or_explain(kNewStates, "wb");
    if (!out) {
        return false;
    }
    const bool written = header_is_written(out, n, count) && write_copies(out, n, count, matrix);
    if (!close_written(out) || !written) {
        return fail_to_write(report, kNewStates, "write error while resizing dm.bin", Wait::yes);
    }
    return rename_store();
}

bool open_density_stream(const DensityReport& report, int n, int count, DensityStream& stream) {
    stream.in = open_or_explain(kStates, "rb");
    if (!stream.in) {
        return false;
    }
    if (!check_header(report, stream.in, n, count)) {
        std::fclose(stream.in);
        return false;
    }
    stream.out = open_or_explain(kNewStates, "wb");
    if (!stream.out) {
        std::fclose(stream.in);
        return false;
    }
    if (!header_is_written(stream.out, n, count)) {
        abandon_density_stream(stream);
        return fail(report, "failed to write store header", Wait::no);
    }
    return true;
}

int read_next_densities(const DensityReport& report, DensityStream& stream, int n, long long most) {
    stream.states = g_states;
    const int wanted = static_cast<int>(std::min<long long>(most, states_together(n)));
    const int got = read_density_states(stream.in, n, wanted, g_states);
    if (got < 1) {
        fail_to_read_states(report, stream.in);
    }
    return got;
}

bool write_next_densities(const DensityReport& report, const DensityStream& stream, int n, int count) {
    return write_states(stream.out, n, count) ||
           fail_to_write(report, kNewStates, "write error to store", Wait::no);
}

bool close_density_stream(const DensityReport& report, const DensityStream& stream) {
    std::fclose(stream.in);
    return close_written(stream.out) || fail_to_write(report, kNewStates, "write error to store", Wait::no);
}

void abandon_density_stream(const DensityStream& stream) {
    std::fclose(stream.in);
    std::fclose(stream.out);
}

bool rename_store() {
    // Renaming replaces "dm.bin" in one step: at no moment are the states without a file.
    const int error = platform_rename(kNewStates, kStates);
    if (error == 0) {
        return true;
    }
    errno = error;
    return fail_for_system_reason("rename(store->dm.bin)");
}

bool copy_store(const DensityReport& report) {
    const char* culprit = kStates;
    const bool copied = copy_density_file(kNewStates, kStates, &culprit) == 1;
    if (!copied) {
        explain_failed_copy(culprit);
    }
    platform_remove(kNewStates);
    return copied || fail(report, "failed to copy store to dm.bin", Wait::no);
}

int read_density_states(std::FILE* in, int n, int most, double* states) {
    const std::size_t one = state_doubles(n);
    const std::size_t got = std::fread(states, sizeof(double), static_cast<std::size_t>(most) * one, in);
    return static_cast<int>(got / one);
}

int read_density_matrix(std::FILE* in, int n, int fn, CMatrix& mat) {
    return read_matrix_rows(in, n, fn, mat);
}

int copy_density_file(const char* src, const char* dst, const char** culprit) {
    const char* ignored;
    const char*& failed = culprit ? *culprit : ignored;
    failed = src;
    std::FILE* in = src && dst ? platform_open(src, "rb") : nullptr;
    if (!in) {
        return 0;
    }
    if (platform_same_file(src, dst)) {
        std::fclose(in);
        return 1;
    }
    failed = dst;
    WholeFile out;
    if (!open_whole_file(dst, "wb", out)) {
        std::fclose(in);
        return 0;
    }
    errno = 0;
    const Copied copied = copy_chunks(in, out.file);
    std::fclose(in);
    if (copied == Copied::unread) {
        failed = src;
        drop_whole_file(out);
        return 0;
    }
    return keep_whole_file(out) && copied == Copied::whole ? 1 : 0;
}

void explain_failed_copy(const char* culprit) {
    std::fprintf(stderr, "%s: %s\n", culprit, errno != 0 ? std::strerror(errno) : "ends too early");
}

} // namespace kor
