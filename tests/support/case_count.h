// How many cases a test takes that opens files for each of them.
#pragma once

namespace kor_test {

/// `count`; on Windows a twentieth, because there (under wine, too) a file takes milliseconds to make and
/// remove.
int cases_here(int count);

} // namespace kor_test
