#include "kormodel/save.h"

#include "kormodel/model_rules.h"
#include "kormodel/paths.h"
#include "kormodel/text_lines.h"
#include "korplatform.h"
#include "wholefile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace kor {

namespace {

/// Where the three files of a set lie, and how they name the files of the sectors (1..sector_count).
struct SetPaths {
    char name[KOR_FILE_NAME_SIZE];
    char spin_dir[KOR_PATH_SIZE];      // root/spin-systems
    char sequences_dir[KOR_PATH_SIZE]; // root/sequences
    char sequence_dir[KOR_PATH_SIZE];  // root/sequences/name
    char spin_leaf[KOR_FILE_NAME_SIZE];
    char sequence_leaf[KOR_FILE_NAME_SIZE];
    char spin_path[KOR_PATH_SIZE];
    char sequence_path[KOR_PATH_SIZE];
    char pulse_paths[KOR_MAX_SECTORS + 1][KOR_PATH_SIZE];
};

/// The folders that a save had to make, the outer ones first.
struct MadeFolders {
    const char* names[3];
    int count = 0;
};

/// A file being written, with what a failure needs to say. `file` is that of `whole`.
struct Output {
    WholeFile whole;
    const char* path;
    char* errbuf;
    std::size_t errbufsz;
    std::FILE* file = nullptr;
};

void name_set(const char* filename, const KORRunConfig& cfg, SetPaths& set) {
    if (cfg.model_name[0] != '\0')
        copy_truncated(cfg.model_name, set.name, sizeof set.name);
    else if (!kor_copy_basename_without_extension_local(filename, set.name, sizeof set.name))
        copy_truncated("model", set.name, sizeof set.name);
}

/// Whether a name taken as a path goes up: a model file could then have a set written anywhere.
bool goes_up(const char* name) {
    constexpr const char* separators = "/\\";
    for (name += std::strspn(name, separators); *name != '\0'; name += std::strspn(name, separators)) {
        const std::size_t length = std::strcspn(name, separators);
        if (length == 2 && name[0] == '.' && name[1] == '.')
            return true;
        name += length;
    }
    return false;
}

int derive_folders(const char* filename, SetPaths& set) {
    char root[KOR_PATH_SIZE];
    return !goes_up(set.name) && kor_set_root_folder(filename, root, sizeof root) &&
           kor_join_path(set.spin_dir, sizeof set.spin_dir, root, "spin-systems") &&
           kor_join_path(set.sequences_dir, sizeof set.sequences_dir, root, "sequences") &&
           kor_join_path(set.sequence_dir, sizeof set.sequence_dir, set.sequences_dir, set.name);
}

int append_extension(const char* name, const char* extension, char (&leaf)[KOR_FILE_NAME_SIZE]) {
    if (std::strlen(name) + std::strlen(extension) >= sizeof leaf)
        return 0;
    std::strcat(std::strcpy(leaf, name), extension);
    return 1;
}

int derive_files(SetPaths& set) {
    return append_extension(set.name, ".korspin", set.spin_leaf) &&
           append_extension(set.name, ".korseq", set.sequence_leaf) &&
           kor_join_path(set.spin_path, sizeof set.spin_path, set.spin_dir, set.spin_leaf) &&
           kor_join_path(set.sequence_path, sizeof set.sequence_path, set.sequence_dir, set.sequence_leaf);
}

KORModelStatus form_set(const char* filename, const KORRunConfig& cfg, SetPaths& set, char* errbuf,
                        std::size_t errbufsz) {
    name_set(filename, cfg, set);
    if (!derive_folders(filename, set))
        set_error(errbuf, errbufsz, "could not derive split output directories for '%s'", filename);
    else if (!platform_takes_name(set.name))
        set_error(errbuf, errbufsz, "model name '%s' cannot be a file name", set.name);
    else
        return KOR_MODEL_OK;
    return KOR_MODEL_ERR_IO;
}

const char* character_name(char c) {
    return c == '#' ? "'#'" : c == '\n' ? "a line end" : "white space";
}

/// KOR_MODEL_ERR_RANGE for a character (`found`, nullptr when there is none) that a line would lose.
KORModelStatus check_found(const char* found, const char* field, const char* text, char* errbuf,
                           std::size_t errbufsz) {
    if (!found)
        return KOR_MODEL_OK;
    set_error(errbuf, errbufsz, "%s cannot be saved with %s in it: %s", field, character_name(*found), text);
    return KOR_MODEL_ERR_RANGE;
}

KORModelStatus check_remark(const char* remark, int k, char* errbuf, std::size_t errbufsz) {
    char field[64];
    std::snprintf(field, sizeof field, "sector %d remark", k);
    return check_found(find_lost_in_text(remark), field, remark, errbuf, errbufsz);
}

/// Whether every text of the set but the paths of the sectors is read back as it is to be written.
KORModelStatus check_texts(const char* filename, const SetPaths& set, const KORPulseSequenceDef& seq,
                           const KORRunConfig& cfg, char* errbuf, std::size_t errbufsz) {
    KORModelStatus status =
        check_found(find_lost_in_text(set.name), "model_name", set.name, errbuf, errbufsz);
    for (int k = 1; status == KOR_MODEL_OK && k <= seq.sector_count; ++k)
        status = check_remark(seq.sectors[k].remark, k, errbuf, errbufsz);
    char result[KOR_PATH_SIZE];
    if (status != KOR_MODEL_OK ||
        !kor_make_portable_result_path(filename, cfg.result_filename, result, sizeof result))
        return status;
    return check_found(find_lost_in_path(result), "result_filename", result, errbuf, errbufsz);
}

KORModelStatus make_folders(SetPaths& set, MadeFolders& made, char* errbuf, std::size_t errbufsz) {
    for (const char* dir : {set.spin_dir, set.sequences_dir, set.sequence_dir}) {
        const int error = platform_make_dir(dir);
        if (error == 0) {
            made.names[made.count++] = dir;
        } else if (error != EEXIST) {
            set_error(errbuf, errbufsz, "could not create split output directories");
            return KOR_MODEL_ERR_IO;
        }
    }
    if (derive_files(set))
        return KOR_MODEL_OK;
    set_error(errbuf, errbufsz, "split output path is too long");
    return KOR_MODEL_ERR_IO;
}

void remove_folders(const MadeFolders& made) {
    for (int i = made.count; i > 0; --i)
        platform_remove_dir(made.names[i - 1]);
}

/// The sector paths of the set, checked as they are to be written. What a path leads to is seen from the
/// set's folders, which must be there.
KORModelStatus derive_pulse_paths(SetPaths& set, const KORPulseSequenceDef& seq, char* errbuf,
                                  std::size_t errbufsz) {
    KORModelStatus status = KOR_MODEL_OK;
    for (int k = 1; status == KOR_MODEL_OK && k <= seq.sector_count; ++k) {
        char(&path)[KOR_PATH_SIZE] = set.pulse_paths[k];
        if (!kor_make_portable_sector_pulse_path(set.sequence_path, seq.sectors[k].pulse_filename, path,
                                                 sizeof path)) {
            set_error(errbuf, errbufsz, "could not derive portable sector path for sector %d", k);
            return KOR_MODEL_ERR_IO;
        }
        char field[64];
        std::snprintf(field, sizeof field, "sector %d pulse_filename", k);
        status = check_found(find_lost_in_word(path), field, path, errbuf, errbufsz);
    }
    return status;
}

KORModelStatus open_output(Output& out) {
    const bool opened = open_whole_file(out.path, "w", out.whole);
    out.file = out.whole.file;
    if (opened)
        return KOR_MODEL_OK;
    set_error(out.errbuf, out.errbufsz, "could not open '%s' for writing", out.path);
    return KOR_MODEL_ERR_IO;
}

/// The file takes its place, unless a write failed on the way.
KORModelStatus close_output(Output& out) {
    if (keep_whole_file(out.whole))
        return KOR_MODEL_OK;
    set_error(out.errbuf, out.errbufsz, "failed while closing '%s'", out.path);
    return KOR_MODEL_ERR_IO;
}

void write_reals(std::FILE* file, const char* key, const double* values, int count) {
    std::fprintf(file, "%s:", key);
    for (int i = 1; i <= count; ++i)
        std::fprintf(file, " %.15g", values[i]);
    std::fprintf(file, "\n");
}

// A NaN is no zero and is written: reading it back shows it.
void write_couplings(std::FILE* file, const KORSpinSystemDef& spin) {
    for (int i = 1; i <= spin.nspins; ++i)
        for (int j = i + 1; j <= spin.nspins; ++j)
            if (!(spin.j_hz[i][j] == 0.0))
                std::fprintf(file, "jcoupling_hz: %d %d %.15g\n", i, j, spin.j_hz[i][j]);
}

KORModelStatus write_spin_file(const SetPaths& set, const KORSpinSystemDef& spin, char* errbuf,
                               std::size_t errbufsz) {
    Output out{{}, set.spin_path, errbuf, errbufsz};
    if (const KORModelStatus status = open_output(out); status != KOR_MODEL_OK)
        return status;
    std::fprintf(out.file, "format_version: %d\n", 1);
    std::fprintf(out.file, "spin_system_name: %s\n\n", set.name);
    std::fprintf(out.file, "nspins: %d\n", spin.nspins);
    std::fprintf(out.file, "spin_quantum_numbers:");
    for (int i = 1; i <= spin.nspins; ++i)
        std::fprintf(out.file, " %d", spin.spin_quantum_numbers[i]);
    std::fprintf(out.file, "\n");
    write_reals(out.file, "relative_intensities", spin.relative_intensities, spin.nspins);
    write_reals(out.file, "resonance_offsets_hz", spin.resonance_offsets_hz, spin.nspins);
    std::fprintf(out.file, "coupling_mode: %d\n", spin.coupling_mode);
    write_couplings(out.file, spin);
    return close_output(out);
}

void write_sector(std::FILE* file, const KORPulseSectorDef& sector, int k, const char* pulse_path) {
    std::fprintf(file, "sector_type: %d %d\n", k, sector.sector_type);
    std::fprintf(file, "sector_timepoints: %d %d\n", k, sector.number_of_timepoints);
    std::fprintf(file, "sector_evolpoints: %d %d\n", k, sector.number_of_evolpoints);
    std::fprintf(file, "sector_duration_s: %d %.15g\n", k, sector.total_duration_s);
    std::fprintf(file, "sector_pulsefile: %d %s\n", k, pulse_path);
    std::fprintf(file, "sector_statoff_hz: %d %.15g\n", k, sector.offset_frequency_hz);
    std::fprintf(file, "sector_remark: %d %s\n", k, sector.remark);
}

KORModelStatus write_sequence_file(const SetPaths& set, const KORPulseSequenceDef& seq, char* errbuf,
                                   std::size_t errbufsz) {
    Output out{{}, set.sequence_path, errbuf, errbufsz};
    if (const KORModelStatus status = open_output(out); status != KOR_MODEL_OK)
        return status;
    std::fprintf(out.file, "format_version: %d\n", 1);
    std::fprintf(out.file, "sequence_name: %s\n\n", set.name);
    std::fprintf(out.file, "sequence_type: %d\n", seq.sequence_type);
    std::fprintf(out.file, "number_of_sectors: %d\n", seq.sector_count);
    for (int k = 1; k <= seq.sector_count; ++k)
        write_sector(out.file, seq.sectors[k], k, set.pulse_paths[k]);
    return close_output(out);
}

KORModelStatus write_model_file(const char* filename, const SetPaths& set, const KORRunConfig& cfg,
                                char* errbuf, std::size_t errbufsz) {
    char result[KOR_PATH_SIZE];
    if (!kor_make_portable_result_path(filename, cfg.result_filename, result, sizeof result)) {
        set_error(errbuf, errbufsz, "could not derive portable result_file path");
        return KOR_MODEL_ERR_IO;
    }
    Output out{{}, filename, errbuf, errbufsz};
    if (const KORModelStatus status = open_output(out); status != KOR_MODEL_OK)
        return status;
    std::fprintf(out.file, "format_version: %d\n", 1);
    std::fprintf(out.file, "model_name: %s\n\n", set.name);
    std::fprintf(out.file, "spin_system_file: ../spin-systems/%s\n", set.spin_leaf);
    std::fprintf(out.file, "sequence_file: ../sequences/%s/%s\n\n", set.name, set.sequence_leaf);
    std::fprintf(out.file, "ndx: %d\nndy: %d\nndz: %d\n", cfg.ndx, cfg.ndy, cfg.ndz);
    std::fprintf(out.file, "x0_cm: %.15g\ny0_cm: %.15g\nz0_cm: %.15g\n", cfg.x0_cm, cfg.y0_cm, cfg.z0_cm);
    std::fprintf(out.file, "dx_cm: %.15g\ndy_cm: %.15g\ndz_cm: %.15g\n", cfg.dx_cm, cfg.dy_cm, cfg.dz_cm);
    std::fprintf(out.file, "result_file: %s\n", result);
    return close_output(out);
}

} // namespace

int saved_model_parts(const char* filename, const KORRunConfig* cfg, KORModelParts* parts) {
    SetPaths set;
    name_set(filename, *cfg, set);
    if (!derive_folders(filename, set) || !derive_files(set))
        return 0;
    copy_truncated(set.spin_path, parts->spin_system, sizeof parts->spin_system);
    copy_truncated(set.sequence_path, parts->sequence, sizeof parts->sequence);
    return 1;
}

KORModelStatus KORModel_SaveText(const char* filename, const KORSpinSystemDef* spin,
                                 const KORPulseSequenceDef* seq, const KORRunConfig* cfg, char* errbuf,
                                 std::size_t errbufsz) {
    if (!filename || !spin || !seq || !cfg) {
        set_error(errbuf, errbufsz, "save arguments must be non-null");
        return KOR_MODEL_ERR_NULLPTR;
    }
    KORModelStatus status = KORModel_ValidateAll(spin, seq, cfg, errbuf, errbufsz);
    SetPaths set;
    MadeFolders made;
    if (status == KOR_MODEL_OK)
        status = form_set(filename, *cfg, set, errbuf, errbufsz);
    if (status == KOR_MODEL_OK)
        status = check_texts(filename, set, *seq, *cfg, errbuf, errbufsz);
    if (status == KOR_MODEL_OK)
        status = make_folders(set, made, errbuf, errbufsz);
    if (status == KOR_MODEL_OK)
        status = derive_pulse_paths(set, *seq, errbuf, errbufsz);
    if (status == KOR_MODEL_ERR_RANGE)
        remove_folders(made);
    if (status == KOR_MODEL_OK)
        status = write_spin_file(set, *spin, errbuf, errbufsz);
    if (status == KOR_MODEL_OK)
        status = write_sequence_file(set, *seq, errbuf, errbufsz);
    if (status == KOR_MODEL_OK)
        status = write_model_file(filename, set, *cfg, errbuf, errbufsz);
    return status;
}

} // namespace kor
