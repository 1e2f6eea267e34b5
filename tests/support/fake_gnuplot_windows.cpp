#include "support/fake_gnuplot.h"

namespace kor_test {

void FakeGnuplot::install() const {
    folder_.write("bin/gnuplot.bat", "@echo off\r\n"
                                     ":next\r\n"
                                     "if \"%~1\"==\"\" goto input\r\n"
                                     "echo argument %~1>>called\r\n"
                                     "shift\r\n"
                                     "goto next\r\n"
                                     ":input\r\n"
                                     "set line=\r\n"
                                     "set /p line=\r\n"
                                     "if not \"%line%\"==\"\" echo input %line%>>called\r\n"
                                     "echo.>done\r\n"
                                     "exit\r\n");
}

} // namespace kor_test
