#include "support/ordinary_user.h"

#include <exception>
#include <stdexcept>

#include <unistd.h>

namespace kor_test {

// The effective user decides; the real one stays, so that root can come back.
OrdinaryUser::OrdinaryUser() {
    if (geteuid() == 0 && seteuid(NOBODY) != 0)
        throw std::runtime_error("cannot give up the superuser's rights");
}

OrdinaryUser::~OrdinaryUser() {
    if (geteuid() != getuid() && seteuid(getuid()) != 0)
        std::terminate();
}

} // namespace kor_test
