#include "modelfiles.h"

#include "korplatform.h"

#include <cstdio>

namespace kor {

namespace {

constexpr int no_sectors = 0;
WaveformNames g_waveforms = {nullptr, &no_sectors};

// Empty names are no files.
char g_model[KOR_PATH_SIZE], g_spin_system[KOR_PATH_SIZE], g_sequence[KOR_PATH_SIZE];

bool is_part(const char* output, const char* part, const char* kind) {
    if (!platform_same_file(output, part))
        return false;
    std::fprintf(stderr, "[KOR] The output file %s is the %s file of the loaded model.\n", output, kind);
    return true;
}

} // namespace

void remember_model_files(const char* model, const char* spin_system, const char* sequence) {
    std::snprintf(g_model, sizeof g_model, "%s", model);
    std::snprintf(g_spin_system, sizeof g_spin_system, "%s", spin_system);
    std::snprintf(g_sequence, sizeof g_sequence, "%s", sequence);
}

void forget_model_files() {
    remember_model_files("", "", "");
}

void follow_waveform_names(const WaveformNames& waveforms) {
    g_waveforms = waveforms;
}

int sector_of_waveform_file(const char* path) {
    for (int k = 1; k <= *g_waveforms.sectors; ++k)
        if (platform_same_file(path, g_waveforms.names[k]))
            return k;
    return 0;
}

void tell_who_shares_the_waveform_file(int k) {
    for (int other = 1; other <= *g_waveforms.sectors; ++other)
        if (other != k && platform_same_file(g_waveforms.names[other], g_waveforms.names[k]))
            std::printf("Sector %d reads the same file.\n", other);
}

bool replaces_definition_file(const char* output) {
    if (platform_same_file(output, g_model)) {
        std::fprintf(stderr, "[KOR] The output file %s is the model file.\n", output);
        return true;
    }
    return is_part(output, g_spin_system, "spin-system") || is_part(output, g_sequence, "sequence");
}

bool replaces_model_files(const char* output) {
    if (replaces_definition_file(output))
        return true;
    const int sector = sector_of_waveform_file(output);
    if (sector > 0)
        std::fprintf(stderr, "[KOR] The output file %s is the waveform file of sector %d.\n", output, sector);
    return sector > 0;
}

} // namespace kor
