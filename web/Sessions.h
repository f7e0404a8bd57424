#pragma once

#include "management/Level.h"

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace web {

/// Who is signed in.
struct Account {
    int id = 0;
    std::string login;
    std::string name;
    std::string mark; ///< changes with the stored password, the level and the second factor
    management::Level level = management::Level::none;
    bool hasTotp = false; ///< signs in with one-time codes
};

/// One sign-in.
struct Session {
    std::string key; ///< digest of the token, by which it is kept
    Account account;
    std::string csrf; ///< what every changing request has to bring along
    std::chrono::steady_clock::time_point begun;
    std::chrono::steady_clock::time_point used;
    std::chrono::steady_clock::time_point confirmed; ///< when the password was last given
    std::string id;                                  ///< stays while the key changes
};

/// The sessions of a server, in memory alone. Any thread may use it.
class Sessions {
public:
    using Clock = std::chrono::steady_clock;

    struct Limits {
        Clock::duration idle = std::chrono::minutes(15);
        Clock::duration whole = std::chrono::hours(8);
        /// How long a password that was given counts for what asks for it again.
        Clock::duration confirmation = std::chrono::minutes(5);
        std::size_t ofOneUser = 5;
    };

    explicit Sessions(Limits limits) : m_limits(limits) {}

    /// Begins a session; a user's oldest one ends when he has too many. @return its token, and the session.
    std::pair<std::string, Session> Begin(const Account& account, Clock::time_point now);
    /// The session of a token; nothing when there is none or it is over. @param isUse  whether it counts as used, so
    /// that it lasts longer.
    std::optional<Session> Use(const std::string& token, Clock::time_point now, bool isUse = true);
    /// Gives a session a new token and CSRF token, and notes that the password was given. @param account  of the same
    /// user, as it is now. @return as Begin; nothing when the session is over.
    std::optional<std::pair<std::string, Session>> Confirm(const std::string& key, const Account& account,
                                                           Clock::time_point now);
    [[nodiscard]] bool IsConfirmed(const Session& session, Clock::time_point now) const
    {
        return now - session.confirmed <= m_limits.confirmation;
    }
    void End(const std::string& key);
    [[nodiscard]] const Limits& AllLimits() const { return m_limits; }

private:
    std::pair<std::string, Session> Insert(Session session);

    Limits m_limits;
    std::mutex m_mutex;
    std::map<std::string, Session> m_sessions; ///< by key
};

} // namespace web
