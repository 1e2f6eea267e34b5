#include "korpaths.h"

#include "korlimits.h"
#include "korplatform.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

namespace {

using namespace kor;
using namespace kor_test;

// A result that the call must not touch when it fails.
constexpr const char* KEPT_TEXT = "untouched";

std::string built(const char* dir, const char* name) {
    char out[64] = "";
    EXPECT_EQ(KOR_BuildPath(out, sizeof out, dir, name), 1);
    return kor_test::with_slashes(out);
}

std::string base_name(const char* path) {
    char out[64] = "untouched";
    const int result = basename_without_extension(path, out, sizeof out);
    return result ? out : "-";
}

std::string short_name(const char* text) {
    char out[KOR_SHORT_NAME_SIZE] = "untouched";
    if (sanitize_model_short_name(text, out, sizeof out))
        return out;
    EXPECT_STREQ(out, KEPT_TEXT);
    return "-";
}

} // namespace

TEST(BuildPath, PutsOneSeparatorBetweenFolderAndName) {
    EXPECT_EQ(built("/data/models", "a.kormodel"), "/data/models/a.kormodel");
    EXPECT_EQ(built("/data/models/", "a.kormodel"), "/data/models/a.kormodel");
    EXPECT_EQ(built("C:\\", "a.kormodel"), kor_test::with_slashes("C:\\a.kormodel"));
    EXPECT_EQ(built("", "a.kormodel"), "a.kormodel");
    EXPECT_EQ(built("/", "a"), "/a");
    EXPECT_EQ(built("dir", ""), "dir/");
}

TEST(BuildPath, FailsOneCharacterShortAndWritesNothing) {
    char out[16] = "untouched";
    EXPECT_EQ(KOR_BuildPath(out, 7, "abc", "def"), 0);
    EXPECT_STREQ(out, KEPT_TEXT);
    EXPECT_EQ(KOR_BuildPath(out, 8, "abc", "def"), 1);
    EXPECT_EQ(kor_test::with_slashes(out), "abc/def");
    EXPECT_EQ(KOR_BuildPath(out, 7, "abc/", "def"), 0);
    EXPECT_EQ(KOR_BuildPath(out, 8, "abc/", "def"), 1);
}

TEST(BuildPath, RefusesMissingPointersAndNoCapacity) {
    char out[16] = "untouched";
    EXPECT_EQ(KOR_BuildPath(nullptr, 16, "a", "b"), 0);
    EXPECT_EQ(KOR_BuildPath(out, 0, "a", "b"), 0);
    EXPECT_EQ(KOR_BuildPath(out, sizeof out, nullptr, "b"), 0);
    EXPECT_EQ(KOR_BuildPath(out, sizeof out, "a", nullptr), 0);
    EXPECT_STREQ(out, KEPT_TEXT);
}

TEST(BuildPath, MayExtendTheFolderInPlace) {
    char path[16] = "abc";
    ASSERT_EQ(KOR_BuildPath(path, sizeof path, path, "def"), 1);
    EXPECT_EQ(kor_test::with_slashes(path), "abc/def");
}

TEST(Folder, EndsBeforeTheLastSeparatorAndKeepsTheRoot) {
    const struct {
        const char* path;
        const char* folder;
    } cases[] = {{"/opt/app/kor", "/opt/app"}, {"/kor", "/"},         {"/", "/"},     {"a/b/", "a/b"},
                 {"C:\\x\\kor.exe", "C:\\x"},  {"C:\\kor.exe", "C:"}, {"a\\b/c", "a"}};
    for (const auto& c : cases) {
        char out[16] = "untouched";
        EXPECT_EQ(KOR_GetFolder(out, sizeof out, c.path), 1) << c.path;
        EXPECT_STREQ(out, c.folder) << c.path;
    }
    char out[16] = "untouched";
    EXPECT_EQ(KOR_GetFolder(out, sizeof out, "kor"), 0);
    EXPECT_EQ(KOR_GetFolder(out, sizeof out, nullptr), 0);
    EXPECT_EQ(KOR_GetFolder(out, 3, "abc/d"), 0);
    EXPECT_STREQ(out, KEPT_TEXT);
}

TEST(DefaultFolders, LieBesideTheExecutablesFolder) {
    char out[KOR_PATH_SIZE];
    ASSERT_EQ(platform_executable_file(out, sizeof out), 1);
    const auto executable_dir = std::filesystem::path(out).parent_path();
    const auto parent = executable_dir.parent_path();
    ASSERT_EQ(KOR_GetExecutableDir(out, sizeof out), 1);
    EXPECT_EQ(out, executable_dir.string());
    ASSERT_EQ(KOR_GetDefaultModelsDir(out, sizeof out), 1);
    EXPECT_EQ(out, parent / "models");
    ASSERT_EQ(KOR_GetDefaultDensityMatricesDir(out, sizeof out), 1);
    EXPECT_EQ(out, parent / "density_matrices");
    ASSERT_EQ(KOR_GetDefaultRFOutputDir(out, sizeof out), 1);
    EXPECT_EQ(out, parent / "rf-output");
    ASSERT_EQ(KOR_GetDefaultRFInputDir(out, sizeof out), 1);
    EXPECT_EQ(out, parent / "rf-input");
}

TEST(DefaultFolders, NeedRoomForTheirNames) {
    char whole[KOR_PATH_SIZE];
    ASSERT_EQ(KOR_GetDefaultModelsDir(whole, sizeof whole), 1);
    const std::size_t length = std::strlen(whole);
    char out[KOR_PATH_SIZE] = "untouched";
    EXPECT_EQ(KOR_GetDefaultModelsDir(out, length), 0);
    EXPECT_EQ(KOR_GetExecutableDir(out, 1), 0);
    EXPECT_EQ(KOR_GetExecutableDir(out, 0), 0);
    EXPECT_EQ(KOR_GetExecutableDir(nullptr, 16), 0);
    EXPECT_EQ(KOR_GetDefaultRFInputDir(nullptr, 16), 0);
    EXPECT_STREQ(out, KEPT_TEXT);
    EXPECT_EQ(KOR_GetDefaultModelsDir(out, length + 1), 1);
}

TEST(BaseName, DropsFolderAndLastExtension) {
    EXPECT_EQ(base_name("D:\\data\\My Model.rev.kormodel"), "My Model.rev");
    EXPECT_EQ(base_name("/data/lac.kormodel"), "lac");
    EXPECT_EQ(base_name("lac.kormodel"), "lac");
    EXPECT_EQ(base_name("lac"), "lac");
    EXPECT_EQ(base_name("a.b/lac"), "lac");
    EXPECT_EQ(base_name("lac."), "lac");
}

TEST(BaseName, CutsAtTheLastBackslashEvenBehindIt) {
    EXPECT_EQ(base_name("a/b\\c/d.x"), "c/d");
    EXPECT_EQ(base_name("a\\b/c.x"), "b/c");
}

TEST(BaseName, KeepsANameThatBeginsWithItsOnlyDot) {
    EXPECT_EQ(base_name("dir/.kormodel"), ".kormodel");
    EXPECT_EQ(base_name(".a.b"), ".a");
}

TEST(BaseName, FailsWithoutAName) {
    EXPECT_EQ(base_name(""), "-");
    EXPECT_EQ(base_name("dir/"), "-");
    EXPECT_EQ(base_name("dir\\"), "-");
    EXPECT_EQ(base_name(nullptr), "-");
    char out[4] = "abc";
    EXPECT_EQ(basename_without_extension("dir/four.x", out, sizeof out), 0);
    EXPECT_STREQ(out, "abc");
    EXPECT_EQ(basename_without_extension("dir/tri.x", out, sizeof out), 1);
    EXPECT_STREQ(out, "tri");
    EXPECT_EQ(basename_without_extension("x", out, 0), 0);
    EXPECT_EQ(basename_without_extension("x", nullptr, 4), 0);
}

TEST(ShortName, IsLowerCaseWithSingleSeparators) {
    EXPECT_EQ(short_name("  Lac PRESS.alpha  "), "lac_press_alpha");
    EXPECT_EQ(short_name("--x--"), "x");
    EXPECT_EQ(short_name("My Model.rev"), "my_model_rev");
    EXPECT_EQ(short_name("a-b_c d.e\tf"), "a-b_c_d_e_f");
    EXPECT_EQ(short_name("a - b"), "a_b");
    EXPECT_EQ(short_name("a-_-b"), "a-b");
    EXPECT_EQ(short_name("31P"), "31p");
}

TEST(ShortName, DropsOtherCharactersWithoutForgettingTheSeparator) {
    EXPECT_EQ(short_name("a(1)+b"), "a1b");
    EXPECT_EQ(short_name("a_%_b"), "a_b");
    EXPECT_EQ(short_name("Gr\xC3\xB6\xC3\x9F"
                         "e 2"),
              "gre_2");
}

TEST(ShortName, FailsWhenNothingUsableIsLeft) {
    for (const char* text : {"", "   ", "%%%", "...", "-_-", "\xC3\xA4"})
        EXPECT_EQ(short_name(text), "-") << text;
    EXPECT_EQ(short_name(nullptr), "-");
    char out[4] = "abc";
    EXPECT_EQ(sanitize_model_short_name("x", out, 0), 0);
    EXPECT_EQ(sanitize_model_short_name("x", nullptr, 4), 0);
}

TEST(ShortName, HoldsAtMostTheCapacityIncludingSeparatorsThatWouldBeTrimmed) {
    char out[5] = "none";
    EXPECT_EQ(sanitize_model_short_name("abcd", out, sizeof out), 1);
    EXPECT_STREQ(out, "abcd");
    EXPECT_EQ(sanitize_model_short_name("abcde", out, sizeof out), 0);
    EXPECT_EQ(sanitize_model_short_name("abcd-", out, sizeof out), 0);
    EXPECT_EQ(sanitize_model_short_name("abc--", out, sizeof out), 1);
    EXPECT_STREQ(out, "abc");
    EXPECT_EQ(short_name(std::string(127, 'a').c_str()), std::string(127, 'a'));
    EXPECT_EQ(short_name(std::string(128, 'a').c_str()), "-");
}

TEST(PathHasSeparator, CountsBackslashSlashAndColon) {
    for (const char* text : {"a\\b", "a/b", "C:x", "/", ":"})
        EXPECT_EQ(path_has_separator(text), 1) << text;
    for (const char* text : {"", "my_model", "a.kormodel", ".."})
        EXPECT_EQ(path_has_separator(text), 0) << text;
    EXPECT_EQ(path_has_separator(nullptr), 0);
}

TEST(FileExists, MeansThatItOpensForReading) {
    TempTree tree;
    tree.write("dir/a.bin", "");
    EXPECT_EQ(file_exists("dir/a.bin"), 1);
    EXPECT_EQ(file_exists("dir\\a.bin"), 1);
    EXPECT_EQ(file_exists("dir"), 0);
    EXPECT_EQ(file_exists("dir/b.bin"), 0);
    EXPECT_EQ(file_exists(""), 0);
    EXPECT_EQ(file_exists(nullptr), 0);
}

TEST(TextFileContainsLiteral, LooksIntoEveryLine) {
    TempTree tree;
    tree.write("m.kormodel", "# model\r\n  spin_system_file: a.korspin\r\nsequence_file=b\r\n");
    EXPECT_EQ(text_file_contains_literal("m.kormodel", "spin_system_file:"), 1);
    EXPECT_EQ(text_file_contains_literal("m.kormodel", "sequence_file:"), 0);
    EXPECT_EQ(text_file_contains_literal("m.kormodel", "SPIN_SYSTEM_FILE:"), 0);
    EXPECT_EQ(text_file_contains_literal("missing", "x"), 0);
    EXPECT_EQ(text_file_contains_literal(nullptr, "x"), 0);
    EXPECT_EQ(text_file_contains_literal("m.kormodel", nullptr), 0);
}

TEST(TextFileContainsLiteral, ReadsLinesInPiecesOf1023Characters) {
    TempTree tree;
    const std::string word = "sequence_file:";
    tree.write("whole", std::string(1023 - word.size(), 'x') + word);
    tree.write("cut", std::string(1023 - word.size() + 1, 'x') + word);
    tree.write("second", std::string(1023, 'x') + word);
    EXPECT_EQ(text_file_contains_literal("whole", word.c_str()), 1);
    EXPECT_EQ(text_file_contains_literal("cut", word.c_str()), 0);
    EXPECT_EQ(text_file_contains_literal("second", word.c_str()), 1);
}

TEST(ModelExtension, IsTheLastOneInAnyCase) {
    for (const char* path : {"a.kormodel", "a.KORMODEL", "a.b.KorModel", ".kormodel", "dir/a.kormodel"})
        EXPECT_EQ(has_kormodel_extension_ci(path), 1) << path;
    for (const char* path :
         {"", "a", "kormodel", "a.kormodel.txt", "a.kormode", "a.kormodels", "a.kormodel/b"})
        EXPECT_EQ(has_kormodel_extension_ci(path), 0) << path;
    EXPECT_EQ(has_kormodel_extension_ci(nullptr), 0);
}

TEST(ModelExtension, IsAppendedWhereItIsMissing) {
    char path[64] = "a.kormodel.txt";
    EXPECT_EQ(ensure_kormodel_extension(path, sizeof path), 1);
    EXPECT_STREQ(path, "a.kormodel.txt.kormodel");
    char upper[64] = "a.KORMODEL";
    EXPECT_EQ(ensure_kormodel_extension(upper, sizeof upper), 1);
    EXPECT_STREQ(upper, "a.KORMODEL");
}

TEST(ModelExtension, NeedsTenCharactersMoreThanThePath) {
    char path[64] = "model";
    EXPECT_EQ(ensure_kormodel_extension(path, 14), 0);
    EXPECT_STREQ(path, "model");
    EXPECT_EQ(ensure_kormodel_extension(path, 15), 1);
    EXPECT_STREQ(path, "model.kormodel");
    EXPECT_EQ(ensure_kormodel_extension(path, 1), 1) << "nothing to append";
    EXPECT_EQ(ensure_kormodel_extension(path, 0), 0);
    EXPECT_EQ(ensure_kormodel_extension(nullptr, 64), 0);
}
