// Joining and splitting paths, and what lies beside the executable.
#include "kormodel/paths.h"

#include "korlimits.h"
#include "korpaths.h"
#include "korplatform.h"
#include "parts.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace kor {

int copy_whole(const char* text, char* out, std::size_t size) {
    if (!text || !out || std::strlen(text) >= size)
        return 0;
    std::memmove(out, text, std::strlen(text) + 1);
    return 1;
}

int copy_normalized(const char* text, char* out, std::size_t size) {
    if (!copy_whole(text, out, size))
        return 0;
    kor_normalize_saved_path(out);
    return 1;
}

const char* last_separator(const char* path) {
    const char* last = nullptr;
    for (; *path != '\0'; ++path)
        if (*path == '/' || *path == '\\')
            last = path;
    return last;
}

const char* behind_last_separator(const char* path) {
    const char* last = last_separator(path);
    return last ? last + 1 : path;
}

int kor_join_path(char* out, std::size_t size, const char* dir, const char* leaf) {
    return KOR_BuildPath(out, size, dir, leaf);
}

int kor_dirname_copy(const char* path, char* out, std::size_t size) {
    const char* last = path ? last_separator(path) : nullptr;
    if (!last || !out)
        return 0;
    std::size_t length = static_cast<std::size_t>(last - path);
    if (length == 0 && platform_path_is_absolute(path))
        length = 1;
    if (length >= size)
        return 0;
    std::memmove(out, path, length);
    out[length] = '\0';
    return 1;
}

int kor_parent_dir_copy(const char* path, char* out, std::size_t size) {
    char dir[KOR_PATH_SIZE];
    return kor_dirname_copy(path, dir, sizeof dir) && kor_dirname_copy(dir, out, size);
}

int kor_path_is_absolute(const char* path) {
    return path && platform_path_is_absolute(path);
}

int kor_path_has_separator(const char* path) {
    return path && last_separator(path);
}

void kor_normalize_saved_path(char* path) {
    if (path)
        std::replace(path, path + std::strlen(path), '\\', '/');
}

int kor_copy_basename_without_extension_local(const char* path, char* out, std::size_t size) {
    return basename_without_extension(path, out, size);
}

int kor_ensure_dir(const char* path) {
    if (!path)
        return 0;
    const int error = platform_make_dir(path);
    return error == 0 || error == EEXIST;
}

int kor_file_exists_local(const char* path) {
    return path && !platform_is_special(path) && file_exists(path);
}

int kor_get_runtime_results_dir(char* out, std::size_t size) {
    char executable_dir[KOR_PATH_SIZE];
    char runtime_dir[KOR_PATH_SIZE];
    return KOR_GetExecutableDir(executable_dir, sizeof executable_dir) &&
           kor_join_path(runtime_dir, sizeof runtime_dir, executable_dir, "runtime") &&
           kor_ensure_dir(runtime_dir) && kor_join_path(out, size, runtime_dir, "results") &&
           kor_ensure_dir(out);
}

} // namespace kor
