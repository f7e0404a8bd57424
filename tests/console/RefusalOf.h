#pragma once

#include "console/ExitCode.h"
#include "management/Errors.h"

#include <string>
#include <utility>

/// Calls `call` and returns the exit code and the sentence of the error that it throws; `Exit::done` and an empty text
/// when it throws none.
template <class Call>
std::pair<console::Exit, std::string> RefusalOf(Call call)
{
    try {
        call();
    } catch (const management::Error& e) {
        return {console::ExitFor(e.Code()), e.what()};
    }
    return {console::Exit::done, ""};
}

/// The exit code alone.
template <class Call>
console::Exit CodeOf(Call call)
{
    return RefusalOf(call).first;
}
