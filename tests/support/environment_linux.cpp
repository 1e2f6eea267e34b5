#include "support/environment.h"

#include <cstdlib>

namespace kor_test {

void set_variable(const char* name, const std::string& value) {
    ::setenv(name, value.c_str(), 1);
}

void remove_variable(const char* name) {
    ::unsetenv(name);
}

} // namespace kor_test
