// Floor 1.3 - mathematics: fast Fourier transform
//
// Lengths are powers of two; all arrays are 0-based. Forward: X[k] = sum over j of x[j] exp(+2 pi i j k/n),
// unscaled. Inverse: exp(-2 pi i j k/n), divided by n; it undoes the forward transform. On any error the
// data are untouched and nothing is printed.
#pragma once

#include <cstddef>

namespace kor {

/// BADLEN: length zero, too short or no power of two, or no memory for the work array.
enum four3_status { FOUR3_OK = 0, FOUR3_ERR_NULLPTR = 1, FOUR3_ERR_BADLEN = 2 };
/// Status of the last call of four2 or fft (not of the forms that return one); FOUR3_OK at start.
extern four3_status four3_last_status;

/// True for 1, 2, 4, ...; false for 0.
bool is_power_of_two(std::size_t n);
/// Transforms nn complex points in place, point k at data[2k] (real) and data[2k + 1] (imaginary).
/// nn = 1 is its own transform. Radix 2, decimation in time, twiddle factors by the sine recurrence.
four3_status four2_status(double* data, std::size_t nn, bool inverse);
/// Transforms real[0..ap-1], imag[0..ap-1] in place, zero time (or frequency) at index ap/2 on both sides;
/// indices below it are negative. ap at least 2. Allocates one work array of 2 ap doubles.
four3_status fft_status(std::size_t ap, double* real, double* imag, bool inverse);
/// four2_status with inverse = (isign < 0); the status goes to four3_last_status.
void four2(double* data, std::size_t nn, int isign);
/// fft_status with inverse = (boole1 != 0); the status goes to four3_last_status.
void fft(std::size_t ap, double* real, double* imag, int boole1);

} // namespace kor
