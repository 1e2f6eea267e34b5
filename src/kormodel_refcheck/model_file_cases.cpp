#include "kormodel_refcheck.h"

#include "kormodel/model_file.h"
#include "kormodel/paths.h"

#include <cstdio>
#include <cstring>

namespace kor {

namespace {

constexpr char work_folder[] = "kor-refcheck-work";

// A folder or file below the root of a case.
using CasePath = char[KOR_PATH_SIZE];

bool write_text_fixture(const char* path, const char* text) {
    return write_refcheck_fixture(path, text, std::strlen(text));
}

// The records that the loader fills; only the verdict and some fields are looked at.
struct LoadedModel {
    KORSpinSystemDef spin;
    KORPulseSequenceDef seq;
    KORRunConfig cfg;
    KORModelStatus status;
    char message[KOR_MESSAGE_SIZE];
};

const LoadedModel& load_model(const char* path) {
    static LoadedModel model;
    model.message[0] = '\0';
    model.status =
        KORModel_LoadText(path, &model.spin, &model.seq, &model.cfg, model.message, sizeof model.message);
    return model;
}

// ---- split composition

constexpr char split_tag[] = "split";

struct SplitPaths {
    CasePath root, models, spin_systems, sequences, sequence, waveforms;
    CasePath model_file, spin_file, sequence_file, pulse_file;
};

bool build_split_folders(SplitPaths* p) {
    return kor_join_path(p->root, sizeof p->root, work_folder, "split-composition") &&
           kor_join_path(p->models, sizeof p->models, p->root, "models") &&
           kor_join_path(p->spin_systems, sizeof p->spin_systems, p->root, "spin-systems") &&
           kor_join_path(p->sequences, sizeof p->sequences, p->root, "sequences") &&
           kor_join_path(p->sequence, sizeof p->sequence, p->sequences, "test-gradient") &&
           kor_join_path(p->waveforms, sizeof p->waveforms, p->sequence, "waveforms");
}

bool create_split_folders(const SplitPaths& p) {
    return kor_ensure_dir(work_folder) && kor_ensure_dir(p.root) && kor_ensure_dir(p.models) &&
           kor_ensure_dir(p.spin_systems) && kor_ensure_dir(p.sequences) && kor_ensure_dir(p.sequence) &&
           kor_ensure_dir(p.waveforms);
}

bool build_split_files(SplitPaths* p) {
    return kor_join_path(p->model_file, sizeof p->model_file, p->models, "case.kormodel") &&
           kor_join_path(p->spin_file, sizeof p->spin_file, p->spin_systems, "test-two-spin.korspin") &&
           kor_join_path(p->sequence_file, sizeof p->sequence_file, p->sequence, "test-gradient.korseq") &&
           kor_join_path(p->pulse_file, sizeof p->pulse_file, p->waveforms, "wave1-excitation");
}

constexpr char split_model_text[] = "format_version: 1\n"
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

constexpr char split_spin_text[] = "format_version: 1\n"
                                   "spin_system_name: test-two-spin\n"
                                   "\n"
                                   "nspins: 2\n"
                                   "spin_quantum_numbers: 1 1\n"
                                   "relative_intensities: 1 1\n"
                                   "resonance_offsets_hz: 100 -40\n"
                                   "coupling_mode: 1\n"
                                   "jcoupling_hz: 1 2 12\n";

constexpr char split_sequence_text[] = "format_version: 1\n"
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

bool split_failure(const char* text) {
    std::printf("FAIL %-9s %s\n", split_tag, text);
    return false;
}

bool write_split_fixtures(SplitPaths* paths) {
    if (!build_split_folders(paths))
        return split_failure("could not build reference paths");
    if (!create_split_folders(*paths))
        return split_failure("could not create reference directories");
    if (!build_split_files(paths))
        return split_failure("could not build reference file paths");
    if (!write_refcheck_pulse(split_tag, paths->pulse_file))
        return false;
    if (!write_text_fixture(paths->spin_file, split_spin_text))
        return split_failure("could not write spin-system fixture");
    if (!write_text_fixture(paths->sequence_file, split_sequence_text))
        return split_failure("could not write sequence fixture");
    if (!write_text_fixture(paths->model_file, split_model_text))
        return split_failure("could not write model fixture");
    return true;
}

bool check_split_values(const LoadedModel& model) {
    bool ok = check_scalar(split_tag, "nspins", model.spin.nspins, 2, 0);
    ok &= check_scalar(split_tag, "sequence_type", model.seq.sequence_type, 1, 0);
    ok &= check_scalar(split_tag, "sector_count", model.seq.sector_count, 1, 0);
    ok &= check_scalar(split_tag, "ndx", model.cfg.ndx, 5, 0);
    return ok;
}

bool check_split_paths(const LoadedModel& model) {
    bool ok = true;
    const char* pulse = model.seq.sectors[1].pulse_filename;
    if (!kor_file_exists_local(pulse)) {
        std::printf("FAIL %-9s resolved pulse fixture does not exist: %s\n", split_tag, pulse);
        ok = false;
    }
    const char* result = model.cfg.result_filename;
    if (!std::strstr(result, "build\\runtime\\results") && !std::strstr(result, "build/runtime/results")) {
        std::printf("FAIL %-9s relative result_file did not resolve under build runtime results: %s\n",
                    split_tag, result);
        ok = false;
    }
    return ok;
}

// ---- malformed models

// The spin and sequence parts are shared; only the models differ.
struct MalformedPaths {
    CasePath root, spin_systems, sequences, sequence, waveforms;
    CasePath pulse_file, spin_file, valid_sequence, invalid_sequence, duplicate_model, invalid_model;
};

bool build_malformed_folders(MalformedPaths* p) {
    return kor_join_path(p->root, sizeof p->root, work_folder, "malformed-models") &&
           kor_join_path(p->spin_systems, sizeof p->spin_systems, p->root, "spin-systems") &&
           kor_join_path(p->sequences, sizeof p->sequences, p->root, "sequences") &&
           kor_join_path(p->sequence, sizeof p->sequence, p->sequences, "malformed") &&
           kor_join_path(p->waveforms, sizeof p->waveforms, p->sequence, "waveforms");
}

bool build_malformed_files(MalformedPaths* p) {
    return kor_join_path(p->pulse_file, sizeof p->pulse_file, p->waveforms, "dummy.bin") &&
           kor_join_path(p->spin_file, sizeof p->spin_file, p->spin_systems, "malformed.korspin") &&
           kor_join_path(p->valid_sequence, sizeof p->valid_sequence, p->sequence, "valid.korseq") &&
           kor_join_path(p->invalid_sequence, sizeof p->invalid_sequence, p->sequence, "invalid.korseq") &&
           kor_join_path(p->duplicate_model, sizeof p->duplicate_model, p->root,
                         "duplicate-sequence-type.kormodel") &&
           kor_join_path(p->invalid_model, sizeof p->invalid_model, p->root,
                         "invalid-sequence-type.kormodel");
}

bool create_malformed_folders(const MalformedPaths& p) {
    return kor_ensure_dir(p.root) && kor_ensure_dir(p.spin_systems) && kor_ensure_dir(p.sequences) &&
           kor_ensure_dir(p.sequence) && kor_ensure_dir(p.waveforms);
}

constexpr char malformed_spin_text[] = "format_version: 1\n"
                                       "spin_system_name: malformed\n"
                                       "\n"
                                       "nspins: 1\n"
                                       "spin_quantum_numbers: 1\n"
                                       "relative_intensities: 1\n"
                                       "resonance_offsets_hz: 0\n"
                                       "coupling_mode: 2\n";

bool write_sequence(const char* path, int sequence_type, const char* remark) {
    char text[512];
    std::snprintf(text, sizeof text,
                  "format_version: 1\n"
                  "sequence_name: malformed\n"
                  "\n"
                  "sequence_type: %d\n"
                  "number_of_sectors: 1\n"
                  "sector_type: 1 1\n"
                  "sector_timepoints: 1 1\n"
                  "sector_evolpoints: 1 1\n"
                  "sector_duration_s: 1 0.001\n"
                  "sector_pulsefile: 1 waveforms/dummy.bin\n"
                  "sector_statoff_hz: 1 0\n"
                  "sector_remark: 1 %s\n",
                  sequence_type, remark);
    return write_text_fixture(path, text);
}

// extra_line: empty, or a whole line that follows spin_system_file.
bool write_model(const char* path, const char* name, const char* extra_line, const char* sequence_leaf,
                 const char* result_leaf) {
    char text[768];
    std::snprintf(text, sizeof text,
                  "format_version: 1\n"
                  "model_name: %s\n"
                  "\n"
                  "spin_system_file: spin-systems/malformed.korspin\n"
                  "%s"
                  "sequence_file: sequences/malformed/%s\n"
                  "\n"
                  "ndx: 1\nndy: 1\nndz: 1\n"
                  "x0_cm: 0\ny0_cm: 0\nz0_cm: 0\n"
                  "dx_cm: 0\ndy_cm: 0\ndz_cm: 0\n"
                  "result_file: %s\n",
                  name, extra_line, sequence_leaf, result_leaf);
    return write_text_fixture(path, text);
}

bool malformed_failure(const char* text) {
    std::printf("FAIL malformed : %s\n", text);
    return false;
}

bool write_malformed_parts(MalformedPaths* p) {
    if (!kor_ensure_dir(work_folder))
        return malformed_failure("could not create kor-refcheck-work");
    if (!build_malformed_folders(p))
        return malformed_failure("could not build malformed-models path");
    if (!create_malformed_folders(*p))
        return malformed_failure("could not create malformed-models directory");
    if (!build_malformed_files(p))
        return malformed_failure("could not build malformed-model file paths");
    if (!write_refcheck_fixture(p->pulse_file, "", 1))
        return malformed_failure("could not create dummy pulse file");
    if (!write_text_fixture(p->spin_file, malformed_spin_text))
        return malformed_failure("could not create malformed.korspin");
    if (!write_sequence(p->valid_sequence, 2, "valid split case"))
        return malformed_failure("could not create valid.korseq");
    return true;
}

// The load must fail with a message that contains `expected`.
bool check_refusal(const char* model_file, const char* name, const char* expected) {
    const LoadedModel& model = load_model(model_file);
    if (model.status == KOR_MODEL_OK) {
        std::printf("FAIL malformed : %s model unexpectedly loaded\n", name);
        return false;
    }
    if (!std::strstr(model.message, expected)) {
        std::printf("FAIL malformed : %s model failed for unexpected reason\n", name);
        std::printf("      status : %s\n", KORModelStatusString(model.status));
        std::printf("      error  : %s\n", model.message);
        return false;
    }
    std::printf("PASS          malformed-%s\n", name);
    return true;
}

} // namespace

bool check_split_composition_case() {
    static SplitPaths paths;
    if (!write_split_fixtures(&paths))
        return false;
    const LoadedModel& model = load_model(paths.model_file);
    if (model.status != KOR_MODEL_OK) {
        std::printf("FAIL %-9s load failed: %s (%s)\n", split_tag, KORModelStatusString(model.status),
                    model.message);
        return false;
    }
    bool ok = check_split_values(model);
    ok &= check_split_paths(model);
    if (ok)
        std::puts("PASS          split-composition-reference");
    return ok;
}

bool check_malformed_model_cases() {
    static MalformedPaths paths;
    if (!write_malformed_parts(&paths))
        return false;
    if (!write_model(paths.duplicate_model, "duplicate-sequence-type",
                     "spin_system_file: spin-systems/malformed.korspin\n", "valid.korseq", "duplicate.bin"))
        return malformed_failure("could not create duplicate-sequence-type.kormodel");
    bool ok = check_refusal(paths.duplicate_model, "duplicate-key", "duplicate key 'spin_system_file'");

    if (!write_sequence(paths.invalid_sequence, 9, "invalid semantic case"))
        return malformed_failure("could not create invalid.korseq");
    if (!write_model(paths.invalid_model, "invalid-sequence-type", "", "invalid.korseq", "badseq.bin"))
        return malformed_failure("could not create invalid-sequence-type.kormodel");
    ok &= check_refusal(paths.invalid_model, "invalid-sequence-type", "sequence_type=9 is invalid");
    return ok;
}

} // namespace kor
