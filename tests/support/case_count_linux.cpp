#include "support/case_count.h"

namespace kor_test {

int cases_here(int count) {
    return count;
}

} // namespace kor_test
