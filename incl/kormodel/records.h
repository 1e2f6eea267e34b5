// Floor 2.7 - materials: model records, their defaults and their rules
#pragma once

#include "korlimits.h"

#include <cstddef>

namespace kor {

/// Result of every model operation.
enum KORModelStatus {
    KOR_MODEL_OK = 0,
    KOR_MODEL_ERR_NULLPTR = 1,
    KOR_MODEL_ERR_IO = 2,
    KOR_MODEL_ERR_PARSE = 3,
    KOR_MODEL_ERR_RANGE = 4,
    KOR_MODEL_ERR_DIMENSION = 5,
    KOR_MODEL_ERR_INCOMPATIBLE = 6
};
const char* KORModelStatusString(int status);

/// Spin system; arrays over spins 1..nspins.
struct KORSpinSystemDef {
    int nspins;
    int spin_quantum_numbers[KOR_MAX_SPINS + 1]; // twice the quantum number
    double relative_intensities[KOR_MAX_SPINS + 1];
    double resonance_offsets_hz[KOR_MAX_SPINS + 1];
    int coupling_mode;                                 // 1 weak, any other value full isotropic
    double j_hz[KOR_MAX_SPINS + 1][KOR_MAX_SPINS + 1]; // symmetric, zero diagonal
};

/// One sector of a sequence.
struct KORPulseSectorDef {
    int sector_type;          // 1 pulse (normal), 2 evolution
    int number_of_timepoints; // 1..8192
    int number_of_evolpoints; // 1..8192
    double total_duration_s;
    double offset_frequency_hz;
    char pulse_filename[KOR_FILE_NAME_SIZE];
    char remark[KOR_REMARK_SIZE];
};

/// Pulse sequence; sectors 1..sector_count.
struct KORPulseSequenceDef {
    int sequence_type; // 1 spatial, 2 1D/2D NMR
    int sector_count;  // 0..20
    KORPulseSectorDef sectors[KOR_MAX_SECTORS + 1];
};

/// Grid and result file.
struct KORRunConfig {
    int ndx, ndy, ndz;          // 1..256
    double x0_cm, y0_cm, z0_cm; // first voxel, cm
    double dx_cm, dy_cm, dz_cm; // step, cm, >= 0
    char result_filename[KOR_FILE_NAME_SIZE];
    char model_name[KOR_FILE_NAME_SIZE];
};

void KORSpinSystemDef_Init(KORSpinSystemDef* def);
void KORPulseSequenceDef_Init(KORPulseSequenceDef* def);
void KORRunConfig_Init(KORRunConfig* cfg);

KORModelStatus KORSpinSystemDef_Validate(const KORSpinSystemDef* def, char* errbuf, std::size_t errbufsz);
KORModelStatus KORPulseSequenceDef_Validate(const KORPulseSequenceDef* def, char* errbuf,
                                            std::size_t errbufsz);
KORModelStatus KORRunConfig_Validate(const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);
KORModelStatus KORModel_ValidateAll(const KORSpinSystemDef* spin, const KORPulseSequenceDef* seq,
                                    const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);
/// true when 1 <= i <= KOR_MAX_SECTORS
bool valid_sector_index(int i);
/// Writes one printf-formatted message, truncated to the buffer; nothing when buffer or size is null or 0.
void set_error(char* errbuf, std::size_t errbufsz, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

} // namespace kor
