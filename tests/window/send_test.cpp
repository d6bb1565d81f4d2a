// Sends between threads.
#include "test_user.h"

#include <gtest/gtest.h>

#include <set>

namespace platform::window::test {
namespace {

constexpr UINT Ask = WM_APP + 1;
constexpr UINT AskBack = WM_APP + 2;
constexpr UINT Die = WM_APP + 3;
constexpr UINT Block = WM_APP + 4;

// Ask gives wParam + 1. AskBack sends Ask to the window in lParam first.
LRESULT answering(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case Ask:
        return static_cast<LRESULT>(wParam) + 1;
    case AskBack:
        return SendMessageW(reinterpret_cast<HWND>(lParam), Ask, wParam + 1, 0);
    case Die:
        DestroyWindow(window);
        return 7;
    case Block:
        reinterpret_cast<std::promise<void>*>(wParam)->set_value();
        reinterpret_cast<std::future<void>*>(lParam)->wait();
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

HWND makeAnswering()
{
    return makeWindow(windowClass(u"Answering", answering));
}

// A window thread whose handler stands still until released.
struct BusyThread {
    BusyThread() : windows(makeAnswering)
    {
        released = release.get_future();
        std::future<void> stands = begun.get_future();
        PostMessageW(windows.window(), Block, reinterpret_cast<WPARAM>(&begun), reinterpret_cast<LPARAM>(&released));
        stands.wait();
    }

    std::promise<void> begun;
    std::promise<void> release;
    std::future<void> released;
    WindowThread windows;
};

TEST(SendTest, TwoThreadsThatSendToEachOtherDontBlock)
{
    constexpr int Rounds = 2000;
    std::promise<HWND> first;
    std::promise<HWND> second;
    std::shared_future<HWND> firstWindow = first.get_future().share();
    std::shared_future<HWND> secondWindow = second.get_future().share();
    const auto play = [](std::promise<HWND>& own, std::shared_future<HWND> other) {
        const HWND self = makeAnswering();
        own.set_value(self);
        const HWND peer = other.get();
        for (int round = 0; round < Rounds; ++round)
            ASSERT_EQ(SendMessageW(peer, AskBack, static_cast<WPARAM>(round), reinterpret_cast<LPARAM>(self)),
                      round + 2);
        // Serves the other one until it is through too.
        PostMessageW(peer, WM_CLOSE, 0, 0);
        MSG message;
        while (GetMessageW(&message, self, 0, 0) > 0)
            DispatchMessageW(&message);
    };
    std::thread one(play, std::ref(first), secondWindow);
    std::thread two(play, std::ref(second), firstWindow);
    one.join();
    two.join();
}

TEST(SendTest, ManySendersAtOnceAreEachAnswered)
{
    WindowThread receiver(makeAnswering);
    std::vector<std::thread> senders;
    for (int sender = 0; sender < 4; ++sender)
        senders.emplace_back([&receiver] {
            for (WPARAM round = 0; round < 2000; ++round)
                ASSERT_EQ(SendMessageW(receiver.window(), Ask, round, 0), static_cast<LRESULT>(round) + 1);
        });
    for (std::thread& sender : senders)
        sender.join();
}

TEST(SendTest, DeadHandleIsRefusedThoughItsPlaceServesAgain)
{
    const HWND first = makeAnswering();
    ASSERT_TRUE(DestroyWindow(first));
    const HWND second = makeAnswering();
    ASSERT_NE(first, second);
    SetLastError(0);
    EXPECT_EQ(SendMessageW(first, Ask, 1, 0), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_FALSE(PostMessageW(first, Ask, 1, 0));
    EXPECT_FALSE(IsWindow(first));
    EXPECT_FALSE(IsWindow(reinterpret_cast<HWND>(~std::uintptr_t{0})));
    EXPECT_FALSE(DestroyWindow(first));
    DestroyWindow(second);
}

TEST(SendTest, WindowThatDiesInItsOwnHandlerStillAnswers)
{
    WindowThread receiver(makeAnswering);
    EXPECT_EQ(SendMessageW(receiver.window(), Die, 0, 0), 7);
    EXPECT_FALSE(IsWindow(receiver.window()));
}

TEST(SendTest, ThreadThatEndsFreesWhoWaitsForIt)
{
    std::promise<HWND> made;
    std::promise<void> asked;
    std::future<void> go = asked.get_future();
    std::thread owner([&] {
        made.set_value(makeAnswering());
        go.wait();  // never serves a message
    });
    const HWND window = made.get_future().get();
    std::thread sender([&] {
        EXPECT_EQ(SendMessageW(window, Ask, 1, 0), 0);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    });
    asked.set_value();
    owner.join();
    sender.join();
    EXPECT_FALSE(IsWindow(window));
}

TEST(SendTest, SenderThatWaitsAnswersMeanwhile)
{
    BusyThread busy;
    std::promise<HWND> made;
    std::thread sender([&] {
        const HWND own = makeAnswering();
        made.set_value(own);
        EXPECT_EQ(SendMessageW(busy.windows.window(), Ask, 1, 0), 2);
        DestroyWindow(own);
    });
    // The sender serves no messages but waits in its send: that is enough to be answered.
    EXPECT_EQ(SendMessageW(made.get_future().get(), Ask, 5, 0), 6);
    busy.release.set_value();
    sender.join();
}

TEST(SendTest, DialogOverABusyThreadsWindowWaitsForNobody)
{
    BusyThread busy;
    const void* form = makeTemplate(u"Progress", {{u"Static", u"Message", 1002, 0}}, 0x90c008c0);
    const HWND dialog = CreateDialogIndirectParamW(
        nullptr, form, busy.windows.window(), [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(IsWindowVisible(dialog));
    EXPECT_TRUE(EnableWindow(busy.windows.window(), FALSE) == FALSE);
    EXPECT_TRUE(EnableWindow(busy.windows.window(), TRUE));
    EXPECT_TRUE(SetForegroundWindow(dialog));
    EXPECT_TRUE(DestroyWindow(dialog));
    busy.release.set_value();
}

TEST(SendTest, OwnedWindowOfAnotherThreadGoesWithItsOwnerAndEndsItsLoop)
{
    const HWND owner = makeAnswering();
    WindowThread other([owner] { return makeWindow(u"Answering", owner); });
    DestroyWindow(owner);
    other.join();  // ends only if its window went
    EXPECT_FALSE(IsWindow(other.window()));
}

TEST(SendTest, SendsWithoutAPauseDontKeepAThreadFromWhatWasPostedToIt)
{
    WindowThread receiver(makeAnswering);
    std::atomic<bool> stop = false;
    std::vector<std::thread> senders;
    for (int sender = 0; sender < 2; ++sender)
        senders.emplace_back([&] {
            while (!stop)
                SendMessageW(receiver.window(), Ask, 1, 0);
        });
    for (int round = 0; round < 20; ++round) {
        std::promise<void> reached;
        std::promise<void> release;
        std::future<void> released = release.get_future();
        release.set_value();
        PostMessageW(receiver.window(), Block, reinterpret_cast<WPARAM>(&reached), reinterpret_cast<LPARAM>(&released));
        reached.get_future().wait();
        // The handler is through with its promise and future once an answer comes.
        EXPECT_EQ(SendMessageW(receiver.window(), Ask, 1, 0), 2);
    }
    stop = true;
    for (std::thread& sender : senders)
        sender.join();
}

// A handler that runs on the sender's side and opens a loop of its own serves its own thread's messages.
TEST(SendTest, LoopInsideASentMessageServesTheReceiver)
{
    static std::thread::id timerRanOn;
    WindowThread receiver([] {
        return makeWindow(windowClass(u"Looping", [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
            if (message == Ask) {
                PostMessageW(window, AskBack, wParam, 0);
                MSG inner;
                while (GetMessageW(&inner, window, 0, 0) > 0 && inner.message != AskBack)
                    DispatchMessageW(&inner);
                timerRanOn = std::this_thread::get_id();
                return static_cast<LRESULT>(inner.wParam);
            }
            return DefWindowProcW(window, message, wParam, lParam);
        }));
    });
    EXPECT_EQ(SendMessageW(receiver.window(), Ask, 41, 0), 41);
    EXPECT_EQ(timerRanOn, std::this_thread::get_id());
}

}  // namespace
}  // namespace platform::window::test
