#include "korplatform.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <sys/stat.h>
#include <windows.h>

namespace kor {
namespace {

constexpr DWORD EXECUTABLE_NAME_SIZE = 260;
constexpr DWORD FOLDER_NAME_SIZE = MAX_PATH - 12; // a folder leaves room for a short file name in it
constexpr std::size_t LONGEST_COMPONENT = 255;
constexpr UINT UTF8_CODE_PAGE = 65001;
constexpr ULONGLONG LONGEST_WAIT_MS = 2000; // for a file that somebody else has just opened
constexpr DWORD PAUSE_MS = 5;

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

bool is_separator(char c) {
    return c == '\\' || c == '/';
}

std::string in_folder(const char* dir, const std::string& name) {
    std::string path = dir;
    if (!is_separator(path.back()))
        path += '\\';
    return path + name;
}

/// The text in the system's wide characters, and back.
std::wstring wide(const std::string& text) {
    const int length = MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, nullptr, 0);
    std::wstring out(static_cast<std::size_t>(std::max(length, 1)), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, out.data(), length);
    out.pop_back();
    return out;
}

std::string narrow(const std::wstring& text) {
    const int length = WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<std::size_t>(std::max(length, 1)), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, out.data(), length, nullptr, nullptr);
    out.pop_back();
    return out;
}

/// What numbers a port in the name of a device: the digits but 0, and the three superscript ones of Latin-1.
bool is_port_number(const std::string& text) {
    if (text.size() == 1)
        return text[0] >= '1' && text[0] <= '9';
    return text == "\u00B9" || text == "\u00B2" || text == "\u00B3";
}

/// Whether the system takes a name for a device, whatever its extension.
bool is_device(const std::string& component) {
    std::string stem = component.substr(0, component.find('.'));
    stem.erase(stem.find_last_not_of(' ') + 1);
    for (const char* device : {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"})
        if (_stricmp(stem.c_str(), device) == 0)
            return true;
    const bool is_port = _strnicmp(stem.c_str(), "COM", 3) == 0 || _strnicmp(stem.c_str(), "LPT", 3) == 0;
    return is_port && is_port_number(stem.substr(3));
}

/// Whether a file or folder in another one can have the name.
bool takes_component(const std::string& component) {
    if (component.empty() || component == "." || component == "..")
        return true;
    const bool forbidden = std::any_of(component.begin(), component.end(), [](char c) {
        return (c >= '\0' && c < ' ') || std::strchr("<>:\"|?*", c) != nullptr;
    });
    return !forbidden && component.back() != '.' && component.back() != ' ' && !is_device(component);
}

/// The system also offers names whose hidden short form matches the wildcard.
bool ends_in_ignoring_case(const std::string& name, const std::string& end) {
    return name.size() >= end.size() && _stricmp(name.c_str() + name.size() - end.size(), end.c_str()) == 0;
}

/// Whether the full name that the path stands for, with its terminator, is more than `size` characters long.
/// (The function for narrow characters gives up on such names.)
bool is_longer_than(DWORD size, const char* path) {
    return GetFullPathNameW(wide(path).c_str(), 0, nullptr, nullptr) > size;
}

/// Whether nothing but the file is missing: the system found the folder and looked there for a name that it
/// can have.
bool is_merely_absent(const char* path) {
    const std::wstring name = wide(path);
    const std::size_t leaf = name.size() - (name.find_last_of(L"\\/") + 1);
    return leaf <= LONGEST_COMPONENT && GetFileAttributesW(name.c_str()) == INVALID_FILE_ATTRIBUTES &&
           GetLastError() == ERROR_FILE_NOT_FOUND;
}

/// Whether the two paths lead to one place, links and short names aside.
bool same_full_path(const char* a, const char* b) {
    const auto full = [](const char* path) {
        wchar_t* name = _wfullpath(nullptr, wide(path).c_str(), 0);
        const std::wstring copy = name ? name : L"";
        std::free(name);
        return copy;
    };
    const std::wstring first = full(a);
    return !first.empty() && _wcsicmp(first.c_str(), full(b).c_str()) == 0;
}

using FileIdentity = BY_HANDLE_FILE_INFORMATION;

/// Whether the attributes are those of a file that can be written anew.
bool is_plain(DWORD attributes) {
    constexpr DWORD unlike_a_plain_file = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE |
                                          FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_READONLY;
    return (attributes & unlike_a_plain_file) == 0;
}

/// Whether what failed may succeed in a moment: another process replaces the file, removes it or reads it,
/// were it a virus scanner. The system says that access is denied where a file to be replaced is open or one
/// that is being removed is opened, and also where the file will never be free.
bool is_taken(DWORD error, const char* path) {
    if (error != ERROR_ACCESS_DENIED)
        return error == ERROR_SHARING_VIOLATION;
    const DWORD attributes = GetFileAttributesA(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) // so it is while the file is being removed
        return GetLastError() == ERROR_ACCESS_DENIED;
    return is_plain(attributes);
}

/// Calls `attempt`, which returns the system's error or 0, again while the file is taken and the longest wait
/// is not over. Returns what the last call returned.
template <typename Attempt> DWORD insist(const char* path, const Attempt& attempt) {
    const ULONGLONG start = GetTickCount64();
    DWORD error = attempt();
    while (is_taken(error, path) && GetTickCount64() - start < LONGEST_WAIT_MS) {
        Sleep(PAUSE_MS);
        error = attempt();
    }
    return error;
}

bool same_number(const FileIdentity& a, const FileIdentity& b) {
    return a.dwVolumeSerialNumber == b.dwVolumeSerialNumber && a.nFileIndexHigh == b.nFileIndexHigh &&
           a.nFileIndexLow == b.nFileIndexLow;
}

/// Not every file system of the network numbers its files.
bool has_number(const FileIdentity& file) {
    return file.nFileIndexHigh != 0 || file.nFileIndexLow != 0;
}

/// What the system knows a file by; false when it cannot be opened.
bool identify(const char* path, FileIdentity& file) {
    const HANDLE handle =
        CreateFileA(path ? path : "", 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return false;
    const bool known = GetFileInformationByHandle(handle, &file) != 0;
    CloseHandle(handle);
    return known;
}

/// 0, or the errno value of a call that failed on the path. The runtime library calls a name that is too long
/// missing; where long names are switched on, one may be missing indeed. (A folder that could not be made is
/// always missing.)
int status_of(int result, const char* path, DWORD size = MAX_PATH) {
    if (result == 0)
        return 0;
    const bool may_be_absent = errno == ENOENT && size == MAX_PATH;
    if ((errno == ENOENT || errno == EINVAL) && is_longer_than(size, path) &&
        !(may_be_absent && is_merely_absent(path)))
        errno = ENAMETOOLONG;
    return errno;
}

bool is_folder(const char* path) {
    const DWORD attributes = GetFileAttributesA(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool is_file(const char* path) {
    return GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES && !is_folder(path);
}

/// The errno value of a failed call of the system.
int error_value(DWORD system_error) {
    switch (system_error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return EACCES;
    case ERROR_NOT_SAME_DEVICE:
        return EXDEV;
    case ERROR_INVALID_NAME:
        return EINVAL;
    case ERROR_DISK_FULL:
        return ENOSPC;
    default:
        return EIO;
    }
}

bool is_on_search_path(const char* program) {
    char found[MAX_PATH];
    for (const char* extension : {".exe", ".com", ".bat", ".cmd"})
        if (SearchPathA(nullptr, program, extension, sizeof found, found, nullptr) != 0)
            return true;
    return false;
}

/// Standard input is empty for the programs started in its lifetime.
class NoInputForChildren {
public:
    NoInputForChildren() : before_(_dup(0)) {
        const int nothing = _open("NUL", _O_RDONLY);
        _dup2(nothing, 0);
        _close(nothing);
    }
    ~NoInputForChildren() {
        _dup2(before_, 0);
        _close(before_);
    }
    NoInputForChildren(const NoInputForChildren&) = delete;
    NoInputForChildren& operator=(const NoInputForChildren&) = delete;

private:
    int before_;
};

} // namespace

char platform_separator() {
    return '\\';
}

int platform_native_path(const char* path, char* out, std::size_t cap) {
    return copy_text(path ? path : "", out, cap);
}

int platform_executable_file(char* out, std::size_t cap) {
    char name[EXECUTABLE_NAME_SIZE];
    const DWORD length = GetModuleFileNameA(nullptr, name, EXECUTABLE_NAME_SIZE);
    if (length == 0 || length >= EXECUTABLE_NAME_SIZE) {
        copy_text("", out, cap);
        return 0;
    }
    return copy_text(std::string(name, length), out, cap);
}

bool platform_path_is_absolute(const char* path) {
    if (!path)
        return false;
    const bool letter = (path[0] >= 'A' && path[0] <= 'Z') || (path[0] >= 'a' && path[0] <= 'z');
    if (letter && path[1] == ':')
        return is_separator(path[2]);
    return is_separator(path[0]) && path[1] == path[0];
}

bool platform_takes_name(const char* name) {
    std::string rest = name ? name : "";
    if (MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, rest.c_str(), -1, nullptr, 0) == 0)
        return false;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find_first_of("\\/"), rest.size());
        if (!takes_component(rest.substr(0, end)))
            return false;
        rest.erase(0, end + 1);
    }
    return true;
}

const int PLATFORM_NO_DATA = EIO;

std::FILE* platform_open(const char* path, const char* mode) {
    const char* const name = path ? path : "";
    // A text would end at the first byte 26; its readers take a carriage return for a blank.
    const char* const kind = std::strcmp(mode, "r") == 0 ? "rb" : mode;
    std::FILE* file = nullptr;
    insist(name, [&file, name, kind]() -> DWORD {
        _doserrno = 0; // not every failure is the system's
        file = std::fopen(name, kind);
        return file ? 0 : _doserrno;
    });
    if (!file && status_of(-1, name) == EACCES && is_folder(name))
        errno = EISDIR;
    return file;
}

std::FILE* platform_open_new(const char* path, const char* mode) {
    const char* const name = path ? path : "";
    const int kind = std::strchr(mode, 'b') ? _O_BINARY : 0; // as fopen takes the mode
    int descriptor = -1;
    insist(name, [&descriptor, name, kind]() -> DWORD {
        _doserrno = 0;
        descriptor = _open(name, _O_WRONLY | _O_CREAT | _O_EXCL | kind, _S_IREAD | _S_IWRITE);
        return descriptor >= 0 ? 0 : _doserrno;
    });
    if (descriptor >= 0)
        return _fdopen(descriptor, mode);
    status_of(-1, name);
    return nullptr;
}

std::FILE* platform_open_new_like(const char*, const char* path, const char* mode) {
    return platform_open_new(path, mode);
}

int platform_remove(const char* path) {
    const char* const name = path ? path : "";
    int result = 0;
    insist(name, [&result, name]() -> DWORD {
        result = std::remove(name);
        return result == 0 ? 0 : _doserrno;
    });
    return status_of(result, name);
}

int platform_rename(const char* from, const char* to) {
    if (!from || !to)
        return errno = ENOENT;
    // The runtime library's rename refuses an existing target; the system replaces it in one step.
    const DWORD error = insist(to, [from, to]() -> DWORD {
        return MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING) ? 0 : GetLastError();
    });
    if (error == 0)
        return 0;
    errno = error_value(error);
    return status_of(-1, is_longer_than(MAX_PATH, from) ? from : to);
}

int platform_make_dir(const char* path) {
    const char* const name = path ? path : "";
    const int error = status_of(_mkdir(name), name, FOLDER_NAME_SIZE);
    if (error != 0 && is_folder(name))
        return errno = EEXIST;
    const std::string parent = std::string(name).substr(0, std::string(name).find_last_of("\\/"));
    return errno = error == ENOENT && is_file(parent.c_str()) ? ENOTDIR : error;
}

int platform_remove_dir(const char* path) {
    const char* const name = path ? path : "";
    return status_of(_rmdir(name), name, FOLDER_NAME_SIZE);
}

bool platform_may_replace(const char* path) {
    const char* const name = path ? path : "";
    bool may = false;
    const DWORD error = insist(name, [&may, name]() -> DWORD {
        const DWORD attributes = GetFileAttributesA(name);
        FileIdentity file;
        if (attributes == INVALID_FILE_ATTRIBUTES || !identify(name, file))
            return GetLastError();
        may = is_plain(attributes) && file.nNumberOfLinks == 1;
        return 0;
    });
    return error == ERROR_FILE_NOT_FOUND || may;
}

long long platform_file_size(std::FILE* file) {
    return _filelengthi64(_fileno(file));
}

bool platform_same_file(const char* a, const char* b) {
    FileIdentity first, second;
    if (!identify(a, first) || !identify(b, second) || !same_number(first, second))
        return false;
    return has_number(first) || same_full_path(a, b);
}

bool platform_is_special(const char*) {
    return false;
}

int platform_change_dir(const char* path) {
    const char* const name = path ? path : "";
    const int error = status_of(_chdir(name), name);
    return error != 0 && is_file(name) ? errno = ENOTDIR : error;
}

int platform_current_dir(char* out, std::size_t cap) {
    char* name = _getcwd(nullptr, 0);
    const int result = copy_text(name ? name : "", out, cap);
    const int known = name ? 1 : 0;
    std::free(name);
    return known && result;
}

unsigned long platform_process_id() {
    return static_cast<unsigned long>(_getpid());
}

int platform_find_ignoring_case(const char* path, char* out, std::size_t cap) {
    if (!path || !*path || _access(path, 0) != 0) {
        copy_text("", out, cap);
        return 0;
    }
    return copy_text(path, out, cap);
}

int platform_list_files(const char* dir, const char* extension, int (*visit)(const char* name, void* context),
                        void* context) {
    if (!dir || !*dir || !extension || !visit)
        return 0;
    // The functions for narrow characters stop at a name that is longer than 259 of them.
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW(wide(in_folder(dir, std::string("*") + extension)).c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE)
        return 0;
    int visited = 0;
    bool more = true;
    while (more) {
        const bool folder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        const std::string name = narrow(entry.cFileName);
        if (!folder && ends_in_ignoring_case(name, extension)) {
            ++visited;
            if (!visit(name.c_str(), context))
                break;
        }
        more = FindNextFileW(search, &entry) != 0;
    }
    FindClose(search);
    return visited;
}

void platform_start() {
    SetErrorMode(SEM_FAILCRITICALERRORS);
}

void platform_use_utf8_console() {
    SetConsoleOutputCP(UTF8_CODE_PAGE);
}

void platform_clear_console() {
    std::fflush(stdout);
    const HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (console == INVALID_HANDLE_VALUE || !GetConsoleScreenBufferInfo(console, &info))
        return;
    const DWORD cells = static_cast<DWORD>(info.dwSize.X) * static_cast<DWORD>(info.dwSize.Y);
    const COORD top_left = {0, 0};
    DWORD written = 0;
    FillConsoleOutputCharacterA(console, ' ', cells, top_left, &written);
    FillConsoleOutputAttribute(console, info.wAttributes, cells, top_left, &written);
    SetConsoleCursorPosition(console, top_left);
}

bool platform_input_is_terminal() {
    // _isatty also takes the empty device NUL for a terminal.
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0;
}

int platform_open_plot(const char* script_name) {
    // "start" would report a missing program in a dialog box.
    if (!is_on_search_path("gnuplot"))
        return ENOENT;
    const std::string name = script_name ? script_name : "";
    const std::string command = "start \"gnuplot\" /B gnuplot -persist \"" + name + "\"";
    const NoInputForChildren no_input;
    return std::system(command.c_str()) == 0 ? 0 : EIO;
}

} // namespace kor
