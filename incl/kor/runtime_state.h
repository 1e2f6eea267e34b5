// Floor 3.1 - simulator: the one model that the process works on
//
// A single statically allocated record (about 13 MB), all zero when the process starts. Operations exchange
// data through it: activation and the composer write the definition, spin_system derives operators and
// basis from it, the drivers and the propagation update the rest. Arrays are indexed from 1 (element 0
// unused) except the waveforms and the optimiser's vectors, which are indexed from 0. Single-threaded; take
// parts of it by reference, a copy of one CMatrix is 1.6 MB.
#pragma once

#include "korlimits.h"
#include "matrixmathlib.h"
#include "spinoperatorlib.h"

namespace kor {

struct RuntimeState {
    // spin-system definition: written by model activation and the composer
    int Nspins;                                      // 0 (none) .. 8
    int n;                                           // Hilbert dimension, at most 256
    int quantnum[KOR_MAX_SPINS + 1];                 // twice the spin quantum number
    double relspinamp[KOR_MAX_SPINS + 1];            // relative intensity
    double resofreqs[KOR_MAX_SPINS + 1];             // resonance offset, Hz
    int Jexact;                                      // 1 weak coupling, else full isotropic
    int Jcount;                                      // entries of couplings
    double couplings[KOR_MAX_PAIRS + 1];             // pairs (1,2), (1,3), ..., Hz
    double jc[KOR_MAX_SPINS + 1][KOR_MAX_SPINS + 1]; // the same as a table, Hz

    // pulse-sequence definition: sectors 1..20
    int sequencetype; // 0 unset, 1 spatially resolved, 2 1D/2D NMR
    int nos;          // number of sectors, 0..20
    int sector;       // sector being edited
    int sectype[KOR_MAX_SECTORS + 1];
    int noti[KOR_MAX_SECTORS + 1];       // waveform samples
    int nevo[KOR_MAX_SECTORS + 1];       // evolution intervals
    double sectdur[KOR_MAX_SECTORS + 1]; // s
    double statoff[KOR_MAX_SECTORS + 1]; // Hz
    char fnames[KOR_MAX_SECTORS + 1][KOR_FILE_NAME_SIZE];
    char remarks[KOR_MAX_SECTORS + 1][KOR_REMARK_SIZE];
    char resultflnm[KOR_FILE_NAME_SIZE]; // empty: none

    // spatial grid
    int ndx, ndy, ndz; // points per axis, 1..256
    double x0, y0, z0; // first point, cm
    double dx, dy, dz; // step, cm

    // readiness and mode flags, 0 = no
    int spinsystemdefined;           // a spin system is defined and its operators exist
    int systemset;                   // the spin definition is complete; required for a run
    int sectorset;                   // the sector list is complete; required for a run
    int offsetset;                   // the grid is complete; required for a spatially resolved run
    int rfpulsedefined;              // an RF pulse has been defined
    int offsetsdefined;              // spatial offsets have been defined
    int rotframe, batch, meanchoice; // choices that nothing but init writes

    // propagation of the current sector: written by the drivers, read by the propagation
    int ap;                                    // samples
    int ndw;                                   // evolution rows, or voxels
    double pt;                                 // sector duration, s
    double h, ti;                              // time step, s
    double statoff_s;                          // offset, rad/s
    double x0_s, y0_s, z0_s, dx_s, dy_s, dz_s; // working copy of the grid, cm
    double gs;                                 // gradient strength of the optimiser
    int calc;                                  // sectors propagated so far in this run
    int pulseflag;                             // 2 no pulse, 1 during a run
    int spatial_progress_sector, spatial_progress_sector_count;

    // waveform of the current sector, 0-based
    double xb[KOR_MAX_RF_POINTS], yb[KOR_MAX_RF_POINTS];                        // RF, rad/s
    double gx[KOR_MAX_RF_POINTS], gy[KOR_MAX_RF_POINTS], gz[KOR_MAX_RF_POINTS]; // rad/s per cm

    // operators and states, n x n, 1-based
    CMatrix densmat;             // current density matrix
    CMatrix Izee;                // offset Hamiltonian, rad/s
    CMatrix Icoup;               // coupling Hamiltonian, rad/s
    CMatrix Istat;               // Izee + Icoup, or the current expectation operator
    CMatrix Izgrad;              // operator of the gradient offset
    CMatrix Ixtot, Iytot, Iztot; // total spin operators

    // basis: written by MakeKets
    SpinKet ket;
    SpinIList Ilist;

    // complex constants and scratch values, set by init
    Complex2 cn, cn1, cn2, cn3, cn4, cn5; // i, 1, 0.5, 2, 1/6, -1
    Complex2 Eval, x;

    // work vectors of the pulse optimiser, 0-based
    double par[KOR_MAX_PARAMETERS], pcom[KOR_MAX_PARAMETERS], xicom[KOR_MAX_PARAMETERS],
        xt[KOR_MAX_PARAMETERS];
    int npar, ncom, kor_ncom;
};

extern RuntimeState g_runtime;

/// Start-up defaults: the flags of spins, pulse and offsets, rotframe, batch, meanchoice and calc 0; the
/// working grid x0_s .. dz_s and gs 0; one voxel (ndx, ndy, ndz, ndw 1); pulseflag 2; the complex constants.
/// Zeroes the eight operators over the current n when n > 0. Nothing else is touched: in particular the
/// definition of spins and sectors and the flags systemset, sectorset and offsetset stay.
void init();

} // namespace kor
