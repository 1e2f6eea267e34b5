// The kernels of the fast engine for 8 doubles at a time.
namespace kor {

namespace {

constexpr int kLanes = 8;

}

} // namespace kor

#include "fast_kernels.h"

namespace kor {

const FastKernels kAvx512Kernels = kKernelsHere;

} // namespace kor
