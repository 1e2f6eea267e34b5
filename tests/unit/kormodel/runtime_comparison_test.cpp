#include "kormodel/runtime_comparison.h"

#include "kor/runtime_state.h"
#include "kor/smoke_check_mode.h"
#include "model_set.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

/// The message of the comparison, "same" when the state holds the model.
std::string compare(const Model& model) {
    char message[KOR_MESSAGE_SIZE] = "";
    const int same =
        kor_runtime_matches_model_def(&model.spin, &model.seq, &model.cfg, message, sizeof message);
    EXPECT_EQ(same != 0, message[0] == '\0') << message;
    return same ? "same" : message;
}

Model held() {
    Model model = two_spin_model();
    model.seq.sector_count = 2;
    model.seq.sectors[2] = model.seq.sectors[1];
    KOR_SetSmokeCheckMode(1);
    KORModel_ActivateInLegacyRuntime(&model.spin, &model.seq, &model.cfg, nullptr, 0);
    return model;
}

/// The message after `change` has been made to the model that the state holds.
template <class Change> std::string compare_after(Change change) {
    Model model = held();
    change(model);
    return compare(model);
}

const std::string verification_failed = "legacy-runtime verification failed: ";

} // namespace

TEST(RuntimeComparison, AnActivatedModelMatches) {
    EXPECT_EQ(compare(held()), "same");
}

TEST(RuntimeComparison, TheModelNameDoesNotCount) {
    EXPECT_EQ(compare_after([](Model& m) { std::strcpy(m.cfg.model_name, "other"); }), "same");
}

TEST(RuntimeComparison, NamesTheSpinFieldThatDiffers) {
    EXPECT_EQ(compare_after([](Model& m) { m.spin.nspins = 3; }),
              verification_failed + "nspins mismatch (2 vs 3)");
    EXPECT_EQ(compare_after([](Model& m) { m.spin.coupling_mode = 2; }),
              verification_failed + "coupling_mode mismatch (1 vs 2)");
    EXPECT_EQ(compare_after([](Model& m) { m.spin.spin_quantum_numbers[2] = 3; }),
              verification_failed + "spin_quantum_numbers[2] mismatch");
    EXPECT_EQ(compare_after([](Model& m) { m.spin.relative_intensities[1] = 1.5; }),
              verification_failed + "relative_intensities[1] mismatch");
    EXPECT_EQ(compare_after([](Model& m) { m.spin.resonance_offsets_hz[2] = std::nextafter(-40.0, 0.0); }),
              verification_failed + "resonance_offsets_hz[2] mismatch");
    EXPECT_EQ(compare_after([](Model& m) { m.spin.j_hz[1][2] = 11.0; }),
              verification_failed + "j_hz[1][2] mismatch");
    EXPECT_EQ(compare_after([](Model& m) { m.spin.j_hz[2][1] = 11.0; }),
              verification_failed + "j_hz[2][1] mismatch");
}

TEST(RuntimeComparison, NamesTheSequenceFieldThatDiffers) {
    EXPECT_EQ(compare_after([](Model& m) { m.seq.sequence_type = 2; }),
              verification_failed + "sequence_type mismatch (1 vs 2)");
    EXPECT_EQ(compare_after([](Model& m) { m.seq.sector_count = 1; }),
              verification_failed + "sector_count mismatch (2 vs 1)");
    EXPECT_EQ(compare_after([](Model& m) { m.seq.sectors[2].sector_type = 2; }),
              verification_failed + "sector_type mismatch in sector 2");
    EXPECT_EQ(compare_after([](Model& m) { m.seq.sectors[1].number_of_timepoints = 2; }),
              verification_failed + "sector_timepoints mismatch in sector 1");
    EXPECT_EQ(compare_after([](Model& m) { m.seq.sectors[2].number_of_evolpoints = 2; }),
              verification_failed + "sector_evolpoints mismatch in sector 2");
    EXPECT_EQ(compare_after([](Model& m) { m.seq.sectors[2].total_duration_s = 1.0; }),
              verification_failed + "sector_duration_s mismatch in sector 2");
    EXPECT_EQ(compare_after([](Model& m) { m.seq.sectors[2].offset_frequency_hz = 1.0; }),
              verification_failed + "sector_statoff_hz mismatch in sector 2");
    EXPECT_EQ(compare_after([](Model& m) { std::strcpy(m.seq.sectors[2].pulse_filename, "Waveforms/p1"); }),
              verification_failed + "sector_pulsefile mismatch in sector 2");
    EXPECT_EQ(compare_after([](Model& m) { m.seq.sectors[1].remark[0] = '\0'; }),
              verification_failed + "sector_remark mismatch in sector 1");
}

TEST(RuntimeComparison, NamesTheGridAndTheResult) {
    for (auto count : {&KORRunConfig::ndx, &KORRunConfig::ndy, &KORRunConfig::ndz})
        EXPECT_EQ(compare_after([&](Model& m) { m.cfg.*count = 2; }),
                  verification_failed + "grid dimension mismatch");
    for (auto coordinate : {&KORRunConfig::x0_cm, &KORRunConfig::y0_cm, &KORRunConfig::z0_cm,
                            &KORRunConfig::dx_cm, &KORRunConfig::dy_cm, &KORRunConfig::dz_cm})
        EXPECT_EQ(compare_after([&](Model& m) { m.cfg.*coordinate = 0.5; }),
                  verification_failed + "grid coordinate mismatch");
    EXPECT_EQ(compare_after([](Model& m) { std::strcpy(m.cfg.result_filename, "Result.bin"); }),
              verification_failed + "result_filename mismatch");
}

TEST(RuntimeComparison, StopsAtTheFirstDifference) {
    EXPECT_EQ(compare_after([](Model& m) {
                  m.cfg.ndx = 2;
                  m.seq.sectors[2].sector_type = 2;
                  m.seq.sectors[1].remark[0] = '\0';
                  m.spin.j_hz[1][2] = 0.0;
                  m.spin.relative_intensities[2] = 0.0;
              }),
              verification_failed + "j_hz[1][2] mismatch");
}

TEST(RuntimeComparison, ANanNeverMatches) {
    Model model = held();
    model.spin.relative_intensities[1] = std::nan("");
    KORModel_ActivateInLegacyRuntime(&model.spin, &model.seq, &model.cfg, nullptr, 0);
    EXPECT_EQ(compare(model), verification_failed + "relative_intensities[1] mismatch");
}

TEST(RuntimeComparison, AStateThatCannotBeCapturedMatchesNothing) {
    const Model model = held();
    g_runtime.Nspins = 9;
    EXPECT_EQ(compare(model), "legacy spin system is not captureable: Nspins=9 outside 1..8");
}
