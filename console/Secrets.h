#pragma once

#include "console/ExitCode.h"
#include "console/Terminal.h"
#include "management/FrontEnd.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace console {

// Secrets come from a prompt, standard input or a file, and never from the command line, which others can read.

/// Where a secret is to come from; none of them: it is asked for.
struct SecretSource {
    bool fromStandardInput = false;
    std::optional<std::string> file;
    bool generated = false;

    [[nodiscard]] bool IsGiven() const { return fromStandardInput || file || generated; }
};

/// Adds --NOUN-stdin and --NOUN-file, and --NOUN, which is refused without being repeated.
void DeclareSecretSource(CLI::App& app, SecretSource& source, const std::string& noun);
/// Adds --generate, for a password that the console makes up and prints.
void DeclareGenerated(CLI::App& app, SecretSource& source);

/// Gets the secret: the first line, without its end. @throws Error (invalid, failed).
Secret ObtainSecret(const SecretSource& source, const SecretQuestion& question, Terminal& terminal);

/// Prints a password that was made up, before it is kept: what nobody could read, nobody is to have.
/// @throws Error (failed) when it cannot be written.
void PrintGenerated(const Secret& password, Terminal& terminal);

} // namespace console
