#include "rfwaveformfile.h"

#include "korlimits.h"
#include "support/console_script.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <numeric>

namespace kor {
namespace {

using kor_test::bytes_of;
using kor_test::play_console;
using kor_test::read_file;
using kor_test::system_line;
using kor_test::TempTree;
using kor_test::write_file;

using Doubles = std::vector<double>;

Doubles counting(std::size_t count, double from) {
    Doubles values(count);
    std::iota(values.begin(), values.end(), from);
    return values;
}

TEST(WaveformFile, TwoBlocksOfFourSamplesAreSixtyFourBytes) {
    const TempTree folder;
    const Doubles xb{1, 2, 3, 4}, yb{-1, -2, -3, -4};
    BinArrayOut2D(4, xb.data(), yb.data(), "w");
    EXPECT_EQ(read_file("w"), bytes_of(xb) + bytes_of(yb));
    EXPECT_EQ(read_file("w").size(), 64U);
}

TEST(WaveformFile, SpatialLayoutIsFivePlanarBlocks) {
    const TempTree folder;
    const Doubles xb{1, 2, 3}, yb{4, 5, 6}, gx{7, 8, 9}, gy{10, 11, 12}, gz{13, 14, 15};
    const int ap = 3;
    BinArrayOut(&ap, xb.data(), yb.data(), gx.data(), gy.data(), gz.data(), "w");
    EXPECT_EQ(read_file("w"), bytes_of(counting(15, 1)));
}

TEST(WaveformFile, HardPulseWithGradientIsFiveNumbers) {
    const TempTree folder;
    const double xb = KOR_PI / 2 / 1e-5, gx = 4000 * KOR_PI, zero = 0;
    const int ap = 1;
    BinArrayOut(&ap, &xb, &zero, &gx, &zero, &zero, "w");
    EXPECT_EQ(read_file("w"), bytes_of(Doubles{KOR_PI / 2 / 1e-5, 0, 4000 * KOR_PI, 0, 0}));
}

TEST(WaveformFile, NoSamplesGiveAnEmptyFile) {
    const TempTree folder;
    const double value = 1;
    for (int ap : {0, -1}) {
        write_file("w", "old");
        BinArrayOut2D(ap, &value, &value, "w");
        EXPECT_EQ(read_file("w"), "");
    }
}

TEST(WaveformFile, UnopenableTargetGivesTheSystemText) {
    const TempTree folder;
    const double value = 1;
    const int ap = 1;
    const auto two = play_console("", [&] { BinArrayOut2D(1, &value, &value, "absent/w"); });
    EXPECT_EQ(two.err, system_line("absent/w", ENOENT));
    const auto five =
        play_console("", [&] { BinArrayOut(&ap, &value, &value, &value, &value, &value, "absent/w"); });
    EXPECT_EQ(five.err, system_line("absent/w", ENOENT));
    EXPECT_EQ(two.out + five.out, "");
}

TEST(LoadWaveform, ReadsTwoBlocksAndIgnoresTheRest) {
    const TempTree folder;
    write_file("w", bytes_of(counting(5, 1)) + "tail");
    Doubles bx(3, -1), by(3, -1);
    EXPECT_EQ(koropt_load_waveform_xy("w", 2, bx.data(), by.data()), 1);
    EXPECT_EQ(bx, (Doubles{1, 2, -1}));
    EXPECT_EQ(by, (Doubles{3, 4, -1}));
}

TEST(LoadWaveform, SinglePointFileLeavesTheThirdNumber) {
    const TempTree folder;
    write_file("w", bytes_of(Doubles{1e-6, 0, 0}));
    double bx = 5, by = 5;
    EXPECT_EQ(koropt_load_waveform_xy("w", 1, &bx, &by), 1);
    EXPECT_EQ(bx, 1e-6);
    EXPECT_EQ(by, 0.0);
}

TEST(LoadWaveform, RefusesBadArgumentsWithoutAWord) {
    const TempTree folder;
    write_file("w", bytes_of(counting(4, 1)));
    double bx = 5, by = 5;
    const auto printed = play_console("", [&] {
        EXPECT_EQ(koropt_load_waveform_xy(nullptr, 1, &bx, &by), 0);
        EXPECT_EQ(koropt_load_waveform_xy("", 1, &bx, &by), 0);
        EXPECT_EQ(koropt_load_waveform_xy("w", 1, nullptr, &by), 0);
        EXPECT_EQ(koropt_load_waveform_xy("w", 1, &bx, nullptr), 0);
        for (int ap : {-1, 0, 8193, 2147483647}) {
            EXPECT_EQ(koropt_load_waveform_xy("w", ap, &bx, &by), 0) << ap;
        }
    });
    EXPECT_EQ(printed.out + printed.err, "");
    EXPECT_EQ(bx + by, 10.0);
}

TEST(LoadWaveform, LongestWaveformFits) {
    const TempTree folder;
    const Doubles values = counting(2 * 8192, 0.25);
    write_file("w", bytes_of(values));
    Doubles bx(8192), by(8192);
    EXPECT_EQ(koropt_load_waveform_xy("w", 8192, bx.data(), by.data()), 1);
    EXPECT_EQ(bx.back(), 8191.25);
    EXPECT_EQ(by.back(), 16383.25);
}

TEST(LoadWaveform, ASampleThatIsNotFiniteIsRefusedAsARunDoes) {
    const TempTree folder;
    const double infinite = std::numeric_limits<double>::infinity();
    write_file("w", bytes_of(Doubles{1, 2, 3, 4, infinite, 6}));
    Doubles bx(3), by(3);
    auto printed =
        play_console("", [&] { EXPECT_EQ(koropt_load_waveform_xy("w", 3, bx.data(), by.data()), 0); });
    EXPECT_EQ(printed.out, "Bad pulse sample at l=1: xb=2 yb=inf\n");
    write_file("w", bytes_of(Doubles{1, 2, 3, 4, infinite}));
    printed = play_console("", [&] { EXPECT_EQ(koropt_load_waveform_xy("w", 2, bx.data(), by.data()), 1); });
    EXPECT_EQ(printed.out + printed.err, "");
}

TEST(FirstBadSample, IsTheFirstOfAnyBlock) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Doubles a{1, 2, 3, nan}, b{1, 2, nan, 4};
    const double* const arrays[] = {a.data(), b.data()};
    EXPECT_EQ(first_bad_sample(arrays, 2, 4), 2);
    EXPECT_EQ(first_bad_sample(arrays, 1, 4), 3);
    EXPECT_EQ(first_bad_sample(arrays, 2, 2), -1);
    EXPECT_EQ(first_bad_sample(arrays, 2, 0), -1);
}

TEST(LoadWaveform, AbsentFileGivesTheSystemText) {
    const TempTree folder;
    double bx, by;
    const auto printed =
        play_console("", [&] { EXPECT_EQ(koropt_load_waveform_xy("absent", 1, &bx, &by), 0); });
    EXPECT_EQ(printed.err, system_line("absent", ENOENT));
}

TEST(WaveformBlocks, AnyFileShorterThanItsBlocksFails) {
    const TempTree folder;
    const std::string whole = bytes_of(counting(15, 1));
    Doubles values[5];
    double* arrays[5];
    for (int b = 0; b < 5; ++b) {
        values[b].resize(3);
        arrays[b] = values[b].data();
    }
    for (std::size_t length = 0; length < whole.size(); ++length) {
        write_file("w", whole.substr(0, length));
        const auto printed =
            play_console("", [&] { EXPECT_EQ(read_waveform_blocks("w", 3, 5, arrays), 0) << length; });
        EXPECT_EQ(printed.err, "w: too short for 5 blocks of 3 samples\n");
    }
    write_file("w", whole);
    EXPECT_EQ(read_waveform_blocks("w", 3, 5, arrays), 1);
    EXPECT_EQ(values[4], (Doubles{13, 14, 15}));
}

TEST(WaveformBlocks, NoSamplesNeedOnlyAnExistingFile) {
    const TempTree folder;
    write_file("w", "");
    double value = 5;
    double* arrays[2] = {&value, &value};
    EXPECT_EQ(read_waveform_blocks("w", 0, 2, arrays), 1);
    EXPECT_EQ(value, 5.0);
    const auto printed = play_console("", [&] {
        EXPECT_EQ(read_waveform_blocks("absent", 0, 2, arrays), 0);
        EXPECT_EQ(read_waveform_blocks("w", -1, 2, arrays), 0);
        EXPECT_EQ(read_waveform_blocks("w", 8193, 2, arrays), 0);
        EXPECT_EQ(read_waveform_blocks("", 1, 2, arrays), 0);
        EXPECT_EQ(read_waveform_blocks(nullptr, 1, 2, arrays), 0);
    });
    EXPECT_EQ(printed.err, system_line("absent", ENOENT));
}

TEST(WaveformBlocks, ReadBackWhatBinArrayOutWrote) {
    const TempTree folder;
    const Doubles values = counting(25, 0.125);
    const double* v = values.data();
    const int ap = 5;
    BinArrayOut(&ap, v, v + 5, v + 10, v + 15, v + 20, "w");
    Doubles back(25);
    double* arrays[5];
    for (int b = 0; b < 5; ++b) {
        arrays[b] = back.data() + 5 * b;
    }
    EXPECT_EQ(read_waveform_blocks("w", 5, 5, arrays), 1);
    EXPECT_EQ(back, values);
}

} // namespace
} // namespace kor
