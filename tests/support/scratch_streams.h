// Files behind the standard streams of a test, gone when they are closed.
#pragma once

#include <cstdio>
#include <string>

namespace kor_test {

/// A file for writing and reading bytes; nullptr when there is none.
std::FILE* open_scratch_file();

/// Makes `text` the whole of standard input.
void set_standard_input(const std::string& text);

} // namespace kor_test
