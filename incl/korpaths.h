// Floor 0.4 - ground: joining and splitting paths, the executable's folder and the default folders
//
// Layout: E = folder of the executable, P = its parent. E/runtime is the working directory; P/models,
// P/density_matrices, P/rf-output and P/rf-input are the default folders.
// Every operation returns 1, or 0 when a pointer is missing, a capacity is 0 or a result does not fit;
// then it changes nothing it could not complete. Paths hold at most KOR_PATH_SIZE - 1 characters.
#pragma once

#include <cstddef>

namespace kor {

/// out = dir, a separator unless dir is empty or ends in one, name.
int KOR_BuildPath(char* out, std::size_t cap, const char* dir, const char* name);
/// out = path cut at its last backslash, or last slash when there is none; the root keeps its separator.
/// 0 also for a path without separators. out may be path itself.
int KOR_GetFolder(char* out, std::size_t cap, const char* path);
/// E: the folder of the executable.
int KOR_GetExecutableDir(char* out, std::size_t cap);
int KOR_GetDefaultModelsDir(char* out, std::size_t cap);
int KOR_GetDefaultDensityMatricesDir(char* out, std::size_t cap);
int KOR_GetDefaultRFOutputDir(char* out, std::size_t cap);
int KOR_GetDefaultRFInputDir(char* out, std::size_t cap);

/// File name without folder and last extension (a name that begins with its only dot keeps it).
int basename_without_extension(const char* path, char* out, std::size_t cap);
/// Short name from free text: lower-case letters, digits, single '-' and '_' between them.
int sanitize_model_short_name(const char* text, char* out, std::size_t cap);
/// 1 when the text contains a backslash, a slash or a colon.
int path_has_separator(const char* text);
/// 1 when the file can be opened for reading. What is neither a file nor a folder (a pipe, a device) is there
/// without being opened: that could wait for ever.
int file_exists(const char* path);
/// 1 when some line (read in pieces of at most 1023 characters) contains the literal.
int text_file_contains_literal(const char* path, const char* literal);
/// 1 when the last extension is ".kormodel", ignoring case.
int has_kormodel_extension_ci(const char* path);
/// Appends ".kormodel" when missing; 0 when it does not fit `cap`.
int ensure_kormodel_extension(char* path, std::size_t cap);

} // namespace kor
