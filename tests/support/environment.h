// The environment that this process and its children see.
#pragma once

#include <string>

namespace kor_test {

void set_variable(const char* name, const std::string& value);
void remove_variable(const char* name);

} // namespace kor_test
