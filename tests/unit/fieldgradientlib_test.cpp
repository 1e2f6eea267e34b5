#include "fieldgradientlib.h"
#include "support/constants.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <vector>

namespace kor {
namespace {

using kor_test::NOT_A_NUMBER;
using kor_test::PI;

TEST(ConstantGradient, IsTwoPiTimesTheStrength) {
    std::vector<double> out(4, -1);
    EXPECT_EQ(gradproc1_compute(3, 1e-5, out.data(), 2000.0), FIELDGRAD_OK);
    EXPECT_EQ(out, (std::vector<double>{4000 * PI, 4000 * PI, 4000 * PI, -1}));
}

TEST(ConstantGradient, DoesNotLookAtTheTimeStep) {
    for (double h : {0.0, -1.0, NOT_A_NUMBER}) {
        double out = 0;
        EXPECT_EQ(gradproc1_compute(1, h, &out, 0.5), FIELDGRAD_OK);
        EXPECT_DOUBLE_EQ(out, PI);
        EXPECT_EQ(CalcGrad_compute(1, h, &out, 1, 0, 0, 1.5), FIELDGRAD_OK);
        EXPECT_DOUBLE_EQ(out, 3 * PI);
    }
}

TEST(SpiralGradient, FollowsTheDerivativeOfTheSpiral) {
    // k(t) = A (1 - t/T) cos(2 pi n t/T) and A (1 - t/T) sin(2 pi n t/T) are the two coordinates of a
    // spiral; the waveforms are their time derivatives.
    constexpr int N = 40;
    const double h = 2.5e-4, A = 3.0, n = 4.5, T = N * h;
    std::vector<double> cosine(N), sine(N);
    EXPECT_EQ(gradproc2_compute(N, h, cosine.data(), A, n), FIELDGRAD_OK);
    EXPECT_EQ(gradproc3_compute(N, h, sine.data(), A, n), FIELDGRAD_OK);
    const auto kx = [&](double t) { return A * (1 - t / T) * std::cos(2 * PI * n * t / T); };
    const auto ky = [&](double t) { return A * (1 - t / T) * std::sin(2 * PI * n * t / T); };
    const double step = 1e-7;
    for (int k = 0; k < N; ++k) {
        const double t = k * h;
        const double scale = A * 2 * PI * n / T;
        EXPECT_NEAR(cosine[static_cast<std::size_t>(k)], (kx(t + step) - kx(t - step)) / (2 * step),
                    1e-6 * scale);
        EXPECT_NEAR(sine[static_cast<std::size_t>(k)], (ky(t + step) - ky(t - step)) / (2 * step),
                    1e-6 * scale);
    }
}

TEST(SpiralGradient, WithoutTurnsIsConstantOrZero) {
    std::vector<double> out(5);
    EXPECT_EQ(gradproc2_compute(5, 0.1, out.data(), 3.0, 0.0), FIELDGRAD_OK);
    for (double value : out) {
        EXPECT_DOUBLE_EQ(value, -3.0 / 0.5);
    }
    EXPECT_EQ(gradproc3_compute(5, 0.1, out.data(), 3.0, 0.0), FIELDGRAD_OK);
    for (double value : out) {
        EXPECT_EQ(value, 0.0);
    }
}

TEST(SpiralGradient, FirstSamplesAreTheClosedForms) {
    std::vector<double> out(4);
    gradproc2_compute(4, 0.25, out.data(), 2.0, 1.0);
    EXPECT_DOUBLE_EQ(out[0], -2.0);
    EXPECT_NEAR(out[1], -2.0 * 2 * PI * 0.75, 1e-13);
    EXPECT_NEAR(out[2], 2.0, 1e-13);
    gradproc3_compute(4, 0.25, out.data(), 2.0, 1.0);
    EXPECT_DOUBLE_EQ(out[0], 4 * PI);
    EXPECT_NEAR(out[1], -2.0, 1e-13);
    EXPECT_NEAR(out[2], -2 * PI, 1e-13);
}

TEST(GradientStatus, SpiralsTellMissingOutputFromBadNumbers) {
    double out = 5;
    for (auto spiral : {gradproc2_compute, gradproc3_compute}) {
        EXPECT_EQ(spiral(1, 1.0, nullptr, 1, 1), FIELDGRAD_ERR_NULLPTR);
        EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_NULLPTR);
        EXPECT_EQ(spiral(0, 0.0, nullptr, 1, 1), FIELDGRAD_ERR_NULLPTR);
        EXPECT_EQ(spiral(0, 1.0, &out, 1, 1), FIELDGRAD_ERR_BADARG);
        EXPECT_EQ(spiral(1, 0.0, &out, 1, 1), FIELDGRAD_ERR_BADARG);
        EXPECT_EQ(spiral(1, -1.0, &out, 1, 1), FIELDGRAD_ERR_BADARG);
        EXPECT_EQ(spiral(1, NOT_A_NUMBER, &out, 1, 1), FIELDGRAD_ERR_BADARG);
        EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_BADARG);
        EXPECT_EQ(out, 5.0);
        EXPECT_EQ(spiral(1, 1.0, &out, 1, 0), FIELDGRAD_OK);
        EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_OK);
        out = 5;
    }
}

TEST(GradientStatus, ConstantTellsMissingOutputFromNoSamples) {
    double out = 5;
    EXPECT_EQ(gradproc1_compute(0, 1.0, nullptr, 1), FIELDGRAD_ERR_NULLPTR);
    EXPECT_EQ(gradproc1_compute(0, 1.0, &out, 1), FIELDGRAD_ERR_BADLEN);
    EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_BADLEN);
    EXPECT_EQ(out, 5.0);
}

TEST(GradientStatus, ChoiceChecksOutputAndLengthBeforeTheType) {
    double out = 5;
    for (int type : {-1, 0, 1, 2, 3, 4}) {
        EXPECT_EQ(CalcGrad_compute(0, 0.0, nullptr, type, 1, 1, 1), FIELDGRAD_ERR_NULLPTR);
        EXPECT_EQ(CalcGrad_compute(0, 0.0, &out, type, 1, 1, 1), FIELDGRAD_ERR_BADLEN);
        EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_BADLEN);
    }
    for (int type : {-1, 0, 4, 2147483647}) {
        EXPECT_EQ(CalcGrad_compute(1, 1.0, &out, type, 1, 1, 1), FIELDGRAD_ERR_BADARG);
        EXPECT_EQ(fieldgrad_last_status, FIELDGRAD_ERR_BADARG);
    }
    EXPECT_EQ(CalcGrad_compute(1, 0.0, &out, 2, 1, 1, 1), FIELDGRAD_ERR_BADARG);
    EXPECT_EQ(CalcGrad_compute(1, 0.0, &out, 3, 1, 1, 1), FIELDGRAD_ERR_BADARG);
    EXPECT_EQ(out, 5.0);
}

TEST(GradientStatus, ChoiceGivesTheSameSamplesAsEachWaveform) {
    std::vector<double> chosen(6), direct(6);
    EXPECT_EQ(CalcGrad_compute(6, 0.01, chosen.data(), 1, 9, 9, 2.5), FIELDGRAD_OK);
    gradproc1_compute(6, 0.01, direct.data(), 2.5);
    EXPECT_EQ(chosen, direct);
    EXPECT_EQ(CalcGrad_compute(6, 0.01, chosen.data(), 2, 1.5, 3, 9), FIELDGRAD_OK);
    gradproc2_compute(6, 0.01, direct.data(), 1.5, 3);
    EXPECT_EQ(chosen, direct);
    EXPECT_EQ(CalcGrad_compute(6, 0.01, chosen.data(), 3, 1.5, 3, 9), FIELDGRAD_OK);
    gradproc3_compute(6, 0.01, direct.data(), 1.5, 3);
    EXPECT_EQ(chosen, direct);
}

TEST(GradientInputs, AreValidWithSamplesStepAndOutput) {
    double out = 0;
    EXPECT_TRUE(fieldgrad_valid_inputs(1, 1e-300, &out));
    EXPECT_FALSE(fieldgrad_valid_inputs(0, 1.0, &out));
    EXPECT_FALSE(fieldgrad_valid_inputs(1, 0.0, &out));
    EXPECT_FALSE(fieldgrad_valid_inputs(1, -1.0, &out));
    EXPECT_FALSE(fieldgrad_valid_inputs(1, NOT_A_NUMBER, &out));
    EXPECT_FALSE(fieldgrad_valid_inputs(1, 1.0, nullptr));
}

} // namespace
} // namespace kor
