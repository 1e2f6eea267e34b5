#include "structure.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace kor {

namespace {

constexpr double kRounding = 1e-14; // what building the operators may leave in their elements

bool near(double a, double b, double scale) {
    return std::fabs(a - b) <= kRounding * scale;
}

/// False when the steps of m are not whole.
bool make_ladder(SystemStructure& s) {
    const double top = *std::max_element(s.m.begin(), s.m.end());
    const double bottom = *std::min_element(s.m.begin(), s.m.end());
    s.ladder.assign(s.m.size(), 0);
    s.ladder_top = 0;
    for (std::size_t i = 0; i < s.m.size(); ++i) {
        const double steps = std::round(top - s.m[i]);
        if (!near(steps, top - s.m[i], 10.0) || !(steps <= KOR_MAX_STATES)) {
            return false;
        }
        s.ladder[i] = static_cast<int>(steps);
        s.ladder_top = std::max(s.ladder_top, s.ladder[i]);
    }
    s.field_bound = std::max(std::fabs(top), std::fabs(bottom));
    return true;
}

double largest_row_sum(const SystemStructure& s, const std::vector<double>& dense) {
    double largest = 0.0;
    for (int i = 0; i < s.n; ++i) {
        double sum = 0.0;
        for (int j = 0; j < s.n; ++j) {
            sum += std::fabs(dense[s.index(i, j)]);
        }
        largest = sum > largest || sum != sum ? sum : largest; // keeps what is not a number
    }
    return largest;
}

/// m and the ladder steps; false when Fz is not diagonal and real with steps of 1.
bool read_fz(const CMatrix& Fz, SystemStructure& s) {
    s.m.assign(static_cast<std::size_t>(s.n), 0.0);
    for (int i = 0; i < s.n; ++i) {
        for (int j = 0; j < s.n; ++j) {
            const Complex2& e = Fz[i + 1][j + 1];
            if (e[2] != 0.0 || (i != j && e[1] != 0.0)) {
                return false;
            }
        }
        s.m[static_cast<std::size_t>(i)] = Fz[i + 1][i + 1][1];
    }
    return make_ladder(s);
}

/// Fx real symmetric between neighbouring m only; Fy = -i [Fz, Fx].
bool read_field(const CMatrix& Fx, const CMatrix& Fy, SystemStructure& s) {
    s.fx.assign(static_cast<std::size_t>(s.n) * static_cast<std::size_t>(s.n), 0.0);
    for (int i = 0; i < s.n; ++i) {
        for (int j = 0; j < s.n; ++j) {
            const Complex2& x = Fx[i + 1][j + 1];
            const Complex2& y = Fy[i + 1][j + 1];
            const int step = s.ladder[static_cast<std::size_t>(j)] - s.ladder[static_cast<std::size_t>(i)];
            const bool neighbours = step == 1 || step == -1;
            if (x[2] != 0.0 || y[1] != 0.0 || (!neighbours && (x[1] != 0.0 || y[2] != 0.0)) ||
                !near(x[1], Fx[j + 1][i + 1][1], 8.0) || !near(y[2], -step * x[1], 8.0)) {
                return false;
            }
            s.fx[s.index(i, j)] = x[1];
        }
    }
    return true;
}

/// Whether [Fx, Fy] = i Fz. The field operators are then turns of Fz, no longer than it is, and no step of
/// the ladder is missing. With Fy = -i [Fz, Fx] element (i, j) of the left side is, between states of equal
/// m, 2i times the sum over k of (ladder_k - ladder_i) fx_ik fx_kj.
bool field_turns_fz(const SystemStructure& s) {
    const double scale = 8.0 * (1.0 + s.field_bound * s.field_bound);
    std::vector<double> row(s.m.size());
    for (int i = 0; i < s.n; ++i) {
        const int here = s.ladder[static_cast<std::size_t>(i)];
        std::fill(row.begin(), row.end(), 0.0);
        for (int k = 0; k < s.n; ++k) {
            const double factor = 2.0 * (s.ladder[static_cast<std::size_t>(k)] - here) * s.fx_at(i, k);
            for (int j = 0; factor != 0.0 && j < s.n; ++j) {
                row[static_cast<std::size_t>(j)] += factor * s.fx_at(k, j);
            }
        }
        row[static_cast<std::size_t>(i)] -= s.m[static_cast<std::size_t>(i)];
        for (std::size_t j = 0; j < row.size(); ++j) {
            if (s.ladder[j] == here && !near(row[j], 0.0, scale)) {
                return false;
            }
        }
    }
    return true;
}

bool read_h0(const CMatrix& H0, SystemStructure& s) {
    s.h0.assign(static_cast<std::size_t>(s.n) * static_cast<std::size_t>(s.n), 0.0);
    for (int i = 0; i < s.n; ++i) {
        for (int j = 0; j < s.n; ++j) {
            const Complex2& e = H0[i + 1][j + 1];
            const bool same_m =
                s.ladder[static_cast<std::size_t>(i)] == s.ladder[static_cast<std::size_t>(j)];
            if (e[2] != 0.0 || (!same_m && e[1] != 0.0) || e[1] != H0[j + 1][i + 1][1]) {
                return false;
            }
            s.h0[s.index(i, j)] = e[1];
        }
    }
    return true;
}

void fill_sparse(SystemStructure& s) {
    SparseOperators& out = s.sparse;
    out = {};
    for (int i = 0; i < s.n; ++i) {
        out.start.push_back(out.size());
        for (int j = 0; j < s.n; ++j) {
            if (i == j || s.h0_at(i, j) != 0.0 || s.fx_at(i, j) != 0.0) {
                out.column.push_back(j);
                out.h0.push_back(s.h0_at(i, j));
                out.fz.push_back(i == j ? s.m[static_cast<std::size_t>(i)] : 0.0);
                out.fx.push_back(s.fx_at(i, j));
            }
        }
    }
    out.start.push_back(out.size());
    for (std::vector<double>* values : {&out.h0, &out.fz, &out.fx}) {
        values->resize((values->size() + 7) / 8 * 8, 0.0);
    }
}

/// False when fx is not half the sum of all flips of one bit.
bool flips_single_bits(const SystemStructure& s) {
    for (int i = 0; i < s.n; ++i) {
        for (int j = 0; j < s.n; ++j) {
            if (s.fx_at(i, j) != (std::has_single_bit(static_cast<unsigned>(i ^ j)) ? 0.5 : 0.0)) {
                return false;
            }
        }
    }
    return true;
}

/// Fills s.exchange; false when an element of h0 off the diagonal is of another kind.
bool read_exchange(SystemStructure& s) {
    s.exchange.assign(64, 0.0);
    for (int i = 0; i < s.n; ++i) {
        for (int j = 0; j < s.n; ++j) {
            const auto flipped = static_cast<unsigned>(i ^ j);
            if (std::popcount(flipped) == 2 && std::popcount(flipped & static_cast<unsigned>(i)) == 1) {
                const int p = std::countr_zero(flipped);
                const int q = static_cast<int>(std::bit_width(flipped)) - 1;
                double& known = s.exchange[static_cast<std::size_t>(8 * p + q)];
                if (i < j && (i >> (q + 1)) == 0 && (i & ((1 << q) - 1) & ~(1 << p)) == 0) {
                    known = s.h0_at(i, j); // all other bits 0: the first pair of this kind
                }
                if (s.h0_at(i, j) != known) {
                    return false;
                }
            } else if (i != j && s.h0_at(i, j) != 0.0) {
                return false;
            }
        }
    }
    const auto is_zero = [](double value) { return value == 0.0; };
    if (std::all_of(s.exchange.begin(), s.exchange.end(), is_zero)) {
        s.exchange.clear();
    }
    return true;
}

} // namespace

void complete_structure(SystemStructure& s) {
    make_ladder(s);
    s.h0_bound = largest_row_sum(s, s.h0);
    s.fx_row_sum = largest_row_sum(s, s.fx);
    s.binary_spins = 0;
    if (s.n > kMaxLaneStates) {
        fill_sparse(s);
        const auto states = static_cast<unsigned>(s.n);
        const bool binary = std::has_single_bit(states) && flips_single_bits(s) && read_exchange(s);
        s.binary_spins = binary ? std::countr_zero(states) : 0;
    }
}

bool analyse_system(const EngineSystem& system, SystemStructure& out) {
    out.n = system.n;
    if (out.n < 1 || !read_fz(*system.Fz, out) || !read_field(*system.Fx, *system.Fy, out) ||
        !field_turns_fz(out) || !read_h0(*system.H0, out)) {
        return false;
    }
    complete_structure(out);
    return std::isfinite(out.h0_bound);
}

} // namespace kor
