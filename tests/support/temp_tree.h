// A temporary folder that a test works in.
#pragma once

#include "support/plain_text.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kor_test {

/// Changes the working directory for the rest of the scope.
class ScopedChdir {
public:
    explicit ScopedChdir(const std::filesystem::path& dir);
    ~ScopedChdir();
    ScopedChdir(const ScopedChdir&) = delete;
    ScopedChdir& operator=(const ScopedChdir&) = delete;

private:
    std::filesystem::path before_;
};

/// Where files cost no disk access, for tests of thousands of runs; the temporary folder where there is none.
std::filesystem::path memory_folder();

/// A unique empty folder: the working directory of the test while the object lives, removed with everything
/// in it at its end. Names are taken below the folder; missing folders on the way to a written file are made.
class TempTree {
public:
    TempTree();
    explicit TempTree(const std::filesystem::path& parent);
    ~TempTree();
    TempTree(const TempTree&) = delete;
    TempTree& operator=(const TempTree&) = delete;

    const std::filesystem::path& root() const { return root_; }
    /// Full name of the folder, or of a file or folder in it; '/' separates folders on every system.
    std::string path() const { return plain_name(root_); }
    std::string path(const std::string& name) const { return path() + '/' + name; }

    /// Text and bytes alike: written and read to the byte. A file that cannot be read throws.
    void write(const std::string& name, const std::string& bytes) const;
    std::string read(const std::string& name) const;
    void make_folder(const std::string& name) const;
    bool exists(const std::string& name) const;
    /// The names in a folder, sorted; none when it does not exist.
    std::vector<std::string> names(const std::string& folder = "") const;

private:
    std::filesystem::path below(const std::string& name) const { return root_ / file_name(name); }

    std::filesystem::path root_;
    std::filesystem::path before_;
};

/// The bytes of a file, given by its full name; one that cannot be read throws std::runtime_error.
std::string read_file(const std::filesystem::path& file);
void write_file(const std::filesystem::path& file, const std::string& bytes);
/// The text of a file that the built program wrote: its lines end in '\n'.
std::string read_text(const std::filesystem::path& file);

/// The memory of plain values as bytes, for binary files.
template <typename T> std::string bytes_of(const std::vector<T>& values) {
    return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T)};
}

} // namespace kor_test
