#include "management/exchange/DirectoryImport.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/documents/Documents.h"
#include "management/exchange/ItemNames.h"
#include "management/exchange/LineReader.h"
#include "management/exchange/LineResolver.h"
#include "management/exchange/Nouns.h"
#include "management/import/UserBlock.h"
#include "management/organisation/Organisation.h"
#include "management/users/Users.h"
#include "platform/CodePage.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <deque>
#include <map>
#include <set>
#include <utility>

namespace management {

namespace {

constexpr std::size_t kMostLines = 256;
constexpr std::size_t kMostBytes = std::size_t{2} * 1024 * 1024;
constexpr std::array<std::string_view, 5> kResultColumns = {"line", "noun", "name", "outcome", "reason"};
constexpr std::string_view kAdmin = "Admin";
constexpr const char* kMark = "SAVEPOINT qv_block";
constexpr const char* kBackToMark = "ROLLBACK TO SAVEPOINT qv_block";

/// A row that is there.
struct Row {
    int id = 0; ///< 0 where it has none
    ColumnValues values;
    bool isClaimed = false; ///< by a line
};

/// What a line wants, and what becomes of it.
struct Wanted : ResolvedLine {
    const ExportedLine* line = nullptr;
    std::string key = {}; ///< of the columns by which it finds its row, case not counting
    Row* row = nullptr;
    RowFate fate = RowFate::failed;
    bool isPrivileged = false;
};

// ---- Which row a line is about --------------------------------------------------------------------------------------

std::string FoldedKey(const Noun& noun, const ColumnValues& values)
{
    std::string key;
    for (std::size_t i = 0; i < noun.keys; ++i) {
        for (const std::string_view column : {noun.members[i].typeColumn, noun.members[i].column}) {
            const auto value = values.find(column);
            key += value == values.end() ? "" : NameKey(value->second.value_or("")) + '\0';
        }
    }
    return key;
}

bool SameKey(const Noun& noun, const ColumnValues& a, const ColumnValues& b)
{
    return std::ranges::all_of(std::span(noun.members).first(noun.keys), [&](const LineMember& member) {
        const auto left = a.find(member.column);
        const auto right = b.find(member.column);
        return left == a.end() || right == b.end() || left->second == right->second;
    });
}

/// Whether the row has all these values already. Of texts that name rows, case does not count.
bool IsSo(const Noun& noun, const ColumnValues& stored, const ColumnValues& wanted)
{
    return std::ranges::all_of(wanted, [&](const auto& value) {
        const auto found = stored.find(value.first);
        const bool isKey = std::ranges::any_of(std::span(noun.members).first(noun.keys),
                                               [&](const LineMember& member) { return member.column == value.first; });
        return isKey || (found != stored.end() && found->second == value.second);
    });
}

// ---- The import -----------------------------------------------------------------------------------------------------

class Importer {
public:
    Importer(Call& call, const DirectoryImportOptions& options, LineSource& reader, ImportReport& report)
        : m_call(call),
          m_conn(call.Connection()),
          m_dryRun(call.Options().dryRun),
          m_options(options),
          m_reader(reader),
          m_report(report)
    {
    }

    void Run(const std::optional<long>& total)
    {
        m_call.Front().TakeColumns({kResultColumns.begin(), kResultColumns.end()});
        m_call.Front().ShowProgress(0, total);
        if (m_dryRun) {
            m_change.emplace(m_call);
        }
        m_next = m_reader.Next();
        while (m_next && !m_call.Front().IsStopRequested()) {
            const std::vector<ExportedLine> lines = ReadBlock();
            ApplyBlock(lines);
            m_call.Front().ShowProgress(m_report.rows, total);
        }
        if (m_dryRun) {
            m_change->Finish();
        }
    }

private:
    /// Lines of one noun, all of them of a tree. Lines that are about the same row come together.
    std::vector<ExportedLine> ReadBlock()
    {
        std::vector<ExportedLine> lines;
        const Noun* noun = m_next->noun;
        const bool isTree = noun != nullptr && IsTree(noun->item);
        std::size_t bytes = 0;
        while (m_next && m_next->noun == noun && !m_call.Front().IsStopRequested()) {
            const bool isFull = lines.size() >= kMostLines || bytes > kMostBytes;
            if (isFull && !isTree && (noun == nullptr || !IsAboutSame(lines.back(), *m_next))) {
                break;
            }
            lines.push_back(std::move(*m_next));
            bytes += m_reader.TakeBytes();
            m_next = m_reader.Next();
        }
        return lines;
    }

    static bool IsAboutSame(const ExportedLine& a, const ExportedLine& b)
    {
        const auto firstOf = [](const ExportedLine& line) -> const JsonValue* {
            const auto found = std::ranges::find(line.object, line.noun->members.front().name, &JsonMember::name);
            return found == line.object.end() ? nullptr : &found->value;
        };
        const JsonValue* first = firstOf(a);
        const JsonValue* second = firstOf(b);
        return first != nullptr && second != nullptr && *first == *second && a.noun->keys > 1 &&
               a.object.size() == b.object.size();
    }

    void ApplyBlock(std::span<const ExportedLine> lines)
    {
        if (Try(lines)) {
            return;
        }
        // Which line the engine refused shows when each is done by itself, of a tree the parents first.
        std::vector<const ExportedLine*> order;
        std::ranges::transform(lines, std::back_inserter(order), [](const ExportedLine& line) { return &line; });
        if (IsTree(lines.front().noun->item)) {
            std::ranges::stable_sort(order, {}, [](const ExportedLine* line) { return DepthOf(*line); });
        }
        for (const ExportedLine* line : order) {
            if (m_call.Front().IsStopRequested()) {
                return;
            }
            Try({line, 1});
        }
    }

    static std::size_t DepthOf(const ExportedLine& line)
    {
        std::size_t depth = 0;
        const auto path = std::ranges::find(line.object, line.noun->members.front().name, &JsonMember::name);
        const auto* text = path == line.object.end() ? nullptr : std::get_if<TextValue>(&path->value);
        for (std::size_t i = 0; text != nullptr && i < text->size(); ++i) {
            depth += (*text)[i] == '/' ? 1 : 0;
            i += (*text)[i] == '\\' ? 1 : 0;
        }
        return depth;
    }

    /// @return false when the engine refused something and there are several lines: nothing was done then.
    bool Try(std::span<const ExportedLine> lines)
    {
        std::vector<Wanted> wanted;
        m_added.clear();
        try {
            Begin();
            wanted = Apply(lines);
            End();
        } catch (const DatabaseError& e) {
            if (e.IsLasting() || !m_conn.IsOpen()) {
                throw;
            }
            GoBack();
            if (lines.size() > 1) {
                return false;
            }
            Wanted failed;
            failed.line = &lines.front();
            failed.name = wanted.empty() ? "" : wanted.front().name;
            failed.problem = e.what();
            wanted = {failed};
        }
        for (const Wanted& one : wanted) {
            Report(one);
        }
        return true;
    }

    void Begin()
    {
        if (m_dryRun) {
            Execute(m_conn, kMark);
        } else {
            m_change.emplace(m_call);
        }
    }

    void End()
    {
        if (!m_dryRun) {
            m_change->Finish();
            m_change.reset();
        }
    }

    void GoBack()
    {
        if (m_dryRun) {
            Execute(m_conn, kBackToMark);
        } else {
            m_change.reset();
        }
        for (const auto& [kind, id] : m_added) {
            m_names->Remove(kind, id);
        }
    }

    std::vector<Wanted> Apply(std::span<const ExportedLine> lines)
    {
        std::vector<Wanted> all;
        const Noun* noun = lines.front().noun;
        if (noun == nullptr) {
            for (const ExportedLine& line : lines) {
                all.push_back({{.name = {}, .values = {}, .problem = line.problem}, &line});
            }
            return all;
        }
        ReadNames();
        std::vector<const Field*> fields;
        if (noun->name == "user") {
            for (const LineMember& member : noun->members) {
                fields.push_back(FindField(member.name));
            }
        }
        const UserBlock users(m_conn, LoginsIn(lines), fields);
        const LineResolver resolver(*m_names, users);
        for (const ExportedLine& line : lines) {
            ResolvedLine resolved = resolver.Resolve(line);
            std::string key = FoldedKey(*noun, resolved.values);
            all.push_back({std::move(resolved), &line, std::move(key)});
        }
        RequireLengths(*noun, all);
        std::deque<Row> rows = noun->name == "user" ? RowsOf(users) : ReadRows(*noun, all);
        Pair(*noun, all, rows);
        Write(*noun, all, users.HasConfused());
        return all;
    }

    /// Reads the names of items once more where others have added or deleted some since the last time.
    void ReadNames()
    {
        std::string query;
        for (const Noun& noun : Nouns()) {
            if (noun.item != MemberKind::text) {
                query += fmt::format("{}SELECT COUNT(*), MAX(Col_ID), SUM(Col_ID) FROM {}",
                                     query.empty() ? "" : " UNION ALL ", noun.table);
            }
        }
        std::string state;
        EachRow(m_conn, query, [&state](CARecordset& row) {
            state += fmt::format("{} {} {}\n", TextIn(row, 1), TextIn(row, 2), TextIn(row, 3));
        });
        if (state != m_itemsState) {
            m_names.emplace(m_conn);
            m_itemsState = std::move(state);
        }
    }

    void RequireLengths(const Noun& noun, std::vector<Wanted>& all)
    {
        auto found = m_lengths.find(noun.table);
        if (found == m_lengths.end()) {
            found = m_lengths.emplace(noun.table, LengthsOf(m_conn, std::string(noun.table))).first;
        }
        for (Wanted& wanted : all) {
            for (const LineMember& member : noun.members) {
                const auto value = wanted.values.find(member.column);
                if (wanted.problem.empty() && value != wanted.values.end() && value->second) {
                    wanted.problem = TooLong(found->second, TextFor{member.name, member.column, *value->second});
                }
            }
        }
    }

    // ---- The rows that are there ------------------------------------------------------------------------------------

    static std::deque<Row> RowsOf(const UserBlock& users)
    {
        std::deque<Row> rows;
        users.ForEach([&](const UserBlock::User& user) {
            Row& row = rows.emplace_back();
            row.id = user.key.id;
            for (const auto& [field, stored] : user.stored) {
                row.values[field->column] = stored;
            }
        });
        return rows;
    }

    std::deque<Row> ReadRows(const Noun& noun, const std::vector<Wanted>& all)
    {
        std::deque<Row> rows;
        const std::string condition = ConditionOn(noun, all);
        if (condition.empty()) {
            return rows;
        }
        std::vector<std::string_view> columns;
        for (const LineMember& member : noun.members) {
            for (const std::string_view column : {member.typeColumn, member.column}) {
                if (!column.empty()) {
                    columns.push_back(column);
                }
            }
        }
        EachRow(m_conn,
                fmt::format("SELECT {}{} FROM {} WHERE {}{}", noun.hasId ? "Col_ID, " : "", fmt::join(columns, ", "),
                            noun.table, condition, noun.hasId ? " ORDER BY Col_ID" : ""),
                [&](CARecordset& found) {
                    Row& row = rows.emplace_back();
                    long at = 0;
                    row.id = noun.hasId ? NumberIn(found, ++at) : 0;
                    for (const std::string_view column : columns) {
                        row.values[column] = OptionalTextIn(found, ++at);
                    }
                });
        return rows;
    }

    /// What rows meet that lines may be about; empty for none.
    [[nodiscard]] std::string ConditionOn(const Noun& noun, const std::vector<Wanted>& all) const
    {
        std::string condition;
        const auto add = [&condition](std::string_view column, const std::set<std::string>& values) {
            condition += fmt::format("{}{} IN ({})", condition.empty() ? "" : " AND ", column, fmt::join(values, ", "));
        };
        if (noun.item != MemberKind::text) {
            std::set<std::string> ids;
            for (const Wanted& wanted : all) {
                if (wanted.id) {
                    ids.insert(std::to_string(*wanted.id));
                }
            }
            if (!ids.empty()) {
                add("Col_ID", ids);
            }
            return condition;
        }
        for (const LineMember& member : std::span(noun.members).first(noun.keys)) {
            std::set<std::string> ids;
            for (const Wanted& wanted : all) {
                if (wanted.problem.empty() && IsReference(member.kind)) {
                    ids.insert(*wanted.values.at(member.column));
                }
            }
            if (!ids.empty()) {
                add(member.column, ids);
            }
        }
        return condition.empty() && !IsReference(noun.members.front().kind) ? TextCondition(noun, all) : condition;
    }

    [[nodiscard]] std::string TextCondition(const Noun& noun, const std::vector<Wanted>& all) const
    {
        std::set<std::string> literals;
        const std::string_view column = noun.members.front().column;
        for (const Wanted& wanted : all) {
            if (wanted.problem.empty()) {
                const std::string text = wanted.values.at(column).value_or("");
                literals.insert(Literal(m_conn, text));
                literals.insert(Literal(m_conn, platform::UpperUtf8(text)));
            }
        }
        return literals.empty()
                   ? ""
                   : fmt::format("({0} IN ({1}) OR upper({0}) IN ({1}))", column, fmt::join(literals, ", "));
    }

    // ---- Which row a line is about ----------------------------------------------------------------------------------

    static void Pair(const Noun& noun, std::vector<Wanted>& all, std::deque<Row>& rows)
    {
        std::map<int, Row*> byId;
        std::multimap<std::string, Row*> byKey;
        for (Row& row : rows) {
            byId[row.id] = &row;
            byKey.emplace(FoldedKey(noun, row.values), &row);
        }
        const auto claim = [&](auto isWanted) {
            for (Wanted& wanted : all) {
                if (!wanted.problem.empty() || wanted.row != nullptr) {
                    continue;
                }
                const auto [first, last] = byKey.equal_range(wanted.key);
                for (auto at = first; at != last && wanted.row == nullptr; ++at) {
                    if (!at->second->isClaimed && isWanted(wanted, *at->second)) {
                        at->second->isClaimed = true;
                        wanted.row = at->second;
                    }
                }
            }
        };
        if (noun.item != MemberKind::text) {
            for (Wanted& wanted : all) {
                wanted.row = wanted.id && byId.contains(*wanted.id) ? byId.at(*wanted.id) : nullptr;
            }
            return;
        }
        claim([&](const Wanted& w, const Row& r) {
            return SameKey(noun, r.values, w.values) && IsSo(noun, r.values, w.values);
        });
        claim([&](const Wanted& w, const Row& r) { return IsSo(noun, r.values, w.values); });
        claim([&](const Wanted& w, const Row& r) { return SameKey(noun, r.values, w.values); });
        claim([](const Wanted&, const Row&) { return true; });
    }

    // ---- Writing ----------------------------------------------------------------------------------------------------

    void Write(const Noun& noun, std::vector<Wanted>& all, bool hasConfused)
    {
        std::map<std::string, std::vector<int>> updates; // ids by what is set
        std::set<std::string> repeated;
        for (Wanted& wanted : all) {
            try {
                if (wanted.problem.empty()) {
                    RequireOnce(noun, wanted, repeated);
                    Decide(noun, wanted, hasConfused);
                    if (wanted.row == nullptr && !noun.hasId && !repeated.insert(TextOf(wanted.values)).second) {
                        wanted.fate = RowFate::unchanged; // an equal line before it adds the row
                    }
                }
            } catch (const DatabaseError&) {
                throw;
            } catch (const Error& e) {
                wanted.fate = RowFate::failed;
                wanted.problem = e.what();
            }
        }
        if (IsTree(noun.item)) {
            RequireParents(noun, all);
        }
        for (Wanted& wanted : all) {
            if (!wanted.problem.empty()) {
                continue;
            }
            if (wanted.fate == RowFate::created && wanted.row == nullptr) {
                Insert(noun, wanted);
            } else if (wanted.fate == RowFate::updated || wanted.fate == RowFate::created) {
                const std::string assignments = AssignmentsOf(noun, wanted);
                if (noun.hasId) {
                    updates[assignments].push_back(wanted.row->id);
                } else {
                    Execute(m_conn, fmt::format("UPDATE {} SET {} WHERE {}", noun.table, assignments,
                                                ConditionOn(noun, *wanted.row)));
                }
            }
        }
        for (const auto& [assignments, ids] : updates) {
            Execute(m_conn, fmt::format("UPDATE {} SET {} WHERE Col_ID IN ({})", noun.table, assignments,
                                        fmt::join(ids, ", ")));
        }
        if (IsTree(noun.item)) {
            for (const Wanted& wanted : all) {
                if (wanted.fate == RowFate::created && wanted.problem.empty()) {
                    Hang(noun, wanted);
                }
            }
        }
    }

    /// @throws Error (conflict) for a second line about one item.
    static void RequireOnce(const Noun& noun, const Wanted& wanted, std::set<std::string>& repeated)
    {
        const bool isItem = noun.item != MemberKind::text || noun.name == "user";
        if (isItem && !repeated.insert(wanted.name).second) {
            throw Error(ErrorCode::conflict, "the file has another line about the same");
        }
    }

    static std::string TextOf(const ColumnValues& values)
    {
        std::string text;
        for (const auto& [column, value] : values) {
            text += fmt::format("{}{}{}\n", column, value ? '=' : '!', value.value_or(""));
        }
        return text;
    }

    void Decide(const Noun& noun, Wanted& wanted, bool hasConfused)
    {
        if (wanted.row == nullptr && noun.name == "department") {
            throw Error(ErrorCode::notFound, "there is no such user");
        }
        if (noun.name == "user") {
            if (wanted.row == nullptr && hasConfused) {
                RequireFreeLogin(m_call.Directory(), wanted.name, std::nullopt);
            }
            RequirePrivileges(wanted);
        }
        const bool isSo = wanted.row != nullptr && IsSo(noun, wanted.row->values, wanted.values);
        const bool isOurs = wanted.row != nullptr &&
                            (m_links.contains(LinkOf(noun, wanted.values)) || IsWithoutDepartment(noun, *wanted.row));
        wanted.fate = wanted.row == nullptr ? RowFate::created
                      : isSo                ? RowFate::unchanged
                      : isOurs              ? RowFate::created
                      : m_options.update    ? RowFate::updated
                                            : RowFate::exists;
        if (wanted.fate == RowFate::created && wanted.row == nullptr) {
            RequireFree(noun, wanted);
        }
    }

    /// Whether the row of a user says nothing yet of what a line of a department says.
    static bool IsWithoutDepartment(const Noun& noun, const Row& row)
    {
        return noun.name == "department" && row.values.at("Col_DeptID").value_or("0") == "0";
    }

    /// @throws Error for a line that changes who may do what, unless that is allowed.
    void RequirePrivileges(Wanted& wanted) const
    {
        std::string changed;
        const bool isNew = wanted.row == nullptr;
        if (NameKey(wanted.name) == NameKey(kAdmin) &&
            (isNew || !IsSo(*wanted.line->noun, wanted.row->values, wanted.values))) {
            changed = isNew ? "adds the built-in administrator" : "changes the built-in administrator";
        }
        for (const std::string_view name : {"super", "system", "locked"}) {
            const std::string_view column = FindField(name)->column;
            const auto given = wanted.values.find(column);
            const std::string before = isNew ? "0" : wanted.row->values.at(column).value_or("0");
            if (changed.empty() && given != wanted.values.end() && given->second.value_or("0") != before) {
                changed = fmt::format("changes {}", name);
            }
        }
        wanted.isPrivileged = !changed.empty() && (isNew || m_options.update);
        if (wanted.isPrivileged && !m_options.allowPrivileges) {
            throw Error(ErrorCode::invalid, changed + ", which needs --allow-privileges");
        }
    }

    /// 0 for what is none, or a greater one than there are ids.
    static int NumberOf(const Stored& stored)
    {
        const std::string text = stored.value_or("");
        int number = 0;
        std::from_chars(text.data(), text.data() + text.size(), number);
        return number;
    }

    /// @throws Error (conflict) when the engine takes another name for equal, and for a cycle of groups or folders.
    void RequireFree(const Noun& noun, const Wanted& wanted)
    {
        const bool isNamed = noun.item == MemberKind::view || noun.item == MemberKind::plan ||
                             noun.item == MemberKind::root || noun.name == "package";
        if (isNamed) {
            const std::string name = wanted.values.at("Col_Name").value_or("");
            if (const std::optional<RowName> other = FindConfused(m_conn, noun.table, name)) {
                ThrowConfused("name", name, *other);
            }
        }
        const auto number = [&wanted](std::string_view column) {
            const auto value = wanted.values.find(column);
            return value == wanted.values.end() ? 0 : NumberOf(value->second);
        };
        if (noun.name == "member" && number("Col_DQvItemType") == kItemTypeGroup) {
            const Organisation organisation(m_conn);
            const ItemKey holder = {number("Col_QvItemType"), number("Col_QvItemID")};
            const ItemKey group = {kItemTypeGroup, number("Col_DQvItemID")};
            if (organisation.Find(holder) != nullptr) {
                ThrowIfCycle(organisation.CycleClosedBy(holder, group), organisation);
            }
        }
        if (noun.name == "folder_link" && number("Col_S_ClassID") == kFolderClass) {
            const FolderTree tree(m_conn);
            const Placement placement = {{DocKind::folder, number("Col_P_ObjID")},
                                         {DocKind::folder, number("Col_S_ObjID")}};
            if (tree.Find(placement.parent) != nullptr && tree.Find(placement.folder) != nullptr) {
                ThrowIfCycle(tree.CycleClosedBy(placement), tree);
            }
        }
    }

    template <class Cycle, class Tree>
    static void ThrowIfCycle(const Cycle& cycle, const Tree& tree)
    {
        if (!cycle.empty()) {
            throw Error(ErrorCode::conflict, fmt::format("this would close a cycle: {}", tree.CycleText(cycle)));
        }
    }

    void Insert(const Noun& noun, Wanted& wanted)
    {
        ColumnValues values = wanted.values;
        if (noun.name == "user") {
            values.emplace("Col_Name", wanted.name);
        }
        if (noun.item == MemberKind::role) {
            const ItemName name = ParseItemName(noun.item, wanted.name);
            values["Col_AppName"] = name.scope.empty() ? std::string(kOwnApplication) : name.scope.front();
            values["Col_DomainID"] = name.scope.size() < 2 ? "0" : name.scope[1];
        }
        std::string columns;
        std::string literals;
        for (const auto& [column, value] : values) {
            columns += fmt::format("{}{}", columns.empty() ? "" : ", ", column);
            literals += (literals.empty() ? "" : ", ") + LiteralOf(noun, column, value);
        }
        Execute(m_conn, fmt::format("INSERT INTO {} ({}) VALUES ({})", noun.table, columns, literals));
        if (noun.item != MemberKind::text) {
            wanted.id = LastInsertedId(m_conn);
            m_names->Add(noun.item, *wanted.id, wanted.name);
            m_added.emplace_back(noun.item, *wanted.id);
        }
    }

    [[nodiscard]] std::string LiteralOf(const Noun& noun, std::string_view column, const Stored& value) const
    {
        const bool isNumber = std::ranges::any_of(noun.members, [&](const LineMember& member) {
            const bool isItself = noun.item != MemberKind::text && &member == &noun.members.front();
            return !isItself && ((member.column == column && (IsNumber(member.kind) || IsReference(member.kind))) ||
                                 member.typeColumn == column);
        });
        return isNumber ? value.value_or("NULL") : LiteralOrNull(m_conn, value);
    }

    /// What differs.
    [[nodiscard]] std::string AssignmentsOf(const Noun& noun, const Wanted& wanted) const
    {
        std::string text;
        for (const auto& value : wanted.values) {
            const std::string_view column = value.first;
            const auto stored = wanted.row->values.find(column);
            const bool isKey =
                std::ranges::any_of(std::span(noun.members).first(noun.keys), [column](const LineMember& member) {
                    return member.column == column || member.typeColumn == column;
                });
            if (!isKey && (stored == wanted.row->values.end() || stored->second != value.second)) {
                text +=
                    fmt::format("{}{} = {}", text.empty() ? "" : ", ", column, LiteralOf(noun, column, value.second));
            }
        }
        return text;
    }

    /// What a row without an id meets, and those that are equal to it.
    [[nodiscard]] std::string ConditionOn(const Noun& noun, const Row& row) const
    {
        std::string text;
        for (const auto& [column, value] : row.values) {
            text += fmt::format("{}{} {}", text.empty() ? "" : " AND ", column,
                                value ? "= " + LiteralOf(noun, column, value) : "IS NULL");
        }
        return text;
    }

    // ---- Groups and folders -----------------------------------------------------------------------------------------

    static bool IsTop(const std::string& path)
    {
        for (std::size_t i = 1; i < path.size(); ++i) {
            if (path[i] == '/') {
                return false;
            }
            i += path[i] == '\\' ? 1 : 0;
        }
        return path.starts_with('/');
    }

    static MemberKind TopOf(const Noun& noun)
    {
        return noun.item == MemberKind::group ? MemberKind::view : MemberKind::root;
    }

    /// The item that a group or folder is to be in. @return nothing when it is not there.
    [[nodiscard]] std::optional<std::pair<MemberKind, int>> ParentOf(const Noun& noun, const std::string& path) const
    {
        const bool isTop = IsTop(path);
        const MemberKind kind = isTop ? TopOf(noun) : noun.item;
        const std::optional<int> id = m_names->Find(kind, isTop ? path.substr(1) : path);
        return id ? std::optional(std::pair(kind, *id)) : std::nullopt;
    }

    /// Fails lines whose parent is neither there nor added.
    void RequireParents(const Noun& noun, std::vector<Wanted>& all)
    {
        std::set<std::string> coming;
        std::vector<Wanted*> added;
        for (Wanted& wanted : all) {
            if (wanted.problem.empty() && wanted.fate == RowFate::created) {
                added.push_back(&wanted);
            }
        }
        std::ranges::stable_sort(added, {}, [](const Wanted* wanted) { return DepthOf(*wanted->line); });
        for (Wanted* wanted : added) {
            try {
                const std::optional<std::string> parent = ParseItemName(noun.item, wanted->name).parent;
                if (parent && !coming.contains(NameKey(*parent))) {
                    const auto present = ParentOf(noun, *parent);
                    if (!present) {
                        throw Error(ErrorCode::notFound, fmt::format("there is no {}", Quoted(*parent)));
                    }
                    RequireFreeChild(*present, *wanted);
                }
                coming.insert(NameKey(wanted->name));
            } catch (const DatabaseError&) {
                throw;
            } catch (const Error& e) {
                wanted->fate = RowFate::failed;
                wanted->problem = e.what();
            }
        }
    }

    void RequireFreeChild(std::pair<MemberKind, int> parent, const Wanted& wanted)
    {
        const std::string name = wanted.values.at("Col_Name").value_or("");
        std::optional<RowName> other;
        if (parent.first == MemberKind::root || parent.first == MemberKind::folder) {
            Documents documents(m_conn);
            const DocKind kind = parent.first == MemberKind::root ? DocKind::root : DocKind::folder;
            other = documents.FindConfusedFolder({kind, parent.second}, name, std::nullopt);
        } else {
            other =
                FindConfused(m_conn, "qv_Group", name,
                             fmt::format("Col_ID IN (SELECT Col_DQvItemID FROM qv_Relation WHERE Col_QvItemID = {} AND "
                                         "Col_QvItemType = {} AND Col_DQvItemType = {})",
                                         parent.second, TypeOf(parent.first), kItemTypeGroup));
        }
        if (other) {
            ThrowConfused("name", name, *other);
        }
    }

    static int TypeOf(MemberKind kind) { return kind == MemberKind::view ? kItemTypeView : kItemTypeGroup; }

    /// Links an item that was added with the one above it.
    void Hang(const Noun& noun, const Wanted& wanted)
    {
        const std::optional<std::string> path = ParseItemName(noun.item, wanted.name).parent;
        if (!path) {
            return;
        }
        const auto parent = ParentOf(noun, *path);
        const std::string id = std::to_string(*wanted.id);
        const std::string parentId = std::to_string(parent->second);
        if (noun.item == MemberKind::group) {
            const std::string type = std::to_string(TypeOf(parent->first));
            Execute(m_conn,
                    fmt::format("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, "
                                "Col_DQvItemType, Col_RelType, Col_Ref, Col_ViewID) VALUES ({}, {}, {}, {}, {}, 0, "
                                "0)",
                                parentId, type, id, kItemTypeGroup, kMembership));
            m_links.insert({"qv_Relation", type, parentId, id});
            return;
        }
        Documents documents(m_conn);
        FolderData folder;
        folder.name = wanted.values.at("Col_Name").value_or("");
        const bool isInRoot = parent->first == MemberKind::root;
        documents.AddLink({{isInRoot ? DocKind::root : DocKind::folder, parent->second}, {DocKind::folder, *wanted.id}},
                          folder);
        m_links.insert({isInRoot ? "Tab_Doc_Root_Link" : "Tab_Doc_VFolder_Link", "", parentId, id});
    }

    /// What tells links apart that this import has made by itself.
    static std::vector<std::string> LinkOf(const Noun& noun, const ColumnValues& values)
    {
        const auto text = [&values](std::string_view column) {
            const auto found = values.find(column);
            return found == values.end() ? "" : found->second.value_or("");
        };
        return noun.table == "qv_Relation"
                   ? std::vector<std::string>{"qv_Relation", text("Col_QvItemType"), text("Col_QvItemID"),
                                              text("Col_DQvItemType") == std::to_string(kItemTypeGroup)
                                                  ? text("Col_DQvItemID")
                                                  : ""}
                   : std::vector<std::string>{std::string(noun.table), "", text("Col_P_ObjID"), text("Col_S_ObjID")};
    }

    void Report(const Wanted& wanted)
    {
        const ExportedLine& line = *wanted.line;
        const RowFate fate = wanted.problem.empty() ? wanted.fate : RowFate::failed;
        ++m_report.counts.at(static_cast<std::size_t>(fate));
        ++m_report.rows;
        m_report.privileged += wanted.isPrivileged ? 1 : 0;
        m_report.lastLine = std::max(m_report.lastLine, line.number);
        m_call.Row(std::int64_t{line.number}, TextValue(std::string(line.noun == nullptr ? "" : line.noun->name)),
                   TextValue(wanted.name), TextValue(std::string(kRowFates.at(static_cast<std::size_t>(fate)))),
                   TextValue(wanted.problem));
    }

    Call& m_call;
    CAConnect& m_conn;
    bool m_dryRun;
    const DirectoryImportOptions& m_options;
    LineSource& m_reader;
    ImportReport& m_report;
    std::optional<ItemNames> m_names;                            // read with the first block
    std::string m_itemsState;                                    // when they were read
    std::map<std::string_view, schema::ColumnLengths> m_lengths; // by table
    std::optional<ExportedLine> m_next;
    std::optional<Change> m_change;                  // of a dry run all the time
    std::set<std::vector<std::string>> m_links;      // that were made for paths
    std::vector<std::pair<MemberKind, int>> m_added; // to m_names by the block at hand
};

} // namespace

void ImportDirectory(Call& call, const ImportSource& source, const DirectoryImportOptions& options,
                     ImportReport& report)
{
    LineReader reader(source.in, source.name);
    reader.RequireHead();
    ImportLines(call, reader, source, options, report);
}

void ImportLines(Call& call, LineSource& lines, const ImportSource& source, const DirectoryImportOptions& options,
                 ImportReport& report)
{
    const auto noteIfCutShort = [&] {
        report.cutShort = call.Front().IsStopRequested() ? "stopped by a signal"
                          : lines.Failed()               ? fmt::format("{} cannot be read", source.name)
                                                         : "";
        return !report.cutShort.empty();
    };
    if (noteIfCutShort()) {
        return;
    }
    try {
        Importer(call, options, lines, report).Run(source.rows);
    } catch (const DatabaseError& e) {
        throw Error(ErrorCode::database, fmt::format("stopped: {}", e.what()));
    }
    noteIfCutShort();
}

} // namespace management
