// Floor 3.4 - simulator: copy of the definition part of the state
#pragma once

#include "kor/runtime_state.h"

namespace kor {

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

void CaptureLegacySnapshot(KORLegacySnapshot* snapshot);
void RestoreLegacySnapshot(const KORLegacySnapshot* snapshot);

} // namespace kor
