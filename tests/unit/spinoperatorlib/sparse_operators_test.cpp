#include "spinoperatorlib.h"
#include "support/marked_matrix.h"
#include "support/spin_basis.h"

#include <gtest/gtest.h>

#include <memory>

using namespace kor;
using namespace kor_test;

namespace {

using SparseBuilder = void (*)(const SpinIList&, const SpinKet&, int, int, SparseOperator&);

const struct {
    Axis axis;
    SparseBuilder build;
} sparse_components[] = {{Axis::x, SparseIx}, {Axis::y, SparseIy}, {Axis::z, SparseIz}};

} // namespace

TEST(SparseProduct, OfTwoSpinsIsTheMatrixProduct) {
    const auto a = std::make_unique<SparseOperator>();
    const auto b = std::make_unique<SparseOperator>();
    const auto product = std::make_unique<SparseOperator>();
    for (const Spins& spins : {Spins{1, 1}, {1, 2}, {3, 1, 2}, {1, 0, 1}}) {
        const SpinBasis basis = make_basis(spins);
        for (const auto& first : sparse_components)
            for (const auto& second : sparse_components) {
                first.build(basis.Ilist, basis.ket, basis.n, 1, *a);
                second.build(basis.Ilist, basis.ket, basis.n, basis.nspins, *b);
                SparseProduct(*a, *b, *product);
                MarkedMatrix out;
                SparseToMatrix(*product, out);
                const Dense expected =
                    spin_operator(spins, 1, first.axis) * spin_operator(spins, basis.nspins, second.axis);
                EXPECT_LE(distance(out, expected), 1e-14) << testing::PrintToString(spins);
                EXPECT_TRUE(out.border_untouched(basis.n));
            }
    }
}

TEST(SparseOperators, ServeTheFullCapacity) {
    const Spins halves(8, 1);
    const SpinBasis basis = make_basis(halves);
    const auto op = std::make_unique<SparseOperator>();
    for (const int s : {1, 5, 8})
        for (const auto& component : sparse_components) {
            component.build(basis.Ilist, basis.ket, 256, s, *op);
            MarkedMatrix out;
            SparseToMatrix(*op, out);
            EXPECT_EQ(distance(out, spin_operator(halves, s, component.axis)), 0.0) << s;
            EXPECT_TRUE(out.border_untouched(256));
        }
}
