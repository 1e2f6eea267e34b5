// Floor 3.11 - simulator: the interactive roads from density matrices to spectra
#pragma once

#include "spinoperatorlib.h"

namespace kor {

/// The 2D road: prompts for the signal's parameters, makes one signal per matrix of "dm.bin" and asks
/// whether to transform them in two dimensions; then the spectrum output menu.
void Determine2DSpectrum(const int* n, int* ap, CMatrix& densmat, const CMatrix& Istat, const CMatrix& Ixtot,
                         const CMatrix& Iytot, const CMatrix& Iztot, const SpinKet& ket,
                         const SpinIList& Ilist);

} // namespace kor
