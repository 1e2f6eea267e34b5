#include "kor-entry.h"

#include "consoleutil.h"
#include "korcurrentmodel/import_export.h"
#include "korcurrentmodel/loaded_model.h"
#include "korcurrentmodel/model_picker.h"
#include "korcurrentmodel/work_dirs.h"
#include "kormodel_refcheck.h"
#include "korplatform.h"
#include "run_modes.h"

#include <cstdio>
#include <cstdlib>
#include <new>

namespace kor {

namespace {

// A line of up to 64 characters; what is longer counts as the next answers.
constexpr int ANSWER_SIZE = 65;
enum MainMenuChoice { PREPARE = 1, RUN, IMPORT, EXPORT, CHECK, EXIT };

void print_main_menu() {
    std::printf("\n"
                "========================================\n"
                " KOR Main Menu\n"
                "========================================\n"
                " Loaded model : %s\n"
                "----------------------------------------\n"
                "  1) Prepare / edit current model\n"
                "  2) Run / analyze current model\n"
                "  3) Import .kormodel\n"
                "  4) Export current model (.kormodel)\n"
                "  5) Developer smoke/reference checks\n"
                "  6) Exit\n"
                "----------------------------------------\n"
                "Select [1-6]: ",
                g_loaded_model_path_valid ? g_loaded_model_path : "<none>");
}

void run_reference_checks() {
    std::puts("\n[KOR] Running developer smoke/reference checks...\n");
    KORModel_RunReferenceChecks();
    wait_for_menu();
}

/// The action of one item; false for the one that leaves the program.
bool act_on(int choice) {
    switch (choice) {
    case PREPARE:
        std::puts("\n[KOR] Opening model preparation / editing...");
        KORPrepareMenu();
        return true;
    case RUN:
        std::puts("\n[KOR] Starting non-interactive mode...");
        LiouvilleNonInteractive();
        return true;
    case IMPORT:
        import_kor_model();
        return true;
    case EXPORT:
        KORExportCurrentModelInteractive();
        return true;
    case CHECK:
        run_reference_checks();
        return true;
    default:
        std::puts("\n[KOR] Exiting.");
        return false;
    }
}

/// What was printed may be lost (a full disk, a closed terminal); files and exit status do not depend on it.
void report_unwritten_output() {
    const bool lost = std::ferror(stdout) != 0;
    if (std::fflush(stdout) != 0 || lost)
        std::fputs("[KOR] Warning: not all of the program's output could be written.\n", stderr);
}

/// The exit status.
int run_mode_or_menu(int argc, char** argv) {
    enter_runtime_work_dir();
    TotalStartUp();
    clear_loaded_model_path();
    int status = 0;
    if (!run_named_mode(argc, argv, &status))
        while (act_on(read_menu_choice()))
            continue;
    return status;
}

} // namespace

int read_menu_choice() {
    char answer[ANSWER_SIZE];
    platform_use_utf8_console();
    ScreenMode(3);
    for (;;) {
        print_main_menu();
        if (!console_read_text(answer, sizeof answer))
            return EXIT;
        const long choice = std::strtol(answer, nullptr, 10);
        if (choice >= PREPARE && choice <= EXIT)
            return static_cast<int>(choice);
        std::puts("Invalid choice. Please enter 1, 2, 3, 4, 5 or 6.");
    }
}

int kor_main(int argc, char** argv) {
    platform_start();
    int status = 0;
    try {
        status = run_mode_or_menu(argc, argv);
    } catch (const std::bad_alloc&) {
        std::fputs("[KOR] There is not enough memory to go on.\n", stderr);
        status = 1;
    }
    report_unwritten_output();
    return status;
}

} // namespace kor
