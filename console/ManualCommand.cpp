#include "console/CommandOption.h"
#include "console/Help.h"
#include "console/LocalCommand.h"
#include "management/CommandData.h"
#include "management/JsonWriter.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <ostream>
#include <span>
#include <string>
#include <vector>

// The table of commands as manual pages, and as data for other programs.

namespace console {

namespace {

/// The day of the last change of the manual's own texts.
constexpr std::string_view kDate = "November 22, 2026";

struct ManualInput {
    std::optional<std::string> noun;
};

constexpr Param<ManualInput> kManualParams[] = {
    {"NOUN", &ManualInput::noun, Kind::text, "the noun whose page to print; the program's own if not given"}};

/// A text as mdoc takes it in the middle of a line.
std::string Escaped(std::string_view text)
{
    std::string escaped;
    for (const char ch : text) {
        escaped += ch == '\\' ? std::string("\\e") : ch == '-' ? std::string("\\-") : std::string(1, ch);
    }
    return escaped;
}

/// The same for a line of its own, which no control character begins.
std::string Line(std::string_view text)
{
    const bool isControl = text.starts_with('.') || text.starts_with('\'');
    return (isControl ? "\\&" : "") + Escaped(text) + "\n";
}

void WriteExamples(const Examples& examples, std::ostream& out)
{
    const std::span<const std::string_view> given = GivenOf(examples);
    if (given.empty()) {
        return;
    }
    out << ".Bd -literal -offset indent\n";
    for (const std::string_view example : given) {
        out << Line(example);
    }
    out << ".Ed\n";
}

void WriteOption(const CommandOption& option, std::ostream& out)
{
    const std::string value = option.placeholder.empty() ? "" : " Ar " + option.placeholder;
    out << ".It Fl \\-" << Escaped(option.name.substr(2)) << value << '\n' << Line(option.help);
}

/// The list of what a command takes.
void WriteParams(const std::vector<ParamInfo>& params, const std::vector<CommandOption>& options, std::ostream& out)
{
    out << ".Bl -tag -width Ds\n";
    for (const ParamInfo& param : params) {
        if (param.isPositional) {
            out << ".It Ar " << param.name << '\n' << Line(param.help);
        }
    }
    for (const CommandOption& option : options) {
        WriteOption(option, out);
    }
    out << ".El\n";
}

void WriteCommand(const Command& command, std::ostream& out)
{
    const std::vector<ParamInfo> params = command.handler.params();
    const std::string name = fmt::format("{}", fmt::join(PathOf(command), " "));
    out << ".Ss " << name << "\n.Nm qvadmin\n.Cm " << name << '\n' << ".Op Ar options\n";
    for (const ParamInfo& param : params) {
        if (param.isPositional) {
            out << (param.isRequired ? ".Ar " : ".Op Ar ") << param.name << (param.isList ? " ..." : "") << '\n';
        }
    }
    std::string summary(command.summary);
    out << ".Pp\n" << Line(summary + ".");
    const std::vector<CommandOption> options = OptionsOf(command);
    if (!params.empty() || !options.empty()) {
        WriteParams(params, options, out);
    }
    WriteExamples(command.examples, out);
}

void WriteHead(const std::string& title, const std::string& name, std::string_view summary, std::ostream& out)
{
    std::string capitals = title;
    std::ranges::transform(capitals, capitals.begin(), [](unsigned char ch) { return std::toupper(ch); });
    out << ".Dd " << kDate << "\n.Dt " << capitals << " 1\n.Os\n.Sh NAME\n.Nm " << name << "\n.Nd " << Escaped(summary)
        << '\n';
}

std::vector<const Command*> CommandsOf(std::string_view noun)
{
    std::vector<const Command*> commands;
    for (const Command* command : AllCommands()) {
        if (command->path[0] == noun && !IsHead(*command)) {
            commands.push_back(command);
        }
    }
    return commands;
}

void WriteNoun(const Noun& noun, std::ostream& out)
{
    const std::string page = fmt::format("qvadmin-{}", noun.name);
    WriteHead(page, page, noun.summary, out);
    out << ".Sh SYNOPSIS\n.Nm qvadmin\n.Cm " << noun.name << "\n.Ar verb\n.Op Ar options\n.Op Ar arguments\n"
        << ".Sh DESCRIPTION\nThe options and exit statuses that all commands share are in\n.Xr qvadmin 1 .\n";
    for (const Command* command : CommandsOf(noun.name)) {
        WriteCommand(*command, out);
    }
    out << ".Sh EXAMPLES\n";
    WriteExamples(noun.examples, out);
    out << ".Sh SEE ALSO\n.Xr qvadmin 1\n";
}

constexpr std::string_view kSynopsis = R"(.Sh SYNOPSIS
.Nm
.Op Fl \-db Ar URL
.Op Fl o Ar FORMAT
.Ar noun
.Ar verb
.Op Ar options
.Op Ar arguments
.Sh DESCRIPTION
.Nm
keeps the organisation directory of an instant\-messaging server: users, groups, views, roles, job titles, rights,
documents, settings, messages, add\-ins and the bulletin board.
It works on the database itself, of any engine that the server runs on.
.Pp
Every command reads or changes one kind of thing, its noun.
Commands that remove something show what goes along and ask first.
.Bl -tag -width Ds
.It Fl \-db Ar URL
the database, such as sqlite:PATH; see
.Sx ENVIRONMENT
for the one that is taken else.
.It Fl o , Fl \-output Ar FORMAT
table (the default), csv, json, jsonl or plain, which has a tab between values and no header.
.It Fl p , Fl \-profile Ar NAME
the settings of this name in the configuration files.
.It Fl \-ask\-db\-password
the password of the database is asked for.
.It Fl q , Fl \-quiet
nothing is said but errors, and nothing asked.
.It Fl \-wide
tables may be wider than the terminal, on which their widest columns are shortened else.
.It Fl \-color Ar WHEN
auto (the default), always or never.
.It Fl \-log Ar FILE
a line of JSON for each command is added to this file.
.It Fl \-help
what a noun or a verb takes.
.It Fl \-version
the program's version.
.El
.Sh COMMANDS
)";

constexpr std::string_view kProgramEnd = R"(.Sh ENVIRONMENT
.Bl -tag -width Ds
.It Ev QVADMIN_DB
the database where
.Fl \-db
is not given.
.It Ev QVADMIN_PASSWORD , QVADMIN_PASSWORD_FILE
the password of the database, or the file that holds it.
.It Ev QVADMIN_PROFILE , QVADMIN_OUTPUT , QVADMIN_COLOR , QVADMIN_QUIET , QVADMIN_WIDE , QVADMIN_LOG
as the settings of these names in
.Sx FILES .
.It Ev CREDENTIALS_DIRECTORY
where systemd puts the credential qvadmin\-password, the password of the database.
.It Ev NO_COLOR
turns colours off, whatever it holds.
.It Ev XDG_DATA_HOME
where quorvel/directory.db is looked for when neither is given; else
.Pa ~/.local/share .
.El
.Sh FILES
.Bl -tag -width Ds
.It Pa /etc/qvadmin/config.toml
settings for everybody.
.It Pa ~/.config/qvadmin/config.toml
settings of one user, which override those for everybody; in
.Ev XDG_CONFIG_HOME
where that is set.
.El
.Sh EXIT STATUS
.Bl -tag -width Ds -compact
.It 0
done
.It 1
failed
.It 2
usage
.It 3
not found, or false
.It 4
conflict or ambiguous
.It 5
protected
.It 6
database
.It 7
some rows failed
.It 8
a check or a dry run found something
.It 9
confirmation needed
.El
)";

void WriteProgram(std::ostream& out)
{
    WriteHead("qvadmin", "qvadmin", "administration of a server's organisation directory", out);
    out << kSynopsis << ".Bl -tag -width Ds\n";
    for (const Noun& noun : Nouns()) {
        out << ".It Cm " << noun.name << '\n'
            << Line(std::string(noun.summary) + "; see") << ".Xr qvadmin\\-" << noun.name << " 1 .\n";
    }
    out << ".El\n";
    for (const Command* command : AllCommands()) {
        if (PathOf(*command).size() == 1 && !command->summary.empty()) {
            WriteCommand(*command, out);
        }
    }
    out << kProgramEnd << ".Sh SEE ALSO\n";
    std::vector<std::string_view> names;
    std::ranges::transform(Nouns(), std::back_inserter(names), &Noun::name);
    std::ranges::sort(names);
    for (const std::string_view name : names) {
        out << ".Xr qvadmin\\-" << name << " 1" << (name == names.back() ? "\n" : " ,\n");
    }
}

Exit PrintManual(const LocalCall& call)
{
    const auto in = binding::ReadInput<kManualParams>(call.given);
    if (!in.noun) {
        WriteProgram(call.terminal.out);
        return Exit::done;
    }
    const auto noun = std::ranges::find(Nouns(), *in.noun, &Noun::name);
    if (noun == Nouns().end()) {
        throw Error(ErrorCode::notFound, FillPattern("unknown command {}; see `qvadmin --help`", Quoted(*in.noun)));
    }
    WriteNoun(*noun, call.terminal.out);
    return Exit::done;
}

// ---- The table as data ----------------------------------------------------------------------------------------------

Exit PrintCommands(const LocalCall& call)
{
    if (!IsJson(call.arguments.format)) {
        for (const Command* command : AllCommands()) {
            if (!IsHead(*command) && !command->summary.empty()) {
                call.terminal.out << fmt::format("{:<34}  {}\n", fmt::format("{}", fmt::join(PathOf(*command), " ")),
                                                 command->summary);
            }
        }
        return Exit::done;
    }
    JsonWriter json(call.terminal.out,
                    call.arguments.format == Format::json ? JsonWriter::Layout::indented : JsonWriter::Layout::line);
    json.BeginObject();
    json.WriteMember("v", std::int64_t{1});
    json.WriteName("commands");
    json.BeginArray();
    for (const Command* command : AllCommands()) {
        if (!IsHead(*command) && !command->summary.empty()) {
            WriteAsData(*command, json, true);
        }
    }
    json.End();
    json.End();
    call.terminal.out << '\n';
    return Exit::done;
}

constexpr LocalCommand kManualCommands[] = {
    {{.path = {"manual"},
      .summary = "print a manual page, for man or mandoc",
      .examples = {"qvadmin manual | man -l -", "qvadmin manual user > qvadmin-user.1"},
      .handler = {&InfosOf<kManualParams>}},
     &PrintManual},
    {{.path = {"commands"},
      .summary = "list all commands; with -o json all that is known of them, for other programs",
      .examples = {"qvadmin commands -o json"}},
     &PrintCommands},
};

} // namespace

std::span<const LocalCommand> ManualCommands() { return kManualCommands; }

} // namespace console
