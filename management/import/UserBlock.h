#pragma once

#include "management/users/Directory.h"
#include "management/users/Fields.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class CAConnect;

// Some hundred users at a time: what is asked and written for all of them in one statement.

namespace management {

/// The users who have some login names, read in one question, or in two where some have and others are new.
/// All functions @throw DatabaseError, and Error for a text with a NUL byte.
class UserBlock {
public:
    struct User {
        UserKey key;
        FieldValues stored; ///< of the fields that were asked for
    };

    UserBlock() = default;
    UserBlock(CAConnect& conn, const std::vector<std::string>& logins, std::span<const Field* const> fields);

    /// All users of a login name by id. Case does not count; all else does, whatever the engine takes for equal.
    /// @param key  the NameKey of one of the login names.
    [[nodiscard]] std::span<const User> Find(const std::string& key) const;
    /// Whether the engine takes some login name that is new for equal to another.
    [[nodiscard]] bool HasConfused() const { return m_hasConfused; }
    /// Gives all of them to `take`, in no order.
    template <class Take>
    void ForEach(Take take) const
    {
        for (const auto& [key, users] : m_users) {
            for (const User& user : users) {
                take(user);
            }
        }
    }
    /// The ids of all of them.
    [[nodiscard]] std::vector<int> Ids() const;

private:
    std::unordered_map<std::string, std::vector<User>> m_users; ///< by NameKey
    bool m_hasConfused = false;
};

/// A user to be added.
struct NewUser {
    std::string login;
    FieldValues values; ///< without one for the name, the login name is that
};

/// Adds users, as `user create` adds them one by one. @throws DatabaseError.
void AddUsers(CAConnect& conn, std::span<const NewUser> users);

/// The ids of users who have just been added, in the order of their login names. Nothing when the engine takes one of
/// them for equal to another user.
std::optional<std::vector<int>> IdsOfAdded(CAConnect& conn, std::span<const NewUser> users);

/// Makes users members of the group that their row names as their department. None of them may be one already.
void JoinDepartments(CAConnect& conn, const std::vector<int>& users);

} // namespace management
