#include "management/organisation/Departments.h"

#include "basefun/ItemTypes.h"
#include "management/DatabaseError.h"
#include "management/Names.h"
#include "management/Text.h"

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
                    fmt::format("{} is no view; departments hang directly below one", Quoted(argument)));
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
            throw Error(e.Code(), fmt::format("{}, --make-view makes it", e.what()));
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
                    fmt::format("the department {} may be any of the groups {}", Quoted(name), list));
    }
    return found->second.front();
}

Departments::Children& Departments::ChildrenOf(ItemKey parent)
{
    const auto [entry, isNew] = m_children.try_emplace(parent);
    if (isNew && parent.id >= 0) {
        for (const LinkedGroup& group : m_roles.GroupsIn(parent)) {
            entry->second[NameKey(group.name)].push_back(group);
        }
    }
    return entry->second;
}

LinkedGroup Departments::MakeChild(ItemKey parent, const std::string& name, const std::string& path)
{
    if (!m_options.makeGroups) {
        throw Error(ErrorCode::notFound, fmt::format("there is no group {}", Quoted(path)));
    }
    GroupData group;
    group.name = name;
    // Ids that no group has stand for what would be made.
    const int id = m_options.dryRun ? -static_cast<int>(m_made.size()) - 1 : m_organisation.CreateGroup(parent, group);
    (m_options.dryRun ? m_made : m_making)[id].path = path;
    return ChildrenOf(parent)[NameKey(name)].emplace_back(LinkedGroup{id, name});
}

// ---- Users ----------------------------------------------------------------------------------------------------------

bool Departments::IsIn(ItemKey group, int userId) { return group.id >= 0 && m_roles.IsMember(group, userId); }

bool Departments::IsBelowView(int groupId)
{
    const auto known = m_below.find(groupId);
    if (known != m_below.end()) {
        return known->second;
    }
    // Up through all parents; groups may hang in a cycle.
    std::set<ItemKey> seen = {{kItemTypeGroup, groupId}};
    std::vector<ItemKey> above = {{kItemTypeGroup, groupId}};
    for (std::size_t i = 0; i < above.size(); ++i) {
        for (const ItemKey parent : m_roles.HoldersOf(above[i])) {
            if (seen.insert(parent).second) {
                above.push_back(parent);
            }
        }
    }
    return m_below[groupId] = seen.contains(View());
}

std::optional<ItemKey> Departments::FindPresent(const std::string& path)
{
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
        // A text that is no path, or means several groups, says of none that the user was in it.
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
    const std::optional<ItemKey> old = OldGroup(oldId, oldPath);
    const bool left = old && *old != group && m_roles.Unlink(*old, userId);
    const bool entered = m_roles.Link(group, userId);
    const auto isNew = m_making.find(group.id);
    if (entered && isNew != m_making.end()) {
        ++isNew->second.users;
    } else if (entered && m_made.contains(group.id)) {
        ++m_entered[group.id];
    }
    return left || entered;
}

bool Departments::WouldEnter(ItemKey group, int userId)
{
    const bool enters = userId == 0 || !IsIn(group, userId);
    const auto isNew = m_made.find(group.id);
    if (enters && isNew != m_made.end()) {
        ++isNew->second.users;
    }
    return enters;
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
