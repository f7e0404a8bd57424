#include "console/Import.h"

#include "console/CsvReader.h"
#include "console/FileBuffer.h"
#include "console/FileFormat.h"
#include "console/Interrupt.h"
#include "console/Progress.h"
#include "console/Render.h"
#include "dbaccess/CAConnect.h"
#include "management/DatabaseError.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/organisation/Departments.h"
#include "management/users/UserDepartment.h"
#include "management/users/Users.h"
#include "schema/Privileges.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <span>
#include <unordered_map>
#include <utility>

namespace console {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostRows = 200;
constexpr std::size_t kMostBytes = std::size_t{2} * 1024 * 1024;
constexpr std::chrono::milliseconds kLongest(500);
constexpr std::string_view kStandardStream = "-";
constexpr std::string_view kResultSuffix = ".result.csv";
constexpr std::string_view kResultHeader = "line,login,id,outcome,reason";
constexpr std::string_view kAdmin = "Admin";
constexpr std::string_view kByteBlanks = " \t";

/// A row of the file, read and checked by itself.
struct Row {
    long line = 0;
    std::string login;
    FieldValues values;
    std::string problem; ///< empty when the row is good so far
};

struct Outcome {
    enum class Kind { created, updated, unchanged, exists, failed };

    Kind kind = Kind::failed;
    int id = 0; ///< 0 for none
    std::string reason;
    bool isPrivileged = false; ///< sets a privilege or concerns Admin, or would
};

struct OutcomeText {
    std::string_view name;      ///< in the result
    std::string_view inSummary; ///< follows a number
};

constexpr OutcomeText kOutcomes[] = {{"created", "created"},
                                     {"updated", "updated"},
                                     {"unchanged", "unchanged"},
                                     {"exists", "already there"},
                                     {"failed", "failed"}};

std::string_view NameOf(Outcome::Kind kind) { return kOutcomes[static_cast<std::size_t>(kind)].name; }

// ---- The file -------------------------------------------------------------------------------------------------------

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
    [[nodiscard]] std::string Name() const { return IsStandardInput() ? "standard input" : Visible(m_path); }

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
                        fmt::format("{}; nothing was imported",
                                    Interrupt::Requested() ? "stopped by a signal" : Name() + " cannot be read"));
        }
    }

    /// How many records there are, the header among them. Not known of what can be read only once.
    [[nodiscard]] std::optional<long> CountRecords() const
    {
        if (!IsRegularFile()) {
            return std::nullopt;
        }
        const std::unique_ptr<FileBuffer> buffer = Open();
        std::istream file(buffer.get());
        CsvReader reader(file);
        long count = 0;
        while (!Interrupt::Requested() && reader.Next()) {
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

// ---- The header -----------------------------------------------------------------------------------------------------

std::string Trimmed(const std::string& text)
{
    const std::size_t begin = text.find_first_not_of(kByteBlanks);
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(kByteBlanks) - begin + 1);
}

/// What the columns of the file are.
class Header {
public:
    /// @throws Error (invalid) for a header that cannot be used.
    Header(const std::optional<CsvRecord>& record, const std::string& file)
    {
        if (!record) {
            throw Error(ErrorCode::invalid, fmt::format("{} has no header row to name its columns", file));
        }
        if (!record->problem.empty()) {
            throw Error(ErrorCode::invalid, fmt::format("the header of {} cannot be read: {}", file, record->problem));
        }
        for (const std::string& name : record->fields) {
            Add(Trimmed(name), file);
        }
        if (!Has(Login())) {
            throw Error(ErrorCode::invalid, fmt::format("{} has no column login; known columns are {}", file,
                                                        fmt::join(ImportColumns(), ", ")));
        }
    }

    /// The row of a record; what is wrong with it stands in its problem.
    [[nodiscard]] Row Read(const CsvRecord& record) const
    {
        Row row{record.line, {}, {}, record.problem};
        if (!row.problem.empty()) {
            return row;
        }
        for (std::size_t i = 0; i < std::min(m_columns.size(), record.fields.size()); ++i) {
            Take(row, *m_columns[i], record.fields[i]);
        }
        if (record.fields.size() != m_columns.size()) {
            row.problem =
                fmt::format("{} where the header has {}", Counted(record.fields.size(), "value"), m_columns.size());
        }
        return row;
    }

    [[nodiscard]] bool Has(const Field& field) const { return std::ranges::find(m_columns, &field) != m_columns.end(); }

private:
    static const Field& Login() { return *FindField("login"); }

    void Add(const std::string& name, const std::string& file)
    {
        const Field* field = FindField(name);
        if (field == nullptr || (field != &Login() && field->use != Field::Use::given)) {
            const bool otherSeparator = name.find_first_of(";\t") != std::string::npos;
            throw Error(ErrorCode::invalid,
                        fmt::format("{} has an unknown column {}{}; known columns are {}", file, Quoted(name),
                                    otherSeparator ? " (values must be separated by commas)" : "",
                                    fmt::join(ImportColumns(), ", ")));
        }
        if (Has(*field)) {
            throw Error(ErrorCode::invalid, fmt::format("{} has the column {} twice", file, field->name));
        }
        m_columns.push_back(field);
    }

    /// An empty value says nothing about its column. The first problem of a row is the one to report.
    static void Take(Row& row, const Field& field, const std::string& text)
    {
        try {
            if (&field == &Login()) {
                row.login = text;
                CheckLogin(text);
            } else if (!text.empty()) {
                row.values[&field] = ParseValue(field, text);
            }
        } catch (const Error& e) {
            row.problem = row.problem.empty() ? e.what() : row.problem;
        }
    }

    std::vector<const Field*> m_columns;
};

// ---- The result file ------------------------------------------------------------------------------------------------

class ResultFile {
public:
    ResultFile(const ImportOptions& options, std::ostream& standardOutput) : m_out(standardOutput)
    {
        const bool fromStandardInput = options.file == kStandardStream;
        const std::string path =
            options.result.value_or(fromStandardInput ? options.file : options.file + std::string(kResultSuffix));
        if (path != kStandardStream) {
            OpenFile(path, options);
            return;
        }
        m_out << kResultHeader << '\n';
        Flush("and nothing was imported");
    }

    void Write(const Row& row, const Outcome& outcome)
    {
        WriteCsvRow({std::to_string(row.line), row.login, outcome.id == 0 ? "" : std::to_string(outcome.id),
                     std::string(NameOf(outcome.kind)), outcome.reason},
                    m_file ? m_file->Stream() : m_out);
    }

    /// @throws Error when the file does not hold what was written. @param consequence  ends the sentence.
    void Flush(const std::string& consequence)
    {
        if (m_file) {
            Ending(consequence, [this] { m_file->Flush(); });
            return;
        }
        m_out.flush();
        if (!m_out) {
            throw Error(ErrorCode::failed, "cannot write the outcomes to standard output; " + consequence);
        }
    }

    /// All rows are written. @throws as Flush does.
    void Finish(const std::string& consequence)
    {
        if (m_file) {
            Ending(consequence, [this] { m_file->Finish(); });
        }
    }

    /// Where the outcomes written so far are, for sentences.
    [[nodiscard]] std::string Name() const { return m_file ? m_file->Name() : "standard output"; }
    [[nodiscard]] bool IsFile() const { return m_file != nullptr; }

private:
    void OpenFile(const std::string& path, const ImportOptions& options)
    {
        std::vector<OutputFile::InUse> inUse = options.inUse;
        if (options.file != kStandardStream) {
            inUse.push_back({options.file, "the file to import"});
        }
        Ending("nothing was imported", [&] {
            m_file = std::make_unique<OutputFile>(
                OutputFile::Description{path, "--result", std::string(kResultHeader), std::move(inUse)});
        });
    }

    template <class Body>
    static void Ending(const std::string& consequence, Body body)
    {
        try {
            body();
        } catch (const Error& e) {
            throw Error(e.Code(), fmt::format("{}; {}", e.what(), consequence));
        }
    }

    std::ostream& m_out;
    std::unique_ptr<OutputFile> m_file; // none for standard output
};

// ---- The import -----------------------------------------------------------------------------------------------------

class Importer {
public:
    Importer(Directory& directory, const ImportOptions& options, Terminal& terminal)
        : m_directory(directory),
          m_options(options),
          m_terminal(terminal),
          m_source(options.file, terminal.in),
          m_reader(m_source.Stream()),
          m_header(FirstRecord(), m_source.Name()),
          m_lengths(LengthsOf(directory.Connection(), "qv_User")),
          m_departments(OpenDepartments()),
          m_result(options, terminal.out),
          m_progress(terminal, RowsToCome())
    {
    }

    Exit Run()
    {
        while (!m_atEnd && !Interrupt::Requested()) {
            const std::vector<Row> rows = ReadBatch();
            ApplyAll(rows);
        }
        m_progress.Clear();
        if (!IsCutShort()) {
            m_result.Finish(Standing());
        }
        Summarise();
        RefuseIfCutShort();
        if (Failed() == 0) {
            return Exit::done;
        }
        return m_options.dryRun ? Exit::findings : Exit::rowsFailed;
    }

    /// Where the import stands, to end a sentence with.
    [[nodiscard]] std::string Standing() const
    {
        if (m_options.dryRun || m_lastLine == 0) {
            return "nothing was imported";
        }
        return fmt::format("the rows up to line {} are done{}, and the same file can be imported again", m_lastLine,
                           m_result.IsFile() ? " and listed in " + m_result.Name() : "");
    }

    void ClearProgress() { m_progress.Clear(); }

private:
    std::optional<CsvRecord> FirstRecord()
    {
        m_source.RequireCsv();
        std::optional<CsvRecord> record = m_reader.Next();
        RefuseIfCutShort();
        return record;
    }

    [[nodiscard]] std::optional<Departments> OpenDepartments() const
    {
        if (!m_options.departments) {
            return std::nullopt;
        }
        if (!m_header.Has(Department())) {
            throw Error(ErrorCode::invalid, fmt::format("{} has no column {}, which --departments needs",
                                                        m_source.Name(), Department().name));
        }
        return std::optional<Departments>(
            std::in_place, m_directory.Connection(),
            DepartmentOptions{*m_options.departments, m_options.dryRun, m_options.makeView, m_options.makeGroups});
    }

    static const Field& Department() { return *FindField("department"); }
    static const Field& DepartmentId() { return *FindField("department_id"); }

    [[nodiscard]] std::optional<long> RowsToCome() const
    {
        const std::optional<long> records = m_terminal.errIsTerminal ? m_source.CountRecords() : std::nullopt;
        return records ? std::optional(*records - 1) : std::nullopt;
    }

    // Rows are read before a transaction begins, so that a slow input never holds the database.
    std::vector<Row> ReadBatch()
    {
        std::vector<Row> rows;
        const Clock::time_point begin = Clock::now();
        std::size_t bytes = 0;
        while (rows.size() < kMostRows && bytes < kMostBytes && Clock::now() - begin < kLongest &&
               !Interrupt::Requested()) {
            const std::optional<CsvRecord> record = m_reader.Next();
            if (!record) {
                m_atEnd = true;
                break;
            }
            for (const std::string& field : record->fields) {
                bytes += field.size();
            }
            rows.push_back(m_header.Read(*record));
            RefuseRepeated(rows.back());
        }
        return rows;
    }

    void RefuseRepeated(Row& row)
    {
        if (row.login.empty()) {
            return;
        }
        const auto [first, isNew] = m_seen.emplace(NameKey(row.login), row.line);
        if (!isNew && row.problem.empty()) {
            row.problem = fmt::format("the login name {} stands in line {} already", Quoted(row.login), first->second);
        }
    }

    void ApplyAll(std::span<const Row> rows)
    {
        while (!rows.empty() && !Interrupt::Requested()) {
            rows = rows.subspan(m_options.dryRun ? Try(rows) : ApplySome(rows));
        }
    }

    /// @return how many rows were dealt with, as do the next two.
    std::size_t Try(std::span<const Row> rows)
    {
        for (const Row& row : rows) {
            Report(row, Apply(row));
        }
        Settle();
        return rows.size();
    }

    std::size_t ApplySome(std::span<const Row> rows)
    {
        std::vector<Outcome> outcomes;
        Transaction transaction(m_directory.Connection());
        try {
            Begun();
            const Clock::time_point begin = Clock::now();
            do {
                outcomes.push_back(Apply(rows[outcomes.size()]));
            } while (outcomes.size() < rows.size() && Clock::now() - begin < kLongest && !Interrupt::Requested());
            transaction.Commit();
            Committed();
        } catch (const DatabaseError&) {
            if (!m_directory.Connection().IsOpen()) {
                throw;
            }
            transaction.Rollback();
            // Which row the engine refused, and whether the others stand, shows when each is done by itself.
            return ApplyOneByOne(rows.first(std::min(outcomes.size() + 1, rows.size())));
        }
        for (std::size_t i = 0; i < outcomes.size(); ++i) {
            Report(rows[i], outcomes[i]);
        }
        Settle();
        return outcomes.size();
    }

    std::size_t ApplyOneByOne(std::span<const Row> rows)
    {
        std::size_t count = 0;
        while (count < rows.size() && !Interrupt::Requested()) {
            const Outcome outcome = ApplyAlone(rows[count]);
            Report(rows[count], outcome);
            Settle();
            ++count;
        }
        return count;
    }

    Outcome ApplyAlone(const Row& row)
    {
        Transaction transaction(m_directory.Connection());
        Begun();
        Outcome outcome;
        try {
            outcome = Apply(row);
        } catch (const DatabaseError& e) {
            if (e.IsLasting()) {
                throw;
            }
            transaction.Rollback();
            RefuseIfNotWritable();
            return {Outcome::Kind::failed, 0, e.what()};
        }
        transaction.Commit();
        Committed();
        return outcome;
    }

    void Begun()
    {
        if (m_departments) {
            m_departments->Begin();
        }
    }

    void Committed()
    {
        if (m_departments) {
            m_departments->Committed();
        }
    }

    void RefuseIfNotWritable()
    {
        Transaction transaction(m_directory.Connection());
        m_directory.TryToWrite();
        transaction.Commit();
    }

    Outcome Apply(const Row& row)
    {
        if (!row.problem.empty()) {
            return {Outcome::Kind::failed, 0, row.problem};
        }
        try {
            return ApplyGood(row);
        } catch (const DatabaseError&) {
            throw;
        } catch (const Error& e) {
            return {Outcome::Kind::failed, 0, e.what()};
        }
    }

    Outcome ApplyGood(const Row& row)
    {
        const std::vector<UserKey> present = m_directory.FindAll(row.login);
        if (!present.empty() && !m_options.update) {
            return {Outcome::Kind::exists, present.front().id, {}};
        }
        if (present.empty()) {
            RequireFreeLogin(m_directory, row.login, std::nullopt);
        }
        const std::optional<UserKey> user =
            present.empty() ? std::nullopt : std::optional(FindUser(m_directory, "login:" + row.login));
        const FieldValues stored = user ? m_directory.Load(user->id).value_or(FieldValues()) : FieldValues();
        const std::string privileges = PrivilegesIn(row, stored);
        if (!privileges.empty() && !m_options.allowPrivileges) {
            return {Outcome::Kind::failed, 0, privileges + ", which needs --allow-privileges", true};
        }
        RequireLengths(row);
        if (user && !m_departments) {
            RequireDepartmentText(*user, row, stored);
        }
        FieldValues values = row.values;
        // Groups are made for nothing but a row that is otherwise good.
        const std::optional<ItemKey> group = FindDepartment(row);
        if (group) {
            values[&DepartmentId()] = std::to_string(group->id);
        }
        Outcome outcome = user ? ApplyToPresent(*user, stored, values, group) : ApplyToNew(row.login, values, group);
        outcome.isPrivileged = !privileges.empty();
        return outcome;
    }

    /// What a row would do to privileges, for a sentence; empty for nothing. @param stored  the user's columns, empty
    /// for a user who is still to be added.
    static std::string PrivilegesIn(const Row& row, const FieldValues& stored)
    {
        std::string changed;
        for (const Field& field : Fields()) {
            const auto given = row.values.find(&field);
            if (!IsPrivilege(field) || given == row.values.end()) {
                continue;
            }
            const auto before = stored.find(&field);
            const std::string present = before == stored.end() ? "" : before->second.value_or("");
            if (given->second != (present.empty() ? "0" : present)) {
                changed += fmt::format("{} {}", changed.empty() ? "changes" : " and", field.name);
            }
        }
        const bool isAdmin = SameName(row.login, kAdmin);
        if (isAdmin && (stored.empty() || Differs(stored, row.values))) {
            return stored.empty() ? "adds the built-in administrator" : "changes the built-in administrator";
        }
        return changed;
    }

    void RequireLengths(const Row& row) const
    {
        const std::string login = TooLong(m_lengths, TextFor{"login", FindField("login")->column, row.login});
        const std::string problem = login.empty() ? TooLong(m_lengths, row.values) : login;
        if (!problem.empty()) {
            throw Error(ErrorCode::invalid, problem);
        }
    }

    /// @throws Error for another text of a department that the user is a member of.
    void RequireDepartmentText(const UserKey& user, const Row& row, const FieldValues& stored)
    {
        const auto given = row.values.find(&Department());
        if (given == row.values.end() || stored.at(&Department()).value_or("") == given->second) {
            return;
        }
        if (!m_organisation) {
            m_organisation.emplace(m_directory.Connection());
        }
        Roles roles(m_directory.Connection());
        const std::vector<ItemKey> groups = DepartmentGroups(*m_organisation, roles, user.id, stored);
        if (!groups.empty()) {
            throw Error(ErrorCode::conflict,
                        fmt::format("the department changes, and {} would stay a member of {}; give "
                                    "--departments VIEW, and both change",
                                    Visible(user.login), m_organisation->Named(groups.front())));
        }
    }

    static bool IsPrivilege(const Field& field)
    {
        return field.name == "super" || field.name == "system" || field.name == "locked";
    }

    /// The group of a row's department; none when there is nothing to be placed.
    std::optional<ItemKey> FindDepartment(const Row& row)
    {
        const auto path = row.values.find(&Department());
        return m_departments && path != row.values.end() ? std::optional(m_departments->Find(path->second.value_or("")))
                                                         : std::nullopt;
    }

    Outcome ApplyToNew(const std::string& login, const FieldValues& values, std::optional<ItemKey> group)
    {
        if (m_options.dryRun) {
            if (group) {
                m_departments->WouldEnter(*group, 0);
            }
            return {Outcome::Kind::created, 0, {}};
        }
        const int id = CreateUser(m_directory, login, values);
        if (group) {
            m_departments->Place(*group, id, 0, "");
        }
        return {Outcome::Kind::created, id, {}};
    }

    Outcome ApplyToPresent(const UserKey& user, const FieldValues& stored, const FieldValues& values,
                           std::optional<ItemKey> group)
    {
        const bool differed =
            m_options.dryRun ? WouldChange(user.id, stored, values, group) : Change(user.id, stored, values, group);
        return {differed ? Outcome::Kind::updated : Outcome::Kind::unchanged, user.id, {}};
    }

    bool WouldChange(int id, const FieldValues& stored, const FieldValues& values, std::optional<ItemKey> group)
    {
        const bool enters = group && m_departments->WouldEnter(*group, id);
        return Differs(stored, values) || enters;
    }

    bool Change(int id, const FieldValues& stored, const FieldValues& values, std::optional<ItemKey> group)
    {
        const bool changed = ChangeUser(m_directory, id, values);
        const bool moved =
            group && m_departments->Place(*group, id, DepartmentIdIn(stored), stored.at(&Department()).value_or(""));
        return changed || moved;
    }

    void Report(const Row& row, const Outcome& outcome)
    {
        m_result.Write(row, outcome);
        ++m_counts[static_cast<std::size_t>(outcome.kind)];
        ++m_done;
        m_privileged += outcome.isPrivileged ? 1 : 0;
        m_lastLine = row.line;
        if (outcome.kind == Outcome::Kind::failed) {
            m_progress.Clear();
            m_terminal.err << fmt::format("{}:{}: {}\n", m_source.Name(), row.line, outcome.reason);
        }
    }

    void Settle()
    {
        m_result.Flush(Standing());
        m_progress.Show(m_done);
    }

    [[nodiscard]] long CountOf(Outcome::Kind kind) const { return m_counts[static_cast<std::size_t>(kind)]; }
    [[nodiscard]] long Failed() const { return CountOf(Outcome::Kind::failed); }

    void Summarise()
    {
        std::string parts;
        for (std::size_t i = 0; i < m_counts.size(); ++i) {
            parts += fmt::format("{}{} {}", parts.empty() ? "" : ", ", m_counts[i], kOutcomes[i].inSummary);
        }
        m_terminal.err << fmt::format("{}{} of {}: {} ({}); the outcome of each is in {}\n",
                                      m_options.dryRun ? "dry run, nothing was changed: " : "",
                                      Counted(static_cast<std::size_t>(m_done), "row"), m_source.Name(), parts,
                                      m_progress.Pace(m_done), m_result.Name());
        if (m_options.dryRun && !MayWrite()) {
            m_terminal.err
                << "warning: this account cannot add and change users, by what the database says of its rights; "
                   "without --dry-run nothing would be imported\n";
        }
        SummariseDepartments();
        if (m_privileged > 0) {
            m_terminal.err << fmt::format("privileges: {} super, system, locked or Admin{}\n",
                                          m_privileged == 1 ? "1 row changes"
                                                            : fmt::format("{} rows change", m_privileged),
                                          m_options.allowPrivileges ? "" : "; --allow-privileges allows it");
        }
        if (CountOf(Outcome::Kind::exists) > 0) {
            m_terminal.err << "users who were already there were left as they are; --update sets their columns\n";
        }
        if (Failed() > 0) {
            m_terminal.err << fmt::format("qvadmin: {} of {} {}; mend and import them again\n", Failed(),
                                          Counted(static_cast<std::size_t>(m_done), "row"),
                                          m_options.dryRun ? "would fail" : "failed");
        }
    }

    [[nodiscard]] bool MayWrite() const
    {
        CAConnect& conn = m_directory.Connection();
        return !m_options.isReadOnly && WithDatabaseErrors(conn, [&] { return schema::MayWrite(conn); });
    }

    void SummariseDepartments()
    {
        if (!m_departments) {
            return;
        }
        const std::vector<NewGroup> groups = m_departments->MadeGroups();
        const std::optional<std::string> view = m_departments->MadeView();
        m_terminal.err << fmt::format("departments: {} {}{}\n", m_options.dryRun ? "would make" : "made",
                                      Counted(groups.size(), "group"), view ? " and the view " + Visible(*view) : "");
        for (const NewGroup& group : groups) {
            m_terminal.err << fmt::format("  {}: {}\n", Visible(group.path), Counted(group.users, "user"));
        }
    }

    [[nodiscard]] bool IsCutShort() const { return Interrupt::Requested() || m_reader.Failed(); }

    void RefuseIfCutShort() const
    {
        if (Interrupt::Requested()) {
            throw Error(ErrorCode::failed, "stopped by a signal; " + Standing());
        }
        if (m_reader.Failed()) {
            throw Error(ErrorCode::failed, fmt::format("{} cannot be read; {}", m_source.Name(), Standing()));
        }
    }

    Directory& m_directory;
    const ImportOptions& m_options;
    Terminal& m_terminal;
    long m_done = 0;
    long m_lastLine = 0; // 0 before the first row
    long m_privileged = 0;
    Source m_source;
    CsvReader m_reader;
    Header m_header;
    schema::ColumnLengths m_lengths;            // of users
    std::optional<Departments> m_departments;   // none unless the option is given
    std::optional<Organisation> m_organisation; // read when it is first needed
    ResultFile m_result;
    Progress m_progress;
    std::unordered_map<std::string, long> m_seen;
    std::array<long, std::size(kOutcomes)> m_counts{};
    bool m_atEnd = false;
};

} // namespace

std::vector<std::string_view> ImportColumns()
{
    std::vector<std::string_view> columns = {"login"};
    for (const Field& field : Fields()) {
        if (field.use == Field::Use::given) {
            columns.push_back(field.name);
        }
    }
    return columns;
}

Exit ImportUsers(Directory& directory, const ImportOptions& options, Terminal& terminal)
{
    const Interrupt interrupt;
    Importer importer(directory, options, terminal);
    try {
        return importer.Run();
    } catch (const DatabaseError& e) {
        importer.ClearProgress();
        throw Error(ErrorCode::database, fmt::format("stopped: {}; {}", e.what(), importer.Standing()));
    }
}

} // namespace console
