#include "korcurrentmodel/model_picker.h"

#include "consoleutil.h"
#include "korlimits.h"
#include "korpaths.h"
#include "korplatform.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kor {

namespace {

constexpr std::size_t PATH_ANSWER_SIZE = 512;
constexpr std::size_t CHOICE_ANSWER_SIZE = 64;

/// The list that collect_model_files is filling.
struct ModelList {
    const char* dir;
    char (*names)[KOR_LISTED_NAME_SIZE];
    int max;
    int count;
};

int keep_split_model(const char* name, void* context) {
    ModelList& list = *static_cast<ModelList*>(context);
    if (is_split_model_file(list.dir, name)) {
        char* kept = list.names[list.count++];
        std::snprintf(kept, KOR_LISTED_NAME_SIZE, "%.*s", KOR_LISTED_NAME_SIZE - 1, name);
    }
    return list.count < list.max;
}

/// The default models folder, or the message that it is unknown.
bool find_models_dir(char* out, std::size_t cap) {
    if (KOR_GetDefaultModelsDir(out, cap))
        return true;
    std::puts("\n[KOR] Could not determine default models directory.");
    wait_for_menu();
    return false;
}

/// Asks for a number from 1 to count; 0 when the user cancels.
int ask_for_number(int count) {
    char answer[CHOICE_ANSWER_SIZE];
    for (;;) {
        std::printf("\nSelect model file [1-%d] (Enter cancels): ", count);
        if (!console_read_text(answer, sizeof answer) || answer[0] == '\0' || answer[0] == '\r')
            return 0;
        const long number = std::strtol(answer, nullptr, 10);
        if (number >= 1 && number <= count)
            return static_cast<int>(number);
        std::puts("[KOR] Invalid selection.");
    }
}

bool is_the_number_one(const char* text) {
    char* end = nullptr;
    const long number = std::strtol(text, &end, 10);
    while (std::isspace(static_cast<unsigned char>(*end)))
        ++end;
    return number == 1 && *end == '\0';
}

/// Whether an existing file may be replaced; a refusal is acknowledged, the end of input is not.
bool confirm_overwriting(const char* path) {
    char answer[CHOICE_ANSWER_SIZE];
    std::printf("\n[KOR] File already exists:\n      %s\nOverwrite? [1=yes, 0=no]: ", path);
    if (!console_read_text(answer, sizeof answer))
        return false;
    console_discard_line();
    if (is_the_number_one(answer))
        return true;
    std::puts("\n[KOR] Export cancelled.");
    wait_for_menu();
    return false;
}

} // namespace

void wait_for_menu() {
    std::printf("\nPress Enter to return to the menu...");
    console_wait_for_enter();
}

int is_split_model_file(const char* dir, const char* name) {
    char path[KOR_PATH_SIZE];
    return KOR_BuildPath(path, sizeof path, dir, name) &&
           text_file_contains_literal(path, "spin_system_file:") &&
           text_file_contains_literal(path, "sequence_file:");
}

int collect_model_files(const char* dir, char (*names)[KOR_LISTED_NAME_SIZE], int max) {
    if (!dir || !names || max < 1)
        return 0;
    ModelList list = {dir, names, max, 0};
    platform_list_files(dir, ".kormodel", keep_split_model, &list);
    return list.count;
}

int prompt_model_selection_from_default_dir(char* out, std::size_t cap) {
    static char names[KOR_MAX_LISTED_MODELS][KOR_LISTED_NAME_SIZE];
    char dir[KOR_PATH_SIZE];
    if (!out || cap == 0 || !find_models_dir(dir, sizeof dir))
        return 0;
    const int count = collect_model_files(dir, names, KOR_MAX_LISTED_MODELS);
    if (count == 0) {
        std::printf("\n[KOR] No .kormodel files found in:\n      %s\n", dir);
        wait_for_menu();
        return 0;
    }
    std::printf("\n[KOR] Available model files in:\n      %s\n\n", dir);
    for (int i = 0; i < count; ++i)
        std::printf("  %3d) %s\n", i + 1, names[i]);
    const int chosen = ask_for_number(count);
    return chosen > 0 ? KOR_BuildPath(out, cap, dir, names[chosen - 1]) : 0;
}

int prompt_model_path(const char* prompt, char* out, std::size_t cap) {
    if (!prompt || !out || cap < 2)
        return 0;
    std::printf("\n%s", prompt);
    if (!console_read_text(out, std::min(cap, PATH_ANSWER_SIZE)))
        return 0;
    console_discard_line();
    for (std::size_t length = std::strlen(out); length > 0 && out[length - 1] == '\r'; --length)
        out[length - 1] = '\0';
    return out[0] != '\0';
}

int resolve_model_path(char* out, std::size_t cap, const char* text) {
    char dir[KOR_PATH_SIZE];
    if (!text)
        return 0;
    if (path_has_separator(text))
        return KOR_BuildPath(out, cap, "", text);
    return KOR_GetDefaultModelsDir(dir, sizeof dir) && KOR_BuildPath(out, cap, dir, text);
}

int prompt_export_model_path(char* out, std::size_t cap) {
    char dir[KOR_PATH_SIZE];
    char answer[PATH_ANSWER_SIZE];
    if (!out || cap == 0 || !find_models_dir(dir, sizeof dir))
        return 0;
    std::printf("\n[KOR] Default models directory:\n      %s\n", dir);
    if (!prompt_model_path("Enter .kormodel file to export to: ", answer, sizeof answer))
        return 0;
    if (!resolve_model_path(out, cap, answer) || !ensure_kormodel_extension(out, cap)) {
        std::puts("\n[KOR] Export failed: output path is too long.");
        wait_for_menu();
        return 0;
    }
    return !file_exists(out) || confirm_overwriting(out);
}

} // namespace kor
