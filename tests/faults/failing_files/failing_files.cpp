// A library that makes one chosen file operation of a program fail. The tests preload it (LD_PRELOAD); the
// program knows nothing of it.
//
// fopen, fdopen, rename, unlink, remove, mkdir, chdir and fflush stand here in place of the C library's. A
// file that is opened becomes a stream over this library's own read, write and close, so that buffering, end
// of file and the stream's error mark stay the C library's and a failure appears where a disk's would. The
// standard streams are not touched. Configuration, in environment variables:
//
//   KOR_FAULT_KIND    open read write flush close rename remove mkdir chdir, or any
//   KOR_FAULT_AT      which operation of that kind, from 1; without it all are only counted
//   KOR_FAULT_ERROR   an errno value; `short`: half of it is done, then the disk is full (a write) or the
//   file
//                     ends (a read); `kill`: the process is killed, a write half done
//   KOR_FAULT_ONWARD  1: every later one of the kind fails too
//   KOR_FAULT_REPORT  file that takes a line "fault KIND PATH" whenever it strikes, and "count KIND NUMBER"
//   lines
//                     at the end of the process
#ifndef _GNU_SOURCE
#define _GNU_SOURCE
#endif
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

enum Kind { OPEN, READ, WRITE, FLUSH, CLOSE, RENAME, REMOVE, MKDIR, CHDIR, KINDS };
constexpr const char* kind_names[KINDS] = {"open",   "read",   "write", "flush", "close",
                                           "rename", "remove", "mkdir", "chdir"};

enum class Blow { none, error, half, death };

struct Plan {
    int kind = KINDS; // KINDS: any
    long at = 0;
    Blow blow = Blow::none;
    int error = 0;
    bool onward = false;
    int report = -1;
    long counts[KINDS] = {};
    long total = 0;
};

Plan read_plan() {
    Plan plan;
    const auto setting = [](const char* name) { return std::getenv(name) ? std::getenv(name) : ""; };
    const char* kind = setting("KOR_FAULT_KIND");
    for (int k = 0; k < KINDS; ++k)
        if (std::strcmp(kind, kind_names[k]) == 0)
            plan.kind = k;
    plan.at = std::atol(setting("KOR_FAULT_AT"));
    const char* error = setting("KOR_FAULT_ERROR");
    plan.blow = std::strcmp(error, "kill") == 0    ? Blow::death
                : std::strcmp(error, "short") == 0 ? Blow::half
                                                   : Blow::error;
    plan.error = std::atoi(error);
    plan.onward = *setting("KOR_FAULT_ONWARD") == '1';
    if (*setting("KOR_FAULT_REPORT"))
        plan.report = static_cast<int>(syscall(SYS_openat, AT_FDCWD, setting("KOR_FAULT_REPORT"),
                                               O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
    return plan;
}

Plan& plan() {
    static Plan the_plan = read_plan();
    return the_plan;
}

void report(const char* format, const char* kind, const char* path, long count) {
    char line[PATH_MAX + 64];
    const int length = std::snprintf(line, sizeof line, format, kind, path, count);
    if (plan().report >= 0 && length > 0)
        syscall(SYS_write, plan().report, line, static_cast<std::size_t>(length));
}

void die() {
    syscall(SYS_kill, getpid(), SIGKILL);
}

/// Counts one operation. What is to happen to it; errno is set when it is to fail.
Blow strike(Kind kind, const char* path) {
    Plan& p = plan();
    ++p.counts[kind];
    ++p.total;
    const long now = p.kind == KINDS ? p.total : p.counts[kind];
    const bool mine = p.kind == KINDS || p.kind == kind;
    const bool hit = mine && p.at > 0 && (now == p.at || (p.onward && now > p.at));
    if (!hit)
        return Blow::none;
    report("fault %s %s\n", kind_names[kind], path, 0);
    errno = p.blow == Blow::half ? ENOSPC : p.error;
    return p.blow;
}

/// For operations that cannot be done by halves: whether it fails.
bool fails(Kind kind, const char* path) {
    const Blow blow = strike(kind, path);
    if (blow == Blow::death)
        die();
    return blow == Blow::error || blow == Blow::half;
}

struct OpenFile {
    int descriptor;
    bool ended; // it was cut short for the reader
    char path[PATH_MAX];
};

ssize_t raw_write(const OpenFile& file, const char* data, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const long now = syscall(SYS_write, file.descriptor, data + done, size - done);
        if (now < 0)
            break;
        done += static_cast<std::size_t>(now);
    }
    return static_cast<ssize_t>(done);
}

ssize_t read_file(void* cookie, char* out, std::size_t size) {
    OpenFile& file = *static_cast<OpenFile*>(cookie);
    const Blow blow = strike(READ, file.path);
    if (blow == Blow::death)
        die();
    if (blow == Blow::error)
        return -1;
    if (file.ended)
        return 0;
    const long got = syscall(SYS_read, file.descriptor, out, size);
    file.ended = blow == Blow::half;
    return file.ended && got > 0 ? got / 2 : got;
}

ssize_t write_file(void* cookie, const char* data, std::size_t size) {
    OpenFile& file = *static_cast<OpenFile*>(cookie);
    const Blow blow = strike(WRITE, file.path);
    if (blow == Blow::none)
        return raw_write(file, data, size);
    const int error = errno;
    const ssize_t done = blow == Blow::error ? 0 : raw_write(file, data, size / 2);
    if (blow == Blow::death)
        die();
    errno = error;
    return done;
}

int seek_file(void* cookie, off64_t* offset, int whence) {
    const long at = syscall(SYS_lseek, static_cast<OpenFile*>(cookie)->descriptor, *offset, whence);
    if (at < 0)
        return -1;
    *offset = at;
    return 0;
}

int close_file(void* cookie) {
    OpenFile* file = static_cast<OpenFile*>(cookie);
    syscall(SYS_close, file->descriptor);
    const bool failed = fails(CLOSE, file->path);
    const int error = errno;
    std::free(file);
    errno = error;
    return failed ? -1 : 0;
}

int open_flags(const char* mode) {
    const int access = std::strchr(mode, '+') ? O_RDWR : *mode == 'r' ? O_RDONLY : O_WRONLY;
    const int creation = *mode == 'w' ? O_CREAT | O_TRUNC : *mode == 'a' ? O_CREAT | O_APPEND : 0;
    return access | creation | (std::strchr(mode, 'x') ? O_EXCL : 0);
}

std::FILE* stream_over(int descriptor, const char* path, const char* mode) {
    OpenFile* file = static_cast<OpenFile*>(std::calloc(1, sizeof(OpenFile)));
    file->descriptor = descriptor;
    std::snprintf(file->path, sizeof file->path, "%s", path);
    return fopencookie(file, mode, {read_file, write_file, seek_file, close_file});
}

std::FILE* open_stream(const char* path, const char* mode) {
    if (fails(OPEN, path))
        return nullptr;
    const long descriptor = syscall(SYS_openat, AT_FDCWD, path, open_flags(mode), 0666);
    return descriptor < 0 ? nullptr : stream_over(static_cast<int>(descriptor), path, mode);
}

int status_of(long result) {
    return result < 0 ? -1 : 0;
}

[[gnu::destructor]] void report_counts() {
    for (int k = 0; k < KINDS; ++k)
        report("count %s%s %ld\n", kind_names[k], "", plan().counts[k]);
}

} // namespace

extern "C" {

std::FILE* fopen(const char* path, const char* mode) {
    return open_stream(path, mode);
}
std::FILE* fopen64(const char* path, const char* mode) {
    return open_stream(path, mode);
}

std::FILE* fdopen(int descriptor, const char* mode) noexcept {
    char link[64], path[PATH_MAX] = "";
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    syscall(SYS_readlinkat, AT_FDCWD, link, path, sizeof path - 1);
    return fails(OPEN, path) ? nullptr : stream_over(descriptor, path, mode);
}

int fflush(std::FILE* stream) {
    using Flush = int (*)(std::FILE*);
    static const Flush flush = reinterpret_cast<Flush>(dlsym(RTLD_NEXT, "fflush"));
    const bool standard = !stream || stream == stdin || stream == stdout || stream == stderr;
    return !standard && fails(FLUSH, "") ? EOF : flush(stream);
}

int rename(const char* from, const char* to) noexcept {
    return fails(RENAME, to) ? -1 : status_of(syscall(SYS_renameat, AT_FDCWD, from, AT_FDCWD, to));
}
int unlink(const char* path) noexcept {
    return fails(REMOVE, path) ? -1 : status_of(syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}
int remove(const char* path) noexcept {
    return unlink(path);
}
int mkdir(const char* path, mode_t mode) noexcept {
    return fails(MKDIR, path) ? -1 : status_of(syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}
int chdir(const char* path) noexcept {
    return fails(CHDIR, path) ? -1 : status_of(syscall(SYS_chdir, path));
}

} // extern "C"
