// Floor 0.2 - ground: everything that differs between operating systems
//
// The only module that knows the system. One source file per system (src/korplatform/), one
// contract test. Paths go in as they were typed or stored: `\` and `/` both separate folders.
#pragma once

#include <cstddef>
#include <cstdio>

namespace kor {

/// The separator that joining inserts: '/' on Linux, '\\' on Windows.
char platform_separator();

/// A path with the system's separators: on Linux every `\` becomes `/`; unchanged on Windows.
/// Returns 1, or 0 when it does not fit `cap` (out then holds the empty text).
int platform_native_path(const char* path, char* out, std::size_t cap);

/// Full file name of the running executable. Returns 1, or 0 when it is unknown or longer than
/// 259 characters.
int platform_executable_file(char* out, std::size_t cap);

/// Whether the path is absolute: a drive letter with ':' and a separator, or two leading
/// separators of the same kind; on Linux also one leading '/'.
bool platform_path_is_absolute(const char* path);

/// fopen with the native path. nullptr and errno on failure.
std::FILE* platform_open(const char* path, const char* mode);
/// Delete, rename (replacing an existing target) and make one folder: 0, or the errno value.
int platform_remove(const char* path);
int platform_rename(const char* from, const char* to);
int platform_make_dir(const char* path);
/// Working directory: change (0 or the errno value) and ask (1 or 0).
int platform_change_dir(const char* path);
int platform_current_dir(char* out, std::size_t cap);
unsigned long platform_process_id();

/// Looks for an existing file or folder again ignoring the case of letters, component by component,
/// where the path as spelt does not exist. Returns 1 with the found spelling (the path itself when it
/// exists as spelt), 0 when nothing matches. Windows file systems ignore case: the path itself.
int platform_find_ignoring_case(const char* path, char* out, std::size_t cap);

/// Calls `visit(name, context)` for the regular files of a folder whose names end in `extension`
/// (".kormodel", matched as the system matches wildcards), until visit returns 0.
/// Order: Linux by name ignoring case; Windows as the system lists them. Returns the number visited.
int platform_list_files(const char* dir, const char* extension, int (*visit)(const char* name, void* context),
                        void* context);

/// Process start: binary-safe standard streams are left alone; nothing on Linux.
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
