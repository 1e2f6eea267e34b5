// The rules that only a whole model has to fulfil.
#include "kormodel/model_rules.h"

#include "model_set.h"

#include <gtest/gtest.h>
#include <limits>

using namespace kor;
using namespace kor_test;

namespace {

Outcome check_in_model(const KORPulseSequenceDef& seq) {
    return outcome_of([&](char* m, std::size_t n) { return check_sequence_in_model(&seq, m, n); });
}

} // namespace

TEST(ModelRules, AValidModelLeavesTheMessageUntouched) {
    const Model model = two_spin_model();
    char message[16] = "as before";
    EXPECT_EQ(KORModel_ValidateAll(&model.spin, &model.seq, &model.cfg, message, sizeof message),
              KOR_MODEL_OK);
    EXPECT_STREQ(message, "as before");
}

TEST(ModelRules, RecordsAreCheckedInOrder) {
    Model model = two_spin_model();
    model.spin.nspins = 0;
    model.seq.sector_count = 21;
    model.cfg.ndx = 0;
    model.seq.sequence_type = 0;
    EXPECT_EQ(validate_model(model).message, "nspins=0 is outside 1..8");
    model.spin.nspins = 2;
    EXPECT_EQ(validate_model(model).message, "sector_count=21 is outside 0..20");
    model.seq.sector_count = 1;
    EXPECT_EQ(validate_model(model).message, "ndx=0 is outside 1..256");
    model.cfg.ndx = 1;
    EXPECT_EQ(validate_model(model).message,
              "sequence_type=0 is invalid; expected 1 (spatial) or 2 (1D/2D NMR)");
}

TEST(ModelRules, NullRecords) {
    const Model model = two_spin_model();
    const auto validate = [](auto* spin, auto* seq, auto* cfg) {
        return outcome_of([&](char* m, std::size_t n) { return KORModel_ValidateAll(spin, seq, cfg, m, n); });
    };
    const KORSpinSystemDef* no_spin = nullptr;
    const KORPulseSequenceDef* no_seq = nullptr;
    const KORRunConfig* no_cfg = nullptr;
    EXPECT_EQ(validate(no_spin, &model.seq, &model.cfg),
              (Outcome{KOR_MODEL_ERR_NULLPTR, "spin definition is null"}));
    EXPECT_EQ(validate(&model.spin, no_seq, &model.cfg),
              (Outcome{KOR_MODEL_ERR_NULLPTR, "pulse-sequence definition is null"}));
    EXPECT_EQ(validate(&model.spin, &model.seq, no_cfg),
              (Outcome{KOR_MODEL_ERR_NULLPTR, "run configuration is null"}));
}

TEST(ModelRules, SequenceTypeIsOneOrTwo) {
    Model model = two_spin_model();
    for (int type : {1, 2}) {
        model.seq.sequence_type = type;
        EXPECT_EQ(validate_model(model), ok);
    }
    for (int type : {0, 3, 9}) {
        model.seq.sequence_type = type;
        EXPECT_EQ(validate_model(model),
                  (Outcome{KOR_MODEL_ERR_RANGE, "sequence_type=" + std::to_string(type) +
                                                    " is invalid; expected 1 (spatial) or 2 (1D/2D NMR)"}));
    }
}

TEST(ModelRules, AtLeastOneSector) {
    Model model = two_spin_model();
    model.seq.sector_count = 0;
    EXPECT_EQ(validate_model(model),
              (Outcome{KOR_MODEL_ERR_RANGE, "sector_count=0 is invalid; at least one sector is required"}));
}

TEST(ModelRules, DurationIsPositive) {
    Model model = two_spin_model();
    model.seq.sectors[1].total_duration_s = 5e-324;
    EXPECT_EQ(validate_model(model), ok);
    model.seq.sectors[1].total_duration_s = 0.0;
    EXPECT_EQ(validate_model(model),
              (Outcome{KOR_MODEL_ERR_RANGE, "sector 1 total_duration_s=0 must be > 0"}));
    model.seq.sectors[1].total_duration_s = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(validate_model(model),
              (Outcome{KOR_MODEL_ERR_RANGE, "sector 1 total_duration_s=nan must be > 0"}));
}

TEST(ModelRules, SpatialSequencesHaveOnlyPlainSectors) {
    Model model = two_spin_model();
    model.seq.sectors[1].sector_type = 2;
    model.seq.sectors[1].number_of_evolpoints = 3;
    EXPECT_EQ(validate_model(model),
              (Outcome{KOR_MODEL_ERR_INCOMPATIBLE,
                       "spatial sequence sector 1 has invalid sector_type=2; expected 1"}));
    model.seq.sectors[1].sector_type = 1;
    EXPECT_EQ(validate_model(model),
              (Outcome{KOR_MODEL_ERR_INCOMPATIBLE,
                       "spatial sequence sector 1 has number_of_evolpoints=3; expected 1"}));
}

TEST(ModelRules, NmrSequencesMayHaveEvolutionSectors) {
    Model model = two_spin_model();
    model.seq.sequence_type = 2;
    model.seq.sectors[1].sector_type = 2;
    model.seq.sectors[1].number_of_evolpoints = 8192;
    EXPECT_EQ(validate_model(model), ok);
}

TEST(ModelRules, OnlyDeclaredSectorsCount) {
    Model model = two_spin_model();
    model.seq.sectors[2].sector_type = 7;
    EXPECT_EQ(validate_model(model), ok);
}

// These rules stand by themselves: they hold for a sequence whose own record nobody has checked.
TEST(ModelRules, UncheckedSequences) {
    const KORPulseSequenceDef* none = nullptr;
    EXPECT_EQ(outcome_of([&](char* m, std::size_t n) { return check_sequence_in_model(none, m, n); }),
              (Outcome{KOR_MODEL_ERR_NULLPTR, "pulse-sequence definition is null"}));

    KORPulseSequenceDef seq = two_spin_model().seq;
    EXPECT_EQ(check_in_model(seq), ok);
    seq.sectors[1].pulse_filename[0] = '\0';
    EXPECT_EQ(check_in_model(seq), (Outcome{KOR_MODEL_ERR_RANGE, "sector 1 pulse_filename is required"}));

    seq = two_spin_model().seq;
    seq.sequence_type = 2;
    for (int type : {0, 3}) {
        seq.sectors[1].sector_type = type;
        EXPECT_EQ(check_in_model(seq),
                  (Outcome{KOR_MODEL_ERR_RANGE,
                           "1D/2D sequence sector 1 has invalid sector_type=" + std::to_string(type)}));
    }
    seq.sectors[1].number_of_evolpoints = 0;
    seq.sectors[1].sector_type = 2;
    EXPECT_EQ(check_in_model(seq),
              (Outcome{KOR_MODEL_ERR_RANGE, "evolution sector 1 must have number_of_evolpoints >= 1"}));
    seq.sectors[1].sector_type = 1;
    EXPECT_EQ(check_in_model(seq), ok);
}
