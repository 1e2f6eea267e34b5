#include "support/console_script.h"

#include "support/plain_text.h"
#include "support/scratch_streams.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>

#include <unistd.h>

namespace kor_test {
namespace {

/// Sends one of the process's output streams to a temporary file for its lifetime.
class Captured {
public:
    explicit Captured(std::FILE* stream) : stream_(stream), file_(open_scratch_file()) {
        std::fflush(stream_);
        before_ = dup(fileno(stream_));
        if (!file_ || before_ < 0 || dup2(fileno(file_), fileno(stream_)) < 0)
            throw std::runtime_error("cannot capture a stream");
    }
    ~Captured() {
        std::fflush(stream_);
        dup2(before_, fileno(stream_));
        close(before_);
        std::fclose(file_);
    }
    Captured(const Captured&) = delete;
    Captured& operator=(const Captured&) = delete;

    std::string text() {
        std::fflush(stream_);
        std::rewind(file_);
        std::string text;
        for (int c = std::getc(file_); c != EOF; c = std::getc(file_))
            text += static_cast<char>(c);
        return text;
    }

    /// Writes to where the stream went before.
    void show(const std::string& printed) const {
        if (write(before_, printed.data(), static_cast<unsigned>(printed.size())) < 0)
            throw std::runtime_error("cannot write to the test's own output");
    }

private:
    std::FILE* stream_;
    std::FILE* file_;
    int before_;
};

} // namespace

ConsoleOutput play_console(const std::string& answers, const std::function<void()>& action) {
    set_standard_input(answers);
    Captured out(stdout);
    Captured err(stderr);
    const bool failed_before = testing::Test::HasFailure();
    action();
    ConsoleOutput console = {with_slashes(out.text()), with_slashes(err.text())};
    // The message of a check that failed meanwhile is among what was printed.
    if (testing::Test::HasFailure() && !failed_before)
        out.show(console.out);
    return console;
}

std::string unread_answers() {
    std::string text;
    for (int c = std::getc(stdin); c != EOF; c = std::getc(stdin))
        text += static_cast<char>(c);
    return text;
}

} // namespace kor_test
