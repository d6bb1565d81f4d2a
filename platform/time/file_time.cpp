// The calls of ce/time.h that convert and compare file times.
#include "ce/time.h"

#include <chrono>

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr sys_days firstDay = std::chrono::year{1601} / 1 / 1;
constexpr int lastYear = 30827;  // the last whole year whose file times are below 0x8000000000000000
constexpr std::uint64_t stepsOfMillisecond = 10'000;
constexpr std::uint64_t millisecondsOfDay = 86'400'000;

constexpr std::uint64_t stepsOf(const FILETIME& time)
{
    return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

BOOL fail(DWORD error)
{
    SetLastError(error);
    return FALSE;
}

}  // namespace

BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* fileTime)
{
    if (time->wYear < 1601 || time->wYear > lastYear)
        return fail(ERROR_INVALID_PARAMETER);
    const year_month_day date(std::chrono::year{time->wYear}, std::chrono::month{time->wMonth},
                              std::chrono::day{time->wDay});
    // std::chrono's month and day don't keep numbers above 255, so check the numbers of `time` too.
    if (time->wMonth > 12 || time->wDay > 31 || !date.ok() || time->wHour > 23 || time->wMinute > 59 ||
        time->wSecond > 59 || time->wMilliseconds > 999)
        return fail(ERROR_INVALID_PARAMETER);

    const auto day = static_cast<std::uint64_t>((sys_days(date) - firstDay).count());
    const std::uint64_t seconds = (time->wHour * 60U + time->wMinute) * 60U + time->wSecond;
    const std::uint64_t steps = (day * millisecondsOfDay + seconds * 1000 + time->wMilliseconds) * stepsOfMillisecond;
    fileTime->dwLowDateTime = static_cast<DWORD>(steps);
    fileTime->dwHighDateTime = static_cast<DWORD>(steps >> 32);
    return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* time)
{
    const std::uint64_t steps = stepsOf(*fileTime);
    if (steps >> 63 != 0)
        return fail(ERROR_INVALID_PARAMETER);

    const std::uint64_t milliseconds = steps / stepsOfMillisecond;
    const sys_days day = firstDay + days(static_cast<int>(milliseconds / millisecondsOfDay));
    const year_month_day date(day);
    const std::uint64_t rest = milliseconds % millisecondsOfDay;
    *time = {.wYear = static_cast<WORD>(static_cast<int>(date.year())),
             .wMonth = static_cast<WORD>(static_cast<unsigned>(date.month())),
             .wDayOfWeek = static_cast<WORD>(std::chrono::weekday(day).c_encoding()),
             .wDay = static_cast<WORD>(static_cast<unsigned>(date.day())),
             .wHour = static_cast<WORD>(rest / 3'600'000),
             .wMinute = static_cast<WORD>(rest / 60'000 % 60),
             .wSecond = static_cast<WORD>(rest / 1000 % 60),
             .wMilliseconds = static_cast<WORD>(rest % 1000)};
    return TRUE;
}

LONG CompareFileTime(const FILETIME* first, const FILETIME* second)
{
    const std::uint64_t left = stepsOf(*first);
    const std::uint64_t right = stepsOf(*second);
    return left < right ? -1 : left > right ? 1 : 0;
}
