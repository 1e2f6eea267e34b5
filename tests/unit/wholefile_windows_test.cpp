// Names under which Windows would write somewhere else.
#include "wholefile.h"

#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

using kor::WholeFile;
using kor_test::TempTree;
using Names = std::vector<std::string>;

TEST(WholeFile, IsNoDeviceAndNoHiddenPartOfAnotherFile) {
    const TempTree tree;
    for (const std::string name : {"NUL", "nul.bin", "result:part", "COM\u00B9", "result."})
        for (const std::string& folder : {std::string(), std::string(".\\"), tree.path() + "/"}) {
            WholeFile out;
            EXPECT_FALSE(kor::open_whole_file((folder + name).c_str(), "wb", out)) << folder << name;
            EXPECT_EQ(errno, EINVAL) << folder << name;
        }
    EXPECT_EQ(tree.names(), Names{});
}

TEST(WholeFile, MayLieOnADriveByItsWorkingDirectory) {
    const TempTree tree;
    const std::string drive = tree.root().string().substr(0, 2);
    ASSERT_EQ(drive[1], ':');
    WholeFile out;
    ASSERT_TRUE(kor::open_whole_file((drive + "result").c_str(), "wb", out));
    EXPECT_TRUE(kor::keep_whole_file(out));
    EXPECT_EQ(tree.names(), Names{"result"});
}

} // namespace
