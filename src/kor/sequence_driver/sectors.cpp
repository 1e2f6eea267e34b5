#include "sectors.h"

#include "kor/density_file.h"
#include "kor/runtime_state.h"
#include "kor/sequence_driver.h"
#include "kor/smoke_check_mode.h"
#include "kor/spin_system.h"
#include "rfwaveformfile.h"

#include <cstdarg>
#include <cstdio>

namespace kor {

namespace {

constexpr int kPulseDefined = 1;

} // namespace

void inform(const char* format, ...) {
    if (KOR_GetSmokeCheckMode()) {
        return;
    }
    std::va_list values;
    va_start(values, format);
    std::vprintf(format, values);
    va_end(values);
}

bool start_sequence_run() {
    g_runtime.calc = 0;
    g_runtime.pulseflag = kPulseDefined;
    BuildSpinSystemFromPulseSequenceGlobals();
    return g_runtime.spinsystemdefined;
}

void select_sector(int k) {
    RuntimeState& s = g_runtime;
    s.ap = s.noti[k];
    s.pt = s.sectdur[k];
    s.h = s.ap > 0 ? s.pt / s.ap : 0.0;
    s.ti = s.h;
    s.statoff_s = 2.0 * KOR_PI * s.statoff[k];
}

void report_unreadable_pulse_file(int k) {
    std::printf("Error reading pulse file %s\n", g_runtime.fnames[k]);
}

void publish_density_file(const char* label) {
    const char* result = g_runtime.resultflnm;
    const char* culprit = result;
    if (copy_density_file("dm.bin", result, &culprit)) {
        inform("Copied %s result to %s\n", label, result);
    } else {
        explain_failed_copy(culprit);
        std::printf("Failed to copy %s result to %s\n", label, result);
    }
}

int LoadSpatialSectorPulseFile(const char* path, int N) {
    RuntimeState& s = g_runtime;
    double* const arrays[] = {s.xb, s.yb, s.gx, s.gy, s.gz};
    return read_waveform_blocks(path, N, 5, arrays);
}

int Load2DSectorPulseFile(const char* path, int N) {
    double* const arrays[] = {g_runtime.xb, g_runtime.yb};
    return read_waveform_blocks(path, N, 2, arrays);
}

void AccumulateCMat(int n, CMatrix& acc, const CMatrix& add) {
    CMatAdd(n, acc, add, acc);
}

} // namespace kor
