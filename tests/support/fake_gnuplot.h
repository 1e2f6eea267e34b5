// A stand-in for gnuplot on a search path of its own: it notes how it was called.
#pragma once

#include "support/environment.h"
#include "support/temp_tree.h"

#include <chrono>
#include <cstdlib>
#include <thread>

namespace kor_test {

/// While the object lives, the search path is the folder "bin" of the test alone. install() puts a script
/// named gnuplot there.
class FakeGnuplot {
public:
    explicit FakeGnuplot(const TempTree& folder) : folder_(folder), before_(std::getenv("PATH")) {
        folder.make_folder("bin");
        set_variable("PATH", folder.path("bin"));
    }
    ~FakeGnuplot() { set_variable("PATH", before_); }
    FakeGnuplot(const FakeGnuplot&) = delete;
    FakeGnuplot& operator=(const FakeGnuplot&) = delete;

    /// It writes its arguments, one per line, and whatever it can read from standard input into the file
    /// "called", and makes the file "done" when that one is closed.
    void install() const;

    /// What it noted, waiting for it; empty when it was not called within a minute (four programs start one
    /// another until then, on Windows, and a busy machine takes seconds for each).
    std::string noted() const {
        for (int wait = 0; wait < 6000 && !folder_.exists("done"); ++wait)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return folder_.exists("done") ? with_plain_line_ends(folder_.read("called")) : "";
    }

private:
    const TempTree& folder_;
    std::string before_;
};

} // namespace kor_test
