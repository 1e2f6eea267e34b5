#include "pulsesequencedefiner/sector_waveforms.h"

#include "consoleutil.h"
#include "kor/runtime_state.h"
#include "korcurrentmodel/loaded_model.h"
#include "kordatafileio.h"
#include "korpaths.h"
#include "korplatform.h"
#include "modelfiles.h"
#include "pulsesequencedefiner/prompts.h"
#include "pulsesequencedefiner_state.h"
#include "rfwaveformfile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kor {

namespace {

constexpr std::size_t leaf_size = KOR_SHORT_NAME_SIZE + sizeof "_2d_s20.bin";

bool folder_exists_or_made(const char* folder) {
    const int error = platform_make_dir(folder);
    return error == 0 || error == EEXIST;
}

/// Makes sure that the default folders exist; `rf_output` (KOR_PATH_SIZE) is where waveforms go.
bool prepare_default_folders(char* rf_output) {
    char models[KOR_PATH_SIZE];
    return KOR_GetDefaultModelsDir(models, sizeof models) &&
           KOR_GetDefaultRFOutputDir(rf_output, KOR_PATH_SIZE) && folder_exists_or_made(models) &&
           folder_exists_or_made(rf_output);
}

void build_default_leaf(int k, bool is_2d, char* leaf) {
    char short_name[KOR_SHORT_NAME_SIZE];
    const bool named = KOREnsureCurrentModelShortName(short_name, sizeof short_name) != 0;
    ps_build_default_waveform_leaf(leaf, leaf_size, named ? short_name : nullptr, is_2d, k);
}

/// Asks for the file name (KOR_PATH_SIZE characters); an empty answer takes the default.
int ask_waveform_file_name(const char* folder, const char* contents, const char* leaf, char* name) {
    std::printf("Default sector waveform directory : %s\n", folder);
    std::printf("Default sector waveform file name : %s\n", leaf);
    std::printf("This binary file stores %s samples for this sector.\n", contents);
    std::puts("Bare names are written to the default sector waveform directory.");
    std::printf("Press Enter to use the default name: %s\n", leaf);
    if (!read_trimmed_line_prompt("File name : ", name, KOR_PATH_SIZE))
        return 0;
    if (name[0] == '\0')
        std::snprintf(name, KOR_PATH_SIZE, "%s", leaf);
    return 1;
}

/// Turns the name into the path that fnames can hold; false with a message when it can not.
bool resolve_waveform_path(const char* name, char* path) {
    if (!ps_resolve_default_output_path(path, KOR_PATH_SIZE, name)) {
        std::puts("Could not resolve output path for the sector waveform file.");
        return false;
    }
    if (std::strlen(path) >= KOR_FILE_NAME_SIZE) {
        std::puts("Resolved output path is too long for internal storage:");
        std::printf("  %s\n", path);
        return false;
    }
    return true;
}

/// Whether every sample that the layout stores is a number; a refusal is told.
bool samples_are_finite(bool is_2d) {
    const RuntimeState& rt = g_runtime;
    const double* const arrays[] = {rt.xb, rt.yb, rt.gx, rt.gy, rt.gz};
    const int l = first_bad_sample(arrays, is_2d ? 2 : 5, rt.ap);
    if (l >= 0)
        std::printf("Sample %d of the waveform is not finite: these parameters make no pulse or gradient.\n",
                    l);
    return l < 0;
}

/// Asks for the file of sector k and has `write` write it to the path. `contents` names what is stored.
template <typename Write> int write_sector_waveform(int k, bool is_2d, const char* contents, Write write) {
    char folder[KOR_PATH_SIZE], leaf[leaf_size], name[KOR_PATH_SIZE], path[KOR_PATH_SIZE];
    char* stored = g_runtime.fnames[k];
    if (!prepare_default_folders(folder)) {
        std::puts("Could not create default output directories.");
        std::puts("Sector waveform file was not written.");
        stored[0] = '\0';
        return 1;
    }
    console_resume_after_end(); // of the gradients, that is not an answer to the questions here
    build_default_leaf(k, is_2d, leaf);
    if (!ask_waveform_file_name(folder, contents, leaf, name)) {
        if (!console_resume_after_end())
            return 0;
        // Who goes on at a terminal has a new time grid, and no file of it.
        stored[0] = '\0';
        std::puts("");
        std::puts("Sector waveform file was not written.");
        return 1;
    }
    stored[0] = '\0';
    if (!resolve_waveform_path(name, path))
        return 1;
    if (replaces_definition_file(path) || !samples_are_finite(is_2d) || !write(path)) {
        std::puts("Sector waveform file was not written.");
        return 1;
    }
    std::memcpy(stored, path, std::strlen(path) + 1);
    std::printf("Sector waveform file written to : %s\n", stored);
    tell_who_shares_the_waveform_file(k);
    return 1;
}

/// Whether there is a component: read whole from a file, or what a short file held.
bool read_component(const char* title, const int* ap, double* values) {
    console_resume_after_end(); // of the component before, that is not an answer to the questions here
    std::puts(title);
    if (RealArrayIn(ap, values))
        return true;
    return std::any_of(values, values + std::max(*ap, 0), [](double sample) { return sample != 0.0; });
}

} // namespace

void clear_sector_waveform() {
    RuntimeState& rt = g_runtime;
    for (double* samples : {rt.xb, rt.yb, rt.gx, rt.gy, rt.gz})
        std::fill_n(samples, KOR_MAX_RF_POINTS, 0.0);
}

PulseFromDisk ReadBxByPulse(const int* ap, double* xb, double* yb) {
    const int samples = std::max(*ap, 0);
    std::fill_n(xb, samples, 0.0);
    std::fill_n(yb, samples, 0.0);
    std::printf("\n\n");
    const bool x_given = read_component("File name Bx(t)", ap, xb);
    const bool y_given = read_component("File name By(t)", ap, yb);
    std::printf("\n\n");
    double factor = 1.0;
    if (!read_double_prompt("Multiplication factor : ", &factor))
        return PulseFromDisk::input_ended;
    for (int l = 0; l < samples; ++l) {
        xb[l] *= factor;
        yb[l] *= factor;
    }
    return x_given || y_given ? PulseFromDisk::defined : PulseFromDisk::none;
}

int ps_resolve_default_output_path(char* out, std::size_t cap, const char* name) {
    if (path_has_separator(name)) {
        const int length = std::snprintf(out, cap, "%s", name);
        return length >= 0 && static_cast<std::size_t>(length) < cap;
    }
    char folder[KOR_PATH_SIZE];
    return KOR_GetDefaultRFOutputDir(folder, sizeof folder) && KOR_BuildPath(out, cap, folder, name);
}

int ps_write_spatial_sector_waveform_file(int k) {
    return write_sector_waveform(k, false, "RF and gradient", [](const char* path) {
        const RuntimeState& rt = g_runtime;
        return BinArrayOut(&rt.ap, rt.xb, rt.yb, rt.gx, rt.gy, rt.gz, path);
    });
}

int ps_write_2d_sector_waveform_file(int k) {
    return write_sector_waveform(k, true, "RF", [](const char* path) {
        return BinArrayOut2D(g_runtime.ap, g_runtime.xb, g_runtime.yb, path);
    });
}

} // namespace kor
