#include "support/console_script.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include <unistd.h>

namespace kor_test {
namespace {

/// Sends one of the process's output streams to a temporary file for its lifetime.
class Captured {
public:
    explicit Captured(std::FILE* stream) : stream_(stream), file_(std::tmpfile()) {
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
        if (write(before_, printed.data(), printed.size()) < 0)
            throw std::runtime_error("cannot write to the test's own output");
    }

private:
    std::FILE* stream_;
    std::FILE* file_;
    int before_;
};

void set_standard_input(const std::string& answers) {
    std::string name = (std::filesystem::temp_directory_path() / "kor-answers-XXXXXX").string();
    const int file = mkstemp(name.data());
    const bool written =
        file >= 0 && write(file, answers.data(), answers.size()) == static_cast<ssize_t>(answers.size());
    close(file);
    const bool opened = written && std::freopen(name.c_str(), "r", stdin);
    std::filesystem::remove(name);
    if (!opened)
        throw std::runtime_error("cannot replace standard input");
}

} // namespace

ConsoleOutput play_console(const std::string& answers, const std::function<void()>& action) {
    set_standard_input(answers);
    Captured out(stdout);
    Captured err(stderr);
    const bool failed_before = testing::Test::HasFailure();
    action();
    ConsoleOutput console = {out.text(), err.text()};
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
