#include "wholefile.h"

#include "korplatform.h"

#include <cerrno>

namespace kor {

namespace {

/// Whether the name behind its folder and drive is one that a file can have; the system would write to a
/// device, or to a hidden part of another file.
bool is_file_name(const std::string& name) {
    const bool on_drive = name.size() > 1 && name[1] == ':';
    const std::size_t separator = name.find_last_of("\\/");
    const std::size_t start = separator != std::string::npos ? separator + 1 : on_drive ? 2 : 0;
    return platform_takes_name(name.c_str() + start);
}

/// Whether the folder or its names, not the disk, are the reason that no file can be made beside another one.
bool folder_takes_no_file(int error) {
    return error == EACCES || error == EPERM || error == ENAMETOOLONG || error == EEXIST;
}

// A killed process leaves such a file, and another one may have its number by now; so may one on another
// machine that writes into the same folder.
constexpr int NAMES_BESIDE = 10;

std::string name_beside(const std::string& name, int attempt) {
    const std::string number = std::to_string(platform_process_id());
    return name + "." + number + (attempt > 0 ? "." + std::to_string(attempt) : "") + ".new";
}

/// Makes a file beside the named one that nobody else has; null with errno when none can be made, EEXIST
/// where every name is taken. Nobody may read in it what the older file kept from him.
std::FILE* open_beside(const std::string& name, const char* mode, std::string& beside) {
    std::FILE* file = nullptr;
    for (int attempt = 0; attempt < NAMES_BESIDE && !file; ++attempt) {
        beside = name_beside(name, attempt);
        file = platform_open_new_like(name.c_str(), beside.c_str(), mode);
        if (!file && errno != EEXIST)
            break;
    }
    return file;
}

/// Closes the file; 0, or the first error value of its writes and the close.
int close_file(std::FILE* file) {
    const bool sound = !std::ferror(file);
    // What a failed write left in errno is the reason, unless something else has been there since.
    const int reason = errno != 0 ? errno : EIO;
    if (std::fclose(file) != 0)
        return sound ? errno : reason;
    return sound ? 0 : reason;
}

} // namespace

bool open_whole_file(const char* name, const char* mode, WholeFile& out) {
    out = {nullptr, name ? name : "", ""};
    if (!is_file_name(out.name)) {
        errno = EINVAL;
        return false;
    }
    if (platform_may_replace(out.name.c_str())) {
        out.file = open_beside(out.name, mode, out.beside);
        if (out.file)
            return true;
        if (!folder_takes_no_file(errno))
            return false;
        out.beside.clear();
    }
    out.file = platform_open(out.name.c_str(), mode);
    return out.file != nullptr;
}

bool keep_whole_file(WholeFile& out) {
    int error = close_file(out.file);
    out.file = nullptr;
    if (error == 0 && !out.beside.empty())
        error = platform_rename(out.beside.c_str(), out.name.c_str());
    if (error == 0)
        return true;
    if (!out.beside.empty())
        platform_remove(out.beside.c_str());
    errno = error;
    return false;
}

void drop_whole_file(WholeFile& out) {
    const int error = errno;
    std::fclose(out.file);
    out.file = nullptr;
    if (!out.beside.empty())
        platform_remove(out.beside.c_str());
    errno = error;
}

} // namespace kor
