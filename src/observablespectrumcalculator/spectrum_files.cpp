#include "observablespectrumcalculator/spectrum_files.h"

#include "binaryfilehandling.h"
#include "double_buffer.h"
#include "korlimits.h"
#include "korplatform.h"
#include "written_file.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace kor {

namespace {

/// Signals of the signal file: point k of signal s at s * points + k.
struct Signals {
    int points = 0;
    int count = 0;
    DoubleBuffer re, im;
};

std::size_t total_points(const Signals& signals) {
    return static_cast<std::size_t>(signals.points) * static_cast<std::size_t>(signals.count);
}

std::FILE* open_signal_file(Signals& signals) {
    std::FILE* const in = platform_open("korsign.bin", "rb");
    if (in == nullptr) {
        std::perror("fopen(korsign.bin)");
        return nullptr;
    }
    int type = 0;
    read_legacy_bin_header(in, &type, &signals.points, &signals.count);
    if (binfh_last_status != BINFH_OK)
        std::fprintf(stderr, "korsign.bin: its header could not be read\n");
    return in;
}

int read_signals(std::FILE* in, Signals& signals) {
    const std::size_t total = total_points(signals);
    signals.re = allocate_doubles(total);
    signals.im = allocate_doubles(total);
    if (!signals.re || !signals.im) {
        std::perror("calloc");
        return 0;
    }
    for (std::size_t k = 0; k < total; ++k) {
        double pair[2];
        if (std::fread(pair, sizeof(double), 2, in) != 2) {
            std::printf(">>> READ BINARY FILE ERROR (korsign.bin) <<<\n");
            return 0;
        }
        signals.re[k] = pair[0];
        signals.im[k] = pair[1];
    }
    return 1;
}

double magnitude(double re, double im) {
    return std::sqrt(re * re + im * im);
}

// The writers stop at the first line that fails: what is left of a table is its beginning, without a gap.
// The error mark of the file says that it failed.

void write_time_domain(std::FILE* out, const Signals& signals, double dt) {
    std::fprintf(out, "t_s,f2_index,re,im,mag\n");
    std::size_t at = 0;
    for (int s = 0; s < signals.count; ++s)
        for (int k = 0; k < signals.points && !std::ferror(out); ++k, ++at) {
            const double re = signals.re[at];
            const double im = signals.im[at];
            std::fprintf(out, "%.17g,%d,%.17g,%.17g,%.17g\n", k * dt, s, re, im, magnitude(re, im));
        }
}

/// One spectrum in centred order: zero frequency at row N / 2.
void write_spectrum_rows(std::FILE* out, int N, double df, double f2, const double* re, const double* im) {
    for (int j = 0; j < N && !std::ferror(out); ++j) {
        const double f1 = (j - N / 2) * df;
        const std::int64_t bin = (static_cast<std::int64_t>(j) + N / 2) % N;
        const double r = re[bin];
        const double i = im[bin];
        std::fprintf(out, "%.17g,%.17g,%.17g,%.17g,%.17g,%.17g,%.17g,%.17g,%.17g\n", f1, f2, r, i, r, i, r, i,
                     magnitude(r, i));
    }
}

int write_frequency_domain(std::FILE* out, const Signals& signals, double dt) {
    const int N = signals.points;
    const auto width = static_cast<std::size_t>(N);
    const DoubleBuffer re = allocate_doubles(width);
    const DoubleBuffer im = allocate_doubles(width);
    const double df = dt > 0.0 ? 1.0 / (N * dt) : 0.0;
    std::fprintf(out, "f1_hz,f2_hz,re,im,re_ph,im_ph,re_ph1,im_ph1,mag\n");
    for (int s = 0; s < signals.count && !std::ferror(out); ++s) {
        const std::size_t first = static_cast<std::size_t>(s) * width;
        if (!re || !im || !direct_transform(N, &signals.re[first], &signals.im[first], re.get(), im.get())) {
            std::perror("calloc");
            return 0;
        }
        write_spectrum_rows(out, N, df, signals.count >= 2 ? s : 0.0, re.get(), im.get());
    }
    return 1;
}

std::FILE* open_table(const char* name, const char* tag) {
    std::FILE* const out = platform_open(name, "w");
    if (out == nullptr)
        std::perror(tag);
    return out;
}

int write_tables(std::FILE* in, Signals& signals, const char* td_name, const char* fd_name, double dt) {
    std::FILE* const td = open_table(td_name, "fopen(td.csv)");
    if (td == nullptr)
        return 0;
    std::FILE* const fd = open_table(fd_name, "fopen(fd.csv)");
    int written = 0;
    if (fd != nullptr && read_signals(in, signals)) {
        write_time_domain(td, signals, dt);
        written = write_frequency_domain(fd, signals, dt);
    }
    if (!close_written(td, td_name))
        written = 0;
    if (fd != nullptr && !close_written(fd, fd_name))
        written = 0;
    return written;
}

/// Cosine and sine of 2 pi k / N, reduced to the first eighth of a turn by integers, so that the
/// symmetries of the circle hold exactly.
void circle_point(std::int64_t k, std::int64_t N, double* cosine, double* sine) {
    const std::int64_t quadrant = 4 * k / N;
    const std::int64_t rest = 4 * k % N; // quarter turns beyond it, in units of 1 / N
    const double half_pi = 0.5 * KOR_PI;
    const bool above_eighth = 2 * rest > N;
    const double angle =
        half_pi * static_cast<double>(above_eighth ? N - rest : rest) / static_cast<double>(N);
    double c = std::cos(angle);
    double s = 2 * rest == N ? c : std::sin(angle);
    if (above_eighth)
        std::swap(c, s);
    const double cosines[4] = {c, -s, -c, s};
    const double sines[4] = {s, c, -s, -c};
    *cosine = cosines[quadrant];
    *sine = sines[quadrant];
}

} // namespace

int direct_transform(int N, const double* re, const double* im, double* out_re, double* out_im) {
    const auto count = static_cast<std::size_t>(N);
    const DoubleBuffer cosines = allocate_doubles(count);
    const DoubleBuffer sines = allocate_doubles(count);
    if (!cosines || !sines)
        return 0;
    for (int k = 0; k < N; ++k)
        circle_point(k, N, &cosines[k], &sines[k]);
    for (std::size_t m = 0; m < count; ++m) {
        double sum_re = 0.0;
        double sum_im = 0.0;
        std::size_t turn = 0; // m k mod N
        for (std::size_t k = 0; k < count; ++k) {
            sum_re += re[k] * cosines[turn] + im[k] * sines[turn];
            sum_im += im[k] * cosines[turn] - re[k] * sines[turn];
            turn += m;
            turn -= turn >= count ? count : 0;
        }
        out_re[m] = sum_re;
        out_im[m] = sum_im;
    }
    return 1;
}

int write_spectrum_csv_files(const char* td_name, const char* fd_name, double acq_time) {
    Signals signals;
    std::FILE* const in = open_signal_file(signals);
    if (in == nullptr)
        return 0;
    int written = 0;
    if (signals.points > 0 && signals.count > 0) {
        const double dt = signals.points > 1 ? acq_time / (signals.points - 1) : 0.0;
        written = write_tables(in, signals, td_name, fd_name, dt);
    }
    std::fclose(in);
    return written;
}

int write_pv_wave_file(const char* name) {
    Signals signals;
    std::FILE* const in = open_signal_file(signals);
    if (in == nullptr)
        return 0;
    if (platform_same_file(name, "korsign.bin")) {
        std::fprintf(stderr, "%s: the output file is the signal file that is read\n", name);
        std::fclose(in);
        return 0;
    }
    std::FILE* const out = platform_open(name, "wb");
    if (out == nullptr) {
        std::perror("fopen(output)");
        std::fclose(in);
        return 0;
    }
    const std::int32_t header[256] = {3, 0, 0, 2, signals.points, signals.count, 0, 0, 1, 0, 0, 0, 0, 0, 2};
    bool sound = std::fwrite(header, sizeof(header[0]), 256, out) == 256;
    const std::int64_t doubles =
        2 * static_cast<std::int64_t>(std::max(signals.points, 0)) * std::max(signals.count, 0);
    double value = 0.0;
    for (std::int64_t k = 0; sound && k < doubles && std::fread(&value, sizeof value, 1, in) == 1; ++k)
        sound = std::fwrite(&value, sizeof value, 1, out) == 1;
    if (std::ferror(in))
        std::perror("korsign.bin");
    std::fclose(in);
    return close_written(out, name);
}

int WriteGnuplotSpectrumScript(const char* gp_name, const char* csv_name, const char* plot_title) {
    std::FILE* const out = platform_open(gp_name, "w");
    if (out == nullptr) {
        std::perror(gp_name);
        return 0;
    }
    std::fprintf(out, "set terminal qt\n"
                      "set datafile separator \",\"\n"
                      "set key right top\n"
                      "set grid\n"
                      "set xlabel \"Frequency (Hz)\"\n"
                      "set ylabel \"Intensity\"\n"
                      "set xrange [*:*] reverse\n");
    std::fprintf(out, "set title \"%s\"\n", plot_title != nullptr ? plot_title : "KOR Spectrum");
    std::fprintf(out,
                 "plot \"%s\" using 1:3 with lines title \"re\", \\\n"
                 "     \"%s\" using 1:9 with lines title \"mag\"\n",
                 csv_name, csv_name);
    std::fprintf(out, "pause mouse close\n");
    return close_written(out, gp_name);
}

} // namespace kor
