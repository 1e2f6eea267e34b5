#include "modelfiles.h"

#include "kor/runtime_state.h"
#include "support/console_script.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace kor;
using namespace kor_test;

namespace {

/// A model in four files, of which sector 2 of three has the only waveform that is there.
class ModelFiles : public testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"m.kormodel", "s.korspin", "q.korseq", "wave", "other"})
            tree_.write(name, name);
        forget_model();
        g_runtime.nos = 3;
        std::strcpy(g_runtime.fnames[1], "absent");
        std::strcpy(g_runtime.fnames[2], "wave");
        g_runtime.fnames[3][0] = '\0';
        remember_model_files("m.kormodel", tree_.path("s.korspin").c_str(), "q.korseq");
    }
    void TearDown() override {
        forget_model_files();
        forget_model();
    }

    /// What is said of an output; empty when it may be written.
    static std::string refusal(const std::string& output,
                               bool (*replaces)(const char*) = replaces_model_files) {
        bool refused = false;
        const ConsoleOutput printed = play_console("", [&] { refused = replaces(output.c_str()); });
        EXPECT_EQ(printed.out, "");
        EXPECT_EQ(refused, !printed.err.empty());
        return printed.err;
    }

    TempTree tree_;
};

} // namespace

TEST_F(ModelFiles, EachIsNamedAsWhatItIs) {
    EXPECT_EQ(refusal("m.kormodel"), "[KOR] The output file m.kormodel is the model file.\n");
    EXPECT_EQ(refusal("s.korspin"),
              "[KOR] The output file s.korspin is the spin-system file of the loaded model.\n");
    EXPECT_EQ(refusal("q.korseq"),
              "[KOR] The output file q.korseq is the sequence file of the loaded model.\n");
    EXPECT_EQ(refusal("wave"), "[KOR] The output file wave is the waveform file of sector 2.\n");
    EXPECT_EQ(sector_of_waveform_file("wave"), 2);
}

TEST_F(ModelFiles, AreKnownByAnyName) {
    const std::string whole = tree_.path("q.korseq");
    EXPECT_EQ(refusal(whole),
              "[KOR] The output file " + whole + " is the sequence file of the loaded model.\n");
    EXPECT_EQ(refusal("./wave"), "[KOR] The output file ./wave is the waveform file of sector 2.\n");
}

TEST_F(ModelFiles, WaveformsAreNoPartOfTheDefinition) {
    EXPECT_EQ(refusal("wave", replaces_definition_file), "");
    EXPECT_EQ(refusal("s.korspin", replaces_definition_file), refusal("s.korspin"));
}

TEST_F(ModelFiles, OtherFilesMayBeWritten) {
    for (const char* name : {"other", "absent", "new", ""}) {
        EXPECT_EQ(refusal(name), "") << name;
        EXPECT_EQ(sector_of_waveform_file(name), 0) << name;
    }
}

TEST_F(ModelFiles, SectorsBehindTheSequenceDoNotCount) {
    g_runtime.nos = 1;
    EXPECT_EQ(refusal("wave"), "");
    EXPECT_EQ(sector_of_waveform_file("wave"), 0);
}

TEST_F(ModelFiles, AreForgotten) {
    forget_model_files();
    for (const char* name : {"m.kormodel", "s.korspin", "q.korseq"})
        EXPECT_EQ(refusal(name), "") << name;
}
