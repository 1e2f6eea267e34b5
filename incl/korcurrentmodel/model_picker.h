// Floor 4.3 - workshop: listing, choosing and naming model files
//
// The prompts return 1 with a path, or 0 when the user cancelled (also by the end of input) or nothing can
// be chosen; a message about the latter has then been printed and Enter waited for. Functions with an output
// buffer return 0 for a null buffer, a cap of 0 and a result that does not fit.
#pragma once

#include <cstddef>

namespace kor {

/// Characters of a listed file name (with its terminator), and names in a list.
inline constexpr int KOR_LISTED_NAME_SIZE = 260;
inline constexpr int KOR_MAX_LISTED_MODELS = 256;

/// Says that Enter leads back to the menu and waits for it, as every action of the main menu does at its end.
void wait_for_menu();
/// 1 when the file has a line with "spin_system_file:" and a line with "sequence_file:".
int is_split_model_file(const char* dir, const char* name);
/// Fills names[0 ..] with the names of the folder's model files (*.kormodel that are split model files), in
/// the order in which the system lists them, each cut to 259 characters. Returns their number, at most max;
/// 0 for a folder that cannot be listed.
int collect_model_files(const char* dir, char (*names)[KOR_LISTED_NAME_SIZE], int max);
/// Lists the model files of the default models folder and asks for one of them.
int prompt_model_selection_from_default_dir(char* out, std::size_t cap);
/// Asks for one line of at most 511 characters; what a longer line has behind them is dropped. 0 for an
/// empty answer.
int prompt_model_path(const char* prompt, char* out, std::size_t cap);
/// A text with a backslash, a slash or a colon as it stands; any other text in the default models folder.
int resolve_model_path(char* out, std::size_t cap, const char* text);
/// Asks for the file to export to, adds the extension and has an existing file confirmed.
int prompt_export_model_path(char* out, std::size_t cap);

} // namespace kor
