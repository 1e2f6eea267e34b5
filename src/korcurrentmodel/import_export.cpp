#include "korcurrentmodel/import_export.h"

#include "korcurrentmodel/loaded_model.h"
#include "korcurrentmodel/model_picker.h"
#include "korcurrentmodel/model_summary.h"
#include "kormodel/activation.h"
#include "kormodel/model_file.h"
#include "modelfiles.h"

#include <cstdio>

namespace kor {

namespace {

void report_failure(const char* what, KORModelStatus status, const char* message, const char* path) {
    std::printf("\n[KOR] %s failed: %s (%s)\n", what, KORModelStatusString(status), message);
    std::printf("[KOR] Path used: %s\n", path);
}

} // namespace

KORModelEntry KORActivateModelFile(const char* path, KORModelRecords* records, KORModelStatus* status,
                                   char* message, std::size_t size) {
    KORSpinSystemDef_Init(&records->spin);
    KORPulseSequenceDef_Init(&records->seq);
    KORRunConfig_Init(&records->cfg);
    message[0] = '\0';
    KORModelParts parts;
    *status = load_model_and_parts(path, &records->spin, &records->seq, &records->cfg, &parts, message, size);
    if (*status != KOR_MODEL_OK)
        return KORModelEntry::load_failed;
    *status = KORModel_ActivateInLegacyRuntime(&records->spin, &records->seq, &records->cfg, message, size);
    if (*status != KOR_MODEL_OK)
        return KORModelEntry::activation_failed;
    remember_model_files(path, parts.spin_system, parts.sequence);
    return KORModelEntry::active;
}

void import_kor_model() {
    char path[KOR_PATH_SIZE];
    char message[KOR_MESSAGE_SIZE];
    KORModelRecords records;
    KORModelStatus status = KOR_MODEL_OK;
    if (!prompt_model_selection_from_default_dir(path, sizeof path))
        return;
    if (KORActivateModelFile(path, &records, &status, message, sizeof message) == KORModelEntry::active) {
        print_model_summary(path, &records.spin, &records.seq, &records.cfg);
        warn_of_relative_result(records.cfg);
        set_loaded_model_path(path);
        std::puts("\n[KOR] Import successful.");
    } else {
        report_failure("Import", status, message, path);
    }
    wait_for_menu();
}

void export_loaded_kor_model() {
    char path[KOR_PATH_SIZE];
    char message[KOR_MESSAGE_SIZE] = "";
    if (!prompt_export_model_path(path, sizeof path))
        return;
    const KORModelStatus status = KORModel_SaveCurrentLegacyStateToText(path, message, sizeof message);
    if (status == KOR_MODEL_OK) {
        set_loaded_model_path(path);
        std::printf("\n[KOR] Exported current state to %s\n", path);
    } else if (status == KOR_MODEL_ERR_INCOMPATIBLE) {
        std::puts("\n[KOR] No current model is available to export yet.");
        std::puts("[KOR] Load, import, or define a spin system first, then export it.");
    } else {
        report_failure("Export", status, message, path);
    }
    wait_for_menu();
}

void KORExportCurrentModelInteractive() {
    export_loaded_kor_model();
}

} // namespace kor
