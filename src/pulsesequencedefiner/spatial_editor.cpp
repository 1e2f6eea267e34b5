#include "pulsesequencedefiner/spatial_editor.h"

#include "consoleutil.h"
#include "fieldgradient_dialogues.h"
#include "fieldgradientlib.h"
#include "kor/runtime_state.h"
#include "kor/spatial_grid.h"
#include "korcurrentmodel/import_export.h"
#include "pulsesequencedefiner/editor_actions.h"
#include "pulsesequencedefiner/model_report.h"
#include "pulsesequencedefiner/prompts.h"
#include "pulsesequencedefiner/sector_content.h"
#include "pulsesequencedefiner/sector_waveforms.h"
#include "pulsesequencedefiner/spin_prompts.h"
#include "pulsesequencedefiner_state.h"

#include <algorithm>
#include <cstdio>

namespace kor {

namespace {

enum Action { SECTOR = 1, SPIN_SYSTEM, GRID, RESULT_FILE, SAVE, BACK };

struct AxisPrompts {
    const char *points, *offset, *step;
};

/// Asks for one axis; a count below 1 becomes 1.
int ask_axis(const AxisPrompts& prompts, int* points, double* first, double* step) {
    if (!read_int_prompt(prompts.points, points))
        return 0;
    *points = std::max(*points, 1);
    return read_double_prompt(prompts.offset, first) && read_double_prompt(prompts.step, step);
}

int define_spatial_grid() {
    RuntimeState& rt = g_runtime;
    double x0 = 0, dx = 0, y0 = 0, dy = 0, z0 = 0, dz = 0;
    if (!ask_axis(
            {"Number of x-grid points   : ", "x-offset coordinate [cm]  : ", "x-step size         [cm]  : "},
            &rt.ndx, &x0, &dx) ||
        !ask_axis(
            {"Number of y-grid points   : ", "y-offset coordinate [cm]  : ", "y-step size         [cm]  : "},
            &rt.ndy, &y0, &dy) ||
        !ask_axis(
            {"Number of z-grid points   : ", "z-offset coordinate [cm]  : ", "z-step size         [cm]  : "},
            &rt.ndz, &z0, &dz))
        return 0;
    apply_global_spatial_grid(x0, dx, y0, dy, z0, dz);
    rt.offsetset = 1;
    return 1;
}

/// Without a usable answer there is no gradient along the axis; that is told. An end of input at a terminal
/// is no answer to one axis; the next is asked.
void define_gradient(char axis, double* samples) {
    console_resume_after_end();
    std::printf("Define %c-gradient waveform\n", axis);
    CalcGrad(&g_runtime.ap, &g_runtime.ti, samples);
    if (fieldgrad_last_status != FIELDGRAD_OK)
        std::printf("No %c-gradient waveform was defined: this sector has no %c-gradient.\n", axis, axis);
}

void print_editor_menu() {
    std::printf("    1. Define / edit a sequence sector\n"
                "    2. Define / redefine spin system\n"
                "    3. Define / redefine spatial grid\n"
                "    4. Define result file name\n"
                "    5. Save current model now (.kormodel)\n"
                "    6. Return to previous menu\n"
                "\n");
}

/// 1; 0 when the input ended during the action, which is then left.
int act_on(int choice) {
    switch (choice) {
    case SECTOR:
        return define_chosen_sector(DefineSeqSector);
    case SPIN_SYSTEM:
        return define_spin_system_params();
    case GRID:
        return define_spatial_grid();
    case RESULT_FILE:
        return define_result_file();
    case SAVE:
        KORExportCurrentModelInteractive();
        return 1;
    default:
        std::puts("Unknown choice.");
        return 1;
    }
}

} // namespace

void EditPulseSequence() {
    g_runtime.nevo[0] = 1;
    for (;;) {
        int choice = 0;
        clamp_spatial_grid();
        print_model_state(FAMILY_SPATIAL);
        print_next_step(FAMILY_SPATIAL);
        print_sector_overview(FAMILY_SPATIAL);
        print_editor_menu();
        if (!read_int_prompt("Your choice is [1..6] : ", &choice) || choice == BACK)
            return;
        if (!act_on(choice) && !console_resume_after_end())
            return;
    }
}

int DefineSeqSector(int k) {
    RuntimeState& rt = g_runtime;
    print_sector_header("Spatial", k);
    const SectorContent content = define_sector_content(k, true);
    if (content != SectorContent::defined)
        return content == SectorContent::unknown;
    rt.sectype[k] = 1;
    rt.nevo[k] = 1;
    if (!ask_sector_offset(k))
        return 0;
    define_gradient('X', rt.gx);
    define_gradient('Y', rt.gy);
    define_gradient('Z', rt.gz);
    return ps_write_spatial_sector_waveform_file(k) && ask_sector_note(k);
}

} // namespace kor
