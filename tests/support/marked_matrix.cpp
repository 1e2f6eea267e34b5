#include "support/marked_matrix.h"

#include <cstring>

namespace kor_test {

namespace {

constexpr double kMark = -7.25e77;

} // namespace

MarkedMatrix::MarkedMatrix() : matrix_(std::make_unique<kor::CMatrix>()) {
    for (auto& row : matrix_->row) {
        for (kor::Complex2& element : row) {
            element = {{kMark, kMark, kMark}};
        }
    }
}

MarkedMatrix::MarkedMatrix(const Dense& block) : MarkedMatrix() {
    from_dense(block, *matrix_);
}

bool MarkedMatrix::border_untouched(int n) const {
    for (int i = 0; i <= kor::KOR_MAX_STATES; ++i) {
        for (int j = 0; j <= kor::KOR_MAX_STATES; ++j) {
            const kor::Complex2& element = (*matrix_)[i][j];
            const bool inside = i >= 1 && i <= n && j >= 1 && j <= n;
            if (element[0] != kMark || (!inside && (element[1] != kMark || element[2] != kMark))) {
                return false;
            }
        }
    }
    return true;
}

bool same_bits(int n, const kor::CMatrix& a, const kor::CMatrix& b) {
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            if (std::memcmp(&a[i][j].part[1], &b[i][j].part[1], 2 * sizeof(double)) != 0) {
                return false;
            }
        }
    }
    return true;
}

} // namespace kor_test
