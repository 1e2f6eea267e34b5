// Data files, damaged: a reader takes a file that still holds what it promises, and refuses every other with
// a message. What the reader should do is read off the damaged bytes here, not asked of the program.
#include "kor/expectation_values.h"
#include "kor/runtime_state.h"
#include "kordatafileio.h"
#include "kormodel.h"
#include "observablespectrumcalculator/spectrum_2d.h"
#include "observablespectrumcalculator/spectrum_files.h"
#include "rfpulselib/dialogues.h"
#include "rfpulselib/shapes.h"
#include "rfwaveformfile.h"
#include "support/case_count.h"
#include "support/console_script.h"
#include "support/finite_doubles.h"
#include "support/mutator.h"
#include "support/temp_tree.h"
#include "unit/kormodel/model_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace kor;
using namespace kor_test;

namespace {

struct Header {
    std::int32_t type = 0, num1 = 0, num2 = 0;
    bool whole = false;
};

Header header_of(const std::string& bytes) {
    Header header;
    header.whole = bytes.size() >= 12;
    std::int32_t values[3] = {};
    if (header.whole)
        std::memcpy(values, bytes.data(), sizeof values);
    header.type = values[0];
    header.num1 = values[1];
    header.num2 = values[2];
    return header;
}

std::string with_header(std::int32_t type, std::int32_t num1, std::int32_t num2, const std::string& data) {
    return bytes_of<std::int32_t>({type, num1, num2}) + data;
}

std::string counted_doubles(std::size_t count) {
    std::vector<double> values(count);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = 0.25 * static_cast<double>(i) - 3.0;
    return bytes_of(values);
}

/// Calls check(damaged file) cases_here(count) times; a third of the files is damaged twice.
template <class Check>
void for_mutants(unsigned seed, int count, const std::string& file, bool text, Check check) {
    std::printf("seed %u\n", seed);
    Mutator mutator(seed);
    const int mutants = cases_here(count);
    for (int i = 0; i < mutants && !testing::Test::HasFailure(); ++i) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", mutant " + std::to_string(i));
        std::string damaged = file;
        for (int left = i % 3 == 0 ? 2 : 1; left > 0; --left)
            damaged = text ? mutator.damaged_text(damaged) : mutator.damaged_bytes(damaged);
        check(damaged);
    }
}

void activate_two_spins_on_three_voxels() {
    const ModelSet set;
    write_file(set.model(), replaced(valid_model_text, "ndx: 5", "ndx: 3"));
    char message[KOR_MESSAGE_SIZE];
    ASSERT_EQ(KORModel_LoadCurrentLegacyStateFromText(set.model().c_str(), message, sizeof message),
              KOR_MODEL_OK);
}

std::size_t lines_in(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

/// The numbers at the beginning of the text, by the C library's rules.
std::vector<double> leading_numbers(const std::string& text, std::size_t most) {
    std::vector<double> numbers;
    const char* at = text.c_str();
    char* end = nullptr;
    while (numbers.size() < most) {
        const double value = std::strtod(at, &end);
        if (end == at)
            break;
        numbers.push_back(value);
        at = end;
    }
    return numbers;
}

} // namespace

TEST(DataMutations, WaveformFiles) {
    const TempTree tree(memory_folder());
    constexpr int samples = 6;
    int whole_files = 0, finite_files = 0, bad_samples = 0;
    for_mutants(21001, 12000, counted_doubles(5 * samples), false, [&](const std::string& damaged) {
        tree.write("x.bin", damaged);
        for (const int blocks : {2, 5}) {
            double values[5][samples] = {};
            double* const arrays[] = {values[0], values[1], values[2], values[3], values[4]};
            const std::size_t wanted = sizeof(double) * samples * static_cast<std::size_t>(blocks);
            const bool whole = damaged.size() >= wanted;
            int complete = -1;
            const ConsoleOutput told =
                play_console("", [&] { complete = read_waveform_blocks("x.bin", samples, blocks, arrays); });
            EXPECT_EQ(complete, whole ? 1 : 0);
            EXPECT_EQ(told.err,
                      whole ? ""
                            : "x.bin: too short for " + std::to_string(blocks) + " blocks of 6 samples\n");
            if (whole) {
                EXPECT_EQ(std::memcmp(values, damaged.data(), wanted), 0);
            }
            whole_files += whole;
        }
        double x[samples], y[samples];
        int read = 0;
        const ConsoleOutput console =
            play_console("", [&] { read = koropt_load_waveform_xy("x.bin", samples, x, y); });
        const bool whole = damaged.size() >= sizeof x + sizeof y;
        const bool finite = whole && holds_finite_doubles(damaged, 2 * samples);
        EXPECT_EQ(read, finite ? 1 : 0);
        EXPECT_EQ(console.out.starts_with("Bad pulse sample at l="), whole && !finite) << console.out;
        EXPECT_EQ(console.out.empty(), finite || !whole) << console.out;
        finite_files += finite;
        bad_samples += whole && !finite;
        EXPECT_EQ(console.err, whole ? "" : "x.bin: too short for 2 blocks of 6 samples\n");
    });
    EXPECT_GT(whole_files, cases_here(2000));
    EXPECT_GT(finite_files, cases_here(1000));
    EXPECT_GT(bad_samples, 0);
}

TEST(DataMutations, DensityMatrixFilesAsProfiles) {
    const TempTree tree(memory_folder());
    activate_two_spins_on_three_voxels();
    int written = 0;
    for_mutants(
        21011, 6000, with_header(0, 4, 3, counted_doubles(3 * 32)), false, [&](const std::string& damaged) {
            tree.write("dm.bin", damaged);
            const Header header = header_of(damaged);
            const bool fits = header.whole && header.type == 0 && header.num1 == 4 && header.num2 >= 1;
            const auto promised = static_cast<std::size_t>(std::max(header.num2, 0));
            const std::size_t held = damaged.size() < 12 ? 0 : (damaged.size() - 12) / 256;
            int done = 0;
            const ConsoleOutput console = play_console(
                "", [&] { done = KORWriteExpectationProfile("dm.bin", "Ix + Sy", "profile.csv"); });
            EXPECT_EQ(done, fits && held >= promised ? 1 : 0);
            if (done) {
                ++written;
                EXPECT_EQ(lines_in(tree.read("profile.csv")), promised + 1);
                EXPECT_EQ(console.err, "");
            } else if (fits) {
                EXPECT_EQ(console.err, "Expectation profile: truncated density matrix at point " +
                                           std::to_string(held + 1) + ".\n");
            } else {
                EXPECT_NE(console.err.find("Expectation profile: incompatible density header type="),
                          std::string::npos)
                    << console.err;
            }
        });
    EXPECT_GT(written, cases_here(500));
}

TEST(DataMutations, SignalFilesAsSpectra) {
    const TempTree tree(memory_folder());
    int written = 0;
    for_mutants(
        21013, 4000, with_header(1, 4, 3, counted_doubles(24)), false, [&](const std::string& damaged) {
            tree.write("korsign.bin", damaged);
            const Header header = header_of(damaged);
            const bool some = header.num1 > 0 && header.num2 > 0;
            const bool whole = some && (damaged.size() - 12) / 16 / static_cast<std::size_t>(header.num1) >=
                                           static_cast<std::size_t>(header.num2);
            int done = 0;
            const ConsoleOutput console =
                play_console("", [&] { done = write_spectrum_csv_files("x_td.csv", "x_fd.csv", 0.5); });
            EXPECT_EQ(done, whole ? 1 : 0);
            if (whole) {
                ++written;
                const auto lines =
                    static_cast<std::size_t>(header.num1) * static_cast<std::size_t>(header.num2) + 1;
                EXPECT_EQ(lines_in(tree.read("x_td.csv")), lines);
                EXPECT_EQ(lines_in(tree.read("x_fd.csv")), lines);
            } else if (some) {
                EXPECT_NE(console.out + console.err, "");
            }
            play_console("", Calc2Dfft);
            play_console("", [] { TransposeDataMatrix("korsign.bin", "turned.bin"); });
            play_console("", [] { TransposeDataMatrix("turned.bin", "back.bin"); });
            if (whole) {
                EXPECT_EQ(tree.read("back.bin"),
                          damaged.substr(0, 12 + 16 * static_cast<std::size_t>(header.num1) *
                                                     static_cast<std::size_t>(header.num2)));
            }
        });
    EXPECT_GT(written, cases_here(500));
}

TEST(DataMutations, PlainSeries) {
    const TempTree tree(memory_folder());
    constexpr std::size_t count = 6;
    const std::string series = "1.000000000000E+00\n-2.5\n3e-3\n 4 \n+5.\n6.25E2\n";
    int whole_files = 0;
    for_mutants(21017, 12000, series, true, [&](const std::string& damaged) {
        tree.write("x.txt", damaged);
        double values[count];
        dataio_status status = DATAIO_OK;
        const ConsoleOutput console =
            play_console("", [&] { status = AsciiIn_status(count, values, "x.txt"); });
        const std::vector<double> expected = leading_numbers(damaged, count);
        if (status == DATAIO_OK) {
            ++whole_files;
            EXPECT_EQ(console.err, "");
        } else {
            EXPECT_EQ(status, DATAIO_ERR_IO);
            EXPECT_EQ(console.err.rfind("fscanf: ", 0), 0U) << console.err;
        }
        if (expected.size() == count) {
            EXPECT_EQ(status, DATAIO_OK);
            EXPECT_EQ(std::memcmp(values, expected.data(), sizeof values), 0);
        }
    });
    EXPECT_GT(whole_files, cases_here(1000));
}

TEST(DataMutations, SgPlotSeries) {
    const TempTree tree(memory_folder());
    constexpr unsigned count = 4;
    const std::string series = "1   0.000000000000E+00   1.000000000000E+00\n"
                               "1   1.000000000000E+00   -2.500000000000E+00\n"
                               "1   2.000000000000E+00   3.000000000000E-03\n"
                               "1   3.000000000000E+00   4.000000000000E+00\n";
    int whole_files = 0;
    for_mutants(21019, 8000, series, true, [&](const std::string& damaged) {
        tree.write("x.txt", damaged);
        double values[count];
        dataio_status status = DATAIO_OK;
        const ConsoleOutput console =
            play_console("", [&] { status = SGFileIn_status(count, values, "x.txt"); });
        if (status != DATAIO_OK) {
            EXPECT_EQ(status, DATAIO_ERR_IO);
            EXPECT_EQ(console.err.rfind("fscanf: ", 0), 0U) << console.err;
            return;
        }
        ++whole_files;
        double again[count];
        ASSERT_EQ(SGFileOut_status(count, values, "y.txt"), DATAIO_OK);
        ASSERT_EQ(SGFileIn_status(count, again, "y.txt"), DATAIO_OK);
        for (unsigned i = 0; i < count; ++i) {
            if (std::isfinite(values[i]))
                EXPECT_NEAR(again[i], values[i], 1e-12 * std::fabs(values[i]));
            else
                EXPECT_EQ(std::isnan(again[i]), std::isnan(values[i]));
        }
    });
    EXPECT_GT(whole_files, cases_here(1000));
}

namespace {

/// The pulses of a parameter file added up: eight numbers per line, up to the first line that does not begin
/// with them or whose first number is 0. The program reads pieces of 1023 characters.
void add_pulses_of_lines(const std::string& text, int samples, double step, double* xb, double* yb) {
    std::vector<double> x(static_cast<std::size_t>(samples));
    std::vector<double> y(x);
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), std::min(text.size(), start + 1023) - 1);
        const std::string line = text.substr(start, end + 1 - start);
        double p[8] = {};
        int at = 0, numbers = 0;
        for (int length = 0;
             numbers < 8 && std::sscanf(line.c_str() + at, "%lf%n", &p[numbers], &length) == 1; at += length)
            ++numbers;
        if (numbers < 8 || p[0] == 0)
            return;
        compute_2d_sinc_offcentre(samples, step, p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], x.data(),
                                  y.data());
        for (std::size_t j = 0; j < x.size(); ++j) {
            xb[j] += x[j];
            yb[j] += y[j];
        }
        start = end + 1;
    }
}

} // namespace

TEST(DataMutations, PulseParameterFiles) {
    const TempTree tree(memory_folder());
    const std::string file = "1.5708 1 12 8 1 1 0.5 0\n1.5708 1 12 8 1 1 -0.5 0\n0 0 0 0 0 0 0 0\n";
    constexpr int samples = 8;
    constexpr double step = 1e-5;
    int pulses = 0;
    for_mutants(21023, 4000, file, true, [&](const std::string& damaged) {
        if (damaged.find('\x1a') != std::string::npos)
            return; // the end of a text on one system alone
        tree.write("x.txt", damaged);
        double xb[samples], yb[samples];
        std::fill_n(xb, samples, 7.0);
        std::fill_n(yb, samples, 7.0);
        const ConsoleOutput console = play_console("x.txt\n", [&] { fmpulseproc6(&samples, &step, xb, yb); });
        EXPECT_EQ(console.err, "");
        double expected[2][samples] = {};
        add_pulses_of_lines(damaged, samples, step, expected[0], expected[1]);
        EXPECT_EQ(std::memcmp(xb, expected[0], sizeof xb), 0);
        EXPECT_EQ(std::memcmp(yb, expected[1], sizeof yb), 0);
        pulses += expected[0][0] != 0;
    });
    EXPECT_GT(pulses, cases_here(1000));
}
