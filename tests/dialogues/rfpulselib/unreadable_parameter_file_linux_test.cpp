// A parameter file whose disk fails is told: the pulse would lack what could not be read.
#include "rfpulselib/dialogues.h"

#include "support/console_script.h"

#include <gtest/gtest.h>

namespace {

using namespace kor;
using namespace kor_test;

// The memory at address 0 is a file that opens and cannot be read.
TEST(FMPulseDefinition, AParameterFileThatCannotBeReadIsTold) {
    const int ap = 4;
    const double ti = 1e-3;
    double xb[4] = {7, 7, 7, 7};
    double yb[4] = {7, 7, 7, 7};
    const ConsoleOutput printed =
        play_console("6\n/proc/self/mem\n", [&] { FMPulseDefinition(&ap, &ti, xb, yb); });
    EXPECT_EQ(printed.err, "/proc/self/mem: Input/output error\n");
    for (int j = 0; j < ap; ++j) {
        EXPECT_EQ(xb[j], 0.0);
        EXPECT_EQ(yb[j], 0.0);
    }
}

} // namespace
