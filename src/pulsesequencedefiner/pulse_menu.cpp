#include "pulsesequencedefiner/pulse_menu.h"

#include "consoleutil.h"
#include "kor/runtime_state.h"
#include "kordatafileio.h"
#include "pulsesequencedefiner/sector_waveforms.h"
#include "pulsesequencedefiner/spatial_editor.h"
#include "rfpulselib/dialogues.h"
#include "rfpulselib/shapes.h"
#include "rfpulselib/start_pulse.h"

#include <algorithm>
#include <cstdio>

namespace kor {

namespace {

enum PulseChoice { HARD_PULSE = 1, AM_PULSE, FM_PULSE, PULSE_FROM_DISK, START_PULSE, SEQUENCE };
constexpr int PULSE_DEFINED = 1; // pulseflag

void mark_pulse_defined() {
    g_runtime.rfpulsedefined = 1;
    g_runtime.pulseflag = PULSE_DEFINED;
}

void define_pulse(int choice) {
    RuntimeState& rt = g_runtime;
    clamp_ap(&rt.ap);
    if (choice == HARD_PULSE)
        AMHardPulseDefinition(&rt.ap, &rt.ti, rt.xb, rt.yb);
    else if (choice == AM_PULSE)
        AMPulseDefinition(&rt.ap, &rt.ti, rt.xb, rt.yb);
    else if (choice == FM_PULSE)
        FMPulseDefinition(&rt.ap, &rt.ti, rt.xb, rt.yb);
    else if (ReadBxByPulse(&rt.ap, rt.xb, rt.yb) == PulseFromDisk::input_ended)
        return;
    rt.h = rt.ap < 1 ? 0.0 : rt.ti / rt.ap;
    mark_pulse_defined();
}

void define_start_pulse() {
    RuntimeState& rt = g_runtime;
    if (!GenerateOptimizationStartPulse(&rt.ap, &rt.h, rt.xb, rt.yb, rt.npar)) {
        std::puts("Optimization start pulse was not generated.");
        return;
    }
    rt.ti = rt.h * rt.ap;
    mark_pulse_defined();
}

} // namespace

void RedefinePulseHamiltonian() {
    std::printf("Pulse definition:\n"
                "  1. AM hard pulse\n"
                "  2. AM pulse\n"
                "  3. FM pulse\n"
                "  4. Read Bx/By pulse from disk\n"
                "  5. Optimization start RF-pulse (Bx/By waveform)\n"
                "  6. Edit current prepared spatial pulse sequence / sectors\n"
                "  0. Back\n");
    int choice = 0;
    if (!scan_int("Your choice [0..6] : ", &choice))
        return;
    if (choice >= HARD_PULSE && choice <= PULSE_FROM_DISK)
        define_pulse(choice);
    else if (choice == START_PULSE)
        define_start_pulse();
    else if (choice == SEQUENCE)
        EditPulseSequence();
}

void OutputPulse() {
    const RuntimeState& rt = g_runtime;
    if (!rt.rfpulsedefined) {
        std::puts(">>>> NO RF-PULSE DEFINED. <<<<");
        console_wait_for_enter();
        return;
    }
    std::printf("Output pulse arrays (ASCII/SG style):\n"
                "  1. Output Bx(t)\n"
                "  2. Output By(t)\n"
                "  0. Back\n");
    int choice = 0;
    if (!scan_int("Your choice [0..2] : ", &choice))
        return;
    const int samples = std::min(rt.ap, KOR_MAX_RF_POINTS);
    if (choice == 1)
        RealArrayOut(&samples, rt.xb);
    else if (choice == 2)
        RealArrayOut(&samples, rt.yb);
}

} // namespace kor
