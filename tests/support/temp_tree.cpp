#include "support/temp_tree.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace fs = std::filesystem;

namespace kor_test {

namespace {

fs::path make_unique_folder(const fs::path& parent) {
    std::random_device random;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const fs::path name = parent / ("kor-test-" + std::to_string(random()));
        if (fs::create_directory(name))
            return name;
    }
    throw std::runtime_error("no temporary folder");
}

} // namespace

ScopedChdir::ScopedChdir(const fs::path& dir) : before_(fs::current_path()) {
    fs::current_path(dir);
}

ScopedChdir::~ScopedChdir() {
    std::error_code ignored;
    fs::current_path(before_, ignored);
}

fs::path memory_folder() {
    const fs::path memory = "/dev/shm";
    std::error_code ignored;
    return fs::is_directory(memory, ignored) ? memory : fs::temp_directory_path();
}

TempTree::TempTree() : TempTree(fs::temp_directory_path()) {}

TempTree::TempTree(const fs::path& parent) : before_(fs::current_path()) {
    root_ = fs::canonical(make_unique_folder(parent));
    fs::current_path(root_);
}

TempTree::~TempTree() {
    std::error_code ignored;
    fs::current_path(before_, ignored);
    fs::remove_all(root_, ignored);
}

void TempTree::write(const std::string& name, const std::string& bytes) const {
    write_file(below(name), bytes);
}

std::string TempTree::read(const std::string& name) const {
    return read_file(below(name));
}

void TempTree::make_folder(const std::string& name) const {
    fs::create_directories(below(name));
}

bool TempTree::exists(const std::string& name) const {
    return fs::exists(below(name));
}

std::vector<std::string> TempTree::names(const std::string& folder) const {
    std::vector<std::string> found;
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(below(folder), ignored))
        found.push_back(plain_name(entry.path().filename()));
    std::sort(found.begin(), found.end());
    return found;
}

std::string read_file(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in || fs::is_directory(file))
        throw std::runtime_error("cannot read " + file.string());
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string read_text(const fs::path& file) {
    return with_plain_line_ends(read_file(file));
}

void write_file(const fs::path& file, const std::string& bytes) {
    if (file.has_parent_path())
        fs::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush())
        throw std::runtime_error("cannot write " + file.string());
}

} // namespace kor_test
