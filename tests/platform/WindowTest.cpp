#include "platform/Window.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

LRESULT Sum(UINT message, WPARAM wParam, LPARAM lParam)
{
    return static_cast<LRESULT>(message) + static_cast<LRESULT>(wParam) + lParam;
}

// Pumps until the other thread is through.
template <class Result>
Result PumpFor(std::future<Result> result)
{
    while (result.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
        PumpMessages();
    }
    return result.get();
}

template <class Action>
auto OnOtherThread(Action action)
{
    return std::async(std::launch::async, std::move(action));
}

/// A thread that owns a window and pumps its messages until the scope ends.
class PumpingThread {
public:
    explicit PumpingThread(MessageHandler handler)
    {
        std::promise<HWND> made;
        std::future<HWND> window = made.get_future();
        m_thread = std::thread([this, &made, own = std::move(handler)]() mutable {
            made.set_value(CreateMessageWindow(std::move(own)));
            while (!m_stop) {
                PumpMessages();
                std::this_thread::yield();
            }
        });
        m_window = window.get();
    }
    PumpingThread(const PumpingThread&) = delete;
    PumpingThread& operator=(const PumpingThread&) = delete;
    ~PumpingThread()
    {
        m_stop = true;
        m_thread.join();
    }

    [[nodiscard]] HWND Window() const { return m_window; }

private:
    std::atomic<bool> m_stop = false;
    std::thread m_thread;
    HWND m_window = nullptr;
};

TEST(Window, handlesMessagesOfItsOwnThreadAtOnce)
{
    const HWND window = CreateMessageWindow(Sum);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(SendMessageA(window, 1, 20, -300), -279);
    EXPECT_TRUE(DestroyMessageWindow(window));
}

TEST(Window, aWindowThatIsNotThereAnswersZero)
{
    const HWND window = CreateMessageWindow(Sum);
    EXPECT_TRUE(DestroyMessageWindow(window));
    EXPECT_EQ(SendMessageA(window, 1, 2, 3), 0);
    EXPECT_FALSE(DestroyMessageWindow(window));
    EXPECT_EQ(SendMessageA(nullptr, 1, 2, 3), 0);
    EXPECT_FALSE(DestroyMessageWindow(nullptr));
}

TEST(Window, theNameOfADestroyedWindowNeverComesBack)
{
    const HWND first = CreateMessageWindow(Sum);
    EXPECT_TRUE(DestroyMessageWindow(first));
    for (int i = 0; i < 100; ++i) {
        const HWND later = CreateMessageWindow(Sum);
        EXPECT_NE(later, first);
        EXPECT_TRUE(DestroyMessageWindow(later));
    }
}

TEST(Window, withoutAHandlerItAnswersZero)
{
    const HWND window = CreateMessageWindow(nullptr);
    EXPECT_EQ(SendMessageA(window, 1, 2, 3), 0);
    EXPECT_TRUE(DestroyMessageWindow(window));
}

TEST(Window, onlyItsOwnThreadDestroysIt)
{
    const HWND window = CreateMessageWindow(Sum);
    EXPECT_FALSE(OnOtherThread([window] { return DestroyMessageWindow(window); }).get());
    EXPECT_EQ(SendMessageA(window, 1, 0, 0), 1);
    EXPECT_TRUE(DestroyMessageWindow(window));
}

TEST(Window, anotherThreadWaitsUntilTheOwnerPumps)
{
    std::thread::id handledOn;
    const HWND window = CreateMessageWindow([&](UINT message, WPARAM wParam, LPARAM lParam) {
        handledOn = std::this_thread::get_id();
        return Sum(message, wParam, lParam);
    });
    std::future<LRESULT> answer = OnOtherThread([window] { return SendMessageA(window, 1, 2, 3); });
    EXPECT_EQ(answer.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    EXPECT_EQ(handledOn, std::thread::id());
    EXPECT_EQ(PumpFor(std::move(answer)), 6);
    EXPECT_EQ(handledOn, std::this_thread::get_id());
    EXPECT_TRUE(DestroyMessageWindow(window));
}

TEST(Window, pumpingWithoutMessagesHandlesNone)
{
    EXPECT_EQ(PumpMessages(), 0);
    EXPECT_EQ(OnOtherThread([] { return PumpMessages(); }).get(), 0);
}

TEST(Window, pumpingTellsHowManyMessagesItHandled)
{
    const HWND window = CreateMessageWindow(Sum);
    std::vector<std::future<LRESULT>> answers;
    for (int i = 0; i < 5; ++i) {
        answers.push_back(OnOtherThread([window, i] { return SendMessageA(window, 0, 0, i); }));
    }
    int handled = 0;
    while (handled < 5) {
        handled += PumpMessages();
        std::this_thread::yield();
    }
    EXPECT_EQ(PumpMessages(), 0);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(answers[static_cast<std::size_t>(i)].get(), i);
    }
    EXPECT_TRUE(DestroyMessageWindow(window));
}

TEST(Window, messagesOfOneSenderKeepTheirOrder)
{
    std::vector<UINT> seen;
    const HWND window = CreateMessageWindow([&](UINT message, WPARAM, LPARAM) {
        seen.push_back(message);
        return LRESULT{0};
    });
    PumpFor(OnOtherThread([window] {
        for (UINT i = 0; i < 200; ++i) {
            SendMessageA(window, i, 0, 0);
        }
    }));
    ASSERT_EQ(seen.size(), 200u);
    for (UINT i = 0; i < 200; ++i) {
        EXPECT_EQ(seen[i], i);
    }
    EXPECT_TRUE(DestroyMessageWindow(window));
}

TEST(Window, twoThreadsMaySendToEachOther)
{
    const HWND mine = CreateMessageWindow(Sum);
    const PumpingThread other(
        [mine](UINT message, WPARAM, LPARAM lParam) { return SendMessageA(mine, message, 0, lParam) * 2; });
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(SendMessageA(other.Window(), 1, 0, i), 2 * (1 + i));
    }
    EXPECT_TRUE(DestroyMessageWindow(mine));
}

TEST(Window, twoThreadsThatSendAtTheSameTimeDoNotBlockEachOther)
{
    constexpr int rounds = 500;
    std::promise<HWND> theirs;
    std::promise<HWND> mine;
    std::atomic<int> through = 0;
    const auto exchange = [&through](HWND window) {
        for (int i = 0; i < rounds; ++i) {
            EXPECT_EQ(SendMessageA(window, 1, 0, i), 1 + i);
        }
        ++through;
        while (through < 2) {
            PumpMessages();
        }
    };
    std::thread other([&] {
        theirs.set_value(CreateMessageWindow(Sum));
        exchange(mine.get_future().get());
    });
    const HWND window = CreateMessageWindow(Sum);
    mine.set_value(window);
    exchange(theirs.get_future().get());
    other.join();
    EXPECT_TRUE(DestroyMessageWindow(window));
}

TEST(Window, messagesGoRoundARingOfThreads)
{
    const HWND mine = CreateMessageWindow([](UINT, WPARAM, LPARAM lParam) { return lParam + 1; });
    const PumpingThread second([mine](UINT m, WPARAM w, LPARAM l) { return SendMessageA(mine, m, w, l + 1); });
    const HWND secondWindow = second.Window();
    const PumpingThread first(
        [secondWindow](UINT m, WPARAM w, LPARAM l) { return SendMessageA(secondWindow, m, w, l + 1); });
    EXPECT_EQ(SendMessageA(first.Window(), 0, 0, 10), 13);
    EXPECT_TRUE(DestroyMessageWindow(mine));
}

TEST(Window, destroyingItAnswersZeroToThoseThatWait)
{
    const HWND window = CreateMessageWindow(Sum);
    const HWND kept = CreateMessageWindow(Sum);
    std::future<LRESULT> first = OnOtherThread([window] { return SendMessageA(window, 1, 2, 3); });
    std::future<LRESULT> second = OnOtherThread([window] { return SendMessageA(window, 1, 2, 3); });
    std::future<LRESULT> third = OnOtherThread([kept] { return SendMessageA(kept, 1, 2, 3); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(DestroyMessageWindow(window));
    EXPECT_EQ(first.get(), 0);
    EXPECT_EQ(second.get(), 0);
    EXPECT_EQ(PumpFor(std::move(third)), 6);
    EXPECT_TRUE(DestroyMessageWindow(kept));
}

TEST(Window, aHandlerMayDestroyItsOwnWindow)
{
    HWND window = nullptr;
    window = CreateMessageWindow([&window, held = std::make_shared<int>(7)](UINT, WPARAM, LPARAM) {
        EXPECT_TRUE(DestroyMessageWindow(window));
        return LRESULT{*held};
    });
    EXPECT_EQ(PumpFor(OnOtherThread([&window] { return SendMessageA(window, 0, 0, 0); })), 7);
    EXPECT_EQ(SendMessageA(window, 0, 0, 0), 0);
}

TEST(Window, goesWithItsThread)
{
    const auto held = std::make_shared<int>(1);
    const HWND window = OnOtherThread([held] {
                            return CreateMessageWindow([held](UINT, WPARAM, LPARAM) { return LRESULT{*held}; });
                        }).get();
    EXPECT_EQ(SendMessageA(window, 0, 0, 0), 0);
    EXPECT_EQ(held.use_count(), 1);
}

TEST(Window, aThreadThatEndsAnswersZeroToThoseThatWait)
{
    std::promise<HWND> made;
    std::promise<void> mayEnd;
    std::thread owner([&] {
        made.set_value(CreateMessageWindow(Sum));
        mayEnd.get_future().wait();
    });
    const HWND window = made.get_future().get();
    std::future<LRESULT> answer = OnOtherThread([window] { return SendMessageA(window, 1, 2, 3); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    mayEnd.set_value();
    EXPECT_EQ(answer.get(), 0);
    owner.join();
}

TEST(Window, aThreadsLastActsFindNoWindowOfItsOwnButReachOthers)
{
    struct LastAct {
        HWND own = nullptr;
        HWND other = nullptr;
        std::promise<std::string>* told = nullptr;
        ~LastAct()
        {
            std::string seen = CreateMessageWindow(Sum) == nullptr ? "no new window" : "a new window";
            seen += DestroyMessageWindow(own) ? ", own still there" : ", own gone";
            seen += ", answer " + std::to_string(SendMessageA(other, 1, 2, 3));
            seen += ", pumped " + std::to_string(PumpMessages());
            told->set_value(seen);
        }
    };
    const HWND mine = CreateMessageWindow(Sum);
    std::promise<std::string> told;
    std::thread ending([&] {
        thread_local LastAct act;
        act.other = mine;
        act.told = &told;
        act.own = CreateMessageWindow(Sum);
    });
    EXPECT_EQ(PumpFor(told.get_future()), "no new window, own gone, answer 6, pumped 0");
    ending.join();
    EXPECT_TRUE(DestroyMessageWindow(mine));
}

TEST(Window, anExceptionOfTheHandlerReachesTheSender)
{
    const auto fail = [](UINT, WPARAM, LPARAM) -> LRESULT { throw std::runtime_error("no"); };
    const HWND window = CreateMessageWindow(fail);
    EXPECT_THROW(SendMessageA(window, 0, 0, 0), std::runtime_error);
    const std::string seen = PumpFor(OnOtherThread([window] {
        try {
            SendMessageA(window, 0, 0, 0);
        } catch (const std::runtime_error& error) {
            return std::string(error.what());
        }
        return std::string();
    }));
    EXPECT_EQ(seen, "no");
    EXPECT_TRUE(DestroyMessageWindow(window));
}

} // namespace
