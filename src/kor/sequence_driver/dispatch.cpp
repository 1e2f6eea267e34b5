// Readiness of the current model and the choice of its family.
#include "kor/sequence_driver.h"

#include "kor/runtime_state.h"
#include "kor/spatial_grid.h"
#include "korpaths.h"
#include "korplatform.h"
#include "modelfiles.h"
#include "sectors.h"
#include "sequencetypes.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace kor {

namespace {

/// What a run needs first, or nullptr.
const char* what_is_missing() {
    const RuntimeState& s = g_runtime;
    if (s.Nspins < 1 || !s.systemset) {
        return "No spin system is currently prepared.\nImport or define a model first.";
    }
    if (s.sequencetype < 1) {
        return "No sequence family is currently selected.\n"
               "Choose a sequence family and define at least one sector first.";
    }
    if (s.nos < 1 || !s.sectorset) {
        return "No pulse sequence is currently prepared.\n"
               "Compose or import a model with at least one sector first.";
    }
    return nullptr;
}

/// Whether the model is spatially resolved with more voxels than can be counted, which has been said.
bool has_too_many_voxels() {
    int voxels;
    return g_runtime.sequencetype == FAMILY_SPATIAL && !count_voxels(&voxels);
}

/// Whether the result would take the place of a waveform of its own sequence; said on standard error.
bool result_replaces_a_waveform() {
    const char* result = g_runtime.resultflnm;
    const int sector = sector_of_waveform_file(result);
    if (sector > 0) {
        std::fprintf(stderr, "%s: the result file is the waveform file of sector %d\n", result, sector);
    }
    return sector > 0;
}

constexpr const char* scratch_names[] = {"dm.bin", "store", "korsign.bin", "spectra.bin"};

/// An earlier run's files must not be taken for this run's; false, with a message, when one stays.
bool delete_scratch_files() {
    for (const char* name : scratch_names) {
        const int error = platform_remove(name);
        if (error != 0 && file_exists(name)) {
            std::fprintf(stderr, "%s: an earlier file cannot be deleted: %s\n", name, std::strerror(error));
            return false;
        }
    }
    return true;
}

void run_spatial_family() {
    const RuntimeState& s = g_runtime;
    if (s.ndx > 0 && s.ndy > 0 && s.ndz > 0 && s.offsetset) {
        inform("Running current prepared spatially resolved model...\n");
        SimulateLoadedPulseSequence();
        return;
    }
    std::puts("The current model is spatially resolved, but the spatial grid\n"
              "is not fully defined yet.\n"
              "Define the spatial simulation domain first.");
}

} // namespace

bool scratch_replaces_model_files() {
    return std::any_of(std::begin(scratch_names), std::end(scratch_names), replaces_model_files) ||
           replaces_model_files("sort.bin");
}

void RunCurrentPreparedModel() {
    if (const char* missing = what_is_missing()) {
        std::puts(missing);
        return;
    }
    if (has_too_many_voxels() || result_replaces_a_waveform() ||
        replaces_definition_file(g_runtime.resultflnm) || scratch_replaces_model_files() ||
        !delete_scratch_files()) {
        return;
    }
    if (g_runtime.sequencetype == FAMILY_SPATIAL) {
        run_spatial_family();
    } else if (g_runtime.sequencetype == FAMILY_NMR) {
        inform("Running current prepared 1D / 2D NMR model...\n");
        SimulateLoaded2DPulseSequence();
    } else {
        std::printf("Unknown sequence type (%d).\n", g_runtime.sequencetype);
        std::puts("Choose a valid sequence family and verify the current model.");
    }
}

void KORRunCurrentPreparedModel() {
    RunCurrentPreparedModel();
}

void KOR_RunCurrentPreparedModel() {
    RunCurrentPreparedModel();
}

} // namespace kor
