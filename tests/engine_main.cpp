// Main program of the tests that run on either engine and with few or many random cases:
//   --engine=reference   the plain engine instead of the program's default
//   --deep               the full numbers of cases
#include "korengine.h"
#include "support/run_options.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    for (int k = 1; k < argc; ++k) {
        if (std::strcmp(argv[k], "--engine=reference") == 0) {
            kor::EngineSelect(kor::Engine::reference);
        } else if (std::strcmp(argv[k], "--deep") == 0) {
            kor_test::run_deep();
        } else {
            std::fprintf(stderr, "unknown argument: %s\n", argv[k]);
            return 2;
        }
    }
    return RUN_ALL_TESTS();
}
