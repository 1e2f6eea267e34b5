// rho = adjoint(r) rho r: a CMatrix on planes, states in the order of the files in place up to 16 states and
// on planes above.
#include "rotation.h"

#include "engines.h"
#include "fast_jobs.h"
#include "pack.h"

#include <cmath>
#include <vector>

namespace kor {

namespace {

/// What is not finite spreads as it does in the plain loops.
void rotate_plainly(int n, const double* re, const double* im, double* state) {
    static CMatrix r;
    static CMatrix rho;
    from_dense_planes(n, re, im, r);
    CMatFromPairs(n, state, rho);
    DoRotation(n, r, rho);
    CMatToPairs(n, rho, state);
}

/// False, nothing done, when a factor is not finite.
bool rotate_planes(int n, const CMatrix& r, CMatrix& rho) {
    static Planes propagator, adjoint, state, half;
    if (!pack(n, r, propagator) || !pack(n, rho, state)) {
        return false;
    }
    pack_adjoint(n, r, adjoint);
    half.shape(n);
    const int stride = state.stride;
    const FastKernels& kernels = fast_kernels();
    kernels.complex_product({n, stride, state.re.data(), state.im.data(), propagator.re.data(),
                             propagator.im.data(), half.re.data(), half.im.data()});
    kernels.complex_product({n, stride, adjoint.re.data(), adjoint.im.data(), half.re.data(), half.im.data(),
                             state.re.data(), state.im.data()});
    unpack(n, state, rho);
    return true;
}

/// More than kMaxTurnedStates.
void rotate_large(int n, const double* re, const double* im, int count, double* states) {
    static CMatrix r;
    static CMatrix rho;
    from_dense_planes(n, re, im, r);
    for (int k = 0; k < count; ++k) {
        double* state = states + static_cast<std::size_t>(k) * state_doubles(n);
        CMatFromPairs(n, state, rho);
        fast_rotate(n, r, rho);
        CMatToPairs(n, rho, state);
    }
}

/// r, i r and the adjoint of r as pairs.
struct TurnFactors {
    alignas(64) double r[2 * kMaxTurnedStates * kMaxTurnedStates];
    alignas(64) double ir[2 * kMaxTurnedStates * kMaxTurnedStates];
    alignas(64) double adjoint[2 * kMaxTurnedStates * kMaxTurnedStates];

    TurnFactors(int n, const double* re, const double* im) {
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) {
                const int e = 2 * (n * i + j);
                const int mirrored = 2 * (n * j + i);
                r[e] = ir[e + 1] = adjoint[mirrored] = *re++;
                r[e + 1] = *im++;
                ir[e] = adjoint[mirrored + 1] = -r[e + 1];
            }
        }
    }
};

} // namespace

void rotate_by_planes(int n, const double* re, const double* im, int count, double* states) {
    if (n > kMaxTurnedStates) {
        rotate_large(n, re, im, count, states);
        return;
    }
    const TurnFactors factors(n, re, im);
    for (int done = 0; done < count; ++done) {
        double* rest = states + static_cast<std::size_t>(done) * state_doubles(n);
        done += fast_kernels().turn_states({n, count - done, factors.r, factors.ir, factors.adjoint, rest});
        if (done < count) {
            rotate_plainly(n, re, im, states + static_cast<std::size_t>(done) * state_doubles(n));
        }
    }
}

void fast_rotate_states(int n, const CMatrix& r, int count, double* states) {
    static std::vector<double> re, im;
    re.clear();
    im.clear();
    bool sound = true;
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            re.push_back(r[i][j][1]);
            im.push_back(r[i][j][2]);
            sound = sound && std::isfinite(re.back()) && std::isfinite(im.back());
        }
    }
    if (sound) {
        rotate_by_planes(n, re.data(), im.data(), count, states);
    } else {
        kReferenceEngine.rotate_states(n, r, count, states);
    }
}

void fast_rotate(int n, const CMatrix& r, CMatrix& rho) {
    if (n >= 1 && !rotate_planes(n, r, rho)) {
        DoRotation(n, r, rho);
    }
}

} // namespace kor
