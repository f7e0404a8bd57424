#include "web/Worker.h"

#include "management/Sentence.h"

#include <algorithm>
#include <utility>

namespace web {

Worker::Worker(Task atRest, Clock::duration rest)
    : m_atRest(std::move(atRest)), m_rest(rest), m_thread([this] { Run(); })
{
}

void Worker::Stop()
{
    std::multimap<Clock::time_point, Task> dropped;
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
        dropped.swap(m_tasks);
    }
    m_wakeUp.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void Worker::PostAt(Clock::time_point time, Task task)
{
    Task spoken = [language = management::Speaking::Present(), task = std::move(task)] {
        const management::Speaking speaking(language);
        task();
    };
    {
        const std::lock_guard lock(m_mutex);
        if (m_isEnding) {
            return;
        }
        m_tasks.emplace(time, std::move(spoken));
    }
    m_wakeUp.notify_all();
}

bool Worker::RunOne(std::unique_lock<std::mutex>& lock)
{
    if (m_tasks.empty() || m_tasks.begin()->first > Clock::now()) {
        return false;
    }
    auto node = m_tasks.extract(m_tasks.begin());
    lock.unlock();
    node.mapped()();
    node.mapped() = {}; // what it holds goes before the next one begins
    lock.lock();
    return true;
}

void Worker::RunWaiting()
{
    std::unique_lock lock(m_mutex);
    // Those that come meanwhile have their turn next time, so that this ends.
    for (std::size_t left = m_tasks.size(); left > 0 && !m_isEnding && RunOne(lock); --left) {
    }
}

bool Worker::IsEnding()
{
    const std::lock_guard lock(m_mutex);
    return m_isEnding;
}

void Worker::Run()
{
    std::unique_lock lock(m_mutex);
    Clock::time_point restsUntil = Clock::now() + m_rest;
    while (!m_isEnding) {
        if (RunOne(lock)) {
            restsUntil = Clock::now() + m_rest;
        } else if (m_atRest && restsUntil <= Clock::now()) {
            lock.unlock();
            m_atRest();
            lock.lock();
            restsUntil = Clock::now() + m_rest;
        } else {
            m_wakeUp.wait_until(lock, m_tasks.empty() ? restsUntil : std::min(restsUntil, m_tasks.begin()->first));
        }
    }
}

} // namespace web
