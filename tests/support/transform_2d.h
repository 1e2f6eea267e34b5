// The two-dimensional transform of a stack of signals, by direct sums.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <vector>

namespace kor_test {

using Complex = std::complex<double>;
using Row = std::vector<Complex>;

/// Apodised by exp(-10 k / N), the first point halved.
inline Row weighted(Row row) {
    row[0] *= 0.5;
    for (std::size_t k = 0; k < row.size(); ++k)
        row[k] *= std::exp(-10.0 * static_cast<double>(k) / static_cast<double>(row.size()));
    return row;
}

/// Sum over k of x[k] exp(+2 pi i j k / N), term by term.
inline Row forward(const Row& x) {
    Row out(x.size());
    for (std::size_t j = 0; j < x.size(); ++j)
        for (std::size_t k = 0; k < x.size(); ++k)
            out[j] += x[k] * std::polar(1.0, 2.0 * std::acos(-1.0) * static_cast<double>(j * k % x.size()) /
                                                 static_cast<double>(x.size()));
    return out;
}

/// The halves exchanged: zero frequency in the middle.
inline Row centred(const Row& x) {
    Row out(x.begin() + static_cast<std::ptrdiff_t>(x.size() / 2), x.end());
    out.insert(out.end(), x.begin(), x.begin() + static_cast<std::ptrdiff_t>(x.size() / 2));
    return out;
}

/// The whole 2D processing by direct sums, `cols` points in each of the rows.
inline Row transform_2d(const Row& data, std::size_t cols) {
    const std::size_t rows = data.size() / cols;
    Row out(data.size());
    for (std::size_t r = 0; r < rows; ++r) {
        const Row row(data.begin() + static_cast<std::ptrdiff_t>(r * cols),
                      data.begin() + static_cast<std::ptrdiff_t>((r + 1) * cols));
        const Row spectrum = centred(forward(weighted(row)));
        std::copy(spectrum.begin(), spectrum.end(), out.begin() + static_cast<std::ptrdiff_t>(r * cols));
    }
    for (std::size_t c = 0; c < cols; ++c) {
        Row column(rows);
        for (std::size_t r = 0; r < rows; ++r)
            column[r] = out[r * cols + c];
        column = centred(forward(weighted(column)));
        for (std::size_t r = 0; r < rows; ++r)
            out[r * cols + c] = column[r];
    }
    return out;
}

} // namespace kor_test
