// A temporary folder with a valid model set, and what the tests of the model files do with it.
#pragma once

#include "kormodel.h"
#include "support/temp_tree.h"

#include <filesystem>
#include <ostream>
#include <string>

namespace kor_test {

/// Status and message of one model operation.
struct Outcome {
    kor::KORModelStatus status;
    std::string message;
    bool operator==(const Outcome&) const = default;
};

inline void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << outcome.status << " \"" << outcome.message << '"';
}

/// Of a text that does not say what it should.
inline Outcome parse_error(const std::string& message) {
    return {kor::KOR_MODEL_ERR_PARSE, message};
}

/// Of a file that cannot be read or written.
inline Outcome io_error(const std::string& message) {
    return {kor::KOR_MODEL_ERR_IO, message};
}

/// Calls operation(errbuf, errbufsz); the message is what it left in a buffer of 512 characters.
template <class Operation> Outcome outcome_of(Operation operation) {
    char message[kor::KOR_MESSAGE_SIZE] = "";
    const kor::KORModelStatus status = operation(message, sizeof message);
    return {status, with_slashes(message)};
}

inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

inline const std::string valid_spin_text = "format_version: 1\n"
                                           "spin_system_name: test-two-spin\n"
                                           "\n"
                                           "nspins: 2\n"
                                           "spin_quantum_numbers: 1 1\n"
                                           "relative_intensities: 1 0.5\n"
                                           "resonance_offsets_hz: 100 -40\n"
                                           "coupling_mode: 1\n"
                                           "jcoupling_hz: 1 2 12\n";

inline const std::string valid_sequence_text = "format_version: 1\n"
                                               "sequence_name: test-gradient\n"
                                               "\n"
                                               "sequence_type: 1\n"
                                               "number_of_sectors: 1\n"
                                               "sector_type: 1 1\n"
                                               "sector_timepoints: 1 1\n"
                                               "sector_evolpoints: 1 1\n"
                                               "sector_duration_s: 1 1e-05\n"
                                               "sector_pulsefile: 1 waveforms/wave1-excitation\n"
                                               "sector_statoff_hz: 1 0\n"
                                               "sector_remark: 1 test\n";

inline const std::string valid_model_text = "format_version: 1\n"
                                            "model_name: split-composition\n"
                                            "\n"
                                            "spin_system_file: ../spin-systems/test-two-spin.korspin\n"
                                            "sequence_file: ../sequences/test-gradient/test-gradient.korseq\n"
                                            "\n"
                                            "ndx: 5\n"
                                            "ndy: 1\n"
                                            "ndz: 1\n"
                                            "x0_cm: -10\n"
                                            "y0_cm: 0\n"
                                            "z0_cm: 0\n"
                                            "dx_cm: 5\n"
                                            "dy_cm: 0\n"
                                            "dz_cm: 0\n"
                                            "result_file: split-composition-result.bin\n";

/// The set of the three texts above in a temporary folder of its own, which is also the working directory.
class ModelSet {
public:
    ModelSet() {
        write_file(model(), valid_model_text);
        write_file(spin(), valid_spin_text);
        write_file(sequence(), valid_sequence_text);
        write_file(wave(), std::string(40, '\0'));
    }

    const std::filesystem::path& root() const { return tree_.root(); }
    std::string model() const { return tree_.path("models/case.kormodel"); }
    std::string spin() const { return tree_.path("spin-systems/test-two-spin.korspin"); }
    std::string sequence() const { return tree_.path("sequences/test-gradient/test-gradient.korseq"); }
    std::string wave() const { return tree_.path("sequences/test-gradient/waveforms/wave1-excitation"); }

private:
    TempTree tree_{memory_folder()};
};

/// The three records of a model.
struct Model {
    kor::KORSpinSystemDef spin;
    kor::KORPulseSequenceDef seq;
    kor::KORRunConfig cfg;
};

inline Outcome load_model(const std::string& filename, Model& model) {
    return outcome_of([&](char* message, std::size_t size) {
        return kor::KORModel_LoadText(filename.c_str(), &model.spin, &model.seq, &model.cfg, message, size);
    });
}

inline Outcome save_model(const std::string& filename, const Model& model) {
    return outcome_of([&](char* message, std::size_t size) {
        return kor::KORModel_SaveText(filename.c_str(), &model.spin, &model.seq, &model.cfg, message, size);
    });
}

inline Outcome validate_model(const Model& model) {
    return outcome_of([&](char* message, std::size_t size) {
        return kor::KORModel_ValidateAll(&model.spin, &model.seq, &model.cfg, message, size);
    });
}

/// A valid spatial model of two coupled spins in memory; its sector's file does not exist.
inline Model two_spin_model() {
    Model model;
    kor::KORSpinSystemDef_Init(&model.spin);
    kor::KORPulseSequenceDef_Init(&model.seq);
    kor::KORRunConfig_Init(&model.cfg);
    model.spin.nspins = 2;
    model.spin.spin_quantum_numbers[2] = 1;
    model.spin.relative_intensities[2] = 0.5;
    model.spin.resonance_offsets_hz[1] = 100.0;
    model.spin.resonance_offsets_hz[2] = -40.0;
    model.spin.j_hz[1][2] = model.spin.j_hz[2][1] = 12.0;
    model.seq.sector_count = 1;
    model.seq.sectors[1].total_duration_s = 1e-5;
    kor::copy_truncated("waveforms/p1", model.seq.sectors[1].pulse_filename, kor::KOR_FILE_NAME_SIZE);
    kor::copy_truncated("test", model.seq.sectors[1].remark, kor::KOR_REMARK_SIZE);
    return model;
}

inline const Outcome ok{kor::KOR_MODEL_OK, ""};

} // namespace kor_test
