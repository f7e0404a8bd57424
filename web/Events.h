#pragma once

#include "web/Http.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace web {

/// What the server tells browsers by itself: that the directory has changed, and that an import has made progress. Each
/// answer holds the news since an earlier one, as server-sent events, and then ends; the browser comes back for the
/// next. Answers that end pass proxies that collect what they pass on, and each request shows whether its session is
/// still there. Any thread may use it.
class Events {
public:
    using Clock = std::chrono::steady_clock;

    /// How many requests of a session wait at most; the oldest gives way, and is told not to come back.
    static constexpr std::size_t kMostOfSession = 4;

    /// How much news there was at one time.
    struct Stand {
        std::uint64_t changes = 0;
        std::uint64_t progress = 0;

        bool operator==(const Stand&) const = default;
    };

    Events();

    /// @param entry  the latest one of the record that is known.
    void Begin(int entry);

    /// Answers as soon as there is news, or with nothing when the time is over. @param last  the id of the news that
    /// the browser has; what is not one of this server's is answered at once, with the id of the present.
    void Wait(const std::string& session, const std::string& last, const Responder& responder, Clock::time_point until);
    /// Answers those whose time is over.
    void Expire(Clock::time_point now);
    /// Ends what waits for a session.
    void End(const std::string& session);
    [[nodiscard]] bool IsAwaited() const;

    /// Whether an entry of the record, and those before it, have been told of.
    [[nodiscard]] bool IsKnown(int entry) const;
    /// Tells of a change made here. @param entry  the latest one of the record after it.
    void NoteOwn(int entry);
    /// Tells of a change if the latest entry of the record is not known yet. @return whether it was not.
    bool NoteEntry(int latest);
    void NoteProgress();

private:
    struct Waiter {
        std::string session;
        Stand seen;
        Responder responder;
        Clock::time_point until;
    };

    [[nodiscard]] std::string Id() const;
    [[nodiscard]] Response NewsSince(const Stand& seen) const;
    template <class Is>
    std::vector<Waiter> TakeWhere(Is is);
    template <class Is>
    void Dismiss(Is is, const Response& response);
    template <class Change>
    bool Tell(Change change);

    mutable std::mutex m_mutex;
    std::string m_name; ///< of this run, so that ids of an earlier one are not taken for its own
    Stand m_stand;
    int m_entry = 0;
    std::vector<Waiter> m_waiters; ///< the oldest first
};

} // namespace web
