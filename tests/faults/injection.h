// One fault in one run of a scenario, and what a run may leave behind it.
#pragma once

#include "faults/scenarios.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kor_test {

/// Operation number `at` (from 1) of the kind fails, and with `onward` every later one of it.
struct Fault {
    std::string kind; // open read write flush close rename remove mkdir chdir, or any
    long at = 0;
    std::string error; // an errno value in decimal, "short" or "kill"
    bool onward = false;
};
std::string describe(const Fault& fault);

/// What the preloaded library saw.
struct Witness {
    std::map<std::string, long> counts; // operations of each kind
    /// Kind and path of each operation that failed, the path as the program spelt it.
    std::set<std::pair<std::string, std::string>> struck;
};

struct FaultyRun {
    Fault fault;
    ProgramResult result;
    Witness witness;
};
/// Runs the scenario from its start with this fault (none when `at` is 0).
FaultyRun run_with_fault(const Scenario& scenario, const Fault& fault);

/// A run without any fault: what it printed, what it left and how many operations it needs.
struct Undisturbed {
    FaultyRun run;
    Files files;
};
Undisturbed run_undisturbed(const Scenario& scenario);

/// Every fault of the operations that an undisturbed run makes: each of them with each error, once and from
/// then on.
std::vector<Fault> all_faults(const Witness& undisturbed);

/// What is wrong behind a run that a fault met; empty when nothing is. `before` are the files at its start.
std::string judge(const Scenario& scenario, const Undisturbed& whole, const Files& before,
                  const FaultyRun& run);

} // namespace kor_test
