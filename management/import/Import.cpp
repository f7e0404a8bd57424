#include "management/import/Import.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "management/DatabaseError.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/import/CsvReader.h"
#include "management/import/ImportHeader.h"
#include "management/import/SeenLogins.h"
#include "management/import/UserBlock.h"
#include "management/organisation/Links.h"
#include "management/users/UserDepartment.h"
#include "management/users/UserRows.h"
#include "management/users/Users.h"
#include "schema/Schema.h"

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

struct RowOutcome {
    RowFate fate = RowFate::failed;
    int id = 0; ///< 0 for none
    Sentence reason;
    bool isPrivileged = false; ///< sets a privilege or concerns Admin, or would
};

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
            const std::vector<ImportRow> rows = ReadBatch();
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
        if (!m_header.Has(DepartmentField())) {
            throw Error(ErrorCode::invalid, FillPattern("{} has no column {}, which --departments needs", m_source.name,
                                                        DepartmentField().name));
        }
        return std::optional<Departments>(
            std::in_place, m_directory.Connection(),
            DepartmentOptions{*m_options.departments, m_dryRun, m_options.makeView, m_options.makeGroups});
    }

    // Rows are read before a transaction begins, so that a slow input never holds the database.
    std::vector<ImportRow> ReadBatch()
    {
        std::vector<ImportRow> rows;
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
            MarkRepeated(rows.back());
        }
        return rows;
    }

    void MarkRepeated(ImportRow& row)
    {
        if (row.login.empty()) {
            return;
        }
        const std::optional<long> first = m_seen->Add(row.key, row.line);
        if (first && row.problem.IsEmpty()) {
            row.problem = FillPattern("the login name {} is in line {} already", Quoted(row.login), *first);
        }
    }

    void ApplyAll(std::span<const ImportRow> rows)
    {
        while (!rows.empty() && !IsStopRequested()) {
            rows = rows.subspan(m_dryRun ? Try(rows) : ApplySome(rows));
        }
    }

    /// @return how many rows were dealt with.
    std::size_t Try(std::span<const ImportRow> rows)
    {
        ReadBlock(rows);
        for (const ImportRow& row : rows) {
            Report(row, Apply(row));
        }
        Settle();
        return rows.size();
    }

    /// @return how many rows were dealt with.
    std::size_t ApplySome(std::span<const ImportRow> rows)
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

    std::size_t ApplyOneByOne(std::span<const ImportRow> rows)
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
    RowOutcome ApplyAlone(std::span<const ImportRow> rows)
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
            RequireWritable();
            return {RowFate::failed, 0, e.Why()};
        }
        change->Finish();
        Committed();
        return outcomes.front();
    }

    // ---- A block of rows: what can be asked or written for all of them at once --------------------------------------

    /// Asks what the rows have to be compared with.
    void ReadBlock(std::span<const ImportRow> rows)
    {
        m_isAlone = false;
        m_newUsers.clear();
        m_added.clear();
        m_joining.clear();
        std::vector<std::string> logins;
        for (const ImportRow& row : rows) {
            // Nobody has a login name that no column takes.
            if (row.problem.IsEmpty() && TooLongLogin(row).IsEmpty()) {
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

    void ReadDepartments(std::span<const ImportRow> rows)
    {
        std::set<std::string> paths;
        for (const ImportRow& row : rows) {
            const auto path = row.values.find(&DepartmentField());
            if (path != row.values.end() && row.problem.IsEmpty() &&
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
        for (const ImportRow& row : rows) {
            const auto path = row.values.find(&DepartmentField());
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
    bool WriteBlock(std::span<const ImportRow> rows, std::vector<RowOutcome>& outcomes)
    {
        CAConnect& conn = m_directory.Connection();
        if (!m_added.empty()) {
            AddUsers(conn, m_newUsers);
            const auto ids =
                m_isAlone ? std::optional(std::vector{LastInsertedId(conn)}) : IdsOfAdded(conn, m_newUsers);
            if (!ids) {
                return false;
            }
            for (std::size_t i = 0; i < m_added.size(); ++i) {
                const Added& added = m_added[i];
                outcomes[static_cast<std::size_t>(added.row - rows.data())].id = (*ids)[i];
                if (added.joins) {
                    m_joining.push_back((*ids)[i]);
                }
            }
        }
        JoinDepartments(conn, m_joining);
        return true;
    }

    void Begun()
    {
        CAConnect& conn = m_directory.Connection();
        WithDatabaseErrors(conn, [&conn] { schema::PreferIndexes(conn); });
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

    void RequireWritable()
    {
        Change change(m_call);
        m_directory.TryToWrite();
        change.Finish();
    }

    RowOutcome Apply(const ImportRow& row)
    {
        if (!row.problem.IsEmpty()) {
            return {RowFate::failed, 0, row.problem};
        }
        try {
            return ApplyGood(row);
        } catch (const DatabaseError&) {
            throw;
        } catch (const Error& e) {
            return {RowFate::failed, 0, e.Why()};
        }
    }

    RowOutcome ApplyGood(const ImportRow& row)
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
        const Sentence privileges = PrivilegesIn(row, user);
        if (!privileges.IsEmpty() && !m_options.allowPrivileges) {
            return {RowFate::failed, 0, FillPattern("{}, which needs --allow-privileges", privileges), true};
        }
        RequireLengths(row);
        if (user != nullptr && !m_departments) {
            RequireDepartmentText(*user, row);
        }
        FieldValues values = row.values;
        // Groups are made for nothing but a row that is otherwise good.
        const std::optional<ItemKey> group = FindDepartment(row);
        if (group) {
            values[&DepartmentIdField()] = std::to_string(group->id);
        }
        RowOutcome outcome = user != nullptr ? ApplyToPresent(*user, values, group) : ApplyToNew(row, values, group);
        outcome.isPrivileged = !privileges.IsEmpty();
        return outcome;
    }

    /// The row with values for what it is to empty.
    static ImportRow WithEmptied(ImportRow row)
    {
        for (const Field* field : std::exchange(row.emptied, {})) {
            row.values[field] = field->IsDate() ? Stored() : Stored("");
        }
        return row;
    }

    /// The user that a row is about. @throws Error for several who differ only in case.
    const UserBlock::User& OnlyOne(const ImportRow& row, std::span<const UserBlock::User> users)
    {
        if (users.size() == 1) {
            return users.front();
        }
        const UserKey user = FindUser(m_directory, "login:" + row.login);
        const auto found = std::ranges::find(users, user, &UserBlock::User::key);
        if (found == users.end()) {
            throw Error(ErrorCode::conflict,
                        FillPattern("{} was changed by another program in the meantime", Named(user)));
        }
        return *found;
    }

    /// Whether a user has a privilege. @param user  null for one who is still to be added.
    static std::string Privilege(const Field& field, const UserBlock::User* user)
    {
        const std::string present = user == nullptr ? "" : user->stored.at(&field).value_or("");
        return present.empty() ? "0" : present;
    }

    /// What a row would do to privileges, for a sentence; empty for nothing. @param user  null for one who is still to
    /// be added.
    static Sentence PrivilegesIn(const ImportRow& row, const UserBlock::User* user)
    {
        static const std::string kAdminKey = NameKey(kBuiltInLogin);
        if (row.key == kAdminKey && (user == nullptr || Differs(user->stored, row.values))) {
            return user == nullptr ? Translatable("adds the built-in administrator")
                                   : Translatable("changes the built-in administrator");
        }
        Sentence changed;
        for (const auto& [field, given] : row.values) {
            if (IsPrivilege(*field) && given != Privilege(*field, user)) {
                changed = changed.IsEmpty() ? FillPattern("changes {}", field->name)
                                            : FillPattern("{} and {}", changed, field->name);
            }
        }
        return changed;
    }

    [[nodiscard]] Sentence TooLongLogin(const ImportRow& row) const
    {
        return TooLong(m_lengths, TextFor{LoginField().name, LoginField().column, row.login});
    }

    void RequireLengths(const ImportRow& row) const
    {
        const Sentence login = TooLongLogin(row);
        const Sentence problem = login.IsEmpty() ? TooLong(m_lengths, row.values) : login;
        if (!problem.IsEmpty()) {
            throw Error(ErrorCode::invalid, problem);
        }
    }

    /// @throws Error for another text of a department that the user is a member of.
    void RequireDepartmentText(const UserBlock::User& user, const ImportRow& row)
    {
        const auto given = row.values.find(&DepartmentField());
        if (given == row.values.end() || user.stored.at(&DepartmentField()).value_or("") == given->second) {
            return;
        }
        if (!m_organisation) {
            m_organisation.emplace(m_directory.Connection());
        }
        const std::vector<ItemKey> groups = DepartmentGroups(*m_organisation, m_roles, user.key.id, user.stored);
        if (!groups.empty()) {
            throw Error(ErrorCode::conflict,
                        FillPattern("the department changes, and {} would stay a member of {}; give "
                                    "--departments VIEW, and both change",
                                    Visible(user.key.login), m_organisation->Named(groups.front())));
        }
    }

    static bool IsPrivilege(const Field& field)
    {
        return field.name == "super" || field.name == "system" || field.name == "locked";
    }

    /// The group of a row's department; none when there is nothing to be placed.
    std::optional<ItemKey> FindDepartment(const ImportRow& row)
    {
        const auto path = row.values.find(&DepartmentField());
        return m_departments && path != row.values.end() ? std::optional(m_departments->Find(path->second.value_or("")))
                                                         : std::nullopt;
    }

    RowOutcome ApplyToNew(const ImportRow& row, const FieldValues& values, std::optional<ItemKey> group)
    {
        if (!m_dryRun) {
            if (m_isAlone) {
                RequireFreeLogin(m_directory, row.login, std::nullopt);
            }
            m_newUsers.push_back({row.login, values});
            m_added.push_back({&row, group.has_value()});
        }
        if (group) {
            m_departments->NoteEntered(*group);
        }
        return {RowFate::created, 0, {}};
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

    [[nodiscard]] bool IsIn(ItemKey group, const UserBlock::User& user) const
    {
        const auto places = m_places.find(user.key.id);
        return places != m_places.end() && std::ranges::find(places->second, group) != places->second.end();
    }

    /// Ends the membership in the department that a user was in. @return whether there was one.
    bool Leave(ItemKey group, const UserBlock::User& user)
    {
        const std::optional<ItemKey> old = m_departments->GroupToLeave(group, DepartmentIdIn(user.stored),
                                                                       user.stored.at(&DepartmentField()).value_or(""));
        return old && IsIn(*old, user) && m_roles.Unlink(*old, user.key.id);
    }

    void Report(const ImportRow& row, const RowOutcome& outcome)
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
                   SentenceValue(outcome.reason));
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
    ImportHeader m_header;
    std::vector<const Field*> m_compared; // of users who are there
    schema::ColumnLengths m_lengths;      // of users
    Roles m_roles;
    std::optional<Departments> m_departments;   // none unless the option is given
    std::optional<Organisation> m_organisation; // read when it is first needed
    std::optional<SeenLogins> m_seen;
    bool m_atEnd = false;

    // Of the block at hand.
    struct Added {
        const ImportRow* row;
        bool joins; ///< becomes a member of his department
    };
    UserBlock m_users;
    std::map<int, std::vector<ItemKey>> m_places; // groups and views by the ids of users who are there
    std::vector<NewUser> m_newUsers;              // who are still to be added
    std::vector<Added> m_added;                   // what else there is of each of them
    std::vector<int> m_joining;                   // who become members of their departments
    bool m_isAlone = false;                       // one row in a transaction of its own
};

} // namespace

std::string ImportReport::Pace() const { return PaceText(Clock::now() - begin, rows); }

void ImportReport::Stop(const DatabaseError& e)
{
    mayHaveDoneMore = e.MayBeDone();
    throw Error(ErrorCode::database, FillPattern("stopped: {}", e.Why()));
}

void ImportUsers(Call& call, const ImportSource& source, const ImportOptions& options, ImportReport& report)
{
    CsvReader reader(source.in, source.delimiter);
    const auto noteIfCutShort = [&] {
        report.cutShort = call.Front().IsStopRequested() ? Sentence(Translatable("stopped by a signal"))
                          : reader.Failed()              ? FillPattern("{} cannot be read", source.name)
                                                         : Sentence();
        return !report.cutShort.IsEmpty();
    };
    const std::optional<CsvRecord> first = reader.Next();
    if (noteIfCutShort()) {
        return;
    }
    Importer importer(call, source, options, reader, first, report);
    try {
        importer.Run();
    } catch (const DatabaseError& e) {
        report.Stop(e);
    }
    noteIfCutShort();
}

} // namespace management
