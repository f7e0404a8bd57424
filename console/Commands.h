#pragma once

#include "console/Arguments.h"
#include "console/ExitCode.h"
#include "console/Terminal.h"

#include <span>
#include <string_view>

namespace CLI {
class App;
}

namespace console {

/// What a command works with.
struct Context {
    const Arguments& arguments;
    Terminal& terminal;
};

/// One verb of a noun.
struct Command {
    std::string_view noun;
    std::string_view verb;
    std::string_view summary;
    std::string_view examples;
    void (*declare)(CLI::App& app, Arguments& arguments); ///< its arguments and options; null when it has none
    Exit (*run)(const Context& context);
};

struct Noun {
    std::string_view name;
    std::string_view summary;
    std::string_view examples;
};

std::span<const Noun> Nouns();
std::span<const Command> Commands();

/// What is to be said when memory runs out. Allocates nothing.
std::string_view OutOfMemorySentence() noexcept;

/// Runs the program. @return what it is to end with. @throws std::bad_alloc when there is no memory to run anything.
int RunProgram(int count, const char* const* words, Terminal& terminal);

} // namespace console
