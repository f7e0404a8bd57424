#pragma once

#include "dbaccess/CAException.h"

#include <string>

/// What a call raises, so that a test can expect it; "nothing was raised" when it does not.
inline constexpr const char* kNothingRaised = "nothing was raised";

/// The engine's message.
template <class Call>
std::string Raised(Call call)
{
    try {
        call();
    } catch (const CAException& e) {
        return e.GetErrorText().GetString();
    }
    return kNothingRaised;
}

/// "MESSAGE [CODE]".
template <class Call>
std::string RaisedWithCode(Call call)
{
    try {
        call();
    } catch (const CAException& e) {
        return std::string(e.GetErrorText()) + " [" + e.GetErrorCode().GetString() + "]";
    }
    return kNothingRaised;
}
