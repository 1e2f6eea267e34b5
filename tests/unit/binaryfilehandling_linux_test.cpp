// Files that fail in the middle, which Linux can be asked for.
#include "binaryfilehandling.h"

#include "support/console_script.h"
#include "support/run_models.h"
#include "support/small_disk_linux.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace kor {
namespace {

using kor_test::play_console;
using kor_test::read_file;
using kor_test::SmallDisk;
using kor_test::system_line;
using kor_test::TempTree;
using kor_test::write_file;

TEST(BinFileHeader, WriteNamesTheFirstNumberThatDoesNotFit) {
    const TempTree folder;
    constexpr long most = 1 << 20;
    const char* const contexts[] = {"fwrite(type)", "fwrite(num1)", "fwrite(num2)"};
    for (int fitting : {0, 1, 2}) {
        std::FILE* const file = std::fopen("f", "wb");
        std::setvbuf(file, nullptr, _IONBF, 0);
        std::fseek(file, most - 4 * fitting, SEEK_SET);
        binfh_status status = BINFH_OK;
        const auto printed = play_console("", [&] {
            const SmallDisk limit(most);
            status = WriteBinFileHeader_status(file, 0, 4, 3);
        });
        std::fclose(file);
        EXPECT_EQ(status, BINFH_ERR_IO);
        EXPECT_EQ(printed.err, system_line(contexts[fitting], EFBIG));
    }
}

TEST(CopyFileBinary, FullDiskIsAWriteFailure) {
    const TempTree folder;
    for (std::size_t size : {3U, 70000U}) {
        write_file("from", std::string(size, 'a'));
        binfh_status status = BINFH_OK;
        const auto printed = play_console("", [&] { status = copy_file_binary("from", "/dev/full"); });
        EXPECT_EQ(status, BINFH_ERR_IO);
        EXPECT_EQ(printed.err, system_line("fwrite", ENOSPC));
    }
}

TEST(CopyFileBinary, SourceThatCannotBeReadIsAReadFailure) {
    // The first page of a process's memory: a file that opens and whose first read fails.
    const char* const unreadable = "/proc/self/mem";
    const TempTree folder;
    binfh_status status = BINFH_OK;
    const auto printed = play_console("", [&] { status = copy_file_binary(unreadable, "to"); });
    EXPECT_EQ(status, BINFH_ERR_IO);
    EXPECT_EQ(printed.err, system_line("fread", EIO));
    EXPECT_EQ(read_file("to"), ""); // left behind as far as it got
}

} // namespace
} // namespace kor
