#include "console/CommandOption.h"
#include "console/DatabaseFiles.h"
#include "console/ImportFrontEnd.h"
#include "console/LocalCommand.h"
#include "console/OutputFile.h"
#include "console/Render.h"
#include "console/Session.h"
#include "console/SourceFile.h"
#include "console/Translation.h"
#include "console/Url.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/exchange/DirectoryImport.h"
#include "management/exchange/LdifSource.h"
#include "management/import/FileFormat.h"
#include "management/import/Import.h"
#include "management/import/Synchronisation.h"
#include "management/organisation/Organisation.h"
#include "schema/Privileges.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <utility>

namespace console {

namespace {

struct ImportInput {
    std::string file;
    bool dryRun = false;
    std::optional<std::string> result;
    bool update = false;
    std::optional<std::string> departments;
    bool makeView = false;
    bool noNewGroups = false;
    bool allowPrivileges = false;
    std::optional<std::string> map;
    bool ignoreUnknown = false;
    std::optional<std::string> delimiter;
    std::optional<std::string> encoding;
    std::optional<std::string> dateFormat;
    bool clearEmpty = false;
    std::optional<std::string> failed;
    bool sync = false;
    std::optional<std::string> scope;
    std::optional<std::string> leavers;
    std::optional<std::string> maxLeavers;
    std::optional<std::string> reason;
};

constexpr Param<ImportInput> kImportParams[] = {
    {"FILE", &ImportInput::file, Kind::file, "comma-separated values with a header row; - for standard input"},
    {"dry_run", &ImportInput::dryRun, Kind::flag, "check everything, change nothing"},
    {"result", &ImportInput::result, Kind::file,
     "where to write each row's outcome: FILE.result.csv if not given; - for standard output"},
    {"update", &ImportInput::update, Kind::flag, "set the columns of users who are there; empty values leave theirs"},
    {"departments", &ImportInput::departments, Kind::view,
     "make each department a group below this view, and its people members"},
    {"make_view", &ImportInput::makeView, Kind::flag, "make that view when it is not there"},
    {"no_new_groups",
     &ImportInput::noNewGroups,
     Kind::flag,
     "rows of departments that have no group yet fail",
     {},
     "make_view"},
    {"allow_privileges", &ImportInput::allowPrivileges, Kind::flag,
     "rows may change super, system and locked, and concern Admin"},
    {"map", &ImportInput::map, Kind::text,
     "names for columns of the file, such as 'E-Mail=email,Abteilung=department'"},
    {"ignore_unknown", &ImportInput::ignoreUnknown, Kind::flag, "leave columns out that have no name of these"},
    {"delimiter", &ImportInput::delimiter, Kind::text, "between values, such as ';' or tab; a comma if not given"},
    {"encoding", &ImportInput::encoding, Kind::text,
     "of the file, such as windows-1252; UTF-8, or what it seems to be, if not given"},
    {"date_format", &ImportInput::dateFormat, Kind::text, "of dates, such as DD.MM.YYYY; YYYY-MM-DD if not given"},
    {"clear_empty", &ImportInput::clearEmpty, Kind::flag,
     "with --update, empty texts and dates of the file empty those of users"},
    {"failed", &ImportInput::failed, Kind::file, "where to write the rows that fail, as a file that can be imported"},
    {"sync", &ImportInput::sync, Kind::flag,
     "also --update, and deal with people of the scope who are not in the file"},
    {"scope", &ImportInput::scope, Kind::holder, "the view or group whose people the file has, with all groups below"},
    {"leavers", &ImportInput::leavers, Kind::text,
     "what becomes of who is not in the file: list, lock, move:/VIEW/GROUP or delete; list if not given"},
    {"max_leavers", &ImportInput::maxLeavers, Kind::text,
     "how many they may be, such as 20 or 5%; 5% of the scope if not given"},
    {"reason", &ImportInput::reason, Kind::text, kReasonHelp},
};

/// The names with commas between, in lines that fit a terminal.
std::string Wrapped(const std::vector<std::string_view>& names)
{
    constexpr std::size_t kWidest = 78;
    std::string text;
    std::string line = " ";
    for (const std::string_view name : names) {
        if (line.size() + name.size() + 2 > kWidest) {
            text += std::exchange(line, " ") + "\n";
        }
        line += fmt::format(" {}{}", name, name == names.back() ? "" : ",");
    }
    return text + line + "\n";
}

// ---- The summary ----------------------------------------------------------------------------------------------------

void SummariseDepartments(const ImportInput& in, const ImportReport& report, std::ostream& err)
{
    if (!in.departments) {
        return;
    }
    const Sentence groups = Counted(report.madeGroups.size(), "group");
    const Sentence made =
        report.madeView ? FillPattern("{} and the view {}", groups, Visible(*report.madeView)) : groups;
    err << Translated(in.dryRun ? FillPattern("departments: would make {}", made)
                                : FillPattern("departments: made {}", made))
        << '\n';
    for (const NewGroup& group : report.madeGroups) {
        err << fmt::format("  {}: {}\n", Visible(group.path), Translated(Counted(group.users, "user")));
    }
}

/// What every summary begins with. @param mayWrite  whether the account may do what was tried.
void SummariseRows(bool dryRun, const ImportReport& report, std::string_view noun, const std::string& source,
                   const std::string& result, bool mayWrite, std::ostream& err)
{
    const Sentence summary = FillPattern("{} of {}: {} ({}); the outcome of each is in {}",
                                         Counted(static_cast<std::size_t>(report.rows), noun), source,
                                         FatesText(report), report.Pace(), result);
    err << Translated(dryRun ? FillPattern("dry run, nothing was changed: {}", summary) : summary) << '\n';
    if (!mayWrite) {
        err << Translated("warning: this account cannot add and change users, by what the database says of its rights; "
                          "without --dry-run nothing would be imported")
            << '\n';
    }
}

/// What every summary ends with.
void SummariseTrouble(bool dryRun, bool allowPrivileges, const ImportReport& report, std::string_view noun,
                      const char* advice, std::ostream& err)
{
    if (report.privileged > 0) {
        const Sentence privileged = FillPlural("privileges: {} changes super, system, locked or Admin",
                                               "privileges: {} change super, system, locked or Admin",
                                               static_cast<std::size_t>(report.privileged),
                                               Counted(static_cast<std::size_t>(report.privileged), noun));
        err << Translated(allowPrivileges ? privileged : FillPattern("{}; --allow-privileges allows it", privileged))
            << '\n';
    }
    if (report.CountOf(RowFate::exists) > 0) {
        err << Translated(advice) << '\n';
    }
    if (report.CountOf(RowFate::failed) > 0) {
        const Sentence rows = Counted(static_cast<std::size_t>(report.rows), noun);
        const long failed = report.CountOf(RowFate::failed);
        err << "qvadmin: "
            << Translated(dryRun ? FillPattern("{} of {} would fail; mend and import them again", failed, rows)
                                 : FillPattern("{} of {} failed; mend and import them again", failed, rows))
            << '\n';
    }
}

void Summarise(const ImportInput& in, const ImportReport& report, const std::string& source, const std::string& result,
               bool mayWrite, std::ostream& err)
{
    SummariseRows(in.dryRun, report, "row", source, result, mayWrite, err);
    SummariseDepartments(in, report, err);
    SummariseTrouble(in.dryRun, in.allowPrivileges, report, "row",
                     Translatable("users who were already there were left as they are; --update sets their columns"),
                     err);
}

void SummariseDirectory(bool dryRun, bool allowPrivileges, const ImportReport& report, const std::string& source,
                        const std::string& result, bool mayWrite, std::ostream& err)
{
    SummariseRows(dryRun, report, "line", source, result, mayWrite, err);
    SummariseTrouble(dryRun, allowPrivileges, report, "line",
                     Translatable("what was already there and differs was left as it is; --update changes it"), err);
}

// ---- The command ----------------------------------------------------------------------------------------------------

Sentence Notes()
{
    return FillPattern("Columns (login is needed, all others may be left out):\n{}", Wrapped(ImportColumns()));
}

void RequireDepartments(const ImportInput& in)
{
    if ((in.makeView || in.noNewGroups) && !in.departments) {
        throw Error(ErrorCode::invalid,
                    FillPattern("{} requires --departments", in.makeView ? "--make-view" : "--no-new-groups"));
    }
}

char DelimiterOf(const ImportInput& in)
{
    const std::string text = in.delimiter.value_or(",");
    const std::string delimiter = text == "tab" || text == "\\t" ? "\t" : text;
    if (delimiter.size() != 1 || delimiter == "\"" || delimiter == "\n" || delimiter == "\r") {
        throw Error(
            ErrorCode::invalid,
            FillPattern("{} cannot stand between values; give one character, such as ';', or tab", Quoted(text)));
    }
    return delimiter.front();
}

ColumnOptions ColumnsOf(const ImportInput& in)
{
    ColumnOptions options{
        .ignoreUnknown = in.ignoreUnknown, .dateFormat = in.dateFormat.value_or(""), .clearEmpty = in.clearEmpty};
    for (const std::string& pair : in.map ? SplitAtCommas(*in.map) : std::vector<std::string>()) {
        const std::size_t equals = pair.rfind('=');
        if (equals == 0 || equals == std::string::npos || equals + 1 == pair.size()) {
            throw Error(ErrorCode::invalid,
                        FillPattern("{} is not a pair of names; write --map 'COLUMN=NAME,COLUMN=NAME'", Quoted(pair)));
        }
        const std::string column = pair.substr(0, equals);
        const auto isIt = [&column](const auto& named) { return SameName(named.first, column); };
        if (std::ranges::any_of(options.names, isIt)) {
            throw Error(ErrorCode::invalid, FillPattern("--map names the column {} twice", Quoted(column)));
        }
        options.names[column] = pair.substr(equals + 1);
    }
    return options;
}

/// @throws Error (invalid) for options that --sync alone takes.
void RequireNoSynchronisation(const ImportInput& in)
{
    if (in.scope || in.leavers || in.maxLeavers) {
        throw Error(ErrorCode::invalid, FillPattern("--{} requires --sync", in.scope     ? "scope"
                                                                            : in.leavers ? "leavers"
                                                                                         : "max-leavers"));
    }
}

/// @throws Error (invalid) for options that --sync and only --sync takes.
std::optional<SynchronisationOptions> SynchronisationOf(const ImportInput& in)
{
    if (!in.sync) {
        RequireNoSynchronisation(in);
        return std::nullopt;
    }
    if (!in.scope) {
        throw Error(ErrorCode::invalid, "--sync requires --scope");
    }
    if (in.file == kStandardStream) {
        throw Error(ErrorCode::invalid, "--sync reads the rows twice; give a file");
    }
    SynchronisationOptions options{.scope = *in.scope, .allowPrivileges = in.allowPrivileges};
    ReadLeaverAction(in.leavers.value_or("list"), options);
    if (in.maxLeavers) {
        options.limit = RemovalLimit("max_leavers", *in.maxLeavers);
    }
    return options;
}

void SummariseLeavers(const ImportInput& in, const SynchronisationReport& report, std::ostream& err)
{
    const Sentence who =
        FillPlural("leavers: {} of {} in {} is not in the file", "leavers: {} of {} in {} are not in the file",
                   report.leavers, report.leavers, Counted(report.people, "user"), Visible(in.scope.value_or("")));
    if (report.unreadable > 0) {
        err << Translated(
                   FillPlural("{}; nothing was done about them, since {} row has no login name that can be read",
                              "{}; nothing was done about them, since {} rows have no login name that can be read",
                              report.unreadable, who, report.unreadable))
            << '\n';
        return;
    }
    const std::string action = in.leavers.value_or("list");
    const bool isListed = action == "list";
    err << Translated(isListed
                          ? who
                          : FillPattern("{}; {}: {} done, {} failed", who, Visible(action), report.done, report.failed))
        << '\n';
}

/// Where rows that fail are written.
class FailedRows {
public:
    FailedRows(std::string path, char delimiter, std::vector<OutputFile::InUse> inUse)
        : m_path(std::move(path)), m_delimiter(delimiter), m_inUse(std::move(inUse))
    {
    }

    /// @param record  first the header.
    void Take(const CsvRecord& record)
    {
        std::ostringstream line;
        if (record.problem.IsEmpty() || record.text.empty()) {
            WriteCsvRow(record.fields, line, m_delimiter);
        } else {
            line << record.text << '\n';
        }
        std::string text = line.str();
        if (m_file) {
            m_file->Stream() << text;
            return;
        }
        text.pop_back();
        m_file = std::make_unique<OutputFile>(OutputFile::Description{m_path, "--failed", text, m_inUse});
    }

    /// All of them are there. @return the file's name; empty where there is none.
    std::string Finish()
    {
        if (m_file) {
            m_file->Finish();
        }
        return m_file ? m_file->Name() : "";
    }

private:
    std::string m_path;
    char m_delimiter;
    std::vector<OutputFile::InUse> m_inUse;
    std::unique_ptr<OutputFile> m_file;
};

/// What both imports have: the files, the session, and what is said in the end.
class ImportRun {
public:
    ImportRun(const LocalCall& call, const ImportFrontEnd::Files& files, const std::optional<std::string>& reason)
        : m_call(call),
          m_dryRun(files.dryRun),
          m_session(call.arguments),
          m_frontEnd(call, files),
          m_source(files.file, call.terminal.in)
    {
        CallOptions options = call.given.options;
        options.dryRun = files.dryRun;
        options.reason = reason.value_or(options.reason);
        m_work.emplace([this]() -> CAConnect& { return m_session.Directory().Connection(); }, m_frontEnd, options);
    }

    [[nodiscard]] SourceFile& Source() { return m_source; }

    /// Runs `import(Call&, ImportReport&)` and then `summarise(report, result, mayWrite)`, which returns what a program
    /// is told beside the report.
    template <class Import, class Summarise>
    Exit Run(Import import, Summarise summarise)
    {
        ImportReport report;
        try {
            import(*m_work, report);
            if (report.cutShort.IsEmpty()) {
                m_frontEnd.FinishResult();
            }
        } catch (const Error& e) {
            if (!m_frontEnd.IsBegun()) {
                throw;
            }
            m_frontEnd.HideProgress();
            throw Error(e.Code(), FillPattern("{}; {}", e.Why(), m_frontEnd.Summary(report)));
        }
        if (m_frontEnd.IsBegun()) {
            m_frontEnd.HideProgress();
            WriteReport(report, summarise(report, m_frontEnd.ResultName(), !m_dryRun || MayWrite()));
        }
        if (!report.cutShort.IsEmpty()) {
            throw Error(ErrorCode::failed, FillPattern("{}; {}", report.cutShort, m_frontEnd.Summary(report)));
        }
        return report.CountOf(RowFate::failed) == 0 ? Exit::done : m_dryRun ? Exit::checkFailed : Exit::rowsFailed;
    }

private:
    void WriteReport(const ImportReport& report, Record more) const
    {
        // Standard output has the rows then.
        if (!m_frontEnd.HasResultFile()) {
            return;
        }
        Record record;
        for (std::size_t i = 0; i < kRowFates.size(); ++i) {
            record.emplace_back(std::string(kRowFates.at(i)), std::int64_t{report.counts.at(i)});
        }
        record.emplace_back("result", m_frontEnd.ResultName());
        record.insert(record.end(), more.begin(), more.end());
        WriteDone(m_call, std::move(record), report.CountOf(RowFate::created) + report.CountOf(RowFate::updated) > 0,
                  m_dryRun);
    }

    [[nodiscard]] bool MayWrite()
    {
        CAConnect& conn = m_session.Directory().Connection();
        return !IsReadOnly(ChooseUrl(m_call.arguments.db)) &&
               WithDatabaseErrors(conn, [&] { return schema::MayWrite(conn); });
    }

    const LocalCall& m_call;
    bool m_dryRun;
    Session m_session;
    ImportFrontEnd m_frontEnd;
    SourceFile m_source;
    std::optional<Call> m_work;
};

/// Where --failed is given.
std::optional<FailedRows> FailedRowsOf(const LocalCall& call, const ImportInput& in, char delimiter)
{
    if (!in.failed) {
        return std::nullopt;
    }
    std::vector<OutputFile::InUse> inUse = DatabaseFiles(ChooseUrl(call.arguments.db));
    inUse.push_back({in.file, "the file to import"});
    inUse.push_back({in.result.value_or(in.file + std::string(kResultSuffix)), "the file of the outcomes"});
    return FailedRows(*in.failed, delimiter, std::move(inUse));
}

/// @param failed  outlives what is returned.
ImportOptions OptionsOf(const ImportInput& in, const ColumnOptions& columns, std::optional<FailedRows>& failed)
{
    ImportOptions options{.update = in.update || in.sync,
                          .allowPrivileges = in.allowPrivileges,
                          .departments = in.departments,
                          .makeView = in.makeView,
                          .makeGroups = !in.noNewGroups,
                          .columns = columns};
    if (failed) {
        options.takeFailed = [&failed](const CsvRecord& record) { failed->Take(record); };
    }
    return options;
}

void FinishFailed(FailedRows& failed, const ImportReport& report, std::ostream& err)
{
    const std::string file = failed.Finish();
    if (!file.empty() && report.CountOf(RowFate::failed) > 0) {
        err << Translated(FillPattern("the rows that failed are in {}, in UTF-8", file)) << '\n';
    }
}

Exit ImportFile(const LocalCall& call)
{
    const auto in = binding::ReadInput<kImportParams>(call.given);
    RequireDepartments(in);
    const char delimiter = DelimiterOf(in);
    const ColumnOptions columns = ColumnsOf(in);
    const std::optional<SynchronisationOptions> syncOptions = SynchronisationOf(in);
    ImportRun run(call, {in.file, in.dryRun, in.result}, in.reason);
    SourceFile& source = run.Source();
    const std::string guessed = source.ReadAsCsv(in.encoding);
    if (!guessed.empty()) {
        call.terminal.err << Translated(
                                 FillPattern("{} is read as {}; --encoding names another one", source.Name(), guessed))
                          << '\n';
    }
    const std::optional<long> rows = call.terminal.errIsTerminal ? source.CountRows(delimiter) : std::nullopt;
    std::optional<FailedRows> failed = FailedRowsOf(call, in, delimiter);
    std::optional<Synchronisation> sync;
    const auto import = [&](Call& work, ImportReport& report) {
        if (syncOptions) {
            SourceFile first(in.file, call.terminal.in);
            first.ReadAsCsv(in.encoding);
            sync.emplace(work, ImportSource{first.Stream(), source.Name(), {}, delimiter}, columns, *syncOptions);
        }
        const ImportOptions options = OptionsOf(in, columns, failed);
        ImportUsers(work, {source.Stream(), source.Name(), rows, delimiter}, options, report);
        if (sync && report.cutShort.IsEmpty()) {
            sync->Apply(work);
        }
    };
    const Exit exit = run.Run(import, [&](const ImportReport& report, const std::string& result, bool mayWrite) {
        Summarise(in, report, source.Name(), result, mayWrite, call.terminal.err);
        if (failed) {
            FinishFailed(*failed, report, call.terminal.err);
        }
        Record leavers;
        if (sync) {
            SummariseLeavers(in, sync->Report(), call.terminal.err);
            leavers = {{"leavers", static_cast<std::int64_t>(sync->Report().leavers)},
                       {"leavers_done", static_cast<std::int64_t>(sync->Report().done)},
                       {"leavers_failed", static_cast<std::int64_t>(sync->Report().failed)}};
        }
        return leavers;
    });
    return exit == Exit::done && sync && sync->Report().failed > 0 ? Exit::rowsFailed : exit;
}

// ---- A directory ----------------------------------------------------------------------------------------------------

struct DirectoryInput {
    std::string file;
    bool dryRun = false;
    std::optional<std::string> result;
    bool update = false;
    bool allowPrivileges = false;
    std::optional<std::string> format;
    std::optional<std::string> view;
    std::optional<std::string> groupsAs;
    std::optional<std::string> reason;
};

constexpr Param<DirectoryInput> kDirectoryParams[] = {
    {"FILE", &DirectoryInput::file, Kind::file, "what `qvadmin export` has written; - for standard input"},
    {"dry_run", &DirectoryInput::dryRun, Kind::flag, "do everything in one transaction and undo it"},
    {"result", &DirectoryInput::result, Kind::file,
     "where to write each line's outcome: FILE.result.csv if not given; - for standard output"},
    {"update", &DirectoryInput::update, Kind::flag, "give what is there the values of its line"},
    {"allow_privileges", &DirectoryInput::allowPrivileges, Kind::flag,
     "lines may change super, system and locked, and concern Admin"},
    {"format", &DirectoryInput::format, Kind::choice, "of the file; by what it begins with if not given",
     OneOf{"json", "csv", "ldif"}},
    {"view", &DirectoryInput::view, Kind::view,
     "of ldif: under which units are groups; the topmost units are views if not given"},
    {"groups_as", &DirectoryInput::groupsAs, Kind::choice, "of ldif: what groups of names become; roles if not given",
     OneOf{"roles", "groups"}},
    {"reason", &DirectoryInput::reason, Kind::text, kReasonHelp},
};

/// The format of a file, by what it begins with.
std::string FormatOf(std::string_view beginning)
{
    const std::string_view whole = WithoutByteOrderMark(beginning);
    const std::string_view text = whole.substr(std::min(whole.find_first_not_of(" \t\r\n"), whole.size()));
    return text.starts_with('{') || text.empty() ? "json" : IsLdif(text) ? "ldif" : "csv";
}

/// The name of a view, which may have a slash before it. @throws Error (invalid) for a longer path.
std::optional<std::string> ViewName(const std::optional<std::string>& view)
{
    if (!view) {
        return view;
    }
    const std::vector<std::string> names = view->starts_with('/') ? SplitPath(*view) : std::vector{*view};
    if (names.size() != 1 || names.front().empty()) {
        throw Error(ErrorCode::invalid, FillPattern("{} is not a view; write --view NAME", Quoted(*view)));
    }
    return names.front();
}

void ImportLdif(Call& call, const SourceFile& source, const DirectoryInput& in, ImportReport& report,
                std::istream& standardInput, std::ostream& err)
{
    std::unique_ptr<SourceFile> file;
    LdifSource lines(
        [&]() -> std::istream& {
            file = std::make_unique<SourceFile>(source.Path(), standardInput);
            return file->Stream();
        },
        {ViewName(in.view), in.groupsAs == "groups"});
    ImportLines(call, lines, {standardInput, source.Name()}, {in.update, in.allowPrivileges}, report);
    if (lines.LeftOut() > 0) {
        const auto leftOut = static_cast<std::size_t>(lines.LeftOut());
        err << Translated(FillPlural("left out: {} that is not a person, unit or group",
                                     "left out: {} that are not people, units or groups", leftOut,
                                     Counted(leftOut, "entry")))
            << '\n';
    }
}

Exit ImportWhole(const LocalCall& call)
{
    const auto in = binding::ReadInput<kDirectoryParams>(call.given);
    ImportRun run(call, {in.file, in.dryRun, in.result}, in.reason);
    SourceFile& source = run.Source();
    const std::string format = in.format.value_or(FormatOf(source.Beginning()));
    if ((in.view || in.groupsAs) && format != "ldif") {
        throw Error(ErrorCode::invalid,
                    FillPattern("--{} is for ldif, and {} is not", in.view ? "view" : "groups-as", source.Name()));
    }
    if (format == "ldif" && source.IsStandardInput()) {
        throw Error(ErrorCode::invalid, "ldif is read several times; give a file");
    }
    if (format == "csv") {
        source.ReadAsCsv(std::nullopt);
    }
    const std::optional<long> lines =
        call.terminal.errIsTerminal && format == "json" ? source.CountLines() : std::nullopt;
    const auto import = [&](Call& work, ImportReport& report) {
        const ImportSource rows{source.Stream(), source.Name(), lines};
        if (format == "ldif") {
            ImportLdif(work, source, in, report, call.terminal.in, call.terminal.err);
        } else if (format == "csv") {
            ImportOptions options;
            options.update = in.update;
            options.allowPrivileges = in.allowPrivileges;
            ImportUsers(work, rows, options, report);
        } else {
            ImportDirectory(work, rows, {in.update, in.allowPrivileges}, report);
        }
    };
    return run.Run(import, [&](const ImportReport& report, const std::string& result, bool mayWrite) {
        SummariseDirectory(in.dryRun, in.allowPrivileges, report, source.Name(), result, mayWrite, call.terminal.err);
        return Record();
    });
}

constexpr LocalCommand kImportCommands[] = {
    {{.path = {"user", "import"},
      .summary = "add the users of a file, row by row",
      .examples = {"qvadmin user import people.csv --dry-run", "qvadmin user import people.csv",
                   "qvadmin user import people.csv --update --result outcomes.csv",
                   "qvadmin user import people.csv --departments Company --make-view --dry-run",
                   "qvadmin user import people.csv --delimiter ';' --map 'E-Mail=email' --failed again.csv",
                   "qvadmin user import people.csv --sync --scope /Company --leavers lock --max-leavers 5%"},
      .notes = &Notes,
      .effect = Effect::create,
      .duration = Duration::longRunning,
      .handler = {&InfosOf<kImportParams>}},
     &ImportFile},
    {{.path = {"import"},
      .summary = "bring what `qvadmin export` or another directory has written into this one",
      .examples = {"qvadmin import directory.jsonl --dry-run", "qvadmin import directory.jsonl --update",
                   "qvadmin import people.ldif --view Company --groups-as groups"},
      .effect = Effect::change,
      .duration = Duration::longRunning,
      .handler = {&InfosOf<kDirectoryParams>}},
     &ImportWhole},
};

} // namespace

std::span<const LocalCommand> ImportCommands() { return kImportCommands; }

} // namespace console
