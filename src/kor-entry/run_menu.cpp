#include "kor-entry.h"

#include "consoleutil.h"
#include "kor/expectation_dialogues.h"
#include "kor/runtime_state.h"
#include "kor/sequence_driver.h"
#include "kor/sequence_status.h"
#include "kor/spin_system.h"
#include "korcurrentmodel/import_export.h"
#include "korcurrentmodel/loaded_model.h"
#include "kormodel/sector_optimisation.h"
#include "menu.h"
#include "observablespectrumcalculator/spectrum_routes.h"
#include "pulsesequencedefiner/family_menu.h"

#include <cstdio>

namespace kor {

namespace {

enum RunChoice { SEQUENCE = 1, RUN_MODEL, EXPECTATION_VALUES, SPECTRA, OPTIMISE, SAVE, BACK };
constexpr int AVERAGE_SPECTRUM = 1;
constexpr int PLAIN_SUMS = 0;
constexpr int UNIT_NORM = 1;

void print_run_menu() {
    ScreenMode(3);
    std::puts("****************************************************\n"
              "***         Run / Analyze Current Model         ***\n"
              "****************************************************\n");
    KORPrintCurrentModelFileHint();
    std::puts("");
    PrintNonInteractiveStatus();
    std::printf("Options:\n"
                "\n"
                "  1. Choose sequence family and compose / edit pulse sequence\n"
                "  2. Run current prepared model\n"
                "  3. Calculate expectation values\n"
                "  4. Calculate spectra\n"
                "  5. Optimize one RF sector in current 1D/2D sequence\n"
                "  6. Save current model now (.kormodel)\n"
                "  7. Back\n"
                "\n"
                "Your choice [1..7] : ");
}

int ask_spectrum_kind() {
    int kind = AVERAGE_SPECTRUM;
    std::printf("Options:\n"
                "  1. Calculate average spectrum\n"
                "  2. Calculate spectra separately\n"
                "Your choice [1,2] : ");
    console_read_int(&kind);
    console_discard_line();
    return kind;
}

/// The receiver sees every spin's operator at unit norm; the rest of the program the plain sums.
void calculate_spectra() {
    RuntimeState& s = g_runtime;
    if (scratch_replaces_model_files())
        return;
    const auto spectrum = ask_spectrum_kind() == AVERAGE_SPECTRUM ? AverageSpectrum : SeparateSpectra;
    CMatAdd(s.n, s.Icoup, s.Izee, s.Istat);
    make_all_totals(UNIT_NORM);
    spectrum(&s.n, &s.ap, s.densmat, s.Istat, s.Ixtot, s.Iytot, s.Iztot, s.ket, s.Ilist);
    make_all_totals(PLAIN_SUMS);
}

void act_on(int choice) {
    switch (choice) {
    case SEQUENCE:
        ComposePulseSequence();
        return;
    case RUN_MODEL:
        RunCurrentPreparedModel();
        return;
    case EXPECTATION_VALUES:
        CalcExpVal();
        return;
    case SPECTRA:
        calculate_spectra();
        return;
    case OPTIMISE:
        KORModel_OptimizePreparedSequenceSectorInteractive();
        return;
    case SAVE:
        KORExportCurrentModelInteractive();
        return;
    default:
        std::puts("Unknown choice.");
    }
}

} // namespace

void LiouvilleNonInteractive() {
    for (;;) {
        int choice = 0;
        print_run_menu();
        if (!read_menu_number(&choice) || choice == BACK)
            return;
        act_on(choice);
        std::printf("\nPress Enter to continue...");
        console_wait_for_enter();
    }
}

} // namespace kor
