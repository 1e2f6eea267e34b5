// Where the paths in model files lead.
#include "kormodel/paths.h"

#include "korlimits.h"
#include "kormodel/records.h"
#include "korpaths.h"
#include "korplatform.h"
#include "parts.h"

namespace kor {

namespace {

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

} // namespace

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

} // namespace kor
