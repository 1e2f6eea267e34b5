#include "kor/smoke_check_mode.h"

#include <gtest/gtest.h>

namespace kor {
namespace {

TEST(SmokeCheckMode, AnyNonzeroArgumentCountsAsOne) {
    for (const int on : {1, 2, -5}) {
        KOR_SetSmokeCheckMode(on);
        EXPECT_EQ(KOR_GetSmokeCheckMode(), 1);
    }
    KOR_SetSmokeCheckMode(0);
    EXPECT_EQ(KOR_GetSmokeCheckMode(), 0);
}

} // namespace
} // namespace kor
