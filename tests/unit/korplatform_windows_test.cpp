// What korplatform.h promises for Windows alone. The runtime library's "w" and "r" turn line ends around; the
// test programs open every file as bytes and ask for "t" where that is the subject.
#include "korplatform.h"

#include "support/console_script.h"
#include "support/temp_tree.h"
#include "unit/korplatform/listing.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <windows.h>

namespace {

using namespace kor;
using namespace kor_test;
namespace fs = std::filesystem;

std::string found(const std::string& path) {
    char out[1024] = "untouched";
    if (!platform_find_ignoring_case(path.c_str(), out, sizeof out)) {
        EXPECT_STREQ(out, "");
        return "-";
    }
    return out;
}

// Latin with an accent, Greek, Chinese.
const std::string MANY_SCRIPTS = "\xC3\xA9 \xCE\xA9 \xE4\xB8\xAD";

} // namespace

TEST(NativePath, StaysAsItIsTyped) {
    char out[32];
    ASSERT_EQ(platform_native_path("a\\b/c\\\\d.bin", out, sizeof out), 1);
    EXPECT_STREQ(out, "a\\b/c\\\\d.bin");
    EXPECT_EQ(platform_separator(), '\\');
    EXPECT_EQ(platform_native_path("a\\b", out, 3), 0);
    EXPECT_STREQ(out, "");
    char path[] = "x\\y/z";
    ASSERT_EQ(platform_native_path(path, path, sizeof path), 1);
    EXPECT_STREQ(path, "x\\y/z");
}

TEST(ExecutableFile, NamesTheRunningProgramOnItsDrive) {
    char out[300];
    ASSERT_EQ(platform_executable_file(out, sizeof out), 1);
    EXPECT_EQ(std::string(out).substr(1, 2), ":\\");
    EXPECT_EQ(fs::path(out).filename(), "kor_unit_tests.exe");
    EXPECT_TRUE(fs::exists(out));
    EXPECT_EQ(platform_executable_file(out, std::strlen(out)), 0) << "no room for the terminator";
    EXPECT_STREQ(out, "");
}

TEST(PathIsAbsolute, TakesDrivesAndDoubleSeparators) {
    for (const char* path : {"C:\\data", "z:/data", "C:\\", "\\\\server\\share", "//server"})
        EXPECT_TRUE(platform_path_is_absolute(path)) << path;
    for (const char* path :
         {"", "C:", "C:x", "1:\\x", ":\\x", "\\x", "/x", "/", "\\/x", "x/y", "..\\x", "./x"})
        EXPECT_FALSE(platform_path_is_absolute(path)) << path;
    EXPECT_FALSE(platform_path_is_absolute(nullptr));
}

TEST(TakesName, RefusesWhatTheSystemWritesElsewhere) {
    for (const char* name : {"C:",       "a:b",       "a<b",           "a>b",      "\"a\"",  "a|b",
                             "a?",       "*",         "a\tb",          "\x01",     "\x1F",   "a.",
                             "a ",       "...",       "a/b./c",        "x:\\a",    "CON",    "con",
                             "Prn",      "AUX",       "nul",           "COM1",     "lpt9",   "nul.txt",
                             "com1.a.b", "nul .x",    "a/nul/b",       "a\\COM9",  "CONIN$", "conout$",
                             "a\xF0",    "COM\u00B9", "lpt\u00B2.txt", "com\u00B3"})
        EXPECT_FALSE(platform_takes_name(name)) << name;
    for (const char* name : {"a",
                             "two/levels",
                             "two\\levels",
                             ".a",
                             "a.b",
                             " a",
                             "a b",
                             "..",
                             "./a",
                             "../a",
                             "/a/",
                             "console",
                             "con-1",
                             "COM",
                             "COM0",
                             "COM10",
                             "a.con",
                             "nul_1",
                             "COM\u2074",
                             "COM\u00B9\u00B9",
                             "(a+b)=[c];,'$%&#@!~`^{}"})
        EXPECT_TRUE(platform_takes_name(name)) << name;
    EXPECT_TRUE(platform_takes_name(MANY_SCRIPTS.c_str()));
}

TEST(NoData, HasATextOfTheSystem) {
    EXPECT_STREQ(std::strerror(PLATFORM_NO_DATA), "Input/output error");
}

TEST(PlatformOpen, TextFilesHaveTheSystemsLineEnds) {
    TempTree tree;
    std::FILE* file = platform_open("a.txt", "wt");
    ASSERT_NE(file, nullptr);
    std::fputs("one\ntwo\n", file);
    std::fclose(file);
    EXPECT_EQ(tree.read("a.txt"), "one\r\ntwo\r\n");
    file = platform_open("a.txt", "rt");
    char text[20] = "";
    EXPECT_STREQ(std::fgets(text, sizeof text, file), "one\n");
    std::fclose(file);
}

// The byte 26 ended a text in an older system; the runtime library of Windows still stops there.
TEST(PlatformOpen, ReadsATextToItsEnd) {
    TempTree tree;
    tree.write("a.txt", "one\x1Atwo\r\n");
    _fmode = _O_TEXT; // as in the program
    std::FILE* file = platform_open("a.txt", "r");
    _fmode = _O_BINARY;
    ASSERT_NE(file, nullptr);
    char text[20] = "";
    EXPECT_STREQ(std::fgets(text, sizeof text, file), "one\x1Atwo\r\n");
    std::fclose(file);
}

// Where the system takes such names, a file may be missing that has one.
TEST(PlatformOpen, SaysWhenAFileWithALongNameIsMissing) {
    TempTree tree;
    const std::string folder(100, 'f');
    for (int depth = 0; depth < 3; ++depth) {
        if (platform_make_dir(folder.c_str()) == 0 && platform_change_dir(folder.c_str()) == 0)
            continue;
        ASSERT_GT(depth, 0);
        ASSERT_EQ(platform_change_dir(tree.path().c_str()), 0);
        GTEST_SKIP() << "this system enters no folder with so long a name";
    }
    EXPECT_EQ(platform_open("missing", "r"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(platform_remove("missing"), ENOENT);
    ASSERT_EQ(platform_change_dir(tree.path().c_str()), 0);
}

TEST(PlatformOpen, TakesNamesInEveryScript) {
    TempTree tree;
    ASSERT_EQ(platform_make_dir(MANY_SCRIPTS.c_str()), 0);
    std::FILE* file = platform_open((MANY_SCRIPTS + "\\" + MANY_SCRIPTS + ".kormodel").c_str(), "w");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    EXPECT_TRUE(fs::exists(fs::u8path(MANY_SCRIPTS) / fs::u8path(MANY_SCRIPTS + ".kormodel")));
    Names names;
    EXPECT_EQ(platform_list_files(MANY_SCRIPTS.c_str(), ".kormodel", remember, &names), 1);
    EXPECT_EQ(names, Names{MANY_SCRIPTS + ".kormodel"});
    EXPECT_EQ(platform_change_dir(MANY_SCRIPTS.c_str()), 0);
    char out[300];
    ASSERT_EQ(platform_current_dir(out, sizeof out), 1);
    EXPECT_EQ(with_slashes(out), tree.path(MANY_SCRIPTS));
    EXPECT_EQ(platform_change_dir(".."), 0);
}

TEST(PlatformRename, LeavesTheTargetThatCannotBeReplaced) {
    TempTree tree;
    tree.write("store", "new");
    tree.make_folder("dm.bin");
    EXPECT_EQ(platform_rename("store", "dm.bin"), EACCES);
    EXPECT_EQ(tree.read("store"), "new");
    EXPECT_TRUE(fs::is_directory(tree.path("dm.bin")));
    EXPECT_EQ(platform_rename("store", "missing\\dm.bin"), ENOENT);
    EXPECT_EQ(tree.read("store"), "new");
}

TEST(FindIgnoringCase, KeepsTheSpellingOfWhatTheSystemFinds) {
    TempTree tree;
    tree.write("Data/Seq/P1.BIN", "");
    EXPECT_EQ(found("data\\seq/p1.bin"), "data\\seq/p1.bin");
    EXPECT_EQ(found("data\\seq"), "data\\seq");
    EXPECT_EQ(found("data\\seq\\p2.bin"), "-");
    EXPECT_EQ(found(""), "-");
}

TEST(ListFiles, TakesFilesOfTheWholeExtension) {
    TempTree tree;
    for (const char* name :
         {"b.kormodel", "C.KORMODEL", "a.kormodel.txt", "kormodel", "d.korseq", "e.kormodelx"})
        tree.write(std::string("models/") + name, "");
    tree.make_folder("models/folder.kormodel");
    for (const std::string folder : {"models", "models\\", "models/"}) {
        Names names;
        EXPECT_EQ(platform_list_files(folder.c_str(), ".kormodel", remember, &names), 2) << folder;
        std::sort(names.begin(), names.end());
        EXPECT_EQ(names, (Names{"C.KORMODEL", "b.kormodel"})) << folder;
    }
}

// Such a name has three bytes for each letter.
TEST(ListFiles, TakesNamesOfMoreBytesThanLetters) {
    TempTree tree;
    std::string letters;
    for (int k = 0; k < 80; ++k)
        letters += "\xE4\xB8\xAD";
    const Names expected = {"a.kormodel", letters + "1.kormodel", letters + "2.kormodel"};
    for (const std::string& name : expected)
        tree.write("models/" + name, "");
    Names names;
    EXPECT_EQ(platform_list_files("models", ".kormodel", remember, &names), 3);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, expected);
}

TEST(Console, TheEmptyDeviceIsNoTerminal) {
    ASSERT_NE(std::freopen("NUL", "r", stdin), nullptr);
    EXPECT_FALSE(platform_input_is_terminal());
}

TEST(Utf8Console, SetsTheOutputCodePage) {
    if (SetConsoleOutputCP(437) == 0)
        GTEST_SKIP() << "no console here";
    ASSERT_EQ(GetConsoleOutputCP(), 437U);
    platform_use_utf8_console();
    EXPECT_EQ(GetConsoleOutputCP(), 65001U);
}
