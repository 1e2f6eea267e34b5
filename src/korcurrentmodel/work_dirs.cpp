#include "korcurrentmodel/work_dirs.h"

#include "korlimits.h"
#include "korpaths.h"
#include "korplatform.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kor {

namespace {

constexpr std::size_t FOLDER_NAME_SIZE = 128;

bool made_or_there(int error) {
    return error == 0 || error == EEXIST;
}

/// NAME_PID of the run.
void name_run_folder(const char* model_path, char* out, std::size_t cap) {
    char base[KOR_PATH_SIZE];
    char name[KOR_SHORT_NAME_SIZE];
    const bool named = basename_without_extension(model_path, base, sizeof base) &&
                       sanitize_model_short_name(base, name, sizeof name);
    std::snprintf(out, cap, "%.96s_%lu", named ? name : "model", platform_process_id());
}

void make_and_enter_run_folder(const char* folder) {
    const int made = platform_make_dir(folder);
    if (!made_or_there(made)) {
        std::printf("[KOR] Warning: could not create run scratch directory: %s\n", std::strerror(made));
        return;
    }
    if (const int error = platform_change_dir(folder))
        std::printf("[KOR] Warning: could not enter run scratch directory: %s\n", std::strerror(error));
}

} // namespace

void enter_runtime_work_dir() {
    char executable_dir[KOR_PATH_SIZE];
    char runtime[KOR_PATH_SIZE];
    if (!KOR_GetExecutableDir(executable_dir, sizeof executable_dir)) {
        std::puts("[KOR] Warning: could not determine executable directory; using current directory for "
                  "scratch files.");
        return;
    }
    if (!KOR_BuildPath(runtime, sizeof runtime, executable_dir, "runtime")) {
        std::puts("[KOR] Warning: runtime directory path is too long; using current directory for scratch "
                  "files.");
        return;
    }
    const int made = platform_make_dir(runtime);
    if (!made_or_there(made)) {
        std::printf("[KOR] Warning: could not create runtime directory: %s\n", std::strerror(made));
        return;
    }
    if (const int error = platform_change_dir(runtime))
        std::printf("[KOR] Warning: could not enter runtime directory: %s\n", std::strerror(error));
}

void enter_private_model_run_work_dir(const char* model_path) {
    char executable_dir[KOR_PATH_SIZE];
    char runtime[KOR_PATH_SIZE];
    char runs[KOR_PATH_SIZE];
    char folder[KOR_PATH_SIZE];
    char name[FOLDER_NAME_SIZE];
    if (!KOR_GetExecutableDir(executable_dir, sizeof executable_dir)) {
        std::puts("[KOR] Warning: could not determine executable directory; using current directory for run "
                  "scratch files.");
        return;
    }
    name_run_folder(model_path, name, sizeof name);
    const bool fits = KOR_BuildPath(runtime, sizeof runtime, executable_dir, "runtime") &&
                      KOR_BuildPath(runs, sizeof runs, runtime, "runs") &&
                      KOR_BuildPath(folder, sizeof folder, runs, name);
    if (!fits) {
        std::puts("[KOR] Warning: run scratch path is too long; using current directory.");
        return;
    }
    // Errors of these two show again when the folder of the run is made.
    platform_make_dir(runtime);
    platform_make_dir(runs);
    make_and_enter_run_folder(folder);
}

} // namespace kor
