#include "support/ordinary_user.h"

namespace kor_test {

// A read-only file is read-only for everybody.
OrdinaryUser::OrdinaryUser() = default;
OrdinaryUser::~OrdinaryUser() = default;

} // namespace kor_test
