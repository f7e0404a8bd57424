#include "management/organisation/Organisation.h"

#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "directory/GroupItem.h"
#include "directory/RelationItem.h"
#include "directory/ViewItem.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Resolve.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <tuple>
#include <unordered_set>
#include <utility>

namespace management {

namespace {

constexpr std::string_view kGroupPrefix = "id:";
constexpr std::string_view kViewPrefix = "view:";

/// Reads the columns of a row one after the other; NULL leaves what is there.
class ColumnReader {
public:
    explicit ColumnReader(CARecordset& row) : m_row(row) {}

    ColumnReader& operator>>(int& out)
    {
        m_row.GetValue(++m_column, out);
        return *this;
    }

    ColumnReader& operator>>(bool& out)
    {
        m_row.GetValue(++m_column, out);
        return *this;
    }

    ColumnReader& operator>>(std::string& out)
    {
        out = m_row.GetValueToStr(++m_column, true).View();
        return *this;
    }

    ColumnReader& operator>>(std::optional<std::string>& out)
    {
        CString text;
        if (m_row.GetValue(++m_column, text, true)) {
            out = text.View();
        }
        return *this;
    }

private:
    CARecordset& m_row;
    long m_column = 0;
};

std::optional<int> ReadNumber(std::string_view text)
{
    int number = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

/// The key that "id:17" or "view:4" stands for; nothing for any other text.
std::optional<ItemKey> KeyIn(std::string_view text)
{
    const bool isView = text.starts_with(kViewPrefix);
    if (!isView && !text.starts_with(kGroupPrefix)) {
        return std::nullopt;
    }
    const std::optional<int> id = ReadNumber(text.substr(isView ? kViewPrefix.size() : kGroupPrefix.size()));
    if (!id) {
        throw Error(ErrorCode::invalid, fmt::format("{} is no id; write {} and a number", Quoted(text),
                                                    isView ? kViewPrefix : kGroupPrefix));
    }
    return ItemKey{isView ? kItemTypeView : kItemTypeGroup, *id};
}

std::string KeyText(ItemKey key)
{
    return fmt::format("{}{}", key.type == kItemTypeView ? kViewPrefix : kGroupPrefix, key.id);
}

bool IsSystemView(const Node& place) { return place.key.type == kItemTypeView && place.viewType == kSystemView; }

/// Walks down from a group's children and keeps the way, without a call inside a call: some chains are long.
class WayDown {
public:
    WayDown(std::span<const Node> places, std::size_t from) : m_places(places), m_state(places.size(), State::unseen)
    {
        Enter(from);
    }

    /// The first way that comes back to itself; its first place is also its last.
    std::vector<std::size_t> FindCycle()
    {
        while (!m_way.empty()) {
            Step& step = m_way.back();
            const std::vector<std::size_t>& children = m_places[step.place].children;
            if (step.next == children.size()) {
                m_state[step.place] = State::left;
                m_way.pop_back();
                continue;
            }
            const std::size_t child = children[step.next++];
            if (m_state[child] == State::onWay) {
                return From(child);
            }
            if (m_state[child] == State::unseen) {
                Enter(child);
            }
        }
        return {};
    }

private:
    enum class State : char { unseen, onWay, left };
    struct Step {
        std::size_t place;
        std::size_t next = 0;
    };

    void Enter(std::size_t place)
    {
        m_state[place] = State::onWay;
        m_way.push_back({place});
    }

    [[nodiscard]] std::vector<std::size_t> From(std::size_t place) const
    {
        std::vector<std::size_t> cycle;
        for (auto step = std::ranges::find(m_way, place, &Step::place); step != m_way.end(); ++step) {
            cycle.push_back(step->place);
        }
        cycle.push_back(place);
        return cycle;
    }

    std::span<const Node> m_places;
    std::vector<State> m_state;
    std::vector<Step> m_way;
};

void KeepOnce(std::vector<ItemKey>& keys)
{
    std::ranges::sort(keys);
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
}

} // namespace

// ---- Names and paths ------------------------------------------------------------------------------------------------

void CheckName(std::string_view noun, const std::string& name)
{
    if (name.empty()) {
        throw Error(ErrorCode::invalid, fmt::format("the name of the {} is empty", noun));
    }
    if (HasOuterBlanks(name)) {
        throw Error(ErrorCode::invalid, fmt::format("the {} name {} begins or ends with a blank", noun, Quoted(name)));
    }
    if (HasControlCharacter(name)) {
        throw Error(ErrorCode::invalid, fmt::format("the {} name {} holds a control character", noun, Quoted(name)));
    }
}

std::vector<std::string> SplitPath(const std::string& path)
{
    if (!path.starts_with('/')) {
        throw Error(ErrorCode::invalid,
                    fmt::format("{} is no path; write /VIEW/GROUP, or id:17, or view:4", Quoted(path)));
    }
    std::vector<std::string> names;
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] == '/') {
            names.emplace_back();
            continue;
        }
        if (path[i] == '\\' && (++i == path.size() || (path[i] != '/' && path[i] != '\\'))) {
            throw Error(ErrorCode::invalid,
                        fmt::format("in the path {} a backslash is followed by neither / nor \\; write "
                                    "\\\\ for a backslash in a name",
                                    Quoted(path)));
        }
        names.back() += path[i];
    }
    if (std::ranges::any_of(names, &std::string::empty)) {
        throw Error(ErrorCode::invalid, fmt::format("the path {} holds an empty name", Quoted(path)));
    }
    return names;
}

ParentAndName SplitLast(const std::string& path)
{
    const std::size_t begin = path.find('/');
    // A path may begin with an id instead of a view's name.
    const bool beginsWell = begin == 0 || (begin != std::string::npos && KeyIn(path.substr(0, begin)));
    const std::vector<std::string> names = beginsWell ? SplitPath(path.substr(begin)) : std::vector<std::string>();
    if (names.size() < (begin == 0 ? 2U : 1U)) {
        throw Error(ErrorCode::invalid, fmt::format("{} is no path of a group; write /VIEW/GROUP", Quoted(path)));
    }
    return {path.substr(0, path.size() - PathEscaped(names.back()).size() - 1), names.back()};
}

std::string PathEscaped(std::string_view name)
{
    std::string escaped;
    for (const char ch : name) {
        if (ch == '/' || ch == '\\') {
            escaped += '\\';
        }
        escaped += ch;
    }
    return escaped;
}

// ---- The picture ----------------------------------------------------------------------------------------------------

Organisation::Organisation(CAConnect& conn) : m_conn(conn)
{
    LoadPlaces();
    LoadLinks();
    LoadUserCounts();
    FindPaths();
}

void Organisation::LoadPlaces()
{
    EachRow(m_conn, "SELECT Col_ID, Col_Name, Col_ItemIndex, Col_Type, Col_OwnerID FROM qv_View",
            [this](CARecordset& row) {
                Node& place = m_places.emplace_back();
                place.key.type = kItemTypeView;
                ColumnReader(row) >> place.key.id >> place.name >> place.sortIndex >> place.viewType >> place.viewOwner;
            });
    EachRow(m_conn, "SELECT Col_ID, Col_Name, Col_ItemIndex FROM qv_Group", [this](CARecordset& row) {
        Node& place = m_places.emplace_back();
        place.key.type = kItemTypeGroup;
        ColumnReader(row) >> place.key.id >> place.name >> place.sortIndex;
    });
    for (Node& place : m_places) {
        place.nameKey = NameKey(place.name);
    }
    const auto isBefore = [](const Node& a, const Node& b) {
        // Views before groups.
        return std::tie(b.key.type, a.sortIndex, a.nameKey, a.name, a.key.id) <
               std::tie(a.key.type, b.sortIndex, b.nameKey, b.name, b.key.id);
    };
    std::ranges::sort(m_places, isBefore);
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const ItemKey key = m_places[i].key;
        (key.type == kItemTypeView ? m_views : m_groups)[key.id] = i;
    }
}

void Organisation::LoadLinks()
{
    EachRow(m_conn,
            fmt::format("SELECT DISTINCT Col_QvItemType, Col_QvItemID, Col_DQvItemID FROM qv_Relation WHERE "
                        "Col_QvItemType IN ({0}, {1}) AND Col_DQvItemType = {0} AND Col_RelType = {2}",
                        kItemTypeGroup, kItemTypeView, kMembership),
            [this](CARecordset& row) {
                ItemKey holder{};
                ItemKey member{kItemTypeGroup, 0};
                ColumnReader(row) >> holder.type >> holder.id >> member.id;
                const std::optional<std::size_t> parent = IndexOf(holder);
                const std::optional<std::size_t> child = IndexOf(member);
                if (parent && child) {
                    m_places[*parent].children.push_back(*child);
                    m_places[*child].parents.push_back(*parent);
                }
            });
    for (Node& place : m_places) {
        // The places are in the order in which they are to be shown.
        std::ranges::sort(place.children);
        std::ranges::sort(place.parents);
    }
}

void Organisation::LoadUserCounts()
{
    EachRow(m_conn,
            fmt::format("SELECT r.Col_QvItemType, r.Col_QvItemID, COUNT(DISTINCT r.Col_DQvItemID) FROM qv_Relation r "
                        "INNER JOIN qv_User u ON u.Col_ID = r.Col_DQvItemID WHERE r.Col_QvItemType IN ({}, {}) AND "
                        "r.Col_DQvItemType = {} AND r.Col_RelType = {} GROUP BY r.Col_QvItemType, r.Col_QvItemID",
                        kItemTypeGroup, kItemTypeView, kItemTypeUser, kMembership),
            [this](CARecordset& row) {
                ItemKey holder{};
                int users = 0;
                ColumnReader(row) >> holder.type >> holder.id >> users;
                if (const std::optional<std::size_t> place = IndexOf(holder)) {
                    m_places[*place].users = users;
                }
            });
}

void Organisation::FindPaths()
{
    const auto placesWhere = [this](auto isWanted) {
        std::vector<std::size_t> found;
        for (std::size_t i = 0; i < m_places.size(); ++i) {
            if (isWanted(m_places[i])) {
                found.push_back(i);
            }
        }
        return found;
    };
    Visit(placesWhere(IsSystemView), true);
    Visit(
        placesWhere([](const Node& place) { return place.key.type == kItemTypeView && place.viewType != kSystemView; }),
        true);
    Visit(placesWhere([](const Node& place) { return place.key.type == kItemTypeGroup && place.parents.empty(); }),
          false);
    // What is left hangs on cycles alone; each path begins somewhere on one.
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const Node& place = m_places[i];
        if (!place.hangsInView && !place.via && !place.parents.empty()) {
            Visit({i}, false);
        }
    }
}

void Organisation::Visit(std::vector<std::size_t> from, bool inView)
{
    const std::unordered_set<std::size_t> begins(from.begin(), from.end());
    for (const std::size_t begin : from) {
        m_places[begin].hangsInView = inView;
    }
    // The list grows while it is walked: the nearest places come first, so that paths are short.
    for (std::size_t i = 0; i < from.size(); ++i) {
        const std::size_t parent = from[i];
        for (const std::size_t child : m_places[parent].children) {
            Node& place = m_places[child];
            if (!place.hangsInView && !place.via && !begins.contains(child)) {
                place.via = parent;
                place.hangsInView = inView;
                from.push_back(child);
            }
        }
    }
}

// ---- Look-ups -------------------------------------------------------------------------------------------------------

std::optional<std::size_t> Organisation::IndexOf(ItemKey key) const
{
    const auto& places = key.type == kItemTypeView ? m_views : m_groups;
    const auto found = key.type == kItemTypeView || key.type == kItemTypeGroup ? places.find(key.id) : places.end();
    return found == places.end() ? std::nullopt : std::optional(found->second);
}

const Node* Organisation::Find(ItemKey key) const
{
    const std::optional<std::size_t> place = IndexOf(key);
    return place ? &m_places[*place] : nullptr;
}

std::size_t Organisation::NumberOf(ItemKey key) const
{
    return (key.type == kItemTypeView ? m_views : m_groups).at(key.id);
}

std::vector<ItemKey> Organisation::FindAll(const std::string& argument) const
{
    std::vector<std::string> names;
    std::vector<ItemKey> found;
    const std::size_t headEnd = argument.starts_with('/') ? 0 : argument.find('/');
    if (const std::optional<ItemKey> key = KeyIn(std::string_view(argument).substr(0, headEnd))) {
        names = headEnd == std::string::npos ? names : SplitPath(argument.substr(headEnd));
        if (Find(*key) != nullptr) {
            found.push_back(*key);
        }
    } else {
        names = SplitPath(argument);
        found = SystemViewsNamed(names.front());
        names.erase(names.begin());
    }
    for (const std::string& name : names) {
        std::vector<ItemKey> below;
        for (const ItemKey parent : found) {
            std::ranges::copy(ChildrenNamed(parent, name), std::back_inserter(below));
        }
        KeepOnce(below);
        found = std::move(below);
    }
    return found;
}

ItemKey Organisation::OnlyOne(const std::string& argument, const std::vector<ItemKey>& found,
                              std::string_view noun) const
{
    if (found.empty()) {
        throw Error(ErrorCode::notFound, fmt::format("there is no {} {}; `qvadmin {}` shows all", noun,
                                                     Quoted(argument), noun == "view" ? "view list" : "group tree"));
    }
    if (found.size() > 1) {
        std::vector<Candidate> candidates;
        candidates.reserve(found.size());
        for (const ItemKey key : found) {
            candidates.push_back({Named(key), KeyText(key)});
        }
        ThrowAmbiguous(argument, candidates);
    }
    return found.front();
}

ItemKey Organisation::FindHolder(const std::string& argument) const
{
    return OnlyOne(argument, FindAll(argument), "group or view");
}

ItemKey Organisation::FindGroup(const std::string& argument) const
{
    const ItemKey key = OnlyOne(argument, FindAll(argument), "group");
    if (key.type != kItemTypeGroup) {
        throw Error(ErrorCode::invalid, fmt::format("{} is a view, not a group", Named(key)));
    }
    return key;
}

ItemKey Organisation::FindView(const std::string& argument) const
{
    const bool isName = !argument.starts_with('/') && !argument.starts_with(kViewPrefix);
    const ItemKey key = OnlyOne(argument, isName ? SystemViewsNamed(argument) : FindAll(argument), "view");
    if (key.type != kItemTypeView) {
        throw Error(ErrorCode::invalid, fmt::format("{} is a group, not a view", Named(key)));
    }
    return key;
}

std::vector<ItemKey> Organisation::ChildrenNamed(ItemKey parent, std::string_view name) const
{
    std::vector<ItemKey> found;
    const std::string key = NameKey(name);
    if (const Node* place = Find(parent)) {
        for (const std::size_t child : place->children) {
            if (m_places[child].nameKey == key) {
                found.push_back(m_places[child].key);
            }
        }
    }
    return found;
}

std::optional<RowName> Organisation::FindConfusedChild(ItemKey parent, std::string_view name, ItemKey except) const
{
    return FindConfused(m_conn, "qv_Group", name,
                        fmt::format("Col_ID <> {} AND Col_ID IN (SELECT Col_DQvItemID FROM qv_Relation WHERE "
                                    "Col_QvItemID = {} AND Col_QvItemType = {} AND Col_DQvItemType = {} AND "
                                    "Col_RelType = {})",
                                    except.id, parent.id, parent.type, kItemTypeGroup, kMembership));
}

std::vector<ItemKey> Organisation::SystemViewsNamed(std::string_view name) const
{
    std::vector<ItemKey> found;
    const std::string key = NameKey(name);
    for (const Node& place : m_places) {
        if (IsSystemView(place) && place.nameKey == key) {
            found.push_back(place.key);
        }
    }
    return found;
}

std::string Organisation::PathOf(ItemKey key) const
{
    std::vector<std::string_view> names;
    const Node* place = Find(key);
    for (; place != nullptr && place->via; place = &m_places[*place->via]) {
        names.push_back(place->name);
    }
    std::string path = place == nullptr       ? KeyText(key)
                       : IsSystemView(*place) ? "/" + PathEscaped(place->name)
                                              : KeyText(place->key);
    std::ranges::reverse(names);
    for (const std::string_view name : names) {
        path += fmt::format("/{}", PathEscaped(name));
    }
    return path;
}

std::string Organisation::Named(ItemKey key) const
{
    const Node* place = Find(key);
    const std::string path = PathOf(key);
    // A path that is an id says nothing of the name.
    const std::string text = place != nullptr && path == KeyText(key) ? place->name : path;
    return fmt::format("{} ({} {})", Visible(text), key.type == kItemTypeView ? "view" : "id", key.id);
}

std::vector<std::size_t> Organisation::Descendants(std::size_t from) const
{
    std::vector<std::size_t> reached;
    std::unordered_set<std::size_t> seen;
    const auto take = [&](std::size_t place) {
        for (const std::size_t child : m_places[place].children) {
            if (seen.insert(child).second) {
                reached.push_back(child);
            }
        }
    };
    take(from);
    // The list grows while it is walked.
    for (std::size_t next = 0; next < reached.size();) {
        take(reached[next++]);
    }
    return reached;
}

std::vector<ItemKey> Organisation::Below(ItemKey key) const
{
    std::vector<ItemKey> keys;
    if (const std::optional<std::size_t> from = IndexOf(key)) {
        std::ranges::transform(Descendants(*from), std::back_inserter(keys),
                               [this](std::size_t place) { return m_places[place].key; });
    }
    return keys;
}

int Organisation::UsersBelow(ItemKey key) const
{
    int users = 0;
    const std::optional<std::size_t> from = IndexOf(key);
    if (from) {
        for (const std::size_t place : Descendants(*from)) {
            users += place == *from ? 0 : m_places[place].users;
        }
    }
    return users;
}

std::vector<ItemKey> Organisation::OrphanedBy(ItemKey key) const
{
    const std::optional<std::size_t> root = IndexOf(key);
    if (!root) {
        return {};
    }
    const std::vector<std::size_t> below = Descendants(*root);
    std::unordered_set<std::size_t> going(below.begin(), below.end());
    going.insert(*root);
    std::vector<std::size_t> staying;
    const auto keep = [&](std::size_t place) {
        if (place != *root && going.erase(place) > 0) {
            staying.push_back(place);
        }
    };
    const std::unordered_set<std::size_t> reach = going;
    for (const std::size_t place : below) {
        const auto isElsewhere = [&reach](std::size_t parent) { return !reach.contains(parent); };
        if (std::ranges::any_of(m_places[place].parents, isElsewhere)) {
            keep(place);
        }
    }
    // What hangs below a group that stays, stays too; the list grows while it is walked.
    for (std::size_t next = 0; next < staying.size();) {
        std::ranges::for_each(m_places[staying[next++]].children, keep);
    }
    std::vector<ItemKey> gone;
    std::ranges::transform(going, std::back_inserter(gone), [this](std::size_t place) { return m_places[place].key; });
    std::ranges::sort(gone);
    return gone;
}

std::vector<ItemKey> Organisation::CycleClosedBy(ItemKey parent, ItemKey group) const
{
    const std::optional<std::size_t> top = IndexOf(group);
    const std::optional<std::size_t> bottom = IndexOf(parent);
    if (!top || !bottom) {
        return {};
    }
    std::unordered_map<std::size_t, std::size_t> cameFrom = {{*top, *top}};
    std::vector<std::size_t> reached = {*top};
    for (std::size_t i = 0; i < reached.size() && !cameFrom.contains(*bottom); ++i) {
        const std::size_t place = reached[i];
        for (const std::size_t child : m_places[place].children) {
            if (cameFrom.emplace(child, place).second) {
                reached.push_back(child);
            }
        }
    }
    if (!cameFrom.contains(*bottom)) {
        return {};
    }
    std::vector<ItemKey> cycle = {group};
    for (std::size_t place = *bottom; place != *top; place = cameFrom.at(place)) {
        cycle.push_back(m_places[place].key);
    }
    cycle.push_back(group);
    std::ranges::reverse(cycle);
    return cycle;
}

std::vector<ItemKey> Organisation::FindCycle(ItemKey from) const
{
    std::vector<ItemKey> cycle;
    if (const std::optional<std::size_t> place = IndexOf(from)) {
        std::ranges::transform(WayDown(m_places, *place).FindCycle(), std::back_inserter(cycle),
                               [this](std::size_t step) { return m_places[step].key; });
    }
    return cycle;
}

std::string Organisation::CycleText(const std::vector<ItemKey>& cycle) const
{
    std::string text;
    for (const ItemKey key : cycle) {
        text += (text.empty() ? "" : " -> ") + Visible(PathOf(key));
    }
    return text;
}

std::optional<GroupData> Organisation::LoadGroup(int id)
{
    std::optional<GroupData> group;
    EachRow(m_conn,
            fmt::format("SELECT Col_Name, Col_Description, Col_Creator_Name, Col_Dt_Create, Col_ItemIndex, "
                        "Col_DomainID, Col_Style FROM qv_Group WHERE Col_ID = {}",
                        id),
            [&group](CARecordset& row) {
                GroupData& data = group.emplace();
                ColumnReader(row) >> data.name >> data.description >> data.creator >> data.created >> data.sortIndex >>
                    data.domainId >> data.style;
            });
    return group;
}

std::optional<ViewData> Organisation::LoadView(int id)
{
    std::optional<ViewData> view;
    EachRow(m_conn,
            fmt::format("SELECT Col_Name, Col_Description, Col_Creator_Name, Col_Dt_Create, Col_Type, Col_OwnerID, "
                        "Col_ItemIndex, Col_DomainID, Col_Style, Col_IsPublic FROM qv_View WHERE Col_ID = {}",
                        id),
            [&view](CARecordset& row) {
                ViewData& data = view.emplace();
                ColumnReader(row) >> data.name >> data.description >> data.creator >> data.created >> data.type >>
                    data.ownerId >> data.sortIndex >> data.domainId >> data.style >> data.isPublic;
            });
    return view;
}

int Organisation::GroupStyle(int id)
{
    int style = 0;
    Run(m_conn, [&] { return CQVBaseFun::GetGroupStyle(m_conn, id, style); });
    return style;
}

std::map<ItemKey, std::vector<Member>> Organisation::LoadMembers()
{
    std::map<ItemKey, std::vector<Member>> members;
    EachRow(m_conn,
            fmt::format("SELECT DISTINCT r.Col_QvItemType, r.Col_QvItemID, u.Col_ID, u.Col_LoginName, u.Col_Name "
                        "FROM qv_Relation r INNER JOIN qv_User u ON u.Col_ID = r.Col_DQvItemID WHERE "
                        "r.Col_QvItemType IN ({}, {}) AND r.Col_DQvItemType = {} AND r.Col_RelType = {} "
                        "ORDER BY u.Col_LoginName, u.Col_ID",
                        kItemTypeGroup, kItemTypeView, kItemTypeUser, kMembership),
            [&members](CARecordset& row) {
                ItemKey holder{};
                Member member{};
                ColumnReader(row) >> holder.type >> holder.id >> member.id >> member.login >> member.name;
                members[holder].push_back(std::move(member));
            });
    return members;
}

MemberCounts Organisation::CountMembers(const std::vector<int>& groups)
{
    const std::unordered_set<int> counted(groups.begin(), groups.end());
    std::unordered_set<int> members;
    std::unordered_set<int> others; // who are members of other groups
    EachRow(m_conn,
            fmt::format("SELECT r.Col_DQvItemID, r.Col_QvItemID FROM qv_Relation r INNER JOIN qv_User u ON u.Col_ID = "
                        "r.Col_DQvItemID WHERE r.Col_QvItemType = {} AND r.Col_DQvItemType = {} AND r.Col_RelType = {}",
                        kItemTypeGroup, kItemTypeUser, kMembership),
            [&](CARecordset& row) {
                int user = 0;
                ItemKey group{kItemTypeGroup, 0};
                ColumnReader(row) >> user >> group.id;
                if (counted.contains(group.id)) {
                    members.insert(user);
                } else if (IndexOf(group)) {
                    others.insert(user);
                }
            });
    const auto isInOther = [&others](int user) { return others.contains(user); };
    return {members.size(), members.size() - static_cast<std::size_t>(std::ranges::count_if(members, isInOther))};
}

std::vector<Reference> Organisation::References(int type, const std::vector<int>& ids)
{
    return CountReferences(m_conn, type, ids);
}

std::string Organisation::DefaultViewName()
{
    CString name;
    Run(m_conn, [&] { return CQVBaseFun::GetDefaultSysView(m_conn, name); });
    return std::string(name.View());
}

// ---- Writes ---------------------------------------------------------------------------------------------------------

CString Organisation::EscapeLiteral(std::string_view text) const { return management::EscapeLiteral(m_conn, text); }

int Organisation::CreateGroup(ItemKey parent, const GroupData& group)
{
    RequireFits(m_conn, "qv_Group",
                {{"the name", "Col_Name", group.name},
                 {"the description", "Col_Description", group.description},
                 {"the creator", "Col_Creator_Name", group.creator}});
    CGroupItem item;
    item.m_strName = EscapeLiteral(group.name);
    item.m_strDescription = EscapeLiteral(group.description);
    item.m_strCreatorName = EscapeLiteral(group.creator);
    item.m_nItemIndex = group.sortIndex;
    item.m_nDomainID = group.domainId;
    item.m_nStyle = group.style;
    Run(m_conn, [&] { return item.SaveData(m_conn) != 0; });
    const int id = LastInsertedId(m_conn);
    AddMember(parent, {kItemTypeGroup, id});
    return id;
}

int Organisation::CreateView(const ViewData& view)
{
    RequireFits(m_conn, "qv_View",
                {{"the name", "Col_Name", view.name},
                 {"the description", "Col_Description", view.description},
                 {"the creator", "Col_Creator_Name", view.creator}});
    CViewItem item;
    item.m_strName = EscapeLiteral(view.name);
    item.m_nType = view.type;
    item.m_strDescription = EscapeLiteral(view.description);
    item.m_nOwnerID = view.ownerId;
    item.m_nItemIndex = view.sortIndex;
    item.m_strCreatorName = EscapeLiteral(view.creator);
    item.m_nDomainID = view.domainId;
    item.m_nStyle = view.style;
    item.m_bIsPublic = view.isPublic;
    Run(m_conn, [&] { return item.SaveData(m_conn) != 0; });
    return LastInsertedId(m_conn);
}

void Organisation::AddMember(ItemKey holder, ItemKey member)
{
    CRelationItem relation;
    relation.m_nQvItemID = holder.id;
    relation.m_nQvItemType = holder.type;
    relation.m_nDQvItemID = member.id;
    relation.m_nDQvItemType = member.type;
    Run(m_conn, [&] { return relation.SaveData(m_conn) != 0; });
}

void Organisation::RemoveMember(ItemKey holder, ItemKey member)
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteRelation(m_conn, holder.id, holder.type, member.id, member.type); });
}

void Organisation::RenameView(int id, std::string_view name)
{
    RequireFits(m_conn, "qv_View", {{"the name", "Col_Name", name}});
    Run(m_conn, [&] { return CQVBaseFun::UpdateViewName(m_conn, id, EscapeLiteral(name)); });
}

// The module's own changes write more columns than are to be changed.
void Organisation::ChangeGroup(int id, const GroupChanges& changes)
{
    RequireFits(m_conn, "qv_Group",
                {{"the name", "Col_Name", changes.name.value_or("")},
                 {"the description", "Col_Description", changes.description.value_or("")}});
    Assignments assignments(m_conn);
    assignments.Text("Col_Name", changes.name);
    assignments.Text("Col_Description", changes.description);
    assignments.Number("Col_ItemIndex", changes.sortIndex);
    assignments.Number("Col_DomainID", changes.domainId);
    assignments.Apply(m_conn, "qv_Group", id);
}

void Organisation::ChangeView(int id, const ViewChanges& changes)
{
    RequireFits(m_conn, "qv_View", {{"the description", "Col_Description", changes.description.value_or("")}});
    Assignments assignments(m_conn);
    assignments.Text("Col_Description", changes.description);
    assignments.Number("Col_ItemIndex", changes.sortIndex);
    assignments.Apply(m_conn, "qv_View", id);
}

void Organisation::SetGroupStyle(int id, int style)
{
    Run(m_conn, [&] { return CQVBaseFun::UpdateGroupStyle(m_conn, id, style); });
}

void Organisation::NameDefaultView(std::string_view name)
{
    Run(m_conn, [&] { return CQVBaseFun::UpdateDefaultSysView(m_conn, EscapeLiteral(name)); });
}

void Organisation::StampView(int id)
{
    Run(m_conn, [&] { return CQVBaseFun::UpdateRelationViewID(m_conn, id, kItemTypeView, id); });
    // A list that could not be read counts as a short one there; its error stays behind.
    if (!CQVBaseFun::m_strLastError.IsEmpty()) {
        throw ModuleError(m_conn);
    }
}

void Organisation::DeleteGroups(const std::vector<int>& ids)
{
    for (const int id : ids) {
        Run(m_conn, [&] { return CQVBaseFun::DelGroupItemByID(m_conn, id); });
    }
    DeleteReferences(m_conn, kItemTypeGroup, ids);
}

void Organisation::DeleteView(int id)
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteViewItem(m_conn, id); });
    DeleteReferences(m_conn, kItemTypeView, {id});
}

} // namespace management
