#pragma once

#include "management/users/Fields.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

class CAConnect;

// Lists of users are ordered by login names, case not counting, unless another column is asked for; equal ones by the
// login names as they are, then by id.

namespace management {

/// What makes the engine order rows of qv_User so, to be put after a query: " ORDER BY upper(Col_LoginName), ...". Of
/// letters beyond ASCII the engine's own rules decide. Empty for an engine that does not know how, or cannot be tried.
std::string OrderByLogin(const CAConnect& conn);
/// What makes the engine order rows of qv_User by another column first: texts with case not counting, NULL before all
/// else, and equal ones by login name.
/// @param isDescending  turns the order of that column round.
std::string OrderBy(const CAConnect& conn, const Field& field, bool isDescending);

/// Passes users on in that order: as they come where the engine has ordered them, else when all have come.
/// @tparam User  has a login and an id.
template <class User>
class LoginOrder {
public:
    /// Takes a user. @return false when no more are wanted.
    using Take = std::function<bool(const User&)>;

    /// @param limit  as many are passed on at most; no more than these are ever held.
    LoginOrder(bool isOrdered, std::size_t limit, Take take)
        : m_isOrdered(isOrdered), m_limit(limit), m_take(std::move(take))
    {
    }

    /// Has users that are held ordered by another text first, before any is added.
    void SetSortKey(std::function<std::string(const User&)> sortKeyOf, bool isDescending)
    {
        m_sortKeyOf = std::move(sortKeyOf);
        m_isDescending = isDescending;
    }

    /// @return false when no more users are needed.
    bool Add(User user)
    {
        if (m_isOrdered) {
            ++m_passed;
            return m_take(user) && m_passed < m_limit;
        }
        std::string sortKey = m_sortKeyOf ? m_sortKeyOf(user) : "";
        std::string login = platform::UpperUtf8(user.login);
        m_held.push_back({std::move(sortKey), std::move(login), std::move(user)});
        std::push_heap(m_held.begin(), m_held.end(), Before());
        if (m_held.size() > m_limit) {
            std::pop_heap(m_held.begin(), m_held.end(), Before());
            m_held.pop_back();
        }
        return true;
    }

    /// After the last user.
    void Finish()
    {
        std::sort_heap(m_held.begin(), m_held.end(), Before());
        for (const Held& held : m_held) {
            if (!m_take(held.user)) {
                return;
            }
        }
    }

    [[nodiscard]] std::size_t HeldUsers() const { return m_held.size(); }

private:
    struct Held {
        std::string sortKey;
        std::string login; ///< in capitals
        User user;
    };

    [[nodiscard]] auto Before() const
    {
        return [isDescending = m_isDescending](const Held& a, const Held& b) {
            const int order = a.sortKey.compare(b.sortKey);
            return order != 0 ? (order < 0) != isDescending
                              : std::tie(a.login, a.user.login, a.user.id) < std::tie(b.login, b.user.login, b.user.id);
        };
    }

    bool m_isOrdered;
    std::size_t m_limit;
    Take m_take;
    std::function<std::string(const User&)> m_sortKeyOf;
    bool m_isDescending = false;
    std::size_t m_passed = 0;
    std::vector<Held> m_held; // a heap, the last in the order on top
};

} // namespace management
