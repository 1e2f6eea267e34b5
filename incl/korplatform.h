// Floor 0.2 - ground: everything that differs between operating systems
//
// The only module that knows the system. One source file per system (src/korplatform/), one
// contract test. Paths go in as they were typed or stored: `\` and `/` both separate folders.
//
// Text results are written only as a whole: a function that returns 0 leaves the empty text (when cap > 0).
// A path too long for the system counts as the error ENAMETOOLONG.
#pragma once

#include <cstddef>
#include <cstdio>

namespace kor {

/// The separator that joining inserts: '/' on Linux, '\\' on Windows.
char platform_separator();

/// A path with the system's separators: on Linux every `\` becomes `/`; unchanged on Windows.
/// Returns 1, or 0 when it does not fit `cap` (out then holds the empty text). out may be path itself.
int platform_native_path(const char* path, char* out, std::size_t cap);

/// Full file name of the running executable. Returns 1, or 0 when it is unknown, longer than
/// 259 characters, or not expressible because a Linux folder on the way has a `\` in its name.
int platform_executable_file(char* out, std::size_t cap);

/// Whether the path is absolute: a drive letter with ':' and a separator, or two leading
/// separators of the same kind; on Linux also one leading '/'.
bool platform_path_is_absolute(const char* path);

/// Whether files and folders can have the name (of its folders every one). On Windows not with one of
/// `<>:"|?*` or a control character, not with bytes that are no UTF-8, not with a dot or a blank at the end,
/// and not the name of a device such as CON or COM1, with or without an extension: the system would write
/// somewhere else. On Linux always.
bool platform_takes_name(const char* name);

/// errno's value where a file ends before what it should hold, which is no error of the system: ENODATA; on
/// Windows, whose runtime library has no text for that, EIO.
extern const int PLATFORM_NO_DATA;

/// Opening, deleting and renaming wait up to two seconds on Windows while somebody else has the file open in
/// a way that forbids it: another process that writes the same result, or a virus scanner. Then they fail
/// with EACCES.
///
/// fopen with the native path. nullptr and errno on failure; a folder is a failure too. Mode "r" reads every
/// byte as it is, on Windows as well; line ends may be CR LF there.
std::FILE* platform_open(const char* path, const char* mode);
/// The same for a file that is to be new, mode "w" or "wb": EEXIST where anything has the name, be it a link
/// that leads nowhere.
std::FILE* platform_open_new(const char* path, const char* mode);
/// The same for a file that is to take the place of `older`: where that is there, the new one has its owner,
/// group, access rights and access list, and nobody but the owner may open it before. A group that this
/// process cannot give gets no rights. nullptr and EPERM, with nothing left behind, where the list, or the
/// group that it counts on, cannot be given. Windows: a file has the rights of its folder.
std::FILE* platform_open_new_like(const char* older, const char* path, const char* mode);
/// Delete one file, rename one (replacing an existing target), delete one empty folder, make one: 0, or the
/// errno value, which is in errno as well.
int platform_remove(const char* path);
int platform_rename(const char* from, const char* to);
int platform_remove_dir(const char* path);
int platform_make_dir(const char* path);
/// An existing folder is EEXIST when it is to be made, whatever else may be wrong with it.
///
/// Whether renaming another file to `path` has the effect of writing it anew: nothing is there, or a plain
/// file with one name that this process may write and whose owner the other file can have.
bool platform_may_replace(const char* path);
/// Bytes of a file that is open for reading, however large and wherever its position is, which stays; -1 when
/// the system does not say.
long long platform_file_size(std::FILE* file);
/// Whether the two paths name one existing file.
bool platform_same_file(const char* a, const char* b);
/// Whether the path names something that is neither a file with bytes of its own nor a folder: a pipe, a
/// device, a socket. Opening it may wait for ever, or do something. Windows: false.
bool platform_is_special(const char* path);
/// Working directory: change (0 or the errno value) and ask (1 or 0).
int platform_change_dir(const char* path);
int platform_current_dir(char* out, std::size_t cap);
unsigned long platform_process_id();

/// Looks for an existing file or folder again ignoring the case of letters (ASCII), component by
/// component, where the path as spelt does not exist; of several matches the first by name.
/// Returns 1 with the found spelling (the path itself when it exists as spelt), 0 when nothing matches.
/// Windows file systems ignore case: the path itself, when it exists.
int platform_find_ignoring_case(const char* path, char* out, std::size_t cap);

/// Calls `visit(name, context)` for the regular files of a folder whose names end in `extension`
/// (".kormodel", ignoring the case of letters), until visit returns 0. Folders and special files are
/// skipped. Order: Linux by name ignoring case; Windows as the system lists them.
/// Returns the number visited; 0 for a missing or empty folder name.
int platform_list_files(const char* dir, const char* extension, int (*visit)(const char* name, void* context),
                        void* context);

/// Process start: what would stop the program from outside becomes the error of the operation that met it. On
/// Windows a drive that is not ready is no dialog box that would hold up a script; on Linux a file at the
/// process's size limit is a failed write and not a signal, and no file takes the place of a standard stream
/// that was closed. Open standard streams are left alone.
void platform_start();
/// UTF-8 text on the console (code page 65001 on Windows; nothing on Linux).
void platform_use_utf8_console();
/// Blank the console and put the cursor at its top left corner; nothing when standard output is no
/// console.
void platform_clear_console();
/// Whether standard input is a terminal (a person may go on after an end of input).
bool platform_input_is_terminal();

/// Opens a plot script in gnuplot, in the background, without this program's standard input. Returns 0 when
/// it was started, ENOENT when gnuplot is not on the search path, else the error value.
int platform_open_plot(const char* script_name);

} // namespace kor
