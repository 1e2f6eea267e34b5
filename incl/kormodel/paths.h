// Floor 2.10 - materials: paths stored in model files, resolved on load and made portable on save
//
// `\` and `/` both separate folders on input; joining inserts the system's separator, saved files get '/'.
// Every operation that returns int returns 1, or 0 when it fails: a pointer is missing, a part that it
// needs does not exist or the result does not fit `size` characters with its terminator. `out` must not
// be one of the inputs, except where stated. Folders named "beside the executable" are those of korpaths.h.
#pragma once

#include <cstddef>

namespace kor {

/// out = dir, a separator unless dir is empty or ends in one, leaf (KOR_BuildPath). On failure nothing is
/// written.
int kor_join_path(char* out, std::size_t size, const char* dir, const char* leaf);
/// The path up to, not including, its last separator; 0 when it has none. The folder of a file in the root
/// of an absolute path is the root's separator itself. `out` may be `path`.
int kor_dirname_copy(const char* path, char* out, std::size_t size);
/// kor_dirname_copy twice: the folder that holds the file's folder.
int kor_parent_dir_copy(const char* path, char* out, std::size_t size);
/// The root of the model set whose model file is given: the parent of the model file's folder. Where the
/// path does not name that parent ("my_model", "./my_model", "../x/../my_model"), it is found from the
/// working directory's absolute path, without "." and "..". 0 where that directory is not what the path
/// starts from: for a file in the root of a drive ("D:\x", "\x"), in a folder there without the drive's name,
/// or one found from a drive's own working directory ("D:x"). Where the folder is a link, the root is
/// FOLDER/..: there the model file's own "../" leads.
int kor_set_root_folder(const char* model_filename, char* out, std::size_t size);
/// A letter, ':' and a separator, or two equal leading separators; on Linux also one leading '/'.
int kor_path_is_absolute(const char* path);
/// 1 when the path contains `\` or '/'.
int kor_path_has_separator(const char* path);
/// Every `\` becomes '/', in place.
void kor_normalize_saved_path(char* path);
/// basename_without_extension of korpaths.h.
int kor_copy_basename_without_extension_local(const char* path, char* out, std::size_t size);
/// Makes one folder; an existing one is fine.
int kor_ensure_dir(const char* path);
/// 1 when the file can be opened for reading and has bytes of its own: a pipe or a device is none.
int kor_file_exists_local(const char* path);
/// runtime/results beside the executable; both folders are made when missing.
int kor_get_runtime_results_dir(char* out, std::size_t size);

/// A path stored in a model file: relative to the model file's folder; as it is when absolute, when empty
/// or when the model file's path has no folder. A path that exists only in another case of its letters
/// comes back in the spelling found.
int kor_resolve_model_relative_path(const char* model_filename, const char* value, char* out,
                                    std::size_t size);
/// A stored result path: relative to runtime/results, whatever the model file's folder, so that the results
/// of all models lie in one place; as it is when absolute, empty, or when that folder cannot be had. An
/// existing file in another case of the letters comes back in the spelling found: saving made them lower
/// case.
int kor_resolve_result_path(const char* model_filename, const char* value, char* out, std::size_t size);
/// A sector file stored in the sequence file `model_filename`. Absolute: as it is. With a separator:
/// relative to the sequence file's folder, existing or not. A bare name: the first that opens of the
/// sequence file's folder, its folder "waveforms" and the default RF output folder, else the first
/// untested. Without any folder: as stored. Spellings as in kor_resolve_model_relative_path.
int kor_resolve_sector_pulse_path(const char* model_filename, const char* stored_path, char* out,
                                  std::size_t size);
/// Writes the "line %d: sector_pulsefile ..." message for a sector file that was not found: what was
/// stored and which candidates were tried (the folder "waveforms" is not named).
void kor_set_sector_pulse_resolution_error(const char* model_filename, const char* stored_path,
                                           int line_number, int sector, char* errbuf, std::size_t errbufsz);

/// The part of `path` below the folder `prefix`, in lower case and with '/', without leading '/'; empty
/// when both are the same. 0 when `path` does not lie below `prefix`. Case and kind of separator do not
/// count in the comparison, which looks at the first 2047 characters.
int kor_tail_after_prefix(const char* path, const char* prefix, char* tail, std::size_t tailsz);
/// A sector file as a sequence file stores it, with '/': a relative path stays; an absolute one becomes its
/// tail below the sequence file's folder, else "../" and its tail below that folder's parent, else the same
/// of both paths without "." and ".." (a model that was loaded has such paths: ROOT/models/../sequences/...),
/// else it stays absolute. Where a line would lose a character of it then (a blank in a folder above the
/// set), it becomes "../../" and its tail below the folder after, else the bare name of a file in the default
/// RF output folder. Tails are in lower case, or where need be in the letters of the path; a form is taken
/// only when it is read back as the same file. Where the file or the sequence file's folder does not exist,
/// there is nothing to read back: the first of the first two forms that can be formed, in lower case, else
/// the absolute path.
int kor_make_portable_sector_pulse_path(const char* sequence_filename, const char* stored_path, char* out,
                                        std::size_t size);
/// A result file as a model file stores it, with '/': a relative path stays; an absolute one becomes its bare
/// name when it lies directly in runtime/results, else its tail below the model file's folder, else "../" and
/// its tail below that folder's parent, all in lower case, else it stays absolute. Only the bare name and the
/// absolute path are read back to the same file.
int kor_make_portable_result_path(const char* model_filename, const char* stored, char* out,
                                  std::size_t size);

} // namespace kor
