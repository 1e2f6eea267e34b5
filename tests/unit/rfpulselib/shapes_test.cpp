#include "rfpulselib/shapes.h"

#include "korlimits.h"
#include "support/constants.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

namespace {

using namespace kor;
using kor_test::PI;
using kor_test::UNTOUCHED;
using Field = std::complex<double>; // xb + i yb, rad/s

struct ShapeSamples {
    explicit ShapeSamples(int samples) : xb(samples, UNTOUCHED), yb(samples, UNTOUCHED) {}
    std::vector<double> xb, yb;
    Field operator[](int j) const { return {xb[j], yb[j]}; }
};

/// The last bits differ by the order of the factors: a few units in the last place of the largest sample.
void expect_sample(Field got, Field expected, double scale) {
    EXPECT_NEAR(got.real(), expected.real(), 1e-13 * scale);
    EXPECT_NEAR(got.imag(), expected.imag(), 1e-13 * scale);
}

} // namespace

TEST(ClampAp, KeepsWhatIsInRange) {
    for (int samples : {0, 1, 512, KOR_MAX_RF_POINTS}) {
        int ap = samples;
        testing::internal::CaptureStderr();
        clamp_ap(&ap);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(ap, samples);
    }
}

TEST(ClampAp, WarnsAboveTheLimit) {
    int ap = 9000;
    testing::internal::CaptureStderr();
    clamp_ap(&ap);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: ap=9000 exceeds KOR_MAX_RF_POINTS=8192; clamping.\n");
    EXPECT_EQ(ap, 8192);
}

TEST(ClampAp, TurnsNegativeIntoZeroSilently) {
    int ap = -3;
    testing::internal::CaptureStderr();
    clamp_ap(&ap);
    clamp_ap(nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(ap, 0);
}

TEST(HardPulse, TurnsNinetyDegreesInTenMicroseconds) {
    const double phase = -PI / 2, amp = 1;
    int ap = 7;
    ShapeSamples w(2);
    hardpulseproc(&ap, &phase, &amp, w.xb.data(), w.yb.data());
    EXPECT_EQ(ap, 1);
    EXPECT_NEAR(std::abs(w[0]) * 1e-5, PI / 2, 1e-14);
    EXPECT_NEAR(w.yb[0], -50000 * PI, 1e-9);
    EXPECT_EQ(w.xb[1], UNTOUCHED);
    EXPECT_EQ(w.yb[1], UNTOUCHED);
}

TEST(HardPulse, OfAHundredEightyDegreesAboutYHasNoXField) {
    const double phase = PI / 2, amp = 2;
    ShapeSamples w(1);
    hardpulseproc(nullptr, &phase, &amp, w.xb.data(), w.yb.data());
    EXPECT_NEAR(w.xb[0], 0, 1e-10);
    EXPECT_EQ(w.yb[0], 100000 * KOR_PI);
}

TEST(HardPulse, ChangesNothingWhenAnArgumentIsMissing) {
    const double phase = 0, amp = 1;
    int ap = 7;
    ShapeSamples w(1);
    hardpulseproc(&ap, nullptr, &amp, w.xb.data(), w.yb.data());
    hardpulseproc(&ap, &phase, nullptr, w.xb.data(), w.yb.data());
    hardpulseproc(&ap, &phase, &amp, nullptr, w.yb.data());
    hardpulseproc(&ap, &phase, &amp, w.xb.data(), nullptr);
    EXPECT_EQ(ap, 7);
    EXPECT_EQ(w[0], Field(UNTOUCHED, UNTOUCHED));
}

TEST(RectangularPulse, IsConstantAtItsPhase) {
    ShapeSamples w(4);
    rectangular_waveform(3, 60, 100, w.xb.data(), w.yb.data());
    for (int j = 0; j < 3; ++j)
        expect_sample(w[j], std::polar(2 * PI * 100, PI / 3), 2 * PI * 100);
    EXPECT_EQ(w[3], Field(UNTOUCHED, UNTOUCHED));
}

TEST(SincGaussPulse, HasItsCentreSampleAtTwiceQF) {
    const double q = PI / 2, f = 1000, b = 500, ti = 1e-5;
    ShapeSamples w(64);
    sinc_gauss_waveform(64, ti, 0, q, f, b, w.xb.data(), w.yb.data());
    // At t = 1e-9 s the sinc is below its limit by (2 pi f t)^2 / 6 = 7e-12.
    EXPECT_NEAR(w.xb[32], 2 * q * f, 1e-10 * 2 * q * f);
    EXPECT_EQ(w.yb[32], 0);
}

TEST(SincGaussPulse, OfOddLengthHasNoSampleAtTheCentreAndIsShiftedByHalfAStep) {
    const double q = 1, f = 400, b = 300, ti = 2e-5;
    ShapeSamples w(9);
    sinc_gauss_waveform(9, ti, 90, q, f, b, w.xb.data(), w.yb.data());
    for (int j = 0; j < 9; ++j) {
        const double t = (j - 4.5) * ti;
        const double s = q * std::sin(2 * PI * f * t) / (PI * t) * std::exp(-std::pow(b * t, 2));
        expect_sample(w[j], Field(0, s), 2 * q * f);
    }
}

TEST(SincGaussPulse, FlipsByQOnResonance) {
    // Integral of sin(2 pi f t) exp(-b^2 t^2) / (pi t) over all t: erf(pi f / b).
    const double q = PI / 2, f = 1000, b = 800, ti = 2e-6;
    const int ap = 6000; // 12 ms: exp(-(b t)^2) has fallen to 1e-10 at the ends
    ShapeSamples w(ap);
    sinc_gauss_waveform(ap, ti, 0, q, f, b, w.xb.data(), w.yb.data());
    double flip = 0;
    for (double x : w.xb)
        flip += ti * x;
    EXPECT_NEAR(flip, q * std::erf(PI * f / b), 1e-9);
}

TEST(Gauss2dPulse, WithoutTurnsIsAGaussianOfTheReversedTime) {
    const double a = 1.5, A = 2, B = 1.7, ti = 1e-4;
    const int ap = 10;
    const double T = ap * ti;
    ShapeSamples w(ap);
    gauss_2d_waveform(ap, ti, a, A, B, 0, w.xb.data(), w.yb.data());
    for (int j = 0; j < ap; ++j)
        expect_sample(w[j], Field(a * A / T * std::exp(-std::pow(B * (ap - j) / ap, 2)), 0), a * A / T);
}

TEST(Gauss2dPulse, WithTurnsFollowsTheSpeedOnTheSpiral) {
    // |dk/dt| of k = (1 - s) exp(2 pi i n s), s = t/T, is sqrt((2 pi n (1 - s))^2 + 1) / T.
    const double ti = 1e-4, n = 4;
    const int ap = 16;
    const double T = ap * ti;
    ShapeSamples plain(ap), turned(ap);
    gauss_2d_waveform(ap, ti, 1, 1, 2, 0, plain.xb.data(), plain.yb.data());
    gauss_2d_waveform(ap, ti, 1, 1, 2, n, turned.xb.data(), turned.yb.data());
    const auto k = [&](double s) { return (1 - s) * std::polar(1.0, 2 * PI * n * s); };
    for (int j = 0; j < ap; ++j) {
        const double s = static_cast<double>(j) / ap, step = 1e-5;
        const double speed = std::abs(k(s + step) - k(s - step)) / (2 * step);
        // Central differences of step 1e-5: relative error (2 pi n step)^2 / 6 = 1e-8.
        EXPECT_NEAR(turned.xb[j] / plain.xb[j], speed, 1e-6 * speed);
        EXPECT_EQ(turned.yb[j], 0);
    }
    EXPECT_NEAR(plain.xb[0], std::exp(-4.0) / T, 1e-9 / T);
}

TEST(Sinc2dPulse, CentredEqualsOffCentreAtTheOrigin) {
    const int ap = 40;
    ShapeSamples centred(ap), offcentre(ap);
    sinc_2d_waveform(ap, 1e-4, 1.5, 3, 20, 8, 0.7, 0.4, centred.xb.data(), centred.yb.data());
    compute_2d_sinc_offcentre(ap, 1e-4, 1.5, 3, 20, 8, 0.7, 0.4, 0, 0, offcentre.xb.data(),
                              offcentre.yb.data());
    EXPECT_EQ(centred.xb, offcentre.xb);
    for (int j = 0; j < ap; ++j) {
        EXPECT_EQ(centred.yb[j], 0);
        EXPECT_EQ(offcentre.yb[j], 0);
    }
}

TEST(Sinc2dPulse, OffCentreTurnsThePhaseByKTimesTheShift) {
    const int ap = 33;
    const double h = 5e-5, T = ap * h, B = 15, n = 6, x0 = 0.3, y0 = -0.8;
    ShapeSamples centred(ap), shifted(ap);
    sinc_2d_waveform(ap, h, 1, 2, B, n, 1.1, 0.9, centred.xb.data(), centred.yb.data());
    compute_2d_sinc_offcentre(ap, h, 1, 2, B, n, 1.1, 0.9, x0, y0, shifted.xb.data(), shifted.yb.data());
    const double scale = *std::max_element(centred.xb.begin(), centred.xb.end());
    // ky is exactly 0 at t = 0 alone; there it stands at 1e-5.
    expect_sample(shifted[0], centred[0] * std::polar(1.0, B * x0 + 1e-5 * y0), scale);
    for (int i = 1; i < ap; ++i) {
        const double t = i * h;
        const Field k = std::polar(B * (1 - t / T), 2 * PI * n * t / T);
        expect_sample(shifted[i], centred[i] * std::polar(1.0, k.real() * x0 + k.imag() * y0), scale);
    }
}

TEST(Sinc2dPulse, WithoutKSpaceKeepsBothComponentsAtTheirSmallestValue) {
    const int ap = 5;
    const double h = 1e-3, T = ap * h, dx = 1, dy = 2, x0 = 1000, y0 = 3000;
    ShapeSamples w(ap);
    compute_2d_sinc_offcentre(ap, h, 1, 1, 0, 0, dx, dy, x0, y0, w.xb.data(), w.yb.data());
    for (int i = 0; i < ap; ++i) // both sincs differ from 1 by less than 2e-11
        EXPECT_NEAR(std::abs(w[i] - std::polar(1 / T, 1e-5 * (x0 + y0))), 0, 1e-10 / T);
}

TEST(Sinc2dPulse, OfAnAreaWithoutWidthIsTheLimitOfNarrowAreas) {
    const int ap = 40;
    ShapeSamples none(ap), narrow(ap);
    compute_2d_sinc_offcentre(ap, 1e-4, 1.5, 3, 20, 8, 0, 0, 0.3, 0.1, none.xb.data(), none.yb.data());
    compute_2d_sinc_offcentre(ap, 1e-4, 1.5, 3, 20, 8, 1e-9, 1e-9, 0.3, 0.1, narrow.xb.data(),
                              narrow.yb.data());
    const double scale = std::abs(narrow[0]);
    for (int j = 0; j < ap; ++j)
        expect_sample(none[j], narrow[j], scale);
}

TEST(SechTanhPulse, PeaksAtItsCentreAndIsEvenInTime) {
    const int ap = 100;
    const double w0 = 800, b = 600, u = 5, ti = 1e-4;
    ShapeSamples w(ap);
    sech_tanh_180_waveform(ap, ti, 30, w0, b, u, w.xb.data(), w.yb.data());
    expect_sample(w[50], std::polar(2 * PI * w0, PI / 6), 2 * PI * w0);
    for (int j = 1; j < 50; ++j) {
        EXPECT_NEAR(std::abs(w[50 - j] - w[50 + j]), 0, 1e-9 * 2 * PI * w0);
        EXPECT_NEAR(std::abs(w[50 + j]), 2 * PI * w0 / std::cosh(b * j * ti), 1e-9);
    }
}

TEST(SechTanhPulse, SweepsItsFrequencyAsATanh) {
    // The phase 2 pi u ln sech(b t) turns at the rate -2 pi u b tanh(b t).
    const int ap = 4000;
    const double b = 500, u = 4, ti = 2e-6;
    ShapeSamples w(ap);
    sech_tanh_180_waveform(ap, ti, 0, 100, b, u, w.xb.data(), w.yb.data());
    for (int j = 1; j < ap; j += 97) {
        const double t = (j - 0.5 - ap / 2.0) * ti;
        const double rate = std::arg(w[j] * std::conj(w[j - 1])) / ti;
        EXPECT_NEAR(rate, -2 * PI * u * b * std::tanh(b * t), 1e-3 * 2 * PI * u * b);
    }
}

TEST(SechTanhPulse, OfNinetyDegreesIsTheFirstHalfOfTheFullSweep) {
    const int half = 64;
    ShapeSamples full(2 * half), w(half);
    sech_tanh_180_waveform(2 * half, 5e-5, 45, 500, 900, 3, full.xb.data(), full.yb.data());
    sech_tanh_90_waveform(half, 5e-5, 45, 500, 900, 3, w.xb.data(), w.yb.data());
    for (int j = 0; j < half; ++j)
        EXPECT_EQ(w[j], full[j]);
    EXPECT_NEAR(std::abs(w[half - 1]), 2 * PI * 500 / std::cosh(900 * 5e-5), 1e-9); // t = -ti
}

TEST(SechTanhPulse, OfNinetyDegreesEndsWithItsLastSample) {
    double xb[3] = {7.0, 7.0, 7.0};
    double yb[3] = {7.0, 7.0, 7.0};
    sech_tanh_90_waveform(2, 5e-5, 45, 500, 900, 3, xb, yb);
    EXPECT_NE(xb[1], 7.0);
    EXPECT_EQ(xb[2], 7.0);
    EXPECT_EQ(yb[2], 7.0);
}

TEST(SechTanhPulse, OfThreeHundredSixtyDegreesSweepsTwiceAtHalfTheStep) {
    const int m = 50;
    ShapeSamples twice(2 * m), once(m);
    sech_tanh_360_waveform(2 * m, 2e-5, 10, 700, 800, 2, twice.xb.data(), twice.yb.data());
    sech_tanh_180_waveform(m, 1e-5, 10, 700, 800, 2, once.xb.data(), once.yb.data());
    for (int j = 0; j < m; ++j) {
        expect_sample(twice[j], once[j], 2 * PI * 700);
        EXPECT_EQ(twice[m + j], twice[j]);
    }
}

TEST(SechTanhPulse, OfThreeHundredSixtyDegreesLeavesTheLastOfAnOddNumber) {
    ShapeSamples w(7);
    sech_tanh_360_waveform(7, 1e-4, 0, 700, 800, 2, w.xb.data(), w.yb.data());
    EXPECT_EQ(w[6], Field(UNTOUCHED, UNTOUCHED));
    EXPECT_EQ(w[5], w[2]);
    EXPECT_GT(std::abs(w[2]), 0); // c = 3/2: samples 1 and 2 lie half a step on either side of the centre
    EXPECT_NEAR(std::abs(w[1] - w[2]), 0, 1e-9 * 2 * PI * 700);
}

TEST(PulseShapes, LeaveMissingArraysAlone) {
    ShapeSamples w(3);
    double *xb = w.xb.data(), *yb = w.yb.data();
    for (const auto& [x, y] : {std::pair<double*, double*>{nullptr, yb}, {xb, nullptr}}) {
        rectangular_waveform(3, 0, 1, x, y);
        sinc_gauss_waveform(3, 1, 0, 1, 1, 1, x, y);
        gauss_2d_waveform(3, 1, 1, 1, 1, 1, x, y);
        sinc_2d_waveform(3, 1, 1, 1, 1, 1, 1, 1, x, y);
        compute_2d_sinc_offcentre(3, 1, 1, 1, 1, 1, 1, 1, 1, 1, x, y);
        sech_tanh_180_waveform(3, 1, 0, 1, 1, 1, x, y);
        sech_tanh_90_waveform(3, 1, 0, 1, 1, 1, x, y);
        sech_tanh_360_waveform(3, 1, 0, 1, 1, 1, x, y);
    }
    for (int j = 0; j < 3; ++j)
        EXPECT_EQ(w[j], Field(UNTOUCHED, UNTOUCHED));
}
