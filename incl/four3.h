// Floor 1.3 - mathematics: fast Fourier transform
#pragma once

#include <cstddef>

namespace kor {

enum four3_status { FOUR3_OK = 0, FOUR3_ERR_NULLPTR = 1, FOUR3_ERR_BADLEN = 2 };
/// Status of the last call of four2 or fft.
extern four3_status four3_last_status;

bool is_power_of_two(std::size_t n);
four3_status four2_status(double* data, std::size_t nn, bool inverse);
four3_status fft_status(std::size_t ap, double* real, double* imag, bool inverse);
void four2(double* data, std::size_t nn, int isign);
void fft(std::size_t ap, double* real, double* imag, int boole1);

} // namespace kor
