#include "rfpulseplot.h"

#include "korlimits.h"
#include "korplatform.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace kor {

namespace {

constexpr double kNoAmplitude = 1e-12;

std::FILE* open_or_explain(const char* name, const char* caller) {
    std::FILE* file = platform_open(name, "w");
    if (!file) {
        std::fprintf(stderr, "%s: cannot open %s\n", caller, name);
    }
    return file;
}

/// A buffered write may fail as late as in fclose.
int close_written(std::FILE* file, const char* name) {
    const bool sound = !std::ferror(file);
    if (std::fclose(file) == 0 && sound) {
        return 1;
    }
    std::perror(name);
    return 0;
}

double phase_from_zero(double x, double y) {
    const double phase = std::atan2(y, x);
    return phase < 0.0 ? phase + 2.0 * KOR_PI : phase;
}

} // namespace

namespace {

enum class PhaseAtRest { repeats_the_last, is_that_of_the_sample };

int write_pulse_table(std::FILE* file, const char* filename, int ap, double h, const double* xb,
                      const double* yb, PhaseAtRest at_rest) {
    std::fputs("# t[s], B1x[Hz], B1y[Hz], |B1|, phase[rad]\n", file);
    double phase = 0.0;
    // Up to the first line that fails: what is left of the table is its beginning, without a gap.
    for (int i = 0; i < ap && !std::ferror(file); ++i) {
        const double magnitude = std::sqrt(xb[i] * xb[i] + yb[i] * yb[i]);
        if (at_rest == PhaseAtRest::is_that_of_the_sample || !(magnitude < kNoAmplitude)) {
            phase = phase_from_zero(xb[i], yb[i]);
        }
        std::fprintf(file, "%g, %g, %g, %g, %g\n", i * h, xb[i], yb[i], magnitude, phase);
    }
    return close_written(file, filename);
}

} // namespace

int WritePulseCSV(const char* filename, int ap, double h, const double* xb, const double* yb) {
    std::FILE* file = open_or_explain(filename, "WritePulseCSV");
    if (!file) {
        return 0;
    }
    return write_pulse_table(file, filename, ap, h, xb, yb, PhaseAtRest::repeats_the_last);
}

int write_start_pulse_csv(const char* filename, int ap, double h, const double* xb, const double* yb) {
    std::FILE* file = platform_open(filename, "w");
    if (!file) {
        std::fprintf(stderr, "Cannot open %s\n", filename);
        return 0;
    }
    return write_pulse_table(file, filename, ap, h, xb, yb, PhaseAtRest::is_that_of_the_sample);
}

int WriteGnuplotPulseScript(const char* gp_name, const char* csv_name) {
    std::FILE* file = open_or_explain(gp_name, "WriteGnuplotPulseScript");
    if (!file) {
        return 0;
    }
    std::fprintf(file,
                 "set title 'Optimized RF Pulse'\n"
                 "set xlabel 'Time (s)'\n"
                 "set ylabel 'Amplitude / Phase'\n"
                 "set grid\n"
                 "set key left top\n"
                 "\n"
                 "plot \\\n"
                 "  '%s' using 1:2 with lines title 'B1x', \\\n"
                 "  '%s' using 1:3 with lines title 'B1y', \\\n"
                 "  '%s' using 1:4 with lines title '|B1|', \\\n"
                 "  '%s' using 1:5 with lines title 'phase'\n"
                 "\n"
                 "pause -1\n",
                 csv_name, csv_name, csv_name, csv_name);
    return close_written(file, gp_name);
}

int write_start_pulse_gnuplot_script(const char* gp_name, const char* data_name) {
    std::FILE* file = platform_open(gp_name, "w");
    if (!file) {
        std::perror("gp pulse");
        return 0;
    }
    std::fprintf(file,
                 "set terminal qt\n"
                 "set datafile separator \",\"\n"
                 "set grid\n"
                 "set xlabel \"Time (s)\"\n"
                 "set ylabel \"Amplitude\"\n"
                 "set title \"RF Pulse\"\n"
                 "plot \"%s\" using 1:2 with lines title \"Bx\", \\\n"
                 "     \"%s\" using 1:3 with lines title \"By\", \\\n"
                 "     \"%s\" using 1:4 with lines title \"Offset\"\n"
                 "pause mouse close\n",
                 data_name, data_name, data_name);
    return close_written(file, gp_name);
}

void open_plot(const char* script_name) {
    const int error = platform_open_plot(script_name);
    if (error == ENOENT)
        std::printf("gnuplot is not installed (or not on the search path); the plot was not opened.\n");
    else if (error != 0)
        std::printf("gnuplot could not be started: %s\n", std::strerror(error));
}

} // namespace kor
