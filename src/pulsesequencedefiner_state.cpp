#include "pulsesequencedefiner_state.h"

#include "kor/runtime_state.h"

#include <algorithm>
#include <cstdio>

namespace kor {

namespace {

void empty_sector(int k) {
    RuntimeState& rt = g_runtime;
    rt.sectype[k] = 0;
    rt.noti[k] = 0;
    rt.nevo[k] = 1;
    rt.sectdur[k] = 0.0;
    rt.statoff[k] = 0.0;
    rt.fnames[k][0] = '\0';
    rt.remarks[k][0] = '\0';
}

void empty_sequence() {
    for (int k = 1; k <= KOR_MAX_SECTORS; ++k)
        empty_sector(k);
    g_runtime.nevo[0] = 1;
    g_runtime.nos = 0;
    g_runtime.sectorset = 0;
}

void name_default_result_file() {
    std::snprintf(g_runtime.resultflnm, sizeof g_runtime.resultflnm, "result.bin");
}

/// The flags and the family with which an editor of that family opens.
void enter_family(int family) {
    RuntimeState& rt = g_runtime;
    rt.sequencetype = family;
    rt.systemset = rt.Nspins > 0;
    rt.sectorset = rt.nos > 0;
    rt.offsetset = family == FAMILY_SPATIAL && spatial_grid_has_points();
}

} // namespace

const char* sequence_family_label(int family) {
    if (family == FAMILY_SPATIAL)
        return "spatially resolved";
    if (family == FAMILY_NMR)
        return "1D or 2D NMR";
    return "unknown";
}

int ps_spatial_sector_is_defined(int k) {
    const RuntimeState& rt = g_runtime;
    if (k < 1 || k > KOR_MAX_SECTORS)
        return 0;
    const char* remark = rt.remarks[k];
    return rt.noti[k] >= 1 || rt.sectdur[k] > 0.0 || rt.fnames[k][0] != '\0' ||
           (remark[0] != '\0' && remark[0] != ' ');
}

int first_undefined_sector() {
    int k = 1;
    while (k < KOR_MAX_SECTORS && ps_spatial_sector_is_defined(k))
        ++k;
    return k;
}

int inherited_evolution_steps(int k) {
    int before = k - 1;
    while (before > 0 && !ps_spatial_sector_is_defined(before))
        --before;
    return before > 0 ? g_runtime.nevo[before] : 1;
}

int spatial_grid_has_points() {
    return g_runtime.ndx > 0 && g_runtime.ndy > 0 && g_runtime.ndz > 0;
}

void ps_build_default_waveform_leaf(char* out, std::size_t size, const char* model_short_name, int is_2d,
                                    int k) {
    if (model_short_name && *model_short_name)
        std::snprintf(out, size, is_2d ? "%s_2d_s%02d.bin" : "%s_s%02d.bin", model_short_name, k);
    else
        std::snprintf(out, size, is_2d ? "sector2d-%02d.bin" : "sector-%02d.bin", k);
}

void Initialize() {
    RuntimeState& rt = g_runtime;
    empty_sequence();
    rt.systemset = 0;
    rt.offsetset = 0;
    rt.Nspins = 0;
    rt.ndx = rt.ndy = rt.ndz = 1;
    name_default_result_file();
}

int sequence_can_continue_as(int family) {
    const RuntimeState& rt = g_runtime;
    return rt.sequencetype == 0 || rt.sequencetype == family || rt.nos < 1;
}

void continue_sequence_as(int family) {
    enter_family(family);
}

void begin_new_sequence(int family) {
    if (g_runtime.Nspins < 1)
        Initialize();
    empty_sequence();
    enter_family(family);
    if (g_runtime.resultflnm[0] == '\0')
        name_default_result_file();
}

void count_edited_sector(int k) {
    g_runtime.sectorset = 1;
    g_runtime.nos = std::max(g_runtime.nos, k);
}

} // namespace kor
