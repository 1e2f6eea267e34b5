// Field gradients over lines of voxels.
#include "support/constants.h"
#include "support/laboratory.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor_test;

namespace {

/// A sector on a line of voxels along z, gradient g for `time`, then the mean of <Ix> - i <Iy>.
Complex mean_signal(double g, double time, int voxels, double z0, double dz) {
    Laboratory lab({1});
    const MarkedMatrix H0(Dense::Zero(2, 2));
    const MarkedMatrix Fx(lab.total(Axis::x));
    const MarkedMatrix Fy(lab.total(Axis::y));
    const MarkedMatrix Fz(lab.total(Axis::z));
    const kor::CMatrix& h0 = H0;
    const kor::CMatrix& fx = Fx;
    const kor::CMatrix& fy = Fy;
    const kor::CMatrix& fz = Fz;
    const std::vector<double> none(5, 0.0);
    const std::vector<double> gz(5, g);
    kor::EngineOpenSector({{2, &h0, &fz, &fx, &fy},
                           {5, time / 5, none.data(), none.data(), none.data(), none.data(), gz.data(), 0.0},
                           {1, 1, voxels, 0.0, 0.0, z0, 0.0, 0.0, dz}});
    Complex sum = 0.0;
    MarkedMatrix r;
    for (int iz = 1; iz <= voxels; ++iz) {
        MarkedMatrix rho(lab.total(Axis::x));
        kor::EngineSectorPropagator(1, 1, iz, r);
        kor::EngineRotate(2, r, rho);
        const Dense state = rho.dense(2);
        sum += Complex(coefficient(lab.total(Axis::x), state), -coefficient(lab.total(Axis::y), state));
    }
    return sum / static_cast<double>(voxels);
}

} // namespace

TEST(GradientDephasing, OfALineOfVoxelsIsAGeometricSum) {
    // Each voxel precesses by g z T towards -Iy: mean of exp(i g T z) over z0, z0 + dz, ...
    const double g = 2.0 * PI * 1000.0;
    const double time = 1.5e-3;
    for (const int voxels : {1, 2, 9, 32}) {
        const double z0 = -0.35;
        const double dz = 0.06;
        const Complex step = std::polar(1.0, g * time * dz);
        const Complex sum = std::polar(1.0, g * time * z0) * (1.0 - std::pow(step, voxels)) / (1.0 - step);
        const Complex expected = sum / static_cast<double>(voxels);
        EXPECT_LE(std::abs(mean_signal(g, time, voxels, z0, dz) - expected), 1e-12) << voxels;
    }
}

TEST(GradientDephasing, IsCompleteOverWholeTurns) {
    // 16 voxels that share 3 whole turns evenly.
    const double dz = 0.1;
    const double g = 3.0 * 2.0 * PI / (16 * dz * 1e-3);
    EXPECT_LE(std::abs(mean_signal(g, 1e-3, 16, -0.8, dz)), 1e-12);
}

TEST(GradientEcho, RefocusesAtEqualAreasOfOppositeGradients) {
    Laboratory lab({1, 1});
    const Dense H = 100.0 * lab.op(1, Axis::z) * lab.op(2, Axis::z);
    lab.set_hamiltonian(H);
    for (const double z : {-0.9, 0.0, 0.4}) {
        Dense rho = lab.after({4, 1e-3, 0.0, 0.0, 0.0, 0.0, 0.0, 5000.0}, lab.total(Axis::x), 0.0, 0.0, z);
        rho = lab.after({8, 1e-3, 0.0, 0.0, 0.0, 0.0, 0.0, -2500.0}, rho, 0.0, 0.0, z);
        lab.set_hamiltonian(H);
        EXPECT_LE(distance(rho, lab.after_delay(12e-3, lab.total(Axis::x))), 1e-12) << z;
    }
}

TEST(GradientEcho, RefocusesAfterAHalfTurnPulseWithoutAChangeOfSign) {
    Laboratory lab({1});
    const Stretch crusher = {3, 1e-3, 0.0, 0.0, 0.0, 800.0, -1200.0, 3000.0};
    Dense rho = lab.after(crusher, lab.total(Axis::y), 0.3, -0.2, 0.7);
    rho = lab.after_ideal_pulse(Axis::y, PI, rho);
    rho = lab.after(crusher, rho, 0.3, -0.2, 0.7);
    EXPECT_LE(distance(rho, lab.total(Axis::y)), 1e-12);
}

TEST(GradientAxes, AddTheirOffsets) {
    Laboratory lab({2});
    const Dense all = lab.propagator({3, 1e-4, 500.0, 0.0, 100.0, 1000.0, 2000.0, -3000.0}, 0.5, -0.25, 0.1);
    const Dense sum = lab.propagator({3, 1e-4, 500.0, 0.0, 100.0 + 500.0 - 500.0 - 300.0, 0.0, 0.0, 0.0});
    EXPECT_LE(distance(all, sum), 1e-14);
}

TEST(SliceSelection, DependsOnOffsetAloneSoTheProfileIsCentredWhereTheOffsetsCancel) {
    // A soft pulse of constant field with a gradient: the carrier offset moves the slice.
    Laboratory lab({1});
    const double g = 2.0 * PI * 2000.0;
    const double carrier = -g * 0.2; // on resonance at z = +0.2 cm
    const Stretch pulse = {10, 5e-5, PI / (2.0 * 5e-4), 0.0, carrier, 0.0, 0.0, g};
    const auto my = [&](double z) {
        return coefficient(lab.total(Axis::y), lab.after(pulse, lab.total(Axis::z), 0.0, 0.0, z));
    };
    EXPECT_NEAR(my(0.2), 1.0, 1e-13);
    for (const double distance_cm : {0.05, 0.1, 0.4}) {
        EXPECT_NEAR(my(0.2 + distance_cm), my(0.2 - distance_cm), 1e-12) << distance_cm;
        EXPECT_LT(my(0.2 + distance_cm), 1.0 - 1e-3) << distance_cm;
    }
}
