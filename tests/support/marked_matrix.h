// A CMatrix on the heap whose storage outside the block in use is marked, so that a stray write shows.
#pragma once

#include "support/dense_reference.h"

#include <memory>

namespace kor_test {

class MarkedMatrix {
public:
    /// Marked everywhere: an output.
    MarkedMatrix();
    /// `block` in the leading part, marked elsewhere: an input.
    explicit MarkedMatrix(const Dense& block);

    kor::CMatrix& get() { return *matrix_; }
    operator kor::CMatrix&() { return *matrix_; }
    operator const kor::CMatrix&() const { return *matrix_; }
    Dense dense(int n) const { return to_dense(n, *matrix_); }

    /// Whether everything but the two numbers of the elements 1..n x 1..n still holds its mark.
    bool border_untouched(int n) const;

private:
    std::unique_ptr<kor::CMatrix> matrix_;
};

/// Whether the leading blocks agree to the bit, signs of zeros included.
bool same_bits(int n, const kor::CMatrix& a, const kor::CMatrix& b);

} // namespace kor_test
