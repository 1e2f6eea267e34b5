#include "wholefile.h"

#include "korplatform.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace {

using kor::WholeFile;
using kor_test::TempTree;
using Names = std::vector<std::string>;

void write_text(WholeFile& out, const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), out.file);
}

TEST(WholeFile, TakesItsNameWhenItIsKept) {
    const TempTree tree;
    WholeFile out;
    ASSERT_TRUE(kor::open_whole_file("result", "wb", out));
    write_text(out, "new");
    EXPECT_FALSE(tree.exists("result"));
    EXPECT_TRUE(kor::keep_whole_file(out));
    EXPECT_EQ(tree.read("result"), "new");
    EXPECT_EQ(tree.names(), Names{"result"});
}

TEST(WholeFile, LeavesTheOlderFileAloneUntilThen) {
    const TempTree tree;
    tree.write("result", "the older one");
    WholeFile out;
    ASSERT_TRUE(kor::open_whole_file("result", "w", out));
    write_text(out, "new");
    std::fflush(out.file);
    EXPECT_EQ(tree.read("result"), "the older one");
    EXPECT_TRUE(kor::keep_whole_file(out));
    EXPECT_EQ(tree.read("result"), "new");
}

TEST(WholeFile, DroppedLeavesNothing) {
    const TempTree tree;
    tree.write("result", "the older one");
    WholeFile out;
    ASSERT_TRUE(kor::open_whole_file("result", "wb", out));
    write_text(out, "new");
    errno = EDOM;
    kor::drop_whole_file(out);
    EXPECT_EQ(errno, EDOM);
    EXPECT_EQ(tree.read("result"), "the older one");
    EXPECT_EQ(tree.names(), Names{"result"});
}

// Processes that are killed again and again under one number, as in a container, leave their pieces.
TEST(WholeFile, IsWrittenInPlaceWhereEveryNameBesideItIsTaken) {
    const TempTree tree;
    tree.write("result", "the older one");
    const std::string number = "result." + std::to_string(kor::platform_process_id());
    for (const char* attempt : {"", ".1", ".2", ".3", ".4", ".5", ".6", ".7", ".8", ".9"})
        tree.write(number + attempt + ".new", "a piece");
    WholeFile out;
    ASSERT_TRUE(kor::open_whole_file("result", "wb", out));
    write_text(out, "new");
    EXPECT_TRUE(kor::keep_whole_file(out));
    EXPECT_EQ(tree.read("result"), "new");
    EXPECT_EQ(tree.names().size(), 11U);
    EXPECT_EQ(tree.read(number + ".9.new"), "a piece");
}

} // namespace
