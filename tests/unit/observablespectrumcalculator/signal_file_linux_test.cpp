// Signals of more points than the memory holds, and on a disk that is full.
#include "observablespectrumcalculator/signal_file.h"

#include "kor/smoke_check_mode.h"
#include "support/signal_files.h"

#include <gtest/gtest.h>

#include <climits>
#include <fstream>
#include <sstream>

#include <sys/resource.h>
#include <unistd.h>

namespace kor {
namespace {

using kor_test::Dense;
using kor_test::TempTree;

/// For the rest of the scope the process gets no more than 256 MiB beyond what it has.
class LittleMemory {
public:
    LittleMemory() {
        rlim_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        getrlimit(RLIMIT_AS, &before_);
        rlimit little = before_;
        little.rlim_cur = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (256U << 20);
        setrlimit(RLIMIT_AS, &little);
    }
    ~LittleMemory() { setrlimit(RLIMIT_AS, &before_); }
    LittleMemory(const LittleMemory&) = delete;
    LittleMemory& operator=(const LittleMemory&) = delete;

private:
    rlimit before_;
};

/// What was captured of standard error, without an address sanitizer's own lines on a request that it
/// refused.
std::string captured_errors() {
    std::istringstream captured(testing::internal::GetCapturedStderr());
    std::string kept;
    for (std::string line; std::getline(captured, line);) {
        if (line.rfind("==", 0) != 0) {
            kept += line + '\n';
        }
    }
    return kept;
}

TEST(SignalFile, SaysWhenThereIsNoMemoryForItsPoints) {
    static CMatrix densmat, Istat, Ixtot, Iytot, Iztot;
    static SpinKet ket;
    constexpr SpinIList one_spin = {0, 1};
    const TempTree folder;
    const LittleMemory little;
    const int n = 2;
    for (const int matrices : {1, 2}) {
        const std::vector<Dense> zeros(static_cast<std::size_t>(matrices), Dense::Zero(n, n));
        kor_test::write_density_file(0, n, matrices, zeros);
        testing::internal::CaptureStderr();
        EXPECT_EQ(SeparateSpectra_GenerateSignalWithParams(&n, INT_MAX, 1.0, 0.0, "signal.bin", densmat,
                                                           Istat, Ixtot, Iytot, Iztot, ket, one_spin),
                  0.0);
        EXPECT_EQ(captured_errors(), "signal buffer: Cannot allocate memory\n");
        EXPECT_EQ(folder.names(), std::vector<std::string>{"dm.bin"});
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(write_line_list_signal_file(n, INT_MAX, 1.0, densmat, Istat, Ixtot, Iytot), 0);
    EXPECT_EQ(captured_errors(), "signal buffer: Cannot allocate memory\n");
    EXPECT_FALSE(folder.exists("korsign.bin"));
}

TEST(SignalFile, SaysWhenTheDiskIsFull) {
    static CMatrix densmat, Istat, Ixtot, Iytot, Iztot;
    static SpinKet ket;
    constexpr SpinIList one_spin = {0, 1};
    const TempTree folder;
    KOR_SetSmokeCheckMode(1);
    const int n = 2;
    kor_test::write_density_file(0, n, 1, {kor_test::single_spin(1, 'x')});
    kor_test::from_dense(kor_test::single_spin(1, 'x'), Ixtot);
    kor_test::from_dense(kor_test::single_spin(1, 'y'), Iytot);
    kor_test::from_dense(kor_test::single_spin(1, 'z'), Iztot);
    kor_test::from_dense(kor_test::single_spin(1, 'z'), Istat);
    for (const int points : {1, 8192}) { // found at the close, and at a write
        testing::internal::CaptureStderr();
        EXPECT_EQ(SeparateSpectra_GenerateSignalWithParams(&n, points, 1.0, 0.0, "/dev/full", densmat, Istat,
                                                           Ixtot, Iytot, Iztot, ket, one_spin),
                  0.0);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "/dev/full: No space left on device\n");
    }
}

} // namespace
} // namespace kor
