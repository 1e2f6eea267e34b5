#include "support/run_program.h"

#include "support/plain_text.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include <windows.h>

namespace kor_test {
namespace {

/// A busy system may refuse to start a program for a moment, and a file just copied may still be looked at:
/// this many starts are tried again, 10 ms apart.
constexpr int kStarts = 300;

/// A file that its last handle deletes, so that a program may write more than a pipe holds. Children inherit
/// it.
class Stream {
public:
    Stream() {
        const std::string folder = std::filesystem::temp_directory_path().string();
        char name[MAX_PATH];
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        if (GetTempFileNameA(folder.c_str(), "kor", 0, name) == 0)
            throw std::runtime_error("no temporary file");
        handle_ = CreateFileA(name, GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited,
                              CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (handle_ == INVALID_HANDLE_VALUE)
            throw std::runtime_error("no temporary file");
    }
    ~Stream() { CloseHandle(handle_); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    HANDLE handle() const { return handle_; }

    void fill(const std::string& text) {
        DWORD written = 0;
        WriteFile(handle_, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        SetFilePointer(handle_, 0, nullptr, FILE_BEGIN);
    }

    std::string contents() {
        SetFilePointer(handle_, 0, nullptr, FILE_BEGIN);
        std::string text;
        char piece[4096];
        DWORD got = 0;
        while (ReadFile(handle_, piece, sizeof piece, &got, nullptr) && got > 0)
            text.append(piece, got);
        return text;
    }

private:
    HANDLE handle_;
};

/// One argument of a command line as the runtime library takes command lines apart.
std::string quoted(const std::string& argument) {
    std::string text = "\"";
    std::size_t backslashes = 0;
    for (const char c : argument) {
        if (c == '"')
            text.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        text += c;
    }
    return text.append(backslashes, '\\') + '"';
}

/// What a program printed, with plain line ends and separators.
std::string printed(Stream& stream) {
    return with_slashes(with_plain_line_ends(stream.contents()));
}

class Running {
public:
    explicit Running(const ProgramCall& call) : timeout_s_(call.timeout_s) {
        in_.fill(call.input);
        std::string line = quoted(call.executable);
        for (const std::string& argument : call.arguments)
            line += ' ' + quoted(argument);
        STARTUPINFOA start = {};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdInput = in_.handle();
        start.hStdOutput = out_.handle();
        start.hStdError = err_.handle();
        const char* const folder = call.working_dir.empty() ? nullptr : call.working_dir.c_str();
        for (int attempt = 0; !CreateProcessA(call.executable.c_str(), line.data(), nullptr, nullptr, TRUE, 0,
                                              nullptr, folder, &start, &child_);
             ++attempt) {
            const DWORD error = GetLastError();
            if (attempt == kStarts)
                throw std::runtime_error("cannot run " + call.executable + ": error " +
                                         std::to_string(error));
            Sleep(10);
        }
    }
    ~Running() {
        CloseHandle(child_.hThread);
        CloseHandle(child_.hProcess);
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    ProgramResult wait() {
        const DWORD most_ms = static_cast<DWORD>(timeout_s_ * 1000.0);
        const bool timed_out = WaitForSingleObject(child_.hProcess, most_ms) != WAIT_OBJECT_0;
        if (timed_out) {
            TerminateProcess(child_.hProcess, 1);
            WaitForSingleObject(child_.hProcess, INFINITE);
        }
        DWORD status = 0;
        GetExitCodeProcess(child_.hProcess, &status);
        return {timed_out ? -1 : static_cast<int>(status), timed_out, printed(out_), printed(err_)};
    }

private:
    const double timeout_s_;
    Stream in_, out_, err_;
    PROCESS_INFORMATION child_ = {};
};

} // namespace

ProgramResult run_program(const ProgramCall& call) {
    if (call.unprivileged || call.prepare || !call.environment.empty() || call.signal_after_s >= 0)
        throw std::runtime_error("programs can only be run as they are here");
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
