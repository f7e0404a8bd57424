#pragma once

#include "console/Secrets.h"
#include "management/Command.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace console {

/// What a command line gives a command of the table.
class CommandLine final : public ArgumentSource {
public:
    [[nodiscard]] std::vector<std::string> ValuesOf(std::string_view name) const override;

    std::map<std::string, std::vector<std::string>, std::less<>> values; ///< by the parameter's name
    std::map<std::string, SecretSource, std::less<>> secrets;            ///< likewise
    CallOptions options;
};

/// Declares what a command of the table takes. The command line outlives the parsing.
void DeclareParams(CLI::App& app, const Command& command, CommandLine& given);

} // namespace console
