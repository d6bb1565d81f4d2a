#include "time/clock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

// std::time() can be late by up to a tick.
std::time_t preciseSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec;
}

TEST(ClockTest, LocalTimeFollowsTheZoneAndIsAValidDate)
{
    setenv("TZ", "EAST-13:45", 1);  // 13 h 45 min ahead, so a swap of local and UTC shows at any hour
    tzset();
    SYSTEMTIME local{};
    FILETIME fileTime{};
    const std::time_t before = preciseSeconds();
    GetLocalTime(&local);
    const std::time_t after = preciseSeconds();
    unsetenv("TZ");
    tzset();
    ASSERT_TRUE(SystemTimeToFileTime(&local, &fileTime));
    const std::uint64_t steps = (std::uint64_t{fileTime.dwHighDateTime} << 32) | fileTime.dwLowDateTime;
    const auto seconds = static_cast<std::time_t>(steps / 10'000'000) - 11'644'473'600 - (13 * 60 + 45) * 60;
    EXPECT_GE(seconds, before);
    EXPECT_LE(seconds, after);
    SYSTEMTIME again{};
    ASSERT_TRUE(FileTimeToSystemTime(&fileTime, &again));
    EXPECT_EQ(local.wDayOfWeek, again.wDayOfWeek);
}

TEST(ClockTest, StoppedClockStandsStillUntilItIsResumed)
{
    platform::time::stopClockAt({.wYear = 2000,
                                 .wMonth = 3,
                                 .wDayOfWeek = 0,
                                 .wDay = 5,
                                 .wHour = 9,
                                 .wMinute = 7,
                                 .wSecond = 3,
                                 .wMilliseconds = 0});
    SYSTEMTIME now{};
    GetLocalTime(&now);
    EXPECT_EQ(now.wYear, 2000);
    EXPECT_EQ(now.wMinute, 7);
    platform::time::resumeClock();
    GetLocalTime(&now);
    EXPECT_GT(now.wYear, 2000);
}

}  // namespace
