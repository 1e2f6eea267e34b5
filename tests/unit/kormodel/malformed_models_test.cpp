// Damaged model sets: each is refused with a message or gives a model that passes every check.
#include "model_set.h"
#include "support/mutator.h"

#include <cstdio>
#include <gtest/gtest.h>

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
            text = mutator.damaged_text(text);
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
            for (const std::string& value : odd_values) {
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
