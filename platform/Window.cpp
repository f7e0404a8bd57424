#include "platform/Window.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

struct Thread;

/// A message under way between threads. Lives on the stack of its sender, who waits until it is done.
struct Sent {
    HWND window;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    Thread* sender;
    LRESULT answer = 0;
    std::exception_ptr thrown{};
    bool done = false;
};

/// What a thread shares with those that send to it.
struct Thread {
    std::deque<Sent*> pending;
    std::condition_variable wake;
};

// Shared, so that a handler may destroy its own window.
using Handler = std::shared_ptr<const MessageHandler>;

struct Window {
    Thread* owner;
    Handler handler;
};

/// All windows. The mutex guards what the threads share, too.
struct Registry {
    std::mutex mutex;
    std::unordered_map<HWND, Window> windows;
    std::uintptr_t lastName = 0;
};

using Guard = std::unique_lock<std::mutex>;

// Never destroyed: other threads may still send while the process ends.
Registry& TheRegistry()
{
    static Registry& registry = *new Registry;
    return registry;
}

void Finish(Sent& sent)
{
    sent.done = true;
    // Under the mutex: once it is free the sender may leave and take its Thread along.
    sent.sender->wake.notify_one();
}

void AnswerNothing(Thread& owner, HWND window)
{
    for (Sent* sent : owner.pending) {
        if (sent->window == window) {
            Finish(*sent);
        }
    }
    std::erase_if(owner.pending, [window](const Sent* sent) { return sent->window == window; });
}

void DestroyWindowsOf(Thread& thread)
{
    // Handlers are dropped after the mutex is free again: what they hold may come back here when it goes.
    std::vector<Handler> handlers;
    Registry& registry = TheRegistry();
    const Guard guard(registry.mutex);
    for (auto it = registry.windows.begin(); it != registry.windows.end();) {
        if (it->second.owner == &thread) {
            AnswerNothing(thread, it->first);
            handlers.push_back(std::move(it->second.handler));
            it = registry.windows.erase(it);
        } else {
            ++it;
        }
    }
}

// Plain variables, which can still be read by what runs after the thread's other variables are gone.
thread_local Thread* thisThread = nullptr;
thread_local bool threadHasEnded = false;

struct ThreadEnd {
    Thread thread;

    ThreadEnd() { thisThread = &thread; }
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd()
    {
        threadHasEnded = true;
        thisThread = nullptr;
        DestroyWindowsOf(thread);
    }
};

// Null once the thread's windows are gone for good.
Thread* ThisThread()
{
    if (thisThread == nullptr && !threadHasEnded) {
        thread_local ThreadEnd end;
    }
    return thisThread;
}

LRESULT Call(const Handler& handler, UINT message, WPARAM wParam, LPARAM lParam)
{
    return *handler ? (*handler)(message, wParam, lParam) : 0;
}

void CallFor(Sent& sent, const Handler& handler)
{
    try {
        sent.answer = Call(handler, sent.message, sent.wParam, sent.lParam);
    } catch (...) {
        sent.thrown = std::current_exception();
    }
}

// Destroying a window takes its messages out of the queue, so the window of a queued message exists.
void HandleFirst(Thread& thread, Guard& guard)
{
    Sent& sent = *thread.pending.front();
    thread.pending.pop_front();
    Handler handler = TheRegistry().windows.at(sent.window).handler;
    guard.unlock();
    CallFor(sent, handler);
    handler.reset();
    guard.lock();
    Finish(sent);
}

LRESULT WaitForAnswer(Sent& sent, Thread& sender, Guard& guard)
{
    while (!sent.done) {
        if (sender.pending.empty()) {
            sender.wake.wait(guard);
        } else {
            HandleFirst(sender, guard);
        }
    }
    guard.unlock();
    if (sent.thrown) {
        std::rethrow_exception(sent.thrown);
    }
    return sent.answer;
}

LRESULT SendAcross(Thread& owner, Thread& sender, Sent sent, Guard& guard)
{
    sent.sender = &sender;
    owner.pending.push_back(&sent);
    owner.wake.notify_one();
    return WaitForAnswer(sent, sender, guard);
}

} // namespace

HWND CreateMessageWindow(MessageHandler handler)
{
    Thread* owner = ThisThread();
    if (owner == nullptr) {
        return nullptr;
    }
    auto shared = std::make_shared<const MessageHandler>(std::move(handler));
    Registry& registry = TheRegistry();
    const Guard guard(registry.mutex);
    auto* const window = reinterpret_cast<HWND>(++registry.lastName);
    registry.windows.emplace(window, Window{owner, std::move(shared)});
    return window;
}

bool DestroyMessageWindow(HWND window)
{
    Handler handler;
    Registry& registry = TheRegistry();
    const Guard guard(registry.mutex);
    const auto found = registry.windows.find(window);
    if (found == registry.windows.end() || found->second.owner != thisThread) {
        return false;
    }
    AnswerNothing(*thisThread, window);
    handler = std::move(found->second.handler);
    registry.windows.erase(found);
    return true;
}

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    Thread* sender = ThisThread();
    Registry& registry = TheRegistry();
    Guard guard(registry.mutex);
    const auto found = registry.windows.find(window);
    if (found == registry.windows.end()) {
        return 0;
    }
    const Sent sent{window, message, wParam, lParam, nullptr};
    Thread* owner = found->second.owner;
    if (owner == sender) {
        const Handler handler = found->second.handler;
        guard.unlock();
        return Call(handler, message, wParam, lParam);
    }
    if (sender == nullptr) {
        Thread passing;
        return SendAcross(*owner, passing, sent, guard);
    }
    return SendAcross(*owner, *sender, sent, guard);
}

int PumpMessages()
{
    Thread* thread = ThisThread();
    if (thread == nullptr) {
        return 0;
    }
    Guard guard(TheRegistry().mutex);
    const std::size_t waiting = thread->pending.size();
    int handled = 0;
    // A handler that sends on may handle some of them meanwhile.
    while (static_cast<std::size_t>(handled) < waiting && !thread->pending.empty()) {
        HandleFirst(*thread, guard);
        ++handled;
    }
    return handled;
}
