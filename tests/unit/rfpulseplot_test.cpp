#include "rfpulseplot.h"

#include "support/console_script.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kor {
namespace {

using kor_test::play_console;
using kor_test::read_file;
using kor_test::TempTree;

const std::string title = "# t[s], B1x[Hz], B1y[Hz], |B1|, phase[rad]\n";

std::string csv(const std::vector<double>& xb, const std::vector<double>& yb, double h) {
    EXPECT_EQ(WritePulseCSV("p.csv", static_cast<int>(xb.size()), h, xb.data(), yb.data()), 1);
    return read_file("p.csv");
}

TEST(PulseCsv, HoldsTimeComponentsMagnitudeAndPhase) {
    const TempTree folder;
    EXPECT_EQ(csv({3, 0, -1, 0}, {4, 2, 0, -2}, 0.5), title + "0, 3, 4, 5, 0.927295\n"
                                                              "0.5, 0, 2, 2, 1.5708\n"
                                                              "1, -1, 0, 1, 3.14159\n"
                                                              "1.5, 0, -2, 2, 4.71239\n");
}

TEST(PulseCsv, PhaseStaysThroughSamplesWithoutAmplitude) {
    const TempTree folder;
    EXPECT_EQ(csv({0, 0, 0, 1e-13, 2, 0}, {0, -1, 0, 1e-13, 0, 0}, 1),
              title + "0, 0, 0, 0, 0\n"
                      "1, 0, -1, 1, 4.71239\n"
                      "2, 0, 0, 0, 4.71239\n"
                      "3, 1e-13, 1e-13, 1.41421e-13, 4.71239\n"
                      "4, 2, 0, 2, 0\n"
                      "5, 0, 0, 0, 0\n");
}

TEST(PulseCsv, AmplitudeAtTheThresholdCounts) {
    const TempTree folder;
    EXPECT_EQ(csv({1e-12, 0.99e-12}, {0, 0}, 1),
              title + "0, 1e-12, 0, 1e-12, 0\n1, 9.9e-13, 0, 9.9e-13, 0\n");
    EXPECT_EQ(csv({0, 0}, {1e-12, 0.99e-12}, 1),
              title + "0, 0, 1e-12, 1e-12, 1.5708\n1, 0, 9.9e-13, 9.9e-13, 1.5708\n");
}

TEST(PulseCsv, NoSamplesLeaveTheTitle) {
    const TempTree folder;
    EXPECT_EQ(csv({}, {}, 1), title);
}

TEST(PulseCsv, SaysThatTheFileCannotBeOpened) {
    const TempTree folder;
    const double value = 1;
    const auto printed =
        play_console("", [&] { EXPECT_EQ(WritePulseCSV("absent/p.csv", 1, 1, &value, &value), 0); });
    EXPECT_EQ(printed.err, "WritePulseCSV: cannot open absent/p.csv\n");
    EXPECT_EQ(printed.out, "");
}

TEST(PulseScript, IsTheExactText) {
    const TempTree folder;
    EXPECT_EQ(WriteGnuplotPulseScript("p.csv.gp", "p.csv"), 1);
    EXPECT_EQ(
        read_file("p.csv.gp"),
        "set title 'Optimized RF Pulse'\nset xlabel 'Time (s)'\nset ylabel 'Amplitude / Phase'\nset grid\n"
        "set key left top\n\nplot \\\n  'p.csv' using 1:2 with lines title 'B1x', \\\n  'p.csv' using 1:3 "
        "with lines title 'B1y', \\\n  'p.csv' using 1:4 with lines title '|B1|', \\\n  'p.csv' using 1:5 "
        "with lines title 'phase'\n\npause -1\n");
}

TEST(PulseScript, SaysThatTheFileCannotBeOpened) {
    const TempTree folder;
    const auto printed =
        play_console("", [&] { EXPECT_EQ(WriteGnuplotPulseScript("absent/p.gp", "p.csv"), 0); });
    EXPECT_EQ(printed.err, "WriteGnuplotPulseScript: cannot open absent/p.gp\n");
}

TEST(StartPulseCsv, GivesEverySampleItsOwnPhase) {
    const TempTree folder;
    const std::vector<double> xb = {0, 0, 0}, yb = {-1, 0, 2};
    EXPECT_EQ(write_start_pulse_csv("p.csv", 3, 0.5, xb.data(), yb.data()), 1);
    EXPECT_EQ(read_file("p.csv"), title + "0, 0, -1, 1, 4.71239\n0.5, 0, 0, 0, 0\n1, 0, 2, 2, 1.5708\n");
}

TEST(StartPulseScript, IsTheExactText) {
    const TempTree folder;
    EXPECT_EQ(write_start_pulse_gnuplot_script("p.gp", "p.csv"), 1);
    EXPECT_EQ(read_file("p.gp"),
              "set terminal qt\nset datafile separator \",\"\nset grid\nset xlabel \"Time (s)\"\n"
              "set ylabel \"Amplitude\"\nset title \"RF Pulse\"\n"
              "plot \"p.csv\" using 1:2 with lines title \"Bx\", \\\n"
              "     \"p.csv\" using 1:3 with lines title \"By\", \\\n"
              "     \"p.csv\" using 1:4 with lines title \"Offset\"\npause mouse close\n");
}

TEST(StartPulseFiles, SayThatTheyCannotBeOpened) {
    const TempTree folder;
    const double value = 1;
    const auto printed = play_console("", [&] {
        EXPECT_EQ(write_start_pulse_csv("absent/p.csv", 1, 1, &value, &value), 0);
        EXPECT_EQ(write_start_pulse_gnuplot_script("absent/p.gp", "p.csv"), 0);
    });
    EXPECT_EQ(printed.err, "Cannot open absent/p.csv\ngp pulse: No such file or directory\n");
}

} // namespace
} // namespace kor
