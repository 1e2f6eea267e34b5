// How many cases a random test takes: few in the ordinary suite, all of them under --deep.
#pragma once

namespace kor_test {

/// From here on cases() gives the full numbers.
void run_deep();
bool deep_run();
inline int cases(int ordinary, int full) {
    return deep_run() ? full : ordinary;
}

} // namespace kor_test
