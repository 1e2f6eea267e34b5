// A disk on which no file has room for more than a few bytes.
#pragma once

#include <csignal>

#include <sys/resource.h>

namespace kor_test {

/// No file of this process grows beyond this many bytes while the object lives: a write that would is EFBIG.
class SmallDisk {
public:
    explicit SmallDisk(rlim_t bytes) {
        before_signal_ = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit small{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, before_signal_);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

private:
    rlimit before_{};
    void (*before_signal_)(int) = SIG_DFL;
};

} // namespace kor_test
