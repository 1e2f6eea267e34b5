// Files that somebody else has open: Windows then refuses to replace, remove or open them.
#include "korplatform.h"

#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <memory>
#include <thread>

#include <windows.h>

namespace kor {
namespace {

using kor_test::TempTree;

/// A file open in a way that leaves nothing to others until the object ends.
class OpenElsewhere {
public:
    explicit OpenElsewhere(const char* name)
        : handle_(
              CreateFileA(name, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE) << name;
    }
    ~OpenElsewhere() { CloseHandle(handle_); }
    OpenElsewhere(const OpenElsewhere&) = delete;
    OpenElsewhere& operator=(const OpenElsewhere&) = delete;

private:
    HANDLE handle_;
};

/// Runs `action` while another thread has the file open for a fifth of a second.
template <typename Action> void while_open_for_a_moment(const char* name, const Action& action) {
    auto open = std::make_unique<OpenElsewhere>(name);
    std::thread closing([&open] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        open.reset();
    });
    action();
    closing.join();
}

void write_bytes(const char* name, const std::string& bytes) {
    std::FILE* file = platform_open(name, "wb");
    ASSERT_NE(file, nullptr) << name;
    EXPECT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file), bytes.size());
    EXPECT_EQ(std::fclose(file), 0);
}

/// What is in the file; one letter over and over when it is whole.
std::string read_bytes(const char* name) {
    std::FILE* file = platform_open(name, "rb");
    if (!file)
        return "cannot be opened";
    std::string bytes(20000, '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    std::fclose(file);
    return bytes;
}

TEST(TakenFile, IsReplacedWhenItIsFree) {
    const TempTree tree;
    tree.write("new", "new");
    tree.write("result", "old");
    while_open_for_a_moment("result", [] { EXPECT_EQ(platform_rename("new", "result"), 0); });
    EXPECT_EQ(tree.read("result"), "new");
    EXPECT_EQ(tree.names(), std::vector<std::string>{"result"});
}

TEST(TakenFile, TakesItsNewNameWhenItIsFree) {
    const TempTree tree;
    tree.write("new", "new");
    while_open_for_a_moment("new", [] { EXPECT_EQ(platform_rename("new", "result"), 0); });
    EXPECT_EQ(tree.read("result"), "new");
}

TEST(TakenFile, IsRemovedWhenItIsFree) {
    const TempTree tree;
    tree.write("dm.bin", "");
    while_open_for_a_moment("dm.bin", [] { EXPECT_EQ(platform_remove("dm.bin"), 0); });
    EXPECT_FALSE(tree.exists("dm.bin"));
}

TEST(TakenFile, IsOpenedWhenItIsFree) {
    const TempTree tree;
    tree.write("result", "old");
    while_open_for_a_moment("result", [] { EXPECT_EQ(read_bytes("result"), "old"); });
    while_open_for_a_moment("result", [] { write_bytes("result", "new"); });
    EXPECT_EQ(tree.read("result"), "new");
}

TEST(TakenFile, MayBeReplaced) {
    const TempTree tree;
    tree.write("result", "old");
    const OpenElsewhere open("result");
    EXPECT_TRUE(platform_may_replace("result"));
}

TEST(TakenFile, StaysWhenItIsNeverFree) {
    const TempTree tree;
    tree.write("new", "new");
    tree.write("result", "old");
    {
        const OpenElsewhere open("result");
        EXPECT_EQ(platform_rename("new", "result"), EACCES);
    }
    EXPECT_EQ(tree.read("result"), "old");
    EXPECT_EQ(tree.read("new"), "new");
}

TEST(TakenFile, IsWholeForReadersWhileTwoReplaceItOverAndOver) {
    const TempTree tree;
    tree.write("result", std::string(10000, 'a'));
    std::atomic<int> writing = 2, failed = 0;
    const auto replace = [&](const char* beside, char letter) {
        for (int k = 0; k < 500; ++k) {
            if (!platform_may_replace("result"))
                ++failed;
            write_bytes(beside, std::string(10000, letter));
            if (platform_rename(beside, "result") != 0)
                ++failed;
        }
        --writing;
    };
    std::thread first(replace, "result.1.new", 'a'), second(replace, "result.2.new", 'b');
    std::string torn;
    int read = 0;
    while (writing > 0) {
        const std::string bytes = read_bytes("result");
        ++read;
        if (bytes != std::string(10000, 'a') && bytes != std::string(10000, 'b'))
            torn = bytes.substr(0, 40);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    first.join();
    second.join();
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(torn, "");
    EXPECT_GT(read, 0);
    EXPECT_EQ(tree.names(), std::vector<std::string>{"result"});
}

} // namespace
} // namespace kor
