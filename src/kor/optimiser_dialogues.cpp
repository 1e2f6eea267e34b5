#include "kor/optimiser_dialogues.h"

#include "consoleutil.h"
#include "kor/optimiser.h"
#include "kor/product_operator_dialogues.h"
#include "kor/runtime_state.h"
#include "kor/spin_system.h"
#include "kor/spin_system_dialogues.h"
#include "koroptseq.h"
#include "modelfiles.h"
#include "rfpulselib/start_pulse.h"
#include "rfpulseparam.h"
#include "rfpulseplot.h"

#include <cstdio>

namespace kor {

namespace {

constexpr double search_tolerance = 3e-5; // fractional change of the objective that ends the search

void print_requirements() {
    std::printf("****************************************************\n");
    std::printf("***                OPTIMIZATION                  ***\n");
    std::printf("****************************************************\n\n");
    std::printf("Optimization requires:\n");
    std::printf("  1. a spin system\n");
    std::printf("  2. a pulse Hamiltonian\n");
    std::printf("  3. a gradient definition\n");
    std::printf("  4. an operator O whose expectation value <O>\n");
    std::printf("     has to be optimized\n\n");
}

void redefine_spin_system_and_operator() {
    SetupSpins();
    if (g_runtime.spinsystemdefined) {
        MakeBoltzmann();
        MakeZeeman();
        SpinSpinCoupling();
    }
    std::printf("Define operator whose expectation value is to be optimized :\n");
    ExpectationOperator(g_runtime.n, g_runtime.Nspins, g_runtime.Ilist, g_runtime.ket, g_runtime.Istat);
    std::printf("******************* OPTIMIZE *******************\n\n");
}

/// Asks for the number of parameters; 1 when npar is set, 0 with a message.
int ask_parameter_count() {
    std::printf("The number of parameters is : ");
    std::fflush(stdout);
    int units = 0;
    if (!console_read_int(&units)) {
        std::fprintf(stderr, "Optimize: failed to read npar\n");
        return 0;
    }
    if (!optimiser_parameter_count(units, "Optimize: ")) {
        std::fprintf(stderr, "Optimize: invalid npar\n");
        return 0;
    }
    return 1;
}

/// Asks whether and where the pulse is wanted as a table; 1 with the file name, else 0.
int ask_csv_name(char (&name)[KOR_FILE_NAME_SIZE]) {
    std::printf("Write RF pulse to CSV file:\n");
    std::printf("  1. Write CSV file\n");
    std::printf("  2. Cancel\n");
    std::printf("Your choice [1..2] : ");
    std::fflush(stdout);
    int choice = 0;
    if (!console_read_int(&choice) || choice != 1)
        return 0;
    std::printf("Enter output CSV filename: ");
    std::fflush(stdout);
    if (!console_read_word(name, sizeof name)) {
        std::fprintf(stderr, "Invalid filename\n");
        return 0;
    }
    return 1;
}

void offer_pulse_table() {
    char name[KOR_FILE_NAME_SIZE];
    if (!ask_csv_name(name))
        return;
    if (!optimised_pulse_is_finite(g_runtime.ap, g_runtime.xb, g_runtime.yb)) {
        std::fprintf(stderr, "The optimised pulse has a sample that is not finite; %s was not written.\n",
                     name);
        return;
    }
    char script[KOR_FILE_NAME_SIZE + 4];
    std::snprintf(script, sizeof script, "%s.gp", name);
    if (replaces_model_files(name) || replaces_model_files(script))
        return;
    if (!WritePulseCSV(name, g_runtime.ap, g_runtime.h, g_runtime.xb, g_runtime.yb))
        return;
    std::printf("RF pulse written to '%s'\n", name);
    if (WriteGnuplotPulseScript(script, name))
        open_plot(script);
}

} // namespace

int optimiser_parameter_count(int units, const char* prefix) {
    const long long wanted = 4LL * units;
    if (wanted <= 0)
        return 0;
    if (wanted > KOR_MAX_PARAMETERS)
        std::printf("%snpar=%lld exceeds par[160]; clamping to 160\n", prefix, wanted);
    g_runtime.npar = wanted > KOR_MAX_PARAMETERS ? KOR_MAX_PARAMETERS : static_cast<int>(wanted);
    return 1;
}

void Optimize() {
    print_requirements();
    redefine_spin_system_and_operator();
    if (!ask_parameter_count())
        return;
    if (!GenerateOptimizationStartPulse(&g_runtime.ap, &g_runtime.h, g_runtime.xb, g_runtime.yb,
                                        g_runtime.npar)) {
        std::fprintf(stderr, "Optimize: RF optimization start pulse not generated\n");
        return;
    }
    g_runtime.ti = g_runtime.h * g_runtime.ap;
    g_runtime.rfpulsedefined = 1;
    g_runtime.pulseflag = 1;
    RFPulseToParArray(g_runtime.npar, g_runtime.ap, g_runtime.xb, g_runtime.yb, g_runtime.par);
    MakeGradientOperator();
    KOROptimizationResetContext();
    KOROptimizationUseCurrentRuntimeDefaults();
    StartOptimization();
}

void StartOptimization() {
    std::printf("\nOptimization start density matrix:\n");
    ShowCMatElements(g_runtime.n, g_runtime.densmat);
    if (g_runtime.npar <= 0) {
        std::fprintf(stderr, "StartOptimization: npar not set\n");
        return;
    }
    int iterations = 0;
    double minimum = 0.0;
    frprmn(g_runtime.par, g_runtime.npar, search_tolerance, &iterations, &minimum);
    ParArrayToRFPulse(g_runtime.npar, g_runtime.ap, g_runtime.par, g_runtime.xb, g_runtime.yb);
    std::printf("Optimization finished.\n");
    std::printf("Iterations          : %d\n", iterations);
    std::printf("Minimum             : %.12g\n\n", minimum);
    offer_pulse_table();
}

} // namespace kor
