// The sizes of the matrices that the operations are tested with.
#pragma once

#include <vector>

namespace kor_test {

/// Every size up to 16, which the kernels' blocks divide and do not, and a large one.
inline const std::vector<int> MATRIX_SIZES = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 64};

} // namespace kor_test
