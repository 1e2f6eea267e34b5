// Floor 3.10 - simulator: the receiver signal file
#pragma once

#include "spinoperatorlib.h"

namespace kor {

/// Signals of every matrix of "dm.bin" into output_filename ("korsign.bin" when null or empty).
/// Returns the acquisition time on success (also after a read error part-way), 0.0 on failure.
double SeparateSpectra_GenerateSignalWithParams(const int* n, int signal_points, double acquisition_time_s,
                                                double receiver_offset_hz, const char* output_filename,
                                                CMatrix& densmat, const CMatrix& Istat, const CMatrix& Ixtot,
                                                const CMatrix& Iytot, const CMatrix& Iztot,
                                                const SpinKet& ket, const SpinIList& Ilist);

} // namespace kor
