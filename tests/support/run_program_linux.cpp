#include "support/ordinary_user.h"
#include "support/run_program.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace kor_test {
namespace {

using Clock = std::chrono::steady_clock;

/// An unnamed temporary file, so that a program may write more than a pipe holds.
class Stream {
public:
    Stream() : file_(std::tmpfile()) {
        if (!file_)
            throw std::runtime_error("no temporary file");
    }
    ~Stream() { std::fclose(file_); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    int descriptor() const { return fileno(file_); }

    void fill(const std::string& text) {
        std::fwrite(text.data(), 1, text.size(), file_);
        std::fflush(file_);
        std::rewind(file_);
    }

    std::string contents() {
        std::rewind(file_);
        std::string text;
        for (int c = std::getc(file_); c != EOF; c = std::getc(file_))
            text += static_cast<char>(c);
        return text;
    }

private:
    std::FILE* file_;
};

bool drop_privileges() {
    return geteuid() != 0 || (setgid(NOBODY) == 0 && setuid(NOBODY) == 0);
}

class Running {
public:
    explicit Running(const ProgramCall& call) : call_(call), start_(Clock::now()) {
        in_.fill(call.input);
        std::fflush(nullptr);
        child_ = fork();
        if (child_ < 0)
            throw std::runtime_error("no child process");
        if (child_ == 0)
            become_program();
    }

    ProgramResult wait() {
        int state = 0;
        bool timed_out = false;
        if (call_.signal_after_s >= 0.0) {
            std::this_thread::sleep_until(start_ + std::chrono::duration<double>(call_.signal_after_s));
            kill(child_, call_.signal);
        }
        while (waitpid(child_, &state, WNOHANG) == 0) {
            if (std::chrono::duration<double>(Clock::now() - start_).count() > call_.timeout_s) {
                kill(child_, SIGKILL);
                waitpid(child_, &state, 0);
                timed_out = true;
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        const int ended = WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
        return {timed_out ? -1 : ended, timed_out, out_.contents(), err_.contents()};
    }

private:
    [[noreturn]] void become_program() {
        std::vector<char*> arguments;
        arguments.push_back(const_cast<char*>(call_.executable.c_str()));
        for (const std::string& argument : call_.arguments)
            arguments.push_back(const_cast<char*>(argument.c_str()));
        arguments.push_back(nullptr);
        const bool ready = dup2(in_.descriptor(), STDIN_FILENO) >= 0 &&
                           dup2(out_.descriptor(), STDOUT_FILENO) >= 0 &&
                           dup2(err_.descriptor(), STDERR_FILENO) >= 0 &&
                           (call_.working_dir.empty() || chdir(call_.working_dir.c_str()) == 0) &&
                           (!call_.unprivileged || drop_privileges());
        for (const auto& [name, value] : call_.environment)
            setenv(name.c_str(), value.c_str(), 1);
        if (call_.prepare)
            call_.prepare();
        if (ready)
            execv(call_.executable.c_str(), arguments.data());
        std::perror("cannot run the program");
        _exit(127);
    }

    const ProgramCall call_;
    Stream in_, out_, err_;
    Clock::time_point start_;
    pid_t child_ = -1;
};

} // namespace

ProgramResult run_program(const ProgramCall& call) {
    return Running(call).wait();
}

std::vector<ProgramResult> run_programs_together(const std::vector<ProgramCall>& calls) {
    std::vector<std::unique_ptr<Running>> running;
    for (const ProgramCall& call : calls)
        running.push_back(std::make_unique<Running>(call));
    std::vector<ProgramResult> results;
    for (const auto& program : running)
        results.push_back(program->wait());
    return results;
}

} // namespace kor_test
