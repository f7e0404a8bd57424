#include "console/Departments.h"

#include "basefun/ItemTypes.h"
#include "console/Engine.h"
#include "console/Text.h"

#include <fmt/format.h>

#include <set>

namespace console {

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

/// The name that a view is to be made under when an argument means none. @throws Refusal for a path of several names.
std::string NewViewName(const std::string& argument)
{
    const std::vector<std::string> names =
        argument.starts_with('/') ? SplitPath(argument) : std::vector<std::string>{argument};
    if (names.size() > 1) {
        throw Refusal(Exit::usage, fmt::format("{} is no view; departments hang directly below one", Quoted(argument)));
    }
    CheckName("view", names.front());
    return names.front();
}

} // namespace

Departments::Departments(CAConnect& conn, const std::string& view, bool dryRun)
    : m_organisation(conn), m_roles(conn), m_dryRun(dryRun)
{
    try {
        m_view = m_organisation.FindView(view);
    } catch (const Refusal& e) {
        if (e.Code() != Exit::notFound || view.starts_with(kIdOfView)) {
            throw;
        }
        m_viewName = NewViewName(view);
    }
}

void Departments::Begin()
{
    m_children.clear();
    m_paths.clear();
    m_below.clear();
    m_making = 0;
    if (m_makingView) {
        m_view.reset();
        m_makingView = false;
    }
}

void Departments::Committed()
{
    m_made += m_making;
    m_making = 0;
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
    (m_dryRun ? m_madeView : m_makingView) = true;
    ViewData view;
    view.name = m_viewName;
    // An id that no view has stands for what would be made.
    return {kItemTypeView, m_dryRun ? -1 : m_organisation.CreateView(view)};
}

ItemKey Departments::Find(const std::string& path)
{
    const auto known = m_paths.find(path);
    if (known != m_paths.end()) {
        return known->second;
    }
    const std::vector<std::string> names = NamesIn(path);
    ItemKey place = View();
    for (const std::string& name : names) {
        const std::optional<ItemKey> present = ChildOf(place, name);
        place = present ? *present : MakeChild(place, name);
    }
    m_paths.emplace(path, place);
    return place;
}

std::optional<ItemKey> Departments::ChildOf(ItemKey parent, const std::string& name)
{
    const Children& children = ChildrenOf(parent);
    const auto found = children.find(UpperName(name));
    if (found == children.end()) {
        return std::nullopt;
    }
    if (found->second.size() > 1) {
        throw Refusal(Exit::conflict, fmt::format("the department {} may be any of the groups {}", Quoted(name),
                                                  fmt::join(found->second, ", ")));
    }
    return ItemKey{kItemTypeGroup, found->second.front()};
}

Departments::Children& Departments::ChildrenOf(ItemKey parent)
{
    const auto [entry, isNew] = m_children.try_emplace(parent);
    if (isNew && parent.id >= 0) {
        for (const LinkedGroup& group : m_roles.GroupsIn(parent)) {
            entry->second[UpperName(group.name)].push_back(group.id);
        }
    }
    return entry->second;
}

ItemKey Departments::MakeChild(ItemKey parent, const std::string& name)
{
    GroupData group;
    group.name = name;
    std::size_t& count = m_dryRun ? m_made : m_making;
    ++count;
    const int id = m_dryRun ? -static_cast<int>(count) : m_organisation.CreateGroup(parent, group);
    ChildrenOf(parent)[UpperName(name)].push_back(id);
    return {kItemTypeGroup, id};
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
            const std::optional<ItemKey> present = ChildOf(place, name);
            if (!present) {
                return std::nullopt;
            }
            place = *present;
        }
        return place;
    } catch (const DatabaseError&) {
        throw;
    } catch (const Refusal&) {
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
    return left || entered;
}

std::string Departments::Made() const
{
    return Counted(m_made, "group") + (m_madeView ? " and the view " + Visible(m_viewName) : "");
}

} // namespace console
