#include "kormodel/sector_optimisation.h"
#include "modelfiles.h"

#include "kor/optimiser.h"
#include "kor/optimiser_dialogues.h"
#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "kor/spin_system.h"
#include "korplatform.h"
#include "rfwaveformfile.h"
#include "support/console_script.h"
#include "support/constants.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

namespace {

using kor::g_runtime;
using kor_test::ConsoleOutput;
using kor_test::play_console;
using kor_test::TempTree;
using kor_test::TWO_PI;

void set_text(char* out, std::size_t size, const std::string& text) {
    std::snprintf(out, size, "%s", text.c_str());
}

/// One spin 1/2 off resonance and a two-sector 1D sequence whose first sector holds a constant pulse of 64
/// samples in 4 ms, kept in the file "pulse" of the working folder.
void prepare_model(double field_hz = 62.5) {
    kor::KOR_SetSmokeCheckMode(1);
    g_runtime.Nspins = 1;
    g_runtime.Jexact = 1;
    g_runtime.quantnum[1] = 1;
    g_runtime.relspinamp[1] = 1.0;
    g_runtime.resofreqs[1] = 20.0;
    kor::BuildSpinSystemFromPulseSequenceGlobals();
    g_runtime.sequencetype = 2;
    g_runtime.nos = 2;
    g_runtime.systemset = g_runtime.sectorset = 1;
    for (int k = 1; k <= 2; ++k) {
        g_runtime.sectype[k] = 1;
        g_runtime.noti[k] = 64;
        g_runtime.nevo[k] = 1;
        g_runtime.sectdur[k] = 0.004;
        g_runtime.statoff[k] = 0.0;
        set_text(g_runtime.fnames[k], sizeof g_runtime.fnames[k], "pulse");
        set_text(g_runtime.remarks[k], sizeof g_runtime.remarks[k], "optimizeRf[productOperator=Iy]");
    }
    const std::vector<double> xb(64, TWO_PI * field_hz), yb(64, 0.0);
    kor::BinArrayOut2D(64, xb.data(), yb.data(), "pulse");
    std::copy(xb.begin(), xb.end(), g_runtime.xb);
    std::copy(yb.begin(), yb.end(), g_runtime.yb);
}

kor_test::ConsoleOutput optimise(const std::string& answers) {
    return play_console(answers, [] { kor::KORModel_OptimizePreparedSequenceSectorInteractive(); });
}

const std::string table = "Current prepared 1D/2D sequence sectors:\n"
                          " idx   type   ap   nevo   duration[s]      statoff[Hz]   waveform file\n"
                          "--------------------------------------------------------------------------\n"
                          "   1      1    64      1   0.004          0            pulse\n"
                          "   2      1    64      1   0.004          0            pulse\n\n";
const std::string ask_index = "Choose the optimizable sector index : ";
const std::string ask_mode = "Objective mode:\n  1. Re <O>      (phase-sensitive target)\n"
                             "  2. |<O>|       (sequence-end magnitude target)\nYour choice [1..2] : ";
const std::string ask_pairs = "Number of Fourier mode pairs per quadrature : ";
const std::string ask_start = "Start pulse for the selected optimizable sector:\n"
                              "  1. Use the currently stored sector waveform as optimizer start pulse\n"
                              "  2. Generate a new low-mode start pulse on the fixed sector grid\n"
                              "Your choice [1..2] : ";
const std::string ask_csv =
    "Write RF pulse to CSV file:\n  1. Write CSV file\n  2. Cancel\nYour choice [1..2] : ";
const std::string ask_write_back = "Write optimized pulse back into selected sector waveform file?\n"
                                   "  1. Yes\n  2. No\nYour choice [1..2] : ";

std::string after(const std::string& text, const std::string& marker) {
    const std::size_t at = text.find(marker);
    return at == std::string::npos ? "(no " + marker + ")" : text.substr(at);
}

TEST(OptimizeSector, RefusesWithoutASystemASequenceOrTheRightFamily) {
    const TempTree tree;
    prepare_model();
    g_runtime.systemset = 0;
    EXPECT_EQ(optimise("").out,
              "No current prepared spin system is available.\nDefine or load a model first.\n");
    prepare_model();
    g_runtime.nos = 0;
    EXPECT_EQ(optimise("").out,
              "No current prepared pulse sequence is available.\nCompose or load a sequence first.\n");
    prepare_model();
    g_runtime.sequencetype = 1;
    EXPECT_EQ(optimise("").out, "This optimization workflow currently supports only the\n"
                                "prepared 1D/2D sequence family (sequencetype == 2).\n");
}

TEST(OptimizeSector, RefusesASectorThatItCannotOptimise) {
    const TempTree tree;
    const auto refusal = [](const std::string& answers, int points, int evolution) {
        prepare_model();
        g_runtime.noti[2] = points;
        g_runtime.nevo[2] = evolution;
        return optimise(answers).err;
    };
    prepare_model();
    EXPECT_EQ(optimise("two\n").out, table + ask_index);
    EXPECT_EQ(refusal("two\n", 64, 1), "Invalid sector index entry\n");
    EXPECT_EQ(refusal("", 64, 1), "Invalid sector index entry\n");
    EXPECT_EQ(refusal("0\n", 64, 1), "Sector index 0 is out of range [1..2]\n");
    EXPECT_EQ(refusal("3\n", 64, 1), "Sector index 3 is out of range [1..2]\n");
    EXPECT_EQ(refusal("2\n", 0, 1), "Selected sector 2 has invalid ap=0\n");
    EXPECT_EQ(refusal("2\n", 64, 8),
              "Selected sector 2 has nevo=8.\nThis stage supports only nevo == 1 sectors.\n");
}

TEST(OptimizeSector, EndsAtEveryAnswerThatIsNoChoice) {
    const TempTree tree;
    const auto end_of = [](const std::string& answers) {
        prepare_model();
        const std::string out = optimise(answers).out;
        return out.substr(out.rfind(" : ") + 3);
    };
    EXPECT_EQ(end_of("1\n3\n"), "Invalid objective-mode choice\n");
    EXPECT_EQ(end_of("1\n"), "Invalid objective-mode choice\n");
    EXPECT_EQ(end_of("1\n1\nmany\n"), "Invalid npar entry\n");
    EXPECT_EQ(end_of("1\n1\n0\n"), "Invalid npar=0\n");
    EXPECT_EQ(end_of("1\n1\n-3\n"), "Invalid npar=-12\n");
    EXPECT_EQ(end_of("1\n1\n2\n7\n"), "Unknown start-pulse choice\n");
    EXPECT_EQ(end_of("1\n1\n2\nx\n"), "Invalid start-pulse choice\n");
    EXPECT_EQ(end_of("1\n1\n2\n2\n-1\n"), "Could not generate fixed-grid optimization start pulse\n");
}

TEST(OptimizeSector, AnUnreadableWaveformEndsThePreparation) {
    const TempTree tree;
    prepare_model();
    set_text(g_runtime.fnames[1], 256, "nowhere");
    const std::string out = optimise("1\n1\n").out;
    EXPECT_NE(out.find("Could not prepare current sequence-sector optimization context\n"),
              std::string::npos);
}

TEST(OptimizeSector, WritesTheTargetInTheBasisOfTheSpinsAsTheyAreDefined) {
    const TempTree tree;
    const std::string report = "BuildSpinSystemFromPulseSequenceGlobals()\n";
    for (const int defined : {1, 0}) {
        prepare_model();
        kor::KOR_SetSmokeCheckMode(0);
        // What the composer leaves behind: the definition, not its operators.
        g_runtime.Nspins = 2;
        g_runtime.quantnum[2] = 1;
        g_runtime.relspinamp[2] = 1.0;
        g_runtime.resofreqs[2] = -30.0;
        g_runtime.spinsystemdefined = defined;
        set_text(g_runtime.remarks[1], sizeof g_runtime.remarks[1], "optimizeRf[productOperator=IySz]");
        const auto console = optimise("1\n1\n0\n");
        EXPECT_EQ(console.err, "");
        const std::string target = "Using GUI-defined expectation operator: IySz\n";
        EXPECT_EQ(console.out.find(table + ask_index + ask_mode + target + "\n" + report), 0u) << console.out;
        EXPECT_EQ(console.out.rfind(report), console.out.find(report));
        EXPECT_EQ(g_runtime.n, 4);
        // (2 Iy Sz) / sqrt 4: of modulus 1/2 between the states that differ in spin 1.
        EXPECT_NEAR(std::abs(g_runtime.Istat[1][3][2]), 0.5, 1e-15);
        EXPECT_NEAR(std::abs(g_runtime.Istat[2][4][2]), 0.5, 1e-15);
        EXPECT_NEAR(g_runtime.Istat[1][3][2] + g_runtime.Istat[2][4][2], 0.0, 1e-15);
    }
    kor::KOR_SetSmokeCheckMode(1);
}

// Couplings that are there from an earlier definition go before those of the new one, however often the spin
// system is built.
TEST(OptimizeSector, TheCouplingsAreThoseOfOneBuild) {
    const TempTree tree;
    for (const double j13 : {7.0, 0.0}) {
        prepare_model();
        std::memset(g_runtime.jc, 0, sizeof g_runtime.jc);
        g_runtime.jc[1][3] = g_runtime.jc[3][1] = j13;
        g_runtime.Nspins = 2;
        g_runtime.quantnum[2] = 1;
        g_runtime.relspinamp[2] = 1.0;
        g_runtime.resofreqs[2] = -30.0;
        g_runtime.Jcount = 1;
        g_runtime.couplings[1] = 10.0;
        set_text(g_runtime.remarks[1], sizeof g_runtime.remarks[1], "optimizeRf[productOperator=IySz]");
        EXPECT_EQ(optimise("1\n1\n0\n").err, "");
        const double j12 = j13 != 0.0 ? 0.0 : 10.0;
        EXPECT_EQ(g_runtime.jc[1][2], j12);
        EXPECT_NEAR(g_runtime.Icoup[1][1][1], TWO_PI * j12 / 4, 1e-12);
    }
}

TEST(OptimizeSector, SpinsOfTooManyStatesAreToldOnce) {
    const TempTree tree;
    prepare_model();
    g_runtime.quantnum[1] = 300;
    const auto console = optimise("1\n1\n");
    EXPECT_EQ(console.out, table + ask_index + ask_mode +
                               "Could not prepare current sequence-sector optimization context\n");
    EXPECT_EQ(console.err,
              "The spin system has more states than the 256 that can be simulated: define it again.\n");
}

TEST(OptimizeSector, RunsFromTheStoredPulseAndWritesExactlyTheSamplesBack) {
    const TempTree tree;
    prepare_model();
    const auto console = optimise("1\n1\n2\n1\n2\n1\n");
    EXPECT_EQ(console.err, "");
    EXPECT_EQ(console.out.find(table + ask_index + ask_mode + "Using GUI-defined expectation operator: Iy\n"),
              0u);
    EXPECT_NE(console.out.find(ask_pairs + "Using npar = 8 total optimizer parameters\n" + ask_start +
                               "Using current waveform file as optimizer start pulse:\n  pulse\n"
                               "Launching optimization for selected sequence sector 1 ...\n\n"
                               "\nOptimization start density matrix:\n"),
              std::string::npos);
    EXPECT_EQ(after(console.out, ask_csv),
              ask_csv + ask_write_back +
                  "Updated selected sector waveform file:\n  pulse\nSector 2 reads the same file.\n");
    std::vector<double> samples(g_runtime.xb, g_runtime.xb + 64);
    samples.insert(samples.end(), g_runtime.yb, g_runtime.yb + 64);
    EXPECT_EQ(tree.read("pulse"), kor_test::bytes_of(samples));
    EXPECT_EQ(tree.names(), std::vector<std::string>{"pulse"});

    // The printed minimum is the objective of the written pulse, and close to the best: -trace(O rho) = -1.
    const std::string minimum_text = after(console.out, "Minimum             : ").substr(22);
    const double minimum = std::stod(minimum_text);
    EXPECT_LT(minimum, -0.999);
    double again = 0.0;
    play_console("", [&] { again = kor::fnc(g_runtime.par); });
    EXPECT_NEAR(again, minimum, 1e-9);
}

TEST(OptimizeSector, StartsFromAGeneratedPulse) {
    const TempTree tree;
    prepare_model();
    const auto console = optimise("1\n2\n2\n2\n500\n90\n0\n2\n2\n");
    EXPECT_NE(console.out.find("  objective mode         : |<O>|\n"), std::string::npos);
    EXPECT_NE(console.out.find("Selected sector grid is fixed:\n  ap = 64\n  h  = 6.25e-05 s  (0.0625 ms)\n"),
              std::string::npos);
    EXPECT_NE(console.out.find("  actual flip angle    = 90 deg\n"), std::string::npos);
    EXPECT_EQ(after(console.out, ask_csv), ask_csv + ask_write_back);
    const std::vector<double> unchanged(64, TWO_PI * 62.5);
    EXPECT_EQ(tree.read("pulse").substr(0, 512), kor_test::bytes_of(unchanged));
}

TEST(OptimizeSector, WritesTheTableOfThePulse) {
    const TempTree tree;
    prepare_model();
    const auto console = optimise("1\n1\n2\n1\n1\nbest.csv\n2\n");
    EXPECT_NE(console.out.find(ask_csv + "Enter output CSV filename: RF pulse written to 'best.csv'\n"),
              std::string::npos);
    EXPECT_EQ(tree.read("best.csv").find("# t[s], B1x[Hz], B1y[Hz], |B1|, phase[rad]\n0, "), 0u);
    EXPECT_TRUE(tree.exists("best.csv.gp"));
}

TEST(OptimizeSector, TheTableAndItsScriptReplaceNoFileOfTheModel) {
    const TempTree tree;
    prepare_model();
    const std::string before = tree.read("pulse");
    EXPECT_EQ(optimise("1\n1\n2\n1\n1\npulse\n2\n").err,
              "[KOR] The output file pulse is the waveform file of sector 1.\n");
    EXPECT_EQ(tree.read("pulse"), before);
    tree.write("best.csv.gp", "the model");
    kor::remember_model_files("best.csv.gp", "", "");
    EXPECT_EQ(optimise("1\n1\n2\n1\n1\nbest.csv\n2\n").err,
              "[KOR] The output file best.csv.gp is the model file.\n");
    kor::forget_model_files();
    EXPECT_EQ(tree.read("best.csv.gp"), "the model");
    EXPECT_FALSE(tree.exists("best.csv"));
}

TEST(OptimizeSector, EndOfInputAtTheLastPromptsMeansNo) {
    const TempTree tree;
    prepare_model();
    const std::string before = tree.read("pulse");
    const auto console = optimise("1\n1\n2\n1\n");
    EXPECT_EQ(after(console.out, ask_csv), ask_csv + ask_write_back);
    EXPECT_EQ(tree.read("pulse"), before);
}

TEST(OptimizeSector, ModePairsBeyondTheParameterArrayAreClamped) {
    const TempTree tree;
    prepare_model();
    const std::string out = optimise("1\n1\n50\n9\n").out;
    EXPECT_NE(out.find(ask_pairs + "npar=200 exceeds par[160]; clamping to 160\n"
                                   "Using npar = 160 total optimizer parameters\n"),
              std::string::npos);
}

/// The model's first sector with another number of points, all of its waveform at 62.5 Hz along x.
void prepare_points(int points) {
    prepare_model();
    g_runtime.noti[1] = points;
    const std::vector<double> xb(static_cast<std::size_t>(points), TWO_PI * 62.5), yb(xb.size(), 0.0);
    kor::BinArrayOut2D(points, xb.data(), yb.data(), "short");
    set_text(g_runtime.fnames[1], sizeof g_runtime.fnames[1], "short");
}

TEST(OptimizeSector, OnePointHasNoModesAndStaysAsItIs) {
    const TempTree tree;
    prepare_points(1);
    const std::string before = tree.read("short");
    const auto console = optimise("1\n1\n2\n1\n2\n1\n");
    EXPECT_EQ(console.err, "");
    EXPECT_NE(console.out.find("Iterations          : 1\n"), std::string::npos);
    EXPECT_EQ(tree.read("short"), before);
    EXPECT_EQ(optimise("1\n1\n2\n2\n").err,
              "GenerateOptimizationStartPulseFixedGridInteractive: invalid ap/h\n");
}

// Without the Fourier transform single samples would serve as parameters, and a nonsense pulse would be the
// result.
TEST(OptimizeSector, ACountThatIsNoPowerOfTwoIsRefusedBeforeAnythingElseIsAsked) {
    const TempTree tree;
    for (const int points : {3, 48, 100, 8191}) {
        prepare_points(points);
        const std::string before = tree.read("short");
        const auto console = optimise("1\n1\n1\n1\n2\n1\n");
        EXPECT_EQ(console.err, "Selected sector 1 has ap=" + std::to_string(points) +
                                   ": only a power of two of time points can be optimized.\n");
        EXPECT_EQ(console.out.substr(console.out.size() - ask_index.size()), ask_index);
        EXPECT_EQ(tree.read("short"), before);
    }
    prepare_points(48);
    g_runtime.nevo[1] = 2;
    EXPECT_EQ(optimise("1\n").err,
              "Selected sector 1 has nevo=2.\nThis stage supports only nevo == 1 sectors.\n");
}

TEST(OptimizeSector, MorePointsThanTheArraysHoldAreRefused) {
    const TempTree tree;
    prepare_points(16384);
    const std::string out = optimise("1\n1\n").out;
    EXPECT_NE(out.find("Sequence optimization: failed to load selected sector 1 into runtime.\n"
                       "Could not prepare current sequence-sector optimization context\n"),
              std::string::npos);
}

TEST(OfferWriteback, SkipsASectorWithoutAFile) {
    prepare_model();
    g_runtime.fnames[1][0] = '\0';
    const auto console = play_console("1\n", [] { kor::kormodel_offer_writeback_of_optimized_sector(1); });
    EXPECT_EQ(console.out, "Selected sector has no waveform file path; write-back skipped.\n");
    std::filesystem::remove("pulse");
}

TEST(OfferWriteback, NeverStoresASampleThatIsNotFinite) {
    const TempTree tree;
    prepare_model();
    const std::string before = tree.read("pulse");
    g_runtime.ap = 64;
    g_runtime.xb[5] = std::numeric_limits<double>::quiet_NaN();
    const auto console = play_console("1\n", [] { kor::kormodel_offer_writeback_of_optimized_sector(1); });
    EXPECT_EQ(console.err,
              "The optimised pulse has a sample that is not finite; pulse was left as it was.\n");
    EXPECT_EQ(tree.read("pulse"), before);
}

TEST(OfferWriteback, AFolderInItsPlaceStays) {
    const TempTree tree;
    prepare_model();
    std::filesystem::remove("pulse");
    tree.make_folder("pulse/kept");
    g_runtime.ap = 64;
    std::fill_n(g_runtime.xb, 64, 1.0);
    const auto console = play_console("1\n", [] { kor::kormodel_offer_writeback_of_optimized_sector(1); });
    EXPECT_NE(console.err.find("The waveform file pulse could not be written and was left as it was.\n"),
              std::string::npos);
    EXPECT_EQ(console.out, ask_write_back);
    EXPECT_EQ(tree.names(), std::vector<std::string>{"pulse"});
    EXPECT_TRUE(std::filesystem::is_directory("pulse/kept"));
}

TEST(OfferWriteback, MakesAFileThatIsNotThereYet) {
    const TempTree tree;
    prepare_model();
    std::filesystem::remove("pulse");
    g_runtime.ap = 2;
    g_runtime.xb[0] = 1.0;
    g_runtime.xb[1] = 2.0;
    g_runtime.yb[0] = 3.0;
    g_runtime.yb[1] = 4.0;
    const auto console = play_console("1\n", [] { kor::kormodel_offer_writeback_of_optimized_sector(1); });
    EXPECT_EQ(console.err, "");
    EXPECT_EQ(tree.read("pulse"), kor_test::bytes_of<double>({1.0, 2.0, 3.0, 4.0}));
}

TEST(OfferWriteback, TellsWhichOtherSectorsHaveChangedWithIt) {
    const TempTree tree;
    prepare_model();
    tree.write("own", "another waveform");
    g_runtime.nos = 5;
    const std::string names[] = {"", "./pulse", "own", "pulse", "", tree.path("pulse")};
    for (int k = 1; k <= 5; ++k)
        set_text(g_runtime.fnames[k], sizeof g_runtime.fnames[k], names[k]);
    g_runtime.ap = 1;
    const auto write_back = [](int k, const std::string& choice) {
        return play_console(choice, [k] { kor::kormodel_offer_writeback_of_optimized_sector(k); }).out;
    };
    const std::string updated = ask_write_back + "Updated selected sector waveform file:\n  ";
    EXPECT_EQ(write_back(3, "1\n"),
              updated + "pulse\nSector 1 reads the same file.\nSector 5 reads the same file.\n");
    EXPECT_EQ(write_back(2, "1\n"), updated + "own\n");
    EXPECT_EQ(write_back(3, "2\n"), ask_write_back);
}

struct Remark {
    const char* remark;
    const char* name;
    int found;
    const char* value;
};

TEST(MetadataValue, ReadsTheGroupOfARemark) {
    const Remark cases[] = {
        {"optimizeRf[targetMode=manual, productOperator=IxSz]", "targetMode", 1, "manual"},
        {"optimizeRf[targetMode=manual, productOperator=IxSz]", "productOperator", 1, "IxSz"},
        {"note optimizeRf  [ , ,\tproductOperator=  Ix + Sx  ,x=1] end", "productOperator", 1, "Ix + Sx"},
        {"optimizeRf[productOperator=Iz", "productOperator", 1, "Iz"},
        {"optimizeRf[productOperator=]", "productOperator", 1, ""},
        {"optimizeRf[productOperator =Iz]", "productOperator", 0, ""},
        {"optimizeRf[myproductOperator=Iz]", "productOperator", 0, ""},
        {"optimizeRf[x=1] productOperator=Iz", "productOperator", 0, ""},
        {"optimizeRf productOperator=Iz", "productOperator", 0, ""},
        {"other[productOperator=Iz]", "productOperator", 0, ""},
        {"optimizeRf[ProductOperator=Iz]", "productOperator", 0, ""},
        {"optimizeRf[productOperator=Ix,productOperator=Iy]", "productOperator", 1, "Ix"},
        {"", "productOperator", 0, ""},
    };
    for (const Remark& c : cases) {
        char out[64] = "before";
        EXPECT_EQ(kor::kormodel_metadata_value(c.remark, "optimizeRf", c.name, out, sizeof out), c.found)
            << c.remark;
        EXPECT_STREQ(out, c.value) << c.remark;
    }
    char out[4] = "x"; // room for three characters
    EXPECT_EQ(kor::kormodel_metadata_value("optimizeRf[a=123]", "optimizeRf", "a", out, sizeof out), 1);
    EXPECT_EQ(kor::kormodel_metadata_value("optimizeRf[a=1234]", "optimizeRf", "a", out, sizeof out), 0);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(kor::kormodel_metadata_value(nullptr, "optimizeRf", "a", out, sizeof out), 0);
}

TEST(OperatorIsDefined, KnowsTheWordsForNothing) {
    EXPECT_EQ(kor::kormodel_operator_is_defined(nullptr), 0);
    EXPECT_EQ(kor::kormodel_operator_is_defined(" \t"), 0);
    EXPECT_EQ(kor::kormodel_operator_is_defined("  Not DEFINED "), 0);
    EXPECT_EQ(kor::kormodel_operator_is_defined("not defined yet"), 1);
    EXPECT_EQ(kor::kormodel_operator_is_defined("Ix"), 1);
}

TEST(TargetFromRemark, PrefersTheManualRecipeOnlyInManualMode) {
    const TempTree tree;
    const auto chosen = [](const std::string& remark) {
        prepare_model();
        kor::KOR_SetSmokeCheckMode(0);
        set_text(g_runtime.remarks[2], sizeof g_runtime.remarks[2], remark);
        return play_console("", [] { kor::kormodel_try_define_optimizer_operator_from_sector_remark(2); })
            .out;
    };
    const auto using_operator = [](const std::string& text) {
        return "Using GUI-defined expectation operator: " + text + "\n";
    };
    EXPECT_EQ(chosen("optimizeRf[targetMode=manual,manualRecipe=Ix,productOperator=Iy]"),
              using_operator("Ix"));
    EXPECT_EQ(chosen("optimizeRf[targetMode=Manual,manualRecipe=Ix,productOperator=Iy]"),
              using_operator("Iy"));
    EXPECT_EQ(chosen("optimizeRf[targetMode=manual,manualRecipe=Not Defined,productOperator=Iy]"),
              using_operator("Iy"));
    EXPECT_EQ(chosen("optimizeRf[manualRecipe=Ix,productOperator=not defined]"), using_operator("Ix"));
    EXPECT_EQ(chosen("no target here"), "");
    // Values of 255 characters are read; longer ones count as absent.
    const std::string blanks(253, '_');
    EXPECT_EQ(chosen("optimizeRf[productOperator=Ix" + blanks + "]"), using_operator("Ix" + blanks));
    EXPECT_EQ(chosen("optimizeRf[productOperator=Ix_" + blanks + ",manualRecipe=Iy]"), using_operator("Iy"));
}

TEST(TargetFromRemark, SaysWhichTargetCannotBeParsed) {
    const TempTree tree;
    prepare_model();
    set_text(g_runtime.remarks[1], sizeof g_runtime.remarks[1], "optimizeRf[productOperator=Iq]");
    int result = -1;
    const auto console =
        play_console("", [&] { result = kor::kormodel_try_define_optimizer_operator_from_sector_remark(1); });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(console.err, "Could not parse GUI-defined optimization target operator 'Iq'.\n");
    EXPECT_EQ(kor::kormodel_try_define_optimizer_operator_from_sector_remark(0), 0);
    EXPECT_EQ(kor::kormodel_try_define_optimizer_operator_from_sector_remark(21), 0);
}

TEST(StartOptimization, RefusesWithoutParameters) {
    const TempTree tree;
    prepare_model();
    g_runtime.npar = 0;
    const auto console = play_console("", [] { kor::StartOptimization(); });
    EXPECT_EQ(console.out.find("\nOptimization start density matrix:\n"), 0u);
    EXPECT_EQ(console.err, "StartOptimization: npar not set\n");
}

TEST(StartOptimization, WritesNoTableOfAPulseThatIsNotFinite) {
    const TempTree tree;
    prepare_model();
    g_runtime.npar = 4;
    g_runtime.ap = 8;
    g_runtime.h = 1e-4;
    std::fill_n(g_runtime.par, 4, std::numeric_limits<double>::quiet_NaN());
    const auto console = play_console("1\nbad.csv\n", [] { kor::StartOptimization(); });
    EXPECT_EQ(console.err, "The optimised pulse has a sample that is not finite; bad.csv was not written.\n");
    EXPECT_EQ(tree.names(), std::vector<std::string>{"pulse"});
}

TEST(StartOptimization, NeedsANameForTheTable) {
    const TempTree tree;
    prepare_model();
    g_runtime.npar = 4;
    g_runtime.ap = 1; // no modes: nothing to search
    const auto console = play_console("1\n", [] { kor::StartOptimization(); });
    EXPECT_EQ(after(console.out, ask_csv), ask_csv + "Enter output CSV filename: ");
    EXPECT_EQ(console.err, "Invalid filename\n");
}

TEST(Optimize, DefinesEverythingAndReachesTheTarget) {
    const TempTree tree;
    kor::KOR_SetSmokeCheckMode(1);
    // one spin 1/2 of intensity 1 at 20 Hz; operator Iy from the list; two mode pairs; 64 points, 500 Hz, 90
    // degrees, phase 0, 0.0625 ms; no table
    const auto console =
        play_console("1\n1\n1\n20\n1\nIy\n2\n64\n500\n90\n0\n0.0625\n2\n", [] { kor::Optimize(); });
    EXPECT_EQ(console.out.find("****************************************************\n"
                               "***                OPTIMIZATION                  ***\n"
                               "****************************************************\n\n"
                               "Optimization requires:\n"
                               "  1. a spin system\n"
                               "  2. a pulse Hamiltonian\n"
                               "  3. a gradient definition\n"
                               "  4. an operator O whose expectation value <O>\n"
                               "     has to be optimized\n\n"),
              0u);
    EXPECT_NE(console.out.find("Define operator whose expectation value is to be optimized :\n"),
              std::string::npos);
    EXPECT_NE(console.out.find(
                  "******************* OPTIMIZE *******************\n\nThe number of parameters is : "),
              std::string::npos);
    EXPECT_EQ(console.err, "");
    EXPECT_LT(std::stod(after(console.out, "Minimum             : ").substr(22)), -0.999);
    EXPECT_DOUBLE_EQ(g_runtime.ti, 0.004);
    EXPECT_EQ(g_runtime.rfpulsedefined, 1);
}

TEST(Optimize, NamesTheAnswerThatEndsIt) {
    const TempTree tree;
    const auto failure = [](const std::string& answers) {
        kor::KOR_SetSmokeCheckMode(1);
        return play_console("1\n1\n1\n20\n1\nIy\n" + answers, [] { kor::Optimize(); });
    };
    EXPECT_EQ(failure("x\n").err, "Optimize: failed to read npar\n");
    EXPECT_EQ(failure("0\n").err, "Optimize: invalid npar\n");
    EXPECT_NE(failure("50\n1\n").out.find("Optimize: npar=200 exceeds par[160]; clamping to 160\n"),
              std::string::npos);
    EXPECT_EQ(failure("2\n1\n").err,
              "Invalid number of points\nOptimize: RF optimization start pulse not generated\n");
    EXPECT_EQ(failure("2\n100\n").err, "Invalid number of points: only a power of two can be optimized\n"
                                       "Optimize: RF optimization start pulse not generated\n");
}

} // namespace
