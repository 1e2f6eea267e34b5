// The operators of a spin system by their formulas: every ladder element from its definition, every product
// a whole matrix product. The judge of the set-up that fills the few elements directly.
#pragma once

#include "spinoperatorlib.h"

namespace kor_test {

struct PlainSpinSystem {
    kor::CMatrix densmat, Izee, Icoup, Ixtot, Iytot, Iztot, Izgrad;
};

/// What the plain set-up is made of. `ladder` writes I+ (raises) or I- of a spin.
struct PlainMeans {
    void (*ladder)(bool raises, const kor::SpinIList& Ilist, const kor::SpinKet& ket, int n, int spin,
                   kor::CMatrix& out);
    void (*product)(int n, const kor::CMatrix& a, const kor::CMatrix& b, kor::CMatrix& out);
};

/// Element by element and by the plain loop over rows, columns and sums.
extern const PlainMeans kPlainByDefinition;
/// The same bits, without the zeros: for 256 states in a test's time.
extern const PlainMeans kPlainWithoutZeros;

/// Builds the operators from g_runtime's definition (Nspins, n, Ilist, ket, relspinamp, resofreqs, jc,
/// Jexact), of spins 1..spins only and of the first `pairs` pairs only.
void build_plain(const PlainMeans& means, int spins, int pairs, PlainSpinSystem& out);

} // namespace kor_test
