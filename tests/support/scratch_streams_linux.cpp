#include "support/scratch_streams.h"

#include <filesystem>
#include <stdexcept>

#include <unistd.h>

namespace kor_test {

std::FILE* open_scratch_file() {
    return std::tmpfile();
}

void set_standard_input(const std::string& text) {
    std::string name = (std::filesystem::temp_directory_path() / "kor-answers-XXXXXX").string();
    const int file = mkstemp(name.data());
    const bool written =
        file >= 0 && write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(file);
    const bool opened = written && std::freopen(name.c_str(), "r", stdin);
    std::filesystem::remove(name);
    if (!opened)
        throw std::runtime_error("cannot replace standard input");
}

} // namespace kor_test
