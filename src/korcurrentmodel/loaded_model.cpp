#include "korcurrentmodel/loaded_model.h"

#include "consoleutil.h"
#include "kormodel/text_lines.h"
#include "korpaths.h"
#include "modelfiles.h"

#include <cstdio>
#include <cstring>

namespace kor {

char g_loaded_model_path[KOR_PATH_SIZE];
int g_loaded_model_path_valid;
char g_current_model_short_name[KOR_SHORT_NAME_SIZE];
int g_current_model_short_name_valid;

namespace {

constexpr std::size_t ANSWER_SIZE = 256;

void forget_loaded_path() {
    g_loaded_model_path[0] = '\0';
    g_loaded_model_path_valid = 0;
}

/// Asks until an answer makes a short name, and keeps that; false at end of input.
bool ask_for_short_name() {
    char answer[ANSWER_SIZE];
    char name[KOR_SHORT_NAME_SIZE];
    for (;;) {
        std::printf("\nShort model name / file prefix\n(used for default sector waveform filenames)\n: ");
        if (!console_read_text(answer, sizeof answer))
            return false;
        console_discard_line();
        answer[std::strcspn(answer, "\r\n")] = '\0';
        if (answer[0] == '\0') {
            std::puts("Please enter a short name, for example: lac_press or gaba_mega");
        } else if (sanitize_model_short_name(answer, name, sizeof name)) {
            set_current_model_short_name(name);
            std::printf("Using model prefix : %s\n", name);
            return true;
        } else {
            std::puts("Could not derive a usable file prefix from that text.");
            std::puts("Use letters, numbers, spaces, '-' or '_'.");
        }
    }
}

} // namespace

void set_loaded_model_path(const char* path) {
    if (!path || !*path) {
        forget_loaded_path();
        return;
    }
    copy_truncated(path, g_loaded_model_path, sizeof g_loaded_model_path);
    g_loaded_model_path_valid = 1;
    seed_current_model_short_name_from_path(g_loaded_model_path);
}

void clear_loaded_model_path() {
    forget_loaded_path();
    forget_model_files();
    clear_current_model_short_name();
}

void set_current_model_short_name(const char* name) {
    if (!name || !*name) {
        clear_current_model_short_name();
        return;
    }
    copy_truncated(name, g_current_model_short_name, sizeof g_current_model_short_name);
    g_current_model_short_name_valid = 1;
}

void clear_current_model_short_name() {
    g_current_model_short_name[0] = '\0';
    g_current_model_short_name_valid = 0;
}

void seed_current_model_short_name_from_path(const char* path) {
    char base[KOR_PATH_SIZE];
    char name[KOR_SHORT_NAME_SIZE];
    if (basename_without_extension(path, base, sizeof base) &&
        sanitize_model_short_name(base, name, sizeof name))
        set_current_model_short_name(name);
}

int KOREnsureCurrentModelShortName(char* out, std::size_t cap) {
    if (!out || cap == 0)
        return 0;
    if (!g_current_model_short_name_valid && g_loaded_model_path_valid)
        seed_current_model_short_name_from_path(g_loaded_model_path);
    if (!g_current_model_short_name_valid && !ask_for_short_name())
        return 0;
    copy_truncated(g_current_model_short_name, out, cap);
    return 1;
}

void KORPrintCurrentModelFileHint() {
    std::printf("Current model file : %s\n",
                g_loaded_model_path_valid ? g_loaded_model_path : "<unsaved current model>");
}

} // namespace kor
