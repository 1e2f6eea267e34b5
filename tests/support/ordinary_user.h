// Without the rights of the superuser, who may write everywhere.
#pragma once

namespace kor_test {

/// The number of the user and of the group that own nothing, on Linux.
inline constexpr unsigned NOBODY = 65534;

/// For the rest of the scope an ordinary user's rights hold, even where the tests run as root.
class OrdinaryUser {
public:
    OrdinaryUser();
    ~OrdinaryUser();
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
};

} // namespace kor_test
