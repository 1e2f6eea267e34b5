// Runs a built program as a user or a script would.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace kor_test {

struct ProgramResult {
    int status;      // exit status; 128 + signal number when a signal ended it; -1 after a timeout
    bool timed_out;  // it was stopped because it did not end in time
    std::string out; // standard output, with '/' for Windows' separator and plain line ends
    std::string err; // standard error, likewise
};

/// What to run. The input is all that the program can read: standard input ends behind it. On Windows another
/// user, another environment, preparations and signals are refused.
struct ProgramCall {
    std::string executable;
    std::vector<std::string> arguments = {};
    std::string input = {};
    std::string working_dir = {}; // empty: the caller's
    double timeout_s = 60.0;
    bool unprivileged = false; // as "nobody" where the tests run as root, who may write everywhere
    std::vector<std::pair<std::string, std::string>> environment = {}; // added to the caller's
    std::function<void()> prepare = {}; // last thing before the program: limits, other standard streams
    double signal_after_s = -1.0;       // negative: never; else `signal` is sent so long after the start
    int signal = 9;                     // SIGKILL
};

ProgramResult run_program(const ProgramCall& call);

/// Starts all of them before waiting for the first; results in the same order.
std::vector<ProgramResult> run_programs_together(const std::vector<ProgramCall>& calls);

} // namespace kor_test
