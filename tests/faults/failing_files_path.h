// Where the build put the library that makes file operations fail.
#pragma once

namespace kor_test {

const char* failing_files_library();

} // namespace kor_test
