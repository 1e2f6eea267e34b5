#include "dialogues/kor/expectation_dialogue.h"

#include "kor/runtime_state.h"
#include "modelfiles.h"

#include <gtest/gtest.h>

#include <cstring>

#include <climits>
#include <cmath>

using namespace kor_test;

TEST(CalcExpVal, TwoReturns) {
    const ConsoleOutput printed = play_console("2\n3\n", kor::CalcExpVal);
    EXPECT_EQ(printed.out, menu);
    EXPECT_EQ(unread_answers(), "3\n");
}

TEST(CalcExpVal, AWordReturnsAndIsUsedUp) {
    const ConsoleOutput printed = play_console("back please\n7\n", kor::CalcExpVal);
    EXPECT_EQ(printed.out, menu);
    EXPECT_EQ(unread_answers(), "7\n");
    EXPECT_EQ(play_console("", kor::CalcExpVal).out, menu);
}

TEST(CalcExpVal, AnyOtherNumberCalculatesAndShowsTheMenuAgain) {
    TempTree tree;
    for (const char* choice : {"1", "0", "3", "-7"}) {
        const ConsoleOutput printed = play_console(std::string(choice) + "\n\n2\n", kor::CalcExpVal);
        EXPECT_EQ(printed.err, "ExpValNDensMat: fopen(dm.bin): No such file or directory\n");
        EXPECT_EQ(printed.out, menu + press_enter + menu);
    }
}

TEST(ExpValNDensMat, ReportsAFileWithoutHeader) {
    TempTree tree;
    define_spins({0.0});
    tree.write("dm.bin", "12345678901");
    const ConsoleOutput printed = ask("\n");
    EXPECT_NE(printed.err.find("\nExpValNDensMat: failed to read binary header from dm.bin\n"),
              std::string::npos);
    EXPECT_EQ(printed.out, press_enter);
}

TEST(ExpValNDensMat, NeedsASpinSystem) {
    TempTree tree;
    prepare(tree, {1.0});
    kor::g_runtime.spinsystemdefined = 0;
    const ConsoleOutput printed = ask("\n5\n");
    EXPECT_EQ(printed.err, "ExpValNDensMat: define spin system first.\n");
    EXPECT_EQ(printed.out, press_enter);
    EXPECT_EQ(unread_answers(), "5\n");
}

TEST(ExpValNDensMat, RefusesDimensionsThatNoMatrixHas) {
    TempTree tree;
    define_spins({0.0});
    for (int n : {0, -1, 257, 258, INT_MAX, INT_MIN}) {
        tree.write("dm.bin", density_file(0, n, 1, {bloch_matrix(1, 0, 0)}));
        const ConsoleOutput printed = ask("\n");
        EXPECT_EQ(printed.err,
                  "ExpValNDensMat: unsupported matrix dimension fn=" + std::to_string(n) + " (max 256)\n");
        EXPECT_EQ(printed.out, press_enter);
    }
}

TEST(ExpValNDensMat, SaysThatTheStatesAreOfAnotherSystem) {
    TempTree tree;
    define_spins({0.0});
    tree.write("dm.bin", density_file(0, 4, 1, {DenseMatrix(16)}));
    const ConsoleOutput printed = ask(choose_ix + "1\ntable.txt\n\n");
    EXPECT_EQ(printed.err,
              "ExpValNDensMat: warning: the matrices of dm.bin have dimension 4, those of the spin "
              "system 2: no operator of this system fits\n");
    EXPECT_EQ(behind_operator(printed),
              create_menu + "Output text file name : Done. Press <Enter> to continue");
}

TEST(ExpValNDensMat, WritesATableOfNumbersRealAndImaginaryParts) {
    TempTree tree;
    prepare(tree, {0.0, 0.0});
    const ConsoleOutput printed = ask(choose_ix + "1\ntable.txt\n\n");
    EXPECT_EQ(printed.err, "");
    EXPECT_EQ(behind_operator(printed),
              create_menu + "Output text file name : Done. Press <Enter> to continue");
    EXPECT_EQ(tree.read("table.txt"), "# index    expectation_re    expectation_im\n"
                                      "    1   0   0\n"
                                      "    2   0   0\n");
    EXPECT_EQ(unread_answers(), "");
}

TEST(ExpValNDensMat, TheTableHoldsTheComponentsOfTheMagnetisation) {
    TempTree tree;
    const std::vector<double> x = {0.75, -2.0, 1e-6};
    prepare(tree, x);
    ask(choose_ix + "1\ntable.txt\n\n");
    std::FILE* table = std::fopen("table.txt", "r");
    ASSERT_NE(table, nullptr);
    char header[64];
    ASSERT_NE(std::fgets(header, sizeof header, table), nullptr);
    for (std::size_t k = 0; k < x.size(); ++k) {
        int index = 0;
        double re = 0, im = 0;
        ASSERT_EQ(std::fscanf(table, "%d %lf %lf", &index, &re, &im), 3);
        EXPECT_EQ(index, static_cast<int>(k) + 1);
        EXPECT_NEAR(re, x[k] / std::sqrt(2.0), 1e-15);
        EXPECT_NEAR(im, 0.0, 1e-16);
    }
    std::fclose(table);
}

TEST(ExpValNDensMat, AnyOtherNumberWritesTheRealPartsAsDoubles) {
    for (const char* choice : {"2", "0", "9"}) {
        TempTree tree;
        prepare(tree, {0.75, -2.0});
        const ConsoleOutput printed = ask(choose_ix + choice + "\nvalues.bin\n\n");
        EXPECT_EQ(behind_operator(printed),
                  create_menu + "Output binary file name : Done. Press <Enter> to continue");
        const std::string bytes = tree.read("values.bin");
        ASSERT_EQ(bytes.size(), 16u);
        const std::vector<double> values = reals_behind_header(std::string(12, '\0') + bytes);
        EXPECT_NEAR(values[0], 0.75 / std::sqrt(2.0), 1e-15);
        EXPECT_NEAR(values[1], -2.0 / std::sqrt(2.0), 1e-15);
    }
}

// The command-line operations insist on type 0; here what stands behind the header decides.
TEST(ExpValNDensMat, TheTypeOfTheFileDoesNotMatter) {
    TempTree tree;
    define_spins({0.0});
    tree.write("dm.bin", density_file(7, 2, 1, {bloch_matrix(0, 0, 0)}));
    EXPECT_EQ(ask(choose_ix + "1\ntable.txt\n\n").err, "");
    EXPECT_EQ(tree.read("table.txt"), "# index    expectation_re    expectation_im\n    1   0   0\n");
}

TEST(ExpValNDensMat, NamesTheRowWhereTheFileEnds) {
    TempTree tree;
    prepare(tree, {1.0, 2.0, 3.0});
    const std::string whole = tree.read("dm.bin");
    tree.write("dm.bin", whole.substr(0, 12 + 64 + 32 + 31));
    const ConsoleOutput printed = ask(choose_ix + "2\nvalues.bin\n\n");
    EXPECT_EQ(printed.err, ">>> READ BINARY FILE ERROR <<< (dw=2 row=2)\n");
    EXPECT_EQ(behind_operator(printed), create_menu + "Output binary file name : " + press_enter);
    EXPECT_EQ(tree.read("values.bin").size(), 8u);
}

TEST(ExpValNDensMat, AnUnreadableChoiceStops) {
    TempTree tree;
    prepare(tree, {1.0});
    const ConsoleOutput printed = ask(choose_ix + "text\n\n4\n");
    EXPECT_EQ(printed.err, "ExpValNDensMat: invalid choice\n");
    EXPECT_EQ(behind_operator(printed), create_menu + press_enter);
    EXPECT_EQ(unread_answers(), "4\n");
}

TEST(ExpValNDensMat, WithoutAnOutputNameItReturnsAtOnce) {
    TempTree tree;
    prepare(tree, {1.0});
    ConsoleOutput printed = ask(choose_ix + "1\n");
    EXPECT_EQ(printed.err, "ExpValNDensMat: invalid output name\n");
    EXPECT_EQ(behind_operator(printed), create_menu + "Output text file name : ");
    printed = ask(choose_ix + "2\n");
    EXPECT_EQ(printed.err, "ExpValNDensMat: invalid output name\n");
    EXPECT_EQ(behind_operator(printed), create_menu + "Output binary file name : ");
}

TEST(ExpValNDensMat, ReportsAnOutputThatCannotBeOpened) {
    TempTree tree;
    prepare(tree, {1.0});
    ConsoleOutput printed = ask(choose_ix + "1\nno-folder/table.txt\n\n");
    EXPECT_EQ(printed.err, "ExpValNDensMat: fopen(out text): No such file or directory\n");
    EXPECT_EQ(behind_operator(printed), create_menu + "Output text file name : " + press_enter);
    printed = ask(choose_ix + "2\nno-folder/values.bin\n\n");
    EXPECT_EQ(printed.err, "ExpValNDensMat: fopen(out bin): No such file or directory\n");
}

TEST(ExpValNDensMat, DoesNotWriteOverTheFileItReads) {
    TempTree tree;
    prepare(tree, {1.0});
    const std::string states = tree.read("dm.bin");
    for (const std::string name : {"dm.bin", "./dm.bin"}) {
        for (const char* kind : {"1\n", "2\n"}) {
            const ConsoleOutput printed = ask(choose_ix + kind + name + "\n\n");
            EXPECT_EQ(printed.err,
                      "ExpValNDensMat: the output file " + name + " is the density file that is read\n");
            EXPECT_EQ(tree.read("dm.bin"), states);
        }
    }
}

TEST(ExpValNDensMat, DoesNotWriteOverTheLoadedModel) {
    TempTree tree;
    prepare(tree, {1.0});
    tree.write("m.kormodel", "the model");
    tree.write("wave", "the waveform");
    kor::remember_model_files("m.kormodel", "s.korspin", "q.korseq");
    kor::g_runtime.nos = 1;
    std::strcpy(kor::g_runtime.fnames[1], "wave");
    for (const char* kind : {"1\n", "2\n"}) {
        EXPECT_EQ(ask(choose_ix + kind + "m.kormodel\n\n").err,
                  "[KOR] The output file m.kormodel is the model file.\n");
        const ConsoleOutput over_waveform = ask(choose_ix + kind + "wave\n\n");
        EXPECT_EQ(over_waveform.err, "[KOR] The output file wave is the waveform file of sector 1.\n");
        EXPECT_EQ(over_waveform.out.substr(over_waveform.out.size() - press_enter.size()), press_enter);
    }
    kor::forget_model_files();
    kor::g_runtime.nos = 0;
    EXPECT_EQ(tree.read("m.kormodel"), "the model");
    EXPECT_EQ(tree.read("wave"), "the waveform");
}

TEST(ExpValNDensMat, AFileWithoutMatricesGivesAnEmptyTable) {
    TempTree tree;
    define_spins({0.0});
    for (int count : {0, -1, INT_MIN}) {
        tree.write("dm.bin", density_file(0, 2, count, {}));
        EXPECT_EQ(ask(choose_ix + "1\ntable.txt\n\n").err, "");
        EXPECT_EQ(tree.read("table.txt"), "# index    expectation_re    expectation_im\n");
    }
}
