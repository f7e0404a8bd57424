#pragma once

#include <cstddef>

namespace bench {

class ByHand;

/// A view over all users of a directory: groups three to five deep, one for every fifty users, and each user in one of
/// them. Five large groups have a twentieth of the users each, all others about the same number.
class Tree {
public:
    static constexpr int kView = 1;

    /// For a directory whose users have the ids from 1 to `users`.
    explicit Tree(int users) : m_users(users) {}

    [[nodiscard]] int Users() const { return m_users; }
    /// Their ids are 1 to this number.
    [[nodiscard]] int Groups() const { return m_users / kUsersPerGroup; }
    /// The id of a large group, with no groups below it.
    [[nodiscard]] int LargeGroup() const { return Groups(); }
    [[nodiscard]] int UsersOfLargeGroup() const { return m_users / kLargeGroupIsOneIn; }
    /// The ids of those that are not large are 1 to this number.
    [[nodiscard]] int SmallGroups() const { return Groups() - kLargeGroups; }
    /// One of them; a call's number leads to all, in no order.
    [[nodiscard]] int SmallGroup(std::size_t call) const;
    /// On average.
    [[nodiscard]] double UsersOfSmallGroup() const;

    /// Writes the view, its groups and all links to a file that has none.
    void Insert(ByHand& db) const;

private:
    static constexpr int kUsersPerGroup = 50;
    static constexpr int kLargeGroups = 5;
    static constexpr int kLargeGroupIsOneIn = 20;

    int m_users;
};

} // namespace bench
