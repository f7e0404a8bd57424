#include "console/CommandOption.h"
#include "console/FileBuffer.h"
#include "console/Interrupt.h"
#include "console/LocalCommand.h"
#include "console/OutputFile.h"
#include "console/Session.h"
#include "console/TerminalFrontEnd.h"
#include "console/Url.h"
#include "management/Text.h"
#include "management/import/CsvReader.h"
#include "management/import/FileFormat.h"
#include "management/import/Import.h"
#include "schema/Privileges.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <utility>

namespace console {

namespace {

constexpr std::string_view kStandardStream = "-";
constexpr std::string_view kResultSuffix = ".result.csv";
constexpr std::string_view kFailed = kRowFates[static_cast<std::size_t>(RowFate::failed)];
/// As kRowFates, to follow a number.
constexpr std::array<std::string_view, kRowFates.size()> kFatesInSummary = {"created", "updated", "unchanged",
                                                                            "already there", "failed"};

struct ImportInput {
    std::string file;
    bool dryRun = false;
    std::optional<std::string> result;
    bool update = false;
    std::optional<std::string> departments;
    bool makeView = false;
    bool noNewGroups = false;
    bool allowPrivileges = false;
    std::optional<std::string> reason;
};

constexpr Param<ImportInput> kImportParams[] = {
    {"FILE", &ImportInput::file, Kind::file, "comma-separated values in UTF-8 with a header row; - for standard input"},
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

// ---- The file -------------------------------------------------------------------------------------------------------

std::string SourceName(const std::string& path) { return path == kStandardStream ? "standard input" : Visible(path); }

/// The stream that the rows come from.
class Source {
public:
    Source(std::string path, std::istream& standardInput)
        : m_path(std::move(path)), m_standardInput(standardInput), m_file(nullptr)
    {
        if (!IsStandardInput()) {
            m_buffer = Open();
            m_file.rdbuf(m_buffer.get());
        }
    }

    [[nodiscard]] std::istream& Stream() { return IsStandardInput() ? m_standardInput : m_file; }

    /// Reads from the beginning of what is still to be read. @throws Error (invalid) that names another encoding or
    /// kind of file, (failed) for what cannot be read.
    void RequireCsv()
    {
        try {
            std::string problem = OtherFormat(Beginning(), m_path);
            if (problem.empty() && IsRegularFile()) {
                const std::unique_ptr<FileBuffer> buffer = Open();
                std::istream file(buffer.get());
                problem = OtherEncoding(file, m_path);
            }
            if (!problem.empty()) {
                throw Error(ErrorCode::invalid,
                            (IsStandardInput() ? "what standard input holds, written to the file " : "") + problem +
                                "; nothing was imported");
            }
        } catch (const std::ios_base::failure&) {
            throw Error(ErrorCode::failed,
                        fmt::format("{}; nothing was imported", Interrupt::Requested()
                                                                    ? "stopped by a signal"
                                                                    : SourceName(m_path) + " cannot be read"));
        }
    }

    /// How many rows there are after the header. Not known of what can be read only once.
    [[nodiscard]] std::optional<long> CountRows() const
    {
        if (!IsRegularFile()) {
            return std::nullopt;
        }
        const std::unique_ptr<FileBuffer> buffer = Open();
        std::istream file(buffer.get());
        CsvReader reader(file);
        long count = -1;
        while (reader.Next()) {
            ++count;
        }
        return count;
    }

private:
    [[nodiscard]] bool IsStandardInput() const { return m_path == kStandardStream; }

    [[nodiscard]] bool IsRegularFile() const
    {
        std::error_code error;
        return !IsStandardInput() && std::filesystem::is_regular_file(m_path, error);
    }

    /// What the stream gives at once; it is put back.
    [[nodiscard]] std::string Beginning()
    {
        constexpr std::streamsize kMost = 4096;
        std::streambuf& buffer = *Stream().rdbuf();
        buffer.sgetc();
        std::string text(static_cast<std::size_t>(std::clamp<std::streamsize>(buffer.in_avail(), 0, kMost)), '\0');
        buffer.sgetn(text.data(), static_cast<std::streamsize>(text.size()));
        for (std::size_t i = 0; i < text.size(); ++i) {
            buffer.sungetc();
        }
        return text;
    }

    [[nodiscard]] std::unique_ptr<FileBuffer> Open() const
    {
        const int file = ::open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
        if (file < 0) {
            throw Error(ErrorCode::failed, fmt::format("cannot read {}: {}", Visible(m_path), std::strerror(errno)));
        }
        return std::make_unique<FileBuffer>(file);
    }

    std::string m_path;
    std::istream& m_standardInput;
    std::unique_ptr<FileBuffer> m_buffer;
    std::istream m_file;
};

// ---- The result file ------------------------------------------------------------------------------------------------

/// The files of a SQLite database, also those that are not there now.
std::vector<OutputFile::InUse> FilesOf(const std::string& url)
{
    std::vector<OutputFile::InUse> files;
    if (const std::optional<std::filesystem::path> file = SqliteFile(url)) {
        for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
            files.push_back({file->native() + suffix, "a file of the database in use"});
        }
    }
    return files;
}

/// Where the outcomes of the rows are written: a file, or standard output.
class ResultFile {
public:
    /// @param path  - for standard output. @param inUse  files that are not to be written.
    ResultFile(const std::string& path, const std::string& header, std::vector<OutputFile::InUse> inUse,
               std::ostream& standardOutput)
        : m_out(standardOutput)
    {
        if (path != kStandardStream) {
            m_file = std::make_unique<OutputFile>(OutputFile::Description{path, "--result", header, std::move(inUse)});
            return;
        }
        m_out << header << '\n';
        Flush();
    }

    [[nodiscard]] std::ostream& Stream() { return m_file ? m_file->Stream() : m_out; }

    /// @throws Error when the file does not hold what was written, as does Finish.
    void Flush()
    {
        if (m_file) {
            m_file->Flush();
            return;
        }
        m_out.flush();
        if (!m_out) {
            throw Error(ErrorCode::failed, "cannot write the outcomes to standard output");
        }
    }

    /// All rows are written.
    void Finish()
    {
        if (m_file) {
            m_file->Finish();
        }
    }

    /// Where the outcomes written so far are, for sentences.
    [[nodiscard]] std::string Name() const { return m_file ? m_file->Name() : "standard output"; }
    [[nodiscard]] bool IsFile() const { return m_file != nullptr; }

private:
    std::ostream& m_out;
    std::unique_ptr<OutputFile> m_file; // none for standard output
};

constexpr Command kNoRow = {};

/// Rows go to the result file, and those that fail also to standard error.
class ImportFrontEnd final : public TerminalFrontEnd {
public:
    ImportFrontEnd(const LocalCall& call, const ImportInput& in)
        : TerminalFrontEnd(kNoRow, call.given, Format::csv, call.terminal),
          m_call(call),
          m_in(in),
          m_source(SourceName(in.file))
    {
        TerminalFrontEnd::ShowProgress(0, std::nullopt); // from here on a signal is a request to stop
    }

    void TakeColumns(std::vector<std::string> names) override
    {
        m_isBegun = true;
        const bool fromStandardInput = m_in.file == kStandardStream;
        std::vector<OutputFile::InUse> inUse = FilesOf(ChooseUrl(m_call.arguments.db));
        if (!fromStandardInput) {
            inUse.push_back({m_in.file, "the file to import"});
        }
        m_result.emplace(m_in.result.value_or(fromStandardInput ? m_in.file : m_in.file + std::string(kResultSuffix)),
                         fmt::format("{}", fmt::join(names, ",")), std::move(inUse), m_call.terminal.out);
    }

    bool TakeRow(const std::vector<Value>& row) override
    {
        const std::vector<std::string> texts = TextsForPrograms(row);
        WriteCsvRow(texts, m_result->Stream());
        if (texts.at(3) == kFailed) {
            HideProgress();
            m_call.terminal.err << fmt::format("{}:{}: {}\n", m_source, texts.at(0), texts.at(4));
        }
        return true;
    }

    void ShowProgress(long done, std::optional<long> total) override
    {
        if (m_result) {
            m_result->Flush();
        }
        TerminalFrontEnd::ShowProgress(done, total);
    }

    /// Whether the rows have begun, and not only what is looked at before them.
    [[nodiscard]] bool IsBegun() const { return m_isBegun; }
    [[nodiscard]] ResultFile& Outcomes() { return *m_result; }
    /// Where the import stands, to end a sentence with.
    [[nodiscard]] std::string Standing(const ImportReport& report) const
    {
        if (m_in.dryRun || report.lastLine == 0) {
            return "nothing was imported";
        }
        return fmt::format("the rows up to line {} are done{}, and the same file can be imported again",
                           report.lastLine, m_result->IsFile() ? " and listed in " + m_result->Name() : "");
    }

private:
    const LocalCall& m_call;
    const ImportInput& m_in;
    std::string m_source;
    std::optional<ResultFile> m_result;
    bool m_isBegun = false;
};

// ---- The summary ----------------------------------------------------------------------------------------------------

bool MayWrite(CAConnect& conn, const std::string& url)
{
    return !IsReadOnly(url) && WithDatabaseErrors(conn, [&] { return schema::MayWrite(conn); });
}

void SummariseDepartments(const ImportInput& in, const ImportReport& report, std::ostream& err)
{
    if (!in.departments) {
        return;
    }
    err << fmt::format("departments: {} {}{}\n", in.dryRun ? "would make" : "made",
                       Counted(report.madeGroups.size(), "group"),
                       report.madeView ? " and the view " + Visible(*report.madeView) : "");
    for (const NewGroup& group : report.madeGroups) {
        err << fmt::format("  {}: {}\n", Visible(group.path), Counted(group.users, "user"));
    }
}

/// @param mayWrite  whether the account may do what was tried.
void Summarise(const ImportInput& in, const ImportReport& report, const std::string& source, const std::string& result,
               bool mayWrite, std::ostream& err)
{
    std::string parts;
    for (std::size_t i = 0; i < kFatesInSummary.size(); ++i) {
        parts += fmt::format("{}{} {}", parts.empty() ? "" : ", ", report.counts.at(i), kFatesInSummary.at(i));
    }
    const std::string rows = Counted(static_cast<std::size_t>(report.rows), "row");
    err << fmt::format("{}{} of {}: {} ({}); the outcome of each is in {}\n",
                       in.dryRun ? "dry run, nothing was changed: " : "", rows, source, parts, report.Pace(), result);
    if (!mayWrite) {
        err << "warning: this account cannot add and change users, by what the database says of its rights; "
               "without --dry-run nothing would be imported\n";
    }
    SummariseDepartments(in, report, err);
    if (report.privileged > 0) {
        err << fmt::format("privileges: {} super, system, locked or Admin{}\n",
                           report.privileged == 1 ? "1 row changes" : fmt::format("{} rows change", report.privileged),
                           in.allowPrivileges ? "" : "; --allow-privileges allows it");
    }
    if (report.CountOf(RowFate::exists) > 0) {
        err << "users who were already there were left as they are; --update sets their columns\n";
    }
    if (report.CountOf(RowFate::failed) > 0) {
        err << fmt::format("qvadmin: {} of {} {}; mend and import them again\n", report.CountOf(RowFate::failed), rows,
                           in.dryRun ? "would fail" : "failed");
    }
}

// ---- The command ----------------------------------------------------------------------------------------------------

std::string Notes() { return "Columns (login is needed, all others may be left out):\n" + Wrapped(ImportColumns()); }

void RequireDepartments(const ImportInput& in)
{
    if ((in.makeView || in.noNewGroups) && !in.departments) {
        throw Error(ErrorCode::invalid,
                    fmt::format("{} requires --departments", in.makeView ? "--make-view" : "--no-new-groups"));
    }
}

Exit ImportFile(const LocalCall& call)
{
    const auto in = binding::ReadInput<kImportParams>(call.given);
    RequireDepartments(in);
    Session opened(call.arguments);
    ImportFrontEnd frontEnd(call, in);
    const std::string name = SourceName(in.file);
    Source source(in.file, call.terminal.in);
    source.RequireCsv();
    const std::optional<long> rows = call.terminal.errIsTerminal ? source.CountRows() : std::nullopt;
    CAConnect& conn = opened.Directory().Connection();
    CallOptions options = call.given.options;
    options.dryRun = in.dryRun;
    options.reason = in.reason.value_or(options.reason);
    Call work([&]() -> CAConnect& { return conn; }, frontEnd, options);
    ImportReport report;
    try {
        ImportUsers(work, {source.Stream(), name, rows},
                    {.update = in.update,
                     .allowPrivileges = in.allowPrivileges,
                     .departments = in.departments,
                     .makeView = in.makeView,
                     .makeGroups = !in.noNewGroups},
                    report);
        if (report.cutShort.empty()) {
            frontEnd.Outcomes().Finish();
        }
    } catch (const Error& e) {
        if (!frontEnd.IsBegun()) {
            throw;
        }
        frontEnd.HideProgress();
        throw Error(e.Code(), fmt::format("{}; {}", e.what(), frontEnd.Standing(report)));
    }
    if (frontEnd.IsBegun()) {
        frontEnd.HideProgress();
        const bool mayWrite = !in.dryRun || MayWrite(conn, ChooseUrl(call.arguments.db));
        Summarise(in, report, name, frontEnd.Outcomes().Name(), mayWrite, call.terminal.err);
    }
    if (!report.cutShort.empty()) {
        throw Error(ErrorCode::failed, fmt::format("{}; {}", report.cutShort, frontEnd.Standing(report)));
    }
    return report.CountOf(RowFate::failed) == 0 ? Exit::done : in.dryRun ? Exit::findings : Exit::rowsFailed;
}

constexpr LocalCommand kCommands[] = {
    {{.path = {"user", "import"},
      .summary = "add the users of a file, row by row",
      .examples = "  qvadmin user import people.csv --dry-run\n"
                  "  qvadmin user import people.csv\n"
                  "  qvadmin user import people.csv --update --result outcomes.csv\n"
                  "  qvadmin user import people.csv --departments Company --make-view --dry-run",
      .notes = &Notes,
      .effect = Effect::create,
      .duration = Duration::longRunning,
      .params = &InfosOf<kImportParams>},
     &ImportFile},
};

} // namespace

std::span<const LocalCommand> ImportCommands() { return kCommands; }

} // namespace console
