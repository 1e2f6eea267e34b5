// Short-lived work arrays whose length may come from a damaged file header.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace kor {

using DoubleBuffer = std::unique_ptr<double[]>;

/// `count` doubles, not initialised: memory that is never written into costs nothing. Null when there is
/// not enough (errno says so).
inline DoubleBuffer allocate_doubles(std::size_t count) {
    DoubleBuffer buffer;
    if (count <= PTRDIFF_MAX / sizeof(double))
        buffer.reset(new (std::nothrow) double[count]);
    if (!buffer)
        errno = ENOMEM;
    return buffer;
}

} // namespace kor
