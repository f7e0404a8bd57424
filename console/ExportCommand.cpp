#include "console/DatabaseFiles.h"
#include "console/LocalCommand.h"
#include "console/OutputFile.h"
#include "console/Session.h"
#include "console/SourceFile.h"
#include "console/TerminalFrontEnd.h"
#include "console/Translation.h"
#include "console/Url.h"
#include "management/Text.h"
#include "management/exchange/Export.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <memory>
#include <optional>

namespace console {

namespace {

struct ExportInput {
    std::optional<std::string> file;
    std::optional<std::string> format;
    std::optional<std::string> in;
    std::optional<std::string> nouns;
    bool withPasswords = false;
    std::optional<std::string> base;
};

constexpr Param<ExportInput> kExportParams[] = {
    {"FILE", &ExportInput::file, Kind::file, "where to write; standard output if not given"},
    {"format", &ExportInput::format, Kind::choice,
     "json: everything, an object on each line; csv: the people, as `user import` takes them; ldif: people, groups and "
     "roles, for other directories; json if not given",
     OneOf{"json", "csv", "ldif"}},
    {"in", &ExportInput::in, Kind::holder, "only a view or group: what is below it, and the people there"},
    {"nouns", &ExportInput::nouns, Kind::text, "only these kinds of lines, such as users,groups,members"},
    {"with_passwords", &ExportInput::withPasswords, Kind::flag,
     "also passwords as they are stored, and the encryption key"},
    {"base", &ExportInput::base, Kind::text, "of the distinguished names of ldif, such as dc=example,dc=org"},
};

/// Writes what is exported to a file or standard output.
class ExportFrontEnd final : public TerminalFrontEnd {
public:
    ExportFrontEnd(const LocalCall& call, std::optional<std::string> file)
        : TerminalFrontEnd(kNoRow, call.given, Format::csv, call.terminal), m_call(call), m_path(std::move(file))
    {
    }

    /// @param firstLine  of such files.
    void Begin(const std::string& firstLine)
    {
        if (m_path && *m_path != kStandardStream) {
            m_file = std::make_unique<OutputFile>(OutputFile::Description{
                *m_path, "`qvadmin export FILE`", firstLine, DatabaseFiles(ChooseUrl(m_call.arguments.db))});
        } else {
            m_call.terminal.out << firstLine << '\n';
        }
    }

    void TakeColumns(std::vector<std::string> names) override { Begin(fmt::format("{}", fmt::join(names, ","))); }

    bool TakeRow(const std::vector<Value>& row) override
    {
        WriteCsvRow(TextsForPrograms(row), Stream());
        return true;
    }

    void ShowProgress(long done, std::optional<long> total) override
    {
        Flush();
        TerminalFrontEnd::ShowProgress(done, total);
    }

    [[nodiscard]] std::ostream& Stream() { return m_file ? m_file->Stream() : m_call.terminal.out; }

    void Flush()
    {
        if (m_file) {
            m_file->Flush();
            return;
        }
        m_call.terminal.out.flush();
    }

    /// Whether standard output takes no more. That is said when the program ends, but for who has read enough.
    [[nodiscard]] bool IsRefused() const { return !m_file && !m_call.terminal.out; }
    [[nodiscard]] bool IsStopRequested() const noexcept override
    {
        return IsRefused() || TerminalFrontEnd::IsStopRequested();
    }

    void Finish()
    {
        Flush();
        if (m_file) {
            m_file->Finish();
        }
    }

    /// Where what was written is, for sentences.
    [[nodiscard]] std::string Name() const { return m_file ? m_file->Name() : "standard output"; }

private:
    const LocalCall& m_call;
    std::optional<std::string> m_path;
    std::unique_ptr<OutputFile> m_file; // none for standard output
};

/// @throws Error (invalid) for options of another format.
void RequireOptionsOf(std::string_view format, const ExportInput& in)
{
    if (in.base && format != "ldif") {
        throw Error(ErrorCode::invalid, "--base is for --format ldif");
    }
    if (format != "json" && (in.nouns || in.withPasswords)) {
        throw Error(ErrorCode::invalid,
                    FillPattern("--{} is for --format json", in.nouns ? "nouns" : "with-passwords"));
    }
}

/// @return false when it was stopped.
bool WriteAll(Call& call, std::string_view format, const ExportOptions& options, ExportFrontEnd& frontEnd,
              ExportReport& report)
{
    if (format == "json") {
        frontEnd.Begin(ExportHead(call.Connection(), options));
        return ExportDirectory(
            call, options, [&](const std::string& line) { frontEnd.Stream() << line << '\n'; }, report);
    }
    if (format == "ldif") {
        frontEnd.Begin("version: 1");
        return ExportLdif(call, options, [&](const std::string& entry) { frontEnd.Stream() << entry; }, report);
    }
    return ExportPeople(call, options, report);
}

void Summarise(const ExportReport& report, std::string_view format, const std::string& name, std::ostream& err)
{
    if (report.leftOut > 0) {
        const auto leftOut = static_cast<std::uint64_t>(report.leftOut);
        err << Translated(
                   FillPlural("{} row was not exported, for they name what is gone; `qvadmin db check` lists them",
                              "{} rows were not exported, for they name what is gone; `qvadmin db check` lists them",
                              leftOut, leftOut))
            << '\n';
    }
    const std::string_view unit = format == "json" ? "line" : format == "csv" ? "user" : "entry";
    err << Translated(FillPattern("exported {} to {} ({})", Counted(static_cast<std::size_t>(report.lines), unit), name,
                                  PaceText(std::chrono::steady_clock::now() - report.begin, report.lines)))
        << '\n';
}

Exit Export(const LocalCall& call)
{
    const auto in = binding::ReadInput<kExportParams>(call.given);
    const std::string format = in.format.value_or("json");
    RequireOptionsOf(format, in);
    const ExportOptions options = {in.nouns ? SplitAtCommas(*in.nouns) : std::vector<std::string>(), in.in,
                                   in.withPasswords, in.base};
    Session session(call.arguments, Session::Indexes::leftAlone);
    ExportFrontEnd frontEnd(call, in.file);
    Call work([&]() -> CAConnect& { return session.Directory().Connection(); }, frontEnd, call.given.options);
    ExportReport report;
    const bool isDone = WriteAll(work, format, options, frontEnd, report);
    frontEnd.HideProgress();
    if (!isDone && !frontEnd.IsRefused()) {
        throw Error(ErrorCode::failed, FillPattern("stopped by a signal; {} is not whole", frontEnd.Name()));
    }
    frontEnd.Finish();
    if (frontEnd.IsRefused()) {
        return call.terminal.outIsClosed() ? Exit::done : Exit::failed;
    }
    Summarise(report, format, frontEnd.Name(), call.terminal.err);
    return Exit::done;
}

constexpr LocalCommand kExportCommands[] = {
    {{.path = {"export"},
      .summary = "write the directory to a file that `qvadmin import` reads",
      .examples = {"qvadmin export directory.jsonl", "qvadmin export --in /Company/Sales --nouns users,groups,members",
                   "qvadmin export people.csv --format csv",
                   "qvadmin export directory.ldif --format ldif --base dc=example,dc=org"},
      .duration = Duration::longRunning,
      .handler = {&InfosOf<kExportParams>}},
     &Export},
};

} // namespace

std::span<const LocalCommand> ExportCommands() { return kExportCommands; }

} // namespace console
