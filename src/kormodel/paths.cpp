#include "kormodel/paths.h"

#include "korlimits.h"
#include "kormodel/records.h"
#include "kormodel/text_lines.h"
#include "korpaths.h"
#include "korplatform.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <initializer_list>

namespace kor {

namespace {

int copy_whole(const char* text, char* out, std::size_t size) {
    if (!text || !out || std::strlen(text) >= size)
        return 0;
    std::memmove(out, text, std::strlen(text) + 1);
    return 1;
}

const char* last_separator(const char* path) {
    const char* last = nullptr;
    for (; *path != '\0'; ++path)
        if (*path == '/' || *path == '\\')
            last = path;
    return last;
}

/// out = folder of the file `beside`, joined with value.
int join_beside(const char* beside, const char* value, char* out, std::size_t size) {
    char dir[KOR_PATH_SIZE];
    return kor_dirname_copy(beside, dir, sizeof dir) && kor_join_path(out, size, dir, value);
}

int join_rf_output(const char* leaf, char* out, std::size_t size) {
    char dir[KOR_PATH_SIZE];
    return KOR_GetDefaultRFOutputDir(dir, sizeof dir) && kor_join_path(out, size, dir, leaf);
}

int join_waveforms(const char* sequence_filename, const char* leaf, char* out, std::size_t size) {
    char dir[KOR_PATH_SIZE];
    return join_beside(sequence_filename, "waveforms", dir, sizeof dir) &&
           kor_join_path(out, size, dir, leaf);
}

/// Model sets are written under systems that ignore case: a path that does not exist as spelt takes the
/// spelling of the file that differs in case alone. A path without such a file keeps its spelling.
void use_existing_spelling(char* path, std::size_t size) {
    char found[KOR_PATH_SIZE];
    if (*path != '\0' && platform_find_ignoring_case(path, found, sizeof found))
        copy_whole(found, path, size);
}

/// Whether the file at `path` opens, in any case of its letters; path then has the spelling that opens.
int opens(char* path, std::size_t size) {
    use_existing_spelling(path, size);
    return kor_file_exists_local(path);
}

int resolve_leaf(const char* sequence_filename, const char* leaf, char* out, std::size_t size) {
    char candidate[KOR_PATH_SIZE];
    if (join_waveforms(sequence_filename, leaf, candidate, sizeof candidate) &&
        opens(candidate, sizeof candidate))
        return copy_whole(candidate, out, size);
    if (join_rf_output(leaf, candidate, sizeof candidate) && opens(candidate, sizeof candidate))
        return copy_whole(candidate, out, size);
    if (join_beside(sequence_filename, leaf, candidate, sizeof candidate))
        return copy_whole(candidate, out, size);
    return copy_whole(leaf, out, size);
}

/// "; tried ..." with the candidates of a relative path that could be formed, or nothing.
void describe_attempts(const char* sequence_filename, const char* stored, char* out, std::size_t size) {
    char beside[KOR_PATH_SIZE];
    char rf_output[KOR_PATH_SIZE];
    const int has_beside = join_beside(sequence_filename, stored, beside, sizeof beside);
    const bool leaf = !kor_path_has_separator(stored);
    const bool has_rf_output = leaf && join_rf_output(stored, rf_output, sizeof rf_output);
    if (has_beside && has_rf_output)
        set_error(out, size, "; tried model-relative '%s' and RF-output '%s'", beside, rf_output);
    else if (has_beside && !leaf)
        set_error(out, size, "; tried model-relative '%s'", beside);
    else if (has_rf_output)
        set_error(out, size, "; tried RF-output '%s'", rf_output);
}

void comparable_copy(const char* path, char (&out)[KOR_LINE_SIZE]) {
    copy_truncated(path, out, sizeof out);
    kor_normalize_saved_path(out);
    for (char* c = out; *c != '\0'; ++c)
        if (*c >= 'A' && *c <= 'Z')
            *c = static_cast<char>(*c - 'A' + 'a');
}

int copy_normalized(const char* text, char* out, std::size_t size) {
    if (!copy_whole(text, out, size))
        return 0;
    kor_normalize_saved_path(out);
    return 1;
}

/// The absolute path `stored` as seen from the folder of the file `beside`: its tail below that folder,
/// else "../" and its tail below the folder's parent, else as it is.
int make_relative_to(const char* beside, const char* stored, char* out, std::size_t size) {
    char dir[KOR_PATH_SIZE];
    char tail[KOR_LINE_SIZE];
    if (kor_dirname_copy(beside, dir, sizeof dir) && kor_tail_after_prefix(stored, dir, tail, sizeof tail) &&
        tail[0] != '\0')
        return copy_whole(tail, out, size);
    if (kor_parent_dir_copy(beside, dir, sizeof dir) &&
        kor_tail_after_prefix(stored, dir, tail, sizeof tail) && tail[0] != '\0')
        return kor_join_path(out, size, "../", tail);
    return copy_normalized(stored, out, size);
}

const char* behind_last_separator(const char* path) {
    const char* last = last_separator(path);
    return last ? last + 1 : path;
}

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

/// The path without its "." and ".." folders; a relative one begins at the working directory.
int whole_path(const char* path, char (&out)[KOR_PATH_SIZE]) {
    char current[KOR_PATH_SIZE] = "";
    return (kor_path_is_absolute(path) || platform_current_dir(current, sizeof current)) &&
           kor_join_path(out, sizeof out, current, path) && remove_dot_folders(out);
}

/// The absolute path without its "." and ".." folders; false when that is another file, or there is none:
/// ".." behind a link leads elsewhere.
bool same_without_dot_folders(const char* path, char (&clean)[KOR_PATH_SIZE]) {
    return copy_whole(path, clean, sizeof clean) && remove_dot_folders(clean) &&
           platform_same_file(path, clean);
}

bool exists_as_spelt(const char* path) {
    char found[KOR_PATH_SIZE];
    return platform_find_ignoring_case(path, found, sizeof found) && std::strcmp(found, path) == 0;
}

/// Whether a line of the sequence file can hold the relative path `form`, and reading it finds the file at
/// `stored`.
bool reads_back(const char* sequence_filename, const char* form, const char* stored) {
    char found[KOR_PATH_SIZE];
    return !find_lost_in_word(form) &&
           kor_resolve_sector_pulse_path(sequence_filename, form, found, sizeof found) &&
           platform_same_file(found, stored);
}

/// Whether `up` (some "../") and the lower-case `tail` of the path `stored` are read back as that file; where
/// only the letters of `stored` tell it from another file, the form has these.
bool form_in_some_case(const char* sequence_filename, const char* stored, const char* up, const char* tail,
                       char (&form)[KOR_PATH_SIZE]) {
    const char* letters = stored + std::strlen(stored) - std::strlen(tail);
    for (const char* rest : {tail, letters}) {
        if (!kor_join_path(form, sizeof form, up, rest))
            return false;
        kor_normalize_saved_path(form);
        if (reads_back(sequence_filename, form, stored))
            return true;
    }
    return false;
}

/// The file at the absolute path `stored` as seen from the folder of the path `sequence`, from the folder
/// above it and so on, `levels` folders in all: the first form that the sequence file reads back.
bool form_from_folders(const char* sequence_filename, const char* sequence, const char* stored, int levels,
                       char (&form)[KOR_PATH_SIZE]) {
    constexpr const char* ups[] = {"", "../", "../../"};
    char dir[KOR_PATH_SIZE];
    char tail[KOR_LINE_SIZE];
    if (!copy_whole(sequence, dir, sizeof dir))
        return false;
    for (int level = 0; level < levels && kor_dirname_copy(dir, dir, sizeof dir); ++level)
        if (kor_tail_after_prefix(stored, dir, tail, sizeof tail) && tail[0] != '\0' &&
            form_in_some_case(sequence_filename, stored, ups[level], tail, form))
            return true;
    return false;
}

/// A relative form that the sequence file reads back as the existing file at the absolute path `stored`: of
/// the paths as they are, then without "." and ".."; where no line can hold `stored`, also from two folders
/// up, where the root of a model set is, and as the bare name of a default RF output.
bool find_relative_form(const char* sequence_filename, const char* stored, char (&form)[KOR_PATH_SIZE]) {
    const bool from_anywhere = find_lost_in_word(stored) != nullptr;
    char clean[KOR_PATH_SIZE];
    char sequence[KOR_PATH_SIZE];
    if (form_from_folders(sequence_filename, sequence_filename, stored, 2, form))
        return true;
    if (same_without_dot_folders(stored, clean) && whole_path(sequence_filename, sequence) &&
        form_from_folders(sequence_filename, sequence, clean, from_anywhere ? 3 : 2, form))
        return true;
    return from_anywhere && copy_whole(behind_last_separator(stored), form, sizeof form) &&
           reads_back(sequence_filename, form, stored);
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

int kor_resolve_model_relative_path(const char* model_filename, const char* value, char* out,
                                    std::size_t size) {
    if (!model_filename || !value)
        return 0;
    char dir[KOR_PATH_SIZE];
    const bool joined = *value != '\0' && !kor_path_is_absolute(value) && last_separator(model_filename);
    const int formed =
        joined ? kor_dirname_copy(model_filename, dir, sizeof dir) && kor_join_path(out, size, dir, value)
               : copy_whole(value, out, size);
    if (formed)
        use_existing_spelling(out, size);
    return formed;
}

int kor_resolve_result_path(const char* model_filename, const char* value, char* out, std::size_t size) {
    if (!model_filename || !value)
        return 0;
    char dir[KOR_PATH_SIZE];
    if (*value == '\0' || kor_path_is_absolute(value))
        return copy_whole(value, out, size);
    if (!kor_get_runtime_results_dir(dir, sizeof dir))
        return copy_whole(value, out, size);
    if (!kor_join_path(out, size, dir, value))
        return 0;
    char found[KOR_PATH_SIZE];
    if (platform_find_ignoring_case(out, found, sizeof found) && kor_file_exists_local(found))
        copy_whole(found, out, size);
    return 1;
}

int kor_resolve_sector_pulse_path(const char* model_filename, const char* stored_path, char* out,
                                  std::size_t size) {
    if (!model_filename || !stored_path)
        return 0;
    if (*stored_path == '\0')
        return copy_whole("", out, size);
    char candidate[KOR_PATH_SIZE];
    if (kor_path_is_absolute(stored_path)) {
        if (!copy_whole(stored_path, candidate, sizeof candidate))
            return 0;
        use_existing_spelling(candidate, sizeof candidate);
        return copy_whole(candidate, out, size);
    }
    if (join_beside(model_filename, stored_path, candidate, sizeof candidate) &&
        (opens(candidate, sizeof candidate) || kor_path_has_separator(stored_path)))
        return copy_whole(candidate, out, size);
    if (kor_path_has_separator(stored_path))
        return copy_whole(stored_path, out, size);
    return resolve_leaf(model_filename, stored_path, out, size);
}

void kor_set_sector_pulse_resolution_error(const char* model_filename, const char* stored_path,
                                           int line_number, int sector, char* errbuf, std::size_t errbufsz) {
    if (!stored_path || *stored_path == '\0') {
        set_error(errbuf, errbufsz, "line %d: sector_pulsefile for sector %d is empty", line_number, sector);
        return;
    }
    if (kor_path_is_absolute(stored_path)) {
        set_error(
            errbuf, errbufsz,
            "line %d: sector_pulsefile for sector %d not found; stored absolute path '%s' does not exist",
            line_number, sector, stored_path);
        return;
    }
    char tried[2 * KOR_PATH_SIZE + 64] = "";
    describe_attempts(model_filename, stored_path, tried, sizeof tried);
    set_error(errbuf, errbufsz, "line %d: sector_pulsefile for sector %d not found; stored %s '%s'%s",
              line_number, sector, kor_path_has_separator(stored_path) ? "relative path" : "leafname",
              stored_path, tried);
}

int kor_tail_after_prefix(const char* path, const char* prefix, char* tail, std::size_t tailsz) {
    if (!path || !prefix)
        return 0;
    char whole[KOR_LINE_SIZE];
    char start[KOR_LINE_SIZE];
    comparable_copy(path, whole);
    comparable_copy(prefix, start);
    const std::size_t length = std::strlen(start);
    if (std::strncmp(whole, start, length) != 0)
        return 0;
    const char* rest = whole + length;
    if (*rest != '/' && *rest != '\0')
        return 0;
    return copy_whole(rest + std::strspn(rest, "/"), tail, tailsz);
}

int kor_make_portable_sector_pulse_path(const char* sequence_filename, const char* stored_path, char* out,
                                        std::size_t size) {
    if (!sequence_filename || !stored_path)
        return 0;
    if (!kor_path_is_absolute(stored_path))
        return copy_normalized(stored_path, out, size);
    char dir[KOR_PATH_SIZE];
    char form[KOR_PATH_SIZE];
    if (!exists_as_spelt(stored_path) || !kor_dirname_copy(sequence_filename, dir, sizeof dir) ||
        !exists_as_spelt(dir))
        return make_relative_to(sequence_filename, stored_path, out, size);
    if (find_relative_form(sequence_filename, stored_path, form))
        return copy_whole(form, out, size);
    return copy_normalized(stored_path, out, size);
}

int kor_make_portable_result_path(const char* model_filename, const char* stored, char* out,
                                  std::size_t size) {
    if (!model_filename || !stored)
        return 0;
    if (!kor_path_is_absolute(stored))
        return copy_normalized(stored, out, size);
    char results[KOR_PATH_SIZE];
    char tail[KOR_LINE_SIZE];
    if (kor_get_runtime_results_dir(results, sizeof results) &&
        kor_tail_after_prefix(stored, results, tail, sizeof tail) && tail[0] != '\0' &&
        !kor_path_has_separator(tail))
        return copy_whole(tail, out, size);
    return make_relative_to(model_filename, stored, out, size);
}

} // namespace kor
