#include "time/clock.h"

#include <algorithm>
#include <ctime>
#include <mutex>
#include <optional>

namespace platform::time {

namespace {

struct StoppedClock {
    std::mutex mutex;
    std::optional<SYSTEMTIME> now;
};

StoppedClock& stoppedClock()
{
    static StoppedClock clock;
    return clock;
}

SYSTEMTIME hostTime()
{
    std::timespec now{};
    std::tm local{};
    clock_gettime(CLOCK_REALTIME, &now);
    localtime_r(&now.tv_sec, &local);
    return {.wYear = static_cast<WORD>(local.tm_year + 1900),
            .wMonth = static_cast<WORD>(local.tm_mon + 1),
            .wDayOfWeek = static_cast<WORD>(local.tm_wday),
            .wDay = static_cast<WORD>(local.tm_mday),
            .wHour = static_cast<WORD>(local.tm_hour),
            .wMinute = static_cast<WORD>(local.tm_min),
            // SystemTimeToFileTime refuses a leap second.
            .wSecond = static_cast<WORD>(std::min(local.tm_sec, 59)),
            .wMilliseconds = static_cast<WORD>(now.tv_nsec / 1'000'000)};
}

}  // namespace

void stopClockAt(const SYSTEMTIME& now)
{
    const std::scoped_lock lock(stoppedClock().mutex);
    stoppedClock().now = now;
}

void resumeClock()
{
    const std::scoped_lock lock(stoppedClock().mutex);
    stoppedClock().now.reset();
}

}  // namespace platform::time

void GetLocalTime(SYSTEMTIME* now)
{
    auto& stopped = platform::time::stoppedClock();
    const std::scoped_lock lock(stopped.mutex);
    *now = stopped.now ? *stopped.now : platform::time::hostTime();
}
