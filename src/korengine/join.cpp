#include "join.h"

#include <utility>

namespace kor {

// Element (i, j) is multiplied by exp(i (ladder_i phi0 - ladder_j phi1)).
void turn_ends(const SystemStructure& s, const Step& first, const Step& last, Planes& p) {
    const auto along_x = [](const Step& step) { return step.ux == 1.0 && step.uy == 0.0; };
    if (along_x(first) && along_x(last)) {
        return;
    }
    std::vector<double> left{1.0, 0.0}, right{1.0, 0.0};
    for (int k = 0; k < s.ladder_top; ++k) {
        const auto at = static_cast<std::size_t>(2 * k);
        left.push_back(left[at] * first.ux - left[at + 1] * first.uy);
        left.push_back(left[at] * first.uy + left[at + 1] * first.ux);
        right.push_back(right[at] * last.ux - right[at + 1] * last.uy);
        right.push_back(right[at] * last.uy + right[at + 1] * last.ux);
    }
    for (int i = 0; i < s.n; ++i) {
        const auto l = static_cast<std::size_t>(2 * s.ladder[static_cast<std::size_t>(i)]);
        for (int j = 0; j < s.n; ++j) {
            const auto r = static_cast<std::size_t>(2 * s.ladder[static_cast<std::size_t>(j)]);
            const double zr = left[l] * right[r] + left[l + 1] * right[r + 1];
            const double zi = left[l + 1] * right[r] - left[l] * right[r + 1];
            double& re = p.re[p.at(i, j)];
            double& im = p.im[p.at(i, j)];
            const double turned = re * zr - im * zi;
            im = re * zi + im * zr;
            re = turned;
        }
    }
}

namespace {

/// a = a . b for two rows, where the kernels' registers would stay empty.
void multiply_two(Planes& a, const Planes& b) {
    for (int i = 0; i < 2; ++i) {
        const std::size_t row = a.at(i, 0);
        const double re[2] = {a.re[row], a.re[row + 1]};
        const double im[2] = {a.im[row], a.im[row + 1]};
        for (std::size_t j = 0; j < 2; ++j) {
            const std::size_t lower = b.at(1, 0) + j;
            a.re[row + j] = re[0] * b.re[j] - im[0] * b.im[j] + re[1] * b.re[lower] - im[1] * b.im[lower];
            a.im[row + j] = re[0] * b.im[j] + im[0] * b.re[j] + re[1] * b.im[lower] + im[1] * b.re[lower];
        }
    }
}

} // namespace

void multiply(int n, Planes& a, const Planes& b, Planes& work) {
    if (n == 2) {
        multiply_two(a, b);
        return;
    }
    work.shape(n);
    fast_kernels().complex_product(
        {n, a.stride, a.re.data(), a.im.data(), b.re.data(), b.im.data(), work.re.data(), work.im.data()});
    std::swap(a, work);
}

void transpose(int n, const Planes& a, Planes& out) {
    out.shape(n);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            out.re[out.at(j, i)] = a.re[a.at(i, j)];
            out.im[out.at(j, i)] = a.im[a.at(i, j)];
        }
    }
}

void join_palindrome(int n, const Planes* lead, const Planes* middle, Planes& half) {
    static Planes mirrored, whole, work;
    transpose(n, half, mirrored);
    if (middle) {
        multiply(n, half, *middle, work);
    }
    multiply(n, half, mirrored, work);
    if (lead) {
        whole = *lead;
        multiply(n, whole, half, work);
        std::swap(whole, half);
    }
}

} // namespace kor
