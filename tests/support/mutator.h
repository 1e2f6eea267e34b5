// Damages valid files the way disks, editors and people do: texts of model sets and series, and binary files.
#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace kor_test {

/// What a damaged line may say instead of its value: numbers at and beyond every limit, texts, paths, blanks.
extern const std::vector<std::string> odd_values;

class Mutator {
public:
    explicit Mutator(unsigned seed) : engine_(seed) {}

    /// 0 .. count - 1
    std::size_t below(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(engine_);
    }

    /// One damage to a text of lines: cut, bytes changed or inserted (zero bytes and non-ASCII letters among
    /// them), lines dropped, repeated, swapped or far too long, other line ends, words swapped, values and
    /// keys exchanged.
    std::string damaged_text(std::string text);
    /// One damage to a binary file: cut, bytes changed, inserted or repeated, a 32-bit integer or a double at
    /// its place replaced by one at a limit.
    std::string damaged_bytes(std::string bytes);

private:
    std::string truncated(std::string text);
    std::string bytes_changed(std::string text);
    std::string bytes_inserted(std::string text);
    std::string bytes_repeated(std::string text);
    std::string line_dropped(std::string text);
    std::string line_repeated(std::string text);
    std::string lines_swapped(std::string text);
    std::string line_lengthened(std::string text);
    std::string line_ends_changed(std::string text);
    std::string words_swapped(std::string text);
    std::string letters_inserted(std::string text);
    std::string value_changed(std::string text);
    std::string keys_swapped(std::string text);
    std::string last_word_changed(std::string text);
    std::string integer_changed(std::string bytes);
    std::string double_changed(std::string bytes);

    std::mt19937 engine_;
};

} // namespace kor_test
