#include "korcurrentmodel/model_summary.h"

#include "kor/runtime_state.h"
#include "korcurrentmodel/loaded_model.h"
#include "support/console_script.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace {

using namespace kor;
using namespace kor_test;

/// A spatial model of two coupled spins with two sectors, the second without a file.
void set_spatial_model() {
    RuntimeState& s = g_runtime;
    s.Nspins = 2;
    s.n = 4;
    s.quantnum[1] = s.quantnum[2] = 1;
    s.relspinamp[1] = 1;
    s.relspinamp[2] = 0.333333333333333;
    s.resofreqs[1] = 100;
    s.resofreqs[2] = -40.5;
    s.Jexact = 1;
    s.Jcount = 1;
    s.couplings[1] = 6.93;
    s.sequencetype = 1;
    s.nos = 2;
    s.noti[1] = 256;
    s.sectdur[1] = 0.00256;
    std::strcpy(s.fnames[1], "/waves/wave1");
    s.noti[2] = 1;
    s.sectdur[2] = 1e-5;
    std::strcpy(s.resultflnm, "result.bin");
    s.ndx = 5;
    s.ndy = 2;
    s.ndz = 1;
    s.x0 = -10;
    s.dx = 5;
    s.y0 = 0.1;
    s.dy = 1.0 / 3.0;
    s.z0 = 0;
    s.dz = 0;
}

/// Each test begins with an empty state.
class ModelSummary : public testing::Test {
protected:
    void SetUp() override {
        std::memset(static_cast<void*>(&g_runtime), 0, sizeof g_runtime);
        clear_loaded_model_path();
    }
    void TearDown() override { SetUp(); }
};

using PrepareStatus = ModelSummary;

const std::string TITLE = "========================================\n"
                          " Current Model Summary\n"
                          "========================================\n"
                          "\n";

} // namespace

TEST_F(ModelSummary, ShowsEveryRecordOfALoadedModel) {
    const auto spin = std::make_unique<KORSpinSystemDef>();
    const auto seq = std::make_unique<KORPulseSequenceDef>();
    const auto cfg = std::make_unique<KORRunConfig>();
    spin->nspins = 2;
    spin->spin_quantum_numbers[1] = 1;
    spin->spin_quantum_numbers[2] = 3;
    spin->relative_intensities[1] = 1;
    spin->relative_intensities[2] = 0.1;
    spin->resonance_offsets_hz[1] = 1.0 / 3.0;
    spin->resonance_offsets_hz[2] = -40;
    spin->coupling_mode = 2;
    seq->sequence_type = 2;
    seq->sector_count = 2;
    seq->sectors[1] = {1, 256, 1, 0.00256, 0, "/waves/wave 1", ""};
    seq->sectors[2] = {2, 1, 64, 1e-5, -12.5, "/waves/wave2", "Start ADC"};
    *cfg = {5, 2, 1, -10, 0.1, 0, 5, 1e-3, 0, "/results/r.bin", "name"};
    EXPECT_EQ(
        play_console("", [&] { print_model_summary("/m/two.kormodel", spin.get(), seq.get(), cfg.get()); })
            .out,
        "\n[KOR] Loaded model: /m/two.kormodel\n"
        "[KOR] Spin system:\n"
        "  nspins = 2\n"
        "  spin quantum numbers: 1 3\n"
        "  relative intensities: 1 0.1\n"
        "  resonance offsets [Hz]: 0.333333333333333 -40\n"
        "  coupling mode = 2\n"
        "[KOR] Sequence:\n"
        "  sequence type = 2\n"
        "  number of sectors = 2\n"
        "    sector 1: type=1 timepoints=256 evolpoints=1 duration=0.00256 pulsefile=/waves/wave 1 "
        "statoff=0 remark=\n"
        "    sector 2: type=2 timepoints=1 evolpoints=64 duration=1e-05 pulsefile=/waves/wave2 "
        "statoff=-12.5 remark=Start ADC\n"
        "[KOR] Grid/run config:\n"
        "  ndx=5 ndy=2 ndz=1\n"
        "  origin [cm] = (-10, 0.1, 0)\n"
        "  delta  [cm] = (5, 0.001, 0)\n"
        "  result file = /results/r.bin\n");
}

TEST_F(ModelSummary, ShowsTheWholeCurrentModel) {
    set_spatial_model();
    set_loaded_model_path("/m/two.kormodel");
    EXPECT_EQ(play_console("", PrintCurrentModelSummary).out,
              TITLE + "Current model file : /m/two.kormodel\n"
                      "\n"
                      "Model state:\n"
                      "  Nspins           : 2\n"
                      "  sequence family  : spatial resolved (1)\n"
                      "  sequence sectors : 2\n"
                      "  result file      : result.bin\n"
                      "\n"
                      "Spin system:\n"
                      "  Hilbert size n   : 4\n"
                      "  spin quantum numbers : 1 1\n"
                      "  relative intensities : 1 0.333333333333\n"
                      "  resonance offsets [Hz] : 100 -40.5\n"
                      "  coupling mode    : 1\n"
                      "  J-coupling 1    : 6.93 Hz\n"
                      "\n"
                      "Spatial grid:\n"
                      "  ndx              : 5\n"
                      "  ndy              : 2\n"
                      "  ndz              : 1\n"
                      "  x0 [cm]          : -10\n"
                      "  dx [cm]          : 5\n"
                      "  y0 [cm]          : 0.1\n"
                      "  dy [cm]          : 0.333333333333\n"
                      "  z0 [cm]          : 0\n"
                      "  dz [cm]          : 0\n"
                      "\n"
                      "Sequence overview:\n"
                      "  sector 1 : timepoints=256  duration=0.00256 s  file=/waves/wave1\n"
                      "  sector 2 : timepoints=1  duration=1e-05 s  file=<unset>\n"
                      "\n");
}

TEST_F(ModelSummary, LeavesOutTheGridOfAnNmrModelAndTheCouplingsOfOneSpin) {
    set_spatial_model();
    g_runtime.Nspins = 1;
    g_runtime.n = 2;
    g_runtime.sequencetype = 2;
    g_runtime.nos = 0;
    g_runtime.resultflnm[0] = '\0';
    EXPECT_EQ(play_console("", PrintCurrentModelSummary).out,
              TITLE + "Current model file : <unsaved current model>\n"
                      "\n"
                      "Model state:\n"
                      "  Nspins           : 1\n"
                      "  sequence family  : 1D/2D NMR (2)\n"
                      "  sequence sectors : 0\n"
                      "  result file      : <unset>\n"
                      "\n"
                      "Spin system:\n"
                      "  Hilbert size n   : 2\n"
                      "  spin quantum numbers : 1\n"
                      "  relative intensities : 1\n"
                      "  resonance offsets [Hz] : 100\n"
                      "  coupling mode    : no couplings\n"
                      "\n"
                      "Sequence overview:\n"
                      "  <no sectors defined>\n"
                      "\n");
}

TEST_F(ModelSummary, SaysThatNothingIsThere) {
    EXPECT_EQ(play_console("", PrintCurrentModelSummary).out,
              TITLE + "Current model file : <unsaved current model>\n"
                      "\n"
                      "Model state:\n"
                      "  Nspins           : 0\n"
                      "  sequence family  : <unset>\n"
                      "  sequence sectors : 0\n"
                      "  result file      : <unset>\n"
                      "\n"
                      "Spin system:\n"
                      "  Hilbert size n   : 0\n"
                      "  spin quantum numbers : <none>\n"
                      "  relative intensities : <none>\n"
                      "  resonance offsets [Hz] : <none>\n"
                      "  coupling mode    : no couplings\n"
                      "\n"
                      "Sequence overview:\n"
                      "  <no sectors defined>\n"
                      "\n");
}

TEST_F(PrepareStatus, NamesWhatIsMissing) {
    EXPECT_EQ(play_console("", PrintPrepareStatus).out, "Current model state:\n"
                                                        "  Nspins           : 0\n"
                                                        "  sequence family  : <unset>\n"
                                                        "  sequence sectors : 0\n"
                                                        "  result file      : <unset>\n"
                                                        "  spin system      : <none prepared>\n"
                                                        "  pulse sequence   : <none prepared>\n"
                                                        "\n");
}

TEST_F(PrepareStatus, ShowsTheFamilyWithItsNumber) {
    set_spatial_model();
    EXPECT_EQ(play_console("", PrintPrepareStatus).out, "Current model state:\n"
                                                        "  Nspins           : 2\n"
                                                        "  sequence family  : spatial resolved (1)\n"
                                                        "  sequence sectors : 2\n"
                                                        "  result file      : result.bin\n"
                                                        "\n");
    g_runtime.sequencetype = 7;
    EXPECT_NE(play_console("", PrintPrepareStatus).out.find("  sequence family  : <unknown> (7)\n"),
              std::string::npos);
}
