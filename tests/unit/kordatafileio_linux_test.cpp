#include "kordatafileio.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace kor;

namespace {

/// Runs a status operation that fails and returns what it wrote to standard error.
template <typename Operation> std::string io_error_text(Operation operation) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(operation(), DATAIO_ERR_IO);
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(SeriesFiles, AFullDiskIsReported) {
    const std::string full = "fprintf: No space left on device\n";
    std::vector<double> many(5000, 1.0 / 3.0);
    EXPECT_EQ(io_error_text([&] { return AsciiOut_status(5000, many.data(), "/dev/full"); }), full);
    EXPECT_EQ(io_error_text([&] { return SGFileOut_status(2, many.data(), "/dev/full"); }), full);
}
