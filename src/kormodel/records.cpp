#include "kormodel/records.h"

#include <cstdarg>
#include <cstdio>

namespace kor {

const char* KORModelStatusString(int status) {
    switch (status) {
    case KOR_MODEL_OK:
        return "ok";
    case KOR_MODEL_ERR_NULLPTR:
        return "null pointer";
    case KOR_MODEL_ERR_IO:
        return "i/o error";
    case KOR_MODEL_ERR_PARSE:
        return "parse error";
    case KOR_MODEL_ERR_RANGE:
        return "range error";
    case KOR_MODEL_ERR_DIMENSION:
        return "dimension error";
    case KOR_MODEL_ERR_INCOMPATIBLE:
        return "incompatible with legacy globals";
    default:
        return "unknown error";
    }
}

void set_error(char* errbuf, std::size_t errbufsz, const char* format, ...) {
    if (!errbuf || errbufsz == 0)
        return;
    va_list values;
    va_start(values, format);
    std::vsnprintf(errbuf, errbufsz, format, values);
    va_end(values);
}

bool valid_sector_index(int i) {
    return 1 <= i && i <= KOR_MAX_SECTORS;
}

void KORSpinSystemDef_Init(KORSpinSystemDef* def) {
    if (!def)
        return;
    *def = {};
    def->nspins = 1;
    def->spin_quantum_numbers[1] = 1;
    def->relative_intensities[1] = 1.0;
    def->coupling_mode = 1;
}

void KORPulseSequenceDef_Init(KORPulseSequenceDef* def) {
    if (!def)
        return;
    *def = {};
    def->sequence_type = 1;
    for (KORPulseSectorDef& sector : def->sectors) {
        sector.sector_type = 1;
        sector.number_of_timepoints = 1;
        sector.number_of_evolpoints = 1;
    }
}

void KORRunConfig_Init(KORRunConfig* cfg) {
    if (!cfg)
        return;
    *cfg = {};
    cfg->ndx = cfg->ndy = cfg->ndz = 1;
    std::snprintf(cfg->result_filename, sizeof cfg->result_filename, "%s", "result.bin");
}

namespace {

KORModelStatus check_quantum_numbers(const KORSpinSystemDef& def, char* errbuf, std::size_t errbufsz) {
    unsigned long long dimension = 1;
    for (int i = 1; i <= def.nspins; ++i) {
        const int doubled = def.spin_quantum_numbers[i];
        if (doubled < 1) {
            set_error(errbuf, errbufsz, "spin_quantum_numbers[%d]=%d must be >= 1 (legacy stores 2I)", i,
                      doubled);
            return KOR_MODEL_ERR_RANGE;
        }
        dimension *= static_cast<unsigned long long>(doubled) + 1;
        if (dimension > KOR_MAX_STATES) {
            set_error(errbuf, errbufsz, "Hilbert dimension %llu exceeds KOR_MAX_STATES=%d", dimension,
                      KOR_MAX_STATES);
            return KOR_MODEL_ERR_DIMENSION;
        }
    }
    return KOR_MODEL_OK;
}

// The comparisons are written so that a NaN fails them.
KORModelStatus check_couplings(const KORSpinSystemDef& def, char* errbuf, std::size_t errbufsz) {
    int pairs = 0;
    for (int i = 1; i <= def.nspins; ++i) {
        if (!(def.j_hz[i][i] == 0.0)) {
            set_error(errbuf, errbufsz, "j_hz[%d][%d] must be zero on the diagonal", i, i);
            return KOR_MODEL_ERR_RANGE;
        }
        for (int j = i + 1; j <= def.nspins; ++j) {
            if (!(def.j_hz[i][j] == def.j_hz[j][i])) {
                set_error(errbuf, errbufsz, "j_hz matrix is not symmetric at (%d,%d) and (%d,%d)", i, j, j,
                          i);
                return KOR_MODEL_ERR_RANGE;
            }
            ++pairs;
        }
    }
    return check_pair_count(pairs, errbuf, errbufsz);
}

KORModelStatus check_sector(const KORPulseSectorDef& sector, int k, char* errbuf, std::size_t errbufsz) {
    if (sector.sector_type != 1 && sector.sector_type != 2)
        set_error(errbuf, errbufsz, "sector %d has invalid sector_type=%d", k, sector.sector_type);
    else if (sector.number_of_timepoints < 1 || sector.number_of_timepoints > KOR_MAX_RF_POINTS)
        set_error(errbuf, errbufsz, "sector %d number_of_timepoints=%d is outside 1..%d", k,
                  sector.number_of_timepoints, KOR_MAX_RF_POINTS);
    else if (sector.number_of_evolpoints < 1 || sector.number_of_evolpoints > KOR_MAX_RF_POINTS)
        set_error(errbuf, errbufsz, "sector %d number_of_evolpoints=%d is outside 1..%d", k,
                  sector.number_of_evolpoints, KOR_MAX_RF_POINTS);
    else if (sector.total_duration_s < 0.0)
        set_error(errbuf, errbufsz, "sector %d total_duration_s=%g must be >= 0", k, sector.total_duration_s);
    else if (sector.pulse_filename[0] == '\0')
        set_error(errbuf, errbufsz, "sector %d pulse_filename is required", k);
    else
        return KOR_MODEL_OK;
    return KOR_MODEL_ERR_RANGE;
}

} // namespace

KORModelStatus check_pair_count(int pairs, char* errbuf, std::size_t errbufsz) {
    if (pairs > KOR_MAX_PAIRS) {
        set_error(errbuf, errbufsz, "pair count %d exceeds current legacy coupling capacity %d", pairs,
                  KOR_MAX_PAIRS);
        return KOR_MODEL_ERR_INCOMPATIBLE;
    }
    return KOR_MODEL_OK;
}

KORModelStatus KORSpinSystemDef_Validate(const KORSpinSystemDef* def, char* errbuf, std::size_t errbufsz) {
    if (!def) {
        set_error(errbuf, errbufsz, "spin definition is null");
        return KOR_MODEL_ERR_NULLPTR;
    }
    if (def->nspins < 1 || def->nspins > KOR_MAX_SPINS) {
        set_error(errbuf, errbufsz, "nspins=%d is outside 1..%d", def->nspins, KOR_MAX_SPINS);
        return KOR_MODEL_ERR_RANGE;
    }
    const KORModelStatus status = check_quantum_numbers(*def, errbuf, errbufsz);
    return status == KOR_MODEL_OK ? check_couplings(*def, errbuf, errbufsz) : status;
}

KORModelStatus KORPulseSequenceDef_Validate(const KORPulseSequenceDef* def, char* errbuf,
                                            std::size_t errbufsz) {
    if (!def) {
        set_error(errbuf, errbufsz, "pulse-sequence definition is null");
        return KOR_MODEL_ERR_NULLPTR;
    }
    if (def->sector_count < 0 || def->sector_count > KOR_MAX_SECTORS) {
        set_error(errbuf, errbufsz, "sector_count=%d is outside 0..%d", def->sector_count, KOR_MAX_SECTORS);
        return KOR_MODEL_ERR_RANGE;
    }
    for (int k = 1; k <= def->sector_count; ++k) {
        const KORModelStatus status = check_sector(def->sectors[k], k, errbuf, errbufsz);
        if (status != KOR_MODEL_OK)
            return status;
    }
    return KOR_MODEL_OK;
}

KORModelStatus KORRunConfig_Validate(const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz) {
    if (!cfg) {
        set_error(errbuf, errbufsz, "run configuration is null");
        return KOR_MODEL_ERR_NULLPTR;
    }
    const struct {
        const char* name;
        int count;
    } axes[] = {{"ndx", cfg->ndx}, {"ndy", cfg->ndy}, {"ndz", cfg->ndz}};
    for (const auto& axis : axes) {
        if (axis.count < 1 || axis.count > KOR_MAX_GRID_POINTS) {
            set_error(errbuf, errbufsz, "%s=%d is outside 1..%d", axis.name, axis.count, KOR_MAX_GRID_POINTS);
            return KOR_MODEL_ERR_RANGE;
        }
    }
    if (cfg->dx_cm < 0.0 || cfg->dy_cm < 0.0 || cfg->dz_cm < 0.0) {
        set_error(errbuf, errbufsz, "dx_cm/dy_cm/dz_cm must be >= 0");
        return KOR_MODEL_ERR_RANGE;
    }
    if (cfg->result_filename[0] == '\0') {
        set_error(errbuf, errbufsz, "result_filename is required");
        return KOR_MODEL_ERR_RANGE;
    }
    return KOR_MODEL_OK;
}

} // namespace kor
