// The objective -Re <O> of a parameter vector, its gradient, and its values along a line.
#include "kor/optimiser.h"

#include "kor/runtime_state.h"
#include "korengine.h"
#include "koroptseq.h"
#include "rfpulseparam.h"
#include "rfwaveformfile.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <new>

namespace kor {

double fnc(const double* parvec) {
    static CMatrix store;
    static CMatrix r;
    CopyCMatrix(g_runtime.n, g_runtime.densmat, store);
    ParArrayToRFPulse(g_runtime.npar, g_runtime.ap, parvec, g_runtime.xb, g_runtime.yb);
    koropt_waveform_propagator(g_runtime.ap, g_runtime.h, g_runtime.xb, g_runtime.yb,
                               g_runtime.gs * g_runtime.x0_s, r);
    EngineRotate(g_runtime.n, r, g_runtime.densmat);
    Complex2 value;
    ExpectationValue(g_runtime.n, g_runtime.Istat, g_runtime.densmat, value);
    std::printf("Expectation Value <O>        : %.12e + i %.12e\n", value[1], value[2]);
    std::printf("Objective used by optimizer  : %.12e  (= -Re <O>)\n\n", -value[1]);
    CopyCMatrix(g_runtime.n, store, g_runtime.densmat);
    return -value[1];
}

void dfnc(double f, const double* parvec, int nn, double* df) {
    std::unique_ptr<double[]> long_vector;
    double* work = g_runtime.xt;
    if (nn > KOR_MAX_PARAMETERS) {
        long_vector.reset(new (std::nothrow) double[static_cast<std::size_t>(nn)]);
        if (!long_vector)
            return;
        work = long_vector.get();
    }
    for (int i = 0; i < nn; ++i) {
        const double step = parvec[i] == 0.0 ? 1e-7 : parvec[i] / 1e7;
        std::copy_n(parvec, nn, work);
        work[i] += step;
        df[i] = (fnc(work) - f) / step;
    }
}

double func(double z) {
    double point[KOR_MAX_PARAMETERS] = {};
    const int m = g_runtime.kor_ncom;
    if (m < 1 || m > KOR_MAX_PARAMETERS)
        return fnc(g_runtime.par);
    for (int j = 0; j < m; ++j)
        point[j] = g_runtime.pcom[j] + z * g_runtime.xicom[j];
    return fnc(point);
}

int optimised_pulse_is_finite(int ap, const double* xb, const double* yb) {
    const double* const arrays[] = {xb, yb};
    return first_bad_sample(arrays, 2, ap) < 0 ? 1 : 0;
}

} // namespace kor
