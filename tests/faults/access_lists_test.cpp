// Files of wholefile.h beside access lists: who may read the older file may read the new one, and nobody
// else.
#include "wholefile.h"

#include "support/access_rights_linux.h"
#include "support/ordinary_user.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

using kor::WholeFile;
using kor_test::OrdinaryUser;
using kor_test::rights_of;
using kor_test::TempTree;
using Names = std::vector<std::string>;

constexpr const char* OF_THE_FILE = "system.posix_acl_access";
constexpr const char* FOR_NEW_FILES = "system.posix_acl_default";

/// A list as the system stores it. The owner may read and write, this process's user by number read, the
/// group and the others nothing; the mask allows as much.
std::string list_with_a_reader() {
    struct Entry {
        std::uint16_t tag, rights;
        std::uint32_t user;
    };
    constexpr std::uint32_t NOBODY = 0xFFFFFFFF;
    const struct {
        std::uint32_t version = 2;
        Entry entries[5] = {
            {1, 6, NOBODY}, {2, 4, geteuid()}, {4, 0, NOBODY}, {16, 4, NOBODY}, {32, 0, NOBODY}};
    } list;
    return {reinterpret_cast<const char*>(&list), sizeof list};
}

/// False where the file system has no access lists, or the system keeps them from this process.
bool set_list(const char* name, const char* kind) {
    const std::string list = list_with_a_reader();
    const bool set = setxattr(name, kind, list.data(), list.size(), 0) == 0;
    const int error = set ? 0 : errno;
    constexpr int unavailable[] = {ENOTSUP, EPERM, ENOSYS, EINVAL};
    EXPECT_TRUE(set || std::ranges::count(unavailable, error) == 1) << name << ": " << error;
    return set;
}

std::string list_of(const std::string& name) {
    std::string list(1000, '\0');
    const ssize_t size = getxattr(name.c_str(), OF_THE_FILE, list.data(), list.size());
    list.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return list;
}

TEST(AccessList, OfTheFolderGivesNobodyWhatTheOlderFileKeptFromHim) {
    const TempTree tree;
    tree.write("result", "the older one");
    ASSERT_EQ(chmod("result", 0640), 0);
    if (!set_list(".", FOR_NEW_FILES))
        GTEST_SKIP() << "this file system has no access lists";
    WholeFile out;
    ASSERT_TRUE(kor::open_whole_file("result", "wb", out));
    EXPECT_EQ(list_of(out.beside), "");
    EXPECT_EQ(rights_of(out.beside), 0640U);
    ASSERT_TRUE(kor::keep_whole_file(out));
    EXPECT_EQ(list_of("result"), "");
    EXPECT_EQ(rights_of("result"), 0640U);
}

TEST(AccessList, OfTheFolderIsForAFileThatReplacesNone) {
    const TempTree tree;
    if (!set_list(".", FOR_NEW_FILES))
        GTEST_SKIP() << "this file system has no access lists";
    WholeFile out;
    ASSERT_TRUE(kor::open_whole_file("result", "wb", out));
    ASSERT_TRUE(kor::keep_whole_file(out));
    EXPECT_EQ(list_of("result"), list_with_a_reader());
}

TEST(AccessList, OfTheOlderFileGoesToTheNewOne) {
    const TempTree tree;
    tree.write("result", "the older one");
    if (!set_list("result", OF_THE_FILE))
        GTEST_SKIP() << "this file system has no access lists";
    WholeFile out;
    ASSERT_TRUE(kor::open_whole_file("result", "wb", out));
    EXPECT_NE(out.beside, "");
    EXPECT_EQ(tree.read("result"), "the older one");
    EXPECT_EQ(list_of(out.beside), list_with_a_reader());
    ASSERT_TRUE(kor::keep_whole_file(out));
    EXPECT_EQ(tree.read("result"), "");
    EXPECT_EQ(list_of("result"), list_with_a_reader());
    EXPECT_EQ(rights_of("result"), 0640U) << "the mask's rights";
    EXPECT_EQ(tree.names(), Names{"result"});
}

// The list was made for a group that the new file cannot have.
TEST(AccessList, ThatCannotBeGivenStaysWithTheFileWrittenInPlace) {
    constexpr gid_t GROUP_OF_OTHERS = 54321;
    const TempTree tree;
    ASSERT_EQ(chmod(".", 0777), 0);
    tree.write("result", "the older one");
    if (chown("result", kor_test::NOBODY, GROUP_OF_OTHERS) != 0)
        GTEST_SKIP() << "only the superuser can make files of two owners";
    if (!set_list("result", OF_THE_FILE))
        GTEST_SKIP() << "this file system has no access lists";
    {
        const OrdinaryUser user;
        WholeFile out;
        ASSERT_TRUE(kor::open_whole_file("result", "wb", out));
        EXPECT_EQ(out.beside, "");
        ASSERT_TRUE(kor::keep_whole_file(out));
    }
    EXPECT_EQ(tree.read("result"), "");
    EXPECT_EQ(list_of("result"), list_with_a_reader());
    EXPECT_EQ(tree.names(), Names{"result"});
}

} // namespace
