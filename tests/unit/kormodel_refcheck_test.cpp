#include "kormodel_refcheck.h"

#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "kor/snapshot.h"
#include "kor/spin_system.h"
#include "korpaths.h"
#include "support/console_script.h"
#include "support/model_fixtures.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>

using namespace kor;
using namespace kor_test;
namespace fs = std::filesystem;

namespace {

// What one check returned and printed.
struct CheckOutcome {
    bool ok;
    std::string out;
};

CheckOutcome played_check(const std::function<bool()>& check) {
    bool ok = false;
    const ConsoleOutput printed = play_console("", [&] { ok = check(); });
    return {ok, printed.out};
}

std::string executable_folder() {
    char folder[KOR_PATH_SIZE];
    EXPECT_EQ(KOR_GetExecutableDir(folder, sizeof folder), 1);
    return with_slashes(folder);
}

// The split case passes only in an executable that lies in a folder named build; a test program need not.
bool split_case_can_pass() {
    return (executable_folder() + "/runtime/results").find("build/runtime/results") != std::string::npos;
}

std::string split_line() {
    if (split_case_can_pass())
        return "PASS          split-composition-reference\n";
    return "FAIL split     relative result_file did not resolve under build runtime results: " +
           executable_folder() + "/runtime/results/split-composition-result.bin\n";
}

const char spin_lines[] = "PASS          spin-operator-reference\n"
                          "PASS          hamiltonian-reference\n"
                          "PASS          weak-two-spin-spectrum-reference\n";
const char* const last_run_files[] = {"dm.bin", "store", "korsign.bin", "spectra.bin"};
const char malformed_lines[] = "PASS          malformed-duplicate-key\n"
                               "PASS          malformed-invalid-sequence-type\n";

std::string whole_report() {
    return spin_lines + std::string("PASS          spatial-gradient-reference\n") + split_line() +
           malformed_lines +
           (split_case_can_pass() ? "All kormodel smoke/reference checks passed.\n"
                                  : "One or more kormodel smoke/reference checks failed.\n");
}

CMatrix& fresh_matrix() {
    static CMatrix matrix;
    CMatZero(4, matrix);
    return matrix;
}

// The result file that the spatial case computes, as bytes.
std::string computed_spatial_result() {
    EXPECT_TRUE(played_check(check_spatial_gradient_case).ok);
    return read_file("kor-refcheck-work/spatial-gradient/models/spatial-gradient-result.bin");
}

// A system of that many spins 1/2 in which no two values are alike, with its operators.
void define_every_value(int spins) {
    RuntimeState& state = g_runtime;
    define_spins(std::vector<double>(static_cast<std::size_t>(spins), 0.0));
    state.Jcount = spins * (spins - 1) / 2;
    for (int i = 1, pair = 1; i <= spins; ++i) {
        state.relspinamp[i] = 0.5 + 0.25 * i;
        state.resofreqs[i] = 13.0 * i - 40.0;
        for (int j = i + 1; j <= spins; ++j, ++pair)
            state.couplings[pair] = state.jc[i][j] = state.jc[j][i] = 1.5 + pair;
    }
    state.systemset = 1;
    KOR_SetSmokeCheckMode(1);
    KOR_RebuildSpinSystemFromPulseSequenceGlobals();
    KOR_SetSmokeCheckMode(0);
}

template <class T> bool same_bytes(const T& a, const T& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool same_leading_block(const CMatrix& a, const CMatrix& b) {
    for (int i = 1; i <= g_runtime.n; ++i)
        for (int j = 1; j <= g_runtime.n; ++j)
            if (a[i][j][1] != b[i][j][1] || a[i][j][2] != b[i][j][2])
                return false;
    return true;
}

CheckOutcome check_result_bytes(const std::string& bytes, bool* has_center) {
    static CMatrix center;
    write_file("result.bin", bytes);
    return played_check([&] { return CheckSpatialGradientResultFile("result.bin", &center, has_center); });
}

} // namespace

TEST(ApproxEqual, TheToleranceIsInclusiveAndNaNIsNeverEqual) {
    EXPECT_TRUE(approx_equal(1.5, 1.0, 0.5));
    EXPECT_TRUE(approx_equal(1.0, 1.5, 0.5));
    EXPECT_FALSE(approx_equal(std::nextafter(1.5, 2.0), 1.0, 0.5));
    EXPECT_TRUE(approx_equal(-3.0, -3.0, 0.0));
    EXPECT_FALSE(approx_equal(std::nan(""), 1.0, 1e300));
    EXPECT_FALSE(approx_equal(1.0, std::nan(""), 1e300));
}

TEST(CheckScalar, PrintsTheDeviationWithSeventeenDigits) {
    CheckOutcome outcome = played_check([] { return check_scalar("spinop", "some value", 0.1, 0.25, 1e-3); });
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out, "FAIL spinop    some value : got 0.10000000000000001 expected 0.25\n");
    outcome = played_check([] { return check_scalar("spinop", "some value", 0.1, 0.1001, 1e-3); });
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.out, "");
}

TEST(CheckCmatEntry, ReportsRealAndImaginaryPartSeparately) {
    CMatrix& matrix = fresh_matrix();
    matrix[2][3] = {{0, 1.5, -2.5}};
    EXPECT_TRUE(
        played_check([&] { return check_cmat_entry("hamilton", "H", matrix, 2, 3, 1.5, -2.5, 0.0); }).ok);
    const CheckOutcome outcome =
        played_check([&] { return check_cmat_entry("hamilton", "H", matrix, 2, 3, 1, 0, 0.25); });
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out, "FAIL hamilton  H[2,3].re : got 1.5 expected 1\n"
                           "FAIL hamilton  H[2,3].im : got -2.5 expected 0\n");
    EXPECT_FALSE(
        played_check([&] { return check_cmat_entry("hamilton", "H", matrix, 2, 3, 1.5, 0, 0.25); }).ok);
    EXPECT_FALSE(
        played_check([&] { return check_cmat_entry("hamilton", "H", matrix, 2, 3, 0, -2.5, 0.25); }).ok);
}

TEST(CheckCmatZeroExcept, ListsEveryElementThatShouldBeZero) {
    CMatrix& matrix = fresh_matrix();
    matrix[1][2][1] = 7.0;
    matrix[3][1][2] = 1.0;
    matrix[2][2][1] = -0.5;
    matrix[4][4][1] = 100.0;
    const MatrixCell cells[] = {{1, 2}, {2, 2}};
    EXPECT_TRUE(played_check([&] { return check_cmat_zero_except("t", "M", matrix, 2, cells, 2, 0.0); }).ok);
    const CheckOutcome outcome =
        played_check([&] { return check_cmat_zero_except("t", "M", matrix, 3, cells, 1, 1e-3); });
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out, "FAIL t         M[2,2].re : got -0.5 expected 0\n"
                           "FAIL t         M[3,1].im : got 1 expected 0\n");
}

TEST(ConfigureTwoSpinHalfSystem, ReplacesTheSpinSystemAndItsCouplings) {
    define_spins({1.0, 2.0, 3.0}, 99.0);
    configure_two_spin_half_system(100.0, -40.0, 12.0, 2);
    EXPECT_EQ(g_runtime.Nspins, 2);
    EXPECT_EQ(g_runtime.n, 4);
    EXPECT_EQ(g_runtime.Jexact, 2);
    EXPECT_EQ(g_runtime.Jcount, 1);
    EXPECT_EQ(g_runtime.quantnum[3], 0);
    EXPECT_EQ(g_runtime.resofreqs[3], 0.0);
    EXPECT_EQ(g_runtime.jc[1][2], 12.0);
    EXPECT_NEAR(g_runtime.Icoup[2][3][1], 12.0 * 3.141592653589793, 1e-12);
    EXPECT_EQ(KOR_GetSmokeCheckMode(), 0);
}

TEST(ConfigureTwoSpinHalfSystem, PrintsNothing) {
    EXPECT_EQ(played_check([] {
                  configure_two_spin_half_system(1.0, 2.0, 3.0, 1);
                  return true;
              }).out,
              "");
}

TEST(ReferenceCases, TheSpinCasesPass) {
    CheckOutcome outcome = played_check(check_spin_operator_case);
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.out, "PASS          spin-operator-reference\n");
    outcome = played_check(check_hamiltonian_case);
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.out, "PASS          hamiltonian-reference\n");
    outcome = played_check(check_weak_spectrum_case);
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.out, "PASS          weak-two-spin-spectrum-reference\n");
}

TEST(ReferenceCases, TheSpatialCasePassesAndLeavesItsFiles) {
    TempTree tree;
    const CheckOutcome outcome = played_check(check_spatial_gradient_case);
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.out, "PASS          spatial-gradient-reference\n");
    const fs::path root = "kor-refcheck-work/spatial-gradient";
    EXPECT_TRUE(fs::exists(root / "models/case.kormodel"));
    EXPECT_EQ(read_file(root / "rf-output/wave1-excitation"),
              bytes_of<double>({0.5 * 3.141592653589793 / 1e-5, 0, 2000 * 2 * 3.141592653589793, 0, 0}));
    EXPECT_EQ(fs::file_size(root / "models/spatial-gradient-result.bin"), 12u + 5u * 16u * 16u);
    EXPECT_EQ(KOR_GetSmokeCheckMode(), 0);
}

TEST(ReferenceCases, AWorkingDirectoryWithBlanksInItsNameIsFine) {
    TempTree tree;
    fs::create_directory("my own folder");
    fs::current_path("my own folder");
    for (const auto check : {check_spatial_gradient_case, check_malformed_model_cases}) {
        const CheckOutcome outcome = played_check(check);
        EXPECT_TRUE(outcome.ok) << outcome.out;
    }
    fs::current_path("..");
}

TEST(ReferenceCases, TheSplitCaseLooksForResultsUnderBuild) {
    TempTree tree;
    const CheckOutcome outcome = played_check(check_split_composition_case);
    EXPECT_EQ(outcome.ok, split_case_can_pass());
    EXPECT_EQ(outcome.out, split_line());
}

TEST(ReferenceCases, TheMalformedModelsAreRefused) {
    TempTree tree;
    const CheckOutcome outcome = played_check(check_malformed_model_cases);
    EXPECT_TRUE(outcome.ok);
    EXPECT_EQ(outcome.out, malformed_lines);
    EXPECT_EQ(read_file("kor-refcheck-work/malformed-models/sequences/malformed/waveforms/dummy.bin"),
              std::string(1, '\0'));
}

TEST(BuildSpatialGradientReferenceCase, FillsTheThreeRecords) {
    static KORSpinSystemDef spin;
    static KORPulseSequenceDef seq;
    static KORRunConfig cfg;
    BuildSpatialGradientReferenceCase("pulse", "result", &spin, &seq, &cfg);
    char message[KOR_MESSAGE_SIZE] = "";
    EXPECT_EQ(KORModel_ValidateAll(&spin, &seq, &cfg, message, sizeof message), KOR_MODEL_OK) << message;
    EXPECT_EQ(spin.nspins, 2);
    EXPECT_EQ(spin.resonance_offsets_hz[2], -40.0);
    EXPECT_EQ(spin.j_hz[2][1], 12.0);
    EXPECT_EQ(spin.coupling_mode, 1);
    EXPECT_EQ(seq.sequence_type, 1);
    EXPECT_EQ(seq.sector_count, 1);
    EXPECT_EQ(seq.sectors[1].total_duration_s, 1e-5);
    EXPECT_STREQ(seq.sectors[1].pulse_filename, "pulse");
    EXPECT_STREQ(seq.sectors[1].remark, "spatial gradient reference sector");
    EXPECT_EQ(cfg.ndx, 5);
    EXPECT_EQ(cfg.ndy * cfg.ndz, 1);
    EXPECT_EQ(cfg.x0_cm, -10.0);
    EXPECT_EQ(cfg.dx_cm, 5.0);
    EXPECT_STREQ(cfg.model_name, "spatial-gradient-reference");
    EXPECT_STREQ(cfg.result_filename, "result");
}

TEST(CheckSpatialGradientResultFile, NamesAFileThatCannotBeOpened) {
    TempTree tree;
    bool has_center = true;
    const CheckOutcome outcome = played_check(
        [&] { return CheckSpatialGradientResultFile("missing.bin", &fresh_matrix(), &has_center); });
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out, "FAIL spatgrad  could not open result file: missing.bin\n");
    EXPECT_FALSE(has_center);
}

TEST(CheckSpatialGradientResultFile, RefusesAnotherHeader) {
    TempTree tree;
    bool has_center = true;
    CheckOutcome outcome = check_result_bytes("short", &has_center);
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out, "FAIL spatgrad  could not read result header\n");
    outcome = check_result_bytes(bytes_of<int>({1, 4, 5}), &has_center);
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out, "FAIL spatgrad  header mismatch: got type=1 n=4 ndw=5 expected 0 4 5\n");
    outcome = check_result_bytes(bytes_of<int>({0, 2, -7}), &has_center);
    EXPECT_EQ(outcome.out, "FAIL spatgrad  header mismatch: got type=0 n=2 ndw=-7 expected 0 4 5\n");
    EXPECT_FALSE(has_center);
}

TEST(CheckSpatialGradientResultFile, NamesTheRowWhereTheFileEndsAndTrailingBytes) {
    TempTree tree;
    const std::string good = computed_spatial_result();
    bool has_center = true;
    EXPECT_TRUE(check_result_bytes(good, &has_center).ok);
    EXPECT_TRUE(has_center);

    constexpr std::size_t row = 64, matrix = 4 * row;
    CheckOutcome outcome = check_result_bytes(good.substr(0, 12 + matrix + 2 * row + 8), &has_center);
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out, "FAIL spatgrad  could not read voxel 2 row 3\n");
    EXPECT_FALSE(has_center);

    outcome = check_result_bytes(good.substr(0, 12 + 3 * matrix), &has_center);
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out, "FAIL spatgrad  could not read voxel 4 row 1\n");
    EXPECT_TRUE(has_center);

    outcome = check_result_bytes(good + "x", &has_center);
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out, "FAIL spatgrad  result file has trailing bytes\n");
}

TEST(CheckSpatialGradientResultFile, ListsEveryDeviation) {
    TempTree tree;
    std::string bytes = computed_spatial_result();
    std::vector<double> values = reals_behind_header(bytes);
    values[0] += 0.25;       // voxel 1, element (1, 1), real part
    values[4 * 32 + 3] += 1; // voxel 5, element (1, 2), imaginary part
    bool has_center = false;
    const CheckOutcome outcome =
        check_result_bytes(bytes.substr(0, 12) + bytes_of<double>(values), &has_center);
    EXPECT_FALSE(outcome.ok);
    std::vector<std::string> labels;
    std::size_t start = 0;
    for (std::size_t end; (end = outcome.out.find('\n', start)) != std::string::npos; start = end + 1)
        labels.push_back(outcome.out.substr(start, outcome.out.find(" : got", start) - start));
    EXPECT_EQ(labels, (std::vector<std::string>{"FAIL spatgrad  trace.re", "FAIL spatgrad  frobenius",
                                                "FAIL spatgrad  rho voxel1[1,1].re",
                                                "FAIL spatgrad  hermitian.maxerr", "FAIL spatgrad  frobenius",
                                                "FAIL spatgrad  rho voxel5[1,2].im"}));
    EXPECT_TRUE(has_center);
}

TEST(CheckCenterStateSpectrumEqualAmplitudes, EmptyLinesAreMissing) {
    configure_two_spin_half_system(100.0, -40.0, 12.0, 1);
    CMatAdd(4, g_runtime.Izee, g_runtime.Icoup, g_runtime.Istat);
    const CheckOutcome outcome =
        played_check([] { return CheckCenterStateSpectrumEqualAmplitudes(fresh_matrix()); });
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out, "FAIL spatgrad  missing center-state line amplitude at 34 Hz\n"
                           "FAIL spatgrad  missing center-state line amplitude at 46 Hz\n"
                           "FAIL spatgrad  missing center-state line amplitude at 94 Hz\n"
                           "FAIL spatgrad  missing center-state line amplitude at 106 Hz\n");
}

// Spin 1 (100 Hz) gives the lines at 94 and 106 Hz, spin 2 (-40 Hz) those at 34 and 46 Hz.
TEST(CheckCenterStateSpectrumEqualAmplitudes, AHalfExcitedSpinIsUnequal) {
    configure_two_spin_half_system(100.0, -40.0, 12.0, 1);
    CMatAdd(4, g_runtime.Izee, g_runtime.Icoup, g_runtime.Istat);
    EXPECT_TRUE(played_check([] { return CheckCenterStateSpectrumEqualAmplitudes(g_runtime.Iytot); }).ok);

    CMatrix& rho = fresh_matrix();
    CopyCMatrix(4, g_runtime.Iytot, rho);
    for (auto [i, j] : {std::pair{1, 3}, {3, 1}, {2, 4}, {4, 2}})
        rho[i][j][2] *= 0.5;
    const CheckOutcome outcome = played_check([&] { return CheckCenterStateSpectrumEqualAmplitudes(rho); });
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out, "FAIL spatgrad  equal line amplitude : got 0.125 expected 0.25\n"
                           "FAIL spatgrad  equal line amplitude : got 0.125 expected 0.25\n");
}

TEST(KORModelRunReferenceChecks, PrintsEveryCaseAndTheVerdict) {
    TempTree tree;
    const CheckOutcome outcome = played_check([] { return KORModel_RunReferenceChecks() != 0; });
    EXPECT_EQ(outcome.out, whole_report());
    EXPECT_EQ(outcome.ok, split_case_can_pass());
}

TEST(KORModelRunReferenceChecks, ASecondRunPrintsTheSame) {
    TempTree tree;
    const CheckOutcome first = played_check([] { return KORModel_RunReferenceChecks() != 0; });
    const std::string result =
        read_file("kor-refcheck-work/spatial-gradient/models/spatial-gradient-result.bin");
    const CheckOutcome second = played_check([] { return KORModel_RunReferenceChecks() != 0; });
    EXPECT_EQ(first.out, second.out);
    EXPECT_EQ(first.ok, second.ok);
    EXPECT_EQ(read_file("kor-refcheck-work/spatial-gradient/models/spatial-gradient-result.bin"), result);
}

TEST(KORModelRunReferenceChecks, LeavesTheModelAsItWas) {
    TempTree tree;
    define_spins({11.0, -7.5, 3.25}, 4.0);
    g_runtime.systemset = 1;
    g_runtime.sequencetype = 2;
    g_runtime.nos = 1;
    g_runtime.noti[1] = 17;
    g_runtime.sectdur[1] = 0.5;
    std::strcpy(g_runtime.fnames[1], "pulse.bin");
    std::strcpy(g_runtime.remarks[1], "a remark");
    std::strcpy(g_runtime.resultflnm, "result.bin");
    auto before = std::make_unique<KORLegacySnapshot>();
    auto after = std::make_unique<KORLegacySnapshot>();
    CaptureLegacySnapshot(before.get());
    EXPECT_EQ(played_check([] { return KORModel_RunReferenceChecks() != 0; }).out, whole_report());
    CaptureLegacySnapshot(after.get());
    EXPECT_EQ(std::memcmp(before.get(), after.get(), sizeof *before), 0);
    EXPECT_EQ(g_runtime.n, 8);
    EXPECT_NEAR(g_runtime.Izee[1][1][1], 3.141592653589793 * (11.0 - 7.5 + 3.25), 1e-12);
    EXPECT_NEAR(g_runtime.Icoup[1][1][1], 3.141592653589793 * 4.0 / 2.0, 1e-12);
}

// More spins than the composer's six come from model files.
TEST(KORModelRunReferenceChecks, LeavesModelsOfSevenAndEightSpinsAsTheyWere) {
    for (const int spins : {7, 8}) {
        SCOPED_TRACE(spins);
        TempTree tree;
        define_every_value(spins);
        auto before = std::make_unique<RuntimeState>(g_runtime);
        EXPECT_EQ(played_check([] { return KORModel_RunReferenceChecks() != 0; }).out, whole_report());
        EXPECT_EQ(g_runtime.n, 1 << spins);
        EXPECT_EQ(g_runtime.Nspins, spins);
        EXPECT_TRUE(same_bytes(g_runtime.quantnum, before->quantnum));
        EXPECT_TRUE(same_bytes(g_runtime.relspinamp, before->relspinamp));
        EXPECT_TRUE(same_bytes(g_runtime.resofreqs, before->resofreqs));
        EXPECT_TRUE(same_bytes(g_runtime.couplings, before->couplings));
        EXPECT_TRUE(same_bytes(g_runtime.jc, before->jc));
        EXPECT_TRUE(same_bytes(g_runtime.Ilist, before->Ilist));
        EXPECT_TRUE(same_leading_block(g_runtime.Izee, before->Izee));
        EXPECT_TRUE(same_leading_block(g_runtime.Icoup, before->Icoup));
        EXPECT_TRUE(same_leading_block(g_runtime.Ixtot, before->Ixtot));
        EXPECT_TRUE(same_leading_block(g_runtime.densmat, before->densmat));
    }
}

TEST(KORModelRunReferenceChecks, LeavesTheFilesOfTheLastRunAsTheyWere) {
    for (const bool there : {true, false})
        for (const bool case_fails : {false, true}) {
            TempTree tree;
            if (there)
                for (const char* name : last_run_files)
                    write_file(name, std::string("the bytes of ") + name);
            if (case_fails)
                fs::create_directories("kor-refcheck-work/spatial-gradient/dm.bin");
            const std::string report = played_check([] { return KORModel_RunReferenceChecks() != 0; }).out;
            EXPECT_EQ(report.find("FAIL spatgrad  result file was not created: ") != std::string::npos,
                      case_fails);
            EXPECT_TRUE(fs::equivalent(fs::current_path(), tree.root()));
            for (const char* name : last_run_files) {
                EXPECT_EQ(fs::exists(name), there) << name;
                EXPECT_EQ(there ? read_file(name) : "", there ? std::string("the bytes of ") + name : "");
            }
        }
}

TEST(KORModelRunReferenceChecks, AnUnusableSpatialFolderFailsThatCaseAlone) {
    TempTree tree;
    fs::create_directory("kor-refcheck-work");
    write_file("kor-refcheck-work/spatial-gradient", "a file where the folder should be");
    const CheckOutcome outcome = played_check([] { return KORModel_RunReferenceChecks() != 0; });
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out,
              spin_lines + std::string("FAIL spatgrad  could not create reference directories\n") +
                  split_line() + malformed_lines + "One or more kormodel smoke/reference checks failed.\n");
}

// One thing in the way of each fixture: a folder where a file should be written, or a file for a folder.
TEST(ReferenceCases, EachObstacleHasItsOwnLine) {
    struct Obstacle {
        bool (*check)();
        const char* path; // ends in a slash: a folder stands there, else a file
        const char* line;
    };
    const Obstacle obstacles[] = {
        {check_spatial_gradient_case, "spatial-gradient/rf-output",
         "FAIL spatgrad  could not write pulse fixture\n"},
        {check_spatial_gradient_case, "spatial-gradient/rf-output/wave1-excitation/",
         "FAIL spatgrad  could not write pulse fixture\n"},
        {check_spatial_gradient_case, "spatial-gradient/models/case.kormodel/",
         "FAIL spatgrad  save failed: i/o error (could not open "
         "'kor-refcheck-work/spatial-gradient/models/case.kormodel' for writing)\n"},
        {check_split_composition_case, "split-composition",
         "FAIL split     could not create reference directories\n"},
        {check_split_composition_case,
         "split-composition/sequences/test-gradient/waveforms/wave1-excitation/",
         "FAIL split     could not write pulse fixture\n"},
        {check_split_composition_case, "split-composition/spin-systems/test-two-spin.korspin/",
         "FAIL split     could not write spin-system fixture\n"},
        {check_split_composition_case, "split-composition/sequences/test-gradient/test-gradient.korseq/",
         "FAIL split     could not write sequence fixture\n"},
        {check_split_composition_case, "split-composition/models/case.kormodel/",
         "FAIL split     could not write model fixture\n"},
        {check_malformed_model_cases, "malformed-models",
         "FAIL malformed : could not create malformed-models directory\n"},
        {check_malformed_model_cases, "malformed-models/sequences/malformed/waveforms/dummy.bin/",
         "FAIL malformed : could not create dummy pulse file\n"},
        {check_malformed_model_cases, "malformed-models/spin-systems/malformed.korspin/",
         "FAIL malformed : could not create malformed.korspin\n"},
        {check_malformed_model_cases, "malformed-models/sequences/malformed/valid.korseq/",
         "FAIL malformed : could not create valid.korseq\n"},
        {check_malformed_model_cases, "malformed-models/duplicate-sequence-type.kormodel/",
         "FAIL malformed : could not create duplicate-sequence-type.kormodel\n"},
        {check_malformed_model_cases, "malformed-models/sequences/malformed/invalid.korseq/",
         "PASS          malformed-duplicate-key\nFAIL malformed : could not create invalid.korseq\n"},
        {check_malformed_model_cases, "malformed-models/invalid-sequence-type.kormodel/",
         "PASS          malformed-duplicate-key\n"
         "FAIL malformed : could not create invalid-sequence-type.kormodel\n"},
    };
    for (const Obstacle& obstacle : obstacles) {
        TempTree tree;
        const std::string path = "kor-refcheck-work/" + std::string(obstacle.path);
        if (path.back() == '/') {
            fs::create_directories(path);
        } else {
            fs::create_directories(fs::path(path).parent_path());
            write_file(path, "in the way");
        }
        const CheckOutcome outcome = played_check(obstacle.check);
        EXPECT_FALSE(outcome.ok) << path;
        EXPECT_EQ(outcome.out, obstacle.line) << path;
    }
}

TEST(ReferenceCases, AnOldResultDoesNotStandInForAFailedRun) {
    TempTree tree;
    ASSERT_TRUE(played_check(check_spatial_gradient_case).ok);
    const std::string result = "kor-refcheck-work/spatial-gradient/models/spatial-gradient-result.bin";
    ASSERT_TRUE(fs::exists(result));
    const fs::path states = "kor-refcheck-work/spatial-gradient/dm.bin";
    ASSERT_TRUE(fs::remove(states));
    fs::create_directory(states); // in the way of the states of the next run
    const CheckOutcome outcome = played_check(check_spatial_gradient_case);
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.out, "FAIL spatgrad  result file was not created: " + tree.path(result) + "\n");
    EXPECT_FALSE(fs::exists(result));
}
