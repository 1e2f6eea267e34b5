#include "kor/expectation_values.h"

#include "binaryfilehandling.h"
#include "kor/product_operators.h"
#include "kor/runtime_state.h"
#include "kor/sequence_driver.h"
#include "kor/spatial_grid.h"
#include "kor/spin_system.h"
#include "korplatform.h"
#include "observablespectrumcalculator/signal_file.h"
#include "wholefile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace kor {

namespace {

constexpr char single_voxel_file[] = "dm.bin";

bool has_spin_system() {
    return g_runtime.spinsystemdefined != 0 && g_runtime.Nspins >= 1;
}

// Opens a file; on failure the system error text behind `tag`.
std::FILE* open_or_report(const char* path, const char* mode, const char* tag) {
    std::FILE* file = platform_open(path ? path : "", mode);
    if (!file)
        std::perror(tag);
    return file;
}

// Whether the output would take the place of the states that it comes from; said on standard error.
bool replaces(const char* density_path, const char* output_path, const char* mode) {
    if (!output_path || !platform_same_file(density_path, output_path))
        return false;
    std::fprintf(stderr, "%s: the output file %s is the input density file.\n", mode, output_path);
    return true;
}

// The reason of a read that failed; nothing where the file only ends.
void report_failed_read(std::FILE* density, const char* path) {
    if (std::ferror(density))
        std::perror(path);
}

// Header of a density-matrix file; fields stay 0 when it cannot be read.
struct DensityHeader {
    int type, n, points;
    bool complete;
};

DensityHeader read_density_header(std::FILE* file) {
    DensityHeader header{};
    header.complete = ReadBinFileHeader_status(file, &header.type, &header.n, &header.points) == BINFH_OK;
    return header;
}

bool holds_current_density_matrices(const DensityHeader& header) {
    return header.complete && header.type == 0 && header.n == g_runtime.n;
}

// ---- expectation profile

bool write_profile_line(std::FILE* out, int point, const Complex2& value) {
    double x_cm = 0.0, y_cm = 0.0, z_cm = 0.0;
    voxel_coordinates(point - 1, &x_cm, &y_cm, &z_cm);
    return std::fprintf(out, "%d,%.17g,%.17g,%.17g,%.17g,%.17g\n", point, x_cm, y_cm, z_cm, value[1],
                        value[2]) > 0;
}

/// A density file that is read, with its name for messages.
struct DensityInput {
    std::FILE* file;
    const char* path;
};

enum class ProfileResult { written, truncated_input, write_failed };

// The header line and one line per matrix.
ProfileResult write_profile_lines(const DensityInput& density, int points, const CMatrix& op,
                                  std::FILE* out) {
    static CMatrix rho;
    if (std::fputs("# index,x_cm,y_cm,z_cm,expectation_re,expectation_im\n", out) < 0)
        return ProfileResult::write_failed;
    for (int point = 1; point <= points; ++point) {
        if (!read_cmatrix(density.file, g_runtime.n, rho)) {
            report_failed_read(density.file, density.path);
            std::fprintf(stderr, "Expectation profile: truncated density matrix at point %d.\n", point);
            return ProfileResult::truncated_input;
        }
        Complex2 value;
        ExpectationValue(g_runtime.n, op, rho, value);
        if (!write_profile_line(out, point, value))
            return ProfileResult::write_failed;
    }
    return ProfileResult::written;
}

bool write_profile_file(const DensityInput& density, int points, const CMatrix& op, const char* output_path) {
    WholeFile out;
    if (!open_whole_file(output_path, "w", out)) {
        std::perror("Expectation profile: output file");
        return false;
    }
    const ProfileResult result = write_profile_lines(density, points, op, out.file);
    // What a truncated input gave is left to the user.
    const bool kept = keep_whole_file(out);
    if (result == ProfileResult::truncated_input)
        return false;
    if (result == ProfileResult::write_failed || !kept) {
        std::fprintf(stderr, "Expectation profile: write error on output file %s: %s\n", output_path,
                     std::strerror(errno));
        return false;
    }
    return true;
}

// ---- voxel signal

// The receiver settings of an acquisition sector.
struct Receiver {
    int samples;
    double acquisition_time_s;
    double offset_hz;
};

// Those of the first acquisition sector; zeros when there is none.
Receiver find_receiver() {
    for (int k = 1; k <= g_runtime.nos; ++k)
        if (kor_is_acquisition_remark(g_runtime.remarks[k]))
            return {g_runtime.noti[k], g_runtime.sectdur[k], g_runtime.statoff[k]};
    return {};
}

bool is_usable(const Receiver& receiver) {
    return receiver.samples > 1 && kor_is_power_of_two_int(receiver.samples) &&
           receiver.acquisition_time_s > 0.0;
}

// Reads the matrices 1..point_index in order; rho keeps the last.
bool read_voxel_matrix(const DensityInput& density, int point_index, CMatrix& rho) {
    const DensityHeader header = read_density_header(density.file);
    if (!holds_current_density_matrices(header) || point_index < 1 || point_index > header.points) {
        std::fprintf(stderr,
                     "Voxel signal: incompatible density file or point index (type=%d n=%d points=%d "
                     "requested=%d expected_n=%d).\n",
                     header.type, header.n, header.points, point_index, g_runtime.n);
        return false;
    }
    for (int point = 1; point <= point_index; ++point)
        if (!read_cmatrix(density.file, g_runtime.n, rho)) {
            report_failed_read(density.file, density.path);
            std::fprintf(stderr, "Voxel signal: truncated density matrix at point %d.\n", point);
            return false;
        }
    return true;
}

bool load_voxel_matrix(const char* density_path, int point_index, CMatrix& rho) {
    std::FILE* density = open_or_report(density_path, "rb", "Voxel signal: input density file");
    if (!density)
        return false;
    const bool loaded = read_voxel_matrix({density, density_path}, point_index, rho);
    std::fclose(density);
    return loaded;
}

// Where the temporary file stands for a while, the density file itself may lie: it makes room. `aside` is its
// name meanwhile, empty when it lies elsewhere.
bool set_aside(const char* density_path, std::string& aside) {
    if (!platform_same_file(density_path, single_voxel_file))
        return true;
    aside = std::string(single_voxel_file) + "." + std::to_string(platform_process_id()) + ".aside";
    if (platform_rename(single_voxel_file, aside.c_str()) == 0)
        return true;
    std::perror(single_voxel_file);
    return false;
}

void put_back(const std::string& aside) {
    if (!aside.empty() && platform_rename(aside.c_str(), single_voxel_file) != 0)
        std::perror(aside.c_str());
}

// The signal generator reads its matrices from "dm.bin": one with this matrix alone.
bool write_single_voxel_file(const CMatrix& rho) {
    std::FILE* file = platform_open(single_voxel_file, "wb");
    if (!file || WriteBinFileHeader_status(file, 0, g_runtime.n, 1) != BINFH_OK) {
        if (file) {
            std::fclose(file);
            platform_remove(single_voxel_file);
        }
        std::fputs("Voxel signal: cannot create temporary single-voxel density file.\n", stderr);
        return false;
    }
    const bool written = write_cmatrix(file, g_runtime.n, rho) != 0;
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed) {
        platform_remove(single_voxel_file);
        std::fputs("Voxel signal: cannot write temporary density matrix.\n", stderr);
        return false;
    }
    return true;
}

// Returns the acquisition time, 0 when no signal was generated. rho is the generator's work matrix.
double generate_signal(const Receiver& receiver, const char* output_path, CMatrix& rho) {
    RuntimeState& s = g_runtime;
    CMatAdd(s.n, s.Izee, s.Icoup, s.Istat);
    make_transverse_totals(1);
    const double acquisition_time_s = SeparateSpectra_GenerateSignalWithParams(
        &s.n, receiver.samples, receiver.acquisition_time_s, receiver.offset_hz, output_path, rho, s.Istat,
        s.Ixtot, s.Iytot, s.Iztot, s.ket, s.Ilist);
    make_transverse_totals(0);
    platform_remove(single_voxel_file);
    return acquisition_time_s;
}

// ---- series of values

bool write_series_value(std::FILE* out, int dw, const Complex2& value, ExpectationSeriesFormat format) {
    if (format == ExpectationSeriesFormat::text)
        return std::fprintf(out, "%5d   %.18g   %.18g\n", dw, value[1], value[2]) > 0;
    return std::fwrite(&value.part[1], sizeof value.part[1], 1, out) == 1;
}

// Prints the message and returns false when a row is missing.
bool read_series_matrix(std::FILE* density, int n, int dw, CMatrix& rho) {
    for (int row = 1; row <= n; ++row)
        if (!read_cmatrix_row(density, n, rho, row)) {
            std::fprintf(stderr, ">>> READ BINARY FILE ERROR <<< (dw=%d row=%d)\n", dw, row);
            return false;
        }
    return true;
}

} // namespace

int write_expectation_series(std::FILE* density, int n, int count, const CMatrix& op, std::FILE* out,
                             ExpectationSeriesFormat format) {
    static CMatrix rho;
    if (format == ExpectationSeriesFormat::text)
        std::fputs("# index    expectation_re    expectation_im\n", out);
    for (int dw = 1; dw <= count; ++dw) {
        if (!read_series_matrix(density, n, dw, rho))
            return 0;
        Complex2 value;
        ExpectationValue(n, op, rho, value);
        if (!write_series_value(out, dw, value, format)) {
            std::fprintf(stderr, ">>> WRITE BINARY FILE ERROR <<< (dw=%d)\n", dw);
            return 0;
        }
    }
    return 1;
}

int KORWriteExpectationProfile(const char* density_path, const char* operator_expression,
                               const char* output_path) {
    static CMatrix op;
    if (!has_spin_system()) {
        std::fputs("Expectation profile: no prepared spin system.\n", stderr);
        return 0;
    }
    const char* expression = operator_expression ? operator_expression : "";
    if (!create_operator_expression_spinhalf(g_runtime.n, g_runtime.Nspins, g_runtime.Ilist, g_runtime.ket,
                                             expression, op)) {
        std::fprintf(stderr, "Expectation profile: invalid operator expression '%s'.\n", expression);
        return 0;
    }
    std::FILE* density = open_or_report(density_path, "rb", "Expectation profile: input density file");
    if (!density)
        return 0;
    if (replaces(density_path, output_path, "Expectation profile")) {
        std::fclose(density);
        return 0;
    }
    const DensityHeader header = read_density_header(density);
    bool written = false;
    if (holds_current_density_matrices(header) && header.points >= 1)
        written = write_profile_file({density, density_path}, header.points, op, output_path);
    else
        std::fprintf(stderr,
                     "Expectation profile: incompatible density header type=%d n=%d points=%d; expected "
                     "type=0 n=%d.\n",
                     header.type, header.n, header.points, g_runtime.n);
    std::fclose(density);
    if (!written)
        return 0;
    std::printf("Wrote expectation profile for %s to %s\n", expression, output_path);
    return 1;
}

int KORWriteVoxelSignal(const char* density_path, int point_index, const char* output_path) {
    static CMatrix rho;
    if (!has_spin_system()) {
        std::fputs("Voxel signal: no prepared spin system.\n", stderr);
        return 0;
    }
    const Receiver receiver = find_receiver();
    if (!is_usable(receiver)) {
        std::fputs("Voxel signal: spatial sequence has no valid power-of-two ADC sector.\n", stderr);
        return 0;
    }
    if (!load_voxel_matrix(density_path, point_index, rho) ||
        replaces(density_path, output_path, "Voxel signal"))
        return 0;

    std::string aside;
    if (!set_aside(density_path, aside))
        return 0;
    const bool prepared = write_single_voxel_file(rho);
    const double acquisition_time_s = prepared ? generate_signal(receiver, output_path, rho) : 0.0;
    put_back(aside);
    if (!prepared)
        return 0;
    if (!(acquisition_time_s > 0.0)) {
        std::fputs("Voxel signal: receiver signal generation failed.\n", stderr);
        return 0;
    }
    std::printf("Wrote voxel %d receiver signal to %s (samples=%d acquisition=%.15g s).\n", point_index,
                output_path, receiver.samples, acquisition_time_s);
    return 1;
}

} // namespace kor
