#pragma once

#include "management/Errors.h"

namespace console {

using namespace management;

/// What the program ends with.
enum class Exit : int {
    done = 0,
    failed = 1,
    usage = 2,
    notFound = 3,
    conflict = 4,
    isProtected = 5,
    database = 6,
    rowsFailed = 7,
    checkFailed = 8,
    confirmationRequired = 9,
};

/// What the program ends with after an error.
constexpr Exit ExitFor(management::ErrorCode code)
{
    switch (code) {
    case management::ErrorCode::invalid:
        return Exit::usage;
    case management::ErrorCode::notFound:
        return Exit::notFound;
    case management::ErrorCode::conflict:
        return Exit::conflict;
    case management::ErrorCode::isProtected:
        return Exit::isProtected;
    case management::ErrorCode::database:
        return Exit::database;
    case management::ErrorCode::confirmationRequired:
        return Exit::confirmationRequired;
    default:
        return Exit::failed;
    }
}

} // namespace console
