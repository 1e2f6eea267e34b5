#include "korcurrentmodel/loaded_model.h"

#include "support/console_script.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace kor;
using namespace kor_test;

const std::string QUESTION =
    "\nShort model name / file prefix\n(used for default sector waveform filenames)\n: ";

/// Each test begins as the process does: nothing loaded, no short name.
class LoadedModel : public testing::Test {
protected:
    void SetUp() override { clear_loaded_model_path(); }
};

using ShortNameState = LoadedModel;
using EnsureShortName = LoadedModel;

void expect_short_name(const std::string& name) {
    EXPECT_EQ(g_current_model_short_name_valid, name.empty() ? 0 : 1);
    EXPECT_EQ(g_current_model_short_name, name);
}

void expect_loaded_path(const std::string& path) {
    EXPECT_EQ(g_loaded_model_path_valid, path.empty() ? 0 : 1);
    EXPECT_EQ(g_loaded_model_path, path);
}

/// The short name after these answers, with what was printed; "-" when there is none.
std::string ensured(const std::string& answers, std::string& printed) {
    char name[KOR_SHORT_NAME_SIZE] = "untouched";
    int result = -1;
    printed = play_console(answers, [&] { result = KOREnsureCurrentModelShortName(name, sizeof name); }).out;
    if (result == 1)
        return name;
    EXPECT_EQ(result, 0);
    EXPECT_STREQ(name, "untouched");
    return "-";
}

} // namespace

TEST_F(LoadedModel, KeepsThePathAndTakesItsShortName) {
    set_loaded_model_path("/data/My Model.rev.kormodel");
    expect_loaded_path("/data/My Model.rev.kormodel");
    expect_short_name("my_model_rev");
}

TEST_F(LoadedModel, IsCutTo1023Characters) {
    const std::string path = "/" + std::string(1100, 'a');
    set_loaded_model_path(path.c_str());
    expect_loaded_path(path.substr(0, 1023));
}

TEST_F(LoadedModel, ClearsThePathButKeepsTheShortNameWhenSetToNothing) {
    for (const char* nothing : {"", static_cast<const char*>(nullptr)}) {
        set_loaded_model_path("lac.kormodel");
        set_loaded_model_path(nothing);
        expect_loaded_path("");
        expect_short_name("lac");
    }
}

TEST_F(LoadedModel, KeepsTheOldShortNameWhenThePathGivesNone) {
    set_loaded_model_path("lac.kormodel");
    set_loaded_model_path("dir/%%%.kormodel");
    expect_loaded_path("dir/%%%.kormodel");
    expect_short_name("lac");
}

TEST_F(LoadedModel, ForgetsPathAndShortNameWhenCleared) {
    set_loaded_model_path("lac.kormodel");
    clear_loaded_model_path();
    expect_loaded_path("");
    expect_short_name("");
}

TEST_F(LoadedModel, MayBeSetFromItself) {
    set_loaded_model_path("dir/lac.kormodel");
    set_loaded_model_path(g_loaded_model_path);
    expect_loaded_path("dir/lac.kormodel");
}

TEST_F(LoadedModel, IsNamedInTheHintOfTheMenus) {
    EXPECT_EQ(play_console("", KORPrintCurrentModelFileHint).out,
              "Current model file : <unsaved current model>\n");
    set_loaded_model_path("dir/lac.kormodel");
    EXPECT_EQ(play_console("", KORPrintCurrentModelFileHint).out, "Current model file : dir/lac.kormodel\n");
}

TEST_F(ShortNameState, IsKeptAsGivenUpTo127Characters) {
    set_current_model_short_name("As Given!");
    expect_short_name("As Given!");
    set_current_model_short_name(std::string(200, 'n').c_str());
    expect_short_name(std::string(127, 'n'));
}

TEST_F(ShortNameState, IsClearedByNothing) {
    set_current_model_short_name("a");
    set_current_model_short_name("");
    expect_short_name("");
    set_current_model_short_name("a");
    set_current_model_short_name(nullptr);
    expect_short_name("");
    set_current_model_short_name("a");
    clear_current_model_short_name();
    expect_short_name("");
}

TEST_F(ShortNameState, IsSeededFromABaseNameWhereThatWorks) {
    seed_current_model_short_name_from_path("C:\\data\\Lac PRESS.alpha.kormodel");
    expect_short_name("lac_press_alpha");
    for (const char* path : {"", "dir/", "%.x", static_cast<const char*>(nullptr)})
        seed_current_model_short_name_from_path(path);
    expect_short_name("lac_press_alpha");
}

TEST_F(EnsureShortName, TakesTheOneThatIsSetWithoutAsking) {
    set_current_model_short_name("gaba");
    std::string printed;
    EXPECT_EQ(ensured("other\n", printed), "gaba");
    EXPECT_EQ(printed, "");
}

TEST_F(EnsureShortName, CutsTheCopyAndNotTheName) {
    set_current_model_short_name("gaba_mega");
    char name[5];
    EXPECT_EQ(KOREnsureCurrentModelShortName(name, sizeof name), 1);
    EXPECT_STREQ(name, "gaba");
    EXPECT_EQ(KOREnsureCurrentModelShortName(name, 1), 1);
    EXPECT_STREQ(name, "");
    EXPECT_EQ(KOREnsureCurrentModelShortName(name, 0), 0);
    EXPECT_EQ(KOREnsureCurrentModelShortName(nullptr, 5), 0);
    expect_short_name("gaba_mega");
}

TEST_F(EnsureShortName, MakesOneFromTheLoadedPath) {
    set_loaded_model_path("dir/Gaba.kormodel");
    clear_current_model_short_name();
    std::string printed;
    EXPECT_EQ(ensured("", printed), "gaba");
    EXPECT_EQ(printed, "");
    expect_short_name("gaba");
}

TEST_F(EnsureShortName, AsksUntilAnAnswerCanBeUsed) {
    std::string printed;
    EXPECT_EQ(ensured("\n%%%\r\n  Lac PRESS \r\nunread\n", printed), "lac_press");
    EXPECT_EQ(printed, QUESTION + "Please enter a short name, for example: lac_press or gaba_mega\n" +
                           QUESTION +
                           "Could not derive a usable file prefix from that text.\n"
                           "Use letters, numbers, spaces, '-' or '_'.\n" +
                           QUESTION + "Using model prefix : lac_press\n");
    expect_short_name("lac_press");
    EXPECT_EQ(unread_answers(), "unread\n");
}

TEST_F(EnsureShortName, AsksWhenTheLoadedPathGivesNone) {
    set_loaded_model_path("%%%.kormodel");
    std::string printed;
    EXPECT_EQ(ensured("x\n", printed), "x");
    EXPECT_EQ(printed, QUESTION + "Using model prefix : x\n");
}

TEST_F(EnsureShortName, GivesUpAtTheEndOfInput) {
    std::string printed;
    EXPECT_EQ(ensured("", printed), "-");
    EXPECT_EQ(printed, QUESTION);
    EXPECT_EQ(ensured("%\n", printed), "-");
    expect_short_name("");
}

TEST_F(EnsureShortName, ReadsAtMost255CharactersOfALine) {
    std::string printed;
    const std::string usable = "ab" + std::string(253, '%');
    EXPECT_EQ(ensured(usable + "cd\nnext\n", printed), "ab");
    EXPECT_EQ(unread_answers(), "next\n");
}

TEST_F(EnsureShortName, RefusesANameOfMoreThan127Characters) {
    std::string printed;
    EXPECT_EQ(ensured(std::string(128, 'a') + "\n" + std::string(127, 'b') + "\n", printed),
              std::string(127, 'b'));
}
