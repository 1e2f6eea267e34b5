// Floor 4.2 - workshop: which model file is loaded, and its short name
//
// The loaded path is the model file last loaded, imported or exported. The short name is the prefix of the
// default names of sector waveform files; it is made from the loaded path, or asked for.
#pragma once

#include "korlimits.h"

#include <cstddef>

namespace kor {

extern char g_loaded_model_path[KOR_PATH_SIZE];
extern int g_loaded_model_path_valid; // 1 while a model file is loaded
extern char g_current_model_short_name[KOR_SHORT_NAME_SIZE];
extern int g_current_model_short_name_valid; // 1 while there is a short name

/// Keeps the path (at most 1023 characters) and takes the short name from it where that works. A missing or
/// empty path clears the loaded path and keeps the short name.
void set_loaded_model_path(const char* path);
/// Forgets the loaded path, the files of the model and the short name.
void clear_loaded_model_path();
/// Keeps the name as it is (at most 127 characters); a missing or empty name clears the short name.
void set_current_model_short_name(const char* name);
void clear_current_model_short_name();
/// The short name of the path's base name; where none can be made, the short name stays as it was.
void seed_current_model_short_name_from_path(const char* path);
/// The short name, cut to cap - 1 characters: the one that is set, else one made from the loaded path, else
/// asked for until an answer can be used. Returns 1; 0 at end of input, for a null out or a cap of 0.
int KOREnsureCurrentModelShortName(char* out, std::size_t cap);
/// Prints the line "Current model file : ..." of the menus.
void KORPrintCurrentModelFileHint();

} // namespace kor
