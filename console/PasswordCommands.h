#pragma once

#include "console/Commands.h"
#include "console/Passwords.h"

#include <optional>
#include <string>
#include <string_view>

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

/// What a secret is called when it is asked for.
struct SecretQuestion {
    std::string_view noun;   ///< as in the names of the options
    std::string prompt;      ///< such as "New password of amy"
    bool repeated;           ///< asked twice, and refused when the answers differ
    std::string_view advice; ///< the options that there are instead
};

/// Gets the secret: the first line, without its end. @throws Refusal (usage, failed).
Secret ObtainSecret(const SecretSource& source, const SecretQuestion& question, Terminal& terminal);

/// Prints a password that was made up, before it is kept: what nobody could read, nobody is to have.
/// @throws Refusal (failed) when it cannot be written.
void PrintGenerated(const Secret& password, Terminal& terminal);

/// A third word of the command line, below a noun's verb: its app, which sets `chosen` to `run` when it is named.
CLI::App* AddThirdWord(CLI::App& verb, const std::string& name, const std::string& summary,
                       Exit (*&chosen)(const Context&), Exit (*run)(const Context&));

namespace user {

void DeclarePassword(CLI::App& app, Arguments& arguments);
Exit Password(const Context& context);

} // namespace user

} // namespace console
