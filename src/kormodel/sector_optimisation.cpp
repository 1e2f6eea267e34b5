#include "kormodel/sector_optimisation.h"

#include "consoleutil.h"
#include "four3.h"
#include "kor/optimiser.h"
#include "kor/optimiser_dialogues.h"
#include "kor/product_operator_dialogues.h"
#include "kor/product_operators.h"
#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "kor/spin_system.h"
#include "korlimits.h"
#include "koroptseq.h"
#include "modelfiles.h"
#include "rfpulselib/start_pulse.h"
#include "rfpulseparam.h"
#include "rfwaveformfile.h"
#include "sequencetypes.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace kor {

namespace {

constexpr std::string_view white_space = " \t\n\v\f\r";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(white_space);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(white_space) - first + 1);
}

/// What stands between the brackets behind `group`; false when the remark has no such group.
bool metadata_group(std::string_view remark, std::string_view group, std::string_view* entries) {
    const std::size_t name = remark.find(group);
    if (name == std::string_view::npos)
        return false;
    const std::size_t open = remark.find('[', name);
    if (open == std::string_view::npos)
        return false;
    const std::size_t close = remark.find(']', open);
    *entries = remark.substr(open + 1, close == std::string_view::npos ? close : close - open - 1);
    return true;
}

int fail(const char* message) {
    std::printf("%s\n", message);
    return 0;
}

int ask_int(const char* prompt, int* out) {
    std::printf("%s", prompt);
    std::fflush(stdout);
    return console_read_int(out);
}

/// Whether the current model can be optimised at all; a refusal is printed.
int current_sequence_is_optimisable() {
    if (!g_runtime.systemset || g_runtime.Nspins <= 0)
        return fail("No current prepared spin system is available.\nDefine or load a model first.");
    if (!g_runtime.sectorset || g_runtime.nos <= 0)
        return fail("No current prepared pulse sequence is available.\nCompose or load a sequence first.");
    if (g_runtime.sequencetype != FAMILY_NMR)
        return fail("This optimization workflow currently supports only the\n"
                    "prepared 1D/2D sequence family (sequencetype == 2).");
    return 1;
}

/// Whether sector k can be optimised; a refusal goes to the error stream.
int sector_is_optimisable(int k) {
    if (k < 1 || k > g_runtime.nos) {
        std::fprintf(stderr, "Sector index %d is out of range [1..%d]\n", k, g_runtime.nos);
        return 0;
    }
    if (g_runtime.noti[k] < 1) {
        std::fprintf(stderr, "Selected sector %d has invalid ap=%d\n", k, g_runtime.noti[k]);
        return 0;
    }
    if (g_runtime.nevo[k] != 1) {
        std::fprintf(stderr, "Selected sector %d has nevo=%d.\n", k, g_runtime.nevo[k]);
        std::fprintf(stderr, "This stage supports only nevo == 1 sectors.\n");
        return 0;
    }
    // The parameters are Fourier modes of the pulse.
    if (!is_power_of_two(static_cast<std::size_t>(g_runtime.noti[k]))) {
        std::fprintf(stderr,
                     "Selected sector %d has ap=%d: only a power of two of time points can be optimized.\n",
                     k, g_runtime.noti[k]);
        return 0;
    }
    return 1;
}

/// Asks for the sector to optimise; its number, or 0 when there is none.
int ask_sector() {
    int k = 0;
    if (!ask_int("Choose the optimizable sector index : ", &k)) {
        std::fprintf(stderr, "Invalid sector index entry\n");
        return 0;
    }
    return sector_is_optimisable(k) ? k : 0;
}

/// Asks for the objective; 1 with the mode, or 0.
int ask_objective_mode(int* mode) {
    std::printf("Objective mode:\n");
    std::printf("  1. Re <O>      (phase-sensitive target)\n");
    std::printf("  2. |<O>|       (sequence-end magnitude target)\n");
    int choice = 0;
    if (!ask_int("Your choice [1..2] : ", &choice) || (choice != 1 && choice != 2))
        return fail("Invalid objective-mode choice");
    *mode = choice == 2 ? KOR_OPT_OBJECTIVE_ABS_EXPECT : KOR_OPT_OBJECTIVE_RE_EXPECT;
    return 1;
}

/// The composer redefines the spins without building their basis, in which the target is to be written.
/// False when they have too many states. The build that prepares the sector is to find the couplings that it
/// would find without this one, which would replace them.
bool make_basis_current() {
    if (basis_is_current())
        return true;
    RuntimeState& rt = g_runtime;
    double couplings[KOR_MAX_SPINS + 1][KOR_MAX_SPINS + 1];
    static_assert(sizeof couplings == sizeof rt.jc);
    std::memcpy(couplings, rt.jc, sizeof couplings);
    const int quiet = KOR_GetSmokeCheckMode();
    KOR_SetSmokeCheckMode(1);
    BuildSpinSystemFromPulseSequenceGlobals();
    KOR_SetSmokeCheckMode(quiet);
    std::memcpy(rt.jc, couplings, sizeof couplings);
    return rt.spinsystemdefined != 0;
}

/// Asks for what the remark of the sector does not say, and folds the other sectors into state and target.
int prepare_context(int k, int mode) {
    if (!make_basis_current())
        return 0;
    if (!kormodel_try_define_optimizer_operator_from_sector_remark(k))
        KORDefineCurrentExpectationOperatorInteractive();
    return KOROptimizationPrepareCurrent2DSequenceSector(k, mode);
}

/// Puts the pulse in the place of the sector's waveform; a failed write leaves the old one.
int replace_sector_waveform(const char* name) {
    if (BinArrayOut2D(g_runtime.ap, g_runtime.xb, g_runtime.yb, name))
        return 1;
    std::fprintf(stderr, "The waveform file %s could not be written and was left as it was.\n", name);
    return 0;
}

} // namespace

int kormodel_metadata_value(const char* remark, const char* group, const char* name, char* out,
                            std::size_t outsz) {
    if (out && outsz > 0)
        out[0] = '\0';
    std::string_view entries;
    if (!remark || !group || !name || !out || outsz == 0 || !metadata_group(remark, group, &entries))
        return 0;
    const std::string wanted = std::string(name) + "=";
    while (true) {
        const std::size_t begin = entries.find_first_not_of(" \t\n\v\f\r,");
        if (begin == std::string_view::npos)
            return 0;
        entries.remove_prefix(begin);
        const std::size_t end = entries.find(',');
        const std::string_view entry = entries.substr(0, end);
        if (entry.substr(0, wanted.size()) == wanted) {
            const std::string_view value = trimmed(entry.substr(wanted.size()));
            if (value.size() >= outsz)
                return 0;
            value.copy(out, value.size());
            out[value.size()] = '\0';
            return 1;
        }
        if (end == std::string_view::npos)
            return 0;
        entries.remove_prefix(end);
    }
}

int kormodel_operator_is_defined(const char* text) {
    return is_undefined_operator_expression(text) ? 0 : 1;
}

int kormodel_try_define_optimizer_operator_from_sector_remark(int k) {
    if (k < 1 || k > KOR_MAX_SECTORS)
        return 0;
    char mode[64];
    char product_operator[256];
    char manual_recipe[256];
    const char* remark = g_runtime.remarks[k];
    kormodel_metadata_value(remark, "optimizeRf", "targetMode", mode, sizeof mode);
    kormodel_metadata_value(remark, "optimizeRf", "productOperator", product_operator,
                            sizeof product_operator);
    kormodel_metadata_value(remark, "optimizeRf", "manualRecipe", manual_recipe, sizeof manual_recipe);

    const char* expression = nullptr;
    if (std::strcmp(mode, "manual") == 0 && kormodel_operator_is_defined(manual_recipe))
        expression = manual_recipe;
    else if (kormodel_operator_is_defined(product_operator))
        expression = product_operator;
    else if (kormodel_operator_is_defined(manual_recipe))
        expression = manual_recipe;
    if (!expression)
        return 0;
    if (!KORDefineCurrentExpectationOperatorExpression(expression)) {
        std::fprintf(stderr, "Could not parse GUI-defined optimization target operator '%s'.\n", expression);
        return 0;
    }
    return 1;
}

void kormodel_print_sequence_sector_optimization_summary() {
    std::printf("Current prepared 1D/2D sequence sectors:\n");
    std::printf(" idx   type   ap   nevo   duration[s]      statoff[Hz]   waveform file\n");
    std::printf("%s\n", std::string(74, '-').c_str());
    for (int k = 1; k <= g_runtime.nos; ++k) {
        std::printf(" %3d   %4d   %3d   %4d   %-14.7g %-12.7g %s\n", k, g_runtime.sectype[k],
                    g_runtime.noti[k], g_runtime.nevo[k], g_runtime.sectdur[k], g_runtime.statoff[k],
                    g_runtime.fnames[k]);
    }
    std::printf("\n");
}

int kormodel_prepare_sequence_sector_parameterization() {
    int pairs = 0;
    if (!ask_int("Number of Fourier mode pairs per quadrature : ", &pairs))
        return fail("Invalid npar entry");
    if (!optimiser_parameter_count(pairs, "")) {
        std::printf("Invalid npar=%lld\n", 4LL * pairs);
        return 0;
    }
    std::printf("Using npar = %d total optimizer parameters\n", g_runtime.npar);
    return 1;
}

int kormodel_prepare_sequence_sector_start_pulse(int k) {
    std::printf("Start pulse for the selected optimizable sector:\n");
    std::printf("  1. Use the currently stored sector waveform as optimizer start pulse\n");
    std::printf("  2. Generate a new low-mode start pulse on the fixed sector grid\n");
    int choice = 0;
    if (!ask_int("Your choice [1..2] : ", &choice))
        return fail("Invalid start-pulse choice");
    if (choice == 1) {
        std::printf("Using current waveform file as optimizer start pulse:\n");
        std::printf("  %s\n", g_runtime.fnames[k]);
    } else if (choice == 2) {
        if (!GenerateOptimizationStartPulseFixedGridInteractive(&g_runtime.ap, &g_runtime.h, g_runtime.xb,
                                                                g_runtime.yb, g_runtime.npar))
            return fail("Could not generate fixed-grid optimization start pulse");
    } else {
        return fail("Unknown start-pulse choice");
    }
    RFPulseToParArray(g_runtime.npar, g_runtime.ap, g_runtime.xb, g_runtime.yb, g_runtime.par);
    return 1;
}

void kormodel_offer_writeback_of_optimized_sector(int k) {
    const char* name = g_runtime.fnames[k];
    if (!name[0]) {
        std::printf("Selected sector has no waveform file path; write-back skipped.\n");
        return;
    }
    std::printf("Write optimized pulse back into selected sector waveform file?\n");
    std::printf("  1. Yes\n");
    std::printf("  2. No\n");
    int choice = 0;
    if (!ask_int("Your choice [1..2] : ", &choice) || choice != 1)
        return;
    if (!optimised_pulse_is_finite(g_runtime.ap, g_runtime.xb, g_runtime.yb)) {
        std::fprintf(stderr, "The optimised pulse has a sample that is not finite; %s was left as it was.\n",
                     name);
        return;
    }
    if (!replace_sector_waveform(name))
        return;
    std::printf("Updated selected sector waveform file:\n");
    std::printf("  %s\n", name);
    tell_who_shares_the_waveform_file(k);
}

void KORModel_OptimizePreparedSequenceSectorInteractive() {
    if (!current_sequence_is_optimisable())
        return;
    kormodel_print_sequence_sector_optimization_summary();
    const int k = ask_sector();
    int mode = KOR_OPT_OBJECTIVE_RE_EXPECT;
    if (k == 0 || !ask_objective_mode(&mode))
        return;
    if (!prepare_context(k, mode)) {
        fail("Could not prepare current sequence-sector optimization context");
        return;
    }
    if (!kormodel_prepare_sequence_sector_parameterization() ||
        !kormodel_prepare_sequence_sector_start_pulse(k))
        return;
    std::printf("Launching optimization for selected sequence sector %d ...\n\n", k);
    StartOptimization();
    kormodel_offer_writeback_of_optimized_sector(k);
}

} // namespace kor
