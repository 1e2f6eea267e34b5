// A computer with too little memory for what is asked.
#include "faults/injection.h"
#include "faults/scenarios.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

namespace {

using namespace kor_test;

constexpr rlim_t MEGABYTE = 1024 * 1024;

/// Runs the scenario in so much memory; the program alone takes 140 MB.
ProgramResult run_in(rlim_t megabytes, const Scenario& scenario) {
    scenario.reset();
    ProgramCall call;
    call.prepare = [megabytes] {
        const rlimit limit{megabytes * MEGABYTE, megabytes * MEGABYTE};
        setrlimit(RLIMIT_AS, &limit);
    };
    return run_program(scenario.call(call));
}

// A signal of two million points takes four arrays of 16 MB: where one of them does not fit, that is told,
// and no signal is left.
TEST(SmallMemory, IsToldAndLeavesNoPiece) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the address sanitizer takes more memory than any limit";
#endif
    const auto scenario = make_scenario("analysis");
    scenario->input = "3\n1\n\n2\n2\n\n4\n2\n2000000\n0.01\n0\n3\n\n7\n6\n";
    const std::string signal = "build/runtime/korsign.bin";
    const Files whole = run_undisturbed(*scenario).files;
    ASSERT_TRUE(whole.count(signal));
    int told = 0;
    for (rlim_t megabytes = 160; megabytes <= 300; megabytes += 10) {
        const ProgramResult run = run_in(megabytes, *scenario);
        const Files after = scenario->files();
        const bool refused = run.err == "signal buffer: Cannot allocate memory\n";
        const bool ended = run.err == "[KOR] There is not enough memory to go on.\n";
        EXPECT_EQ(run.status, ended ? 1 : 0) << megabytes << ": " << run.err;
        EXPECT_TRUE(refused || ended || run.err.empty()) << megabytes << ": " << run.err;
        EXPECT_EQ(after.count(signal), refused || ended ? 0U : 1U) << megabytes;
        if (after.count(signal)) {
            EXPECT_TRUE(after.at(signal) == whole.at(signal)) << megabytes;
        }
        told += ended ? 1 : 0;
    }
    EXPECT_GE(told, 1);
}

} // namespace
