#include "console/Commands.h"

#include "console/Actor.h"
#include "console/Color.h"
#include "console/CommandLog.h"
#include "console/DatabasePassword.h"
#include "console/LocalCommand.h"
#include "console/NameList.h"
#include "console/Session.h"
#include "console/TerminalFrontEnd.h"
#include "console/Translation.h"
#include "console/Url.h"
#include "management/CommandData.h"
#include "management/JsonWriter.h"
#include "management/Text.h"

#include <algorithm>
#include <array>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <ostream>

namespace console {

namespace {

constexpr Noun kNouns[] = {
    {"db",
     "make, upgrade, check and copy the database",
     {"qvadmin db init", "qvadmin --db sqlite:/srv/directory.db db status",
      "qvadmin db copy postgresql://quorvel@db1.example.org/directory"}},
    {"user",
     "users: list, show, create, change, lock, delete, import",
     {"qvadmin user list --match smith", "qvadmin user create amy --name 'Amy Porter' --email amy@example.org",
      "qvadmin user import people.csv --dry-run"}},
    {"group",
     "groups: tree, list, create, rename, move, delete, find",
     {"qvadmin group tree", "qvadmin group create /Company/Sales --description 'Sells things'",
      "qvadmin group move /Company/Sales/North /Company/Service"}},
    {"view", "views, the roots of the organisation", {"qvadmin view create Company", "qvadmin view list"}},
    {"role",
     "roles: list, show, create, change, delete, and who has them",
     {"qvadmin role create Editors --description 'May change pages'", "qvadmin role add Editors amy rory",
      "qvadmin role of amy"}},
    {"title",
     "job titles that users hold inside groups",
     {"qvadmin title give /Company/Sales amy Lead", "qvadmin title list /Company/Sales"}},
    {"member",
     "who is in which group or view",
     {"qvadmin member list /Company/Sales", "qvadmin member add /Company/Sales amy rory"}},
    {"right",
     "what users, groups, roles and views may do",
     {"qvadmin right grant role:Editors mail send 1", "qvadmin right matrix Editors Authors",
      "qvadmin right effective amy"}},
    {"objright",
     "rights on objects outside the directory",
     {"qvadmin objright grant user:amy 3 17 docs read 1", "qvadmin objright list 3 17"}},
    {"docroot",
     "document roots, the storage areas of the document server",
     {"qvadmin docroot create Main --path /srv/documents --type 1", "qvadmin docroot list"}},
    {"folder",
     "virtual folders of documents: tree, create, rename, link, delete",
     {"qvadmin folder tree", "qvadmin folder create /Main/Contracts/2024 --parents",
      "qvadmin folder link /Main/Contracts /Archive"}},
    {"plan",
     "backup plans, and the users and groups that they are assigned to",
     {"qvadmin plan create Nightly --data-file nightly.txt",
      "qvadmin plan assign Nightly user:amy group:/Company/Sales", "qvadmin plan of user:amy"}},
    {"doclog",
     "the log of what happened to documents",
     {"qvadmin doclog list --class 105 --object 17",
      "qvadmin doclog add 105 17 moved 'Moved to the archive' --creator amy"}},
    {"setting", "settings of the server", {"qvadmin setting list", "qvadmin setting threads --max 64"}},
    {"message",
     "stored messages: how many there are, and deleting old ones",
     {"qvadmin message stats", "qvadmin message purge --before 2020-01-01"}},
    {"loginlog", "the log of who logged in", {"qvadmin loginlog list --limit 20"}},
    {"addin",
     "add-ins of the server: list, create, change, move, delete",
     {"qvadmin addin list", "qvadmin addin disable Calendar", "qvadmin addin move Calendar top"}},
    {"package",
     "packages that add-ins come in",
     {"qvadmin package list", "qvadmin package install Office --version 3"}},
    {"board", "notices of the bulletin board", {"qvadmin board list", "qvadmin board show 17"}},
    {"config",
     "settings of this program, and where they come from",
     {"qvadmin config show --origin", "qvadmin -p production config show"}},
    {"audit",
     "the record of changes: list, show, undo, verify, prune",
     {"qvadmin audit list --limit 20", "qvadmin audit undo 17"}},
    {"console",
     "who may use the web console beside super users, and one-time codes there",
     {"qvadmin console list", "qvadmin console set amy help-desk"}},
};

/// A line of several works where they all do, unless it says otherwise.
void TakeOver(Request& request, const SharedSession& shared)
{
    CallOptions& options = request.given.options;
    Arguments& arguments = request.arguments;
    arguments.db = arguments.db ? arguments.db : shared.arguments.db;
    arguments.log = arguments.log ? arguments.log : shared.arguments.log;
    arguments.config = shared.arguments.config;
    if (!arguments.isFormatGiven) {
        arguments.format = shared.arguments.format;
    }
    arguments.wide = arguments.wide || shared.arguments.wide;
    options.dryRun = options.dryRun || shared.options.dryRun;
    options.reason = options.reason.empty() ? shared.options.reason : options.reason;
    options.joinsTransaction = shared.joinsTransaction;
}

/// @throws Error (invalid) for a URL with a password, which others can read while the command runs.
void RequireNoPassword(const std::optional<std::string>& db)
{
    if (db && HoldsPassword(*db)) {
        RequireScheme(*db, "--db");
        throw Error(ErrorCode::invalid,
                    "a password in --db could be read by others; put it into a file that only you can open, and name "
                    "that with QVADMIN_PASSWORD_FILE, or be asked for it with --ask-db-password");
    }
}

/// Whether a command opens no database.
bool NeedsNoDatabase(const Command& command)
{
    constexpr std::array<std::string_view, 5> nouns = {"config", "completion", "complete", "manual", "commands"};
    return std::ranges::find(nouns, command.path[0]) != nouns.end();
}

/// Fills in what the command line leaves open.
void ApplyConfig(Request& request, const std::vector<std::string>& words, Terminal& terminal)
{
    Arguments& arguments = request.arguments;
    Config config(Config::Files(), arguments.profile);
    if (arguments.db) {
        config.Override("db", *arguments.db, "--db");
    }
    if (arguments.isFormatGiven) {
        config.Override("output", std::string(NameOf(arguments.format)), "--output");
    } else if (const std::optional<std::string> format = config.Find("output")) {
        arguments.format = *FindFormat(*format);
    }
    if (arguments.quiet) {
        config.Override("quiet", "true", "--quiet");
    }
    if (arguments.wide) {
        config.Override("wide", "true", "--wide");
    }
    if (arguments.log) {
        config.Override("log", *arguments.log, "--log");
    }
    ChooseColors(terminal, words, config.Find("color").value_or("auto"));
    arguments.quiet = config.IsOn("quiet");
    arguments.wide = config.IsOn("wide");
    arguments.log = config.Find("log");
    // One in the environment is left there: sentences about it name the variable.
    const ConfigValue& db = config.At("db");
    const std::optional<std::string> url = config.Find("db");
    if (url && db.origin != "QVADMIN_DB") {
        arguments.db = url;
    }
    if (url && !NeedsNoDatabase(*request.command)) {
        const std::string whole = WithPassword(*url, config, arguments.asksPassword, terminal);
        arguments.db = whole == *url ? arguments.db : whole;
    }
    arguments.config = std::make_shared<const Config>(std::move(config));
}

void RequireJoinable(const Request& request, const SharedSession& shared, bool isLocal)
{
    if (request.command->path[0] == "shell") {
        throw Error(ErrorCode::invalid, "a shell cannot be run from within another or a batch");
    }
    if (request.command->path[0] == "batch" && !shared.isShell) {
        throw Error(ErrorCode::invalid, "a batch cannot be run from within a batch");
    }
    const bool writes = request.command->effect != Effect::read;
    if (shared.joinsTransaction && writes && (isLocal || request.arguments.db != shared.arguments.db)) {
        throw Error(ErrorCode::invalid, "this command cannot be a part of one transaction; run it by itself");
    }
}

/// What is known of a run beside what it ends with.
struct RunReport {
    std::optional<CommandLog> log;
    bool isChanged = false;
    bool writesJson = false;
    bool isComplete = false; ///< it was not ended by an error, which has been reported
};

/// Whether a run of a command of the table has changed something.
bool HasChanged(const Request& request, const Result& result)
{
    return request.command->effect != Effect::read && !result.isRead && result.isChanged &&
           !request.given.options.dryRun;
}

Exit RunCommand(Request& request, const std::vector<std::string>& words, Terminal& terminal, SharedSession* shared,
                RunReport& report)
{
    const auto own =
        std::ranges::find(LocalCommands(), request.command, [](const LocalCommand& command) { return &command.row; });
    const bool isLocal = own != LocalCommands().end();
    if (shared != nullptr) {
        RequireJoinable(request, *shared, isLocal);
    }
    if (request.command->effect != Effect::read) {
        request.given.options.who = ActorName();
        request.given.options.frontEnd = "qvadmin";
        request.given.options.command = CommandText(words);
    }
    if (isLocal) {
        const bool hadChanged = std::exchange(*terminal.mayHaveChanged, false);
        const Exit exit = own->run({request.given, request.arguments, terminal});
        report.isChanged = *terminal.mayHaveChanged;
        *terminal.mayHaveChanged = hadChanged || report.isChanged;
        return exit;
    }
    ReadNames(*request.command, request.given, terminal);
    std::optional<Session> session;
    const auto open = [&]() -> CAConnect& {
        const bool isShared = shared != nullptr && request.arguments.db == shared->arguments.db;
        return isShared ? shared->Open() : session.emplace(request.arguments).Directory().Connection();
    };
    TerminalFrontEnd frontEnd(*request.command, request.given, request.arguments.format, terminal);
    Call call(open, frontEnd, request.given.options);
    const Result result = request.command->handler.run(call, request.given);
    report.isChanged = HasChanged(request, result);
    return frontEnd.Finish(result);
}

Exit RunWords(const std::vector<std::string>& words, Terminal& terminal, SharedSession* shared, RunReport& report)
{
    if (words.empty()) {
        terminal.err << ProgramHelp();
        throw Error(ErrorCode::invalid, "no command given; try `qvadmin user list`");
    }
    Request request = ParseCommandLine(words);
    if (request.command == nullptr) {
        terminal.out << request.text;
        return Exit::done;
    }
    RequireNoPassword(request.arguments.db);
    if (shared != nullptr) {
        TakeOver(request, *shared);
    } else {
        ApplyConfig(request, words, terminal);
    }
    report.writesJson = IsJson(request.arguments.format);
    if (request.arguments.log) {
        report.log.emplace(*request.arguments.log);
    }
    terminal.width = request.arguments.wide ? 0 : terminal.width;
    if (!request.arguments.quiet) {
        return RunCommand(request, words, terminal, shared, report);
    }
    std::ostream nowhere(nullptr);
    Terminal quiet{terminal.in,
                   terminal.out,
                   nowhere,
                   terminal.inIsTerminal,
                   false,
                   terminal.outIsClosed,
                   &ErrorsOf(terminal),
                   terminal.isStopped,
                   terminal.outIsTerminal,
                   terminal.width,
                   terminal.outHasColor,
                   terminal.errHasColor,
                   terminal.mayHaveChanged};
    return RunCommand(request, words, quiet, shared, report);
}

/// The last value that words give an option, also where they cannot be read as a whole.
std::optional<std::string> ValueIn(const std::vector<std::string>& words, std::string_view shortName,
                                   std::string_view longName)
{
    std::optional<std::string> value;
    for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
        const std::string_view word = words[i];
        if (word == shortName || word == longName) {
            value = i + 1 < words.size() ? std::optional(words[i + 1]) : value;
        } else if (word.starts_with(shortName)) {
            value = word.substr(shortName.size());
        } else if (word.starts_with(longName) && word[longName.size()] == '=') {
            value = word.substr(longName.size() + 1);
        }
    }
    return value;
}

/// Whether errors of words that cannot be read are to be JSON.
bool AskForJson(const std::vector<std::string>& words, const SharedSession* shared)
{
    const auto isJson = [](std::string_view format) { return format == "json" || format == "jsonl"; };
    if (const std::optional<std::string> given = ValueIn(words, "-o", "--output")) {
        return isJson(*given);
    }
    if (shared != nullptr) {
        return IsJson(shared->arguments.format);
    }
    try {
        const Config config(Config::Files(), ValueIn(words, "-p", "--profile"));
        return isJson(config.Find("output").value_or(""));
    } catch (const Error&) {
        return false;
    }
}

void WriteAsJson(const Error& error, Terminal& terminal)
{
    JsonWriter json(ErrorsOf(terminal), JsonWriter::Layout::line);
    json.BeginObject();
    json.WriteMember("v", std::int64_t{1});
    json.WriteMember("code", TextValue(std::string(NameOf(error.Code()))));
    json.WriteMember("exit", static_cast<std::int64_t>(ExitFor(error.Code())));
    json.WriteMember("message", TextValue(std::string(error.what())));
    if (!error.Candidates().empty()) {
        json.WriteName("candidates");
        json.BeginArray();
        for (const std::string& candidate : error.Candidates()) {
            json.Write(TextValue(candidate));
        }
        json.End();
    }
    json.End();
    ErrorsOf(terminal) << '\n';
}

Exit Failed(const Error& error, const std::vector<std::string>& words, Terminal& terminal, const SharedSession* shared,
            const RunReport& report)
{
    if (!report.writesJson && !AskForJson(words, shared)) {
        return Reported(ExitFor(error.Code()), error.Why(), terminal);
    }
    WriteAsJson(error, terminal);
    return ExitFor(error.Code());
}

Exit RunReporting(const std::vector<std::string>& words, Terminal& terminal, SharedSession* shared, RunReport& report)
{
    try {
        try {
            const Exit exit = RunWords(words, terminal, shared, report);
            report.isComplete = true;
            return exit;
        } catch (const Error& e) {
            return Failed(e, words, terminal, shared, report);
        }
    } catch (const std::bad_alloc&) {
        return Reported(Exit::failed, std::string(OutOfMemorySentence(terminal)), terminal);
    } catch (const std::exception& e) {
        return Reported(Exit::failed, FillPattern("internal error: {}", e.what()), terminal);
    }
}

/// Whether output was lost and nothing has been reported yet. A reader that closed it has read enough, which is no
/// failure.
bool LacksOutput(Terminal& terminal, const RunReport& report)
{
    terminal.out.flush();
    return !terminal.out && !terminal.outIsClosed() && report.isComplete;
}

Exit RunLogged(const std::vector<std::string>& words, Terminal& given, SharedSession* shared)
{
    Terminal terminal = given;
    // A line of several has the colours of the command that runs them, unless it says otherwise.
    if (shared == nullptr || HasColorOption(words)) {
        ChooseColors(terminal, words);
    }
    RunReport report;
    Exit exit = RunReporting(words, terminal, shared, report);
    if (shared == nullptr && LacksOutput(terminal, report)) {
        constexpr auto kLost = Translatable("the output could not be written in full");
        constexpr auto kStays =
            Translatable("the output could not be written in full; what the command changed stays changed");
        exit = Failed(Error(ErrorCode::failed, *terminal.mayHaveChanged ? kStays : kLost), words, terminal, shared,
                      report);
    }
    try {
        if (report.log) {
            report.log->Write(CommandText(words), exit, report.isChanged);
        }
    } catch (const Error& e) {
        return Failed(e, words, terminal, shared, report);
    }
    return exit;
}

} // namespace

Exit Reported(const Exit code, const Sentence& sentence, Terminal& terminal)
{
    WriteStyled(ErrorsOf(terminal), "qvadmin:", Style::error, terminal.errHasColor);
    ErrorsOf(terminal) << ' ' << Visible(Translated(sentence)) << '\n';
    return code;
}

std::span<const Noun> Nouns() { return kNouns; }

std::string_view OutOfMemorySentence(const Terminal& terminal) noexcept
{
    return *terminal.mayHaveChanged
               ? "out of memory; some or all of the change may have been made, so look before you run "
                 "the command again"
               : "out of memory; nothing was changed";
}

CAConnect& SharedSession::Open()
{
    return session ? session->Directory().Connection() : session.emplace(arguments).Directory().Connection();
}

Exit RunLine(const std::vector<std::string>& words, Terminal& terminal, SharedSession& shared)
{
    return RunLogged(words, terminal, &shared);
}

int RunProgram(int count, const char* const* words, Terminal& terminal)
{
    ChooseLanguage();
    return static_cast<int>(RunLogged({words + 1, words + count}, terminal, nullptr));
}

} // namespace console
