#include "support/environment.h"

#include <cstdlib>

namespace kor_test {

void set_variable(const char* name, const std::string& value) {
    _putenv((std::string(name) + "=" + value).c_str());
}

// Without a value there is no variable.
void remove_variable(const char* name) {
    set_variable(name, "");
}

} // namespace kor_test
