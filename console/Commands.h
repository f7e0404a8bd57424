#pragma once

#include "console/Arguments.h"
#include "console/ExitCode.h"
#include "console/Terminal.h"

#include <span>
#include <string_view>

namespace console {

struct Noun {
    std::string_view name;
    std::string_view summary;
    std::string_view examples;
};

std::span<const Noun> Nouns();

/// What is to be said when memory runs out. Allocates nothing.
std::string_view OutOfMemorySentence() noexcept;

/// Runs the program. @return what it is to end with. @throws std::bad_alloc when there is no memory to run anything.
int RunProgram(int count, const char* const* words, Terminal& terminal);

} // namespace console
