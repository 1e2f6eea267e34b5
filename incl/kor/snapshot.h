// Floor 3.4 - simulator: copy of the definition part of the state
//
// Lets the reference checks put a small system of their own into the state and give the old one back.
// Operators, density matrix and waveforms are not kept: restoring rebuilds what the definition determines.
#pragma once

#include "kor/runtime_state.h"

namespace kor {

/// Fields as in RuntimeState. Only spins 1..6 and couplings 1..20 (those of a system of at most 6 spins) are
/// kept; the elements above stay zero.
struct KORLegacySnapshot {
    int Nspins, n, Jexact, Jcount, sequencetype, nos, ndx, ndy, ndz, systemset, offsetset, sectorset,
        spinsystemdefined, rfpulsedefined, offsetsdefined, calc, pulseflag, ap, ndw;
    int quantnum[KOR_MAX_SPINS + 1];
    double relspinamp[KOR_MAX_SPINS + 1], resofreqs[KOR_MAX_SPINS + 1];
    double jc[KOR_MAX_SPINS + 1][KOR_MAX_SPINS + 1];
    double couplings[KOR_MAX_PAIRS + 1];
    int sectype[KOR_MAX_SECTORS + 1], noti[KOR_MAX_SECTORS + 1], nevo[KOR_MAX_SECTORS + 1];
    double sectdur[KOR_MAX_SECTORS + 1], statoff[KOR_MAX_SECTORS + 1];
    double x0, y0, z0, dx, dy, dz;
    char resultflnm[KOR_FILE_NAME_SIZE];
    char fnames[KOR_MAX_SECTORS + 1][KOR_FILE_NAME_SIZE];
    char remarks[KOR_MAX_SECTORS + 1][KOR_REMARK_SIZE];
};

/// Zeroes *snapshot and copies the definition of g_runtime into it. Null is ignored.
void CaptureLegacySnapshot(KORLegacySnapshot* snapshot);
/// Copies *snapshot back into g_runtime, the spin quantum numbers also into Ilist; spins 7 and 8 and
/// couplings 21..28 of g_runtime stay as they are. Rebuilds the operators when there are spins and systemset
/// is set, otherwise they stay as they are. Null is ignored.
void RestoreLegacySnapshot(const KORLegacySnapshot* snapshot);

} // namespace kor
