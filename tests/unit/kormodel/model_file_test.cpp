#include "kormodel/model_file.h"

#include "korpaths.h"
#include "korplatform.h"
#include "model_set.h"
#include "path_calls.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

namespace {

Model loaded_model;

Outcome load_model_text(const ModelSet& set, const std::string& text) {
    write_file(set.model(), text);
    return load_model(set.model(), loaded_model);
}

Outcome load_model_text(const std::string& text) {
    const ModelSet set;
    return load_model_text(set, text);
}

std::string without_line(const std::string& text, const std::string& key) {
    const std::size_t start = text.find("\n" + key + ":") + 1;
    return std::string(text).erase(start, text.find('\n', start) + 1 - start);
}

} // namespace

TEST(ModelFile, FillsTheThreeRecords) {
    const ModelSet set;
    EXPECT_EQ(load_model(set.model(), loaded_model), ok);
    EXPECT_EQ(loaded_model.spin.nspins, 2);
    EXPECT_EQ(loaded_model.spin.j_hz[1][2], 12.0);
    EXPECT_EQ(loaded_model.seq.sector_count, 1);
    EXPECT_STREQ(loaded_model.seq.sectors[1].remark, "test");
    EXPECT_EQ(with_slashes(loaded_model.seq.sectors[1].pulse_filename),
              plain_name(set.root() / "models/../sequences/test-gradient/waveforms/wave1-excitation"));
    EXPECT_EQ(loaded_model.cfg.ndx, 5);
    EXPECT_EQ(loaded_model.cfg.ndy, 1);
    EXPECT_EQ(loaded_model.cfg.ndz, 1);
    EXPECT_EQ(loaded_model.cfg.x0_cm, -10.0);
    EXPECT_EQ(loaded_model.cfg.dx_cm, 5.0);
    EXPECT_STREQ(loaded_model.cfg.model_name, "split-composition");
    EXPECT_EQ(with_slashes(loaded_model.cfg.result_filename),
              with_slashes(results_folder()) + "/split-composition-result.bin");
}

TEST(ModelFile, EveryGridNumberHasItsField) {
    std::string text = valid_model_text;
    const char* const keys[] = {"ndx", "ndy", "ndz", "x0_cm", "y0_cm", "z0_cm", "dx_cm", "dy_cm", "dz_cm"};
    for (const std::string key : keys)
        text = without_line(text, key);
    EXPECT_EQ(load_model_text(text +
                              "dz_cm: 9.5\ndy_cm: 8.5\ndx_cm: 7.5\nz0_cm: -6\ny0_cm: -5\nx0_cm: -4\nndz: "
                              "3\nndy: 2\nndx: 256 # voxels\n"),
              ok);
    EXPECT_EQ(loaded_model.cfg.ndx, 256);
    EXPECT_EQ(loaded_model.cfg.ndy, 2);
    EXPECT_EQ(loaded_model.cfg.ndz, 3);
    EXPECT_EQ(loaded_model.cfg.x0_cm, -4.0);
    EXPECT_EQ(loaded_model.cfg.y0_cm, -5.0);
    EXPECT_EQ(loaded_model.cfg.z0_cm, -6.0);
    EXPECT_EQ(loaded_model.cfg.dx_cm, 7.5);
    EXPECT_EQ(loaded_model.cfg.dy_cm, 8.5);
    EXPECT_EQ(loaded_model.cfg.dz_cm, 9.5);
}

TEST(ModelFile, CrLfAndMissingLastLineEnd) {
    std::string text;
    for (char c : valid_model_text)
        text += c == '\n' ? std::string("\r\n") : std::string(1, c);
    text.erase(text.size() - 2);
    EXPECT_EQ(load_model_text(text), ok);
    EXPECT_STREQ(loaded_model.cfg.model_name, "split-composition");
}

TEST(ModelFile, NullArguments) {
    const Outcome refused{KOR_MODEL_ERR_NULLPTR, "load arguments must be non-null"};
    for (int missing = 0; missing < 4; ++missing)
        EXPECT_EQ(outcome_of([&](char* m, std::size_t n) {
                      return KORModel_LoadText(missing == 0 ? nullptr : "x",
                                               missing == 1 ? nullptr : &loaded_model.spin,
                                               missing == 2 ? nullptr : &loaded_model.seq,
                                               missing == 3 ? nullptr : &loaded_model.cfg, m, n);
                  }),
                  refused);
}

TEST(ModelFile, WorksWithoutAMessageBuffer) {
    EXPECT_EQ(
        KORModel_LoadText("missing", &loaded_model.spin, &loaded_model.seq, &loaded_model.cfg, nullptr, 0),
        KOR_MODEL_ERR_IO);
}

TEST(ModelFile, FilesThatDoNotOpen) {
    EXPECT_EQ(load_model("missing.kormodel", loaded_model),
              (Outcome{KOR_MODEL_ERR_IO, "could not open 'missing.kormodel' for reading"}));
}

TEST(ModelFile, AReadErrorIsAnIoError) {
    EXPECT_EQ(load_model("/proc/self/mem", loaded_model),
              (Outcome{KOR_MODEL_ERR_IO, "failed while closing '/proc/self/mem'"}));
}

TEST(ModelFile, InlineKeysAreRefusedWhateverFollows) {
    for (const std::string key :
         {"nspins", "spin_quantum_numbers", "relative_intensities", "resonance_offsets_hz", "coupling_mode",
          "jcoupling_hz", "sequence_type", "number_of_sectors", "sector_type", "sector_timepoints",
          "sector_evolpoints", "sector_duration_s", "sector_pulsefile", "sector_statoff_hz", "sector_remark"})
        for (const char* rest : {": 1", ":", " \t: anything"})
            EXPECT_EQ(load_model_text("\n" + key + rest + "\n"),
                      parse_error("line 2: inline spin-system/sequence keys are no longer supported in "
                                  ".kormodel; use spin_system_file and sequence_file"))
                << key << rest;
}

TEST(ModelFile, UnknownKeys) {
    for (const char* line :
         {"ndx 5", "NDX: 5", "nd: 5", "nspins", "nspinsx: 1", "spin_system_name: a", "x0: 1"})
        EXPECT_EQ(load_model_text(std::string("# first\n") + line + "\n"), parse_error("line 2: unknown key"))
            << line;
}

TEST(ModelFile, BadNumbers) {
    for (const std::string key : {"ndx", "ndy", "ndz"})
        for (const char* value : {"", "x", "1.0", "1 1", "2147483648"})
            EXPECT_EQ(load_model_text(key + ": " + value + "\n"), parse_error("line 1: bad " + key)) << value;
    for (const std::string key : {"x0_cm", "y0_cm", "z0_cm", "dx_cm", "dy_cm", "dz_cm"})
        for (const char* value : {"", "x", "1,0", "1 1", "1e999"})
            EXPECT_EQ(load_model_text(key + ": " + value + "\n"), parse_error("line 1: bad " + key)) << value;
    EXPECT_EQ(load_model_text("format_version: 0\n"), parse_error("line 1: unsupported format_version"));
}

TEST(ModelFile, KeysStandOnce) {
    for (const std::string key :
         {"format_version", "model_name", "spin_system_file", "sequence_file", "ndx", "ndy", "ndz", "x0_cm",
          "y0_cm", "z0_cm", "dx_cm", "dy_cm", "dz_cm", "result_file"})
        EXPECT_EQ(load_model_text(valid_model_text + key + ": x\n"),
                  parse_error("line 17: duplicate key '" + key + "'"));
}

TEST(ModelFile, ASecondSpinSystemIsADuplicate) {
    const std::string line = "spin_system_file: ../spin-systems/test-two-spin.korspin\n";
    EXPECT_EQ(load_model_text("format_version: 1\n" + line + line),
              parse_error("line 3: duplicate key 'spin_system_file'"));
}

TEST(ModelFile, RequiredKeysInOrder) {
    std::string text = valid_model_text;
    for (const std::string key : {"result_file", "dz_cm", "dy_cm", "dx_cm", "z0_cm", "y0_cm", "x0_cm", "ndz",
                                  "ndy", "ndx", "sequence_file", "spin_system_file"}) {
        EXPECT_EQ(load_model_text(without_line(valid_model_text, key)),
                  parse_error("missing required key '" + key + "'"));
        text = without_line(text, key);
        EXPECT_EQ(load_model_text(text), parse_error("missing required key '" + key + "'"));
    }
    EXPECT_EQ(load_model_text("model_name: alone\n"), parse_error("missing required key 'format_version'"));
}

TEST(ModelFile, NameIsTheLeafWhenNoneIsGiven) {
    EXPECT_EQ(load_model_text(without_line(valid_model_text, "model_name")), ok);
    EXPECT_STREQ(loaded_model.cfg.model_name, "case");
    EXPECT_EQ(
        load_model_text(replaced(valid_model_text, "model_name: split-composition", "model_name: # none")),
        ok);
    EXPECT_STREQ(loaded_model.cfg.model_name, "case");
}

TEST(ModelFile, NameHas255Characters) {
    EXPECT_EQ(load_model_text(
                  replaced(valid_model_text, "split-composition", "two words " + std::string(300, 'n'))),
              ok);
    EXPECT_EQ(loaded_model.cfg.model_name, "two words " + std::string(245, 'n'));
}

TEST(ModelFile, PathsThatCannotBeResolved) {
    const std::string deep(1100, 'd');
    for (const std::string key : {"spin_system_file", "sequence_file"}) {
        EXPECT_EQ(load_model_text(key + ": " + deep + "\n"),
                  (Outcome{KOR_MODEL_ERR_IO, "line 1: could not resolve " + key}));
        EXPECT_EQ(load_model_text(key + ": /" + deep + "\n"),
                  (Outcome{KOR_MODEL_ERR_IO, "line 1: could not resolve " + key}));
    }
    EXPECT_EQ(load_model_text("result_file: " + std::string(256, 'd') + "\n"),
              (Outcome{KOR_MODEL_ERR_IO, "line 1: could not resolve result_file"}));
    EXPECT_EQ(load_model_text("result_file: /" + std::string(255, 'd') + "\n"),
              (Outcome{KOR_MODEL_ERR_IO, "line 1: could not resolve result_file"}));
}

TEST(ModelFile, PartsThatDoNotOpen) {
    const ModelSet set;
    EXPECT_EQ(load_model_text(set, "spin_system_file: nothing.korspin\n"),
              (Outcome{KOR_MODEL_ERR_IO, "could not open spin system '" +
                                             plain_name(set.root() / "models/nothing.korspin") + "'"}));
    EXPECT_EQ(load_model_text(set, "sequence_file: nothing.korseq\n"),
              (Outcome{KOR_MODEL_ERR_IO, "could not open pulse sequence '" +
                                             plain_name(set.root() / "models/nothing.korseq") + "'"}));
    EXPECT_EQ(load_model_text(set, "spin_system_file:\n"),
              (Outcome{KOR_MODEL_ERR_IO, "could not open spin system ''"}));
}

TEST(ModelFile, ErrorsOfThePartsPassThrough) {
    const ModelSet set;
    write_file(set.spin(), "\n\nnspins: x\n");
    EXPECT_EQ(load_model(set.model(), loaded_model), parse_error("line 3: bad nspins"));
    write_file(set.spin(), replaced(valid_spin_text, "nspins: 2", "nspins: 2\nspin: 1"));
    EXPECT_EQ(load_model(set.model(), loaded_model), parse_error("line 5: unknown spin-system key"));
    write_file(set.spin(), valid_spin_text);
    write_file(set.sequence(),
               replaced(valid_sequence_text, "sector_evolpoints: 1 1", "sector_evolpoints: 1 0"));
    EXPECT_EQ(load_model(set.model(), loaded_model),
              (Outcome{KOR_MODEL_ERR_RANGE, "sector 1 number_of_evolpoints=0 is outside 1..8192"}));
}

TEST(ModelFile, EndsWithTheCheckOfTheWholeModel) {
    const ModelSet set;
    write_file(set.sequence(), replaced(valid_sequence_text, "sequence_type: 1", "sequence_type: 9"));
    EXPECT_EQ(
        load_model(set.model(), loaded_model),
        (Outcome{KOR_MODEL_ERR_RANGE, "sequence_type=9 is invalid; expected 1 (spatial) or 2 (1D/2D NMR)"}));
    write_file(set.sequence(), replaced(valid_sequence_text, "sector_type: 1 1", "sector_type: 1 2"));
    EXPECT_EQ(load_model(set.model(), loaded_model),
              (Outcome{KOR_MODEL_ERR_INCOMPATIBLE,
                       "spatial sequence sector 1 has invalid sector_type=2; expected 1"}));
    write_file(set.sequence(), "format_version: 1\nsequence_type: 1\nnumber_of_sectors: 0\n");
    EXPECT_EQ(load_model(set.model(), loaded_model),
              (Outcome{KOR_MODEL_ERR_RANGE, "sector_count=0 is invalid; at least one sector is required"}));
    EXPECT_EQ(load_model_text(replaced(valid_model_text, "ndy: 1", "ndy: 257")),
              (Outcome{KOR_MODEL_ERR_RANGE, "ndy=257 is outside 1..256"}));
    EXPECT_EQ(load_model_text(replaced(valid_model_text, "dy_cm: 0", "dy_cm: -0.5")),
              (Outcome{KOR_MODEL_ERR_RANGE, "dx_cm/dy_cm/dz_cm must be >= 0"}));
    EXPECT_EQ(load_model_text(replaced(valid_model_text, "split-composition-result.bin", "")),
              (Outcome{KOR_MODEL_ERR_RANGE, "result_filename is required"}));
}

TEST(ModelFile, ResultsLieInTheRuntimeFolderUnlessAbsolute) {
    EXPECT_EQ(load_model_text(replaced(valid_model_text, "split-composition-result.bin", "sub/r.bin")), ok);
    EXPECT_EQ(with_slashes(loaded_model.cfg.result_filename), with_slashes(results_folder()) + "/sub/r.bin");
    EXPECT_EQ(
        load_model_text(replaced(valid_model_text, "split-composition-result.bin", "C:/data/My result.bin")),
        ok);
    EXPECT_EQ(with_slashes(loaded_model.cfg.result_filename), "C:/data/My result.bin");
}

TEST(ModelFile, AFileInTheWorkingDirectoryNeedsNoFolder) {
    const ModelSet set;
    const ScopedChdir models(set.root() / "models");
    EXPECT_EQ(load_model("case.kormodel", loaded_model), ok);
    EXPECT_EQ(load_model("./case.kormodel", loaded_model), ok);
    EXPECT_EQ(with_slashes(loaded_model.seq.sectors[1].pulse_filename),
              "./../sequences/test-gradient/waveforms/wave1-excitation");
}

TEST(ModelFile, NanCoordinatesAreAccepted) {
    EXPECT_EQ(load_model_text(replaced(valid_model_text, "x0_cm: -10", "x0_cm: nan")), ok);
    EXPECT_TRUE(std::isnan(loaded_model.cfg.x0_cm));
}
