#include "run_modes.h"

#include "kor-entry.h"
#include "kor/expectation_values.h"
#include "kor/sequence_driver.h"
#include "korcurrentmodel/import_export.h"
#include "korcurrentmodel/loaded_model.h"
#include "korcurrentmodel/model_summary.h"
#include "korcurrentmodel/work_dirs.h"
#include "modelfiles.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kor {

namespace {

constexpr int RUN_ARGUMENTS = 3;
constexpr int WRITER_ARGUMENTS = 6;
constexpr int SUCCESS = 0;
constexpr int FAILURE = 1;

/// How a mode names its steps in the message of a failure.
struct StepNames {
    const char* load;
    const char* activation;
    bool show_path;
};

/// Makes the model file the current model, or says on standard error why not.
bool enter_model(const char* path, const StepNames& names, KORModelRecords* records) {
    char message[KOR_MESSAGE_SIZE];
    KORModelStatus status = KOR_MODEL_OK;
    const KORModelEntry entry = KORActivateModelFile(path, records, &status, message, sizeof message);
    if (entry == KORModelEntry::active)
        return true;
    std::fprintf(stderr, "[KOR] %s failed: %s (%s)\n",
                 entry == KORModelEntry::load_failed ? names.load : names.activation,
                 KORModelStatusString(status), message);
    if (names.show_path)
        std::fprintf(stderr, "[KOR] Path used: %s\n", path);
    return false;
}

/// The whole text as a positive number, values above the range of int cut to INT_MAX.
bool read_point_index(const char* text, int* index) {
    if (!text)
        return false;
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || value <= 0)
        return false;
    *index = static_cast<int>(std::min<long>(value, INT_MAX));
    return true;
}

} // namespace

int run_kor_model_file(const char* path) {
    static const StepNames names = {"Load", "Activate", true};
    if (!path || !*path) {
        std::fputs("[KOR] --run-model requires a .kormodel path\n", stderr);
        return FAILURE;
    }
    enter_private_model_run_work_dir(path);
    KORModelRecords records;
    if (!enter_model(path, names, &records) || replaces_definition_file(records.cfg.result_filename))
        return FAILURE;
    print_model_summary(path, &records.spin, &records.seq, &records.cfg);
    warn_of_relative_result(records.cfg);
    set_loaded_model_path(path);
    KORRunCurrentPreparedModel();
    return SUCCESS;
}

int write_expectation_profile_file(const char* model_path, const char* density_path,
                                   const char* operator_expression, const char* output_path) {
    static const StepNames names = {"Expectation profile model load", "Expectation profile model activation",
                                    false};
    KORModelRecords records;
    if (!enter_model(model_path, names, &records) || replaces_model_files(output_path))
        return FAILURE;
    return KORWriteExpectationProfile(density_path, operator_expression, output_path) ? SUCCESS : FAILURE;
}

int write_voxel_signal_file(const char* model_path, const char* density_path, const char* point_text,
                            const char* output_path) {
    static const StepNames names = {"Voxel signal model load", "Voxel signal model activation", false};
    int point_index = 0;
    if (!read_point_index(point_text, &point_index)) {
        std::fputs("[KOR] Voxel signal point index must be a positive integer.\n", stderr);
        return FAILURE;
    }
    enter_private_model_run_work_dir(model_path);
    KORModelRecords records;
    if (!enter_model(model_path, names, &records) || replaces_model_files(output_path))
        return FAILURE;
    return KORWriteVoxelSignal(density_path, point_index, output_path) ? SUCCESS : FAILURE;
}

bool run_named_mode(int argc, char** argv, int* status) {
    const auto named = [&](const char* word, int arguments) {
        return argc == arguments && std::strcmp(argv[1], word) == 0;
    };
    if (named("--run-model", RUN_ARGUMENTS))
        *status = run_kor_model_file(argv[2]);
    else if (named("--expectation-profile", WRITER_ARGUMENTS))
        *status = write_expectation_profile_file(argv[2], argv[3], argv[4], argv[5]);
    else if (named("--voxel-signal", WRITER_ARGUMENTS))
        *status = write_voxel_signal_file(argv[2], argv[3], argv[4], argv[5]);
    else
        return false;
    return true;
}

} // namespace kor
