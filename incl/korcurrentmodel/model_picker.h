// Floor 4.3 - workshop: listing, choosing and naming model files
#pragma once

#include <cstddef>

namespace kor {

inline constexpr int KOR_LISTED_NAME_SIZE = 260;
inline constexpr int KOR_MAX_LISTED_MODELS = 256;

int is_split_model_file(const char* dir, const char* name);
int collect_model_files(const char* dir, char (*names)[KOR_LISTED_NAME_SIZE], int max);
int prompt_model_selection_from_default_dir(char* out, std::size_t cap);
int prompt_model_path(const char* prompt, char* out, std::size_t cap);
int resolve_model_path(char* out, std::size_t cap, const char* text);
int prompt_export_model_path(char* out, std::size_t cap);

} // namespace kor
