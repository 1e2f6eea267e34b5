#include "observablespectrumcalculator/spectrum_2d.h"

#include "korlimits.h"
#include "support/deviation.h"
#include "support/signal_files.h"
#include "support/transform_2d.h"

#include <gtest/gtest.h>

#include <random>

namespace kor {
namespace {

using kor_test::Complex;
using kor_test::complex_bytes;
using kor_test::forward;
using kor_test::header_bytes;
using kor_test::largest_gap;
using kor_test::read_signal_file;
using kor_test::Row;
using kor_test::SignalFile;
using kor_test::TempTree;
using kor_test::transform_2d;
using kor_test::weighted;

constexpr char read_error[] = ">>> READ BINARY FILE ERROR <<<\n";

Row random_points(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    Row points(count);
    for (Complex& point : points)
        point = {normal(random), normal(random)};
    return points;
}

TEST(Calc2Dfft, AgreesWithDirectSumsInBothDimensions) {
    const TempTree folder;
    for (const auto& [cols, rows] : {std::pair<int, int>{8, 4}, {4, 16}, {2, 2}, {32, 64}}) {
        const Row data = random_points(static_cast<std::size_t>(cols * rows), 5);
        folder.write("korsign.bin", header_bytes(1, cols, rows) + complex_bytes(data));
        Calc2Dfft();
        const SignalFile spectrum = read_signal_file("sort.bin");
        EXPECT_EQ(spectrum.header[0], 1);
        EXPECT_EQ(spectrum.header[1], cols);
        EXPECT_EQ(spectrum.header[2], rows);
        EXPECT_LT(largest_gap(spectrum.samples, transform_2d(data, static_cast<std::size_t>(cols))), 1e-12)
            << cols << " x " << rows;
    }
}

TEST(Calc2Dfft, PutsASignalAtItsTwoFrequencies) {
    const TempTree folder;
    Row data;
    for (int r = 0; r < 16; ++r)
        for (int c = 0; c < 32; ++c)
            data.push_back(std::polar(1.0, -2.0 * KOR_PI * (5.0 * c / 32 - 3.0 * r / 16)));
    folder.write("korsign.bin", header_bytes(1, 32, 16) + complex_bytes(data));
    Calc2Dfft();
    const SignalFile spectrum = read_signal_file("sort.bin");
    std::size_t peak = 0;
    for (std::size_t k = 0; k < spectrum.samples.size(); ++k)
        if (std::abs(spectrum.samples[k]) > std::abs(spectrum.samples[peak]))
            peak = k;
    EXPECT_EQ(peak % 32, 16U + 5U);
    EXPECT_EQ(peak / 32, 8U - 3U);
}

TEST(Calc2Dfft, OtherLengthsAreWeightedButNotTransformed) {
    const TempTree folder;
    const Row data = random_points(6, 9);
    folder.write("korsign.bin", header_bytes(1, 6, 1) + complex_bytes(data));
    DispTransvSign();
    EXPECT_LT(largest_gap(read_signal_file("spectra.bin").samples, weighted(data)), 1e-15);
}

TEST(Calc2Dfft, SaysWhenThereIsNoSignalFile) {
    const TempTree folder;
    testing::internal::CaptureStderr();
    Calc2Dfft();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "fopen: No such file or directory\n");
    EXPECT_TRUE(folder.names().empty());
}

TEST(Calc2Dfft, EndsSilentlyWhenALaterFileCannotBeMade) {
    const TempTree folder;
    folder.write("korsign.bin", header_bytes(1, 2, 2) + complex_bytes(random_points(4, 1)));
    folder.make_folder("sort.bin");
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    Calc2Dfft();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Calc2Dfft, AnUnfinishedSpectrumIsDeleted) {
    const TempTree folder;
    folder.write("korsign.bin", header_bytes(1, 2, 2) + complex_bytes(random_points(4, 1)));
    folder.write("sort.bin", "an earlier spectrum");
    folder.make_folder("spectra.bin");
    testing::internal::CaptureStderr();
    Calc2Dfft();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "fopen: Is a directory\n");
    EXPECT_FALSE(folder.exists("sort.bin"));
}

TEST(Calc2Dfft, AShortSignalFileIsReported) {
    const TempTree folder;
    folder.write("korsign.bin", header_bytes(1, 4, 3) + complex_bytes(random_points(6, 1)));
    testing::internal::CaptureStdout();
    DispTransvSign();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), read_error);
    EXPECT_EQ(read_signal_file("spectra.bin").samples.size(), 4U) << "the whole row before the end is kept";
}

TEST(Calc2Dfft, ADamagedHeaderDoesNoHarm) {
    const TempTree folder;
    for (const auto& [cols, rows] : {std::pair<int, int>{-4, 7}, {4, -7}, {0, 1 << 30}, {1 << 20, 3}}) {
        folder.write("korsign.bin", header_bytes(1, cols, rows) + "rest");
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        Calc2Dfft();
        testing::internal::GetCapturedStderr();
        testing::internal::GetCapturedStdout();
        EXPECT_LE(folder.read("sort.bin").size(), 12U) << cols << " x " << rows;
    }
}

TEST(DispTransvSign, IsTheFirstPassAlone) {
    const TempTree folder;
    const Row data = random_points(8, 3);
    folder.write("korsign.bin", header_bytes(1, 8, 1) + complex_bytes(data));
    DispTransvSign();
    const SignalFile spectra = read_signal_file("spectra.bin");
    EXPECT_EQ(spectra.header[1], 8);
    EXPECT_LT(largest_gap(spectra.samples, forward(weighted(data))), 1e-13);
    EXPECT_FALSE(folder.exists("sort.bin"));
}

TEST(TransposeDataMatrix, ExchangesRowsAndColumns) {
    const TempTree folder;
    const Row data = {1.0, 2.0, {3.0, -3.0}, 4.0, 5.0, 6.0};
    folder.write("in", header_bytes(7, 3, 2) + complex_bytes(data));
    TransposeDataMatrix("in", "out");
    EXPECT_EQ(folder.read("out"),
              header_bytes(7, 2, 3) + complex_bytes({1.0, 4.0, 2.0, 5.0, {3.0, -3.0}, 6.0}));
}

TEST(TransposeDataMatrix, TwiceIsTheFileItself) {
    const TempTree folder;
    const std::string bytes = header_bytes(1, 5, 7) + complex_bytes(random_points(35, 2));
    folder.write("in", bytes);
    TransposeDataMatrix("in", "there");
    TransposeDataMatrix("there", "back");
    EXPECT_EQ(folder.read("back"), bytes);
}

TEST(TransposeDataMatrix, AShortFileGivesAMessageAndNoData) {
    const TempTree folder;
    folder.write("in", header_bytes(1, 3, 2) + complex_bytes(random_points(5, 2)));
    testing::internal::CaptureStdout();
    TransposeDataMatrix("in", "out");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), ">>> READ BINARY FILE ERROR (transpose) <<<\n");
    EXPECT_EQ(folder.read("out"), "");
}

TEST(TransposeDataMatrix, SaysWhenAHeaderAsksForMoreMemoryThanThereIs) {
    const TempTree folder;
    folder.write("in", header_bytes(1, 1 << 30, 1 << 30));
    testing::internal::CaptureStderr();
    TransposeDataMatrix("in", "out");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "signal buffer: Cannot allocate memory\n");
    EXPECT_EQ(folder.read("out"), "");
}

TEST(TransposeDataMatrix, NamesTheFileThatCannotBeOpened) {
    const TempTree folder;
    testing::internal::CaptureStderr();
    TransposeDataMatrix("in", "out");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "fopen(in): No such file or directory\n");
    folder.write("in", header_bytes(1, 0, 0));
    testing::internal::CaptureStderr();
    TransposeDataMatrix("in", "no-such-folder/out");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "fopen(out): No such file or directory\n");
}

} // namespace
} // namespace kor
