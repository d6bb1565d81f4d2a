#include "ce/time.h"

#include <gtest/gtest.h>

namespace {

constexpr FILETIME fileTime(std::uint64_t steps)
{
    return {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
}

std::uint64_t stepsOf(const SYSTEMTIME& time)
{
    FILETIME result{0xDEAD, 0xDEAD};
    EXPECT_TRUE(SystemTimeToFileTime(&time, &result));
    return (std::uint64_t{result.dwHighDateTime} << 32) | result.dwLowDateTime;
}

TEST(FileTimeTest, KnownDatesAreExact)
{
    EXPECT_EQ(stepsOf({1601, 1, 1, 1, 0, 0, 0, 0}), 0U);
    EXPECT_EQ(stepsOf({1970, 1, 4, 1, 0, 0, 0, 0}), 116444736000000000U);
    EXPECT_EQ(stepsOf({2000, 3, 0, 1, 12, 34, 56, 789}), 125963876967890000U);
    EXPECT_EQ(stepsOf({2000, 2, 99, 29, 0, 0, 0, 0}), 125962560000000000U);  // the day of the week is ignored

    SYSTEMTIME time{};
    const FILETIME last = fileTime(0x7FFFFFFFFFFFFFFF);
    ASSERT_TRUE(FileTimeToSystemTime(&last, &time));
    EXPECT_EQ(time.wYear, 30828);
    EXPECT_EQ(time.wMonth, 9);
    EXPECT_EQ(time.wDay, 14);
    EXPECT_EQ(time.wMilliseconds, 477);
    const FILETIME beyond = fileTime(0x8000000000000000);
    EXPECT_FALSE(FileTimeToSystemTime(&beyond, &time));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(FileTimeTest, ThereAndBackOverFourCenturies)
{
    // 97 days and some: meets each month, leap days, the centuries, each weekday.
    for (std::uint64_t steps = 0; steps < 126'227'808'000'000'000; steps += 83'865'127'650'000) {
        const FILETIME time = fileTime(steps);
        SYSTEMTIME fields{};
        ASSERT_TRUE(FileTimeToSystemTime(&time, &fields));
        ASSERT_EQ(stepsOf(fields), steps);
        ASSERT_EQ(fields.wDayOfWeek, (steps / 864'000'000'000 + 1) % 7);
    }
}

TEST(FileTimeTest, DatesThatDoNotExistAreRefusedAndLeaveTheResultAlone)
{
    const SYSTEMTIME impossible[] = {
        {1600, 12, 0, 31, 0, 0, 0, 0}, {30828, 1, 0, 1, 0, 0, 0, 0},  {65535, 1, 0, 1, 0, 0, 0, 0},
        {2026, 0, 0, 1, 0, 0, 0, 0},   {2026, 13, 0, 1, 0, 0, 0, 0},  {2026, 257, 0, 1, 0, 0, 0, 0},
        {2026, 2, 0, 29, 0, 0, 0, 0},  {1900, 2, 0, 29, 0, 0, 0, 0},  {2026, 4, 0, 31, 0, 0, 0, 0},
        {2026, 4, 0, 0, 0, 0, 0, 0},   {2026, 4, 0, 257, 0, 0, 0, 0}, {2026, 4, 0, 1, 24, 0, 0, 0},
        {2026, 4, 0, 1, 0, 60, 0, 0},  {2026, 4, 0, 1, 0, 0, 60, 0},  {2026, 4, 0, 1, 0, 0, 0, 1000},
    };
    for (const SYSTEMTIME& time : impossible) {
        SCOPED_TRACE(testing::Message() << time.wYear << '-' << time.wMonth << '-' << time.wDay);
        FILETIME result{1, 2};
        SetLastError(0);
        EXPECT_FALSE(SystemTimeToFileTime(&time, &result));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(result.dwLowDateTime, 1U);
    }
}

TEST(FileTimeTest, ComparisonLooksAtTheHighHalfFirst)
{
    const FILETIME early{0xFFFFFFFF, 1};
    const FILETIME late{0, 2};
    EXPECT_EQ(CompareFileTime(&early, &late), -1);
    EXPECT_EQ(CompareFileTime(&late, &early), 1);
    EXPECT_EQ(CompareFileTime(&late, &late), 0);
    const FILETIME lateHigh{0, 0x80000000};
    EXPECT_EQ(CompareFileTime(&lateHigh, &late), 1);
}

}  // namespace
