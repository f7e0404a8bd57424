#include "console/CommandOption.h"
#include "console/FileBuffer.h"
#include "console/Interrupt.h"
#include "console/LocalCommand.h"
#include "console/OtherUrl.h"
#include "console/Progress.h"
#include "console/Session.h"
#include "console/SourceFile.h"
#include "console/TerminalFrontEnd.h"
#include "console/Translation.h"
#include "console/Url.h"
#include "management/DatabaseError.h"
#include "management/Text.h"
#include "schema/Copy.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

namespace console {

namespace {

struct CopyInput {
    std::string target;
    bool parents = false;
};

constexpr Param<CopyInput> kCopyParams[] = {
    {"URL", &CopyInput::target, Kind::text, "the database to copy to, such as sqlite:PATH"},
    {"parents", &CopyInput::parents, Kind::flag, "make the directories above a SQLite file that are missing"}};

struct BackupInput {
    std::string file;
    bool parents = false;
};

constexpr Param<BackupInput> kBackupParams[] = {
    {"FILE", &BackupInput::file, Kind::file, "a file that is not there"},
    {"parents", &BackupInput::parents, Kind::flag, "make the directories above it that are missing"}};

struct RestoreInput {
    std::string file;
    bool replace = false;
    bool yes = false;
};

constexpr Param<RestoreInput> kRestoreParams[] = {
    {"FILE", &RestoreInput::file, Kind::file, "what `qvadmin db backup` has written"},
    {"replace", &RestoreInput::replace, Kind::flag, "also into a directory that has rows: all of them are deleted"},
    {"yes", &RestoreInput::yes, Kind::flag, kYesHelp}};

void RequireLastingFile(const std::string& url)
{
    constexpr std::string_view scheme = "sqlite:";
    if (!url.starts_with(scheme)) {
        return;
    }
    const std::optional<std::filesystem::path> file = SqliteFile(url);
    if (!file) {
        throw Error(ErrorCode::invalid, FillPattern("{} is gone when the copy ends; write sqlite:PATH", ShownUrl(url)));
    }
    std::error_code error;
    if (!MakesFile(url) && !std::filesystem::exists(*file, error) && !error) {
        throw Error(ErrorCode::database, FillPattern("there is no database {}; write {} to have it made",
                                                     Visible(file->native()), Visible(url.substr(0, url.find('?')))));
    }
}

/// The arguments of a command that would work on the target.
Arguments ForTarget(const Arguments& arguments, const std::string& url)
{
    Arguments target = arguments;
    target.db = url;
    RequireOtherUrl(*target.db, "the target");
    RequireLastingFile(*target.db);
    return target;
}

/// @param mayHaveRows  whether the target need not be empty. @return how many rows it has.
std::int64_t RequireUsable(CAConnect& from, CAConnect& to, const std::string& shown, bool mayHaveRows)
{
    const schema::State state = WithDatabaseErrors(to, [&] { return schema::Inspect(to).state; });
    if (state == schema::State::foreign) {
        throw Error(ErrorCode::database,
                    FillPattern("{} holds other tables than a directory's; nothing was copied", shown));
    }
    if (state == schema::State::newer) {
        throw Error(ErrorCode::database,
                    FillPattern("{} holds a directory made by a later qvadmin; nothing was copied", shown));
    }
    if (WithDatabaseErrors(from, [&] { return schema::IsSameDatabase(from, to); })) {
        throw Error(ErrorCode::conflict, FillPattern("{} is the database to be copied itself", shown));
    }
    const std::int64_t rows = WithDatabaseErrors(to, [&] { return schema::CountRows(to); });
    if (rows != 0 && !mayHaveRows) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} holds {} already, and only an empty one is copied to; nothing was copied", shown,
                                Counted(static_cast<std::size_t>(rows), "row")));
    }
    return rows;
}

/// The file of a target that is not there before the copy. Unless the copy succeeds, it is removed again.
class NewTarget {
public:
    NewTarget(const std::string& url, CAConnect& to) : m_to(to)
    {
        std::error_code error;
        if (MakesFile(url) && !std::filesystem::exists(*SqliteFile(url), error) && !error) {
            m_file = SqliteFile(url);
        }
    }
    NewTarget(const NewTarget&) = delete;
    NewTarget& operator=(const NewTarget&) = delete;
    ~NewTarget()
    {
        if (m_file && IsEmpty()) {
            m_to.Close();
            std::error_code ignored;
            for (const char* suffix : {"-wal", "-shm", "-journal", ""}) {
                std::filesystem::remove(m_file->native() + suffix, ignored);
            }
        }
    }

    void Keep() { m_file.reset(); }

private:
    // Another program may have filled it meanwhile.
    [[nodiscard]] bool IsEmpty() const noexcept
    {
        std::error_code error;
        if (!m_to.IsOpen()) {
            return std::filesystem::file_size(*m_file, error) == 0;
        }
        try {
            return schema::CountRows(m_to) == 0;
        } catch (...) { // its trouble is being reported already
            return false;
        }
    }

    CAConnect& m_to;
    std::optional<std::filesystem::path> m_file;
};

/// What is known of the target after a failure, to end a sentence with.
Sentence Summary(const CAConnect& to)
{
    return to.IsOpen()
               ? Translatable("nothing was copied, and the same command can be run again")
               : Translatable("the target has all or nothing, and the same command can be run again: it refuses "
                              "a target that has all");
}

/// Copies, showing how far it is. @throws Error that says what became of it.
class CopyRunner {
public:
    /// @param replaces  whether the rows of the target are deleted first.
    CopyRunner(CAConnect& from, CAConnect& to, Terminal& terminal, bool replaces = false)
        : m_from(from),
          m_to(to),
          m_terminal(terminal),
          m_progress(terminal),
          m_replaces(replaces),
          m_total(RowsToCome())
    {
    }

    schema::Copied Run()
    {
        schema::Copied copied = Copy();
        m_progress.Clear();
        if (copied.stopped) {
            throw Error(ErrorCode::failed, FillPattern("stopped by a signal; {}", Summary(m_to)));
        }
        return copied;
    }

    [[nodiscard]] std::string Pace(std::int64_t rows) const { return m_progress.Pace(static_cast<long>(rows)); }

private:
    [[nodiscard]] std::optional<long> RowsToCome() const
    {
        return WithDatabaseErrors(m_from, [&] { return static_cast<long>(schema::CountRows(m_from)); });
    }

    schema::Copied Copy()
    {
        const auto tell = [this](const schema::CopyState& state) {
            ReportState(state);
            return !Interrupt::Requested();
        };
        try {
            return m_replaces ? schema::Replace(m_from, m_to, tell) : schema::Copy(m_from, m_to, tell);
        } catch (const schema::CopyConflict& e) {
            m_progress.Clear();
            throw Error(ErrorCode::conflict, FillPattern("{}; nothing was copied", Visible(e.GetErrorText().View())));
        } catch (const schema::RowRefused& e) {
            Stop(e, Translatable("nothing was copied; mend it in the source and copy again"));
        } catch (const CAException& e) {
            Stop(e, Summary(m_to));
        }
    }

    /// @param advice  what to do unless the whole target is in trouble.
    [[noreturn]] void Stop(const CAException& e, const Sentence& advice)
    {
        m_progress.Clear();
        const DatabaseError error = ErrorFrom(m_to, e);
        const Sentence line = e.GetErrorCode().IsEmpty() ? Sentence(error.EngineLine()) : error.Why();
        throw Error(ErrorCode::database,
                    FillPattern("stopped: {}; {}", line, error.IsLasting() ? Summary(m_to) : advice));
    }

    void ReportState(const schema::CopyState& state)
    {
        m_progress.Show(static_cast<long>(state.rows), m_total);
        if (state.tableIsDone && state.tableRows != 0) {
            m_progress.Clear();
            m_terminal.err << fmt::format("{}: {}\n", state.table,
                                          Translated(Counted(static_cast<std::size_t>(state.tableRows), "row")));
        }
    }

    CAConnect& m_from;
    CAConnect& m_to;
    Terminal& m_terminal;
    Progress m_progress;
    bool m_replaces;
    std::optional<long> m_total;
};

void ReportOthers(const schema::Copied& copied, std::ostream& err)
{
    if (!copied.others.empty()) {
        err << Translated(FillPattern("not copied, being no tables of a directory: {}",
                                      Visible(fmt::format("{}", fmt::join(copied.others, ", ")))))
            << '\n';
    }
}

void WriteCopied(const LocalCall& context, const schema::Copied& copied, const std::string& target)
{
    WriteDone(context,
              {{"rows", static_cast<std::int64_t>(copied.rows)},
               {"tables", static_cast<std::int64_t>(copied.tables)},
               {"target", target}},
              true);
}

/// Copies the directory at hand to another database. @param report  says what was done, once the connection is closed.
template <class Report>
Exit CopyTo(const LocalCall& context, const std::string& url, bool parents, Report report)
{
    const Arguments target = ForTarget(context.arguments, url);
    Session source(context.arguments, Session::Indexes::leftAlone);
    CAConnect& from = source.Directory().Connection();
    PrepareDirectory(*target.db, parents);
    CAConnect to;
    NewTarget newTarget(*target.db, to);
    Connect(to, *target.db, target);
    RequireUsable(from, to, ShownUrl(*target.db), false);
    const Interrupt interrupt;
    *context.terminal.mayHaveChanged = true;
    WithDatabaseErrors(to, [&] { schema::Upgrade(to); });
    CopyRunner runner(from, to, context.terminal);
    const schema::Copied copied = runner.Run();
    newTarget.Keep();
    ReportOthers(copied, context.terminal.err);
    to.Close();
    report(copied, runner.Pace(copied.rows));
    return Exit::done;
}

Exit Copy(const LocalCall& context)
{
    const auto in = binding::ReadInput<kCopyParams>(context.given);
    return CopyTo(context, in.target, in.parents, [&](const schema::Copied& copied, const std::string& pace) {
        context.terminal.err << Translated(FillPattern("copied {} of {} tables from {} to {} ({})",
                                                       Counted(static_cast<std::size_t>(copied.rows), "row"),
                                                       copied.tables, ShownUrl(ChooseUrl(context.arguments.db)),
                                                       ShownUrl(in.target), pace))
                             << '\n';
        WriteCopied(context, copied, ShownUrl(in.target));
    });
}

// ---- Backups --------------------------------------------------------------------------------------------------------

/// The URL of a SQLite file.
std::string UrlOf(const std::string& file)
{
    std::string url = "sqlite:";
    for (const char ch : file) {
        url += ch == '%' ? "%25" : ch == '?' ? "%3F" : std::string(1, ch);
    }
    return url;
}

/// Nothing but what it says of itself is there under a name, not even a broken link.
bool IsThere(const std::string& path)
{
    std::error_code error;
    return std::filesystem::symlink_status(path, error).type() != std::filesystem::file_type::not_found;
}

/// @throws Error (invalid) for a name that no backup can have.
void RequireFileName(const std::string& file)
{
    if (file.empty() || file == kStandardStream) {
        throw Error(ErrorCode::invalid,
                    FillPattern("{} does not name a file; a backup is a SQLite file", Quoted(file)));
    }
}

Exit Backup(const LocalCall& context)
{
    const auto in = binding::ReadInput<kBackupParams>(context.given);
    RequireFileName(in.file);
    if (IsThere(in.file)) {
        throw Error(
            ErrorCode::conflict,
            FillPattern("{} is there already, and a backup replaces nothing; name another file", Visible(in.file)));
    }
    const std::string partial = in.file + ".partial"; // one that a killed run has left is empty, and used
    return CopyTo(context, UrlOf(partial), in.parents, [&](const schema::Copied& copied, const std::string& pace) {
        if (::link(partial.c_str(), in.file.c_str()) != 0 || ::unlink(partial.c_str()) != 0) {
            throw Error(ErrorCode::failed, FillPattern("the backup is in {} and cannot be named {}: {}",
                                                       Visible(partial), Visible(in.file), std::strerror(errno)));
        }
        context.terminal.err << Translated(FillPattern("backed up {} of {} tables from {} to {} ({})",
                                                       Counted(static_cast<std::size_t>(copied.rows), "row"),
                                                       copied.tables, ShownUrl(ChooseUrl(context.arguments.db)),
                                                       Visible(in.file), pace))
                             << '\n';
        WriteCopied(context, copied, in.file);
    });
}

/// @throws Error (failed) with the system's reason.
void RequireReadable(const std::string& file)
{
    ReadFile(file, [](FileBuffer& buffer) { return buffer.sgetc(); });
}

/// @throws Error for what cannot be restored.
void OpenBackup(CAConnect& conn, const std::string& file, Arguments arguments)
{
    RequireReadable(file);
    arguments.db = UrlOf(file);
    Connect(conn, *arguments.db + "?mode=ro", arguments);
    const schema::Status status = WithDatabaseErrors(conn, [&] { return schema::Inspect(conn); });
    if (status.state == schema::State::older) {
        throw Error(ErrorCode::database,
                    FillPattern("{} is of version {}, this program works with {}; run `{}` to upgrade it",
                                Visible(file), status.version, status.newest, InitCommand(arguments)));
    }
    if (status.state == schema::State::newer) {
        throw Error(ErrorCode::database, FillPattern("{} is of version {}, made by a later qvadmin; this one knows {}",
                                                     Visible(file), status.version, status.newest));
    }
    if (status.state != schema::State::current) {
        throw Error(ErrorCode::database,
                    FillPattern("{} is not a backup of a directory; nothing was restored", Visible(file)));
    }
}

Exit Restore(const LocalCall& context)
{
    const auto in = binding::ReadInput<kRestoreParams>(context.given);
    RequireFileName(in.file);
    CAConnect from;
    OpenBackup(from, in.file, context.arguments);
    Session target(context.arguments);
    CAConnect& to = target.Directory().Connection();
    const std::string shown = ShownUrl(ChooseUrl(context.arguments.db));
    const std::int64_t rows = RequireUsable(from, to, shown, true);
    if (rows != 0 && !in.replace) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} holds {}; nothing was restored. --replace deletes them, the record of changes too",
                                shown, Counted(static_cast<std::size_t>(rows), "row")));
    }
    if (rows != 0 && !in.yes) {
        TerminalFrontEnd frontEnd(kNoRow, context.given, context.arguments.format, context.terminal);
        Plan plan;
        plan.lines = {FillPattern("{} of {}", Counted(static_cast<std::size_t>(rows), "row"), shown)};
        plan.question = FillPattern("Delete all of this, and put {} in its place?", Visible(in.file));
        plan.removed = static_cast<std::size_t>(rows);
        plan.nothingDone = Translatable("nothing was restored");
        frontEnd.Confirm(plan);
    }
    const Interrupt interrupt;
    *context.terminal.mayHaveChanged = true;
    CopyRunner runner(from, to, context.terminal, rows != 0);
    const schema::Copied copied = runner.Run();
    ReportOthers(copied, context.terminal.err);
    context.terminal.err << Translated(FillPattern("restored {} of {} tables from {} to {} ({})",
                                                   Counted(static_cast<std::size_t>(copied.rows), "row"), copied.tables,
                                                   Visible(in.file), shown, runner.Pace(copied.rows)))
                         << '\n';
    WriteCopied(context, copied, shown);
    return Exit::done;
}

constexpr LocalCommand kCopyCommands[] = {
    {{.path = {"db", "copy"},
      .summary = "carry the whole directory over to another database, of any engine, with all ids",
      .examples = {"qvadmin db copy postgresql://quorvel@db1.example.org/directory",
                   "qvadmin --db mysql://quorvel@localhost/directory db copy sqlite:/srv/directory.db"},
      .effect = Effect::create,
      .duration = Duration::longRunning,
      .handler = {&InfosOf<kCopyParams>}},
     &Copy},
    {{.path = {"db", "backup"},
      .summary = "write the whole directory to a file, while others go on working",
      .examples = {"qvadmin db backup /srv/backups/directory.db"},
      .duration = Duration::longRunning,
      .handler = {&InfosOf<kBackupParams>}},
     &Backup},
    {{.path = {"db", "restore"},
      .summary = "put a backup into an empty directory, or, with --replace, in the place of all that is there",
      .examples = {"qvadmin --db sqlite:/srv/directory.db db restore /srv/backups/directory.db",
                   "qvadmin db restore backup.db --replace --yes"},
      .effect = Effect::change,
      .duration = Duration::longRunning,
      .handler = {&InfosOf<kRestoreParams>}},
     &Restore},
};

} // namespace

std::span<const LocalCommand> CopyCommands() { return kCopyCommands; }

} // namespace console
