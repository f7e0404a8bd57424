#include "web/Results.h"

#include "web/Tokens.h"

#include <utility>

namespace web {

namespace {

constexpr std::size_t kMostOfASession = 16;
/// Sessions come and go; what they leave behind goes with time.
constexpr std::size_t kMost = 256;

} // namespace

std::string Results::Keep(const std::string& session, std::vector<int> ids)
{
    std::string name = NewToken();
    auto kept = std::make_shared<const std::vector<int>>(std::move(ids));
    const std::lock_guard lock(m_mutex);
    m_results[name] = {session, std::move(kept), ++m_uses};
    DropOldest(&session, kMostOfASession);
    DropOldest(nullptr, kMost);
    return name;
}

Results::Ids Results::Find(const std::string& name, const std::string& session)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_results.find(name);
    if (found == m_results.end() || found->second.session != session) {
        return nullptr;
    }
    found->second.used = ++m_uses;
    return found->second.ids;
}

void Results::DropOldest(const std::string* session, std::size_t most)
{
    std::size_t count = 0;
    auto oldest = m_results.end();
    for (auto each = m_results.begin(); each != m_results.end(); ++each) {
        if (session == nullptr || each->second.session == *session) {
            ++count;
            oldest = oldest == m_results.end() || each->second.used < oldest->second.used ? each : oldest;
        }
    }
    if (count > most) {
        m_results.erase(oldest);
    }
}

} // namespace web
