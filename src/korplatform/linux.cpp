#include "korplatform.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <linux/limits.h>
#include <spawn.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace kor {
namespace {

constexpr std::size_t LONGEST_EXECUTABLE_NAME = 259;

int copy_text(const std::string& text, char* out, std::size_t cap) {
    if (!out || cap == 0)
        return 0;
    if (text.size() >= cap) {
        out[0] = '\0';
        return 0;
    }
    std::memcpy(out, text.c_str(), text.size() + 1);
    return 1;
}

std::string native(const char* path) {
    std::string text = path ? path : "";
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

bool is_folder(const std::string& path) {
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool is_regular_file(const std::string& path) {
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

constexpr const char* ACCESS_LIST = "system.posix_acl_access";

/// The rights of users and groups other than the file's own, as the system stores them; empty without such.
std::string access_list(const std::string& path) {
    std::string list(XATTR_SIZE_MAX, '\0');
    const ssize_t size = ::getxattr(path.c_str(), ACCESS_LIST, list.data(), list.size());
    list.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return list;
}

/// Gives an open file that list and no other: a new file may have one from its folder.
bool set_access_list(int file, const std::string& list) {
    if (!list.empty())
        return ::fsetxattr(file, ACCESS_LIST, list.data(), list.size(), 0) == 0;
    return ::fremovexattr(file, ACCESS_LIST) == 0 || errno == ENODATA || errno == ENOTSUP;
}

/// Gives an open file, which nobody but its owner may open, the owner, group and rights of the older one. The
/// rights in the mode come last: with a list they say what the list gives at most.
bool take_over_rights(int file, const std::string& older, const struct stat& info) {
    const bool group_stays = ::fchown(file, info.st_uid, info.st_gid) == 0;
    const std::string list = access_list(older);
    // The list's rights of the group were for another group.
    if ((!list.empty() && !group_stays) || !set_access_list(file, list))
        return false;
    ::fchmod(file, info.st_mode & (group_stays ? 0777 : 0707));
    return true;
}

bool exists(const std::string& path) {
    struct stat info;
    return ::stat(path.c_str(), &info) == 0;
}

bool before_ignoring_case(const std::string& a, const std::string& b) {
    const int order = ::strcasecmp(a.c_str(), b.c_str());
    return order != 0 ? order < 0 : a < b;
}

/// The names in a folder, by name ignoring case; none when it cannot be read.
std::vector<std::string> names_in(const std::string& dir) {
    std::vector<std::string> names;
    DIR* stream = ::opendir(dir.c_str());
    if (!stream)
        return names;
    while (const dirent* entry = ::readdir(stream))
        names.push_back(entry->d_name);
    ::closedir(stream);
    std::sort(names.begin(), names.end(), before_ignoring_case);
    return names;
}

bool ends_in_ignoring_case(const std::string& name, const std::string& end) {
    return name.size() >= end.size() &&
           ::strcasecmp(name.c_str() + name.size() - end.size(), end.c_str()) == 0;
}

/// `found` (empty, or ending in '/') extended by one component as the folder spells it; false without a
/// match.
bool append_component(std::string& found, const std::string& component) {
    if (exists(found + component)) {
        found += component;
        return true;
    }
    for (const std::string& name : names_in(found.empty() ? "." : found)) {
        if (::strcasecmp(name.c_str(), component.c_str()) == 0 && exists(found + name)) {
            found += name;
            return true;
        }
    }
    return false;
}

/// A standard stream that the caller closed would lend its number to the first file opened, which then took
/// what is printed: its place is held by a device from which nothing can be read and to which nothing can be
/// written.
void hold_standard_descriptors() {
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(standard, F_GETFD) < 0)
            ::open("/dev/null", standard == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

int status_of(int result) {
    return result == 0 ? 0 : errno;
}

/// Starts gnuplot in a process group of its own (an interrupt at the console is not for it), reading nothing.
/// 0, or the error value.
int spawn_gnuplot(std::string& script) {
    char program[] = "gnuplot";
    char keep_window[] = "-persist";
    char* const arguments[] = {program, keep_window, script.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawnattr_init(&attributes);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    const int error = ::posix_spawnp(nullptr, program, &actions, &attributes, arguments, environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    return error;
}

} // namespace

char platform_separator() {
    return '/';
}

int platform_native_path(const char* path, char* out, std::size_t cap) {
    return copy_text(native(path), out, cap);
}

int platform_executable_file(char* out, std::size_t cap) {
    char name[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", name, sizeof name);
    const bool usable = length > 0 && static_cast<std::size_t>(length) <= LONGEST_EXECUTABLE_NAME &&
                        !std::memchr(name, '\\', static_cast<std::size_t>(length));
    if (!usable) {
        copy_text("", out, cap);
        return 0;
    }
    return copy_text(std::string(name, static_cast<std::size_t>(length)), out, cap);
}

bool platform_path_is_absolute(const char* path) {
    if (!path)
        return false;
    const auto is_separator = [](char c) { return c == '\\' || c == '/'; };
    const bool letter = (path[0] >= 'A' && path[0] <= 'Z') || (path[0] >= 'a' && path[0] <= 'z');
    if (letter && path[1] == ':')
        return is_separator(path[2]);
    return path[0] == '/' || (path[0] == '\\' && path[1] == '\\');
}

bool platform_takes_name(const char*) {
    return true;
}

const int PLATFORM_NO_DATA = ENODATA;

std::FILE* platform_open(const char* path, const char* mode) {
    const std::string name = native(path);
    // Linux opens a folder for reading and fails only at the first read.
    if (is_folder(name)) {
        errno = EISDIR;
        return nullptr;
    }
    return std::fopen(name.c_str(), mode);
}

std::FILE* platform_open_new(const char* path, const char* mode) {
    return std::fopen(native(path).c_str(), (std::string(mode) + "x").c_str());
}

std::FILE* platform_open_new_like(const char* older, const char* path, const char* mode) {
    struct stat info;
    const std::string old_name = native(older), name = native(path);
    if (::stat(old_name.c_str(), &info) != 0)
        return platform_open_new(path, mode);
    const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        return nullptr;
    const bool has_rights = take_over_rights(descriptor, old_name, info);
    if (!has_rights && errno != ENOSPC && errno != EDQUOT)
        errno = EPERM;
    std::FILE* file = has_rights ? ::fdopen(descriptor, mode) : nullptr;
    if (!file) {
        const int error = errno;
        ::close(descriptor);
        ::unlink(name.c_str());
        errno = error;
    }
    return file;
}

int platform_remove(const char* path) {
    return status_of(::unlink(native(path).c_str()));
}

int platform_rename(const char* from, const char* to) {
    return status_of(std::rename(native(from).c_str(), native(to).c_str()));
}

int platform_make_dir(const char* path) {
    const std::string name = native(path);
    const int error = status_of(::mkdir(name.c_str(), 0777));
    return errno = error != 0 && is_folder(name) ? EEXIST : error;
}

int platform_remove_dir(const char* path) {
    return status_of(::rmdir(native(path).c_str()));
}

bool platform_may_replace(const char* path) {
    struct stat info;
    const std::string name = native(path);
    if (::lstat(name.c_str(), &info) != 0)
        return errno == ENOENT && !name.empty();
    const bool owner_stays = info.st_uid == ::geteuid() || ::geteuid() == 0;
    return S_ISREG(info.st_mode) && info.st_nlink == 1 && owner_stays &&
           ::faccessat(AT_FDCWD, name.c_str(), W_OK, AT_EACCESS) == 0;
}

long long platform_file_size(std::FILE* file) {
    const off_t position = ::ftello(file);
    if (position < 0 || ::fseeko(file, 0, SEEK_END) != 0)
        return -1;
    const off_t size = ::ftello(file);
    return ::fseeko(file, position, SEEK_SET) == 0 ? static_cast<long long>(size) : -1;
}

bool platform_same_file(const char* a, const char* b) {
    struct stat first, second;
    return ::stat(native(a).c_str(), &first) == 0 && ::stat(native(b).c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

bool platform_is_special(const char* path) {
    struct stat info;
    return ::stat(native(path).c_str(), &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode);
}

int platform_change_dir(const char* path) {
    return status_of(::chdir(native(path).c_str()));
}

int platform_current_dir(char* out, std::size_t cap) {
    char name[PATH_MAX];
    if (!::getcwd(name, sizeof name)) {
        copy_text("", out, cap);
        return 0;
    }
    return copy_text(name, out, cap);
}

unsigned long platform_process_id() {
    return static_cast<unsigned long>(::getpid());
}

int platform_find_ignoring_case(const char* path, char* out, std::size_t cap) {
    const std::string wanted = native(path);
    if (!wanted.empty() && exists(wanted))
        return copy_text(path, out, cap);
    copy_text("", out, cap);
    std::string found;
    std::size_t start = 0;
    while (start < wanted.size()) {
        const std::size_t end = std::min(wanted.find('/', start), wanted.size());
        if (end > start && !append_component(found, wanted.substr(start, end - start)))
            return 0;
        if (end < wanted.size())
            found += '/';
        start = end + 1;
    }
    return found.empty() ? 0 : copy_text(found, out, cap);
}

int platform_list_files(const char* dir, const char* extension, int (*visit)(const char* name, void* context),
                        void* context) {
    if (!dir || !*dir || !extension || !visit)
        return 0;
    const std::string folder = native(dir);
    int visited = 0;
    for (const std::string& name : names_in(folder)) {
        if (!ends_in_ignoring_case(name, extension) || !is_regular_file(folder + '/' + name))
            continue;
        ++visited;
        if (!visit(name.c_str(), context))
            break;
    }
    return visited;
}

void platform_start() {
    hold_standard_descriptors();
    ::signal(SIGXFSZ, SIG_IGN);
}

void platform_use_utf8_console() {}

void platform_clear_console() {
    if (!::isatty(STDOUT_FILENO))
        return;
    std::fputs("\033[H\033[2J", stdout);
    std::fflush(stdout);
}

bool platform_input_is_terminal() {
    return ::isatty(STDIN_FILENO) != 0;
}

int platform_open_plot(const char* script_name) {
    std::string script = native(script_name);
    // A child in between starts gnuplot and ends at once: the plot outlives this program, and nobody has to
    // collect its exit status. Its own exit status is the error value of the start.
    const pid_t starter = ::fork();
    if (starter == 0)
        ::_exit(spawn_gnuplot(script));
    int status = 0;
    if (starter < 0 || ::waitpid(starter, &status, 0) != starter)
        return errno;
    return WIFEXITED(status) ? WEXITSTATUS(status) : EAGAIN;
}

} // namespace kor
