#pragma once

#include <cmath>
#include <cstddef>
#include <cstring>
#include <string>

namespace kor_test {

/// Whether the first `count` doubles of the bytes, which hold that many, are finite: read off the bytes, not
/// asked of the program.
inline bool holds_finite_doubles(const std::string& bytes, std::size_t count) {
    for (std::size_t k = 0; k < count; ++k) {
        double value;
        std::memcpy(&value, bytes.data() + k * sizeof value, sizeof value);
        if (!std::isfinite(value))
            return false;
    }
    return true;
}

} // namespace kor_test
