#include "kormodel/runtime_comparison.h"

#include "kormodel/activation.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace kor {

namespace {

/// The caller's message buffer; says what differs and returns 0.
struct Report {
    char* errbuf;
    std::size_t errbufsz;

    int operator()(const char* format, ...) const __attribute__((format(printf, 2, 3))) {
        char difference[KOR_MESSAGE_SIZE];
        va_list values;
        va_start(values, format);
        std::vsnprintf(difference, sizeof difference, format, values);
        va_end(values);
        set_error(errbuf, errbufsz, "legacy-runtime verification failed: %s", difference);
        return 0;
    }
};

int same_spins(const KORSpinSystemDef& held, const KORSpinSystemDef& given, const Report& report) {
    if (held.nspins != given.nspins)
        return report("nspins mismatch (%d vs %d)", held.nspins, given.nspins);
    if (held.coupling_mode != given.coupling_mode)
        return report("coupling_mode mismatch (%d vs %d)", held.coupling_mode, given.coupling_mode);
    for (int i = 1; i <= held.nspins; ++i) {
        if (held.spin_quantum_numbers[i] != given.spin_quantum_numbers[i])
            return report("spin_quantum_numbers[%d] mismatch", i);
        if (held.relative_intensities[i] != given.relative_intensities[i])
            return report("relative_intensities[%d] mismatch", i);
        if (held.resonance_offsets_hz[i] != given.resonance_offsets_hz[i])
            return report("resonance_offsets_hz[%d] mismatch", i);
        for (int j = 1; j <= held.nspins; ++j)
            if (held.j_hz[i][j] != given.j_hz[i][j])
                return report("j_hz[%d][%d] mismatch", i, j);
    }
    return 1;
}

int same_sector(const KORPulseSectorDef& held, const KORPulseSectorDef& given, int k, const Report& report) {
    if (held.sector_type != given.sector_type)
        return report("sector_type mismatch in sector %d", k);
    if (held.number_of_timepoints != given.number_of_timepoints)
        return report("sector_timepoints mismatch in sector %d", k);
    if (held.number_of_evolpoints != given.number_of_evolpoints)
        return report("sector_evolpoints mismatch in sector %d", k);
    if (held.total_duration_s != given.total_duration_s)
        return report("sector_duration_s mismatch in sector %d", k);
    if (held.offset_frequency_hz != given.offset_frequency_hz)
        return report("sector_statoff_hz mismatch in sector %d", k);
    if (std::strcmp(held.pulse_filename, given.pulse_filename) != 0)
        return report("sector_pulsefile mismatch in sector %d", k);
    if (std::strcmp(held.remark, given.remark) != 0)
        return report("sector_remark mismatch in sector %d", k);
    return 1;
}

int same_sequence(const KORPulseSequenceDef& held, const KORPulseSequenceDef& given, const Report& report) {
    if (held.sequence_type != given.sequence_type)
        return report("sequence_type mismatch (%d vs %d)", held.sequence_type, given.sequence_type);
    if (held.sector_count != given.sector_count)
        return report("sector_count mismatch (%d vs %d)", held.sector_count, given.sector_count);
    for (int k = 1; k <= held.sector_count; ++k)
        if (!same_sector(held.sectors[k], given.sectors[k], k, report))
            return 0;
    return 1;
}

int same_run_config(const KORRunConfig& held, const KORRunConfig& given, const Report& report) {
    if (held.ndx != given.ndx || held.ndy != given.ndy || held.ndz != given.ndz)
        return report("grid dimension mismatch");
    if (held.x0_cm != given.x0_cm || held.y0_cm != given.y0_cm || held.z0_cm != given.z0_cm ||
        held.dx_cm != given.dx_cm || held.dy_cm != given.dy_cm || held.dz_cm != given.dz_cm)
        return report("grid coordinate mismatch");
    if (std::strcmp(held.result_filename, given.result_filename) != 0)
        return report("result_filename mismatch");
    return 1;
}

} // namespace

int kor_runtime_matches_model_def(const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                                  const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz) {
    KORSpinSystemDef held_spin;
    KORPulseSequenceDef held_seq;
    KORRunConfig held_cfg;
    if (KORModel_CaptureFromLegacyGlobals(&held_spin, &held_seq, &held_cfg, errbuf, errbufsz) != KOR_MODEL_OK)
        return 0;
    const Report report{errbuf, errbufsz};
    return same_spins(held_spin, *spin, report) && same_sequence(held_seq, *seq, report) &&
           same_run_config(held_cfg, *cfg, report);
}

} // namespace kor
