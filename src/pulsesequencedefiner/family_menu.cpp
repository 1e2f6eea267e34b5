#include "pulsesequencedefiner/family_menu.h"

#include "kor/runtime_state.h"
#include "korplatform.h"
#include "pulsesequencedefiner/nmr_editor.h"
#include "pulsesequencedefiner/prompts.h"
#include "pulsesequencedefiner/spatial_editor.h"
#include "pulsesequencedefiner_state.h"

#include <cstdio>

namespace kor {

namespace {

constexpr int BACK = 3;
enum FamilyAction { CONTINUE = 1, START_NEW, CHOOSE_ANOTHER };

/// How a round of the menu ended. After a message the menu is printed below it, without clearing.
enum class Round { finished, message_shown, input_ended };

void print_banner_and_status() {
    std::printf("*****************************************************\n"
                "*** Prepare / Edit Current Pulse Sequence         ***\n"
                "***              current model workflow           ***\n"
                "*****************************************************\n"
                "\n");
    if (g_runtime.Nspins < 1) {
        std::puts("No spin system is currently prepared.");
        return;
    }
    std::puts("Current loaded/prepared spin system:");
    std::printf("  Nspins = %d\n", g_runtime.Nspins);
    std::printf("  Current sequence sectors = %d\n", g_runtime.nos);
}

void print_grid_status() {
    const RuntimeState& rt = g_runtime;
    if (!spatial_grid_has_points()) {
        std::puts("Current spatial grid: <not explicitly defined yet>");
        std::puts("  Note: the spatial editor will clamp the grid to at least 1 x 1 x 1.");
        return;
    }
    std::printf("Current spatial grid: ndx=%d  ndy=%d  ndz=%d\n", rt.ndx, rt.ndy, rt.ndz);
    std::printf("  origin [cm] : (%.15g, %.15g, %.15g)\n", rt.x0, rt.y0, rt.z0);
    std::printf("  delta  [cm] : (%.15g, %.15g, %.15g)\n", rt.dx, rt.dy, rt.dz);
}

int ask_family(int* family) {
    std::printf("\n"
                "Choose the sequence family first.\n"
                "\n"
                "    1. Spatially resolved pulse sequence\n"
                "    2. 1D or 2D NMR pulse sequence\n"
                "    3. Back\n"
                "\n");
    return read_int_prompt("Your choice [1..3] : ", family);
}

int ask_family_action(int family, int* action) {
    const char* label = sequence_family_label(family);
    std::printf("\nSelected sequence family: %s pulse sequence\n\n", label);
    if (family == FAMILY_SPATIAL)
        print_grid_status();
    else
        std::puts("This family does not use the spatial simulation domain.");
    std::printf("\n"
                "    1. Continue editing the current %s sequence\n"
                "    2. Start a new %s sequence\n"
                "    3. Choose another sequence family\n"
                "\n",
                label, label);
    return read_int_prompt("Your choice [1..3] : ", action);
}

Round open_editor(int family) {
    if (family == FAMILY_SPATIAL)
        EditPulseSequence();
    else
        Edit2DPulseSequence();
    return Round::finished;
}

Round load_and_edit_sequence_of_type(int family) {
    if (!sequence_can_continue_as(family)) {
        std::puts("A different sequence family is already prepared in memory.");
        std::printf("Start a new %s sequence instead.\n", sequence_family_label(family));
        return Round::message_shown;
    }
    continue_sequence_as(family);
    return open_editor(family);
}

Round create_new_sequence_of_type(int family) {
    begin_new_sequence(family);
    return open_editor(family);
}

Round unknown_choice() {
    std::puts("Unknown choice.");
    return Round::message_shown;
}

Round enter_family(int family) {
    int action = 0;
    if (!ask_family_action(family, &action))
        return Round::input_ended;
    switch (action) {
    case CONTINUE:
        return load_and_edit_sequence_of_type(family);
    case START_NEW:
        return create_new_sequence_of_type(family);
    case CHOOSE_ANOTHER:
        return Round::finished;
    default:
        return unknown_choice();
    }
}

} // namespace

void ComposePulseSequence() {
    Round last = Round::finished;
    while (last != Round::input_ended) {
        int family = 0;
        if (last == Round::message_shown)
            std::puts("");
        else
            platform_clear_console();
        print_banner_and_status();
        if (!ask_family(&family) || family == BACK)
            return;
        if (family == FAMILY_SPATIAL || family == FAMILY_NMR)
            last = enter_family(family);
        else
            last = unknown_choice();
    }
}

} // namespace kor
