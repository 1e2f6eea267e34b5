// Damaged model sets: each is refused with a message or gives a model that passes every check.
#include "model_set.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>

using namespace kor;
using namespace kor_test;

namespace {

/// A set with two sectors of the 1D/2D family, so that most keys stand twice.
const std::string nmr_sequence_text = "format_version: 1\n"
                                      "sequence_type: 2\n"
                                      "number_of_sectors: 2\n"
                                      "sector_type: 1 1\n"
                                      "sector_timepoints: 1 8\n"
                                      "sector_evolpoints: 1 1\n"
                                      "sector_duration_s: 1 1e-05\n"
                                      "sector_pulsefile: 1 waveforms/wave1-excitation\n"
                                      "sector_statoff_hz: 1 -12.5\n"
                                      "sector_remark: 1 test\n"
                                      "sector_type: 2 2\n"
                                      "sector_timepoints: 2 8\n"
                                      "sector_evolpoints: 2 4\n"
                                      "sector_duration_s: 2 0.5\n"
                                      "sector_pulsefile: 2 wave1-excitation\n"
                                      "sector_statoff_hz: 2 0\n"
                                      "sector_remark: 2 adc\n";

const std::string values[] = {"0",
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

class Mutator {
public:
    explicit Mutator(unsigned seed) : engine_(seed) {}

    std::size_t below(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(engine_);
    }

    std::string damage(std::string text) {
        using Damage = std::string (Mutator::*)(std::string);
        static constexpr Damage kinds[] = {
            &Mutator::truncated,     &Mutator::bytes_changed, &Mutator::bytes_inserted,
            &Mutator::line_dropped,  &Mutator::line_repeated, &Mutator::lines_swapped,
            &Mutator::value_changed, &Mutator::value_changed, &Mutator::value_changed,
            &Mutator::keys_swapped,  &Mutator::number_changed};
        return (this->*kinds[below(std::size(kinds))])(std::move(text));
    }

private:
    static std::vector<std::string> split(const std::string& text) {
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

    static std::string joined(const std::vector<std::string>& lines) {
        std::string text;
        for (const std::string& line : lines)
            text += line;
        return text;
    }

    std::string truncated(std::string text) { return text.substr(0, below(text.size() + 1)); }

    std::string bytes_changed(std::string text) {
        for (std::size_t left = 1 + below(4); left > 0 && !text.empty(); --left)
            text[below(text.size())] = static_cast<char>(below(256));
        return text;
    }

    std::string bytes_inserted(std::string text) {
        std::string bytes;
        for (std::size_t left = 1 + below(40); left > 0; --left)
            bytes += static_cast<char>(below(256));
        return text.insert(below(text.size() + 1), bytes);
    }

    std::string line_dropped(std::string text) {
        std::vector<std::string> lines = split(text);
        lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(below(lines.size())));
        return joined(lines);
    }

    std::string line_repeated(std::string text) {
        std::vector<std::string> lines = split(text);
        const std::string line = lines[below(lines.size())];
        lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(below(lines.size())), line);
        return joined(lines);
    }

    std::string lines_swapped(std::string text) {
        std::vector<std::string> lines = split(text);
        std::swap(lines[below(lines.size())], lines[below(lines.size())]);
        return joined(lines);
    }

    std::string value_changed(std::string text) {
        std::vector<std::string> lines = split(text);
        std::string& line = lines[below(lines.size())];
        line = line.substr(0, line.find(':')) + ": " + values[below(std::size(values))] + "\n";
        return joined(lines);
    }

    std::string keys_swapped(std::string text) {
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

    /// One word of one line becomes a value of the list.
    std::string number_changed(std::string text) {
        std::vector<std::string> lines = split(text);
        std::string& line = lines[below(lines.size())];
        const std::size_t word = line.rfind(' ');
        if (word != std::string::npos)
            line = line.substr(0, word + 1) + values[below(std::size(values))] + "\n";
        return joined(lines);
    }

    std::mt19937 engine_;
};

/// Loads the set; a refusal has a message, a loaded model passes every check.
void expect_refused_or_valid(const ModelSet& set, int& refused) {
    static Model model;
    const Outcome outcome = load_model(set.model(), model);
    if (outcome.status == KOR_MODEL_OK) {
        EXPECT_EQ(outcome.message, "");
        EXPECT_EQ(validate_model(model), ok);
        return;
    }
    ++refused;
    EXPECT_NE(outcome.message, "");
    EXPECT_GE(outcome.status, KOR_MODEL_ERR_NULLPTR);
    EXPECT_LE(outcome.status, KOR_MODEL_ERR_INCOMPATIBLE);
}

void write_set(const ModelSet& set, const std::string (&texts)[3]) {
    write_file(set.model(), texts[0]);
    write_file(set.spin(), texts[1]);
    write_file(set.sequence(), texts[2]);
}

const std::string valid_texts[3] = {valid_model_text, valid_spin_text, nmr_sequence_text};

} // namespace

TEST(MalformedModels, TheUndamagedSetLoads) {
    const ModelSet set;
    write_set(set, valid_texts);
    Model model;
    EXPECT_EQ(load_model(set.model(), model), ok);
}

TEST(MalformedModels, ADamagedSetIsRefusedOrValid) {
    constexpr unsigned seed = 19840403;
    constexpr int sets = 1500;
    std::printf("seed %u\n", seed);
    const ModelSet set;
    Mutator mutator(seed);
    int refused = 0;
    for (int i = 0; i < sets && !testing::Test::HasFailure(); ++i) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", set " + std::to_string(i));
        std::string texts[3] = {valid_texts[0], valid_texts[1], valid_texts[2]};
        for (std::size_t left = 1 + mutator.below(3); left > 0; --left) {
            std::string& text = texts[mutator.below(3)];
            text = mutator.damage(text);
        }
        write_set(set, texts);
        expect_refused_or_valid(set, refused);
    }
    // Most damages are fatal, but not all of them: both outcomes are covered.
    EXPECT_GT(refused, sets / 2);
    EXPECT_LT(refused, sets);
}

TEST(MalformedModels, EveryValueOfEveryLine) {
    const ModelSet set;
    int refused = 0;
    for (int file = 0; file < 3; ++file) {
        const std::string& text = valid_texts[file];
        for (std::size_t start = 0; start < text.size(); start = text.find('\n', start) + 1) {
            const std::size_t colon = text.find(':', start);
            const std::size_t end = text.find('\n', start);
            if (colon == std::string::npos || colon > end)
                continue;
            for (const std::string& value : values) {
                SCOPED_TRACE(text.substr(start, colon - start) + ": " + value.substr(0, 40));
                std::string texts[3] = {valid_texts[0], valid_texts[1], valid_texts[2]};
                texts[file].replace(colon + 1, end - colon - 1, value);
                write_set(set, texts);
                expect_refused_or_valid(set, refused);
            }
        }
    }
    EXPECT_GT(refused, 1000);
}

TEST(MalformedModels, MissingFiles) {
    int refused = 0;
    for (int missing = 0; missing < 4; ++missing) {
        const ModelSet set;
        const std::string files[] = {set.model(), set.spin(), set.sequence(), set.wave()};
        std::filesystem::remove(files[missing]);
        expect_refused_or_valid(set, refused);
        std::filesystem::create_directory(files[missing]);
        expect_refused_or_valid(set, refused);
    }
    EXPECT_EQ(refused, 8);
}

TEST(MalformedModels, NoFileAtAll) {
    const ModelSet set;
    int refused = 0;
    for (const std::string& content : {std::string(), std::string("\0\0\0", 3), std::string(100000, 'x'),
                                       std::string(100000, '\n'), std::string(100000, '\xff'),
                                       std::string("\xef\xbb\xbf"
                                                   "format_version: 1\n")}) {
        write_file(set.model(), content);
        expect_refused_or_valid(set, refused);
    }
    EXPECT_EQ(refused, 6);
}
