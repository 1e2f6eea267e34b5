#include "fieldgradientlib.h"

#include "korlimits.h"

#include <cmath>

namespace kor {

fieldgrad_status fieldgrad_last_status = FIELDGRAD_OK;

namespace {

fieldgrad_status record(fieldgrad_status status) {
    fieldgrad_last_status = status;
    return status;
}

/// What is wrong with the inputs of a spiral of total duration T = N h.
fieldgrad_status check_spiral(std::uint64_t N, double h, const double* out) {
    if (!fieldgrad_valid_inputs(N, h, out)) {
        return out ? FIELDGRAD_ERR_BADARG : FIELDGRAD_ERR_NULLPTR;
    }
    const double T = static_cast<double>(N) * h;
    return T > 0.0 ? FIELDGRAD_OK : FIELDGRAD_ERR_BADARG;
}

} // namespace

bool fieldgrad_valid_inputs(std::uint64_t N, double h, const double* out) {
    return N != 0 && h > 0.0 && out != nullptr;
}

fieldgrad_status CalcGrad_compute(std::uint64_t N, double h, double* out, int type, double A, double n,
                                  double G) {
    if (!out) {
        return record(FIELDGRAD_ERR_NULLPTR);
    }
    if (N == 0) {
        return record(FIELDGRAD_ERR_BADLEN);
    }
    switch (type) {
    case 1:
        return gradproc1_compute(N, h, out, G);
    case 2:
        return gradproc2_compute(N, h, out, A, n);
    case 3:
        return gradproc3_compute(N, h, out, A, n);
    default:
        return record(FIELDGRAD_ERR_BADARG);
    }
}

fieldgrad_status gradproc1_compute(std::uint64_t N, [[maybe_unused]] double h, double* out, double G) {
    if (!out) {
        return record(FIELDGRAD_ERR_NULLPTR);
    }
    if (N == 0) {
        return record(FIELDGRAD_ERR_BADLEN);
    }
    for (std::uint64_t k = 0; k < N; ++k) {
        out[k] = 2.0 * KOR_PI * G;
    }
    return record(FIELDGRAD_OK);
}

fieldgrad_status gradproc2_compute(std::uint64_t N, double h, double* out, double A, double n) {
    const fieldgrad_status inputs = check_spiral(N, h, out);
    if (inputs != FIELDGRAD_OK) {
        return record(inputs);
    }
    const double T = static_cast<double>(N) * h;
    const double w = 2.0 * KOR_PI * n;
    for (std::uint64_t k = 0; k < N; ++k) {
        const double t = static_cast<double>(k) * h;
        const double phase = w * t / T;
        out[k] = -A * (std::cos(phase) + w * (1.0 - t / T) * std::sin(phase)) / T;
    }
    return record(FIELDGRAD_OK);
}

fieldgrad_status gradproc3_compute(std::uint64_t N, double h, double* out, double A, double n) {
    const fieldgrad_status inputs = check_spiral(N, h, out);
    if (inputs != FIELDGRAD_OK) {
        return record(inputs);
    }
    const double T = static_cast<double>(N) * h;
    const double w = 2.0 * KOR_PI * n;
    for (std::uint64_t k = 0; k < N; ++k) {
        const double t = static_cast<double>(k) * h;
        const double phase = w * t / T;
        out[k] = A * (w * (1.0 - t / T) * std::cos(phase) - std::sin(phase)) / T;
    }
    return record(FIELDGRAD_OK);
}

} // namespace kor
