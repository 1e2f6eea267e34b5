#include "kor/sequence_status.h"

#include "kor/runtime_state.h"
#include "sequencetypes.h"

#include <cmath>
#include <cstddef>
#include <cstdio>

namespace kor {

namespace {

template <std::size_t count> const char* label_of(const char* const (&labels)[count], int type) {
    return type >= 0 && type < static_cast<int>(count) ? labels[type] : "<unknown>";
}

const char* NmrSectorTypeLabel(int type) {
    static const char* const labels[] = {"<unset>", "normal sector", "evolution sector"};
    return label_of(labels, type);
}

/// A label, and behind it the number that it stands for when there is one.
void print_label(const char* title, const char* label, int type) {
    std::printf("  %s: %s", title, label);
    if (type > 0) {
        std::printf(" (%d)", type);
    }
    std::puts("");
}

bool sector_is_complete(int k) {
    const RuntimeState& s = g_runtime;
    if (s.noti[k] < 1 || !s.fnames[k][0]) {
        return false;
    }
    if (s.sequencetype == FAMILY_SPATIAL) {
        return !std::isnan(s.statoff[k]);
    }
    if (s.sequencetype == FAMILY_NMR) {
        const bool known = s.sectype[k] == NMR_SECTOR_NORMAL || s.sectype[k] == NMR_SECTOR_EVOLUTION;
        return known && s.nevo[k] >= 1;
    }
    return true;
}

/// The first sector that lacks something, or 0.
int first_incomplete_sector() {
    for (int k = 1; k <= g_runtime.nos; ++k) {
        if (!sector_is_complete(k)) {
            return k;
        }
    }
    return 0;
}

/// What a run lacks once spins, family and sectors are there, or nullptr.
const char* what_the_family_lacks() {
    const RuntimeState& s = g_runtime;
    if (s.sequencetype == FAMILY_NMR) {
        return nullptr;
    }
    if (s.sequencetype != FAMILY_SPATIAL) {
        return "unknown sequence family";
    }
    const bool grid = s.ndx > 0 && s.ndy > 0 && s.ndz > 0 && s.offsetset;
    return grid ? nullptr : "spatial grid missing";
}

void print_verdict(const char* missing) {
    if (missing) {
        std::printf("  run status       : incomplete (%s)\n", missing);
    } else {
        std::puts("  run status       : ready");
    }
}

void print_run_status() {
    const RuntimeState& s = g_runtime;
    if (s.Nspins < 1 || !s.systemset) {
        print_verdict("spin system missing");
    } else if (s.sequencetype <= 0) {
        print_verdict("sequence family not selected");
    } else if (s.nos < 1 || !s.sectorset) {
        print_verdict("sequence sectors missing");
    } else if (const int k = first_incomplete_sector()) {
        std::printf("  run status       : incomplete (sector %d is incomplete)\n", k);
    } else {
        print_verdict(what_the_family_lacks());
    }
}

} // namespace

const char* SequenceTypeLabel(int type) {
    static const char* const labels[] = {"<unset>", "spatial resolved", "1D/2D NMR"};
    return label_of(labels, type);
}

const char* SectorTypeLabel(int type) {
    static const char* const labels[] = {"<unset>",
                                         "hard pulse",
                                         "AM pulse",
                                         "FM / adiabatic pulse",
                                         "pulse file Bx/By",
                                         "pulse file Bx/Bz",
                                         "waiting time / free precession"};
    return label_of(labels, type);
}

void PrintModelSizeLines() {
    const RuntimeState& s = g_runtime;
    std::printf("  Nspins           : %d\n", s.Nspins);
    print_label("sequence family  ", SequenceTypeLabel(s.sequencetype), s.sequencetype);
    std::printf("  sequence sectors : %d\n", s.nos);
}

void PrintNonInteractiveStatus() {
    const RuntimeState& s = g_runtime;
    std::puts("Current model state:");
    PrintModelSizeLines();
    if (s.nos >= 1) {
        const int type = s.sectype[1];
        print_label("first sector     ",
                    s.sequencetype == FAMILY_NMR ? NmrSectorTypeLabel(type) : SectorTypeLabel(type), type);
    }
    std::printf("  result file      : %s\n", s.resultflnm[0] ? s.resultflnm : "<unset>");
    print_run_status();
    if (s.Nspins < 1) {
        std::puts("  spin system      : <none prepared>");
    }
    if (s.nos < 1) {
        std::puts("  pulse sequence   : <none prepared>");
    }
    std::puts("");
}

} // namespace kor
