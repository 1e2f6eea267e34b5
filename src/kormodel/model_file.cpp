#include "kormodel/model_file.h"

#include "key_table.h"
#include "kormodel/model_rules.h"
#include "kormodel/paths.h"
#include "kormodel/sequence_file.h"
#include "kormodel/spin_system_file.h"

namespace kor {

namespace {

struct ModelReader : ModelFileReader {
    const char* filename;
    KORSpinSystemDef* spin;
    KORPulseSequenceDef* seq;
    KORRunConfig* cfg;
    KORModelParts* parts;
};

using PartPath = char[KOR_PATH_SIZE];

/// Keys of the two other files; an older layout had them in the model file.
constexpr const char* keys[] = {
    "nspins",           "spin_quantum_numbers", "relative_intensities", "resonance_offsets_hz",
    "coupling_mode",    "jcoupling_hz",         "sequence_type",        "number_of_sectors",
    "sector_type",      "sector_timepoints",    "sector_evolpoints",    "sector_duration_s",
    "sector_pulsefile", "sector_statoff_hz",    "sector_remark"};

KORModelStatus resolution_error(const ModelReader& reader, const char* key) {
    line_error(reader, "could not resolve %s", key);
    return KOR_MODEL_ERR_IO;
}

KORModelStatus read_model_name(ModelReader& reader, const char*, const char* value) {
    copy_value(value, reader.cfg->model_name, sizeof reader.cfg->model_name);
    return KOR_MODEL_OK;
}

template <class Record, Record* ModelReader::*record, PartPath KORModelParts::*part,
          KORModelStatus (*load)(const char*, Record*, char*, std::size_t)>
KORModelStatus read_part(ModelReader& reader, const char* key, const char* value) {
    PartPath& path = reader.parts->*part;
    if (!kor_resolve_model_relative_path(reader.filename, value, path, sizeof path))
        return resolution_error(reader, key);
    return load(path, reader.*record, reader.errbuf, reader.errbufsz);
}

template <int KORRunConfig::*field>
KORModelStatus read_int(ModelReader& reader, const char* key, const char* value) {
    return parse_int_strict(value, &(reader.cfg->*field)) ? KOR_MODEL_OK : line_error(reader, "bad %s", key);
}

template <double KORRunConfig::*field>
KORModelStatus read_real(ModelReader& reader, const char* key, const char* value) {
    return parse_double_strict(value, &(reader.cfg->*field)) ? KOR_MODEL_OK
                                                             : line_error(reader, "bad %s", key);
}

KORModelStatus read_result_file(ModelReader& reader, const char* key, const char* value) {
    KORRunConfig& cfg = *reader.cfg;
    if (!kor_resolve_result_path(reader.filename, value, cfg.result_filename, sizeof cfg.result_filename))
        return resolution_error(reader, key);
    return KOR_MODEL_OK;
}

/// In the order in which missing ones are reported; model_name alone is optional.
constexpr KeyRow<ModelReader> model_keys[] = {
    {"format_version", read_version<ModelReader>},
    {"model_name", read_model_name},
    {"spin_system_file",
     read_part<KORSpinSystemDef, &ModelReader::spin, &KORModelParts::spin_system, kor_load_spin_system_text>},
    {"sequence_file", read_part<KORPulseSequenceDef, &ModelReader::seq, &KORModelParts::sequence,
                                kor_load_pulse_sequence_text>},
    {"ndx", read_int<&KORRunConfig::ndx>},
    {"ndy", read_int<&KORRunConfig::ndy>},
    {"ndz", read_int<&KORRunConfig::ndz>},
    {"x0_cm", read_real<&KORRunConfig::x0_cm>},
    {"y0_cm", read_real<&KORRunConfig::y0_cm>},
    {"z0_cm", read_real<&KORRunConfig::z0_cm>},
    {"dx_cm", read_real<&KORRunConfig::dx_cm>},
    {"dy_cm", read_real<&KORRunConfig::dy_cm>},
    {"dz_cm", read_real<&KORRunConfig::dz_cm>},
    {"result_file", read_result_file},
};

KORModelStatus read_line(ModelReader& reader, const char* text) {
    for (const char* key : keys)
        if (match_key(text, key))
            return line_error(reader, "inline spin-system/sequence keys are no longer supported in "
                                      ".kormodel; use spin_system_file and sequence_file");
    return read_key_line(reader, model_keys, "unknown key", text);
}

KORModelStatus check_required_keys(const ModelReader& reader) {
    for (const KeyRow<ModelReader>& row : model_keys) {
        if (row.read != read_model_name && !is_given(reader, row.key)) {
            set_error(reader.errbuf, reader.errbufsz, "missing required key '%s'", row.key);
            return KOR_MODEL_ERR_PARSE;
        }
    }
    return KOR_MODEL_OK;
}

} // namespace

KORModelStatus KORModel_LoadText(const char* filename, KORSpinSystemDef* spin, KORPulseSequenceDef* seq,
                                 KORRunConfig* cfg, char* errbuf, std::size_t errbufsz) {
    KORModelParts parts;
    return load_model_and_parts(filename, spin, seq, cfg, &parts, errbuf, errbufsz);
}

KORModelStatus load_model_and_parts(const char* filename, KORSpinSystemDef* spin, KORPulseSequenceDef* seq,
                                    KORRunConfig* cfg, KORModelParts* parts, char* errbuf,
                                    std::size_t errbufsz) {
    *parts = {};
    if (!filename || !spin || !seq || !cfg) {
        set_error(errbuf, errbufsz, "load arguments must be non-null");
        return KOR_MODEL_ERR_NULLPTR;
    }
    KORSpinSystemDef_Init(spin);
    KORPulseSequenceDef_Init(seq);
    KORRunConfig_Init(cfg);
    std::FILE* file = open_model_text(filename);
    if (!file) {
        set_error(errbuf, errbufsz, "could not open '%s' for reading", filename);
        return KOR_MODEL_ERR_IO;
    }
    ModelReader reader{{errbuf, errbufsz, 0, 0, {}}, filename, spin, seq, cfg, parts};
    KORModelStatus status =
        read_key_lines(file, filename, reader, [&](const char* text) { return read_line(reader, text); });
    if (status != KOR_MODEL_OK)
        return status;
    if (cfg->model_name[0] == '\0')
        kor_copy_basename_without_extension_local(filename, cfg->model_name, sizeof cfg->model_name);
    status = check_required_keys(reader);
    return status == KOR_MODEL_OK ? KORModel_ValidateAll(spin, seq, cfg, errbuf, errbufsz) : status;
}

} // namespace kor
