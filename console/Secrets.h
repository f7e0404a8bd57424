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

    [[nodiscard]] bool IsGiven() const { return fromStandardInput || file; }
};

/// Adds --NOUN-stdin and --NOUN-file, and --NOUN, which is refused without being repeated.
void DeclareSecretSource(CLI::App& app, SecretSource& source, const std::string& noun);

/// Gets the secret: the first line, without its end. @throws Error (invalid, failed).
Secret ObtainSecret(const SecretSource& source, const SecretQuestion& question, Terminal& terminal);

} // namespace console
