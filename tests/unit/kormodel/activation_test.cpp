#include "kormodel/activation.h"

#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "model_set.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

Model captured_model;

Outcome activate(const Model& model) {
    KOR_SetSmokeCheckMode(1);
    return outcome_of([&](char* m, std::size_t n) {
        return KORModel_ActivateInLegacyRuntime(&model.spin, &model.seq, &model.cfg, m, n);
    });
}

Outcome capture(Model& model = captured_model) {
    return outcome_of([&](char* m, std::size_t n) {
        return KORModel_CaptureFromLegacyGlobals(&model.spin, &model.seq, &model.cfg, m, n);
    });
}

Model three_spin_model() {
    Model model = two_spin_model();
    model.spin.nspins = 3;
    model.spin.spin_quantum_numbers[3] = 2;
    model.spin.relative_intensities[3] = 3.0;
    model.spin.resonance_offsets_hz[3] = 7.0;
    model.spin.coupling_mode = 2;
    model.spin.j_hz[1][3] = model.spin.j_hz[3][1] = 0.0;
    model.spin.j_hz[2][3] = model.spin.j_hz[3][2] = -5.5;
    return model;
}

Model nmr_model() {
    Model model = two_spin_model();
    model.seq.sequence_type = 2;
    model.seq.sector_count = 20;
    for (int k = 1; k <= 20; ++k) {
        KORPulseSectorDef& sector = model.seq.sectors[k];
        sector = {1 + k % 2, 10 * k, k, 0.5 * k, -1.0 * k, "", ""};
        copy_truncated(("wave" + std::to_string(k)).c_str(), sector.pulse_filename, KOR_FILE_NAME_SIZE);
        copy_truncated(("remark " + std::to_string(k)).c_str(), sector.remark, KOR_REMARK_SIZE);
    }
    model.cfg = {2, 3, 4, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, "r.bin", "name"};
    return model;
}

} // namespace

TEST(ActivateModel, WritesSpinsCouplingsAndDimension) {
    ASSERT_EQ(activate(three_spin_model()), ok);
    EXPECT_EQ(g_runtime.Nspins, 3);
    EXPECT_EQ(g_runtime.n, 12);
    const int doubled[] = {0, 1, 1, 2, 0, 0, 0, 0, 0};
    const double intensities[] = {0, 1, 0.5, 3, 0, 0, 0, 0, 0};
    const double offsets[] = {0, 100, -40, 7, 0, 0, 0, 0, 0};
    for (int i = 0; i <= KOR_MAX_SPINS; ++i) {
        EXPECT_EQ(g_runtime.quantnum[i], doubled[i]);
        EXPECT_EQ(g_runtime.Ilist[i], doubled[i]);
        EXPECT_EQ(g_runtime.relspinamp[i], intensities[i]);
        EXPECT_EQ(g_runtime.resofreqs[i], offsets[i]);
    }
    EXPECT_EQ(g_runtime.Jexact, 2);
    EXPECT_EQ(g_runtime.Jcount, 3);
    EXPECT_EQ(g_runtime.couplings[1], 12.0);
    EXPECT_EQ(g_runtime.couplings[2], 0.0);
    EXPECT_EQ(g_runtime.couplings[3], -5.5);
    EXPECT_EQ(g_runtime.jc[1][2], 12.0);
    EXPECT_EQ(g_runtime.jc[2][1], 12.0);
    EXPECT_EQ(g_runtime.jc[3][2], -5.5);
}

TEST(ActivateModel, ATwoSpinModelHasOnePair) {
    ASSERT_EQ(activate(two_spin_model()), ok);
    EXPECT_EQ(g_runtime.n, 4);
    EXPECT_EQ(g_runtime.Jcount, 1);
    EXPECT_EQ(g_runtime.couplings[1], 12.0);
}

TEST(ActivateModel, EightSpinsHaveTwentyEightPairsInRowOrder) {
    Model model = two_spin_model();
    model.spin.nspins = 8;
    double value = 0.0;
    for (int i = 1; i <= 8; ++i) {
        model.spin.spin_quantum_numbers[i] = 1;
        for (int j = i + 1; j <= 8; ++j)
            model.spin.j_hz[i][j] = model.spin.j_hz[j][i] = ++value;
    }
    model.spin.coupling_mode = 1;
    ASSERT_EQ(activate(model), ok);
    EXPECT_EQ(g_runtime.n, 256);
    EXPECT_EQ(g_runtime.Jcount, 28);
    for (int pair = 1; pair <= 28; ++pair)
        EXPECT_EQ(g_runtime.couplings[pair], pair);
    EXPECT_EQ(g_runtime.jc[8][7], 28.0);
}

TEST(ActivateModel, WritesSectorsGridAndFlags) {
    const Model model = nmr_model();
    g_runtime.systemset = g_runtime.offsetset = g_runtime.sectorset = 0;
    ASSERT_EQ(activate(model), ok);
    EXPECT_EQ(g_runtime.sequencetype, 2);
    EXPECT_EQ(g_runtime.nos, 20);
    for (int k = 1; k <= 20; ++k) {
        EXPECT_EQ(g_runtime.sectype[k], 1 + k % 2);
        EXPECT_EQ(g_runtime.noti[k], 10 * k);
        EXPECT_EQ(g_runtime.nevo[k], k);
        EXPECT_EQ(g_runtime.sectdur[k], 0.5 * k);
        EXPECT_EQ(g_runtime.statoff[k], -k);
        EXPECT_EQ(g_runtime.fnames[k], "wave" + std::to_string(k));
        EXPECT_EQ(g_runtime.remarks[k], "remark " + std::to_string(k));
    }
    EXPECT_EQ(g_runtime.ndx, 2);
    EXPECT_EQ(g_runtime.ndy, 3);
    EXPECT_EQ(g_runtime.ndz, 4);
    EXPECT_EQ(g_runtime.x0, 0.1);
    EXPECT_EQ(g_runtime.y0, 0.2);
    EXPECT_EQ(g_runtime.z0, 0.3);
    EXPECT_EQ(g_runtime.dx, 0.4);
    EXPECT_EQ(g_runtime.dy, 0.5);
    EXPECT_EQ(g_runtime.dz, 0.6);
    EXPECT_STREQ(g_runtime.resultflnm, "r.bin");
    EXPECT_EQ(g_runtime.systemset, 1);
    EXPECT_EQ(g_runtime.offsetset, 1);
    EXPECT_EQ(g_runtime.sectorset, 1);
}

TEST(ActivateModel, ReplacesTheWholeDefinition) {
    ASSERT_EQ(activate(nmr_model()), ok);
    ASSERT_EQ(activate(three_spin_model()), ok);
    Model one = two_spin_model();
    one.spin.nspins = 1;
    ASSERT_EQ(activate(one), ok);
    EXPECT_EQ(g_runtime.Jcount, 0);
    for (int i = 2; i <= KOR_MAX_SPINS; ++i)
        EXPECT_EQ(g_runtime.quantnum[i], 0);
    for (double coupling : g_runtime.couplings)
        EXPECT_EQ(coupling, 0.0);
    for (int k = 2; k <= KOR_MAX_SECTORS; ++k) {
        EXPECT_EQ(g_runtime.sectype[k], 0);
        EXPECT_EQ(g_runtime.noti[k], 0);
        EXPECT_EQ(g_runtime.nevo[k], 0);
        EXPECT_EQ(g_runtime.sectdur[k], 0.0);
        EXPECT_EQ(g_runtime.statoff[k], 0.0);
        EXPECT_STREQ(g_runtime.fnames[k], "");
        EXPECT_STREQ(g_runtime.remarks[k], "");
    }
}

TEST(ActivateModel, RebuildsTheOperators) {
    Model model = two_spin_model();
    g_runtime.spinsystemdefined = 0;
    ASSERT_EQ(activate(model), ok);
    EXPECT_EQ(g_runtime.spinsystemdefined, 1);
    // Weak coupling: diag(1, -1, -1, 1) 2 pi 12 / 4; offsets 100 and -40 Hz.
    EXPECT_NEAR(g_runtime.Icoup[1][1][1], 2 * KOR_PI * 3.0, 1e-12);
    EXPECT_NEAR(g_runtime.Icoup[2][2][1], -2 * KOR_PI * 3.0, 1e-12);
    EXPECT_EQ(g_runtime.Icoup[2][3][1], 0.0);
    EXPECT_NEAR(g_runtime.Izee[1][1][1], 2 * KOR_PI * 30.0, 1e-11);
    EXPECT_NEAR(g_runtime.Izee[2][2][1], 2 * KOR_PI * 70.0, 1e-11);
    model.spin.coupling_mode = 2;
    ASSERT_EQ(activate(model), ok);
    EXPECT_NEAR(g_runtime.Icoup[2][3][1], 2 * KOR_PI * 6.0, 1e-12);
}

TEST(ActivateModel, EarlierCouplingsDoNotSurvive) {
    Model model = two_spin_model();
    ASSERT_EQ(activate(model), ok);
    model.spin.j_hz[1][2] = model.spin.j_hz[2][1] = 0.0;
    ASSERT_EQ(activate(model), ok);
    EXPECT_EQ(g_runtime.jc[1][2], 0.0);
    EXPECT_EQ(g_runtime.Icoup[1][1][1], 0.0);
}

TEST(ActivateModel, KeepsTheCouplingModeOfOneSpin) {
    Model model = two_spin_model();
    model.spin.nspins = 1;
    model.spin.coupling_mode = 2;
    ASSERT_EQ(activate(model), ok);
    ASSERT_EQ(capture(), ok);
    EXPECT_EQ(captured_model.spin.coupling_mode, 2);
}

TEST(ActivateModel, AnInvalidModelLeavesTheStateUntouched) {
    ASSERT_EQ(activate(three_spin_model()), ok);
    static RuntimeState before;
    std::memcpy(&before, &g_runtime, sizeof before);
    Model model = nmr_model();
    model.seq.sectors[20].total_duration_s = 0.0;
    EXPECT_EQ(activate(model), (Outcome{KOR_MODEL_ERR_RANGE, "sector 20 total_duration_s=0 must be > 0"}));
    EXPECT_EQ(std::memcmp(&before, &g_runtime, sizeof before), 0);
    EXPECT_EQ(outcome_of([&](char* m, std::size_t n) {
                  return KORModel_ApplyToLegacyGlobals(&model.spin, &model.seq, &model.cfg, m, n);
              }).status,
              KOR_MODEL_ERR_RANGE);
    EXPECT_EQ(std::memcmp(&before, &g_runtime, sizeof before), 0);
}

TEST(ActivateModel, NullRecords) {
    Model model = two_spin_model();
    for (int missing = 0; missing < 3; ++missing) {
        KORSpinSystemDef* spin = missing == 0 ? nullptr : &model.spin;
        KORPulseSequenceDef* seq = missing == 1 ? nullptr : &model.seq;
        KORRunConfig* cfg = missing == 2 ? nullptr : &model.cfg;
        const auto outcome = [&](auto operation) {
            return outcome_of([&](char* m, std::size_t n) { return operation(spin, seq, cfg, m, n); });
        };
        EXPECT_EQ(outcome(KORModel_ActivateInLegacyRuntime),
                  (Outcome{KOR_MODEL_ERR_NULLPTR, "activate arguments must be non-null"}));
        EXPECT_EQ(outcome(KORModel_ApplyToLegacyGlobals),
                  (Outcome{KOR_MODEL_ERR_NULLPTR, "apply arguments must be non-null"}));
        EXPECT_EQ(outcome(KORModel_CaptureFromLegacyGlobals),
                  (Outcome{KOR_MODEL_ERR_NULLPTR, "capture arguments must be non-null"}));
    }
}

TEST(CaptureModel, GivesTheActivatedModelBack) {
    const Model model = nmr_model();
    ASSERT_EQ(activate(model), ok);
    std::memset(static_cast<void*>(&captured_model), 0x55, sizeof captured_model);
    ASSERT_EQ(capture(), ok);
    EXPECT_EQ(captured_model.spin.nspins, 2);
    EXPECT_EQ(captured_model.spin.relative_intensities[2], 0.5);
    EXPECT_EQ(captured_model.spin.j_hz[1][2], 12.0);
    EXPECT_EQ(captured_model.spin.j_hz[1][1], 0.0);
    EXPECT_EQ(captured_model.seq.sector_count, 20);
    EXPECT_STREQ(captured_model.seq.sectors[20].pulse_filename, "wave20");
    EXPECT_EQ(captured_model.seq.sectors[7].number_of_evolpoints, 7);
    EXPECT_EQ(captured_model.cfg.dz_cm, 0.6);
    EXPECT_STREQ(captured_model.cfg.result_filename, "r.bin");
    EXPECT_STREQ(captured_model.cfg.model_name, "");
}

TEST(CaptureModel, RefusesMoreSpinsOrSectorsThanTheRecordsHold) {
    ASSERT_EQ(activate(two_spin_model()), ok);
    for (int spins : {0, -1, 9}) {
        g_runtime.Nspins = spins;
        g_runtime.nos = 21;
        EXPECT_EQ(capture(),
                  (Outcome{KOR_MODEL_ERR_INCOMPATIBLE, "legacy spin system is not captureable: Nspins=" +
                                                           std::to_string(spins) + " outside 1..8"}));
    }
    g_runtime.Nspins = 2;
    for (int sectors : {-1, 21}) {
        g_runtime.nos = sectors;
        EXPECT_EQ(capture(),
                  (Outcome{KOR_MODEL_ERR_INCOMPATIBLE, "legacy pulse sequence is not captureable: nos=" +
                                                           std::to_string(sectors) + " outside 0..20"}));
    }
}

TEST(CaptureModel, TakesTheQuantumNumberFromTheListWhenOnlyThatIsSet) {
    ASSERT_EQ(activate(two_spin_model()), ok);
    g_runtime.quantnum[1] = 0;
    g_runtime.Ilist[1] = 3;
    g_runtime.quantnum[2] = 2;
    g_runtime.Ilist[2] = 1;
    ASSERT_EQ(capture(), ok);
    EXPECT_EQ(captured_model.spin.spin_quantum_numbers[1], 3);
    EXPECT_EQ(captured_model.spin.spin_quantum_numbers[2], 2);
    g_runtime.Ilist[1] = 0;
    EXPECT_EQ(capture(),
              (Outcome{KOR_MODEL_ERR_RANGE, "spin_quantum_numbers[1]=0 must be >= 1 (legacy stores 2I)"}));
    g_runtime.quantnum[1] = -2;
    EXPECT_EQ(capture(),
              (Outcome{KOR_MODEL_ERR_RANGE, "spin_quantum_numbers[1]=-2 must be >= 1 (legacy stores 2I)"}));
}

TEST(CaptureModel, ThePairListTakesPrecedenceOverTheTable) {
    ASSERT_EQ(activate(three_spin_model()), ok);
    g_runtime.jc[1][2] = 1.0;
    g_runtime.jc[1][3] = 2.0;
    g_runtime.jc[2][3] = 3.0;
    g_runtime.jc[2][2] = 9.0;
    for (int count = 0; count <= 3; ++count) {
        g_runtime.Jcount = count;
        ASSERT_EQ(capture(), ok);
        EXPECT_EQ(captured_model.spin.j_hz[1][2], count >= 1 ? 12.0 : 1.0);
        EXPECT_EQ(captured_model.spin.j_hz[3][1], count >= 2 ? 0.0 : 2.0);
        EXPECT_EQ(captured_model.spin.j_hz[2][3], count >= 3 ? -5.5 : 3.0);
        EXPECT_EQ(captured_model.spin.j_hz[2][2], 0.0);
    }
}

TEST(CaptureModel, RepairsSectorsOfSpatialSequencesOnly) {
    ASSERT_EQ(activate(two_spin_model()), ok);
    g_runtime.sectype[1] = 0;
    g_runtime.nevo[1] = 0;
    ASSERT_EQ(capture(), ok);
    EXPECT_EQ(captured_model.seq.sectors[1].sector_type, 1);
    EXPECT_EQ(captured_model.seq.sectors[1].number_of_evolpoints, 1);
    g_runtime.nevo[1] = -7;
    ASSERT_EQ(capture(), ok);
    EXPECT_EQ(captured_model.seq.sectors[1].number_of_evolpoints, 1);
    g_runtime.sequencetype = 2;
    EXPECT_EQ(capture(), (Outcome{KOR_MODEL_ERR_RANGE, "sector 1 has invalid sector_type=0"}));
    g_runtime.sectype[1] = 1;
    EXPECT_EQ(capture(),
              (Outcome{KOR_MODEL_ERR_RANGE, "sector 1 number_of_evolpoints=-7 is outside 1..8192"}));
}

TEST(CaptureModel, NamesAResultThatHasNone) {
    ASSERT_EQ(activate(two_spin_model()), ok);
    g_runtime.resultflnm[0] = '\0';
    ASSERT_EQ(capture(), ok);
    EXPECT_STREQ(captured_model.cfg.result_filename, "unnamed_result.bin");
    EXPECT_STREQ(g_runtime.resultflnm, "");
}

TEST(CaptureModel, ChecksTheModelAndKeepsTheRecordsFilled) {
    ASSERT_EQ(activate(two_spin_model()), ok);
    g_runtime.nos = 0;
    EXPECT_EQ(capture(),
              (Outcome{KOR_MODEL_ERR_RANGE, "sector_count=0 is invalid; at least one sector is required"}));
    EXPECT_EQ(captured_model.spin.nspins, 2);
    EXPECT_STREQ(captured_model.cfg.result_filename, "result.bin");
}

TEST(LoadCurrentState, LoadsAndActivates) {
    const ModelSet set;
    const auto load = [](const char* path) {
        return outcome_of(
            [&](char* m, std::size_t n) { return KORModel_LoadCurrentLegacyStateFromText(path, m, n); });
    };
    KOR_SetSmokeCheckMode(1);
    g_runtime.Nspins = 0;
    EXPECT_EQ(load(set.model().c_str()), ok);
    EXPECT_EQ(g_runtime.Nspins, 2);
    EXPECT_EQ(g_runtime.ndx, 5);
    for (const char* path : {static_cast<const char*>(nullptr), ""})
        EXPECT_EQ(load(path), (Outcome{KOR_MODEL_ERR_NULLPTR, "input path must be non-empty"}));
    EXPECT_EQ(load("missing"), (Outcome{KOR_MODEL_ERR_IO, "could not open 'missing' for reading"}));
    EXPECT_EQ(g_runtime.Nspins, 2);
}

TEST(SaveCurrentState, CapturesAndSaves) {
    const ModelSet set;
    const auto save = [](const char* path) {
        return outcome_of(
            [&](char* m, std::size_t n) { return KORModel_SaveCurrentLegacyStateToText(path, m, n); });
    };
    Model model = three_spin_model();
    copy_truncated(set.wave().c_str(), model.seq.sectors[1].pulse_filename, KOR_FILE_NAME_SIZE);
    ASSERT_EQ(activate(model), ok);
    const std::string file = plain_name(set.root() / "models/saved.kormodel");
    EXPECT_EQ(save(file.c_str()), ok);
    Model loaded;
    EXPECT_EQ(load_model(file, loaded), ok);
    EXPECT_EQ(loaded.spin.spin_quantum_numbers[3], 2);
    EXPECT_EQ(loaded.spin.j_hz[2][3], -5.5);
    EXPECT_STREQ(loaded.cfg.model_name, "saved");
    for (const char* path : {static_cast<const char*>(nullptr), ""})
        EXPECT_EQ(save(path), (Outcome{KOR_MODEL_ERR_NULLPTR, "output path must be non-empty"}));
    g_runtime.Nspins = 0;
    EXPECT_EQ(save(file.c_str()).message, "legacy spin system is not captureable: Nspins=0 outside 1..8");
}
