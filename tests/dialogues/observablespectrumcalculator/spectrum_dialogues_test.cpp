#include "observablespectrumcalculator/spectrum_dialogues.h"

#include "modelfiles.h"
#include "observablespectrumcalculator/spectrum_files.h"
#include "support/console_script.h"
#include "support/fake_gnuplot.h"
#include "support/menu_texts.h"
#include "support/signal_files.h"

#include <gtest/gtest.h>

namespace kor {
namespace {

using kor_test::ConsoleOutput;
using kor_test::play_console;
using kor_test::SPECTRUM_OUTPUT_MENU;
using kor_test::TempTree;

constexpr char base_prompt[] = "Base file name (without extension): ";
constexpr char plot_prompt[] = "Open spectrum in gnuplot now? [y/n] : ";

ConsoleOutput play_menu(const std::string& answers) {
    return play_console(answers, [] { SpectrumOutputMenu(1.0); });
}

void write_signal() {
    kor_test::write_file("korsign.bin",
                         kor_test::header_bytes(1, 2, 1) + kor_test::complex_bytes({1.0, 3.0}));
}

const std::string csv_transcript = std::string(SPECTRUM_OUTPUT_MENU) + base_prompt +
                                   "Wrote run7_td.csv and run7_fd.csv\n"
                                   "Frequency-domain CSV: run7_fd.csv\n"
                                   "Wrote gnuplot script: run7_fd.csv.gp\n" +
                                   plot_prompt;

TEST(SpectrumOutputMenu, TwoWritesTablesAndScript) {
    const TempTree folder;
    write_signal();
    EXPECT_EQ(play_menu("2\nrun7\nn\n").out, csv_transcript);
    EXPECT_EQ(folder.names(),
              (std::vector<std::string>{"korsign.bin", "run7_fd.csv", "run7_fd.csv.gp", "run7_td.csv"}));
    EXPECT_EQ(folder.read("run7_td.csv"), "t_s,f2_index,re,im,mag\n0,0,1,0,1\n1,0,3,0,3\n");
    WriteGnuplotSpectrumScript("expected.gp", "run7_fd.csv", "KOR Spectrum");
    EXPECT_EQ(folder.read("run7_fd.csv.gp"), folder.read("expected.gp"));
}

TEST(SpectrumOutputMenu, YesOpensThePlot) {
    const TempTree folder;
    const kor_test::FakeGnuplot gnuplot(folder);
    gnuplot.install();
    write_signal();
    EXPECT_EQ(play_menu("2\nrun7\nYes\n").out, csv_transcript);
    EXPECT_EQ(gnuplot.noted(), "argument -persist\nargument run7_fd.csv.gp\n");
}

TEST(SpectrumOutputMenu, SaysWhenGnuplotIsNotInstalled) {
    const TempTree folder;
    const kor_test::FakeGnuplot gnuplot(folder);
    write_signal();
    EXPECT_EQ(play_menu("2\nrun7\ny\n").out,
              csv_transcript +
                  "gnuplot is not installed (or not on the search path); the plot was not opened.\n");
}

TEST(SpectrumOutputMenu, OneWritesThePvWaveFile) {
    const TempTree folder;
    write_signal();
    EXPECT_EQ(play_menu("1\nwave.dat\n").out,
              std::string(SPECTRUM_OUTPUT_MENU) + "File name PV-Wave file : ");
    EXPECT_EQ(folder.read("wave.dat").size(), 1024U + 32U);
}

TEST(SpectrumOutputMenu, OtherAnswersReturn) {
    const TempTree folder;
    write_signal();
    for (const char* answer : {"3\n", "0\n", "csv\n", ""}) {
        EXPECT_EQ(play_menu(answer).out, SPECTRUM_OUTPUT_MENU) << answer;
        EXPECT_EQ(kor_test::unread_answers(), "");
    }
    EXPECT_EQ(folder.names(), std::vector<std::string>{"korsign.bin"});
}

TEST(SpectrumOutputMenu, StopsWhereATableFails) {
    const TempTree folder;
    const ConsoleOutput printed = play_menu("2\nrun7\ny\n");
    EXPECT_EQ(printed.out, std::string(SPECTRUM_OUTPUT_MENU) + base_prompt);
    EXPECT_EQ(printed.err, "fopen(korsign.bin): No such file or directory\n");
    EXPECT_EQ(kor_test::unread_answers(), "y\n");
}

TEST(SpectrumOutputMenu, StopsWhereTheScriptFails) {
    const TempTree folder;
    write_signal();
    folder.make_folder("run7_fd.csv.gp");
    const ConsoleOutput printed = play_menu("2\nrun7\ny\n");
    EXPECT_EQ(printed.out, std::string(SPECTRUM_OUTPUT_MENU) + base_prompt +
                               "Wrote run7_td.csv and run7_fd.csv\nFrequency-domain CSV: run7_fd.csv\n");
    EXPECT_EQ(printed.err, "run7_fd.csv.gp: Is a directory\n");
}

TEST(SpectrumOutputMenu, ReplacesNoFileOfTheLoadedModel) {
    const struct {
        const char* file; // that of the model
        const char* answers;
    } cases[] = {{"wave.dat", "1\nwave.dat\n"},
                 {"run7_td.csv", "2\nrun7\nn\n"},
                 {"run7_fd.csv", "2\nrun7\nn\n"},
                 {"run7_fd.csv.gp", "2\nrun7\nn\n"}};
    for (const auto& one : cases) {
        const TempTree folder;
        write_signal();
        folder.write(one.file, "the model");
        remember_model_files(one.file, "", "");
        EXPECT_EQ(play_menu(one.answers).err,
                  "[KOR] The output file " + std::string(one.file) + " is the model file.\n");
        forget_model_files();
        EXPECT_EQ(folder.read(one.file), "the model");
    }
}

TEST(CreateCsvFiles, FailsWithoutAName) {
    const TempTree folder;
    write_signal();
    play_console("", [] { EXPECT_EQ(Create_CSV_Files(1.0, nullptr, 0), 0); });
    EXPECT_EQ(folder.names(), std::vector<std::string>{"korsign.bin"});
}

TEST(CreateCsvFiles, CutsTheNameToItsBuffer) {
    const TempTree folder;
    write_signal();
    play_console("spectrum\n", [] {
        char name[10] = "";
        EXPECT_EQ(Create_CSV_Files(1.0, name, sizeof name), 1);
        EXPECT_STREQ(name, "spectrum_");
    });
    play_console("again\n", [] { EXPECT_EQ(Create_CSV_Files(1.0, nullptr, 0), 1); });
    EXPECT_TRUE(folder.exists("again_fd.csv"));
}

TEST(CreateCsvFiles, TakesTheLongestName) {
    const TempTree folder;
    write_signal();
    const std::string base = std::string(100, 'a') + '/' + std::string(100, 'b') + '/' + std::string(53, 'c');
    ASSERT_EQ(base.size(), 255U);
    folder.make_folder(std::string(100, 'a') + '/' + std::string(100, 'b'));
    EXPECT_NE(play_menu("2\n" + base + "\nn\n").out.find("Wrote gnuplot script: " + base + "_fd.csv.gp\n"),
              std::string::npos);
    EXPECT_TRUE(folder.exists(base + "_fd.csv.gp"));
}

TEST(AskOpenPlotNow, YesStartsWithY) {
    for (const auto& [answer, expected] :
         {std::pair{"y\n", 1}, {"Y\n", 1}, {"yes\n", 1}, {"no\n", 0}, {"ja\n", 0}, {"1\n", 0}, {"", 0}}) {
        int yes = -1;
        EXPECT_EQ(play_console(answer, [&yes] { yes = AskOpenPlotNow(); }).out, plot_prompt);
        EXPECT_EQ(yes, expected) << answer;
    }
}

} // namespace
} // namespace kor
