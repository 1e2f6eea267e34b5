// The kernels of the fast engine, one source for every instruction set: a file that includes this one
// has set kLanes, the doubles of a vector register, in kor's anonymous namespace. Everything here is
// file-local and works on plain pointers, so that no function compiled for one instruction set is ever
// linked into another's place. load and store read and write memory without alignment; what as_lanes takes
// begins on a cache line.
#pragma once

#include "fast_jobs.h"

namespace kor {

namespace {

typedef double UnalignedLanes __attribute__((vector_size(8 * kLanes), aligned(8), may_alias));
#ifdef __clang__
// clang forgets the smaller alignment in templates and references, and then moves local arrays of that type
// as if they had the full one: here they have it.
typedef double Lanes __attribute__((vector_size(8 * kLanes), may_alias));
#else
typedef UnalignedLanes Lanes;
#endif

inline Lanes load(const double* p) {
    return *reinterpret_cast<const UnalignedLanes*>(p);
}

inline void store(double* p, Lanes v) {
    *reinterpret_cast<UnalignedLanes*>(p) = v;
}

inline Lanes* as_lanes(double* p) {
    return reinterpret_cast<Lanes*>(p);
}

inline const Lanes* as_lanes(const double* p) {
    return reinterpret_cast<const Lanes*>(p);
}

} // namespace

} // namespace kor

#include "kernels/columns.h"
#include "kernels/columns_binary.h"
#include "kernels/columns_sparse.h"
#include "kernels/interpolation.h"
#include "kernels/lane_products.h"
#include "kernels/lane_steps.h"
#include "kernels/planes.h"
#include "kernels/spin_half.h"
#include "kernels/states.h"

namespace kor {

namespace {

constexpr FastKernels kKernelsHere{kLanes,         fill_offsets,   spin_half,       join_turns, lane_product,
                                   sparse_columns, binary_columns, complex_product, line_sums,  mix_rows,
                                   chebyshev_sums, turn_states,    signal_pairs};

} // namespace

} // namespace kor
