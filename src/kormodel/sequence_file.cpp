#include "kormodel/sequence_file.h"

#include "key_table.h"
#include "kormodel/paths.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>

namespace kor {

namespace {

/// Keys that begin with a sector number; one bit per key in SequenceReader::sector_given.
enum SectorKey : unsigned {
    sector_type_key = 1,
    timepoints_key = 2,
    evolpoints_key = 4,
    duration_key = 8,
    pulsefile_key = 16,
    statoff_key = 32,
    remark_key = 64,
    required_sector_keys =
        sector_type_key | timepoints_key | evolpoints_key | duration_key | pulsefile_key | statoff_key
};

struct SequenceReader : ModelFileReader {
    const char* filename;
    KORPulseSequenceDef* def;
    unsigned sector_given[KOR_MAX_SECTORS + 1]; // sectors 1..20, bits of SectorKey
};

KORModelStatus read_sequence_type(SequenceReader& reader, const char*, const char* value) {
    return parse_int_strict(value, &reader.def->sequence_type) ? KOR_MODEL_OK
                                                               : line_error(reader, "bad sequence_type");
}

// One more than the arrays hold is let through: the record check then names the count and its bounds.
KORModelStatus read_sector_count(SequenceReader& reader, const char*, const char* value) {
    if (!parse_int_strict(value, &reader.def->sector_count))
        return line_error(reader, "bad number_of_sectors");
    if (reader.def->sector_count < 0 || reader.def->sector_count > KOR_MAX_SECTORS + 1)
        return line_error(reader, "number_of_sectors out of range");
    return KOR_MODEL_OK;
}

/// Reads the sector index and moves *value behind it; 0 when there is none or it names no sector.
int scan_sector_index(const SequenceReader& reader, const char** value, int* k) {
    return scan_int(value, k) && valid_sector_index(*k) && *k <= reader.def->sector_count;
}

KORModelStatus note_sector_key(SequenceReader& reader, const char* key, SectorKey bit, int k) {
    if (reader.sector_given[k] & bit)
        return line_error(reader, "duplicate key '%s' for sector %d", key, k);
    reader.sector_given[k] |= bit;
    return KOR_MODEL_OK;
}

template <class Number, int (*scan)(const char**, Number*), Number KORPulseSectorDef::*field, SectorKey bit>
KORModelStatus read_sector_number(SequenceReader& reader, const char* key, const char* value) {
    int k = 0;
    Number number{};
    if (!scan_sector_index(reader, &value, &k) || !scan(&value, &number))
        return line_error(reader, "bad %s", key);
    if (const KORModelStatus status = note_sector_key(reader, key, bit, k); status != KOR_MODEL_OK)
        return status;
    reader.def->sectors[k].*field = number;
    return KOR_MODEL_OK;
}

KORModelStatus read_sector_pulsefile(SequenceReader& reader, const char* key, const char* value) {
    int k = 0;
    char stored[KOR_FILE_NAME_SIZE];
    if (!scan_sector_index(reader, &value, &k) || std::sscanf(value, "%255s", stored) != 1)
        return line_error(reader, "bad %s", key);
    if (const KORModelStatus status = note_sector_key(reader, key, pulsefile_key, k); status != KOR_MODEL_OK)
        return status;
    char found[KOR_PATH_SIZE];
    if (!kor_resolve_sector_pulse_path(reader.filename, stored, found, sizeof found) ||
        !kor_file_exists_local(found)) {
        kor_set_sector_pulse_resolution_error(reader.filename, stored, reader.line_number, k, reader.errbuf,
                                              reader.errbufsz);
        return KOR_MODEL_ERR_PARSE;
    }
    KORPulseSectorDef& sector = reader.def->sectors[k];
    copy_truncated(found, sector.pulse_filename, sizeof sector.pulse_filename);
    // A name that is cut is that of no file, as a rule, and the run says so; another waveform is never
    // played.
    if (std::strcmp(found, sector.pulse_filename) != 0 && kor_file_exists_local(sector.pulse_filename))
        return line_error(
            reader,
            "sector_pulsefile for sector %d: the path is longer than %d characters, and cut there "
            "it is that of another file",
            k, KOR_FILE_NAME_SIZE - 1);
    return KOR_MODEL_OK;
}

KORModelStatus read_sector_remark(SequenceReader& reader, const char* key, const char* value) {
    int k = 0;
    if (!scan_sector_index(reader, &value, &k))
        return line_error(reader, "bad sector_remark index");
    if (const KORModelStatus status = note_sector_key(reader, key, remark_key, k); status != KOR_MODEL_OK)
        return status;
    KORPulseSectorDef& sector = reader.def->sectors[k];
    copy_value(skip_white_space(value), sector.remark, sizeof sector.remark);
    return KOR_MODEL_OK;
}

constexpr KeyRow<SequenceReader> sequence_keys[] = {
    {"format_version", read_version<SequenceReader>},
    {"sequence_name", ignore_text<SequenceReader>},
    {"model_name", ignore_text<SequenceReader>},
    {"sequence_type", read_sequence_type},
    {"number_of_sectors", read_sector_count, "sequence_type"},
    {"sector_type", read_sector_number<int, scan_int, &KORPulseSectorDef::sector_type, sector_type_key>,
     "number_of_sectors", true},
    {"sector_timepoints",
     read_sector_number<int, scan_int, &KORPulseSectorDef::number_of_timepoints, timepoints_key>,
     "number_of_sectors", true},
    {"sector_evolpoints",
     read_sector_number<int, scan_int, &KORPulseSectorDef::number_of_evolpoints, evolpoints_key>,
     "number_of_sectors", true},
    {"sector_duration_s",
     read_sector_number<double, scan_double, &KORPulseSectorDef::total_duration_s, duration_key>,
     "number_of_sectors", true},
    {"sector_pulsefile", read_sector_pulsefile, "number_of_sectors", true},
    {"sector_statoff_hz",
     read_sector_number<double, scan_double, &KORPulseSectorDef::offset_frequency_hz, statoff_key>,
     "number_of_sectors", true},
    {"sector_remark", read_sector_remark, "number_of_sectors", true},
};

KORModelStatus check_required_keys(const SequenceReader& reader) {
    for (const char* key : {"format_version", "sequence_type", "number_of_sectors"}) {
        if (!is_given(reader, key)) {
            set_error(reader.errbuf, reader.errbufsz,
                      "sequence file is missing one or more required sequence keys");
            return KOR_MODEL_ERR_PARSE;
        }
    }
    for (int k = 1; k <= std::min(reader.def->sector_count, KOR_MAX_SECTORS); ++k) {
        if ((reader.sector_given[k] & required_sector_keys) != required_sector_keys) {
            set_error(reader.errbuf, reader.errbufsz,
                      "sequence file is missing one or more required sector keys for sector %d", k);
            return KOR_MODEL_ERR_PARSE;
        }
    }
    return KOR_MODEL_OK;
}

} // namespace

KORModelStatus kor_load_pulse_sequence_text(const char* filename, KORPulseSequenceDef* def, char* errbuf,
                                            std::size_t errbufsz) {
    if (!filename || !def) {
        set_error(errbuf, errbufsz, "sequence load arguments must be non-null");
        return KOR_MODEL_ERR_NULLPTR;
    }
    KORPulseSequenceDef_Init(def);
    std::FILE* file = open_model_text(filename);
    if (!file) {
        set_error(errbuf, errbufsz, "could not open pulse sequence '%s'", filename);
        return KOR_MODEL_ERR_IO;
    }
    SequenceReader reader{{errbuf, errbufsz, 0, 0, {}}, filename, def, {}};
    KORModelStatus status = read_key_lines(file, filename, reader, [&](const char* text) {
        return read_key_line(reader, sequence_keys, "unknown sequence key", text);
    });
    if (status == KOR_MODEL_OK)
        status = check_required_keys(reader);
    return status == KOR_MODEL_OK ? KORPulseSequenceDef_Validate(def, errbuf, errbufsz) : status;
}

} // namespace kor
