#include "kormodel/sequence_file.h"

#include "korpaths.h"
#include "model_set.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

KORPulseSequenceDef loaded_sequence;

Outcome load_sequence_file(const char* filename, KORPulseSequenceDef* def = &loaded_sequence) {
    return outcome_of(
        [&](char* m, std::size_t n) { return kor_load_pulse_sequence_text(filename, def, m, n); });
}

Outcome load_sequence_text(const ModelSet& set, const std::string& text) {
    write_file(set.sequence(), text);
    return load_sequence_file(set.sequence().c_str());
}

Outcome load_sequence_text(const std::string& text) {
    const ModelSet set;
    return load_sequence_text(set, text);
}

/// The six required lines of sector k.
std::string sector_lines(int k) {
    const std::string index = ": " + std::to_string(k) + " ";
    return "sector_type" + index + "1\nsector_timepoints" + index + "8\nsector_evolpoints" + index +
           "1\nsector_duration_s" + index + "0.5\nsector_pulsefile" + index +
           "waveforms/wave1-excitation\nsector_statoff_hz" + index + "-3\n";
}

std::string sequence_text_of(int sectors, int sectors_given) {
    std::string text =
        "format_version: 1\nsequence_type: 2\nnumber_of_sectors: " + std::to_string(sectors) + "\n";
    for (int k = 1; k <= sectors_given; ++k)
        text += sector_lines(k);
    return text;
}

const std::string two_sectors = "sequence_type: 1\nnumber_of_sectors: 2\n"; // a sector line is line 3

const char* const sector_keys[] = {"sector_type",       "sector_timepoints", "sector_evolpoints",
                                   "sector_duration_s", "sector_pulsefile",  "sector_statoff_hz",
                                   "sector_remark"};

} // namespace

TEST(SequenceFile, FillsTheRecord) {
    const ModelSet set;
    EXPECT_EQ(load_sequence_text(set, valid_sequence_text), ok);
    EXPECT_EQ(loaded_sequence.sequence_type, 1);
    EXPECT_EQ(loaded_sequence.sector_count, 1);
    const KORPulseSectorDef& sector = loaded_sequence.sectors[1];
    EXPECT_EQ(sector.sector_type, 1);
    EXPECT_EQ(sector.number_of_timepoints, 1);
    EXPECT_EQ(sector.number_of_evolpoints, 1);
    EXPECT_EQ(sector.total_duration_s, 1e-5);
    EXPECT_EQ(sector.offset_frequency_hz, 0.0);
    EXPECT_EQ(with_slashes(sector.pulse_filename), set.wave());
    EXPECT_STREQ(sector.remark, "test");
}

TEST(SequenceFile, SectorsStandInAnyOrder) {
    EXPECT_EQ(load_sequence_text("number_of_sectors: 2\n"),
              parse_error("line 1: key 'sequence_type' must appear before 'number_of_sectors'"));
    EXPECT_EQ(load_sequence_text("model_name: m\nsequence_type: 2\nnumber_of_sectors: 2\n" + sector_lines(2) +
                                 "sector_remark: 2 adc\n" + sector_lines(1) + "format_version: 1\n"),
              ok);
    EXPECT_STREQ(loaded_sequence.sectors[1].remark, "");
    EXPECT_STREQ(loaded_sequence.sectors[2].remark, "adc");
    EXPECT_EQ(loaded_sequence.sectors[2].number_of_timepoints, 8);
    EXPECT_EQ(loaded_sequence.sectors[2].offset_frequency_hz, -3.0);
}

TEST(SequenceFile, TwentySectorsAndNone) {
    EXPECT_EQ(load_sequence_text(sequence_text_of(20, 20)), ok);
    EXPECT_EQ(loaded_sequence.sectors[20].total_duration_s, 0.5);
    EXPECT_EQ(load_sequence_text(sequence_text_of(0, 0)), ok);
}

TEST(SequenceFile, TwentyOneSectorsFailTheRecordCheck) {
    EXPECT_EQ(load_sequence_text(sequence_text_of(21, 20)),
              (Outcome{KOR_MODEL_ERR_RANGE, "sector_count=21 is outside 0..20"}));
    EXPECT_EQ(load_sequence_text(sequence_text_of(21, 20) + "sector_type: 21 1\n"),
              parse_error("line 124: bad sector_type"));
}

TEST(SequenceFile, NullArguments) {
    const Outcome refused{KOR_MODEL_ERR_NULLPTR, "sequence load arguments must be non-null"};
    EXPECT_EQ(load_sequence_file(nullptr), refused);
    EXPECT_EQ(load_sequence_file("x", nullptr), refused);
}

TEST(SequenceFile, FilesThatDoNotOpen) {
    EXPECT_EQ(load_sequence_file("missing.korseq"),
              (Outcome{KOR_MODEL_ERR_IO, "could not open pulse sequence 'missing.korseq'"}));
}

TEST(SequenceFile, AReadErrorIsAnIoError) {
    EXPECT_EQ(load_sequence_file("/proc/self/mem"),
              (Outcome{KOR_MODEL_ERR_IO, "failed while closing '/proc/self/mem'"}));
}

TEST(SequenceFile, BadHeaderValues) {
    EXPECT_EQ(load_sequence_text("format_version: 3\n"), parse_error("line 1: unsupported format_version"));
    EXPECT_EQ(load_sequence_text("sequence_type: x\n"), parse_error("line 1: bad sequence_type"));
    EXPECT_EQ(load_sequence_text("sequence_type: 1 2\n"), parse_error("line 1: bad sequence_type"));
    for (const char* value : {"", "two", "2 2", "2.0", "4294967297"})
        EXPECT_EQ(load_sequence_text(std::string("sequence_type: 1\nnumber_of_sectors: ") + value + "\n"),
                  parse_error("line 2: bad number_of_sectors"))
            << value;
    for (const char* value : {"-1", "22", "2147483647"})
        EXPECT_EQ(load_sequence_text(std::string("sequence_type: 1\nnumber_of_sectors: ") + value + "\n"),
                  parse_error("line 2: number_of_sectors out of range"))
            << value;
}

TEST(SequenceFile, SectorKeysComeAfterTheirNumber) {
    for (const std::string key : sector_keys)
        EXPECT_EQ(load_sequence_text("sequence_type: 1\n" + key + ": x\n"),
                  parse_error("line 2: key 'number_of_sectors' must appear before '" + key + "'"));
}

TEST(SequenceFile, SectorLinesThatDoNotParse) {
    for (const std::string key : {"sector_type", "sector_timepoints", "sector_evolpoints"})
        for (const char* value : {"", "1", "x 1", "1 x", "1 2147483648", "4294967297 1"})
            EXPECT_EQ(load_sequence_text(two_sectors + key + ": " + value + "\n"),
                      parse_error("line 3: bad " + key))
                << value;
    for (const std::string key : {"sector_duration_s", "sector_statoff_hz"})
        for (const char* value : {"", "1", "x 1", "1 x", "1 1e999"})
            EXPECT_EQ(load_sequence_text(two_sectors + key + ": " + value + "\n"),
                      parse_error("line 3: bad " + key))
                << value;
    for (const char* value : {"", "1", "x p.bin"})
        EXPECT_EQ(load_sequence_text(two_sectors + "sector_pulsefile: " + value + "\n"),
                  parse_error("line 3: bad sector_pulsefile"))
            << value;
    for (const char* value : {"", "x"})
        EXPECT_EQ(load_sequence_text(two_sectors + "sector_remark: " + value + "\n"),
                  parse_error("line 3: bad sector_remark index"))
            << value;
}

TEST(SequenceFile, SectorIndexIsWithinTheDeclaredNumber) {
    for (const std::string key : sector_keys)
        for (const char* index : {"0", "-1", "3", "9", "20", "21", "2147483647", "-2147483648"})
            EXPECT_EQ(load_sequence_text(two_sectors + key + ": " + index + " 1\n"),
                      parse_error("line 3: bad " + key + (key == "sector_remark" ? " index" : "")))
                << index;
    EXPECT_EQ(load_sequence_text("sequence_type: 1\nnumber_of_sectors: 0\nsector_type: 1 1\n"),
              parse_error("line 3: bad sector_type"));
}

TEST(SequenceFile, WhatFollowsASectorValueIsIgnored) {
    std::string text = replaced(valid_sequence_text, "sector_type: 1 1", "sector_type: 1 1 and more");
    text = replaced(text, "1e-05", "2e-05 seconds");
    text = replaced(text, "wave1-excitation", "wave1-excitation of today");
    EXPECT_EQ(load_sequence_text(text), ok);
    EXPECT_EQ(loaded_sequence.sectors[1].total_duration_s, 2e-5);
}

TEST(SequenceFile, EverySectorKeyStandsOncePerSector) {
    const char* const values[] = {"1", "1", "1", "1", "waveforms/wave1-excitation", "0", "again"};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(load_sequence_text(valid_sequence_text + sector_keys[i] + ": 1 " + values[i] + "\n"),
                  parse_error(std::string("line 13: duplicate key '") + sector_keys[i] + "' for sector 1"));
}

TEST(SequenceFile, DuplicatesAreFoundBeforeTheSectorFileIsLookedFor) {
    EXPECT_EQ(load_sequence_text(valid_sequence_text + "sector_pulsefile: 1 missing.bin\n"),
              parse_error("line 13: duplicate key 'sector_pulsefile' for sector 1"));
}

TEST(SequenceFile, ScalarKeysStandOnce) {
    for (const std::string key : {"format_version", "sequence_name", "sequence_type", "number_of_sectors"})
        EXPECT_EQ(load_sequence_text(valid_sequence_text + key + ": 99\n"),
                  parse_error("line 13: duplicate key '" + key + "'"));
    EXPECT_EQ(load_sequence_text("model_name:\nmodel_name:\n"),
              parse_error("line 2: duplicate key 'model_name'"));
}

TEST(SequenceFile, UnknownKeys) {
    for (const char* line : {"sector_typ: 1 1", "Sector_type: 1 1", "sector_type 1 1", "ndx: 1", "nspins: 1"})
        EXPECT_EQ(load_sequence_text(two_sectors + line + "\n"), parse_error("line 3: unknown sequence key"))
            << line;
}

TEST(SequenceFile, RequiredKeys) {
    const Outcome refused = parse_error("sequence file is missing one or more required sequence keys");
    EXPECT_EQ(load_sequence_text(""), refused);
    EXPECT_EQ(load_sequence_text("format_version: 1\n"), refused);
    EXPECT_EQ(load_sequence_text("format_version: 1\nsequence_type: 1\n"), refused);
    EXPECT_EQ(load_sequence_text(replaced(valid_sequence_text, "format_version: 1\n", "")), refused);
}

TEST(SequenceFile, RequiredSectorKeys) {
    for (const char* line : {"sector_type: 1 1\n", "sector_timepoints: 1 1\n", "sector_evolpoints: 1 1\n",
                             "sector_duration_s: 1 1e-05\n",
                             "sector_pulsefile: 1 waveforms/wave1-excitation\n", "sector_statoff_hz: 1 0\n"})
        EXPECT_EQ(load_sequence_text(replaced(valid_sequence_text, line, "")),
                  parse_error("sequence file is missing one or more required sector keys for sector 1"))
            << line;
    EXPECT_EQ(load_sequence_text(replaced(valid_sequence_text, "sector_remark: 1 test\n", "")), ok);
    EXPECT_EQ(load_sequence_text(sequence_text_of(3, 2)),
              parse_error("sequence file is missing one or more required sector keys for sector 3"));
}

TEST(SequenceFile, EndsWithTheRecordCheck) {
    EXPECT_EQ(load_sequence_text(
                  replaced(valid_sequence_text, "sector_timepoints: 1 1", "sector_timepoints: 1 8193")),
              (Outcome{KOR_MODEL_ERR_RANGE, "sector 1 number_of_timepoints=8193 is outside 1..8192"}));
    EXPECT_EQ(load_sequence_text(replaced(valid_sequence_text, "sequence_type: 1", "sequence_type: 9")), ok);
}

TEST(SequenceFile, RemarkIsTheRestOfTheLine) {
    const auto remark_of = [](const std::string& line) {
        const Outcome outcome =
            load_sequence_text(replaced(valid_sequence_text, "sector_remark: 1 test", line));
        return outcome == ok ? std::string(loaded_sequence.sectors[1].remark) : outcome.message;
    };
    EXPECT_EQ(remark_of("sector_remark:  1 \t two  words: 90 deg "), "two  words: 90 deg");
    EXPECT_EQ(remark_of("sector_remark: 1 adc # no remark"), "adc");
    EXPECT_EQ(remark_of("sector_remark: 1"), "");
    EXPECT_EQ(remark_of("sector_remark: 1 #"), "");
    EXPECT_EQ(remark_of("sector_remark: 1 " + std::string(511, 'r')), std::string(511, 'r'));
    EXPECT_EQ(remark_of("sector_remark: 1 " + std::string(600, 'r')), std::string(511, 'r'));
}

TEST(SequenceFile, SectorFileIsAWordOf255Characters) {
    const std::string start = "line 10: sector_pulsefile for sector 1 not found; stored leafname '";
    const auto message_for = [](const std::string& stored) {
        return load_sequence_text(replaced(valid_sequence_text, "waveforms/wave1-excitation", stored))
            .message;
    };
    const std::string longest(255, 'w');
    EXPECT_EQ(message_for(longest + "ww").substr(0, start.size() + 256), start + longest + "'");
    EXPECT_EQ(message_for("two words").substr(0, start.size() + 4), start + "two'");
}

TEST(SequenceFile, AMissingSectorFileBesideTheSequence) {
    const ModelSet set;
    EXPECT_EQ(load_sequence_text(
                  set, replaced(valid_sequence_text, "waveforms/wave1-excitation", "waveforms/wave1")),
              parse_error("line 10: sector_pulsefile for sector 1 not found; stored relative path "
                          "'waveforms/wave1'; tried model-relative '" +
                          plain_name(set.root() / "sequences/test-gradient/waveforms/wave1") + "'"));
}

TEST(SequenceFile, AMissingSectorFileNamesTheFoldersTried) {
    const ModelSet set;
    char rf_output[KOR_PATH_SIZE] = "";
    ASSERT_EQ(KOR_GetDefaultRFOutputDir(rf_output, sizeof rf_output), 1);
    EXPECT_EQ(
        load_sequence_text(set, replaced(valid_sequence_text, "waveforms/wave1-excitation", "nowhere.bin")),
        parse_error("line 10: sector_pulsefile for sector 1 not found; stored leafname 'nowhere.bin'; tried "
                    "model-relative '" +
                    plain_name(set.root() / "sequences/test-gradient/nowhere.bin") + "' and RF-output '" +
                    with_slashes(rf_output) + "/nowhere.bin'"));
    EXPECT_EQ(load_sequence_text(
                  set, replaced(valid_sequence_text, "waveforms/wave1-excitation", "C:/nowhere/p.bin")),
              parse_error("line 10: sector_pulsefile for sector 1 not found; stored absolute path "
                          "'C:/nowhere/p.bin' does not exist"));
}

TEST(SequenceFile, SectorFileIsStoredAsFound) {
    const ModelSet set;
    EXPECT_EQ(load_sequence_text(set, replaced(valid_sequence_text, "waveforms/wave1", "wave1")), ok);
    EXPECT_EQ(with_slashes(loaded_sequence.sectors[1].pulse_filename), set.wave());
    EXPECT_EQ(
        load_sequence_text(set, replaced(valid_sequence_text, "waveforms/wave1-excitation", set.wave())), ok);
    EXPECT_EQ(with_slashes(loaded_sequence.sectors[1].pulse_filename), set.wave());
}

TEST(SequenceFile, AFolderIsNoSectorFile) {
    const ModelSet set;
    const std::string folder = plain_name(set.root() / "models");
    EXPECT_EQ(load_sequence_text(set, replaced(valid_sequence_text, "waveforms/wave1-excitation", folder)),
              parse_error("line 10: sector_pulsefile for sector 1 not found; stored absolute path '" +
                          folder + "' does not exist"));
}

TEST(SequenceFile, AFoundPathIsStoredUpTo255Characters) {
    const ModelSet set;
    const std::filesystem::path deep =
        set.root() / "sequences/test-gradient" / std::string(120, 'a') / std::string(120, 'b');
    write_file(deep / "p.bin", "x");
    const std::string stored = std::string(120, 'a') + "/" + std::string(120, 'b') + "/p.bin";
    EXPECT_EQ(load_sequence_text(set, replaced(valid_sequence_text, "waveforms/wave1-excitation", stored)),
              ok);
    EXPECT_EQ(with_slashes(loaded_sequence.sectors[1].pulse_filename),
              plain_name(deep / "p.bin").substr(0, 255));
}

TEST(SequenceFile, InfinityAndNanAreReals) {
    EXPECT_EQ(load_sequence_text(
                  replaced(valid_sequence_text, "sector_statoff_hz: 1 0", "sector_statoff_hz: 1 nan")),
              ok);
    EXPECT_TRUE(std::isnan(loaded_sequence.sectors[1].offset_frequency_hz));
    EXPECT_EQ(load_sequence_text(replaced(valid_sequence_text, "1e-05", "-inf")),
              (Outcome{KOR_MODEL_ERR_RANGE, "sector 1 total_duration_s=-inf must be >= 0"}));
}

TEST(SequenceFile, AFoundPathThatIsAnotherFilesWhereItIsCutIsRefused) {
    const ModelSet set;
    const std::string folder = plain_name(set.root() / "sequences/test-gradient");
    const std::string first(120, 'a');
    // "pulse1", cut where the path has 255 characters, is "pulse".
    const std::string second(255 - folder.size() - first.size() - std::string("///pulse").size(), 'b');
    const std::string stored = first + "/" + second + "/pulse1";
    write_file(folder + "/" + stored, "x");
    const std::string text = replaced(valid_sequence_text, "waveforms/wave1-excitation", stored);
    EXPECT_EQ(load_sequence_text(set, text), ok) << "no file has the cut name";
    write_file(folder + "/" + first + "/" + second + "/pulse", "y");
    EXPECT_EQ(
        load_sequence_text(set, text),
        parse_error("line 10: sector_pulsefile for sector 1: the path is longer than 255 characters, and "
                    "cut there it is that of another file"));
}
