#include "support/plain_spin_system.h"

#include "kor/runtime_state.h"

#include <initializer_list>

namespace kor_test {

namespace {

using namespace kor;

void ladder_by_definition(bool raises, const SpinIList& Ilist, const SpinKet& ket, int n, int spin,
                          CMatrix& out) {
    const auto inproduct = raises ? InproductIplus : inproductImin;
    for (int k = 1; k <= n; ++k) {
        for (int l = 1; l <= n; ++l) {
            inproduct(Ilist, ket, k, l, spin, &out[k][l][1], &out[k][l][2]);
        }
    }
}

void ladder_by_steps(bool raises, const SpinIList& Ilist, const SpinKet& ket, int n, int spin, CMatrix& out) {
    (raises ? MakeMatrixIplus : MakeMatrixImin)(Ilist, ket, n, spin, out);
}

struct Workshop {
    const PlainMeans& means;
    const RuntimeState& rt;

    /// Ix = (I+ + I-) / 2, Iy = (I+ - I-) / 2i, Iz = [I+, I-] / 2
    void make(char axis, int spin, CMatrix& out) const {
        static CMatrix plus, minu, plus_minu, minu_plus;
        means.ladder(true, rt.Ilist, rt.ket, rt.n, spin, plus);
        means.ladder(false, rt.Ilist, rt.ket, rt.n, spin, minu);
        if (axis == 'z') {
            means.product(rt.n, plus, minu, plus_minu);
            means.product(rt.n, minu, plus, minu_plus);
            CMatRMultAdd(rt.n, plus_minu, 1.0, minu_plus, -1.0, out);
            RMultCMat(rt.n, 0.5, out, out);
            return;
        }
        for (int k = 1; k <= rt.n; ++k) {
            for (int l = 1; l <= rt.n; ++l) {
                out[k][l][1] = axis == 'x' ? 0.5 * (plus[k][l][1] + minu[k][l][1]) : 0.0;
                out[k][l][2] = axis == 'x' ? 0.0 : 0.5 * (minu[k][l][1] - plus[k][l][1]);
            }
        }
    }

    void add_equilibrium(int spin, CMatrix& densmat) const {
        static CMatrix iz;
        make('z', spin, iz);
        NormCMatrix(rt.n, iz);
        CMultCMat(rt.n, {{0.0, rt.relspinamp[spin], 0.0}}, iz, iz);
        CMatAdd(rt.n, densmat, iz, densmat);
    }

    void add_zeeman(int spin, CMatrix& Izee) const {
        static CMatrix iz;
        make('z', spin, iz);
        CMatRMultAdd(rt.n, iz, 2.0 * KOR_PI * rt.resofreqs[spin], Izee, 1.0, Izee);
    }

    void add_total(char axis, int spin, CMatrix& total) const {
        static CMatrix one;
        make(axis, spin, one);
        CMatAdd(rt.n, total, one, total);
    }

    void add_coupling(int i, int j, CMatrix& Icoup) const {
        static CMatrix first, second, product;
        const double omega = 2.0 * KOR_PI * rt.jc[i][j];
        if (omega == 0.0) {
            return;
        }
        for (const char* axis = rt.Jexact == 1 ? "z" : "xyz"; *axis != '\0'; ++axis) {
            make(*axis, i, first);
            make(*axis, j, second);
            means.product(rt.n, first, second, product);
            CMatRMultAdd(rt.n, product, omega, Icoup, 1.0, Icoup);
        }
    }
};

} // namespace

const PlainMeans kPlainByDefinition{ladder_by_definition, CMatMult};
const PlainMeans kPlainWithoutZeros{ladder_by_steps, CMatMultSparse};

void build_plain(const PlainMeans& means, int spins, int pairs, PlainSpinSystem& out) {
    const Workshop workshop{means, g_runtime};
    for (CMatrix* matrix :
         {&out.densmat, &out.Izee, &out.Icoup, &out.Ixtot, &out.Iytot, &out.Iztot, &out.Izgrad}) {
        CMatZero(g_runtime.n, *matrix);
    }
    for (int s = 1; s <= spins; ++s) {
        workshop.add_equilibrium(s, out.densmat);
        workshop.add_zeeman(s, out.Izee);
        workshop.add_total('x', s, out.Ixtot);
        workshop.add_total('y', s, out.Iytot);
        workshop.add_total('z', s, out.Iztot);
        workshop.add_total('z', s, out.Izgrad);
    }
    for (int i = 1; i < g_runtime.Nspins; ++i) {
        for (int j = i + 1; j <= g_runtime.Nspins && pairs > 0; ++j, --pairs) {
            workshop.add_coupling(i, j, out.Icoup);
        }
    }
}

} // namespace kor_test
