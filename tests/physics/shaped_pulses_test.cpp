// Shaped pulses with known solutions of the Bloch equations, and small flip angles, where the profile is the
// Fourier transform of the pulse.
#include "physics/magnetisation.h"
#include "support/constants.h"
#include "support/laboratory.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace kor_test;

namespace {

/// A spin 1/2 from Iz through a waveform of any field and offset; its magnetisation.
class ShapedPulse {
public:
    ShapedPulse(int count, double dt) : count_(count), dt_(dt), xb_(size()), yb_(size()), gz_(size()) {}

    /// bx, by and the sweep's offset of every sample from its middle, t from -T/2 to T/2, rad/s.
    template <typename Shape> void fill(const Shape& shape) {
        for (int k = 0; k < count_; ++k) {
            const Vector field = shape((k + 0.5 - 0.5 * count_) * dt_);
            const auto at = static_cast<std::size_t>(k);
            xb_[at] = field.x();
            yb_[at] = field.y();
            gz_[at] = field.z();
        }
    }
    std::vector<double>& xb() { return xb_; }
    std::vector<double>& yb() { return yb_; }

    /// At z = 1 cm, so that the gradient is the sweep.
    Vector magnetisation(double offset) {
        const std::vector<double> none(size(), 0.0);
        const MarkedMatrix H0(Dense::Zero(2, 2));
        const MarkedMatrix Fx(lab_.total(Axis::x)), Fy(lab_.total(Axis::y)), Fz(lab_.total(Axis::z));
        const kor::CMatrix &h0 = H0, &fx = Fx, &fy = Fy, &fz = Fz;
        kor::EngineOpenSector(
            {{2, &h0, &fz, &fx, &fy},
             {count_, dt_, xb_.data(), yb_.data(), none.data(), none.data(), gz_.data(), offset},
             {1, 1, 1, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0}});
        MarkedMatrix r, rho(lab_.total(Axis::z));
        kor::EngineSectorPropagator(1, 1, 1, r);
        kor::EngineRotate(2, r, rho);
        return kor_test::magnetisation(lab_, rho.dense(2));
    }

private:
    std::size_t size() const { return static_cast<std::size_t>(count_); }

    int count_;
    double dt_;
    std::vector<double> xb_, yb_, gz_;
    Laboratory lab_{{1}};
};

double sech(double x) {
    return 1.0 / std::cosh(x);
}

} // namespace

TEST(HyperbolicSecant, OfConstantPhaseExcitesAsRosenAndZenerFound) {
    // w1 sech(bt): 1 - Mz = 2 sin^2(pi w1 / 2b) sech^2(pi offset / 2b). Rosen & Zener, Phys. Rev. 40 (1932)
    // 502. Samples of dt b = 0.005 follow the shape to (dt b)^2 / 24 or so.
    const double b = 1000.0;
    ShapedPulse pulse(8000, 5e-6);
    for (const double strength : {0.3, 0.5, 1.0, 1.7}) {
        pulse.fill([&](double t) { return Vector(strength * b * sech(b * t), 0.0, 0.0); });
        for (const double offset : {0.0, 300.0, -800.0, 2000.0}) {
            const double expected =
                1.0 - 2.0 * std::pow(std::sin(0.5 * PI * strength) * sech(0.5 * PI * offset / b), 2);
            EXPECT_NEAR(pulse.magnetisation(offset).z(), expected, 1e-5) << strength << ' ' << offset;
        }
    }
}

TEST(HyperbolicSecant, WithATanhSweepInvertsAsSilverJosephAndHoultFound) {
    // w1 sech(bt)^(1 + i mu): Mz = tanh(p+) tanh(p-) + cos(pi sqrt((w1/b)^2 - mu^2)) sech(p+) sech(p-), p+- =
    // pi (offset / b +- mu) / 2. Silver, Joseph & Hoult, Phys. Rev. A 31 (1985) 2753.
    const double b = 1000.0;
    ShapedPulse pulse(8000, 5e-6);
    for (const double mu : {1.0, 3.0}) {
        for (const double strength : {1.1 * mu, 2.0 * mu}) {
            pulse.fill([&](double t) {
                const double s = sech(b * t);
                const double phase = mu * std::log(s);
                return Vector(strength * b * s * std::cos(phase), strength * b * s * std::sin(phase), 0.0);
            });
            for (const double offset : {0.0, 500.0, -2000.0, 5000.0}) {
                const double plus = 0.5 * PI * (offset / b + mu);
                const double minus = 0.5 * PI * (offset / b - mu);
                const double expected =
                    std::tanh(plus) * std::tanh(minus) +
                    std::cos(PI * std::sqrt(strength * strength - mu * mu)) * sech(plus) * sech(minus);
                EXPECT_NEAR(pulse.magnetisation(offset).z(), expected, 5e-5)
                    << mu << ' ' << strength << ' ' << offset;
            }
        }
    }
}

TEST(LinearSweep, CrossesAsLandauAndZenerFound) {
    // Sweep rate R: Mz = 2 exp(-pi w1^2 / 2R) - 1 (the spin follows the field in a slow sweep). A sweep from
    // -L to L differs by oscillations of about 2 w1 / L.
    const double field = 1000.0;
    const double reach = 400.0 * field;
    for (const double speed : {0.5, 1.0, 3.0, 20.0}) { // R / w1^2
        const double rate = speed * field * field;
        const double time = 2.0 * reach / rate;
        ShapedPulse sweep(8000, time / 8000);
        sweep.fill([&](double t) { return Vector(field, 0.0, rate * t); });
        const double expected = 2.0 * std::exp(-0.5 * PI / speed) - 1.0;
        EXPECT_NEAR(sweep.magnetisation(0.0).z(), expected, 0.01) << speed;
    }
}

TEST(AdiabaticPassage, InvertsWithinItsBandAndLeavesTheRest) {
    // The sech-tanh pulse far above its threshold: Mz = tanh tanh, -1 inside |offset| < mu b, +1 outside.
    const double b = 1000.0;
    const double mu = 5.0;
    ShapedPulse pulse(8192, 5e-6);
    pulse.fill([&](double t) {
        const double s = sech(b * t);
        return Vector(3.0 * mu * b * s * std::cos(mu * std::log(s)),
                      3.0 * mu * b * s * std::sin(mu * std::log(s)), 0.0);
    });
    for (const double inside : {0.0, 0.3, -0.6}) {
        EXPECT_NEAR(pulse.magnetisation(inside * mu * b).z(), -1.0, 1e-2) << inside;
    }
    for (const double outside : {1.5, -2.0}) {
        EXPECT_NEAR(pulse.magnetisation(outside * mu * b).z(), 1.0, 1e-2) << outside;
    }
}

namespace {

/// i times the transform of the field, sum of (bx + i by) dt exp(i offset (remaining time)), the small-tip
/// transverse magnetisation in the simulator's sense (d m / dt = i b1 - i offset m with m = Mx + i My).
Complex small_tip(const std::vector<double>& xb, const std::vector<double>& yb, double dt, double offset) {
    Complex sum = 0.0;
    const double half = 0.5 * offset * dt;
    const double within = half == 0.0 ? 1.0 : std::sin(half) / half; // of a constant sample
    for (std::size_t k = 0; k < xb.size(); ++k) {
        const double remaining = (static_cast<double>(xb.size() - k) - 0.5) * dt;
        sum += Complex(xb[k], yb[k]) * dt * within * std::polar(1.0, -offset * remaining);
    }
    return Complex(0.0, 1.0) * sum;
}

} // namespace

TEST(SmallTipProfile, OfARectangularPulseIsASinc) {
    // |Mxy| = a |sin(x) / x|, x = offset T / 2, up to a^3. Hoult, J. Magn. Reson. 35 (1979) 69.
    const double a = 0.01;
    const double time = 2e-3;
    ShapedPulse pulse(64, time / 64);
    pulse.fill([&](double) { return Vector(a / time, 0.0, 0.0); });
    for (const double offset : {0.0, 500.0, 2.0 * PI / time, 4000.0, -9000.0}) {
        const double x = 0.5 * offset * time;
        const Vector m = pulse.magnetisation(offset);
        const double expected = x == 0.0 ? a : a * std::fabs(std::sin(x) / x);
        EXPECT_NEAR(std::hypot(m.x(), m.y()), expected, a * a * a) << offset;
    }
}

TEST(SmallTipProfile, OfAGaussianPulseIsAGaussian) {
    // exp(-t^2 / 2 s^2), area a: |Mxy| = a exp(-(offset s)^2 / 2). Cut at 6 s (1e-8 of the peak).
    const double a = 0.01;
    const double s = 1e-3;
    ShapedPulse pulse(1200, 1e-5);
    pulse.fill([&](double t) {
        return Vector(a / (s * std::sqrt(2.0 * PI)) * std::exp(-0.5 * t * t / (s * s)), 0.0, 0.0);
    });
    for (const double offset : {0.0, 400.0, -1000.0, 2500.0, 4000.0}) {
        const Vector m = pulse.magnetisation(offset);
        EXPECT_NEAR(std::hypot(m.x(), m.y()), a * std::exp(-0.5 * std::pow(offset * s, 2)), a * a * a)
            << offset;
    }
}

TEST(SmallTipProfile, OfTheSincGaussPulseIsItsFourierTransform) {
    // Pauly, Nishimura & Macovski, J. Magn. Reson. 81 (1989) 43, for a phase and an asymmetric shape as well.
    const double a = 0.02;
    ShapedPulse pulse(400, 1e-5);
    for (const double phase : {0.0, 1.0}) {
        pulse.fill([&](double t) {
            const double shape = std::sin(2.0 * PI * 1500.0 * (t - 2e-4)) / (PI * (t - 2e-4)) *
                                 std::exp(-1e6 * (t - 2e-4) * (t - 2e-4));
            return Vector(a * shape * std::cos(phase), a * shape * std::sin(phase), 0.0);
        });
        for (double offset = -2e4; offset <= 2e4; offset += 1250.0) {
            const Vector m = pulse.magnetisation(offset);
            EXPECT_LE(std::abs(Complex(m.x(), m.y()) - small_tip(pulse.xb(), pulse.yb(), 1e-5, offset)),
                      a * a * a)
                << offset;
        }
    }
}

TEST(SmallTipProfile, DiffersFromTheTransformByTheThirdPowerOfTheFlipAngle) {
    // The stated tolerance is the next order itself: eight times smaller for half the angle.
    ShapedPulse pulse(100, 2e-5);
    const auto gap = [&](double a) {
        pulse.fill([&](double t) { return Vector(a * 1000.0 * std::exp(-2e6 * t * t), 0.0, 0.0); });
        const Vector m = pulse.magnetisation(600.0);
        return std::abs(Complex(m.x(), m.y()) - small_tip(pulse.xb(), pulse.yb(), 2e-5, 600.0));
    };
    EXPECT_NEAR(gap(0.1) / gap(0.05), 8.0, 0.2);
}

TEST(SelectivePulse, SelfRefocusesAtHalfItsLengthForSmallAngles) {
    // A symmetric small-tip pulse leaves a phase that is linear in the offset: that of half its length.
    ShapedPulse pulse(200, 1e-5);
    pulse.fill([&](double t) { return Vector(0.02 * 1500.0 * std::exp(-4e6 * t * t), 0.0, 0.0); });
    const Vector centre = pulse.magnetisation(0.0);
    for (const double offset : {-900.0, -200.0, 450.0, 1300.0}) {
        const Vector m = pulse.magnetisation(offset);
        const Complex refocused = Complex(m.x(), m.y()) * std::polar(1.0, offset * 1e-3);
        EXPECT_NEAR(std::arg(refocused), std::arg(Complex(centre.x(), centre.y())), 1e-3) << offset;
    }
}
