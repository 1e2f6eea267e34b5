// What korplatform.h promises for Linux alone.
#include "korplatform.h"

#include "support/temp_tree.h"
#include "unit/korplatform/listing.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <sys/stat.h>

namespace {

using namespace kor;
using namespace kor_test;
namespace fs = std::filesystem;

/// The spelling found, or "-" when nothing matches.
std::string found(const std::string& path) {
    char out[1024] = "untouched";
    if (!platform_find_ignoring_case(path.c_str(), out, sizeof out)) {
        EXPECT_STREQ(out, "");
        return "-";
    }
    return out;
}

} // namespace

TEST(NativePath, TurnsBackslashesIntoTheSystemsSeparator) {
    char out[32];
    ASSERT_EQ(platform_native_path("a\\b/c\\\\d.bin", out, sizeof out), 1);
    EXPECT_STREQ(out, "a/b/c//d.bin");
    EXPECT_EQ(platform_separator(), '/');
}

TEST(TakesName, TakesEveryName) {
    for (const char* name : {"C:", "a?\x01", "a\xF0", "a.", "a ", "NUL", "com1.txt", "two/levels"})
        EXPECT_TRUE(platform_takes_name(name)) << name;
}

TEST(NoData, IsNamedSo) {
    EXPECT_STREQ(std::strerror(PLATFORM_NO_DATA), "No data available");
}

TEST(NativePath, FitsToTheLastCharacterAndLeavesTheEmptyTextOtherwise) {
    char out[6];
    EXPECT_EQ(platform_native_path("a\\b\\c", out, 6), 1);
    EXPECT_STREQ(out, "a/b/c");
    EXPECT_EQ(platform_native_path("a\\b\\c", out, 5), 0);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(platform_native_path("", out, 1), 1);
    EXPECT_EQ(platform_native_path("", out, 0), 0);
    EXPECT_EQ(platform_native_path("", nullptr, 6), 0);
}

TEST(NativePath, MayBeWrittenOverItsOwnText) {
    char path[] = "x\\y\\z";
    ASSERT_EQ(platform_native_path(path, path, sizeof path), 1);
    EXPECT_STREQ(path, "x/y/z");
}

TEST(ExecutableFile, NamesTheRunningProgram) {
    char out[300];
    ASSERT_EQ(platform_executable_file(out, sizeof out), 1);
    EXPECT_EQ(out, fs::read_symlink("/proc/self/exe").string());
    EXPECT_EQ(platform_executable_file(out, std::strlen(out)), 0) << "no room for the terminator";
    EXPECT_STREQ(out, "");
}

TEST(PathIsAbsolute, TakesDrivesDoubleSeparatorsAndOneLeadingSlash) {
    for (const char* path : {"C:\\data", "z:/data", "C:\\", "\\\\server\\share", "//server", "/", "/home/x"})
        EXPECT_TRUE(platform_path_is_absolute(path)) << path;
    for (const char* path :
         {"", "C:", "C:x", "1:\\x", ":\\x", "\\x", "\\/x", "x/y", "..\\x", "./x", "\xC4:/x"})
        EXPECT_FALSE(platform_path_is_absolute(path)) << path;
    EXPECT_FALSE(platform_path_is_absolute(nullptr));
}

TEST(FindIgnoringCase, KeepsAnExistingPathAsItIsSpelt) {
    TempTree tree;
    tree.write("Seq/Pulse.bin", "");
    tree.write("seq/pulse.bin", "");
    EXPECT_EQ(found("Seq\\Pulse.bin"), "Seq\\Pulse.bin");
    EXPECT_EQ(found("seq/pulse.bin"), "seq/pulse.bin");
    EXPECT_EQ(found("Seq"), "Seq");
}

TEST(FindIgnoringCase, FindsEveryComponentAgain) {
    TempTree tree;
    tree.write("Data/Seq/Waves/P1.BIN", "");
    EXPECT_EQ(found("data/seq/waves/p1.bin"), "Data/Seq/Waves/P1.BIN");
    EXPECT_EQ(found("DATA\\SEQ\\waves\\p1.bin"), "Data/Seq/Waves/P1.BIN");
    EXPECT_EQ(found("data/seq/../SEQ/./waves"), "Data/Seq/../Seq/./Waves");
    const std::string root = tree.path();
    EXPECT_EQ(found(root + "/data/seq/waves/p1.bin"), root + "/Data/Seq/Waves/P1.BIN");
    EXPECT_EQ(found("data/seq/waves/p2.bin"), "-");
    EXPECT_EQ(found("other/p1.bin"), "-");
    EXPECT_EQ(found(""), "-");
}

TEST(FindIgnoringCase, TakesTheFirstNameOfSeveral) {
    TempTree tree;
    tree.write("P.bin", "");
    tree.write("p.BIN", "");
    EXPECT_EQ(found("p.bin"), "P.bin");
}

TEST(FindIgnoringCase, WritesNothingThatDoesNotFit) {
    TempTree tree;
    tree.write("Pulse.bin", "");
    char out[16] = "untouched";
    EXPECT_EQ(platform_find_ignoring_case("pulse.bin", out, 9), 0);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(platform_find_ignoring_case("pulse.bin", out, 10), 1);
    EXPECT_STREQ(out, "Pulse.bin");
}

TEST(IsSpecial, PipesAndDevices) {
    TempTree tree;
    tree.write("file", "");
    tree.make_folder("folder");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    fs::create_symlink("pipe", "link");
    for (const char* path : {"pipe", ".\\pipe", "link", "/dev/null"})
        EXPECT_TRUE(platform_is_special(path)) << path;
    for (const char* path : {"file", "folder", "absent", ""})
        EXPECT_FALSE(platform_is_special(path)) << path;
}

TEST(ListFiles, SortsRegularFilesOfTheExtensionByNameIgnoringCase) {
    TempTree tree;
    for (const char* name : {"b.kormodel", "C.kormodel", "a.KORMODEL", "A2.kormodel", ".kormodel",
                             "a.kormodel.txt", "kormodel", "d.korseq", "a.kormodel"})
        tree.write(std::string("models/") + name, "");
    tree.make_folder("models/folder.kormodel");
    ASSERT_EQ(mkfifo(tree.path("models/pipe.kormodel").c_str(), 0600), 0);
    const Names expected = {".kormodel",   "a.KORMODEL", "a.kormodel",
                            "A2.kormodel", "b.kormodel", "C.kormodel"};
    EXPECT_EQ(listed("models", ".kormodel"), expected);
    EXPECT_EQ(listed(tree.path() + "\\models\\", ".kormodel"), expected);
}

TEST(ListFiles, FollowsLinksToFiles) {
    TempTree tree;
    tree.write("real.kormodel", "");
    tree.make_folder("models");
    fs::create_symlink(tree.path("real.kormodel"), tree.path("models/linked.kormodel"));
    fs::create_symlink(tree.path("gone.kormodel"), tree.path("models/broken.kormodel"));
    EXPECT_EQ(listed("models", ".kormodel"), Names{"linked.kormodel"});
}
