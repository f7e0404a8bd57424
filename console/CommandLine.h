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

/// Where the names of a command that takes several come from, beside its arguments.
struct NameSource {
    std::string file;        ///< empty: none; - for standard input
    bool endWithNul = false; ///< each name, in place of a line's end
};

/// What a command line gives a command of the table.
class CommandLine final : public ArgumentSource {
public:
    [[nodiscard]] std::vector<std::string> ValuesOf(std::string_view name) const override;

    std::map<std::string, std::vector<std::string>, std::less<>> values; ///< by the parameter's name
    std::map<std::string, SecretSource, std::less<>> secrets;            ///< likewise
    NameSource names;                                                    ///< of a command that takes several
    CallOptions options;
};

/// Declares what a command of the table takes. The command line outlives the parsing.
void DeclareParams(CLI::App& app, const Command& command, CommandLine& given);

} // namespace console
