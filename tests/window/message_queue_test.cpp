// The order of messages, timers, raw input.
#include "test_user.h"

#include <gtest/gtest.h>

namespace platform::window::test {
namespace {

constexpr UINT Marker = WM_APP + 1;

HWND makePlain()
{
    return makeWindow(windowClass(u"Plain", DefWindowProcW));
}

UINT nextMessage(HWND window = nullptr)
{
    MSG message = {};
    GetMessageW(&message, window, 0, 0);
    return message.message;
}

void spinPast(std::chrono::milliseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {
    }
}

TEST(MessageQueueTest, PostedMessagesComeBeforeQuitAndQuitBeforeTimers)
{
    const HWND window = makePlain();
    SetTimer(window, 5, 1, nullptr);
    spinPast(std::chrono::milliseconds(2));
    PostQuitMessage(3);
    PostMessageW(window, Marker, 0, 0);
    PostMessageW(window, Marker + 1, 0, 0);
    EXPECT_EQ(nextMessage(), Marker);
    EXPECT_EQ(nextMessage(), Marker + 1);
    MSG message = {};
    EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), 0);
    EXPECT_EQ(message.wParam, 3U);
    EXPECT_EQ(nextMessage(), WM_TIMER);
    DestroyWindow(window);
}

TEST(MessageQueueTest, FilterLeavesMessagesOfOtherWindowsAndNumbersQueued)
{
    const HWND first = makePlain();
    const HWND second = makePlain();
    PostMessageW(first, Marker, 0, 0);
    PostMessageW(second, Marker, 0, 0);
    PostMessageW(first, Marker + 5, 0, 0);
    MSG message = {};
    ASSERT_EQ(GetMessageW(&message, second, 0, 0), 1);
    EXPECT_EQ(message.hwnd, second);
    ASSERT_EQ(GetMessageW(&message, nullptr, Marker + 5, Marker + 5), 1);
    EXPECT_EQ(message.message, Marker + 5);

    ASSERT_EQ(GetMessageW(&message, nullptr, 0, 0), 1);
    EXPECT_EQ(message.hwnd, first);

    // When a window is destroyed, its messages and timers are dropped.
    PostMessageW(first, Marker, 0, 0);
    PostMessageW(second, Marker + 1, 0, 0);
    SetTimer(first, 1, 1, nullptr);
    DestroyWindow(first);
    EXPECT_EQ(nextMessage(), Marker + 1);
    PostQuitMessage(0);
    EXPECT_EQ(nextMessage(), WM_QUIT);
    DestroyWindow(second);
    EXPECT_EQ(GetMessageW(&message, second, 0, 0), -1);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
}

TEST(MessageQueueTest, TimerTicksMissedWhileBusyComeAsOne)
{
    const HWND window = makePlain();
    constexpr auto Period = std::chrono::milliseconds(40);
    SetTimer(window, 7, 1000000, nullptr);
    EXPECT_EQ(SetTimer(window, 7, Period.count(), nullptr), 7U);  // replaces the timer with the same id
    spinPast(4 * Period);
    const auto beforeFirst = std::chrono::steady_clock::now();
    EXPECT_EQ(nextMessage(window), WM_TIMER);
    EXPECT_EQ(nextMessage(window), WM_TIMER);
    EXPECT_GE(std::chrono::steady_clock::now() - beforeFirst, Period);
    EXPECT_TRUE(KillTimer(window, 7));
    EXPECT_FALSE(KillTimer(window, 7));
    EXPECT_EQ(SetTimer(reinterpret_cast<HWND>(5), 1, 1, nullptr), 0U);
    DestroyWindow(window);
}

// The state of a window whose command 9 runs until the test releases it.
struct WorkingWindow {
    std::promise<void> begun;
    std::promise<void> release;
    std::atomic<int> commands = 0;
    std::atomic<int> closes = 0;
};

WorkingWindow* gWorking;

LRESULT working(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_COMMAND) {
        ++gWorking->commands;
        if (LOWORD(wParam) == 9) {
            gWorking->begun.set_value();
            gWorking->release.get_future().wait();
        }
        return 0;
    }
    if (message == WM_CLOSE)
        ++gWorking->closes;
    return DefWindowProcW(window, message, wParam, lParam);
}

TEST(MessageQueueTest, InputDuringACommandIsDroppedExceptForARequestToClose)
{
    TestUser user;
    WorkingWindow state;
    gWorking = &state;
    WindowThread thread([] { return makeWindow(windowClass(u"Working", working)); });
    const HWND window = thread.window();
    user.waitUntil([&] { return takesInput(window); });
    ASSERT_TRUE(postCommand(window, 9));
    state.begun.get_future().wait();

    EXPECT_FALSE(takesInput(window));
    EXPECT_FALSE(postCommand(window, 9));
    EXPECT_FALSE(postKey(window, VK_RETURN));
    EXPECT_TRUE(postResize(window, 500, 400));
    EXPECT_TRUE(postClose(window));
    EXPECT_TRUE(postClose(window));
    state.release.set_value();
    thread.join();
    EXPECT_EQ(state.commands, 1);
    EXPECT_GE(state.closes, 1);
}

TEST(MessageQueueTest, DisabledWindowTakesNoInputAndNoRequestToClose)
{
    TestUser user;
    WindowThread thread(makePlain);
    const HWND window = thread.window();
    EnableWindow(window, FALSE);
    user.waitUntil([&] { return takesInput(window); });
    EXPECT_FALSE(postClick(window));
    EXPECT_FALSE(postCommand(window, 1));
    EXPECT_FALSE(postClose(window));
    EXPECT_TRUE(postResize(window, 500, 400));
    user.waitUntil([&] { return stateOf(window).rectangle.right == 500; });
    EXPECT_FALSE(postClick(reinterpret_cast<HWND>(3)));
    EXPECT_FALSE(takesInput(reinterpret_cast<HWND>(3)));
}

}  // namespace
}  // namespace platform::window::test
