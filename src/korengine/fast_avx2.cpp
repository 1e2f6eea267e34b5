// The kernels of the fast engine for 4 doubles at a time.
namespace kor {

namespace {

constexpr int kLanes = 4;

}

} // namespace kor

#include "fast_kernels.h"

namespace kor {

const FastKernels kAvx2Kernels = kKernelsHere;

} // namespace kor
