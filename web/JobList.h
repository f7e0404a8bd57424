#pragma once

#include "management/Errors.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace web {

/// The last jobs of one kind, each with a number that no other of them has had. Any thread may use it.
/// @tparam T  has `int Id() const` and `bool IsOver() const`.
template <class T>
class JobList {
public:
    /// @param mostUnfinished  how many may wait or run at once, at most kMost. @param refusal  said of one more.
    JobList(std::size_t mostUnfinished, const char* refusal) : m_mostUnfinished(mostUnfinished), m_refusal(refusal) {}

    /// Adds the job that `make(id)` gives as a shared pointer. Where as many are kept as may be, the oldest that is
    /// over goes. @throws management::Error (conflict) while as many wait or run as may be, and what `make` throws.
    template <class Make>
    std::shared_ptr<T> Add(Make make)
    {
        const std::lock_guard lock(m_mutex);
        const auto unfinished = std::ranges::count_if(m_jobs, [](const auto& job) { return !job->IsOver(); });
        if (static_cast<std::size_t>(unfinished) >= m_mostUnfinished) {
            throw management::Error(management::ErrorCode::conflict, m_refusal);
        }
        if (m_jobs.size() == kMost) {
            m_jobs.erase(std::ranges::find_if(m_jobs, [](const auto& job) { return job->IsOver(); }));
        }
        m_jobs.push_back(make(m_last + 1));
        ++m_last;
        return m_jobs.back();
    }
    /// Null where there is none, or no longer.
    [[nodiscard]] std::shared_ptr<T> Find(int id) const
    {
        const std::lock_guard lock(m_mutex);
        const auto found = std::ranges::find(m_jobs, id, [](const auto& job) { return job->Id(); });
        return found == m_jobs.end() ? nullptr : *found;
    }
    /// The youngest first.
    [[nodiscard]] std::vector<std::shared_ptr<T>> All() const
    {
        const std::lock_guard lock(m_mutex);
        return {m_jobs.rbegin(), m_jobs.rend()};
    }

    static constexpr std::size_t kMost = 8; ///< so many are kept

private:
    const std::size_t m_mostUnfinished;
    const char* const m_refusal;
    mutable std::mutex m_mutex;
    std::vector<std::shared_ptr<T>> m_jobs; ///< the youngest last
    int m_last = 0;
};

} // namespace web
