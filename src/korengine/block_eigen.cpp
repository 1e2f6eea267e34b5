#include "block_eigen.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>

namespace kor {

namespace {

using Matrix = std::vector<double>; // row-major

std::size_t at(std::size_t n, std::size_t i, std::size_t j) {
    return i * n + j;
}

/// The power of two that brings the largest of the values to 1..2; 0 when all are 0.
int exponent_of_largest(const std::vector<double>& values) {
    double largest = 0.0;
    for (const double value : values) {
        largest = std::max(largest, std::fabs(value));
    }
    return largest > 0.0 ? std::ilogb(largest) : 0;
}

/// values times 2^exponent. Rounds nothing but what becomes too small to matter.
void scale(int exponent, std::vector<double>& values) {
    for (double& value : values) {
        value = std::scalbn(value, exponent);
    }
}

/// Householder vector v of any length and beta so that (1 - beta v v^T) x = (alpha, 0, ..., 0); beta = 0 when
/// there is nothing to do. x are the elements of v from `from` on, those before them are 0.
double householder(std::vector<double>& v, std::size_t from) {
    scale(-exponent_of_largest(v), v); // or the squares could leave the range
    double rest = 0.0;
    for (std::size_t i = from + 1; i < v.size(); ++i) {
        rest += v[i] * v[i];
    }
    if (rest == 0.0) {
        return 0.0;
    }
    const double norm = std::sqrt(v[from] * v[from] + rest);
    v[from] += v[from] >= 0.0 ? norm : -norm;
    return 2.0 / (v[from] * v[from] + rest);
}

/// a = (1 - beta v v^T) a (1 - beta v v^T) on rows and columns from `from`.
void reflect_both_sides(std::size_t n, std::size_t from, double beta, const std::vector<double>& v,
                        Matrix& a) {
    std::vector<double> p(n, 0.0);
    double vp = 0.0;
    for (std::size_t i = from; i < n; ++i) {
        for (std::size_t j = from; j < n; ++j) {
            p[i] += a[at(n, i, j)] * v[j];
        }
        p[i] *= beta;
        vp += v[i] * p[i];
    }
    for (std::size_t i = from; i < n; ++i) {
        p[i] -= 0.5 * beta * vp * v[i];
    }
    for (std::size_t i = from; i < n; ++i) {
        for (std::size_t j = from; j < n; ++j) {
            a[at(n, i, j)] -= v[i] * p[j] + p[i] * v[j];
        }
    }
}

/// z = (1 - beta v v^T) z
void reflect_rows(std::size_t n, std::size_t from, double beta, const std::vector<double>& v, Matrix& z) {
    std::vector<double> p(n, 0.0);
    for (std::size_t i = from; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            p[j] += v[i] * z[at(n, i, j)];
        }
    }
    for (std::size_t i = from; i < n; ++i) {
        const double factor = beta * v[i];
        for (std::size_t j = 0; j < n; ++j) {
            z[at(n, i, j)] -= factor * p[j];
        }
    }
}

struct Tridiagonal {
    std::vector<double> diagonal;
    std::vector<double> beside; // beside[i] couples i and i + 1
};

/// a = z^T T z with orthogonal z; a is destroyed.
Tridiagonal tridiagonalise(std::size_t n, Matrix& a, Matrix& z) {
    std::vector<double> v(n);
    for (std::size_t k = 0; k + 2 < n; ++k) {
        std::fill(v.begin(), v.end(), 0.0);
        for (std::size_t i = k + 1; i < n; ++i) {
            v[i] = a[at(n, i, k)];
        }
        const double beta = householder(v, k + 1);
        if (beta != 0.0) {
            reflect_both_sides(n, k, beta, v, a);
            reflect_rows(n, k + 1, beta, v, z);
        }
    }
    Tridiagonal t;
    for (std::size_t i = 0; i < n; ++i) {
        t.diagonal.push_back(a[at(n, i, i)]);
        t.beside.push_back(i + 1 < n ? a[at(n, i + 1, i)] : 0.0);
    }
    return t;
}

void turn_rows(std::size_t n, std::size_t k, double c, double s, Matrix& z) {
    double* first = &z[at(n, k, 0)];
    double* second = &z[at(n, k + 1, 0)];
    for (std::size_t j = 0; j < n; ++j) {
        const double old = first[j];
        first[j] = c * old + s * second[j];
        second[j] = c * second[j] - s * old;
    }
}

/// One implicit QR step on rows low..high with the eigenvalue of the last 2 x 2 that is nearer its corner.
void qr_step(std::size_t n, std::size_t low, std::size_t high, Tridiagonal& t, Matrix& z) {
    std::vector<double>& d = t.diagonal;
    std::vector<double>& e = t.beside;
    const double half = 0.5 * (d[high - 1] - d[high]);
    const double root = std::hypot(half, e[high - 1]);
    const double shift = d[high] - e[high - 1] * (e[high - 1] / (half + (half >= 0.0 ? root : -root)));
    double x = d[low] - shift;
    double bulge = e[low];
    for (std::size_t k = low; k < high; ++k) {
        const double r = std::hypot(x, bulge);
        const double c = r > 0.0 ? x / r : 1.0;
        const double s = r > 0.0 ? bulge / r : 0.0;
        if (k > low) {
            e[k - 1] = r;
        }
        const double upper = d[k], lower = d[k + 1], side = e[k];
        d[k] = c * c * upper + 2.0 * c * s * side + s * s * lower;
        d[k + 1] = s * s * upper - 2.0 * c * s * side + c * c * lower;
        e[k] = c * s * (lower - upper) + (c * c - s * s) * side;
        if (k + 1 < high) {
            x = e[k];
            bulge = s * e[k + 1];
            e[k + 1] *= c;
        }
        turn_rows(n, k, c, s, z);
    }
}

void diagonalise_tridiagonal(std::size_t n, Tridiagonal& t, Matrix& z) {
    double size = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        size = std::max(size, std::fabs(t.diagonal[i]) + std::fabs(t.beside[i]));
    }
    const auto negligible = [&](std::size_t k) {
        return std::fabs(t.beside[k]) <=
               0.5 * DBL_EPSILON * (std::fabs(t.diagonal[k]) + std::fabs(t.diagonal[k + 1])) +
                   0.01 * DBL_EPSILON * size;
    };
    std::size_t high = n - 1;
    // Each eigenvalue takes two or three steps; the count only guards against a cycle.
    for (std::size_t step = 0; high > 0 && step < 60 * n; ++step) {
        if (negligible(high - 1)) {
            t.beside[high - 1] = 0.0;
            --high;
            continue;
        }
        std::size_t low = high - 1;
        while (low > 0 && !negligible(low - 1)) {
            --low;
        }
        qr_step(n, low, high, t, z);
    }
}

void diagonalise(const std::vector<double>& h, std::size_t n, EigenBlock& block) {
    const std::size_t size = block.states.size();
    Matrix a(size * size);
    block.vectors.assign(size * size, 0.0);
    for (std::size_t i = 0; i < size; ++i) {
        block.vectors[at(size, i, i)] = 1.0;
        for (std::size_t j = 0; j < size; ++j) {
            a[at(size, i, j)] = h[at(n, static_cast<std::size_t>(block.states[i]),
                                     static_cast<std::size_t>(block.states[j]))];
        }
    }
    const int exponent = exponent_of_largest(a);
    scale(-exponent, a);
    Tridiagonal t = tridiagonalise(size, a, block.vectors);
    diagonalise_tridiagonal(size, t, block.vectors);
    block.values = t.diagonal;
    scale(exponent, block.values);
}

/// Every state that nonzero elements reach from `first`, marked and sorted.
std::vector<int> reachable(int n, const std::vector<double>& h, int first, std::vector<char>& seen) {
    std::vector<int> states{first};
    seen[static_cast<std::size_t>(first)] = 1;
    for (std::size_t k = 0; k < states.size(); ++k) {
        for (int j = 0; j < n; ++j) {
            const auto row = static_cast<std::size_t>(states[k]);
            const auto column = static_cast<std::size_t>(j);
            const auto width = static_cast<std::size_t>(n);
            if (!seen[column] && (h[at(width, row, column)] != 0.0 || h[at(width, column, row)] != 0.0)) {
                seen[column] = 1;
                states.push_back(j);
            }
        }
    }
    std::sort(states.begin(), states.end());
    return states;
}

} // namespace

std::vector<EigenBlock> diagonalise_blocks(int n, const std::vector<double>& h) {
    std::vector<EigenBlock> blocks;
    std::vector<char> seen(static_cast<std::size_t>(n), 0);
    for (int first = 0; first < n; ++first) {
        if (!seen[static_cast<std::size_t>(first)]) {
            EigenBlock block;
            block.states = reachable(n, h, first, seen);
            diagonalise(h, static_cast<std::size_t>(n), block);
            blocks.push_back(std::move(block));
        }
    }
    return blocks;
}

} // namespace kor
