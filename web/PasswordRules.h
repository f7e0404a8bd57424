#pragma once

#include "web/Problem.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace web {

/// How many characters a password needs that somebody types.
inline constexpr std::size_t kShortestPassword = 12;
inline constexpr std::size_t kShortestPasswordOfSuperUser = 15;

/// Whom a password is for.
struct PasswordOwner {
    std::string login;
    std::string name;
    std::string company;
    bool isSuper = false;
};

/// What is wrong with a password that somebody has typed: too short, the name of its owner, or easy to guess by the
/// dictionary of the system's cracklib. Which kinds of characters it has does not matter. To be called on one thread at
/// a time.
std::optional<Problem> FindWeakness(std::string_view password, std::span<const PasswordOwner> owners);

} // namespace web
