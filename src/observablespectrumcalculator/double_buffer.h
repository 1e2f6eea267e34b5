// Short-lived work arrays whose length may come from a damaged file header.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace kor {

using DoubleBuffer = std::unique_ptr<double[]>;

/// `count` doubles, not initialised: memory that is never written into costs nothing. Null when there is
/// not enough.
inline DoubleBuffer allocate_doubles(std::size_t count) {
    if (count > PTRDIFF_MAX / sizeof(double))
        return nullptr;
    return DoubleBuffer(new (std::nothrow) double[count]);
}

} // namespace kor
