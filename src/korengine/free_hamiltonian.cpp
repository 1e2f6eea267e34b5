#include "free_hamiltonian.h"

#include <algorithm>
#include <cmath>

namespace kor {

namespace {

using Table = std::vector<double>;

std::size_t at(std::size_t width, std::size_t i, std::size_t j) {
    return i * width + j;
}

/// The real symmetric H, or false when it is of another kind or not finite.
bool read_symmetric(int n, const CMatrix& H, Table& h) {
    h.resize(static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            const Complex2& e = H[i + 1][j + 1];
            if (!std::isfinite(e[1]) || e[2] != 0.0 || e[1] != H[j + 1][i + 1][1]) {
                return false;
            }
            h[at(static_cast<std::size_t>(n), static_cast<std::size_t>(i), static_cast<std::size_t>(j))] =
                e[1];
        }
    }
    return true;
}

/// Beyond this |H dt| the reference's exponential stops halving.
constexpr double kMaxStepNorm = 0.5 * (1 << 24);

bool step_is_moderate(int n, const Table& h, double dt) {
    for (int i = 0; i < n; ++i) {
        double sum = 0.0;
        for (int j = 0; j < n; ++j) {
            sum += std::fabs(
                h[static_cast<std::size_t>(i) * static_cast<std::size_t>(n) + static_cast<std::size_t>(j)]);
        }
        if (!(sum * std::fabs(dt) < kMaxStepNorm)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool read_free_hamiltonian(int n, const CMatrix& H, double dt, std::vector<double>& h) {
    return read_symmetric(n, H, h) && step_is_moderate(n, h, dt);
}

bool all_finite(int n, const CMatrix& m) {
    double unsound = 0.0;
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            unsound += (m[i][j][1] - m[i][j][1]) + (m[i][j][2] - m[i][j][2]);
        }
    }
    return unsound == 0.0;
}

void fill_turns(const double* angle, double first, int lines, int count, double* cosine, double* sine) {
    for (int l = 0; l < lines; ++l) {
        double* c = cosine + l * count;
        double* s = sine + l * count;
        c[0] = std::cos(first * angle[l]);
        s[0] = std::sin(first * angle[l]);
        for (int half = 1; half < count; half *= 2) {
            const double turn_c = std::cos(half * angle[l]);
            const double turn_s = std::sin(half * angle[l]);
            for (int q = half; q < std::min(2 * half, count); ++q) {
                c[q] = c[q - half] * turn_c - s[q - half] * turn_s;
                s[q] = c[q - half] * turn_s + s[q - half] * turn_c;
            }
        }
    }
}

} // namespace kor
