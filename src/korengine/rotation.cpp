// rho = adjoint(r) rho r on planes.
#include "engines.h"
#include "fast_jobs.h"
#include "pack.h"

namespace kor {

void fast_rotate(int n, const CMatrix& r, CMatrix& rho) {
    static Planes propagator, adjoint, state, half;
    if (n < 1) {
        return;
    }
    if (!pack(n, r, propagator) || !pack(n, rho, state)) {
        DoRotation(n, r, rho); // what is not finite spreads as it does in the plain loops
        return;
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
}

} // namespace kor
