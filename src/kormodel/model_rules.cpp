#include "kormodel/model_rules.h"

#include "sequencetypes.h"

namespace kor {

namespace {

KORModelStatus check_sector_in_spatial_sequence(const KORPulseSectorDef& sector, int k, char* errbuf,
                                                std::size_t errbufsz) {
    if (sector.sector_type != NMR_SECTOR_NORMAL) {
        set_error(errbuf, errbufsz, "spatial sequence sector %d has invalid sector_type=%d; expected 1", k,
                  sector.sector_type);
        return KOR_MODEL_ERR_INCOMPATIBLE;
    }
    if (sector.number_of_evolpoints != 1) {
        set_error(errbuf, errbufsz, "spatial sequence sector %d has number_of_evolpoints=%d; expected 1", k,
                  sector.number_of_evolpoints);
        return KOR_MODEL_ERR_INCOMPATIBLE;
    }
    return KOR_MODEL_OK;
}

KORModelStatus check_sector_in_nmr_sequence(const KORPulseSectorDef& sector, int k, char* errbuf,
                                            std::size_t errbufsz) {
    if (sector.sector_type != NMR_SECTOR_NORMAL && sector.sector_type != NMR_SECTOR_EVOLUTION)
        set_error(errbuf, errbufsz, "1D/2D sequence sector %d has invalid sector_type=%d", k,
                  sector.sector_type);
    else if (sector.sector_type == NMR_SECTOR_EVOLUTION && sector.number_of_evolpoints < 1)
        set_error(errbuf, errbufsz, "evolution sector %d must have number_of_evolpoints >= 1", k);
    else
        return KOR_MODEL_OK;
    return KOR_MODEL_ERR_RANGE;
}

// A sector record alone may last 0 s (one that is still being composed); a model that is to run may not.
KORModelStatus check_sector_in_model(const KORPulseSectorDef& sector, int k, int sequence_type, char* errbuf,
                                     std::size_t errbufsz) {
    if (!(sector.total_duration_s > 0.0)) { // so that a NaN fails
        set_error(errbuf, errbufsz, "sector %d total_duration_s=%g must be > 0", k, sector.total_duration_s);
        return KOR_MODEL_ERR_RANGE;
    }
    if (sector.pulse_filename[0] == '\0') {
        set_error(errbuf, errbufsz, "sector %d pulse_filename is required", k);
        return KOR_MODEL_ERR_RANGE;
    }
    return sequence_type == FAMILY_SPATIAL ? check_sector_in_spatial_sequence(sector, k, errbuf, errbufsz)
                                           : check_sector_in_nmr_sequence(sector, k, errbuf, errbufsz);
}

} // namespace

KORModelStatus check_sequence_in_model(const KORPulseSequenceDef* seq, char* errbuf, std::size_t errbufsz) {
    if (!seq) {
        set_error(errbuf, errbufsz, "pulse-sequence definition is null");
        return KOR_MODEL_ERR_NULLPTR;
    }
    if (seq->sequence_type != FAMILY_SPATIAL && seq->sequence_type != FAMILY_NMR) {
        set_error(errbuf, errbufsz, "sequence_type=%d is invalid; expected 1 (spatial) or 2 (1D/2D NMR)",
                  seq->sequence_type);
        return KOR_MODEL_ERR_RANGE;
    }
    if (seq->sector_count < 1) {
        set_error(errbuf, errbufsz, "sector_count=%d is invalid; at least one sector is required",
                  seq->sector_count);
        return KOR_MODEL_ERR_RANGE;
    }
    for (int k = 1; k <= seq->sector_count; ++k) {
        const KORModelStatus status =
            check_sector_in_model(seq->sectors[k], k, seq->sequence_type, errbuf, errbufsz);
        if (status != KOR_MODEL_OK)
            return status;
    }
    return KOR_MODEL_OK;
}

KORModelStatus KORModel_ValidateAll(const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                                    const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz) {
    KORModelStatus status = KORSpinSystemDef_Validate(spin, errbuf, errbufsz);
    if (status == KOR_MODEL_OK)
        status = KORPulseSequenceDef_Validate(seq, errbuf, errbufsz);
    if (status == KOR_MODEL_OK)
        status = KORRunConfig_Validate(cfg, errbuf, errbufsz);
    if (status == KOR_MODEL_OK)
        status = check_sequence_in_model(seq, errbuf, errbufsz);
    return status;
}

} // namespace kor
