// The files that a folder lists, as names.
#pragma once

#include "korplatform.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kor_test {

using Names = std::vector<std::string>;

/// A visitor of platform_list_files: adds the name to the Names that `context` points to and goes on.
inline int remember(const char* name, void* context) {
    static_cast<Names*>(context)->push_back(name);
    return 1;
}

/// What platform_list_files visits in a folder, in its order.
inline Names listed(const std::string& dir, const char* extension) {
    Names names;
    const int visited = kor::platform_list_files(dir.c_str(), extension, remember, &names);
    EXPECT_EQ(visited, static_cast<int>(names.size()));
    return names;
}

} // namespace kor_test
