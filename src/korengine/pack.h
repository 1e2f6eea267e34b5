// Between CMatrix (1-based, three doubles per element) and planes of real and imaginary parts (0-based,
// rows of `stride` doubles, zero behind the n columns).
#pragma once

#include "aligned.h"
#include "matrixmathlib.h"

namespace kor {

/// Row length of the planes of an n x n matrix: room for whole registers of 16 doubles, and an odd number
/// of cache lines, so that the elements of a column do not fall into the same few cache sets.
constexpr int plane_stride(int n) {
    const int padded = (n + 15) / 16 * 16;
    return n <= 16 ? padded : padded + 8;
}

struct Planes {
    AlignedDoubles re, im;
    int stride = 0;

    /// Shapes both for n x n and clears them.
    void reset(int n) {
        stride = plane_stride(n);
        const auto size = static_cast<std::size_t>(n) * static_cast<std::size_t>(stride);
        re.assign(size, 0.0);
        im.assign(size, 0.0);
    }
    /// Shapes both for n x n; the padding is zero if they had this shape before.
    void shape(int n) {
        const auto size = static_cast<std::size_t>(n) * static_cast<std::size_t>(plane_stride(n));
        if (stride != plane_stride(n) || re.size() != size) {
            reset(n);
        }
    }
    std::size_t at(int i, int j) const {
        return static_cast<std::size_t>(i) * static_cast<std::size_t>(stride) + static_cast<std::size_t>(j);
    }
};

/// out = m; false when an element is not finite.
bool pack(int n, const CMatrix& m, Planes& out);
/// out = adjoint(m).
void pack_adjoint(int n, const CMatrix& m, Planes& out);
void unpack(int n, const Planes& planes, CMatrix& out);
/// out = re + i im, each n x n without padding.
void from_dense_planes(int n, const double* re, const double* im, CMatrix& out);

} // namespace kor
