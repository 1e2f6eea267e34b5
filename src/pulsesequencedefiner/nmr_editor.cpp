#include "pulsesequencedefiner/nmr_editor.h"

#include "consoleutil.h"
#include "kor/runtime_state.h"
#include "korcurrentmodel/import_export.h"
#include "pulsesequencedefiner/editor_actions.h"
#include "pulsesequencedefiner/model_report.h"
#include "pulsesequencedefiner/prompts.h"
#include "pulsesequencedefiner/sector_content.h"
#include "pulsesequencedefiner/sector_waveforms.h"
#include "pulsesequencedefiner/spin_prompts.h"
#include "pulsesequencedefiner_state.h"

#include <cstdio>

namespace kor {

namespace {

enum Action { SECTOR = 1, SPIN_SYSTEM, RESULT_FILE, SAVE, BACK };
enum SectorType { NORMAL = 1, EVOLUTION };

/// What the dialogue of one sector came to.
enum class Outcome { defined, refused, input_ended };

Outcome define_evolution_sector(int k) {
    RuntimeState& rt = g_runtime;
    if (inherited_evolution_steps(k) != 1) {
        std::printf("A 3D experiment is not allowed.\n"
                    "Press <enter> to continue");
        console_wait_for_enter();
        return Outcome::refused;
    }
    rt.sectype[k] = EVOLUTION;
    double ms = 0.0;
    if (!read_double_prompt("Basic evolution-sector time [ms] : ", &ms))
        return Outcome::input_ended;
    rt.sectdur[k] = ms / 1000.0;
    rt.noti[k] = 1;
    if (!read_int_prompt("Number of evolution steps        : ", &rt.nevo[k]))
        return Outcome::input_ended;
    rt.ap = 1;
    clear_sector_waveform();
    return Outcome::defined;
}

Outcome define_normal_sector(int k) {
    RuntimeState& rt = g_runtime;
    switch (define_sector_content(k, false)) {
    case SectorContent::input_ended:
        return Outcome::input_ended;
    case SectorContent::unknown:
        return Outcome::refused;
    case SectorContent::defined:
        break;
    }
    rt.sectype[k] = NORMAL;
    rt.nevo[k] = inherited_evolution_steps(k);
    return Outcome::defined;
}

Outcome define_sector_of_type(int k, int type) {
    if (type == NORMAL)
        return define_normal_sector(k);
    if (type == EVOLUTION)
        return define_evolution_sector(k);
    std::puts("Unknown sector type.");
    return Outcome::refused;
}

void print_editor_menu() {
    std::printf("    1. Define / edit a sequence sector\n"
                "    2. Define / redefine spin system\n"
                "    3. Define result file name\n"
                "    4. Save current model now (.kormodel)\n"
                "    5. Return to previous menu\n"
                "\n");
}

/// 1; 0 when the input ended during the action, which is then left.
int act_on(int choice) {
    switch (choice) {
    case SECTOR:
        return define_chosen_sector(Define2DSeqSector);
    case SPIN_SYSTEM:
        return define_spin_system_params();
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

void Edit2DPulseSequence() {
    g_runtime.nevo[0] = 1;
    for (;;) {
        int choice = 0;
        print_model_state(FAMILY_NMR);
        print_next_step(FAMILY_NMR);
        print_sector_overview(FAMILY_NMR);
        print_editor_menu();
        if (!read_int_prompt("Your choice is [1..5] : ", &choice) || choice == BACK)
            return;
        if (!act_on(choice) && !console_resume_after_end())
            return;
    }
}

int Define2DSeqSector(int k) {
    int type = 0;
    print_sector_header("1D / 2D", k);
    std::printf("    1. Normal sector\n"
                "    2. Evolution sector\n");
    if (!read_int_prompt("Your choice [1,2] : ", &type))
        return 0;
    const Outcome outcome = define_sector_of_type(k, type);
    if (outcome != Outcome::defined)
        return outcome == Outcome::refused;
    return ps_write_2d_sector_waveform_file(k) && ask_sector_offset(k) && ask_sector_note(k);
}

} // namespace kor
