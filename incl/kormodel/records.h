// Floor 2.7 - materials: model records, their defaults and their rules
//
// A model is three plain records owned by the caller: spin system, pulse sequence, run configuration.
// Arrays are indexed from 1 (element 0 unused). Every operation on a model returns a KORModelStatus and on
// failure writes one message, without a line end, into errbuf (errbufsz characters with the terminator;
// both may be null / 0 when no message is wanted). On success errbuf is left untouched.
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
/// "ok", "null pointer", "i/o error", "parse error", "range error", "dimension error", "incompatible with
/// legacy globals"; "unknown error" for any other value.
const char* KORModelStatusString(int status);

/// Spin system; arrays over spins 1..nspins.
struct KORSpinSystemDef {
    int nspins;                                        // 1..8
    int spin_quantum_numbers[KOR_MAX_SPINS + 1];       // twice the spin quantum number: 1 is spin 1/2
    double relative_intensities[KOR_MAX_SPINS + 1];    // weight in the equilibrium state, no unit
    double resonance_offsets_hz[KOR_MAX_SPINS + 1];    // Hz
    int coupling_mode;                                 // 1 weak, any other value full isotropic
    double j_hz[KOR_MAX_SPINS + 1][KOR_MAX_SPINS + 1]; // Hz; symmetric, zero diagonal
};

/// One sector of a sequence.
struct KORPulseSectorDef {
    int sector_type;                         // 1 pulse (or plain), 2 evolution (1D/2D NMR only)
    int number_of_timepoints;                // waveform samples, 1..8192
    int number_of_evolpoints;                // evolution increments, 1..8192; 1 in a spatial sequence
    double total_duration_s;                 // s
    double offset_frequency_hz;              // Hz
    char pulse_filename[KOR_FILE_NAME_SIZE]; // waveform file; after loading the path that was found
    char remark[KOR_REMARK_SIZE];            // free text; "adc" or "acquisition" marks the acquisition
};

/// Pulse sequence; sectors 1..sector_count.
struct KORPulseSequenceDef {
    int sequence_type; // 1 spatial, 2 1D/2D NMR
    int sector_count;  // 0..20
    KORPulseSectorDef sectors[KOR_MAX_SECTORS + 1];
};

/// Grid and result file.
struct KORRunConfig {
    int ndx, ndy, ndz;          // voxels per axis, 1..256
    double x0_cm, y0_cm, z0_cm; // first voxel, cm
    double dx_cm, dy_cm, dz_cm; // step, cm, >= 0
    char result_filename[KOR_FILE_NAME_SIZE];
    char model_name[KOR_FILE_NAME_SIZE]; // may be empty
};

/// Defaults: one spin 1/2 of intensity 1 at 0 Hz, weak coupling. A null record is ignored (here and below).
void KORSpinSystemDef_Init(KORSpinSystemDef* def);
/// Defaults: spatial, no sectors; all 21 sectors of type 1 with one time point, one evolution point, 0 s,
/// 0 Hz and empty texts.
void KORPulseSequenceDef_Init(KORPulseSequenceDef* def);
/// Defaults: one voxel at the origin, result file "result.bin", no model name.
void KORRunConfig_Init(KORRunConfig* cfg);

/// Rules of one record by itself; the first rule broken gives status and message. 1..8 spins with 2I >= 1,
/// Hilbert dimension (product of 2I + 1) at most 256, j_hz symmetric with zero diagonal. Intensities,
/// offsets and coupling mode are free.
KORModelStatus KORSpinSystemDef_Validate(const KORSpinSystemDef* def, char* errbuf, std::size_t errbufsz);
/// 0..20 sectors, each with type 1 or 2, 1..8192 time and evolution points, a duration >= 0 and a pulse
/// file.
KORModelStatus KORPulseSequenceDef_Validate(const KORPulseSequenceDef* def, char* errbuf,
                                            std::size_t errbufsz);
/// 1..256 voxels per axis, steps >= 0, a result file.
KORModelStatus KORRunConfig_Validate(const KORRunConfig* cfg, char* errbuf, std::size_t errbufsz);
/// A list of couplings has room for KOR_MAX_PAIRS pairs of spins; a status other than KOR_MODEL_OK says that
/// there are more.
KORModelStatus check_pair_count(int pairs, char* errbuf, std::size_t errbufsz);
/// true when 1 <= i <= KOR_MAX_SECTORS
bool valid_sector_index(int i);
/// Writes one printf-formatted message, truncated to the buffer; nothing when buffer or size is null or 0.
void set_error(char* errbuf, std::size_t errbufsz, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

} // namespace kor
