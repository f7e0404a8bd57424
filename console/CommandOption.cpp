#include "console/CommandOption.h"

#include <fmt/format.h>

#include <algorithm>

namespace console {

namespace {

void AddOptionsOf(const ParamInfo& param, std::vector<CommandOption>& options)
{
    if (param.isSet) {
        for (const NamedText& text : std::get<ListNamedTexts>(param.check)()) {
            options.push_back({OptionName(text.name), text.isFlag ? "" : "TEXT", std::string(text.help), text.isFlag});
        }
    } else if (param.kind == Kind::secret) {
        options.push_back({OptionName(param.name) + "-stdin", "", FillPattern(kSecretInputHelp, param.name)});
        options.push_back({OptionName(param.name) + "-file", "FILE", FillPattern(kSecretFileHelp, param.name)});
    } else if (!param.isPositional) {
        const std::string placeholder(param.kind == Kind::flag ? "" : PlaceholderOf(param.kind));
        options.push_back({OptionName(param.name), placeholder, std::string(param.help), param.isNegatable});
    } else if (param.isList) {
        options.push_back({"--file", "FILE", kFileHelp});
        options.push_back({"--null", "", kNullHelp});
    }
}

} // namespace

std::string OptionName(std::string_view name)
{
    std::string option = "--" + std::string(name);
    std::ranges::replace(option, '_', '-');
    return option;
}

std::string NegativeOf(const std::string& option) { return "--no-" + option.substr(2); }

std::string_view PlaceholderOf(Kind kind)
{
    return kind == Kind::number ? "N" : kind == Kind::file ? "FILE" : kind == Kind::date ? "DATE" : "TEXT";
}

bool TakesWritingOptions(const Command& command)
{
    return command.handler.run != nullptr && command.effect != Effect::read;
}

std::vector<CommandOption> OptionsOf(const Command& command)
{
    std::vector<CommandOption> options;
    for (const ParamInfo& param : command.handler.params()) {
        AddOptionsOf(param, options);
    }
    if (TakesWritingOptions(command)) {
        if (command.asks) {
            options.push_back({"--yes", "", kYesHelp});
        }
        options.push_back({"--dry-run", "", kDryRunHelp});
        options.push_back({"--reason", "TEXT", kReasonHelp});
    }
    return options;
}

} // namespace console
