#include "rfpulseparam.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <vector>

namespace {

using Waveform = std::vector<double>;

Waveform random_samples(int points, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    Waveform waveform(static_cast<std::size_t>(points));
    for (double& value : waveform)
        value = normal(random);
    return waveform;
}

/// Mode m of a waveform whose time zero is sample points / 2: sum of x[j] exp(+2 pi i m (j - points / 2) /
/// points).
std::complex<double> centred_mode(const Waveform& waveform, int m) {
    const int points = static_cast<int>(waveform.size());
    std::complex<double> sum = 0.0;
    for (int j = 0; j < points; ++j) {
        const double angle = 2.0 * std::numbers::pi * m * (j - points / 2) / points;
        sum += waveform[static_cast<std::size_t>(j)] * std::polar(1.0, angle);
    }
    return sum;
}

/// The waveform of the modes |m| <= highest alone.
Waveform low_pass(const Waveform& waveform, int highest_real, int highest_imaginary) {
    const int points = static_cast<int>(waveform.size());
    Waveform out(waveform.size(), 0.0);
    for (int m = -points / 2 + 1; m < points / 2; ++m) {
        std::complex<double> mode = centred_mode(waveform, m);
        mode = {std::abs(m) <= highest_real ? mode.real() : 0.0,
                std::abs(m) <= highest_imaginary ? mode.imag() : 0.0};
        for (int j = 0; j < points; ++j) {
            const double angle = -2.0 * std::numbers::pi * m * (j - points / 2) / points;
            out[static_cast<std::size_t>(j)] += (mode * std::polar(1.0, angle)).real() / points;
        }
    }
    return out;
}

void expect_near(const Waveform& got, const Waveform& expected, double tolerance) {
    for (std::size_t j = 0; j < expected.size(); ++j)
        EXPECT_NEAR(got[j], expected[j], tolerance) << "sample " << j;
}

TEST(RfpulseparamMaxModes, IsTheSmallerOfTheWaveformsAndTheVectorsRoom) {
    EXPECT_EQ(kor::rfpulseparam_max_modes(8, 2), 0);
    EXPECT_EQ(kor::rfpulseparam_max_modes(8, 64), 2);
    EXPECT_EQ(kor::rfpulseparam_max_modes(11, 64), 2);
    EXPECT_EQ(kor::rfpulseparam_max_modes(160, 64), 31);
    EXPECT_EQ(kor::rfpulseparam_max_modes(160, 8192), 40);
    EXPECT_EQ(kor::rfpulseparam_max_modes(3, 64), 0);
}

TEST(RFPulseToParArray, StoresRealPartsOfModesFromZeroAndImaginaryPartsFromOne) {
    const Waveform xb = random_samples(64, 1);
    const Waveform yb = random_samples(64, 2);
    std::vector<double> par(8, 99.0);
    kor::RFPulseToParArray(8, 64, xb.data(), yb.data(), par.data());
    for (int component = 0; component < 2; ++component) {
        const Waveform& waveform = component == 0 ? xb : yb;
        const double* block = par.data() + 4 * component;
        for (int m = 0; m < 2; ++m) {
            EXPECT_NEAR(block[2 * m], centred_mode(waveform, m).real(), 1e-12);
            EXPECT_NEAR(block[2 * m + 1], centred_mode(waveform, m + 1).imag(), 1e-12);
        }
    }
}

TEST(RFPulseToParArray, ConstantWaveformIsItsSumAtZeroFrequencyAlone) {
    const Waveform xb(16, 2.5);
    const Waveform yb(16, -0.5);
    std::vector<double> par(12, 99.0);
    kor::RFPulseToParArray(12, 16, xb.data(), yb.data(), par.data());
    for (std::size_t i = 0; i < par.size(); ++i)
        EXPECT_NEAR(par[i], i == 0 ? 40.0 : i == 6 ? -8.0 : 0.0, 1e-13) << i;
    Waveform x_kept = xb, y_kept = yb, x_low(16, 7.0), y_low(16, 7.0);
    kor::ParArrayToRFPulse(12, 16, par.data(), x_kept.data(), y_kept.data());
    kor::ParArrayToRFPulseLowMode(12, 16, par.data(), x_low.data(), y_low.data());
    expect_near(x_kept, xb, 1e-14);
    expect_near(y_kept, yb, 1e-14);
    expect_near(x_low, xb, 1e-14);
    expect_near(y_low, yb, 1e-14);
}

TEST(ParArrayToRFPulse, RoundTripRestoresTheWaveform) {
    for (const int points : {4, 64, 1024}) {
        const Waveform xb = random_samples(points, 3);
        const Waveform yb = random_samples(points, 4);
        std::vector<double> par(40);
        kor::RFPulseToParArray(40, points, xb.data(), yb.data(), par.data());
        Waveform x = xb, y = yb;
        kor::ParArrayToRFPulse(40, points, par.data(), x.data(), y.data());
        expect_near(x, xb, 1e-13);
        expect_near(y, yb, 1e-13);
    }
}

TEST(ParArrayToRFPulse, ReplacesTheParameterisedModesAndKeepsTheHigherOnes) {
    const Waveform original = random_samples(32, 5);
    Waveform x = original, y(32, 0.0);
    const std::vector<double> par = {3.0, -2.0, 1.5, 0.5, 0.0, 0.0, 0.0, 0.0};
    kor::ParArrayToRFPulse(8, 32, par.data(), x.data(), y.data());
    EXPECT_NEAR(centred_mode(x, 0).real(), 3.0, 1e-13);
    EXPECT_NEAR(centred_mode(x, 1).real(), 1.5, 1e-13);
    EXPECT_NEAR(centred_mode(x, 1).imag(), -2.0, 1e-13);
    EXPECT_NEAR(centred_mode(x, 2).imag(), 0.5, 1e-13);
    EXPECT_NEAR(centred_mode(x, 2).real(), centred_mode(original, 2).real(), 1e-12);
    for (int m = 3; m <= 16; ++m)
        EXPECT_LT(std::abs(centred_mode(x, m) - centred_mode(original, m)), 1e-12) << "mode " << m;
}

TEST(ParArrayToRFPulseLowMode, GivesTheLowPassVersion) {
    const Waveform xb = random_samples(64, 6);
    const Waveform yb = random_samples(64, 7);
    std::vector<double> par(20);
    kor::RFPulseToParArray(20, 64, xb.data(), yb.data(), par.data());
    Waveform x(64, 1.0), y(64, 1.0);
    kor::ParArrayToRFPulseLowMode(20, 64, par.data(), x.data(), y.data());
    expect_near(x, low_pass(xb, 4, 5), 1e-13);
    expect_near(y, low_pass(yb, 4, 5), 1e-13);
}

TEST(RFPulseToParArray, TwoPointsHaveNoModes) {
    const Waveform xb = {1.0, 2.0};
    const Waveform yb = {3.0, 4.0};
    std::vector<double> par(8, 99.0);
    kor::RFPulseToParArray(8, 2, xb.data(), yb.data(), par.data());
    EXPECT_EQ(par, std::vector<double>(8, 0.0));
}

TEST(RFPulseToParArray, OddVectorsPutTheSecondComponentAtHalfTheirLength) {
    const Waveform xb = random_samples(16, 8);
    const Waveform yb = random_samples(16, 9);
    std::vector<double> par(9, 99.0);
    kor::RFPulseToParArray(9, 16, xb.data(), yb.data(), par.data());
    EXPECT_NEAR(par[4], centred_mode(yb, 0).real(), 1e-12);
    EXPECT_NEAR(par[7], centred_mode(yb, 2).imag(), 1e-12);
    EXPECT_EQ(par[8], 0.0);
}

TEST(RFPulseToParArray, InvalidSizesChangeNothing) {
    const Waveform xb = {1.0, 2.0, 3.0, 4.0};
    std::vector<double> par = {5.0, 6.0};
    kor::RFPulseToParArray(0, 4, xb.data(), xb.data(), par.data());
    kor::RFPulseToParArray(2, 1, xb.data(), xb.data(), par.data());
    EXPECT_EQ(par, (std::vector<double>{5.0, 6.0}));
    Waveform x = xb, y = xb;
    kor::ParArrayToRFPulse(0, 4, par.data(), x.data(), y.data());
    kor::ParArrayToRFPulseLowMode(2, 1, par.data(), x.data(), y.data());
    EXPECT_EQ(x, xb);
    EXPECT_EQ(y, xb);
}

TEST(RFPulseToParArray, CountsThatAreNoPowerOfTwoCopySamplesAndParametersUntransformed) {
    const Waveform xb = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0};
    const Waveform yb = {-1.0, -2.0, -3.0, -4.0, -5.0, -6.0};
    std::vector<double> par(8);
    kor::RFPulseToParArray(8, 6, xb.data(), yb.data(), par.data());
    EXPECT_EQ(par, (std::vector<double>{4.0, 0.0, 5.0, 0.0, -4.0, 0.0, -5.0, 0.0}));
    par = {40.0, 7.0, 50.0, 8.0, 0.0, 0.0, 0.0, 0.0};
    Waveform x = xb, y = yb;
    kor::ParArrayToRFPulse(8, 6, par.data(), x.data(), y.data());
    EXPECT_EQ(x, (Waveform{1.0, 2.0, 50.0, 40.0, 50.0, 6.0}));
}

} // namespace
