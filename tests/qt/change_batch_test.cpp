// change_batch_test.cpp - the changes that the threads of the window core collect for the thread of the display.
#include "change_batch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using namespace platform::qt;
using platform::window::Change;

HWND window(std::uintptr_t number)
{
    return reinterpret_cast<HWND>(number);
}

TEST(ChangeBatchTest, MillionChangesOfAWindowAreOneEntryAndOneNotice)
{
    int notices = 0;
    ChangeBatch batch([&] { ++notices; });
    for (int i = 0; i < 1000000; ++i)
        batch.textChanged(window(1), u"Backuped: 1");
    batch.changed(window(2), Change::Progress);
    batch.changed(window(1), Change::Enabled);
    EXPECT_EQ(notices, 1);

    const std::vector<Changed> taken = batch.take();
    ASSERT_EQ(taken.size(), 2U);
    EXPECT_EQ(taken[0].window, window(1));
    EXPECT_TRUE(taken[0].changes.has(Change::Text));
    EXPECT_TRUE(taken[0].changes.has(Change::Enabled));
    EXPECT_FALSE(taken[0].changes.has(Change::Progress));
    EXPECT_TRUE(taken[1].changes.has(Change::Progress));

    batch.changed(window(2), Change::Text);
    EXPECT_EQ(notices, 2);
    EXPECT_EQ(batch.take().size(), 1U);
}

TEST(ChangeBatchTest, NoChangeIsLostBetweenTwoCallsOfTakeAndAnIdleChangeEndsTheWait)
{
    constexpr std::uintptr_t Windows = 2000;
    ChangeBatch batch([] {});
    std::atomic<bool> isDone = false;
    std::thread program([&] {
        for (std::uintptr_t number = 1; number <= Windows; ++number)
            batch.changed(window(number), Change::Created);
        batch.changed(nullptr, Change::Idle);
        isDone = true;
        batch.changed(nullptr, Change::Idle);
    });
    std::size_t seen = 0;
    while (seen < Windows) {
        for (const Changed& changed : batch.take())
            seen += changed.window ? 1 : 0;
    }
    batch.waitUntil([&] { return isDone.load(); }, std::chrono::hours(1));
    EXPECT_TRUE(isDone);
    program.join();
    EXPECT_EQ(seen, Windows);
}

}  // namespace
