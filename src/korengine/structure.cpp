#include "structure.h"

#include <algorithm>
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

SparseMatrix sparse(const SystemStructure& s, const std::vector<double>& dense, bool with_diagonal) {
    SparseMatrix rows;
    for (int i = 0; i < s.n; ++i) {
        rows.start.push_back(static_cast<int>(rows.value.size()));
        for (int j = 0; j < s.n; ++j) {
            const double value = dense[s.index(i, j)];
            if (value != 0.0 && (with_diagonal || i != j)) {
                rows.column.push_back(j);
                rows.value.push_back(value);
            }
        }
    }
    rows.start.push_back(static_cast<int>(rows.value.size()));
    return rows;
}

} // namespace

void complete_structure(SystemStructure& s) {
    make_ladder(s);
    s.h0_bound = largest_row_sum(s, s.h0);
    s.fx_row_sum = largest_row_sum(s, s.fx);
    s.h0_off_diagonal = sparse(s, s.h0, false);
    s.fx_entries = sparse(s, s.fx, true);
}

bool analyse_system(const EngineSystem& system, SystemStructure& out) {
    out.n = system.n;
    if (out.n < 1 || !read_fz(*system.Fz, out) || !read_field(*system.Fx, *system.Fy, out) ||
        !read_h0(*system.H0, out)) {
        return false;
    }
    complete_structure(out);
    return std::isfinite(out.h0_bound);
}

} // namespace kor
