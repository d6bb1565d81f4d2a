// The clock, dates as numbers, and the locale's short date.
#include "time/clock.h"

#include "ce/time.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

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

SYSTEMTIME localTime()
{
    SYSTEMTIME local{};
    GetLocalTime(&local);
    return local;
}

// std::time() can lag by up to a tick.
std::time_t preciseSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec;
}

TEST(ClockTest, LocalTimeFollowsTheZoneAndAStoppedClockStandsStill)
{
    setenv("TZ", "EAST-13:45", 1);  // 13 h 45 min ahead of UTC, so a mix-up of local time and UTC shows at any hour
    tzset();
    const std::time_t before = preciseSeconds();
    const SYSTEMTIME local = localTime();
    const std::time_t after = preciseSeconds();
    unsetenv("TZ");
    tzset();
    const auto seconds = static_cast<std::time_t>(stepsOf(local) / 10'000'000) - 11'644'473'600 - (13 * 60 + 45) * 60;
    EXPECT_GE(seconds, before);
    EXPECT_LE(seconds, after);
    EXPECT_EQ(local.wDayOfWeek, (stepsOf(local) / 864'000'000'000 + 1) % 7);

    const SYSTEMTIME stopped = {2000, 3, 0, 5, 9, 7, 3, 0};
    platform::time::stopClockAt(stopped);
    EXPECT_EQ(stepsOf(localTime()), stepsOf(stopped));
    platform::time::resumeClock();
    EXPECT_GT(localTime().wYear, 2000);
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
    EXPECT_EQ(time.wMilliseconds, 477);
    const FILETIME beyond = fileTime(0x8000000000000000);
    EXPECT_FALSE(FileTimeToSystemTime(&beyond, &time));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(FileTimeTest, EachDateOfFourCenturiesComesBackAndIsLaterThanThoseBefore)
{
    FILETIME earlier = fileTime(0);
    EXPECT_EQ(CompareFileTime(&earlier, &earlier), 0);
    // The step is a little more than 97 days. So the loop meets each month, leap days, the centuries and each weekday.
    for (std::uint64_t steps = 1; steps < 126'227'808'000'000'000; steps += 83'865'127'650'000) {
        const FILETIME time = fileTime(steps - 1);
        SYSTEMTIME fields{};
        ASSERT_TRUE(FileTimeToSystemTime(&time, &fields));
        ASSERT_EQ(stepsOf(fields), steps - 1);
        ASSERT_EQ(fields.wDayOfWeek, (steps / 864'000'000'000 + 1) % 7);
        ASSERT_EQ(CompareFileTime(&earlier, &time), steps == 1 ? 0 : -1);
        ASSERT_EQ(CompareFileTime(&time, &earlier), steps == 1 ? 0 : 1);
        earlier = time;
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

TEST(ShortDateTest, FormatsOfLocalesKeepTheirOrderAndPadding)
{
    const std::pair<const char*, const char16_t*> formats[] = {
        {"%m/%d/%Y", u"MM/dd/yyyy"},
        {"%d.%m.%Y", u"dd.MM.yyyy"},
        {"%e.%-m.%y", u"d.M.yy"},
        {"%-d. %-m. %Y", u"d. M. yyyy"},
        {"%D", u"MM/dd/yy"},
        {"%F", u"yyyy-MM-dd"},
        {"%d %b %Y", u"dd MMM yyyy"},
        {"%Y年%m月%d日", u"yyyy年MM月dd日"},
        {"%Ey/%Om/%Od", u"yy/MM/dd"},
        {"%A %d de %B", u"dddd dd 'de' MMMM"},
        {"%%%q%", u"%"},
        {"", u""},
    };
    for (const auto& [host, picture] : formats)
        EXPECT_EQ(platform::time::pictureOfDateFormat(host), picture) << host;
}

TEST(ShortDateTest, UnknownLocaleHasTheFormatOfCAndSmallBuffersAndOtherSettingsAreRefused)
{
    WCHAR out[9] = {};
    for (const char* name : {"xx_NOT_INSTALLED", "C"}) {
        setenv("LC_ALL", name, 1);
        EXPECT_EQ(GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE, nullptr, 0), 9);
        EXPECT_EQ(GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE, out, 9), 9);
        EXPECT_EQ(std::u16string(out), u"MM/dd/yy") << name;
    }
    const auto refusedWith = [&](LCID locale, DWORD setting, int characters) {
        SetLastError(0);
        out[0] = u'#';
        return GetLocaleInfoW(locale, setting, out, characters) == 0 && out[0] == u'#' ? GetLastError() : 0;
    };
    EXPECT_EQ(refusedWith(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE, 8), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(refusedWith(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE, -1), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(refusedWith(LOCALE_SYSTEM_DEFAULT, LOCALE_SSHORTDATE + 1, 9), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(refusedWith(0x407, LOCALE_SSHORTDATE, 9), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(refusedWith(LOCALE_SYSTEM_DEFAULT, 0x80000000 | LOCALE_SSHORTDATE, 9), ERROR_INVALID_FLAGS);
    unsetenv("LC_ALL");
}

}  // namespace
