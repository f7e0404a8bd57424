#include "console/Arguments.h"

#include "console/Color.h"
#include "console/Commands.h"
#include "console/ExitCode.h"
#include "console/Help.h"
#include "console/LocalCommand.h"
#include "console/Translation.h"
#include "console/Url.h"
#include "management/Text.h"
#include "platform/CodePage.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <set>
#include <string_view>

namespace console {

namespace {

constexpr const char* kDescription = Translatable("Administration of a server's organisation directory.");
constexpr Examples kExamples = {"qvadmin db init", "qvadmin user create amy --name 'Amy Holt'",
                                "qvadmin user list -o json"};
constexpr const char* kEpilogue =
    Translatable("The database is that of --db, else of the environment variable QVADMIN_DB, else of the\n"
                 "configuration files, else quorvel/directory.db in the data directory ($XDG_DATA_HOME or\n"
                 "~/.local/share); `qvadmin config show --origin` says where each setting comes from.\n"
                 "\n"
                 "Ends with 0 done, 1 failed, 2 usage, 3 not found, 4 conflict or ambiguous, 5 protected,\n"
                 "6 database, 7 some rows failed, 8 check or dry run found something, 9 confirmation needed.\n");
constexpr const char* kEveryCommand =
    Translatable("Every command takes --db URL, -o FORMAT and others too; see `qvadmin --help`.");
constexpr std::size_t kFarthest = 2;

// ---- Suggestions ----------------------------------------------------------------------------------------------------

/// How many letters must be changed, added or left out to turn one word into the other.
std::size_t Distance(std::string_view from, std::string_view to)
{
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i] == to[j] ? 0U : 1U);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

bool IsNear(std::string_view written, std::string_view name)
{
    return !written.empty() &&
           (name.starts_with(written) || (written.size() > kFarthest && Distance(written, name) <= kFarthest));
}

/// Asks for those of the names that a word may have been meant as; empty when there are none.
Sentence SuggestionFor(std::string_view written, const std::vector<std::string_view>& names)
{
    Sentence near;
    for (const std::string_view name : names) {
        if (IsNear(written, name)) {
            near = near.IsEmpty() ? FillPattern("{}", name) : FillPattern("{} or {}", near, name);
        }
    }
    return near.IsEmpty() ? near : FillPattern("did you mean {}?", near);
}

/// @param missing  begins the sentence, such as "unknown command".
[[noreturn]] void ThrowWrongWord(const Sentence& missing, const std::string& written,
                                 const std::vector<std::string_view>& names)
{
    const Sentence near = SuggestionFor(written, names);
    const Sentence hint = near.IsEmpty() ? FillPattern("there are {}", fmt::join(names, ", ")) : near;
    throw Error(ErrorCode::invalid, FillPattern("{} '{}'; {}", missing, ShownUrl(written), hint));
}

std::vector<std::string_view> NounNames()
{
    std::vector<std::string_view> names;
    std::ranges::transform(Nouns(), std::back_inserter(names), &Noun::name);
    for (const Command* command : AllCommands()) {
        if (command->path[1].empty() && !command->summary.empty()) {
            names.push_back(command->path[0]);
        }
    }
    return names;
}

std::vector<std::string_view> VerbNames(std::string_view noun)
{
    std::vector<std::string_view> names;
    for (const Command* command : AllCommands()) {
        if (command->path[0] == noun && !command->path[1].empty() && command->path[2].empty()) {
            names.push_back(command->path[1]);
        }
    }
    return names;
}

/// The words that can come after two.
std::vector<std::string_view> ThirdWords(std::string_view noun, std::string_view verb)
{
    std::vector<std::string_view> names;
    for (const Command* command : AllCommands()) {
        if (command->path[0] == noun && command->path[1] == verb && !command->path[2].empty()) {
            names.push_back(command->path[2]);
        }
    }
    return names;
}

// ---- The command line -----------------------------------------------------------------------------------------------

std::string WithHeading(const Examples& examples)
{
    std::string text = Translated("Examples:") + "\n";
    for (const std::string_view example : GivenOf(examples)) {
        text += fmt::format("  {}\n", example);
    }
    return text;
}

Format ReadFormat(const std::string& name)
{
    const std::optional<Format> format = FindFormat(name);
    if (!format) {
        throw Error(
            ErrorCode::invalid,
            FillPattern("there is no output format {}; there are table, csv, json, jsonl, plain", Quoted(name)));
    }
    return *format;
}

void RequireColorWord(const std::string& word)
{
    if (std::ranges::find(kColorWords, word) == kColorWords.end()) {
        throw Error(ErrorCode::invalid, FillPattern("--color {} is not one of auto, always, never", Quoted(word)));
    }
}

bool IsAmong(const std::vector<std::string>& words, std::string_view name)
{
    return std::ranges::find(words, name) != words.end();
}

std::string FooterOf(const Command& command)
{
    const std::string notes = command.notes != nullptr ? Translated(command.notes()) + "\n" : "";
    return notes + WithHeading(command.examples) + "\n" + Translated(kEveryCommand) + "\n";
}

/// Declares the verbs of a noun, and what those take that may be meant: declaring all takes longer than most commands.
void DeclareVerbs(CLI::App& noun, const std::vector<std::string>& words, CommandLine& given)
{
    for (const Command* row : AllCommands()) {
        const Command& command = *row;
        const std::vector<std::string> path = PathOf(command);
        if (path.size() == 1 || path.front() != noun.get_name()) {
            continue;
        }
        CLI::App* parent = path.size() == 2 ? &noun : noun.get_subcommand(path[1]);
        CLI::App* verb = parent->add_subcommand(path.back(), Translated(command.summary));
        verb->group(Translated("Verbs"))->fallthrough()->footer(FooterOf(command));
        if (IsHead(command)) {
            verb->require_subcommand(0, 1);
        } else if (IsAmong(words, path.back())) {
            DeclareParams(*verb, command, given);
        }
    }
}

/// Declares the commands that are one word.
void DeclareSingleWords(CLI::App& app, const std::vector<std::string>& words, CommandLine& given)
{
    for (const Command* command : AllCommands()) {
        if (PathOf(*command).size() != 1) {
            continue;
        }
        CLI::App* sub = app.add_subcommand(std::string(command->path[0]), Translated(command->summary));
        sub->group(command->summary.empty() ? "" : Translated("Other commands"))
            ->fallthrough()
            ->footer(FooterOf(*command));
        if (IsAmong(words, command->path[0])) {
            DeclareParams(*sub, *command, given);
        }
    }
}

/// The parser lets other values through, or throws what it should not, by its version and the type of the variable.
/// @return them, for the message.
std::string WhatIsNeitherOnNorOff(const std::string& value)
{
    constexpr std::array<std::string_view, 10> kValues = {"true", "false", "on",     "off",     "yes",
                                                          "no",   "1",     "enable", "disable", "0"};
    return std::ranges::find(kValues, value) == kValues.end() ? value : std::string();
}

void CheckFlags(CLI::App& app)
{
    for (CLI::Option* option : app.get_options()) {
        if (option->get_expected_max() == 0) {
            option->check(&WhatIsNeitherOnNorOff);
        }
    }
    for (CLI::App* sub : app.get_subcommands({})) {
        CheckFlags(*sub);
    }
}

void Declare(CLI::App& app, const std::vector<std::string>& words, Request& request)
{
    Arguments& arguments = request.arguments;
    app.formatter(MakeHelpFormatter());
    app.footer(WithHeading(kExamples) + "\n" + Translated(kEpilogue));
    app.set_version_flag("--version", "qvadmin " QV_VERSION,
                         Translated("Display program version information and exit"));
    app.set_help_flag("-h,--help", Translated("Print this help message and exit"));
    app.add_option("--db", arguments.db, Translated("database, such as sqlite:PATH; the last one counts"))
        ->type_name("URL")
        ->take_last();
    app.add_option_function<std::string>(
           "-o,--output",
           [&arguments](const std::string& name) {
               arguments.format = ReadFormat(name);
               arguments.isFormatGiven = true;
           },
           Translated("table (default), csv, json, jsonl or plain (tabs between, no header)"))
        ->type_name("FORMAT");
    app.add_option("-p,--profile", arguments.profile, Translated("settings of this name in the configuration files"))
        ->type_name("NAME");
    app.add_flag("--ask-db-password", arguments.asksPassword, Translated("ask for the password of the database"));
    app.add_flag("-q,--quiet", arguments.quiet, Translated("say nothing but errors, and ask nothing"));
    app.add_flag("--wide", arguments.wide, Translated("let tables be wider than the terminal"));
    app.add_option_function<std::string>(
           "--color", &RequireColorWord,
           Translated("auto (default: on a terminal, unless NO_COLOR is set), always or never"))
        ->type_name("WHEN")
        ->take_last();
    app.add_option("--log", arguments.log, Translated("add a line of JSON for each command to this file"))
        ->type_name("FILE");
    app.require_subcommand(0, 1);
    for (const Noun& noun : Nouns()) {
        CLI::App* sub = app.add_subcommand(std::string(noun.name), Translated(noun.summary));
        sub->group(Translated("Nouns"))->fallthrough()->require_subcommand(0, 1)->footer(WithHeading(noun.examples));
        if (IsAmong(words, noun.name)) {
            DeclareVerbs(*sub, words, request.given);
        }
    }
    DeclareSingleWords(app, words, request.given);
    CheckFlags(app);
}

/// The words as CLI11 takes them: from the last to the first. It would read "--birthday= amy" as a birthday "amy".
std::vector<std::string> Prepared(const std::vector<std::string>& words)
{
    std::vector<std::string> prepared;
    bool optionsOver = false;
    for (const std::string& word : words) {
        if (!platform::IsValidUtf8(word)) {
            throw Error(ErrorCode::invalid, FillPattern("the argument {} is not UTF-8", Quoted(word)));
        }
        optionsOver = optionsOver || word == "--";
        const bool endsEmpty = !optionsOver && word.starts_with("--") && word.find('=') == word.size() - 1;
        prepared.push_back(endsEmpty ? word.substr(0, word.size() - 1) : word);
        if (endsEmpty) {
            prepared.emplace_back();
        }
    }
    std::ranges::reverse(prepared);
    return prepared;
}

/// `help user list` means `user list --help`.
std::vector<std::string> WithHelpOption(std::vector<std::string> words)
{
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        words.emplace_back("--help");
    }
    return words;
}

/// The app of the noun or verb that was named inside this one; null when none was.
const CLI::App* NamedIn(const CLI::App& app)
{
    const auto subs = app.get_subcommands();
    return subs.empty() ? nullptr : subs.front();
}

std::string HelpCommand(const CLI::App& app)
{
    std::string command = "qvadmin";
    for (const CLI::App* sub = NamedIn(app); sub != nullptr; sub = NamedIn(*sub)) {
        command += " " + sub->get_name();
    }
    return command + " --help";
}

std::optional<std::string> FirstWord(const std::vector<std::string>& words, bool option)
{
    const auto found =
        std::ranges::find_if(words, [option](const std::string& word) { return word.starts_with('-') == option; });
    return found == words.end() ? std::nullopt : std::optional(*found);
}

/// The options that may be given with what was named.
std::set<std::string> OptionsInReach(const CLI::App& app)
{
    std::set<std::string> names;
    for (const CLI::App* sub = &app; sub != nullptr; sub = NamedIn(*sub)) {
        for (const CLI::Option* option : sub->get_options()) {
            std::ranges::transform(option->get_lnames(), std::inserter(names, names.end()),
                                   [](const std::string& name) { return "--" + name; });
        }
    }
    return names;
}

[[noreturn]] void ThrowUnexpected(const CLI::App& app, const std::string& word)
{
    if (word.starts_with("--")) {
        const std::set<std::string> options = OptionsInReach(app);
        const Sentence near = SuggestionFor(word.substr(0, word.find('=')), {options.begin(), options.end()});
        if (!near.IsEmpty()) {
            throw Error(ErrorCode::invalid, FillPattern("'{}' is not expected here; {}", ShownUrl(word), near));
        }
    }
    throw Error(ErrorCode::invalid,
                FillPattern("'{}' is not expected here; see `{}`", ShownUrl(word), HelpCommand(app)));
}

/// Says what is wrong with words that nobody took; there may be none. @return when nothing is.
void ThrowIfUnknownWords(const CLI::App& app, const std::vector<std::string>& given)
{
    std::vector<std::string> words = app.remaining(true);
    std::erase(words, "--");
    const std::optional<std::string> word = FirstWord(words, false);
    // A later word can be the name of a command by chance, such as the function of a right.
    const auto isInPlaceOf = [&](const CLI::App* named) {
        if (!word || named == nullptr) {
            return word.has_value();
        }
        const auto place = given.rend() - std::find(given.rbegin(), given.rend(), *word); // from 1; 0 for none
        return place > 0 && place <= std::ranges::find(given, named->get_name()) - given.begin();
    };
    const CLI::App* noun = NamedIn(app);
    if (isInPlaceOf(noun)) {
        ThrowWrongWord(Translatable("unknown command"), *word, NounNames());
    }
    if (word && isInPlaceOf(NamedIn(*noun)) && !VerbNames(noun->get_name()).empty()) {
        ThrowWrongWord(FillPattern("{} has no verb", noun->get_name()), *word, VerbNames(noun->get_name()));
    }
    if (word && NamedIn(*noun) != nullptr && isInPlaceOf(NamedIn(*NamedIn(*noun)))) {
        const std::string verb = NamedIn(*noun)->get_name();
        if (const std::vector<std::string_view> third = ThirdWords(noun->get_name(), verb); !third.empty()) {
            ThrowWrongWord(FillPattern("{} {} has no verb", noun->get_name(), verb), *word, third);
        }
    }
    if (!words.empty()) {
        ThrowUnexpected(app, FirstWord(words, true).value_or(words.front()));
    }
}

/// In this program's words where the parser's own would puzzle: "--name: 1 required TEXT missing".
Sentence WhatIsWrong(const CLI::ParseError& error)
{
    const std::string what = error.what();
    const std::string option = what.substr(0, what.find(':'));
    if (error.get_name() == "ValidationError" && what.starts_with(option + ": ")) {
        return FillPattern("{} is on or off and not {}", option, Quoted(what.substr(option.size() + 2)));
    }
    if (error.get_name() != "ArgumentMismatch" || !option.starts_with('-')) {
        return FillPattern("{}", Visible(what));
    }
    return what.ends_with("missing") ? FillPattern("{} needs a value", option)
                                     : FillPattern("{} is given more than once", option);
}

void Select(const CLI::App& app, Request& request)
{
    const CLI::App* noun = NamedIn(app);
    if (noun == nullptr) {
        throw Error(ErrorCode::invalid, "no command given; try `qvadmin user list`");
    }
    std::vector<std::string> path;
    for (const CLI::App* named = noun; named != nullptr; named = NamedIn(*named)) {
        path.push_back(named->get_name());
    }
    const std::vector<const Command*>& rows = AllCommands();
    const auto row = std::ranges::find(rows, path, [](const Command* command) { return PathOf(*command); });
    if (row != rows.end() && !IsHead(**row)) {
        request.command = *row;
    } else {
        const std::string_view next =
            path.size() == 1 ? VerbNames(path[0]).front() : ThirdWords(path[0], path[1]).front();
        throw Error(ErrorCode::invalid, FillPattern("name what to do, such as `qvadmin {} {}`; see `{}`",
                                                    fmt::join(path, " "), next, HelpCommand(app)));
    }
}

} // namespace

Request ParseCommandLine(const std::vector<std::string>& words)
{
    const std::vector<std::string> given = WithHelpOption(words);
    Request request;
    CLI::App app(Translated(kDescription), "qvadmin");
    Declare(app, given, request);
    app.allow_extras();
    try {
        app.parse(Prepared(given));
    } catch (const CLI::CallForHelp&) {
        request.text = app.help();
        return request;
    } catch (const CLI::CallForVersion& e) {
        request.text = std::string(e.what()) + "\n";
        return request;
    } catch (const CLI::ParseError& e) {
        ThrowIfUnknownWords(app, given);
        throw Error(ErrorCode::invalid, FillPattern("{}; see `{}`", WhatIsWrong(e), HelpCommand(app)));
    }
    ThrowIfUnknownWords(app, given);
    Select(app, request);
    return request;
}

std::string ProgramHelp()
{
    Request unused;
    CLI::App app(Translated(kDescription), "qvadmin");
    Declare(app, {}, unused);
    return app.help();
}

} // namespace console
