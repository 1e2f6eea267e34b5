// Memory that begins on a cache line, for the kernels.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace kor {

template <typename T> struct CacheLineAllocator {
    using value_type = T;
    CacheLineAllocator() = default;
    template <typename U> CacheLineAllocator(const CacheLineAllocator<U>&) {}
    T* allocate(std::size_t count) {
        return static_cast<T*>(::operator new (count * sizeof(T), std::align_val_t{64}));
    }
    void deallocate(T* p, std::size_t) { ::operator delete (p, std::align_val_t{64}); }
    template <typename U> bool operator==(const CacheLineAllocator<U>&) const { return true; }
};

using AlignedDoubles = std::vector<double, CacheLineAllocator<double>>;

} // namespace kor
