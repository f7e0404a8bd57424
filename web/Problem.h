#pragma once

#include "management/Errors.h"
#include "management/FrontEnd.h"
#include "management/Level.h"
#include "web/Http.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace web {

/// Why a request was not carried out, as application/problem+json (RFC 9457).
struct Problem {
    int status;
    std::string_view code;       ///< one word for programs
    management::Sentence detail; ///< for people
    std::vector<std::string> candidates = {};
    std::optional<management::Plan> plan = {}; ///< what is to be agreed to
    std::string planDigest = {};
    management::Record current = {}; ///< of what has changed: what it is now
    std::string currentVersion = {};
};

/// The code of what is not for the level of who asks.
inline constexpr std::string_view kNotAllowed = "not_allowed";

/// That the password is to be given again.
Problem PasswordRequired();
/// That something was not done, or perhaps only in part, for a reason that nobody outside can do anything about.
Problem OutOfMemory();
Problem ServerFailed();
/// "an administrator of the level read-only", for sentences.
management::Sentence WithArticle(management::Level level);

Response ResponseOf(const Problem& problem);
/// What an error of the management layer is over HTTP.
Problem ProblemOf(const management::Error& error);

} // namespace web
