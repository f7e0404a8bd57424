#pragma once

#include "management/Command.h"
#include "management/users/Users.h"

#include <string>

namespace management {

/// The input of a command that takes nothing but a user.
struct OneUser {
    std::string user;
};

inline constexpr Param<OneUser> kOneUserParams[] = {{"USER", &OneUser::user, Kind::user, kUserHelp}};

} // namespace management
