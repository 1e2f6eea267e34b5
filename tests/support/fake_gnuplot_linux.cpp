#include "support/fake_gnuplot.h"

namespace kor_test {

void FakeGnuplot::install() const {
    folder_.write("bin/gnuplot", "#!/bin/sh\n"
                                 "{ for a in \"$@\"; do echo \"argument $a\"; done\n"
                                 "  while read line; do echo \"input $line\"; done; } > called\n"
                                 ": > done\n");
    std::filesystem::permissions(folder_.path("bin/gnuplot"), std::filesystem::perms::owner_all);
}

} // namespace kor_test
