// Short-lived work arrays whose length may come from a damaged file header.
#pragma once

#include <cerrno>
#include <cstddef>
#include <memory>
#include <new>

namespace kor {

/// A cache line: vector registers are not stored across two.
constexpr std::align_val_t kBufferAlignment{64};

struct FreeDoubles {
    void operator()(double* doubles) const { ::operator delete[](doubles, kBufferAlignment); }
};
using DoubleBuffer = std::unique_ptr<double[], FreeDoubles>;

/// More is refused without asking the system (1 TiB): a damaged header can promise anything, and a heap may
/// lose the address space that it reserved in vain.
constexpr std::size_t kMostDoubles = std::size_t{1} << 37;

/// `count` doubles from a cache line on, not initialised: memory that is never written into costs nothing.
/// Null when there is not enough (errno says so).
inline DoubleBuffer allocate_doubles(std::size_t count) {
    DoubleBuffer buffer;
    if (count <= kMostDoubles)
        buffer.reset(new (kBufferAlignment, std::nothrow) double[count]);
    if (!buffer)
        errno = ENOMEM;
    return buffer;
}

} // namespace kor
