#include "web/Sessions.h"

#include "web/Tokens.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace web {

std::pair<std::string, Session> Sessions::Begin(const Account& account, Clock::time_point now)
{
    const std::lock_guard lock(m_mutex);
    std::vector<std::pair<Clock::time_point, std::string>> own;
    for (const auto& [key, session] : m_sessions) {
        if (session.account.id == account.id) {
            own.emplace_back(session.used, key);
        }
    }
    if (own.size() >= m_limits.ofOneUser) {
        m_sessions.erase(std::ranges::min_element(own)->second);
    }
    return Insert({{}, account, {}, now, now, now, NewToken()});
}

std::optional<Session> Sessions::Use(const std::string& token, Clock::time_point now, bool isUse)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_sessions.find(Digest(token));
    if (found == m_sessions.end()) {
        return std::nullopt;
    }
    if (now - found->second.used > m_limits.idle || now - found->second.begun > m_limits.whole) {
        m_sessions.erase(found);
        return std::nullopt;
    }
    if (isUse) {
        found->second.used = now;
    }
    return found->second;
}

std::optional<std::pair<std::string, Session>> Sessions::Confirm(const std::string& key, const Account& account,
                                                                 Clock::time_point now)
{
    const std::lock_guard lock(m_mutex);
    auto node = m_sessions.extract(key);
    if (node.empty()) {
        return std::nullopt;
    }
    Session session = std::move(node.mapped());
    session.account = account;
    session.confirmed = now;
    return Insert(std::move(session));
}

void Sessions::End(const std::string& key)
{
    const std::lock_guard lock(m_mutex);
    m_sessions.erase(key);
}

std::pair<std::string, Session> Sessions::Insert(Session session)
{
    std::string token = NewToken();
    session.key = Digest(token);
    session.csrf = NewToken();
    m_sessions[session.key] = session;
    return {std::move(token), std::move(session)};
}

} // namespace web
