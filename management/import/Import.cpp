#include "management/import/Import.h"

#include "dbaccess/CAConnect.h"
#include "management/DatabaseError.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/import/CsvReader.h"
#include "management/users/UserDepartment.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace management {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostRows = 200;
constexpr std::size_t kMostBytes = std::size_t{2} * 1024 * 1024;
constexpr std::chrono::milliseconds kLongest(500);
constexpr std::array<std::string_view, 5> kResultColumns = {"line", "login", "id", "outcome", "reason"};
constexpr std::string_view kAdmin = "Admin";
constexpr std::string_view kByteBlanks = " \t";

/// A row of the file, read and checked by itself.
struct Row {
    long line = 0;
    std::string login;
    FieldValues values;
    std::string problem; ///< empty when the row is good so far
};

struct RowOutcome {
    RowFate fate = RowFate::failed;
    int id = 0; ///< 0 for none
    std::string reason;
    bool isPrivileged = false; ///< sets a privilege or concerns Admin, or would
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

// ---- The import -----------------------------------------------------------------------------------------------------

class Importer {
public:
    Importer(Call& call, const ImportSource& source, const ImportOptions& options, CsvReader& reader,
             const std::optional<CsvRecord>& first, ImportReport& report)
        : m_call(call),
          m_directory(call.Directory()),
          m_dryRun(call.Options().dryRun),
          m_source(source),
          m_options(options),
          m_report(report),
          m_reader(reader),
          m_header(first, source.name),
          m_lengths(LengthsOf(call.Connection(), "qv_User")),
          m_departments(OpenDepartments())
    {
    }

    void Run()
    {
        m_call.Front().TakeColumns({kResultColumns.begin(), kResultColumns.end()});
        while (!m_atEnd && !IsStopRequested()) {
            const std::vector<Row> rows = ReadBatch();
            ApplyAll(rows);
        }
        if (m_departments) {
            m_report.madeGroups = m_departments->MadeGroups();
            m_report.madeView = m_departments->MadeView();
        }
    }

private:
    [[nodiscard]] bool IsStopRequested() const { return m_call.Front().IsStopRequested(); }

    [[nodiscard]] std::optional<Departments> OpenDepartments() const
    {
        if (!m_options.departments) {
            return std::nullopt;
        }
        if (!m_header.Has(Department())) {
            throw Error(ErrorCode::invalid, fmt::format("{} has no column {}, which --departments needs", m_source.name,
                                                        Department().name));
        }
        return std::optional<Departments>(
            std::in_place, m_directory.Connection(),
            DepartmentOptions{*m_options.departments, m_dryRun, m_options.makeView, m_options.makeGroups});
    }

    static const Field& Department() { return *FindField("department"); }
    static const Field& DepartmentId() { return *FindField("department_id"); }

    // Rows are read before a transaction begins, so that a slow input never holds the database.
    std::vector<Row> ReadBatch()
    {
        std::vector<Row> rows;
        const Clock::time_point begin = Clock::now();
        std::size_t bytes = 0;
        while (rows.size() < kMostRows && bytes < kMostBytes && Clock::now() - begin < kLongest && !IsStopRequested()) {
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
        while (!rows.empty() && !IsStopRequested()) {
            rows = rows.subspan(m_dryRun ? Try(rows) : ApplySome(rows));
        }
    }

    /// @return how many rows were dealt with.
    std::size_t Try(std::span<const Row> rows)
    {
        for (const Row& row : rows) {
            Report(row, Apply(row));
        }
        Settle();
        return rows.size();
    }

    /// @return how many rows were dealt with.
    std::size_t ApplySome(std::span<const Row> rows)
    {
        std::vector<RowOutcome> outcomes;
        std::optional<Change> change(std::in_place, m_call);
        try {
            Begun();
            const Clock::time_point begin = Clock::now();
            do {
                outcomes.push_back(Apply(rows[outcomes.size()]));
            } while (outcomes.size() < rows.size() && Clock::now() - begin < kLongest && !IsStopRequested());
            change->Finish();
            Committed();
        } catch (const DatabaseError&) {
            if (!m_directory.Connection().IsOpen()) {
                throw;
            }
            change.reset();
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
        while (count < rows.size() && !IsStopRequested()) {
            const RowOutcome outcome = ApplyAlone(rows[count]);
            Report(rows[count], outcome);
            Settle();
            ++count;
        }
        return count;
    }

    RowOutcome ApplyAlone(const Row& row)
    {
        std::optional<Change> change(std::in_place, m_call);
        Begun();
        RowOutcome outcome;
        try {
            outcome = Apply(row);
        } catch (const DatabaseError& e) {
            if (e.IsLasting()) {
                throw;
            }
            change.reset();
            RefuseIfNotWritable();
            return {RowFate::failed, 0, e.what()};
        }
        change->Finish();
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
        Change change(m_call);
        m_directory.TryToWrite();
        change.Finish();
    }

    RowOutcome Apply(const Row& row)
    {
        if (!row.problem.empty()) {
            return {RowFate::failed, 0, row.problem};
        }
        try {
            return ApplyGood(row);
        } catch (const DatabaseError&) {
            throw;
        } catch (const Error& e) {
            return {RowFate::failed, 0, e.what()};
        }
    }

    RowOutcome ApplyGood(const Row& row)
    {
        const std::vector<UserKey> present = m_directory.FindAll(row.login);
        if (!present.empty() && !m_options.update) {
            return {RowFate::exists, present.front().id, {}};
        }
        if (present.empty()) {
            RequireFreeLogin(m_directory, row.login, std::nullopt);
        }
        const std::optional<UserKey> user =
            present.empty() ? std::nullopt : std::optional(FindUser(m_directory, "login:" + row.login));
        const FieldValues stored = user ? m_directory.Load(user->id).value_or(FieldValues()) : FieldValues();
        const std::string privileges = PrivilegesIn(row, stored);
        if (!privileges.empty() && !m_options.allowPrivileges) {
            return {RowFate::failed, 0, privileges + ", which needs --allow-privileges", true};
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
        RowOutcome outcome = user ? ApplyToPresent(*user, stored, values, group) : ApplyToNew(row.login, values, group);
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

    RowOutcome ApplyToNew(const std::string& login, const FieldValues& values, std::optional<ItemKey> group)
    {
        if (m_dryRun) {
            if (group) {
                m_departments->WouldEnter(*group, 0);
            }
            return {RowFate::created, 0, {}};
        }
        const int id = CreateUser(m_directory, login, values);
        if (group) {
            m_departments->Place(*group, id, 0, "");
        }
        return {RowFate::created, id, {}};
    }

    RowOutcome ApplyToPresent(const UserKey& user, const FieldValues& stored, const FieldValues& values,
                              std::optional<ItemKey> group)
    {
        const bool differed =
            m_dryRun ? WouldChange(user.id, stored, values, group) : SetValues(user.id, stored, values, group);
        return {differed ? RowFate::updated : RowFate::unchanged, user.id, {}};
    }

    bool WouldChange(int id, const FieldValues& stored, const FieldValues& values, std::optional<ItemKey> group)
    {
        const bool enters = group && m_departments->WouldEnter(*group, id);
        return Differs(stored, values) || enters;
    }

    bool SetValues(int id, const FieldValues& stored, const FieldValues& values, std::optional<ItemKey> group)
    {
        const bool changed = ChangeUser(m_directory, id, values);
        const bool moved =
            group && m_departments->Place(*group, id, DepartmentIdIn(stored), stored.at(&Department()).value_or(""));
        return changed || moved;
    }
    void Report(const Row& row, const RowOutcome& outcome)
    {
        const std::string_view fate = kRowFates.at(static_cast<std::size_t>(outcome.fate));
        ++m_report.counts.at(static_cast<std::size_t>(outcome.fate));
        ++m_report.rows;
        m_report.privileged += outcome.isPrivileged ? 1 : 0;
        m_report.lastLine = row.line;
        m_call.Row(std::int64_t{row.line}, TextValue(row.login),
                   outcome.id == 0 ? Value() : Value(std::int64_t{outcome.id}), TextValue(std::string(fate)),
                   TextValue(outcome.reason));
    }

    void Settle() { m_call.Front().ShowProgress(m_report.rows, m_source.rows); }

    Call& m_call;
    Directory& m_directory;
    bool m_dryRun;
    const ImportSource& m_source;
    const ImportOptions& m_options;
    ImportReport& m_report;
    CsvReader& m_reader;
    Header m_header;
    schema::ColumnLengths m_lengths;            // of users
    std::optional<Departments> m_departments;   // none unless the option is given
    std::optional<Organisation> m_organisation; // read when it is first needed
    std::unordered_map<std::string, long> m_seen;
    bool m_atEnd = false;
};

} // namespace

std::string ImportReport::Pace() const { return PaceText(Clock::now() - begin, rows); }

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

void ImportUsers(Call& call, const ImportSource& source, const ImportOptions& options, ImportReport& report)
{
    CsvReader reader(source.in);
    const auto noteIfCutShort = [&] {
        report.cutShort = call.Front().IsStopRequested() ? "stopped by a signal"
                          : reader.Failed()              ? fmt::format("{} cannot be read", source.name)
                                                         : "";
        return !report.cutShort.empty();
    };
    const std::optional<CsvRecord> first = reader.Next();
    if (noteIfCutShort()) {
        return;
    }
    Importer importer(call, source, options, reader, first, report);
    try {
        importer.Run();
    } catch (const DatabaseError& e) {
        throw Error(ErrorCode::database, fmt::format("stopped: {}", e.what()));
    }
    noteIfCutShort();
}

} // namespace management
