// The largest deviation of many checks of one kind. It is printed when the object ends, so that a run tells
// how much of what is allowed was used. No check at all is a failure.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <utility>

namespace kor_test {

class Worst {
public:
    explicit Worst(std::string what) : what_(std::move(what)) {}
    Worst(const Worst&) = delete;
    Worst& operator=(const Worst&) = delete;
    ~Worst() {
        EXPECT_GT(count_, 0) << what_ << ": nothing was checked";
        std::printf("[ MEASURED ] %s: at most %.2e (allowed there %.2e), at most %.1f %% of what is allowed, "
                    "%lld checks\n",
                    what_.c_str(), largest_, allowed_there_, 100.0 * share_, count_);
    }

    /// A deviation and the limit that it must not pass; what is not a number is beyond every limit.
    void check(double deviation, double allowed, const std::string& where) {
        ++count_;
        if (!(deviation <= largest_)) {
            largest_ = deviation;
            allowed_there_ = allowed;
        }
        if (!(deviation <= share_ * allowed)) {
            share_ = deviation / allowed;
        }
        if (!(deviation <= allowed) && ++failures_ <= 5) {
            ADD_FAILURE() << what_ << ": " << deviation << " beyond " << allowed << ' ' << where;
        }
    }

private:
    std::string what_;
    double largest_ = 0.0, allowed_there_ = 0.0, share_ = 0.0;
    long long count_ = 0;
    int failures_ = 0;
};

} // namespace kor_test
