#pragma once

#include <cstddef>
#include <string>

namespace bench {

class ByHand;

/// Roles and their rights: 200 roles with 500 rights each, and users with five roles of their own besides the role
/// that every user has.
class RoleRights {
public:
    /// For a directory whose users have the ids from 1 to `users`.
    explicit RoleRights(int users) : m_users(users) {}

    static constexpr int kRoles = 200;
    static constexpr int kFunctions = 500;
    static constexpr int kRolesOfUser = 5;
    static constexpr const char* kGenre = "Messages";
    /// Views on which roles have rights.
    static constexpr int kViews = 20;

    /// Users that have roles of their own, all over the directory: their ids are this and its multiples.
    [[nodiscard]] static constexpr int EveryUser() { return 10; }
    [[nodiscard]] int UsersWithRoles() const { return m_users / EveryUser(); }
    /// A user with roles of his own; a call's number leads to all of them, in no order. Likewise below.
    [[nodiscard]] int UserOf(std::size_t call) const;
    [[nodiscard]] static std::string FunctionOf(std::size_t call);

    /// Writes roles, rights and links to a file that has none.
    void Insert(ByHand& db) const;

private:
    int m_users;
};

} // namespace bench
