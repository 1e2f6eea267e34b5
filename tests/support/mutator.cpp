#include "support/mutator.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>

namespace kor_test {

const std::vector<std::string> odd_values = {"0",
                                             "-1",
                                             "9",
                                             "20",
                                             "21",
                                             "22",
                                             "2147483647",
                                             "2147483648",
                                             "-2147483649",
                                             "4294967297",
                                             "99999999999999999999",
                                             "1e308",
                                             "1e999",
                                             "-1e999",
                                             "1e-999",
                                             "nan",
                                             "-nan",
                                             "inf",
                                             "0x10",
                                             "1e",
                                             "--1",
                                             "",
                                             " ",
                                             "1 2 3 4 5 6 7 8 9 10",
                                             "%s%n%d",
                                             "..",
                                             "/",
                                             "\\",
                                             "C:\\",
                                             "//",
                                             "9 1 3",
                                             "21 1",
                                             "0 1",
                                             "-1 1",
                                             "2147483648 1",
                                             "1 2147483648",
                                             std::string(300, 'p'),
                                             std::string(3000, '7'),
                                             std::string("a\0b", 3)};

namespace {

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1);
        lines.push_back(text.substr(start, end + 1 - start));
        start = end + 1;
    }
    if (lines.empty())
        lines.push_back("\n");
    return lines;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line;
    return text;
}

struct Word {
    std::size_t start, length;
};

std::vector<Word> words_of(const std::string& text) {
    constexpr char blanks[] = " \t\r\n";
    std::vector<Word> words;
    for (std::size_t start = text.find_first_not_of(blanks); start != std::string::npos;) {
        const std::size_t end = std::min(text.find_first_of(blanks, start), text.size());
        words.push_back({start, end - start});
        start = text.find_first_not_of(blanks, end);
    }
    return words;
}

template <typename Number> void put(std::string& bytes, std::size_t index, Number value) {
    if ((index + 1) * sizeof value <= bytes.size())
        std::memcpy(bytes.data() + index * sizeof value, &value, sizeof value);
}

} // namespace

std::string Mutator::damaged_text(std::string text) {
    using Damage = std::string (Mutator::*)(std::string);
    static constexpr Damage kinds[] = {
        &Mutator::truncated,        &Mutator::bytes_changed,     &Mutator::bytes_inserted,
        &Mutator::line_dropped,     &Mutator::line_repeated,     &Mutator::lines_swapped,
        &Mutator::line_lengthened,  &Mutator::line_ends_changed, &Mutator::words_swapped,
        &Mutator::words_swapped,    &Mutator::letters_inserted,  &Mutator::value_changed,
        &Mutator::value_changed,    &Mutator::value_changed,     &Mutator::keys_swapped,
        &Mutator::last_word_changed};
    return (this->*kinds[below(std::size(kinds))])(std::move(text));
}

std::string Mutator::damaged_bytes(std::string bytes) {
    using Damage = std::string (Mutator::*)(std::string);
    static constexpr Damage kinds[] = {&Mutator::truncated,       &Mutator::bytes_changed,
                                       &Mutator::bytes_inserted,  &Mutator::bytes_repeated,
                                       &Mutator::integer_changed, &Mutator::double_changed};
    return (this->*kinds[below(std::size(kinds))])(std::move(bytes));
}

std::string Mutator::truncated(std::string text) {
    return text.substr(0, below(text.size() + 1));
}

std::string Mutator::bytes_changed(std::string text) {
    for (std::size_t left = 1 + below(4); left > 0 && !text.empty(); --left)
        text[below(text.size())] = static_cast<char>(below(256));
    return text;
}

std::string Mutator::bytes_inserted(std::string text) {
    std::string bytes;
    for (std::size_t left = 1 + below(40); left > 0; --left)
        bytes += static_cast<char>(below(256));
    return text.insert(below(text.size() + 1), bytes);
}

std::string Mutator::bytes_repeated(std::string text) {
    const std::size_t start = below(text.size() + 1);
    return text.insert(start, text.substr(start, below(text.size() + 1)));
}

std::string Mutator::line_dropped(std::string text) {
    std::vector<std::string> lines = split(text);
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(below(lines.size())));
    return joined(lines);
}

std::string Mutator::line_repeated(std::string text) {
    std::vector<std::string> lines = split(text);
    const std::string line = lines[below(lines.size())];
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(below(lines.size())), line);
    return joined(lines);
}

std::string Mutator::lines_swapped(std::string text) {
    std::vector<std::string> lines = split(text);
    std::swap(lines[below(lines.size())], lines[below(lines.size())]);
    return joined(lines);
}

std::string Mutator::line_lengthened(std::string text) {
    static constexpr std::size_t lengths[] = {255, 256, 511, 512, 1023, 1024, 2046, 2047, 2048, 6000};
    std::vector<std::string> lines = split(text);
    std::string& line = lines[below(lines.size())];
    const std::string filling(lengths[below(std::size(lengths))], " x7#"[below(4)]);
    line.insert(below(line.size()), filling);
    return joined(lines);
}

std::string Mutator::line_ends_changed(std::string text) {
    static const std::string ends[] = {"\r\n", "\r", "\n\n", "\n\r", "\f\n"};
    const std::string& end = ends[below(std::size(ends))];
    std::string changed;
    for (const char c : text)
        changed += c == '\n' ? end : std::string(1, c);
    return changed;
}

std::string Mutator::words_swapped(std::string text) {
    const std::vector<Word> words = words_of(text);
    if (words.empty())
        return text;
    Word first = words[below(words.size())];
    Word second = words[below(words.size())];
    if (first.start > second.start)
        std::swap(first, second);
    if (first.start == second.start)
        return text;
    const std::string moved = text.substr(first.start, first.length);
    const std::string other = text.substr(second.start, second.length);
    text.replace(second.start, second.length, moved);
    return text.replace(first.start, first.length, other);
}

std::string Mutator::letters_inserted(std::string text) {
    static const std::string letters[] = {
        "\xc3\xa9",     "\xe2\x82\xac",       "\xff", "\xef\xbb\xbf",     "\xc2\xa0",
        "\xe2\x88\x92", std::string(1, '\0'), "\x1a", "\xf0\x9f\x98\x80", "\x7f"};
    return text.insert(below(text.size() + 1), letters[below(std::size(letters))]);
}

std::string Mutator::value_changed(std::string text) {
    std::vector<std::string> lines = split(text);
    std::string& line = lines[below(lines.size())];
    line = line.substr(0, line.find(':')) + ": " + odd_values[below(odd_values.size())] + "\n";
    return joined(lines);
}

std::string Mutator::keys_swapped(std::string text) {
    std::vector<std::string> lines = split(text);
    std::string& a = lines[below(lines.size())];
    std::string& b = lines[below(lines.size())];
    const std::string key = a.substr(0, a.find(':'));
    const std::string other = b.substr(0, b.find(':'));
    a.replace(0, key.size(), other);
    if (&a != &b)
        b.replace(0, other.size(), key);
    return joined(lines);
}

std::string Mutator::last_word_changed(std::string text) {
    std::vector<std::string> lines = split(text);
    std::string& line = lines[below(lines.size())];
    const std::size_t blank = line.rfind(' ');
    if (blank != std::string::npos)
        line = line.substr(0, blank + 1) + odd_values[below(odd_values.size())] + "\n";
    return joined(lines);
}

std::string Mutator::integer_changed(std::string bytes) {
    static constexpr std::int32_t values[] = {0,
                                              1,
                                              2,
                                              3,
                                              4,
                                              -1,
                                              256,
                                              257,
                                              258,
                                              8192,
                                              65536,
                                              std::numeric_limits<std::int32_t>::max(),
                                              std::numeric_limits<std::int32_t>::min()};
    put(bytes, below(3), values[below(std::size(values))]);
    return bytes;
}

std::string Mutator::double_changed(std::string bytes) {
    using limits = std::numeric_limits<double>;
    static constexpr double values[] = {0.0,
                                        -0.0,
                                        1.0,
                                        limits::quiet_NaN(),
                                        limits::infinity(),
                                        -limits::infinity(),
                                        limits::max(),
                                        limits::lowest(),
                                        limits::denorm_min()};
    put(bytes, below(bytes.size() / sizeof(double) + 1), values[below(std::size(values))]);
    return bytes;
}

} // namespace kor_test
