#include "korcurrentmodel/model_summary.h"

#include "kor/runtime_state.h"
#include "kor/sequence_status.h"
#include "korcurrentmodel/loaded_model.h"
#include "kormodel/paths.h"
#include "sequencetypes.h"

#include <cstdio>

namespace kor {

namespace {

const char* or_unset(const char* text) {
    return text[0] ? text : "<unset>";
}

void print_values(const char* title, const double* values, int count) {
    std::printf("  %s:", title);
    for (int i = 1; i <= count; ++i)
        std::printf(" %.15g", values[i]);
    std::puts("");
}

void print_spin_record(const KORSpinSystemDef& spin) {
    std::printf("[KOR] Spin system:\n  nspins = %d\n  spin quantum numbers:", spin.nspins);
    for (int i = 1; i <= spin.nspins; ++i)
        std::printf(" %d", spin.spin_quantum_numbers[i]);
    std::puts("");
    print_values("relative intensities", spin.relative_intensities, spin.nspins);
    print_values("resonance offsets [Hz]", spin.resonance_offsets_hz, spin.nspins);
    std::printf("  coupling mode = %d\n", spin.coupling_mode);
}

void print_sequence_record(const KORPulseSequenceDef& seq) {
    std::printf("[KOR] Sequence:\n  sequence type = %d\n  number of sectors = %d\n", seq.sequence_type,
                seq.sector_count);
    for (int k = 1; k <= seq.sector_count; ++k) {
        const KORPulseSectorDef& s = seq.sectors[k];
        std::printf(
            "    sector %d: type=%d timepoints=%d evolpoints=%d duration=%.15g pulsefile=%s statoff=%.15g "
            "remark=%s\n",
            k, s.sector_type, s.number_of_timepoints, s.number_of_evolpoints, s.total_duration_s,
            s.pulse_filename, s.offset_frequency_hz, s.remark);
    }
}

void print_run_record(const KORRunConfig& cfg) {
    std::printf("[KOR] Grid/run config:\n  ndx=%d ndy=%d ndz=%d\n", cfg.ndx, cfg.ndy, cfg.ndz);
    std::printf("  origin [cm] = (%.15g, %.15g, %.15g)\n", cfg.x0_cm, cfg.y0_cm, cfg.z0_cm);
    std::printf("  delta  [cm] = (%.15g, %.15g, %.15g)\n", cfg.dx_cm, cfg.dy_cm, cfg.dz_cm);
    std::printf("  result file = %s\n", cfg.result_filename);
}

void print_result_file() {
    std::printf("  result file      : %s\n", or_unset(g_runtime.resultflnm));
}

void print_number(int value) {
    std::printf("%d", value);
}
void print_number(double value) {
    std::printf("%.12g", value);
}

/// A title and the values of all spins in one line, separated by single blanks.
template <typename T> void print_per_spin(const char* title, const T* values) {
    std::printf("  %s : ", title);
    for (int i = 1; i <= g_runtime.Nspins; ++i) {
        if (i > 1)
            std::printf(" ");
        print_number(values[i]);
    }
    std::puts(g_runtime.Nspins < 1 ? "<none>" : "");
}

void print_couplings() {
    if (g_runtime.Nspins < 2) {
        std::puts("  coupling mode    : no couplings");
        return;
    }
    std::printf("  coupling mode    : %d\n", g_runtime.Jexact);
    for (int j = 1; j <= g_runtime.Jcount; ++j)
        std::printf("  J-coupling %d    : %.12g Hz\n", j, g_runtime.couplings[j]);
}

void print_spin_system() {
    std::printf("Spin system:\n  Hilbert size n   : %d\n", g_runtime.n);
    print_per_spin("spin quantum numbers", g_runtime.quantnum);
    print_per_spin("relative intensities", g_runtime.relspinamp);
    print_per_spin("resonance offsets [Hz]", g_runtime.resofreqs);
    print_couplings();
    std::puts("");
}

void print_spatial_grid() {
    const RuntimeState& s = g_runtime;
    std::puts("Spatial grid:");
    std::printf("  ndx              : %d\n  ndy              : %d\n  ndz              : %d\n", s.ndx, s.ndy,
                s.ndz);
    std::printf("  x0 [cm]          : %.12g\n  dx [cm]          : %.12g\n", s.x0, s.dx);
    std::printf("  y0 [cm]          : %.12g\n  dy [cm]          : %.12g\n", s.y0, s.dy);
    std::printf("  z0 [cm]          : %.12g\n  dz [cm]          : %.12g\n\n", s.z0, s.dz);
}

void print_sequence_overview() {
    const RuntimeState& s = g_runtime;
    std::puts("Sequence overview:");
    for (int k = 1; k <= s.nos; ++k)
        std::printf("  sector %d : timepoints=%d  duration=%.12g s  file=%s\n", k, s.noti[k], s.sectdur[k],
                    or_unset(s.fnames[k]));
    if (s.nos <= 0)
        std::puts("  <no sectors defined>");
    std::puts("");
}

} // namespace

void print_model_summary(const char* path, const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                         const KORRunConfig* cfg) {
    std::printf("\n[KOR] Loaded model: %s\n", path);
    print_spin_record(*spin);
    print_sequence_record(*seq);
    print_run_record(*cfg);
}

void warn_of_relative_result(const KORRunConfig& cfg) {
    if (cfg.result_filename[0] == '\0' || kor_path_is_absolute(cfg.result_filename))
        return;
    std::fprintf(
        stderr,
        "[KOR] Warning: there is no folder runtime/results beside the program; the result file %s is "
        "taken relative to the working folder.\n",
        cfg.result_filename);
}

void PrintPrepareStatus() {
    std::puts("Current model state:");
    PrintModelSizeLines();
    print_result_file();
    if (g_runtime.Nspins < 1)
        std::puts("  spin system      : <none prepared>");
    if (g_runtime.nos < 1)
        std::puts("  pulse sequence   : <none prepared>");
    std::puts("");
}

void PrintCurrentModelSummary() {
    std::puts("========================================\n"
              " Current Model Summary\n"
              "========================================\n");
    KORPrintCurrentModelFileHint();
    std::puts("\nModel state:");
    PrintModelSizeLines();
    print_result_file();
    std::puts("");
    print_spin_system();
    if (g_runtime.sequencetype == FAMILY_SPATIAL)
        print_spatial_grid();
    print_sequence_overview();
}

} // namespace kor
