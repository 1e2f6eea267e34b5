#include "kormodel/records.h"

#include "model_set.h"
#include "support/constants.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>

using namespace kor;
using namespace kor_test;

namespace {

Outcome check(const KORSpinSystemDef& def) {
    return outcome_of([&](char* m, std::size_t n) { return KORSpinSystemDef_Validate(&def, m, n); });
}

Outcome check(const KORPulseSequenceDef& def) {
    return outcome_of([&](char* m, std::size_t n) { return KORPulseSequenceDef_Validate(&def, m, n); });
}

Outcome check(const KORRunConfig& cfg) {
    return outcome_of([&](char* m, std::size_t n) { return KORRunConfig_Validate(&cfg, m, n); });
}

KORSpinSystemDef spins_of(const std::vector<int>& doubled) {
    KORSpinSystemDef def;
    KORSpinSystemDef_Init(&def);
    def.nspins = static_cast<int>(doubled.size());
    for (std::size_t i = 0; i < doubled.size() && i < KOR_MAX_SPINS; ++i)
        def.spin_quantum_numbers[i + 1] = doubled[i];
    return def;
}

KORPulseSequenceDef sequence_of(int sectors) {
    KORPulseSequenceDef def;
    KORPulseSequenceDef_Init(&def);
    def.sector_count = sectors;
    for (KORPulseSectorDef& sector : def.sectors)
        std::strcpy(sector.pulse_filename, "p.bin");
    return def;
}

} // namespace

TEST(ModelStatusString, NamesEveryStatus) {
    const char* const texts[] = {"ok",
                                 "null pointer",
                                 "i/o error",
                                 "parse error",
                                 "range error",
                                 "dimension error",
                                 "incompatible with legacy globals"};
    for (int status = 0; status < 7; ++status)
        EXPECT_STREQ(KORModelStatusString(status), texts[status]);
    for (int status : {-1, 7, 1000})
        EXPECT_STREQ(KORModelStatusString(status), "unknown error");
}

TEST(SetError, WritesNothingWithoutABuffer) {
    char buffer[4] = "abc";
    set_error(nullptr, 4, "%d", 1);
    set_error(buffer, 0, "%d", 1);
    EXPECT_STREQ(buffer, "abc");
}

TEST(SetError, ABufferOfOneCharacterBecomesEmpty) {
    char buffer[2] = "a";
    set_error(buffer, 1, "%d", 1);
    EXPECT_STREQ(buffer, "");
}

TEST(SetError, CutsTheMessageToTheBuffer) {
    char buffer[6] = "";
    set_error(buffer, sizeof buffer, "%s %d", "line", 12);
    EXPECT_STREQ(buffer, "line ");
}

TEST(ValidSectorIndex, IsOneToTwenty) {
    EXPECT_FALSE(valid_sector_index(0));
    EXPECT_TRUE(valid_sector_index(1));
    EXPECT_TRUE(valid_sector_index(20));
    EXPECT_FALSE(valid_sector_index(21));
    EXPECT_FALSE(valid_sector_index(-1));
}

TEST(SpinSystemInit, IsOneSpinOneHalfOfIntensityOne) {
    KORSpinSystemDef def;
    std::memset(&def, 0x55, sizeof def);
    KORSpinSystemDef_Init(&def);
    EXPECT_EQ(def.nspins, 1);
    EXPECT_EQ(def.coupling_mode, 1);
    for (int i = 0; i <= KOR_MAX_SPINS; ++i) {
        EXPECT_EQ(def.spin_quantum_numbers[i], i == 1 ? 1 : 0);
        EXPECT_EQ(def.relative_intensities[i], i == 1 ? 1.0 : 0.0);
        EXPECT_EQ(def.resonance_offsets_hz[i], 0.0);
        for (int j = 0; j <= KOR_MAX_SPINS; ++j)
            EXPECT_EQ(def.j_hz[i][j], 0.0);
    }
    EXPECT_EQ(check(def), ok);
}

TEST(SequenceInit, IsSpatialWithoutSectorsAndWithEverySlotSet) {
    KORPulseSequenceDef def;
    std::memset(&def, 0x55, sizeof def);
    KORPulseSequenceDef_Init(&def);
    EXPECT_EQ(def.sequence_type, 1);
    EXPECT_EQ(def.sector_count, 0);
    for (const KORPulseSectorDef& sector : def.sectors) {
        EXPECT_EQ(sector.sector_type, 1);
        EXPECT_EQ(sector.number_of_timepoints, 1);
        EXPECT_EQ(sector.number_of_evolpoints, 1);
        EXPECT_EQ(sector.total_duration_s, 0.0);
        EXPECT_EQ(sector.offset_frequency_hz, 0.0);
        EXPECT_STREQ(sector.pulse_filename, "");
        EXPECT_STREQ(sector.remark, "");
    }
}

TEST(RunConfigInit, IsOneVoxelAtTheOrigin) {
    KORRunConfig cfg;
    std::memset(&cfg, 0x55, sizeof cfg);
    KORRunConfig_Init(&cfg);
    for (int count : {cfg.ndx, cfg.ndy, cfg.ndz})
        EXPECT_EQ(count, 1);
    for (double coordinate : {cfg.x0_cm, cfg.y0_cm, cfg.z0_cm, cfg.dx_cm, cfg.dy_cm, cfg.dz_cm})
        EXPECT_EQ(coordinate, 0.0);
    EXPECT_STREQ(cfg.result_filename, "result.bin");
    EXPECT_STREQ(cfg.model_name, "");
    EXPECT_EQ(check(cfg), ok);
}

TEST(RecordInit, IgnoresNull) {
    KORSpinSystemDef_Init(nullptr);
    KORPulseSequenceDef_Init(nullptr);
    KORRunConfig_Init(nullptr);
    SUCCEED() << "returned";
}

TEST(SpinSystemRules, NullRecord) {
    EXPECT_EQ(outcome_of([](char* m, std::size_t n) { return KORSpinSystemDef_Validate(nullptr, m, n); }),
              (Outcome{KOR_MODEL_ERR_NULLPTR, "spin definition is null"}));
}

TEST(SpinSystemRules, OneToEightSpins) {
    EXPECT_EQ(check(spins_of({})), (Outcome{KOR_MODEL_ERR_RANGE, "nspins=0 is outside 1..8"}));
    EXPECT_EQ(check(spins_of({1})), ok);
    EXPECT_EQ(check(spins_of({1, 1, 1, 1, 1, 1, 1, 1})), ok);
    EXPECT_EQ(check(spins_of({1, 1, 1, 1, 1, 1, 1, 1, 1})),
              (Outcome{KOR_MODEL_ERR_RANGE, "nspins=9 is outside 1..8"}));
    KORSpinSystemDef def = spins_of({1});
    def.nspins = -2;
    EXPECT_EQ(check(def), (Outcome{KOR_MODEL_ERR_RANGE, "nspins=-2 is outside 1..8"}));
}

TEST(SpinSystemRules, QuantumNumbersFromOne) {
    EXPECT_EQ(check(spins_of({1, 0})),
              (Outcome{KOR_MODEL_ERR_RANGE, "spin_quantum_numbers[2]=0 must be >= 1 (legacy stores 2I)"}));
    EXPECT_EQ(check(spins_of({-1, 0})),
              (Outcome{KOR_MODEL_ERR_RANGE, "spin_quantum_numbers[1]=-1 must be >= 1 (legacy stores 2I)"}));
}

TEST(SpinSystemRules, DimensionUpTo256) {
    EXPECT_EQ(check(spins_of({3, 3, 3, 3})), ok);
    EXPECT_EQ(check(spins_of({255})), ok);
    EXPECT_EQ(check(spins_of({256})),
              (Outcome{KOR_MODEL_ERR_DIMENSION, "Hilbert dimension 257 exceeds KOR_MAX_STATES=256"}));
    EXPECT_EQ(check(spins_of({3, 3, 3, 3, 1})),
              (Outcome{KOR_MODEL_ERR_DIMENSION, "Hilbert dimension 512 exceeds KOR_MAX_STATES=256"}));
    EXPECT_EQ(check(spins_of({2147483647})),
              (Outcome{KOR_MODEL_ERR_DIMENSION, "Hilbert dimension 2147483648 exceeds KOR_MAX_STATES=256"}));
}

TEST(SpinSystemRules, DimensionIsCheckedSpinBySpin) {
    EXPECT_EQ(check(spins_of({15, 16, 0})),
              (Outcome{KOR_MODEL_ERR_DIMENSION, "Hilbert dimension 272 exceeds KOR_MAX_STATES=256"}));
}

TEST(SpinSystemRules, CouplingDiagonalIsZero) {
    KORSpinSystemDef def = spins_of({1, 1});
    def.j_hz[2][2] = -0.0;
    EXPECT_EQ(check(def), ok);
    const Outcome refused{KOR_MODEL_ERR_RANGE, "j_hz[2][2] must be zero on the diagonal"};
    for (double value : {1e-300, -3.0, NOT_A_NUMBER}) {
        def.j_hz[2][2] = value;
        EXPECT_EQ(check(def), refused);
    }
}

TEST(SpinSystemRules, ThePairsOfEightSpinsHaveRoom) {
    const auto check_pairs = [](int pairs) {
        return outcome_of([pairs](char* m, std::size_t n) { return check_pair_count(pairs, m, n); });
    };
    EXPECT_EQ(check_pairs(0), ok);
    EXPECT_EQ(check_pairs(28), ok);
    EXPECT_EQ(check_pairs(29), (Outcome{KOR_MODEL_ERR_INCOMPATIBLE,
                                        "pair count 29 exceeds current legacy coupling capacity 28"}));
}

TEST(SpinSystemRules, CouplingsAreSymmetric) {
    KORSpinSystemDef def = spins_of({1, 1, 1});
    def.j_hz[2][3] = 7.0;
    const Outcome refused{KOR_MODEL_ERR_RANGE, "j_hz matrix is not symmetric at (2,3) and (3,2)"};
    EXPECT_EQ(check(def), refused);
    def.j_hz[3][2] = 7.0;
    EXPECT_EQ(check(def), ok);
    def.j_hz[2][3] = def.j_hz[3][2] = NOT_A_NUMBER;
    EXPECT_EQ(check(def), refused);
}

TEST(SpinSystemRules, CouplingsBeyondTheLastSpinAreNotLookedAt) {
    KORSpinSystemDef def = spins_of({1, 1});
    def.j_hz[3][3] = def.j_hz[1][3] = 5.0;
    EXPECT_EQ(check(def), ok);
}

TEST(SpinSystemRules, DiagonalComesBeforeSymmetryRowByRow) {
    KORSpinSystemDef def = spins_of({1, 1});
    def.j_hz[1][2] = 1.0;
    def.j_hz[2][2] = 1.0;
    EXPECT_EQ(check(def).message, "j_hz matrix is not symmetric at (1,2) and (2,1)");
}

TEST(SpinSystemRules, IntensitiesOffsetsAndModeAreFree) {
    KORSpinSystemDef def = spins_of({1});
    def.relative_intensities[1] = NOT_A_NUMBER;
    def.resonance_offsets_hz[1] = -1e300;
    def.coupling_mode = -77;
    EXPECT_EQ(check(def), ok);
}

TEST(SequenceRules, NullRecord) {
    EXPECT_EQ(outcome_of([](char* m, std::size_t n) { return KORPulseSequenceDef_Validate(nullptr, m, n); }),
              (Outcome{KOR_MODEL_ERR_NULLPTR, "pulse-sequence definition is null"}));
}

TEST(SequenceRules, NoneToTwentySectors) {
    EXPECT_EQ(check(sequence_of(0)), ok);
    EXPECT_EQ(check(sequence_of(20)), ok);
    EXPECT_EQ(check(sequence_of(21)), (Outcome{KOR_MODEL_ERR_RANGE, "sector_count=21 is outside 0..20"}));
    EXPECT_EQ(check(sequence_of(-1)), (Outcome{KOR_MODEL_ERR_RANGE, "sector_count=-1 is outside 0..20"}));
}

TEST(SequenceRules, SectorTypeIsOneOrTwo) {
    KORPulseSequenceDef def = sequence_of(2);
    for (int type : {1, 2}) {
        def.sectors[2].sector_type = type;
        EXPECT_EQ(check(def), ok);
    }
    for (int type : {0, 3, -1}) {
        def.sectors[2].sector_type = type;
        EXPECT_EQ(check(def),
                  (Outcome{KOR_MODEL_ERR_RANGE, "sector 2 has invalid sector_type=" + std::to_string(type)}));
    }
}

TEST(SequenceRules, TimeAndEvolutionPointsUpTo8192) {
    KORPulseSequenceDef def = sequence_of(1);
    for (int points : {1, 8192}) {
        def.sectors[1].number_of_timepoints = def.sectors[1].number_of_evolpoints = points;
        EXPECT_EQ(check(def), ok);
    }
    for (int points : {0, 8193}) {
        def = sequence_of(1);
        def.sectors[1].number_of_timepoints = points;
        EXPECT_EQ(check(def),
                  (Outcome{KOR_MODEL_ERR_RANGE, "sector 1 number_of_timepoints=" + std::to_string(points) +
                                                    " is outside 1..8192"}));
        def = sequence_of(1);
        def.sectors[1].number_of_evolpoints = points;
        EXPECT_EQ(check(def),
                  (Outcome{KOR_MODEL_ERR_RANGE, "sector 1 number_of_evolpoints=" + std::to_string(points) +
                                                    " is outside 1..8192"}));
    }
}

TEST(SequenceRules, DurationIsNotNegative) {
    KORPulseSequenceDef def = sequence_of(1);
    EXPECT_EQ(check(def), ok);
    def.sectors[1].total_duration_s = -2.5e-6;
    EXPECT_EQ(check(def), (Outcome{KOR_MODEL_ERR_RANGE, "sector 1 total_duration_s=-2.5e-06 must be >= 0"}));
}

TEST(SequenceRules, PulseFileIsRequired) {
    KORPulseSequenceDef def = sequence_of(3);
    def.sectors[3].pulse_filename[0] = '\0';
    EXPECT_EQ(check(def), (Outcome{KOR_MODEL_ERR_RANGE, "sector 3 pulse_filename is required"}));
    def.sector_count = 2;
    EXPECT_EQ(check(def), ok);
}

TEST(SequenceRules, TheFirstRuleBrokenDecides) {
    KORPulseSequenceDef def = sequence_of(2);
    KORPulseSectorDef& sector = def.sectors[1];
    def.sectors[2].sector_type = 9;
    sector = {0, 0, 0, -1.0, 0.0, "", ""};
    EXPECT_EQ(check(def).message, "sector 1 has invalid sector_type=0");
    sector.sector_type = 1;
    EXPECT_EQ(check(def).message, "sector 1 number_of_timepoints=0 is outside 1..8192");
    sector.number_of_timepoints = 1;
    EXPECT_EQ(check(def).message, "sector 1 number_of_evolpoints=0 is outside 1..8192");
    sector.number_of_evolpoints = 1;
    EXPECT_EQ(check(def).message, "sector 1 total_duration_s=-1 must be >= 0");
    sector.total_duration_s = 0.0;
    EXPECT_EQ(check(def).message, "sector 1 pulse_filename is required");
    std::strcpy(sector.pulse_filename, "p");
    EXPECT_EQ(check(def).message, "sector 2 has invalid sector_type=9");
}

TEST(SequenceRules, SequenceTypeIsNotLookedAt) {
    KORPulseSequenceDef def = sequence_of(1);
    def.sequence_type = 9;
    EXPECT_EQ(check(def), ok);
}

TEST(RunConfigRules, NullRecord) {
    EXPECT_EQ(outcome_of([](char* m, std::size_t n) { return KORRunConfig_Validate(nullptr, m, n); }),
              (Outcome{KOR_MODEL_ERR_NULLPTR, "run configuration is null"}));
}

TEST(RunConfigRules, OneTo256VoxelsPerAxis) {
    const struct {
        const char* name;
        int KORRunConfig::*count;
    } axes[] = {{"ndx", &KORRunConfig::ndx}, {"ndy", &KORRunConfig::ndy}, {"ndz", &KORRunConfig::ndz}};
    for (const auto& axis : axes) {
        for (int count : {0, 1, 256, 257}) {
            KORRunConfig cfg;
            KORRunConfig_Init(&cfg);
            cfg.*axis.count = count;
            const Outcome refused{KOR_MODEL_ERR_RANGE, std::string(axis.name) + "=" + std::to_string(count) +
                                                           " is outside 1..256"};
            EXPECT_EQ(check(cfg), count >= 1 && count <= 256 ? ok : refused);
        }
    }
}

TEST(RunConfigRules, StepsAreNotNegative) {
    for (auto step : {&KORRunConfig::dx_cm, &KORRunConfig::dy_cm, &KORRunConfig::dz_cm}) {
        KORRunConfig cfg;
        KORRunConfig_Init(&cfg);
        cfg.*step = 0.25;
        EXPECT_EQ(check(cfg), ok);
        cfg.*step = -1e-9;
        EXPECT_EQ(check(cfg), (Outcome{KOR_MODEL_ERR_RANGE, "dx_cm/dy_cm/dz_cm must be >= 0"}));
    }
}

TEST(RunConfigRules, OriginIsFreeAndResultIsRequired) {
    KORRunConfig cfg;
    KORRunConfig_Init(&cfg);
    cfg.x0_cm = cfg.y0_cm = cfg.z0_cm = -1e9;
    EXPECT_EQ(check(cfg), ok);
    cfg.result_filename[0] = '\0';
    EXPECT_EQ(check(cfg), (Outcome{KOR_MODEL_ERR_RANGE, "result_filename is required"}));
}

TEST(RunConfigRules, CountsComeBeforeStepsAndResult) {
    KORRunConfig cfg;
    KORRunConfig_Init(&cfg);
    cfg.ndx = cfg.ndy = cfg.ndz = 0;
    cfg.dx_cm = -1.0;
    cfg.result_filename[0] = '\0';
    EXPECT_EQ(check(cfg).message, "ndx=0 is outside 1..256");
    cfg.ndx = 1;
    EXPECT_EQ(check(cfg).message, "ndy=0 is outside 1..256");
    cfg.ndy = 1;
    EXPECT_EQ(check(cfg).message, "ndz=0 is outside 1..256");
    cfg.ndz = 1;
    EXPECT_EQ(check(cfg).message, "dx_cm/dy_cm/dz_cm must be >= 0");
    cfg.dx_cm = 0.0;
    EXPECT_EQ(check(cfg).message, "result_filename is required");
}
