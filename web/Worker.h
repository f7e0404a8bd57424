#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace web {

/// A thread that runs tasks one after the other, in the order of their times. Any thread may hand tasks over.
class Worker {
public:
    using Clock = std::chrono::steady_clock;
    using Task = std::function<void()>;

    /// @param atRest  is run once whenever nothing has been run for `rest`; it, and tasks, throw nothing.
    explicit Worker(Task atRest = {}, Clock::duration rest = std::chrono::hours(24));
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker() { Stop(); }

    /// Lets a running task end and drops the others, and those that come later.
    void Stop();

    void Post(Task task) { PostAt(Clock::now(), std::move(task)); }
    /// Hands over a task that is not to be run before a time. It speaks the language of the thread that hands it over
    /// (management::Speaking).
    void PostAt(Clock::time_point time, Task task);

    /// Runs the tasks whose time has come and that wait by now. For a task that takes long, on the worker's thread.
    void RunWaiting();
    /// Whether Stop was called, so that a task that takes long is to end.
    [[nodiscard]] bool IsEnding();

private:
    void Run();
    bool RunOne(std::unique_lock<std::mutex>& lock);

    Task m_atRest;
    Clock::duration m_rest;
    std::mutex m_mutex;
    std::condition_variable m_wakeUp;
    std::multimap<Clock::time_point, Task> m_tasks; ///< of equal times, the ones handed over first come first
    bool m_isEnding = false;
    std::thread m_thread;
};

} // namespace web
