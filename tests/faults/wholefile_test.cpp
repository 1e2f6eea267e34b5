// The files of wholefile.h on disks that are full, beside another writer, and where a file cannot be
// replaced.
#include "wholefile.h"

#include "support/access_rights_linux.h"
#include "support/ordinary_user.h"
#include "support/small_disk_linux.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using kor::WholeFile;
using kor_test::OrdinaryUser;
using kor_test::rights_of;
using kor_test::SmallDisk;
using kor_test::TempTree;
using Names = std::vector<std::string>;

void write_text(WholeFile& out, const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), out.file);
}

TEST(WholeFileFault, ThatDoesNotFitTheDiskLeavesTheOlderOne) {
    const TempTree tree;
    tree.write("result", "the older one");
    for (const std::size_t size : {101U, 20000U}) {
        const SmallDisk disk(100);
        WholeFile out;
        ASSERT_TRUE(kor::open_whole_file("result", "wb", out));
        write_text(out, std::string(size, 'x'));
        EXPECT_FALSE(kor::keep_whole_file(out));
        EXPECT_EQ(errno, EFBIG) << size;
        EXPECT_EQ(tree.read("result"), "the older one");
        EXPECT_EQ(tree.names(), Names{"result"});
    }
}

TEST(WholeFileFault, OfTwoWritersTheLastOneStays) {
    const TempTree tree;
    const pid_t other = fork();
    WholeFile out;
    const bool opened = kor::open_whole_file("result", "wb", out);
    if (other == 0) {
        write_text(out, "theirs");
        _exit(opened && kor::keep_whole_file(out) ? 0 : 1);
    }
    ASSERT_TRUE(opened);
    write_text(out, "ours, and longer");
    while (!tree.exists("result"))
        usleep(1000);
    EXPECT_EQ(tree.read("result"), "theirs");
    EXPECT_TRUE(kor::keep_whole_file(out));
    EXPECT_EQ(tree.read("result"), "ours, and longer");
    EXPECT_EQ(tree.names(), Names{"result"});
}

// A killed process may have left its piece under the name, or a link may lie there in wait.
TEST(WholeFileFault, TakesNoNameThatIsTaken) {
    const TempTree tree;
    tree.write("precious", "kept");
    const std::string first = "result." + std::to_string(getpid()) + ".new";
    const std::string second = "result." + std::to_string(getpid()) + ".1.new";
    tree.write(first, "a piece");
    fs::create_symlink("precious", second);
    WholeFile out;
    ASSERT_TRUE(kor::open_whole_file("result", "wb", out));
    EXPECT_EQ(out.beside, "result." + std::to_string(getpid()) + ".2.new");
    write_text(out, "new");
    EXPECT_TRUE(kor::keep_whole_file(out));
    EXPECT_EQ(tree.read("result"), "new");
    EXPECT_EQ(tree.read("precious"), "kept");
    EXPECT_EQ(tree.names(), (Names{"precious", "result", second, first}));
}

TEST(WholeFileFault, WritesDevicesAndLinksInPlace) {
    const TempTree tree;
    tree.write("linked", "old");
    fs::create_symlink("linked", "symbolic");
    fs::create_hard_link("linked", "hard");
    for (const char* name : {"symbolic", "hard", "/dev/null"}) {
        WholeFile out;
        ASSERT_TRUE(kor::open_whole_file(name, "wb", out)) << name;
        write_text(out, name);
        EXPECT_TRUE(kor::keep_whole_file(out)) << name;
    }
    EXPECT_EQ(tree.read("linked"), "hard");
    EXPECT_TRUE(fs::is_symlink("symbolic"));
    EXPECT_EQ(fs::hard_link_count("linked"), 2U);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(WholeFileFault, HasTheRightsOfTheOlderOneFromTheStart) {
    const TempTree tree;
    for (const mode_t rights : {mode_t{0600}, mode_t{0640}, mode_t{0666}, mode_t{0755}}) {
        tree.write("result", "the older one");
        ASSERT_EQ(chmod("result", rights), 0);
        WholeFile out;
        ASSERT_TRUE(kor::open_whole_file("result", "wb", out));
        EXPECT_EQ(rights_of(out.beside), rights);
        write_text(out, "new");
        EXPECT_TRUE(kor::keep_whole_file(out));
        EXPECT_EQ(tree.read("result"), "new");
        EXPECT_EQ(rights_of("result"), rights);
    }
}

TEST(WholeFileFault, OfAnotherOwnerStaysHis) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only the superuser can give a file away";
    constexpr uid_t SOMEBODY = 12345;
    const TempTree tree;
    tree.write("result", "the older one");
    ASSERT_EQ(chown("result", SOMEBODY, SOMEBODY), 0);
    WholeFile out;
    ASSERT_TRUE(kor::open_whole_file("result", "wb", out));
    EXPECT_TRUE(kor::keep_whole_file(out));
    struct stat info {};
    ASSERT_EQ(stat("result", &info), 0);
    EXPECT_EQ(info.st_uid, SOMEBODY);
    EXPECT_EQ(info.st_gid, SOMEBODY);
    EXPECT_EQ(info.st_size, 0);
}

// What an ordinary user may write in a file of somebody else he writes in place: the owner stays.
TEST(WholeFileFault, OfAnotherOwnerIsWrittenInPlaceByAnOrdinaryUser) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only the superuser can make files of two owners";
    const TempTree tree;
    fs::permissions(tree.root(), fs::perms::all);
    tree.write("result", "the older one");
    ASSERT_EQ(chmod("result", 0666), 0);
    {
        const OrdinaryUser user;
        WholeFile out;
        ASSERT_TRUE(kor::open_whole_file("result", "wb", out));
        EXPECT_EQ(out.beside, "");
        write_text(out, "new");
        EXPECT_TRUE(kor::keep_whole_file(out));
    }
    EXPECT_EQ(tree.read("result"), "new");
    struct stat info {};
    ASSERT_EQ(stat("result", &info), 0);
    EXPECT_EQ(info.st_uid, 0U);
}

TEST(WholeFileFault, WithANameTooLongForAnAdditionIsWrittenInPlace) {
    const TempTree tree;
    const std::string name(255, 'n');
    WholeFile out;
    ASSERT_TRUE(kor::open_whole_file(name.c_str(), "wb", out));
    write_text(out, "whole");
    EXPECT_TRUE(kor::keep_whole_file(out));
    EXPECT_EQ(tree.read(name), "whole");
    EXPECT_EQ(tree.names(), Names{name});
}

TEST(WholeFileFault, CannotBeAFolderOrLieInNone) {
    const TempTree tree;
    tree.make_folder("folder");
    tree.write("file", "");
    WholeFile out;
    EXPECT_FALSE(kor::open_whole_file("folder", "wb", out));
    EXPECT_EQ(errno, EISDIR);
    EXPECT_FALSE(kor::open_whole_file("absent/result", "wb", out));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(kor::open_whole_file("file/result", "wb", out));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_FALSE(kor::open_whole_file("", "wb", out));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(tree.names(), (Names{"file", "folder"}));
}

} // namespace
