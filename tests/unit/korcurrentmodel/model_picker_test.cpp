#include "korcurrentmodel/model_picker.h"

#include "korlimits.h"
#include "korpaths.h"
#include "support/console_script.h"
#include "support/menu_texts.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace {

using namespace kor;
using namespace kor_test;
using Names = std::vector<std::string>;

const std::string SPLIT = "spin_system_file: a.korspin\nsequence_file: a.korseq\n";

Names collected(const std::string& dir, int max = KOR_MAX_LISTED_MODELS) {
    static char names[KOR_MAX_LISTED_MODELS][KOR_LISTED_NAME_SIZE];
    const int count = collect_model_files(dir.c_str(), names, max);
    return Names(names, names + count);
}

std::string models_dir() {
    char dir[KOR_PATH_SIZE];
    EXPECT_EQ(KOR_GetDefaultModelsDir(dir, sizeof dir), 1);
    return kor_test::with_slashes(dir);
}

struct Prompted {
    int result;
    std::string path;
    std::string printed;
};

Prompted import_prompted(const std::string& answers, std::size_t cap = 512) {
    char path[KOR_PATH_SIZE] = "";
    int result = -1;
    const std::string printed =
        play_console(answers, [&] { result = prompt_model_path("File: ", path, cap); }).out;
    return {result, path, printed};
}

Prompted export_prompted(const std::string& answers, std::size_t cap = KOR_PATH_SIZE) {
    char path[KOR_PATH_SIZE] = "";
    int result = -1;
    const std::string printed =
        play_console(answers, [&] { result = prompt_export_model_path(path, cap); }).out;
    return {result, path, printed};
}

} // namespace

TEST(SplitModelFile, NamesBothFiles) {
    TempTree tree;
    tree.write("models/both", SPLIT);
    tree.write("models/spin", "spin_system_file: a\n");
    tree.write("models/sequence", "sequence_file: a\n");
    tree.write("models/without_colon", "spin_system_file a\nsequence_file: a\n");
    EXPECT_EQ(is_split_model_file("models", "both"), 1);
    for (const char* name : {"spin", "sequence", "without_colon", "missing"})
        EXPECT_EQ(is_split_model_file("models", name), 0) << name;
    EXPECT_EQ(is_split_model_file(nullptr, "both"), 0);
    EXPECT_EQ(is_split_model_file("models", nullptr), 0);
}

TEST(CollectModelFiles, ListsTheSplitModelFilesOfAFolder) {
    TempTree tree;
    for (const char* name : {"b.kormodel", "a.KORMODEL", "C.kormodel", "d.kormodel.txt"})
        tree.write(std::string("models/") + name, SPLIT);
    tree.write("models/old.kormodel", "nspins: 1\n");
    tree.make_folder("models/folder.kormodel");
    EXPECT_EQ(collected("models"), (Names{"a.KORMODEL", "b.kormodel", "C.kormodel"}));
    EXPECT_EQ(collected(tree.path("models/")), (Names{"a.KORMODEL", "b.kormodel", "C.kormodel"}));
}

TEST(CollectModelFiles, StopsAtTheGivenNumber) {
    TempTree tree;
    for (int i = 100; i < 400; ++i)
        tree.write("m" + std::to_string(i) + ".kormodel", SPLIT);
    EXPECT_EQ(collected(tree.path(), 2), (Names{"m100.kormodel", "m101.kormodel"}));
    const Names all = collected(tree.path());
    ASSERT_EQ(all.size(), 256u);
    EXPECT_EQ(all.back(), "m355.kormodel");
}

TEST(CollectModelFiles, FindsNothingInAMissingFolder) {
    TempTree tree;
    tree.write("a.kormodel", SPLIT);
    EXPECT_EQ(collected("missing"), Names{});
    EXPECT_EQ(collected(tree.path(), 0), Names{});
    EXPECT_EQ(collect_model_files(nullptr, nullptr, 1), 0);
}

TEST(PromptModelPath, ReadsOneLineWithoutItsEnd) {
    const Prompted answer = import_prompted("my model.kormodel\r\nnext\n");
    EXPECT_EQ(answer.result, 1);
    EXPECT_EQ(answer.path, "my model.kormodel");
    EXPECT_EQ(answer.printed, "\nFile: ");
    EXPECT_EQ(unread_answers(), "next\n");
    EXPECT_EQ(import_prompted("a\r\r\n").path, "a");
}

TEST(PromptModelPath, TakesNoAnswerForCancelling) {
    EXPECT_EQ(import_prompted("\n").result, 0);
    EXPECT_EQ(import_prompted("\r\n").result, 0);
    EXPECT_EQ(import_prompted("").result, 0);
}

TEST(PromptModelPath, ReadsAtMost511CharactersAndDropsTheRestOfTheLine) {
    const std::string line(511, 'a');
    Prompted answer = import_prompted(line + "\nnext\n", KOR_PATH_SIZE);
    EXPECT_EQ(answer.path, line);
    EXPECT_EQ(unread_answers(), "next\n");
    answer = import_prompted(line + "bc\nnext\n", KOR_PATH_SIZE);
    EXPECT_EQ(answer.path, line);
    EXPECT_EQ(unread_answers(), "next\n");
    EXPECT_EQ(import_prompted("abcdef\n", 4).path, "abc");
}

TEST(ResolveModelPath, TakesATextWithASeparatorAsItStands) {
    char out[64];
    for (const char* text : {".\\my_model", "a/b", "C:x", "/"}) {
        ASSERT_EQ(resolve_model_path(out, sizeof out, text), 1);
        EXPECT_STREQ(out, text);
    }
}

TEST(ResolveModelPath, JoinsAnyOtherTextToTheModelsFolder) {
    char out[KOR_PATH_SIZE];
    ASSERT_EQ(resolve_model_path(out, sizeof out, "my_model"), 1);
    EXPECT_EQ(with_slashes(out), models_dir() + "/my_model");
}

TEST(ResolveModelPath, FailsWhereTheResultDoesNotFit) {
    char out[64] = "untouched";
    EXPECT_EQ(resolve_model_path(out, 3, "a/b"), 0);
    EXPECT_EQ(resolve_model_path(out, models_dir().size(), "my_model"), 0);
    EXPECT_EQ(resolve_model_path(out, 0, "a/b"), 0);
    EXPECT_EQ(resolve_model_path(nullptr, 64, "a/b"), 0);
    EXPECT_EQ(resolve_model_path(out, sizeof out, nullptr), 0);
    EXPECT_STREQ(out, "untouched");
    EXPECT_EQ(resolve_model_path(out, 4, "a/b"), 1);
}

TEST(PromptExportModelPath, AddsTheExtension) {
    TempTree tree;
    const Prompted answer = export_prompted(".\\my_model\nunread\n");
    EXPECT_EQ(answer.result, 1);
    EXPECT_EQ(answer.path, ".\\my_model.kormodel");
    EXPECT_EQ(answer.printed, export_question(models_dir()));
    EXPECT_EQ(unread_answers(), "unread\n");
    EXPECT_EQ(export_prompted("./a.KORMODEL\n").path, "./a.KORMODEL");
    EXPECT_EQ(with_slashes(export_prompted("my_model\n").path), models_dir() + "/my_model.kormodel");
}

TEST(PromptExportModelPath, RefusesAPathThatDoesNotFit) {
    const std::string refusal =
        export_question(models_dir()) + "\n[KOR] Export failed: output path is too long.\n" + ENTER_FOR_MENU;
    Prompted answer = export_prompted("./abcdef\n\nunread\n", 17);
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.printed, refusal);
    EXPECT_EQ(unread_answers(), "unread\n");
    answer = export_prompted("./abcdef\n\nunread\n", 8);
    EXPECT_EQ(answer.result, 0) << "not even without its extension";
    EXPECT_EQ(answer.printed, refusal);
    EXPECT_EQ(export_prompted("./abcdef\n", 18).path, "./abcdef.kormodel");
}

TEST(PromptExportModelPath, ReplacesAnExistingFileOnlyForTheAnswerOne) {
    TempTree tree;
    tree.write("a.kormodel", "");
    const std::string question =
        export_question(models_dir()) +
        "\n[KOR] File already exists:\n      ./a.kormodel\nOverwrite? [1=yes, 0=no]: ";
    for (const char* yes : {"1", " 1 ", "1\r"}) {
        const Prompted answer = export_prompted("./a\n" + std::string(yes) + "\nunread\n");
        EXPECT_EQ(answer.result, 1) << yes;
        EXPECT_EQ(answer.printed, question);
        EXPECT_EQ(unread_answers(), "unread\n");
    }
    for (const char* no : {"0", "", "y", "11", "1x", "-1", "2", "10 1"}) {
        const Prompted answer = export_prompted("./a\n" + std::string(no) + "\nEnter\nunread\n");
        EXPECT_EQ(answer.result, 0) << no;
        EXPECT_EQ(answer.printed, question + "\n[KOR] Export cancelled.\n" + ENTER_FOR_MENU);
        EXPECT_EQ(unread_answers(), "unread\n") << no;
    }
}

TEST(PromptExportModelPath, CancelsSilentlyAtTheEndOfInput) {
    TempTree tree;
    tree.write("a.kormodel", "");
    Prompted answer = export_prompted("./a\n");
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.printed,
              export_question(models_dir()) +
                  "\n[KOR] File already exists:\n      ./a.kormodel\nOverwrite? [1=yes, 0=no]: ");
    answer = export_prompted("");
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.printed, export_question(models_dir()));
    EXPECT_EQ(export_prompted("\n").printed, export_question(models_dir()));
}

TEST(ModelPicker, RefusesAMissingBuffer) {
    char path[16] = "untouched";
    EXPECT_EQ(prompt_model_selection_from_default_dir(nullptr, 16), 0);
    EXPECT_EQ(prompt_model_selection_from_default_dir(path, 0), 0);
    EXPECT_EQ(prompt_model_path("File: ", nullptr, 16), 0);
    EXPECT_EQ(prompt_model_path("File: ", path, 0), 0);
    EXPECT_EQ(prompt_export_model_path(nullptr, 16), 0);
    EXPECT_EQ(prompt_export_model_path(path, 0), 0);
    EXPECT_STREQ(path, "untouched");
}
