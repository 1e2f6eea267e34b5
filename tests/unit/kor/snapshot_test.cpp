#include "kor/snapshot.h"

#include "kor/smoke_check_mode.h"
#include "kor/spin_system.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace kor;

namespace {

KORLegacySnapshot taken_snapshot;

/// A system of `spins` spins 1/2 with 20 sectors; every field different.
void define_system(int spins) {
    KOR_SetSmokeCheckMode(1);
    RuntimeState& s = g_runtime;
    s.Nspins = spins;
    std::memset(s.jc, 0, sizeof s.jc);
    std::memset(s.couplings, 0, sizeof s.couplings);
    s.Jexact = 1;
    s.Jcount = 0;
    for (int i = 1; i <= KOR_MAX_SPINS; ++i) {
        s.quantnum[i] = i <= spins;
        s.relspinamp[i] = 10.0 + i;
        s.resofreqs[i] = 20.0 + i;
        for (int j = i + 1; j <= spins; ++j) {
            s.couplings[++s.Jcount] = 100.0 * i + j;
            s.jc[i][j] = s.jc[j][i] = s.couplings[s.Jcount];
        }
    }
    s.sequencetype = 2;
    s.nos = 20;
    for (int k = 0; k <= KOR_MAX_SECTORS; ++k) {
        s.sectype[k] = 1 + k % 2;
        s.noti[k] = 30 + k;
        s.nevo[k] = 60 + k;
        s.sectdur[k] = 0.5 + k;
        s.statoff[k] = -1.0 * k;
        std::strcpy(s.fnames[k], ("wave" + std::to_string(k)).c_str());
        std::strcpy(s.remarks[k], ("remark" + std::to_string(k)).c_str());
    }
    s.ndx = 2;
    s.ndy = 3;
    s.ndz = 4;
    s.x0 = 0.1;
    s.y0 = 0.2;
    s.z0 = 0.3;
    s.dx = 0.4;
    s.dy = 0.5;
    s.dz = 0.6;
    std::strcpy(s.resultflnm, "result.bin");
    s.systemset = s.offsetset = s.sectorset = 1;
    s.calc = 5;
    s.pulseflag = 1;
    s.ap = 77;
    s.ndw = 88;
    KOR_RebuildSpinSystemFromPulseSequenceGlobals();
}

/// The definition part of the state spoilt, so that restoring has to write all of it.
void spoil_definition() {
    RuntimeState& s = g_runtime;
    s.Nspins = 1;
    s.n = 2;
    s.Jexact = 9;
    s.Jcount = 9;
    s.sequencetype = s.nos = s.ndx = s.ndy = s.ndz = s.calc = s.pulseflag = s.ap = s.ndw = 9;
    s.systemset = s.offsetset = s.sectorset = s.spinsystemdefined = s.rfpulsedefined = s.offsetsdefined = 0;
    std::memset(s.quantnum, 0, sizeof s.quantnum);
    std::memset(s.Ilist, 0, sizeof s.Ilist);
    std::memset(s.relspinamp, 0, sizeof s.relspinamp);
    std::memset(s.resofreqs, 0, sizeof s.resofreqs);
    std::memset(s.jc, 0, sizeof s.jc);
    std::memset(s.couplings, 0, sizeof s.couplings);
    std::memset(s.sectype, 0, sizeof s.sectype);
    std::memset(s.noti, 0, sizeof s.noti);
    std::memset(s.nevo, 0, sizeof s.nevo);
    std::memset(s.sectdur, 0, sizeof s.sectdur);
    std::memset(s.statoff, 0, sizeof s.statoff);
    std::memset(s.fnames, 0, sizeof s.fnames);
    std::memset(s.remarks, 0, sizeof s.remarks);
    std::memset(s.resultflnm, 0, sizeof s.resultflnm);
    s.x0 = s.y0 = s.z0 = s.dx = s.dy = s.dz = -9.0;
}

double izee_of_state(int state) {
    return g_runtime.Izee[state][state][1];
}

} // namespace

TEST(Snapshot, CapturingZeroFillsTheRecordFirst) {
    define_system(2);
    std::memset(&taken_snapshot, 0x55, sizeof taken_snapshot);
    CaptureLegacySnapshot(&taken_snapshot);
    for (int i : {7, 8}) {
        EXPECT_EQ(taken_snapshot.quantnum[i], 0);
        EXPECT_EQ(taken_snapshot.relspinamp[i], 0.0);
        EXPECT_EQ(taken_snapshot.resofreqs[i], 0.0);
    }
}

TEST(Snapshot, ASixSpinSystemRoundTripsExactly) {
    define_system(6);
    CaptureLegacySnapshot(&taken_snapshot);
    static RuntimeState before;
    std::memcpy(&before, &g_runtime, sizeof before);
    spoil_definition();
    g_runtime.relspinamp[7] = before.relspinamp[7];
    g_runtime.relspinamp[8] = before.relspinamp[8];
    g_runtime.resofreqs[7] = before.resofreqs[7];
    g_runtime.resofreqs[8] = before.resofreqs[8];
    RestoreLegacySnapshot(&taken_snapshot);
    EXPECT_EQ(std::memcmp(&before, &g_runtime, sizeof before), 0);
}

TEST(Snapshot, AnEightSpinSystemLosesSpinsSevenAndEight) {
    define_system(8);
    CaptureLegacySnapshot(&taken_snapshot);
    EXPECT_EQ(taken_snapshot.Nspins, 8);
    EXPECT_EQ(taken_snapshot.Jcount, 28);
    for (int i = 1; i <= 8; ++i) {
        EXPECT_EQ(taken_snapshot.quantnum[i], i <= 6 ? 1 : 0);
        EXPECT_EQ(taken_snapshot.relspinamp[i], i <= 6 ? 10.0 + i : 0.0);
        EXPECT_EQ(taken_snapshot.resofreqs[i], i <= 6 ? 20.0 + i : 0.0);
        EXPECT_EQ(taken_snapshot.jc[7][i], 0.0);
        EXPECT_EQ(taken_snapshot.jc[i][8], 0.0);
    }
    EXPECT_EQ(taken_snapshot.jc[5][6], 506.0);
    for (int p = 1; p <= 28; ++p)
        EXPECT_EQ(taken_snapshot.couplings[p], p <= 20 ? g_runtime.couplings[p] : 0.0);
}

TEST(Snapshot, RestoringLeavesSpinsSevenAndEightOfTheState) {
    define_system(8);
    CaptureLegacySnapshot(&taken_snapshot);
    define_system(2);
    g_runtime.quantnum[7] = 3;
    g_runtime.relspinamp[7] = -7.0;
    g_runtime.resofreqs[8] = -8.0;
    g_runtime.couplings[21] = -21.0;
    g_runtime.couplings[20] = -20.0;
    taken_snapshot.systemset = 0;
    RestoreLegacySnapshot(&taken_snapshot);
    EXPECT_EQ(g_runtime.Nspins, 8);
    EXPECT_EQ(g_runtime.quantnum[6], 1);
    EXPECT_EQ(g_runtime.quantnum[7], 3);
    EXPECT_EQ(g_runtime.relspinamp[7], -7.0);
    EXPECT_EQ(g_runtime.resofreqs[8], -8.0);
    EXPECT_EQ(g_runtime.couplings[21], -21.0);
    EXPECT_EQ(g_runtime.couplings[20], taken_snapshot.couplings[20]);
}

TEST(Snapshot, RestoringWritesTheQuantumNumbersIntoTheList) {
    define_system(3);
    CaptureLegacySnapshot(&taken_snapshot);
    taken_snapshot.systemset = 0;
    taken_snapshot.quantnum[2] = 5;
    std::memset(g_runtime.Ilist, 0, sizeof g_runtime.Ilist);
    RestoreLegacySnapshot(&taken_snapshot);
    EXPECT_EQ(g_runtime.Ilist[1], 1);
    EXPECT_EQ(g_runtime.Ilist[2], 5);
    EXPECT_EQ(g_runtime.Ilist[4], 0);
}

TEST(Snapshot, RestoringRebuildsTheOperators) {
    define_system(2);
    CaptureLegacySnapshot(&taken_snapshot);
    const double izee = izee_of_state(1);
    g_runtime.resofreqs[1] = 900.0;
    KOR_RebuildSpinSystemFromPulseSequenceGlobals();
    ASSERT_NE(izee_of_state(1), izee);
    RestoreLegacySnapshot(&taken_snapshot);
    EXPECT_EQ(izee_of_state(1), izee);
}

TEST(Snapshot, WithoutACompleteSystemTheOperatorsStay) {
    define_system(2);
    CaptureLegacySnapshot(&taken_snapshot);
    g_runtime.resofreqs[1] = 900.0;
    KOR_RebuildSpinSystemFromPulseSequenceGlobals();
    const double izee = izee_of_state(1);
    KORLegacySnapshot unset = taken_snapshot;
    unset.systemset = 0;
    RestoreLegacySnapshot(&unset);
    EXPECT_EQ(g_runtime.resofreqs[1], 21.0);
    EXPECT_EQ(izee_of_state(1), izee);
    unset = taken_snapshot;
    unset.Nspins = 0;
    RestoreLegacySnapshot(&unset);
    EXPECT_EQ(izee_of_state(1), izee);
}

TEST(Snapshot, NullDoesNothing) {
    define_system(2);
    static RuntimeState before;
    std::memcpy(&before, &g_runtime, sizeof before);
    CaptureLegacySnapshot(nullptr);
    RestoreLegacySnapshot(nullptr);
    EXPECT_EQ(std::memcmp(&before, &g_runtime, sizeof before), 0);
}
