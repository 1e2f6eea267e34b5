#include "kor-entry.h"

#include "consoleutil.h"
#include "kor/runtime_state.h"
#include "kor/spatial_grid_dialogue.h"
#include "kor/spin_system_dialogues.h"
#include "korcurrentmodel/import_export.h"
#include "korcurrentmodel/loaded_model.h"
#include "korcurrentmodel/model_summary.h"
#include "menu.h"
#include "pulsesequencedefiner/family_menu.h"

#include <cstdio>

namespace kor {

namespace {

enum PrepareChoice { SPIN_SYSTEM = 1, SPATIAL_DOMAIN, SEQUENCE, SUMMARY, SAVE, BACK };

void print_prepare_menu() {
    ScreenMode(3);
    std::puts("========================================\n"
              " Prepare / Edit Current Model\n"
              "========================================\n");
    KORPrintCurrentModelFileHint();
    std::puts("");
    PrintPrepareStatus();
    std::printf("Options:\n"
                "\n"
                "  1. Define / redefine spin system\n"
                "  2. Define spatial simulation domain (for spatially resolved sequences)\n"
                "  3. Choose sequence family and compose / edit pulse sequence\n"
                "  4. Show current model summary\n"
                "  5. Save current model now (.kormodel)\n"
                "  6. Back\n"
                "\n"
                "Your choice [1..6] : ");
}

void compose_for_current_spin_system() {
    if (g_runtime.Nspins < 1) {
        std::puts("No spin system is currently prepared.");
        std::puts("Define or import a model first.");
        return;
    }
    ComposePulseSequence();
}

void act_on(int choice) {
    switch (choice) {
    case SPIN_SYSTEM:
        RedefineSpinSystem();
        return;
    case SPATIAL_DOMAIN:
        DefineSpatialSimulationDomain();
        return;
    case SEQUENCE:
        compose_for_current_spin_system();
        return;
    case SUMMARY:
        PrintCurrentModelSummary();
        return;
    case SAVE:
        KORExportCurrentModelInteractive();
        return;
    default:
        std::puts("Unknown choice.");
    }
}

} // namespace

void RedefineSpinSystem() {
    SetupSpins();
    if (!g_runtime.spinsystemdefined)
        return;
    std::printf("Spin system defined: Nspins=%d, n=%d\n", g_runtime.Nspins, g_runtime.n);
    MakeBoltzmann();
    MakeZeeman();
    SpinSpinCoupling();
    g_runtime.systemset = 1;
}

void KORPrepareMenu() {
    for (;;) {
        int choice = 0;
        print_prepare_menu();
        if (!read_menu_number(&choice) || choice == BACK)
            return;
        act_on(choice);
        std::printf("Press Enter to continue...");
        console_wait_for_enter();
    }
}

} // namespace kor
