#include "observablespectrumcalculator/spectrum_routes.h"

#include "kor/smoke_check_mode.h"
#include "support/console_script.h"
#include "support/constants.h"
#include "support/menu_texts.h"
#include "support/signal_files.h"

#include <gtest/gtest.h>

#include <functional>

namespace kor {
namespace {

using kor_test::ConsoleOutput;
using kor_test::Dense;
using kor_test::from_dense;
using kor_test::on_spin;
using kor_test::play_console;
using kor_test::read_signal_file;
using kor_test::SignalFile;
using kor_test::SPECTRUM_OUTPUT_MENU;
using kor_test::TempTree;
using kor_test::TWO_PI;
using kor_test::write_density_file;

constexpr char separate_banner[] = "----------------------------------------------------------\n"
                                   "-    Calculation spectra of density matrix / matrices    -\n"
                                   "----------------------------------------------------------\n"
                                   "\n";
constexpr char average_banner[] = "**********************************************************\n"
                                  "*** Calculation of average spectrum of density matrices ***\n"
                                  "**********************************************************\n"
                                  "\n";
constexpr char receiver_prompts[] = "How many time-points (power of 2): "
                                    "\nAcquisition time [seconds] : "
                                    "\nOffset frequency [Hz] = ";
constexpr char question_2d[] = "\nDo 2D FFT? (1=no, 2=yes)\nYour choice [1,2] : ";

using Route = void (*)(const int*, int*, CMatrix&, const CMatrix&, const CMatrix&, const CMatrix&,
                       const CMatrix&, const SpinKet&, const SpinIList&);

/// A spin system on the way to its spectrum.
struct Sample {
    std::vector<int> two_i;
    Dense H; // rad/s
    int n = static_cast<int>(H.rows());
    int ap = 0;

    Dense x() const { return kor_test::total(two_i, 'x'); }

    ConsoleOutput play(Route route, const std::string& answers) {
        load();
        KOR_SetSmokeCheckMode(0);
        return play_console(answers,
                            [&] { route(&n, &ap, densmat, Istat, Ixtot, Iytot, Iztot, ket, Ilist); });
    }

    double generate() {
        load();
        return SeparateSpectra_GenerateSignal(&n, &ap, densmat, Istat, Ixtot, Iytot, Iztot, ket, Ilist);
    }

    void load() const {
        std::fill(Ilist, Ilist + KOR_MAX_SPINS + 1, 0);
        std::copy(two_i.begin(), two_i.end(), Ilist + 1);
        MakeKets(ket, Ilist);
        from_dense(H, Istat);
        from_dense(kor_test::total(two_i, 'x'), Ixtot);
        from_dense(kor_test::total(two_i, 'y'), Iytot);
        from_dense(kor_test::total(two_i, 'z'), Iztot);
    }

    static CMatrix densmat, Istat, Ixtot, Iytot, Iztot;
    static SpinKet ket;
    static SpinIList Ilist;
};
CMatrix Sample::densmat, Sample::Istat, Sample::Ixtot, Sample::Iytot, Sample::Iztot;
SpinKet Sample::ket;
SpinIList Sample::Ilist;

Sample one_spin(double hz) {
    return {{1}, TWO_PI * hz * kor_test::single_spin(1, 'z')};
}

constexpr double ax_hz[] = {62.0, -31.0};
constexpr double ax_j = 7.5;

Sample ax() {
    const std::vector<int> two_i = {1, 1};
    return {two_i, TWO_PI * (ax_hz[0] * on_spin(two_i, 1, 'z') + ax_hz[1] * on_spin(two_i, 2, 'z') +
                             ax_j * kor_test::product_of(two_i, "zz"))};
}

/// Receiver signal of an AX pair after a pulse, dephasing left out; a receiver offset adds to both spins.
std::complex<double> ax_signal(double t, double offset_hz = 0.0) {
    const double split = std::cos(KOR_PI * ax_j * t);
    return split * (std::polar(1.0, -TWO_PI * (ax_hz[0] + offset_hz) * t) +
                    std::polar(1.0, -TWO_PI * (ax_hz[1] + offset_hz) * t));
}

constexpr double ab_centre = 40.0, ab_shift = 11.0, ab_j = 9.0;

Sample ab() {
    const std::vector<int> two_i = {1, 1};
    Dense H = (ab_centre + ab_shift / 2) * on_spin(two_i, 1, 'z') +
              (ab_centre - ab_shift / 2) * on_spin(two_i, 2, 'z');
    for (const char* component : {"xx", "yy", "zz"})
        H += ab_j * kor_test::product_of(two_i, component);
    return {two_i, TWO_PI * H};
}

/// Inner lines (C - J) / 2 from the centre, weight (1 + J/C) / 2; outer ones (C + J) / 2, (1 - J/C) / 2.
std::complex<double> ab_signal(double t) {
    const double C = std::hypot(ab_shift, ab_j);
    const double inner = (1.0 + ab_j / C) * std::cos(TWO_PI * t * (C - ab_j) / 2);
    const double outer = (1.0 - ab_j / C) * std::cos(TWO_PI * t * (C + ab_j) / 2);
    return (inner + outer) * std::polar(1.0, -TWO_PI * ab_centre * t);
}

constexpr double ax3_a = 80.0, ax3_x = 25.0, ax3_j = 7.0;

Sample ax3() {
    const std::vector<int> two_i = {1, 1, 1, 1};
    Dense H = ax3_a * on_spin(two_i, 1, 'z');
    for (int s = 2; s <= 4; ++s)
        H += ax3_x * on_spin(two_i, s, 'z') + ax3_j * on_spin(two_i, 1, 'z') * on_spin(two_i, s, 'z');
    return {two_i, TWO_PI * H};
}

/// A quartet and a doublet of three spins; trace(Ix Ix) = 4 for each spin.
std::complex<double> ax3_signal(double t) {
    const double split = std::cos(KOR_PI * ax3_j * t);
    return 4.0 * (split * split * split * std::polar(1.0, -TWO_PI * ax3_a * t) +
                  3.0 * split * std::polar(1.0, -TWO_PI * ax3_x * t));
}

TEST(SeparateSpectra, AxPairGivesItsDoublets) {
    const TempTree folder;
    Sample sample = ax();
    write_density_file(0, 4, 2, {sample.x(), -2.0 * sample.x()});
    const ConsoleOutput printed = sample.play(SeparateSpectra, "128\n0.9\n10\n0\n");
    EXPECT_EQ(printed.out, std::string(separate_banner) + receiver_prompts + SPECTRUM_OUTPUT_MENU);
    EXPECT_EQ(sample.ap, 128);
    const SignalFile file = read_signal_file("korsign.bin");
    for (int k = 0; k < 128; ++k) {
        EXPECT_LT(std::abs(file.at(0, k) - ax_signal(k * 0.9 / 128, 10.0)), 1e-11) << k;
        EXPECT_LT(std::abs(file.at(1, k) + 2.0 * ax_signal(k * 0.9 / 128, 10.0)), 1e-11) << k;
    }
}

TEST(SeparateSpectra, AbPairGivesTheRoofEffectAndAx3QuartetAndDoublet) {
    const TempTree folder;
    const struct {
        Sample sample;
        std::complex<double> (*expected)(double t);
    } systems[] = {{ab(), ab_signal}, {ax3(), ax3_signal}};
    for (const auto& system : systems) {
        Sample sample = system.sample;
        const Dense x = sample.x();
        write_density_file(0, sample.n, 2, {x, -0.5 * x});
        sample.play(SeparateSpectra, "128\n0.9\n0\n0\n");
        const SignalFile file = read_signal_file("korsign.bin");
        ASSERT_EQ(file.samples.size(), 256U);
        for (int k = 0; k < 128; ++k) {
            const std::complex<double> expected = system.expected(k * 0.9 / 128);
            EXPECT_LT(std::abs(file.at(0, k) - expected), 1e-11) << "n " << sample.n << " point " << k;
            EXPECT_LT(std::abs(file.at(1, k) + 0.5 * expected), 1e-11) << "n " << sample.n << " point " << k;
        }
    }
}

TEST(SeparateSpectra, WithoutASignalThereIsNoOutputMenu) {
    const TempTree folder;
    const ConsoleOutput printed = one_spin(5.0).play(SeparateSpectra, "4\n1\n0\n2\n");
    EXPECT_EQ(printed.out, std::string(separate_banner) + receiver_prompts);
    EXPECT_EQ(printed.err, "fopen(dm.bin): No such file or directory\n");
}

TEST(SeparateSpectra, AnUnreadableAnswerEndsTheRoute) {
    const TempTree folder;
    write_density_file(0, 2, 1, {kor_test::single_spin(1, 'x')});
    const std::string prompts[] = {"How many time-points (power of 2): ", "\nAcquisition time [seconds] : ",
                                   "\nOffset frequency [Hz] = "};
    EXPECT_EQ(one_spin(5.0).play(SeparateSpectra, "many\n").out, separate_banner + prompts[0]);
    EXPECT_EQ(one_spin(5.0).play(SeparateSpectra, "8\nlong\n").out,
              separate_banner + prompts[0] + prompts[1]);
    EXPECT_EQ(one_spin(5.0).play(SeparateSpectra, "8\n1.0\n").out,
              std::string(separate_banner) + receiver_prompts);
    EXPECT_FALSE(folder.exists("korsign.bin"));
}

TEST(GenerateSignal, AsksNothingInTheQuietMode) {
    const TempTree folder;
    Sample sample = one_spin(50.0);
    write_density_file(0, 2, 1, {sample.x()});
    KOR_SetSmokeCheckMode(1);
    double acq_time = 0.0;
    sample.ap = 16;
    EXPECT_EQ(play_console("", [&] { acq_time = sample.generate(); }).out, "");
    EXPECT_EQ(acq_time, 0.001);
    const SignalFile file = read_signal_file("korsign.bin");
    ASSERT_EQ(file.samples.size(), 16U);
    EXPECT_LT(std::abs(file.at(0, 15) - std::polar(0.5, -TWO_PI * 50.0 * 0.001 * 15 / 16)), 1e-13);
    sample.ap = -3;
    sample.generate();
    EXPECT_EQ(sample.ap, 1);
    EXPECT_EQ(read_signal_file("korsign.bin").samples.size(), 1U);
}

TEST(GenerateSignal, NeedsItsArguments) {
    const TempTree folder;
    Sample sample = one_spin(1.0);
    sample.load();
    const ConsoleOutput printed = play_console("", [&sample] {
        EXPECT_EQ(SeparateSpectra_GenerateSignal(nullptr, &sample.ap, Sample::densmat, Sample::Istat,
                                                 Sample::Ixtot, Sample::Iytot, Sample::Iztot, Sample::ket,
                                                 Sample::Ilist),
                  0.0);
        EXPECT_EQ(SeparateSpectra_GenerateSignal(&sample.n, nullptr, Sample::densmat, Sample::Istat,
                                                 Sample::Ixtot, Sample::Iytot, Sample::Iztot, Sample::ket,
                                                 Sample::Ilist),
                  0.0);
        AverageSpectrum(nullptr, &sample.ap, Sample::densmat, Sample::Istat, Sample::Ixtot, Sample::Iytot,
                        Sample::Iztot, Sample::ket, Sample::Ilist);
        AverageSpectrum(&sample.n, nullptr, Sample::densmat, Sample::Istat, Sample::Ixtot, Sample::Iytot,
                        Sample::Iztot, Sample::ket, Sample::Ilist);
    });
    EXPECT_EQ(printed.out, "");
}

/// Samples of the average route, whose last point lies at the acquisition time itself.
void expect_average_signal(Sample sample, const std::vector<Dense>& states, double offset_hz,
                           const std::function<std::complex<double>(double)>& expected) {
    write_density_file(0, sample.n, static_cast<int>(states.size()), states);
    const ConsoleOutput printed =
        sample.play(AverageSpectrum, "65\n0.8\n" + std::to_string(offset_hz) + "\n0\n");
    EXPECT_EQ(printed.out, std::string(average_banner) + receiver_prompts + SPECTRUM_OUTPUT_MENU);
    EXPECT_EQ(sample.ap, 65);
    const SignalFile file = read_signal_file("korsign.bin");
    EXPECT_EQ(file.header[0], 1);
    EXPECT_EQ(file.header[1], 65);
    EXPECT_EQ(file.header[2], 1);
    ASSERT_EQ(file.samples.size(), 65U);
    for (int k = 0; k < 65; ++k)
        EXPECT_LT(std::abs(file.at(0, k) - expected(k * 0.8 / 64)), 1e-9) << "point " << k;
}

TEST(AverageSpectrum, AxPairGivesItsDoublets) {
    const TempTree folder;
    const Sample sample = ax();
    expect_average_signal(sample, {sample.x()}, 12.0, [](double t) { return ax_signal(t, 12.0); });
}

TEST(AverageSpectrum, SumsTheMatricesWithoutDividing) {
    const TempTree folder;
    const Sample sample = ax();
    const Dense z = kor_test::total(sample.two_i, 'z');
    expect_average_signal(sample, {sample.x(), 3.0 * sample.x(), z}, 0.0,
                          [](double t) { return 4.0 * ax_signal(t); });
}

TEST(AverageSpectrum, AbPairGivesTheRoofEffect) {
    const TempTree folder;
    const Sample sample = ab();
    expect_average_signal(sample, {sample.x()}, 0.0, ab_signal);
}

TEST(AverageSpectrum, Ax3GroupGivesQuartetAndDoublet) {
    const TempTree folder;
    const Sample sample = ax3();
    expect_average_signal(sample, {sample.x()}, 0.0, ax3_signal);
}

TEST(AverageSpectrum, MagnetisationAlongZGivesNoSignal) {
    const TempTree folder;
    const Sample sample = ax();
    expect_average_signal(sample, {kor_test::total(sample.two_i, 'z')}, 0.0,
                          [](double) { return std::complex<double>(0.0); });
}

TEST(AverageSpectrum, OnePointIsTheStateItself) {
    const TempTree folder;
    Sample sample = one_spin(33.0);
    write_density_file(0, 2, 1, {sample.x()});
    sample.play(AverageSpectrum, "1\n0.5\n0\n0\n");
    const SignalFile file = read_signal_file("korsign.bin");
    ASSERT_EQ(file.samples.size(), 1U);
    EXPECT_LT(std::abs(file.samples[0] - 0.5), 1e-15);
}

TEST(AverageSpectrum, AsksInTheQuietModeToo) {
    const TempTree folder;
    Sample sample = one_spin(1.0);
    write_density_file(0, 2, 1, {sample.x()});
    sample.load();
    KOR_SetSmokeCheckMode(1);
    const ConsoleOutput printed = play_console("2\n1\n0\n0\n", [&sample] {
        AverageSpectrum(&sample.n, &sample.ap, Sample::densmat, Sample::Istat, Sample::Ixtot, Sample::Iytot,
                        Sample::Iztot, Sample::ket, Sample::Ilist);
    });
    EXPECT_EQ(printed.out, std::string(average_banner) + receiver_prompts + SPECTRUM_OUTPUT_MENU);
}

TEST(AverageSpectrum, ReportsWhatIsWrongWithTheMatrices) {
    const TempTree folder;
    Sample sample = one_spin(1.0);
    EXPECT_EQ(sample.play(AverageSpectrum, "").err, "fopen(dm.bin): No such file or directory\n");
    write_density_file(1, 2, 1, {sample.x()});
    EXPECT_EQ(sample.play(AverageSpectrum, "").out,
              std::string(average_banner) + "dm.bin header mismatch: ftype=1 fn=2 expected n=2\n");
    write_density_file(0, 2, 2, {sample.x()});
    EXPECT_EQ(sample.play(AverageSpectrum, "4\n1\n0\n").out,
              std::string(average_banner) + receiver_prompts + ">>> READ BINARY FILE ERROR (dm.bin) <<<\n");
    EXPECT_FALSE(folder.exists("korsign.bin"));
    write_density_file(0, 2, 1, {sample.x()});
    folder.make_folder("korsign.bin");
    const ConsoleOutput printed = sample.play(AverageSpectrum, "4\n1\n0\n");
    EXPECT_EQ(printed.out, std::string(average_banner) + receiver_prompts);
    EXPECT_EQ(printed.err, "fopen(korsign.bin): Is a directory\n");
}

TEST(AverageSpectrum, EndsAtAnUnreadableAnswerOrWithoutPoints) {
    const TempTree folder;
    Sample sample = one_spin(1.0);
    write_density_file(0, 2, 1, {sample.x()});
    EXPECT_EQ(sample.play(AverageSpectrum, "4\nlong\n").out,
              std::string(average_banner) +
                  "How many time-points (power of 2): \nAcquisition time [seconds] : ");
    for (const std::string points : {"-4", "0"})
        EXPECT_EQ(sample.play(AverageSpectrum, points + "\n1\n0\n").out,
                  std::string(average_banner) + receiver_prompts +
                      "The number of time-points must be at least 1 (" + points + " given).\n");
    EXPECT_FALSE(folder.exists("korsign.bin"));
}

TEST(AverageSpectrum, SixSpinsAreTheMostForItsLineLists) {
    const TempTree folder;
    const std::vector<int> two_i(6, 1);
    Dense H = Dense::Zero(64, 64);
    for (int s = 1; s <= 6; ++s)
        H += TWO_PI * 20.0 * s * on_spin(two_i, s, 'z');
    // One excited spin, so that its lines find room; trace(Ix Ix) = 16.
    expect_average_signal({two_i, H}, {on_spin(two_i, 3, 'x')}, 0.0,
                          [](double t) { return std::polar(16.0, -TWO_PI * 60.0 * t); });
}

TEST(AverageSpectrum, SaysThatSevenSpinsHaveNoLineLists) {
    const TempTree folder;
    const std::vector<int> two_i(7, 1);
    Sample sample = {two_i, kor_test::total(two_i, 'z')};
    write_density_file(0, 128, 1, {sample.x()});
    EXPECT_EQ(sample.play(AverageSpectrum, "4\n1\n0\n").out,
              std::string(average_banner) +
                  "The average spectrum needs line lists, which serve dimensions up to 64 (n=128).\n");
}

TEST(Determine2DSpectrum, TransformsOnRequest) {
    const TempTree folder;
    Sample sample = one_spin(16.0);
    std::vector<Dense> rows;
    for (int r = 0; r < 8; ++r)
        rows.push_back(std::cos(TWO_PI * 2.0 * r / 8) * sample.x());
    write_density_file(0, 2, 8, rows);
    const ConsoleOutput printed = sample.play(Determine2DSpectrum, "32\n1\n0\n2\n0\n");
    EXPECT_EQ(printed.out,
              std::string(separate_banner) + receiver_prompts + question_2d + SPECTRUM_OUTPUT_MENU);
    const SignalFile spectrum = read_signal_file("sort.bin");
    EXPECT_EQ(spectrum.header[1], 32);
    EXPECT_EQ(spectrum.header[2], 8);
    // The signal turns backwards, the transform forwards: the line stands at +16 periods, the edge.
    std::size_t peak = 0;
    for (std::size_t k = 0; k < spectrum.samples.size(); ++k)
        if (std::abs(spectrum.samples[k]) > std::abs(spectrum.samples[peak]))
            peak = k;
    EXPECT_EQ(peak % 32, 0U);
    EXPECT_TRUE(peak / 32 == 2 || peak / 32 == 6) << "a cosine lies at both sides of the middle";
}

TEST(Determine2DSpectrum, LeavesTheSignalsAloneOtherwise) {
    const TempTree folder;
    for (const char* answer : {"1\n", "0\n", "7\n"}) {
        Sample sample = one_spin(5.0);
        write_density_file(0, 2, 2, {sample.x(), sample.x()});
        EXPECT_EQ(sample.play(Determine2DSpectrum, std::string("4\n1\n0\n") + answer + "0\n").out,
                  std::string(separate_banner) + receiver_prompts + question_2d + SPECTRUM_OUTPUT_MENU);
        EXPECT_FALSE(folder.exists("sort.bin"));
    }
}

TEST(Determine2DSpectrum, AnUnreadableAnswerLeavesOutTheMenu) {
    const TempTree folder;
    Sample sample = one_spin(5.0);
    write_density_file(0, 2, 2, {sample.x(), sample.x()});
    EXPECT_EQ(sample.play(Determine2DSpectrum, "4\n1\n0\nno\n").out,
              std::string(separate_banner) + receiver_prompts + question_2d);
    EXPECT_TRUE(folder.exists("korsign.bin"));
}

TEST(Determine2DSpectrum, AsksNothingWithoutASignalOrInTheQuietMode) {
    const TempTree folder;
    Sample sample = one_spin(5.0);
    EXPECT_EQ(sample.play(Determine2DSpectrum, "4\n1\n0\n2\n").out,
              std::string(separate_banner) + receiver_prompts);
    write_density_file(0, 2, 1, {sample.x()});
    KOR_SetSmokeCheckMode(1);
    const ConsoleOutput printed = play_console("2\n2\n", [&sample] {
        Determine2DSpectrum(&sample.n, &sample.ap, Sample::densmat, Sample::Istat, Sample::Ixtot,
                            Sample::Iytot, Sample::Iztot, Sample::ket, Sample::Ilist);
    });
    EXPECT_EQ(printed.out, "");
    EXPECT_TRUE(folder.exists("korsign.bin"));
    EXPECT_FALSE(folder.exists("sort.bin"));
}

} // namespace
} // namespace kor
