// The kernels of the fast engine for 2 doubles at a time.
namespace kor {

namespace {

constexpr int kLanes = 2;

}

} // namespace kor

#include "fast_kernels.h"

namespace kor {

const FastKernels kBaselineKernels = kKernelsHere;

} // namespace kor
