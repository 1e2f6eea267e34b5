// The contract of korplatform.h, kept by every system's source file.
#include "korplatform.h"

#include "support/console_script.h"
#include "support/temp_tree.h"
#include "unit/korplatform/listing.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace {

using namespace kor;
using namespace kor_test;
namespace fs = std::filesystem;

/// "ab" and `size` - 3 bytes that are not written and "c". False where the disk or the limit on the size of
/// files does not allow it.
bool wrote_file_with_hole(const char* name, long long size) {
#ifdef SIGXFSZ
    void (*const before)(int) =
        std::signal(SIGXFSZ, SIG_IGN); // beyond the limit a write fails, not the process
#endif
    std::ofstream file(name, std::ios::binary);
    file.write("ab", 2).seekp(size - 1).put('c');
    file.close();
#ifdef SIGXFSZ
    std::signal(SIGXFSZ, before);
#endif
    return file.good();
}

} // namespace

TEST(PlatformOpen, OpensThroughBackslashesAndSaysWhyNot) {
    TempTree tree;
    tree.write("dir/data.bin", "abc");
    std::FILE* file = platform_open("dir\\data.bin", "rb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(std::getc(file), 'a');
    std::fclose(file);

    errno = 0;
    EXPECT_EQ(platform_open("dir\\missing.bin", "rb"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST(PlatformOpenNew, MakesAFileThatIsNotThere) {
    TempTree tree;
    tree.write("there", "kept");
    tree.make_folder("dir");
    for (const char* taken : {"there", "dir"}) {
        errno = 0;
        EXPECT_EQ(platform_open_new(taken, "wb"), nullptr);
        EXPECT_EQ(errno, EEXIST) << taken;
    }
    EXPECT_EQ(tree.read("there"), "kept");
    EXPECT_EQ(platform_open_new("absent\\new", "w"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    std::FILE* file = platform_open_new("dir\\new", "wb");
    ASSERT_NE(file, nullptr);
    EXPECT_GE(std::fputs("a\n", file), 0);
    std::fclose(file);
    EXPECT_EQ(tree.read("dir/new"), "a\n");
}

TEST(PlatformOpen, RefusesAFolder) {
    TempTree tree;
    tree.make_folder("dir");
    errno = 0;
    EXPECT_EQ(platform_open("dir", "r"), nullptr);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(platform_open(tree.path().c_str(), "r"), nullptr);
    EXPECT_EQ(platform_open("", "r"), nullptr);
    EXPECT_EQ(platform_open(nullptr, "r"), nullptr);
}

TEST(PlatformOpen, ReportsANameTooLongForTheSystem) {
    TempTree tree;
    errno = 0;
    EXPECT_EQ(platform_open(std::string(300, 'n').c_str(), "w"), nullptr);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(platform_make_dir(std::string(300, 'n').c_str()), ENAMETOOLONG);
}

TEST(PlatformRemove, DeletesAFileAndReportsWhatIsNotThere) {
    TempTree tree;
    tree.write("dir/data.bin", "abc");
    EXPECT_EQ(platform_remove("dir\\data.bin"), 0);
    EXPECT_FALSE(tree.exists("dir/data.bin"));
    errno = 0;
    EXPECT_EQ(platform_remove("dir\\data.bin"), ENOENT);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_NE(platform_remove("dir"), 0) << "only files";
    EXPECT_TRUE(tree.exists("dir"));
}

TEST(PlatformRename, ReplacesAnExistingTarget) {
    TempTree tree;
    tree.write("dir/store", "new");
    tree.write("dir/dm.bin", "old");
    EXPECT_EQ(platform_rename("dir\\store", "dir\\dm.bin"), 0);
    EXPECT_EQ(tree.names("dir"), Names{"dm.bin"});
    EXPECT_EQ(tree.read("dir/dm.bin"), "new");
}

TEST(PlatformRename, KeepsTheTargetWhenTheSourceIsMissing) {
    TempTree tree;
    tree.write("dm.bin", "old");
    EXPECT_EQ(platform_rename("store", "dm.bin"), ENOENT);
    EXPECT_EQ(tree.read("dm.bin"), "old");
}

TEST(PlatformMakeDir, MakesOneFolderAndReportsAnExistingOne) {
    TempTree tree;
    EXPECT_EQ(platform_make_dir("new"), 0);
    EXPECT_EQ(platform_make_dir("new"), EEXIST);
    EXPECT_EQ(platform_make_dir("new\\inner"), 0);
    EXPECT_TRUE(fs::is_directory(tree.path("new/inner")));
    EXPECT_EQ(platform_make_dir("missing\\inner"), ENOENT);
}

TEST(PlatformRemoveDir, DeletesAnEmptyFolderAlone) {
    TempTree tree;
    tree.make_folder("empty");
    tree.write("full/file", "x");
    EXPECT_EQ(platform_remove_dir("empty"), 0);
    EXPECT_FALSE(tree.exists("empty"));
    EXPECT_EQ(platform_remove_dir("empty"), ENOENT);
    EXPECT_EQ(platform_remove_dir("full"), ENOTEMPTY);
    EXPECT_EQ(tree.read("full/file"), "x");
    EXPECT_NE(platform_remove_dir("full/file"), 0);
    EXPECT_EQ(tree.read("full/file"), "x");
}

TEST(WorkingDirectory, IsChangedAndAsked) {
    TempTree tree;
    tree.make_folder("a/b");
    ASSERT_EQ(platform_change_dir("a\\b"), 0);
    char out[1024];
    ASSERT_EQ(platform_current_dir(out, sizeof out), 1);
    EXPECT_EQ(with_slashes(out), tree.path("a/b"));
    EXPECT_EQ(platform_change_dir("missing"), ENOENT);
    ASSERT_EQ(platform_current_dir(out, sizeof out), 1);
    EXPECT_EQ(with_slashes(out), tree.path("a/b"));
    EXPECT_EQ(platform_current_dir(out, 3), 0);
    EXPECT_STREQ(out, "");
}

TEST(ProcessId, IsTheSystems) {
    EXPECT_EQ(platform_process_id(), static_cast<unsigned long>(getpid()));
}

TEST(ListFiles, StopsWhenTheVisitorSaysSo) {
    TempTree tree;
    for (const char* name : {"1.kormodel", "2.kormodel", "3.kormodel"})
        tree.write(name, "");
    int left = 2;
    const auto count_down = [](const char*, void* context) {
        return --*static_cast<int*>(context) > 0 ? 1 : 0;
    };
    EXPECT_EQ(platform_list_files(".", ".kormodel", count_down, &left), 2);
    EXPECT_EQ(left, 0);
}

TEST(ListFiles, FindsNothingInAMissingFolder) {
    TempTree tree;
    tree.write("a.kormodel", "");
    EXPECT_EQ(listed("missing", ".kormodel"), Names{});
    EXPECT_EQ(listed("", ".kormodel"), Names{});
    EXPECT_EQ(listed("a.kormodel", ".kormodel"), Names{});
    EXPECT_EQ(platform_list_files(nullptr, ".kormodel", remember, nullptr), 0);
}

TEST(ClearConsole, WritesNothingIntoAFile) {
    EXPECT_EQ(play_console("", [] { platform_clear_console(); }).out, "");
}

TEST(Console, AScriptIsNoTerminal) {
    play_console("1\n", [] { EXPECT_FALSE(platform_input_is_terminal()); });
}

TEST(MakeDir, AFolderThatIsThereIsTheOnlyTrouble) {
    TempTree tree;
    EXPECT_EQ(platform_make_dir("folder"), 0);
    EXPECT_EQ(platform_make_dir("folder"), EEXIST);
    EXPECT_EQ(platform_make_dir("absent/folder"), ENOENT);
}

// The result of a large grid is larger than a number of 32 bits tells. Nothing is written between the first
// bytes of the file and its last one: where the file system keeps holes, it takes no room on the disk.
TEST(FileSize, CountsBeyondFourGigabytesAndLeavesThePosition) {
    const TempTree tree;
    for (const long long size : {5LL, (1LL << 31) + 1, 3LL << 30, (1LL << 32) + 7}) {
        if (!wrote_file_with_hole("large", size)) {
            ASSERT_GT(size, 5);
            GTEST_SKIP() << "no file of " << size << " bytes can be made here";
        }
        std::FILE* file = platform_open("large", "rb");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(platform_file_size(file), size);
        EXPECT_EQ(std::fgetc(file), 'a');
        EXPECT_EQ(platform_file_size(file), size);
        EXPECT_EQ(std::fgetc(file), 'b');
        std::fclose(file);
    }
}

TEST(FileSize, OfAnEmptyFileIsNothing) {
    const TempTree tree;
    tree.write("empty", "");
    std::FILE* file = platform_open("empty", "rb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(platform_file_size(file), 0);
    std::fclose(file);
}

TEST(SameFile, IsOneFileUnderTwoNames) {
    TempTree tree;
    tree.write("dm.bin", "states");
    tree.write("other", "states");
    EXPECT_TRUE(platform_same_file("dm.bin", "./dm.bin"));
    EXPECT_TRUE(platform_same_file("dm.bin", tree.path("dm.bin").c_str()));
    EXPECT_FALSE(platform_same_file("dm.bin", "other"));
    EXPECT_FALSE(platform_same_file("dm.bin", "absent"));
    EXPECT_FALSE(platform_same_file("absent", "absent"));
}

TEST(MayReplace, AFileThatIsNotThereOrAPlainOne) {
    TempTree tree;
    tree.write("plain", "");
    tree.make_folder("folder");
    EXPECT_TRUE(platform_may_replace("plain"));
    EXPECT_TRUE(platform_may_replace("absent"));
    EXPECT_FALSE(platform_may_replace("folder"));
}

TEST(PlatformStart, LeavesTheStreamsAlone) {
    const ConsoleOutput console = play_console("", [] {
        platform_start();
        platform_use_utf8_console();
        std::printf("\xC3\xA4\n");
    });
    EXPECT_EQ(console.out, "\xC3\xA4\n");
    EXPECT_EQ(console.err, "");
}
