#pragma once

#include "management/organisation/Departments.h"
#include "management/organisation/Organisation.h"
#include "management/roles/Roles.h"
#include "management/users/Fields.h"

#include <optional>
#include <string>
#include <vector>

namespace management {

/// The department of one user, as a command line gives it: a text, the id of a group and a membership, set together.
/// To be used in one transaction. All functions @throw DatabaseError.
class UserDepartment {
public:
    /// @param argument  a group: /VIEW/GROUP, id:17, or its path below the one system view that has such a group. The
    /// empty text is no department. Where no system view has any group, a department is a text and no more.
    /// @throws Error (invalid, notFound, conflict) for what means no single group.
    UserDepartment(CAConnect& conn, const std::string& argument);

    /// Adds text and id to the columns to be set.
    void AddTo(FieldValues& values) const;
    /// Makes the user a member of the group, and no longer one of the department that he was in, as far as it lies
    /// below the same view. @param before  the user's columns as they were; empty for a new user.
    /// @return whether anything was different before.
    bool Place(int userId, const FieldValues& before);

private:
    void FindByPath(const std::string& argument);
    void FindByText(const std::string& text);

    Organisation m_organisation;
    Roles m_roles;
    std::optional<ItemKey> m_group;
    std::optional<Departments> m_departments; // of the view that the group is in
    std::string m_text;
};

/// The groups that a user is a member of for his department: the one of the department's id or, where that means none,
/// those whose path below a system view is the department's text. @param stored  the user's columns.
std::vector<ItemKey> DepartmentGroups(const Organisation& organisation, Roles& roles, int userId,
                                      const FieldValues& stored);

/// The groups whose path below a system view is that text.
std::vector<ItemKey> GroupsOfText(const Organisation& organisation, const std::string& text);

/// The department's id in the columns of a user; 0 for none.
int DepartmentIdIn(const FieldValues& stored);

} // namespace management
