#include "korplatform.h"

#include "support/console_script.h"
#include "support/fake_gnuplot.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace kor {
namespace {

TEST(OpenPlot, StartsGnuplotOnTheScriptWithoutStandardInput) {
    const kor_test::TempTree folder;
    const kor_test::FakeGnuplot gnuplot(folder);
    gnuplot.install();
    kor_test::play_console("an answer for the program\n",
                           [] { EXPECT_EQ(platform_open_plot("a b;echo $HOME.gp"), 0); });
    EXPECT_EQ(gnuplot.noted(), "argument -persist\nargument a b;echo $HOME.gp\n");
    EXPECT_EQ(kor_test::unread_answers(), "an answer for the program\n");
}

TEST(OpenPlot, TellsThatGnuplotIsNotInstalled) {
    const kor_test::TempTree folder;
    const kor_test::FakeGnuplot gnuplot(folder);
    EXPECT_EQ(platform_open_plot("a.gp"), ENOENT);
}

} // namespace
} // namespace kor
