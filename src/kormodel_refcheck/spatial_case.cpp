#include "kormodel_refcheck.h"

#include "binaryfilehandling.h"
#include "kor/runtime_state.h"
#include "kor/sequence_driver.h"
#include "kor/smoke_check_mode.h"
#include "kormodel/activation.h"
#include "kormodel/model_file.h"
#include "kormodel/paths.h"
#include "kormodel/save.h"
#include "korplatform.h"
#include "spinoperatorlib.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace kor {

namespace {

constexpr char tag[] = "spatgrad";
constexpr int states = 4;
constexpr int voxels = 5;
constexpr int center_voxel = 3;

// The folders and files of the case, from the working directory; the saved model also from the root of the
// case.
constexpr char model_from_root[] = "models/case.kormodel";
struct CasePaths {
    char working[KOR_PATH_SIZE]; // the working directory itself, absolute
    char root[KOR_PATH_SIZE];
    char models[KOR_PATH_SIZE];
    char rf_output[KOR_PATH_SIZE];
    char model_file[KOR_PATH_SIZE];
    char pulse_file[KOR_PATH_SIZE];
    char result_file[KOR_FILE_NAME_SIZE];
};

// The three records of a model.
struct ModelRecords {
    KORSpinSystemDef spin;
    KORPulseSequenceDef seq;
    KORRunConfig cfg;
};

bool build_folder_paths(CasePaths* paths) {
    return kor_join_path(paths->root, sizeof paths->root, "kor-refcheck-work", "spatial-gradient") &&
           kor_join_path(paths->models, sizeof paths->models, paths->root, "models") &&
           kor_join_path(paths->rf_output, sizeof paths->rf_output, paths->root, "rf-output");
}

bool create_folders(const CasePaths& paths) {
    return kor_ensure_dir("kor-refcheck-work") && kor_ensure_dir(paths.root) &&
           kor_ensure_dir(paths.models) && kor_ensure_dir(paths.rf_output);
}

// The result file needs its full path: a relative one would be looked for in the runtime results folder.
bool build_file_paths(CasePaths* paths) {
    char models[KOR_PATH_SIZE];
    return kor_join_path(paths->model_file, sizeof paths->model_file, paths->models, "case.kormodel") &&
           kor_join_path(paths->pulse_file, sizeof paths->pulse_file, paths->rf_output, "wave1-excitation") &&
           platform_current_dir(paths->working, sizeof paths->working) &&
           kor_join_path(models, sizeof models, paths->working, paths->models) &&
           kor_join_path(paths->result_file, sizeof paths->result_file, models,
                         "spatial-gradient-result.bin");
}

bool prepare_paths(CasePaths* paths) {
    if (!build_folder_paths(paths)) {
        std::printf("FAIL %-9s could not build reference paths\n", tag);
        return false;
    }
    if (!create_folders(*paths)) {
        std::printf("FAIL %-9s could not create reference directories\n", tag);
        return false;
    }
    if (!build_file_paths(paths)) {
        std::printf("FAIL %-9s could not build reference file paths\n", tag);
        return false;
    }
    return true;
}

bool save_case(const char* model_file, const ModelRecords& model) {
    char message[KOR_MESSAGE_SIZE] = "";
    const KORModelStatus status =
        KORModel_SaveText(model_file, &model.spin, &model.seq, &model.cfg, message, sizeof message);
    if (status == KOR_MODEL_OK)
        return true;
    std::printf("FAIL %-9s save failed: %s (%s)\n", tag, KORModelStatusString(status), message);
    return false;
}

bool load_case(const char* model_file, ModelRecords* model) {
    char message[KOR_MESSAGE_SIZE] = "";
    const KORModelStatus status =
        KORModel_LoadText(model_file, &model->spin, &model->seq, &model->cfg, message, sizeof message);
    if (status == KOR_MODEL_OK)
        return true;
    std::printf("FAIL %-9s load failed: %s (%s)\n", tag, KORModelStatusString(status), message);
    return false;
}

// Activates and runs the model without listings and progress.
bool run_quietly(const ModelRecords& model) {
    char message[KOR_MESSAGE_SIZE] = "";
    KOR_SetSmokeCheckMode(1);
    const KORModelStatus status =
        KORModel_ActivateInLegacyRuntime(&model.spin, &model.seq, &model.cfg, message, sizeof message);
    if (status == KOR_MODEL_OK)
        KOR_RunCurrentPreparedModel();
    KOR_SetSmokeCheckMode(0);
    if (status == KOR_MODEL_OK)
        return true;
    std::printf("FAIL %-9s activate failed: %s (%s)\n", tag, KORModelStatusString(status), message);
    return false;
}

// Loads and runs the saved model in the root of the case, and leaves its result file.
bool load_and_run(const CasePaths& paths, ModelRecords* model) {
    if (!load_case(model_from_root, model))
        return false;
    platform_remove(paths.result_file);
    platform_remove(model->cfg.result_filename);
    if (!run_quietly(*model))
        return false;
    if (kor_file_exists_local(model->cfg.result_filename))
        return true;
    std::printf("FAIL %-9s result file was not created: %s\n", tag, model->cfg.result_filename);
    return false;
}

bool change_folder(const char* folder) {
    const int error = platform_change_dir(folder);
    if (error != 0)
        std::printf("FAIL %-9s could not change to folder %s: %s\n", tag, folder, std::strerror(error));
    return error == 0;
}

// Back to the user's folder. Where the way is closed, the program stays: what it writes later lies there.
bool leave_root(const CasePaths& paths) {
    if (change_folder(paths.working))
        return true;
    char folder[KOR_PATH_SIZE];
    platform_current_dir(folder, sizeof folder);
    std::printf("FAIL %-9s the program goes on in %s: scratch files and names without a folder belong there "
                "now\n",
                tag, folder);
    return false;
}

// A run deletes the scratch files of the last one in its working directory and leaves its own: this one works
// in the root of the case, so that those of the user's last run stay.
bool run_in_root(const CasePaths& paths, ModelRecords* model) {
    if (!change_folder(paths.root))
        return false;
    const bool done = load_and_run(paths, model);
    return leave_root(paths) && done;
}

// From the records to the result file, whose name goes to result_path.
bool produce_result(const CasePaths& paths, char (&result_path)[KOR_FILE_NAME_SIZE]) {
    static ModelRecords model;
    // The saved sequence lies in sequences/<name>/, two folders below the root of the set. A path relative to
    // it holds wherever the program is installed, in a folder with blanks in its name too.
    BuildSpatialGradientReferenceCase("../../rf-output/wave1-excitation", paths.result_file, &model.spin,
                                      &model.seq, &model.cfg);
    if (!save_case(paths.model_file, model) || !run_in_root(paths, &model))
        return false;
    std::snprintf(result_path, sizeof result_path, "%s", model.cfg.result_filename);
    return true;
}

bool check_result_header(std::FILE* file) {
    int type = 0, n = 0, ndw = 0;
    if (ReadBinFileHeader_status(file, &type, &n, &ndw) != BINFH_OK) {
        std::printf("FAIL %-9s could not read result header\n", tag);
        return false;
    }
    if (type != 0 || n != states || ndw != voxels) {
        std::printf("FAIL %-9s header mismatch: got type=%d n=%d ndw=%d expected 0 4 5\n", tag, type, n, ndw);
        return false;
    }
    return true;
}

bool read_voxel(std::FILE* file, int voxel, CMatrix& rho) {
    for (int row = 1; row <= states; ++row) {
        if (read_cmatrix_row(file, states, rho, row))
            continue;
        std::printf("FAIL %-9s could not read voxel %d row %d\n", tag, voxel, row);
        return false;
    }
    return true;
}

double hermitian_error(const CMatrix& rho) {
    double largest = 0.0;
    for (int i = 1; i <= states; ++i)
        for (int j = 1; j <= states; ++j)
            largest =
                std::fmax(largest, std::hypot(rho[i][j][1] - rho[j][i][1], rho[i][j][2] + rho[j][i][2]));
    return largest;
}

double frobenius_norm(const CMatrix& rho) {
    double sum = 0.0;
    for (int i = 1; i <= states; ++i)
        for (int j = 1; j <= states; ++j)
            sum += rho[i][j][1] * rho[i][j][1] + rho[i][j][2] * rho[i][j][2];
    return std::sqrt(sum);
}

// What every rotation of Iz1 + Iz2 keeps.
bool check_invariants(const CMatrix& rho) {
    constexpr double tol = 1e-10;
    Complex2 trace;
    CalcTrace(states, rho, trace);
    bool ok = check_scalar(tag, "trace.re", trace[1], 0.0, tol);
    ok &= check_scalar(tag, "trace.im", trace[2], 0.0, tol);
    ok &= check_scalar(tag, "hermitian.maxerr", hermitian_error(rho), 0.0, tol);
    ok &= check_scalar(tag, "frobenius", frobenius_norm(rho), 1.4142135623730951, tol);
    return ok;
}

bool check_reference_elements(int voxel, const CMatrix& rho) {
    constexpr double tol = 1e-6;
    struct Reference {
        int voxel, row, column;
        double re, im;
    };
    constexpr Reference references[] = {{1, 1, 1, 0.12966277248639121, 0.0},
                                        {1, 1, 2, -0.34839592743525305, -0.3526177953414769},
                                        {1, 4, 4, -0.12976384399514077, 0.0},
                                        {3, 1, 1, 2.0850067718604043e-06, 0.0},
                                        {3, 4, 4, -1.9206179415411393e-06, 0.0},
                                        {5, 1, 1, 0.13050208511307385, 0.0},
                                        {5, 1, 2, 0.347538510681552, -0.3536064283699171},
                                        {5, 4, 4, -0.13040084707391453, 0.0}};
    char name[32];
    std::snprintf(name, sizeof name, "rho voxel%d", voxel);
    bool ok = true;
    for (const Reference& r : references)
        if (r.voxel == voxel)
            ok &= check_cmat_entry(tag, name, rho, r.row, r.column, r.re, r.im, tol);
    return ok;
}

// Returns whether all voxels could be read; *ok becomes false when a value differs.
bool check_voxels(std::FILE* file, CMatrix* center, bool* has_center, bool* ok) {
    static CMatrix rho;
    for (int voxel = 1; voxel <= voxels; ++voxel) {
        if (!read_voxel(file, voxel, rho))
            return false;
        *ok &= check_invariants(rho);
        *ok &= check_reference_elements(voxel, rho);
        if (voxel == center_voxel) {
            CopyCMatrix(states, rho, *center);
            *has_center = true;
        }
    }
    return true;
}

bool check_center_component(int spin, const char* name, const CMatrix& center) {
    static CMatrix iy;
    char label[32];
    Complex2 value;
    MakeMatrixIy(g_runtime.Ilist, g_runtime.ket, states, spin, iy);
    ExpectationValue(states, iy, center, value);
    std::snprintf(label, sizeof label, "%s.re", name);
    const bool re_ok = check_scalar(tag, label, value[1], 1.0, 1e-5);
    std::snprintf(label, sizeof label, "%s.im", name);
    const bool im_ok = check_scalar(tag, label, value[2], 0.0, 1e-10);
    return re_ok && im_ok;
}

// In the centre the gradient vanishes: the pulse turns both spins to +y.
bool check_center_magnetisation(const CMatrix& center, bool has_center) {
    if (!has_center) {
        std::printf("FAIL %-9s center voxel was not available for expectation check\n", tag);
        return false;
    }
    const bool first_ok = check_center_component(1, "center <Iy1>", center);
    const bool second_ok = check_center_component(2, "center <Iy2>", center);
    return first_ok && second_ok;
}

constexpr double line_hz[4] = {34.0, 46.0, 94.0, 106.0};

// Adds |Ixtot(i,j) rho(j,i)| of every transition i < j to the line that has its frequency.
void sum_line_amplitudes(const CMatrix& center, double (&sums)[4]) {
    constexpr double line_tolerance_hz = 0.05;
    for (int i = 1; i <= states; ++i)
        for (int j = i + 1; j <= states; ++j) {
            const double hz = std::fabs(g_runtime.Istat[j][j][1] - g_runtime.Istat[i][i][1]) / (2.0 * KOR_PI);
            const Complex2& a = g_runtime.Ixtot[i][j];
            const Complex2& b = center[j][i];
            const double amplitude = std::hypot(a[1] * b[1] - a[2] * b[2], a[1] * b[2] + a[2] * b[1]);
            for (int line = 0; line < 4; ++line)
                if (approx_equal(hz, line_hz[line], line_tolerance_hz))
                    sums[line] += amplitude;
        }
}

} // namespace

void BuildSpatialGradientReferenceCase(const char* pulse_path, const char* result_path,
                                       KORSpinSystemDef* spin, KORPulseSequenceDef* seq, KORRunConfig* cfg) {
    KORSpinSystemDef_Init(spin);
    spin->nspins = 2;
    spin->coupling_mode = 1;
    constexpr double offsets_hz[3] = {0.0, 100.0, -40.0};
    for (int i = 1; i <= 2; ++i) {
        spin->spin_quantum_numbers[i] = 1;
        spin->relative_intensities[i] = 1.0;
        spin->resonance_offsets_hz[i] = offsets_hz[i];
    }
    spin->j_hz[1][2] = spin->j_hz[2][1] = 12.0;

    KORPulseSequenceDef_Init(seq);
    seq->sequence_type = 1;
    seq->sector_count = 1;
    KORPulseSectorDef& sector = seq->sectors[1];
    sector.sector_type = 1;
    sector.number_of_timepoints = 1;
    sector.number_of_evolpoints = 1;
    sector.total_duration_s = 1e-5;
    std::snprintf(sector.pulse_filename, sizeof sector.pulse_filename, "%s", pulse_path);
    std::snprintf(sector.remark, sizeof sector.remark, "spatial gradient reference sector");

    KORRunConfig_Init(cfg);
    cfg->ndx = voxels;
    cfg->x0_cm = -10.0;
    cfg->dx_cm = 5.0;
    std::snprintf(cfg->result_filename, sizeof cfg->result_filename, "%s", result_path);
    std::snprintf(cfg->model_name, sizeof cfg->model_name, "spatial-gradient-reference");
}

bool CheckSpatialGradientResultFile(const char* path, CMatrix* center, bool* has_center) {
    *has_center = false;
    std::FILE* file = platform_open(path, "rb");
    if (!file) {
        std::printf("FAIL %-9s could not open result file: %s\n", tag, path);
        return false;
    }
    bool ok = true;
    const bool complete = check_result_header(file) && check_voxels(file, center, has_center, &ok);
    if (complete && std::fgetc(file) != EOF) {
        std::printf("FAIL %-9s result file has trailing bytes\n", tag);
        ok = false;
    }
    std::fclose(file);
    return complete && ok;
}

bool CheckCenterStateSpectrumEqualAmplitudes(const CMatrix& center) {
    double sums[4] = {};
    sum_line_amplitudes(center, sums);
    bool ok = true;
    for (int line = 0; line < 4; ++line)
        if (!(sums[line] > 1e-8)) {
            std::printf("FAIL %-9s missing center-state line amplitude at %.6g Hz\n", tag, line_hz[line]);
            ok = false;
        }
    for (int line = 1; line < 4; ++line)
        ok &= check_scalar(tag, "equal line amplitude", sums[line], sums[0], 5e-05);
    return ok;
}

bool check_spatial_gradient_case() {
    static CasePaths paths;
    static CMatrix center;
    char result_path[KOR_FILE_NAME_SIZE];
    if (!prepare_paths(&paths) || !write_refcheck_pulse(tag, paths.pulse_file) ||
        !produce_result(paths, result_path))
        return false;

    bool has_center = false;
    bool ok = CheckSpatialGradientResultFile(result_path, &center, &has_center);
    ok &= check_center_magnetisation(center, has_center);
    if (ok) {
        CMatAdd(states, g_runtime.Izee, g_runtime.Icoup, g_runtime.Istat);
        ok = CheckCenterStateSpectrumEqualAmplitudes(center);
    }
    if (ok)
        std::puts("PASS          spatial-gradient-reference");
    return ok;
}

} // namespace kor
