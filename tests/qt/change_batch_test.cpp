// change_batch_test.cpp - what the core's threads note for the screen.

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

TEST(ChangeBatchTest, MillionChangesOfOneWindowAreOneEntryAndOneWake)
{
    int begun = 0;
    ChangeBatch batch([&] { ++begun; });
    for (int i = 0; i < 1000000; ++i)
        batch.textChanged(window(1), u"Backuped: 1");
    batch.changed(window(2), Change::Progress);
    batch.changed(window(1), Change::Enabled);
    EXPECT_EQ(begun, 1);

    const std::vector<Changed> taken = batch.take();
    ASSERT_EQ(taken.size(), 2U);
    EXPECT_EQ(taken[0].window, window(1));
    EXPECT_TRUE(taken[0].changes.has(Change::Text));
    EXPECT_TRUE(taken[0].changes.has(Change::Enabled));
    EXPECT_FALSE(taken[0].changes.has(Change::Progress));
    EXPECT_TRUE(taken[1].changes.has(Change::Progress));

    // The next batch begins anew, with its own wake.
    batch.changed(window(2), Change::Text);
    EXPECT_EQ(begun, 2);
    EXPECT_EQ(batch.take().size(), 1U);
}

TEST(ChangeBatchTest, WaitEndsWithTheIdleThatFulfilsIt)
{
    ChangeBatch batch([] {});
    std::atomic<bool> rests = false;
    std::thread program([&] {
        batch.changed(nullptr, Change::Idle);
        rests = true;
        batch.changed(nullptr, Change::Idle);
    });
    batch.waitUntil([&] { return rests.load(); }, std::chrono::hours(1));
    EXPECT_TRUE(rests);
    program.join();
}

TEST(ChangeBatchTest, NoChangeIsLostBetweenTwoTakes)
{
    constexpr std::uintptr_t Windows = 2000;
    ChangeBatch batch([] {});
    std::thread program([&] {
        for (std::uintptr_t number = 1; number <= Windows; ++number)
            batch.changed(window(number), Change::Created);
    });
    std::size_t seen = 0;
    while (seen < Windows)
        seen += batch.take().size();
    program.join();
    EXPECT_EQ(seen, Windows);
}

}  // namespace
