// The root folder of a model set.
#include "kormodel/paths.h"

#include "korlimits.h"
#include "kormodel/text_lines.h"
#include "korplatform.h"
#include "parts.h"

#include <cstring>

namespace kor {

namespace {

bool is_dot_folder(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

/// Goes from the folder `dir` into `folder`, which may be "." or "..".
int enter_folder(char (&dir)[KOR_PATH_SIZE], const char* folder) {
    if (std::strcmp(folder, ".") == 0)
        return 1;
    if (std::strcmp(folder, "..") == 0)
        return kor_dirname_copy(dir, dir, sizeof dir);
    char inside[KOR_PATH_SIZE];
    return kor_join_path(inside, sizeof inside, dir, folder) && copy_whole(inside, dir, sizeof dir);
}

/// The absolute path without its "." and ".." folders, in place.
int remove_dot_folders(char (&path)[KOR_PATH_SIZE]) {
    constexpr const char* separators = "/\\";
    const char* rest = path + std::strspn(path, separators);
    char clean[KOR_PATH_SIZE];
    copy_truncated(path, clean, static_cast<std::size_t>(rest - path) + 1);
    while (*rest != '\0') {
        char folder[KOR_PATH_SIZE];
        const std::size_t length = std::strcspn(rest, separators);
        copy_truncated(rest, folder, length + 1);
        if (!enter_folder(clean, folder))
            return 0;
        rest += length;
        rest += std::strspn(rest, separators);
    }
    return copy_whole(clean, path, sizeof path);
}

/// The parent of `dir`, the folder in the path of a model file, as the path names it.
int named_parent(const char* model_filename, const char* dir, char* out, std::size_t size) {
    if (last_separator(dir) && !is_dot_folder(behind_last_separator(dir)))
        return kor_dirname_copy(dir, out, size) && out[0] != '\0';
    if (!kor_path_is_absolute(dir) && !platform_takes_name(model_filename))
        return 0;
    char whole[KOR_PATH_SIZE];
    return whole_path(dir, whole) && kor_dirname_copy(whole, out, size);
}

} // namespace

int whole_path(const char* path, char (&out)[KOR_PATH_SIZE]) {
    char current[KOR_PATH_SIZE] = "";
    return (kor_path_is_absolute(path) || platform_current_dir(current, sizeof current)) &&
           kor_join_path(out, sizeof out, current, path) && remove_dot_folders(out);
}

int kor_set_root_folder(const char* model_filename, char* out, std::size_t size) {
    char dir[KOR_PATH_SIZE] = "";
    if (!model_filename)
        return 0;
    const int has_folder = kor_dirname_copy(model_filename, dir, sizeof dir);
    if (has_folder && dir[0] == '\0')
        return 0;
    if (!named_parent(model_filename, dir, out, size))
        return 0;
    // A model file names its parts by "..", which behind a link is not the folder that the path names.
    char above[KOR_PATH_SIZE];
    const bool behind_link = kor_join_path(above, sizeof above, dir, "..") &&
                             platform_same_file(above, above) && !platform_same_file(above, out);
    return !behind_link || copy_whole(above, out, size);
}

} // namespace kor
