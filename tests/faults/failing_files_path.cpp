#include "faults/failing_files_path.h"

namespace kor_test {

const char* failing_files_library() {
    return KOR_FAILING_FILES;
}

} // namespace kor_test
