#include "console/CommandLine.h"

#include "console/CommandOption.h"
#include "console/Translation.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace console {

namespace {

void DeclareFlag(CLI::App& app, const std::string& name, std::string_view help, bool isNegatable, CommandLine& given)
{
    const std::string option = OptionName(name);
    const auto take = [&given, name](std::int64_t count) { given.values[name] = {count > 0 ? "1" : "0"}; };
    app.add_flag_function(isNegatable ? option + ",!" + NegativeOf(option) : option, take, Translated(help));
}

CLI::Option* DeclareText(CLI::App& app, const std::string& name, const std::string& option, std::string_view help,
                         CommandLine& given)
{
    const auto take = [&given, name](const std::string& text) { given.values[name] = {text}; };
    return app.add_option_function<std::string>(option, take, Translated(help));
}

void DeclareList(CLI::App& app, const ParamInfo& param, CommandLine& given)
{
    // CLI11 reads an unlimited list's "[a,b]" as two values; a limited one takes each word as it is. An option takes
    // one word each time that it is given.
    constexpr int kMost = 1 << 20;
    const std::string name(param.name);
    const auto take = [&given, name](const std::vector<std::string>& texts) { given.values[name] = texts; };
    app.add_option_function<std::vector<std::string>>(param.isPositional ? name : OptionName(name), take,
                                                      Translated(param.help))
        ->type_name(param.isPositional ? "" : "TEXT")
        ->expected(param.isPositional ? kMost : 1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    if (param.isPositional) {
        app.add_option("--file", given.names.file, Translated(kFileHelp))->type_name("FILE");
        app.add_flag("-0,--null", given.names.endWithNul, Translated(kNullHelp));
    }
}

/// The options of a parameter that is a set of them.
void DeclareSet(CLI::App& app, const ParamInfo& param, CommandLine& given)
{
    for (const NamedText& text : std::get<ListNamedTexts>(param.check)()) {
        if (text.isFlag) {
            DeclareFlag(app, std::string(text.name), text.help, true, given);
        } else {
            DeclareText(app, std::string(text.name), OptionName(text.name), text.help, given)->type_name("TEXT");
        }
    }
}

/// @param isAfterList  whether it is an argument that gets the last word of a list.
void DeclareParam(CLI::App& app, const ParamInfo& param, bool isAfterList, CommandLine& given)
{
    const std::string name(param.name);
    if (param.isSet) {
        DeclareSet(app, param, given);
    } else if (param.kind == Kind::secret) {
        DeclareSecretSource(app, given.secrets[name], name);
    } else if (param.kind == Kind::flag) {
        DeclareFlag(app, name, param.help, param.isNegatable, given);
    } else if (param.isList) {
        DeclareList(app, param, given);
    } else {
        DeclareText(app, name, param.isPositional ? name : OptionName(name), param.help, given)
            ->required(param.isRequired && !isAfterList)
            ->type_name(param.isPositional ? "" : std::string(PlaceholderOf(param.kind)));
    }
}

/// The options of a parameter that another cannot stand beside.
std::vector<std::string> NamesOf(std::string_view name, const CommandLine& given)
{
    if (given.secrets.contains(name)) {
        return {OptionName(name) + "-stdin", OptionName(name) + "-file"};
    }
    return {binding::IsPositional(name) ? std::string(name) : OptionName(name)};
}

} // namespace

std::vector<std::string> CommandLine::ValuesOf(std::string_view name) const
{
    if (const auto secret = secrets.find(name); secret != secrets.end()) {
        return secret->second.IsGiven() ? std::vector<std::string>{"1"} : std::vector<std::string>();
    }
    const auto found = values.find(name);
    return found == values.end() ? std::vector<std::string>() : found->second;
}

void DeclareParams(CLI::App& app, const Command& command, CommandLine& given)
{
    const std::vector<ParamInfo> params = command.handler.params();
    bool isAfterList = false;
    for (const ParamInfo& param : params) {
        DeclareParam(app, param, isAfterList && param.isPositional, given);
        isAfterList = isAfterList || (param.isPositional && param.isList);
    }
    for (const ParamInfo& param : params) {
        if (param.excludes.empty()) {
            continue;
        }
        for (const std::string& option : NamesOf(param.name, given)) {
            for (const std::string& other : NamesOf(param.excludes, given)) {
                app.get_option(option)->excludes(other);
            }
        }
    }
    if (!TakesWritingOptions(command)) {
        return;
    }
    if (command.asks) {
        app.add_flag("--yes", given.options.yes, Translated(kYesHelp));
    }
    app.add_flag("--dry-run", given.options.dryRun, Translated(kDryRunHelp));
    app.add_option("--reason", given.options.reason, Translated(kReasonHelp))->type_name("TEXT");
}

} // namespace console
