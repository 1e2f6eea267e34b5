// Floor 3.11 - simulator: the interactive roads from density matrices to spectra
//
// Each asks for the receiver's parameters, makes the signal file "korsign.bin" from "dm.bin" (both in the
// working directory) and ends in the spectrum output menu. Arguments: *n the Hilbert dimension; *ap
// receives the number of points; densmat is a work matrix that receives each density matrix; Istat the
// static Hamiltonian in rad/s; the total spin operators; the basis (ket, Ilist) for the listings. All
// matrices n x n, 1-based, densmat none of the others.
#pragma once

#include "spinoperatorlib.h"

namespace kor {

/// Asks for points, acquisition time in s and offset in Hz, and writes one signal per matrix of "dm.bin".
/// In the quiet mode it asks nothing: max(*ap, 1) points, 0.001 s, 0 Hz. Returns the acquisition time; 0.0
/// for a missing n or ap, an unreadable answer, or a failure of the signal file.
double SeparateSpectra_GenerateSignal(const int* n, int* ap, CMatrix& densmat, const CMatrix& Istat,
                                      const CMatrix& Ixtot, const CMatrix& Iytot, const CMatrix& Iztot,
                                      const SpinKet& ket, const SpinIList& Ilist);
/// The generator, then the output menu when there is a signal.
void SeparateSpectra(const int* n, int* ap, CMatrix& densmat, const CMatrix& Istat, const CMatrix& Ixtot,
                     const CMatrix& Iytot, const CMatrix& Iztot, const SpinKet& ket, const SpinIList& Ilist);
/// One signal of the sum of all matrices of "dm.bin" (not divided by their number), from its line lists;
/// then the output menu. Asks in the quiet mode too. Line lists need n at most KOR_MAX_EIGEN_STATES, a
/// signal at least one point: a message where it is not so.
void AverageSpectrum(const int* n, int* ap, CMatrix& densmat, const CMatrix& Istat, const CMatrix& Ixtot,
                     const CMatrix& Iytot, const CMatrix& Iztot, const SpinKet& ket, const SpinIList& Ilist);
/// The generator; then, outside the quiet mode, the question whether to transform the signals in two
/// dimensions (into "sort.bin"), and the output menu.
void Determine2DSpectrum(const int* n, int* ap, CMatrix& densmat, const CMatrix& Istat, const CMatrix& Ixtot,
                         const CMatrix& Iytot, const CMatrix& Iztot, const SpinKet& ket,
                         const SpinIList& Ilist);

} // namespace kor
