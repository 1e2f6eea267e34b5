#include "kormodel/spin_system_file.h"

#include "model_set.h"

#include <gtest/gtest.h>

using namespace kor;
using namespace kor_test;

TEST(SpinSystemFile, ADeviceWithoutAnEndIsRefused) {
    KORSpinSystemDef spins;
    EXPECT_EQ(outcome_of([&spins](char* message, std::size_t size) {
                  return kor_load_spin_system_text("/dev/zero", &spins, message, size);
              }),
              parse_error("line 1: holds a zero byte: no text file"));
}
