#include "kor/snapshot.h"

#include "kor/spin_system.h"

#include <cstring>

namespace kor {

namespace {

// The snapshot keeps spins 1..6 and couplings 1..20: the systems of the sequence composer.
constexpr int kept_spins = 6;
constexpr int kept_couplings = 20;

/// Fields that have the same name and meaning in the state and in the snapshot, kept whole.
template <class From, class To> void copy_whole_fields(const From& from, To& to) {
    to.Nspins = from.Nspins;
    to.n = from.n;
    to.Jexact = from.Jexact;
    to.Jcount = from.Jcount;
    to.sequencetype = from.sequencetype;
    to.nos = from.nos;
    to.ndx = from.ndx;
    to.ndy = from.ndy;
    to.ndz = from.ndz;
    to.systemset = from.systemset;
    to.offsetset = from.offsetset;
    to.sectorset = from.sectorset;
    to.spinsystemdefined = from.spinsystemdefined;
    to.rfpulsedefined = from.rfpulsedefined;
    to.offsetsdefined = from.offsetsdefined;
    to.calc = from.calc;
    to.pulseflag = from.pulseflag;
    to.ap = from.ap;
    to.ndw = from.ndw;
    to.x0 = from.x0;
    to.y0 = from.y0;
    to.z0 = from.z0;
    to.dx = from.dx;
    to.dy = from.dy;
    to.dz = from.dz;
    std::memcpy(to.resultflnm, from.resultflnm, sizeof to.resultflnm);
}

template <class From, class To> void copy_spins(const From& from, To& to) {
    for (int i = 0; i <= kept_spins; ++i) {
        to.quantnum[i] = from.quantnum[i];
        to.relspinamp[i] = from.relspinamp[i];
        to.resofreqs[i] = from.resofreqs[i];
        for (int j = 0; j <= kept_spins; ++j)
            to.jc[i][j] = from.jc[i][j];
    }
    for (int p = 0; p <= kept_couplings; ++p)
        to.couplings[p] = from.couplings[p];
}

template <class From, class To> void copy_sectors(const From& from, To& to) {
    std::memcpy(to.sectype, from.sectype, sizeof to.sectype);
    std::memcpy(to.noti, from.noti, sizeof to.noti);
    std::memcpy(to.nevo, from.nevo, sizeof to.nevo);
    std::memcpy(to.sectdur, from.sectdur, sizeof to.sectdur);
    std::memcpy(to.statoff, from.statoff, sizeof to.statoff);
    std::memcpy(to.fnames, from.fnames, sizeof to.fnames);
    std::memcpy(to.remarks, from.remarks, sizeof to.remarks);
}

template <class From, class To> void copy_definition(const From& from, To& to) {
    copy_whole_fields(from, to);
    copy_spins(from, to);
    copy_sectors(from, to);
}

} // namespace

void CaptureLegacySnapshot(KORLegacySnapshot* snapshot) {
    if (!snapshot)
        return;
    std::memset(snapshot, 0, sizeof *snapshot);
    copy_definition(g_runtime, *snapshot);
}

void RestoreLegacySnapshot(const KORLegacySnapshot* snapshot) {
    if (!snapshot)
        return;
    copy_definition(*snapshot, g_runtime);
    for (int i = 0; i <= kept_spins; ++i)
        g_runtime.Ilist[i] = snapshot->quantnum[i];
    if (g_runtime.Nspins > 0 && g_runtime.systemset)
        KOR_RebuildSpinSystemFromPulseSequenceGlobals();
}

} // namespace kor
