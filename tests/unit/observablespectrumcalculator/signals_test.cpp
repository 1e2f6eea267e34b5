#include "observablespectrumcalculator/signals.h"

#include "kor/smoke_check_mode.h"
#include "support/constants.h"
#include "support/spin_oracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

namespace kor {
namespace {

using kor_test::Dense;
using kor_test::from_dense;
using kor_test::NOT_A_NUMBER;
using kor_test::POSITIVE_INFINITY;
using kor_test::TWO_PI;

/// A spin system under observation: the matrices that the signal routines take.
struct Observed {
    int n;
    CMatrix &densmat, &Hmat, &Ixtot, &Iytot;
};

Observed observe(const std::vector<int>& two_i, const Dense& rho, const Dense& hamiltonian) {
    static CMatrix densmat, Hmat, Ixtot, Iytot;
    from_dense(rho, densmat);
    from_dense(-hamiltonian, Hmat);
    from_dense(kor_test::total(two_i, 'x'), Ixtot);
    from_dense(kor_test::total(two_i, 'y'), Iytot);
    return {static_cast<int>(rho.rows()), densmat, Hmat, Ixtot, Iytot};
}

struct Signal {
    std::vector<double> re, im;
    explicit Signal(int ap)
        : re(static_cast<std::size_t>(ap), 99.0), im(static_cast<std::size_t>(ap), 99.0) {}
};

Signal direct(const Observed& o, int ap, double acq_time) {
    Signal signal(ap);
    build_direct_observable_signal(o.n, ap, acq_time, o.densmat, o.Hmat, o.Ixtot, o.Iytot, signal.re.data(),
                                   signal.im.data());
    return signal;
}

std::string printed(const Observed& o, int print_diagnostics) {
    Signal signal(1);
    testing::internal::CaptureStdout();
    build_legacy_separate_spectra_signal(o.n, 1, 1.0, o.densmat, o.Hmat, o.Ixtot, o.Iytot, signal.re.data(),
                                         signal.im.data(), print_diagnostics);
    return testing::internal::GetCapturedStdout();
}

TEST(FiniteOrZero, KeepsFiniteValuesOnly) {
    for (const double x : {0.0, -1.5, 1e300, 5e-324})
        EXPECT_EQ(finite_or_zero(x), x);
    for (const double x : {NOT_A_NUMBER, -NOT_A_NUMBER, POSITIVE_INFINITY, -POSITIVE_INFINITY}) {
        EXPECT_EQ(finite_or_zero(x), 0.0);
        EXPECT_FALSE(std::signbit(finite_or_zero(x)));
    }
}

TEST(DirectSignal, OneSpinOffResonanceTurnsAtItsOffset) {
    const double hz = 37.0;
    const Observed o =
        observe({1}, kor_test::single_spin(1, 'x'), TWO_PI * hz * kor_test::single_spin(1, 'z'));
    const int ap = 256;
    const double acq = 0.5;
    const Signal signal = direct(o, ap, acq);
    for (std::size_t k = 0; k < signal.re.size(); ++k) {
        const double t = static_cast<double>(k) * acq / ap;
        EXPECT_NEAR(signal.re[k], 0.5 * std::cos(TWO_PI * hz * t), 1e-12) << k;
        EXPECT_NEAR(signal.im[k], -0.5 * std::sin(TWO_PI * hz * t), 1e-12) << k;
    }
}

TEST(DirectSignal, WeaklyCoupledPairIsTheSumOfItsDoublets) {
    const std::vector<int> two_i = {1, 1};
    const double hz[2] = {120.0, -45.5};
    const double J = 9.25;
    Dense H = TWO_PI * (hz[0] * kor_test::on_spin(two_i, 1, 'z') + hz[1] * kor_test::on_spin(two_i, 2, 'z'));
    H += TWO_PI * J * kor_test::product_of(two_i, "zz");
    const int ap = 512;
    const double acq = 1.3;
    const Signal signal = direct(observe(two_i, kor_test::total(two_i, 'x'), H), ap, acq);
    for (std::size_t k = 0; k < signal.re.size(); ++k) {
        const double t = static_cast<double>(k) * acq / ap;
        const double split = std::cos(KOR_PI * J * t);
        EXPECT_NEAR(signal.re[k], split * (std::cos(TWO_PI * hz[0] * t) + std::cos(TWO_PI * hz[1] * t)),
                    1e-11);
        EXPECT_NEAR(signal.im[k], -split * (std::sin(TWO_PI * hz[0] * t) + std::sin(TWO_PI * hz[1] * t)),
                    1e-11);
    }
}

TEST(DirectSignal, OnePointIsTheStateItself) {
    const Observed o = observe({1}, 0.8 * kor_test::single_spin(1, 'x') - 0.6 * kor_test::single_spin(1, 'y'),
                               1e4 * kor_test::single_spin(1, 'z'));
    const Signal signal = direct(o, 1, 3.0);
    EXPECT_NEAR(signal.re[0], 0.4, 1e-15);
    EXPECT_NEAR(signal.im[0], -0.3, 1e-15);
}

TEST(DirectSignal, LeavesTheDensityMatrixAlone) {
    const Dense rho = kor_test::single_spin(1, 'x');
    const Observed o = observe({1}, rho, 50.0 * kor_test::single_spin(1, 'z'));
    direct(o, 16, 1.0);
    EXPECT_LT(kor_test::distance(o.densmat, rho), 1e-300);
}

TEST(DirectSignal, MagnetisationAlongZGivesNoSignal) {
    const std::vector<int> two_i = {1, 2};
    Dense H = 300.0 * kor_test::on_spin(two_i, 1, 'z') + 40.0 * kor_test::product_of(two_i, "xx");
    H += 40.0 * kor_test::product_of(two_i, "yy");
    const Signal signal = direct(observe(two_i, kor_test::total(two_i, 'z'), H), 64, 0.7);
    for (std::size_t k = 0; k < signal.re.size(); ++k) {
        EXPECT_NEAR(signal.re[k], 0.0, 1e-12);
        EXPECT_NEAR(signal.im[k], 0.0, 1e-12);
    }
}

/// exp(i a t) of a Hermitian matrix, by its eigenvectors.
Dense turn(const Dense& a, double t) {
    const Eigen::SelfAdjointEigenSolver<Dense> eigen(a);
    const Eigen::VectorXcd phases =
        (std::complex<double>(0.0, t) * eigen.eigenvalues().cast<std::complex<double>>()).array().exp();
    return eigen.eigenvectors() * phases.asDiagonal() * eigen.eigenvectors().adjoint();
}

Dense random_hermitian(int n, double scale, std::mt19937& random) {
    std::normal_distribution<double> normal(0.0, scale);
    Dense a(n, n);
    for (Eigen::Index k = 0; k < a.size(); ++k)
        a(k) = {normal(random), normal(random)};
    return 0.5 * (a + a.adjoint());
}

TEST(DirectSignal, RandomStatesAgreeWithDenseEvolution) {
    const unsigned seed = 31337;
    std::mt19937 random(seed);
    for (const std::vector<int>& two_i : {std::vector<int>{1}, {3}, {1, 1}, {1, 2}, {1, 1, 1}}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const Dense fx = kor_test::total(two_i, 'x');
        const Dense fy = kor_test::total(two_i, 'y');
        const int n = static_cast<int>(fx.rows());
        const Dense rho = random_hermitian(n, 1.0, random);
        const Dense H = random_hermitian(n, 50.0, random);
        const int ap = 32;
        const double acq = 0.2;
        const Signal signal = direct(observe(two_i, rho, H), ap, acq);
        for (std::size_t k = 0; k < signal.re.size(); ++k) {
            const Dense u = turn(H, static_cast<double>(k) * acq / ap);
            const Dense now = u * rho * u.adjoint();
            EXPECT_NEAR(signal.re[k], (fx * now).trace().real(), 1e-10);
            EXPECT_NEAR(signal.im[k], (fy * now).trace().real(), 1e-10);
        }
    }
}

TEST(LegacySignal, ListsTheLinesOfOneSpin) {
    const Observed o =
        observe({1}, kor_test::single_spin(1, 'x'), TWO_PI * 10.0 * kor_test::single_spin(1, 'z'));
    KOR_SetSmokeCheckMode(0);
    EXPECT_EQ(printed(o, 1), "\nKOR legacy DoSpectrum component list: Ix absorption channel\n"
                             "  COS components: amplitude * cos(2*pi*frequency_hz*t)\n"
                             "     5.000000000000e-01   10\n"
                             "  SIN components: amplitude * sin(2*pi*frequency_hz*t)\n"
                             "\nKOR legacy DoSpectrum component list: Iy dispersion channel\n"
                             "  COS components: amplitude * cos(2*pi*frequency_hz*t)\n"
                             "  SIN components: amplitude * sin(2*pi*frequency_hz*t)\n"
                             "    -5.000000000000e-01   10\n");
}

TEST(LegacySignal, ListsTheLinesOfAWeaklyCoupledPair) {
    const std::vector<int> two_i = {1, 1};
    const Dense H =
        TWO_PI * (100.0 * kor_test::on_spin(two_i, 1, 'z') + 40.0 * kor_test::on_spin(two_i, 2, 'z') +
                  8.0 * kor_test::product_of(two_i, "zz"));
    KOR_SetSmokeCheckMode(0);
    EXPECT_EQ(printed(observe(two_i, kor_test::total(two_i, 'x'), H), 1),
              "\nKOR legacy DoSpectrum component list: Ix absorption channel\n"
              "  COS components: amplitude * cos(2*pi*frequency_hz*t)\n"
              "     5.000000000000e-01   36\n"
              "     5.000000000000e-01   44\n"
              "     5.000000000000e-01   96\n"
              "     5.000000000000e-01   104\n"
              "  SIN components: amplitude * sin(2*pi*frequency_hz*t)\n"
              "\nKOR legacy DoSpectrum component list: Iy dispersion channel\n"
              "  COS components: amplitude * cos(2*pi*frequency_hz*t)\n"
              "  SIN components: amplitude * sin(2*pi*frequency_hz*t)\n"
              "    -5.000000000000e-01   36\n"
              "    -5.000000000000e-01   44\n"
              "    -5.000000000000e-01   96\n"
              "    -5.000000000000e-01   104\n");
}

TEST(LegacySignal, ListsNoLinesForMagnetisationAlongZ) {
    const Observed o =
        observe({1}, kor_test::single_spin(1, 'z'), TWO_PI * 10.0 * kor_test::single_spin(1, 'z'));
    KOR_SetSmokeCheckMode(0);
    EXPECT_EQ(printed(o, 1), "\nKOR legacy DoSpectrum component list: Ix absorption channel\n"
                             "  COS components: amplitude * cos(2*pi*frequency_hz*t)\n"
                             "  SIN components: amplitude * sin(2*pi*frequency_hz*t)\n"
                             "\nKOR legacy DoSpectrum component list: Iy dispersion channel\n"
                             "  COS components: amplitude * cos(2*pi*frequency_hz*t)\n"
                             "  SIN components: amplitude * sin(2*pi*frequency_hz*t)\n");
}

TEST(LegacySignal, SaysThatSevenSpinsAreNotListed) {
    const std::vector<int> two_i(7, 1);
    const Dense z = kor_test::total(two_i, 'z');
    KOR_SetSmokeCheckMode(0);
    EXPECT_EQ(printed(observe(two_i, z, z), 1),
              "\nKOR legacy DoSpectrum diagnostics skipped for n=128 (>64).\n"
              "Direct density-matrix FID propagation is still used for receiver export.\n");
}

TEST(LegacySignal, IsSilentWithoutTheFlagAndInTheQuietMode) {
    const Observed o = observe({1}, kor_test::single_spin(1, 'x'), kor_test::single_spin(1, 'z'));
    KOR_SetSmokeCheckMode(0);
    EXPECT_EQ(printed(o, 0), "");
    KOR_SetSmokeCheckMode(1);
    EXPECT_EQ(printed(o, 1), "");
}

TEST(LegacySignal, IsTheDirectSignal) {
    const Observed o = observe({1}, kor_test::single_spin(1, 'x'), 70.0 * kor_test::single_spin(1, 'z'));
    KOR_SetSmokeCheckMode(1);
    const Signal expected = direct(o, 8, 0.3);
    Signal signal(8);
    build_legacy_separate_spectra_signal(o.n, 8, 0.3, o.densmat, o.Hmat, o.Ixtot, o.Iytot, signal.re.data(),
                                         signal.im.data(), 1);
    EXPECT_EQ(signal.re, expected.re);
    EXPECT_EQ(signal.im, expected.im);
}

TEST(AdcStartExpectations, ListsTheUnitNormComponentsOfEverySpin) {
    static CMatrix densmat;
    static SpinKet ket;
    SpinIList Ilist = {0, 1, 1};
    MakeKets(ket, Ilist);
    const std::vector<int> two_i = {1, 1};
    from_dense(0.75 * kor_test::on_spin(two_i, 1, 'x') - 0.25 * kor_test::on_spin(two_i, 2, 'y') +
                   5.0 * kor_test::on_spin(two_i, 2, 'z'),
               densmat);
    testing::internal::CaptureStdout();
    print_adc_start_expectations(4, densmat, ket, Ilist);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "\nKOR ADC-start per-spin transverse expectations\n"
                                                      "  columns: spin  <Ix>_re  <Iy>_re\n"
                                                      "   1   7.500000000000e-01   0.000000000000e+00\n"
                                                      "   2   0.000000000000e+00  -2.500000000000e-01\n");
}

TEST(ComplexReceiverSignal, IsTheTraceWithTheRaisingReceiver) {
    const unsigned seed = 99;
    std::mt19937 random(seed);
    KOR_SetSmokeCheckMode(1);
    const std::vector<int> two_i = {1, 1};
    const Dense receiver =
        kor_test::total(two_i, 'x') + std::complex<double>(0.0, 1.0) * kor_test::total(two_i, 'y');
    // Diagonal, so that the eigensolver is exact; the state is any Hermitian matrix.
    Dense H = Dense::Zero(4, 4);
    H.diagonal() << 31.0, -77.0, 140.0, 12.5;
    const Dense rho = random_hermitian(4, 1.0, random);
    const Observed o = observe(two_i, rho, -H);
    const int ap = 17;
    const double acq = 0.4;
    Signal signal(ap);
    build_complex_receiver_signal(o.n, ap, acq, o.densmat, o.Hmat, o.Ixtot, o.Iytot, signal.re.data(),
                                  signal.im.data());
    for (std::size_t k = 0; k < signal.re.size(); ++k) {
        const Dense u = turn(H, static_cast<double>(k) * acq / (ap - 1));
        const std::complex<double> expected = (receiver * u * rho * u.adjoint()).trace();
        EXPECT_NEAR(signal.re[k], expected.real(), 1e-11) << "seed " << seed << " point " << k;
        EXPECT_NEAR(signal.im[k], expected.imag(), 1e-11) << "seed " << seed << " point " << k;
    }
}

std::string printed_receiver(const Observed& o, Signal& signal, int ap) {
    testing::internal::CaptureStdout();
    build_complex_receiver_signal(o.n, ap, 1.0, o.densmat, o.Hmat, o.Ixtot, o.Iytot, signal.re.data(),
                                  signal.im.data());
    return testing::internal::GetCapturedStdout();
}

TEST(ComplexReceiverSignal, ListsTransitionsAndTheirSumsByFrequency) {
    // Two spins a hundredth of a Hz apart: two transitions of each kind merge into one frequency.
    const std::vector<int> two_i = {1, 1};
    const Dense H =
        TWO_PI * (10.0 * kor_test::on_spin(two_i, 1, 'z') + 10.01 * kor_test::on_spin(two_i, 2, 'z'));
    const Dense rho = kor_test::on_spin(two_i, 1, 'x') + 3.0 * kor_test::on_spin(two_i, 2, 'x');
    KOR_SetSmokeCheckMode(0);
    Signal signal(1);
    EXPECT_EQ(printed_receiver(observe(two_i, rho, H), signal, 1),
              "\nKOR receiver transition list (complex FID synthesis)\n"
              "  columns: r c  frequency_hz  amplitude_re  amplitude_im  magnitude  phase_deg\n"
              "   1  2   10   5.000000000000e-01   0.000000000000e+00  5.000000000000e-01  0.000000\n"
              "   1  3   10.01   1.500000000000e+00   0.000000000000e+00  1.500000000000e+00  0.000000\n"
              "   2  4   10.01   1.500000000000e+00   0.000000000000e+00  1.500000000000e+00  0.000000\n"
              "   3  4   10   5.000000000000e-01   0.000000000000e+00  5.000000000000e-01  0.000000\n"
              "KOR receiver transition aggregate by frequency (tol 0.05 Hz)\n"
              "  columns: frequency_hz  amplitude_re  amplitude_im  magnitude  phase_deg\n"
              "   10.0075   4.000000000000e+00   0.000000000000e+00  4.000000000000e+00  0.000000\n");
    EXPECT_NEAR(signal.re[0], 4.0, 1e-14);
    EXPECT_NEAR(signal.im[0], 0.0, 1e-14);
}

TEST(ComplexReceiverSignal, ListsThePhaseOfTheMagnetisationInDegrees) {
    KOR_SetSmokeCheckMode(0);
    const Dense H = TWO_PI * 10.0 * kor_test::single_spin(1, 'z');
    const auto phase = [&](double degrees) { // of the one transition and of its sum
        const double angle = degrees * KOR_PI / 180.0;
        Signal signal(1);
        const std::string text = printed_receiver(observe({1},
                                                          std::cos(angle) * kor_test::single_spin(1, 'x') +
                                                              std::sin(angle) * kor_test::single_spin(1, 'y'),
                                                          H),
                                                  signal, 1);
        const std::size_t line = text.find("\n   1  2   10 ") + 1;
        const std::string listed = text.substr(line, text.find('\n', line) - line);
        return listed.substr(listed.rfind(' ') + 1) + text.substr(text.rfind(' '));
    };
    EXPECT_EQ(phase(60.0), "60.000000 60.000000\n");
    EXPECT_EQ(phase(-135.0), "-135.000000 -135.000000\n");
}

TEST(ComplexReceiverSignal, LeavesFaintTransitionsOutOfItsList) {
    KOR_SetSmokeCheckMode(0);
    Signal signal(1);
    const Dense H = TWO_PI * 10.0 * kor_test::single_spin(1, 'z');
    const auto lines = [&](double size) { // its one transition has half this amplitude
        const std::string text =
            printed_receiver(observe({1}, size * kor_test::single_spin(1, 'x'), H), signal, 1);
        return std::count(text.begin(), text.end(), '\n');
    };
    EXPECT_EQ(lines(1.9e-10), 5);
    EXPECT_EQ(signal.re[0], 0.95e-10) << "only the list leaves it out";
    EXPECT_EQ(lines(2.1e-10), 7);
}

TEST(ComplexReceiverSignal, NonFiniteStatesGiveZeroSamples) {
    const Observed o =
        observe({1}, NOT_A_NUMBER * kor_test::single_spin(1, 'x'), 10.0 * kor_test::single_spin(1, 'z'));
    KOR_SetSmokeCheckMode(1);
    Signal signal(3);
    printed_receiver(o, signal, 3);
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_EQ(signal.re[k], 0.0);
        EXPECT_EQ(signal.im[k], 0.0);
    }
}

} // namespace
} // namespace kor
