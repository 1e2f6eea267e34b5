#include "rfpulseplot.h"
#include "support/console_script.h"
#include "support/fake_gnuplot.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

// Windows looks for programs by their extensions only.
TEST(OpenPlot, AGnuplotThatIsNoProgramIsTold) {
    const TempTree folder;
    const FakeGnuplot gnuplot(folder);
    folder.write("bin/gnuplot", "no program");
    const ConsoleOutput console = play_console("", [] { open_plot("x.gp"); });
    EXPECT_EQ(console.out, "gnuplot could not be started: Permission denied\n");
}
