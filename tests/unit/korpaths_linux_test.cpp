// What korpaths.h promises of files that only Linux has.
#include "korpaths.h"

#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace kor;

TEST(FileExists, APipeIsThereWithoutWaitingForItsWriter) {
    const kor_test::TempTree tree;
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    alarm(60); // ends a test that waits
    EXPECT_EQ(file_exists("pipe"), 1);
    alarm(0);
    EXPECT_EQ(file_exists("/dev/null"), 1);
}
