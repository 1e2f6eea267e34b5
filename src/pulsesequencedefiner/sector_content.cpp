#include "pulsesequencedefiner/sector_content.h"

#include "consoleutil.h"
#include "kor/runtime_state.h"
#include "pulsesequencedefiner/prompts.h"
#include "pulsesequencedefiner/sector_waveforms.h"
#include "rfpulselib/dialogues.h"
#include "rfpulselib/shapes.h"

#include <algorithm>
#include <cstdio>

namespace kor {

namespace {

enum Content { HARD_PULSE = 1, AM_PULSE, GENERAL_PULSE, PULSE_FROM_DISK, WAITING_TIME };
constexpr double hard_pulse_step = 1e-5; // s

int ask_content(int* content) {
    std::puts("    1. Hard pulse\n"
              "       (90 x, 90 y, 90 -x, 90 -y, 180 x, 180 y, 180 -x, 180 -y)\n"
              "    2. Amplitude-modulated RF pulse   : Hp(t) = f(t) * Ix\n"
              "    3. General RF pulse               : Hp(t) = f(t) * Ix + g(t) * Iy\n"
              "    4. Read RF pulse from disk        : (Bx, By)\n"
              "    5. Waiting time / free precession");
    return read_int_prompt("Your choice [1..5] : ", content);
}

/// A prompt in ms, stored in s.
int ask_milliseconds(const char* prompt, double* seconds) {
    double ms = 0.0;
    if (!read_double_prompt(prompt, &ms))
        return 0;
    *seconds = ms / 1000.0;
    return 1;
}

/// Time grid of a shaped pulse. Without the warning the count is still kept within the arrays: a receiver
/// sector may sample more often than a waveform file holds, and its waveform is never played.
int ask_time_grid(int k, bool warn) {
    RuntimeState& rt = g_runtime;
    if (!read_int_prompt("Number of time intervals : ", &rt.noti[k]) ||
        !ask_milliseconds("Total sector duration [ms] : ", &rt.sectdur[k]))
        return 0;
    rt.ap = rt.noti[k];
    if (warn)
        clamp_ap(&rt.ap);
    rt.ap = std::clamp(rt.ap, 0, KOR_MAX_RF_POINTS);
    rt.ti = rt.ap > 0 ? rt.sectdur[k] / rt.ap : 0.0;
    return 1;
}

/// Without a usable answer there is no pulse; that is told, unless nobody is left to read it.
void tell_whether_a_pulse_was_defined(bool defined) {
    if (!defined && (!console_at_end() || console_resume_after_end()))
        std::puts("No RF pulse was defined: this sector has no RF.");
}

void set_one_point() {
    g_runtime.ap = 1;
    g_runtime.ti = hard_pulse_step;
}

int define_hard_pulse(int k) {
    RuntimeState& rt = g_runtime;
    set_one_point();
    tell_whether_a_pulse_was_defined(AMHardPulseDefinition(&rt.ap, &rt.ti, rt.xb, rt.yb));
    rt.noti[k] = 1;
    rt.sectdur[k] = hard_pulse_step;
    return 1;
}

int define_waiting_time(int k) {
    set_one_point();
    if (!ask_milliseconds("Waiting time [ms] : ", &g_runtime.sectdur[k]))
        return 0;
    g_runtime.noti[k] = 1;
    return 1;
}

int define_shaped_pulse(int k, int content, bool warn) {
    RuntimeState& rt = g_runtime;
    if (!ask_time_grid(k, warn))
        return 0;
    bool defined = false;
    if (content == AM_PULSE) {
        defined = AMPulseDefinition(&rt.ap, &rt.ti, rt.xb, rt.yb);
    } else if (content == GENERAL_PULSE) {
        defined = FMPulseDefinition(&rt.ap, &rt.ti, rt.xb, rt.yb);
    } else {
        const PulseFromDisk pulse = ReadBxByPulse(&rt.ap, rt.xb, rt.yb);
        if (pulse == PulseFromDisk::input_ended)
            return 0;
        defined = pulse == PulseFromDisk::defined;
    }
    tell_whether_a_pulse_was_defined(defined);
    return 1;
}

} // namespace

SectorContent define_sector_content(int k, bool warn) {
    int content = 0;
    if (!ask_content(&content))
        return SectorContent::input_ended;
    clear_sector_waveform();
    int answered = 0;
    if (content == HARD_PULSE) {
        answered = define_hard_pulse(k);
    } else if (content == WAITING_TIME) {
        answered = define_waiting_time(k);
    } else if (content >= AM_PULSE && content <= PULSE_FROM_DISK) {
        answered = define_shaped_pulse(k, content, warn);
    } else {
        std::puts("Unknown sector type.");
        return SectorContent::unknown;
    }
    return answered ? SectorContent::defined : SectorContent::input_ended;
}

} // namespace kor
