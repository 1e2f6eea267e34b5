#include "kormodel/activation.h"

#include "kor/runtime_state.h"
#include "kor/spin_system.h"
#include "kormodel/model_file.h"
#include "kormodel/model_rules.h"
#include "kormodel/save.h"
#include "kormodel/text_lines.h"
#include "modelfiles.h"
#include "sequencetypes.h"

#include <cstring>

namespace kor {

namespace {

template <class Array> void clear(Array& array) {
    std::memset(array, 0, sizeof array);
}

void apply_spins(const KORSpinSystemDef& spin) {
    RuntimeState& s = g_runtime;
    s.Nspins = spin.nspins;
    clear(s.Ilist);
    clear(s.quantnum);
    clear(s.relspinamp);
    clear(s.resofreqs);
    s.n = 1;
    for (int i = 1; i <= spin.nspins; ++i) {
        s.Ilist[i] = s.quantnum[i] = spin.spin_quantum_numbers[i];
        s.relspinamp[i] = spin.relative_intensities[i];
        s.resofreqs[i] = spin.resonance_offsets_hz[i];
        s.n *= spin.spin_quantum_numbers[i] + 1;
    }
}

// Every pair is listed, zero couplings included, so that the pair's number depends on nspins alone.
void apply_couplings(const KORSpinSystemDef& spin) {
    RuntimeState& s = g_runtime;
    s.Jexact = spin.coupling_mode;
    clear(s.jc);
    clear(s.couplings);
    s.Jcount = 0;
    for (int i = 1; i <= spin.nspins; ++i)
        for (int j = i + 1; j <= spin.nspins; ++j)
            s.jc[i][j] = s.jc[j][i] = s.couplings[++s.Jcount] = spin.j_hz[i][j];
}

void apply_sequence(const KORPulseSequenceDef& seq) {
    RuntimeState& s = g_runtime;
    s.sequencetype = seq.sequence_type;
    s.nos = seq.sector_count;
    clear(s.sectype);
    clear(s.noti);
    clear(s.nevo);
    clear(s.sectdur);
    clear(s.statoff);
    clear(s.fnames);
    clear(s.remarks);
    for (int k = 1; k <= seq.sector_count; ++k) {
        const KORPulseSectorDef& sector = seq.sectors[k];
        s.sectype[k] = sector.sector_type;
        s.noti[k] = sector.number_of_timepoints;
        s.nevo[k] = sector.number_of_evolpoints;
        s.sectdur[k] = sector.total_duration_s;
        s.statoff[k] = sector.offset_frequency_hz;
        copy_truncated(sector.pulse_filename, s.fnames[k], sizeof s.fnames[k]);
        copy_truncated(sector.remark, s.remarks[k], sizeof s.remarks[k]);
    }
}

void apply_run_config(const KORRunConfig& cfg) {
    RuntimeState& s = g_runtime;
    s.ndx = cfg.ndx;
    s.ndy = cfg.ndy;
    s.ndz = cfg.ndz;
    s.x0 = cfg.x0_cm;
    s.y0 = cfg.y0_cm;
    s.z0 = cfg.z0_cm;
    s.dx = cfg.dx_cm;
    s.dy = cfg.dy_cm;
    s.dz = cfg.dz_cm;
    copy_truncated(cfg.result_filename, s.resultflnm, sizeof s.resultflnm);
}

void capture_spins(KORSpinSystemDef& spin) {
    const RuntimeState& s = g_runtime;
    spin.nspins = s.Nspins;
    spin.coupling_mode = s.Jexact;
    for (int i = 1; i <= s.Nspins; ++i) {
        const bool only_in_list = s.quantnum[i] < 1 && s.Ilist[i] > 0;
        spin.spin_quantum_numbers[i] = only_in_list ? s.Ilist[i] : s.quantnum[i];
        spin.relative_intensities[i] = s.relspinamp[i];
        spin.resonance_offsets_hz[i] = s.resofreqs[i];
    }
}

// The pair list is what the composer's prompts fill; the table may still hold an earlier system.
void capture_couplings(KORSpinSystemDef& spin) {
    const RuntimeState& s = g_runtime;
    int pair = 0;
    for (int i = 1; i <= s.Nspins; ++i)
        for (int j = i + 1; j <= s.Nspins; ++j) {
            ++pair;
            spin.j_hz[i][j] = spin.j_hz[j][i] = pair <= s.Jcount ? s.couplings[pair] : s.jc[i][j];
        }
}

// A spatially resolved sequence knows one sector type and no evolution; the composer leaves both unset.
void repair_spatial_sector(KORPulseSectorDef& sector) {
    if (sector.sector_type == 0)
        sector.sector_type = 1;
    if (sector.number_of_evolpoints < 1)
        sector.number_of_evolpoints = 1;
}

void capture_sequence(KORPulseSequenceDef& seq) {
    const RuntimeState& s = g_runtime;
    seq.sequence_type = s.sequencetype;
    seq.sector_count = s.nos;
    for (int k = 1; k <= s.nos; ++k) {
        KORPulseSectorDef& sector = seq.sectors[k];
        sector.sector_type = s.sectype[k];
        sector.number_of_timepoints = s.noti[k];
        sector.number_of_evolpoints = s.nevo[k];
        sector.total_duration_s = s.sectdur[k];
        sector.offset_frequency_hz = s.statoff[k];
        copy_truncated(s.fnames[k], sector.pulse_filename, sizeof sector.pulse_filename);
        copy_truncated(s.remarks[k], sector.remark, sizeof sector.remark);
        if (s.sequencetype == FAMILY_SPATIAL)
            repair_spatial_sector(sector);
    }
}

void capture_run_config(KORRunConfig& cfg) {
    const RuntimeState& s = g_runtime;
    cfg.ndx = s.ndx;
    cfg.ndy = s.ndy;
    cfg.ndz = s.ndz;
    cfg.x0_cm = s.x0;
    cfg.y0_cm = s.y0;
    cfg.z0_cm = s.z0;
    cfg.dx_cm = s.dx;
    cfg.dy_cm = s.dy;
    cfg.dz_cm = s.dz;
    const char* result = s.resultflnm[0] == '\0' ? "unnamed_result.bin" : s.resultflnm;
    copy_truncated(result, cfg.result_filename, sizeof cfg.result_filename);
}

} // namespace

KORModelStatus KORModel_ActivateInLegacyRuntime(const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                                                const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz) {
    if (!spin || !seq || !cfg) {
        set_error(errbuf, errbufsz, "activate arguments must be non-null");
        return KOR_MODEL_ERR_NULLPTR;
    }
    return KORModel_ApplyToLegacyGlobals(spin, seq, cfg, errbuf, errbufsz);
}

KORModelStatus KORModel_ApplyToLegacyGlobals(const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                                             const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz) {
    if (!spin || !seq || !cfg) {
        set_error(errbuf, errbufsz, "apply arguments must be non-null");
        return KOR_MODEL_ERR_NULLPTR;
    }
    const KORModelStatus status = KORModel_ValidateAll(spin, seq, cfg, errbuf, errbufsz);
    if (status != KOR_MODEL_OK)
        return status;
    apply_spins(*spin);
    apply_couplings(*spin);
    apply_sequence(*seq);
    apply_run_config(*cfg);
    g_runtime.systemset = 1;
    g_runtime.offsetset = 1;
    g_runtime.sectorset = seq->sector_count > 0;
    KOR_RebuildSpinSystemFromPulseSequenceGlobals();
    return KOR_MODEL_OK;
}

KORModelStatus KORModel_CaptureFromLegacyGlobals(KORSpinSystemDef* spin, KORPulseSequenceDef* seq,
                                                 KORRunConfig* cfg, char* errbuf, std::size_t errbufsz) {
    if (!spin || !seq || !cfg) {
        set_error(errbuf, errbufsz, "capture arguments must be non-null");
        return KOR_MODEL_ERR_NULLPTR;
    }
    KORSpinSystemDef_Init(spin);
    KORPulseSequenceDef_Init(seq);
    KORRunConfig_Init(cfg);
    if (g_runtime.Nspins < 1 || g_runtime.Nspins > KOR_MAX_SPINS) {
        set_error(errbuf, errbufsz, "legacy spin system is not captureable: Nspins=%d outside 1..%d",
                  g_runtime.Nspins, KOR_MAX_SPINS);
        return KOR_MODEL_ERR_INCOMPATIBLE;
    }
    if (g_runtime.nos < 0 || g_runtime.nos > KOR_MAX_SECTORS) {
        set_error(errbuf, errbufsz, "legacy pulse sequence is not captureable: nos=%d outside 0..%d",
                  g_runtime.nos, KOR_MAX_SECTORS);
        return KOR_MODEL_ERR_INCOMPATIBLE;
    }
    capture_spins(*spin);
    capture_couplings(*spin);
    capture_sequence(*seq);
    capture_run_config(*cfg);
    return KORModel_ValidateAll(spin, seq, cfg, errbuf, errbufsz);
}

KORModelStatus KORModel_LoadCurrentLegacyStateFromText(const char* path, char* errbuf, std::size_t errbufsz) {
    if (!path || *path == '\0') {
        set_error(errbuf, errbufsz, "input path must be non-empty");
        return KOR_MODEL_ERR_NULLPTR;
    }
    KORSpinSystemDef spin;
    KORPulseSequenceDef seq;
    KORRunConfig cfg;
    KORModelParts parts;
    KORModelStatus status = load_model_and_parts(path, &spin, &seq, &cfg, &parts, errbuf, errbufsz);
    if (status == KOR_MODEL_OK)
        status = KORModel_ActivateInLegacyRuntime(&spin, &seq, &cfg, errbuf, errbufsz);
    if (status == KOR_MODEL_OK)
        remember_model_files(path, parts.spin_system, parts.sequence);
    return status;
}

KORModelStatus KORModel_SaveCurrentLegacyStateToText(const char* path, char* errbuf, std::size_t errbufsz) {
    if (!path || *path == '\0') {
        set_error(errbuf, errbufsz, "output path must be non-empty");
        return KOR_MODEL_ERR_NULLPTR;
    }
    KORSpinSystemDef spin;
    KORPulseSequenceDef seq;
    KORRunConfig cfg;
    KORModelStatus status = KORModel_CaptureFromLegacyGlobals(&spin, &seq, &cfg, errbuf, errbufsz);
    if (status == KOR_MODEL_OK)
        status = KORModel_SaveText(path, &spin, &seq, &cfg, errbuf, errbufsz);
    KORModelParts parts;
    if (status == KOR_MODEL_OK && saved_model_parts(path, &cfg, &parts))
        remember_model_files(path, parts.spin_system, parts.sequence);
    return status;
}

} // namespace kor
