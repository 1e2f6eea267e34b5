#include "kormodel/spin_system_file.h"

#include "model_set.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

KORSpinSystemDef loaded_spins;

Outcome load_spin_system_file(const char* filename, KORSpinSystemDef* def = &loaded_spins) {
    return outcome_of([&](char* m, std::size_t n) { return kor_load_spin_system_text(filename, def, m, n); });
}

Outcome load_spin_system_text(const std::string& text) {
    const ModelSet set;
    write_file(set.spin(), text);
    return load_spin_system_file(set.spin().c_str());
}

} // namespace

TEST(SpinSystemFile, FillsTheRecord) {
    EXPECT_EQ(load_spin_system_text(valid_spin_text), ok);
    EXPECT_EQ(loaded_spins.nspins, 2);
    EXPECT_EQ(loaded_spins.spin_quantum_numbers[1], 1);
    EXPECT_EQ(loaded_spins.spin_quantum_numbers[2], 1);
    EXPECT_EQ(loaded_spins.relative_intensities[1], 1.0);
    EXPECT_EQ(loaded_spins.relative_intensities[2], 0.5);
    EXPECT_EQ(loaded_spins.resonance_offsets_hz[1], 100.0);
    EXPECT_EQ(loaded_spins.resonance_offsets_hz[2], -40.0);
    EXPECT_EQ(loaded_spins.coupling_mode, 1);
    EXPECT_EQ(loaded_spins.j_hz[1][2], 12.0);
    EXPECT_EQ(loaded_spins.j_hz[2][1], 12.0);
}

TEST(SpinSystemFile, KeysStandInAnyOrderAfterNspins) {
    EXPECT_EQ(load_spin_system_text(
                  "coupling_mode: 2\nmodel_name: any\nnspins: 1\nresonance_offsets_hz: 7\n"
                  "relative_intensities: 2\nspin_quantum_numbers: 3\r\n  format_version : 1  # last\n"),
              ok);
    EXPECT_EQ(loaded_spins.spin_quantum_numbers[1], 3);
    EXPECT_EQ(loaded_spins.coupling_mode, 2);
}

TEST(SpinSystemFile, ReadsEightSpins) {
    EXPECT_EQ(load_spin_system_text(
                  "format_version: 1\nnspins: 8\nspin_quantum_numbers: 1 1 1 1 1 1 1 1\n"
                  "relative_intensities: 1 2 3 4 5 6 7 8\nresonance_offsets_hz: 0 0 0 0 0 0 0 -3\n"
                  "coupling_mode: 1\njcoupling_hz: 8 7 2.5\n"),
              ok);
    EXPECT_EQ(loaded_spins.relative_intensities[8], 8.0);
    EXPECT_EQ(loaded_spins.resonance_offsets_hz[8], -3.0);
    EXPECT_EQ(loaded_spins.j_hz[7][8], 2.5);
}

TEST(SpinSystemFile, StartsFromTheDefaults) {
    loaded_spins.j_hz[3][4] = 99.0;
    EXPECT_EQ(load_spin_system_text(valid_spin_text), ok);
    EXPECT_EQ(loaded_spins.j_hz[3][4], 0.0);
}

TEST(SpinSystemFile, NullArguments) {
    const Outcome refused{KOR_MODEL_ERR_NULLPTR, "spin-system load arguments must be non-null"};
    EXPECT_EQ(load_spin_system_file(nullptr), refused);
    EXPECT_EQ(load_spin_system_file("x", nullptr), refused);
}

TEST(SpinSystemFile, FilesThatDoNotOpen) {
    EXPECT_EQ(load_spin_system_file("missing.korspin"),
              (Outcome{KOR_MODEL_ERR_IO, "could not open spin system 'missing.korspin'"}));
    EXPECT_EQ(load_spin_system_file("/tmp"),
              (Outcome{KOR_MODEL_ERR_IO, "could not open spin system '/tmp'"}));
}

TEST(SpinSystemFile, FormatVersion) {
    EXPECT_EQ(load_spin_system_text("format_version: 2\n"),
              parse_error("line 1: unsupported format_version"));
    EXPECT_EQ(load_spin_system_text("\n\nformat_version: one\n"),
              parse_error("line 3: unsupported format_version"));
    EXPECT_EQ(load_spin_system_text(replaced(valid_spin_text, "format_version: 1\n", "")),
              parse_error("missing required key 'format_version'"));
}

TEST(SpinSystemFile, BadIntegers) {
    EXPECT_EQ(load_spin_system_text("nspins: two\n"), parse_error("line 1: bad nspins"));
    EXPECT_EQ(load_spin_system_text("nspins:\n"), parse_error("line 1: bad nspins"));
    EXPECT_EQ(load_spin_system_text("coupling_mode: 1.5\n"), parse_error("line 1: bad coupling_mode"));
}

TEST(SpinSystemFile, ListsComeAfterNspins) {
    for (const std::string key : {"spin_quantum_numbers", "relative_intensities", "resonance_offsets_hz"})
        EXPECT_EQ(load_spin_system_text("format_version: 1\n" + key + ": 1\n"),
                  parse_error("line 2: key 'nspins' must appear before '" + key + "'"));
    EXPECT_EQ(load_spin_system_text("jcoupling_hz: 1 2 3\n"),
              parse_error("line 1: key 'nspins' must appear before 'jcoupling_hz'"));
}

TEST(SpinSystemFile, ListsHaveOneValuePerSpin) {
    for (const std::string key : {"spin_quantum_numbers", "relative_intensities", "resonance_offsets_hz"}) {
        const std::string start = "nspins: 2\n" + key + ": ";
        EXPECT_EQ(load_spin_system_text(start + "1\n"),
                  parse_error("line 2: key '" + key + "' has too few values (expected 2, got 1)"));
        EXPECT_EQ(load_spin_system_text(start + "\n"),
                  parse_error("line 2: key '" + key + "' has too few values (expected 2, got 0)"));
        EXPECT_EQ(load_spin_system_text(start + "1 1 1\n"),
                  parse_error("line 2: key '" + key + "' has too many values (expected 2, got 3)"));
        EXPECT_EQ(load_spin_system_text(start + "x 1 1\n"),
                  parse_error("line 2: key '" + key + "' has too many values (expected 2, got 3)"));
        EXPECT_EQ(load_spin_system_text(start + "1 x\n"),
                  parse_error("line 2: key '" + key + "' contains malformed numeric data"));
    }
    EXPECT_EQ(load_spin_system_text("nspins: 2\nspin_quantum_numbers: 1 1.5\n"),
              parse_error("line 2: key 'spin_quantum_numbers' contains malformed numeric data"));
    EXPECT_EQ(load_spin_system_text("nspins: 2\nspin_quantum_numbers: 1 2147483648\n"),
              parse_error("line 2: key 'spin_quantum_numbers' contains malformed numeric data"));
    EXPECT_EQ(load_spin_system_text("nspins: 2\nrelative_intensities: 1 1e999\n"),
              parse_error("line 2: key 'relative_intensities' contains malformed numeric data"));
}

TEST(SpinSystemFile, TooManySpinsAreReadAndReportedAtTheEnd) {
    EXPECT_EQ(load_spin_system_text(
                  "format_version: 1\nnspins: 10\nspin_quantum_numbers: 1 2 3 4 5 6 7 8 9 10\n"
                  "relative_intensities: 1 2 3 4 5 6 7 8 9 10\nresonance_offsets_hz: 1 2 3 4 5 6 7 8 9 "
                  "10\ncoupling_mode: -5\n"),
              (Outcome{KOR_MODEL_ERR_RANGE, "nspins=10 is outside 1..8"}));
    EXPECT_EQ(loaded_spins.spin_quantum_numbers[8], 8);
    EXPECT_EQ(loaded_spins.relative_intensities[8], 8.0);
    EXPECT_EQ(loaded_spins.resonance_offsets_hz[8], 8.0);
    EXPECT_EQ(loaded_spins.coupling_mode, -5);
    EXPECT_EQ(
        load_spin_system_text("nspins: 2147483647\nspin_quantum_numbers: 1\n"),
        parse_error("line 2: key 'spin_quantum_numbers' has too few values (expected 2147483647, got 1)"));
}

TEST(SpinSystemFile, ListsOfNoSpinsAreEmpty) {
    for (const std::string count : {"0", "-3"}) {
        EXPECT_EQ(
            load_spin_system_text("format_version: 1\nnspins: " + count +
                                  "\nspin_quantum_numbers:\nrelative_intensities:\nresonance_offsets_hz:\n"
                                  "coupling_mode: 1\n"),
            (Outcome{KOR_MODEL_ERR_RANGE, "nspins=" + count + " is outside 1..8"}));
        EXPECT_EQ(load_spin_system_text("nspins: " + count + "\nspin_quantum_numbers: 1\n"),
                  parse_error("line 2: key 'spin_quantum_numbers' has too many values (expected " + count +
                              ", got 1)"));
    }
}

TEST(SpinSystemFile, CouplingEntries) {
    for (const char* value : {"", "1", "1 2", "1 2 x", "x 2 3", "1 2 1e999", "99999999999 1 2"})
        EXPECT_EQ(load_spin_system_text(std::string("nspins: 2\njcoupling_hz: ") + value + "\n"),
                  parse_error("line 2: bad jcoupling_hz entry"))
            << value;
    for (const char* value : {"0 1 5", "1 0 5", "9 1 5", "1 9 5", "-1 2 5", "2 2 5"})
        EXPECT_EQ(load_spin_system_text(std::string("nspins: 2\njcoupling_hz: ") + value + "\n"),
                  parse_error("line 2: jcoupling indices out of range"))
            << value;
}

TEST(SpinSystemFile, ALaterCouplingOfThePairReplacesTheEarlier) {
    EXPECT_EQ(load_spin_system_text(valid_spin_text + "jcoupling_hz: 2 1 -3.5 ignored\n"), ok);
    EXPECT_EQ(loaded_spins.j_hz[1][2], -3.5);
    EXPECT_EQ(loaded_spins.j_hz[2][1], -3.5);
}

TEST(SpinSystemFile, CouplingsBeyondTheLastSpinAreKept) {
    EXPECT_EQ(load_spin_system_text(valid_spin_text + "jcoupling_hz: 3 8 4\n"), ok);
    EXPECT_EQ(loaded_spins.j_hz[3][8], 4.0);
    EXPECT_EQ(loaded_spins.j_hz[8][3], 4.0);
}

TEST(SpinSystemFile, ANanCouplingFailsTheRecordCheck) {
    EXPECT_EQ(load_spin_system_text(valid_spin_text + "jcoupling_hz: 1 2 nan\n"),
              (Outcome{KOR_MODEL_ERR_RANGE, "j_hz matrix is not symmetric at (1,2) and (2,1)"}));
}

TEST(SpinSystemFile, InfinityAndNanAreReals) {
    EXPECT_EQ(load_spin_system_text(replaced(valid_spin_text, "100 -40", "inf nan")), ok);
    EXPECT_EQ(loaded_spins.resonance_offsets_hz[1], HUGE_VAL);
    EXPECT_TRUE(std::isnan(loaded_spins.resonance_offsets_hz[2]));
}

TEST(SpinSystemFile, UnknownKeys) {
    for (const char* line :
         {"spins: 2", "Nspins: 2", "nspins 2", "nspins", "nspinsx: 2", "ndx: 1", ":", "\x01"})
        EXPECT_EQ(load_spin_system_text(std::string("\n") + line + "\n"),
                  parse_error("line 2: unknown spin-system key"))
            << line;
}

TEST(SpinSystemFile, KeysStandOnce) {
    const struct {
        const char* key;
        const char* value;
    } rows[] = {{"format_version", "9"},       {"spin_system_name", "b"},     {"nspins", "x"},
                {"spin_quantum_numbers", "1"}, {"relative_intensities", "x"}, {"resonance_offsets_hz", "1"},
                {"coupling_mode", "1"}};
    for (const auto& row : rows)
        EXPECT_EQ(load_spin_system_text(valid_spin_text + row.key + ": " + row.value + "\n"),
                  parse_error(std::string("line 10: duplicate key '") + row.key + "'"));
    EXPECT_EQ(load_spin_system_text("model_name: a\nmodel_name: a\n"),
              parse_error("line 2: duplicate key 'model_name'"));
}

TEST(SpinSystemFile, RequiredKeys) {
    for (const char* line : {"nspins: 2\nspin_quantum_numbers: 1 1\nrelative_intensities: 1 0.5\n"
                             "resonance_offsets_hz: 100 -40\n",
                             "spin_quantum_numbers: 1 1\n", "relative_intensities: 1 0.5\n",
                             "resonance_offsets_hz: 100 -40\n", "coupling_mode: 1\n"}) {
        const std::string text = replaced(replaced(valid_spin_text, "jcoupling_hz: 1 2 12\n", ""), line, "");
        EXPECT_EQ(load_spin_system_text(text),
                  parse_error("spin-system file is missing one or more required spin keys"))
            << line;
    }
    EXPECT_EQ(load_spin_system_text(""), parse_error("missing required key 'format_version'"));
    EXPECT_EQ(load_spin_system_text(replaced(valid_spin_text, "jcoupling_hz: 1 2 12\n", "")), ok);
}

TEST(SpinSystemFile, EndsWithTheRecordCheck) {
    EXPECT_EQ(load_spin_system_text(
                  replaced(valid_spin_text, "spin_quantum_numbers: 1 1", "spin_quantum_numbers: 15 16")),
              (Outcome{KOR_MODEL_ERR_DIMENSION, "Hilbert dimension 272 exceeds KOR_MAX_STATES=256"}));
}

TEST(SpinSystemFile, AReadErrorIsAnIoError) {
    EXPECT_EQ(load_spin_system_file("/proc/self/mem"),
              (Outcome{KOR_MODEL_ERR_IO, "failed while closing '/proc/self/mem'"}));
}

TEST(SpinSystemFile, AZeroByteIsNoText) {
    using namespace std::string_literals;
    EXPECT_EQ(load_spin_system_text("format_version: 1\nnspins: 2\0\n"s),
              parse_error("line 2: holds a zero byte: no text file"));
    EXPECT_EQ(load_spin_system_text("\0\nformat_version: 1\n"s),
              parse_error("line 1: holds a zero byte: no text file"));
    EXPECT_EQ(load_spin_system_text("\0\0\0"s), parse_error("line 1: holds a zero byte: no text file"));
}

TEST(SpinSystemFile, AZeroByteInALastLineWithoutAnEndIsNoTextEither) {
    using namespace std::string_literals;
    for (const std::string& end : {"\0"s, "\0 9"s, "7\0"s, "# \0"s})
        EXPECT_EQ(load_spin_system_text(valid_spin_text + end),
                  parse_error("line 10: holds a zero byte: no text file"));
    EXPECT_EQ(load_spin_system_text(valid_spin_text + "# no line end"), ok);
}
