// Every file operation of every way to use the program fails once, and from then on, with every error.
#include "faults/injection.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using namespace kor_test;

/// Plays every `stride`-th fault of the scenario; the number of faults played.
std::size_t play_faults(const std::string& name, std::size_t stride) {
    const auto scenario = make_scenario(name);
    const Files before = scenario->files();
    const Undisturbed whole = run_undisturbed(*scenario);
    EXPECT_EQ(whole.run.result.status, 0) << whole.run.result.out << whole.run.result.err;
    for (const ResultFile& result : scenario->results)
        EXPECT_TRUE(whole.files.count(result.path)) << result.path << "\n" << whole.run.result.out;
    const std::vector<Fault> faults = all_faults(whole.run.witness);
    std::size_t played = 0;
    for (std::size_t k = 0; k < faults.size(); k += stride, ++played) {
        const FaultyRun run = run_with_fault(*scenario, faults[k]);
        EXPECT_NE(run.witness.struck.empty() && faults[k].kind != "flush", true) << describe(faults[k]);
        EXPECT_EQ(judge(*scenario, whole, before, run), "") << name << ": " << describe(faults[k]);
    }
    return played;
}

class InjectedFault : public testing::TestWithParam<std::string> {};

TEST_P(InjectedFault, EndsCleanlyAndNamesTheFile) {
    EXPECT_GT(play_faults(GetParam(), 29), 6u);
}
INSTANTIATE_TEST_SUITE_P(EveryUse, InjectedFault, testing::ValuesIn(scenario_names()),
                         [](const auto& name) { return kor_test::test_name(name.param); });

class DeepInjectedFault : public testing::TestWithParam<std::string> {};

TEST_P(DeepInjectedFault, EndsCleanlyAndNamesTheFile) {
    const std::size_t played = play_faults(GetParam(), 1);
    std::printf("%s: %zu faults\n", GetParam().c_str(), played);
    EXPECT_GT(played, 200u);
}
INSTANTIATE_TEST_SUITE_P(EveryUse, DeepInjectedFault, testing::ValuesIn(scenario_names()),
                         [](const auto& name) { return kor_test::test_name(name.param); });

} // namespace
