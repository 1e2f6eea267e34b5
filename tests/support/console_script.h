// Plays a person at the console: answers go to standard input, what is printed is kept.
#pragma once

#include <functional>
#include <string>

namespace kor_test {

struct ConsoleOutput {
    std::string out; // standard output, with '/' for Windows' separator
    std::string err; // standard error, likewise
};

/// Calls `action` in this process with `answers` as the whole of standard input (it ends behind them) and
/// returns what was printed meanwhile. Answers that nobody read stay in standard input.
ConsoleOutput play_console(const std::string& answers, const std::function<void()>& action);

/// What of the last script's answers nobody has read.
std::string unread_answers();

} // namespace kor_test
