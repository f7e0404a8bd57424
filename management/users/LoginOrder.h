#pragma once

#include "platform/CodePage.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

class CAConnect;

// Lists of users are ordered by login names, case not counting; equal ones by the login names as they are, then by id.

namespace management {

/// What makes the engine order rows of qv_User so, to be put after a query: " ORDER BY upper(Col_LoginName), ...". Of
/// letters beyond ASCII the engine's own rules decide. Empty for an engine that does not know how, or cannot be tried.
std::string OrderByLogin(const CAConnect& conn);

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

    /// @return false when no more users are needed.
    bool Add(User user)
    {
        if (m_isOrdered) {
            ++m_passed;
            return m_take(user) && m_passed < m_limit;
        }
        m_held.emplace_back(platform::UpperUtf8(user.login), std::move(user));
        std::push_heap(m_held.begin(), m_held.end(), IsBefore);
        if (m_held.size() > m_limit) {
            std::pop_heap(m_held.begin(), m_held.end(), IsBefore);
            m_held.pop_back();
        }
        return true;
    }

    /// After the last user.
    void Finish()
    {
        std::sort_heap(m_held.begin(), m_held.end(), IsBefore);
        for (const Held& held : m_held) {
            if (!m_take(held.second)) {
                return;
            }
        }
    }

    [[nodiscard]] std::size_t HeldUsers() const { return m_held.size(); }

private:
    using Held = std::pair<std::string, User>; // the login name in capitals

    static bool IsBefore(const Held& a, const Held& b)
    {
        return std::tie(a.first, a.second.login, a.second.id) < std::tie(b.first, b.second.login, b.second.id);
    }

    bool m_isOrdered;
    std::size_t m_limit;
    Take m_take;
    std::size_t m_passed = 0;
    std::vector<Held> m_held; // a heap, the last in the order on top
};

} // namespace management
