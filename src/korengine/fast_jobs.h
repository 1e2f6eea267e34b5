// What the planner hands to the kernels: plain records of pointers, shared by every instruction set.
// Matrices here are 0-based and row-major. "Lanes" are the doubles of one vector register; an array over
// lanes holds the values of all lanes of one entry side by side.
#pragma once

namespace kor {

/// D = sum of c[k] X^k and S = A (sum of t[k] X^k), X = A^2, approximate cos A - 1 and sin A up to a bound
/// of |A|. c[0] = 0, so that a vanishing A leaves nothing to grow with halvings undone or steps. The powers
/// X..X^powers are formed; with `high` the degree is 2 powers, else powers.
struct TrigPolynomial {
    double bound;
    int powers;
    bool high;
    double c[9];
    double t[9];
};

/// exp(-i (h H0 + hw Fz + hb Fx)) of a step: the polynomial of |A| / 2^squarings and the squarings.
struct StepPlan {
    const TrigPolynomial* polynomial;
    int squarings;
};

/// Steps first..end - 1 of a LaneJob that have one h and, in each lane, one hw: their exponentials are
/// functions of hb alone. Values at the Chebyshev points hb = middle + half node[k] give the series.
struct FieldStretch {
    int first, end;
    int terms;               // at least 1
    double middle, half;     // half may be 0
    const double* node;      // terms, -1..1
    const double* to_series; // terms x terms: row k gives coefficient k from the values
    StepPlan plan;           // of the values
};

/// Most terms of a FieldStretch, and the room for them: at least 2.
constexpr int kMaxFieldTerms = 32;

/// Ordered product over the steps, one voxel or time segment per lane.
struct LaneJob {
    int n;             // rows, padded to a multiple of 4 (2 for the single spin 1/2)
    const double* h0;  // n x n real symmetric, rad/s
    const double* fx;  // n x n real symmetric
    const double* m;   // n, diagonal of Fz
    const int* ladder; // n, steps of m below the highest one
    int ladder_top;    // largest of them
    int steps;
    const double* h;      // steps x lanes, s
    const double* hw;     // steps x lanes, h times the offset
    const double* hb;     // steps x lanes, h times the field along x (of its own direction when zc is set)
    const double* hy;     // steps x lanes, h times the field along y; single spin 1/2 only, else null
    const double* zc;     // steps x lanes, cosine and sine of the turn of the field's direction since the
    const double* zs;     // step before, of the first step from the x axis; null when it does not turn
    const double* last_c; // lanes, the field's direction in the last step; unused when it does not turn
    const double* last_s;
    const StepPlan* plan; // steps
    int stretches;        // in order; other steps are computed one by one
    const FieldStretch* stretch;
    bool one_place; // in a stretch all lanes have the same h and hw
    double* series; // room for one stretch: terms x n (n + 1) x lanes, of which one_place needs no lanes
    double* work;   // (2 (ladder_top + 1) + kLaneWorkMatrices n n) x lanes
    double* re;     // n x n x lanes, result; from and to the x axis when the direction turns
    double* im;
};

/// Turns of a single spin 1/2, 2 x 2 x lanes as LaneJob leaves them:
/// turn = lead . turn . middle . transpose(turn) where it is the first half of a palindrome, then from the
/// frame of the field's direction (ux, uy) to that of the operators.
struct TurnJoinJob {
    bool mirrored;
    const double *lead_re, *lead_im; // null: none
    const double *middle_re, *middle_im;
    double ux, uy;
    double *re, *im;
};

/// Number of n x n matrices that LaneJob::work holds, behind the powers of a turn.
constexpr int kLaneWorkMatrices = 9;

/// hw[j][lane] = h[j][lane] (gx[j] x[lane] + gy[j] y[lane] + gz[j] z[lane] + offset)
struct OffsetJob {
    int steps;
    const double* h;  // steps x lanes
    const double* gx; // steps
    const double* gy;
    const double* gz;
    double offset;
    const double* x; // lanes
    const double* y;
    const double* z;
    double* hw; // steps x lanes
};

/// Chebyshev series of one step: exp(-i A) = sum of coefficient[k] (-i)^k T_k(A / radius).
struct ChebyshevSeries {
    double radius;
    int degree; // at least 1
    const double* coefficient;
    const double* ratio; // see series.h; null where powers of A would cancel
};

/// The exponent's elements in rows: start[i]..start[i+1]-1 of row i, each with its value in the operators.
/// The values go on with zeros to a multiple of 8.
struct SparseRows {
    const int* start;
    const int* column;
    const double *h0, *fz, *fx;
};

/// Ordered product over the steps of one voxel, applied to the columns of the identity.
struct ColumnJob {
    int n;
    SparseRows rows;           // for sparse_columns
    int binary_spins;          // this and the next three for binary_columns (SystemStructure)
    const double* h0_diagonal; // n, rad/s
    const double* m;           // n, diagonal of Fz
    const double* exchange;    // 8 x 8, rad/s; null when there is none
    int exponent_size;         // sparse: the rows' values; binary: n + 72; a multiple of 8
    const int* ladder;         // n, steps of m below the highest one
    int ladder_top;
    int steps;
    const double* h;  // steps
    const double* hw; // steps
    const double* hb; // steps
    const double* zc; // steps; null when the field keeps its direction
    const double* zs;
    const ChebyshevSeries* const* series; // steps
    double* work;                         // column_work(n, exponent_size)
    double* re;                           // n rows of `stride`, result
    double* im;
    int stride; // plane_stride(n)
};

/// Doubles of ColumnJob::work: three blocks of columns, the exponent twice and the turns.
constexpr int column_work(int n, int exponent_size) {
    return 3 * n * 32 + 2 * exponent_size + 2 * n;
}

/// out = a . b, complex, planes of real and imaginary parts with rows of `stride` doubles.
struct ProductJob {
    int n;
    int stride;
    const double *a_re, *a_im, *b_re, *b_im;
    double *out_re, *out_im; // neither factor
};

/// re[p][q] += sum over lines of xr cos - xi sin and im[p][q] += sum of yr cos - yi sin: (xr, xi)[l][p] and
/// (yr, yi)[l][p] are amplitudes turned to the time of block p, (cos, sin)[l][q] the turn of q points.
struct LineSumJob {
    int lines;
    int blocks;                      // p, a multiple of 2
    int points;                      // q, a multiple of 16
    const double *xr, *xi, *yr, *yi; // lines x blocks
    const double *cosine, *sine;     // lines x points
    double *re, *im;                 // blocks x points
};

/// out = factor . in, real.
struct MixJob {
    int rows;             // of factor and out
    int inner;            // columns of factor, rows of in
    int width;            // of in and out, a multiple of 16
    const double* factor; // rows x inner
    const double* in;     // inner x width
    double* out;          // rows x width
};

/// out[p][e] = sum over k of coefficient[panel[p]][k][e] T_k(t[p]), e = 0..width - 1.
struct ChebyshevSumJob {
    int points;
    int terms;                 // at least 1
    int width;                 // a multiple of 16
    const double* coefficient; // panels x terms x width
    const int* panel;          // points
    const double* t;           // points, -1..1
    double* out;               // points x width
};

/// Largest n of TurnJob.
constexpr int kMaxTurnedStates = 16;

/// Every state becomes adjoint(r) state r. Matrices of pairs: n rows of n elements, each its real part, then
/// its imaginary part; n at most kMaxTurnedStates.
struct TurnJob {
    int n;
    int count;
    const double *r, *ir, *adjoint; // r, i r and the adjoint of r
    double* states;                 // count matrices
};

/// pairs[p][q] = sum over lines of (xr cos - xi sin, yr cos - yi sin) at point q of block p: (xr, xi, yr, yi)
/// are the line's amplitudes turned by (middle_cosine, middle_sine)[l][p] to the middle of the block, cos and
/// sin the turn from there. (cosine, sine)[l][k] is that of k + 1/2 points.
struct SignalJob {
    int lines;
    int blocks;                                // p, a multiple of 8
    int points;                                // q, a multiple of 16
    const double* amplitude;                   // lines x (xr, xi, yr, yi)
    const double *middle_cosine, *middle_sine; // lines x blocks
    const double *cosine, *sine;               // lines x points / 2
    double* work;                              // 4 x lines x blocks
    double* pairs;                             // blocks x points x 2
};

struct FastKernels {
    int lanes;
    void (*fill_offsets)(const OffsetJob& job);
    void (*spin_half)(const LaneJob& job);
    void (*join_turns)(const TurnJoinJob& job);
    void (*lane_product)(const LaneJob& job);
    void (*sparse_columns)(const ColumnJob& job);
    void (*binary_columns)(const ColumnJob& job);
    void (*complex_product)(const ProductJob& job);
    void (*line_sums)(const LineSumJob& job);
    void (*mix_rows)(const MixJob& job);
    void (*chebyshev_sums)(const ChebyshevSumJob& job);
    /// The number of states turned: it stops before one that is not finite.
    int (*turn_states)(const TurnJob& job);
    void (*signal_pairs)(const SignalJob& job);
};

extern const FastKernels kBaselineKernels;
extern const FastKernels kAvx2Kernels;
extern const FastKernels kAvx512Kernels;

/// The kernels of the instruction set in use.
const FastKernels& fast_kernels();

} // namespace kor
