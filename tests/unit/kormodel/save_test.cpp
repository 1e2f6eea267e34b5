#include "kormodel/save.h"

#include "korplatform.h"
#include "model_set.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>

using namespace kor;
using namespace kor_test;
namespace fs = std::filesystem;

namespace {

template <std::size_t size> void set_field(char (&field)[size], const std::string& text) {
    copy_truncated(text.c_str(), field, size);
}

const std::string written_model = "format_version: 1\n"
                                  "model_name: out\n"
                                  "\n"
                                  "spin_system_file: ../spin-systems/out.korspin\n"
                                  "sequence_file: ../sequences/out/out.korseq\n"
                                  "\n"
                                  "ndx: 1\n"
                                  "ndy: 2\n"
                                  "ndz: 3\n"
                                  "x0_cm: -0.1\n"
                                  "y0_cm: 1e-07\n"
                                  "z0_cm: 0.333333333333333\n"
                                  "dx_cm: 5\n"
                                  "dy_cm: 123456789012345\n"
                                  "dz_cm: 1.23456789012346e+15\n"
                                  "result_file: result.bin\n";

} // namespace

TEST(SaveModel, WritesTheModelFileToTheByte) {
    const ModelSet set;
    Model model = two_spin_model();
    model.cfg = {1, 2, 3, -0.1, 1e-7, 1.0 / 3.0, 5.0, 123456789012345.0, 1234567890123456.0, "result.bin",
                 ""};
    const std::string file = plain_name(set.root() / "models/out.kormodel");
    EXPECT_EQ(save_model(file, model), ok);
    EXPECT_EQ(read_file(file), written_model);
}

TEST(SaveModel, WritesTheSpinFileToTheByte) {
    const ModelSet set;
    Model model = two_spin_model();
    model.spin.nspins = 3;
    model.spin.spin_quantum_numbers[3] = 2;
    model.spin.relative_intensities[3] = -0.0;
    model.spin.resonance_offsets_hz[3] = 1e-20;
    model.spin.coupling_mode = 2;
    model.spin.j_hz[2][3] = model.spin.j_hz[3][2] = -7.25;
    model.spin.j_hz[4][5] = model.spin.j_hz[5][4] = 99.0;
    EXPECT_EQ(save_model(plain_name(set.root() / "models/out.kormodel"), model), ok);
    EXPECT_EQ(read_file(set.root() / "spin-systems/out.korspin"), "format_version: 1\n"
                                                                  "spin_system_name: out\n"
                                                                  "\n"
                                                                  "nspins: 3\n"
                                                                  "spin_quantum_numbers: 1 1 2\n"
                                                                  "relative_intensities: 1 0.5 -0\n"
                                                                  "resonance_offsets_hz: 100 -40 1e-20\n"
                                                                  "coupling_mode: 2\n"
                                                                  "jcoupling_hz: 1 2 12\n"
                                                                  "jcoupling_hz: 2 3 -7.25\n");
}

TEST(SaveModel, WritesTheSequenceFileToTheByte) {
    const ModelSet set;
    Model model = two_spin_model();
    model.seq.sequence_type = 2;
    model.seq.sector_count = 2;
    const std::string wave = plain_name(set.root() / "sequences/out/Waves/P1.BIN");
    set_field(model.seq.sectors[1].pulse_filename, wave);
    KORPulseSectorDef& second = model.seq.sectors[2];
    second = {2, 1024, 16, 0.25, -1250.5, "..\\Common\\adc.bin", ""};
    EXPECT_EQ(save_model(plain_name(set.root() / "models/out.kormodel"), model), ok);
    EXPECT_EQ(read_file(set.root() / "sequences/out/out.korseq"), "format_version: 1\n"
                                                                  "sequence_name: out\n"
                                                                  "\n"
                                                                  "sequence_type: 2\n"
                                                                  "number_of_sectors: 2\n"
                                                                  "sector_type: 1 1\n"
                                                                  "sector_timepoints: 1 1\n"
                                                                  "sector_evolpoints: 1 1\n"
                                                                  "sector_duration_s: 1 1e-05\n"
                                                                  "sector_pulsefile: 1 waves/p1.bin\n"
                                                                  "sector_statoff_hz: 1 0\n"
                                                                  "sector_remark: 1 test\n"
                                                                  "sector_type: 2 2\n"
                                                                  "sector_timepoints: 2 1024\n"
                                                                  "sector_evolpoints: 2 16\n"
                                                                  "sector_duration_s: 2 0.25\n"
                                                                  "sector_pulsefile: 2 ../Common/adc.bin\n"
                                                                  "sector_statoff_hz: 2 -1250.5\n"
                                                                  "sector_remark: 2 \n");
}

TEST(SaveModel, TheSetIsNamedAfterTheModel) {
    const ModelSet set;
    Model model = two_spin_model();
    set_field(model.cfg.model_name, "Two words");
    const std::string file = plain_name(set.root() / "models/other.kormodel");
    EXPECT_EQ(save_model(file, model), ok);
    EXPECT_TRUE(fs::exists(set.root() / "spin-systems/Two words.korspin"));
    EXPECT_TRUE(fs::exists(set.root() / "sequences/Two words/Two words.korseq"));
    EXPECT_NE(read_file(file).find("sequence_file: ../sequences/Two words/Two words.korseq\n"),
              std::string::npos);
}

TEST(SaveModel, AModelFileWithoutAUsableLeafNameIsCalledModel) {
    const ModelSet set;
    const std::string file = plain_name(set.root() / "models" / (std::string(300, 'x') + ".kormodel"));
    EXPECT_EQ(save_model(file, two_spin_model()), io_error("could not open '" + file + "' for writing"));
    EXPECT_TRUE(fs::exists(set.root() / "spin-systems/model.korspin"));
    EXPECT_TRUE(fs::exists(set.root() / "sequences/model/model.korseq"));
}

TEST(SaveModel, ReplacesAnExistingSet) {
    const ModelSet set;
    const std::string file = plain_name(set.root() / "models/out.kormodel");
    write_file(file, std::string(5000, 'x'));
    write_file(set.root() / "spin-systems/out.korspin", std::string(5000, 'x'));
    EXPECT_EQ(save_model(file, two_spin_model()), ok);
    EXPECT_EQ(read_file(file).find('x'), written_model.find('x'));
    Model loaded;
    write_file(set.root() / "sequences/out/waveforms/p1", "x");
    EXPECT_EQ(load_model(file, loaded), ok);
}

TEST(SaveModel, AResultInTheRuntimeResultsIsSavedAsItsLeaf) {
    const ModelSet set;
    Model model = two_spin_model();
    char results[KOR_PATH_SIZE] = "";
    kor_get_runtime_results_dir(results, sizeof results);
    set_field(model.cfg.result_filename, std::string(results) + "/Run 1.bin");
    const std::string file = plain_name(set.root() / "models/out.kormodel");
    EXPECT_EQ(save_model(file, model), ok);
    EXPECT_NE(read_file(file).find("\nresult_file: run 1.bin\n"), std::string::npos);
}

TEST(SaveModel, APathWithoutGrandparentUsesTheWorkingDirectory) {
    for (const std::string name : {"my_model.kormodel", "./my_model.kormodel"}) {
        const ModelSet set;
        const ScopedChdir models(set.root() / "models");
        Model model = two_spin_model();
        set_field(model.seq.sectors[1].pulse_filename, plain_name(set.root() / "sequences/my_model/w/p1"));
        write_file(set.root() / "sequences/my_model/w/p1", "x");
        EXPECT_EQ(save_model(name, model), ok);
        EXPECT_TRUE(fs::exists(set.root() / "models/my_model.kormodel"));
        EXPECT_TRUE(fs::exists(set.root() / "spin-systems/my_model.korspin"));
        EXPECT_NE(
            read_file(set.root() / "sequences/my_model/my_model.korseq").find("sector_pulsefile: 1 w/p1\n"),
            std::string::npos);
        Model loaded;
        EXPECT_EQ(load_model(name, loaded), ok);
        EXPECT_STREQ(loaded.cfg.model_name, "my_model");
    }
}

TEST(SaveModel, NullArguments) {
    const Model model = two_spin_model();
    for (int missing = 0; missing < 4; ++missing)
        EXPECT_EQ(outcome_of([&](char* m, std::size_t n) {
                      return KORModel_SaveText(
                          missing == 0 ? nullptr : "x", missing == 1 ? nullptr : &model.spin,
                          missing == 2 ? nullptr : &model.seq, missing == 3 ? nullptr : &model.cfg, m, n);
                  }),
                  (Outcome{KOR_MODEL_ERR_NULLPTR, "save arguments must be non-null"}));
}

TEST(SaveModel, AnInvalidModelWritesNothing) {
    const TempTree tree;
    Model model = two_spin_model();
    model.seq.sectors[1].total_duration_s = 0.0;
    EXPECT_EQ(save_model(tree.path("models/out.kormodel"), model),
              (Outcome{KOR_MODEL_ERR_RANGE, "sector 1 total_duration_s=0 must be > 0"}));
    EXPECT_TRUE(tree.names().empty());
}

TEST(SaveModel, FoldersThatCannotBeFormed) {
    const std::string file = "/" + std::string(1010, 'r') + "/models/x.kormodel";
    const std::string whole = "could not derive split output directories for '" + file + "'";
    EXPECT_EQ(save_model(file, two_spin_model()), io_error(whole.substr(0, KOR_MESSAGE_SIZE - 1)));
}

TEST(SaveModel, FoldersThatCannotBeMade) {
    const ModelSet set;
    const Outcome refused = io_error("could not create split output directories");
    EXPECT_EQ(save_model(plain_name(set.root() / "missing/models/x.kormodel"), two_spin_model()), refused);
    EXPECT_EQ(save_model("/proc/models/x.kormodel", two_spin_model()), refused);
    write_file(set.root() / "flat/sequences", "a file");
    EXPECT_EQ(save_model(plain_name(set.root() / "flat/models/x.kormodel"), two_spin_model()), refused);
    Model model = two_spin_model();
    set_field(model.cfg.model_name, "two/levels");
    EXPECT_EQ(save_model(plain_name(set.root() / "models/x.kormodel"), model), refused);
}

TEST(SaveModel, AFileInThePlaceOfTheSpinFolderStopsTheSpinFile) {
    const ModelSet set;
    const fs::path root = set.root() / "flat";
    write_file(root / "spin-systems", "a file");
    EXPECT_EQ(save_model(plain_name(root / "models/x.kormodel"), two_spin_model()),
              io_error("could not open '" + plain_name(root / "spin-systems/x.korspin") + "' for writing"));
    EXPECT_EQ(read_file(root / "spin-systems"), "a file");
}

TEST(SaveModel, ANameThatGoesUpIsRefused) {
    const ModelSet set;
    Model model = two_spin_model();
    const std::string file = plain_name(set.root() / "models/out.kormodel");
    const Outcome refused{KOR_MODEL_ERR_IO, "could not derive split output directories for '" + file + "'"};
    for (const char* name : {"..", "../x", "a/../../x", "..\\x", "a\\..", "//../x"}) {
        kor::copy_truncated(name, model.cfg.model_name, sizeof model.cfg.model_name);
        EXPECT_EQ(save_model(file, model), refused) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(file));
    for (const char* name : {"a..b", "..a"}) {
        kor::copy_truncated(name, model.cfg.model_name, sizeof model.cfg.model_name);
        EXPECT_EQ(save_model(file, model), ok) << name;
    }
}

TEST(SaveModel, AModelFileThatDoesNotOpenLeavesTheOthers) {
    const ModelSet set;
    const std::string file = plain_name(set.root() / "missing/x.kormodel");
    EXPECT_EQ(save_model(file, two_spin_model()), io_error("could not open '" + file + "' for writing"));
    EXPECT_TRUE(fs::exists(set.root() / "spin-systems/x.korspin"));
    EXPECT_TRUE(fs::exists(set.root() / "sequences/x/x.korseq"));
}

TEST(SaveModel, ASequenceFileThatDoesNotOpenLeavesTheSpinFile) {
    const ModelSet set;
    fs::create_directories(set.root() / "sequences/x/x.korseq");
    const std::string file = plain_name(set.root() / "models/x.kormodel");
    EXPECT_EQ(
        save_model(file, two_spin_model()),
        io_error("could not open '" + plain_name(set.root() / "sequences/x/x.korseq") + "' for writing"));
    EXPECT_TRUE(fs::exists(set.root() / "spin-systems/x.korspin"));
    EXPECT_FALSE(fs::exists(file));
}

namespace {

Outcome refused_text(const std::string& message) {
    return {KOR_MODEL_ERR_RANGE, message};
}

/// Refused with `message`, and nothing was made in an empty folder or changed in an older set.
void expect_text_refused(const Model& model, const std::string& message) {
    const TempTree tree;
    EXPECT_EQ(save_model(tree.path("models/out.kormodel"), model), refused_text(message));
    EXPECT_TRUE(tree.names().empty());
    const std::vector<std::string> set = {"models/out.kormodel", "spin-systems/out.korspin",
                                          "sequences/out/out.korseq"};
    for (const std::string& name : set)
        tree.write(name, "older");
    EXPECT_EQ(save_model(tree.path("models/out.kormodel"), model), refused_text(message));
    for (const std::string& name : set)
        EXPECT_EQ(tree.read(name), "older") << name;
}

} // namespace

TEST(SaveModel, ARemarkThatALineCannotHoldIsRefused) {
    Model model = two_spin_model();
    set_field(model.seq.sectors[1].remark, "scan #2 adc");
    expect_text_refused(model, "sector 1 remark cannot be saved with '#' in it: scan #2 adc");
    set_field(model.seq.sectors[1].remark, "one\ntwo");
    expect_text_refused(model, "sector 1 remark cannot be saved with a line end in it: one\ntwo");
    model = two_spin_model();
    model.seq.sector_count = 2;
    model.seq.sectors[2] = model.seq.sectors[1];
    set_field(model.seq.sectors[2].remark, "#");
    expect_text_refused(model, "sector 2 remark cannot be saved with '#' in it: #");
}

TEST(SaveModel, ASectorPathThatIsNoWordIsRefused) {
    Model model = two_spin_model();
    char* stored = model.seq.sectors[1].pulse_filename;
    for (const char* name : {"my pulse.bin", "waves/my\tpulse", "my\vpulse", "p ", " p"}) {
        copy_truncated(name, stored, KOR_FILE_NAME_SIZE);
        expect_text_refused(model, "sector 1 pulse_filename cannot be saved with white space in it: " +
                                       std::string(name));
    }
    copy_truncated("p#1", stored, KOR_FILE_NAME_SIZE);
    expect_text_refused(model, "sector 1 pulse_filename cannot be saved with '#' in it: p#1");
    copy_truncated("p\n1", stored, KOR_FILE_NAME_SIZE);
    expect_text_refused(model, "sector 1 pulse_filename cannot be saved with a line end in it: p\n1");
}

TEST(SaveModel, ANameOrResultThatALineCannotHoldIsRefused) {
    Model model = two_spin_model();
    set_field(model.cfg.result_filename, "run#1.bin");
    expect_text_refused(model, "result_filename cannot be saved with '#' in it: run#1.bin");
    for (const std::string name : {" run.bin", "run.bin\t"}) {
        set_field(model.cfg.result_filename, name);
        expect_text_refused(model, "result_filename cannot be saved with white space in it: " + name);
    }
    model = two_spin_model();
    set_field(model.cfg.model_name, "a#b");
    expect_text_refused(model, "model_name cannot be saved with '#' in it: a#b");
    const TempTree tree;
    EXPECT_EQ(save_model(tree.path("models/c#d.kormodel"), two_spin_model()),
              refused_text("model_name cannot be saved with '#' in it: c#d"));
    EXPECT_TRUE(tree.names().empty());
}

TEST(SaveModel, ANameWithASeparatorPutsTheSequenceFileDeeper) {
    const ModelSet set;
    Model model = two_spin_model();
    set_field(model.cfg.model_name, "two/levels");
    const std::string folder = plain_name(set.root() / "sequences/two/levels/two");
    const std::string wave = folder + "/waves/p1";
    write_file(wave, "x");
    set_field(model.seq.sectors[1].pulse_filename, wave);
    fs::create_directories(set.root() / "spin-systems/two");
    EXPECT_EQ(save_model(plain_name(set.root() / "models/x.kormodel"), model), ok);
    EXPECT_NE(read_file(folder + "/levels.korseq").find("sector_pulsefile: 1 waves/p1\n"), std::string::npos);
    Model loaded;
    EXPECT_EQ(load_model(plain_name(set.root() / "models/x.kormodel"), loaded), ok);
}

// Windows takes the one folder of the two names, Linux makes a second one.
TEST(SaveModel, ASetNamedAsAnotherInOtherLettersPlaysTheSameFiles) {
    const TempTree tree;
    tree.make_folder("models");
    tree.write("sequences/Foo/waveforms/P1", "x");
    Model model = two_spin_model();
    const std::string wave = tree.path("sequences/Foo/waveforms/P1");
    set_field(model.seq.sectors[1].pulse_filename, wave);
    for (const std::string name : {"Foo", "foo", "FOO"}) {
        const std::string file = tree.path("models/" + name + ".kormodel");
        Model loaded;
        ASSERT_EQ(save_model(file, model), ok) << name;
        ASSERT_EQ(load_model(file, loaded), ok) << name;
        EXPECT_TRUE(platform_same_file(loaded.seq.sectors[1].pulse_filename, wave.c_str())) << name;
    }
}

// Only what the set's own files say counts: the folder above them may have any name.
TEST(SaveModel, AFolderWithABlankAndANumberSignHoldsASet) {
    const ModelSet set;
    const fs::path root = set.root() / "set #1";
    fs::create_directories(root / "models");
    Model model = two_spin_model();
    const std::string wave = plain_name(root / "sequences/out/waveforms/p1");
    set_field(model.seq.sectors[1].pulse_filename, wave);
    set_field(model.seq.sectors[1].remark, "two words");
    const std::string file = plain_name(root / "models/out.kormodel");
    EXPECT_EQ(save_model(file, model), ok);
    write_file(wave, "x");
    Model loaded;
    EXPECT_EQ(load_model(file, loaded), ok);
    EXPECT_STREQ(loaded.seq.sectors[1].remark, "two words");
    // What was loaded is found by way of the folder of models; saved under another name it is found again.
    set_field(loaded.cfg.model_name, "copy");
    const std::string copy = plain_name(root / "models/copy.kormodel");
    EXPECT_EQ(save_model(copy, loaded), ok);
    EXPECT_NE(
        read_file(root / "sequences/copy/copy.korseq").find("sector_pulsefile: 1 ../out/waveforms/p1\n"),
        std::string::npos);
    EXPECT_EQ(load_model(copy, loaded), ok);
}
