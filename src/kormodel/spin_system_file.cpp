#include "kormodel/spin_system_file.h"

#include "key_table.h"

#include <initializer_list>

namespace kor {

namespace {

struct SpinReader : ModelFileReader {
    KORSpinSystemDef* def;
};

template <int KORSpinSystemDef::*field>
KORModelStatus read_int(SpinReader& reader, const char* key, const char* value) {
    return parse_int_strict(value, &(reader.def->*field)) ? KOR_MODEL_OK : line_error(reader, "bad %s", key);
}

KORModelStatus report_bad_list(const SpinReader& reader, const char* key, const char* value, int expected) {
    const int got = count_words(value);
    if (got < expected)
        return line_error(reader, "key '%s' has too few values (expected %d, got %d)", key, expected, got);
    if (got > expected)
        return line_error(reader, "key '%s' has too many values (expected %d, got %d)", key, expected, got);
    return line_error(reader, "key '%s' contains malformed numeric data", key);
}

// nspins is not yet checked here: the lists are read with whatever count it gives, the arrays are
// guarded by their capacity, and the record check names a count outside 1..8.
template <class Number, Number (KORSpinSystemDef::*field)[KOR_MAX_SPINS + 1],
          int (*parse)(const char*, int, Number*, int)>
KORModelStatus read_list(SpinReader& reader, const char* key, const char* value) {
    const int expected = reader.def->nspins;
    if (!parse(value, expected, reader.def->*field, KOR_MAX_SPINS))
        return report_bad_list(reader, key, value, expected);
    return KOR_MODEL_OK;
}

// A spin up to 8 may be named even when nspins is smaller, so that one file can carry the couplings of a
// larger system; only pairs within nspins are used.
KORModelStatus read_coupling(SpinReader& reader, const char*, const char* value) {
    int i = 0;
    int j = 0;
    double coupling = 0.0;
    if (!scan_int(&value, &i) || !scan_int(&value, &j) || !scan_double(&value, &coupling))
        return line_error(reader, "bad jcoupling_hz entry");
    if (i < 1 || i > KOR_MAX_SPINS || j < 1 || j > KOR_MAX_SPINS || i == j)
        return line_error(reader, "jcoupling indices out of range");
    reader.def->j_hz[i][j] = reader.def->j_hz[j][i] = coupling;
    return KOR_MODEL_OK;
}

constexpr KeyRow<SpinReader> spin_keys[] = {
    {"format_version", read_version<SpinReader>},
    {"spin_system_name", ignore_text<SpinReader>},
    {"model_name", ignore_text<SpinReader>},
    {"nspins", read_int<&KORSpinSystemDef::nspins>},
    {"spin_quantum_numbers", read_list<int, &KORSpinSystemDef::spin_quantum_numbers, parse_int_list>,
     "nspins"},
    {"relative_intensities", read_list<double, &KORSpinSystemDef::relative_intensities, parse_double_list>,
     "nspins"},
    {"resonance_offsets_hz", read_list<double, &KORSpinSystemDef::resonance_offsets_hz, parse_double_list>,
     "nspins"},
    {"coupling_mode", read_int<&KORSpinSystemDef::coupling_mode>},
    {"jcoupling_hz", read_coupling, "nspins", true},
};

KORModelStatus check_required_keys(const SpinReader& reader) {
    if (!is_given(reader, "format_version")) {
        set_error(reader.errbuf, reader.errbufsz, "missing required key 'format_version'");
        return KOR_MODEL_ERR_PARSE;
    }
    for (const char* key : {"nspins", "spin_quantum_numbers", "relative_intensities", "resonance_offsets_hz",
                            "coupling_mode"}) {
        if (!is_given(reader, key)) {
            set_error(reader.errbuf, reader.errbufsz,
                      "spin-system file is missing one or more required spin keys");
            return KOR_MODEL_ERR_PARSE;
        }
    }
    return KOR_MODEL_OK;
}

} // namespace

KORModelStatus kor_load_spin_system_text(const char* filename, KORSpinSystemDef* def, char* errbuf,
                                         std::size_t errbufsz) {
    if (!filename || !def) {
        set_error(errbuf, errbufsz, "spin-system load arguments must be non-null");
        return KOR_MODEL_ERR_NULLPTR;
    }
    KORSpinSystemDef_Init(def);
    std::FILE* file = open_model_text(filename);
    if (!file) {
        set_error(errbuf, errbufsz, "could not open spin system '%s'", filename);
        return KOR_MODEL_ERR_IO;
    }
    SpinReader reader{{errbuf, errbufsz, 0, 0, {}}, def};
    KORModelStatus status = read_key_lines(file, filename, reader, [&](const char* text) {
        return read_key_line(reader, spin_keys, "unknown spin-system key", text);
    });
    if (status == KOR_MODEL_OK)
        status = check_required_keys(reader);
    return status == KOR_MODEL_OK ? KORSpinSystemDef_Validate(def, errbuf, errbufsz) : status;
}

} // namespace kor
