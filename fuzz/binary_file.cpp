// A binary data file, header and rows, through every reader of density matrices: dimension 4, three voxels.
#include "binaryfilehandling.h"
#include "kor/density_file.h"
#include "kor/expectation_values.h"
#include "kor/runtime_state.h"
#include "kormodel/activation.h"
#include "observablespectrumcalculator/signal_file.h"
#include "support/input.h"
#include "support/tree.h"

#include <cstring>

using namespace kor;

namespace {

constexpr int voxels = 3;
constexpr DensityReport report = {"Rotate3D", false};

void activate_small_model() {
    kor_fuzz::write_small_models();
    char message[KOR_MESSAGE_SIZE];
    const std::string model = kor_fuzz::tree() + "/models/slice.kormodel";
    kor_fuzz::require(KORModel_LoadCurrentLegacyStateFromText(model.c_str(), message, sizeof message) ==
                          KOR_MODEL_OK,
                      "the small model loads");
}

/// The header that stands in the bytes, as the format says; false when they are fewer than twelve.
bool header_of(const std::string& bytes, int (&header)[3]) {
    if (bytes.size() < sizeof header)
        return false;
    std::memcpy(header, bytes.data(), sizeof header);
    return true;
}

bool holds_matrices(const std::string& bytes, int count) {
    const auto n = static_cast<std::size_t>(g_runtime.n);
    return bytes.size() >= 12 + 16 * n * n * static_cast<std::size_t>(count);
}

void check_header_and_rows(const std::string& bytes) {
    static CMatrix matrix;
    std::FILE* file = std::fopen("dm.bin", "rb");
    int header[3] = {-7, -7, -7};
    int expected[3] = {-7, -7, -7};
    const bool whole = header_of(bytes, expected);
    kor_fuzz::require(ReadBinFileHeader_status(file, &header[0], &header[1], &header[2]) ==
                          (whole ? BINFH_OK : BINFH_ERR_IO),
                      "a header is read when, and only when, it is whole");
    kor_fuzz::require(std::memcmp(header, expected, sizeof header) == 0,
                      "the header says what the bytes say");
    for (int row = 1; row <= 5; ++row)
        read_cmatrix_row(file, header[1], matrix, row);
    read_matrix_rows(file, header[1], header[2], matrix);
    std::fclose(file);
}

void check_copies(const std::string& bytes) {
    kor_fuzz::require(copy_file_binary("dm.bin", "copy.bin") == BINFH_OK, "a file can be copied");
    kor_fuzz::require(kor_fuzz::read_file("build/runtime/copy.bin") == bytes, "a copy has the same bytes");
    kor_fuzz::require(copy_density_file("dm.bin", "copy.bin") == 1, "a result can be published");
    kor_fuzz::require(kor_fuzz::read_file("build/runtime/copy.bin") == bytes, "a result has the same bytes");
}

void check_read_out(const std::string& bytes) {
    int header[3];
    const bool fits =
        header_of(bytes, header) && header[0] == 0 && header[1] == g_runtime.n && header[2] >= 1;
    const int profile = KORWriteExpectationProfile("dm.bin", "Ix + Sy", "profile.csv");
    kor_fuzz::require(
        profile == (fits && header[2] < 1000 && holds_matrices(bytes, header[2]) ? 1 : 0),
        "a profile is written when, and only when, the file holds the matrices that it promises");
    const std::string density = kor_fuzz::tree() + "/density.bin";
    kor_fuzz::write_file("density.bin", bytes);
    for (const int voxel : {1, 3}) {
        const int signal = KORWriteVoxelSignal(density.c_str(), voxel, "signal.bin");
        kor_fuzz::require(signal == (fits && header[2] >= voxel && holds_matrices(bytes, voxel) ? 1 : 0),
                          "a voxel's signal is written when, and only when, the file holds its matrix");
    }
}

void check_sector_files(const std::string& bytes) {
    static CMatrix matrix;
    kor_fuzz::write_file("build/runtime/dm.bin", bytes);
    int count = 0;
    if (std::FILE* file = open_density_matrices(g_runtime.n, &count)) {
        sum_density_matrices(file, g_runtime.n, count, matrix);
        std::fclose(file);
    }
    if (!resize_density_file(report, g_runtime.n, voxels, matrix))
        return;
    DensityStream stream;
    if (!open_density_stream(report, g_runtime.n, voxels, stream))
        return;
    bool whole = true;
    for (int v = 0; v < voxels && whole; ++v)
        whole = read_next_densities(report, stream, g_runtime.n, 1) == 1 &&
                write_next_densities(report, stream, g_runtime.n, 1);
    close_density_stream(report, stream);
    if (whole)
        kor_fuzz::require(kor_fuzz::read_file("build/runtime/store") ==
                              kor_fuzz::read_file("build/runtime/dm.bin").substr(0, 12 + 256 * voxels),
                          "a sector that does nothing keeps the bytes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool prepared = (activate_small_model(), true);
    static_cast<void>(prepared);
    const std::string bytes = kor_fuzz::Input(data, size).rest();
    kor_fuzz::write_file("build/runtime/dm.bin", bytes);
    check_header_and_rows(bytes);
    check_copies(bytes);
    check_read_out(bytes);
    check_sector_files(bytes);
    return 0;
}
