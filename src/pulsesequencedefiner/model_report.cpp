#include "pulsesequencedefiner/model_report.h"

#include "kor/runtime_state.h"
#include "korcurrentmodel/loaded_model.h"
#include "pulsesequencedefiner_state.h"

#include <algorithm>
#include <cstdio>

namespace kor {

namespace {

const char* or_unset(const char* text) {
    return text[0] ? text : "<unset>";
}

void print_values(const char* title, const double* values) {
    std::printf("  %-21s :", title);
    for (int s = 1; s <= g_runtime.Nspins; ++s)
        std::printf(" %.3E", values[s]);
    std::puts(g_runtime.Nspins < 1 ? " <none>" : "");
}

void print_quantum_numbers() {
    std::printf("  %-21s :", "quantum numbers (2I)");
    for (int s = 1; s <= g_runtime.Nspins; ++s)
        std::printf(" %d", g_runtime.quantnum[s]);
    std::puts(g_runtime.Nspins < 1 ? " <none>" : "");
}

void print_couplings() {
    const RuntimeState& rt = g_runtime;
    std::printf("  coupling mode         : %d  %s\n", rt.Jexact,
                rt.Jexact == 1 ? "Weak coupling approximation" : "Exact calculation");
    std::printf("  number of couplings   : %d\n", rt.Jcount);
    int pair = 1;
    for (int i = 1; i < rt.Nspins; ++i)
        for (int j = i + 1; j <= rt.Nspins && pair <= rt.Jcount; ++j, ++pair)
            std::printf("  J(%d,%d) [Hz]           : %.3E\n", i, j, rt.couplings[pair]);
}

void print_grid() {
    const RuntimeState& rt = g_runtime;
    std::printf("  spatial grid          : ndx=%d  ndy=%d  ndz=%d\n", rt.ndx, rt.ndy, rt.ndz);
    std::printf("  grid origin [cm]      : (%.15g, %.15g, %.15g)\n", rt.x0, rt.y0, rt.z0);
    std::printf("  grid delta  [cm]      : (%.15g, %.15g, %.15g)\n", rt.dx, rt.dy, rt.dz);
}

/// The sectors 1..last whose being defined is `defined`, joined by ", ".
void print_sector_list(const char* title, int last, bool defined) {
    std::printf("%s", title);
    const char* separator = "";
    for (int k = 1; k <= last; ++k) {
        if ((ps_spatial_sector_is_defined(k) != 0) == defined) {
            std::printf("%s%d", separator, k);
            separator = ", ";
        }
    }
    std::puts(*separator ? "" : "<none>");
}

void print_spatial_sector(int k) {
    const RuntimeState& rt = g_runtime;
    std::printf("Sector %d\n", k);
    std::printf("   time intervals   : %d\n", rt.noti[k]);
    std::printf("   duration [ms]    : %.3E\n", 1000.0 * rt.sectdur[k]);
    std::printf("   RF/gradient file : %s\n", or_unset(rt.fnames[k]));
    std::printf("   offset [Hz]      : %.3E\n", rt.statoff[k]);
    std::printf("   remark           : %s\n", rt.remarks[k]);
}

const char* nmr_sector_type(int type) {
    if (type == 1)
        return "normal sector";
    return type == 2 ? "evolution sector" : "<unknown>";
}

void print_nmr_sector(int k) {
    const RuntimeState& rt = g_runtime;
    std::printf("Sector %d\n", k);
    std::printf("   type             : %d  %s\n", rt.sectype[k], nmr_sector_type(rt.sectype[k]));
    std::printf("   time intervals   : %d\n", rt.noti[k]);
    std::printf("   duration [ms]    : %.3E\n", 1000.0 * rt.sectdur[k]);
    std::printf("   evolution steps  : %d\n", rt.nevo[k]);
    std::printf("   pulse file       : %s\n", or_unset(rt.fnames[k]));
    std::printf("   offset [Hz]      : %.12E\n", rt.statoff[k]);
    std::printf("   remark           : %s\n", rt.remarks[k]);
}

bool any_sector_is_defined() {
    for (int k = 1; k <= KOR_MAX_SECTORS; ++k)
        if (ps_spatial_sector_is_defined(k))
            return true;
    return false;
}

} // namespace

void print_model_state(int family) {
    const RuntimeState& rt = g_runtime;
    std::printf("\n"
                "========================================\n"
                " %s Pulse Sequence Editor\n"
                "========================================\n"
                "\n",
                family == FAMILY_SPATIAL ? "Spatially Resolved" : "1D / 2D");
    KORPrintCurrentModelFileHint();
    std::puts("");
    std::puts("Current model state:");
    std::printf("  number of spins       : %d\n", rt.Nspins);
    print_quantum_numbers();
    print_values("relative intensities", rt.relspinamp);
    print_values("offsets [Hz]", rt.resofreqs);
    print_couplings();
    if (family == FAMILY_SPATIAL)
        print_grid();
    std::puts(family == FAMILY_SPATIAL ? "  sequence family       : spatially resolved (1)"
                                       : "  sequence family       : 1D or 2D NMR (2)");
    std::printf("  sequence sectors      : %d\n", rt.nos);
    std::printf("  result file           : %s\n", or_unset(rt.resultflnm));
    std::puts("  model file format     : .kormodel");
    std::puts("");
}

void print_next_step(int family) {
    const RuntimeState& rt = g_runtime;
    std::puts("Suggested next step:");
    if (rt.Nspins < 1 || !rt.systemset)
        std::puts("Define or review the spin system first.");
    else if (family == FAMILY_SPATIAL && !rt.offsetset)
        std::puts("Define or review the global spatial grid.");
    else if (!any_sector_is_defined())
        std::printf("Define sector %d first.\n", first_undefined_sector());
    else
        std::puts("Define the next sector, save the current model, or run it from the main menu.");
    std::puts("");
}

void print_sector_overview(int family) {
    const int nos = g_runtime.nos;
    std::puts("Sector overview:");
    print_sector_list("Defined sectors : ", KOR_MAX_SECTORS, true);
    if (nos > 0)
        print_sector_list("Missing sectors : ", std::min(nos, KOR_MAX_SECTORS), false);
    std::printf("Next suggested sector number : %d\n", first_undefined_sector());
    for (int k = 1; k <= KOR_MAX_SECTORS; ++k) {
        if (!ps_spatial_sector_is_defined(k))
            continue;
        if (family == FAMILY_SPATIAL)
            print_spatial_sector(k);
        else
            print_nmr_sector(k);
    }
    std::puts("");
}

} // namespace kor
