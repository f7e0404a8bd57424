#include "web/Events.h"

#include "web/Tokens.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <functional>
#include <iterator>
#include <optional>
#include <utility>

namespace web {

namespace {

constexpr std::size_t kNameLength = 8;
/// Milliseconds after which a browser comes back; they bound how often it is told of a running import.
constexpr int kPause = 250;

Response Answer(const std::string& events)
{
    return {200, "text/event-stream", fmt::format("retry: {}\n{}\n", kPause, events)};
}

/// What a browser is told that is not to come back.
const Response kNoMore{204, "", ""};

/// What an id of this run stands for.
std::optional<Events::Stand> StandIn(std::string_view id, std::string_view name)
{
    if (!id.starts_with(name) || id.substr(name.size(), 1) != ".") {
        return std::nullopt;
    }
    const char* const end = id.data() + id.size();
    Events::Stand stand;
    const auto changes = std::from_chars(id.data() + name.size() + 1, end, stand.changes);
    if (changes.ec != std::errc() || changes.ptr == end || *changes.ptr != '.') {
        return std::nullopt;
    }
    const auto progress = std::from_chars(changes.ptr + 1, end, stand.progress);
    return progress.ec == std::errc() && progress.ptr == end ? std::optional(stand) : std::nullopt;
}

} // namespace

Events::Events() : m_name(NewToken().substr(0, kNameLength)) {}

void Events::Begin(int entry)
{
    const std::lock_guard lock(m_mutex);
    m_entry = entry;
}

std::string Events::Id() const { return fmt::format("{}.{}.{}", m_name, m_stand.changes, m_stand.progress); }

Response Events::NewsSince(const Stand& seen) const
{
    std::string events;
    if (seen.changes != m_stand.changes) {
        events += fmt::format("id: {}\nevent: changed\ndata: {{\"entry\":{}}}\n\n", Id(), m_entry);
    }
    if (seen.progress != m_stand.progress) {
        events += fmt::format("id: {}\nevent: progress\ndata: {{}}\n\n", Id());
    }
    return Answer(events);
}

/// Takes those out that are meant. The mutex is held.
template <class Is>
std::vector<Events::Waiter> Events::TakeWhere(Is is)
{
    const auto first = std::stable_partition(m_waiters.begin(), m_waiters.end(), std::not_fn(is));
    std::vector<Waiter> taken(std::make_move_iterator(first), std::make_move_iterator(m_waiters.end()));
    m_waiters.erase(first, m_waiters.end());
    return taken;
}

template <class Is>
void Events::Dismiss(Is is, const Response& response)
{
    std::vector<Waiter> taken;
    {
        const std::lock_guard lock(m_mutex);
        taken = TakeWhere(is);
    }
    for (const Waiter& one : taken) {
        one.responder.Send(response);
    }
}

/// Makes a change of what there is to tell, and tells it. @param change  gives whether there is anything.
template <class Change>
bool Events::Tell(Change change)
{
    std::vector<std::pair<Responder, Response>> answers;
    {
        const std::lock_guard lock(m_mutex);
        if (!change()) {
            return false;
        }
        for (Waiter& one : TakeWhere([](const Waiter& /*one*/) { return true; })) {
            answers.emplace_back(std::move(one.responder), NewsSince(one.seen));
        }
    }
    for (auto& [responder, answer] : answers) {
        responder.Send(std::move(answer));
    }
    return true;
}

void Events::Wait(const std::string& session, const std::string& last, const Responder& responder,
                  Clock::time_point until)
{
    const std::optional<Stand> given = StandIn(last, m_name);
    std::optional<Response> answer;
    std::vector<Waiter> tooMany;
    {
        const std::lock_guard lock(m_mutex);
        if (!given) {
            answer = Answer(fmt::format("id: {}\nevent: hello\ndata: {{\"entry\":{}}}\n\n", Id(), m_entry));
        } else if (*given != m_stand) {
            answer = NewsSince(*given);
        } else {
            const auto isOwn = [&session](const Waiter& one) { return one.session == session; };
            if (static_cast<std::size_t>(std::ranges::count_if(m_waiters, isOwn)) >= kMostOfSession) {
                const Waiter* oldest = &*std::ranges::find_if(m_waiters, isOwn);
                tooMany = TakeWhere([oldest](const Waiter& one) { return &one == oldest; });
            }
            m_waiters.push_back({session, *given, responder, until});
        }
    }
    if (answer) {
        responder.Send(std::move(*answer));
    }
    for (const Waiter& one : tooMany) {
        one.responder.Send(kNoMore);
    }
}

void Events::Expire(Clock::time_point now)
{
    Dismiss([now](const Waiter& one) { return one.until <= now; }, Answer(""));
}

void Events::End(const std::string& session)
{
    Dismiss([&session](const Waiter& one) { return one.session == session; }, kNoMore);
}

bool Events::IsAwaited() const
{
    const std::lock_guard lock(m_mutex);
    return !m_waiters.empty();
}

bool Events::IsKnown(int entry) const
{
    const std::lock_guard lock(m_mutex);
    return entry <= m_entry;
}

void Events::NoteOwn(int entry)
{
    Tell([&] {
        m_entry = std::max(m_entry, entry);
        ++m_stand.changes;
        return true;
    });
}

bool Events::NoteEntry(int latest)
{
    return Tell([&] {
        const bool isNew = latest > m_entry;
        m_entry = std::max(m_entry, latest);
        m_stand.changes += isNew ? 1 : 0;
        return isNew;
    });
}

void Events::NoteProgress()
{
    Tell([&] {
        ++m_stand.progress;
        return true;
    });
}

} // namespace web
