#include "support/scratch_streams.h"

#include "support/temp_tree.h"

#include <filesystem>
#include <stdexcept>

#include <windows.h>

namespace kor_test {
namespace {

std::string new_file_name() {
    char name[MAX_PATH];
    const std::string folder = std::filesystem::temp_directory_path().string();
    if (GetTempFileNameA(folder.c_str(), "kor", 0, name) == 0)
        throw std::runtime_error("no temporary file");
    return name;
}

} // namespace

// D: the file is removed when it is closed.
std::FILE* open_scratch_file() {
    return std::fopen(new_file_name().c_str(), "w+bD");
}

void set_standard_input(const std::string& text) {
    const std::string name = new_file_name();
    write_file(name, text);
    if (!std::freopen(name.c_str(), "rD", stdin))
        throw std::runtime_error("cannot replace standard input");
}

} // namespace kor_test
