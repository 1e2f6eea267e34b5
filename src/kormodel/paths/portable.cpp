// Paths made portable on save.
#include "kormodel/paths.h"

#include "korlimits.h"
#include "kormodel/text_lines.h"
#include "korplatform.h"
#include "parts.h"

#include <cstring>
#include <initializer_list>

namespace kor {

namespace {

void comparable_copy(const char* path, char (&out)[KOR_LINE_SIZE]) {
    copy_truncated(path, out, sizeof out);
    kor_normalize_saved_path(out);
    for (char* c = out; *c != '\0'; ++c)
        if (*c >= 'A' && *c <= 'Z')
            *c = static_cast<char>(*c - 'A' + 'a');
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
    // Behind a link ".." leads elsewhere: without it, the path may be that of another file, or of none.
    if (whole_path(stored, clean) && platform_same_file(stored, clean) &&
        whole_path(sequence_filename, sequence) &&
        form_from_folders(sequence_filename, sequence, clean, from_anywhere ? 3 : 2, form))
        return true;
    return from_anywhere && copy_whole(behind_last_separator(stored), form, sizeof form) &&
           reads_back(sequence_filename, form, stored);
}

} // namespace

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
