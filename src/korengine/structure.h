// What the fast engine relies on in a spin system's operators, checked and packed.
#pragma once

#include "fast_jobs.h"
#include "korengine.h"

#include <cmath>
#include <vector>

namespace kor {

/// Largest system that is computed on lanes; the columns of larger ones need what is sparse or binary in
/// them.
constexpr int kMaxLaneStates = 16;

/// The elements where H0, Fx or the diagonal may differ from 0.
struct SparseOperators {
    std::vector<int> start;
    std::vector<int> column;
    std::vector<double> h0, fz, fx; // zeros behind the end, to a multiple of 8

    SparseRows rows() const { return {start.data(), column.data(), h0.data(), fz.data(), fx.data()}; }
    int size() const { return static_cast<int>(column.size()); }
};

/// A system with H0 real symmetric and free of elements between states of different total m, Fz diagonal,
/// Fx real, Fy its quarter turn about z and [Fx, Fy] = i Fz: then (xb, yb) along the direction phi is
/// exp(-i phi Fz) (B Fx) exp(+i phi Fz), the turns commute with H0, and Fx is as long as Fz.
struct SystemStructure {
    int n = 0;
    std::vector<double> h0;  // n x n, rad/s
    std::vector<double> fx;  // n x n
    std::vector<double> m;   // diagonal of Fz
    std::vector<int> ladder; // steps of m below the highest
    int ladder_top = 0;
    SparseOperators sparse; // beyond kMaxLaneStates
    /// Of spins 1/2 alone, beyond kMaxLaneStates, when the number of a state is binary: bit p is 1 when the
    /// spin that varies fastest but p is down. Else 0.
    int binary_spins = 0;
    /// 8 x 8, element (p, q), p < q: H0 between states in which bits p and q differ and are exchanged, rad/s.
    /// Empty when all are 0.
    std::vector<double> exchange;
    double h0_bound = 0.0;    // of |H0|, rad/s
    double field_bound = 0.0; // of |Fx| = |Fz|
    double fx_row_sum = 0.0;  // largest row sum of |Fx|

    double h0_at(int i, int j) const { return h0[index(i, j)]; }
    double fx_at(int i, int j) const { return fx[index(i, j)]; }
    std::size_t index(int i, int j) const {
        return static_cast<std::size_t>(i) * static_cast<std::size_t>(n) + static_cast<std::size_t>(j);
    }
};

/// hypot(x, y), without its care for the ends of the range where that is not needed.
inline double plane_length(double x, double y) {
    const double square = x * x + y * y;
    return square > 1e-280 && square < 1e300 ? std::sqrt(square) : std::hypot(x, y);
}

/// Bound of |h H0 + hw Fz + hb Fx|, h >= 0: the field turns like its length along z.
inline double exponent_bound(const SystemStructure& s, double h, double hw, double hb) {
    return h * s.h0_bound + s.field_bound * plane_length(hw, hb);
}

/// Fills what follows from n, h0, fx, m: the ladder, the sparse rows and the bounds.
void complete_structure(SystemStructure& s);

/// False when the operators are of another kind; out is then undefined.
bool analyse_system(const EngineSystem& system, SystemStructure& out);

} // namespace kor
