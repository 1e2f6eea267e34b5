// Free evolution as a sum of spectral lines: with h = V diag(E) V^T block by block,
// trace(Ix rho(t)) is the sum over pairs of levels of (V^T Ix V)(a, b) (V^T rho V)(b, a) exp(i (E_a - E_b)
// t). The time of point k = p Q + q is split into blocks of Q points, so that the turns within a block are
// made once per line.
#include "block_eigen.h"
#include "engines.h"
#include "fast_jobs.h"
#include "free_hamiltonian.h"
#include "pack.h"

#include <algorithm>
#include <cmath>

namespace kor {

namespace {

using Table = std::vector<double>;

std::size_t at(std::size_t width, std::size_t i, std::size_t j) {
    return i * width + j;
}

/// Amplitudes of one frequency in the x and the y channel.
struct Lines {
    Table frequency; // rad/s
    Table xr, xi, yr, yi;

    void clear() {
        for (Table* table : {&frequency, &xr, &xi, &yr, &yi}) {
            table->clear();
        }
    }
};

/// The part of a matrix between two blocks, in their eigenbases: rows of the first, columns of the second.
struct BlockPart {
    Table re, im;
};

/// out = left . part . right^T, left and right with one eigenvector per row; zeros of the part are skipped.
Table to_eigenbasis(const EigenBlock& rows, const EigenBlock& columns, const Table& part) {
    const std::size_t r = rows.states.size();
    const std::size_t c = columns.states.size();
    Table half(r * c, 0.0); // part . right^T
    for (std::size_t i = 0; i < r; ++i) {
        for (std::size_t b = 0; b < c; ++b) {
            const double* v = columns.vector(static_cast<int>(b));
            double sum = 0.0;
            for (std::size_t j = 0; j < c; ++j) {
                sum += part[at(c, i, j)] * v[j];
            }
            half[at(c, i, b)] = sum;
        }
    }
    Table out(r * c, 0.0);
    for (std::size_t a = 0; a < r; ++a) {
        const double* v = rows.vector(static_cast<int>(a));
        for (std::size_t i = 0; i < r; ++i) {
            for (std::size_t b = 0; b < c; ++b) {
                out[at(c, a, b)] += v[i] * half[at(c, i, b)];
            }
        }
    }
    return out;
}

bool all_zero(const Table& values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return v == 0.0; });
}

/// False when all its elements are exactly zero.
bool read_part(const CMatrix& m, const EigenBlock& rows, const EigenBlock& columns, BlockPart& out) {
    out.re.clear();
    out.im.clear();
    for (const int i : rows.states) {
        for (const int j : columns.states) {
            out.re.push_back(m[i + 1][j + 1][1]);
            out.im.push_back(m[i + 1][j + 1][2]);
        }
    }
    return !all_zero(out.re) || !all_zero(out.im);
}

void turn_to_eigenbasis(const EigenBlock& rows, const EigenBlock& columns, BlockPart& part) {
    for (Table* plane : {&part.re, &part.im}) {
        if (!all_zero(*plane)) {
            *plane = to_eigenbasis(rows, columns, *plane);
        }
    }
}

/// Adds to (re, im)[pair] the products o(a, b) r(b, a), conjugated if asked.
void add_amplitudes(std::size_t rows, std::size_t columns, const BlockPart& o, const BlockPart& r,
                    bool conjugated, bool transposed, Table& re, Table& im) {
    for (std::size_t a = 0; a < rows; ++a) {
        for (std::size_t b = 0; b < columns; ++b) {
            const std::size_t ab = transposed ? at(rows, b, a) : at(columns, a, b);
            const std::size_t ba = transposed ? at(columns, a, b) : at(rows, b, a);
            re[at(columns, a, b)] += o.re[ab] * r.re[ba] - o.im[ab] * r.im[ba];
            const double imaginary = o.re[ab] * r.im[ba] + o.im[ab] * r.re[ba];
            im[at(columns, a, b)] += conjugated ? -imaginary : imaginary;
        }
    }
}

/// Parts (first, second) and (second, first) of one matrix.
struct BothWays {
    BlockPart forth, back;
    bool present = false;

    void read(const CMatrix& m, const EigenBlock& first, const EigenBlock& second) {
        const bool any = read_part(m, first, second, forth);
        present = read_part(m, second, first, back) || any;
    }
    void turn(const EigenBlock& first, const EigenBlock& second) {
        if (present) {
            turn_to_eigenbasis(first, second, forth);
            turn_to_eigenbasis(second, first, back);
        }
    }
};

/// The lines between two blocks. Only the real part counts, so a line and its mirror image join as
/// o(a, b) r(b, a) + conj(o(b, a) r(a, b)); within a block each pair of levels then counts twice.
void add_lines(const EigenBlock& first, const EigenBlock& second, const CMatrix& rho, const CMatrix& Ix,
               const CMatrix& Iy, Lines& lines) {
    static BothWays x, y, r;
    x.read(Ix, first, second);
    y.read(Iy, first, second);
    if (!x.present && !y.present) {
        return;
    }
    r.read(rho, first, second);
    if (!r.present) {
        return;
    }
    for (BothWays* part : {&x, &y, &r}) {
        part->turn(first, second);
    }
    const std::size_t rows = first.states.size();
    const std::size_t columns = second.states.size();
    Table xr(rows * columns, 0.0), xi(xr), yr(xr), yi(xr);
    add_amplitudes(rows, columns, x.forth, r.back, false, false, xr, xi);
    add_amplitudes(rows, columns, x.back, r.forth, true, true, xr, xi);
    add_amplitudes(rows, columns, y.forth, r.back, false, false, yr, yi);
    add_amplitudes(rows, columns, y.back, r.forth, true, true, yr, yi);
    const double weight = &first == &second ? 0.5 : 1.0;
    for (std::size_t a = 0; a < rows; ++a) {
        for (std::size_t b = 0; b < columns; ++b) {
            const std::size_t e = at(columns, a, b);
            if (xr[e] != 0.0 || xi[e] != 0.0 || yr[e] != 0.0 || yi[e] != 0.0) {
                lines.frequency.push_back(first.values[a] - second.values[b]);
                lines.xr.push_back(weight * xr[e]);
                lines.xi.push_back(weight * xi[e]);
                lines.yr.push_back(weight * yr[e]);
                lines.yi.push_back(weight * yi[e]);
            }
        }
    }
}

constexpr int kLinesTogether = 32; // their tables stay in cache
constexpr int kBlockPoints = 64;   // Q

struct SumTables {
    AlignedDoubles within_c, within_s; // lines x Q
    AlignedDoubles start_c, start_s;   // lines x blocks
    AlignedDoubles xr, xi, yr, yi;     // lines x blocks
    AlignedDoubles re, im;             // blocks x Q
};

void turn_amplitudes(const Lines& lines, int first, int count, int blocks, SumTables& t) {
    for (int l = 0; l < count; ++l) {
        const auto line = static_cast<std::size_t>(first + l);
        const double xr = lines.xr[line], xi = lines.xi[line];
        const double yr = lines.yr[line], yi = lines.yi[line];
        for (int p = 0; p < blocks; ++p) {
            const auto e = static_cast<std::size_t>(l * blocks + p);
            const double c = t.start_c[e];
            const double s = t.start_s[e];
            t.xr[e] = xr * c - xi * s;
            t.xi[e] = xr * s + xi * c;
            t.yr[e] = yr * c - yi * s;
            t.yi[e] = yr * s + yi * c;
        }
    }
}

void sum_lines(const Lines& lines, double dt, int points, double* out_re, double* out_im) {
    static SumTables t;
    const int within = std::min(kBlockPoints, (points + 15) / 16 * 16);
    const int blocks = ((points + within - 1) / within + 1) / 2 * 2;
    const auto many = [](int a, int b) { return static_cast<std::size_t>(a) * static_cast<std::size_t>(b); };
    for (AlignedDoubles* table : {&t.within_c, &t.within_s}) {
        table->resize(many(kLinesTogether, within));
    }
    for (AlignedDoubles* table : {&t.start_c, &t.start_s, &t.xr, &t.xi, &t.yr, &t.yi}) {
        table->resize(many(kLinesTogether, blocks));
    }
    t.re.assign(many(blocks, within), 0.0);
    t.im.assign(many(blocks, within), 0.0);
    const auto total = static_cast<int>(lines.frequency.size());
    double turn[kLinesTogether];
    double block_turn[kLinesTogether];
    for (int first = 0; first < total; first += kLinesTogether) {
        const int count = std::min(kLinesTogether, total - first);
        for (int l = 0; l < count; ++l) {
            turn[l] = lines.frequency[static_cast<std::size_t>(first + l)] * dt;
            block_turn[l] = turn[l] * within;
        }
        fill_turns(turn, 0.0, count, within, t.within_c.data(), t.within_s.data());
        fill_turns(block_turn, 0.0, count, blocks, t.start_c.data(), t.start_s.data());
        turn_amplitudes(lines, first, count, blocks, t);
        fast_kernels().line_sums({count, blocks, within, t.xr.data(), t.xi.data(), t.yr.data(), t.yi.data(),
                                  t.within_c.data(), t.within_s.data(), t.re.data(), t.im.data()});
    }
    std::copy_n(t.re.data(), points, out_re);
    std::copy_n(t.im.data(), points, out_im);
}

} // namespace

void fast_sample_free_evolution(int n, const CMatrix& H, double dt, int points, const CMatrix& rho,
                                const CMatrix& Ix, const CMatrix& Iy, double* out_re, double* out_im) {
    static Table h;
    if (n < 1 || points < 1 || !read_free_hamiltonian(n, H, dt, h) || !all_finite(n, rho) ||
        !all_finite(n, Ix) || !all_finite(n, Iy)) {
        kReferenceEngine.sample_free_evolution(n, H, dt, points, rho, Ix, Iy, out_re, out_im);
        return;
    }
    static Table diagonalised; // kept for the next state of the same system
    static std::vector<EigenBlock> blocks;
    static Lines lines;
    if (diagonalised != h) {
        blocks = diagonalise_blocks(n, h);
        diagonalised = h;
    }
    lines.clear();
    for (std::size_t a = 0; a < blocks.size(); ++a) {
        for (std::size_t b = a; b < blocks.size(); ++b) {
            add_lines(blocks[a], blocks[b], rho, Ix, Iy, lines);
        }
    }
    sum_lines(lines, dt, points, out_re, out_im);
}

} // namespace kor
