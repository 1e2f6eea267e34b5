#include "observablespectrumcalculator/spectrum_2d.h"

#include "support/signal_files.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kor {
namespace {

TEST(DispTransvSign, SaysWhenTheDiskIsFull) {
    const kor_test::TempTree folder;
    folder.write("korsign.bin", kor_test::header_bytes(1, 4096, 1) +
                                    kor_test::complex_bytes(std::vector<std::complex<double>>(4096, 1.0)));
    std::filesystem::create_symlink("/dev/full", "spectra.bin");
    testing::internal::CaptureStdout();
    DispTransvSign();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), ">>> WRITE TO BINARY FILE ERROR <<<\n");
}

} // namespace
} // namespace kor
