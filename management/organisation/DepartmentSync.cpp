#include "management/organisation/DepartmentSync.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

namespace management {

namespace {

/// A department as a user's row has it.
struct Department {
    int id = 0;
    std::string text;

    bool operator<(const Department& other) const { return std::tie(id, text) < std::tie(other.id, other.text); }
};

/// What a department is to become; nothing where it stays.
using NextDepartment = std::function<std::optional<Department>(const Department&)>;

/// The groups that a path leads through, from the first below a view to the last.
using GroupPath = std::vector<ItemKey>;

/// The groups as department texts name them.
class DepartmentTree {
public:
    explicit DepartmentTree(const Organisation& organisation) : m_organisation(organisation)
    {
        for (const Node& place : organisation.Nodes()) {
            if (IsTop(place)) {
                m_tops[place.nameKey].push_back(place.key);
            }
        }
    }

    [[nodiscard]] bool Has(ItemKey group) const { return m_organisation.Find(group) != nullptr; }

    /// The ways that a text describes, one to each group that it may mean.
    [[nodiscard]] const std::vector<GroupPath>& Find(const std::string& text)
    {
        const auto [entry, isNew] = m_found.try_emplace(text);
        if (isNew) {
            entry->second = Walk(NamesIn(text));
        }
        return entry->second;
    }

    /// A text that names a group.
    [[nodiscard]] std::string TextOf(ItemKey group) const
    {
        std::string text;
        for (const Node* place = m_organisation.Find(group); place != nullptr && IsGroup(*place);
             place = place->parent ? &m_organisation.Nodes()[*place->parent] : nullptr) {
            text.insert(0, PathEscaped(place->name) + (text.empty() ? "" : "/"));
        }
        return text;
    }

    /// A text that names the last group of a way, by so much of the way as there is. @param way  may lead through
    /// links that are gone.
    [[nodiscard]] std::string TextAlong(const GroupPath& way) const
    {
        std::size_t begin = way.size() - 1;
        while (begin > 0 && IsLinked(way[begin - 1], way[begin])) {
            --begin;
        }
        const bool isWhole = begin == 0 && IsTop(*m_organisation.Find(way.front()));
        std::string text = isWhole ? PathEscaped(m_organisation.Find(way.front())->name) : TextOf(way[begin]);
        for (const ItemKey group : std::span(way).subspan(begin + 1)) {
            text += fmt::format("/{}", PathEscaped(m_organisation.Find(group)->name));
        }
        return text;
    }

private:
    static bool IsGroup(const Node& place) { return place.key.type == kItemTypeGroup; }

    [[nodiscard]] bool IsTop(const Node& place) const
    {
        const auto isView = [this](std::size_t parent) { return !IsGroup(m_organisation.Nodes()[parent]); };
        return IsGroup(place) && (!place.parent || std::ranges::any_of(place.parents, isView));
    }

    [[nodiscard]] bool IsLinked(ItemKey parent, ItemKey child) const
    {
        const Node* below = m_organisation.Find(child);
        const auto isParent = [&](std::size_t above) { return m_organisation.Nodes()[above].key == parent; };
        return below != nullptr && std::ranges::any_of(below->parents, isParent);
    }

    /// None for a text that is not a path.
    static std::vector<std::string> NamesIn(const std::string& text)
    {
        try {
            return text.empty() ? std::vector<std::string>() : SplitPath("/" + text);
        } catch (const Error&) {
            return {};
        }
    }

    [[nodiscard]] std::vector<GroupPath> Walk(const std::vector<std::string>& names) const
    {
        std::vector<GroupPath> ways;
        for (const std::string& name : names) {
            ways = ways.empty() ? FirstSteps(name) : LongerBy(ways, name);
            if (ways.empty()) {
                break;
            }
        }
        return ways;
    }

    [[nodiscard]] std::vector<GroupPath> FirstSteps(const std::string& name) const
    {
        std::vector<GroupPath> ways;
        const auto tops = m_tops.find(NameKey(name));
        if (tops != m_tops.end()) {
            std::ranges::transform(tops->second, std::back_inserter(ways), [](ItemKey top) { return GroupPath{top}; });
        }
        return ways;
    }

    /// One way to each group is enough: many would lead to those of the same name.
    [[nodiscard]] std::vector<GroupPath> LongerBy(const std::vector<GroupPath>& ways, const std::string& name) const
    {
        std::vector<GroupPath> longer;
        for (const GroupPath& way : ways) {
            for (const ItemKey child : m_organisation.ChildrenNamed(way.back(), name)) {
                const auto endsThere = [child](const GroupPath& other) { return other.back() == child; };
                if (std::ranges::none_of(longer, endsThere)) {
                    longer.push_back(way);
                    longer.back().push_back(child);
                }
            }
        }
        return longer;
    }

    const Organisation& m_organisation;
    std::unordered_map<std::string, std::vector<ItemKey>> m_tops;    // by their names in capitals
    std::unordered_map<std::string, std::vector<GroupPath>> m_found; // by text
};

const GroupPath* WayTo(const std::vector<GroupPath>& ways, ItemKey group)
{
    const auto found = std::ranges::find_if(ways, [group](const GroupPath& way) { return way.back() == group; });
    return found == ways.end() ? nullptr : &*found;
}

ItemKey GroupOf(const Department& department) { return {kItemTypeGroup, department.id}; }

/// What becomes of departments when groups change.
class DepartmentChange {
public:
    DepartmentChange(const Organisation& before, const Organisation& after, ItemKey changed)
        : m_before(before), m_after(after)
    {
        const std::vector<ItemKey> below = before.Below(changed);
        m_affected.insert(changed);
        m_affected.insert(below.begin(), below.end());
    }

    std::optional<Department> operator()(const Department& old)
    {
        const auto [entry, isNew] = m_known.try_emplace(old);
        if (isNew) {
            entry->second = m_affected.contains(GroupOf(old)) ? ById(old) : ByText(old);
        }
        return entry->second;
    }

private:
    std::optional<Department> ById(const Department& old)
    {
        const std::vector<GroupPath>& present = m_after.Find(old.text);
        if (!m_after.Has(GroupOf(old))) {
            return Department{0, present.empty() ? "" : old.text};
        }
        if (const GroupPath* way = WayTo(m_before.Find(old.text), GroupOf(old))) {
            return Along(*way, old);
        }
        return WayTo(present, GroupOf(old)) != nullptr
                   ? std::nullopt
                   : std::optional(Department{old.id, m_after.TextOf(GroupOf(old))});
    }

    std::optional<Department> ByText(const Department& old)
    {
        const std::vector<GroupPath>& ways = m_before.Find(old.text);
        const auto way =
            std::ranges::find_if(ways, [this](const GroupPath& it) { return m_affected.contains(it.back()); });
        if (way == ways.end() || !m_after.Find(old.text).empty()) {
            return std::nullopt;
        }
        return m_after.Has(way->back()) ? Along(*way, old) : std::optional(Department{old.id, ""});
    }

    /// A way that the change did not touch leaves the text as it was written.
    std::optional<Department> Along(const GroupPath& way, const Department& old)
    {
        std::string text = m_after.TextAlong(way);
        return text == m_before.TextAlong(way) ? std::nullopt : std::optional(Department{old.id, std::move(text)});
    }

    DepartmentTree m_before;
    DepartmentTree m_after;
    std::set<ItemKey> m_affected;
    std::map<Department, std::optional<Department>> m_known;
};

/// The users of one department id: how many there are, and those of them whose department changes.
struct Holders {
    std::size_t count = 0;
    std::map<Department, std::vector<int>> changes;
};

std::map<int, Holders> ReadHolders(CAConnect& conn, const std::string& condition, const NextDepartment& next)
{
    std::map<int, Holders> holders;
    EachRow(conn, "SELECT Col_ID, Col_DeptID, Col_DeptInfo FROM qv_User WHERE " + condition, [&](CARecordset& row) {
        int user = 0;
        Department old;
        ReadColumns(row, user, old.id, old.text);
        Holders& sameId = holders[old.id];
        ++sameId.count;
        if (const std::optional<Department> changed = next(old)) {
            sameId.changes[*changed].push_back(user);
        }
    });
    return holders;
}

void Write(CAConnect& conn, const Department& department, const std::string& condition)
{
    const std::string sql = fmt::format("UPDATE qv_User SET Col_DeptID = {}, Col_DeptInfo = '{}' WHERE {}",
                                        department.id, EscapeLiteral(conn, department.text).View(), condition);
    WithDatabaseErrors(conn, [&] { conn.Execute(sql.c_str()); });
}

/// Gives a condition for each part of the ids.
template <class Use>
void InParts(std::span<const int> ids, Use use)
{
    ForEachPart(ids, [&use](std::span<const int> part) { use(fmt::format("Col_ID IN ({})", fmt::join(part, ","))); });
}

std::size_t WriteChanges(CAConnect& conn, int oldId, const Holders& holders)
{
    std::size_t changed = 0;
    for (const auto& entry : holders.changes) {
        const Department& department = entry.first;
        const std::vector<int>& users = entry.second;
        changed += users.size();
        if (users.size() == holders.count && users.size() > kIdsPerStatement) {
            // The range spares the engine the rest of the table, which has no index by department.
            const auto [first, last] = std::ranges::minmax(users);
            Write(conn, department, fmt::format("Col_DeptID = {} AND Col_ID BETWEEN {} AND {}", oldId, first, last));
        } else {
            InParts(users, [&](const std::string& condition) { Write(conn, department, condition); });
        }
    }
    return changed;
}

/// Changes the departments of those who fulfil the condition. @return of how many.
std::size_t ChangeDepartments(CAConnect& conn, const std::string& condition, const NextDepartment& next)
{
    std::size_t changed = 0;
    for (const auto& [id, holders] : ReadHolders(conn, condition, next)) {
        changed += WriteChanges(conn, id, holders);
    }
    return changed;
}

std::size_t ChangeOf(CAConnect& conn, const std::vector<int>& users, const NextDepartment& next)
{
    std::size_t changed = 0;
    InParts(users, [&](const std::string& condition) { changed += ChangeDepartments(conn, condition, next); });
    return changed;
}

} // namespace

std::size_t SyncDepartments(const Organisation& before, ItemKey changed)
{
    CAConnect& conn = before.Connection();
    const Organisation after(conn);
    DepartmentChange change(before, after, changed);
    return ChangeDepartments(conn, "Col_DeptID <> 0 OR Col_DeptInfo <> ''", std::ref(change));
}

std::size_t SyncJoined(const Organisation& organisation, ItemKey holder, const std::vector<int>& users)
{
    DepartmentTree tree(organisation);
    return ChangeOf(organisation.Connection(), users, [&](const Department& old) -> std::optional<Department> {
        const std::vector<GroupPath>& ways = tree.Find(old.text);
        const bool isThis = ways.size() == 1 && ways.front().back() == holder;
        return isThis && !tree.Has(GroupOf(old)) ? std::optional(Department{holder.id, old.text}) : std::nullopt;
    });
}

std::size_t SyncLeft(const Organisation& organisation, ItemKey holder, const std::vector<int>& users)
{
    DepartmentTree tree(organisation);
    return ChangeOf(organisation.Connection(), users, [&](const Department& old) -> std::optional<Department> {
        const std::vector<GroupPath>& ways = tree.Find(old.text);
        const bool byText = WayTo(ways, holder) != nullptr;
        if (GroupOf(old) == holder) {
            return Department{0, byText || ways.empty() ? "" : old.text};
        }
        return byText && ways.size() == 1 ? std::optional(Department{old.id, ""}) : std::nullopt;
    });
}

Sentence DepartmentsChanged(std::size_t users)
{
    return FillPlural("the department of {} person was changed with it",
                      "the department of {} people was changed with it", users, users);
}

Sentence WithDepartments(std::size_t users) { return users == 0 ? Sentence() : "; " + DepartmentsChanged(users); }

} // namespace management
