// Keeps an execution short: a program may be asked for work that takes hours.
#pragma once

namespace kor_fuzz {

/// While it lives, files grow to 4 MiB at most (a longer write fails as on a full disk), plots are not
/// opened, the reference checks are skipped, and sectors whose propagators cost too much leave the states as
/// they are. At its end the process may write files of any length again.
class WorkLimit {
public:
    WorkLimit();
    ~WorkLimit();
    WorkLimit(const WorkLimit&) = delete;
    WorkLimit& operator=(const WorkLimit&) = delete;
};

} // namespace kor_fuzz
