// The acquisition marker of a sector's remark, and what follows from it.
#include "kor/sequence_driver.h"

#include "four3.h"
#include "kor/runtime_state.h"
#include "sequencetypes.h"

#include <cstddef>

namespace kor {

namespace {

/// ASCII only: a remark in another script must not change its meaning with the locale.
char fold(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool begins_with_ci(const char* text, const char* needle) {
    for (; *needle; ++text, ++needle) {
        if (fold(*text) != fold(*needle)) {
            return false;
        }
    }
    return true;
}

} // namespace

int kor_text_contains_ci(const char* text, const char* needle) {
    if (!text || !needle) {
        return 0;
    }
    do {
        if (begins_with_ci(text, needle)) {
            return 1;
        }
    } while (*text++);
    return 0;
}

int kor_is_acquisition_remark(const char* remark) {
    return kor_text_contains_ci(remark, "adc") || kor_text_contains_ci(remark, "acquisition");
}

int kor_is_power_of_two_int(int v) {
    return v >= 1 && is_power_of_two(static_cast<std::size_t>(v)) ? 1 : 0;
}

int kor_current_sequence_is_pulse_acquire_fid() {
    const RuntimeState& s = g_runtime;
    const bool two_plain_sectors =
        s.nos == 2 && s.sectype[1] == NMR_SECTOR_NORMAL && s.sectype[2] == NMR_SECTOR_NORMAL;
    return two_plain_sectors && !kor_is_acquisition_remark(s.remarks[1]) &&
           kor_is_acquisition_remark(s.remarks[2]);
}

} // namespace kor
