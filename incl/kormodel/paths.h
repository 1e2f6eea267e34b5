// Floor 2.9 - materials: paths stored in model files, resolved on load and made portable on save
#pragma once

#include <cstddef>

namespace kor {

int kor_join_path(char* out, std::size_t size, const char* dir, const char* leaf);
int kor_dirname_copy(const char* path, char* out, std::size_t size);
int kor_parent_dir_copy(const char* path, char* out, std::size_t size);
int kor_path_is_absolute(const char* path);
int kor_path_has_separator(const char* path);
void kor_normalize_saved_path(char* path);
int kor_copy_basename_without_extension_local(const char* path, char* out, std::size_t size);
int kor_ensure_dir(const char* path);
int kor_file_exists_local(const char* path);
int kor_get_runtime_results_dir(char* out, std::size_t size);
int kor_resolve_model_relative_path(const char* model_filename, const char* value, char* out,
                                    std::size_t size);
int kor_resolve_result_path(const char* model_filename, const char* value, char* out, std::size_t size);
int kor_resolve_sector_pulse_path(const char* model_filename, const char* stored_path, char* out,
                                  std::size_t size);
/// Writes the "line %d: sector_pulsefile ..." message for a sector file that was not found.
void kor_set_sector_pulse_resolution_error(const char* model_filename, const char* stored_path,
                                           int line_number, int sector, char* errbuf, std::size_t errbufsz);
int kor_tail_after_prefix(const char* path, const char* prefix, char* tail, std::size_t tailsz);
int kor_make_portable_sector_pulse_path(const char* sequence_filename, const char* stored_path, char* out,
                                        std::size_t size);
int kor_make_portable_result_path(const char* model_filename, const char* stored, char* out,
                                  std::size_t size);

} // namespace kor
