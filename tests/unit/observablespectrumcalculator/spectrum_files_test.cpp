#include "observablespectrumcalculator/spectrum_files.h"

#include "korlimits.h"
#include "support/signal_files.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace kor {
namespace {

using kor_test::complex_bytes;
using kor_test::header_bytes;
using kor_test::TempTree;

using Complex = std::complex<double>;

void write_signals(int points, int count, const std::vector<Complex>& samples) {
    kor_test::write_file("korsign.bin", header_bytes(1, points, count) + complex_bytes(samples));
}

/// What the writer says on standard output and standard error, behind its result.
std::string said(int (*write)()) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int result = write();
    const std::string err = testing::internal::GetCapturedStderr();
    return std::to_string(result) + "|" + testing::internal::GetCapturedStdout() + "|" + err;
}

std::vector<Complex> random_signal(int N, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    std::vector<Complex> x(static_cast<std::size_t>(N));
    for (Complex& point : x)
        point = {normal(random), normal(random)};
    return x;
}

std::vector<Complex> transform(const std::vector<Complex>& x) {
    std::vector<double> re, im, out_re(x.size()), out_im(x.size());
    for (const Complex& point : x) {
        re.push_back(point.real());
        im.push_back(point.imag());
    }
    EXPECT_EQ(
        direct_transform(static_cast<int>(x.size()), re.data(), im.data(), out_re.data(), out_im.data()), 1);
    std::vector<Complex> out;
    for (std::size_t m = 0; m < x.size(); ++m)
        out.push_back({out_re[m], out_im[m]});
    return out;
}

/// One bin as the definition says it, in extended precision.
Complex bin(const std::vector<Complex>& x, std::size_t m) {
    std::complex<long double> sum = 0.0L;
    for (std::size_t k = 0; k < x.size(); ++k)
        sum += std::complex<long double>(x[k]) *
               std::polar(1.0L, -2.0L * std::acos(-1.0L) * static_cast<long double>(m * k % x.size()) /
                                    static_cast<long double>(x.size()));
    return Complex(sum);
}

double largest_point(const std::vector<Complex>& x) {
    double value = 0.0;
    for (const Complex& point : x)
        value = std::max(value, std::abs(point));
    return value;
}

TEST(DirectTransform, AgreesWithTheSumForAnyLength) {
    for (const int N : {1, 2, 3, 5, 8, 12, 37, 100, 257, 1000}) {
        const std::vector<Complex> x = random_signal(N, 11);
        const std::vector<Complex> spectrum = transform(x);
        for (std::size_t m = 0; m < x.size(); ++m)
            EXPECT_LT(std::abs(spectrum[m] - bin(x, m)), 1e-11 * largest_point(spectrum))
                << N << " bin " << m;
    }
}

TEST(DirectTransform, AgreesWithTheSumForALongSignal) {
    const std::vector<Complex> x = random_signal(8192, 12);
    const std::vector<Complex> spectrum = transform(x);
    for (const std::size_t m : {0U, 1U, 5U, 1024U, 2047U, 4095U, 4096U, 6144U, 8191U})
        EXPECT_LT(std::abs(spectrum[m] - bin(x, m)), 1e-11 * largest_point(spectrum)) << "bin " << m;
}

TEST(DirectTransform, PutsAConstantIntoTheFirstBin) {
    for (const int N : {2, 7, 64, 1000}) {
        const std::vector<Complex> spectrum =
            transform(std::vector<Complex>(static_cast<std::size_t>(N), {1.5, -0.5}));
        EXPECT_EQ(spectrum[0], Complex(1.5 * N, -0.5 * N));
        for (std::size_t m = 1; m < spectrum.size(); ++m)
            EXPECT_LT(std::abs(spectrum[m]), 1e-12 * N) << N << " bin " << m;
    }
}

TEST(DirectTransform, TurnsThePositiveFrequencyIntoItsBin) {
    std::vector<Complex> x;
    for (int k = 0; k < 48; ++k)
        x.push_back(std::polar(1.0, 2.0 * KOR_PI * 7.0 * k / 48));
    const std::vector<Complex> spectrum = transform(x);
    for (std::size_t m = 0; m < 48; ++m)
        EXPECT_NEAR(std::abs(spectrum[m]), m == 7 ? 48.0 : 0.0, 1e-12);
}

int write_csv_files() {
    return write_spectrum_csv_files("a_td.csv", "a_fd.csv", 3.0);
}

TEST(SpectrumCsv, FourPointsOfOneSignal) {
    const TempTree folder;
    write_signals(4, 1, {{1.0, 2.0}, {3.0, -1.0}, 0.0, {-2.0, 0.5}});
    EXPECT_EQ(said(write_csv_files), "1||");
    EXPECT_EQ(folder.read("a_td.csv"), "t_s,f2_index,re,im,mag\n"
                                       "0,0,1,2,2.2360679774997898\n"
                                       "1,0,3,-1,3.1622776601683795\n"
                                       "2,0,0,0,0\n"
                                       "3,0,-2,0.5,2.0615528128088303\n");
    EXPECT_EQ(folder.read("a_fd.csv"), "f1_hz,f2_hz,re,im,re_ph,im_ph,re_ph1,im_ph1,mag\n"
                                       "-0.5,0,0,2.5,0,2.5,0,2.5,2.5\n"
                                       "-0.25,0,2.5,7,2.5,7,2.5,7,7.433034373659253\n"
                                       "0,0,2,1.5,2,1.5,2,1.5,2.5\n"
                                       "0.25,0,-0.5,-3,-0.5,-3,-0.5,-3,3.0413812651491097\n");
}

TEST(SpectrumCsv, SeveralSignalsAreNumbered) {
    const TempTree folder;
    write_signals(2, 2, {1.0, 3.0, {0.0, 1.0}, {0.0, -1.0}});
    EXPECT_EQ(said(write_csv_files), "1||");
    EXPECT_EQ(folder.read("a_td.csv"), "t_s,f2_index,re,im,mag\n"
                                       "0,0,1,0,1\n"
                                       "3,0,3,0,3\n"
                                       "0,1,0,1,1\n"
                                       "3,1,0,-1,1\n");
    EXPECT_EQ(folder.read("a_fd.csv"), "f1_hz,f2_hz,re,im,re_ph,im_ph,re_ph1,im_ph1,mag\n"
                                       "-0.16666666666666666,0,-2,0,-2,0,-2,0,2\n"
                                       "0,0,4,0,4,0,4,0,4\n"
                                       "-0.16666666666666666,1,0,2,0,2,0,2,2\n"
                                       "0,1,0,0,0,0,0,0,0\n");
}

TEST(SpectrumCsv, AnOddLengthStartsAtTheBinBehindItsHalf) {
    const TempTree folder;
    write_signals(3, 1, {2.0, 2.0, 2.0});
    EXPECT_EQ(said(write_csv_files), "1||");
    const std::string table = folder.read("a_fd.csv"); // bins 1, 2, 0
    EXPECT_NE(table.find("\n-0.22222222222222221,0,"), std::string::npos) << table;
    EXPECT_NE(table.find("\n0,0,"), std::string::npos) << table;
    EXPECT_NE(table.find("\n0.22222222222222221,0,6,0,6,0,6,0,6\n"), std::string::npos) << table;
}

TEST(SpectrumCsv, OnePointHasNeitherTimeNorFrequencyStep) {
    const TempTree folder;
    write_signals(1, 2, {{3.0, 4.0}, -1.0});
    EXPECT_EQ(said(write_csv_files), "1||");
    EXPECT_EQ(folder.read("a_td.csv"), "t_s,f2_index,re,im,mag\n0,0,3,4,5\n0,1,-1,0,1\n");
    EXPECT_EQ(folder.read("a_fd.csv"), "f1_hz,f2_hz,re,im,re_ph,im_ph,re_ph1,im_ph1,mag\n"
                                       "0,0,3,4,3,4,3,4,5\n"
                                       "0,1,-1,0,-1,0,-1,0,1\n");
}

TEST(SpectrumCsv, AShortDwellTimeSpreadsTheFrequencies) {
    const TempTree folder;
    write_signals(2, 1, {1.0, 3.0});
    EXPECT_EQ(said([] { return write_spectrum_csv_files("a_td.csv", "a_fd.csv", 0.0009765625); }), "1||");
    EXPECT_EQ(folder.read("a_td.csv"), "t_s,f2_index,re,im,mag\n0,0,1,0,1\n0.0009765625,0,3,0,3\n");
    EXPECT_EQ(folder.read("a_fd.csv"), "f1_hz,f2_hz,re,im,re_ph,im_ph,re_ph1,im_ph1,mag\n"
                                       "-512,0,-2,0,-2,0,-2,0,2\n"
                                       "0,0,4,0,4,0,4,0,4\n");
}

TEST(SpectrumCsv, WithoutAnAcquisitionTimeAllFrequenciesAreZero) {
    const TempTree folder;
    write_signals(2, 1, {1.0, 3.0});
    EXPECT_EQ(said([] { return write_spectrum_csv_files("a_td.csv", "a_fd.csv", 0.0); }), "1||");
    EXPECT_EQ(folder.read("a_td.csv"), "t_s,f2_index,re,im,mag\n0,0,1,0,1\n0,0,3,0,3\n");
    EXPECT_EQ(folder.read("a_fd.csv"), "f1_hz,f2_hz,re,im,re_ph,im_ph,re_ph1,im_ph1,mag\n"
                                       "-0,0,-2,0,-2,0,-2,0,2\n"
                                       "0,0,4,0,4,0,4,0,4\n");
}

TEST(SpectrumCsv, NeedsASignalFile) {
    const TempTree folder;
    EXPECT_EQ(said(write_csv_files), "0||fopen(korsign.bin): No such file or directory\n");
    EXPECT_TRUE(folder.names().empty());
}

TEST(SpectrumCsv, NeedsPointsAndSignals) {
    const TempTree folder;
    for (const auto& [points, count] : {std::pair{0, 1}, {-2, 1}, {4, 0}, {4, -1}}) {
        write_signals(points, count, {1.0, 2.0, 3.0, 4.0});
        EXPECT_EQ(said(write_csv_files), "0||");
    }
    EXPECT_EQ(folder.names(), std::vector<std::string>{"korsign.bin"});
}

TEST(SpectrumCsv, AShortSignalFileIsReported) {
    const TempTree folder;
    write_signals(4, 2, {1.0, 2.0, 3.0, 4.0, 5.0});
    EXPECT_EQ(said(write_csv_files), "0|>>> READ BINARY FILE ERROR (korsign.bin) <<<\n|");
}

TEST(SpectrumCsv, SaysWhenAHeaderAsksForMoreMemoryThanThereIs) {
    const TempTree folder;
    const int huge = std::numeric_limits<int>::max();
    write_signals(huge, huge, {1.0});
    EXPECT_EQ(said(write_csv_files), "0||calloc: Cannot allocate memory\n");
}

TEST(SpectrumCsv, SaysWhichTableCannotBeMade) {
    const TempTree folder;
    write_signals(1, 1, {1.0});
    EXPECT_EQ(said([] { return write_spectrum_csv_files("no/a_td.csv", "a_fd.csv", 1.0); }),
              "0||fopen(td.csv): No such file or directory\n");
    EXPECT_FALSE(folder.exists("a_fd.csv"));
    EXPECT_EQ(said([] { return write_spectrum_csv_files("a_td.csv", "no/a_fd.csv", 1.0); }),
              "0||fopen(fd.csv): No such file or directory\n");
    EXPECT_EQ(folder.read("a_td.csv"), "");
}

int write_pv_wave() {
    return write_pv_wave_file("wave");
}

/// The 1024 bytes in front of the signals.
std::string pv_wave_header(int points, int count) {
    std::vector<std::int32_t> words(256, 0);
    words[0] = 3;
    words[3] = 2;
    words[4] = points;
    words[5] = count;
    words[8] = 1;
    words[14] = 2;
    return kor_test::bytes_of(words);
}

TEST(PvWaveFile, IsAHeaderOf1024BytesAndTheSignals) {
    const TempTree folder;
    const std::vector<Complex> samples = {{1.0, 2.0}, {3.0, -1.0}, 0.0, {-2.0, 0.5}, 7.0, {0.0, 1e-300}};
    write_signals(3, 2, samples);
    EXPECT_EQ(said(write_pv_wave), "1||");
    EXPECT_EQ(folder.read("wave").size(), 1024U + 96U);
    EXPECT_EQ(folder.read("wave"), pv_wave_header(3, 2) + complex_bytes(samples));
}

TEST(PvWaveFile, CopiesNoMoreThanTheHeaderSays) {
    const TempTree folder;
    write_signals(1, 1, {1.0, 2.0, 3.0});
    EXPECT_EQ(said(write_pv_wave), "1||");
    EXPECT_EQ(folder.read("wave"), pv_wave_header(1, 1) + complex_bytes({1.0}));
}

TEST(PvWaveFile, WithoutPointsOrSignalsIsTheHeaderAlone) {
    const TempTree folder;
    for (const auto& [points, count] : {std::pair{0, 1}, {-2, 1}, {2, 0}, {2, -1}, {-1, -1}}) {
        write_signals(points, count, {1.0, 2.0});
        EXPECT_EQ(said(write_pv_wave), "1||");
        EXPECT_EQ(folder.read("wave"), pv_wave_header(points, count)) << points << " " << count;
    }
}

TEST(PvWaveFile, DoesNotReplaceTheSignalsItReads) {
    const TempTree folder;
    write_signals(1, 1, {1.0});
    const std::string signals = folder.read("korsign.bin");
    EXPECT_EQ(said([] { return write_pv_wave_file("./korsign.bin"); }),
              "0||./korsign.bin: the output file is the signal file that is read\n");
    EXPECT_EQ(folder.read("korsign.bin"), signals);
}

TEST(PvWaveFile, StopsQuietlyAtAShortFile) {
    const TempTree folder;
    write_signals(1000000, 1000, {1.0, 2.0});
    EXPECT_EQ(said(write_pv_wave), "1||");
    EXPECT_EQ(folder.read("wave"), pv_wave_header(1000000, 1000) + complex_bytes({1.0, 2.0}));
}

TEST(PvWaveFile, NamesWhatCannotBeOpened) {
    const TempTree folder;
    EXPECT_EQ(said(write_pv_wave), "0||fopen(korsign.bin): No such file or directory\n");
    EXPECT_TRUE(folder.names().empty());
    write_signals(1, 1, {1.0});
    EXPECT_EQ(said([] { return write_pv_wave_file("no/wave"); }),
              "0||fopen(output): No such file or directory\n");
}

TEST(GnuplotSpectrumScript, PlotsRealPartAndMagnitudeRightToLeft) {
    const TempTree folder;
    EXPECT_EQ(WriteGnuplotSpectrumScript("a.gp", "a_fd.csv", "Ethanol"), 1);
    EXPECT_EQ(folder.read("a.gp"), "set terminal qt\n"
                                   "set datafile separator \",\"\n"
                                   "set key right top\n"
                                   "set grid\n"
                                   "set xlabel \"Frequency (Hz)\"\n"
                                   "set ylabel \"Intensity\"\n"
                                   "set xrange [*:*] reverse\n"
                                   "set title \"Ethanol\"\n"
                                   "plot \"a_fd.csv\" using 1:3 with lines title \"re\", \\\n"
                                   "     \"a_fd.csv\" using 1:9 with lines title \"mag\"\n"
                                   "pause mouse close\n");
}

TEST(GnuplotSpectrumScript, HasATitleWithoutOne) {
    const TempTree folder;
    EXPECT_EQ(WriteGnuplotSpectrumScript("a.gp", "a_fd.csv", nullptr), 1);
    EXPECT_NE(folder.read("a.gp").find("set title \"KOR Spectrum\"\n"), std::string::npos);
}

TEST(GnuplotSpectrumScript, NamesTheScriptThatCannotBeMade) {
    const TempTree folder;
    EXPECT_EQ(said([] { return WriteGnuplotSpectrumScript("no/a.gp", "a_fd.csv", nullptr); }),
              "0||no/a.gp: No such file or directory\n");
}

} // namespace
} // namespace kor
