// Floor 4.2 - workshop: which model file is loaded, and its short name
#pragma once

#include "korlimits.h"

#include <cstddef>

namespace kor {

extern char g_loaded_model_path[KOR_PATH_SIZE];
extern int g_loaded_model_path_valid;
extern char g_current_model_short_name[KOR_SHORT_NAME_SIZE];
extern int g_current_model_short_name_valid;

void set_loaded_model_path(const char* path);
void clear_loaded_model_path();
void set_current_model_short_name(const char* name);
void clear_current_model_short_name();
void seed_current_model_short_name_from_path(const char* path);
int KOREnsureCurrentModelShortName(char* out, std::size_t cap);
void KORPrintCurrentModelFileHint();

} // namespace kor
