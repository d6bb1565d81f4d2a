// Sends between threads.
#include "test_user.h"

#include <gtest/gtest.h>

namespace platform::window::test {
namespace {

constexpr UINT Ask = WM_APP + 1;
constexpr UINT AskBack = WM_APP + 2;
constexpr UINT Die = WM_APP + 3;
constexpr UINT Block = WM_APP + 4;

// Ask returns wParam + 1. AskBack sends Ask with wParam + 1 to the window in lParam, and returns the result.
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

// Makes the window's thread block until `released` is set. Returns as soon as it blocks.
void block(HWND window, std::future<void>& released)
{
    std::promise<void> begun;
    PostMessageW(window, Block, reinterpret_cast<WPARAM>(&begun), reinterpret_cast<LPARAM>(&released));
    begun.get_future().wait();
}

TEST(SendTest, TwoThreadsThatSendToEachOtherDontBlock)
{
    constexpr int Rounds = 2000;
    std::promise<HWND> windows[2];
    const std::shared_future<HWND> made[] = {windows[0].get_future(), windows[1].get_future()};
    const auto play = [&](std::size_t self) {
        const HWND own = makeAnswering();
        windows[self].set_value(own);
        const HWND peer = made[1 - self].get();
        for (int round = 0; round < Rounds; ++round)
            ASSERT_EQ(SendMessageW(peer, AskBack, static_cast<WPARAM>(round), reinterpret_cast<LPARAM>(own)),
                      round + 2);
        // Answers the other thread until that thread has finished, too.
        PostMessageW(peer, WM_CLOSE, 0, 0);
        MSG message;
        while (GetMessageW(&message, own, 0, 0) > 0)
            DispatchMessageW(&message);
    };
    std::thread other(play, 1);
    play(0);
    other.join();
}

TEST(SendTest, DeadHandleIsRefusedAfterItsSlotIsUsedAgain)
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

TEST(SendTest, WindowThatDestroysItselfInAHandlerStillAnswers)
{
    WindowThread receiver(makeAnswering);
    EXPECT_EQ(SendMessageW(receiver.window(), Die, 0, 0), 7);
    EXPECT_FALSE(IsWindow(receiver.window()));
}

TEST(SendTest, SendEndsWithAnErrorWhenTheReceivingThreadEnds)
{
    std::promise<HWND> made;
    std::promise<void> asked;
    std::thread owner([&] {
        made.set_value(makeAnswering());
        asked.get_future().wait();  // the thread ends and has served no message
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

TEST(SendTest, DialogOverABusyThreadsWindowIsMadeAndDestroyedWithoutWaitingForThatThread)
{
    std::promise<void> release;
    std::future<void> released = release.get_future();
    const WindowThread busy(makeAnswering);
    const HWND owner = busy.window();
    block(owner, released);
    const HWND dialog = CreateDialogIndirectParamW(
        nullptr, makeTemplate(u"Progress", {{u"Static", u"Message", 1002, 0}}, 0x90c008c0), owner,
        [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(IsWindowVisible(dialog));
    EXPECT_FALSE(EnableWindow(owner, FALSE));
    EXPECT_TRUE(EnableWindow(owner, TRUE));
    EXPECT_TRUE(SetForegroundWindow(dialog));
    EXPECT_TRUE(DestroyWindow(dialog));
    release.set_value();
}

TEST(SendTest, OwnedWindowOfAnotherThreadIsDestroyedWithItsOwner)
{
    const HWND owner = makeAnswering();
    WindowThread other([owner] { return makeWindow(u"Answering", owner); });
    DestroyWindow(owner);
    other.join();  // the thread's loop ends with its window
    EXPECT_FALSE(IsWindow(other.window()));
}

TEST(SendTest, ManySendersAreEachAnsweredAndPostedMessagesAreServedBetweenTheirSends)
{
    WindowThread receiver(makeAnswering);
    std::atomic<bool> stop = false;
    std::vector<std::thread> senders;
    for (int sender = 0; sender < 3; ++sender)
        senders.emplace_back([&] {
            for (WPARAM round = 0; !stop || round < 500; ++round)
                ASSERT_EQ(SendMessageW(receiver.window(), Ask, round, 0), static_cast<LRESULT>(round) + 1);
        });
    std::promise<void> release;
    release.set_value();
    std::future<void> released = release.get_future();
    for (int round = 0; round < 20; ++round)
        block(receiver.window(), released);
    stop = true;
    for (std::thread& sender : senders)
        sender.join();
}

// The handler of a sent message runs on the sender's host thread.
TEST(SendTest, LoopInsideASentMessageServesTheReceiversMessages)
{
    static std::thread::id loopRanOn;
    WindowThread receiver([] {
        return makeWindow(windowClass(u"Looping", [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
            if (message == Ask) {
                PostMessageW(window, AskBack, wParam, 0);
                MSG inner;
                while (GetMessageW(&inner, window, 0, 0) > 0 && inner.message != AskBack)
                    DispatchMessageW(&inner);
                loopRanOn = std::this_thread::get_id();
                return static_cast<LRESULT>(inner.wParam);
            }
            return DefWindowProcW(window, message, wParam, lParam);
        }));
    });
    EXPECT_EQ(SendMessageW(receiver.window(), Ask, 41, 0), 41);
    EXPECT_EQ(loopRanOn, std::this_thread::get_id());
}

}  // namespace
}  // namespace platform::window::test
