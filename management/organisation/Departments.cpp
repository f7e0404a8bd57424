#include "management/organisation/Departments.h"

#include "basefun/ItemTypes.h"
#include "management/DatabaseError.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/organisation/Links.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace management {

namespace {

constexpr std::string_view kIdOfView = "view:";

std::vector<std::string> NamesIn(const std::string& path)
{
    std::vector<std::string> names = SplitPath("/" + path);
    for (const std::string& name : names) {
        CheckName("group", name);
    }
    return names;
}

/// The name that a view is to be made under when an argument means none. @throws Error for a path of several names.
std::string NewViewName(const std::string& argument)
{
    const std::vector<std::string> names =
        argument.starts_with('/') ? SplitPath(argument) : std::vector<std::string>{argument};
    if (names.size() > 1) {
        throw Error(ErrorCode::invalid,
                    FillPattern("{} is not a view; departments are directly below one", Quoted(argument)));
    }
    CheckName("view", names.front());
    return names.front();
}

} // namespace

Departments::Departments(CAConnect& conn, const DepartmentOptions& options)
    : m_organisation(conn), m_roles(conn), m_lengths(LengthsOf(conn, "qv_Group")), m_options(options)
{
    try {
        m_view = m_organisation.FindView(options.view);
    } catch (const Error& e) {
        if (e.Code() != ErrorCode::notFound || options.view.starts_with(kIdOfView)) {
            throw;
        }
        m_viewName = NewViewName(options.view);
        if (!options.makeView) {
            throw Error(e.Code(), FillPattern("{}, --make-view makes it", e.Why()));
        }
    }
}

void Departments::Begin()
{
    m_children.clear();
    m_paths.clear();
    m_below.clear();
    m_making.clear();
    m_entered.clear();
    if (m_makingView) {
        m_view.reset();
        m_makingView = false;
    }
}

void Departments::Committed()
{
    m_made.merge(m_making);
    m_making.clear();
    for (const auto& [id, users] : m_entered) {
        m_made[id].users += users;
    }
    m_entered.clear();
    m_madeView = m_madeView || m_makingView;
    m_makingView = false;
}

// ---- Groups ---------------------------------------------------------------------------------------------------------

ItemKey Departments::View()
{
    if (!m_view) {
        m_view = MakeView();
    }
    return *m_view;
}

ItemKey Departments::MakeView()
{
    // Another program may have made it meanwhile.
    const Organisation now(m_organisation.Connection());
    const std::vector<ItemKey> present = now.SystemViewsNamed(m_viewName);
    if (!present.empty()) {
        return present.front();
    }
    (m_options.dryRun ? m_madeView : m_makingView) = true;
    ViewData view;
    view.name = m_viewName;
    // An id that no view has stands for what would be made.
    return {kItemTypeView, m_options.dryRun ? -1 : m_organisation.CreateView(view)};
}

std::string Departments::ViewPath() const
{
    return m_viewName.empty() ? m_organisation.PathOf(*m_view) : fmt::format("/{}", PathEscaped(m_viewName));
}

ItemKey Departments::Find(const std::string& path)
{
    const auto known = m_paths.find(path);
    if (known != m_paths.end()) {
        return known->second;
    }
    const std::vector<std::string> names = NamesIn(path);
    // All of them before any group is made.
    for (const std::string& name : names) {
        const std::string problem = TooLong(m_lengths, TextFor{"the group " + Quoted(name), "Col_Name", name});
        if (!problem.empty()) {
            throw Error(ErrorCode::invalid, problem);
        }
    }
    ItemKey place = View();
    std::string reached = ViewPath();
    for (const std::string& name : names) {
        const std::optional<LinkedGroup> present = ChildOf(place, name);
        const LinkedGroup group = present ? *present : MakeChild(place, name, reached + "/" + PathEscaped(name));
        place = {kItemTypeGroup, group.id};
        reached += fmt::format("/{}", PathEscaped(group.name));
    }
    m_paths.emplace(path, place);
    return place;
}

std::optional<LinkedGroup> Departments::ChildOf(ItemKey parent, const std::string& name)
{
    const Children& children = ChildrenOf(parent);
    const auto found = children.find(NameKey(name));
    if (found == children.end()) {
        return std::nullopt;
    }
    if (found->second.size() > 1) {
        std::string list;
        for (const LinkedGroup& group : found->second) {
            list += (list.empty() ? "" : ", ") + std::to_string(group.id);
        }
        throw Error(ErrorCode::conflict,
                    FillPattern("the department {} may be any of the groups {}", Quoted(name), list));
    }
    return found->second.front();
}

Departments::Children& Departments::ChildrenOf(ItemKey parent)
{
    if (!m_children.contains(parent)) {
        ReadChildren({parent});
    }
    return m_children[parent];
}

void Departments::ReadChildren(const std::set<ItemKey>& parents)
{
    for (const int type : {kItemTypeView, kItemTypeGroup}) {
        std::vector<int> ids;
        for (const ItemKey parent : parents) {
            if (parent.type == type && parent.id >= 0 && !m_children.contains(parent)) {
                ids.push_back(parent.id);
                m_children[parent];
            }
        }
        for (auto& [id, groups] : GroupsIn(m_roles.Connection(), type, ids)) {
            Children& children = m_children[{type, id}];
            for (LinkedGroup& group : groups) {
                children[NameKey(group.name)].push_back(std::move(group));
            }
        }
    }
}

void Departments::ReadAhead(const std::set<std::string>& paths)
{
    if (!m_view) {
        return;
    }
    struct Walk {
        const std::string* path;
        std::vector<std::string> names;
        std::size_t next; ///< of the names
        ItemKey reached;
    };
    std::vector<Walk> walks;
    for (const std::string& path : paths) {
        try {
            if (!m_paths.contains(path)) {
                walks.push_back({&path, NamesIn(path), 0, *m_view});
            }
        } catch (const Error&) {
            continue; // Find says what is wrong with it
        }
    }
    const auto isAtEnd = [this](Walk& walk) {
        const Children& children = m_children[walk.reached];
        const auto found = children.find(NameKey(walk.names[walk.next]));
        if (found == children.end() || found->second.size() > 1) {
            return true;
        }
        walk.reached = {kItemTypeGroup, found->second.front().id};
        const bool isLast = ++walk.next == walk.names.size();
        if (isLast) {
            m_paths.emplace(*walk.path, walk.reached);
        }
        return isLast;
    };
    while (!walks.empty()) {
        std::set<ItemKey> parents;
        std::ranges::transform(walks, std::inserter(parents, parents.end()), &Walk::reached);
        ReadChildren(parents);
        std::erase_if(walks, isAtEnd);
    }
}

LinkedGroup Departments::MakeChild(ItemKey parent, const std::string& name, const std::string& path)
{
    if (!m_options.makeGroups) {
        throw Error(ErrorCode::notFound, FillPattern("there is no group {}", Quoted(path)));
    }
    GroupData group;
    group.name = name;
    // Ids that no group has stand for what would be made.
    const int id = m_options.dryRun ? -static_cast<int>(m_made.size()) - 1 : m_organisation.CreateGroup(parent, group);
    (m_options.dryRun ? m_made : m_making)[id].path = path;
    return ChildrenOf(parent)[NameKey(name)].emplace_back(LinkedGroup{id, name});
}

// ---- Users ----------------------------------------------------------------------------------------------------------

bool Departments::IsBelowView(int groupId)
{
    ReadAbove({groupId});
    return m_below.at(groupId);
}

/// What groups and all groups above them are directly in; there may be a cycle.
std::map<int, std::vector<ItemKey>> Departments::ParentsAbove(const std::vector<int>& groups)
{
    std::map<int, std::vector<ItemKey>> parents;
    for (std::set<int> level(groups.begin(), groups.end()); !level.empty();) {
        parents.merge(HoldersOf(m_roles.Connection(), kItemTypeGroup, {level.begin(), level.end()}));
        std::set<int> next;
        for (const int group : level) {
            for (const ItemKey parent : parents[group]) {
                if (parent.type == kItemTypeGroup && !parents.contains(parent.id)) {
                    next.insert(parent.id);
                }
            }
        }
        level = std::move(next);
    }
    return parents;
}

void Departments::ReadAbove(const std::vector<int>& groups)
{
    if (!m_view) {
        return;
    }
    std::vector<int> asked = groups;
    std::erase_if(asked, [this](int group) { return m_below.contains(group); });
    std::map<int, std::vector<ItemKey>> parents = ParentsAbove(asked);
    for (const int group : asked) {
        std::set<ItemKey> seen = {{kItemTypeGroup, group}};
        std::vector<ItemKey> above = {{kItemTypeGroup, group}};
        for (std::size_t i = 0; i < above.size(); ++i) {
            if (above[i].type == kItemTypeGroup) {
                std::ranges::copy_if(parents[above[i].id], std::back_inserter(above),
                                     [&seen](ItemKey parent) { return seen.insert(parent).second; });
            }
        }
        m_below[group] = seen.contains(*m_view);
    }
}

std::optional<ItemKey> Departments::FindPresent(const std::string& path)
{
    if (const auto known = m_paths.find(path); known != m_paths.end()) {
        return known->second;
    }
    if (!m_view) {
        return std::nullopt;
    }
    try {
        ItemKey place = View();
        for (const std::string& name : NamesIn(path)) {
            const std::optional<LinkedGroup> present = ChildOf(place, name);
            if (!present) {
                return std::nullopt;
            }
            place = {kItemTypeGroup, present->id};
        }
        return place;
    } catch (const DatabaseError&) {
        throw;
    } catch (const Error&) {
        // A text that is not a path, or means several groups, says of none that the user was in it.
        return std::nullopt;
    }
}

std::optional<ItemKey> Departments::OldGroup(int oldId, const std::string& oldPath)
{
    if (oldId > 0 && IsBelowView(oldId)) {
        return ItemKey{kItemTypeGroup, oldId};
    }
    return FindPresent(oldPath);
}

bool Departments::Place(ItemKey group, int userId, int oldId, const std::string& oldPath)
{
    const std::optional<ItemKey> old = GroupToLeave(group, oldId, oldPath);
    const bool left = old && m_roles.Unlink(*old, userId);
    return m_roles.Link(group, userId) || left;
}

std::optional<ItemKey> Departments::GroupToLeave(ItemKey group, int oldId, const std::string& oldPath)
{
    if (oldId == group.id) {
        return std::nullopt;
    }
    const std::optional<ItemKey> old = OldGroup(oldId, oldPath);
    return old == group ? std::nullopt : old;
}

void Departments::NoteEntered(ItemKey group)
{
    if (const auto isNew = m_making.find(group.id); isNew != m_making.end()) {
        ++isNew->second.users;
    } else if (const auto made = m_made.find(group.id); made != m_made.end()) {
        ++(m_options.dryRun ? made->second.users : m_entered[group.id]);
    }
}

std::optional<std::string> Departments::MadeView() const
{
    return m_madeView ? std::optional(ViewPath()) : std::nullopt;
}

std::vector<NewGroup> Departments::MadeGroups() const
{
    std::vector<NewGroup> groups;
    groups.reserve(m_made.size());
    for (const auto& [id, group] : m_made) {
        groups.push_back(group);
    }
    std::ranges::sort(groups, {}, &NewGroup::path);
    return groups;
}

} // namespace management
