#include "rfwaveformfile.h"

#include "support/console_script.h"
#include "support/ordinary_user.h"
#include "support/run_models.h"
#include "support/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace kor;
using namespace kor_test;

namespace {

/// From now on the system refuses to rename files, as on a file system that has become read-only.
bool refuse_renaming() {
    sock_filter rules[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                           BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_rename, 2, 0),
                           BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_renameat2, 1, 0),
                           BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
                           BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EROFS)};
    const sock_fprog program = {sizeof rules / sizeof rules[0], rules};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

} // namespace

TEST(WaveformFile, EveryShortBlockIsTold) {
    const double v[2] = {1, 2};
    const int ap = 2;
    const auto five = play_console("", [&] { BinArrayOut(&ap, v, v, v, v, v, "/dev/full"); });
    EXPECT_EQ(five.out, " >>> WRITE TO BINARY FILE ERROR (xb) <<< \n"
                        " >>> WRITE TO BINARY FILE ERROR (yb) <<< \n"
                        " >>> WRITE TO BINARY FILE ERROR (gx) <<< \n"
                        " >>> WRITE TO BINARY FILE ERROR (gy) <<< \n"
                        " >>> WRITE TO BINARY FILE ERROR (gz) <<< \n");
    const auto two = play_console("", [&] { BinArrayOut2D(ap, v, v, "/dev/full"); });
    EXPECT_EQ(two.out, " >>> WRITE TO BINARY FILE ERROR (xb) <<< \n"
                       " >>> WRITE TO BINARY FILE ERROR (yb) <<< \n");
}

TEST(WaveformFile, OneThatMayBeWrittenAndNotReplacedIsWrittenInPlace) {
    if (geteuid() != 0)
        GTEST_SKIP() << "needs a file of another user";
    // In such a folder everybody may make files and nobody may remove those of others.
    namespace fs = std::filesystem;
    const TempTree folder;
    folder.write("w", "of another user");
    fs::permissions("w", fs::perms::all);
    fs::permissions(folder.root(), fs::perms::all | fs::perms::sticky_bit);
    const double v[2] = {1, 2};
    int written = 0;
    const auto console = play_console("", [&] {
        const OrdinaryUser nobody;
        written = BinArrayOut2D(2, v, v, "w");
    });
    EXPECT_EQ(written, 1);
    EXPECT_EQ(console.err, "");
    EXPECT_EQ(folder.read("w"), bytes_of(std::vector<double>{1, 2, 1, 2}));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"w"});
}

TEST(WaveformFile, AReadErrorIsToldByTheSystemsText) {
    // The first page of a process's memory: a file that opens and whose first read fails.
    const char* const unreadable = "/proc/self/mem";
    double x[2], y[2];
    double* const arrays[] = {x, y};
    const auto blocks =
        play_console("", [&] { EXPECT_EQ(read_waveform_blocks(unreadable, 2, 2, arrays), 0); });
    EXPECT_EQ(blocks.err, system_line(unreadable, EIO));
    const auto pulse = play_console("", [&] { EXPECT_EQ(koropt_load_waveform_xy(unreadable, 2, x, y), 0); });
    EXPECT_EQ(pulse.err, system_line(unreadable, EIO));
}

TEST(WaveformFile, OneThatCannotBeGivenItsNameIsToldAndTheOlderOneStays) {
    const TempTree folder;
    folder.write("w", "older");
    const double v[2] = {1, 2};
    const auto write_without_renaming = [&] {
        if (!refuse_renaming())
            std::exit(2);
        std::exit(BinArrayOut2D(2, v, v, "w"));
    };
    EXPECT_EXIT(write_without_renaming(), testing::ExitedWithCode(0), "^w: Read-only file system\n$");
    EXPECT_EQ(folder.read("w"), "older");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"w"});
}
