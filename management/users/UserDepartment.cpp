#include "management/users/UserDepartment.h"

#include "basefun/ItemTypes.h"
#include "management/DatabaseError.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

namespace management {

namespace {

constexpr std::string_view kAdvice = "make it with `qvadmin group create`, or set the text alone with "
                                     "--department-text";

const Field& TextField() { return *FindField("department"); }
const Field& IdField() { return *FindField("department_id"); }

/// The names from one on, as a path has them.
std::string PathFrom(const std::vector<std::string>& names, std::size_t first)
{
    std::string path;
    for (std::size_t i = first; i < names.size(); ++i) {
        path += (i == first ? "" : "/") + PathEscaped(names[i]);
    }
    return path;
}

bool HasGroups(const Organisation& organisation)
{
    return std::ranges::any_of(organisation.Nodes(), [&organisation](const management::Node& place) {
        return place.key.type == kItemTypeGroup && organisation.PathOf(place.key).starts_with('/');
    });
}

bool IsPath(const std::string& argument)
{
    return std::ranges::any_of(std::vector<std::string_view>{"/", "id:", "view:"},
                               [&argument](std::string_view begin) { return argument.starts_with(begin); });
}

} // namespace

std::vector<ItemKey> GroupsOfText(const Organisation& organisation, const std::string& text)
{
    std::vector<ItemKey> groups;
    try {
        for (const management::Node& place : organisation.Nodes()) {
            if (place.key.type != kItemTypeView) {
                continue;
            }
            const std::string view = organisation.PathOf(place.key);
            if (view.starts_with('/')) {
                std::ranges::copy(organisation.FindAll(fmt::format("{}/{}", view, text)), std::back_inserter(groups));
            }
        }
    } catch (const Error& e) {
        if (e.Code() != ErrorCode::invalid) {
            throw;
        }
        return {}; // no path
    }
    std::ranges::sort(groups);
    groups.erase(std::unique(groups.begin(), groups.end()), groups.end());
    return groups;
}

UserDepartment::UserDepartment(CAConnect& conn, const std::string& argument) : m_organisation(conn), m_roles(conn)
{
    if (IsPath(argument)) {
        FindByPath(argument);
    } else if (!argument.empty()) {
        FindByText(argument);
    }
}

void UserDepartment::FindByPath(const std::string& argument)
{
    try {
        m_group = m_organisation.FindGroup(argument);
    } catch (const Error& e) {
        if (e.Code() != ErrorCode::notFound) {
            throw;
        }
        throw Error(e.Code(), FillPattern("{}; {}", e.Why(), Sentence(kAdvice)));
    }
    const std::string path = argument.starts_with('/') ? argument : m_organisation.PathOf(*m_group);
    if (!path.starts_with('/')) {
        throw Error(ErrorCode::invalid, FillPattern("the group {} is below no system view, and cannot be a department",
                                                    m_organisation.Named(*m_group)));
    }
    const std::vector<std::string> names = SplitPath(path);
    m_text = PathFrom(names, 1);
    m_departments.emplace(m_organisation.Connection(),
                          DepartmentOptions{.view = "/" + PathEscaped(names.front()), .makeGroups = false});
}

void UserDepartment::FindByText(const std::string& text)
{
    const std::vector<ItemKey> groups = GroupsOfText(m_organisation, text);
    if (groups.empty()) {
        if (HasGroups(m_organisation)) {
            throw Error(ErrorCode::notFound,
                        FillPattern("there is no group {} below any view; {}", Quoted(text), kAdvice));
        }
        m_text = text;
        return;
    }
    if (groups.size() > 1) {
        std::string list;
        for (const ItemKey group : groups) {
            list += (list.empty() ? "" : ", ") + m_organisation.Named(group);
        }
        throw Error(ErrorCode::conflict,
                    FillPattern("the department {} may be any of the groups {}; write id:{} for the "
                                "first of them",
                                Quoted(text), list, groups.front().id));
    }
    FindByPath("id:" + std::to_string(groups.front().id));
    m_text = text;
}

void UserDepartment::AddTo(FieldValues& values) const
{
    values[&TextField()] = m_text;
    values[&IdField()] = std::to_string(m_group ? m_group->id : 0);
}

bool UserDepartment::Place(int userId, const FieldValues& before)
{
    if (m_group) {
        const auto text = before.find(&TextField());
        return m_departments->Place(*m_group, userId, DepartmentIdIn(before),
                                    text == before.end() ? "" : text->second.value_or(""));
    }
    bool left = false;
    for (const ItemKey group : DepartmentGroups(m_organisation, m_roles, userId, before)) {
        left = m_roles.Unlink(group, userId) || left;
    }
    return left;
}

std::vector<ItemKey> DepartmentGroups(const Organisation& organisation, Roles& roles, int userId,
                                      const FieldValues& stored)
{
    const ItemKey byId = {kItemTypeGroup, DepartmentIdIn(stored)};
    const auto text = stored.find(&TextField());
    std::vector<ItemKey> groups;
    if (organisation.Find(byId) != nullptr) {
        groups = {byId};
    } else if (text != stored.end() && !text->second.value_or("").empty()) {
        groups = GroupsOfText(organisation, *text->second);
    }
    std::erase_if(groups, [&](ItemKey group) { return !roles.IsMember(group, userId); });
    return groups;
}

int DepartmentIdIn(const FieldValues& stored)
{
    const auto value = stored.find(&IdField());
    const std::string text = value == stored.end() ? "" : value->second.value_or("");
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

} // namespace management
