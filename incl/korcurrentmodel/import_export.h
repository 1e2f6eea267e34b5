// Floor 4.5 - workshop: importing and exporting model files from the menus
#pragma once

#include "kormodel/records.h"

namespace kor {

/// The records of one model set.
struct KORModelRecords {
    KORSpinSystemDef spin;
    KORPulseSequenceDef seq;
    KORRunConfig cfg;
};

/// How far a model file came on its way into the runtime state.
enum class KORModelEntry { active, load_failed, activation_failed };

/// Reads a model file into `records` and activates it in the runtime state; outputs may then not replace its
/// files (modelfiles.h). Unless the result is `active`,
/// *status says why and message (at most size - 1 characters) has the details.
KORModelEntry KORActivateModelFile(const char* path, KORModelRecords* records, KORModelStatus* status,
                                   char* message, std::size_t size);

/// Has a model file of the default folder chosen and makes it the current model. Waits for Enter, unless
/// nothing was chosen.
void import_kor_model();
/// Has a file named and writes the current model to it. Waits for Enter, unless no file was named.
void export_loaded_kor_model();
/// The same, by the name that the menus of other modules call.
void KORExportCurrentModelInteractive();

} // namespace kor
