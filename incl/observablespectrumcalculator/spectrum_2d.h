// Floor 2.20 - materials: the two-dimensional transform of a signal file
//
// Works on whole files in the working directory, row by row: header (type, num1 = points of a row,
// num2 = rows), then rows of num1 interleaved complex doubles. A row whose length is no power of two is
// weighted but not transformed. Messages go to standard output, open failures to standard error.
#pragma once

namespace kor {

/// "korsign.bin" to the 2D spectrum "sort.bin" in the orientation of the signal file, zero frequency in
/// the middle of both dimensions; "spectra.bin" is scratch. Both dimensions are weighted by
/// exp(-10 k / points), their first point halved, and transformed forward. A read or write error prints
/// its message and ends that pass; the next goes on with what was written.
void Calc2Dfft();
/// File with num1 and num2 exchanged and the complex points transposed; the two files must differ. On a
/// short input a message, and an empty output file.
void TransposeDataMatrix(const char* in_mat_name, const char* out_mat_name);
/// The first pass alone: "korsign.bin" weighted and transformed along its rows into "spectra.bin".
void DispTransvSign();

} // namespace kor
