// Floor 2.6 - materials: gradient waveforms
#pragma once

#include <cstdint>

namespace kor {

enum fieldgrad_status {
    FIELDGRAD_OK = 0,
    FIELDGRAD_ERR_NULLPTR = 1,
    FIELDGRAD_ERR_BADLEN = 2,
    FIELDGRAD_ERR_BADARG = 3,
    FIELDGRAD_ERR_IO = 4
};
extern fieldgrad_status fieldgrad_last_status;

bool fieldgrad_valid_inputs(std::uint64_t N, double h, const double* out);
fieldgrad_status CalcGrad_compute(std::uint64_t N, double h, double* out, int type, double A, double n,
                                  double G);
fieldgrad_status gradproc1_compute(std::uint64_t N, double h, double* out, double G);
fieldgrad_status gradproc2_compute(std::uint64_t N, double h, double* out, double A, double n);
fieldgrad_status gradproc3_compute(std::uint64_t N, double h, double* out, double A, double n);

} // namespace kor
