#include "observablespectrumcalculator/spectrum_files.h"

#include "support/signal_files.h"

#include <gtest/gtest.h>

namespace kor {
namespace {

TEST(SpectrumCsv, SaysWhenTheDiskIsFull) {
    const kor_test::TempTree folder;
    folder.write("korsign.bin", kor_test::header_bytes(1, 1, 1) + kor_test::complex_bytes({1.0}));
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(write_spectrum_csv_files("a_td.csv", "/dev/full", 1.0), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "/dev/full: No space left on device\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

} // namespace
} // namespace kor
