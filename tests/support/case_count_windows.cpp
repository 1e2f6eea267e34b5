#include "support/case_count.h"

namespace kor_test {

int cases_here(int count) {
    return count / 20;
}

} // namespace kor_test
