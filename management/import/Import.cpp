#include "management/import/Import.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "management/DatabaseError.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/import/CsvReader.h"
#include "management/import/SeenLogins.h"
#include "management/import/Synchronisation.h"
#include "management/import/UserBlock.h"
#include "management/organisation/Links.h"
#include "management/users/UserDepartment.h"
#include "management/users/UserRows.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace management {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMostRows = 256;
constexpr std::size_t kMostBytes = std::size_t{2} * 1024 * 1024;
constexpr std::array<std::string_view, 5> kResultColumns = {"line", "login", "id", "outcome", "reason"};
constexpr std::string_view kAdmin = "Admin";
constexpr std::string_view kByteBlanks = " \t";

/// A row of the file, read and checked by itself.
struct Row {
    long line = 0;
    std::string login;
    std::string key; ///< by which the login name is compared
    FieldValues values;
    std::string problem;                    ///< empty when the row is good so far
    std::vector<const Field*> emptied = {}; ///< of a user who is there
    CsvRecord record = {};                  ///< as the file has it, where failed rows are wanted
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

// Looked up once.
const Field& Login()
{
    static const Field& field = *FindField("login");
    return field;
}
const Field& Department()
{
    static const Field& field = *FindField("department");
    return field;
}
const Field& DepartmentId()
{
    static const Field& field = *FindField("department_id");
    return field;
}
const Field& Birthday()
{
    static const Field& field = *FindField("birthday");
    return field;
}

bool IsImported(const Field& field) { return field.use == Field::Use::given || field.use == Field::Use::changed; }

/// What an insert leaves out, and is not as it would be anyway.
FieldValues LeftOutByInsert(const FieldValues& values)
{
    FieldValues leftOut;
    std::ranges::copy_if(values, std::inserter(leftOut, leftOut.end()), [](const auto& value) {
        return value.first->use == Field::Use::changed && value.second != "0";
    });
    return leftOut;
}

/// Reads dates of a form such as DD.MM.YYYY.
class DateFormat {
public:
    /// @param form  empty for YYYY-MM-DD. @throws Error (invalid) unless it has a day, a month and a year.
    explicit DateFormat(std::string form) : m_form(std::move(form))
    {
        const bool isWhole = std::ranges::all_of(std::array{"DD", "MM", "YYYY"}, [this](const char* part) {
            return m_form.find(part) != std::string::npos && m_form.find(part) == m_form.rfind(part);
        });
        if (!m_form.empty() && !isWhole) {
            throw Error(ErrorCode::invalid,
                        fmt::format("{} is not a form of dates; write DD, MM and YYYY, each once, such as DD.MM.YYYY",
                                    Quoted(m_form)));
        }
    }

    /// The date as ParseValue takes it. A day and a month may have one digit. @throws Error (invalid) for another form.
    [[nodiscard]] std::string Converted(const Field& field, const std::string& text) const
    {
        if (m_form.empty()) {
            return text;
        }
        std::map<char, int> parts;
        std::size_t at = 0;
        bool isGood = true;
        for (std::size_t i = 0; i < m_form.size() && isGood;) {
            const std::string_view form = std::string_view(m_form).substr(i);
            const std::size_t length = form.starts_with("YYYY")                           ? 4
                                       : form.starts_with("DD") || form.starts_with("MM") ? 2
                                                                                          : 0;
            if (length == 0) {
                isGood = at < text.size() && text[at++] == form.front();
                ++i;
                continue;
            }
            std::size_t digits = 0;
            while (digits < length && at < text.size() && text[at] >= '0' && text[at] <= '9') {
                parts[form.front()] = parts[form.front()] * 10 + (text[at++] - '0');
                ++digits;
            }
            isGood = length == 4 ? digits == 4 : digits > 0;
            i += length;
        }
        if (!isGood || at != text.size()) {
            throw Error(ErrorCode::invalid, fmt::format("{} {} is not a date ({})", field.name, Quoted(text), m_form));
        }
        return fmt::format("{:04}-{:02}-{:02}", parts['Y'], parts['M'], parts['D']);
    }

private:
    std::string m_form;
};

/// What the columns of the file are.
class Header {
public:
    /// @throws Error (invalid) for a header that cannot be used.
    Header(const std::optional<CsvRecord>& record, const std::string& file, const ColumnOptions& options)
        : m_options(options), m_dates(options.dateFormat)
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
        for (const auto& [name, column] : options.names) {
            if (!m_mapped.contains(NameKey(name))) {
                throw Error(ErrorCode::invalid, fmt::format("{} has no column {} that --map could rename to {}", file,
                                                            Quoted(name), column));
            }
        }
        if (!Has(Login())) {
            throw Error(ErrorCode::invalid, fmt::format("{} has no column login; known columns are {}", file,
                                                        fmt::join(ImportColumns(), ", ")));
        }
    }

    /// The row of a record; what is wrong with it is in its problem.
    [[nodiscard]] Row Read(const CsvRecord& record) const
    {
        Row row{record.line, {}, {}, {}, record.problem};
        if (!row.problem.empty()) {
            return row;
        }
        for (std::size_t i = 0; i < std::min(m_columns.size(), record.fields.size()); ++i) {
            if (m_columns[i] != nullptr) {
                Take(row, *m_columns[i], record.fields[i]);
            }
        }
        if (record.fields.size() != m_columns.size()) {
            row.problem =
                fmt::format("{} where the header has {}", Counted(record.fields.size(), "value"), m_columns.size());
        }
        return row;
    }

    [[nodiscard]] bool Has(const Field& field) const { return std::ranges::find(m_columns, &field) != m_columns.end(); }

    /// The columns of users that rows are compared with: those of the file, and what tells of their departments.
    [[nodiscard]] std::vector<const Field*> Compared() const
    {
        std::vector<const Field*> fields = m_columns;
        std::erase(fields, &Login());
        std::erase(fields, nullptr);
        for (const Field* field : {&Department(), &DepartmentId()}) {
            if (!Has(*field)) {
                fields.push_back(field);
            }
        }
        return fields;
    }

private:
    void Add(const std::string& name, const std::string& file)
    {
        const Field* field = FindField(Renamed(name));
        if (field == nullptr || (field != &Login() && !IsImported(*field))) {
            if (m_options.ignoreUnknown && !m_mapped.contains(NameKey(name))) {
                m_columns.push_back(nullptr);
                return;
            }
            const bool otherSeparator = name.find_first_of(";\t") != std::string::npos;
            throw Error(ErrorCode::invalid,
                        fmt::format("{} has an unknown column {}{}; known columns are {}", file, Quoted(Renamed(name)),
                                    otherSeparator ? " (values must be separated by commas, or give --delimiter)" : "",
                                    fmt::join(ImportColumns(), ", ")));
        }
        if (Has(*field)) {
            throw Error(ErrorCode::invalid, fmt::format("{} has the column {} twice", file, field->name));
        }
        m_columns.push_back(field);
    }

    /// The name of a column as ImportColumns may have it.
    std::string Renamed(const std::string& name)
    {
        for (const auto& [from, to] : m_options.names) {
            if (SameName(from, name)) {
                m_mapped.insert(NameKey(name));
                return to;
            }
        }
        return name;
    }

    /// An empty value says nothing about its column, or empties it. The first problem of a row is the one to report.
    void Take(Row& row, const Field& field, const std::string& text) const
    {
        try {
            if (&field == &Login()) {
                row.login = text;
                row.key = NameKey(text);
                CheckLogin(text);
            } else if (!text.empty()) {
                row.values[&field] = ParseValue(field, field.IsDate() ? m_dates.Converted(field, text) : text);
            } else if (m_options.clearEmpty && &field != &Department() && (field.IsText() || field.IsDate())) {
                row.emptied.push_back(&field);
            }
        } catch (const Error& e) {
            row.problem = row.problem.empty() ? e.what() : row.problem;
        }
    }

    const ColumnOptions& m_options;
    DateFormat m_dates;
    std::set<std::string> m_mapped;      // folded names of columns that were renamed
    std::vector<const Field*> m_columns; // null for those that are ignored
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
          m_first(first.value_or(CsvRecord())),
          m_header(first, source.name, options.columns),
          m_compared(m_header.Compared()),
          m_lengths(LengthsOf(call.Connection(), "qv_User")),
          m_roles(call.Connection()),
          m_departments(OpenDepartments())
    {
    }

    void Run()
    {
        m_call.Front().TakeColumns({kResultColumns.begin(), kResultColumns.end()});
        if (m_options.takeFailed) {
            m_options.takeFailed(m_first);
        }
        m_seen.emplace();
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

    // Rows are read before a transaction begins, so that a slow input never holds the database.
    std::vector<Row> ReadBatch()
    {
        std::vector<Row> rows;
        const Clock::time_point begin = Clock::now();
        std::size_t bytes = 0;
        while (rows.size() < kMostRows && bytes < kMostBytes && Clock::now() - begin < m_options.longestBlock &&
               !IsStopRequested()) {
            const std::optional<CsvRecord> record = m_reader.Next();
            if (!record) {
                m_atEnd = true;
                break;
            }
            for (const std::string& field : record->fields) {
                bytes += field.size();
            }
            rows.push_back(m_header.Read(*record));
            if (m_options.takeFailed) {
                rows.back().record = *record;
            }
            RefuseRepeated(rows.back());
        }
        return rows;
    }

    void RefuseRepeated(Row& row)
    {
        if (row.login.empty()) {
            return;
        }
        const std::optional<long> first = m_seen->Add(row.key, row.line);
        if (first && row.problem.empty()) {
            row.problem = fmt::format("the login name {} is in line {} already", Quoted(row.login), *first);
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
        ReadBlock(rows);
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
        bool isDone = false;
        try {
            Begun();
            ReadBlock(rows);
            const Clock::time_point begin = Clock::now();
            do {
                outcomes.push_back(Apply(rows[outcomes.size()]));
            } while (outcomes.size() < rows.size() && Clock::now() - begin < m_options.longestBlock &&
                     !IsStopRequested());
            if (WriteBlock(rows, outcomes)) {
                change->Finish();
                Committed();
                isDone = true;
            }
        } catch (const DatabaseError&) {
            if (!m_directory.Connection().IsOpen()) {
                throw;
            }
        }
        if (!isDone) {
            change.reset();
            // Which row the engine refused, and whether the others last, shows when each is done by itself.
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
            const RowOutcome outcome = ApplyAlone(rows.subspan(count, 1));
            Report(rows[count], outcome);
            Settle();
            ++count;
        }
        return count;
    }

    /// @param rows  one.
    RowOutcome ApplyAlone(std::span<const Row> rows)
    {
        std::optional<Change> change(std::in_place, m_call);
        Begun();
        std::vector<RowOutcome> outcomes;
        try {
            ReadBlock(rows);
            m_isAlone = true;
            outcomes.push_back(Apply(rows.front()));
            WriteBlock(rows, outcomes);
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
        return outcomes.front();
    }

    // ---- A block of rows: what can be asked or written for all of them at once --------------------------------------

    /// Asks what the rows have to be compared with.
    void ReadBlock(std::span<const Row> rows)
    {
        m_isAlone = false;
        m_added.clear();
        m_joining.clear();
        std::vector<std::string> logins;
        for (const Row& row : rows) {
            // Nobody has a login name that no column takes.
            if (row.problem.empty() && TooLongLogin(row).empty()) {
                logins.push_back(row.login);
            }
        }
        m_users =
            UserBlock(m_directory.Connection(), logins,
                      m_options.update ? std::span<const Field* const>(m_compared) : std::span<const Field* const>());
        if (m_departments) {
            ReadDepartments(rows);
        }
    }

    void ReadDepartments(std::span<const Row> rows)
    {
        std::set<std::string> paths;
        for (const Row& row : rows) {
            const auto path = row.values.find(&Department());
            if (path != row.values.end() && row.problem.empty() &&
                (m_options.update || m_users.Find(row.key).empty())) {
                paths.insert(path->second.value_or(""));
            }
        }
        m_departments->ReadAhead(paths);
        m_places.clear();
        if (!m_options.update) {
            return;
        }
        m_places = HoldersOf(m_directory.Connection(), kItemTypeUser, m_users.Ids());
        std::vector<int> left;
        for (const Row& row : rows) {
            const auto path = row.values.find(&Department());
            const std::span<const UserBlock::User> users = m_users.Find(row.key);
            if (path == row.values.end() || users.empty()) {
                continue;
            }
            const int before = DepartmentIdIn(users.front().stored);
            const std::optional<ItemKey> group = m_departments->FindPresent(path->second.value_or(""));
            if (before > 0 && (!group || group->id != before)) {
                left.push_back(before);
            }
        }
        m_departments->ReadAbove(left);
    }

    /// Writes what is still to be written for rows that have been applied. @return false, and something is not
    /// written, when the engine takes the login name of an added user for that of another.
    bool WriteBlock(std::span<const Row> rows, std::vector<RowOutcome>& outcomes)
    {
        CAConnect& conn = m_directory.Connection();
        if (!m_added.empty()) {
            std::vector<std::string> logins;
            for (const Added& added : m_added) {
                logins.push_back(added.row->login);
            }
            const std::optional<std::vector<int>> ids = IdsOfAdded(conn, logins);
            if (!ids) {
                return false;
            }
            std::vector<int> withoutBirthday;
            for (std::size_t i = 0; i < m_added.size(); ++i) {
                const Added& added = m_added[i];
                outcomes[static_cast<std::size_t>(added.row - rows.data())].id = (*ids)[i];
                if (!added.row->values.contains(&Birthday())) {
                    withoutBirthday.push_back((*ids)[i]);
                }
                if (added.joins) {
                    m_joining.push_back((*ids)[i]);
                }
                SetLeftOut((*ids)[i], added.row->values);
            }
            // The record writes today for a birthday that nobody gave.
            ClearBirthdays(conn, withoutBirthday);
        }
        JoinDepartments(conn, m_joining);
        return true;
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
        const std::span<const UserBlock::User> present = m_users.Find(row.key);
        if (!present.empty() && !m_options.update) {
            return {RowFate::exists, present.front().key.id, {}};
        }
        if (!present.empty() && !row.emptied.empty()) {
            return ApplyGood(WithEmptied(row));
        }
        if (present.empty() && m_users.HasConfused()) {
            RequireFreeLogin(m_directory, row.login, std::nullopt);
        }
        const UserBlock::User* user = present.empty() ? nullptr : &OnlyOne(row, present);
        const std::string privileges = PrivilegesIn(row, user);
        if (!privileges.empty() && !m_options.allowPrivileges) {
            return {RowFate::failed, 0, privileges + ", which needs --allow-privileges", true};
        }
        RequireLengths(row);
        if (user != nullptr && !m_departments) {
            RequireDepartmentText(*user, row);
        }
        FieldValues values = row.values;
        // Groups are made for nothing but a row that is otherwise good.
        const std::optional<ItemKey> group = FindDepartment(row);
        if (group) {
            values[&DepartmentId()] = std::to_string(group->id);
        }
        RowOutcome outcome = user != nullptr ? ApplyToPresent(*user, values, group) : ApplyToNew(row, values, group);
        outcome.isPrivileged = !privileges.empty();
        return outcome;
    }

    /// The row with values for what it is to empty.
    static Row WithEmptied(Row row)
    {
        for (const Field* field : std::exchange(row.emptied, {})) {
            row.values[field] = field->IsDate() ? Stored() : Stored("");
        }
        return row;
    }

    /// The user that a row is about. @throws Error for several who differ only in case.
    const UserBlock::User& OnlyOne(const Row& row, std::span<const UserBlock::User> users)
    {
        if (users.size() == 1) {
            return users.front();
        }
        const UserKey user = FindUser(m_directory, "login:" + row.login);
        const auto found = std::ranges::find(users, user, &UserBlock::User::key);
        if (found == users.end()) {
            throw Error(ErrorCode::conflict,
                        fmt::format("{} was changed by another program in the meantime", Named(user)));
        }
        return *found;
    }

    /// What a row would do to privileges, for a sentence; empty for nothing. @param user  null for one who is still to
    /// be added.
    static std::string PrivilegesIn(const Row& row, const UserBlock::User* user)
    {
        static const std::string kAdminKey = NameKey(kAdmin);
        if (row.key == kAdminKey && (user == nullptr || Differs(user->stored, row.values))) {
            return user == nullptr ? "adds the built-in administrator" : "changes the built-in administrator";
        }
        std::string changed;
        for (const auto& [field, given] : row.values) {
            if (IsPrivilege(*field)) {
                const std::string present = user == nullptr ? "" : user->stored.at(field).value_or("");
                if (given != (present.empty() ? "0" : present)) {
                    changed += fmt::format("{} {}", changed.empty() ? "changes" : " and", field->name);
                }
            }
        }
        return changed;
    }

    [[nodiscard]] std::string TooLongLogin(const Row& row) const
    {
        return TooLong(m_lengths, TextFor{Login().name, Login().column, row.login});
    }

    void RequireLengths(const Row& row) const
    {
        const std::string login = TooLongLogin(row);
        const std::string problem = login.empty() ? TooLong(m_lengths, row.values) : login;
        if (!problem.empty()) {
            throw Error(ErrorCode::invalid, problem);
        }
    }

    /// @throws Error for another text of a department that the user is a member of.
    void RequireDepartmentText(const UserBlock::User& user, const Row& row)
    {
        const auto given = row.values.find(&Department());
        if (given == row.values.end() || user.stored.at(&Department()).value_or("") == given->second) {
            return;
        }
        if (!m_organisation) {
            m_organisation.emplace(m_directory.Connection());
        }
        const std::vector<ItemKey> groups = DepartmentGroups(*m_organisation, m_roles, user.key.id, user.stored);
        if (!groups.empty()) {
            throw Error(ErrorCode::conflict,
                        fmt::format("the department changes, and {} would stay a member of {}; give "
                                    "--departments VIEW, and both change",
                                    Visible(user.key.login), m_organisation->Named(groups.front())));
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

    RowOutcome ApplyToNew(const Row& row, const FieldValues& values, std::optional<ItemKey> group)
    {
        RowOutcome outcome{RowFate::created, 0, {}};
        if (!m_dryRun && m_isAlone) {
            outcome.id = CreateUser(m_directory, row.login, values);
            SetLeftOut(outcome.id, values);
            if (group) {
                m_joining.push_back(outcome.id);
            }
        } else if (!m_dryRun) {
            AddUser(m_directory, row.login, values);
            m_added.push_back({&row, group.has_value()});
        }
        if (group) {
            m_departments->NoteEntered(*group);
        }
        return outcome;
    }

    RowOutcome ApplyToPresent(const UserBlock::User& user, const FieldValues& values, std::optional<ItemKey> group)
    {
        bool differed = Differs(user.stored, values);
        if (!m_dryRun) {
            ChangeUser(m_directory, user.key.id, user.stored, values);
            differed = (group && Leave(*group, user)) || differed;
        }
        if (group && !IsIn(*group, user)) {
            m_joining.push_back(user.key.id);
            m_departments->NoteEntered(*group);
            differed = true;
        }
        return {differed ? RowFate::updated : RowFate::unchanged, user.key.id, {}};
    }

    void SetLeftOut(int id, const FieldValues& values)
    {
        const FieldValues leftOut = LeftOutByInsert(values);
        if (!leftOut.empty()) {
            m_directory.Set(id, leftOut);
        }
    }

    [[nodiscard]] bool IsIn(ItemKey group, const UserBlock::User& user) const
    {
        const auto places = m_places.find(user.key.id);
        return places != m_places.end() && std::ranges::find(places->second, group) != places->second.end();
    }

    /// Ends the membership in the department that a user was in. @return whether there was one.
    bool Leave(ItemKey group, const UserBlock::User& user)
    {
        const std::optional<ItemKey> old =
            m_departments->GroupToLeave(group, DepartmentIdIn(user.stored), user.stored.at(&Department()).value_or(""));
        return old && IsIn(*old, user) && m_roles.Unlink(*old, user.key.id);
    }

    void Report(const Row& row, const RowOutcome& outcome)
    {
        const std::string_view fate = kRowFates.at(static_cast<std::size_t>(outcome.fate));
        if (outcome.fate == RowFate::failed && m_options.takeFailed) {
            m_options.takeFailed(row.record);
        }
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
    CsvRecord m_first; // the header
    Header m_header;
    std::vector<const Field*> m_compared; // of users who are there
    schema::ColumnLengths m_lengths;      // of users
    Roles m_roles;
    std::optional<Departments> m_departments;   // none unless the option is given
    std::optional<Organisation> m_organisation; // read when it is first needed
    std::optional<SeenLogins> m_seen;
    bool m_atEnd = false;

    // Of the block at hand.
    struct Added {
        const Row* row;
        bool joins; ///< becomes a member of his department
    };
    UserBlock m_users;
    std::map<int, std::vector<ItemKey>> m_places; // groups and views by the ids of users who are there
    std::vector<Added> m_added;                   // whose ids are still to be asked
    std::vector<int> m_joining;                   // who become members of their departments
    bool m_isAlone = false;                       // one row in a transaction of its own
};

} // namespace

std::string ImportReport::Pace() const { return PaceText(Clock::now() - begin, rows); }

std::vector<std::string_view> ImportColumns()
{
    std::vector<std::string_view> columns = {"login"};
    for (const Field& field : Fields()) {
        if (IsImported(field)) {
            columns.push_back(field.name);
        }
    }
    return columns;
}

std::size_t ReadLogins(const ImportSource& source, const ColumnOptions& columns, SeenLogins& logins)
{
    CsvReader reader(source.in, source.delimiter);
    const Header header(reader.Next(), source.name, columns);
    std::size_t unreadable = 0;
    while (const std::optional<CsvRecord> record = reader.Next()) {
        const Row row = header.Read(*record);
        if (row.login.empty()) {
            ++unreadable;
        } else {
            logins.Add(row.key, row.line);
        }
    }
    if (reader.Failed()) {
        throw Error(ErrorCode::failed, fmt::format("{} cannot be read; nothing was imported", source.name));
    }
    return unreadable;
}

void ImportUsers(Call& call, const ImportSource& source, const ImportOptions& options, ImportReport& report)
{
    CsvReader reader(source.in, source.delimiter);
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
