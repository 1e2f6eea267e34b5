#include "support/tree.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include <unistd.h>

namespace fs = std::filesystem;

extern "C" ssize_t __real_readlink(const char* path, char* out, std::size_t size);

/// Linked in the place of readlink: the executable is said to lie in the tree.
extern "C" ssize_t __wrap_readlink(const char* path, char* out, std::size_t size) {
    if (std::strcmp(path, "/proc/self/exe") != 0)
        return __real_readlink(path, out, size);
    const std::string name = kor_fuzz::tree() + "/build/kor";
    const std::size_t length = std::min(name.size(), size);
    std::memcpy(out, name.data(), length);
    return static_cast<ssize_t>(length);
}

namespace kor_fuzz {
namespace {

constexpr char memory_file_system[] = "/dev/shm";

std::string& root() {
    static std::string path;
    return path;
}

void remove_tree() {
    std::error_code ignored;
    fs::current_path("/", ignored);
    fs::remove_all(root(), ignored);
}

fs::path folder_of_trees() {
    return access(memory_file_system, W_OK) == 0 ? fs::path(memory_file_system) : fs::temp_directory_path();
}

std::string waveform(std::initializer_list<double> samples) {
    const std::vector<double> values(samples);
    return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(double)};
}

std::string repeated_sample(double value, int count) {
    std::string bytes;
    for (int k = 0; k < count; ++k)
        bytes += waveform({value});
    return bytes;
}

std::string model_text(const std::string& name, const char* grid) {
    return "format_version: 1\nmodel_name: " + name +
           "\nspin_system_file: ../spin-systems/pair.korspin\nsequence_file: ../sequences/" + name + "/" +
           name + ".korseq\n" + grid + "result_file: " + name + ".bin\n";
}

std::string sector_text(int k, const char* values) {
    static const char* const keys[] = {"type",      "timepoints", "evolpoints", "duration_s",
                                       "pulsefile", "statoff_hz", "remark"};
    std::string text;
    for (const char* key : keys) {
        const std::size_t length = std::strcspn(values, "|");
        text += std::string("sector_") + key + ": " + std::to_string(k) + " " + std::string(values, length) +
                "\n";
        values += length + (values[length] == '|' ? 1 : 0);
    }
    return text;
}

} // namespace

const std::string& tree() {
    if (root().empty()) {
        std::string name = (folder_of_trees() / "kor-fuzz-XXXXXX").string();
        if (!mkdtemp(name.data()))
            std::abort();
        root() = fs::canonical(name);
        std::atexit(remove_tree);
        fs::create_directories(root() + "/build/runtime");
        fs::current_path(root() + "/build/runtime");
    }
    return root();
}

void write_file(const std::string& name, std::string_view bytes) {
    const fs::path file = tree() + "/" + name;
    std::FILE* out = std::fopen(file.c_str(), "wb");
    if (!out) {
        fs::create_directories(file.parent_path());
        out = std::fopen(file.c_str(), "wb");
    }
    if (!out || std::fwrite(bytes.data(), 1, bytes.size(), out) != bytes.size() || std::fclose(out) != 0)
        std::abort();
}

std::string read_file(const std::string& name) {
    std::ifstream in(tree() + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void clear_tree() {
    const fs::path work = tree() + "/build/runtime";
    for (const fs::path& folder : {fs::path(tree()), fs::path(tree()) / "build", work})
        for (const fs::directory_entry& entry : fs::directory_iterator(folder))
            if (entry.path() != work && entry.path() != work.parent_path())
                fs::remove_all(entry.path());
    fs::current_path(work);
}

void write_small_models() {
    const std::string points = "x0_cm: -1\ny0_cm: 0\nz0_cm: 0\ndx_cm: 1\ndy_cm: 0\ndz_cm: 0\n";
    write_file("spin-systems/pair.korspin",
               "format_version: 1\nnspins: 2\nspin_quantum_numbers: 1 1\nrelative_intensities: 1 1\n"
               "resonance_offsets_hz: 40 -25\ncoupling_mode: 1\njcoupling_hz: 1 2 7\n");
    write_file("models/slice.kormodel", model_text("slice", ("ndx: 3\nndy: 1\nndz: 1\n" + points).c_str()));
    write_file("sequences/slice/slice.korseq", "format_version: 1\nsequence_type: 1\nnumber_of_sectors: 2\n" +
                                                   sector_text(1, "1|1|1|1e-05|waveforms/pulse|0|90 x") +
                                                   sector_text(2, "1|4|1|0.004|adc|0|adc"));
    write_file("sequences/slice/waveforms/pulse",
               waveform({157079.63267948964, 0, 12566.370614359172, 0, 0}));
    write_file("sequences/slice/waveforms/adc", std::string(160, '\0'));
    write_file("models/cosy.kormodel", model_text("cosy", ("ndx: 1\nndy: 1\nndz: 1\n" + points).c_str()));
    write_file(
        "sequences/cosy/cosy.korseq",
        "format_version: 1\nsequence_type: 2\nnumber_of_sectors: 4\n" +
            sector_text(
                1,
                "1|1|1|1e-05|waveforms/pulse|0|90 x, optimizeRf[targetMode=product, productOperator=IxSz]") +
            sector_text(2, "2|1|4|0.005|waveforms/wait|0|t1") +
            sector_text(3, "1|1|4|1e-05|waveforms/pulse|0|90 x") +
            sector_text(4, "1|4|4|0.02|waveforms/adc|0|adc"));
    write_file("sequences/cosy/waveforms/pulse", waveform({157079.63267948964, 0}));
    write_file("sequences/cosy/waveforms/wait", waveform({0, 0}));
    write_file("sequences/cosy/waveforms/adc", std::string(64, '\0'));
    write_file("models/fid.kormodel", model_text("fid", ("ndx: 1\nndy: 1\nndz: 1\n" + points).c_str()));
    write_file(
        "sequences/fid/fid.korseq",
        "format_version: 1\nsequence_type: 2\nnumber_of_sectors: 2\n" +
            sector_text(1,
                        "1|16|1|0.001|waveforms/pulse|0|optimizeRf[targetMode=product, productOperator=Ix]") +
            sector_text(2, "1|8|1|0.1|waveforms/adc|0|adc"));
    write_file("sequences/fid/waveforms/pulse",
               repeated_sample(1570.7963267948966, 16) + std::string(16 * sizeof(double), '\0'));
    write_file("sequences/fid/waveforms/adc", std::string(128, '\0'));
}

Answers::Answers(const std::string& answers) {
    write_file("answers", answers);
    if (!std::freopen((tree() + "/answers").c_str(), "r", stdin))
        std::abort();
}

Answers::~Answers() {
    if (!std::freopen("/dev/null", "r", stdin))
        std::abort();
}

} // namespace kor_fuzz
