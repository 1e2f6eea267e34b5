#include "support/run_options.h"

namespace kor_test {

namespace {

bool g_deep = false;

} // namespace

void run_deep() {
    g_deep = true;
}

bool deep_run() {
    return g_deep;
}

} // namespace kor_test
