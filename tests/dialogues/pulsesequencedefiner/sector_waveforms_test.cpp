#include "pulsesequencedefiner/sector_waveforms.h"

#include "kor/runtime_state.h"
#include "korcurrentmodel/loaded_model.h"
#include "modelfiles.h"
#include "support/composer_state.h"
#include "support/composer_texts.h"
#include "support/console_script.h"

#include <gtest/gtest.h>

#include <limits>

using namespace kor;
using namespace kor_test;

namespace {

const std::string input_menu = "Read ASCII-file containing reals:\n"
                               "      1. Normal ASCII file\n"
                               "      2. SGplot file format\n"
                               "      3. Cancel file input\n"
                               "Your choice [1..3] : \n";
const std::string ascii_prompt = "<< ASCII File In >>\nEnter filename : ";
const std::string sg_prompt = "<< SG-Plot File In >>\nEnter filename : ";

/// A waveform of two samples and a model called "lac".
void prepare_waveform() {
    fresh_state_with_spins();
    set_current_model_short_name("lac");
    RuntimeState& rt = g_runtime;
    rt.ap = 2;
    double value = 1;
    for (double* samples : {rt.xb, rt.yb, rt.gx, rt.gy, rt.gz})
        for (int l = 0; l < 2; ++l)
            samples[l] = value++;
}

struct BxBy {
    std::string out, err;
    PulseFromDisk read = PulseFromDisk::input_ended;
    std::vector<double> xb, yb;
};

BxBy read_bx_by(const std::string& answers, int ap) {
    BxBy pulse;
    pulse.xb.assign(4, 9.0);
    pulse.yb.assign(4, 9.0);
    const ConsoleOutput printed =
        play_console(answers, [&] { pulse.read = ReadBxByPulse(&ap, pulse.xb.data(), pulse.yb.data()); });
    pulse.out = printed.out;
    pulse.err = printed.err;
    return pulse;
}

} // namespace

TEST(ReadBxByPulse, ReadsBothComponentsAndScalesThem) {
    TempTree tree;
    tree.write("bx.txt", "1\n2\n3\n");
    tree.write("by.sg", "1 0 -1\n1 1 -2\n1 2 -3\n");
    const BxBy pulse = read_bx_by("1\nbx.txt\n2\nby.sg\n2.5\nleft\n", 3);
    EXPECT_EQ(pulse.out, "\n\nFile name Bx(t)\n" + input_menu + ascii_prompt + "File name By(t)\n" +
                             input_menu + sg_prompt + "\n\nMultiplication factor : ");
    EXPECT_EQ(pulse.read, PulseFromDisk::defined);
    EXPECT_EQ(pulse.xb, (std::vector<double>{2.5, 5, 7.5, 9}));
    EXPECT_EQ(pulse.yb, (std::vector<double>{-2.5, -5, -7.5, 9}));
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(ReadBxByPulse, WhatAShortFileHeldIsUsedAndTheRestIsZero) {
    TempTree tree;
    tree.write("bx.txt", "1\n2\n");
    const BxBy pulse = read_bx_by("1\nbx.txt\n1\nnowhere.txt\n10\n", 4);
    EXPECT_EQ(pulse.read, PulseFromDisk::defined);
    EXPECT_EQ(pulse.xb, (std::vector<double>{10, 20, 0, 0}));
    EXPECT_EQ(pulse.yb, (std::vector<double>{0, 0, 0, 0}));
    EXPECT_NE(pulse.err.find("fscanf: "), std::string::npos);
    EXPECT_NE(pulse.err.find("fopen(read): No such file or directory\n"), std::string::npos);
}

TEST(ReadBxByPulse, CancelledComponentsAreZeroAndTheFactorIsStillAsked) {
    const BxBy pulse = read_bx_by("3\n3\n7\n", 2);
    EXPECT_EQ(pulse.read, PulseFromDisk::none);
    EXPECT_EQ(pulse.out, "\n\nFile name Bx(t)\n" + input_menu + "File name By(t)\n" + input_menu +
                             "\n\nMultiplication factor : ");
    EXPECT_EQ(pulse.xb, (std::vector<double>{0, 0, 9, 9}));
    EXPECT_EQ(pulse.yb, (std::vector<double>{0, 0, 9, 9}));
}

TEST(ReadBxByPulse, ABadMenuAnswerDoesNotBecomeTheFactor) {
    const BxBy pulse = read_bx_by("what 5\n3\n7\n", 1);
    EXPECT_EQ(pulse.read, PulseFromDisk::none);
    EXPECT_EQ(unread_answers(), "");
}

TEST(ReadBxByPulse, IsAPulseWithOneFileOfTheTwo) {
    TempTree tree;
    tree.write("b.txt", "0\n0\n");
    tree.write("word.txt", "b\n");
    using enum PulseFromDisk;
    EXPECT_EQ(read_bx_by("1\nb.txt\n3\n7\n", 2).read, defined);
    EXPECT_EQ(read_bx_by("x\n1\nb.txt\n7\n", 2).read, defined);
    EXPECT_EQ(read_bx_by("1\nnowhere.txt\n1\nword.txt\n7\n", 2).read, none);
}

TEST(ReadBxByPulse, NoSamplesReadNothing) {
    TempTree tree;
    tree.write("bx.txt", "1\n");
    for (int ap : {0, -3}) {
        const BxBy pulse = read_bx_by("1\nbx.txt\n1\nbx.txt\n2\n", ap);
        EXPECT_EQ(pulse.read, ap == 0 ? PulseFromDisk::defined : PulseFromDisk::none);
        EXPECT_EQ(pulse.xb, std::vector<double>(4, 9.0));
    }
}

TEST(ReadBxByPulse, AnEndedInputIsTold) {
    for (const char* answers : {"", "3\n", "3\n3\n", "3\n3\nx\n"})
        EXPECT_EQ(read_bx_by(answers, 2).read, PulseFromDisk::input_ended) << answers;
}

TEST(ResolveDefaultOutputPath, OnlyBareNamesGoToTheOutputFolder) {
    char path[KOR_PATH_SIZE];
    EXPECT_EQ(ps_resolve_default_output_path(path, sizeof path, "my wave.bin"), 1);
    EXPECT_EQ(with_slashes(path), rf_output_folder() + "/my wave.bin");
    for (const char* name : {"./a.bin", "..\\a.bin", "/tmp/a.bin", "c:a.bin"}) {
        EXPECT_EQ(ps_resolve_default_output_path(path, sizeof path, name), 1);
        EXPECT_STREQ(path, name);
    }
    EXPECT_EQ(ps_resolve_default_output_path(path, 4, "./a.bin"), 0);
    EXPECT_EQ(ps_resolve_default_output_path(path, 4, "a"), 0);
}

TEST(WriteSpatialSectorWaveformFile, WritesTheFiveArrays) {
    TempTree tree;
    prepare_waveform();
    const ConsoleOutput printed = play_console(
        " ./my wave.bin \nleft\n", [] { EXPECT_EQ(ps_write_spatial_sector_waveform_file(7), 1); });
    EXPECT_EQ(printed.out, file_name_question("RF and gradient", "lac_s07.bin") +
                               "Sector waveform file written to : ./my wave.bin\n");
    EXPECT_STREQ(g_runtime.fnames[7], "./my wave.bin");
    EXPECT_EQ(waveform_blocks(tree, "my wave.bin", 2, 5),
              (std::vector<std::vector<double>>{{1, 2}, {3, 4}, {5, 6}, {7, 8}, {9, 10}}));
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(Write2DSectorWaveformFile, WritesTheTwoArrays) {
    TempTree tree;
    prepare_waveform();
    const ConsoleOutput printed =
        play_console("./a.bin\n", [] { EXPECT_EQ(ps_write_2d_sector_waveform_file(12), 1); });
    EXPECT_EQ(printed.out,
              file_name_question("RF", "lac_2d_s12.bin") + "Sector waveform file written to : ./a.bin\n");
    EXPECT_EQ(waveform_blocks(tree, "a.bin", 2, 2), (std::vector<std::vector<double>>{{1, 2}, {3, 4}}));
}

TEST(WriteSectorWaveformFile, AsksForTheShortNameFirst) {
    TempTree tree;
    prepare_waveform();
    clear_current_model_short_name();
    const ConsoleOutput printed =
        play_console("Lac 90\n./a.bin\n", [] { ps_write_2d_sector_waveform_file(1); });
    EXPECT_EQ(printed.out,
              "\nShort model name / file prefix\n(used for default sector waveform filenames)\n: "
              "Using model prefix : lac_90\n" +
                  file_name_question("RF", "lac_90_2d_s01.bin") +
                  "Sector waveform file written to : ./a.bin\n");
}

// A waveform of the sequence may be written anew, the files that define the model not.
TEST(WriteSectorWaveformFile, DoesNotReplaceTheDefinitionOfTheLoadedModel) {
    TempTree tree;
    prepare_waveform();
    tree.write("q.korseq", "the sequence");
    remember_model_files("", "", "q.korseq");
    const ConsoleOutput printed =
        play_console("./q.korseq\n", [] { EXPECT_EQ(ps_write_spatial_sector_waveform_file(3), 1); });
    forget_model_files();
    EXPECT_EQ(printed.err, "[KOR] The output file ./q.korseq is the sequence file of the loaded model.\n");
    EXPECT_EQ(printed.out, file_name_question("RF and gradient", "lac_s03.bin") +
                               "Sector waveform file was not written.\n");
    EXPECT_EQ(tree.read("q.korseq"), "the sequence");
    EXPECT_STREQ(g_runtime.fnames[3], "");
}

TEST(WriteSectorWaveformFile, AFileThatCannotBeWrittenLeavesNoName) {
    TempTree tree;
    prepare_waveform();
    std::snprintf(g_runtime.fnames[3], sizeof g_runtime.fnames[3], "old.bin");
    const ConsoleOutput printed =
        play_console("./no/a.bin\n", [] { EXPECT_EQ(ps_write_spatial_sector_waveform_file(3), 1); });
    EXPECT_EQ(printed.out, file_name_question("RF and gradient", "lac_s03.bin") +
                               "Sector waveform file was not written.\n");
    EXPECT_EQ(printed.err, "./no/a.bin: No such file or directory\n");
    EXPECT_STREQ(g_runtime.fnames[3], "");
}

TEST(WriteSectorWaveformFile, LooksAtEverySampleThatItStoresAndAtNoOther) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    TempTree tree;
    RuntimeState& rt = g_runtime;
    for (double* samples : {rt.xb, rt.yb, rt.gx, rt.gy, rt.gz}) {
        prepare_waveform();
        samples[2] = nan; // behind the pulse
        play_console("./a.bin\n", [] { ps_write_spatial_sector_waveform_file(3); });
        EXPECT_STREQ(rt.fnames[3], "./a.bin");
        samples[1] = nan;
        const ConsoleOutput printed =
            play_console("./b.bin\n", [] { EXPECT_EQ(ps_write_spatial_sector_waveform_file(3), 1); });
        EXPECT_EQ(printed.out,
                  file_name_question("RF and gradient", "lac_s03.bin") +
                      "Sample 1 of the waveform is not finite: these parameters make no pulse or gradient.\n"
                      "Sector waveform file was not written.\n");
        EXPECT_STREQ(rt.fnames[3], "");
        EXPECT_FALSE(tree.exists("b.bin"));
        samples[1] = samples[2] = 0;
    }
    prepare_waveform();
    rt.gz[0] = nan; // a 2D waveform has no gradients
    play_console("./c.bin\n", [] { ps_write_2d_sector_waveform_file(3); });
    EXPECT_STREQ(rt.fnames[3], "./c.bin");
    rt.gz[0] = 0;
}

TEST(WriteSectorWaveformFile, NeverReplacesTheLoadedModelFile) {
    TempTree tree;
    prepare_waveform();
    tree.write("lac.kormodel", "the model");
    remember_model_files("lac.kormodel", "", "");
    for (const auto write : {ps_write_spatial_sector_waveform_file, ps_write_2d_sector_waveform_file}) {
        std::snprintf(g_runtime.fnames[3], sizeof g_runtime.fnames[3], "old.bin");
        const ConsoleOutput printed = play_console("./lac.kormodel\n", [&] { EXPECT_EQ(write(3), 1); });
        EXPECT_NE(printed.out.find("File name : Sector waveform file was not written.\n"), std::string::npos);
        EXPECT_EQ(printed.err, "[KOR] The output file ./lac.kormodel is the model file.\n");
        EXPECT_STREQ(g_runtime.fnames[3], "");
        EXPECT_EQ(tree.read("lac.kormodel"), "the model");
    }
    forget_model_files();
}

TEST(WriteSectorWaveformFile, TellsWhichOtherSectorReadsTheSameFile) {
    TempTree tree;
    prepare_waveform();
    g_runtime.nos = 4;
    for (const int k : {1, 2, 5})
        std::snprintf(g_runtime.fnames[k], sizeof g_runtime.fnames[k], "a.bin");
    std::snprintf(g_runtime.fnames[4], sizeof g_runtime.fnames[4], "absent.bin");
    const ConsoleOutput printed = play_console("./a.bin\n", [] { ps_write_2d_sector_waveform_file(2); });
    EXPECT_EQ(printed.out, file_name_question("RF", "lac_2d_s02.bin") +
                               "Sector waveform file written to : ./a.bin\nSector 1 reads the same file.\n");
    EXPECT_EQ(play_console("./b.bin\n", [] { ps_write_2d_sector_waveform_file(2); }).out,
              file_name_question("RF", "lac_2d_s02.bin") + "Sector waveform file written to : ./b.bin\n");
}

TEST(WriteSectorWaveformFile, APathBeyond255CharactersLeavesNoName) {
    TempTree tree;
    prepare_waveform();
    const std::string longer = "./" + std::string(121, '/') + std::string(133, 'a');
    ASSERT_EQ(longer.size(), 256u);
    const ConsoleOutput printed = play_console(longer + "\n", [] { ps_write_2d_sector_waveform_file(2); });
    EXPECT_EQ(printed.out, file_name_question("RF", "lac_2d_s02.bin") +
                               "Resolved output path is too long for internal storage:\n  " + longer + "\n");
    EXPECT_STREQ(g_runtime.fnames[2], "");
    EXPECT_EQ(tree.names(), std::vector<std::string>{});
}

TEST(WriteSectorWaveformFile, ANameThatFitsNoPathIsNotResolved) {
    TempTree tree;
    prepare_waveform();
    const std::string name(1020, 'a');
    const ConsoleOutput printed =
        play_console(name + "\nleft\n", [] { ps_write_2d_sector_waveform_file(2); });
    EXPECT_EQ(printed.out, file_name_question("RF", "lac_2d_s02.bin") +
                               "Could not resolve output path for the sector waveform file.\n");
    EXPECT_EQ(unread_answers(), "left\n");
}

TEST(WriteSectorWaveformFile, AnEndedInputWritesNothing) {
    TempTree tree;
    prepare_waveform();
    std::snprintf(g_runtime.fnames[3], sizeof g_runtime.fnames[3], "old.bin");
    play_console("", [] { EXPECT_EQ(ps_write_spatial_sector_waveform_file(3), 0); });
    EXPECT_STREQ(g_runtime.fnames[3], "old.bin");
    EXPECT_TRUE(tree.names().empty());
}
