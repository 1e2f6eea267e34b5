#include "pulsesequencedefiner_state.h"

#include "kor/runtime_state.h"
#include "support/composer_state.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace kor;
using namespace kor_test;

namespace {

void name_sector(int k, const char* file) {
    std::strcpy(g_runtime.fnames[k], file);
}

std::string default_leaf(const char* short_name, int is_2d, int k, std::size_t size = 200) {
    char leaf[200];
    ps_build_default_waveform_leaf(leaf, size, short_name, is_2d, k);
    return leaf;
}

} // namespace

TEST(SequenceFamilyLabel, NamesTheTwoFamilies) {
    EXPECT_STREQ(sequence_family_label(1), "spatially resolved");
    EXPECT_STREQ(sequence_family_label(2), "1D or 2D NMR");
    for (int other : {0, 3, -1})
        EXPECT_STREQ(sequence_family_label(other), "unknown");
}

TEST(DefaultWaveformLeaf, IsMadeOfShortNameFamilyAndSector) {
    EXPECT_EQ(default_leaf("lac_press", 0, 1), "lac_press_s01.bin");
    EXPECT_EQ(default_leaf("lac_press", 1, 20), "lac_press_2d_s20.bin");
    EXPECT_EQ(default_leaf(nullptr, 0, 7), "sector-07.bin");
    EXPECT_EQ(default_leaf("", 1, 12), "sector2d-12.bin");
    EXPECT_EQ(default_leaf("lac", 0, 3, 6), "lac_s");
}

TEST(SpatialSectorIsDefined, AnyOfFourFieldsDefinesIt) {
    fresh_state();
    EXPECT_FALSE(ps_spatial_sector_is_defined(4));
    g_runtime.noti[4] = 1;
    EXPECT_TRUE(ps_spatial_sector_is_defined(4));
    g_runtime.noti[4] = -1;
    EXPECT_FALSE(ps_spatial_sector_is_defined(4));
    g_runtime.sectdur[4] = 1e-9;
    EXPECT_TRUE(ps_spatial_sector_is_defined(4));
    g_runtime.sectdur[4] = -1;
    EXPECT_FALSE(ps_spatial_sector_is_defined(4));
    name_sector(4, "a.bin");
    EXPECT_TRUE(ps_spatial_sector_is_defined(4));
    name_sector(4, "");
    std::strcpy(g_runtime.remarks[4], " blank first");
    EXPECT_FALSE(ps_spatial_sector_is_defined(4));
    std::strcpy(g_runtime.remarks[4], "adc");
    EXPECT_TRUE(ps_spatial_sector_is_defined(4));
}

TEST(SpatialSectorIsDefined, OtherFieldsDoNotDefineIt) {
    fresh_state();
    g_runtime.sectype[2] = g_runtime.nevo[2] = 1;
    g_runtime.statoff[2] = 100;
    EXPECT_FALSE(ps_spatial_sector_is_defined(2));
}

TEST(SpatialSectorIsDefined, OnlySectorsOneToTwentyExist) {
    fresh_state();
    g_runtime.noti[0] = 5;
    EXPECT_FALSE(ps_spatial_sector_is_defined(0));
    EXPECT_FALSE(ps_spatial_sector_is_defined(-1));
    EXPECT_FALSE(ps_spatial_sector_is_defined(21));
}

TEST(FirstUndefinedSector, IsTheLowestGap) {
    fresh_state();
    EXPECT_EQ(first_undefined_sector(), 1);
    g_runtime.noti[1] = g_runtime.noti[2] = g_runtime.noti[4] = 1;
    EXPECT_EQ(first_undefined_sector(), 3);
    for (int k = 1; k <= 19; ++k)
        g_runtime.noti[k] = 1;
    EXPECT_EQ(first_undefined_sector(), 20);
    g_runtime.noti[20] = 1;
    EXPECT_EQ(first_undefined_sector(), 20);
}

TEST(InheritedEvolutionSteps, ComeFromTheNearestDefinedSectorBefore) {
    fresh_state();
    EXPECT_EQ(inherited_evolution_steps(1), 1);
    EXPECT_EQ(inherited_evolution_steps(5), 1);
    g_runtime.noti[4] = 1;
    g_runtime.nevo[4] = 64;
    EXPECT_EQ(inherited_evolution_steps(5), 64);
    // Sectors that are not defined yet, whatever they hold, pass on what stands before them.
    g_runtime.nevo[5] = g_runtime.nevo[6] = 3;
    EXPECT_EQ(inherited_evolution_steps(6), 64);
    EXPECT_EQ(inherited_evolution_steps(7), 64);
    EXPECT_EQ(inherited_evolution_steps(4), 1);
    // What stands in the unused entry does not matter.
    g_runtime.nevo[0] = g_runtime.noti[0] = 9;
    EXPECT_EQ(inherited_evolution_steps(1), 1);
}

TEST(Initialize, ForgetsModelAndSequence) {
    fresh_state_with_spins();
    g_runtime.nos = 3;
    g_runtime.noti[2] = 7;
    g_runtime.systemset = g_runtime.sectorset = g_runtime.offsetset = 1;
    g_runtime.ndx = g_runtime.ndy = g_runtime.ndz = 5;
    Initialize();
    EXPECT_EQ(g_runtime.Nspins, 0);
    EXPECT_EQ(g_runtime.nos, 0);
    EXPECT_EQ(g_runtime.nevo[0], 1);
    EXPECT_EQ(g_runtime.systemset + g_runtime.sectorset + g_runtime.offsetset, 0);
    EXPECT_EQ(g_runtime.ndx * 100 + g_runtime.ndy * 10 + g_runtime.ndz, 111);
    EXPECT_STREQ(g_runtime.resultflnm, "result.bin");
    EXPECT_FALSE(ps_spatial_sector_is_defined(2));
}

TEST(BeginNewSequence, EmptiesEverySectorAndKeepsTheSpins) {
    fresh_state_with_spins();
    for (int k = 1; k <= KOR_MAX_SECTORS; ++k) {
        g_runtime.sectype[k] = 2;
        g_runtime.noti[k] = 5;
        g_runtime.nevo[k] = 16;
        g_runtime.sectdur[k] = g_runtime.statoff[k] = 1;
        name_sector(k, "a.bin");
        std::strcpy(g_runtime.remarks[k], "adc");
    }
    g_runtime.nos = 20;
    g_runtime.sectorset = 1;
    std::strcpy(g_runtime.resultflnm, "mine.bin");
    begin_new_sequence(FAMILY_SPATIAL);
    for (int k = 1; k <= KOR_MAX_SECTORS; ++k) {
        EXPECT_EQ(g_runtime.sectype[k], 0);
        EXPECT_EQ(g_runtime.noti[k], 0);
        EXPECT_EQ(g_runtime.nevo[k], 1);
        EXPECT_EQ(g_runtime.sectdur[k], 0);
        EXPECT_EQ(g_runtime.statoff[k], 0);
        EXPECT_STREQ(g_runtime.fnames[k], "");
        EXPECT_STREQ(g_runtime.remarks[k], "");
    }
    EXPECT_EQ(g_runtime.nos, 0);
    EXPECT_EQ(g_runtime.nevo[0], 1);
    EXPECT_EQ(g_runtime.sectorset, 0);
    EXPECT_EQ(g_runtime.systemset, 1);
    EXPECT_EQ(g_runtime.offsetset, 1);
    EXPECT_EQ(g_runtime.sequencetype, 1);
    EXPECT_EQ(g_runtime.Nspins, 2);
    EXPECT_STREQ(g_runtime.resultflnm, "mine.bin");
}

TEST(BeginNewSequence, TheNmrFamilyHasNoGrid) {
    fresh_state_with_spins();
    g_runtime.offsetset = 1;
    begin_new_sequence(FAMILY_NMR);
    EXPECT_EQ(g_runtime.offsetset, 0);
    EXPECT_EQ(g_runtime.sequencetype, 2);
    EXPECT_STREQ(g_runtime.resultflnm, "result.bin");
}

TEST(BeginNewSequence, WithoutSpinsTheStateIsInitialised) {
    fresh_state();
    g_runtime.ndx = 7;
    std::strcpy(g_runtime.resultflnm, "mine.bin");
    begin_new_sequence(FAMILY_SPATIAL);
    EXPECT_EQ(g_runtime.systemset, 0);
    EXPECT_EQ(g_runtime.ndx, 1);
    EXPECT_STREQ(g_runtime.resultflnm, "result.bin");
}

TEST(ContinueSequence, IsForTheSameFamilyOrNone) {
    fresh_state_with_spins();
    g_runtime.nos = 2;
    for (int prepared : {0, 1, 2}) {
        g_runtime.sequencetype = prepared;
        EXPECT_EQ(sequence_can_continue_as(FAMILY_SPATIAL), prepared != 2);
        EXPECT_EQ(sequence_can_continue_as(FAMILY_NMR), prepared != 1);
    }
    g_runtime.nos = 0;
    EXPECT_TRUE(sequence_can_continue_as(FAMILY_SPATIAL));
    EXPECT_TRUE(sequence_can_continue_as(FAMILY_NMR));
}

TEST(ContinueSequence, SetsTheFlagsFromWhatIsThere) {
    fresh_state_with_spins();
    g_runtime.nos = 2;
    g_runtime.systemset = g_runtime.sectorset = g_runtime.offsetset = 0;
    continue_sequence_as(FAMILY_SPATIAL);
    EXPECT_EQ(g_runtime.systemset, 1);
    EXPECT_EQ(g_runtime.sectorset, 1);
    EXPECT_EQ(g_runtime.offsetset, 1);
    g_runtime.ndy = 0;
    g_runtime.nos = 0;
    g_runtime.Nspins = 0;
    continue_sequence_as(FAMILY_SPATIAL);
    EXPECT_EQ(g_runtime.systemset + g_runtime.sectorset + g_runtime.offsetset, 0);
    g_runtime.ndy = 1;
    continue_sequence_as(FAMILY_NMR);
    EXPECT_EQ(g_runtime.offsetset, 0);
    EXPECT_EQ(g_runtime.sequencetype, 2);
}

TEST(CountEditedSector, GrowsTheSequenceToTheHighestSector) {
    fresh_state();
    count_edited_sector(3);
    EXPECT_EQ(g_runtime.nos, 3);
    EXPECT_EQ(g_runtime.sectorset, 1);
    count_edited_sector(1);
    EXPECT_EQ(g_runtime.nos, 3);
}
