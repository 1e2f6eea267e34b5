#include "support/laboratory.h"

namespace kor_test {

namespace {

const kor::CMatrix* address(const kor::CMatrix& m) {
    return &m;
}

} // namespace

Laboratory::Laboratory(const std::vector<int>& twice_spins) {
    for (std::size_t s = 0; s < twice_spins.size(); ++s) {
        Ilist_[s + 1] = twice_spins[s];
    }
    nspins_ = kor::infer_nspins(Ilist_);
    n_ = kor::infer_nstates(Ilist_, nspins_);
    kor::MakeKets(ket_, Ilist_);
    kor::MakeTotalIx(n_, nspins_, ket_, Ilist_, 0, Fx_);
    kor::MakeTotalIy(n_, nspins_, ket_, Ilist_, 0, Fy_);
    kor::MakeTotalIz(n_, nspins_, ket_, Ilist_, 0, Fz_);
    kor::CMatZero(n_, H0_);
}

Dense Laboratory::op(int spin, Axis axis) {
    static kor::CMatrix out;
    switch (axis) {
    case Axis::x:
        kor::MakeMatrixIx(Ilist_, ket_, n_, spin, out);
        break;
    case Axis::y:
        kor::MakeMatrixIy(Ilist_, ket_, n_, spin, out);
        break;
    case Axis::z:
        kor::MakeMatrixIz(Ilist_, ket_, n_, spin, out);
        break;
    }
    return to_dense(n_, out);
}

Dense Laboratory::total(Axis axis) {
    switch (axis) {
    case Axis::x:
        return Fx_.dense(n_);
    case Axis::y:
        return Fy_.dense(n_);
    case Axis::z:
        break;
    }
    return Fz_.dense(n_);
}

void Laboratory::set_hamiltonian(const Dense& H0) {
    from_dense(H0, H0_);
}

Dense Laboratory::propagator(const Stretch& stretch, double x, double y, double z) {
    const auto constant = [&](double value) {
        return std::vector<double>(static_cast<std::size_t>(stretch.count), value);
    };
    const std::vector<double> xb = constant(stretch.bx);
    const std::vector<double> yb = constant(stretch.by);
    const std::vector<double> gx = constant(stretch.gx);
    const std::vector<double> gy = constant(stretch.gy);
    const std::vector<double> gz = constant(stretch.gz);
    kor::EngineOpenSector(
        {{n_, address(H0_), address(Fz_), address(Fx_), address(Fy_)},
         {stretch.count, stretch.dt, xb.data(), yb.data(), gx.data(), gy.data(), gz.data(), stretch.offset},
         {1, 1, 1, x, y, z, 0.0, 0.0, 0.0}});
    static kor::CMatrix r;
    kor::EngineSectorPropagator(1, 1, 1, r);
    return to_dense(n_, r);
}

Dense Laboratory::after(const Stretch& stretch, const Dense& rho, double x, double y, double z) {
    static kor::CMatrix r, state;
    from_dense(propagator(stretch, x, y, z), r);
    from_dense(rho, state);
    kor::EngineRotate(n_, r, state);
    return to_dense(n_, state);
}

Dense Laboratory::after_ideal_pulse(Axis axis, double angle, const Dense& rho) {
    const Dense H0 = H0_.dense(n_);
    set_hamiltonian(Dense::Zero(n_, n_));
    const double bx = axis == Axis::x ? angle : 0.0;
    const double by = axis == Axis::y ? angle : 0.0;
    const double offset = axis == Axis::z ? angle : 0.0;
    const Dense state = after({1, 1.0, bx, by, offset, 0.0, 0.0, 0.0}, rho);
    set_hamiltonian(H0);
    return state;
}

Dense Laboratory::after_delay(double time, const Dense& rho) {
    return after({1, time, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0}, rho);
}

double coefficient(const Dense& op, const Dense& rho) {
    return (op * rho).trace().real() / (op * op).trace().real();
}

} // namespace kor_test
