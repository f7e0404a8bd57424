#include "console/Words.h"

#include <CLI/CLI.hpp>

#include <limits>

namespace console::words {

void DeclareOption(CLI::App& app, Arguments& arguments, const Field& field)
{
    const auto take = [&arguments, &field](const std::string& text) { arguments.fields[&field] = text; };
    app.add_option_function<std::string>(OptionOf(field), take, std::string(field.help))->type_name("TEXT");
}

void DeclareNumber(CLI::App& app, Arguments& arguments, const Field& field)
{
    const auto take = [&arguments, &field](int number) { arguments.fields[&field] = std::to_string(number); };
    app.add_option_function<int>(OptionOf(field), take, std::string(field.help))->type_name("N");
}

void DeclareArgument(CLI::App& app, Arguments& arguments, const Field& field, bool required)
{
    const auto take = [&arguments, &field](const std::string& text) { arguments.fields[&field] = text; };
    app.add_option_function<std::string>(std::string(field.name), take, std::string(field.help))
        ->required(required)
        ->type_name("");
}

void DeclareFlag(CLI::App& app, Arguments& arguments, const Field& field)
{
    const auto take = [&arguments, &field](std::int64_t) { arguments.fields[&field] = "1"; };
    app.add_flag_function(OptionOf(field), take, std::string(field.help));
}

void DeclareYes(CLI::App& app, Arguments& arguments) { app.add_flag("--yes", arguments.yes, "do not ask"); }

void DeclareWords(CLI::App& app, Arguments& arguments, const char* name, const std::string& help)
{
    // CLI11 reads an unlimited list's "[a,b]" as two values; a limited one takes each word as it is.
    constexpr int kMost = 1 << 20;
    app.add_option(name, arguments.users, help)
        ->required()
        ->type_name("")
        ->expected(kMost)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void DeclareLimit(CLI::App& app, Arguments& arguments)
{
    app.add_option("--limit", arguments.limit, "at most so many")
        ->type_name("N")
        ->check(CLI::Range(1, std::numeric_limits<int>::max(), ""));
}

CLI::App* AddThirdWord(CLI::App& verb, const std::string& name, const std::string& summary,
                       Exit (*&chosen)(const Context&), Exit (*run)(const Context&))
{
    CLI::App* word = verb.add_subcommand(name, summary);
    word->group("Verbs")->fallthrough()->callback([&chosen, run] { chosen = run; });
    return word;
}

std::size_t LimitOf(const Arguments& arguments)
{
    return static_cast<std::size_t>(arguments.limit.value_or(std::numeric_limits<int>::max()));
}

std::optional<std::string> Given(const Arguments& arguments, const Field& field)
{
    const auto given = arguments.fields.find(&field);
    return given == arguments.fields.end() ? std::nullopt : std::optional(given->second);
}

std::optional<int> GivenNumber(const Arguments& arguments, const Field& field)
{
    const std::optional<std::string> given = Given(arguments, field);
    return given ? std::optional(std::stoi(*given)) : std::nullopt;
}

} // namespace console::words
