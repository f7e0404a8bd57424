#include "web/Throttle.h"

#include <algorithm>

namespace web {

namespace {

constexpr std::chrono::minutes kMemory{15};
constexpr std::chrono::seconds kLongest{60};
constexpr std::size_t kFree = 5;
constexpr std::size_t kMostASecond = 10;
constexpr std::size_t kMostWaiting = 4;
constexpr std::size_t kMostRemembered = 10000;

std::string KeyOfLogin(const std::string& login) { return "login " + login; }
std::string KeyOfAddress(const std::string& address) { return "address " + address; }

} // namespace

std::optional<Throttle::Clock::duration> Throttle::Begin(const std::string& login, const std::string& address,
                                                         Clock::time_point now)
{
    while (!m_recent.empty() && now - m_recent.front() >= std::chrono::seconds(1)) {
        m_recent.pop_front();
    }
    const auto waiting = m_waiting.find(address);
    if (m_recent.size() >= kMostASecond || (waiting != m_waiting.end() && waiting->second >= kMostWaiting)) {
        return std::nullopt;
    }
    m_recent.push_back(now);
    ++m_waiting[address];
    return std::max(DelayOf(KeyOfLogin(login), now), DelayOf(KeyOfAddress(address), now));
}

void Throttle::End(const std::string& login, const std::string& address, Outcome outcome, Clock::time_point now)
{
    if (--m_waiting[address] == 0) {
        m_waiting.erase(address);
    }
    if (outcome == Outcome::right) {
        m_failures.erase(KeyOfLogin(login));
    } else if (outcome == Outcome::wrong) {
        Note(KeyOfLogin(login), now);
        Note(KeyOfAddress(address), now);
    }
}

Throttle::Clock::duration Throttle::DelayOf(const std::string& key, Clock::time_point now) const
{
    const auto found = m_failures.find(key);
    if (found == m_failures.end() || now - found->second.last > kMemory || found->second.count < kFree) {
        return {};
    }
    constexpr std::size_t mostDoublings = 6;
    return std::min<Clock::duration>(
        kLongest, std::chrono::seconds(1ULL << std::min(mostDoublings, found->second.count - kFree)));
}

void Throttle::Note(const std::string& key, Clock::time_point now)
{
    if (m_failures.size() >= kMostRemembered) {
        // When names fill the memory, the oldest ones go first.
        m_failures.erase(std::ranges::min_element(m_failures, {}, [](const auto& entry) { return entry.second.last; }));
    }
    Failures& failures = m_failures[key];
    failures.count = now - failures.last > kMemory ? 1 : failures.count + 1;
    failures.last = now;
}

} // namespace web
