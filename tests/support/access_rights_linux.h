#pragma once

#include <gtest/gtest.h>

#include <string>

#include <sys/stat.h>

namespace kor_test {

/// The access rights of a file, as chmod takes them. A file that is not there fails the test.
inline mode_t rights_of(const std::string& name) {
    struct stat info {};
    EXPECT_EQ(stat(name.c_str(), &info), 0) << name;
    return info.st_mode & 07777;
}

} // namespace kor_test
